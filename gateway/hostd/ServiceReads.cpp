// The requests that read: get and measure.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/Service.h"
#include "host/ChannelRecords.h"

namespace quorvel::hostd {

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t kValuesPerPart = 64;
constexpr std::uint32_t kInvalidInstance = 6;

// The least text length that the plug-in takes for a measurement.
constexpr std::uint32_t kMeasurementLength = 2048;

// A measurement waits for a second of board time.
constexpr std::chrono::milliseconds kMeasurementTime{1500};

std::string macText(const std::uint8_t* bytes) {
    char text[18];
    (void)std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", bytes[0], bytes[1], bytes[2], bytes[3],
                        bytes[4], bytes[5]);
    return text;
}

Json decode(const ChannelMetricsRecord& record) {
    Json heard = Json::array();
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(record.count, QUORVEL_MAX_CHANNEL_NEIGHBOURS); ++i) {
        heard.push_back({{"bssid", macText(record.neighbours[i].bssid)},
                         {"width", record.neighbours[i].width},
                         {"rssi", record.neighbours[i].rssi}});
    }
    return {{"channel", record.channel},
            {"noise", record.noise},
            {"utilization", record.utilization},
            {"transmitPower", record.txPower},
            {"accessPoints", heard}};
}

Json decode(const ChannelStatsRecord& record) {
    return {{"channel", record.channel},      {"noise", record.noise},       {"utilization", record.utilization},
            {"total", record.total},          {"busy", record.busy},         {"busyTransmitting", record.busyTx},
            {"busyReceiving", record.busyRx}, {"busySelf", record.busySelf}, {"busyOther", record.busyExt}};
}

template <typename Record>
std::uint32_t take(const Parameter& parameter, const Instances& instances, std::uint32_t channel, Json& decoded) {
    // The plug-in wants the length of a text; the record is what it fills of it.
    alignas(8) char buffer[2 * kMeasurementLength] = {};
    Record record{};
    record.channel = channel;
    record.request = 1;
    std::memcpy(buffer, &record, sizeof record);
    const std::uint32_t result = measure(parameter, instances, buffer, kMeasurementLength);
    std::memcpy(&record, buffer, sizeof record);
    decoded = decode(record);
    return result;
}

}  // namespace

void Service::flush(Reply& reply) {
    if (values_.empty()) return;
    Json values = Json::array();
    for (const auto& [path, value] : values_)
        values.push_back({{"path", path}, {"value", toJson(value)}});
    values_.clear();
    reply.part({{"values", std::move(values)}});
}

void Service::readFailed(const std::string& path, std::uint32_t result, Reply& reply) {
    const FaultCode code = result == kInvalidInstance ? FaultCode::kNoSuchInstance : FaultCode::kInternal;
    Fault fault = pluginFault(code, path, "the plug-in could not read it", result);
    const std::string why = trouble();
    if (!why.empty()) {
        fault.reason += "; " + why;
        managerLost_ = true;
    }
    flush(reply);
    reply.fault(fault);
}

void Service::get(const Json& request, Reply& reply) {
    PathWalk walk(model_);
    const auto levels = request.value("maxDepth", 0U);
    for (const Json& item : request.at("paths")) {
        const std::string path = item.get<std::string>();
        std::vector<Match> matches;
        const Fault fault = walk.parameters(path, matches, levels);
        if (fault.code != FaultCode::kNone) {
            flush(reply);
            reply.fault(fault);
            continue;
        }
        (void)faultPassedOver(walk, path, reply);  // what there is, is read
        const bool named = !path.ends_with('.');
        for (const Match& match : matches) {
            if (managerLost_) break;
            getOne(match, named, walk, reply);
        }
        // Reading on would only wait again.
        if (managerLost_) break;
    }
    flush(reply);
    // A search that has lost the manager is no search that met something unreadable.
    if (managerLost_) reply.part({{"managerLost", true}});
}

void Service::getOne(const Match& match, bool named, PathWalk& walk, Reply& reply) {
    const Parameter& parameter = *match.parameter;
    const std::string path = model_.concrete(parameter, match.instances);
    if (parameter.getter == 0) {
        if (!named) return;
        Fault fault;
        fault.code = FaultCode::kInternal;
        fault.path = path;
        fault.reason = "the parameter can only be written";
        flush(reply);
        return reply.fault(fault);
    }
    heartbeat_.beat();
    if (parameter.call == Call::kPerStation) return getStations(match, named, walk, reply);
    if (parameter.call != Call::kOrdinary) {
        // Measuring takes a second of the radio's time, which is spent only on request.
        if (named) getMeasurement(match, 0, reply);
        return;
    }
    Value value;
    LogTap::forgetErrors();
    const std::uint32_t result = read(parameter, match.instances, value);
    if (result != 0) return readFailed(path, result, reply);
    values_.emplace_back(path, std::move(value));
    if (values_.size() >= kValuesPerPart) flush(reply);
}

void Service::getStations(const Match& match, bool named, PathWalk& walk, Reply& reply) {
    const std::string path = model_.concrete(*match.parameter, match.instances);
    std::vector<std::string> stations;
    if (!match.station.empty()) {
        stations.push_back(match.station);
    } else {
        // The stations are those of the associated-device list below the same access point.
        const std::string list = DataModel::concrete(model_.nodeOf(*match.parameter).path, match.instances) +
                                 "AssociatedDevice.*.MACAddress";
        std::vector<Match> devices;
        (void)walk.parameters(list, devices);  // a model without the list has no stations to ask for
        for (const Match& device : devices) {
            Value mac;
            if (read(*device.parameter, device.instances, mac) == 0) stations.push_back(mac.text);
        }
    }
    if (stations.empty() && named) {
        Fault fault;
        fault.code = FaultCode::kNoSuchInstance;
        fault.path = path;
        fault.reason = "no station is associated; the value exists per station";
        flush(reply);
        return reply.fault(fault);
    }
    for (const std::string& station : stations) {
        Value value;
        LogTap::forgetErrors();
        const std::uint32_t result = readStation(*match.parameter, match.instances, station.c_str(), value);
        std::string shown = path;
        shown.append("[").append(station).append("]");
        if (result != 0) {
            readFailed(shown, result, reply);
        } else {
            values_.emplace_back(shown, std::move(value));
        }
    }
}

void Service::getMeasurement(const Match& match, std::uint32_t channel, Reply& reply) {
    const std::string path = model_.concrete(*match.parameter, match.instances);
    flush(reply);
    if (channel == 0) {
        // Without a channel given, the one that the radio is on.
        const int current = model_.parameter(match.parameter->node, "Channel");
        Value value;
        if (current >= 0 && read(model_.parameters()[static_cast<std::size_t>(current)], match.instances, value) == 0) {
            channel = value.number;
        }
    }
    // It would wait for seconds before nobody answers.
    if (const std::string why = trouble(); !why.empty()) {
        managerLost_ = true;
        return reply.fault({FaultCode::kInternal, path, "nothing was measured; " + why, "", 0, ""});
    }
    heartbeat_.expect(kMeasurementTime);
    LogTap::forgetErrors();
    Json decoded;
    const std::uint32_t result = match.parameter->call == Call::kChannelMetrics
                                     ? take<ChannelMetricsRecord>(*match.parameter, match.instances, channel, decoded)
                                     : take<ChannelStatsRecord>(*match.parameter, match.instances, channel, decoded);
    heartbeat_.beat();
    if (result != 0) return readFailed(path, result, reply);
    reply.part({{"values", Json::array({{{"path", path}, {"value", std::move(decoded)}}})}});
}

void Service::measureChannel(const Json& request, Reply& reply) {
    PathWalk walk(model_);
    for (const Json& item : request.at("paths")) {
        std::vector<Match> matches;
        const Fault fault = walk.parameters(item.get<std::string>(), matches);
        if (fault.code != FaultCode::kNone) return reply.fault(fault);
        (void)faultPassedOver(walk, item.get<std::string>(), reply);  // likewise
        for (const Match& match : matches) {
            if (!managerLost_) getMeasurement(match, request.value("channel", 0U), reply);
        }
    }
}

}  // namespace quorvel::hostd
