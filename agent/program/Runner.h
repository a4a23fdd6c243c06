#pragma once

// The agent at work: the gateway on one side, the transports on the other.

#include <memory>
#include <string>

#include "agent/Agent.h"
#include "agent/EventLoop.h"
#include "agent/hostd/HostdGateway.h"
#include "agent/mtp/TransportSet.h"
#include "agent/program/TraceReporter.h"

namespace quorvel::agent {

class Runner {
  public:
    explicit Runner(const Config& config);

    /// Connects to the board and starts the agent. Throws std::runtime_error when the board is not up or does not
    /// answer, and when the agent's saved state cannot be used.
    void start();

    /// Serves until the board is down or stop() is called. Returns why it ended.
    [[nodiscard]] std::string run();

    /// Ends run(). Callable from signal handlers.
    void stop();

    [[nodiscard]] const std::string& endpointId() const {
        return agent_.endpointId();
    }

  private:
    [[nodiscard]] bool lookAfterwards();
    void reportStatus();

    EventLoop loop_;
    HostdGateway gateway_;
    TransportSet transports_;
    TraceReporter trace_;
    Agent agent_;
    std::string lastStatus_;
    EventLoop::Clock::time_point nextStatus_;
    std::string ended_;
    volatile bool stopped_ = false;
};

}  // namespace quorvel::agent
