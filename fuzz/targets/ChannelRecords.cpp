#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The manager's records of a channel's neighbours, its air time and its measurements.

namespace {

using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

constexpr std::uint32_t kTextMinimum = 2048;
constexpr std::size_t kNeighbours = 28;
constexpr std::size_t kNeighbourSize = 16;
constexpr std::size_t kRssi = 12;
constexpr std::size_t kCount = 1052;
constexpr std::size_t kMetricsSize = 1056;
constexpr std::uint32_t kMostNeighbours = 64;

std::uint32_t wordAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

// The record with its neighbours in order, the strongest first.
std::string sorted(std::string record) {
    std::vector<std::string> neighbours;
    const std::uint32_t count = std::min(wordAt(record, kCount), kMostNeighbours);
    for (std::uint32_t n = 0; n < count; ++n) {
        neighbours.push_back(record.substr(kNeighbours + n * kNeighbourSize, kNeighbourSize));
    }
    std::stable_sort(neighbours.begin(), neighbours.end(), [](const std::string& a, const std::string& b) {
        return static_cast<std::int32_t>(wordAt(a, kRssi)) > static_cast<std::int32_t>(wordAt(b, kRssi));
    });
    std::size_t at = kNeighbours;
    for (const std::string& neighbour : neighbours) {
        record.replace(at, kNeighbourSize, neighbour);
        at += kNeighbourSize;
    }
    return record;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    run.platform.setVariableEverywhere("dcsDwelltime", std::to_string(input.byte()));
    const std::uint32_t room = input.byte() % 33;
    // In the record the count follows all neighbours; in the input it comes first, so that a short input has some.
    const std::string count = input.bytes(4);
    std::string neighbours = input.bytes(kCount);
    neighbours.resize(kMetricsSize, '\0');
    neighbours.replace(kCount, count.size(), count);
    run.platform.setRecord("wlcsm_mngr_ci_scanresults", neighbours);
    const std::string rest = input.rest();
    run.platform.setRecord("wlcsm_mngr_channelstats", rest.substr(0, 80));
    run.platform.setRecord("wlcsm_mngr_getRadioChannelStats2", rest.substr(0, room));

    // The reader needs no more room than the record has, whatever the count.
    ExactBuffer metrics(kMetricsSize);
    require(WiFiRadioDcsChannelMetricsGet(1, metrics.get(), kTextMinimum) == 0, "any record can be read");
    require(std::string(metrics.get(), kMetricsSize) == sorted(neighbours), "the strongest neighbours come first");
    ExactBuffer statistics(80);
    require(WiFiRadioChannelStatsGet(1, statistics.get(), kTextMinimum) == 0, "any record can be read");
    require(std::memcmp(statistics.get(), rest.data(), std::min<std::size_t>(rest.size(), 80)) == 0,
            "what was measured is handed on");
    ExactBuffer brief(room);
    require(WiFiRadioChannelStatsGet2(1, brief.get(), room) == 0, "any record fits its room");
    return 0;
}
