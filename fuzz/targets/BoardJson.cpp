#include <string>
#include <variant>

#include "fuzz/Input.h"
#include "gateway/description/Reader.h"

// A board's description, and one station's and one neighbour's.

namespace {

using namespace quorvel::description;
using quorvel::fuzz::require;

void checkMessage(const Error& error) {
    require(error.message.rfind("fuzz:", 0) == 0 || error.message.rfind("fuzz", 0) == 0, "a mistake names its file");
    require(error.message.find('\n') == std::string::npos, "a mistake is told in one line");
}

void checkBoard(const Board& board) {
    require(board.radios.size() <= kMaxRadios, "a board has at most three radios");
    for (const Radio& radio : board.radios) {
        require(radio.bss.size() == kBssPerRadio, "a radio has eight BSSs");
        require(!radio.possibleChannels.empty(), "a radio has a channel");
    }
    for (const Station& station : board.stations) {
        require(station.accessPoint >= 1 && station.accessPoint <= kMaxAccessPoints, "a station has an access point");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto board = parseBoard(text, "fuzz");
    if (const auto* error = std::get_if<Error>(&board)) {
        checkMessage(*error);
    } else {
        checkBoard(std::get<Board>(board));
    }
    if (const auto station = parseStation(text, "fuzz"); std::holds_alternative<Error>(station)) {
        checkMessage(std::get<Error>(station));
    }
    if (const auto neighbour = parseNeighbour(text, "fuzz"); std::holds_alternative<Error>(neighbour)) {
        checkMessage(std::get<Error>(neighbour));
    }
    return 0;
}
