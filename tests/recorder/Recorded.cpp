#include "tests/recorder/Recorded.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace quorvel::recorder_test {

RunResult runCommand(const std::string& command) {
    RunResult result;
    FILE* const output = popen((command + " 2>&1").c_str(), "r");
    if (output == nullptr) return result;
    char buffer[4096];
    size_t taken;
    while ((taken = fread(buffer, 1, sizeof buffer, output)) > 0)
        result.output.append(buffer, taken);
    const int status = pclose(output);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

TestFolder::TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "quorvel-recorder-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) folder_ = name;
}

TestFolder::~TestFolder() {
    std::error_code ignored;  // a folder that stays is no failure of the test
    if (!folder_.empty()) (void)std::filesystem::remove_all(folder_, ignored);
}

RunResult recordHost(const std::string& library, const std::string& file, const std::string& arguments,
                     const std::string& settings) {
    return runCommand("QUORVEL_RECORDER_LIBRARY='" + library + "' QUORVEL_RECORDER_FILE='" + file +
                      "' QUORVEL_RECORDER_QUEUE=67108864 " + settings + " " RECORDED_HOST " '" RECORDER_LIBRARY "' " +
                      arguments);
}

RunResult replay(const std::string& file, const std::string& library, const std::string& options) {
    return runCommand(std::string(REPLAY_PROGRAM " '") + file + "' --plugin '" + library + "' " + options);
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void store(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace quorvel::recorder_test
