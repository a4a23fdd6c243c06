#include "agent/mtp/UvBridge.h"

#include <poll.h>

#include <chrono>
#include <stdexcept>

namespace quorvel::agent {
namespace {

constexpr int kMostRounds = 100;

}  // namespace

UvBridge::UvBridge(EventLoop& loop) : loop_(loop) {
    if (uv_loop_init(&uv_) != 0) throw std::runtime_error("cannot make the event loop of the WebSocket library");
    loop_.watch(uv_backend_fd(&uv_), POLLIN, [this](short) { serve(); });
}

UvBridge::~UvBridge() {
    loop_.cancel(timer_);
    loop_.forget(uv_backend_fd(&uv_));
    // Handles that were closed go in the next rounds. Those that the library left open stay until the process ends.
    for (int round = 0; round < kMostRounds && uv_loop_close(&uv_) == UV_EBUSY; ++round)
        (void)uv_run(&uv_, UV_RUN_NOWAIT);
}

void UvBridge::wake() {
    if (serving_) return;  // serve() looks at the timers afterwards
    loop_.cancel(timer_);
    timer_ = loop_.after(std::chrono::milliseconds(0), [this] { serve(); });
}

void UvBridge::serve() {
    serving_ = true;
    (void)uv_run(&uv_, UV_RUN_NOWAIT);  // its result tells only whether handles are left
    serving_ = false;
    loop_.cancel(timer_);
    const int wait = uv_backend_timeout(&uv_);
    if (wait >= 0) timer_ = loop_.after(std::chrono::milliseconds(wait), [this] { serve(); });
}

}  // namespace quorvel::agent
