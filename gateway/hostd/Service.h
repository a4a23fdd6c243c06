#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Heartbeat.h"
#include "gateway/hostd/PathWalk.h"
#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/Recent.h"
#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Transaction.h"
#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd {

/// The values that a client watches, as they were at the last look.
struct Watched {
    protocol::Watch request;
    bool known = false;  ///< whether there has been a look
    std::map<std::string, Value> values;
    std::atomic<bool> queued = false;  ///< a look is on its way
};

/// Answers requests with the plug-in's help. All but describe() and answerFromRecent() call the plug-in and are for one
/// thread; these two are for any.
class Service {
  public:
    /// The service's ways to its surroundings.
    struct Surroundings {
        /// Says what is wrong with the WLAN manager, or nothing.
        std::function<std::string()> trouble = {};
        /// Called with each change that a request has made to the board.
        std::function<void(protocol::Change)> changed = {};
    };

    Service(const Plugin& plugin, Heartbeat& heartbeat, Surroundings surroundings);

    // Each answers one request; protocol/Requests.h says how.
    void answer(const protocol::Ping& request, Reply& reply);
    void answer(const protocol::Get& request, Reply& reply);
    void answer(const protocol::Set& request, Reply& reply);
    void answer(const protocol::Save& request, Reply& reply);
    void answer(const protocol::Instances& request, Reply& reply);
    void answer(const protocol::Complete& request, Reply& reply);
    void answer(const protocol::Measure& request, Reply& reply);
    void answer(const protocol::TakeSnapshot& request, Reply& reply);
    void answer(const protocol::Operate& request, Reply& reply);

    /// Looks at watched values and answers with those that differ from the last look; the first look answers with
    /// `listening` only.
    void look(Watched& watched, Reply& reply);

    /// Describes rows of the exported table, without the plug-in.
    void describe(const protocol::Describe& request, Reply& reply) const;

    /// Answers a request with values read lately, if it allows that and all of them are there. Returns whether it did.
    [[nodiscard]] bool answerFromRecent(const protocol::Get& request, Reply& reply) const;

    /// Forgets values read lately: something may have changed.
    void forgetRecent() {
        recent_.forget();
    }

    [[nodiscard]] const DataModel& model() const {
        return model_;
    }

  private:
    class Sink;
    class PartSink;
    class LookSink;
    class Writing;

    void begin();
    [[nodiscard]] bool getPath(const std::string& path, std::uint32_t maxDepth, PathWalk& walk, Sink& sink);
    void getOne(const Match& match, bool named, PathWalk& walk, Sink& sink);
    void getStations(const Match& match, bool named, PathWalk& walk, Sink& sink);
    void getMeasurement(const Match& match, std::uint32_t channel, Sink& sink);
    void readFailed(const std::string& path, std::uint32_t result, Sink& sink);
    [[nodiscard]] bool faultPassedOver(PathWalk& walk, const std::string& path,
                                       const std::function<void(const Fault&)>& fault);
    [[nodiscard]] Fault notSaved(const std::string& path, const std::string& reason);
    [[nodiscard]] std::uint32_t saveNow();
    void changed(protocol::ChangeKind kind, std::vector<std::string> paths);
    [[nodiscard]] std::string trouble() const;

    const Plugin& plugin_;
    Heartbeat& heartbeat_;
    Surroundings surroundings_;
    DataModel model_;
    Recent recent_;
    bool managerLost_ = false;  // each further read would time out
};

/// Returns the stated fault with the plug-in's result code and the errors it has logged.
[[nodiscard]] Fault pluginFault(FaultCode code, const std::string& path, const std::string& reason,
                                std::uint32_t result);

}  // namespace quorvel::hostd
