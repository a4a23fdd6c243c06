#include "web/server/live/History.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace quorvel::web {

using Json = nlohmann::ordered_json;

void History::Values::set(std::size_t at, double value) {
    numbers.resize(at + 1);
    known.resize(at + 1);
    numbers[at] = value;
    known[at] = true;
}

void History::Values::forgetFirst(std::size_t count) {
    const auto few = static_cast<std::ptrdiff_t>(std::min(count, numbers.size()));
    numbers.erase(numbers.begin(), numbers.begin() + few);
    known.erase(known.begin(), known.begin() + few);
}

bool History::Values::empty() const {
    return std::find(known.begin(), known.end(), true) == known.end();
}

void History::add(const hostd::protocol::LivePicture& live, const std::map<unsigned, Rates>& rates) {
    const double now = live.clock.time;
    if (!time_.empty() && now < time_.back()) *this = History{};
    if (time_.empty() || now > time_.back()) {
        time_.push_back(now);
        forgetOld(now);
    }
    const std::size_t at = time_.size() - 1;
    for (const auto& radio : live.radios) {
        radios_[radio.radio]["utilization"].set(at, radio.utilization);
        radios_[radio.radio]["noise"].set(at, radio.noise);
    }
    for (const auto& [accessPoint, rate] : rates) {
        accessPoints_[accessPoint]["sentRate"].set(at, rate.sent);
        accessPoints_[accessPoint]["receivedRate"].set(at, rate.received);
    }
    for (const auto& station : live.stations) {
        if (!station.associated) continue;
        if (stations_.size() >= kStations && stations_.find(station.mac) == stations_.end()) continue;
        stations_[station.mac].set(at, station.rssi);
    }
}

void History::forgetOld(double now) {
    const auto first = std::find_if(time_.begin(), time_.end(), [now](double one) { return one >= now - kSeconds; });
    auto count = static_cast<std::size_t>(first - time_.begin());
    if (time_.size() - count > kSamples) count = time_.size() - kSamples;
    if (count == 0) return;
    time_.erase(time_.begin(), time_.begin() + static_cast<std::ptrdiff_t>(count));
    for (auto* const all : {&radios_, &accessPoints_}) {
        for (auto& [id, series] : *all) {
            for (auto& [name, values] : series)
                values.forgetFirst(count);
        }
    }
    for (auto& [mac, values] : stations_)
        values.forgetFirst(count);
    std::erase_if(stations_, [](const auto& one) { return one.second.empty(); });
}

Json History::list(const Values& values, std::size_t length) {
    Json result = Json::array();
    for (std::size_t i = 0; i < length; ++i) {
        if (i < values.known.size() && values.known[i])
            result.push_back(values.numbers[i]);
        else
            result.push_back(nullptr);
    }
    return result;
}

Json History::toJson() const {
    const auto series = [this](const std::map<unsigned, std::map<std::string, Values>>& all) {
        Json result = Json::array();
        for (const auto& [id, byName] : all) {
            Json values = Json::object();
            for (const auto& [name, numbers] : byName)
                values[name] = list(numbers, time_.size());
            result.push_back({{"id", id}, {"values", values}});
        }
        return result;
    };
    Json stations = Json::array();
    for (const auto& [mac, values] : stations_)
        stations.push_back({{"mac", mac}, {"rssi", list(values, time_.size())}});
    return {{"time", time_}, {"radios", series(radios_)}, {"traffic", series(accessPoints_)}, {"stations", stations}};
}

}  // namespace quorvel::web
