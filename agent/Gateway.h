#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "agent/Trace.h"

namespace quorvel::agent {

/// One thing that went wrong at the gateway: a USP error code, the path and the reason in words for people.
struct GatewayFault {
    std::uint32_t code = 0;
    std::string path;
    std::string reason;
};

/// A row of the plug-in's exported table.
struct TableRow {
    std::string object;     ///< "Device.WiFi.Radio.{i}."
    std::string parameter;  ///< "Channel"
    std::string type;       ///< "string", "boolean", "unsignedInt", "int"
    std::string access;     ///< "readOnly", "readWrite", "writeOnly"
    /// False for what has no value of its own: asked per station, or a measurement in binary form.
    bool ordinary = true;
};

/// A value as USP writes it: "true", "-61", the text.
struct GatewayValue {
    std::string path;  ///< "Device.WiFi.Radio.1.Channel", positions as the library numbers them
    std::string value;
};

struct GetAnswer {
    std::vector<GatewayValue> values;  ///< in the order of the paths asked, then of the table
    std::vector<GatewayFault> faults;
    bool lost = false;  ///< the host process or the manager does not answer
};

struct SetAnswer {
    std::vector<GatewayFault> faults;  ///< empty: everything is as asked
    /// Objects ("Device.WiFi.Radio.1.") that were applied, or may have been, before a fault ended it.
    std::vector<std::string> applied;
};

struct SaveAnswer {
    bool saved = false;
    std::string reason;
};

/// A station has come or gone, or the library has said so. Only a hint: lists are compared anyway.
struct StationEvent {
    bool joined = false;
    std::string mac;
    std::string interface;
};

/// Events that the gateway reports by itself.
class GatewayListener {
  public:
    GatewayListener() = default;
    GatewayListener(const GatewayListener&) = delete;
    GatewayListener& operator=(const GatewayListener&) = delete;
    virtual ~GatewayListener() = default;

    virtual void onStationEvent(const StationEvent& event) = 0;
    /// Values of watched paths that have changed since the answer to watch(), or since the last call.
    virtual void onChanges(const std::vector<GatewayValue>& changes) = 0;
    /// Board time has moved.
    virtual void onBoardTime(BoardInstant now) = 0;
    /// The gateway is there again after it was lost; watches are renewed.
    virtual void onRestored() = 0;
    /// The board has been without power: what was not saved is lost. Follows onRestored().
    virtual void onRebooted() = 0;
};

/// The library behind the host process. Every request returns at once and calls back later from the same thread, in
/// any order; a request that can no longer be answered is called back with a fault (7003).
class Gateway {
  public:
    using Setting = std::pair<std::string, std::string>;  ///< path, value as text

    Gateway() = default;
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;
    virtual ~Gateway() = default;

    virtual void listen(GatewayListener* listener) = 0;

    /// Returns the board's time now.
    [[nodiscard]] virtual BoardInstant boardTime() const = 0;

    /// Has onBoardTime() called when the board's time has come; replaces an earlier wish.
    virtual void wakeAt(BoardInstant at) = 0;

    /// Describes the plug-in's exported table.
    virtual void table(std::function<void(std::vector<TableRow>)> done) = 0;

    /// Reads parameters and partial paths; of these down to `levels` levels of objects, 0 for all.
    virtual void get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) = 0;

    /// Returns the rows of tables ("Device.WiFi.Radio."): "Device.WiFi.Radio.1.", ...; a fault with 7016 where a row in
    /// the path of the table is missing. Rows below rows may be among them.
    virtual void instances(std::vector<std::string> tables,
                           std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) = 0;

    /// Stages settings without applying them, and tells which are refused. Settings that act at once are checked for
    /// their type only.
    virtual void check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) = 0;

    /// Stages all settings and applies each object instance once; ends at the first fault. Settings that act at once
    /// are written after all others have been applied.
    virtual void set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) = 0;

    /// Saves every unsaved value (WifiSaveNvram).
    virtual void save(std::function<void(SaveAnswer)> done) = 0;

    /// Starts a scan for neighbours on a radio ("Device.WiFi.Radio.1.") and answers when it is over; no fault: the
    /// results are in Device.WiFi.NeighboringWiFiDiagnostic.Result.
    virtual void scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) = 0;

    /// Starts a WPS exchange by push button ("Device.WiFi.AccessPoint.1.WPS."); how it goes shows in its Status.
    virtual void pushButton(std::string wps, std::function<void(std::vector<GatewayFault>)> done) = 0;

    /// Replaces the set of watched paths (parameters, partial paths).
    virtual void watch(std::vector<std::string> paths) = 0;

    /// Takes the board's power away and gives it back; `factory`: without its saved variables. Calls back with why it
    /// cannot be done, or with no fault when it is under way: onRebooted() follows.
    virtual void powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) = 0;
};

}  // namespace quorvel::agent
