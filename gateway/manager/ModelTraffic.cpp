// Traffic: what one second of board time adds to every counter.
#include <algorithm>

#include "gateway/manager/Model.h"

namespace quorvel::manager {
namespace {

constexpr unsigned kFrameBytes = 1200;

// The bytes of one second at an average of `kilobits`, a little more or less each time.
std::uint64_t oneSecond(unsigned kilobits, unsigned rate, Random& random) {
    const std::uint64_t limited = std::min(kilobits, rate * 7 / 10);
    return limited * 125 * static_cast<unsigned>(random.between(75, 125)) / 100;
}

}  // namespace

void Model::runTraffic() {
    for (unsigned r = 0; r < radios_.size(); ++r) {
        Radio& radio = radios_[r];
        std::uint64_t busy = 0;  // millionths of the second
        for (Bss& bss : radio.bss) {
            for (const std::size_t index : bss.stations) {
                Station& station = stations_[index];
                const unsigned down = std::max(1U, downlinkRate(station));
                const unsigned up = std::max(1U, uplinkRate(station));
                // The wireless direction: what the access point transmits goes down to the station.
                const std::uint64_t tx = oneSecond(station.setup.downlinkTraffic, down, random_);
                const std::uint64_t rx = oneSecond(station.setup.uplinkTraffic, up, random_);
                const std::uint64_t txFrames = (tx + kFrameBytes - 1) / kFrameBytes;
                const std::uint64_t rxFrames = (rx + kFrameBytes - 1) / kFrameBytes;
                // Weak links repeat more: from 1 frame in 200 to 1 in 4.
                const auto weakness = static_cast<unsigned>(std::clamp(-station.setup.rssi - 45, 1, 50));
                const std::uint64_t retries = txFrames * weakness / 200;
                const Counters added = {tx,
                                        rx,
                                        txFrames,
                                        rxFrames,
                                        (retries + static_cast<unsigned>(random_.between(0, 39))) / 40,
                                        (retries + static_cast<unsigned>(random_.between(0, 59))) / 60,
                                        retries,
                                        rxFrames * weakness / 250};
                for (Counters* counters : {&station.counters, &bss.counters, &radio.counters}) {
                    counters->txBytes += added.txBytes;
                    counters->rxBytes += added.rxBytes;
                    counters->txFrames += added.txFrames;
                    counters->rxFrames += added.rxFrames;
                    counters->txErrors += added.txErrors;
                    counters->rxErrors += added.rxErrors;
                    counters->txRetries += added.txRetries;
                    counters->rxRetries += added.rxRetries;
                }
                bss.pendingTx += tx;
                bss.pendingRx += rx;
                busy += tx * 8 * 1000 / down + rx * 8 * 1000 / up;
            }
        }
        // About three quarters of the air time carry payload.
        radio.selfBusy = static_cast<unsigned>(std::min<std::uint64_t>(90, busy * 4 / 3 / 10'000));
        if (!isUp(r)) continue;
        radio.noise =
            std::clamp(radio.noise + random_.between(-1, 1), radio.factory.noise - 2, radio.factory.noise + 2);
        radio.badPlcp += static_cast<unsigned>(random_.between(0, 3));
        radio.badFcs += static_cast<unsigned>(random_.between(0, 6));
        radio.badSourceMac += random_.between(0, 29) == 0 ? 1U : 0U;
        radio.otherManagement += 10 * std::min<std::size_t>(neighbours_.size(), 64);
    }
}

std::vector<Model::KernelTraffic> Model::takeKernelTraffic() {
    std::vector<KernelTraffic> result;
    for (unsigned r = 0; r < radios_.size(); ++r) {
        for (unsigned s = 0; s < description::kBssPerRadio; ++s) {
            Bss& bss = radios_[r].bss[s];
            if (bss.pendingTx == 0 && bss.pendingRx == 0) continue;
            result.push_back({r, s, bss.pendingTx, bss.pendingRx});
            bss.pendingTx = 0;
            bss.pendingRx = 0;
        }
    }
    return result;
}

}  // namespace quorvel::manager
