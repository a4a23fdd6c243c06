#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd {

/// The reports of processes beside the board, such as a management agent: each one's status, and the latest entries of
/// a common trace. For one thread.
class Services {
  public:
    static constexpr std::size_t kMaxServices = 16;
    static constexpr std::size_t kMaxStatus = 65536;  ///< bytes of JSON text, of a trace entry too
    static constexpr std::size_t kMaxEntries = 1000;
    static constexpr std::size_t kMaxTrace = 4U << 20U;  ///< bytes of JSON text of all entries

    /// Takes a status in. `owner` is the connection that it came by. Returns why it is refused, or the empty text.
    [[nodiscard]] std::string report(const protocol::ReportStatus& request, int owner);

    /// Takes in that a connection has ended. Returns whether a service's status has changed by it.
    bool disconnected(int owner);

    /// Adds entries to the trace, stamped with `time`, and appends them to `added` with their numbers. Returns why they
    /// are refused, or the empty text.
    [[nodiscard]] std::string add(const protocol::ReportTrace& request, double time,
                                  std::vector<protocol::TraceEntry>& added);

    [[nodiscard]] std::vector<protocol::ServiceStatus> statuses(const std::string& service) const;
    [[nodiscard]] std::vector<protocol::TraceEntry> trace(const protocol::ReadTrace& request) const;

  private:
    struct Reported {
        protocol::ServiceStatus status;
        int owner = -1;
    };
    struct Kept {
        protocol::TraceEntry entry;
        std::size_t size = 0;
    };

    std::vector<Reported> reported_;
    std::deque<Kept> trace_;
    std::size_t traceSize_ = 0;
    std::uint64_t lastNumber_ = 0;
};

}  // namespace quorvel::hostd
