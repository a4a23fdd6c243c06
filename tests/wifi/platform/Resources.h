#pragma once

#include <dirent.h>
#include <sched.h>

#include <cstddef>

namespace quorvel::scripted {

// The entries of a folder of /proc/self, such as "/proc/self/fd".
[[nodiscard]] inline std::size_t entriesOf(const char* folder) {
    DIR* const directory = opendir(folder);
    if (directory == nullptr) return 0;
    std::size_t entries = 0;
    while (readdir(directory) != nullptr) {
        ++entries;
    }
    (void)closedir(directory);
    return entries;
}

// What this process has open and running.
struct Resources {
    std::size_t descriptors = entriesOf("/proc/self/fd");
    std::size_t threads = entriesOf("/proc/self/task");

    // Waits until no more threads are listed than `threads`: one that has been joined may still be for a moment.
    [[nodiscard]] static Resources onceThreadsAreGone(std::size_t threads) {
        constexpr unsigned kLooks = 100000;
        Resources now;
        for (unsigned look = 0; look < kLooks && now.threads > threads; ++look) {
            (void)sched_yield();
            now.threads = entriesOf("/proc/self/task");
        }
        return now;
    }
};

}  // namespace quorvel::scripted
