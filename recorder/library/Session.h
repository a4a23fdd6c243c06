// One recording session: opens the library and the recording with the first call, and ends the recording at the end.
#pragma once

#include <atomic>
#include <cstdint>

namespace quorvel::recorder {

class Session {
  public:
    /// Tells whether calls can be passed on; the first call opens the library. The host goes on without a recording
    /// when there can be none.
    [[nodiscard]] bool isOpen() {
        const State state = state_.load(std::memory_order_acquire);
        return state == State::kOpen || (state == State::kNew && open());
    }
    /// Tells whether an open session records.
    [[nodiscard]] bool isRecording() const {
        return recording_;
    }

  private:
    enum class State : uint8_t { kNew, kOpen, kFailed };

    bool open();
    void openOnce();

    std::atomic<State> state_{State::kNew};
    bool recording_ = false;  // written before state_
};

[[gnu::visibility("hidden")]] extern Session session;

}  // namespace quorvel::recorder
