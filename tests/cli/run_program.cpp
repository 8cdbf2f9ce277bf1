#include "run_program.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "photo/sample_pictures.h"

namespace vistaTrim::cli {

namespace {

void Redirect(const std::string& path, int flags, int descriptor)
{
    const int opened = open(path.c_str(), flags, 0644);
    if (opened < 0 || dup2(opened, descriptor) < 0)
        _exit(126);
    close(opened);
}

pid_t Spawn(const std::vector<std::string>& arguments, const std::string& in,
            const std::string& out, const std::string& err, bool asNobody)
{
    const pid_t child = fork();
    if (child != 0)
        return child;
    Redirect(in, O_RDONLY, STDIN_FILENO);
    Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    // Opened ahead: nobody may not be let into the folder that the program was built in.
    const int program = open(VISTATRIM_PROGRAM, O_RDONLY | O_CLOEXEC);
    constexpr uid_t kNobody = 65534;
    if (asNobody && geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0))
        _exit(125);
    std::vector<char*> words = {const_cast<char*>(VISTATRIM_PROGRAM)};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    fexecve(program, words.data(), environ);
    _exit(127);
}

} // namespace

pid_t BeginProgram(const std::vector<std::string>& arguments)
{
    return Spawn(arguments, "/dev/null", "/dev/null", "/dev/null", false);
}

int WaitFor(pid_t process)
{
    int status = 0;
    if (waitpid(process, &status, 0) != process)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

Outcome RunProgram(const std::vector<std::string>& arguments, const RunOptions& options)
{
    const photo::TempFolder folder;
    photo::WriteText(folder.Path("in"), options.Input);
    const std::string out = options.OutTo.empty() ? folder.Path("out") : options.OutTo;
    const pid_t child =
        Spawn(arguments, folder.Path("in"), out, folder.Path("err"), options.AsNobody);
    Outcome outcome;
    outcome.Status = WaitFor(child);
    outcome.Out = options.OutTo.empty() ? photo::ReadText(out) : "";
    outcome.Err = photo::ReadText(folder.Path("err"));
    return outcome;
}

} // namespace vistaTrim::cli
