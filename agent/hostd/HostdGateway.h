#pragma once

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

/// The gateway over the host process's socket. Connects again when the connection ends, as it does when the board is
/// without power for a moment.
class HostdGateway final : public Gateway {
  public:
    /// `loop` must outlive the gateway. `stateFolder` is the board's, where the socket is.
    HostdGateway(EventLoop& loop, std::string stateFolder, std::function<void(const std::string&)> log);
    ~HostdGateway() override;

    /// Connects. Returns false when no board is up there; the gateway does not try again by itself then.
    [[nodiscard]] bool connect();

    /// Called once the board's time and life are known, after each connect.
    std::function<void()> onReady;
    /// Called when the connection has ended and no board takes a new one.
    std::function<void()> onEnd;

    /// Leaves the agent's status, and entries of its trace, with the host process: JSON objects.
    void reportStatus(const nlohmann::ordered_json& status);
    void reportTrace(std::vector<nlohmann::ordered_json> entries);

    void listen(GatewayListener* listener) override {
        listener_ = listener;
    }
    [[nodiscard]] BoardInstant boardTime() const override;
    void wakeAt(BoardInstant at) override;
    void table(std::function<void(std::vector<TableRow>)> done) override;
    void get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) override;
    void instances(std::vector<std::string> tables,
                   std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) override;
    void check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) override;
    void set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) override;
    void save(std::function<void(SaveAnswer)> done) override;
    void scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) override;
    void pushButton(std::string wps, std::function<void(std::vector<GatewayFault>)> done) override;
    void watch(std::vector<std::string> paths) override;
    void powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) override;

  private:
    using Part = hostd::protocol::Part;
    using Lost = std::function<void()>;

    /// Sends a request; `lost` is called instead of the rest of the answer when the connection ends.
    hostd::protocol::Id ask(const hostd::protocol::Request& request, std::function<void(const Part&)> onPart,
                            Lost lost = {});
    void askForFaults(const hostd::protocol::Request& request, std::function<void(std::vector<GatewayFault>)> done);
    void setAll(std::vector<Setting> settings, bool checkOnly, std::function<void(SetAnswer)> done);
    void greet();
    void subscribe();
    void serve();
    void disconnected(const std::string& reason);
    void reconnectLater();
    void followDescriptor();
    void takeClock(const hostd::protocol::BoardClock& clock);

    EventLoop& loop_;
    std::string stateFolder_;
    std::function<void(const std::string&)> log_;
    GatewayListener* listener_ = nullptr;
    std::unique_ptr<hostd::Client> client_;
    std::map<hostd::protocol::Id, Lost> pending_;
    std::vector<std::string> atOnce_;  // model paths of parameters that act at once
    std::vector<std::string> watched_;
    hostd::protocol::Id watch_ = 0;
    hostd::protocol::Id wake_ = 0;
    EventLoop::TimerId reconnecting_ = 0;
    int attempts_ = 0;
    std::optional<unsigned> life_;  // number of the board's present life
    BoardInstant origin_;           // when the board was switched on
    double clock_ = 0;              // board time as it was told last
    EventLoop::Clock::time_point clockAt_;
    bool virtual_ = false;
};

}  // namespace quorvel::agent
