#include "gateway/hostd/Server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/protocol/Codec.h"

namespace quorvel::hostd {

using protocol::ChangeKind;
using protocol::Fault;
using protocol::FaultCode;
using protocol::Id;
using protocol::Part;
using protocol::Topic;
using Steady = std::chrono::steady_clock;

namespace {

// While a worker is busy, the loop looks at it so often, in milliseconds.
constexpr int kTick = 100;
// News that the loop has not delivered yet; more are lost rather than held.
constexpr std::size_t kMaxLogLines = 4096;
constexpr std::size_t kMaxNews = 65536;

bool isPathFault(FaultCode code) {
    return code == FaultCode::kBadSyntax || code == FaultCode::kNoSuchInstance || code == FaultCode::kNoSuchPath;
}

}  // namespace

Server::Server(Service& service, Heartbeat& heartbeat, Clock& clock, Settings settings)
    : service_(service),
      heartbeat_(heartbeat),
      clock_(clock),
      settings_(std::move(settings)),
      library_(heartbeat, {settings_.health, [this](const Fault& fault) { publishFault(fault); }}),
      manager_(managerHeartbeat_, {settings_.health, [this](const Fault& fault) { publishFault(fault); }}) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("cannot make a pipe for the host process");
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
    if (settings_.connected < 0) return;
    sessions_.emplace_back().connection = std::make_shared<Connection>(settings_.connected, [this] { wake(); });
}

Server::~Server() {
    (void)close(wakeRead_);
    (void)close(wakeWrite_);
}

void Server::wake() const {
    const char byte = 0;
    (void)!write(wakeWrite_, &byte, 1);  // a full pipe wakes as well
}

void Server::stop() {
    stopping_ = true;
    wake();
}

void Server::publish(Topic topic, Part part) {
    {
        const std::lock_guard lock(mutex_);
        if (news_.size() >= kMaxNews) return;
        if (topic == Topic::kLog && ++logLines_ > kMaxLogLines) return;
        news_.push_back({topic, std::move(part)});
    }
    wake();
}

void Server::publishChange(protocol::Change change) {
    change.time = clock_.now().time;
    Part part;
    part.change = std::move(change);
    boardChanged();
    publish(Topic::kChanges, std::move(part));
}

void Server::boardChanged() {
    service_.forgetRecent();
    {
        const std::lock_guard lock(mutex_);
        changed_ = true;
    }
    wake();
}

// Subscribers do not hear of a mistyped path.
void Server::publishFault(const Fault& fault) {
    if (isPathFault(fault.code)) return;
    Part part;
    part.faults.push_back(fault);
    publish(Topic::kFaults, std::move(part));
}

void Server::announceWait(unsigned seconds) {
    library_.announceWait(seconds);
}

void Server::accept() {
    const int descriptor = accept4(settings_.listening, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0) return;
    sessions_.emplace_back().connection = std::make_shared<Connection>(descriptor, [this] { wake(); });
}

void Server::deliver(const News& news) {
    for (const Session& session : sessions_) {
        for (const Subscription& subscription : session.subscriptions) {
            if (!subscription.follows(news.topic)) continue;
            if (news.part.log && news.part.log->level > subscription.logLevel) continue;
            session.connection->push(protocol::partLine(subscription.id, news.part));
        }
    }
}

void Server::deliverNews() {
    char drained[64];
    while (read(wakeRead_, drained, sizeof drained) > 0) {
    }
    std::deque<News> news;
    bool changed = false;
    {
        const std::lock_guard lock(mutex_);
        news.swap(news_);
        logLines_ = 0;
        changed = std::exchange(changed_, false);
    }
    for (const News& each : news)
        deliver(each);
    if (!changed) return;
    for (Session& session : sessions_) {
        for (Watching& watching : session.watches)
            watching.stale = true;
    }
}

bool Server::awaitsManager() const {
    return std::any_of(sessions_.begin(), sessions_.end(), [](const Session& session) {
        return std::any_of(session.subscriptions.begin(), session.subscriptions.end(),
                           [](const Subscription& each) { return each.follows(Topic::kManager); });
    });
}

// Tells subscribers that no event can arrive, and when one can again.
void Server::tellAbsence() {
    managerLook_.setWanted(settings_.absence && awaitsManager());
    if (!managerLook_.isDue()) return;
    Part part;
    part.absence = settings_.absence();
    managerLook_.looked(part.absence->empty() && settings_.managerProcess ? settings_.managerProcess() : 0);
    for (Session& session : sessions_) {
        for (Subscription& each : session.subscriptions) {
            if (!each.follows(Topic::kManager) || each.knownAbsence == *part.absence) continue;
            each.knownAbsence = *part.absence;
            session.connection->push(protocol::partLine(each.id, part));
        }
    }
}

void Server::ringAlarms() {
    const protocol::BoardClock now = clock_.now();
    for (Session& session : sessions_) {
        std::erase_if(session.alarms, [&](const Alarm& alarm) {
            if (alarm.at > now.time) return false;
            Part part;
            part.clock = now;
            answer(session, alarm.id, part);
            return true;
        });
    }
}

// Has the library's worker look at watches that are due. A look that is on its way is not queued again.
void Server::lookAtWatches() {
    const auto now = Steady::now();
    for (Session& session : sessions_) {
        for (Watching& watching : session.watches) {
            if (watching.watched->queued || (!watching.stale && now < watching.due)) continue;
            watching.stale = false;
            watching.due =
                now + std::chrono::milliseconds(static_cast<std::int64_t>(watching.watched->request.interval * 1000));
            watching.watched->queued = true;
            // Destroyed when the look is over, or has been given up.
            const std::shared_ptr<Watched> look(watching.watched.get(), [this, held = watching.watched](Watched*) {
                held->queued = false;
                wake();
            });
            library_.enqueue(
                session.connection, watching.id, [this, look](Reply& reply) { service_.look(*look, reply); }, true);
        }
    }
}

void Server::followLog() {
    std::uint32_t level = 0;
    bool wanted = false;
    for (const Session& session : sessions_) {
        for (const Subscription& each : session.subscriptions) {
            if (!each.follows(Topic::kLog)) continue;
            level = std::max(level, each.logLevel);
            wanted = true;
        }
    }
    if (!wanted) return LogTap::follow(0, {});
    LogTap::follow(level, [this](std::uint32_t of, std::string_view line) {
        Part part;
        part.log = protocol::LogLine{of, presentable(line)};
        publish(Topic::kLog, std::move(part));
    });
}

void Server::publishStatus(const std::string& service) {
    Part part;
    part.status = services_.statuses(service);
    publish(Topic::kStatus, std::move(part));
}

void Server::sessionEnded(const Session& session) {
    if (services_.disconnected(session.connection->descriptor())) publishStatus("");
}

// Returns how long the loop may wait for something to happen, in milliseconds; -1 without end.
int Server::patience() const {
    int wait = -1;
    const auto atMost = [&wait](std::int64_t milliseconds) {
        const int limit = static_cast<int>(std::clamp<std::int64_t>(milliseconds, 0, 3'600'000));
        wait = wait < 0 ? limit : std::min(wait, limit);
    };
    if (library_.isBusy() || manager_.isBusy()) atMost(kTick);
    if (const int left = managerLook_.patience(); left >= 0) atMost(left);
    const auto now = Steady::now();
    for (const Session& session : sessions_) {
        for (const Alarm& alarm : session.alarms) {
            const std::chrono::milliseconds left = clock_.until(alarm.at);
            if (left != std::chrono::milliseconds::max()) atMost(left.count());
        }
        for (const Watching& watching : session.watches) {
            if (watching.watched->queued) continue;
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(watching.due - now).count() + 1;
            atMost(watching.stale ? 0 : left);
        }
    }
    return wait;
}

void Server::readFrom(Session& session, bool& there) {
    std::vector<std::string> lines;
    there = session.connection->receive(lines);
    for (const std::string& line : lines) {
        if (!session.closing) handleLine(session, line);
    }
    there = there && !session.closing;
}

bool Server::run() {
    bool clientLeft = false;
    while (!stopping_ && !clientLeft) {
        std::vector<pollfd> polled{{wakeRead_, POLLIN, 0}};
        if (settings_.listening >= 0) polled.push_back({settings_.listening, POLLIN, 0});
        const std::size_t first = polled.size();
        for (const Session& session : sessions_) {
            const Connection& connection = *session.connection;
            // A client that does not read its answers gets no more of them.
            const int reading = connection.isCongested() ? 0 : POLLIN;
            const int writing = connection.hasUnsent() ? POLLOUT : 0;
            polled.push_back({connection.descriptor(), static_cast<short>(reading | writing), 0});
        }
        polled.push_back({managerLook_.descriptor(), POLLIN, 0});
        // Each part checks its own descriptors below, so only the manager's answer is used here.
        if (poll(polled.data(), polled.size(), patience()) > 0) managerLook_.happened();
        if (polled.back().revents != 0) managerLook_.ended();
        polled.pop_back();

        deliverNews();
        tellAbsence();
        ringAlarms();
        std::size_t i = first;
        for (auto session = sessions_.begin(); session != sessions_.end(); ++i) {
            const short happened = i < polled.size() ? polled[i].revents : short{0};
            bool there = true;
            if ((happened & POLLOUT) != 0) session->connection->flush();
            if ((happened & (POLLIN | POLLHUP | POLLERR)) != 0) readFrom(*session, there);
            if (there) {
                ++session;
                continue;
            }
            clientLeft = clientLeft || session->connection->descriptor() == settings_.connected;
            const Session ended = std::move(*session);
            session = sessions_.erase(session);
            sessionEnded(ended);
            followLog();
        }
        if (first == 2 && polled[1].revents != 0) accept();
        lookAtWatches();
        library_.check();
        manager_.check();
        managerLook_.setWanted(settings_.absence && awaitsManager());
    }
    LogTap::follow(0, {});
    const bool libraryEnded = library_.end();
    const bool managerEnded = manager_.end();
    return libraryEnded && managerEnded;
}

}  // namespace quorvel::hostd
