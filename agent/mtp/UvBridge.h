#pragma once

// Lets a library that wants a libuv loop live in the agent's own loop, in its thread.

#include <uv.h>

#include <memory>

#include "agent/EventLoop.h"

namespace quorvel::agent {

class UvBridge {
  public:
    /// `loop` outlives the bridge.
    explicit UvBridge(EventLoop& loop);
    UvBridge(const UvBridge&) = delete;
    UvBridge& operator=(const UvBridge&) = delete;
    ~UvBridge();

    [[nodiscard]] uv_loop_t* uv() {
        return &uv_;
    }

    /// Serves the inner loop soon. Call it after every call into the library that is not made from one of its own.
    void wake();

    /// Serves the inner loop once, at once.
    void serve();

  private:
    EventLoop& loop_;
    uv_loop_t uv_{};
    EventLoop::TimerId timer_ = 0;
    bool serving_ = false;
};

}  // namespace quorvel::agent
