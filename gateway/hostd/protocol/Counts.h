#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Records.h"

/// The counts of the host process: the status of the service kHostService, which the request "status" asks for by
/// its name.
namespace quorvel::hostd::protocol {

/// The service whose status is the host process's own. No other process can report under this name.
inline constexpr const char* kHostService = "host";

/// Calls of one kind.
struct CallCount {
    std::string name;
    std::uint64_t failed = 0;
    double seconds = 0;
    std::vector<std::uint64_t> classes;

    static constexpr auto members() {
        return std::tuple(required("name", &CallCount::name, "the kind"),
                          optional("failed", &CallCount::failed,
                                   "calls with a result other than 0; 0 where results say no such thing"),
                          required("seconds", &CallCount::seconds, "the time that all of them took"),
                          required("classes", &CallCount::classes,
                                   "how many fell into each class of duration, one more than there are bounds"));
    }
};

/// Requests of one kind.
struct RequestCount {
    std::string name;
    std::uint64_t count = 0;

    static constexpr auto members() {
        return std::tuple(required("name", &RequestCount::name, "the verb"),
                          required("count", &RequestCount::count, "since power-on"));
    }
};

/// The host process's own status. Requests count since power-on, the plug-in's calls since this status was first asked
/// for, the WLAN manager's requests since it was launched.
struct HostCounts {
    std::vector<double> bounds;
    std::vector<CallCount> pluginCalls;
    std::vector<CallCount> managerRequests;
    std::vector<RequestCount> requests;

    static constexpr auto members() {
        return std::tuple(
            required("bounds", &HostCounts::bounds, "upper bounds of the classes of duration, in seconds"),
            required("pluginCalls", &HostCounts::pluginCalls,
                     "calls of the plug-in's functions since this status was first asked for"),
            required("managerRequests", &HostCounts::managerRequests,
                     "requests that the WLAN manager has carried out; empty while it does not answer"),
            required("requests", &HostCounts::requests, "requests of the host process's clients"));
    }
};

/// The WLAN manager's answer to the command "counts".
struct ManagerCounts {
    bool ok = false;
    std::vector<CallCount> requests;

    static constexpr auto members() {
        return std::tuple(required("ok", &ManagerCounts::ok, ""),
                          optional("requests", &ManagerCounts::requests, "those that it has carried out"));
    }
};

/// Returns the JSON form of the host process's status.
[[nodiscard]] Json toJson(const HostCounts& counts);
/// Reads the host process's status. Returns nothing when it has another form.
[[nodiscard]] std::optional<HostCounts> readHostCounts(const Json& json);
/// Reads the WLAN manager's counts. Returns none when it has another form.
[[nodiscard]] std::vector<CallCount> readManagerCounts(const Json& json);

}  // namespace quorvel::hostd::protocol
