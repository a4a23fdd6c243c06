#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd {

/// The parts with which paths were answered lately, so that many clients that look at the same values cost the board
/// one reading. Callable from any thread.
class Recent {
  public:
    static constexpr std::size_t kMaxPaths = 64;

    using Clock = std::chrono::steady_clock;

    /// Returns the parts that answered `path` at most `maxAge` seconds ago, or nothing. Parts carry no position.
    [[nodiscard]] bool find(const std::string& path, std::uint32_t maxDepth, double maxAge,
                            std::vector<protocol::Part>& parts) const;

    /// Keeps the parts that answer `path` now. Drops the oldest path when there are too many.
    void keep(const std::string& path, std::uint32_t maxDepth, std::vector<protocol::Part> parts);

    /// Forgets everything: a value may have changed.
    void forget();

  private:
    struct Kept {
        Clock::time_point at;
        std::vector<protocol::Part> parts;
    };
    using Key = std::pair<std::string, std::uint32_t>;

    mutable std::mutex mutex_;
    std::map<Key, Kept> kept_;
};

}  // namespace quorvel::hostd
