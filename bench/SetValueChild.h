// SetValueChild.h - times bound SetValue calls in a process of its own.
//
// The library is built with file locks by default; the one built without
// them can only be had as a second shared library, in a second program
// (PropertiesBenchmarkNoLocks). So that the two builds are timed alike and
// side by side in one run, both are timed in a child: the benchmark program
// starts itself, or that second program, with
//
//   <program> --set-value-child=<Flat|Ini> <path> <section> <key> <seconds>
//             <fd>
//
// and the child binds a fresh manager read-write to path, registers the
// integer property (section, key), sets it once and checks the file, then
// alternates two values for at least seconds (and at least 3 sets) and
// writes "<seconds per set>" to fd.

#ifndef BENCH_SETVALUECHILD_H_
#define BENCH_SETVALUECHILD_H_

#include <string>

namespace bench {

// Runs program as a SetValue child on the file at path (which it rewrites)
// and returns the seconds one SetValue took on average; -1 on any failure.
double SetValueSecondsInChild(const std::string& program, bool ini,
                              const std::string& path,
                              const std::string& section,
                              const std::string& key, double seconds);

// If argv is the command line of a SetValue child, times and returns true
// with the exit code in *exitCode; returns false otherwise.
bool RunSetValueChild(int argc, char** argv, int* exitCode);

}  // namespace bench

#endif  // BENCH_SETVALUECHILD_H_
