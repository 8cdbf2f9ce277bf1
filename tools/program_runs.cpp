#include "program_runs.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void Fail(const std::string& program, const std::string& what, int error)
{
    throw std::runtime_error(program + ": " + what + ": " + std::generic_category().message(error));
}

// Everything up to the end of the pipe; an errno, or 0, in `error`.
std::string ReadAll(int descriptor, int& error)
{
    std::string text;
    char block[65536];
    error = 0;
    for (;;) {
        const ssize_t count = read(descriptor, block, sizeof block);
        if (count > 0)
            text.append(block, static_cast<size_t>(count));
        else if (count == 0)
            return text;
        else if (errno != EINTR) {
            error = errno;
            return text;
        }
    }
}

} // namespace

std::string OutputOf(const std::string& program, const std::vector<std::string>& arguments)
{
    // Closed on exec, or a program started by another thread would hold this pipe open.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        Fail(program, "no pipe", errno);

    std::vector<char*> words = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t process = 0;
    const int refused =
        posix_spawn(&process, program.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (refused != 0) {
        close(ends[0]);
        Fail(program, "cannot be started", refused);
    }

    int unread = 0;
    std::string text = ReadAll(ends[0], unread);
    close(ends[0]);
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            Fail(program, "its exit status is lost", errno);
    if (unread != 0)
        Fail(program, "its output cannot be read", unread);
    if (WIFSIGNALED(status))
        throw std::runtime_error(program + ": ended by signal " + std::to_string(WTERMSIG(status)));
    if (WEXITSTATUS(status) != 0)
        throw std::runtime_error(program + ": failed with exit status " +
                                 std::to_string(WEXITSTATUS(status)));
    return text;
}
