#include "web/server/live/BoardFeed.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "gateway/hostd/client/BoardSocket.h"

namespace quorvel::web {
namespace {

using Json = nlohmann::ordered_json;
namespace protocol = hostd::protocol;

constexpr std::chrono::seconds kPace{1};
constexpr unsigned kEntries = 500;
constexpr const char* kAgent = "usp";

}  // namespace

BoardFeed::BoardFeed(std::string stateFolder, OnPicture onPicture)
    : stateFolder_(std::move(stateFolder)), onPicture_(std::move(onPicture)), thread_([this] { run(); }) {}

BoardFeed::~BoardFeed() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::string BoardFeed::historyText() {
    const std::lock_guard lock(mutex_);
    return composer_.history().toJson().dump(-1, ' ', false, Json::error_handler_t::replace);
}

void BoardFeed::run() {
    do {
        lookOnce();
    } while (rest());
}

bool BoardFeed::rest() {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, kPace, [this] { return ending_; });
}

void BoardFeed::lookOnce() {
    std::shared_ptr<const Picture> picture;
    try {
        if (client_ == nullptr) connect();
        const Look seen = look();
        const std::lock_guard lock(mutex_);
        picture = composer_.take(seen);
    } catch (const hostd::ConnectionError& error) {
        client_.reset();
        const std::lock_guard lock(mutex_);
        picture = composer_.lose(error.what());
    }
    onPicture_(std::move(picture));
}

void BoardFeed::connect() {
    common::Descriptor descriptor = hostd::connectToBoard(stateFolder_);
    if (!descriptor) throw hostd::ConnectionError("no board is up; quorvel-wifi up starts one");
    client_ = std::make_unique<hostd::Client>(descriptor.release(), "quorvel-wifi-web");
    lastEntry_ = 0;
    lastTrace_ = 0;
    const auto takeName = [this](const protocol::Part& part) {
        if (part.board && part.board->name.is_string()) name_ = part.board->name.get<std::string>();
    };
    (void)client_->ask(protocol::ReadBoard{}, takeName);  // a board without a name has none to show
}

Look BoardFeed::look() {
    Look look;
    look.name = name_;
    // A host process that cannot tell leaves the manager's state empty: it is silent then.
    look.live.manager.state = "silent";
    const std::vector<protocol::Fault> faults =
        client_->ask(protocol::LookAround{}, [&look](const protocol::Part& part) {
            if (part.live) look.live = *part.live;
        });
    if (!faults.empty()) look.live.manager.state = "silent (" + faults.front().reason + ")";
    if (look.live.manager.state == "running") takeLog(look);
    (void)client_->ask(protocol::ReadStatus{kAgent}, [&look](const protocol::Part& part) {
        if (!part.status.empty()) look.agent = part.status.front();
    });
    (void)client_->ask(protocol::ReadStatus{protocol::kHostService}, [&look](const protocol::Part& part) {
        if (!part.status.empty())
            look.counts = protocol::readHostCounts(part.status.front().status).value_or(look.counts);
    });
    protocol::ReadTrace trace;
    trace.since = lastTrace_;
    trace.count = kEntries;
    (void)client_->ask(trace, [this, &look](const protocol::Part& part) {
        for (const auto& entry : part.trace) {
            look.trace.push_back(entry);
            lastTrace_ = std::max(lastTrace_, entry.number);
        }
    });
    return look;
}

void BoardFeed::takeLog(Look& look) {
    protocol::Control control;
    control.command = {{"op", "events"}, {"since", lastEntry_}, {"count", kEntries}};
    (void)client_->ask(control, [this, &look](const protocol::Part& part) {
        if (!part.control) return;
        const auto answer = protocol::readSimulationAnswer(*part.control);
        if (!answer || !answer->ok) return;
        // A manager that was launched anew counts from 1.
        if (answer->last && *answer->last < lastEntry_) lastEntry_ = 0;
        for (const auto& entry : answer->events) {
            look.log.push_back(entry);
            lastEntry_ = std::max(lastEntry_, entry.number);
        }
    });
}

}  // namespace quorvel::web
