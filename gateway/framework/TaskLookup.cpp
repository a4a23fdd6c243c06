// Finds running tasks by name: the board's, not others of the machine.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <span>
#include <string_view>

#include "common/BoardProcesses.h"
#include "gateway/framework/Platform.h"

namespace {

// The kernel keeps this many characters of a task's name.
constexpr std::size_t kNameLength = 15;

// Reads /proc/PID/FILE as far as it fits. Returns the bytes read.
std::string_view readEntry(pid_t pid, const char* name, std::span<char> buffer) {
    std::array<char, 64> path{};
    (void)std::snprintf(path.data(), path.size(), "/proc/%d/%s", static_cast<int>(pid), name);
    const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    const ssize_t count = read(file, buffer.data(), buffer.size());
    close(file);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

// Tells whether a task is called `name` and has not ended: one that is only not reaped yet keeps its name.
bool isRunning(pid_t pid, std::string_view name) {
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
    const std::string_view wanted = std::string_view(name).substr(0, kNameLength);
    try {
        std::int32_t lowest = 0;
        for (const pid_t process : quorvel::common::boardProcesses()) {
            if ((lowest == 0 || process < lowest) && isRunning(process, wanted)) lowest = process;
        }
        return lowest;
    } catch (const std::exception&) {
        return 0;
    }
}
