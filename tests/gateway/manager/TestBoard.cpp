#include "tests/gateway/manager/TestBoard.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <variant>

namespace quorvel::manager::test {

description::Board shippedBoard(const std::string& name) {
    auto board = description::readBoardFile(std::string(QUORVEL_BOARDS) + "/" + name + ".json");
    if (const auto* error = std::get_if<description::Error>(&board)) {
        ADD_FAILURE() << error->message;
        return {};
    }
    return std::get<description::Board>(std::move(board));
}

Model defaultModel() {
    return {shippedBoard("tri-band"), Saved{}, 1};
}

std::string text(const Model& model, unsigned radio, unsigned sub, const std::string& name) {
    return model.get(radio, sub, name).value_or("(absent)");
}

common::MacAddress stationMac(unsigned lastByte) {
    return {{0x02, 0x5a, 0x00, 0x00, 0x01, static_cast<std::uint8_t>(lastByte)}};
}

const Station& station(const Model& model, unsigned lastByte) {
    for (const Station& entry : model.stations()) {
        if (entry.setup.mac == stationMac(lastByte)) return entry;
    }
    ADD_FAILURE() << "no station " << lastByte;
    static const Station none;
    return none;
}

TemporaryFolder::TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "wlan-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace quorvel::manager::test
