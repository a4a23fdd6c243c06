// The process service: starts programs, reaps them, ends them, and lets none outlive the host.

#include <fcntl.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "gateway/framework/Platform.h"

namespace {

using namespace quorvel::framework;

constexpr std::chrono::milliseconds kPatience{1000};

// One started program. `pid` is valid until `reaped`, which changes under the service's mutex only: a signal sent under
// that mutex never meets a process id that has been given to somebody else.
struct Process {
    std::string program;
    std::string arguments;
    pid_t pid = 0;
    int startError = 0;
    bool started = false;
    bool reaped = false;
};

struct Service {
    std::mutex mutex;
    std::condition_variable changed;
    std::list<std::shared_ptr<Process>> running;
};

// Never destroyed: keeper threads use it until the process is gone.
Service& service() {
    static auto* const kService = new Service;
    return *kService;
}

std::string boundedText(const char* text, std::size_t size) {
    return {text, strnlen(text, size)};
}

std::vector<std::string> splitAtBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n";
    std::vector<std::string> words;
    for (std::size_t first = 0; (first = text.find_first_not_of(kBlanks, first)) != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(kBlanks, first), text.size());
        words.emplace_back(text.substr(first, end - first));
        first = end;
    }
    return words;
}

constexpr char kDefaultPath[] = "/bin:/usr/bin";

// Finds `program` along PATH and stores its path in `found`. Returns 0 or the reason. A folder that may not be searched
// is as good as one without the program; a file that may not be executed is the reason when no other is found.
int lookUp(const std::string& program, std::string& found) {
    found = program;
    if (program.find('/') != std::string::npos) return 0;  // starting it tells
    const char* const variable = std::getenv("PATH");
    const std::string_view path = variable == nullptr ? kDefaultPath : variable;
    int reason = ENOENT;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find(':', begin), path.size());
        // An empty entry is the working folder.
        found = end == begin ? "." : std::string(path.substr(begin, end - begin));
        found += "/" + program;
        begin = end + 1;
        struct stat file {};
        if (stat(found.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) continue;
        if (access(found.c_str(), X_OK) == 0) return 0;
        reason = EACCES;
    }
    return reason;
}

// Closes what the host has open: a daemon that kept the host's sockets would keep its clients waiting. Between fork and
// exec only system calls are allowed.
void closeAllBut(int kept) {
    const auto last = static_cast<unsigned>(kept);
#ifdef SYS_close_range
    if (syscall(SYS_close_range, 3U, last - 1, 0U) == 0 && syscall(SYS_close_range, last + 1, ~0U, 0U) == 0) return;
#endif
    rlimit limit{};
    constexpr rlim_t kMost = 65536;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) limit.rlim_cur = kMost;
    const int end = static_cast<int>(std::min(limit.rlim_cur, kMost));
    for (int descriptor = 3; descriptor < end; ++descriptor) {
        if (descriptor != kept) close(descriptor);
    }
}

// Runs in the forked child, returns only on failure. `report` takes the reason.
void becomeProgram(pid_t host, int report, const char* path, char* const* arguments) {
    // The request counts for deaths from now on; a host that died before it has already left us to another parent.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != host) return;
    for (int number = 1; number < NSIG; ++number)
        (void)signal(number, SIG_DFL);  // some numbers cannot be changed
    sigset_t none;
    sigemptyset(&none);
    (void)pthread_sigmask(SIG_SETMASK, &none, nullptr);
    // Standard input from nowhere, so that the program does not eat the host's.
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (null >= 0) (void)dup2(null, STDIN_FILENO);
    // The report's descriptor moves out of the way of the standard ones that the host may have closed.
    const int moved = fcntl(report, F_DUPFD_CLOEXEC, 3);
    if (moved < 0) return;
    closeAllBut(moved);
    execvp(path, arguments);
    const int reason = errno;
    (void)!write(moved, &reason, sizeof reason);  // a host that is gone needs no reason
}

// Forks and waits until the child has become the program. Returns 0 or the reason.
int startProgram(Process& process) {
    std::vector<std::string> words = splitAtBlanks(process.arguments);
    words.insert(words.begin(), process.program);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    std::string path;
    if (const int reason = lookUp(process.program, path)) return reason;
    std::array<int, 2> report{};
    if (pipe2(report.data(), O_CLOEXEC) != 0) return errno;
    const pid_t host = getpid();
    const pid_t child = fork();
    if (child == 0) {
        becomeProgram(host, report[1], path.c_str(), arguments.data());
        _exit(127);
    }
    const int forkError = errno;
    close(report[1]);
    int reason = 0;
    ssize_t count = 0;
    while (child > 0 && (count = read(report[0], &reason, sizeof reason)) < 0 && errno == EINTR) {
    }
    close(report[0]);
    if (child < 0) return forkError;
    if (count == static_cast<ssize_t>(sizeof reason)) {
        (void)waitpid(child, nullptr, 0);  // it ends by itself
        return reason;
    }
    process.pid = child;
    return 0;
}

// Keeps one program: the thread that forks it is the parent whose death ends it, so the thread lives as long as the
// program does, whichever thread of the host asked for it.
void keep(const std::shared_ptr<Process>& process) {
    sigset_t all;
    sigfillset(&all);
    (void)pthread_sigmask(SIG_SETMASK, &all, nullptr);  // the host's signals go to the host's threads

    const int error = startProgram(*process);
    {
        const std::lock_guard<std::mutex> guard(service().mutex);
        process->started = true;
        process->startError = error;
        if (error == 0) service().running.push_back(process);
        service().changed.notify_all();
    }
    if (error != 0) return;

    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(process->pid), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const std::lock_guard<std::mutex> guard(service().mutex);
    (void)waitpid(process->pid, nullptr, WNOHANG);
    process->reaped = true;
    service().running.remove(process);
    service().changed.notify_all();
}

Result spawn(const SpawnInfo& info, ProcessRecord& record) {
    auto process = std::make_shared<Process>();
    process->program = boundedText(info.program, sizeof info.program);
    process->arguments = boundedText(info.arguments, sizeof info.arguments);
    if (process->program.empty() || process->program.size() == sizeof info.program ||
        process->arguments.size() == sizeof info.arguments) {
        QUORVEL_HOST_LOG(0, "Process", "Cannot start a program: its name is empty or a text has no end.");
        return kBadArgument;
    }
    std::thread(keep, process).detach();

    std::unique_lock<std::mutex> lock(service().mutex);
    service().changed.wait(lock, [&process] { return process->started; });
    const int error = process->startError;
    const pid_t pid = process->pid;
    lock.unlock();
    if (error != 0) {
        QUORVEL_HOST_LOG(0, "Process", "Cannot start %s: %s", process->program.c_str(), std::strerror(error));
        return error == ENOENT ? kNotFound : kSystemFailure;
    }
    QUORVEL_HOST_LOG(2, "Process", "Started %s %s as process %d", process->program.c_str(), process->arguments.c_str(),
                     static_cast<int>(pid));
    record = {};
    std::memcpy(record.bytes, &pid, sizeof pid);
    return kDone;
}

// Called with the service's mutex held.
void signalAll(const std::vector<std::shared_ptr<Process>>& processes, int number) {
    for (const auto& process : processes) {
        if (!process->reaped) (void)kill(process->pid, number);  // our own unreaped child: it cannot be missing
    }
}

Result terminate(const std::string& program, const std::string& arguments) {
    std::unique_lock<std::mutex> lock(service().mutex);
    std::vector<std::shared_ptr<Process>> found;
    for (const auto& process : service().running) {
        if (process->program == program && process->arguments == arguments) found.push_back(process);
    }
    if (found.empty()) {
        lock.unlock();
        QUORVEL_HOST_LOG(0, "Process", "No process %s %s runs that this host has started.", program.c_str(),
                         arguments.c_str());
        return kNotFound;
    }
    const auto allReaped = [&found] {
        return std::ranges::all_of(found, [](const auto& each) { return each->reaped; });
    };
    signalAll(found, SIGTERM);
    if (service().changed.wait_for(lock, kPatience, allReaped)) return kDone;
    signalAll(found, SIGKILL);
    service().changed.wait(lock, allReaped);
    return kDone;
}

}  // namespace

std::uint32_t QuorvelOsSpawnProcess(SpawnInfo* info, ProcessRecord* process) {
    if (info == nullptr || process == nullptr) return kBadArgument;
    try {
        return spawn(*info, *process);
    } catch (const std::exception& problem) {
        QUORVEL_HOST_LOG(0, "Process", "Cannot start %.64s: %s", info->program, problem.what());
        return kSystemFailure;
    }
}

std::uint32_t QuorvelOsTerminateProcess(SpawnInfo* info, char* arguments) {
    if (info == nullptr) return kBadArgument;
    try {
        return terminate(boundedText(info->program, sizeof info->program),
                         boundedText(arguments == nullptr ? info->arguments : arguments, sizeof info->arguments));
    } catch (const std::exception& problem) {
        QUORVEL_HOST_LOG(0, "Process", "Cannot end %.64s: %s", info->program, problem.what());
        return kSystemFailure;
    }
}
