// The replay of one thread: each call that the library makes now is compared with the next one of the recording.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "recorder/desk/Recording.h"
#include "recorder/replay/Difference.h"

namespace quorvel::recorder {

class Stream {
  public:
    Stream(std::string call, uint32_t thread, std::vector<const Record*> events)
        : call_(std::move(call)), thread_(thread), events_(std::move(events)) {}

    /// Takes the next event when the library does the same now; `seen` has its arguments (for a log line or a format
    /// all its values). Returns the recorded answer, or null, with a difference noted, when the recording has something
    /// else there.
    const Record* take(RecordKind kind, const std::string& function, std::span<const Value> seen);

    /// Notes what the library did then and does not do now.
    void finish();
    void note(uint64_t position, std::string text);

    /// Position of the next event; the largest number when there is none.
    [[nodiscard]] uint64_t nextPosition() const {
        return next_ < events_.size() ? events_[next_]->position : UINT64_MAX;
    }
    /// Returns the next event, or null.
    [[nodiscard]] const Record* next() const {
        return next_ < events_.size() ? events_[next_] : nullptr;
    }
    [[nodiscard]] bool isDone() const {
        return next_ >= events_.size();
    }
    [[nodiscard]] const std::vector<Difference>& differences() const {
        return differences_;
    }

  private:
    std::string call_;
    uint32_t thread_;
    std::vector<const Record*> events_;
    size_t next_ = 0;
    std::vector<Difference> differences_;
};

}  // namespace quorvel::recorder
