// ChildAnswer.h - runs a program of the benchmarks in a new process and
// takes the one answer it writes, for measurements that need a process of
// their own (a fresh peak memory, another build of the library).

#ifndef BENCH_CHILDANSWER_H_
#define BENCH_CHILDANSWER_H_

#include <string>
#include <vector>

namespace bench {

// Runs argv (argv[0] the program's path; the argument list as given, then
// the number of a pipe's writing end, where the program writes its answer)
// and returns true with what it wrote in *answer if it wrote something and
// exited 0.
bool RunForAnswer(const std::string& program, std::vector<std::string> argv,
                  std::string* answer);

}  // namespace bench

#endif  // BENCH_CHILDANSWER_H_
