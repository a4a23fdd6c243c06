#include "fleet/Churn.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <random>

#include "fleet/Limits.h"
#include "gateway/hostd/protocol/Simulation.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::fleet {
namespace {

using Clock = std::chrono::steady_clock;
namespace protocol = hostd::protocol;

constexpr unsigned kMostPassers = 0xffff;
constexpr int kLongestWait = 100;              // milliseconds
constexpr std::chrono::seconds kPatience{10};  // for the last answers

// One gateway as this program sees it.
struct Member {
    unsigned number = 0;
    std::unique_ptr<launch::Gateway> gateway;
    unsigned open = 0;  ///< requests without an answer
    unsigned passers = 0;
    std::deque<std::string> present;  ///< in the order of their coming
    std::vector<unsigned> accessPoints;
    std::size_t nextAccessPoint = 0;
};

// When the next event of a kind is due.
class Schedule {
  public:
    explicit Schedule(double perSecond) : perSecond_(perSecond) {}

    [[nodiscard]] bool isDue(double now) const {
        return perSecond_ > 0 && next() <= now;
    }
    [[nodiscard]] double next() const {
        return perSecond_ > 0 ? static_cast<double>(done_) / perSecond_ : 1e9;
    }
    void advance() {
        ++done_;
    }

  private:
    double perSecond_;
    std::uint64_t done_ = 0;
};

class Churning {
  public:
    Churning(const launch::Options& options, const ChurnOrder& order)
        : options_(options),
          order_(order),
          folder_(options),
          plan_(folder_.read()),
          random_(order.seed),
          joins_(order.joins),
          leaves_(order.leaves),
          reboots_(order.reboots) {
        for (unsigned number = plan_.first; number <= plan_.last(); ++number) {
            members_.emplace_back();
            members_.back().number = number;
        }
        allowDescriptors(members_.size());
    }

    ChurnResult run() {
        const auto begun = Clock::now();
        const auto passed = [&begun] { return std::chrono::duration<double>(Clock::now() - begun).count(); };
        while (passed() < order_.seconds && !order_.stop()) {
            const double now = passed();
            for (; joins_.isDue(now); joins_.advance())
                join();
            for (; leaves_.isDue(now); leaves_.advance())
                leave();
            for (; reboots_.isDue(now); reboots_.advance())
                reboot();
            if (order_.progress) order_.progress(now);
            const double next = std::min({joins_.next(), leaves_.next(), reboots_.next(), order_.seconds});
            await(static_cast<int>(std::clamp((next - passed()) * 1000, 0.0, double{kLongestWait})));
        }
        const auto until = Clock::now() + kPatience;
        while (anyOpen() && Clock::now() < until && !order_.stop())
            await(kLongestWait);
        result_.seconds = passed();
        for (const Member& member : members_) {
            result_.lost += member.open;
            result_.stations += member.present.size();
        }
        return result_;
    }

  private:
    Member& anyMember() {
        return members_[std::uniform_int_distribution<std::size_t>(0, members_.size() - 1)(random_)];
    }

    // Connects if need be. Returns whether the gateway is there; counts the event as lost when it is not.
    bool reach(Member& member) {
        try {
            if (member.gateway == nullptr) {
                member.gateway = launch::Gateway::findRunning(optionsFor(options_, folder_, member.number));
                if (member.gateway != nullptr) learnAccessPoints(member);
            }
        } catch (const launch::GatewayError&) {
            member.gateway.reset();
        }
        if (member.gateway == nullptr) ++result_.lost;
        return member.gateway != nullptr;
    }

    void learnAccessPoints(Member& member) {
        protocol::Json answer;
        (void)member.gateway->client().ask(protocol::Control{{{"op", "state"}}}, [&answer](const launch::Part& part) {
            if (part.control) answer = *part.control;
        });
        const auto state = protocol::readSimulationState(answer);
        if (!state) return;
        member.accessPoints.clear();
        for (const protocol::RadioState& radio : state->radios) {
            for (const protocol::BssState& bss : radio.bss) {
                if (bss.status == "Up") member.accessPoints.push_back(bss.accessPoint);
            }
        }
    }

    void lose(Member& member) {
        result_.lost += member.open;
        member.open = 0;
        member.gateway.reset();
        member.present.clear();
    }

    void send(Member& member, const protocol::Request& request, std::uint64_t& count) {
        try {
            ++member.open;
            (void)member.gateway->client().send(request, [this, &member, &count](const launch::Part& part) {
                if (!part.faults.empty() || (part.control && !protocol::readOutcome(*part.control).ok)) {
                    ++result_.refused;
                } else if (part.control) {
                    ++count;
                }
                if (part.done && member.open != 0) --member.open;
            });
        } catch (const launch::GatewayError&) {
            lose(member);
        }
    }

    void join() {
        Member& member = anyMember();
        if (!reach(member)) return;
        if (member.accessPoints.empty()) {
            ++result_.refused;
            return;
        }
        const Identity identity(plan_.seed, member.number);
        const std::string mac = common::formatMac(identity.passer(member.passers++ & kMostPassers));
        const unsigned accessPoint = member.accessPoints[member.nextAccessPoint++ % member.accessPoints.size()];
        send(member, protocol::Control{{{"op", "station.join"}, {"mac", mac}, {"bss", accessPoint}}}, result_.joins);
        if (member.gateway != nullptr) member.present.push_back(mac);
    }

    void leave() {
        const std::size_t start = std::uniform_int_distribution<std::size_t>(0, members_.size() - 1)(random_);
        for (std::size_t i = 0; i < members_.size(); ++i) {
            Member& member = members_[(start + i) % members_.size()];
            if (member.present.empty() || !reach(member)) continue;
            const std::string mac = member.present.front();
            member.present.pop_front();
            send(member, protocol::Control{{{"op", "station.leave"}, {"mac", mac}}}, result_.leaves);
            return;
        }
        ++result_.skipped;
    }

    void reboot() {
        Member& member = anyMember();
        if (!reach(member)) return;
        try {
            (void)member.gateway->client().send(protocol::CyclePower{"LocalReboot", false}, [](const launch::Part&) {});
            ++result_.reboots;
        } catch (const launch::GatewayError&) {
            ++result_.lost;
        }
        // The connection ends with this life of the board; passing stations do not come back.
        ending_.push_back(std::move(member.gateway));
        result_.lost += member.open;
        member.open = 0;
        member.present.clear();
    }

    [[nodiscard]] bool anyOpen() const {
        return std::any_of(members_.begin(), members_.end(), [](const Member& member) { return member.open != 0; });
    }

    void await(int milliseconds) {
        std::vector<pollfd> entries;
        std::vector<Member*> whose;
        for (Member& member : members_) {
            if (member.gateway == nullptr) continue;
            const launch::Client& client = member.gateway->client();
            const bool writes = client.wantsToWrite();
            entries.push_back({client.descriptor(), static_cast<short>(writes ? POLLIN | POLLOUT : POLLIN), 0});
            whose.push_back(&member);
        }
        if (poll(entries.data(), entries.size(), milliseconds) <= 0) return;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].revents == 0) continue;
            try {
                whose[i]->gateway->client().process();
            } catch (const launch::GatewayError&) {
                lose(*whose[i]);
            }
        }
        // A board that goes down has closed its end by the next look.
        std::erase_if(ending_, [](const auto& gateway) { return gateway->client().awaitEnd(0); });
    }

    const launch::Options& options_;
    const ChurnOrder& order_;
    Folder folder_;
    Plan plan_;
    std::mt19937_64 random_;
    Schedule joins_;
    Schedule leaves_;
    Schedule reboots_;
    std::deque<Member> members_;
    std::vector<std::unique_ptr<launch::Gateway>> ending_;
    ChurnResult result_;
};

}  // namespace

ChurnResult churn(const launch::Options& options, const ChurnOrder& order) {
    return Churning(options, order).run();
}

}  // namespace quorvel::fleet
