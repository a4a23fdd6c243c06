#include "scenario/Stage.h"

#include <poll.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "common/JsonDepth.h"
#include "gateway/board/Board.h"

namespace quorvel::scenario {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{5};
constexpr Time kLongestWait = 1000;

// The board's processes inherit the environment.
class Variable {
  public:
    Variable(const char* name, const std::string& value) : name_(name) {
        if (const char* const before = std::getenv(name)) before_ = before;
        (void)setenv(name, value.c_str(), 1);  // fails for impossible names only
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        if (before_)
            (void)setenv(name_, before_->c_str(), 1);
        else
            (void)unsetenv(name_);
    }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

std::vector<Fault> oneFault(const std::string& reason) {
    return {{hostd::protocol::FaultCode::kInternal, "", reason, "", 0, ""}};
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

fs::path makeFolder() {
    std::string name = (fs::temp_directory_path() / "quorvel-play-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw launch::GatewayError("cannot create a folder for the scenario in " + fs::temp_directory_path().string());
    return name;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

Stage::Stage(const launch::Options& options, const Scenario& scenario, std::uint64_t seed, Venue venue)
    : venue_(venue), options_(options), board_(scenario.description), seed_(seed), listens_(scenario.listens()) {
    if (isShared()) {
        prepared_ = scenario.state;
        return;
    }
    folder_ = makeFolder();
    if (board_.is_null()) {
        if (!scenario.board.empty()) options_.board = scenario.board;
        board::Options asked;
        asked.board = options_.board;
        asked.programFolder = launch::programFolder(options_);
        const std::string file = board::findBoard(asked);
        board_ = common::parseShallow(contents(file));
        if (board_.is_discarded())
            throw launch::GatewayError("the board description " + file +
                                       " is not JSON, or nests too deeply; correct the file");
    }
    options_.board = folder_ / "board.json";
    options_.state = folder_ / "state";
    options_.realTime = false;
    if (scenario.usesUsp()) {
        usp_.emplace(seed);
        options_.takesClients = true;
    }
    if (!scenario.state.is_null()) prepareState(scenario.state);
}

Stage::~Stage() {
    gateway_.reset();
    if (isShared()) return;
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Stage::open() {
    std::ofstream(options_.board) << board_.dump(2);
    const Variable clock("QUORVEL_CLOCK", "virtual");
    const Variable seed("QUORVEL_SEED", std::to_string(seed_));
    gateway_ = launch::Gateway::open(options_);
    if (!gateway_->notice().empty()) {
        notice_ = gateway_->notice();
        options_.sandbox = "folder";  // the next life need not find out
    }
    manager_ = Manager::kRunning;
    lastEntry_ = 0;
    owedEvents_ = seenEvents_ = 0;
    started_ = now_;
    subscribed_ = false;
}

// An earlier life of the board, in which somebody has configured it.
void Stage::prepareState(const Json& values) {
    open();
    setState(values, true);
    gateway_->cutPower();
    gateway_.reset();
}

void Stage::setState(const Json& values, bool save) {
    hostd::protocol::Set request;
    for (const auto& item : values.items())
        request.settings.push_back({item.key(), textOf(item.value())});
    request.save = save;
    const std::vector<Fault> faults = ask(request);
    if (faults.empty()) return;
    throw launch::GatewayError("the state that the scenario begins with is refused: " + faults.front().path + ": " +
                               faults.front().reason);
}

// A board that has been up for a while: what happened before the scenario is none of its business.
void Stage::attach() {
    gateway_ = launch::Gateway::findRunning(options_);
    if (gateway_ == nullptr) throw launch::GatewayError("the board in " + options_.state + " is not up");
    manager_ = Manager::kRunning;
    if (!prepared_.is_null()) setState(prepared_, false);
    const std::optional<Time> there = managerTime();
    if (!there) throw launch::GatewayError("the WLAN manager of the board in " + options_.state + " does not answer");
    started_ = -*there;
    takeLog();
    log_.clear();
    owedEvents_ = 0;
    if (listens_) listen();
}

void Stage::powerOn() {
    if (isShared()) return attach();
    open();
    takeLog();
    if (!gateway_->bootTrouble().empty()) note("start", gateway_->bootTrouble());
    if (listens_) listen();
    if (!usp_) return;
    usp_->start(options_, now_);
    catchUp();
}

void Stage::cutPower() {
    if (gateway_ == nullptr) return;
    if (usp_) usp_->end();
    gateway_->cutPower();
    gateway_.reset();
    manager_ = Manager::kGone;
    listening_ = false;
}

void Stage::listen() {
    if (!subscribed_) {
        subscribed_ = true;
        (void)gateway_->client().send(hostd::protocol::Subscribe{{hostd::protocol::Topic::kStations}, 0},
                                      [this](const hostd::protocol::Part& part) {
                                          if (part.event) takeEvent(*part.event);
                                      });
    }
    // The plug-in connects in a thread of its own; events before that are not reported.
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    std::optional<hostd::protocol::SimulationState> state;
    do {
        (void)poll(nullptr, 0, 1);
        Json answer;
        if (!control({{"op", "state"}}, &answer).empty()) break;
        state = hostd::protocol::readSimulationState(answer);
    } while (state && state->listeners == 0 && std::chrono::steady_clock::now() < deadline);
    listening_ = state && state->listeners > 0;
}

void Stage::takeEvent(const hostd::protocol::StationEvent& event) {
    ++seenEvents_;
    events_.push_back({now_, std::string(nameOf(event.kind)), lower(event.station), event.accessPoint});
}

std::vector<Fault> Stage::ask(const hostd::protocol::Request& request, const hostd::Client::OnPart& onPart) {
    if (gateway_ == nullptr) return oneFault("the board is off");
    return gateway_->client().ask(request, onPart);
}

std::vector<Fault> Stage::control(const Json& command, Json* answer) {
    Json got;
    std::vector<Fault> faults = ask(hostd::protocol::Control{command}, [&got](const hostd::protocol::Part& part) {
        if (part.control) got = *part.control;
    });
    const hostd::protocol::Outcome outcome = hostd::protocol::readOutcome(got);
    if (faults.empty() && !outcome.ok)
        faults = oneFault(outcome.error.empty() ? "the simulation refuses it" : outcome.error);
    if (faults.empty() && answer != nullptr) *answer = got;
    return faults;
}

std::vector<Fault> Stage::steerManager(const std::string& what) {
    if (what == "daemon.kill" || what == "daemon.restart") takeLog();
    std::vector<Fault> faults = control({{"op", what}});
    if (!faults.empty()) return faults;
    if (what == "daemon.kill") {
        manager_ = Manager::kGone;
        listening_ = false;
    } else if (what == "daemon.stop") {
        manager_ = Manager::kStopped;
    } else if (what == "daemon.continue") {
        manager_ = Manager::kRunning;
        advanceTo(now_);
    } else {
        // A new manager begins at 0, with what was saved.
        manager_ = Manager::kRunning;
        started_ = now_;
        lastEntry_ = 0;
        takeLog();
        owedEvents_ = seenEvents_;
        if (listens_) listen();
    }
    return faults;
}

std::vector<Fault> Stage::setToolFault(const std::string& tool, const std::string& how) {
    board_["faults"][tool] = how;
    if (tool != "wl" || gateway_ == nullptr) return {};
    return control({{"op", "fault"}, {"fault", "wl"}, {"how", how}});
}

// Returns the time on the manager's clock, or nothing.
std::optional<Time> Stage::managerTime() {
    Json answer;
    if (!control({{"op", "time"}}, &answer).empty()) return std::nullopt;
    const auto read = hostd::protocol::readSimulationAnswer(answer);
    return static_cast<Time>(std::llround((read ? read->time.value_or(0) : 0) * 1000));
}

// Events that arrive meanwhile go to takeEvent().
void Stage::awaitTime(Time time) {
    for (;;) {
        const std::optional<Time> there = managerTime();
        const Time left = there ? time - started_ - *there : 0;
        if (left <= 0) return;
        (void)gateway_->client().wait(static_cast<int>(std::min<Time>(left, kLongestWait)));
    }
}

void Stage::advanceTo(Time time) {
    if (isShared() && manager_ == Manager::kRunning) {
        awaitTime(time);
    } else if (manager_ == Manager::kRunning) {
        // The manager's clock may lack more than `now_` does.
        if (const std::optional<Time> there = managerTime()) {
            const Time left = time - started_ - *there;
            // The manager cuts fractions of a millisecond off.
            if (left > 0) (void)control({{"op", "time"}, {"advance", (static_cast<double>(left) + 0.25) / 1000}});
        }
    }
    now_ = std::max(now_, time);
    catchUp();
}

void Stage::catchUp() {
    bool more = true;
    while (more && manager_ == Manager::kRunning) {
        const std::optional<Time> there = managerTime();
        if (!there) return;
        now_ = std::max(now_, started_ + *there);
        takeLog();
        if (listening_) awaitEvents();
        // The controller's requests may have changed something, and taken time.
        more = takeArrivals();
    }
}

bool Stage::takeArrivals() {
    if (!usp_) return false;
    const std::vector<UspArrival> arrivals = usp_->follow(now_);
    for (const UspArrival& arrival : arrivals) {
        // Noticed now, but each at its own time.
        const auto place = std::upper_bound(log_.begin(), log_.end(), arrival.time,
                                            [](Time time, const LogLine& line) { return time < line.time; });
        log_.insert(place, {arrival.time, kControllerLog, arrival.text});
        arrivals_.push_back(arrival);
    }
    return !arrivals.empty();
}

std::vector<Fault> Stage::performUsp(const Step& step) {
    if (!usp_) return oneFault("no USP agent takes part");
    const std::string trouble = usp_->perform(step);
    return trouble.empty() ? std::vector<Fault>{} : oneFault(trouble);
}

void Stage::takeLog() {
    for (;;) {
        Json answer;
        if (manager_ != Manager::kRunning || !control({{"op", "events"}, {"since", lastEntry_}}, &answer).empty())
            return;
        const auto read = hostd::protocol::readSimulationAnswer(answer);
        if (!read || read->events.empty()) return;
        for (const hostd::protocol::SimulationEvent& entry : read->events) {
            if (listening_ && (entry.kind == "join" || entry.kind == "leave")) ++owedEvents_;
            log_.push_back({started_ + static_cast<Time>(std::llround(entry.time * 1000)), entry.kind, entry.text});
        }
        lastEntry_ = read->last.value_or(lastEntry_);
    }
}

// Each coming and going is reported once. The plug-in may lose some of a burst, so the wait has an end.
void Stage::awaitEvents() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (seenEvents_ < owedEvents_ && std::chrono::steady_clock::now() < deadline)
        (void)gateway_->client().wait(100);  // what comes goes to takeEvent()
    owedEvents_ = seenEvents_;
}

void Stage::note(const std::string& kind, const std::string& text) {
    log_.push_back({now_, kind, text});
}

}  // namespace quorvel::scenario
