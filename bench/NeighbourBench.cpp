// Results of a neighbour scan, against two bare passes over their file.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/counts/NullPlatform.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Contexts.h"

namespace {

// A results file, gone with the object.
class ResultsFile {
  public:
    explicit ResultsFile(std::int64_t entries) : path_("/tmp/quorvel-bench-XXXXXX") {
        const int descriptor = mkstemp(path_.data());
        std::FILE* file = fdopen(descriptor, "w");
        if (file == nullptr) std::abort();
        for (std::int64_t n = 0; n < entries; ++n) {
            const int octet = static_cast<int>(n % 256);
            std::fprintf(file,
                         "SSID: \"Network%d\"\nMode: Managed\tRSSI: -%d dBm\tSNR: 20 dB\tnoise: -91 dBm\t"
                         "Flags: RSSI on-channel Channel: %d\nBSSID: 02:10:18:00:00:%02X\t"
                         "Capability: ESS WEP ShortSlot\n"
                         "Supported Rates: [ 1(b) 2(b) 5.5(b) 6 9 11(b) 12 18 24 36 48 54 ]\n"
                         "RSN (WPA2):\n\tmulticast cipher: AES-CCMP\n\tunicast ciphers(1): AES-CCMP \n"
                         "\tAKM Suites(1): WPA2-PSK \n\tCapabilities(0x000c): No Pre-Auth, Pairwise\n"
                         "HT Capable:\nQBSS Channel Utilization: 0x40 (25 %%)\n\n",
                         octet, 40 + octet % 50, 1 + octet % 11, static_cast<unsigned>(octet));
        }
        lines_ = 12 * entries;
        std::fclose(file);
    }
    ~ResultsFile() {
        quorvel::bench::setFile(nullptr);
        (void)unlink(path_.c_str());
    }
    ResultsFile(const ResultsFile&) = delete;
    ResultsFile& operator=(const ResultsFile&) = delete;

    [[nodiscard]] const char* path() const {
        return path_.c_str();
    }
    [[nodiscard]] double lines() const {
        return static_cast<double>(lines_);
    }

  private:
    std::string path_;
    std::int64_t lines_ = 0;
};

void countLines(benchmark::State& state, double lines) {
    state.counters["perLine"] =
        benchmark::Counter(lines, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void neighbourResults(benchmark::State& state) {
    const ResultsFile file(state.range(0));
    quorvel::bench::setFile(file.path());
    WiFiRadioStatsContext context;
    for (auto _ : state) {
        (void)WiFiRadioStatsInitContext(&context);
        (void)WiFiRadioStatsDiagnosticsStateSet(&context, 1, 2);
        if (WiFiRadioStatsApplyContext(&context, 1, 0) != 0) state.SkipWithError("the results were refused");
    }
    std::uint32_t entries = 0;
    (void)WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(1, &entries);
    if (entries != state.range(0)) state.SkipWithError("results are missing");
    countLines(state, file.lines());
}
BENCHMARK(neighbourResults)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void neighbourTwoPasses(benchmark::State& state) {
    const ResultsFile file(state.range(0));
    quorvel::bench::setFile(file.path());
    for (auto _ : state) {
        char line[128];
        std::FILE* stream = std::fopen(file.path(), "r");
        for (int pass = 0; pass < 2; ++pass) {
            while (std::fgets(line, sizeof line, stream) != nullptr)
                benchmark::DoNotOptimize(line);
            std::rewind(stream);
        }
        std::fclose(stream);
    }
    countLines(state, file.lines());
}
BENCHMARK(neighbourTwoPasses)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace
