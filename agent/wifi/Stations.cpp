#include "agent/wifi/Stations.h"

#include <algorithm>

namespace quorvel::agent {
namespace {

constexpr std::string_view kStations = "AssociatedDevice.";

}  // namespace

bool Stations::concerns(std::string_view path, std::string_view& table) {
    if (!path.starts_with(kAccessPoints)) return false;
    const std::size_t dot = path.find('.', kAccessPoints.size());
    if (dot == std::string_view::npos || !path.substr(dot + 1).starts_with(kStations)) return false;
    table = path.substr(0, dot + 1 + kStations.size());
    return true;
}

Stations::Difference Stations::update(const std::string& name, const std::vector<std::string>& macs, bool whole) {
    Table& table = tables_[name];
    Difference difference;
    const std::set<std::string> present(macs.begin(), macs.end());
    const bool shifted = present.size() != macs.size() || present.contains("");
    for (const std::string& mac : macs) {
        if (mac.empty() || table.numbers.contains(mac)) continue;
        const std::uint32_t number = ++table.highest;
        table.numbers[mac] = number;
        difference.joined.push_back({name + std::to_string(number) + ".", mac});
    }
    if (shifted || !whole) return difference;
    for (const auto& [mac, number] : table.numbers) {
        if (!present.contains(mac)) difference.left.push_back({name + std::to_string(number) + ".", mac});
    }
    for (const Row& row : difference.left)
        table.numbers.erase(row.mac);
    return difference;
}

std::uint32_t Stations::numberOf(std::string_view name, std::string_view mac) const {
    const auto table = tables_.find(name);
    if (table == tables_.end()) return 0;
    const auto found = table->second.numbers.find(mac);
    return found == table->second.numbers.end() ? 0 : found->second;
}

std::vector<std::uint32_t> Stations::numbers(std::string_view name) const {
    std::vector<std::uint32_t> found;
    const auto table = tables_.find(name);
    if (table == tables_.end()) return found;
    for (const auto& [mac, number] : table->second.numbers)
        found.push_back(number);
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string> Stations::tables() const {
    std::vector<std::string> names;
    for (const auto& [name, table] : tables_)
        names.push_back(name);
    return names;
}

}  // namespace quorvel::agent
