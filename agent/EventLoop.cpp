#include "agent/EventLoop.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace quorvel::agent {

EventLoop::EventLoop() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("no pipe for the event loop");
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
}

EventLoop::~EventLoop() {
    close(wakeRead_);
    close(wakeWrite_);
}

void EventLoop::watch(int descriptor, short events, std::function<void(short)> ready) {
    watches_[descriptor] = Watch{events, std::move(ready), ++lastId_};
}

void EventLoop::change(int descriptor, short events) {
    const auto found = watches_.find(descriptor);
    if (found != watches_.end()) found->second.events = events;
}

void EventLoop::forget(int descriptor) {
    watches_.erase(descriptor);
}

EventLoop::TimerId EventLoop::after(std::chrono::milliseconds delay, std::function<void()> due) {
    timers_[++lastId_] = Timer{Clock::now() + delay, std::move(due)};
    return lastId_;
}

void EventLoop::cancel(TimerId timer) {
    timers_.erase(timer);
}

void EventLoop::post(std::function<void()> task) {
    posted_.push_back(std::move(task));
}

void EventLoop::stop() {
    const char byte = 's';
    (void)!write(wakeWrite_, &byte, 1);  // a full pipe holds a byte already
}

int EventLoop::waitFor(std::chrono::milliseconds patience) const {
    if (!posted_.empty()) return 0;
    auto wait = std::chrono::duration_cast<std::chrono::nanoseconds>(patience);
    const auto now = Clock::now();
    for (const auto& [id, timer] : timers_)
        wait = std::min(wait, std::chrono::nanoseconds(timer.due - now));
    if (wait.count() <= 0) return 0;
    // Rounded up, so that a timer is due when poll() returns.
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count());
}

bool EventLoop::fireTimers() {
    const auto now = Clock::now();
    std::vector<std::pair<Clock::time_point, TimerId>> due;
    for (const auto& [id, timer] : timers_) {
        if (timer.due <= now) due.emplace_back(timer.due, id);
    }
    std::sort(due.begin(), due.end());
    for (const auto& [when, id] : due) {
        const auto found = timers_.find(id);
        if (found == timers_.end()) continue;  // an earlier one has cancelled it
        const auto action = std::move(found->second.action);
        timers_.erase(found);
        action();
    }
    return !due.empty();
}

bool EventLoop::runPosted() {
    std::vector<std::function<void()>> tasks;
    tasks.swap(posted_);
    for (const auto& task : tasks)
        task();
    return !tasks.empty();
}

bool EventLoop::once(std::chrono::milliseconds patience) {
    std::vector<pollfd> polled{{wakeRead_, POLLIN, 0}};
    std::vector<std::uint64_t> births{0};
    for (const auto& [descriptor, watch] : watches_) {
        polled.push_back({descriptor, watch.events, 0});
        births.push_back(watch.birth);
    }
    const int ready = poll(polled.data(), polled.size(), waitFor(patience));
    bool served = false;
    if (ready > 0 && polled[0].revents != 0) {
        char drained[16];
        while (read(wakeRead_, drained, sizeof drained) > 0) {
        }
        ending_ = true;
        served = true;
    }
    for (std::size_t i = 1; ready > 0 && i < polled.size(); ++i) {
        if (polled[i].revents == 0) continue;
        const auto found = watches_.find(polled[i].fd);
        if (found == watches_.end() || found->second.birth != births[i]) continue;
        // A copy: the callee may end or replace its own watch.
        const auto callee = found->second.ready;
        callee(polled[i].revents);
        served = true;
    }
    served = fireTimers() || served;
    return runPosted() || served;
}

void EventLoop::run() {
    constexpr std::chrono::milliseconds kLong{60000};
    ending_ = false;
    while (!ending_)
        (void)once(kLong);  // the loop goes on either way
}

}  // namespace quorvel::agent
