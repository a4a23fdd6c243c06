#pragma once

#include <map>
#include <vector>

#include "gateway/hostd/DataModel.h"

namespace quorvel::hostd {

/// Tells how many instances objects have, asking the plug-in once per object for as long as it lives: one counter
/// serves one request.
///
/// A multi-instance object "Child" is counted by the parameter "ChildNumberOfEntries" of its parent, else by one whose
/// name is that of its last two levels or of its last ("ParentChildNumberOfEntries") anywhere; when the counting
/// parameter stands in an object with instances of its own, these are added up. An object that nothing counts is probed
/// from 1 upwards until an instance cannot be read.
class Counter {
  public:
    explicit Counter(const DataModel& model) : model_(model) {}

    struct Count {
        std::uint32_t entries = 0;
        std::uint32_t result = 0;  ///< the plug-in's result code when the count could not be read
    };

    /// Counts the instances of the "{i}" node `node` below the outer instance.
    [[nodiscard]] Count count(int node, const Instances& outer);

  private:
    [[nodiscard]] int counterOf(int node) const;
    [[nodiscard]] Count ask(int node, const Instances& outer);
    [[nodiscard]] Count sum(const Parameter& parameter);
    [[nodiscard]] std::uint32_t probe(int node, Instances at) const;

    const DataModel& model_;
    std::map<std::pair<int, std::uint32_t>, Count> known_;
};

}  // namespace quorvel::hostd
