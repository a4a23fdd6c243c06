#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Input.h"

// Runs a fuzz target over the files of its corpus, without a fuzzer: what was found once is tested everywhere.
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesBelow(const fs::path& place) {
    if (fs::is_regular_file(place)) {
        return {place};
    }
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return {bytes.begin(), bytes.end()};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        (void)std::fprintf(stderr, "usage: %s FILE-OR-FOLDER...\n", argv[0]);
        return 2;
    }
    std::size_t count = 0;
    for (int argument = 1; argument < argc; ++argument) {
        for (const fs::path& path : filesBelow(argv[argument])) {
            // An exact heap block, so that a sanitizer sees the byte behind the end.
            const std::vector<std::uint8_t> content = contentOf(path);
            (void)std::fprintf(stderr, "%s\n", path.filename().c_str());
            (void)LLVMFuzzerTestOneInput(content.data(), content.size());
            ++count;
        }
    }
    (void)std::fprintf(stderr, "%zu corpus files replayed\n", count);
    // A corpus that went missing is a failure, not a success with nothing to do.
    return count == 0 ? 1 : 0;
}
