#include "gateway/board/tools/Tool.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <variant>

namespace quorvel::board {

gateway::Board boardOrExit(const std::string& tool) {
    const char* named = std::getenv("QUORVEL_BOARD");
    auto read = gateway::readBoardFile(named == nullptr || named[0] == '\0' ? "/board/etc/board.json" : named);
    if (auto* board = std::get_if<gateway::Board>(&read)) return std::move(*board);
    std::fprintf(stderr, "%s: %s\n", tool.c_str(), std::get<gateway::BoardError>(read).message.c_str());
    std::exit(1);
}

void actOutFault(gateway::ToolFault fault, const std::string& tool) {
    constexpr unsigned kHangSeconds = 10;
    switch (fault) {
        case gateway::ToolFault::None:
            return;
        case gateway::ToolFault::Empty:
            std::exit(0);
        case gateway::ToolFault::Garbage:
            std::exit(print("\xfe\x01\x7f%n?\n"));
        case gateway::ToolFault::Hangs:
            sleep(kHangSeconds);
            [[fallthrough]];
        case gateway::ToolFault::Fails:
            std::fprintf(stderr, "%s: failed: the board's description asks for this fault\n", tool.c_str());
            std::exit(1);
    }
}

int print(const std::string& text) {
    const bool good = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return std::fflush(stdout) == 0 && good ? 0 : 1;
}

}  // namespace quorvel::board
