// Programs of the recorder's tests, run as a person runs them.
#pragma once

#include <string>
#include <vector>

namespace quorvel::recorder_test {

struct RunResult {
    int status = -1;     ///< exit status, or 128 + signal
    std::string output;  ///< standard output and error
};

/// Runs a shell command and waits for it.
[[nodiscard]] RunResult runCommand(const std::string& command);

/// A folder of a test's own, gone with it.
class TestFolder {
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    [[nodiscard]] std::string path(const std::string& name) const {
        return folder_ + "/" + name;
    }

  private:
    std::string folder_;
};

/// Lets the small host run on the recorder, which records `library` into `file`. `settings` are more environment
/// variables, `arguments` the host's.
[[nodiscard]] RunResult recordHost(const std::string& library, const std::string& file,
                                   const std::string& arguments = "", const std::string& settings = "");

/// Replays a recording on a library.
[[nodiscard]] RunResult replay(const std::string& file, const std::string& library, const std::string& options = "");

/// Bytes of a file.
[[nodiscard]] std::string contents(const std::string& path);
void store(const std::string& path, const std::string& bytes);

}  // namespace quorvel::recorder_test
