#include "gateway/hostd/Server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <future>
#include <nlohmann/json.hpp>
#include <numeric>
#include <thread>

#include "gateway/hostd/client/Client.h"
#include "gateway/hostd/protocol/Lines.h"
#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

using protocol::Part;
using protocol::Topic;

constexpr int kPatience = 10000;

// Lets a thread wait until the test opens it.
class Gate {
  public:
    ~Gate() {
        open();
    }
    void open() {
        if (!std::exchange(opened_, true)) promise_.set_value();
    }
    void pass() const {
        future_.wait();
    }

  private:
    std::promise<void> promise_;
    std::shared_future<void> future_ = promise_.get_future().share();
    bool opened_ = false;
};

// A socket without a client library.
class Raw {
  public:
    explicit Raw(int descriptor) : descriptor_(descriptor) {}
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;
    ~Raw() {
        (void)close(descriptor_);
    }
    void send(const std::string& text) const {
        ASSERT_EQ(write(descriptor_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    // Returns the next part; its id is -1 when the server has ended the connection or is silent.
    protocol::ParsedPart part() {
        for (;;) {
            const std::size_t end = pending_.find('\n');
            if (end != std::string::npos) {
                protocol::ParsedPart parsed = protocol::parsePart(pending_.substr(0, end));
                pending_.erase(0, end + 1);
                return parsed;
            }
            pollfd waiting{descriptor_, POLLIN, 0};
            char buffer[4096];
            const ssize_t count = poll(&waiting, 1, kPatience) == 1 ? read(descriptor_, buffer, sizeof buffer) : -1;
            if (count <= 0) return {-1, {}, false};
            pending_.append(buffer, static_cast<std::size_t>(count));
        }
    }
    // Waits for the end of the connection; what comes before it is dropped.
    bool ends() const {
        pollfd waiting{descriptor_, POLLIN, 0};
        char buffer[65536];
        while (poll(&waiting, 1, kPatience) == 1) {
            if (read(descriptor_, buffer, sizeof buffer) <= 0) return true;
        }
        return false;
    }
    [[nodiscard]] int descriptor() const {
        return descriptor_;
    }

  private:
    int descriptor_;
    std::string pending_;
};

// A server on a listening socket. Requests that ask after the manager wait at a gate, in the library's worker (set) and
// in the other one (control).
class OneServer : public testing::Test {
  protected:
    OneServer() {
        fake::reset();
        listening_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        length_ = sizeof address;
        // The kernel picks a name that no file has.
        if (bind(listening_, reinterpret_cast<sockaddr*>(&address), sizeof(sa_family_t)) != 0 ||
            listen(listening_, 64) != 0 || getsockname(listening_, reinterpret_cast<sockaddr*>(&name_), &length_) != 0)
            throw std::runtime_error("no sockets");
        Server::Settings settings;
        settings.listening = listening_;
        settings.program = "test";
        settings.boot = {3, "a test"};
        settings.canCyclePower = true;
        settings.health = [] { return "the manager is stopped"; };
        settings.listen = [] { return 0U; };
        settings.absence = [this] { return absence_.load() ? "the manager is gone" : ""; };
        settings.control = [this](const protocol::Json& command) {
            if (operationOf(command) == "wait") control_.pass();
            if (operationOf(command) == "counts") {
                return Controlled{
                    protocol::Json::parse(
                        R"({"ok":true,"bounds":[1],"requests":[{"name":"wl","seconds":2,"classes":[1,0]}]})"),
                    ""};
            }
            return Controlled{{{"ok", true}}, ""};
        };
        settings.board = [] { return protocol::BoardFacts{}; };
        settings.look = [this] {
            ++looks_;
            return protocol::LivePicture{};
        };
        server_ = std::make_unique<Server>(service_, heartbeat_, clock_, std::move(settings));
        running_ = std::thread([this] { ended_ = server_->run(); });
    }
    ~OneServer() override {
        library_.open();
        control_.open();
        server_->stop();
        if (running_.joinable()) running_.join();
        (void)close(listening_);
    }

    int connected() const {
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (connect(descriptor, reinterpret_cast<const sockaddr*>(&name_), length_) != 0)
            throw std::runtime_error("cannot connect");
        return descriptor;
    }

    std::unique_ptr<Client> client() const {
        return std::make_unique<Client>(connected(), "test");
    }

    // Returns all parts of an answer.
    static std::vector<Part> ask(Client& client, const protocol::Request& request) {
        std::vector<Part> parts;
        (void)client.ask(request, [&parts](const Part& part) { parts.push_back(part); });
        return parts;
    }

    template <typename Condition>
    static bool until(Client& client, const Condition& condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
        while (!condition() && std::chrono::steady_clock::now() < deadline)
            (void)client.wait(100);
        return condition();
    }

    // Occupies the library until library_ is opened.
    static protocol::Set occupation() {
        protocol::Set request;
        request.settings.push_back({"Device.WiFi.Radio.1.Channel", "40"});
        return request;
    }

    Plugin plugin_{QUORVEL_FAKE_PLUGIN};
    Heartbeat heartbeat_;
    Clock clock_{true};
    Gate library_;
    Gate control_;
    std::atomic<bool> absence_ = false;
    std::atomic<int> looks_ = 0;
    Service service_{plugin_,
                     heartbeat_,
                     {[this]() -> std::string {
                          library_.pass();
                          return "";
                      },
                      [this](protocol::Change change) { server_->publishChange(std::move(change)); }}};
    int listening_ = -1;
    sockaddr_un name_{};
    socklen_t length_ = 0;
    std::unique_ptr<Server> server_;
    std::thread running_;
    std::atomic<bool> ended_ = false;
};

const protocol::Get kChannel{{"Device.WiFi.Radio.1.Channel"}, 0, 0};

TEST_F(OneServer, AnswersInTheOrderAskedAndRepeatsTheId) {
    Raw raw(connected());
    const std::string lines = protocol::requestLine(1, protocol::Hello{}) + protocol::requestLine(7, kChannel) +
                              protocol::requestLine(8, protocol::Ping{});
    raw.send(lines.substr(0, 10));
    raw.send(lines.substr(10));
    const protocol::ParsedPart hello = raw.part();
    EXPECT_EQ(hello.id, 1);
    EXPECT_EQ(hello.part.version, protocol::kVersion);
    EXPECT_EQ(hello.part.program, "test");
    EXPECT_EQ(hello.part.boot->number, 3U);
    EXPECT_EQ(hello.part.boot->cause, "a test");
    const protocol::ParsedPart values = raw.part();
    EXPECT_EQ(values.id, 7);
    EXPECT_EQ(values.part.values.at(0).value, 36);
    EXPECT_EQ(raw.part().id, 7);
    const protocol::ParsedPart last = raw.part();
    EXPECT_EQ(last.id, 8);
    EXPECT_TRUE(last.part.done);
}

TEST_F(OneServer, RefusesAClientOfAnotherVersionAndDisconnectsIt) {
    Raw raw(connected());
    raw.send(protocol::requestLine(1, protocol::Hello{protocol::kVersion + 1, ""}));
    const Part refusal = raw.part().part;
    EXPECT_TRUE(refusal.done);
    EXPECT_EQ(refusal.faults.at(0).reason,
              "the client speaks version 2 of the protocol and the host process version 1; use programs of one build, "
              "or start the board again with the client's");
    EXPECT_TRUE(raw.ends());
}

TEST_F(OneServer, ExpectsTheVersionsBeforeAnythingElse) {
    Raw raw(connected());
    raw.send(protocol::requestLine(1, kChannel));
    EXPECT_EQ(raw.part().part.faults.at(0).reason,
              "the first request must be \"hello\" with the protocol's version, which is 1");
    EXPECT_TRUE(raw.ends());
}

TEST_F(OneServer, TellsAClientWhenARequestMakesNoSense) {
    Raw raw(connected());
    raw.send(protocol::requestLine(1, protocol::Hello{}) + "what?\n[]\n");
    (void)raw.part();
    for (int i = 0; i < 2; ++i) {
        const Part part = raw.part().part;
        EXPECT_EQ(part.faults.at(0).reason, "no JSON object of at most 100 levels");
        EXPECT_TRUE(part.done);
    }
    raw.send(protocol::requestLine(2, protocol::Alive{}));
    EXPECT_EQ(raw.part().id, 2);
}

TEST_F(OneServer, AnswersRequestsThatDoNotNeedTheLibraryWhileItIsBusy) {
    const auto busy = client();
    bool set = false;
    (void)busy->send(occupation(), [&set](const Part& part) { set = part.done; });
    const auto other = client();
    EXPECT_TRUE(ask(*other, protocol::Alive{}).at(0).done);
    EXPECT_EQ(ask(*other, protocol::Describe{{"Device.WiFi.Radio.1.Channel"}}).at(0).parameters.size(), 1U);
    EXPECT_TRUE(ask(*other, protocol::ReadTime{}).at(0).clock);
    EXPECT_TRUE(ask(*other, protocol::ReadBoard{}).at(0).board);
    EXPECT_TRUE(ask(*other, protocol::LookAround{}).at(0).live);
    EXPECT_TRUE(ask(*other, protocol::Control{{{"op", "time"}}}).at(0).control);
    EXPECT_TRUE(ask(*other, protocol::ReadStatus{}).at(0).done);
    EXPECT_FALSE(set);
    library_.open();
    EXPECT_TRUE(until(*busy, [&set] { return set; }));
}

TEST_F(OneServer, TellsWhatTheManagerDoesWhenTheLibraryDoesNotReturn) {
    const auto first = client();
    EXPECT_EQ(first->ask(occupation()).at(0).reason, "the manager is stopped");
    // The next request does not wait for the one that hangs.
    EXPECT_EQ(first->ask(kChannel).at(0).reason, "the manager is stopped");
    EXPECT_TRUE(ask(*first, protocol::Alive{}).at(0).done);
    library_.open();
    // Once it has returned, requests are served again.
    std::vector<Fault> faults;
    do {
        faults = first->ask(kChannel);
    } while (!faults.empty() && faults.at(0).reason == "the manager is stopped");
    EXPECT_TRUE(faults.empty());
}

TEST_F(OneServer, HandsEventsToThoseWhoFollowThem) {
    const auto follower = client();
    const auto other = client();
    std::vector<Part> parts;
    const protocol::Id id = follower->send(protocol::Subscribe{{Topic::kStations}, 0},
                                           [&parts](const Part& part) { parts.push_back(part); });
    ASSERT_TRUE(until(*follower, [&parts] { return parts.size() == 1; }));
    EXPECT_EQ(parts[0].listening, true);
    Part news;
    news.event = protocol::StationEvent{};
    news.event->station = "02:00:00:00:00:01";
    server_->publish(Topic::kStations, news);
    ASSERT_TRUE(until(*follower, [&parts] { return parts.size() == 2; }));
    EXPECT_EQ(parts[1].event->station, "02:00:00:00:00:01");
    (void)follower->ask(protocol::Unsubscribe{id});
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_TRUE(parts[2].done);
    EXPECT_TRUE(ask(*other, protocol::Ping{}).at(0).done);
}

TEST_F(OneServer, TellsOfChangesAndFaultsOfOtherClients) {
    library_.open();
    const auto follower = client();
    std::vector<Part> parts;
    (void)follower->send(protocol::Subscribe{{Topic::kChanges, Topic::kFaults}, 0},
                         [&parts](const Part& part) { parts.push_back(part); });
    ASSERT_TRUE(until(*follower, [&parts] { return parts.size() == 1; }));
    const auto other = client();
    EXPECT_TRUE(other->ask(occupation()).empty());
    ASSERT_TRUE(until(*follower, [&parts] { return parts.size() == 2; }));
    EXPECT_EQ(parts[1].change->kind, protocol::ChangeKind::kValues);
    EXPECT_EQ(parts[1].change->paths, std::vector<std::string>{"Device.WiFi.Radio.1.Channel"});
    protocol::Set refused;
    refused.settings.push_back({"Device.WiFi.Radio.1.Channel", "201"});
    EXPECT_EQ(other->ask(refused).size(), 1U);
    // A mistyped path is not published.
    EXPECT_EQ(other->ask(protocol::Get{{"Device.WiFi.Radio.1.Chanel"}, 0, 0}).size(), 1U);
    EXPECT_TRUE(other->ask(protocol::Control{{{"op", "neighbour.add"}}}).empty());
    ASSERT_TRUE(until(*follower, [&parts] { return parts.size() == 4; }));
    EXPECT_EQ(parts[2].faults.at(0).code, FaultCode::kValueRefused);
    EXPECT_EQ(parts[3].change->kind, protocol::ChangeKind::kSimulation);
    EXPECT_EQ(parts[3].change->what, "neighbour.add");
}

TEST_F(OneServer, DropsASubscriberThatDoesNotReadAndKeepsTheOthersGoing) {
    const auto follower = client();
    std::size_t heard = 0;
    (void)follower->send(protocol::Subscribe{{Topic::kTrace}, 0},
                         [&heard](const Part& part) { heard += part.trace.size(); });
    ASSERT_TRUE(until(*follower, [&] { return ask(*follower, protocol::Alive{}).size() == 1; }));
    Raw sleeper(connected());
    sleeper.send(protocol::requestLine(1, protocol::Hello{}) +
                 protocol::requestLine(2, protocol::Subscribe{{Topic::kTrace}, 0}));
    (void)sleeper.part();
    EXPECT_EQ(sleeper.part().part.listening, true);

    // More than the socket and the queue hold together.
    const auto reporter = client();
    constexpr std::size_t kReports = 64;
    const protocol::ReportTrace report{"usp", {{{"text", std::string(60000, 'x')}}}};
    for (std::size_t i = 0; i < kReports; ++i) {
        EXPECT_TRUE(reporter->ask(report).empty());
        EXPECT_TRUE(until(*follower, [&] { return heard == i + 1; }));
    }
    EXPECT_TRUE(sleeper.ends());
    EXPECT_TRUE(ask(*follower, protocol::Ping{}).at(0).done);
}

TEST_F(OneServer, LeavesRequestsUnreadOfAClientThatDoesNotReadItsAnswers) {
    Raw raw(connected());
    std::string requests = protocol::requestLine(1, protocol::Hello{});
    for (protocol::Id id = 2; id < 200; ++id)
        requests += protocol::requestLine(id, protocol::Describe{{"Device."}});
    raw.send(requests);
    const auto other = client();
    EXPECT_TRUE(ask(*other, protocol::Ping{}).at(0).done);
    // Once it reads, all answers come, in their order.
    (void)raw.part();
    for (protocol::Id id = 2; id < 200; ++id) {
        const protocol::ParsedPart parameters = raw.part();
        ASSERT_EQ(parameters.id, id);
        EXPECT_EQ(parameters.part.parameters.size(), 19U);
        EXPECT_TRUE(raw.part().part.done);
    }
}

TEST_F(OneServer, TellsFollowersThatTheManagerIsGoneAndBack) {
    const auto follower = client();
    std::vector<std::string> absences;
    (void)follower->send(protocol::Subscribe{{Topic::kManager}, 0}, [&absences](const Part& part) {
        if (part.absence) absences.push_back(*part.absence);
    });
    absence_ = true;
    ASSERT_TRUE(until(*follower, [&absences] { return absences.size() == 1; }));
    absence_ = false;
    ASSERT_TRUE(until(*follower, [&absences] { return absences.size() == 2; }));
    EXPECT_EQ(absences, (std::vector<std::string>{"the manager is gone", ""}));
}

TEST_F(OneServer, WakesAClientAtABoardTime) {
    clock_.onJump([this] { server_->boardChanged(); });
    const auto sleeper = client();
    std::vector<double> woken;
    for (const double at : {-1.0, 5.0, 50.0}) {
        (void)sleeper->send(protocol::Wake{at}, [&woken](const Part& part) { woken.push_back(part.clock->time); });
    }
    ASSERT_TRUE(until(*sleeper, [&woken] { return woken.size() == 1; }));
    EXPECT_EQ(woken[0], 0);
    clock_.learn(10, true);
    ASSERT_TRUE(until(*sleeper, [&woken] { return woken.size() == 2; }));
    EXPECT_EQ(woken[1], 10);
    // A new manager begins at 0; board time goes on.
    clock_.managerStarted();
    clock_.learn(39, true);
    EXPECT_EQ(ask(*sleeper, protocol::ReadTime{}).at(0).clock->time, 49);
    EXPECT_EQ(woken.size(), 2U);
    clock_.learn(40, true);
    ASSERT_TRUE(until(*sleeper, [&woken] { return woken.size() == 3; }));
}

TEST_F(OneServer, LooksAtWatchedValuesWhenTheBoardHasChanged) {
    library_.open();
    const auto watcher = client();
    std::vector<Part> parts;
    (void)watcher->send(protocol::Watch{{"Device.WiFi.Radio.*.Channel"}, 3600},
                        [&parts](const Part& part) { parts.push_back(part); });
    ASSERT_TRUE(until(*watcher, [&parts] { return parts.size() == 1; }));
    EXPECT_EQ(parts[0].listening, true);
    const auto other = client();
    EXPECT_TRUE(other->ask(occupation()).empty());
    ASSERT_TRUE(until(*watcher, [&parts] { return parts.size() == 2; }));
    EXPECT_EQ(parts[1].values.at(0).path, "Device.WiFi.Radio.1.Channel");
    EXPECT_EQ(parts[1].values.at(0).value, 40);
    const std::vector<Fault> faults = watcher->ask(protocol::Watch{{"Device."}, 0.1});
    EXPECT_EQ(faults.at(0).reason, "\"interval\" must be a number of seconds from 0.2 to 3600");
}

TEST_F(OneServer, LooksAroundAtMostOnceASecond) {
    const auto one = client();
    const auto two = client();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(ask(*one, protocol::LookAround{}).at(0).live);
        EXPECT_TRUE(ask(*two, protocol::LookAround{}).at(0).live);
    }
    EXPECT_LT(looks_, 10);
}

TEST_F(OneServer, OffersWhatServicesHaveReported) {
    auto agent = client();
    const auto reader = client();
    EXPECT_TRUE(agent->ask(protocol::ReportStatus{"usp", {{"sessions", 2}}}).empty());
    EXPECT_TRUE(agent->ask(protocol::ReportTrace{"usp", {{{"n", 1}}, {{"n", 2}}, {{"n", 3}}}}).empty());
    const std::vector<protocol::ServiceStatus> status = ask(*reader, protocol::ReadStatus{}).at(0).status;
    ASSERT_EQ(status.size(), 1U);
    EXPECT_EQ(status[0].service, "usp");
    EXPECT_TRUE(status[0].connected);
    EXPECT_EQ(status[0].status, (protocol::Json{{"sessions", 2}}));
    const std::vector<protocol::TraceEntry> trace = ask(*reader, protocol::ReadTrace{"", 1, 1}).at(0).trace;
    ASSERT_EQ(trace.size(), 1U);
    EXPECT_EQ(trace[0].number, 3U);
    EXPECT_EQ(trace[0].entry, (protocol::Json{{"n", 3}}));
    std::vector<Part> news;
    (void)reader->send(protocol::Subscribe{{Topic::kStatus}, 0}, [&news](const Part& part) { news.push_back(part); });
    ASSERT_TRUE(until(*reader, [&news] { return news.size() == 1; }));
    agent.reset();
    ASSERT_TRUE(until(*reader, [&news] { return news.size() == 2; }));
    EXPECT_FALSE(news[1].status.at(0).connected);
}

TEST_F(OneServer, CountsCallsAndRequests) {
    library_.open();
    const auto counted = [](Client& client) {
        const auto status = ask(client, protocol::ReadStatus{protocol::kHostService}).at(0).status;
        EXPECT_EQ(status.size(), 1U);
        return protocol::readHostCounts(status.at(0).status).value();
    };
    const auto reader = client();
    const auto gets = [](const protocol::HostCounts& counts) {
        std::uint64_t all = 0;
        for (const protocol::CallCount& call : counts.pluginCalls) {
            if (call.name == "get") all = std::accumulate(call.classes.begin(), call.classes.end(), std::uint64_t{0});
        }
        return all;
    };
    const protocol::HostCounts before = counted(*reader);
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(ask(*reader, kChannel).empty());
    const protocol::HostCounts after = counted(*reader);
    EXPECT_GE(gets(after), gets(before) + 3);  // finding the instances reads, too
    ASSERT_EQ(after.requests.size(), 3U);
    EXPECT_EQ(after.requests[0].name, "get");
    EXPECT_EQ(after.requests[0].count, 3U);
    EXPECT_EQ(after.requests[2].name, "status");
    EXPECT_EQ(after.requests[2].count, 2U);
    EXPECT_EQ(after.bounds.size() + 1, after.pluginCalls.at(0).classes.size());
    ASSERT_EQ(after.managerRequests.size(), 1U);
    EXPECT_EQ(after.managerRequests[0].name, "wl");
}

TEST_F(OneServer, KeepsItsOwnServiceToItself) {
    const auto agent = client();
    const std::vector<Fault> faults = agent->ask(protocol::ReportStatus{protocol::kHostService, {{"a", 1}}});
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].reason, "\"host\" is the host process's own service; report under another name");
}

TEST_F(OneServer, EndsForAPowerCycleWithItsCause) {
    const auto agent = client();
    EXPECT_TRUE(agent->ask(protocol::CyclePower{"RemoteReboot", true}).empty());
    running_.join();
    EXPECT_TRUE(ended_);
    EXPECT_EQ(server_->ending(), Ending::kFactoryReset);
    EXPECT_EQ(server_->cause(), "RemoteReboot");
}

}  // namespace
}  // namespace quorvel::hostd
