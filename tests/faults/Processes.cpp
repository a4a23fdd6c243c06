#include "tests/faults/Processes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace quorvel::faults_test {
namespace {

std::string content(const std::string& process, const char* file) {
    std::ifstream in("/proc/" + process + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The state and the parent follow the name in parentheses.
std::string behindName(const std::string& process) {
    const std::string stat = content(process, "stat");
    const std::size_t name = stat.rfind(") ");
    return name == std::string::npos ? "" : stat.substr(name + 2);
}

std::string parentOf(const std::string& process) {
    const std::string stat = behindName(process);
    return stat.empty() ? "" : stat.substr(2, stat.find(' ', 2) - 2);
}

bool belongsTo(std::string process, const std::string& state) {
    // A chain longer than this is none.
    for (int generation = 0; generation < 64 && process.size() > 1; ++generation) {
        if (content(process, "cmdline").find(state) != std::string::npos) return true;
        process = parentOf(process);
    }
    return false;
}

}  // namespace

pid_t managerOf(const std::string& state) {
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", gone)) {
        const std::string process = entry.path().filename().string();
        if (!std::all_of(process.begin(), process.end(), [](char each) { return each >= '0' && each <= '9'; }))
            continue;
        // The name may be that of an emulator; the command line has the program's either way.
        if (content(process, "cmdline").find("wlmngr2") == std::string::npos) continue;
        if (content(process, "comm").find("wlmngr2") != 0 || !belongsTo(process, state)) continue;
        return static_cast<pid_t>(std::stol(process));
    }
    return 0;
}

char stateOf(pid_t process) {
    const std::string stat = behindName(std::to_string(process));
    return stat.empty() ? ' ' : stat.front();
}

}  // namespace quorvel::faults_test
