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

constexpr int kListening = -2;  // id of the request for station events
constexpr std::chrono::seconds kPatience{5};
constexpr unsigned kInternal = 7003;

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

std::vector<Json> oneFault(const std::string& reason) {
    return {{{"path", ""}, {"code", kInternal}, {"reason", reason}}};
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

Stage::Stage(const launch::Options& options, const Scenario& scenario, std::uint64_t seed)
    : folder_(makeFolder()),
      options_(options),
      board_(scenario.description),
      seed_(seed),
      listens_(scenario.listens()) {
    if (board_.is_null()) {
        if (!scenario.board.empty()) options_.board = scenario.board;
        board::Options asked;
        asked.board = options_.board;
        asked.programFolder = launch::programFolder(options_);
        const std::string file = board::findBoard(asked);
        board_ = common::parseShallow(contents(file));
        if (board_.is_discarded())
            throw launch::GatewayError("the board description " + file + " is no JSON, or nests too deeply");
    }
    options_.board = folder_ / "board.json";
    options_.state = folder_ / "state";
    options_.realTime = false;
    if (!scenario.state.is_null()) prepareState(scenario.state);
}

Stage::~Stage() {
    gateway_.reset();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Stage::open() {
    std::ofstream(options_.board) << board_.dump(2);
    const Variable clock("QUORVEL_CLOCK", "virtual");
    const Variable seed("QUORVEL_SEED", std::to_string(seed_));
    gateway_ = launch::Gateway::open(options_);
    manager_ = Manager::kRunning;
    lastEntry_ = 0;
    owedEvents_ = seenEvents_ = 0;
    started_ = now_;
}

// An earlier life of the board, in which somebody has configured it.
void Stage::prepareState(const Json& values) {
    open();
    Json settings = Json::array();
    for (const auto& item : values.items()) {
        const Json& value = item.value();
        settings.push_back({{"path", item.key()}, {"value", textOf(value)}});
    }
    const std::vector<Json> faults = ask({{"do", "set"}, {"settings", settings}, {"save", true}});
    if (!faults.empty()) {
        throw launch::GatewayError("the state that the scenario begins with is refused: " +
                                   faults.front().value("path", "") + ": " + faults.front().value("reason", ""));
    }
    gateway_->cutPower();
    gateway_.reset();
}

void Stage::powerOn() {
    open();
    takeLog();
    if (!gateway_->bootTrouble().empty()) note("start", gateway_->bootTrouble());
    if (listens_) listen();
}

void Stage::cutPower() {
    if (gateway_ == nullptr) return;
    gateway_->cutPower();
    gateway_.reset();
    manager_ = Manager::kGone;
    listening_ = false;
}

void Stage::listen() {
    launch::Client& client = gateway_->client();
    client.other = [this](const Json& part) { takeEvent(part); };
    client.send({{"id", kListening}, {"do", "events"}});
    // The plug-in connects in a thread of its own; whatever happens before it has is not told.
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    Json state;
    do {
        (void)poll(nullptr, 0, 1);
        if (!control({{"op", "state"}}, &state).empty()) break;
    } while (state.value("listeners", 0) == 0 && std::chrono::steady_clock::now() < deadline);
    listening_ = state.is_object() && state.value("listeners", 0) > 0;
}

void Stage::takeEvent(const Json& part) {
    if (part.value("id", 0) != kListening || !part.contains("event")) return;
    const Json& event = part.at("event");
    ++seenEvents_;
    events_.push_back(
        {now_, event.value("kind", ""), lower(event.value("station", "")), event.value("accessPoint", 0U)});
}

std::vector<Json> Stage::ask(const Json& request, const launch::Client::OnPart& onPart) {
    if (gateway_ == nullptr) return oneFault("the board is off");
    std::vector<Json> faults;
    gateway_->client().ask(request, [&](const Json& part) {
        if (part.contains("faults")) {
            for (const Json& fault : part.at("faults"))
                faults.push_back(fault);
        }
        onPart(part);
    });
    return faults;
}

std::vector<Json> Stage::control(const Json& command, Json* answer) {
    Json got;
    std::vector<Json> faults = ask({{"do", "control"}, {"command", command}}, [&got](const Json& part) {
        if (part.contains("control")) got = part.at("control");
    });
    if (faults.empty() && !got.value("ok", false)) faults = oneFault(got.value("error", "the simulation refuses it"));
    if (faults.empty() && answer != nullptr) *answer = got;
    return faults;
}

std::vector<Json> Stage::steerManager(const std::string& what) {
    if (what == "daemon.kill" || what == "daemon.restart") takeLog();
    std::vector<Json> faults = control({{"op", what}});
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

std::vector<Json> Stage::setToolFault(const std::string& tool, const std::string& how) {
    board_["faults"][tool] = how;
    if (tool != "wl" || gateway_ == nullptr) return {};
    return control({{"op", "fault"}, {"fault", "wl"}, {"how", how}});
}

void Stage::advanceTo(Time time) {
    if (manager_ == Manager::kRunning) {
        Json answer;
        // What the manager's clock lacks, which may be more than what `now_` does.
        if (control({{"op", "time"}}, &answer).empty()) {
            const Time there = std::llround(answer.value("time", 0.0) * 1000);
            const Time left = time - started_ - there;
            // The manager cuts fractions of a millisecond off.
            if (left > 0) (void)control({{"op", "time"}, {"advance", (static_cast<double>(left) + 0.25) / 1000}});
        }
    }
    now_ = std::max(now_, time);
    catchUp();
}

void Stage::catchUp() {
    if (manager_ != Manager::kRunning) return;
    Json answer;
    if (!control({{"op", "time"}}, &answer).empty()) return;
    now_ = std::max(now_, started_ + static_cast<Time>(std::llround(answer.value("time", 0.0) * 1000)));
    takeLog();
    if (listening_) awaitEvents();
}

void Stage::takeLog() {
    for (;;) {
        Json answer;
        if (manager_ != Manager::kRunning || !control({{"op", "events"}, {"since", lastEntry_}}, &answer).empty())
            return;
        const Json& entries = answer.at("events");
        if (entries.empty()) return;
        for (const Json& entry : entries) {
            const std::string kind = entry.value("kind", "");
            if (listening_ && (kind == "join" || kind == "leave")) ++owedEvents_;
            log_.push_back({started_ + static_cast<Time>(std::llround(entry.value("time", 0.0) * 1000)), kind,
                            entry.value("text", "")});
        }
        lastEntry_ = answer.value("last", lastEntry_);
    }
}

// Each coming and going is told once. The plug-in may lose some of a burst, so the wait has an end.
void Stage::awaitEvents() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (std::string line; seenEvents_ < owedEvents_ && std::chrono::steady_clock::now() < deadline;) {
        if (!gateway_->client().line(line, 100)) continue;
        const Json part = Json::parse(line, nullptr, false);
        if (part.is_object()) takeEvent(part);
    }
    owedEvents_ = seenEvents_;
}

void Stage::note(const std::string& kind, const std::string& text) {
    log_.push_back({now_, kind, text});
}

}  // namespace quorvel::scenario
