#include "agent/hostd/HostdGateway.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "agent/Problem.h"
#include "agent/model/Schema.h"
#include "gateway/hostd/client/BoardSocket.h"

namespace quorvel::agent {
namespace {

namespace protocol = hostd::protocol;
using Faults = std::vector<GatewayFault>;

constexpr std::chrono::milliseconds kBetweenAttempts{200};
// A board that restarts keeps its socket; one that does not take connections for so long is down.
constexpr int kAttempts = 25;
// How soon a change that nobody announces is seen.
constexpr double kWatchInterval = 1;
constexpr const char* kService = "usp";

void append(const std::vector<protocol::Fault>& faults, Faults& all) {
    for (const protocol::Fault& fault : faults) {
        std::string reason = fault.reason;
        if (!fault.log.empty()) reason += " (" + fault.log + ")";
        all.push_back({static_cast<std::uint32_t>(fault.code), fault.path, std::move(reason)});
    }
}

// A board that is switched off ends the connection, too: that is nothing unexpected.
std::string reasonOf(const hostd::ConnectionError& error) {
    if (dynamic_cast<const hostd::ConnectionEnded*>(&error) != nullptr) return "the board has ended the connection";
    return std::string("the connection to the board is broken: ") + error.what();
}

GatewayFault lostFault() {
    return {kInternalError, "", "the host process does not answer"};
}

std::string textOf(const protocol::Json& value) {
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

void append(const std::vector<protocol::PathValue>& values, std::vector<GatewayValue>& all) {
    for (const protocol::PathValue& value : values)
        all.push_back({value.path, textOf(value.value)});
}

}  // namespace

HostdGateway::HostdGateway(EventLoop& loop, std::string stateFolder, std::function<void(const std::string&)> log)
    : loop_(loop), stateFolder_(std::move(stateFolder)), log_(std::move(log)) {
    origin_ = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    clockAt_ = EventLoop::Clock::now();
}

HostdGateway::~HostdGateway() {
    loop_.cancel(reconnecting_);
    if (client_ != nullptr) loop_.forget(client_->descriptor());
}

bool HostdGateway::connect() {
    common::Descriptor connected = hostd::connectToBoard(stateFolder_);
    if (!connected) return false;
    const int descriptor = connected.release();
    client_ = std::make_unique<hostd::Client>(descriptor, "quorvel-wifi-agent");
    loop_.watch(descriptor, POLLIN, [this](short) { serve(); });
    greet();
    return true;
}

void HostdGateway::greet() {
    (void)ask(protocol::Hello{.version = protocol::kVersion, .client = "quorvel-wifi-agent"}, [this](const Part& part) {
        if (!part.boot) return;
        const bool known = life_.has_value();
        const bool rebooted = known && *life_ != part.boot->number;
        life_ = part.boot->number;
        if (rebooted) origin_ = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
        (void)ask(protocol::ReadTime{}, [this, known, rebooted](const Part& answer) {
            if (!answer.clock) return;
            clock_ = answer.clock->time;
            virtual_ = answer.clock->isVirtual;
            clockAt_ = EventLoop::Clock::now();
            // The moment of switching on stays where it is, however often the clock is read.
            if (!known) origin_ -= std::chrono::milliseconds(std::llround(clock_ * 1000));
            attempts_ = 0;
            subscribe();
            if (known && listener_ != nullptr) listener_->onRestored();
            if (rebooted && listener_ != nullptr) listener_->onRebooted();
            if (onReady) onReady();
        });
    });
}

void HostdGateway::subscribe() {
    protocol::Subscribe wanted;
    wanted.topics = {protocol::Topic::kStations, protocol::Topic::kTime};
    (void)ask(wanted, [this](const Part& part) {
        if (part.clock) takeClock(*part.clock);
        if (part.event && listener_ != nullptr) {
            listener_->onStationEvent({part.event->kind == protocol::StationEventKind::kAssociated, part.event->station,
                                       std::to_string(part.event->accessPoint)});
        }
    });
    const std::vector<std::string> paths = watched_;
    watch_ = 0;
    if (!paths.empty()) watch(paths);
}

void HostdGateway::takeClock(const protocol::BoardClock& clock) {
    clock_ = clock.time;
    virtual_ = clock.isVirtual;
    clockAt_ = EventLoop::Clock::now();
    if (listener_ != nullptr) listener_->onBoardTime(boardTime());
}

BoardInstant HostdGateway::boardTime() const {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(EventLoop::Clock::now() - clockAt_);
    const auto told = origin_ + std::chrono::milliseconds(std::llround(clock_ * 1000));
    return virtual_ ? told : told + since;
}

void HostdGateway::wakeAt(BoardInstant at) {
    if (client_ == nullptr) return;
    if (wake_ != 0) {
        pending_.erase(wake_);
        (void)ask(protocol::Unsubscribe{.subscription = std::exchange(wake_, 0)}, {});
    }
    // A millisecond late rather than early: what is not due yet would ask again.
    const auto wait = std::chrono::duration<double>(at - origin_ + std::chrono::milliseconds(1));
    protocol::Wake wake;
    wake.at = std::max(0.0, wait.count());
    wake_ = ask(wake, [this](const Part& part) {
        if (!part.clock && !part.done) return;
        wake_ = 0;
        if (part.clock) takeClock(*part.clock);
    });
}

protocol::Id HostdGateway::ask(const protocol::Request& request, std::function<void(const Part&)> onPart, Lost lost) {
    if (client_ == nullptr) {
        if (lost) loop_.post(std::move(lost));
        return 0;
    }
    const auto id = std::make_shared<protocol::Id>(0);
    try {
        *id = client_->send(request, [this, id, onPart = std::move(onPart)](const Part& part) {
            if (part.done) pending_.erase(*id);
            if (onPart) onPart(part);
        });
        pending_[*id] = std::move(lost);
    } catch (const hostd::ConnectionError& error) {
        if (lost) loop_.post(std::move(lost));
        loop_.post([this, reason = reasonOf(error)] { disconnected(reason); });
        return 0;
    }
    followDescriptor();
    return *id;
}

void HostdGateway::followDescriptor() {
    if (client_ == nullptr) return;
    loop_.change(client_->descriptor(), static_cast<short>(POLLIN | (client_->wantsToWrite() ? POLLOUT : 0)));
}

void HostdGateway::serve() {
    try {
        client_->process();
        followDescriptor();
    } catch (const hostd::ConnectionError& error) {
        disconnected(reasonOf(error));
    }
}

void HostdGateway::disconnected(const std::string& reason) {
    if (client_ == nullptr) return;
    loop_.forget(client_->descriptor());
    client_.reset();
    watch_ = 0;
    wake_ = 0;
    log_(reason);
    std::map<protocol::Id, Lost> pending;
    pending.swap(pending_);
    for (const auto& [id, lost] : pending) {
        if (lost) lost();
    }
    reconnectLater();
}

void HostdGateway::reconnectLater() {
    loop_.cancel(reconnecting_);
    reconnecting_ = loop_.after(kBetweenAttempts, [this] {
        reconnecting_ = 0;
        if (connect()) return;
        if (++attempts_ < kAttempts) return reconnectLater();
        if (onEnd) onEnd();
    });
}

void HostdGateway::reportStatus(const nlohmann::ordered_json& status) {
    (void)ask(protocol::ReportStatus{.service = kService, .status = status}, {});
}

void HostdGateway::reportTrace(std::vector<nlohmann::ordered_json> entries) {
    (void)ask(protocol::ReportTrace{.service = kService, .entries = std::move(entries)}, {});
}

void HostdGateway::table(std::function<void(std::vector<TableRow>)> done) {
    const auto rows = std::make_shared<std::vector<TableRow>>();
    const auto finish = [done = std::move(done), rows] { done(std::move(*rows)); };
    const auto take = [this, rows, finish](const Part& part) {
        for (const protocol::ParameterDescription& parameter : part.parameters) {
            const std::size_t dot = parameter.path.rfind('.') + 1;
            rows->push_back({parameter.path.substr(0, dot), parameter.path.substr(dot),
                             std::string(protocol::nameOf(parameter.type)),
                             std::string(protocol::nameOf(parameter.access)),
                             parameter.kind == protocol::ParameterKind::kOrdinary});
            if (parameter.atOnce) atOnce_.push_back(parameter.path);
        }
        if (part.done) finish();
    };
    (void)ask(protocol::Describe{.paths = {"Device."}}, take, finish);
}

void HostdGateway::get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) {
    const auto answer = std::make_shared<GetAnswer>();
    protocol::Get request;
    request.paths = std::move(paths);
    request.maxDepth = levels;
    const auto lost = [answer, done] {
        answer->lost = true;
        answer->faults.push_back(lostFault());
        done(std::move(*answer));
    };
    (void)ask(
        request,
        [answer, done](const Part& part) {
            append(part.values, answer->values);
            append(part.faults, answer->faults);
            answer->lost = answer->lost || part.managerLost;
            if (part.done) done(std::move(*answer));
        },
        lost);
}

void HostdGateway::instances(std::vector<std::string> tables,
                             std::function<void(std::vector<std::string>, Faults)> done) {
    const auto rows = std::make_shared<std::vector<std::string>>();
    const auto faults = std::make_shared<Faults>();
    (void)ask(
        protocol::Instances{.paths = std::move(tables)},
        [rows, faults, done](const Part& part) {
            rows->insert(rows->end(), part.instances.begin(), part.instances.end());
            append(part.faults, *faults);
            if (part.done) done(std::move(*rows), std::move(*faults));
        },
        [done] { done({}, {lostFault()}); });
}

void HostdGateway::setAll(std::vector<Setting> settings, bool checkOnly, std::function<void(SetAnswer)> done) {
    protocol::Set request;
    request.checkOnly = checkOnly;
    request.everyFault = checkOnly;
    for (auto& [path, value] : settings)
        request.settings.push_back({.path = path, .value = value});
    const auto answer = std::make_shared<SetAnswer>();
    (void)ask(
        request,
        [answer, done](const Part& part) {
            answer->applied.insert(answer->applied.end(), part.applied.begin(), part.applied.end());
            append(part.faults, answer->faults);
            if (part.done) done(std::move(*answer));
        },
        [answer, done] {
            answer->faults.push_back(lostFault());
            done(std::move(*answer));
        });
}

void HostdGateway::check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    setAll(std::move(settings), true, std::move(done));
}

void HostdGateway::set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    // The host process stages first and applies then; a value that acts at once would come before the applying.
    std::vector<Setting> staged;
    std::vector<Setting> immediate;
    for (Setting& setting : settings) {
        const bool acts = std::find(atOnce_.begin(), atOnce_.end(), schemaPath(setting.first)) != atOnce_.end();
        (acts ? immediate : staged).push_back(std::move(setting));
    }
    if (immediate.empty() || staged.empty()) {
        return setAll(staged.empty() ? std::move(immediate) : std::move(staged), false, std::move(done));
    }
    setAll(std::move(staged), false, [this, immediate = std::move(immediate), done](SetAnswer first) mutable {
        if (!first.faults.empty()) return done(std::move(first));
        setAll(std::move(immediate), false, [first = std::move(first), done](SetAnswer second) mutable {
            second.applied.insert(second.applied.begin(), first.applied.begin(), first.applied.end());
            done(std::move(second));
        });
    });
}

void HostdGateway::askForFaults(const protocol::Request& request, std::function<void(Faults)> done) {
    const auto faults = std::make_shared<Faults>();
    (void)ask(
        request,
        [faults, done](const Part& part) {
            append(part.faults, *faults);
            if (part.done) done(std::move(*faults));
        },
        [done] { done({lostFault()}); });
}

void HostdGateway::save(std::function<void(SaveAnswer)> done) {
    askForFaults(protocol::Save{}, [done](const Faults& faults) {
        done({faults.empty(), faults.empty() ? "" : faults.front().reason});
    });
}

void HostdGateway::scan(std::string radio, std::function<void(Faults)> done) {
    // 2 requests a scan, which is over when the request is.
    protocol::Set request;
    request.settings.push_back({.path = std::move(radio) + "Stats.DiagnosticsState", .value = "2"});
    askForFaults(request, std::move(done));
}

void HostdGateway::pushButton(std::string wps, std::function<void(Faults)> done) {
    protocol::Operate request;
    request.path = wps;
    request.function = "MethodSet";
    request.text = "PushButton";
    request.settings.push_back({.path = wps + "ButtonPush", .value = "true"});
    askForFaults(request, std::move(done));
}

void HostdGateway::watch(std::vector<std::string> paths) {
    watched_ = std::move(paths);
    if (client_ == nullptr) return;
    if (watch_ != 0) {
        pending_.erase(watch_);
        (void)ask(protocol::Unsubscribe{.subscription = std::exchange(watch_, 0)}, {});
    }
    if (watched_.empty()) return;
    protocol::Watch request;
    request.paths = watched_;
    request.interval = kWatchInterval;
    watch_ = ask(request, [this](const Part& part) {
        if (part.values.empty() || listener_ == nullptr) return;
        std::vector<GatewayValue> changes;
        append(part.values, changes);
        listener_->onChanges(changes);
    });
}

void HostdGateway::powerCycle(bool factory, std::function<void(Faults)> done) {
    protocol::CyclePower request;
    request.cause = "USP";
    request.factoryReset = factory;
    const auto faults = std::make_shared<Faults>();
    // The connection ends with the board's life: nothing is wrong then.
    (void)ask(
        request,
        [faults, done](const Part& part) {
            append(part.faults, *faults);
            if (part.done) done(std::move(*faults));
        },
        [done] { done({}); });
}

}  // namespace quorvel::agent
