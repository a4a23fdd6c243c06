#include "web/server/live/Events.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace quorvel::web {

void Events::add(double time, std::string source, std::string kind, std::string text) {
    events_.push_back({++last_, time, std::move(source), std::move(kind), std::move(text)});
    if (events_.size() > kKept) events_.pop_front();
}

nlohmann::ordered_json toJson(const std::deque<Event>& events, std::uint64_t since) {
    auto list = nlohmann::ordered_json::array();
    for (const Event& event : events) {
        if (event.number <= since) continue;
        list.push_back({{"number", event.number},
                        {"time", event.time},
                        {"source", event.source},
                        {"kind", event.kind},
                        {"text", event.text}});
    }
    return list;
}

}  // namespace quorvel::web
