#include "web/server/Site.h"

#include <charconv>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

namespace quorvel::web {
namespace {

constexpr const char* kJson = "application/json";
constexpr const char* kMetricsType = "text/plain; version=0.0.4; charset=utf-8";

const std::map<std::string_view, Member> kMemberPaths{
    {"/api/radios", Member::kRadios},         {"/api/bss", Member::kBss},         {"/api/stations", Member::kStations},
    {"/api/neighbours", Member::kNeighbours}, {"/api/traffic", Member::kTraffic},
};

// Values of the board are never kept by a browser.
Reply values(const char* type, std::string body) {
    return {200, type, std::move(body), {{"Cache-Control", "no-store"}}, false};
}

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

Reply Site::answer(const Request& request, const Picture& picture) const {
    if (std::optional<Reply> refused = guard_.refuse(request)) return *refused;
    const std::string_view target = request.target;
    const std::size_t mark = target.find('?');
    const std::string_view path = target.substr(0, mark);
    const std::string_view query = mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
    if (const Reply* const file = page_.find(path)) return *file;
    // The page's own files are the same everywhere; everything else is about the board.
    if (std::optional<Reply> refused = guard_.refuseStranger(request)) return *refused;
    return answerValues(path, query, picture);
}

Reply Site::answerValues(std::string_view path, std::string_view query, const Picture& picture) const {
    if (path == "/api/stream") return {200, "text/event-stream", "", {{"Cache-Control", "no-store"}}, true};
    if (path == "/api/live") return values(kJson, pictureText(picture));
    if (path == "/api/history") return values(kJson, sources_.history());
    if (path == "/api/events") return answerEvents(query, picture);
    if (path == "/api/openapi.json") return values(kJson, sources_.openApi);
    if (path == "/metrics") return values(kMetricsType, sources_.metrics(picture));
    const auto member = kMemberPaths.find(path);
    if (member != kMemberPaths.end()) return values(kJson, picture.member(member->second).json);
    return refusal(404, "there is nothing here; /api/openapi.json lists what there is");
}

Reply Site::answerEvents(std::string_view query, const Picture& picture) {
    static constexpr std::string_view kSince = "since=";
    std::uint64_t since = 0;
    if (!query.empty()) {
        const std::optional<std::uint64_t> given =
            query.starts_with(kSince) ? number(query.substr(kSince.size())) : std::nullopt;
        if (!given) return refusal(400, "the one parameter is since=NUMBER, a whole number from 0");
        since = *given;
    }
    return values(kJson,
                  toJson(picture.events, since).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

}  // namespace quorvel::web
