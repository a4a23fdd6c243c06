#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "gateway/hostd/Connection.h"
#include "gateway/hostd/Service.h"
#include "gateway/hostd/protocol/Lines.h"

namespace quorvel::hostd {

/// A request for news that has not ended.
struct Subscription {
    protocol::Id id = 0;
    std::vector<protocol::Topic> topics;
    std::uint32_t logLevel = 0;
    std::string knownAbsence;  ///< the last news of the manager that the client got

    [[nodiscard]] bool follows(protocol::Topic topic) const {
        return std::find(topics.begin(), topics.end(), topic) != topics.end();
    }
};

/// A request to be woken at a board time.
struct Alarm {
    protocol::Id id = 0;
    double at = 0;
};

/// A request to watch paths.
struct Watching {
    protocol::Id id = 0;
    std::shared_ptr<Watched> watched;
    std::chrono::steady_clock::time_point due{};
    bool stale = true;  ///< something may have changed since the last look began
};

/// A client and its open requests. For the server's thread only.
struct Session {
    std::shared_ptr<Connection> connection;
    bool greeted = false;
    bool closing = false;  ///< refused: nothing more of it is read
    std::vector<Subscription> subscriptions;
    std::vector<Alarm> alarms;
    std::vector<Watching> watches;
};

}  // namespace quorvel::hostd
