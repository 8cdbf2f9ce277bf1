// Runs a program and reads what it prints.
#ifndef VISTATRIM_TOOLS_PROGRAM_RUNS_H
#define VISTATRIM_TOOLS_PROGRAM_RUNS_H

#include <string>
#include <vector>

// Standard output of `program arguments...`, run without a shell. Standard input is empty; the
// error stream is ours. Throws std::runtime_error naming the program if it cannot be started or
// does not exit with 0. May be called from several threads.
std::string OutputOf(const std::string& program, const std::vector<std::string>& arguments);

#endif
