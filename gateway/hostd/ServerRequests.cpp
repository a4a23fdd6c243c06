// Dispatches every request by its type, and carries it out or queues it.
#include <algorithm>
#include <utility>

#include "gateway/hostd/PluginCalls.h"
#include "gateway/hostd/Server.h"

namespace quorvel::hostd {

using protocol::ChangeKind;
using protocol::FaultCode;
using protocol::Id;
using protocol::Part;
using protocol::Topic;

namespace {

// A WLAN manager that is launched anew may take its time.
constexpr std::chrono::seconds kLongestControl{15};
constexpr std::chrono::seconds kPictureAge{1};
constexpr double kShortestInterval = 0.2;
constexpr double kLongestInterval = 3600;
// Limits of the requests that one client may have open at a time.
constexpr std::size_t kMaxOpen = 64;
constexpr std::size_t kMaxAlarms = 4096;

Part oneFault(const std::string& reason) {
    Part part;
    part.faults.push_back({FaultCode::kInternal, "", reason, "", 0, ""});
    return part;
}

bool onlyAsks(const std::string& operation) {
    return operation == "state" || operation == "events" || operation == "counts" || operation.ends_with(".list");
}

// Launching the manager is the plug-in's work.
bool needsLibrary(const std::string& operation) {
    return operation == "daemon.restart";
}

}  // namespace

std::string operationOf(const protocol::Json& command) {
    constexpr const char* kOperation = "op";
    if (!command.is_object() || !command.contains(kOperation) || !command.at(kOperation).is_string()) return "";
    return command.at(kOperation).get<std::string>();
}

/// Answers from the loop.
class Server::InlineReply : public Reply {
  public:
    InlineReply(Connection& connection, Id id) : connection_(connection), id_(id) {}
    void part(const Part& part) override {
        connection_.answer(protocol::partLine(id_, part));
    }

  private:
    Connection& connection_;
    Id id_;
};

void Server::handleLine(Session& session, const std::string& line) {
    protocol::ParsedRequest parsed = protocol::parseRequest(line);
    if (!parsed.wrong.empty()) return refuse(session, parsed.id, parsed.wrong);
    if (!session.greeted && !std::holds_alternative<protocol::Hello>(parsed.request)) {
        session.closing = true;
        return refuse(session, parsed.id,
                      "the first request must be \"hello\" with the protocol's version, which is " +
                          std::to_string(protocol::kVersion));
    }
    dispatch(session, parsed.id, std::move(parsed.request));
}

void Server::dispatch(Session& session, Id id, protocol::Request request) {
    ++requests_[protocol::verbOf(request)];
    std::visit([&](const auto& each) { serve(session, id, each); }, request);
}

void Server::refuse(Session& session, Id id, const std::string& reason) {
    answer(session, id, oneFault(reason));
}

// Answers with a part that is the last.
void Server::answer(Session& session, Id id, Part part) {
    part.done = true;
    session.connection->answer(protocol::partLine(id, part));
}

void Server::serve(Session& session, Id id, const protocol::Hello& request) {
    Part part;
    part.version = protocol::kVersion;
    part.program = settings_.program;
    if (request.version != protocol::kVersion) {
        session.closing = true;
        part.faults.push_back({FaultCode::kInternal, "",
                               "the client speaks version " + std::to_string(request.version) +
                                   " of the protocol and the host process version " +
                                   std::to_string(protocol::kVersion) + "; use programs of one build, or start the " +
                                   "board again with the client's",
                               "", 0, ""});
        return answer(session, id, part);
    }
    session.greeted = true;
    part.boot = settings_.boot;
    part.clock = clock_.now();
    answer(session, id, part);
}

void Server::serve(Session& session, Id id, const protocol::Alive&) {
    answer(session, id, {});
}

void Server::serve(Session& session, Id id, const protocol::Shutdown&) {
    answer(session, id, {});
    stop();
}

void Server::serve(Session& session, Id id, const protocol::CyclePower& request) {
    if (!settings_.canCyclePower) {
        return refuse(session, id,
                      "this board lives as long as the client that started it; start a board that stays "
                      "up (quorvel-wifi up) to switch it off and on");
    }
    ending_ = request.factoryReset ? Ending::kFactoryReset : Ending::kPowerCycle;
    settings_.boot.cause = request.cause;
    Part news;
    news.change = protocol::Change{ChangeKind::kPower, {}, request.cause, clock_.now().time};
    deliver({Topic::kChanges, news});
    answer(session, id, {});
    stop();
}

void Server::serve(Session& session, Id id, const protocol::Subscribe& request) {
    if (request.topics.empty()) return refuse(session, id, "\"topics\" must name at least one topic");
    if (session.subscriptions.size() >= kMaxOpen) {
        return refuse(session, id,
                      "this client has " + std::to_string(kMaxOpen) + " subscriptions already; unsubscribe one first");
    }
    Subscription subscription{id, request.topics, request.logLevel, ""};
    const bool stations = subscription.follows(Topic::kStations);
    session.subscriptions.push_back(std::move(subscription));
    followLog();
    if (stations && !listening_) return listenForStations(session, id);
    Part part;
    part.listening = true;
    session.connection->answer(protocol::partLine(id, part));
}

void Server::listenForStations(Session& session, Id id) {
    listening_ = true;
    library_.enqueue(
        session.connection, id,
        [this](Reply& reply) {
            const std::uint32_t result = settings_.listen();
            Part part;
            part.listening = result == 0;
            listening_ = result == 0;
            if (result != 0) {
                part.faults.push_back(
                    pluginFault(FaultCode::kInternal, "", "the plug-in cannot listen for events", result));
            }
            reply.part(part);
        },
        true);
}

void Server::serve(Session& session, Id id, const protocol::Unsubscribe& request) {
    const auto ends = [&](const auto& open) {
        if (request.subscription && *request.subscription != open.id) return false;
        answer(session, open.id, {});
        return true;
    };
    std::erase_if(session.subscriptions, ends);
    std::erase_if(session.watches, ends);
    std::erase_if(session.alarms, ends);
    followLog();
    answer(session, id, {});
}

void Server::serve(Session& session, Id id, const protocol::Describe& request) {
    InlineReply reply(*session.connection, id);
    service_.describe(request, reply);
    answer(session, id, {});
}

void Server::serve(Session& session, Id id, const protocol::ReadTime&) {
    Part part;
    part.clock = clock_.now();
    answer(session, id, part);
}

void Server::serve(Session& session, Id id, const protocol::Wake& request) {
    if (session.alarms.size() >= kMaxAlarms) {
        return refuse(session, id,
                      "this client waits for " + std::to_string(kMaxAlarms) + " times already; unsubscribe some first");
    }
    session.alarms.push_back({id, request.at});
    ringAlarms();
}

void Server::serve(Session& session, Id id, const protocol::Watch& request) {
    if (session.watches.size() >= kMaxOpen) {
        return refuse(session, id,
                      "this client has " + std::to_string(kMaxOpen) + " watches already; unsubscribe one first");
    }
    if (!(request.interval >= kShortestInterval && request.interval <= kLongestInterval)) {
        return refuse(session, id, "\"interval\" must be a number of seconds from 0.2 to 3600");
    }
    auto watched = std::make_shared<Watched>();
    watched->request = request;
    session.watches.push_back({id, std::move(watched), {}, true});
}

void Server::serve(Session& session, Id id, const protocol::ReportStatus& request) {
    if (request.service == protocol::kHostService) {
        return refuse(session, id,
                      "\"" + request.service + "\" is the host process's own service; report under another name");
    }
    const std::string wrong = services_.report(request, session.connection->descriptor());
    if (!wrong.empty()) return refuse(session, id, wrong);
    publishStatus(request.service);
    answer(session, id, {});
}

void Server::serve(Session& session, Id id, const protocol::ReportTrace& request) {
    Part news;
    const std::string wrong = services_.add(request, clock_.now().time, news.trace);
    if (!wrong.empty()) return refuse(session, id, wrong);
    if (!news.trace.empty()) deliver({Topic::kTrace, news});
    answer(session, id, {});
}

// Adds the manager's counts to those of this process.
protocol::HostCounts Server::completed(protocol::HostCounts counts) const {
    counts.bounds.assign(common::kDurationBounds.begin(), common::kDurationBounds.end());
    counts.pluginCalls = pluginCalls();
    if (settings_.control)
        counts.managerRequests = protocol::readManagerCounts(settings_.control({{"op", "counts"}}).answer);
    return counts;
}

void Server::serve(Session& session, Id id, const protocol::ReadStatus& request) {
    if (request.service == protocol::kHostService) {
        protocol::HostCounts counts;
        for (const auto& [verb, count] : requests_)
            counts.requests.push_back({verb, count});
        return manager_.enqueue(session.connection, id, [this, counts = std::move(counts)](Reply& reply) {
            managerHeartbeat_.expect(kLongestControl);
            Part part;
            part.status.push_back({protocol::kHostService, true, protocol::toJson(completed(counts))});
            reply.part(part);
        });
    }
    Part part;
    part.status = services_.statuses(request.service);
    answer(session, id, part);
}

void Server::serve(Session& session, Id id, const protocol::ReadTrace& request) {
    Part part;
    part.trace = services_.trace(request);
    answer(session, id, part);
}

void Server::control(const protocol::Control& request, Reply& reply) {
    const std::string operation = operationOf(request.command);
    Controlled controlled = settings_.control(request.command);
    if (!controlled.trouble.empty()) return reply.fault({FaultCode::kInternal, "", controlled.trouble, "", 0, ""});
    Part part;
    part.control = std::move(controlled.answer);
    reply.part(part);
    const bool aside = onlyAsks(operation) || (operation == "time" && request.command.size() == 1);
    if (aside) return;
    const ChangeKind kind = operation.starts_with("daemon.") ? ChangeKind::kManager
                            : operation == "time"            ? ChangeKind::kTime
                                                             : ChangeKind::kSimulation;
    publishChange({kind, {}, operation, 0});
}

void Server::serve(Session& session, Id id, const protocol::Control& request) {
    if (!settings_.control) return refuse(session, id, "this host process has no simulated surroundings");
    if (needsLibrary(operationOf(request.command))) {
        return library_.enqueue(session.connection, id, [this, request](Reply& reply) {
            heartbeat_.expect(kLongestControl);
            control(request, reply);
        });
    }
    manager_.enqueue(session.connection, id, [this, request](Reply& reply) {
        managerHeartbeat_.expect(kLongestControl);
        control(request, reply);
    });
}

void Server::serve(Session& session, Id id, const protocol::ReadBoard&) {
    manager_.enqueue(session.connection, id, [this](Reply& reply) {
        Part part;
        part.board = settings_.board();
        reply.part(part);
    });
}

void Server::lookAround(Reply& reply) {
    const auto now = std::chrono::steady_clock::now();
    if (!hasPicture_ || now - pictureTaken_ >= kPictureAge) {
        managerHeartbeat_.expect(kLongestControl);
        picture_ = settings_.look();
        picture_.clock = clock_.now();
        pictureTaken_ = now;
        hasPicture_ = true;
    }
    Part part;
    part.live = picture_;
    reply.part(part);
}

void Server::serve(Session& session, Id id, const protocol::LookAround&) {
    if (!settings_.look) return refuse(session, id, "this host process has no simulated surroundings");
    manager_.enqueue(session.connection, id, [this](Reply& reply) { lookAround(reply); });
}

void Server::serve(Session& session, Id id, const protocol::Get& request) {
    InlineReply inlineReply(*session.connection, id);
    if (service_.answerFromRecent(request, inlineReply)) return answer(session, id, {});
    library_.enqueue(session.connection, id, [this, request](Reply& reply) { service_.answer(request, reply); });
}

template <typename LibraryRequest>
void Server::serve(Session& session, Id id, const LibraryRequest& request) {
    library_.enqueue(session.connection, id, [this, request](Reply& reply) { service_.answer(request, reply); });
}

}  // namespace quorvel::hostd
