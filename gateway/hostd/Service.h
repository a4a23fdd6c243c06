#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Heartbeat.h"
#include "gateway/hostd/PathWalk.h"
#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Transaction.h"

namespace quorvel::hostd {

/// Answers requests with the plug-in's help. Requests are handled one after the other, by one thread.
///
/// A request is an object with a member "do"; the verbs and their members are listed at handle().
class Service {
  public:
    /// What the service needs from its surroundings.
    struct Surroundings {
        /// Hands a JSON command to the WLAN manager's simulation and returns its answer.
        std::function<std::string(const std::string&)> control;
        /// Returns facts about the board as a JSON object.
        std::function<nlohmann::ordered_json()> board;
        /// Says what is wrong with the WLAN manager, or nothing.
        std::function<std::string()> trouble = {};
    };

    Service(const Plugin& plugin, Heartbeat& heartbeat, Surroundings surroundings);

    /// Answers one request.
    ///
    /// - get: paths, maxDepth; parts `values` ({path, value[, station]}) and `faults`
    /// - set: settings ({path, value as text}), save; parts `values` as applied, `readBack` ({path, value}) of those
    ///   that read differently now, and `faults`
    /// - instances: paths; parts `instances` (texts)
    /// - datamodel: paths; parts `parameters` ({path, type, access})
    /// - complete: path; part `completions` (texts)
    /// - measure: paths of channel measurements, channel; parts `values`
    /// - snapshot: path; part `snapshot`
    /// - operate: path of an object, function (what its name has behind the object's prefix), text for those that take
    ///   one, settings below the object; stages all of it into one context and applies it
    /// - board, control (command), ping
    void handle(const nlohmann::ordered_json& request, Reply& reply);

    [[nodiscard]] const DataModel& model() const {
        return model_;
    }

  private:
    void get(const nlohmann::ordered_json& request, Reply& reply);
    void getOne(const Match& match, bool named, PathWalk& walk, Reply& reply);
    void getStations(const Match& match, bool named, PathWalk& walk, Reply& reply);
    void getMeasurement(const Match& match, std::uint32_t channel, Reply& reply);
    void set(const nlohmann::ordered_json& request, Reply& reply);
    void setAll(const std::vector<Transaction::Setting>& settings, bool save, Reply& reply);
    void readBack(const std::vector<Transaction::Setting>& settings, Reply& reply);
    void instances(const nlohmann::ordered_json& request, Reply& reply);
    void dataModel(const nlohmann::ordered_json& request, Reply& reply);
    void complete(const nlohmann::ordered_json& request, Reply& reply);
    void measureChannel(const nlohmann::ordered_json& request, Reply& reply);
    void snapshot(const nlohmann::ordered_json& request, Reply& reply);
    void operate(const nlohmann::ordered_json& request, Reply& reply);
    void control(const nlohmann::ordered_json& request, Reply& reply);

    void flush(Reply& reply);
    bool faultPassedOver(PathWalk& walk, const std::string& path, Reply& reply);
    void readFailed(const std::string& path, std::uint32_t result, Reply& reply);
    [[nodiscard]] std::string trouble() const;

    const Plugin& plugin_;
    Heartbeat& heartbeat_;
    Surroundings surroundings_;
    DataModel model_;
    std::vector<std::pair<std::string, Value>> values_;  // read and not sent yet
    bool managerLost_ = false;                           // reading on would only wait again
};

/// Returns the stated fault with the plug-in's result code and the errors it has logged.
[[nodiscard]] Fault pluginFault(FaultCode code, const std::string& path, const std::string& reason,
                                std::uint32_t result);

}  // namespace quorvel::hostd
