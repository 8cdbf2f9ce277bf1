#include "run_program.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "photo/sample_pictures.h"

namespace vistaTrim::cli {

namespace {

void Redirect(const std::string& path, int flags, int descriptor)
{
    const int opened = open(path.c_str(), flags | O_NOCTTY, 0644);
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
    // Shells start background jobs with these ignored, and programs inherit that.
    signal(SIGINT, SIG_DFL);
    signal(SIGQUIT, SIG_DFL);
    Redirect(in, O_RDONLY, STDIN_FILENO);
    Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    // Opened in advance: user nobody may have no access to the build folder.
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

// Output passes through unchanged.
class PseudoTerminal {
public:
    PseudoTerminal()
    {
        Master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (Master < 0 || grantpt(Master) != 0 || unlockpt(Master) != 0)
            throw std::runtime_error("no pseudo-terminal");
        char name[64] = {};
        if (ptsname_r(Master, name, sizeof name) != 0)
            throw std::runtime_error("a pseudo-terminal without a name");
        SlaveName = name;
        // Held open, so that the master does not fail before the program opens its end.
        Slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        tcgetattr(Slave, &settings);
        cfmakeraw(&settings);
        tcsetattr(Slave, TCSANOW, &settings);
    }
    ~PseudoTerminal()
    {
        Finish();
        close(Master);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    const std::string& Name() const
    {
        return SlaveName;
    }

    // Returns once Finish has been called and everything is read.
    std::string ReadAll()
    {
        std::string text;
        char block[4096];
        for (ssize_t count = 0; (count = read(Master, block, sizeof block)) > 0;)
            text.append(block, static_cast<size_t>(count));
        return text;
    }

    void Finish()
    {
        if (Slave >= 0)
            close(Slave);
        Slave = -1;
    }

private:
    int Master = -1;
    int Slave = -1;
    std::string SlaveName;
};

} // namespace

pid_t BeginProgram(const std::vector<std::string>& arguments, const std::string& out,
                   const std::string& err)
{
    return Spawn(arguments, "/dev/null", out, err, false);
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
    PseudoTerminal outTerminal;
    PseudoTerminal errTerminal;
    const bool outIsTerminal = options.OutIsTerminal || options.OneTerminal;
    const std::string out = outIsTerminal           ? outTerminal.Name()
                            : options.OutTo.empty() ? folder.Path("out")
                                                    : options.OutTo;
    const std::string err = options.OneTerminal     ? out
                            : options.ErrIsTerminal ? errTerminal.Name()
                                                    : folder.Path("err");
    const pid_t child = Spawn(arguments, folder.Path("in"), out, err, options.AsNobody);
    Outcome outcome;
    // A terminal's buffer is small: a writer blocks until the other side reads.
    std::thread outReader([&] { outcome.Out = outTerminal.ReadAll(); });
    std::thread errReader([&] { outcome.Err = errTerminal.ReadAll(); });
    outcome.Status = WaitFor(child);
    outTerminal.Finish();
    errTerminal.Finish();
    outReader.join();
    errReader.join();
    if (!outIsTerminal && options.OutTo.empty())
        outcome.Out = photo::ReadText(out);
    if (!options.ErrIsTerminal && !options.OneTerminal)
        outcome.Err = photo::ReadText(err);
    return outcome;
}

} // namespace vistaTrim::cli
