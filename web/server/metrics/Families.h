#pragma once

#include <prometheus/metric_family.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quorvel::web {

using Labels = std::vector<std::pair<std::string, std::string>>;

/// Whether the values of several gateways can be added.
enum class Sum : std::uint8_t { kAllowed, kSenseless };

/// Durations by classes: how many fell into each, one class more than there are upper bounds (seconds).
struct Distribution {
    std::vector<double> bounds;
    std::vector<std::uint64_t> classes;
    double sum = 0;
};

/// Gathers series by metric.
class Families {
  public:
    void gauge(const std::string& name, const std::string& help, const Labels& labels, double value, Sum sum);
    void counter(const std::string& name, const std::string& help, const Labels& labels, double value);
    /// Adds a histogram. One whose classes do not fit its bounds is left out.
    void histogram(const std::string& name, const std::string& help, const Labels& labels, Distribution distribution);

    /// Returns the metrics in the order of their names. One with more than `most` series has its gateways summed; where
    /// that makes no sense, or is not enough, the metric is left out.
    [[nodiscard]] std::vector<prometheus::MetricFamily> bounded(std::size_t most) const;

  private:
    struct Sample {
        double value = 0;
        Distribution distribution;  ///< of a histogram
        Sample& operator+=(const Sample& other);
    };
    struct Family {
        std::string help;
        prometheus::MetricType type = prometheus::MetricType::Gauge;
        Sum sum = Sum::kAllowed;
        std::vector<std::pair<Labels, Sample>> series;
    };

    void add(const std::string& name, Family description, const Labels& labels, Sample sample);
    [[nodiscard]] static Family summed(const Family& family);
    [[nodiscard]] static prometheus::ClientMetric written(const Family& family, const Labels& labels,
                                                          const Sample& sample);

    std::map<std::string, Family> families_;
};

}  // namespace quorvel::web
