#include "batch/temporary_files.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "batch/output_place.h"
#include "options/program_error.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = ".vistatrim-";
constexpr size_t kRandomDigits = 8;

// Names are .vistatrim-RUN-NUMBER.EXTENSION, and .vistatrim-RUN.lock for the lock. RUN is
// PROCESS-RANDOM, since a run on another machine can have the same process number.
const std::string& RunName()
{
    static const std::string name = [] {
        char text[40];
        std::snprintf(text, sizeof text, "%ld-%08x", static_cast<long>(getpid()),
                      static_cast<unsigned>(std::random_device()()));
        return std::string(text);
    }();
    return name;
}

std::string LockPath(const std::string& folder, const std::string& run)
{
    return (fs::path(folder) / (kPrefix + run + ".lock")).string();
}

bool IsOpenLock(int descriptor)
{
    struct stat state = {};
    return fstat(descriptor, &state) == 0 && state.st_nlink > 0;
}

// Tries again if the lock file was deleted between opening and locking.
int HoldLock(const std::string& path)
{
    for (;;) {
        const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (descriptor < 0)
            return -1;
        // Where the file system has no locks, other runs cannot lock the file either. Signals do
        // not end the wait: our handlers let the system restart calls.
        flock(descriptor, LOCK_EX);
        if (IsOpenLock(descriptor))
            return descriptor;
        close(descriptor);
    }
}

struct HeldLock {
    int Descriptor = -1;
    int Files = 0;
};

std::mutex locksMutex;
std::map<std::string, HeldLock> locks; // by folder

void Enter(const std::string& folder, const std::string& target)
{
    const std::lock_guard<std::mutex> guard(locksMutex);
    HeldLock& lock = locks[folder];
    if (lock.Files == 0) {
        lock.Descriptor = HoldLock(LockPath(folder, RunName()));
        if (lock.Descriptor < 0) {
            locks.erase(folder);
            throw ProgramError("cannot write " + Shown(target) + ": " +
                               std::generic_category().message(errno));
        }
    }
    ++lock.Files;
}

void Leave(const std::string& folder)
{
    const std::lock_guard<std::mutex> guard(locksMutex);
    const auto lock = locks.find(folder);
    if (--lock->second.Files > 0)
        return;
    unlink(LockPath(folder, RunName()).c_str()); // before the lock is released
    close(lock->second.Descriptor);
    locks.erase(lock);
}

size_t DigitsAt(const std::string& text, size_t at, bool hexadecimal)
{
    size_t count = 0;
    while (at + count < text.size()) {
        const auto c = static_cast<unsigned char>(text[at + count]);
        if (std::isdigit(c) == 0 && (!hexadecimal || c < 'a' || c > 'f'))
            break;
        ++count;
    }
    return count;
}

// The run that a temporary file or a lock belongs to; empty if it is from a release that used no
// locks. None if the name is neither.
std::optional<std::string> RunOf(const std::string& name)
{
    const std::string prefix = kPrefix;
    if (name.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    const auto endsAt = [&name](size_t at) { return at == name.size() || name[at] == '.'; };
    const size_t process = DigitsAt(name, prefix.size(), false);
    size_t at = prefix.size() + process;
    if (process == 0 || at >= name.size() || name[at] != '-')
        return std::nullopt;
    ++at;
    const size_t number = DigitsAt(name, at, false);
    if (number > 0 && number < kRandomDigits && endsAt(at + number))
        return std::string();
    if (DigitsAt(name, at, true) != kRandomDigits)
        return std::nullopt;
    at += kRandomDigits;
    const std::string run = name.substr(prefix.size(), at - prefix.size());
    if (name.substr(at) == ".lock")
        return run;
    if (at >= name.size() || name[at] != '-')
        return std::nullopt;
    const size_t counter = DigitsAt(name, at + 1, false);
    return counter > 0 && endsAt(at + 1 + counter) ? std::optional(run) : std::nullopt;
}

// Without locks, only the modification time shows whether a run still writes the file.
void DeleteIfOld(const fs::path& file)
{
    constexpr std::chrono::hours kOld(24);
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(file, error);
    if (!error && fs::file_time_type::clock::now() - written > kOld)
        fs::remove(file, error);
}

void ClearRun(const std::string& folder, const std::string& run, const std::vector<fs::path>& files)
{
    const std::string path = LockPath(folder, run);
    const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == ENOENT)
            std::for_each(files.begin(), files.end(), DeleteIfOld);
        return;
    }
    // If deleted, that run was done with this folder, and may be back in it with another lock.
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && IsOpenLock(descriptor)) {
        std::error_code error;
        for (const fs::path& file : files)
            if (file != path)
                fs::remove(file, error);
        // Last, because files without a lock are only deleted when they are old.
        unlink(path.c_str());
    }
    close(descriptor);
}

bool IsFirstVisit(const std::string& folder)
{
    static std::mutex mutex;
    static std::set<std::string> visited;
    const std::lock_guard<std::mutex> guard(mutex);
    return visited.insert(folder).second;
}

} // namespace

void ClearAbandoned(const std::string& folder)
{
    if (!IsFirstVisit(folder))
        return;
    std::map<std::string, std::vector<fs::path>> runs;
    std::error_code error;
    for (fs::directory_iterator it(folder, error); !error && it != fs::directory_iterator();
         it.increment(error)) {
        const std::optional<std::string> run = RunOf(it->path().filename().string());
        if (!run || *run == RunName())
            continue;
        if (run->empty())
            DeleteIfOld(it->path());
        else
            runs[*run].push_back(it->path());
    }
    for (const auto& [run, files] : runs)
        ClearRun(folder, run, files);
}

TemporaryFile::TemporaryFile(const std::string& target)
{
    static std::atomic<unsigned> counter{0};
    const fs::path path(target);
    Folder = FolderOf(target);
    ClearAbandoned(Folder);
    Enter(Folder, target);
    Name = (path.parent_path() /
            (kPrefix + RunName() + "-" + std::to_string(counter++) + path.extension().string()))
               .string();
}

TemporaryFile::~TemporaryFile()
{
    unlink(Name.c_str());
    Leave(Folder);
}

const std::string& TemporaryFile::Path() const
{
    return Name;
}

} // namespace vistaTrim::cli
