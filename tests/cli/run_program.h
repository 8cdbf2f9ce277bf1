// Runs the program as a user would.
#ifndef VISTATRIM_TESTS_CLI_RUN_PROGRAM_H
#define VISTATRIM_TESTS_CLI_RUN_PROGRAM_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace vistaTrim::cli {

struct Outcome {
    int Status = -1; // exit status; 1000 + signal number if a signal killed the program
    std::string Out;
    std::string Err;
};

struct RunOptions {
    std::string Input;          // standard input
    std::string OutTo;          // standard output goes to this file instead
    bool AsNobody = false;      // as an unprivileged user, if the tests run as root
    bool OutIsTerminal = false; // standard output is a pseudo-terminal
    bool ErrIsTerminal = false;
    bool OneTerminal = false; // both go to one terminal; Out has all of it, Err is empty
};

Outcome RunProgram(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Starts a run and returns its process. Its output goes to these files.
pid_t BeginProgram(const std::vector<std::string>& arguments, const std::string& out = "/dev/null",
                   const std::string& err = "/dev/null");
int WaitFor(pid_t process); // as Outcome::Status

} // namespace vistaTrim::cli

#endif
