#include "web/server/live/Picture.h"

#include <nlohmann/json.hpp>

namespace quorvel::web {
namespace {

constexpr std::array<const char*, kMembers> kNames{"board",      "radios",  "bss",  "stations",
                                                   "neighbours", "traffic", "agent"};

std::string eventsText(const Picture& picture, std::uint64_t since) {
    return toJson(picture.events, since).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void append(std::string& text, const char* name, const std::string& json) {
    text += text.empty() ? "{\"" : ",\"";
    text.append(name).append("\":").append(json);
}

}  // namespace

std::string pictureText(const Picture& picture) {
    std::string text;
    for (std::size_t i = 0; i < kMembers; ++i)
        append(text, kNames[i], picture.members[i].json);
    append(text, "events", eventsText(picture, 0));
    return text + "}";
}

std::string updateText(const Picture& picture, std::uint64_t since, std::uint64_t sinceEvent) {
    if (picture.version <= since && picture.lastEvent <= sinceEvent) return "";
    std::string text;
    for (std::size_t i = 0; i < kMembers; ++i) {
        // The board's time goes with every update.
        const bool board = i == static_cast<std::size_t>(Member::kBoard);
        if (board || picture.members[i].version > since) append(text, kNames[i], picture.members[i].json);
    }
    if (picture.lastEvent > sinceEvent) append(text, "events", eventsText(picture, sinceEvent));
    return text + "}";
}

}  // namespace quorvel::web
