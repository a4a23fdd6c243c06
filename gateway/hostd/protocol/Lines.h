#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/hostd/protocol/Requests.h"

/// The lines of the wire: a request or a part together with its id.
namespace quorvel::hostd::protocol {

/// The number that a client gives its request.
using Id = std::int64_t;

/// Returns a request's line, its newline included.
[[nodiscard]] std::string requestLine(Id id, const Request& request);

/// Returns the line of a part of an answer, its newline included.
[[nodiscard]] std::string partLine(Id id, const Part& part);

/// A request as it came: the request, or what is wrong with it. The id is 0 when the line has none.
struct ParsedRequest {
    Id id = 0;
    Request request;
    std::string wrong;  ///< for people; empty when the request is well-formed
};

/// Takes a request's line apart. It must be a JSON object of at most kMaxJsonLevels levels whose members are those of a
/// request; anything else has `wrong` set.
[[nodiscard]] ParsedRequest parseRequest(std::string_view line);

struct ParsedPart {
    Id id = 0;
    Part part;
    bool valid = false;
};

/// Takes the line of a part apart. Members that this version does not know are ignored.
[[nodiscard]] ParsedPart parsePart(std::string_view line);

/// Returns the verb of a request.
[[nodiscard]] const char* verbOf(const Request& request);

/// Returns the line of a boot report, and back.
[[nodiscard]] std::string reportLine(const BootReport& report);
[[nodiscard]] std::optional<BootReport> parseReport(std::string_view line);

/// Reads the value of a measurement. Returns nothing when it is another value.
[[nodiscard]] std::optional<ChannelMetrics> readMetrics(const Json& value);
[[nodiscard]] std::optional<ChannelStatistics> readStatistics(const Json& value);

/// Returns records as JSON values, for programs that print them.
[[nodiscard]] Json toJson(const Fault& fault);
[[nodiscard]] Json toJson(const std::vector<Fault>& faults);
[[nodiscard]] Json toJson(const Snapshot& snapshot);
[[nodiscard]] Json toJson(const BoardFacts& board);
[[nodiscard]] Json toJson(const StationEvent& event);
[[nodiscard]] Json toJson(const StationState& station);
[[nodiscard]] Json toJson(const std::vector<StationState>& stations);
[[nodiscard]] Json toJson(const ParameterDescription& parameter);
[[nodiscard]] Json toJson(const std::vector<ParameterDescription>& parameters);
[[nodiscard]] Json toJson(const LogLine& line);
[[nodiscard]] Json toJson(const LivePicture& picture);
[[nodiscard]] Json toJson(const ServiceStatus& status);
[[nodiscard]] Json toJson(const TraceEntry& entry);

}  // namespace quorvel::hostd::protocol
