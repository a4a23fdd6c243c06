#include "common/BoardProcesses.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

#include "common/Descriptor.h"

namespace quorvel::common {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const {
        (void)closedir(folder);  // nothing was written
    }
};

std::vector<pid_t> numbersIn(const std::string& folder) {
    std::vector<pid_t> numbers;
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    if (open == nullptr) return numbers;
    while (const dirent* entry = readdir(open.get())) {
        const long number = std::strtol(entry->d_name, nullptr, 10);
        if (number > 0) numbers.push_back(static_cast<pid_t>(number));
    }
    return numbers;
}

std::string contentsOf(const std::string& path) {
    std::string text;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 1024> piece{};
    ssize_t count = 0;
    while (file && (count = read(file.get(), piece.data(), piece.size())) > 0)
        text.append(piece.data(), static_cast<std::size_t>(count));
    return text;
}

pid_t parentOf(pid_t process) {
    // "PID (NAME) STATE PARENT ...", and a name may hold anything.
    const std::string stat = contentsOf("/proc/" + std::to_string(process) + "/stat");
    const std::size_t name = stat.rfind(')');
    if (name == std::string::npos || name + 4 > stat.size()) return 0;
    return static_cast<pid_t>(std::strtol(stat.c_str() + name + 4, nullptr, 10));
}

void appendNumbers(const std::string& text, std::vector<pid_t>& numbers) {
    const char* at = text.c_str();
    for (char* end = nullptr;; at = end) {
        const long number = std::strtol(at, &end, 10);
        if (end == at) return;
        numbers.push_back(static_cast<pid_t>(number));
    }
}

}  // namespace

std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    if (access((tasks + "/" + std::to_string(process) + "/children").c_str(), R_OK) == 0) {
        // Each thread has the children that it forked.
        for (const pid_t task : numbersIn(tasks))
            appendNumbers(contentsOf(tasks + "/" + std::to_string(task) + "/children"), children);
        return children;
    }
    for (const pid_t each : numbersIn("/proc")) {
        if (parentOf(each) == process) children.push_back(each);
    }
    return children;
}

std::vector<pid_t> boardProcesses() {
    const char* const first = std::getenv("QUORVEL_BOARD_FIRST_PROCESS");
    if (first == nullptr || first[0] == '\0') return numbersIn("/proc");
    std::vector<pid_t> found = childrenOf(static_cast<pid_t>(std::strtol(first, nullptr, 10)));
    for (std::size_t at = 0; at < found.size(); ++at) {
        for (const pid_t child : childrenOf(found[at])) {
            // One that moves to another parent meanwhile shows twice.
            if (std::find(found.begin(), found.end(), child) == found.end()) found.push_back(child);
        }
    }
    return found;
}

}  // namespace quorvel::common
