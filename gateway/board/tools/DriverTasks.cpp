#include "gateway/board/tools/DriverTasks.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include "common/BoardProcesses.h"
#include "common/Descriptor.h"

namespace quorvel::board {
namespace {

// Closes the descriptors inherited from the loader of the driver: a reader may wait for the end of its output.
void letGo(int keptReader, int keptWriter) {
    const int null = open("/dev/null", O_RDWR);
    for (int number = 0; number <= 2 && null >= 0; ++number)
        (void)dup2(null, number);
    DIR* folder = opendir("/proc/self/fd");
    if (folder == nullptr) return;
    while (const dirent* entry = readdir(folder)) {
        const int number = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
        if (number > 2 && number != keptReader && number != keptWriter && number != dirfd(folder)) close(number);
    }
    closedir(folder);
    (void)setsid();
    (void)!chdir("/");
}

// The task's parent is gone when `loader` reports its end; from then on the board's first process is the parent, and
// the task goes with it.
[[noreturn]] void beTask(const std::string& name, pid_t parent, int loader, int ready) {
    letGo(loader, ready);
    const int failed = prctl(PR_SET_NAME, name.c_str()) == 0 ? 0 : errno;
    (void)!write(ready, &failed, sizeof failed);
    close(ready);
    pollfd entry{loader, POLLIN, 0};
    while (poll(&entry, 1, -1) < 0 && errno == EINTR) {
    }
    // Its files are closed a moment before the loader is gone.
    while (getppid() == parent)
        (void)usleep(1000);
    const char* first = std::getenv("QUORVEL_BOARD_FIRST_PROCESS");
    if (first != nullptr) {
        (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != std::atoi(first)) _exit(0);
    }
    for (;;)
        pause();
}

}  // namespace

int startDriverTask(const std::string& name) {
    std::array<int, 2> life{};
    std::array<int, 2> ready{};
    // The life pipe stays open in this process until it ends: that is what the task waits for.
    if (pipe2(life.data(), O_CLOEXEC) != 0 || pipe2(ready.data(), O_CLOEXEC) != 0) return errno;
    const pid_t loader = getpid();
    const pid_t task = fork();
    if (task == 0) beTask(name, loader, life[0], ready[1]);
    const int forkError = errno;
    close(life[0]);
    close(ready[1]);
    int error = ECHILD;
    if (task > 0 && read(ready[0], &error, sizeof error) != static_cast<ssize_t>(sizeof error)) error = ECHILD;
    close(ready[0]);
    return task < 0 ? forkError : error;
}

bool driverTaskRuns(const std::string& name) {
    for (const pid_t process : common::boardProcesses()) {
        std::ifstream file("/proc/" + std::to_string(process) + "/comm");
        std::string found;
        if (std::getline(file, found) && found == name) return true;
    }
    return false;
}

}  // namespace quorvel::board
