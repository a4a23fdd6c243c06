#pragma once

#include <cstdint>
#include <deque>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quorvel::web {

/// Something that has happened, as the page's feed shows it.
struct Event {
    std::uint64_t number = 0;  ///< counted from 1 by this server
    double time = 0;           ///< board time, in seconds
    std::string source;        ///< "board", "agent" or "page"
    std::string kind;
    std::string text;
};

/// The latest events.
class Events {
  public:
    static constexpr std::size_t kKept = 500;

    /// Adds an event and gives it its number.
    void add(double time, std::string source, std::string kind, std::string text);

    [[nodiscard]] const std::deque<Event>& all() const {
        return events_;
    }
    /// Returns the number of the last one, 0 when there was none.
    [[nodiscard]] std::uint64_t last() const {
        return last_;
    }

  private:
    std::deque<Event> events_;
    std::uint64_t last_ = 0;
};

/// Returns those events whose numbers are higher than `since`, as JSON.
[[nodiscard]] nlohmann::ordered_json toJson(const std::deque<Event>& events, std::uint64_t since);

}  // namespace quorvel::web
