# Entry points for people: each target configures, builds and runs by itself.
#   make demo   build and run the demo program
#   make test   build and run every test
#   make asan   every test under AddressSanitizer + UndefinedBehaviorSanitizer,
#               with crash-safe rewrites on (so both rewrite ways are tested)
#   make tsan   the concurrency tests under ThreadSanitizer
#   make valgrind  the demo and every test under valgrind's memcheck
#   make clang  every test, built with clang (warnings are errors) and the
#               other build choices (long lines read, messages on stderr)
#   make format-check  the sources against clang-format 14 (make format fixes)
#   make fuzz   every fuzz target for FUZZ_SECONDS (default 60) with libFuzzer
#   make install-check  install to a scratch prefix and build a consumer
#   make abi-check      compare the binary interface with abi/
#   make deb    the Debian packages in build-deb/src/, checked by lintian
#   make bench  the benchmarks (build-bench/results.json, results.md; BENCH_ARGS)
#   make bench-docs  the benchmarks, then the page docs/benchmarks.md

BUILD_DIR ?= build
CMAKE_ARGS ?=
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all demo test asan tsan valgrind clang format format-check fuzz bench \
        deps configure clean

all: test

deps:
	@sh tools/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON $(CMAKE_ARGS)

demo: configure
	cmake --build $(BUILD_DIR) -j $(JOBS) --target PropertiesDemo
	$(BUILD_DIR)/examples/PropertiesDemo

test: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

asan: deps
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DPROPERTIES_SANITIZE=address,undefined \
	  -DPROPERTIES_SAFE_WRITES=ON
	cmake --build build-asan -j $(JOBS)
	ctest --test-dir build-asan --output-on-failure -j $(JOBS)

# Only the tests that run threads: death tests and TSan do not mix well.
# This build also logs to standard error, which LogTests checks.
tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DPROPERTIES_SANITIZE=thread \
	  -DPROPERTIES_LOG=stderr -DPROPERTIES_BUILD_EXAMPLES=OFF
	cmake --build build-tsan -j $(JOBS) --target PropertiesTests LogTests SharingDriver
	TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/LogTests
	TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/PropertiesTests \
	  --gtest_filter='ConcurrencyTest.*:SharedFileTest*:*ReaderWriterTest.*:NativeValueTest.*:PropertiesTest.*:PropertyThreadGuardTest.*'

# The second compiler: its warnings differ from GCC's. It also builds the
# library's other build choices (long lines read whole, messages on standard
# error), so that every test runs against them too.
clang: deps
	@sh tools/install-deps.sh clang
	CXX=clang++ cmake -S . -B build-clang -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DPROPERTIES_LONG_LINES=read -DPROPERTIES_LOG=stderr
	cmake --build build-clang -j $(JOBS)
	ctest --test-dir build-clang --output-on-failure -j $(JOBS)

# Every C++ source of the project, formatted by one pinned clang-format.
FORMAT_SOURCES = $(shell git ls-files '*.cpp' '*.h' 2>/dev/null)
CLANG_FORMAT = clang-format-14

format-check:
	@sh tools/install-deps.sh format
	$(CLANG_FORMAT) --dry-run -Werror $(FORMAT_SOURCES)

format:
	@sh tools/install-deps.sh format
	$(CLANG_FORMAT) -i $(FORMAT_SOURCES)

# Definite and indirect leaks and memory errors fail the run; forked test
# children are checked too (their exit code turns 9).
VALGRIND = valgrind --leak-check=full --show-leak-kinds=definite,indirect \
  --errors-for-leak-kinds=definite,indirect --error-exitcode=9 \
  --child-silent-after-fork=yes

valgrind: configure
	@sh tools/install-deps.sh valgrind
	cmake --build $(BUILD_DIR) -j $(JOBS)
	$(VALGRIND) $(BUILD_DIR)/examples/PropertiesDemo
	$(VALGRIND) $(BUILD_DIR)/tests/PropertiesTests --gtest_brief=1
	$(VALGRIND) $(BUILD_DIR)/tests/InternalTests --gtest_brief=1
	$(VALGRIND) $(BUILD_DIR)/tests/LogTests --gtest_brief=1

# Every fuzz target built with clang, libFuzzer and ASan+UBSan, each run for
# FUZZ_SECONDS on its corpus. New inputs go to build-fuzz/corpus/<target>
# (the committed fuzz/corpus/ is only read); a crash or a failed check stops
# the run and leaves its input in build-fuzz/artifacts/<target>/.
FUZZ_SECONDS ?= 60
FUZZERS = JavaPropertiesFuzzer IniPropertiesFuzzer ExtractFuzzer \
          SetValueFuzzer ManagerFuzzer StrictValuesFuzzer LayoutFuzzer
# ManagerFuzzer rewrites (and syncs) files in a new directory under TMPDIR
# on every change: a memory file system makes it several times faster.
FUZZ_TMPDIR ?= $(if $(wildcard /dev/shm),/dev/shm,/tmp)

fuzz:
	@sh tools/install-deps.sh fuzz
	cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DPROPERTIES_WERROR=ON -DCMAKE_CXX_COMPILER=clang++ \
	  -DPROPERTIES_BUILD_FUZZERS=ON -DPROPERTIES_BUILD_TESTS=OFF \
	  -DPROPERTIES_BUILD_EXAMPLES=OFF
	cmake --build build-fuzz -j $(JOBS) --target $(FUZZERS)
	set -e; for f in $(FUZZERS); do \
	  mkdir -p build-fuzz/corpus/$$f build-fuzz/artifacts/$$f; \
	  TMPDIR=$(FUZZ_TMPDIR) build-fuzz/fuzz/$$f \
	    -max_total_time=$(FUZZ_SECONDS) -timeout=30 \
	    -print_final_stats=1 -artifact_prefix=build-fuzz/artifacts/$$f/ \
	    build-fuzz/corpus/$$f fuzz/corpus/$$f; \
	done

# Google Benchmark, Release build; medians of 5 repetitions go to
# build-bench/results.json and, as markdown tables, to build-bench/results.md.
# The results record the commit measured (with -dirty if the tree had
# changes). A quick run: make bench BENCH_ARGS=--benchmark_min_time=0.01
# make bench-docs runs the same and writes the page docs/benchmarks.md from
# it (bench/report.py --markdown-page); that page is never edited by hand.
BENCH_ARGS ?=
# The page is not measured: a change to it alone does not make the tree dirty.
BENCH_COMMIT = $(shell commit=$$(git describe --always 2>/dev/null) && \
  { git diff --quiet HEAD -- . ':(exclude)docs/benchmarks.md' && \
    echo $$commit || echo $$commit-dirty; } || echo unknown)

bench:
	@sh tools/install-deps.sh bench
	cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release \
	  -DPROPERTIES_BUILD_BENCHMARKS=ON -DPROPERTIES_BUILD_TESTS=OFF
	cmake --build build-bench -j $(JOBS) --target PropertiesBenchmark
	build-bench/bench/PropertiesBenchmark --benchmark_repetitions=5 \
	  --benchmark_report_aggregates_only=true \
	  --benchmark_out=build-bench/results.json --benchmark_out_format=json \
	  --benchmark_context=commit=$(BENCH_COMMIT) \
	  $(BENCH_ARGS)
	python3 bench/report.py build-bench/results.json > build-bench/results.md
	@echo "Tables: build-bench/results.md"

.PHONY: bench-docs

bench-docs: bench
	python3 bench/report.py --markdown-page build-bench/results.json \
	  > build-bench/benchmarks.md
	mv build-bench/benchmarks.md docs/benchmarks.md
	@echo "Page: docs/benchmarks.md"

# Every build directory the targets above make.
clean:
	rm -rf $(BUILD_DIR) build build-asan build-tsan build-clang build-fuzz \
	  build-bench build-deb

# The installed tree: installs the build to a scratch prefix and builds and
# runs a program against it through the CMake package and through pkg-config
# (tests/consumer/run.sh; the CTest test InstalledConsumer, label "install").
# The binary interface: compares libproperties.so.1 with the baseline in abi/
# (tools/check-abi.sh; after an intended change:
# tools/check-abi.sh --update $(BUILD_DIR)), checks that Debug and Release
# export the same symbols (tools/check-export-list.sh), then shows on a
# scratch copy that an added member and an added virtual function are caught
# (tools/prove-abi-guard.sh).
.PHONY: install-check abi-check

install-check: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)
	ctest --test-dir $(BUILD_DIR) --output-on-failure -L install

abi-check: configure
	@sh tools/install-deps.sh abi
	cmake --build $(BUILD_DIR) -j $(JOBS) --target properties TextNumbers
	sh tools/check-abi.sh $(BUILD_DIR)
	sh tools/check-export-list.sh
	sh tools/prove-abi-guard.sh

# The Debian packages libproperties1, libproperties-dev and propctl, built
# with dpkg-buildpackage -us -uc -b from a copy of the tree in build-deb/src/
# (where the .deb and .changes files land), then checked by lintian: any
# lintian error fails (tools/build-deb.sh). The package build runs no tests.
.PHONY: deb

deb:
	@sh tools/install-deps.sh deb
	sh tools/build-deb.sh build-deb $(JOBS)
