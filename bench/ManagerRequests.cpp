// Requests per second through libwlcsm and the daemon whose socket QUORVEL_WLAN_SOCKET names: reads of one variable,
// one after the other, for a second or so. Prints the rate, and that of one byte to another process and back, which is
// the most that this machine's processes can do in turns.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wlcsm.h>

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace {

// Returns how often a second `once` runs, or 0 when it fails.
template <typename Once>
double rateOf(const Once& once) {
    using Clock = std::chrono::steady_clock;
    constexpr int kBatch = 1000;
    std::uint64_t runs = 0;
    const auto start = Clock::now();
    auto now = start;
    while (now - start < std::chrono::seconds(1)) {
        for (int n = 0; n < kBatch; ++n) {
            if (!once()) return 0;
        }
        runs += kBatch;
        now = Clock::now();
    }
    return static_cast<double>(runs) / std::chrono::duration<double>(now - start).count();
}

double bareRate() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return 0;
    const pid_t other = fork();
    if (other < 0) return 0;
    char byte = 0;
    if (other == 0) {
        (void)close(ends[0]);
        while (read(ends[1], &byte, 1) == 1 && write(ends[1], &byte, 1) == 1) {
        }
        _exit(0);
    }
    (void)close(ends[1]);
    const double rate = rateOf([&] { return write(ends[0], &byte, 1) == 1 && read(ends[0], &byte, 1) == 1; });
    (void)close(ends[0]);
    (void)waitpid(other, nullptr, 0);
    return rate;
}

}  // namespace

int main() {
    char value[WLCSM_VALUE_SIZE];
    // The first waits until the daemon is there.
    if (wlcsm_mngr_get(0, 0, "wlCurrentChannel", value) == 0) {
        std::fprintf(stderr, "the WLAN manager does not answer; is wlmngr2 running?\n");
        return 1;
    }
    const double requests = rateOf([&] { return wlcsm_mngr_get(0, 0, "wlCurrentChannel", value) != 0; });
    const double bare = bareRate();
    if (requests == 0 || bare == 0) return 1;
    std::printf("requests-per-second %.0f\nbare-exchanges-per-second %.0f\n", requests, bare);
    return 0;
}
