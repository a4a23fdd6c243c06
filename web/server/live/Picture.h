#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "gateway/hostd/protocol/Counts.h"
#include "gateway/hostd/protocol/Records.h"
#include "gateway/hostd/protocol/Simulation.h"
#include "web/server/live/Events.h"

namespace quorvel::web {

/// How the board is.
enum class BoardState : std::uint8_t {
    kUp,
    kSilent,  ///< it answers, but its WLAN manager does not
    kLost,    ///< nothing answers
};

/// The members of a picture, in the order in which the page gets them.
enum class Member : std::uint8_t { kBoard, kRadios, kBss, kStations, kNeighbours, kTraffic, kAgent };
inline constexpr std::size_t kMembers = 7;

/// The board at one moment, ready to be sent. It does not change any more: connections share it.
struct Picture {
    struct Text {
        std::string json;
        std::uint64_t version = 0;  ///< of the picture in which it changed last
    };
    std::uint64_t version = 0;
    std::array<Text, kMembers> members;
    std::deque<Event> events;
    std::uint64_t lastEvent = 0;

    // The metrics are made from these.
    BoardState state = BoardState::kLost;
    std::string name;
    hostd::protocol::LivePicture live;
    std::optional<hostd::protocol::ServiceStatus> agent;
    hostd::protocol::HostCounts counts;

    [[nodiscard]] const Text& member(Member which) const {
        return members[static_cast<std::size_t>(which)];
    }
};

/// Returns the whole picture as JSON.
[[nodiscard]] std::string pictureText(const Picture& picture);

/// Returns the members that have changed since version `since`, and the events behind number `sinceEvent`, as JSON; the
/// empty text when nothing has.
[[nodiscard]] std::string updateText(const Picture& picture, std::uint64_t since, std::uint64_t sinceEvent);

}  // namespace quorvel::web
