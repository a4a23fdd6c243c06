#include "fleet/Processes.h"

#include <poll.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace quorvel::fleet {
namespace {

namespace fs = std::filesystem;

constexpr int kLookMilliseconds = 20;

struct TableEntry {
    pid_t parent = 0;
    pid_t session = 0;
    std::uint64_t ticks = 0;
    unsigned gateway = 0;  ///< 0: not known yet
    bool begins = false;
};

using ProcessTable = std::map<pid_t, TableEntry>;

std::string readProcFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The number of the gateway for which a command line says "--state FOLDER/NUMBER", else 0.
unsigned gatewayOf(const std::string& commandLine, const std::string& folder) {
    static const std::string option = std::string("\0--state\0", 9);
    const std::string wanted = option + folder + "/";
    const std::size_t at = commandLine.find(wanted);
    if (at == std::string::npos) return 0;
    const char* const digits = commandLine.c_str() + at + wanted.size();
    char* end = nullptr;
    const unsigned long number = std::strtoul(digits, &end, 10);
    return end != digits && *end == '\0' ? static_cast<unsigned>(number) : 0;
}

// Reads the fields of /proc/PID/stat behind the name, which may have blanks and brackets.
bool readEntry(const std::string& text, TableEntry& entry) {
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos) return false;
    std::istringstream in(text.substr(name + 1));
    std::string skipped;
    std::uint64_t user = 0;
    std::uint64_t system = 0;
    in >> skipped >> entry.parent >> skipped >> entry.session;
    for (int i = 7; i < 14; ++i)
        in >> skipped;
    in >> user >> system;
    entry.ticks = user + system;
    return static_cast<bool>(in);
}

ProcessTable processTable(const std::string& folder) {
    ProcessTable table;
    std::error_code error;
    for (fs::directory_iterator at("/proc", error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename();
        if (std::isdigit(static_cast<unsigned char>(name[0])) == 0) continue;
        TableEntry entry;
        if (!readEntry(readProcFile("/proc/" + name + "/stat"), entry)) continue;
        entry.gateway = gatewayOf(readProcFile("/proc/" + name + "/cmdline"), folder);
        entry.begins = entry.gateway != 0;
        table[static_cast<pid_t>(std::atoi(name.c_str()))] = entry;
    }
    return table;
}

// Gives each process the gateway of its session's leader or of its nearest ancestor that has one.
void followAncestors(ProcessTable& table) {
    for (bool changed = true; changed;) {
        changed = false;
        for (auto& [id, entry] : table) {
            if (entry.gateway != 0) continue;
            for (const pid_t other : {entry.parent, entry.session}) {
                const auto found = table.find(other);
                if (other == id || found == table.end() || found->second.gateway == 0) continue;
                entry.gateway = found->second.gateway;
                changed = true;
                break;
            }
        }
    }
}

}  // namespace

std::vector<Process> findProcesses(const std::string& folder) {
    ProcessTable table = processTable(folder);
    followAncestors(table);
    std::vector<Process> found;
    for (const auto& [id, entry] : table) {
        if (entry.gateway != 0) found.push_back({id, entry.gateway, entry.begins, entry.ticks});
    }
    return found;
}

std::uint64_t proportionalMemory(const std::vector<Process>& processes) {
    std::uint64_t sum = 0;
    for (const Process& process : processes) {
        std::ifstream file("/proc/" + std::to_string(process.id) + "/smaps_rollup");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("Pss:")) sum += std::strtoull(line.c_str() + 4, nullptr, 10);
        }
    }
    return sum;
}

std::uint64_t availableMemory() {
    std::ifstream file("/proc/meminfo");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("MemAvailable:")) return std::strtoull(line.c_str() + 13, nullptr, 10);
    }
    return 0;
}

bool endProcesses(const std::string& folder, int milliseconds) {
    for (int waited = 0;; waited += kLookMilliseconds) {
        const std::vector<Process> left = findProcesses(folder);
        if (left.empty()) return true;
        if (waited >= milliseconds) return false;
        for (const Process& process : left)
            (void)kill(process.id, SIGKILL);
        (void)poll(nullptr, 0, kLookMilliseconds);
    }
}

}  // namespace quorvel::fleet
