// The way to the board, against a scripted host process on the board's socket.
#include "agent/hostd/HostdGateway.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "gateway/hostd/client/BoardSocket.h"

namespace quorvel::agent_test {
namespace {

using namespace quorvel::agent;
namespace protocol = quorvel::hostd::protocol;
using protocol::Part;

class Listener final : public GatewayListener {
  public:
    std::vector<std::string> heard;
    void onStationEvent(const StationEvent& event) override {
        heard.push_back((event.joined ? "joined " : "left ") + event.mac);
    }
    void onChanges(const std::vector<GatewayValue>& changes) override {
        for (const GatewayValue& change : changes)
            heard.push_back(change.path + "=" + change.value);
    }
    void onBoardTime(BoardInstant /*now*/) override {
        heard.push_back("time");
    }
    void onRestored() override {
        heard.push_back("restored");
    }
    void onRebooted() override {
        heard.push_back("rebooted");
    }
};

class HostdGatewayOn : public testing::Test {
  protected:
    HostdGatewayOn() {
        std::string place = (std::filesystem::temp_directory_path() / "quorvel-board-XXXXXX").string();
        EXPECT_NE(mkdtemp(place.data()), nullptr);
        folder = place;
        std::string problem;
        listening = hostd::listenForClients(folder, problem).release();
        EXPECT_GE(listening, 0) << problem;
        loop.watch(listening, POLLIN, [this](short) { accept(); });
        gateway =
            std::make_unique<HostdGateway>(loop, folder, [this](const std::string& line) { logged.push_back(line); });
        gateway->listen(&listener);
        gateway->onReady = [this] { ++ready; };
    }
    ~HostdGatewayOn() override {
        gateway.reset();
        hangUp();
        close(listening);
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    void accept() {
        peer = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        loop.watch(peer, POLLIN, [this](short) { read(); });
    }
    void hangUp() {
        if (peer < 0) return;
        loop.forget(peer);
        close(peer);
        peer = -1;
        received.clear();
    }
    void read() {
        char buffer[65536];
        const ssize_t count = recv(peer, buffer, sizeof buffer, 0);
        if (count <= 0) return hangUp();
        received.append(buffer, static_cast<std::size_t>(count));
        for (std::size_t end = received.find('\n'); end != std::string::npos; end = received.find('\n')) {
            const protocol::ParsedRequest parsed = protocol::parseRequest(received.substr(0, end));
            received.erase(0, end + 1);
            EXPECT_EQ(parsed.wrong, "");
            if (peer >= 0) answer(parsed);
        }
    }
    void tell(protocol::Id id, const Part& part) const {
        const std::string line = protocol::partLine(id, part);
        EXPECT_EQ(send(peer, line.data(), line.size(), MSG_NOSIGNAL), static_cast<ssize_t>(line.size()));
    }
    void answer(const protocol::ParsedRequest& parsed) {
        const std::string verb = protocol::verbOf(parsed.request);
        verbs.push_back(verb);
        last[verb] = parsed;
        Part part = scripted.contains(verb) ? scripted[verb] : Part{};
        if (verb == "hello") part.boot = protocol::Boot{life, ""};
        if (verb == "time") part.clock = protocol::BoardClock{100.5, true};
        part.done = verb != "subscribe" && verb != "watch" && verb != "wake" && verb != silent;
        if (hangUpOn == verb) return hangUp();
        tell(parsed.id, part);
    }
    template <typename Condition>
    void until(const Condition& condition) {
        const auto deadline = EventLoop::Clock::now() + std::chrono::seconds(20);
        while (!condition() && EventLoop::Clock::now() < deadline)
            (void)loop.once(std::chrono::milliseconds(50));
        EXPECT_TRUE(condition());
    }
    void connect() {
        ASSERT_TRUE(gateway->connect());
        until([this] { return ready == 1 && last.contains("subscribe"); });
    }

    EventLoop loop;
    std::string folder;
    int listening = -1;
    int peer = -1;
    std::string received;
    unsigned life = 0;
    int ready = 0;
    std::string silent;    ///< a verb whose answers do not end
    std::string hangUpOn;  ///< a verb at which the host process goes away
    std::vector<std::string> verbs;
    std::vector<std::string> logged;
    std::map<std::string, protocol::ParsedRequest> last;
    std::map<std::string, Part> scripted;
    Listener listener;
    std::unique_ptr<HostdGateway> gateway;
};

TEST_F(HostdGatewayOn, KnowsTheTimeWhenItIsReady) {
    connect();
    const BoardInstant before = gateway->boardTime();
    EXPECT_EQ(gateway->boardTime(), before);  // time stands still
    gateway->wakeAt(before + std::chrono::seconds(10));
    until([this] { return last.contains("wake"); });
    EXPECT_NEAR(std::get<protocol::Wake>(last["wake"].request).at, 110.5, 0.01);
    Part woken;
    woken.clock = protocol::BoardClock{111, true};
    woken.done = true;
    tell(last["wake"].id, woken);
    until([this] { return !listener.heard.empty(); });
    EXPECT_EQ(gateway->boardTime() - before, std::chrono::milliseconds(10500));
    EXPECT_EQ(listener.heard, std::vector<std::string>{"time"});
}

TEST_F(HostdGatewayOn, FindsNothingUnexpectedInABoardThatEndsTheConnection) {
    connect();
    hangUp();
    until([this] { return !logged.empty(); });
    EXPECT_EQ(logged.front(), "the board has ended the connection");
}

TEST_F(HostdGatewayOn, SaysWhatBreaksAConnection) {
    scripted["hello"].faults.push_back({protocol::FaultCode::kInternal, "", "another version", "", 0, ""});
    EXPECT_TRUE(gateway->connect());
    until([this] { return !logged.empty(); });
    EXPECT_EQ(logged.front(), "the connection to the board is broken: another version");
}

TEST_F(HostdGatewayOn, ReadsValuesAsTexts) {
    connect();
    scripted["get"].values = {
        {"Device.WiFi.SSID.1.SSID", "net"}, {"Device.WiFi.SSID.1.Enable", true}, {"Device.WiFi.Radio.1.MCS", -7}};
    scripted["get"].faults.push_back(
        {protocol::FaultCode::kNoSuchInstance, "Device.WiFi.SSID.9.", "none", "", 0, "line"});
    std::optional<GetAnswer> answer;
    gateway->get({"Device.WiFi."}, 2, [&](GetAnswer got) { answer = std::move(got); });
    until([&] { return answer.has_value(); });
    ASSERT_EQ(answer->values.size(), 3U);
    EXPECT_EQ(answer->values[0].value, "net");
    EXPECT_EQ(answer->values[1].value, "true");
    EXPECT_EQ(answer->values[2].value, "-7");
    ASSERT_EQ(answer->faults.size(), 1U);
    EXPECT_EQ(answer->faults[0].code, 7016U);
    EXPECT_EQ(answer->faults[0].reason, "none (line)");
    EXPECT_EQ(std::get<protocol::Get>(last["get"].request).maxDepth, 2U);
}

TEST_F(HostdGatewayOn, WritesWhatActsAtOnceAfterTheRest) {
    connect();
    protocol::ParameterDescription row;
    row.path = "Device.WiFi.AccessPoint.{i}.AC.{i}.AIFSN";
    row.type = protocol::ParameterType::kUnsignedInt;
    row.access = protocol::Access::kReadWrite;
    row.atOnce = true;
    scripted["describe"].parameters = {row};
    std::optional<std::vector<TableRow>> table;
    gateway->table([&](std::vector<TableRow> rows) { table = std::move(rows); });
    until([&] { return table.has_value(); });
    ASSERT_EQ(table->size(), 1U);
    EXPECT_EQ(table->front().object, "Device.WiFi.AccessPoint.{i}.AC.{i}.");
    EXPECT_EQ(table->front().type, "unsignedInt");
    EXPECT_EQ(table->front().access, "readWrite");

    scripted["set"].applied = {"Device.WiFi.SSID.1."};
    std::optional<SetAnswer> answer;
    const auto done = [&](SetAnswer got) { answer = std::move(got); };
    gateway->set({{"Device.WiFi.AccessPoint.1.AC.2.AIFSN", "3"}, {"Device.WiFi.SSID.1.SSID", "lab"}}, done);
    until([&] { return answer.has_value(); });
    EXPECT_EQ(answer->applied.size(), 2U);
    EXPECT_EQ(std::count(verbs.begin(), verbs.end(), "set"), 2);
    EXPECT_EQ(std::get<protocol::Set>(last["set"].request).settings.at(0).path, "Device.WiFi.AccessPoint.1.AC.2.AIFSN");
    // The rest failed: nothing acts at once.
    answer.reset();
    verbs.clear();
    scripted["set"].faults.push_back({protocol::FaultCode::kInternal, "Device.WiFi.SSID.1.", "no", "", 0, ""});
    gateway->set({{"Device.WiFi.AccessPoint.1.AC.2.AIFSN", "3"}, {"Device.WiFi.SSID.1.SSID", "lab"}}, done);
    until([&] { return answer.has_value(); });
    EXPECT_EQ(std::count(verbs.begin(), verbs.end(), "set"), 1);
    answer.reset();
    gateway->check({{"Device.WiFi.SSID.1.SSID", "lab"}}, done);
    until([&] { return answer.has_value(); });
    EXPECT_TRUE(std::get<protocol::Set>(last["set"].request).checkOnly);
    EXPECT_TRUE(std::get<protocol::Set>(last["set"].request).everyFault);
}

TEST_F(HostdGatewayOn, AsksForWhatTheLibraryDoes) {
    connect();
    int done = 0;
    gateway->save([&](const SaveAnswer& answer) {
        EXPECT_TRUE(answer.saved);
        ++done;
    });
    gateway->scan("Device.WiFi.Radio.1.", [&](const std::vector<GatewayFault>& faults) {
        EXPECT_TRUE(faults.empty());
        ++done;
    });
    scripted["instances"].instances = {"Device.WiFi.SSID.1."};
    gateway->instances({"Device.WiFi.SSID."},
                       [&](const std::vector<std::string>& rows, const std::vector<GatewayFault>&) {
                           EXPECT_EQ(rows.size(), 1U);
                           ++done;
                       });
    gateway->pushButton("Device.WiFi.AccessPoint.1.WPS.", [&](const std::vector<GatewayFault>&) { ++done; });
    gateway->reportStatus({{"endpoint", "x"}});
    gateway->reportTrace({{{"direction", "sent"}}});
    until([&] { return done == 4 && last.contains("trace.add"); });
    EXPECT_EQ(std::get<protocol::Set>(last["set"].request).settings.at(0).path,
              "Device.WiFi.Radio.1.Stats.DiagnosticsState");
    EXPECT_EQ(std::get<protocol::Operate>(last["operate"].request).text, "PushButton");
    EXPECT_EQ(std::get<protocol::ReportStatus>(last["report"].request).service, "usp");
}

TEST_F(HostdGatewayOn, TellsChangesAndStations) {
    connect();
    gateway->watch({"Device.WiFi.SSID.1.SSID"});
    until([this] { return last.contains("watch"); });
    Part change;
    change.values = {{"Device.WiFi.SSID.1.SSID", "new"}};
    tell(last["watch"].id, change);
    Part event;
    event.event.emplace();
    event.event->kind = protocol::StationEventKind::kAssociated;
    event.event->station = "AA:1";
    tell(last["subscribe"].id, event);
    until([this] { return listener.heard.size() == 2; });
    EXPECT_EQ(listener.heard, (std::vector<std::string>{"Device.WiFi.SSID.1.SSID=new", "joined AA:1"}));
    gateway->watch({});
    until([this] { return last.contains("unsubscribe"); });
    EXPECT_EQ(std::get<protocol::Unsubscribe>(last["unsubscribe"].request).subscription, last["watch"].id);
}

TEST_F(HostdGatewayOn, AnswersWhatIsLostAndConnectsAgain) {
    connect();
    gateway->watch({"Device.WiFi.SSID.1.SSID"});
    hangUpOn = "get";
    std::optional<GetAnswer> answer;
    gateway->get({"Device.WiFi."}, 0, [&](GetAnswer got) { answer = std::move(got); });
    until([&] { return answer.has_value(); });
    EXPECT_TRUE(answer->lost);
    EXPECT_EQ(answer->faults.at(0).code, 7003U);
    // Nobody is there: other requests fail at once.
    int failed = 0;
    gateway->save([&](const SaveAnswer& saved) { failed += saved.saved ? 0 : 1; });
    gateway->check({{"Device.WiFi.SSID.1.SSID", "x"}},
                   [&](const SetAnswer& checked) { failed += checked.faults.empty() ? 0 : 1; });
    gateway->instances({"Device.WiFi.SSID."},
                       [&](const auto&, const auto& faults) { failed += faults.empty() ? 0 : 1; });
    until([&] { return failed == 3; });
    last.erase("watch");
    until([this] { return ready == 2 && last.contains("watch"); });
    EXPECT_EQ(listener.heard, std::vector<std::string>{"restored"});
}

TEST_F(HostdGatewayOn, NoticesThatTheBoardHasRestarted) {
    connect();
    hangUpOn = "power";
    bool done = false;
    gateway->powerCycle(false, [&](const std::vector<GatewayFault>& faults) { done = faults.empty(); });
    until([&] { return done; });
    life = 1;
    until([this] { return ready == 2; });
    EXPECT_EQ(listener.heard, (std::vector<std::string>{"restored", "rebooted"}));
}

TEST_F(HostdGatewayOn, EndsWhenNoBoardComesBack) {
    connect();
    bool ended = false;
    gateway->onEnd = [&ended] { ended = true; };
    loop.forget(listening);
    close(listening);
    hostd::removeBoardSocket(folder);
    hangUp();
    until([&ended] { return ended; });
    EXPECT_FALSE(gateway->connect());
    listening = -1;
}

}  // namespace
}  // namespace quorvel::agent_test
