// Requests per second through libwlcsm and the daemon whose socket QUORVEL_WLAN_SOCKET names: reads of one variable,
// one after the other, for a second or so. Prints the rate.
#include <wlcsm.h>

#include <chrono>
#include <cstdio>

int main() {
    using Clock = std::chrono::steady_clock;
    char value[WLCSM_VALUE_SIZE];
    // The first waits until the daemon is there.
    if (wlcsm_mngr_get(0, 0, "wlCurrentChannel", value) == 0) {
        std::fprintf(stderr, "the WLAN manager does not answer; is wlmngr2 running?\n");
        return 1;
    }
    constexpr int kBatch = 1000;
    std::uint64_t requests = 0;
    const auto start = Clock::now();
    auto now = start;
    while (now - start < std::chrono::seconds(1)) {
        for (int n = 0; n < kBatch; ++n) {
            if (wlcsm_mngr_get(0, 0, "wlCurrentChannel", value) == 0) return 1;
        }
        requests += kBatch;
        now = Clock::now();
    }
    const double seconds = std::chrono::duration<double>(now - start).count();
    std::printf("requests-per-second %.0f\n", static_cast<double>(requests) / seconds);
    return 0;
}
