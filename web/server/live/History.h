#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Simulation.h"

namespace quorvel::web {

/// Bits per second of an access point's interface.
struct Rates {
    double sent = 0;
    double received = 0;
};

/// The last ten minutes of radios, access points and stations.
class History {
  public:
    static constexpr double kSeconds = 600;
    /// Samples and stations beyond these are not kept, however fast board time goes and however many stations come.
    static constexpr std::size_t kSamples = 601;
    static constexpr std::size_t kStations = 512;

    /// Adds a sample. Forgets everything when board time has gone back: the board was switched on again.
    void add(const hostd::protocol::LivePicture& live, const std::map<unsigned, Rates>& rates);

    /// Returns the form that the page reads.
    [[nodiscard]] nlohmann::ordered_json toJson() const;

    [[nodiscard]] std::size_t samples() const {
        return time_.size();
    }

  private:
    struct Values {
        std::vector<double> numbers;
        std::vector<bool> known;
        void set(std::size_t at, double value);
        void forgetFirst(std::size_t count);
        [[nodiscard]] bool empty() const;
    };

    [[nodiscard]] static nlohmann::ordered_json list(const Values& values, std::size_t length);
    void forgetOld(double now);

    std::vector<double> time_;
    std::map<unsigned, std::map<std::string, Values>> radios_;
    std::map<unsigned, std::map<std::string, Values>> accessPoints_;
    std::map<std::string, Values> stations_;
};

}  // namespace quorvel::web
