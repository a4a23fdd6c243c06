// The requests that read: get, watch and measure.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/Service.h"
#include "gateway/hostd/Sinks.h"
#include "gateway/hostd/protocol/Codec.h"
#include "host/ChannelRecords.h"

namespace quorvel::hostd {

using protocol::Json;
using protocol::Part;

namespace {

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
    protocol::ChannelMetrics metrics{record.channel, record.noise, record.utilization, record.txPower, {}};
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(record.count, QUORVEL_MAX_CHANNEL_NEIGHBOURS); ++i) {
        const ChannelNeighbour& heard = record.neighbours[i];
        metrics.accessPoints.push_back({macText(heard.bssid), heard.width, heard.rssi});
    }
    return protocol::jsonOf(metrics);
}

Json decode(const ChannelStatsRecord& record) {
    return protocol::jsonOf(protocol::ChannelStatistics{record.channel, record.noise, record.utilization, record.total,
                                                        record.busy, record.busyTx, record.busyRx, record.busySelf,
                                                        record.busyExt});
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

void Service::readFailed(const std::string& path, std::uint32_t result, Sink& sink) {
    const FaultCode code = result == kInvalidInstance ? FaultCode::kNoSuchInstance : FaultCode::kInternal;
    Fault fault = pluginFault(code, path, "the plug-in could not read it", result);
    const std::string why = trouble();
    if (!why.empty()) {
        fault.reason += "; " + why;
        managerLost_ = true;
    }
    sink.fault(std::move(fault));
}

// Reads one path of a request. Returns false when the path itself is at fault.
bool Service::getPath(const std::string& path, std::uint32_t maxDepth, PathWalk& walk, Sink& sink) {
    // A plain parameter is the usual case.
    std::vector<Match> matches;
    Fault fault = walk.parameters(path, matches, maxDepth);
    if (fault.code != FaultCode::kNone) {
        sink.fault(std::move(fault));
        return false;
    }
    // Parameters that exist are read all the same.
    (void)faultPassedOver(walk, path, [&sink](const Fault& passed) { sink.fault(passed); });
    const bool named = !path.ends_with('.');
    for (const Match& match : matches) {
        if (managerLost_) break;
        getOne(match, named, walk, sink);
    }
    return true;
}

void Service::answer(const protocol::Get& request, Reply& reply) {
    begin();
    PathWalk walk(model_);
    for (std::size_t i = 0; i < request.paths.size(); ++i) {
        const std::string& path = request.paths[i];
        PartSink sink(reply, static_cast<std::uint32_t>(i));
        std::vector<Part> parts;
        if (request.maxAge > 0) {
            if (recent_.find(path, request.maxDepth, request.maxAge, parts)) {
                for (Part& part : parts) {
                    part.of = static_cast<std::uint32_t>(i);
                    reply.part(part);
                }
                continue;
            }
            sink.keepParts(&parts);
        }
        const bool there = getPath(path, request.maxDepth, walk, sink);
        sink.flush();
        // Stop: each further read would time out.
        if (managerLost_) break;
        if (request.maxAge > 0 && there) recent_.keep(path, request.maxDepth, std::move(parts));
    }
    if (!managerLost_) return;
    // A search that has lost the manager is not one that met something unreadable.
    Part lost;
    lost.managerLost = true;
    reply.part(lost);
}

bool Service::answerFromRecent(const protocol::Get& request, Reply& reply) const {
    if (request.maxAge <= 0) return false;
    std::vector<std::vector<Part>> answers(request.paths.size());
    for (std::size_t i = 0; i < request.paths.size(); ++i) {
        if (!recent_.find(request.paths[i], request.maxDepth, request.maxAge, answers[i])) return false;
    }
    for (std::size_t i = 0; i < answers.size(); ++i) {
        for (Part& part : answers[i]) {
            part.of = static_cast<std::uint32_t>(i);
            reply.part(part);
        }
    }
    return true;
}

void Service::look(Watched& watched, Reply& reply) {
    begin();
    PathWalk walk(model_);
    LookSink sink(watched);
    for (const std::string& path : watched.request.paths) {
        if (!managerLost_) (void)getPath(path, 0, walk, sink);  // a path that leads nowhere now may do so later
    }
    Part part = sink.finish(!managerLost_);
    if (!watched.known && !managerLost_) {
        watched.known = true;
        part.listening = true;
    }
    if (part.listening || !part.values.empty() || !part.gone.empty()) reply.part(part);
}

void Service::getOne(const Match& match, bool named, PathWalk& walk, Sink& sink) {
    const Parameter& parameter = *match.parameter;
    const std::string path = model_.concrete(parameter, match.instances);
    if (parameter.getter == 0) {
        if (named) sink.fault({FaultCode::kInternal, path, "the parameter can only be written", "", 0, ""});
        return;
    }
    heartbeat_.beat();
    if (parameter.call == Call::kPerStation) return getStations(match, named, walk, sink);
    if (parameter.call != Call::kOrdinary) {
        // Measuring takes a second of the radio's time, which is spent only on request.
        if (named) getMeasurement(match, 0, sink);
        return;
    }
    Value value;
    LogTap::forgetErrors();
    const std::uint32_t result = read(parameter, match.instances, value);
    if (result != 0) return readFailed(path, result, sink);
    sink.value(path, std::move(value));
}

void Service::getStations(const Match& match, bool named, PathWalk& walk, Sink& sink) {
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
        return sink.fault(
            {FaultCode::kNoSuchInstance, path, "no station is associated; the value exists per station", "", 0, ""});
    }
    for (const std::string& station : stations) {
        Value value;
        LogTap::forgetErrors();
        const std::uint32_t result = readStation(*match.parameter, match.instances, station.c_str(), value);
        std::string shown = path;
        shown.append("[").append(station).append("]");
        if (result != 0) {
            readFailed(shown, result, sink);
        } else {
            sink.value(std::move(shown), std::move(value));
        }
    }
}

void Service::getMeasurement(const Match& match, std::uint32_t channel, Sink& sink) {
    const std::string path = model_.concrete(*match.parameter, match.instances);
    if (channel == 0) {
        // Without a channel given, the one that the radio is on.
        const int current = model_.parameter(match.parameter->node, "Channel");
        Value value;
        if (current >= 0 && read(model_.parameters()[static_cast<std::size_t>(current)], match.instances, value) == 0) {
            channel = value.number;
        }
    }
    // It would wait for seconds before it fails.
    if (const std::string why = trouble(); !why.empty()) {
        managerLost_ = true;
        return sink.fault({FaultCode::kInternal, path, "nothing was measured; " + why, "", 0, ""});
    }
    heartbeat_.expect(kMeasurementTime);
    LogTap::forgetErrors();
    Json decoded;
    const std::uint32_t result = match.parameter->call == Call::kChannelMetrics
                                     ? take<ChannelMetricsRecord>(*match.parameter, match.instances, channel, decoded)
                                     : take<ChannelStatsRecord>(*match.parameter, match.instances, channel, decoded);
    heartbeat_.beat();
    if (result != 0) return readFailed(path, result, sink);
    sink.measured(path, std::move(decoded));
}

void Service::answer(const protocol::Measure& request, Reply& reply) {
    begin();
    PathWalk walk(model_);
    for (std::size_t i = 0; i < request.paths.size(); ++i) {
        PartSink sink(reply, static_cast<std::uint32_t>(i));
        std::vector<Match> matches;
        Fault fault = walk.parameters(request.paths[i], matches);
        if (fault.code != FaultCode::kNone) return sink.fault(std::move(fault));
        (void)faultPassedOver(walk, request.paths[i], [&sink](const Fault& passed) { sink.fault(passed); });
        for (const Match& match : matches) {
            if (!managerLost_) getMeasurement(match, request.channel, sink);
        }
    }
}

}  // namespace quorvel::hostd
