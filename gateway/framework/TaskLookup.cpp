// Finds running tasks by name.

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

#include "gateway/framework/Platform.h"

namespace {

// The kernel keeps this many characters of a task's name.
constexpr std::size_t kNameLength = 15;

struct CloseFolder {
    void operator()(DIR* folder) const {
        (void)closedir(folder);  // nothing was written
    }
};

// Reads /proc/PID/FILE as far as it fits. Returns the bytes read.
std::string_view readEntry(const char* pid, const char* name, std::span<char> buffer) {
    std::array<char, 300> path{};
    (void)std::snprintf(path.data(), path.size(), "/proc/%s/%s", pid, name);
    const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    const ssize_t count = read(file, buffer.data(), buffer.size());
    close(file);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

// Tells whether a task is called `name` and has not ended: one that is only not reaped yet keeps its name.
bool isRunning(const char* pid, std::string_view name) {
    std::array<char, 64> nameBuffer{};
    std::string_view found = readEntry(pid, "comm", nameBuffer);
    if (found.ends_with('\n')) found.remove_suffix(1);
    if (found != name) return false;
    // "PID (NAME) STATE ...", and a name may hold anything.
    std::array<char, 512> statBuffer{};
    const std::string_view stat = readEntry(pid, "stat", statBuffer);
    const std::size_t end = stat.rfind(") ");
    return end != std::string_view::npos && end + 2 < stat.size() && stat[end + 2] != 'Z' && stat[end + 2] != 'X';
}

}  // namespace

std::int32_t QuorvelUtilGetPidByName(const char* name) {
    if (name == nullptr || name[0] == '\0') return 0;
    const std::unique_ptr<DIR, CloseFolder> processes(opendir("/proc"));
    if (processes == nullptr) return 0;
    const std::string_view wanted = std::string_view(name).substr(0, kNameLength);
    std::int32_t lowest = 0;
    while (const dirent* entry = readdir(processes.get())) {
        const long pid = std::strtol(entry->d_name, nullptr, 10);
        if (pid <= 0 || !isRunning(entry->d_name, wanted)) continue;
        lowest = lowest == 0 ? static_cast<std::int32_t>(pid) : std::min(lowest, static_cast<std::int32_t>(pid));
    }
    return lowest;
}
