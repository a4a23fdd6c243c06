#include "agent/host/HostGateway.h"

#include <poll.h>

#include <algorithm>
#include <exception>
#include <nlohmann/json.hpp>
#include <utility>

#include "gateway/hostd/client/BoardSocket.h"
#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::agent {
namespace {

namespace protocol = hostd::protocol;

constexpr const char* kClientName = "quorvel-wifi-agent";
constexpr const char* kService = "usp";
constexpr std::uint32_t kInternalError = 7003;
constexpr std::chrono::milliseconds kRetryWait(200);
constexpr int kMostFailures = 10;  // a board that cycles its power keeps its socket; one that is down has none
constexpr const char* kScanWish = "2";
constexpr double kWatchInterval = 5;

std::string textOf(const nlohmann::ordered_json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

GatewayFault faultOf(const protocol::Fault& fault) {
    std::string reason = fault.reason;
    if (!fault.log.empty()) reason += " (" + fault.log + ")";
    return {static_cast<std::uint32_t>(fault.code), fault.path, reason};
}

void collect(std::vector<GatewayFault>& into, const protocol::Part& part) {
    for (const protocol::Fault& fault : part.faults)
        into.push_back(faultOf(fault));
}

void collect(std::vector<GatewayValue>& into, const std::vector<protocol::PathValue>& values) {
    for (const protocol::PathValue& value : values)
        into.push_back({value.path, textOf(value.value)});
}

GatewayFault lostFault() {
    return {kInternalError, "", "the host process of the board is gone"};
}

TableRow rowOf(const protocol::ParameterDescription& parameter) {
    TableRow row;
    const std::size_t dot = parameter.path.rfind('.');
    row.object = parameter.path.substr(0, dot + 1);
    row.parameter = parameter.path.substr(dot + 1);
    for (const auto& [type, name] : names(parameter.type)) {
        if (type == parameter.type) row.type = name;
    }
    for (const auto& [access, name] : names(parameter.access)) {
        if (access == parameter.access) row.access = name;
    }
    row.ordinary = parameter.kind == protocol::ParameterKind::kOrdinary;
    return row;
}

}  // namespace

HostGateway::HostGateway(EventLoop& loop, std::string stateFolder) : loop_(loop), stateFolder_(std::move(stateFolder)) {
    connect();
}

HostGateway::~HostGateway() {
    loop_.cancel(wakeTimer_);
    loop_.cancel(retryTimer_);
    if (client_ != nullptr) loop_.forget(client_->descriptor());
}

void HostGateway::connect() {
    const int descriptor = hostd::connectToBoard(stateFolder_);
    if (descriptor < 0) throw hostd::ConnectionError("no board is up with the state folder " + stateFolder_);
    client_ = std::make_unique<hostd::Client>(descriptor, kClientName);
    wantsWrite_ = false;
    loop_.watch(descriptor, POLLIN, [this](short) { serve(); });
    follow();
}

void HostGateway::follow() {
    protocol::Subscribe news;
    news.topics = {protocol::Topic::kStations, protocol::Topic::kManager, protocol::Topic::kTime};
    ask(
        news, [this](const Part& part) { takeNews(part); }, [](bool) {});
    ask(
        protocol::ReadTime{},
        [this](const Part& part) {
            if (part.clock) takeClock(*part.clock);
        },
        [](bool) {});
    if (!watched_.empty()) watch(watched_);
}

void HostGateway::serve() {
    try {
        client_->process();
    } catch (const hostd::ConnectionError&) {
        lose();
        return;
    }
    updateWatch();
}

void HostGateway::updateWatch() {
    if (client_ == nullptr || client_->wantsToWrite() == wantsWrite_) return;
    wantsWrite_ = !wantsWrite_;
    loop_.change(client_->descriptor(), static_cast<short>(wantsWrite_ ? POLLIN | POLLOUT : POLLIN));
}

void HostGateway::lose() {
    if (client_ == nullptr) return;
    loop_.forget(client_->descriptor());
    // A handler of the client may be what is running.
    std::shared_ptr<hostd::Client> old = std::move(client_);
    loop_.post([old] {});
    watchId_ = 0;
    wakeId_ = 0;
    const auto open = std::exchange(open_, {});
    for (const auto& [number, request] : open)
        request->end(true);
    failures_ = 0;
    retryTimer_ = loop_.after(kRetryWait, [this] { retry(); });
}

void HostGateway::retry() {
    try {
        connect();
    } catch (const hostd::ConnectionError&) {
        if (++failures_ < kMostFailures) {
            retryTimer_ = loop_.after(kRetryWait, [this] { retry(); });
            return;
        }
        if (cycled_) std::exchange(cycled_, nullptr)({lostFault()});
        if (onEnd) onEnd();
        return;
    }
    // The board is there again once it answers: a socket that cycles its power takes connections before.
    ask(
        protocol::Ping{}, [](const Part&) {},
        [this](bool lost) {
            if (lost) return;
            if (cycled_) std::exchange(cycled_, nullptr)({});
            if (listener_ != nullptr) listener_->onRestored();
        });
}

void HostGateway::ask(const Request& request, std::function<void(const Part&)> part,
                      std::function<void(bool lost)> end) {
    if (client_ == nullptr) {
        loop_.post([end = std::move(end)] { end(true); });
        return;
    }
    const std::uint64_t number = ++lastOpen_;
    open_[number] = std::make_shared<Open>(Open{std::move(part), std::move(end)});
    try {
        (void)client_->send(request, [this, number](const Part& each) {
            const auto found = open_.find(number);
            if (found == open_.end()) return;
            const std::shared_ptr<Open> entry = found->second;
            entry->part(each);
            if (!each.done) return;
            open_.erase(number);
            entry->end(false);
        });
    } catch (const hostd::ConnectionError&) {
        // The caller is told from the loop, as of every other answer.
        loop_.post([this] { lose(); });
        return;
    }
    updateWatch();
}

void HostGateway::table(std::function<void(std::vector<TableRow>)> done) {
    const auto rows = std::make_shared<std::vector<TableRow>>();
    ask(
        protocol::Describe{{"Device."}},
        [rows](const Part& part) {
            for (const protocol::ParameterDescription& parameter : part.parameters)
                rows->push_back(rowOf(parameter));
        },
        [rows, done = std::move(done)](bool) { done(std::move(*rows)); });
}

void HostGateway::get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) {
    const auto answer = std::make_shared<GetAnswer>();
    protocol::Get request;
    request.paths = std::move(paths);
    request.maxDepth = levels;
    ask(
        request,
        [answer](const Part& part) {
            collect(answer->values, part.values);
            collect(answer->faults, part);
            answer->lost = answer->lost || part.managerLost;
        },
        [answer, done = std::move(done)](bool lost) {
            if (lost) answer->faults.push_back(lostFault());
            answer->lost = answer->lost || lost;
            done(std::move(*answer));
        });
}

void HostGateway::instances(std::vector<std::string> paths,
                            std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) {
    struct Answer {
        std::vector<std::string> instances;
        std::vector<GatewayFault> faults;
    };
    const auto answer = std::make_shared<Answer>();
    ask(
        protocol::Instances{std::move(paths)},
        [answer](const Part& part) {
            answer->instances.insert(answer->instances.end(), part.instances.begin(), part.instances.end());
            collect(answer->faults, part);
        },
        [answer, done = std::move(done)](bool lost) {
            if (lost) answer->faults.push_back(lostFault());
            done(std::move(answer->instances), std::move(answer->faults));
        });
}

void HostGateway::write(std::vector<Setting> settings, bool checkOnly, std::function<void(SetAnswer)> done) {
    protocol::Set request;
    request.checkOnly = checkOnly;
    request.everyFault = true;
    for (auto& [path, value] : settings)
        request.settings.push_back({std::move(path), std::move(value), true});
    const auto answer = std::make_shared<SetAnswer>();
    ask(
        request,
        [answer](const Part& part) {
            collect(answer->faults, part);
            answer->applied.insert(answer->applied.end(), part.applied.begin(), part.applied.end());
        },
        [answer, done = std::move(done)](bool lost) {
            if (lost) answer->faults.push_back(lostFault());
            done(std::move(*answer));
        });
}

void HostGateway::check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    write(std::move(settings), true, std::move(done));
}

void HostGateway::set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    write(std::move(settings), false, std::move(done));
}

void HostGateway::save(std::function<void(SaveAnswer)> done) {
    const auto faults = std::make_shared<std::vector<GatewayFault>>();
    ask(
        protocol::Save{}, [faults](const Part& part) { collect(*faults, part); },
        [faults, done = std::move(done)](bool lost) {
            if (lost) faults->push_back(lostFault());
            done({faults->empty(), faults->empty() ? "" : faults->front().reason});
        });
}

void HostGateway::scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) {
    write({{radio + "Stats.DiagnosticsState", kScanWish}}, false,
          [done = std::move(done)](const SetAnswer& answer) { done(answer.faults); });
}

void HostGateway::watch(std::vector<std::string> paths) {
    watched_ = std::move(paths);
    if (client_ == nullptr) return;
    if (watchId_ != 0) {
        client_->forget(watchId_);
        ask(
            protocol::Unsubscribe{watchId_}, [](const Part&) {}, [](bool) {});
        watchId_ = 0;
    }
    if (watched_.empty() || client_ == nullptr) return;
    try {
        watchId_ = client_->send(protocol::Watch{watched_, kWatchInterval}, [this](const Part& part) {
            if (part.values.empty() || listener_ == nullptr) return;
            std::vector<GatewayValue> changes;
            collect(changes, part.values);
            listener_->onChanges(changes);
        });
    } catch (const hostd::ConnectionError&) {
        loop_.post([this] { lose(); });
        return;
    }
    updateWatch();
}

void HostGateway::powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) {
    cycled_ = std::move(done);
    ask(
        protocol::CyclePower{"RemoteReboot", factory},
        [this](const Part& part) {
            if (part.faults.empty() || !cycled_) return;
            std::vector<GatewayFault> faults;
            collect(faults, part);
            std::exchange(cycled_, nullptr)(std::move(faults));
        },
        [](bool) {});
}

BoardInstant HostGateway::boardTime() const {
    double seconds = clock_;
    if (!virtual_ && anchored_) {
        seconds += std::chrono::duration<double>(EventLoop::Clock::now() - clockSeen_).count();
    }
    return origin_ + std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

void HostGateway::takeClock(const protocol::BoardClock& clock) {
    const BoardInstant before = anchored_ ? boardTime() : BoardInstant{};
    const auto behind = std::chrono::milliseconds(static_cast<std::int64_t>(clock.time * 1000));
    const bool rebooted = anchored_ && clock.time < clock_;
    if (!anchored_) {
        origin_ = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now()) - behind;
    } else if (rebooted) {
        origin_ = before - behind;  // a power cycle starts the board's clock at 0; time itself goes on
    }
    anchored_ = true;
    clock_ = clock.time;
    virtual_ = clock.isVirtual;
    clockSeen_ = EventLoop::Clock::now();
    moved();
}

void HostGateway::moved() {
    if (listener_ != nullptr) listener_->onBoardTime(boardTime());
}

void HostGateway::wakeAt(std::optional<BoardInstant> due) {
    if (due == due_ && (wakeTimer_ != 0 || wakeId_ != 0)) return;
    due_ = due;
    loop_.cancel(std::exchange(wakeTimer_, 0));
    if (!due) return;
    if (!virtual_) {
        const auto wait = std::max(*due - boardTime(), std::chrono::milliseconds(0));
        wakeTimer_ = loop_.after(wait, [this] {
            wakeTimer_ = 0;
            moved();
        });
        return;
    }
    if (client_ == nullptr) return;
    if (wakeId_ != 0) {
        client_->forget(wakeId_);
        ask(
            protocol::Unsubscribe{wakeId_}, [](const Part&) {}, [](bool) {});
        wakeId_ = 0;
    }
    try {
        wakeId_ = client_->send(protocol::Wake{std::chrono::duration<double>(*due - origin_).count()},
                                [this](const Part& part) {
                                    if (part.done) wakeId_ = 0;
                                    if (part.clock) takeClock(*part.clock);
                                });
    } catch (const hostd::ConnectionError&) {
        loop_.post([this] { lose(); });
        return;
    }
    updateWatch();
}

void HostGateway::takeNews(const Part& part) {
    if (part.clock) takeClock(*part.clock);
    if (listener_ == nullptr) return;
    if (part.event) {
        StationEvent event;
        event.joined = part.event->kind == protocol::StationEventKind::kAssociated;
        event.mac = part.event->station;
        event.interface = "Device.WiFi.AccessPoint." + std::to_string(part.event->accessPoint) + ".";
        listener_->onStationEvent(event);
    }
    // The manager is back: stations may have come and gone unheard.
    if (part.absence && part.absence->empty()) listener_->onRestored();
}

void HostGateway::reportStatus(const nlohmann::ordered_json& status) {
    ask(
        protocol::ReportStatus{kService, status}, [](const Part&) {}, [](bool) {});
}

void HostGateway::reportTrace(std::vector<nlohmann::ordered_json> entries) {
    ask(
        protocol::ReportTrace{kService, std::move(entries)}, [](const Part&) {}, [](bool) {});
}

}  // namespace quorvel::agent
