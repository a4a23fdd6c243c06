#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// Stages values per object instance and applies each instance once. Nothing reaches the device before apply(), but for
/// setters that write at once, which stageAll() therefore calls last.
class Transaction {
  public:
    struct Setting {
        const Parameter* parameter = nullptr;
        Instances instances{};
        Value value;
    };

    explicit Transaction(const DataModel& model) : model_(model) {}

    struct Outcome {
        std::uint32_t result = 0;  ///< the plug-in's result code
        std::size_t failed = 0;    ///< index of the setting (or of its object's first) that failed
    };

    /// Stages all settings. Stops at the first that is refused.
    [[nodiscard]] Outcome stageAll(const std::vector<Setting>& settings);

    /// Applies every staged object instance, in the order of their first settings. Stops at the first that fails.
    [[nodiscard]] Outcome apply();

    /// Returns the context of an object instance, initialised; null when the plug-in refuses to initialise it.
    [[nodiscard]] void* context(int node, const Instances& instances, std::size_t setting);

  private:
    struct Staged {
        int node;
        Instances instances;
        std::size_t setting;
        std::vector<std::max_align_t> bytes;
    };

    const DataModel& model_;
    std::vector<std::unique_ptr<Staged>> staged_;
};

}  // namespace quorvel::hostd
