#include "agent/wifi/WifiView.h"

#include <algorithm>
#include <map>
#include <set>

#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

constexpr std::string_view kMac = "MACAddress";

// Splits "D.T.1.Name" into "D.T.1." and "Name".
std::pair<std::string_view, std::string_view> split(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    return {path.substr(0, dot + 1), path.substr(dot + 1)};
}

// The row of a station that a path is at or below: the table and one number.
std::string_view stationRow(std::string_view path, std::string_view table) {
    const std::size_t dot = path.find('.', table.size());
    return dot == std::string_view::npos ? std::string_view() : path.substr(0, dot + 1);
}

// "cpe-SSID-3" for "Device.WiFi.SSID.3.".
std::string generatedAlias(std::string_view object) {
    std::string alias = "cpe";
    object.remove_prefix(std::min<std::size_t>(object.find("WiFi.") + 5, object.size()));
    while (!object.empty()) {
        alias.append("-").append(object.substr(0, object.find('.')));
        object.remove_prefix(std::min(object.find('.') + 1, object.size()));
    }
    return alias;
}

// Returns whether a wanted path names this value.
bool covers(std::string_view wanted, std::string_view object, std::string_view parameter) {
    if (wanted.ends_with('.')) return object.starts_with(wanted);
    return wanted.size() == object.size() + parameter.size() && wanted.starts_with(object) &&
           wanted.ends_with(parameter);
}

}  // namespace

void WifiView::noticeStations(const GetAnswer& answer, const std::vector<std::string>& asked) {
    const bool whole = !answer.lost && answer.faults.empty();
    std::map<std::string, std::vector<std::string>> lists;
    if (whole) {
        // An empty list shows no row.
        for (const std::string& table : asked)
            lists[table];
    }
    for (const GatewayValue& value : answer.values) {
        std::string_view table;
        if (!Stations::concerns(value.path, table)) continue;
        const auto [object, parameter] = split(value.path);
        if (parameter == kMac && stationRow(object, table) == object) lists[std::string(table)].push_back(value.value);
    }
    for (const auto& [table, macs] : lists) {
        const Stations::Difference difference = stations_.update(table, macs, whole);
        if (!difference.joined.empty() || !difference.left.empty()) noticed_(difference);
    }
}

std::vector<Reading> WifiView::translate(const std::vector<GatewayValue>& values, bool clear) {
    std::map<std::string_view, std::string_view> macs;  // of rows as the library numbers them
    for (const GatewayValue& value : values) {
        std::string_view table;
        if (value.path.ends_with(kMac) && Stations::concerns(value.path, table))
            macs[split(value.path).first] = value.value;
    }
    std::vector<Reading> readings;
    readings.reserve(values.size());
    std::string_view last;
    std::string object;
    const Object* known = nullptr;
    for (const GatewayValue& value : values) {
        const auto [place, name] = split(value.path);
        if (place != last) {
            last = place;
            object = place;
            known = schema_->ofInstance(place);
            std::string_view table;
            if (Stations::concerns(place, table)) {
                const auto mac = macs.find(stationRow(place, table));
                const std::uint32_t number = mac == macs.end() ? 0 : stations_.numberOf(table, mac->second);
                if (number == 0) known = nullptr;
                object = std::string(table) + std::to_string(number) + "." +
                         std::string(place.substr(stationRow(place, table).size()));
            }
        }
        const Parameter* const parameter = known == nullptr ? nullptr : known->parameter(name);
        if (parameter == nullptr || parameter->access == Access::kWriteOnly) continue;
        if (parameter->is(kSecured) && !clear) {
            readings.push_back({object, parameter->name, ""});
        } else if (parameter->is(kGenerated) && value.value.empty() && !clear) {
            readings.push_back({object, parameter->name, generatedAlias(object)});
        } else {
            readings.push_back({object, parameter->name, value.value});
        }
    }
    return readings;
}

Task<Readings> WifiView::read(std::vector<std::string> paths, unsigned levels, bool clear) {
    std::vector<std::string> asked;
    std::vector<std::string> lists;  // of stations, asked for in full
    bool filter = false;
    for (const std::string& path : paths) {
        std::string_view table;
        std::string ask = path;
        if (Stations::concerns(path, table)) {
            // A row is found by its address, and the address and the values must come from one look at the list.
            ask = table;
            filter = filter || path != ask;
            lists.push_back(ask);
        }
        if (std::find(asked.begin(), asked.end(), ask) == asked.end()) asked.push_back(std::move(ask));
    }
    // Rows below a station's own level are found by the station's row as well.
    const unsigned depth = filter ? 0 : levels;
    const std::function<void(std::function<void(GetAnswer)>)> ask = [&](std::function<void(GetAnswer)> done) {
        gateway_.get(asked, depth, std::move(done));
    };
    Callback<GetAnswer> answered(ask);
    GetAnswer answer = co_await answered;
    noticeStations(answer, lists);
    Readings readings{translate(answer.values, clear), std::move(answer.faults)};
    if (answer.lost && readings.faults.empty()) {
        readings.faults.push_back({kInternalError, "", "the gateway does not answer"});
    }
    if (!filter) co_return readings;
    // Of lists that were read in full, the wanted rows only, down to the wanted level.
    std::erase_if(readings.values, [&](const Reading& reading) {
        return std::none_of(paths.begin(), paths.end(), [&](const std::string& wanted) {
            if (!covers(wanted, reading.object, reading.parameter)) return false;
            if (levels == 0 || !wanted.ends_with('.')) return true;
            const std::string_view below = std::string_view(reading.object).substr(wanted.size());
            return std::count(below.begin(), below.end(), '.') < static_cast<std::ptrdiff_t>(levels);
        });
    });
    for (const std::string& wanted : paths) {
        std::string_view table;
        if (!Stations::concerns(wanted, table) || wanted == table) continue;
        const bool found = std::any_of(readings.values.begin(), readings.values.end(), [&](const Reading& reading) {
            return covers(wanted, reading.object, reading.parameter);
        });
        if (!found) readings.faults.push_back({kNoSuchObject, wanted, "the station has left"});
    }
    co_return readings;
}

Task<WifiView::Rows> WifiView::rows(std::string table) {
    Rows found;
    std::string_view list;
    if (Stations::concerns(table, list) && list == table) {
        std::vector<std::string> paths{table};
        const Readings readings = co_await read(std::move(paths), 1);
        if (!readings.faults.empty()) found.problem = {readings.faults.front().code, readings.faults.front().reason};
        found.instances = stations_.numbers(table);
        co_return found;
    }
    struct Answer {
        std::vector<std::string> rows;
        std::vector<GatewayFault> faults;
    };
    const std::function<void(std::function<void(Answer)>)> ask = [&](std::function<void(Answer)> done) {
        std::vector<std::string> tables{table};
        gateway_.instances(std::move(tables), [done](std::vector<std::string> rows, std::vector<GatewayFault> faults) {
            done({std::move(rows), std::move(faults)});
        });
    };
    Callback<Answer> answered(ask);
    const Answer answer = co_await answered;
    if (!answer.faults.empty()) found.problem = {answer.faults.front().code, answer.faults.front().reason};
    for (const std::string& row : answer.rows) {
        if (tableOf(row) == table)
            found.instances.push_back(numberOr(row.substr(table.size(), row.size() - table.size() - 1), 0));
    }
    std::erase(found.instances, 0U);
    std::sort(found.instances.begin(), found.instances.end());
    co_return found;
}

Task<Readings> WifiView::readLists(unsigned levels) {
    const Rows accessPoints = co_await rows(std::string(kAccessPoints));
    std::vector<std::string> tables;
    for (const std::uint32_t instance : accessPoints.instances)
        tables.push_back(std::string(kAccessPoints) + std::to_string(instance) + ".AssociatedDevice.");
    if (tables.empty()) co_return Readings{};
    co_return co_await read(std::move(tables), levels);
}

Task<void> WifiView::compareStations(std::set<std::string> accessPoints) {
    // The read notices what has changed.
    if (accessPoints.empty()) {
        (void)co_await readLists(1);
        co_return;
    }
    std::vector<std::string> tables;
    for (const std::string& number : accessPoints)
        tables.push_back(std::string(kAccessPoints) + number + ".AssociatedDevice.");
    (void)co_await read(std::move(tables), 1);
}

Task<std::vector<Reading>> WifiView::readStations() {
    Readings readings = co_await readLists(0);
    co_return std::move(readings.values);
}

}  // namespace quorvel::agent
