#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Counts.h"
#include "web/server/live/History.h"
#include "web/server/live/Picture.h"

namespace quorvel::web {

/// One look at the board.
struct Look {
    std::string name;  ///< of the board
    hostd::protocol::LivePicture live;
    std::optional<hostd::protocol::ServiceStatus> agent;
    hostd::protocol::HostCounts counts;                 ///< of calls and requests
    std::vector<hostd::protocol::SimulationEvent> log;  ///< new entries of the WLAN manager's log
    std::vector<hostd::protocol::TraceEntry> trace;     ///< new entries of services' traces
};

/// Makes pictures from looks at the board. Two looks that show the same give pictures of one version, so that nothing
/// is sent. Not for several threads at once.
class Composer {
  public:
    Composer();

    /// Takes a look in. Returns the picture after it.
    std::shared_ptr<const Picture> take(const Look& look);

    /// Takes in that no board answers, and why. The last values stay.
    std::shared_ptr<const Picture> lose(const std::string& reason);

    [[nodiscard]] const std::shared_ptr<const Picture>& picture() const {
        return picture_;
    }
    [[nodiscard]] const History& history() const {
        return history_;
    }

  private:
    void takeEvents(const Look& look);
    void setState(Picture& next, BoardState state, const std::string& reason);
    void takeValues(Picture& next, const Look& look);
    [[nodiscard]] std::map<unsigned, Rates> ratesOf(const hostd::protocol::LivePicture& live);
    [[nodiscard]] double sinceOf(const hostd::protocol::StationState& station, double now);
    std::shared_ptr<const Picture> publish(std::unique_ptr<Picture> next);

    struct Association {
        std::uint64_t number = 0;
        unsigned accessPoint = 0;
        double since = 0;
    };

    std::shared_ptr<const Picture> picture_;
    Events events_;
    History history_;
    std::string boardWithoutTime_;
    std::map<std::string, Association> associations_;
    std::map<std::string, hostd::protocol::InterfaceCounters> counters_;
    std::map<unsigned, Rates> rates_;
    double counted_ = 0;
};

}  // namespace quorvel::web
