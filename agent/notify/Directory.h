#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "agent/model/Store.h"
#include "agent/mtp/Mtp.h"

namespace quorvel::agent {

/// One enabled way to a controller.
struct ControllerWay {
    Protocol protocol = Protocol::kMqtt;
    std::uint32_t order = 0;
    std::string topic;   ///< MQTT: where it listens
    std::string mtpRow;  ///< MQTT: "Device.LocalAgent.MTP.1."
};

/// A controller as its rows were when they were read last; it outlives them until its last Notify is sent.
struct ControllerEntry {
    std::string row;
    std::string endpointId;
    bool enabled = false;
    std::uint32_t retryMinimumWait = 5;    ///< s
    std::uint32_t retryMultiplier = 2000;  ///< per mille
    std::vector<ControllerWay> ways;       ///< by their Order
};

/// The controllers.
class Directory {
  public:
    /// Reads all rows anew.
    void refresh(const Store& store);

    /// Returns an enabled controller by its Endpoint ID, or null.
    [[nodiscard]] const ControllerEntry* enabled(std::string_view endpointId) const;
    /// Returns a controller by its row, or null.
    [[nodiscard]] const ControllerEntry* byRow(std::string_view row) const;
    [[nodiscard]] const std::map<std::string, ControllerEntry, std::less<>>& all() const {
        return controllers_;
    }

  private:
    std::map<std::string, ControllerEntry, std::less<>> controllers_;  // by row
    std::map<std::string, std::string, std::less<>> enabled_;          // row by Endpoint ID
};

/// Returns what shall be connected, as the rows say.
[[nodiscard]] MtpSettings transportSettings(const Store& store, const std::string& endpointId);

}  // namespace quorvel::agent
