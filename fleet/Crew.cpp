#include "fleet/Crew.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <thread>

#include "common/Descriptor.h"

namespace quorvel::fleet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCrewLookMilliseconds = 100;
constexpr std::size_t kLongestResult = 128 * 1024;  // one datagram

struct Hand {
    common::Descriptor socket;
    pid_t process = -1;
    unsigned number = 0;
    bool busy = false;
};

std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json doOne(const CrewOrder& order, unsigned number) {
    try {
        return order.work(number);
    } catch (const std::exception& error) {
        return {{"error", error.what()}};
    }
}

// In a process of the crew: never returns.
[[noreturn]] void serve(const CrewOrder& order, int socket) {
    (void)setpgid(0, 0);  // an interrupt from the terminal is for the caller, which begins nothing more then
    unsigned number = 0;
    while (recv(socket, &number, sizeof number, 0) == sizeof number) {
        std::string text = textOf(doOne(order, number));
        if (text.size() > kLongestResult) text = textOf({{"error", "the result is too long"}});
        if (send(socket, text.data(), text.size(), MSG_NOSIGNAL) < 0) break;
    }
    (void)std::cout.flush();
    _exit(0);
}

class Crew {
  public:
    explicit Crew(const CrewOrder& order) : order_(order) {
        const std::size_t count = std::min<std::size_t>(std::max(order.hands, 1U), order.numbers.size());
        for (std::size_t i = 0; i < count; ++i)
            hire();
    }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew() {
        for (Hand& hand : hands_)
            hand.socket.reset();
        for (const Hand& hand : hands_)
            (void)waitpid(hand.process, nullptr, 0);
    }

    void run() {
        begun_ = Clock::now();
        for (;;) {
            stopped_ = stopped_ || (order_.stop && order_.stop());
            handOut();
            if (!anyBusy() && (stopped_ || next_ == order_.numbers.size() || hands_.empty())) break;
            collect();
        }
        // Without hands nothing more can be done.
        for (; !stopped_ && next_ < order_.numbers.size(); ++next_)
            order_.done(order_.numbers[next_], {{"error", "the processes that start gateways have ended"}});
    }

  private:
    void hire() {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
            throw FleetError(std::string("cannot make a socket: ") + std::strerror(errno));
        Hand hand;
        hand.socket = common::Descriptor(ends[0]);
        common::Descriptor theirs(ends[1]);
        (void)std::cout.flush();
        hand.process = fork();
        if (hand.process < 0) throw FleetError(std::string("cannot start a process: ") + std::strerror(errno));
        if (hand.process == 0) {
            hand.socket.reset();
            for (Hand& other : hands_)
                other.socket.reset();
            serve(order_, theirs.get());
        }
        hands_.push_back(std::move(hand));
    }

    // How many may have begun by now.
    [[nodiscard]] std::size_t due() const {
        if (order_.perSecond <= 0) return order_.numbers.size();
        const std::chrono::duration<double> passed = Clock::now() - begun_;
        return 1 + static_cast<std::size_t>(passed.count() * order_.perSecond);
    }

    void handOut() {
        for (Hand& hand : hands_) {
            if (stopped_ || next_ == order_.numbers.size() || next_ >= due()) return;
            if (hand.busy) continue;
            hand.number = order_.numbers[next_++];
            hand.busy = send(hand.socket.get(), &hand.number, sizeof hand.number, MSG_NOSIGNAL) > 0;
            if (!hand.busy) --next_;  // it has died, which collect() notices
        }
    }

    [[nodiscard]] bool anyBusy() const {
        return std::any_of(hands_.begin(), hands_.end(), [](const Hand& hand) { return hand.busy; });
    }

    void collect() {
        std::vector<pollfd> entries;
        entries.reserve(hands_.size());
        for (const Hand& hand : hands_)
            entries.push_back({hand.socket.get(), POLLIN, 0});
        int wait = kCrewLookMilliseconds;
        if (order_.perSecond > 10) wait = std::max(1, static_cast<int>(1000 / order_.perSecond));
        if (poll(entries.data(), entries.size(), wait) <= 0) return;
        for (std::size_t i = entries.size(); i-- > 0;) {
            if (entries[i].revents != 0) take(i);
        }
    }

    void take(std::size_t index) {
        Hand& hand = hands_[index];
        std::string text(kLongestResult, '\0');
        const ssize_t count = recv(hand.socket.get(), text.data(), text.size(), 0);
        if (count > 0) {
            hand.busy = false;
            const Json result = Json::parse(text.substr(0, static_cast<std::size_t>(count)), nullptr, false);
            order_.done(hand.number, result);
            return;
        }
        const bool lost = hand.busy;
        const unsigned number = hand.number;
        hand.socket.reset();
        int status = 0;
        (void)waitpid(hand.process, &status, 0);
        hands_.erase(hands_.begin() + static_cast<std::ptrdiff_t>(index));
        if (!lost) return;
        order_.done(
            number,
            {{"error", "the process that worked on it ended unexpectedly" +
                           (WIFSIGNALED(status) ? " by signal " + std::to_string(WTERMSIG(status)) : std::string())}});
    }

    const CrewOrder& order_;
    std::vector<Hand> hands_;
    std::size_t next_ = 0;
    bool stopped_ = false;
    Clock::time_point begun_;
};

}  // namespace

unsigned usualHands() {
    return std::max(4U, 2 * std::thread::hardware_concurrency());
}

void runCrew(const CrewOrder& order) {
    if (order.numbers.empty()) return;
    Crew(order).run();
}

}  // namespace quorvel::fleet
