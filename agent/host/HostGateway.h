#pragma once

// The gateway as the host process of a board offers it.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/EventLoop.h"
#include "agent/Gateway.h"
#include "gateway/hostd/client/Client.h"

namespace quorvel::agent {

class HostGateway final : public Gateway {
  public:
    /// `loop` outlives the gateway. `stateFolder` is the board's. Throws hostd::ConnectionError when no board that
    /// takes clients is up there.
    HostGateway(EventLoop& loop, std::string stateFolder);
    ~HostGateway() override;

    /// Called when the board is down for good: nobody listens in its state folder any more.
    std::function<void()> onEnd;

    void listen(GatewayListener* listener) override {
        listener_ = listener;
    }
    [[nodiscard]] BoardInstant boardTime() const override;
    void table(std::function<void(std::vector<TableRow>)> done) override;
    void get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) override;
    void instances(std::vector<std::string> paths,
                   std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) override;
    void check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) override;
    void set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) override;
    void save(std::function<void(SaveAnswer)> done) override;
    void scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) override;
    void watch(std::vector<std::string> paths) override;
    void powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) override;

    /// Has GatewayListener::onBoardTime() called when board time reaches `due`; replaces an earlier wish.
    void wakeAt(std::optional<BoardInstant> due);

    /// Leaves the agent's status with the host process.
    void reportStatus(const nlohmann::ordered_json& status);

    /// Adds entries to the trace that the host process keeps.
    void reportTrace(std::vector<nlohmann::ordered_json> entries);

  private:
    using Part = hostd::protocol::Part;
    using Request = hostd::protocol::Request;

    /// A request whose answer is collected until its last part.
    struct Open {
        std::function<void(const Part&)> part;
        std::function<void(bool lost)> end;
    };

    void connect();
    void follow();
    void lose();
    void retry();
    void serve();
    void updateWatch();
    void ask(const Request& request, std::function<void(const Part&)> part, std::function<void(bool lost)> end);
    void write(std::vector<Setting> settings, bool checkOnly, std::function<void(SetAnswer)> done);
    void takeClock(const hostd::protocol::BoardClock& clock);
    void takeNews(const Part& part);
    void moved();

    EventLoop& loop_;
    std::string stateFolder_;
    GatewayListener* listener_ = nullptr;
    std::unique_ptr<hostd::Client> client_;
    bool wantsWrite_ = false;
    std::map<std::uint64_t, std::shared_ptr<Open>> open_;
    std::uint64_t lastOpen_ = 0;
    std::vector<std::string> watched_;
    hostd::protocol::Id watchId_ = 0;
    hostd::protocol::Id wakeId_ = 0;
    std::optional<BoardInstant> due_;
    EventLoop::TimerId wakeTimer_ = 0;
    EventLoop::TimerId retryTimer_ = 0;
    int failures_ = 0;
    std::function<void(std::vector<GatewayFault>)> cycled_;

    // Board time: seconds since power-on, put behind the wall clock of the moment when this process met the board.
    BoardInstant origin_;
    double clock_ = 0;
    bool virtual_ = false;
    bool anchored_ = false;
    EventLoop::Clock::time_point clockSeen_;
};

}  // namespace quorvel::agent
