#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace quorvel::agent {

/// The loop of the agent's one thread: descriptors, and timers on real time. Timers of USP itself run on board time and
/// belong to Agent::tick().
class EventLoop {
  public:
    using Clock = std::chrono::steady_clock;
    using TimerId = std::uint64_t;  ///< never 0

    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    ~EventLoop();

    /// Calls `ready` with poll()'s revents whenever one of `events` (POLLIN, POLLOUT) is true of the descriptor, or it
    /// has failed (POLLERR, POLLHUP). Replaces an earlier watch of the same descriptor.
    void watch(int descriptor, short events, std::function<void(short revents)> ready);

    /// Changes the events of a watched descriptor; none that is watched: does nothing.
    void change(int descriptor, short events);

    /// Ends the watch. Call it before the descriptor is closed.
    void forget(int descriptor);

    /// Calls `due` once, after `delay`. Returns what cancel() takes.
    [[nodiscard]] TimerId after(std::chrono::milliseconds delay, std::function<void()> due);

    /// Cancels a timer; one that has fired, or 0, is no mistake.
    void cancel(TimerId timer);

    /// Calls `task` from the loop, soon, after what is at hand. Callable by the loop's own thread only.
    void post(std::function<void()> task);

    /// Serves until stop().
    void run();

    /// Serves what is ready, waiting at most `patience` for it. Returns false when nothing was.
    bool once(std::chrono::milliseconds patience);

    /// Has run() return. Callable from other threads and from signal handlers.
    void stop();

  private:
    struct Watch {
        short events = 0;
        std::function<void(short)> ready;
        std::uint64_t birth = 0;  // tells a descriptor's number that was used again
    };
    struct Timer {
        Clock::time_point due;
        std::function<void()> action;
    };

    [[nodiscard]] bool fireTimers();
    [[nodiscard]] bool runPosted();
    [[nodiscard]] int waitFor(std::chrono::milliseconds patience) const;

    std::map<int, Watch> watches_;
    std::map<TimerId, Timer> timers_;
    std::vector<std::function<void()>> posted_;
    std::uint64_t lastId_ = 0;
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    bool ending_ = false;
};

}  // namespace quorvel::agent
