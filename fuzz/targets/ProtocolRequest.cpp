#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/Input.h"
#include "gateway/description/Reader.h"
#include "gateway/manager/Clock.h"
#include "gateway/manager/Protocol.h"
#include "gateway/manager/Service.h"
#include "gateway/manager/Store.h"

// Frames as the WLAN manager receives them: decoded, and what is a request performed on a board. The first byte says
// whether a header for the rest is made up, so that a fuzzer need not find lengths.

namespace {

using namespace quorvel::manager;
using quorvel::fuzz::Input;
using quorvel::fuzz::require;

void put(std::vector<std::uint8_t>& frame, std::size_t value) {
    for (unsigned n = 0; n < 4; ++n) {
        frame.push_back(static_cast<std::uint8_t>(value >> (8 * n)));
    }
}

std::vector<std::uint8_t> frameOf(Input& input) {
    const std::uint8_t choice = input.byte();
    std::vector<std::uint8_t> frame;
    if (choice % 2 == 1) {
        const std::uint32_t operation = choice / 2 % (kLastOperation + 1);
        const std::string payload = input.rest();
        put(frame, payload.size() + 4);
        put(frame, operation);
        frame.insert(frame.end(), payload.begin(), payload.end());
        return frame;
    }
    const std::string bytes = input.rest();
    frame.assign(bytes.begin(), bytes.end());
    return frame;
}

constexpr char kBoard[] =
    R"({"name": "fuzz", "identifier": "0x0040", "chips": ["43c3"], "radios": [{"index": 0, "band": "2.4GHz",
    "channel": 11, "bandwidth": 20, "country": "US", "chains": 2, "noise": -89, "bss": [{"index": 0,
    "ssid": "Quorvel-Home", "bssid": "02:51:76:10:00:10", "enabled": true, "security": "WPA2-Personal",
    "passphrase": "quorvel-home", "wps": true}]}], "stations": [{"mac": "02:5a:00:00:01:01", "bss":
    "wl0", "rssi": -60, "standard": "n", "bandwidth": 20, "traffic": {"downlink": 400, "uplink": 80}}],
    "neighbours": [{"ssid": "Blue Kitchen", "bssid": "02:6e:62:00:00:01", "channel": "1", "rssi": -58,
    "noise": -91, "security": "WPA2-Personal", "qbss": 53, "vht": false}], "faults": {}})";

quorvel::description::Board board() {
    auto parsed = quorvel::description::parseBoard(kBoard, "fuzz");
    if (const auto* error = std::get_if<quorvel::description::Error>(&parsed)) {
        require(false, error->message.c_str());
    }
    return std::get<quorvel::description::Board>(std::move(parsed));
}

// A manager whose store cannot be written: saving fails and leaves nothing behind.
std::unique_ptr<Service> makeService() {
    BoardClock clock(realMilliseconds);
    clock.startVirtual();
    return std::make_unique<Service>(board(), Store("/nonexistent/store.json"), clock, 1);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::vector<std::uint8_t> frame = frameOf(input);
    if (frame.size() >= 4) {
        const std::size_t announced = frameSize({frame.data(), 4});
        require(announced <= kMaxFrame, "no frame is too long");
    }
    Request request;
    if (!decodeRequest(frame, request)) {
        return 0;
    }
    // A request is written in one way only.
    std::vector<std::uint8_t> again(kMaxFrame);
    const std::size_t length = encodeRequest(request, again);
    require(length == frame.size() && std::memcmp(again.data(), frame.data(), length) == 0,
            "a request reads as written");
    // A new board for each input, so that what an input does depends on nothing else.
    const std::unique_ptr<Service> service = makeService();
    Session session;
    Answer answer;
    service->handle(request, session, answer);
    const std::size_t answered = encodeAnswer(answer, again);
    require(answered != 0, "every request has an answer that fits its frame");
    Answer read;
    require(decodeAnswer({again.data(), answered}, read), "an answer reads as written");
    require(read.operation == request.operation && read.result == answer.result, "an answer reads as written");
    return 0;
}
