// i2cget: reads a register of a device on the board's I2C bus. The one that answers is the board's identification.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "gateway/board/tools/Tool.h"

namespace {

constexpr unsigned long kBus = 0;
constexpr unsigned long kDevice = 0x24;
constexpr unsigned long kRegister = 0;

bool isNumber(const std::string& text, unsigned long wanted) {
    char* end = nullptr;
    return !text.empty() && std::strtoul(text.c_str(), &end, 0) == wanted && *end == '\0';
}

}  // namespace

int main(int count, char** arguments) {
    std::vector<std::string> words;
    for (int each = 1; each < count; ++each) {
        const std::string word = arguments[each];
        if (word == "-f" || word == "-y") continue;  // nothing to ask for, nobody to exclude
        words.push_back(word);
    }
    if (words.size() != 4) {
        std::fputs("Usage: i2cget [-f] [-y] BUS DEVICE REGISTER w\n", stderr);
        return 2;
    }
    const quorvel::description::Board board = quorvel::board::boardOrExit("i2cget");
    quorvel::board::actOutFault(board.faults.i2cget, "i2cget");
    if (!isNumber(words[0], kBus)) {
        std::fprintf(stderr, "i2cget: no bus %s on this board, only 0\n", words[0].c_str());
        return 1;
    }
    if (!isNumber(words[1], kDevice) || !isNumber(words[2], kRegister) || words[3] != "w") {
        std::fprintf(stderr, "i2cget: device %s does not answer to register %s, mode %s\n", words[1].c_str(),
                     words[2].c_str(), words[3].c_str());
        return 1;
    }
    return quorvel::board::print(board.identifier + "\n");
}
