#include "web/server/http/PageFiles.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quorvel::web {
namespace {

namespace fs = std::filesystem;

// Null for files that are none of the page's.
const char* typeOf(const fs::path& file) {
    const std::string ending = file.extension().string();
    if (ending == ".html") return "text/html; charset=utf-8";
    if (ending == ".js") return "text/javascript; charset=utf-8";
    if (ending == ".css") return "text/css; charset=utf-8";
    if (ending == ".svg") return "image/svg+xml";
    return nullptr;
}

}  // namespace

PageFiles::PageFiles(const std::string& folder) {
    std::error_code trouble;
    for (const auto& entry : fs::recursive_directory_iterator(folder, trouble)) {
        const char* const type = entry.is_regular_file() ? typeOf(entry.path()) : nullptr;
        if (type == nullptr) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        Reply reply{200, type, {std::istreambuf_iterator<char>(in), {}}, {}, false};
        const std::string path = "/" + fs::relative(entry.path(), folder).generic_string();
        reply.headers.emplace_back("Cache-Control", "no-cache");
        files_.emplace(path == "/index.html" ? "/" : path, std::move(reply));
    }
    if (files_.find("/") == files_.end())
        throw std::runtime_error("there is no page in " + folder + "; build it with ./run web");
}

const Reply* PageFiles::find(std::string_view path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? nullptr : &found->second;
}

}  // namespace quorvel::web
