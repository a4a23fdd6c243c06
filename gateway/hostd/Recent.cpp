#include "gateway/hostd/Recent.h"

#include <algorithm>

namespace quorvel::hostd {

bool Recent::find(const std::string& path, std::uint32_t maxDepth, double maxAge,
                  std::vector<protocol::Part>& parts) const {
    const std::lock_guard lock(mutex_);
    const auto found = kept_.find(Key(path, maxDepth));
    if (found == kept_.end()) return false;
    if (std::chrono::duration<double>(Clock::now() - found->second.at).count() > maxAge) return false;
    parts = found->second.parts;
    return true;
}

void Recent::keep(const std::string& path, std::uint32_t maxDepth, std::vector<protocol::Part> parts) {
    const std::lock_guard lock(mutex_);
    kept_[Key(path, maxDepth)] = {Clock::now(), std::move(parts)};
    if (kept_.size() <= kMaxPaths) return;
    kept_.erase(std::min_element(kept_.begin(), kept_.end(),
                                 [](const auto& a, const auto& b) { return a.second.at < b.second.at; }));
}

void Recent::forget() {
    const std::lock_guard lock(mutex_);
    kept_.clear();
}

}  // namespace quorvel::hostd
