#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// Stages values per object instance and applies each instance once. Nothing reaches the device before apply(), but for
/// setters that write at once, which stageAtOnce() calls.
class Transaction {
  public:
    struct Setting {
        const Parameter* parameter = nullptr;
        Instances instances{};
        Value value;
    };

    explicit Transaction(const DataModel& model) : model_(model) {}

    /// Called with the index of a setting and the plug-in's result code when the plug-in refuses it. Returns whether to
    /// go on with the other settings.
    using OnRefused = std::function<bool(std::size_t setting, std::uint32_t result)>;

    /// Stages the settings whose setters write into the context. Returns false when a refusal ended it.
    [[nodiscard]] bool stage(const std::vector<Setting>& settings, const OnRefused& onRefused);

    /// Calls the setters that write to the device at once. Call it when everything else has been staged. Returns false
    /// when a refusal ended it.
    [[nodiscard]] bool stageAtOnce(const std::vector<Setting>& settings, const OnRefused& onRefused);

    struct Outcome {
        std::uint32_t result = 0;  ///< the plug-in's result code
        std::size_t failed = 0;    ///< index of the first setting of the object instance that failed
        std::size_t applied = 0;   ///< how many object instances were applied, the failed one included
    };

    /// Applies every staged object instance, in the order of their first settings. Stops at the first that fails.
    [[nodiscard]] Outcome apply();

    /// Returns the context of an object instance, initialised; null when the plug-in refuses to initialise it.
    [[nodiscard]] void* context(int node, const Instances& instances, std::size_t setting);

    /// An object instance of the transaction.
    struct Object {
        int node = 0;
        Instances instances{};
    };
    /// Returns the object instances that are applied, in that order: those with a setting that was not refused.
    [[nodiscard]] std::vector<Object> objects() const;

  private:
    struct Staged {
        int node;
        Instances instances;
        std::size_t setting;
        bool wanted;
        std::vector<std::max_align_t> bytes;
    };

    [[nodiscard]] Staged* stagedFor(int node, const Instances& instances, std::size_t setting);
    [[nodiscard]] bool stageSome(const std::vector<Setting>& settings, bool atOnce, const OnRefused& onRefused);

    const DataModel& model_;
    std::vector<std::unique_ptr<Staged>> staged_;
};

}  // namespace quorvel::hostd
