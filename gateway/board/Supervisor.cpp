#include "gateway/board/Supervisor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "common/BoardProcesses.h"

namespace quorvel::board {
namespace {

// The signal that the kernel sends for a parent that has died: one that nothing else here sends.
constexpr int kParentEnded = SIGPWR;

sigset_t watchedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP, kParentEnded})
        sigaddset(&set, number);
    return set;
}

int exitCodeOf(int status) {
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

BlockedSignals::BlockedSignals() {
    const sigset_t set = watchedSignals();
    sigprocmask(SIG_BLOCK, &set, &before_);
}

BlockedSignals::~BlockedSignals() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool dieWithParent(pid_t parent) {
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent;
}

bool hearOfParentsEnd(pid_t parent) {
    return prctl(PR_SET_PDEATHSIG, kParentEnded) == 0 && getppid() == parent;
}

int supervise(pid_t child) {
    (void)signal(SIGCHLD, SIG_DFL);  // an ignored SIGCHLD would take the status away
    const sigset_t set = watchedSignals();
    for (;;) {
        int status = 0;
        pid_t ended = 0;
        while ((ended = waitpid(-1, &status, WNOHANG)) > 0) {
            if (ended == child) return exitCodeOf(status);
        }
        siginfo_t info{};
        const int number = sigwaitinfo(&set, &info);
        if (number == kParentEnded) {
            kill(child, SIGKILL);
            continue;
        }
        // The terminal sends a signal to all of the board's processes.
        if (number > 0 && number != SIGCHLD && info.si_code != SI_KERNEL) kill(child, number);
    }
}

void endDescendants() {
    // Killing one may hand its children to this process: until there is none left.
    for (;;) {
        for (const pid_t process : common::childrenOf(getpid()))
            kill(process, SIGKILL);
        if (waitpid(-1, nullptr, 0) < 0 && errno == ECHILD) return;
    }
}

std::vector<int> openDescriptors() {
    std::vector<int> numbers;
    DIR* const folder = opendir("/proc/self/fd");
    if (folder == nullptr) return numbers;
    while (const dirent* entry = readdir(folder)) {
        const int number = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
        if (number > STDERR_FILENO && number != dirfd(folder)) numbers.push_back(number);
    }
    closedir(folder);
    return numbers;
}

void letGoOf(const std::vector<int>& descriptors) {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null >= 0) {
        (void)dup2(null, STDIN_FILENO);
        (void)dup2(null, STDOUT_FILENO);
    }
    for (const int number : descriptors)
        close(number);
}

}  // namespace quorvel::board
