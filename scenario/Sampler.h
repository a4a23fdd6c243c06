#pragma once

#include <set>
#include <string>
#include <vector>

#include "scenario/Stage.h"

namespace quorvel::scenario {

/// Writes down how the board goes on, for a picture: every parameter that an expectation is about, and the stations.
class Sampler {
  public:
    explicit Sampler(const Scenario& scenario);

    /// Looks at the board, if it is on and its WLAN manager runs.
    void sample(Stage& stage);

    /// Returns the recording.
    [[nodiscard]] Recording take() {
        return std::move(recording_);
    }

  private:
    void leaveMeasurementsOut(Stage& stage);
    void sampleParameters(Stage& stage);
    void sampleStations(Stage& stage);

    std::vector<std::string> paths_;
    bool checked_ = false;  // paths_ has no measurement
    Recording recording_;
};

}  // namespace quorvel::scenario
