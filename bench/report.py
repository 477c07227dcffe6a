#!/usr/bin/env python3
r"""Turns the JSON of PropertiesBenchmark into markdown tables.

    python3 bench/report.py --help
    python3 bench/report.py build-bench/results.json > results.md
    python3 bench/report.py --markdown-page build-bench/results.json \
        > docs/benchmarks.md

The first form writes the tables with a one-paragraph head (make bench).
The second writes the whole page docs/benchmarks.md (make bench-docs): the
run's commit, machine and parameters, what is measured and how to read it,
then the same tables. Everything on that page comes from here and from the
JSON, so the page is regenerated, never edited.

Both open with a "Targets" table: every target, its ratio measured in this
one run, and whether it is met (bold when not).

Uses the median of the repetitions when the run has aggregates
(--benchmark_repetitions=N), else the median of the runs it has. Names are
BM_<Impl>_<Operation>_<Format>/<size>: loads and stores (Operation LoadFile,
LoadHandWritten, LoadMemory, StoreFile, StoreMemory; Impl Bound,
BoundFileOrder and BoundSorted are the lower bounds of a load), the bound
manager (Operation SetValue or RegisterBound; BM_Locks_SetValue times
SetValue with file locks, its counter without_locks_us without them) and BM_PeakMemory_<Impl>_<Format>/<size>.
"""

import json
import re
import statistics
import sys

IMPLS = ["Floor", "Ours", "Plain", "Inih", "SimpleIni", "Boost", "GKeyFile"]
IMPL_TEXT = {
    "Floor": "floor (one read()/write())",
    "Ours": "libproperties",
    "Plain": "straightforward (ifstream/endl)",
    "Inih": "inih",
    "SimpleIni": "SimpleIni",
    "Boost": "Boost.PropertyTree",
    "GKeyFile": "GLib GKeyFile",
}
OPERATIONS = ["LoadFile", "LoadHandWritten", "LoadMemory", "StoreFile",
              "StoreMemory"]
OPERATION_TEXT = {
    "LoadFile": "load file",
    "LoadHandWritten": "load hand-written file",
    "LoadMemory": "load from memory",
    "StoreFile": "store file",
    "StoreMemory": "store to memory",
}
FORMATS = ["Flat", "Ini"]
FORMAT_TEXT = {"Flat": "flat", "Ini": "INI"}
UNIT_SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
# Google Benchmark's default --benchmark_min_time in the versions Debian
# ships (seconds).
DEFAULT_MIN_TIME = 0.5
# How the benchmark program names the peers in its "peers" context.
PEER_TEXT = {"Inih": "inih", "SimpleIni": "SimpleIni",
             "Boost": "Boost.PropertyTree", "GKeyFile": "GLib GKeyFile"}
PEERS = IMPLS[3:]
# The targets, as limits on the ratios below.
SET_VALUE_LIMIT = 1.3       # bound SetValue ÷ (one read + one rewrite)
REGISTER_LIMIT = 2.0        # 1000 registrations ÷ 1000 × (2 reads + rewrite)
REGISTER_COUNT = 1000
REGISTER_TARGET_SIZE = 10000
LOAD_LIMIT = 1.25           # load ÷ its lower bound
STORE_LIMIT = 1.5           # store ÷ one write(), at STORE_SIZE
STORE_SIZE = 1000
LOCK_LIMIT = 0.05           # share a file lock adds to a bound SetValue
LOCK_ROUNDS = 5             # kLockRounds of bench/ManagerBenchmark.cpp
PLAIN_SET_VALUE_LIMIT = 4   # straightforward SetValue ÷ ours, at 1000


class Result:
    def __init__(self, name, seconds, bytes_rate, items_rate, counters, error):
        self.name = name
        self.seconds = seconds          # Wall-clock time of one iteration.
        self.bytes_rate = bytes_rate    # Bytes per second, or None.
        self.items_rate = items_rate    # Entries (or operations) per second.
        self.counters = counters        # Other counters, e.g. peak_kB.
        self.error = error              # Error message of a skipped run.


def base_name(run_name):
    """BM_X_Y_Z/1000/real_time -> (BM_X_Y_Z, 1000)."""
    parts = run_name.split("/")
    size = int(parts[1]) if len(parts) > 1 and parts[1].isdigit() else 0
    return parts[0], size


def load_results(path):
    with open(path) as f:
        data = json.load(f)
    runs = {}
    for bench in data.get("benchmarks", []):
        run_name = bench.get("run_name", bench["name"])
        key = base_name(run_name)
        if bench.get("run_type") == "aggregate":
            if bench.get("aggregate_name") != "median":
                continue
            runs.setdefault(key, {"median": None, "runs": []})["median"] = bench
        else:
            runs.setdefault(key, {"median": None, "runs": []})["runs"].append(bench)
    repetitions = max([b.get("repetitions", 1) for b in data.get("benchmarks", [])]
                      or [1])
    data.setdefault("context", {})["repetitions"] = repetitions
    results = {}
    skip = ("name", "run_name", "run_type", "repetitions", "repetition_index",
            "threads", "iterations", "real_time", "cpu_time", "time_unit",
            "family_index", "per_family_instance_index", "aggregate_name",
            "aggregate_unit", "error_occurred", "error_message")
    for key, found in runs.items():
        chosen = found["median"]
        errors = [r for r in found["runs"] if r.get("error_occurred")]
        if chosen is None:
            good = [r for r in found["runs"] if not r.get("error_occurred")]
            if not good:
                message = errors[0].get("error_message", "failed") if errors else "no runs"
                results[key] = Result(key[0], None, None, None, {}, message)
                continue
            chosen = dict(good[0])
            for field in ("real_time", "bytes_per_second", "items_per_second",
                          "peak_kB", "file_kB"):
                values = [r[field] for r in good if field in r]
                if values:
                    chosen[field] = statistics.median(values)
        unit = UNIT_SECONDS.get(chosen.get("time_unit", "ns"), 1e-9)
        counters = {k: v for k, v in chosen.items()
                    if k not in skip and isinstance(v, (int, float))}
        results[key] = Result(
            key[0], chosen["real_time"] * unit,
            chosen.get("bytes_per_second"), chosen.get("items_per_second"),
            counters, errors[0].get("error_message") if errors else None)
    return data.get("context", {}), results


def rate(value):
    if value is None:
        return "-"
    for limit, suffix in ((1e9, " G"), (1e6, " M"), (1e3, " k")):
        if value >= limit:
            return "%.3g%s" % (value / limit, suffix)
    return "%.3g" % value


def mbps(value):
    return "-" if value is None else "%.1f" % (value / 1e6)


def ratio(numerator, denominator):
    if not numerator or not denominator:
        return "-"
    return "%.2f×" % (numerator / denominator)


def seconds_text(seconds):
    if seconds is None:
        return "-"
    if seconds >= 1e-3:
        return "%.2f ms" % (seconds * 1e3)
    return "%.1f µs" % (seconds * 1e6)


def last_flag(arguments, flag):
    """The value of the last --flag=value in arguments, or None."""
    found = re.findall(r"(?:^|\s)--%s=(\S+)" % re.escape(flag), arguments)
    return found[-1] if found else None


def min_time_seconds(text):
    """'0.01', '0.01s' -> 0.01; None if text is not a time in seconds."""
    match = re.match(r"^([0-9.]+)s?$", text or "")
    if not match:
        return None
    try:
        return float(match.group(1))
    except ValueError:
        return None


class Report:
    def __init__(self, context, results):
        self.context = context
        self.results = results
        self.lines = []

    def get(self, impl, operation, fmt, size):
        found = self.results.get(("BM_%s_%s_%s" % (impl, operation, fmt), size))
        return found if found and found.seconds else None

    def emit(self, line=""):
        self.lines.append(line)

    def header(self):
        c = self.context
        self.emit("# libproperties benchmarks")
        self.emit()
        self.emit("Run %s of commit `%s` on %s (%s; %s CPUs at %s MHz, "
                  "load average %s); "
                  "libproperties and the benchmarks built as %s (Google "
                  "Benchmark's own library: %s build); other libraries: %s." % (
                      c.get("date", "?"), c.get("commit", "unknown"),
                      c.get("host_name", "?"),
                      c.get("cpu_model") or "unknown processor",
                      c.get("num_cpus", "?"), c.get("mhz_per_cpu", "?"),
                      ", ".join("%.2f" % x for x in c.get("load_avg", [])),
                      c.get("properties_build_type") or "?",
                      c.get("library_build_type", "?"),
                      c.get("peers", "?") or "none"))
        self.emit()
        reps = c.get("repetitions", 1)
        self.emit(("Medians of %d repetitions" % reps if reps > 1 else
                   "One repetition") + ", wall-clock time. MB/s is "
                  "10^6 bytes of the file read or written per second; "
                  "entries/s counts key=value entries. *× floor* is the time "
                  "relative to one read() (loads) or one write() (stores) of "
                  "the same bytes; *ours ÷ this* is libproperties' speed "
                  "divided by this row's for the same operation on the same "
                  "input (above 1: libproperties is faster). Flat rows read "
                  "the flat key=value file (inih, SimpleIni and Boost take it "
                  "as a file without sections); INI rows read the sectioned "
                  "file, the only one GKeyFile accepts.")
        self.emit()

    def run_parameters(self):
        """(repetitions, min time text, min time in s or None, other flags)."""
        c = self.context
        arguments = c.get("arguments", "")
        reps = c.get("repetitions", 1)
        min_text = last_flag(arguments, "benchmark_min_time")
        if min_text is None:
            min_seconds = DEFAULT_MIN_TIME
            min_text = "%g s (Google Benchmark's default)" % DEFAULT_MIN_TIME
        else:
            min_seconds = min_time_seconds(min_text)
            min_text = ("%g s" % min_seconds if min_seconds is not None
                        else min_text)
        others = []
        for flag in ("benchmark_filter",
                     "benchmark_enable_random_interleaving"):
            value = last_flag(arguments, flag)
            if value is not None:
                others.append("`--%s=%s`" % (flag, value))
        return reps, min_text, min_seconds, others

    def page_header(self):
        c = self.context
        self.emit("# Benchmarks")
        self.emit()
        self.emit("<!-- Generated by `make bench-docs` (bench/report.py "
                  "--markdown-page). Do not edit: run `make bench-docs` "
                  "again. -->")
        self.emit()
        self.emit("This page is generated by `make bench-docs` from one run "
                  "of the benchmark program and must not be edited by hand: "
                  "to change its text, change `bench/report.py`; to renew "
                  "its numbers, run `make bench-docs` again (it takes "
                  "several minutes) and commit the page. Every number on it "
                  "comes from that one run on one machine, so the ratios "
                  "compare like with like; numbers from different machines "
                  "or commits do not.")
        self.emit()
        reps, min_text, min_seconds, others = self.run_parameters()
        brief = reps < 2 or (min_seconds is not None
                             and min_seconds < DEFAULT_MIN_TIME)
        if brief:
            self.emit("**This is a brief run** (%s, at least %s per "
                      "benchmark): it shows that every benchmark runs and "
                      "roughly where each stands, but its numbers are noisy. "
                      "A full `make bench-docs` (medians of 5 repetitions) "
                      "replaces it." % (
                          "one repetition" if reps < 2 else
                          "%d repetitions" % reps, min_text))
            self.emit()
        peers = [PEER_TEXT.get(p, p) for p in
                 (c.get("peers") or "").split(",") if p]
        load = ", ".join("%.2f" % x for x in c.get("load_avg", []))
        self.emit("## The run")
        self.emit()
        self.emit("| | |")
        self.emit("|---|---|")
        commit = c.get("commit", "unknown")
        self.emit("| commit | `%s`%s |" % (
            commit, " (the measured tree had changes not yet committed)"
            if commit.endswith("-dirty") else ""))
        self.emit("| date | %s |" % c.get("date", "?"))
        self.emit("| processor | %s; %s CPUs at %s MHz%s |" % (
            c.get("cpu_model") or "unknown model", c.get("num_cpus", "?"),
            c.get("mhz_per_cpu", "?"),
            ", frequency scaling on" if c.get("cpu_scaling_enabled") else ""))
        self.emit("| kernel | %s |" % (c.get("kernel") or "?"))
        self.emit("| load average at the start | %s |" % (load or "?"))
        self.emit("| compiler | %s; libproperties and the benchmarks built "
                  "as %s, Google Benchmark's own library as a %s build |" % (
                      c.get("compiler") or "?",
                      c.get("properties_build_type") or "?",
                      c.get("library_build_type", "?")))
        self.emit("| repetitions | %d%s |" % (
            reps, " (the tables show medians)" if reps > 1 else ""))
        self.emit("| minimum time per benchmark | %s |" % min_text)
        if others:
            self.emit("| other flags | %s |" % ", ".join(others))
        self.emit("| peers | %s |" % (", ".join(peers) or "none installed"))
        self.emit("| file locks in the library measured | %s |" % (
            c.get("file_locks") or "?"))
        self.emit()

    def page_method(self):
        self.emit("## What is measured")
        self.emit()
        self.emit("`make bench` builds `bench/` (Google Benchmark, Release "
                  "build) with the peer libraries installed from Debian "
                  "packages (inih, SimpleIni, Boost.PropertyTree, GLib "
                  "GKeyFile) and runs every benchmark in one binary. It "
                  "writes `build-bench/results.json` and the tables of this "
                  "page to `build-bench/results.md`; `make bench-docs` runs "
                  "the same and writes this page. "
                  "`make bench BENCH_ARGS=--benchmark_min_time=0.01` is a "
                  "quick check. CI builds the benchmarks and runs each once, "
                  "briefly, to see that they work; it does not check the "
                  "numbers.")
        self.emit()
        self.emit("The inputs are generated on every run, the same text "
                  "each time: a typical configuration of 50 lines and files "
                  "of 1k, 10k and 100k entries, each flat and INI, with "
                  "realistic dotted keys and values, in key order as the "
                  "library writes them, and a comment or a blank line as "
                  "every 10th line. Beside each, a hand-written file holds "
                  "the same entries as people write them: comments at the "
                  "top, keys in no order (sections in no order, keys in no "
                  "order within them), blanks around `=` and at either end "
                  "of some lines, tabs, comment lines and blank lines "
                  "between groups. They live in a new directory under "
                  "`/dev/shm` (or `/tmp`), so that the disk does not decide "
                  "the times.")
        self.emit()
        self.emit("What each implementation is:")
        self.emit()
        self.emit("- **floor**: one `read()` (loads) or one `write()` "
                  "(stores) of the whole file and nothing else; no reader or "
                  "writer can be faster. For a bound `SetValue` the floor is "
                  "one `read()` of the file plus one in-place rewrite of the "
                  "same bytes (`O_TRUNC` and one `write()`); for %d bound "
                  "registrations, %d × (two whole reads and one in-place "
                  "rewrite), the file accesses a registration makes." % (
                      REGISTER_COUNT, REGISTER_COUNT))
        self.emit("- **lower bound of a load** (`BM_Bound*`): one `read()` "
                  "plus building and freeing the `std::map<propstring, "
                  "propstring>` tables every load ends in, from fields "
                  "already split (see below).")
        self.emit("- **straightforward**: the code a program would have "
                  "without a property library. It reads with `getline` into "
                  "512 bytes, trims, and inserts into a `std::map`; it "
                  "writes every line with `std::endl` (a flush per line). "
                  "Its `SetValue` reads the file that way, sets the value "
                  "and writes the whole file back.")
        self.emit("- **peers**: the other readers and writers, each used "
                  "the way its documentation suggests. Flat rows give them "
                  "the flat `key=value` file (inih, SimpleIni and "
                  "Boost.PropertyTree take it as a file without sections); "
                  "INI rows the sectioned file, the only one GKeyFile "
                  "accepts. *The nearest peer* is the fastest of them at "
                  "that size.")
        self.emit("- **load from memory**, **store to memory**: the same "
                  "formats read from a `std::istringstream` of the file's "
                  "text and written to a `std::ostringstream`; their *× "
                  "floor* is still relative to the file's `read()` or "
                  "`write()`.")
        self.emit("- **through a bound manager**: a `JavaPropertyManager` "
                  "(flat) or `IniPropertyManager` (INI) bound read-write to "
                  "a file, measured end to end (registrations and "
                  "`SetValue` with the rewrite it causes).")
        self.emit("- **with and without file locks**: `SetValue` timed in "
                  "a child process of the library as built and of the "
                  "library built once more with "
                  "`-DPROPERTIES_FILE_LOCKS=OFF` (`PropertiesBenchmarkNoLocks`, "
                  "built by the same `make bench`).")
        self.emit()
        self.emit("How to read the numbers: ratios are speed-ups (above 1: "
                  "libproperties is faster), except *× floor*, *× bound* "
                  "and *× one write()*, which are time ratios (1 would be "
                  "as fast as the floor or the bound). MB/s is 10^6 bytes of "
                  "the file read or written per second; entries/s counts "
                  "`key=value` entries. Bold marks a target missed.")
        self.emit()
        self.emit("The targets: a bound `SetValue` within %g× of one read "
                  "and one rewrite of its file at every size; %d bound "
                  "registrations of keys of a %d-entry file within %g× of "
                  "the reads and rewrites they make; a load within %g× of "
                  "its lower bound at every size, for the files the library "
                  "wrote and for hand-written ones, and faster than every "
                  "peer; a store of a %d-entry file within %g× of one "
                  "`write()`; file locks adding at most %g%% to a bound "
                  "`SetValue`; a bound `SetValue` on a 1k-entry file at "
                  "least %g× as fast as the straightforward one. The peak "
                  "memory of a bound manager is reported at every size." % (
                      SET_VALUE_LIMIT, REGISTER_COUNT, REGISTER_TARGET_SIZE,
                      REGISTER_LIMIT, LOAD_LIMIT, STORE_SIZE, STORE_LIMIT,
                      LOCK_LIMIT * 100, PLAIN_SET_VALUE_LIMIT))
        self.emit()

    def page_bounds_text(self):
        """The lower bound, explained."""
        self.emit("Every load ends in the `std::map<propstring, propstring>` "
                  "tables that the binary interface fixes, so one `read()` "
                  "of the file plus building and freeing those tables from "
                  "fields already split is the least any reader into these "
                  "tables can take. For the files the library wrote (in key "
                  "order) the fields go in in file order, each hinted at the "
                  "end (`BM_Bound_LoadFile`). For the hand-written files (in "
                  "no order) there are two ways, and the bound is the "
                  "smaller: in file order without hints "
                  "(`BM_BoundFileOrder_LoadHandWritten`), or sorted by "
                  "section and key first, the sort timed, then hinted "
                  "(`BM_BoundSorted_LoadHandWritten`).")
        self.emit()
        self.emit("At 100k entries the time is decided by glibc's heap more "
                  "than by any reader: the same load of the same file has "
                  "varied by ±15% between repetitions (the straightforward "
                  "reader by ±5%), and the bound may take longer than a "
                  "whole load, depending on where the previous table's "
                  "memory went. Interleaving all benchmarks at random "
                  "(`--benchmark_enable_random_interleaving`), so that each "
                  "starts from a heap another benchmark left, slows the 10k "
                  "and 100k loads of every reader, and those of "
                  "libproperties most.")
        self.emit()

    def page_profile(self):
        self.emit("## Where the time goes")
        self.emit()
        self.emit("From a profile (perf) of the 1k-entry flat load: about a "
                  "third of the time is in `malloc` and `free` (the node, "
                  "key and value of every entry), a tenth in the tree, a "
                  "tenth cutting the text into lines and finding their "
                  "comments and `=` signs, and a tenth "
                  "comparing each key with the last one for the hinted "
                  "insertion; the read itself is one `read()`.")
        self.emit()
        self.emit("What makes loads cheap: one pass over the text, 16 "
                  "bytes at a time, makes bit masks of its line feeds, NUL "
                  "bytes, comment marks and `=` signs, from which each "
                  "line's end, comment and `=` are read off (no line is "
                  "searched three times); keys and values are built from "
                  "their lengths; insertion is hinted at the end, since "
                  "files the library wrote are in key order; the check for "
                  "over-long lines searches 512-byte windows instead of "
                  "every line; and a thread keeps the largest buffer its "
                  "whole-file reads and rewrites needed (64 KiB to 1 MiB), "
                  "so reading a file again costs no buffer allocation (and "
                  "glibc does not consolidate the freed table of the "
                  "previous load to serve one). Rewrites assemble their "
                  "text in that buffer with one reservation per line and "
                  "hand it to one `write()`.")
        self.emit()
        self.emit("Registering a bound property reads the whole file twice "
                  "and rewrites it once (the stored value replaces the "
                  "default), so registering many properties of a large file "
                  "costs that much each. Peak memory of libproperties' load "
                  "is the table plus the file's text, which it holds during "
                  "the parse.")
        self.emit()

    def size_tables(self):
        sizes = sorted({size for (name, size) in self.results
                        if name.split("_")[2] in OPERATIONS})
        for size in sizes:
            self.emit("## %d entries" % size)
            self.emit()
            self.emit("| operation | input | implementation | MB/s | "
                      "entries/s | × floor | ours ÷ this |")
            self.emit("|---|---|---|---:|---:|---:|---:|")
            for operation in OPERATIONS:
                floor_op = "LoadFile" if operation.startswith("Load") else "StoreFile"
                for fmt in FORMATS:
                    # The hand-written file is longer than the one floor
                    # reads: no floor ratio for it.
                    floor = (None if operation == "LoadHandWritten" else
                             self.get("Floor", floor_op, fmt, size))
                    ours = self.get("Ours", operation, fmt, size)
                    for impl in IMPLS:
                        result = self.get(impl, operation, fmt, size)
                        if result is None:
                            continue
                        versus = "-" if impl == "Ours" else ratio(
                            result.seconds, ours.seconds if ours else None)
                        self.emit("| %s | %s | %s | %s | %s | %s | %s |" % (
                            OPERATION_TEXT[operation], FORMAT_TEXT[fmt],
                            IMPL_TEXT[impl], mbps(result.bytes_rate),
                            rate(result.items_rate),
                            ratio(result.seconds,
                                  floor.seconds if floor else None),
                            versus))
            self.emit()

    def end_to_end(self):
        whats = ("SetValue", "RegisterBound")
        order = {impl: i for i, impl in enumerate(["Floor", "Ours", "Plain"])}
        rows = sorted((r for r in self.results.items()
                       if r[0][0].split("_")[2] in whats
                       and r[0][0].split("_")[1] in order),
                      key=lambda r: (whats.index(r[0][0].split("_")[2]),
                                     FORMATS.index(r[0][0].split("_")[3]),
                                     r[0][1], order[r[0][0].split("_")[1]]))
        if not rows:
            return
        self.emit("## Through a bound manager")
        self.emit()
        self.emit("SetValue/N: one SetValue through a manager bound "
                  "read-write to an N-entry file (the file is read and "
                  "rewritten); its floor is one read() of that file plus "
                  "one in-place rewrite of the same bytes (O_TRUNC and one "
                  "write()); the straightforward version reads the file "
                  "into a std::map, sets the value and writes every line "
                  "with std::endl. RegisterBound/N: a fresh manager bound "
                  "to a fresh copy of the N-entry file, then %d properties "
                  "registered whose keys are in the file (one iteration = "
                  "all of them); its floor is what those registrations "
                  "read and write: %d × (two whole reads and one in-place "
                  "rewrite of the file)." % (REGISTER_COUNT, REGISTER_COUNT))
        self.emit()
        self.emit("| benchmark | N | time per iteration | per registration / set | "
                  "× floor | ours ÷ straightforward |")
        self.emit("|---|---:|---:|---:|---:|---:|")
        for (name, size), result in rows:
            if not result.seconds:
                self.emit("| %s | %d | failed: %s | | | |" % (name, size, result.error))
                continue
            impl, what, fmt = name.split("_")[1:4]
            per = (result.seconds / REGISTER_COUNT if what == "RegisterBound"
                   else result.seconds)
            floor = self.get("Floor", what, fmt, size)
            versus = "-"
            if impl == "Plain":
                ours = self.get("Ours", what, fmt, size)
                versus = ratio(result.seconds, ours.seconds if ours else None)
            self.emit("| %s | %d | %s | %s | %s | %s |" % (
                name, size, seconds_text(result.seconds), seconds_text(per),
                "-" if impl == "Floor" else
                ratio(result.seconds, floor.seconds if floor else None),
                versus))
        self.emit()
        self.locks()

    def locks(self):
        rows = []
        for fmt in FORMATS:
            sizes = sorted(size for (name, size) in self.results
                           if name == "BM_Locks_SetValue_%s" % fmt)
            for size in sizes:
                rows.append((fmt, size, self.get("Locks", "SetValue", fmt, size),
                             self.without_locks(fmt, size)))
        if not rows:
            return
        self.emit("## The file lock's share of a SetValue")
        self.emit()
        self.emit("SetValue through a bound manager, timed in a child process "
                  "for each build of the library: as built for this run "
                  "(file locks %s) and built once more with "
                  "`-DPROPERTIES_FILE_LOCKS=OFF` (the program "
                  "`PropertiesBenchmarkNoLocks`). The two run in turns, "
                  "%d short rounds each, and the fastest round of each "
                  "counts. *Share of the lock* is the first time over the "
                  "second, less 1; *cost of the lock* their difference." %
                  (self.context.get("file_locks") or "?", LOCK_ROUNDS))
        self.emit()
        self.emit("| input | entries | with locks | without locks | "
                  "cost of the lock | share of the lock |")
        self.emit("|---|---:|---:|---:|---:|---:|")
        for fmt, size, on, off in rows:
            share = self.lock_share(fmt, size)
            cost = None if on is None or off is None else on.seconds - off
            self.emit("| %s | %d | %s | %s | %s | %s |" % (
                FORMAT_TEXT[fmt], size,
                seconds_text(on.seconds if on else None), seconds_text(off),
                "-" if cost is None else "%.2f µs" % (cost * 1e6),
                "-" if share is None else "%+.1f%%" % (share * 100)))
        self.emit()
        self.emit("The two builds make the same system calls but one: the "
                  "`flock()` that takes the lock when a rewrite starts (it "
                  "is released when the file is closed). That price does "
                  "not grow with the file, so its share is largest for the "
                  "smallest file, whose whole rewrite costs least; at "
                  "larger sizes the difference is within the noise of the "
                  "two runs.")
        self.emit()

    def memory(self):
        rows = [(name, size, r) for (name, size), r in self.results.items()
                if name.startswith("BM_PeakMemory_")
                and name.split("_")[2] != "OursBound"]
        if rows:
            self.memory_of_loads(rows)
        rows = sorted(((name, size, r) for (name, size), r in self.results.items()
                       if name.startswith("BM_PeakMemory_OursBound_")),
                      key=lambda row: (FORMATS.index(row[0].split("_")[3]),
                                       row[1]))
        if not rows:
            return
        self.emit("## Peak memory of a bound manager")
        self.emit()
        self.emit("Rise of VmHWM in a fresh child process over binding a "
                  "manager read-write to a copy of the file, registering one "
                  "property the file lacks (the file is rewritten) and "
                  "setting it once (rewritten again); the manager stays "
                  "alive until the peak is read.")
        self.emit()
        self.emit("| input | entries | file | peak | peak ÷ file |")
        self.emit("|---|---:|---:|---:|---:|")
        for name, size, result in rows:
            fmt = name.split("_")[3]
            peak = result.counters.get("peak_kB")
            size_kb = result.counters.get("file_kB")
            if peak is None:
                self.emit("| %s | %d | | failed: %s | |" % (
                    FORMAT_TEXT.get(fmt, fmt), size, result.error))
                continue
            self.emit("| %s | %d | %.0f kB | %.0f kB | %s |" % (
                FORMAT_TEXT.get(fmt, fmt), size, size_kb or 0, peak,
                ratio(peak, size_kb)))
        self.emit()

    def memory_of_loads(self, rows):
        ours = {}
        for name, size, result in rows:
            impl, fmt = name.split("_")[2:4]
            if impl == "Ours":
                ours[fmt] = result.counters.get("peak_kB")
        self.emit("## Peak memory of loading the largest file")
        self.emit()
        self.emit("Rise of VmHWM in a fresh child process over the load; the "
                  "result stays alive until it is read. *ours ÷ this* is "
                  "libproperties' peak on the same input divided by this "
                  "row's (above 1: libproperties needs more).")
        self.emit()
        self.emit("| implementation | input | entries | file | peak | "
                  "peak ÷ file | ours ÷ this |")
        self.emit("|---|---|---:|---:|---:|---:|---:|")
        order = {impl: i for i, impl in enumerate(IMPLS)}
        rows.sort(key=lambda row: (order.get(row[0].split("_")[2], 99),
                                   row[0]))
        for name, size, result in rows:
            impl, fmt = name.split("_")[2:4]
            peak = result.counters.get("peak_kB")
            size_kb = result.counters.get("file_kB")
            if peak is None:
                self.emit("| %s | %s | %d | | failed: %s | | |" % (
                    IMPL_TEXT.get(impl, impl), FORMAT_TEXT.get(fmt, fmt),
                    size, result.error))
                continue
            self.emit("| %s | %s | %d | %.0f kB | %.0f kB | %s | %s |" % (
                IMPL_TEXT.get(impl, impl), FORMAT_TEXT.get(fmt, fmt), size,
                size_kb or 0, peak, ratio(peak, size_kb),
                "-" if impl == "Ours" else ratio(ours.get(fmt), peak)))
        self.emit()

    # The ratios the targets are about; None where a run is missing.

    def over(self, numerator, denominator):
        if numerator is None or denominator is None:
            return None
        return numerator.seconds / denominator.seconds

    def load_speedup(self, impl, fmt, size):
        """impl's load time over libproperties' (above 1: ours is faster)."""
        return self.over(self.get(impl, "LoadFile", fmt, size),
                         self.get("Ours", "LoadFile", fmt, size))

    def nearest_peer(self, fmt, size):
        """(speed-up over the fastest peer, its name), or (None, None)."""
        speeds = [(self.load_speedup(impl, fmt, size), impl) for impl in PEERS]
        speeds = [x for x in speeds if x[0] is not None]
        return min(speeds) if speeds else (None, None)

    def load_bound(self, fmt, size, hand=False):
        """The lower bound of a load: one result, or the smaller of the
        two ways for a hand-written file."""
        if not hand:
            return self.get("Bound", "LoadFile", fmt, size)
        found = [r for r in (self.get(way, "LoadHandWritten", fmt, size)
                             for way in ("BoundFileOrder", "BoundSorted")) if r]
        return min(found, key=lambda r: r.seconds) if found else None

    def load_over_bound(self, fmt, size, hand=False):
        operation = "LoadHandWritten" if hand else "LoadFile"
        return self.over(self.get("Ours", operation, fmt, size),
                         self.load_bound(fmt, size, hand))

    def plain_over_bound(self, fmt, size, hand=False):
        operation = "LoadHandWritten" if hand else "LoadFile"
        return self.over(self.get("Plain", operation, fmt, size),
                         self.load_bound(fmt, size, hand))

    def store_over_floor(self, fmt, size):
        return self.over(self.get("Ours", "StoreFile", fmt, size),
                         self.get("Floor", "StoreFile", fmt, size))

    def set_value_over_floor(self, fmt, size):
        return self.over(self.get("Ours", "SetValue", fmt, size),
                         self.get("Floor", "SetValue", fmt, size))

    def register_over_floor(self, fmt, size):
        return self.over(self.get("Ours", "RegisterBound", fmt, size),
                         self.get("Floor", "RegisterBound", fmt, size))

    def set_value_speedup(self, fmt, size):
        return self.over(self.get("Plain", "SetValue", fmt, size),
                         self.get("Ours", "SetValue", fmt, size))

    def without_locks(self, fmt, size):
        """Seconds of a SetValue without file locks, or None."""
        found = self.get("Locks", "SetValue", fmt, size)
        micros = found.counters.get("without_locks_us") if found else None
        return micros * 1e-6 if micros else None

    def lock_share(self, fmt, size):
        found = self.get("Locks", "SetValue", fmt, size)
        without = self.without_locks(fmt, size)
        if not found or not without:
            return None
        return found.seconds / without - 1

    def sizes_of(self, name):
        return sorted(size for (found, size) in self.results if found == name)

    def targets(self):
        self.emit("## Targets")
        self.emit()
        self.emit("Every ratio from this one run. Bold: a target not met.")
        self.emit()
        self.emit("| target | input | size | measured | met |")
        self.emit("|---|---|---:|---:|---|")

        def row(target, fmt, size, value, text, met):
            if value is None:
                return
            measured = text(value) if callable(text) else text % value
            self.emit("| %s | %s | %s | %s | %s |" % (
                target, FORMAT_TEXT[fmt], size, measured,
                "met" if met(value) else "**not met**"))

        for fmt in FORMATS:
            for size in self.sizes_of("BM_Ours_SetValue_%s" % fmt):
                row("bound SetValue ≤ %g× (one read + one rewrite)"
                    % SET_VALUE_LIMIT, fmt, size,
                    self.set_value_over_floor(fmt, size), "%.2f× floor",
                    lambda x: x <= SET_VALUE_LIMIT)
        for fmt in FORMATS:
            for size in self.sizes_of("BM_Ours_RegisterBound_%s" % fmt):
                row("%d bound registrations ≤ %g× (%d × (2 reads + 1 "
                    "rewrite))%s" % (
                        REGISTER_COUNT, REGISTER_LIMIT, REGISTER_COUNT,
                        "" if size == REGISTER_TARGET_SIZE else
                        " (reported)"),
                    fmt, size, self.register_over_floor(fmt, size),
                    "%.2f× floor", lambda x: x <= REGISTER_LIMIT)
        for hand, text in ((False, "files the library wrote"),
                           (True, "hand-written files")):
            operation = "LoadHandWritten" if hand else "LoadFile"
            for fmt in FORMATS:
                for size in self.sizes_of("BM_Ours_%s_%s" % (operation, fmt)):
                    row("load ≤ %g× the lower bound, %s" % (LOAD_LIMIT, text),
                        fmt, size, self.load_over_bound(fmt, size, hand),
                        "%.2f× bound", lambda x: x <= LOAD_LIMIT)
        for fmt in FORMATS:
            for size in self.sizes_of("BM_Ours_LoadFile_%s" % fmt):
                speed, impl = self.nearest_peer(fmt, size)
                row("load faster than every peer (nearest: %s)" %
                    IMPL_TEXT.get(impl, "-"), fmt, size, speed,
                    "%.2f× faster", lambda x: x > 1)
        for fmt in FORMATS:
            row("store ≤ %g× one write()" % STORE_LIMIT, fmt, STORE_SIZE,
                self.store_over_floor(fmt, STORE_SIZE), "%.2f× floor",
                lambda x: x <= STORE_LIMIT)
        for fmt in FORMATS:
            for size in self.sizes_of("BM_Locks_SetValue_%s" % fmt):
                row("the file lock adds ≤ %g%% to a bound SetValue" %
                    (LOCK_LIMIT * 100), fmt, size, self.lock_share(fmt, size),
                    lambda x: "%+.1f%%" % (x * 100),
                    lambda x: x <= LOCK_LIMIT)
        row("bound SetValue ≥ %g× straightforward" % PLAIN_SET_VALUE_LIMIT,
            "Flat", 1000, self.set_value_speedup("Flat", 1000), "%.2f×",
            lambda x: x >= PLAIN_SET_VALUE_LIMIT)
        for fmt in FORMATS:
            for size in self.sizes_of("BM_PeakMemory_OursBound_%s" % fmt):
                result = self.results[("BM_PeakMemory_OursBound_%s" % fmt,
                                       size)]
                peak = result.counters.get("peak_kB")
                if peak is not None:
                    self.emit("| peak memory of a bound manager (reported) "
                              "| %s | %d | %.0f kB | - |" % (
                                  FORMAT_TEXT[fmt], size, peak))
        self.emit()

    def summary(self):
        sizes = sorted(size for (name, size) in self.results
                       if name == "BM_Ours_LoadFile_Flat")
        if not sizes:
            return
        columns = [(fmt, size) for fmt in FORMATS for size in sizes]

        def cell(value, good, percent=False):
            if value is None:
                return "-"
            text = "%+.1f%%" % (value * 100) if percent else "%.2f×" % value
            return text if good is None or good(value) else "**%s**" % text

        def line(title, compute, good=None, percent=False, at=None):
            """at: the only size the target applies to, if not all."""
            self.emit("| %s | %s |" % (title, " | ".join(
                cell(compute(fmt, size),
                     good if at is None or size == at else None, percent)
                for fmt, size in columns)))

        self.emit("## Summary")
        self.emit()
        self.emit("Bold: a target missed. Loads are over their lower bound "
                  "(one read() plus the tables; see below).")
        self.emit()
        self.emit("| | %s |" % " | ".join(
            "%s %d" % (FORMAT_TEXT[fmt], size) for fmt, size in columns))
        self.emit("|---|%s" % ("---:|" * len(columns)))
        line("load file: × lower bound (target ≤ %g×)" % LOAD_LIMIT,
             self.load_over_bound, lambda x: x <= LOAD_LIMIT)
        line("load hand-written file: × lower bound (target ≤ %g×)" %
             LOAD_LIMIT, lambda f, n: self.load_over_bound(f, n, True),
             lambda x: x <= LOAD_LIMIT)
        line("load file: libproperties ÷ the nearest peer (target > 1×)",
             lambda f, n: self.nearest_peer(f, n)[0], lambda x: x > 1)
        line("load file: libproperties ÷ straightforward",
             lambda f, n: self.load_speedup("Plain", f, n))
        line("store file: × one write() (target ≤ %g× at %d)" %
             (STORE_LIMIT, STORE_SIZE), self.store_over_floor,
             lambda x: x <= STORE_LIMIT, at=STORE_SIZE)
        line("bound SetValue: × floor (target ≤ %g×)" % SET_VALUE_LIMIT,
             self.set_value_over_floor, lambda x: x <= SET_VALUE_LIMIT)
        line("bound SetValue: libproperties ÷ straightforward (target ≥ "
             "%g× at 1000)" % PLAIN_SET_VALUE_LIMIT, self.set_value_speedup,
             lambda x: x >= PLAIN_SET_VALUE_LIMIT, at=1000)
        line("%d registrations: × floor (target ≤ %g× at %d)" % (
            REGISTER_COUNT, REGISTER_LIMIT, REGISTER_TARGET_SIZE),
            self.register_over_floor, lambda x: x <= REGISTER_LIMIT,
            at=REGISTER_TARGET_SIZE)
        line("bound SetValue: share of the file lock (target ≤ %g%%)" %
             (LOCK_LIMIT * 100), self.lock_share,
             lambda x: x <= LOCK_LIMIT, percent=True)
        self.emit()

    def bounds(self, page=False):
        rows = []
        for fmt in FORMATS:
            for size in self.sizes_of("BM_Bound_LoadFile_%s" % fmt):
                rows.append((fmt, size))
        if not rows:
            return
        self.emit("## The lower bound of a load")
        self.emit()
        if page:
            self.page_bounds_text()
        else:
            self.emit("Every load ends in the std::map tables of the binary "
                      "interface. The bound is one read() of the file plus "
                      "building and freeing those tables from fields already "
                      "split: in file order with hints for the files the "
                      "library wrote (in key order); for the hand-written "
                      "ones (in no order) the smaller of building in file "
                      "order and sorting first, then building with hints.")
        self.emit()
        self.emit("| input | entries | floor | bound | libproperties | "
                  "÷ bound | straightforward | ÷ bound |")
        self.emit("|---|---:|---:|---:|---:|---:|---:|---:|")
        for fmt, size in rows:
            floor = self.get("Floor", "LoadFile", fmt, size)
            bound = self.load_bound(fmt, size)
            ours = self.get("Ours", "LoadFile", fmt, size)
            plain = self.get("Plain", "LoadFile", fmt, size)
            self.emit("| %s | %d | %s | %s | %s | %s | %s | %s |" % (
                FORMAT_TEXT[fmt], size,
                seconds_text(floor.seconds if floor else None),
                seconds_text(bound.seconds if bound else None),
                seconds_text(ours.seconds if ours else None),
                ratio(ours.seconds if ours else None,
                      bound.seconds if bound else None),
                seconds_text(plain.seconds if plain else None),
                ratio(plain.seconds if plain else None,
                      bound.seconds if bound else None)))
        self.emit()
        hand = [(fmt, size) for fmt in FORMATS for size in
                self.sizes_of("BM_Ours_LoadHandWritten_%s" % fmt)]
        if not hand:
            return
        self.emit("Hand-written files (the same entries in no order, with "
                  "blanks and comments):")
        self.emit()
        self.emit("| input | entries | bound in file order | bound sorted "
                  "first | libproperties | ÷ bound | straightforward | "
                  "÷ bound |")
        self.emit("|---|---:|---:|---:|---:|---:|---:|---:|")
        for fmt, size in hand:
            in_order = self.get("BoundFileOrder", "LoadHandWritten", fmt, size)
            sorted_first = self.get("BoundSorted", "LoadHandWritten", fmt, size)
            ours = self.get("Ours", "LoadHandWritten", fmt, size)
            plain = self.get("Plain", "LoadHandWritten", fmt, size)
            self.emit("| %s | %d | %s | %s | %s | %s | %s | %s |" % (
                FORMAT_TEXT[fmt], size,
                seconds_text(in_order.seconds if in_order else None),
                seconds_text(sorted_first.seconds if sorted_first else None),
                seconds_text(ours.seconds if ours else None),
                ratio(self.load_over_bound(fmt, size, True), 1),
                seconds_text(plain.seconds if plain else None),
                ratio(self.plain_over_bound(fmt, size, True), 1)))
        self.emit()

    def failures(self):
        failed = sorted("%s/%d: %s" % (name, size, r.error)
                        for (name, size), r in self.results.items() if r.error)
        if failed:
            self.emit("## Runs that reported an error")
            self.emit()
            for line in failed:
                self.emit("- " + line)
            self.emit()


def main(argv):
    args = argv[1:]
    if args and args[0] in ("-h", "--help"):
        sys.stdout.write(__doc__)
        return 0
    page = bool(args) and args[0] == "--markdown-page"
    if page:
        args = args[1:]
    if len(args) != 1:
        sys.stderr.write("usage: report.py [--help] [--markdown-page] "
                         "RESULTS.json\n")
        return 2
    context, results = load_results(args[0])
    report = Report(context, results)
    if page:
        report.page_header()
        report.page_method()
    else:
        report.header()
    report.targets()
    report.summary()
    report.bounds(page)
    report.size_tables()
    report.end_to_end()
    report.memory()
    if page:
        report.page_profile()
    report.failures()
    text = "\n".join(report.lines)
    if page:
        text = text.rstrip("\n") + "\n"
    sys.stdout.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
