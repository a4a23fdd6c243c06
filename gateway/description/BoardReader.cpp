#include "gateway/description/Readers.h"

#include <algorithm>
#include <set>

namespace quorvel::description {
namespace {

constexpr std::size_t kMaxStations = 8192;
constexpr std::size_t kMaxNeighbours = 20000;

std::string hexIdentifier(const JsonCursor& cursor, bool prefixed) {
    const std::string expected =
        prefixed ? "a 16-bit identifier such as \"0x0030\"" : "four hexadecimal digits such as \"43c5\"";
    const std::size_t skip = prefixed ? 2 : 0;
    if (!cursor.value().is_string()) cursor.fail(expected);
    auto text = cursor.value().get<std::string>();
    const bool good = text.size() == skip + 4 && (!prefixed || text.starts_with("0x")) &&
                      std::all_of(text.begin() + static_cast<std::ptrdiff_t>(skip), text.end(),
                                  [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
    if (!good) cursor.fail(expected + " with lower-case digits");
    return text;
}

std::string organisation(const JsonCursor& cursor) {
    std::string text = cursor.boundedText(6);
    const bool good = text.size() == 6 && std::all_of(text.begin(), text.end(), [](char c) {
                          return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
                      });
    if (!good) cursor.fail("an OUI of six upper-case hexadecimal digits such as \"025176\"");
    return text;
}

// It becomes part of an Endpoint ID.
std::string serialNumber(const JsonCursor& cursor) {
    std::string text = cursor.boundedText(40);
    const bool good = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '_' ||
               c == '-';
    });
    if (!good) cursor.fail("a serial number of 1 to 40 letters, digits, '.', '_' or '-'");
    return text;
}

ToolFault readFault(const JsonCursor& cursor, const char* tool) {
    if (!cursor.has(tool)) return ToolFault::kNone;
    const std::string text = cursor.at(tool).oneOf({"none", "fails", "empty", "garbage", "hangs"});
    if (text == "fails") return ToolFault::kFails;
    if (text == "empty") return ToolFault::kEmpty;
    if (text == "garbage") return ToolFault::kGarbage;
    if (text == "hangs") return ToolFault::kHangs;
    return ToolFault::kNone;
}

}  // namespace

Board readBoard(const JsonCursor& cursor) {
    cursor.allow({"name", "identifier", "oui", "serial", "chips", "radios", "stations", "neighbours", "faults"});
    Board board;
    board.name = cursor.at("name").boundedText(64);
    board.identifier = hexIdentifier(cursor.at("identifier"), true);
    if (cursor.has("oui")) board.oui = organisation(cursor.at("oui"));
    if (cursor.has("serial")) board.serial = serialNumber(cursor.at("serial"));
    cursor.at("chips").each([&](const JsonCursor& chip) { board.chips.push_back(hexIdentifier(chip, false)); }, 8);
    cursor.at("radios").each(
        [&](const JsonCursor& entry) {
            board.radios.push_back(readRadio(entry));
            if (board.radios.back().index + 1 != board.radios.size()) {
                entry.at("index").fail(std::to_string(board.radios.size() - 1) +
                                       " (radios are listed in order, without gaps)");
            }
        },
        kMaxRadios);
    std::set<MacAddress> macs;
    if (cursor.has("stations")) {
        cursor.at("stations")
            .each(
                [&](const JsonCursor& entry) {
                    board.stations.push_back(readStation(entry));
                    if (!macs.insert(board.stations.back().mac).second)
                        entry.at("mac").fail("a MAC address of its own");
                },
                kMaxStations);
    }
    if (cursor.has("neighbours")) {
        cursor.at("neighbours")
            .each([&](const JsonCursor& entry) { board.neighbours.push_back(readNeighbour(entry)); }, kMaxNeighbours);
    }
    if (cursor.has("faults")) {
        const JsonCursor faults = cursor.at("faults");
        faults.allow({"lspci", "i2cget", "insmod", "wl"});
        board.faults.lspci = readFault(faults, "lspci");
        board.faults.i2cget = readFault(faults, "i2cget");
        board.faults.insmod = readFault(faults, "insmod");
        board.faults.wl = readFault(faults, "wl");
    }
    return board;
}

}  // namespace quorvel::description
