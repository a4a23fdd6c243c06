#pragma once

#include <string>
#include <vector>

#include "web/server/http/Server.h"
#include "web/server/live/Picture.h"

namespace quorvel::web {

/// Which metrics are written.
struct MetricsOptions {
    bool stations = false;  ///< a series for each station, with its MAC address
    /// A metric with more series than this is summed over the gateways; one that cannot be summed is left out.
    std::size_t mostSeries = 1000;
};

/// Returns the metrics of gateways in the Prometheus text format. Each series has its gateway's name as a label.
[[nodiscard]] std::string metricsText(const std::vector<const Picture*>& gateways, const ServerCounts& server,
                                      const MetricsOptions& options);

}  // namespace quorvel::web
