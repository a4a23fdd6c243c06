#include "gateway/board/tools/Tool.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <variant>

namespace quorvel::board {

description::Board boardOrExit(const std::string& tool) {
    const char* named = std::getenv("QUORVEL_BOARD");
    auto read = description::readBoardFile(named == nullptr || named[0] == '\0' ? "/board/etc/board.json" : named);
    if (auto* board = std::get_if<description::Board>(&read)) return std::move(*board);
    std::fprintf(stderr, "%s: %s\n", tool.c_str(), std::get<description::Error>(read).message.c_str());
    std::exit(1);
}

void actOutFault(description::ToolFault fault, const std::string& tool) {
    constexpr unsigned kHangSeconds = 10;
    switch (fault) {
        case description::ToolFault::kNone:
            return;
        case description::ToolFault::kEmpty:
            std::exit(0);
        case description::ToolFault::kGarbage:
            std::exit(print("\xfe\x01\x7f%n?\n"));
        case description::ToolFault::kHangs:
            sleep(kHangSeconds);
            [[fallthrough]];
        case description::ToolFault::kFails:
            std::fprintf(stderr, "%s: failed: the board's description asks for this fault\n", tool.c_str());
            std::exit(1);
    }
}

int print(const std::string& text) {
    const bool good = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return std::fflush(stdout) == 0 && good ? 0 : 1;
}

}  // namespace quorvel::board
