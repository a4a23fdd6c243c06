#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "agent/Trace.h"

namespace quorvel::agent {

/// Timers on board time. They fire in the order of their times, also when time jumps over several at once.
class Timers {
  public:
    using Id = std::uint64_t;  ///< never 0

    [[nodiscard]] Id at(BoardInstant due, std::function<void()> action) {
        timers_.emplace(std::pair(due, ++lastId_), std::move(action));
        times_[lastId_] = due;
        return lastId_;
    }

    /// Cancels a timer; one that has fired, or 0, is no mistake.
    void cancel(Id id) {
        const auto time = times_.find(id);
        if (time == times_.end()) return;
        timers_.erase({time->second, id});
        times_.erase(time);
    }

    [[nodiscard]] std::optional<BoardInstant> next() const {
        if (timers_.empty()) return std::nullopt;
        return timers_.begin()->first.first;
    }

    /// Takes the first timer that is due by `now` out and returns its time and action; nothing when none is.
    [[nodiscard]] std::optional<std::pair<BoardInstant, std::function<void()>>> take(BoardInstant now) {
        if (timers_.empty() || timers_.begin()->first.first > now) return std::nullopt;
        auto first = timers_.extract(timers_.begin());
        times_.erase(first.key().second);
        return std::pair(first.key().first, std::move(first.mapped()));
    }

  private:
    std::map<std::pair<BoardInstant, Id>, std::function<void()>> timers_;
    std::map<Id, BoardInstant> times_;
    Id lastId_ = 0;
};

}  // namespace quorvel::agent
