#pragma once

// Hands the agent's trace to the host process, decoded, without slowing the agent down.

#include <deque>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "agent/EventLoop.h"
#include "agent/Trace.h"

namespace quorvel::agent {

/// Keeps entries as bytes and decodes them when there is time: decoding one costs more than answering a request. While
/// records follow each other without a pause it waits, and keeps the latest only: no more than the host process keeps.
class TraceReporter {
  public:
    using Sink = std::function<void(std::vector<nlohmann::ordered_json> entries)>;

    /// `loop` outlives the reporter.
    TraceReporter(EventLoop& loop, Sink sink);
    TraceReporter(const TraceReporter&) = delete;
    TraceReporter& operator=(const TraceReporter&) = delete;
    ~TraceReporter();

    void add(const TraceEntry& entry);

    /// Hands over everything at once.
    void flush();

  private:
    void flushWhenQuiet();

    EventLoop& loop_;
    Sink sink_;
    std::deque<TraceEntry> kept_;
    std::size_t addedSinceLook_ = 0;
    int busyLooks_ = 0;
    EventLoop::TimerId timer_ = 0;
};

}  // namespace quorvel::agent
