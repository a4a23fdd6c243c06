// The JSON forms of single records, compiled once for all clients.
#include "gateway/hostd/protocol/Codec.h"
#include "gateway/hostd/protocol/Counts.h"
#include "gateway/hostd/protocol/Lines.h"

namespace quorvel::hostd::protocol {
namespace {

template <typename Type>
std::optional<Type> read(const Json& value) {
    Type record;
    if (!decode(value, record).empty()) return std::nullopt;
    return record;
}

}  // namespace

std::optional<ChannelMetrics> readMetrics(const Json& value) {
    return read<ChannelMetrics>(value);
}

std::optional<ChannelStatistics> readStatistics(const Json& value) {
    return read<ChannelStatistics>(value);
}

Outcome readOutcome(const Json& json) {
    return read<Outcome>(json).value_or(Outcome{});
}

std::optional<SimulationAnswer> readSimulationAnswer(const Json& json) {
    return read<SimulationAnswer>(json);
}

std::optional<SimulationState> readSimulationState(const Json& json) {
    return read<SimulationState>(json);
}

std::optional<HostCounts> readHostCounts(const Json& json) {
    return read<HostCounts>(json);
}

std::vector<CallCount> readManagerCounts(const Json& json) {
    return read<ManagerCounts>(json).value_or(ManagerCounts{}).requests;
}

Json toJson(const HostCounts& counts) {
    return jsonOf(counts);
}

Json toJson(const Fault& fault) {
    return jsonOf(fault);
}

Json toJson(const std::vector<Fault>& faults) {
    return jsonOf(faults);
}

Json toJson(const Snapshot& snapshot) {
    return jsonOf(snapshot);
}

Json toJson(const BoardFacts& board) {
    return jsonOf(board);
}

Json toJson(const StationEvent& event) {
    return jsonOf(event);
}

Json toJson(const StationState& station) {
    return jsonOf(station);
}

Json toJson(const std::vector<StationState>& stations) {
    return jsonOf(stations);
}

Json toJson(const ParameterDescription& parameter) {
    return jsonOf(parameter);
}

Json toJson(const std::vector<ParameterDescription>& parameters) {
    return jsonOf(parameters);
}

Json toJson(const LogLine& line) {
    return jsonOf(line);
}

Json toJson(const LivePicture& picture) {
    return jsonOf(picture);
}

Json toJson(const ServiceStatus& status) {
    return jsonOf(status);
}

Json toJson(const TraceEntry& entry) {
    return jsonOf(entry);
}

}  // namespace quorvel::hostd::protocol
