#include "gateway/board/Supervisor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace quorvel::board {
namespace {

sigset_t watchedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, number);
    return set;
}

int exitCodeOf(int status) {
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Numbers that name entries of a folder. `reader` becomes the descriptor that the folder was read through.
std::vector<int> numbersIn(const char* folder, int& reader) {
    std::vector<int> numbers;
    DIR* open = opendir(folder);
    if (open == nullptr) return numbers;
    reader = dirfd(open);
    while (const dirent* entry = readdir(open)) {
        char* end = nullptr;
        const long number = std::strtol(entry->d_name, &end, 10);
        if (end != entry->d_name && *end == '\0') numbers.push_back(static_cast<int>(number));
    }
    closedir(open);
    return numbers;
}

pid_t parentOf(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos || name + 4 > text.size()) return 0;
    return static_cast<pid_t>(std::strtol(text.c_str() + name + 4, nullptr, 10));
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
        // The terminal sends a signal to all of the board's processes.
        if (number > 0 && number != SIGCHLD && info.si_code != SI_KERNEL) kill(child, number);
    }
}

void endDescendants() {
    // Killing one may hand its children to this process: until there is none left.
    for (;;) {
        int reader = -1;
        for (const int process : numbersIn("/proc", reader)) {
            if (parentOf(process) == getpid()) kill(process, SIGKILL);
        }
        if (waitpid(-1, nullptr, 0) < 0 && errno == ECHILD) return;
    }
}

std::vector<int> openDescriptors() {
    int reader = -1;
    std::vector<int> numbers = numbersIn("/proc/self/fd", reader);
    std::erase_if(numbers, [reader](int number) { return number <= STDERR_FILENO || number == reader; });
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
