#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "agent/Gateway.h"

namespace quorvel::agent {

/// A gateway whose time and whose looks at watched values are the caller's: the same calls give the same
/// notifications, however fast the machine is.
class SteadyGateway final : public Gateway, private GatewayListener {
  public:
    /// `real` answers every request; it must outlive this one.
    explicit SteadyGateway(Gateway& real);
    ~SteadyGateway() override;

    /// Sets the board time that the agent sees.
    void setTime(BoardInstant now) {
        now_ = now;
    }

    /// Keeps requests back until they are released: a board that is ahead of the agent must not be asked yet.
    void hold() {
        held_ = true;
    }
    void release();

    /// Reads the watched values; those that differ from the last look go to the listener.
    void look();

    /// Asks for something small. Everything that the host process sent before comes before the answer.
    void probe();

    /// Tells whether every request that was not kept back has been answered.
    [[nodiscard]] bool isIdle() const {
        return open_ == 0;
    }

    void listen(GatewayListener* listener) override {
        listener_ = listener;
    }
    [[nodiscard]] BoardInstant boardTime() const override {
        return now_;
    }
    void wakeAt(BoardInstant /*at*/) override {}  // the caller knows when the agent is due
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
    void onStationEvent(const StationEvent& event) override;
    void onChanges(const std::vector<GatewayValue>& /*changes*/) override {}  // look() finds them
    void onBoardTime(BoardInstant /*now*/) override {}                        // the caller's time counts
    void onRestored() override;
    void onRebooted() override;

    template <typename... Results>
    [[nodiscard]] std::function<void(Results...)> counted(std::function<void(Results...)> done);
    void ask(std::function<void()> request);

    Gateway& real_;
    GatewayListener* listener_ = nullptr;
    BoardInstant now_{};
    int open_ = 0;
    bool held_ = false;
    std::vector<std::function<void()>> waiting_;
    std::vector<StationEvent> events_;  // that came while requests were kept back
    std::vector<std::string> watched_;
    std::map<std::string, std::string> seen_;  // values by path, at the last look
    bool first_ = true;                        // the next look finds out what there is
};

}  // namespace quorvel::agent
