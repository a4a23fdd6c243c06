#include "gateway/hostd/Server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "common/JsonDepth.h"
#include "gateway/hostd/LogTap.h"

namespace quorvel::hostd {

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t kMaxLine = 1U << 20U;
constexpr int kTickMilliseconds = 100;
constexpr timeval kSendPatience{5, 0};
// Lines that nobody has taken yet; more are lost rather than held.
constexpr std::size_t kMaxLogLines = 4096;
constexpr std::chrono::milliseconds kBetweenLooks{500};

Fault noRequest() {
    return {FaultCode::kInternal,
            "",
            "no JSON object of at most " + std::to_string(common::kMaxJsonLevels) + " levels",
            "",
            0,
            ""};
}

Fault overdue(const std::string& health) {
    return {FaultCode::kInternal, "", health, "", 0, ""};
}

}  // namespace

Connection::~Connection() {
    (void)close(descriptor_);  // nothing is buffered
}

void Connection::send(const Json& line) {
    const std::string text = line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    const std::lock_guard lock(sending_);
    for (std::size_t sent = 0; sent < text.size() && !broken_;) {
        const ssize_t count = ::send(descriptor_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            broken_ = true;
            (void)shutdown(descriptor_, SHUT_RDWR);  // the reader notices
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

bool Connection::receive(std::vector<std::string>& lines) {
    char buffer[4096];
    const ssize_t count = recv(descriptor_, buffer, sizeof buffer, 0);
    if (count < 0 && errno == EINTR) return true;
    if (count <= 0) return false;
    pending_.append(buffer, static_cast<std::size_t>(count));
    for (std::size_t end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n')) {
        lines.push_back(pending_.substr(0, end));
        pending_.erase(0, end + 1);
    }
    return pending_.size() <= kMaxLine;
}

struct Server::Job {
    std::shared_ptr<Connection> connection;
    Json request;
    Json id;
    bool abandoned = false;  // the client has been told that no answer comes
};

class Server::JobReply : public Reply {
  public:
    JobReply(Server& server, std::shared_ptr<Job> job) : server_(server), job_(std::move(job)) {}

    void part(const Json& members) override {
        Json line{{"id", job_->id}};
        line.update(members);
        {
            const std::lock_guard lock(server_.mutex_);
            if (job_->abandoned) return;
        }
        job_->connection->send(line);
    }

  private:
    Server& server_;
    std::shared_ptr<Job> job_;
};

Server::Server(Service& service, Heartbeat& heartbeat, Settings settings)
    : service_(service), heartbeat_(heartbeat), settings_(std::move(settings)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("cannot make a pipe for the host process");
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
    if (settings_.connected < 0) return;
    (void)setsockopt(settings_.connected, SOL_SOCKET, SO_SNDTIMEO, &kSendPatience, sizeof kSendPatience);
    connections_.push_back(std::make_shared<Connection>(settings_.connected));
}

void Server::wake() const {
    const char byte = 0;
    (void)!write(wakeWrite_, &byte, 1);  // a full pipe wakes as well
}

void Server::stop() {
    ending_ = true;
    wake();
}

void Server::publish(const Json& event) {
    {
        const std::lock_guard lock(mutex_);
        events_.push_back(event.dump(-1, ' ', false, Json::error_handler_t::replace));
    }
    wake();
}

void Server::announceWait(unsigned seconds) {
    std::shared_ptr<Job> job;
    {
        const std::lock_guard lock(mutex_);
        job = current_;
    }
    if (job != nullptr) JobReply(*this, job).part({{"wait", seconds}});
}

void Server::work() {
    for (;;) {
        std::shared_ptr<Job> job;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
            if (ending_) return;
            job = jobs_.front();
            jobs_.pop_front();
            current_ = job;
        }
        JobReply reply(*this, job);
        heartbeat_.beat();
        try {
            if (job->request.value("do", "") == "events") {
                const std::uint32_t result = settings_.listen();
                if (result != 0) {
                    reply.fault(pluginFault(FaultCode::kInternal, "", "the plug-in cannot listen for events", result));
                }
                reply.part({{"listening", result == 0}});
            } else {
                service_.handle(job->request, reply);
            }
        } catch (const std::exception& error) {
            reply.fault(
                {FaultCode::kInternal, "", std::string("the request makes no sense: ") + error.what(), "", 0, ""});
        }
        heartbeat_.rest();
        const bool open = job->request.value("do", "") == "events";
        if (!open) reply.part({{"done", true}});
        const std::lock_guard lock(mutex_);
        current_.reset();
        stuck_ = false;
    }
}

void Server::accept() {
    const int descriptor = accept4(settings_.listening, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0) return;
    (void)setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &kSendPatience, sizeof kSendPatience);
    connections_.push_back(std::make_shared<Connection>(descriptor));
}

void Server::take(const std::shared_ptr<Connection>& connection, const std::string& line) {
    const Json request = common::parseShallow(line);
    if (!request.is_object()) {
        connection->send({{"id", nullptr}, {"faults", Json::array({toJson(noRequest())})}, {"done", true}});
        return;
    }
    const Json id = request.value("id", Json(nullptr));
    const auto verb = request.find("do");
    if (verb != request.end() && *verb == "shutdown") {
        connection->send({{"id", id}, {"done", true}});
        return stop();
    }
    if (verb != request.end() && *verb == "alive") {
        connection->send({{"id", id}, {"done", true}});
        return;
    }
    if (verb != request.end() && *verb == "unsubscribe") {
        if (!connection->eventId.empty()) connection->send({{"id", Json::parse(connection->eventId)}, {"done", true}});
        connection->eventId.clear();
        connection->logId.clear();
        followLog();
        connection->send({{"id", id}, {"done", true}});
        return;
    }
    if (verb != request.end() && *verb == "log") {
        connection->logId = id.dump();
        connection->logLevel = request.value("level", 0U);
        followLog();
        connection->send({{"id", id}, {"listening", true}});
        return;
    }
    if (verb != request.end() && *verb == "events") {
        connection->eventId = id.dump();
        if (listening_) {
            connection->send({{"id", id}, {"listening", true}});
            return;
        }
        listening_ = true;
    }
    enqueue(connection, request);
}

void Server::enqueue(const std::shared_ptr<Connection>& connection, const Json& request) {
    auto job = std::make_shared<Job>();
    job->connection = connection;
    job->request = request;
    job->id = request.value("id", Json(nullptr));
    {
        const std::lock_guard lock(mutex_);
        if (!stuck_) {
            jobs_.push_back(job);
            changed_.notify_one();
            return;
        }
    }
    connection->send({{"id", job->id}, {"faults", Json::array({toJson(overdue(settings_.health()))})}, {"done", true}});
}

void Server::checkWorker() {
    if (!heartbeat_.overdue()) return;
    std::vector<std::shared_ptr<Job>> lost;
    {
        const std::lock_guard lock(mutex_);
        if (current_ == nullptr || current_->abandoned) return;
        current_->abandoned = true;
        stuck_ = true;
        lost.push_back(current_);
        lost.insert(lost.end(), jobs_.begin(), jobs_.end());
        jobs_.clear();
    }
    const Json fault = toJson(overdue(settings_.health()));
    for (const auto& job : lost) {
        job->connection->send({{"id", job->id}, {"faults", Json::array({fault})}, {"done", true}});
    }
}

void Server::deliverEvents() {
    char drained[64];
    while (read(wakeRead_, drained, sizeof drained) > 0) {
    }
    std::deque<std::string> events;
    {
        const std::lock_guard lock(mutex_);
        events.swap(events_);
    }
    for (const std::string& event : events) {
        for (const auto& connection : connections_) {
            if (connection->eventId.empty()) continue;
            connection->send({{"id", Json::parse(connection->eventId)}, {"event", Json::parse(event)}});
        }
    }
}

// Who waits for events would wait in vain, and ought to know.
void Server::tellAbsence() {
    if (!settings_.absence) return;
    const bool awaited =
        std::any_of(connections_.begin(), connections_.end(), [](const auto& each) { return !each->eventId.empty(); });
    const auto now = std::chrono::steady_clock::now();
    if (!awaited || now < nextLook_) return;
    nextLook_ = now + kBetweenLooks;
    const std::string absence = settings_.absence();
    for (const auto& connection : connections_) {
        if (connection->eventId.empty() || connection->toldAbsence == absence) continue;
        connection->toldAbsence = absence;
        connection->send({{"id", Json::parse(connection->eventId)}, {"absence", absence}});
    }
}

void Server::followLog() {
    std::uint32_t level = 0;
    bool wanted = false;
    for (const auto& connection : connections_) {
        if (connection->logId.empty()) continue;
        level = std::max(level, connection->logLevel);
        wanted = true;
    }
    if (!wanted) return LogTap::follow(0, {});
    LogTap::follow(level, [this](std::uint32_t of, std::string_view line) {
        {
            const std::lock_guard lock(mutex_);
            if (log_.size() < kMaxLogLines) log_.emplace_back(of, presentable(line));
        }
        wake();
    });
}

void Server::deliverLog() {
    std::deque<std::pair<std::uint32_t, std::string>> lines;
    {
        const std::lock_guard lock(mutex_);
        lines.swap(log_);
    }
    for (const auto& [level, line] : lines) {
        for (const auto& connection : connections_) {
            if (connection->logId.empty() || level > connection->logLevel) continue;
            connection->send({{"id", Json::parse(connection->logId)}, {"log", {{"level", level}, {"line", line}}}});
        }
    }
}

bool Server::run() {
    std::thread worker([this] { work(); });
    bool clientLeft = false;
    while (!ending_ && !clientLeft) {
        std::vector<pollfd> polled{{wakeRead_, POLLIN, 0}};
        if (settings_.listening >= 0) polled.push_back({settings_.listening, POLLIN, 0});
        const std::size_t first = polled.size();
        for (const auto& connection : connections_)
            polled.push_back({connection->descriptor(), POLLIN, 0});
        (void)poll(polled.data(), polled.size(), kTickMilliseconds);  // whatever it says, the rest looks for itself

        deliverEvents();
        deliverLog();
        tellAbsence();
        const std::vector<std::shared_ptr<Connection>> served = connections_;
        for (std::size_t i = 0; i < served.size(); ++i) {
            if (polled[first + i].revents == 0) continue;
            std::vector<std::string> lines;
            const bool there = served[i]->receive(lines);
            for (const std::string& line : lines)
                take(served[i], line);
            if (there) continue;
            connections_.erase(std::find(connections_.begin(), connections_.end(), served[i]));
            clientLeft = settings_.connected >= 0;
            followLog();
        }
        if (first == 2 && polled[1].revents != 0) accept();
        checkWorker();
    }
    LogTap::follow(0, {});
    // A worker in the middle of a request may finish it, within what it has announced.
    ending_ = true;
    changed_.notify_all();
    for (;;) {
        {
            const std::lock_guard lock(mutex_);
            if (current_ == nullptr) break;
            if (stuck_ || heartbeat_.overdue()) {
                worker.detach();
                return false;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    {
        // The lock orders the flag before the worker's look at it.
        const std::lock_guard lock(mutex_);
        changed_.notify_all();
    }
    worker.join();
    return true;
}

}  // namespace quorvel::hostd
