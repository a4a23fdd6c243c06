#include "scenario/Player.h"

#include <algorithm>

#include "scenario/Actions.h"
#include "scenario/Judge.h"
#include "scenario/Sampler.h"

namespace quorvel::scenario {
namespace {

constexpr Time kLook = 1000;      // how often an expectation is looked at
constexpr Time kLateness = 1000;  // that real time causes and nobody minds
constexpr Time kStride = 10000;   // how far time goes at once; station events wait in a queue of limited length

class Play {
  public:
    Play(const Scenario& scenario, Stage& stage, const std::function<void(const Entry&)>& onEntry, bool record)
        : scenario_(scenario), stage_(stage), onEntry_(onEntry), open_(scenario.expectations.size(), true) {
        if (record) sampler_.emplace(scenario);
    }

    Result run(const std::function<bool(Time)>& stop) {
        stage_.note("play", "power.on");
        stage_.powerOn();
        add({0, Entry::Kind::kStep, "power.on", ""});
        for (;;) {
            doSteps();
            lookAround();
            if (sampler_) sampler_->sample(stage_);
            const Time now = stage_.now();
            if (now >= scenario_.end && next_ == scenario_.timeline.size()) break;
            if (stop(now)) throw launch::GatewayError("the scenario was interrupted at " + seconds(now) + " s");
            stage_.advanceTo(nextPlace(now));
        }
        result_.end = stage_.now();
        result_.log = stage_.log();
        if (sampler_) result_.recording = sampler_->take();
        return std::move(result_);
    }

  private:
    void doSteps() {
        while (next_ < scenario_.timeline.size() && scenario_.timeline[next_].at <= stage_.now()) {
            const Step& step = scenario_.timeline[next_++];
            stage_.note("play", describe(step));
            Entry entry{stage_.now(), Entry::Kind::kStep, describe(step), ""};
            const std::vector<Fault> faults = perform(step, stage_);
            stage_.catchUp();
            for (const Fault& fault : faults) {
                entry.seen += (entry.seen.empty() ? "fault " : "; fault ") + std::to_string(codeOf(fault)) + " " +
                              (fault.path.empty() ? "" : fault.path + ": ") + fault.reason;
            }
            if (!faults.empty() && !faultsAreExpected(step)) entry.kind = Entry::Kind::kStepFailed;
            if (!step.id.empty()) faults_[step.id] = faults;
            add(entry);
        }
    }

    [[nodiscard]] bool faultsAreExpected(const Step& step) const {
        return !step.id.empty() && std::any_of(scenario_.expectations.begin(), scenario_.expectations.end(),
                                               [&step](const Expectation& one) {
                                                   return one.kind == Expectation::Kind::kFault &&
                                                          one.subject == step.id;
                                               });
    }

    void lookAround() {
        for (std::size_t i = 0; i < open_.size(); ++i) {
            if (open_[i]) decide(i);
        }
    }

    void decide(std::size_t index) {
        const Expectation& expectation = scenario_.expectations[index];
        const Time now = stage_.now();
        if (now < expectation.after) return;
        const bool fault = expectation.kind == Expectation::Kind::kFault;
        const Time lateness = stage_.isShared() ? kLateness : 0;
        if (now > expectation.by + lateness && !expectation.counts() && !fault)
            return close(index, {false, true, "nobody could look in time: the step before took until now"});
        const Verdict verdict = look(expectation, stage_, faults_);
        // An expectation with an upper count is watched to its end.
        const bool early = verdict.holds && !expectation.atMost;
        if (early || verdict.final || (now >= expectation.by && !fault)) close(index, verdict);
    }

    void close(std::size_t index, const Verdict& verdict) {
        open_[index] = false;
        add({stage_.now(), verdict.holds ? Entry::Kind::kHeld : Entry::Kind::kFailed,
             describe(scenario_.expectations[index]), verdict.seen, index});
    }

    void add(const Entry& entry) {
        result_.entries.push_back(entry);
        onEntry_(entry);
    }

    // Where something is to be done or looked at next.
    [[nodiscard]] Time nextPlace(Time now) const {
        Time next = std::min(now + kStride, std::max(scenario_.end, now));
        if (next_ < scenario_.timeline.size()) next = std::min(next, scenario_.timeline[next_].at);
        // What a record asks for, the agent does to the board as it is then.
        if (const auto due = stage_.nextDue(); due && *due > now) next = std::min(next, *due);
        for (std::size_t i = 0; i < open_.size(); ++i) {
            const Expectation& expectation = scenario_.expectations[i];
            if (!open_[i]) continue;
            if (now < expectation.after) {
                next = std::min(next, expectation.after);
                continue;
            }
            next = std::min(next, expectation.by);
            // That nothing comes is certain at the end only.
            const bool never = expectation.isOfController() && expectation.atMost == 0U;
            if (!never) next = std::min(next, (now / kLook + 1) * kLook);
        }
        return std::max(next, now);
    }

    const Scenario& scenario_;
    Stage& stage_;
    const std::function<void(const Entry&)>& onEntry_;
    std::vector<bool> open_;
    std::size_t next_ = 0;
    StepFaults faults_;
    std::optional<Sampler> sampler_;
    Result result_;
};

}  // namespace

Result play(const Scenario& scenario, const launch::Options& options, std::uint64_t seed,
            const std::function<void(const Entry&)>& onEntry, const std::function<bool(Time now)>& stop, Venue venue,
            bool record) {
    Stage stage(options, scenario, seed, venue);
    Result result = Play(scenario, stage, onEntry, record).run(stop);
    result.notice = stage.notice();
    return result;
}

}  // namespace quorvel::scenario
