#include "gateway/hostd/Transaction.h"

#include "gateway/hostd/Accessors.h"

namespace quorvel::hostd {
namespace {

// What the plug-in answers for a context that is no context.
constexpr std::uint32_t kInvalidContext = 2;

}  // namespace

void* Transaction::context(int node, const Instances& instances, std::size_t setting) {
    for (const auto& staged : staged_) {
        if (staged->node == node && staged->instances == instances) return staged->bytes.data();
    }
    const Node& object = model_.nodes()[static_cast<std::size_t>(node)];
    auto staged = std::make_unique<Staged>(Staged{node, instances, setting, {}});
    staged->bytes.resize(object.contextSize / sizeof(std::max_align_t) + 1);
    if (initContext(object, staged->bytes.data()) != 0) return nullptr;
    staged_.push_back(std::move(staged));
    return staged_.back()->bytes.data();
}

Transaction::Outcome Transaction::stageAll(const std::vector<Setting>& settings) {
    for (const bool atOnce : {false, true}) {
        for (std::size_t i = 0; i < settings.size(); ++i) {
            const Setting& setting = settings[i];
            if (setting.parameter->writesAtOnce != atOnce) continue;
            void* const bytes = context(setting.parameter->node, setting.instances, i);
            if (bytes == nullptr) return {kInvalidContext, i};
            const std::uint32_t result = stage(*setting.parameter, bytes, setting.instances, setting.value);
            if (result != 0) return {result, i};
        }
    }
    return {};
}

Transaction::Outcome Transaction::apply() {
    for (const auto& staged : staged_) {
        const Node& object = model_.nodes()[static_cast<std::size_t>(staged->node)];
        const std::uint32_t result = applyContext(object, staged->bytes.data(), staged->instances);
        if (result != 0) return {result, staged->setting};
    }
    return {};
}

}  // namespace quorvel::hostd
