#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/Gateway.h"
#include "agent/path/Path.h"

namespace quorvel::agent_test {

using namespace quorvel::agent;

/// A library with two radios, two SSIDs and two access points, whose every answer a test can bend. It numbers stations
/// by their position, as the real one does.
class ScriptedGateway final : public Gateway {
  public:
    ScriptedGateway();

    // What a test looks at and changes.
    std::map<std::string, std::string, PathLess> values;  ///< by full path; stations by position
    std::map<std::string, std::string> refused;           ///< paths that staging refuses, and why
    std::map<std::string, std::string> unapplied;         ///< objects that cannot be applied, and why
    std::set<std::string> unreadable;
    std::vector<std::string> calls;  ///< "check", "set A=B C=D", "save", ...
    std::string saveFails;
    bool lost = false;
    bool holding = false;  ///< answers wait for release()
    BoardInstant time{std::chrono::sys_days(std::chrono::year(2026) / 1 / 31) + std::chrono::hours(12)};
    std::optional<BoardInstant> wake;
    std::vector<std::string> watched;
    GatewayListener* listener = nullptr;
    std::function<void()> onPower = [] {};
    std::string powerFails;
    std::string scanFails;

    /// Answers what was asked while the library was held.
    void release();
    /// Sets the stations of an access point.
    void stations(unsigned accessPoint, const std::vector<std::string>& macs);
    /// Changes a value on the board and tells the listener if it is watched.
    void change(const std::string& path, const std::string& value);
    [[nodiscard]] std::size_t count(const std::string& call) const;

    void listen(GatewayListener* to) override {
        listener = to;
    }
    [[nodiscard]] BoardInstant boardTime() const override {
        return time;
    }
    void wakeAt(BoardInstant at) override {
        wake = at;
    }
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

    [[nodiscard]] static std::vector<TableRow> rows();

  private:
    void later(std::function<void()> answer);
    void read(const std::string& path, unsigned levels, GetAnswer& answer) const;
    [[nodiscard]] SetAnswer staged(const std::vector<Setting>& settings) const;

    std::deque<std::function<void()>> held_;
};

}  // namespace quorvel::agent_test
