#include "gateway/hostd/Transaction.h"

#include "gateway/hostd/Accessors.h"

namespace quorvel::hostd {
namespace {

// The plug-in's result for a context that is not initialised.
constexpr std::uint32_t kInvalidContext = 2;

}  // namespace

Transaction::Staged* Transaction::stagedFor(int node, const Instances& instances, std::size_t setting) {
    for (const auto& staged : staged_) {
        if (staged->node == node && staged->instances == instances) return staged.get();
    }
    const Node& object = model_.nodes()[static_cast<std::size_t>(node)];
    auto staged = std::make_unique<Staged>(Staged{node, instances, setting, false, {}});
    staged->bytes.resize(object.contextSize / sizeof(std::max_align_t) + 1);
    if (initContext(object, staged->bytes.data()) != 0) return nullptr;
    staged_.push_back(std::move(staged));
    return staged_.back().get();
}

void* Transaction::context(int node, const Instances& instances, std::size_t setting) {
    Staged* const staged = stagedFor(node, instances, setting);
    if (staged == nullptr) return nullptr;
    staged->wanted = true;
    return staged->bytes.data();
}

bool Transaction::stageSome(const std::vector<Setting>& settings, bool atOnce, const OnRefused& onRefused) {
    for (std::size_t i = 0; i < settings.size(); ++i) {
        const Setting& setting = settings[i];
        if (setting.parameter->writesAtOnce != atOnce) continue;
        Staged* const staged = stagedFor(setting.parameter->node, setting.instances, i);
        const std::uint32_t result = staged == nullptr ? kInvalidContext
                                                       : hostd::stage(*setting.parameter, staged->bytes.data(),
                                                                      setting.instances, setting.value);
        if (result == 0) {
            staged->wanted = true;
        } else if (!onRefused(i, result)) {
            return false;
        }
    }
    return true;
}

bool Transaction::stage(const std::vector<Setting>& settings, const OnRefused& onRefused) {
    return stageSome(settings, false, onRefused);
}

bool Transaction::stageAtOnce(const std::vector<Setting>& settings, const OnRefused& onRefused) {
    return stageSome(settings, true, onRefused);
}

Transaction::Outcome Transaction::apply() {
    Outcome outcome;
    for (const auto& staged : staged_) {
        if (!staged->wanted) continue;
        const Node& object = model_.nodes()[static_cast<std::size_t>(staged->node)];
        ++outcome.applied;
        outcome.result = applyContext(object, staged->bytes.data(), staged->instances);
        if (outcome.result == 0) continue;
        outcome.failed = staged->setting;
        break;
    }
    return outcome;
}

std::vector<Transaction::Object> Transaction::objects() const {
    std::vector<Object> found;
    for (const auto& staged : staged_) {
        if (staged->wanted) found.push_back({staged->node, staged->instances});
    }
    return found;
}

}  // namespace quorvel::hostd
