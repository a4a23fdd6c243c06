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

// The threads of this process. The thread sanitizer starts one of its own with the first, and reports itself those that
// are left: under it the number says nothing.
[[nodiscard]] inline std::size_t threadsOfProcess() {
#if defined(__SANITIZE_THREAD__)
    return 0;
#else
    return entriesOf("/proc/self/task");
#endif
}

// Descriptors and threads of this process.
struct Resources {
    std::size_t descriptors = entriesOf("/proc/self/fd");
    std::size_t threads = threadsOfProcess();

    // Waits until no more threads are listed than `threads`: one that has been joined may still be for a moment.
    [[nodiscard]] static Resources onceThreadsAreGone(std::size_t threads) {
        constexpr unsigned kLooks = 100000;
        Resources now;
        for (unsigned look = 0; look < kLooks && now.threads > threads; ++look) {
            (void)sched_yield();
            now.threads = threadsOfProcess();
        }
        return now;
    }
};

}  // namespace quorvel::scripted
