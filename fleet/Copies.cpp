#include "fleet/Copies.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "common/JsonDepth.h"

namespace quorvel::fleet {
namespace {

using common::MacAddress;

// Stations with addresses in a row, from one step of the scenario.
struct Run {
    std::uint64_t first = 0;
    std::uint64_t count = 1;
    unsigned owner = 0;  ///< of a single station
};

std::optional<MacAddress> addressIn(const Json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return common::parseMac(found->get_ref<const std::string&>());
}

std::uint64_t countIn(const Json& step) {
    const auto found = step.find("count");
    return found == step.end() || !found->is_number_unsigned()
               ? 1
               : std::max<std::uint64_t>(found->get<std::uint64_t>(), 1);
}

Json listOf(const Json& scenario, const char* name) {
    const auto found = scenario.find(name);
    return found == scenario.end() || !found->is_array() ? Json::array() : *found;
}

// Divides a scenario's stations among gateways.
class Division {
  public:
    Division(const Json& scenario, Share share) : share_(share) {
        for (const Json& step : listOf(scenario, "timeline")) {
            const auto mac = addressIn(step, "mac");
            if (!mac || find(numberOf(*mac)) != nullptr) continue;
            const std::uint64_t count = countIn(step);
            runs_.push_back({numberOf(*mac), count, singles_ % share_.of});
            if (count == 1) ++singles_;
        }
    }

    // Tells whether the station falls to this gateway.
    [[nodiscard]] bool has(const MacAddress& station) const {
        const std::uint64_t number = numberOf(station);
        const Run* const run = find(number);
        if (run == nullptr) return true;  // the board's own: every gateway has it
        if (run->count == 1) return run->owner == share_.index;
        const std::uint64_t at = number - run->first;
        return at >= begin(run->count) && at < begin(run->count, 1);
    }

    // Cuts a step that counts stations to the gateway's run of them. Returns false when nothing is left.
    [[nodiscard]] bool cut(Json& step) const {
        const auto mac = addressIn(step, "mac");
        if (!mac) return true;
        const std::uint64_t count = countIn(step);
        if (count == 1) return has(*mac);
        const std::uint64_t from = begin(count);
        const std::uint64_t number = begin(count, 1) - from;
        step["mac"] = common::formatMac(common::following(*mac, from));
        step["count"] = number;
        return number != 0;
    }

  private:
    [[nodiscard]] const Run* find(std::uint64_t number) const {
        const auto found = std::find_if(runs_.begin(), runs_.end(), [number](const Run& run) {
            return number >= run.first && number - run.first < run.count;
        });
        return found == runs_.end() ? nullptr : &*found;
    }
    [[nodiscard]] std::uint64_t begin(std::uint64_t count, unsigned later = 0) const {
        return count * (share_.index + later) / share_.of;
    }

    Share share_;
    std::vector<Run> runs_;
    unsigned singles_ = 0;
};

// The id of a step that has gone takes the expectation of its fault along.
bool namesMissingStep(const Json& expectation, const Json& timeline) {
    const auto step = expectation.find("step");
    if (step == expectation.end()) return false;
    return std::none_of(timeline.begin(), timeline.end(), [&step](const Json& one) {
        const auto id = one.find("id");
        return id != one.end() && *id == *step;
    });
}

void divide(Json& scenario, Share share) {
    const Division division(scenario, share);
    Json timeline = Json::array();
    for (Json step : listOf(scenario, "timeline")) {
        if (division.cut(step)) timeline.push_back(std::move(step));
    }
    Json expectations = Json::array();
    for (const Json& expectation : listOf(scenario, "expectations")) {
        const auto station = addressIn(expectation, "station");
        if (station && !division.has(*station)) continue;
        if (!namesMissingStep(expectation, timeline)) expectations.push_back(expectation);
    }
    // A gateway that has nothing to show shows that it answers.
    if (expectations.empty())
        expectations.push_back({{"at", 0}, {"parameter", "Device.WiFi.RadioNumberOfEntries"}, {"atLeast", 0}});
    scenario["timeline"] = std::move(timeline);
    scenario["expectations"] = std::move(expectations);
}

}  // namespace

std::string copyFor(const std::string& scenario, const Json& board, Identity& identity, Share share) {
    Json copy = common::parseShallow(scenario);
    if (!copy.is_object()) throw FleetError("the scenario is not a JSON object");
    if (share.of > 1) divide(copy, share);
    copy.erase("board");
    identity.replaceAddresses(copy);
    if (!board.is_null()) copy["board"] = board;
    return copy.dump();
}

}  // namespace quorvel::fleet
