#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quorvel::hostd {

/// Listens in on the log of the plug-in and of the host framework. Lines go on to standard error as before.
class LogTap {
  public:
    /// Takes one whole line without its newline. Must not log; calls are never concurrent.
    using Follower = std::function<void(std::uint32_t level, std::string_view line)>;

    /// Begins to listen. Harmless when done twice.
    static void install();

    /// Returns the texts of all errors (level 0) that the calling thread has logged since forgetErrors(), in their
    /// order and joined by "; ", repeated ones once.
    [[nodiscard]] static std::string errors();
    static void forgetErrors();

    /// Lines up to `level` go to standard error. Until it is called, errors do.
    static void setOutputLevel(std::uint32_t level);

    /// Hands lines up to `level` to `follower` from now on, whatever goes to standard error. An empty one ends it.
    static void follow(std::uint32_t level, Follower follower);

    /// While one lives, lines are dropped.
    class Silence {
      public:
        Silence();
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;
        ~Silence();
    };
};

}  // namespace quorvel::hostd
