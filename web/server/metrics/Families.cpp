#include "web/server/metrics/Families.h"

#include <algorithm>
#include <functional>
#include <limits>

namespace quorvel::web {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;

Families::Sample& Families::Sample::operator+=(const Sample& other) {
    value += other.value;
    if (distribution.classes.empty()) {
        distribution = other.distribution;
    } else if (distribution.bounds == other.distribution.bounds) {
        // Gateways of another build, with other classes, cannot be added.
        distribution.sum += other.distribution.sum;
        std::transform(distribution.classes.begin(), distribution.classes.end(), other.distribution.classes.begin(),
                       distribution.classes.begin(), std::plus<>());
    }
    return *this;
}

void Families::add(const std::string& name, Family description, const Labels& labels, Sample sample) {
    Family& family = families_.try_emplace(name, std::move(description)).first->second;
    family.series.emplace_back(labels, std::move(sample));
}

void Families::gauge(const std::string& name, const std::string& help, const Labels& labels, double value, Sum sum) {
    add(name, {help, MetricType::Gauge, sum, {}}, labels, {value, {}});
}

void Families::counter(const std::string& name, const std::string& help, const Labels& labels, double value) {
    add(name, {help, MetricType::Counter, Sum::kAllowed, {}}, labels, {value, {}});
}

void Families::histogram(const std::string& name, const std::string& help, const Labels& labels,
                         Distribution distribution) {
    if (distribution.classes.size() != distribution.bounds.size() + 1) return;
    add(name, {help, MetricType::Histogram, Sum::kAllowed, {}}, labels, {0, std::move(distribution)});
}

Families::Family Families::summed(const Family& family) {
    std::map<Labels, Sample> sums;
    for (const auto& [labels, sample] : family.series) {
        Labels rest = labels;
        std::erase_if(rest, [](const auto& label) { return label.first == "gateway"; });
        sums[rest] += sample;
    }
    Family result = family;
    result.series.assign(sums.begin(), sums.end());
    return result;
}

ClientMetric Families::written(const Family& family, const Labels& labels, const Sample& sample) {
    ClientMetric metric;
    for (const auto& [label, text] : labels)
        metric.label.push_back({label, text});
    if (family.type == MetricType::Counter) metric.counter.value = sample.value;
    if (family.type == MetricType::Gauge) metric.gauge.value = sample.value;
    if (family.type != MetricType::Histogram) return metric;
    const Distribution& distribution = sample.distribution;
    std::uint64_t below = 0;
    for (std::size_t i = 0; i < distribution.classes.size(); ++i) {
        below += distribution.classes[i];
        const bool last = i == distribution.bounds.size();
        metric.histogram.bucket.push_back(
            {below, last ? std::numeric_limits<double>::infinity() : distribution.bounds[i]});
    }
    metric.histogram.sample_count = below;
    metric.histogram.sample_sum = distribution.sum;
    return metric;
}

std::vector<MetricFamily> Families::bounded(std::size_t most) const {
    std::vector<MetricFamily> result;
    for (const auto& [name, all] : families_) {
        const bool many = all.series.size() > most;
        if (many && all.sum == Sum::kSenseless) continue;
        const Family family = many ? summed(all) : all;
        if (family.series.size() > most) continue;
        MetricFamily metrics{name, family.help, family.type, {}};
        for (const auto& [labels, sample] : family.series)
            metrics.metric.push_back(written(family, labels, sample));
        result.push_back(std::move(metrics));
    }
    return result;
}

}  // namespace quorvel::web
