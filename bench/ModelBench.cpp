// The whole model and station lists, against their bare platform calls.
#include <benchmark/benchmark.h>
#include <wlcsm.h>

#include <cstdint>

#include "bench/counts/NullPlatform.h"
#include "bench/counts/Operation.h"
#include "wifi/QuorvelWiFiExports.h"

namespace {

void wholeModel(benchmark::State& state) {
    quorvel::bench::preparePlatform();
    for (auto _ : state)
        quorvel::bench::readWholeModel();
    state.counters["reads"] = static_cast<double>(quorvel::bench::wholeModelReads());
}
BENCHMARK(wholeModel)->Unit(benchmark::kMicrosecond);

void wholeModelFloor(benchmark::State& state) {
    quorvel::bench::preparePlatform();
    quorvel::bench::readWholeModel();
    for (auto _ : state)
        quorvel::bench::wholeModelFloor();
}
BENCHMARK(wholeModelFloor)->Unit(benchmark::kMicrosecond);

// Every field of every station, as a walk over the instances reads them.
void stationFields(benchmark::State& state) {
    const auto stations = static_cast<std::uint32_t>(state.range(0));
    quorvel::bench::preparePlatform();
    quorvel::bench::setStations(stations);
    for (auto _ : state) {
        for (std::uint32_t station = 1; station <= stations; ++station) {
            std::int32_t rssi = 0;
            std::uint32_t rate = 0;
            std::uint8_t active = 0;
            (void)WiFiAccessPointAssociatedDeviceSignalStrengthGet(1, station, &rssi);
            (void)WiFiAccessPointAssociatedDeviceLastDataDownlinkRateGet(1, station, &rate);
            (void)WiFiAccessPointAssociatedDeviceActiveGet(1, station, &active);
        }
    }
    state.counters["perStation"] =
        benchmark::Counter(stations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(stationFields)->Arg(1)->Arg(8)->Arg(64)->Arg(256);

void stationList(benchmark::State& state) {
    const auto stations = static_cast<std::uint32_t>(state.range(0));
    quorvel::bench::preparePlatform();
    quorvel::bench::setStations(stations);
    static char list[8192];
    for (auto _ : state) {
        list[0] = '\0';
        (void)WiFiAccessPointAssociatedDeviceMacListGet(1, list, sizeof list - 1);
    }
    state.counters["perStation"] =
        benchmark::Counter(stations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(stationList)->Arg(1)->Arg(8)->Arg(64)->Arg(256);

}  // namespace
