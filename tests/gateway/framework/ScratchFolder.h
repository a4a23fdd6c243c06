#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// A folder of the test's own that goes away with it.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quorvel-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "cannot create " << pattern;
        path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;  // what is left over is only litter
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const {
        return path_;
    }

    // Writes a file and returns its path.
    [[nodiscard]] std::string write(const std::string& name, const std::string& text) const {
        std::string file = path_ + "/" + name;
        std::ofstream(file) << text;
        return file;
    }

    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream file(path_ + "/" + name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string path_;
};
