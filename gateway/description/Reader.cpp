#include "gateway/description/Reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/JsonCursor.h"
#include "gateway/description/Readers.h"

namespace quorvel::description {
namespace {

constexpr std::size_t kMaxFileSize = std::size_t{16} * 1024 * 1024;

template <typename Result>
std::variant<Result, Error> parseWith(const std::string& text, const std::string& name,
                                      Result (*read)(const JsonCursor&)) {
    if (text.size() > kMaxFileSize) {
        const common::DocumentProblem problem{
            "1:1", "",
            "expected at most " + std::to_string(kMaxFileSize) + " bytes, found " + std::to_string(text.size())};
        return Error{problem.message(name), problem.pointer, problem.text};
    }
    Result result;
    const auto problem = common::readDocument(text, [&](const JsonCursor& root) { result = read(root); });
    if (problem) return Error{problem->message(name), problem->pointer, problem->text};
    return result;
}

Error unreadable(const std::string& path) {
    const std::string text = std::string("expected a readable board description: ") + std::strerror(errno);
    return {path + ": " + text, "", text};
}

}  // namespace

std::variant<Board, Error> parseBoard(const std::string& text, const std::string& name) {
    return parseWith(text, name, readBoard);
}

std::variant<Station, Error> parseStation(const std::string& text, const std::string& name) {
    return parseWith(text, name, readStation);
}

std::variant<Neighbour, Error> parseNeighbour(const std::string& text, const std::string& name) {
    return parseWith(text, name, readNeighbour);
}

std::variant<Board, Error> readBoardFile(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) return unreadable(path);
    std::string text;
    char piece[8192];
    std::size_t got = 0;
    while (text.size() <= kMaxFileSize && (got = std::fread(piece, 1, sizeof piece, file)) > 0)
        text.append(piece, got);
    const bool failed = std::ferror(file) != 0;
    (void)std::fclose(file);  // only read from
    if (failed) return unreadable(path);
    return parseBoard(text, path);
}

}  // namespace quorvel::description
