#include "gateway/launch/Shipped.h"

#include <algorithm>

#include "gateway/launch/Gateway.h"

namespace quorvel::launch {

std::filesystem::path shippedFolder(const Options& options, const char* kind) {
    return std::filesystem::path(programFolder(options)) / kind;
}

std::vector<std::string> shippedNames(const Options& options, const char* kind) {
    std::vector<std::string> names;
    std::error_code ignored;  // a folder that is missing holds nothing
    for (const auto& file : std::filesystem::directory_iterator(shippedFolder(options, kind), ignored)) {
        if (file.path().extension() == ".json") names.push_back(file.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace quorvel::launch
