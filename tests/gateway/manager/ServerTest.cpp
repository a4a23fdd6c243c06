#include "gateway/manager/Server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "common/UnixListener.h"
#include "gateway/manager/Connection.h"
#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

// A manager in a thread of its own, on sockets of its own.
class Running {
  public:
    explicit Running(const TemporaryFolder& folder)
        : service_(shippedBoard("tri-band"), Store(folder.path("store")), still(), 1),
          server_(service_, {folder.path("socket"), folder.path("notify"), ""}) {
        EXPECT_EQ(pipe2(stop_, O_CLOEXEC), 0);
        EXPECT_EQ(server_.open(), "");
        thread_ = std::thread([this] { server_.run(stop_[0]); });
    }
    ~Running() {
        EXPECT_EQ(write(stop_[1], "", 1), 1);
        thread_.join();
        (void)close(stop_[0]);
        (void)close(stop_[1]);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

  private:
    static BoardClock still() {
        BoardClock clock([] { return Milliseconds{0}; });
        clock.startVirtual();
        return clock;
    }

    Service service_;
    Server server_;
    int stop_[2] = {-1, -1};
    std::thread thread_;
};

class Manager : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(setenv("QUORVEL_WLAN_SOCKET", folder_.path("socket").c_str(), 1), 0);
        connection_.expectManager(false);
    }

    // The variable's text, or "(no answer)", or "(absent)".
    std::string get(const char* name) {
        Request request;
        request.texts[0] = name;
        Answer answer;
        if (!connection_.call(request, answer)) return "(no answer)";
        if (answer.result == 0) return "(absent)";
        return {reinterpret_cast<const char*>(answer.blocks[0].bytes.data()), answer.blocks[0].bytes.size()};
    }

    std::string control(const char* text) {
        Request request;
        request.operation = Operation::kControl;
        request.texts[0] = text;
        std::int32_t result = 0;
        char* answer = connection_.callLong(request, result);
        std::string copy = answer == nullptr ? "(no answer)" : answer;
        std::free(answer);
        return copy;
    }

    int connectTo(const char* name) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const std::string path = folder_.path(name);
        std::memcpy(address.sun_path, path.c_str(), path.size());
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        return descriptor;
    }

    TemporaryFolder folder_;
    Connection connection_;
};

TEST_F(Manager, AnswersThroughItsSocket) {
    const Running running(folder_);
    EXPECT_EQ(get("radio_number"), "3");
    EXPECT_EQ(get("wlNoSuchThing"), "(absent)");
}

TEST_F(Manager, ThatIsNotThereFailsAtOnce) {
    EXPECT_EQ(get("radio_number"), "(no answer)");
}

TEST_F(Manager, ThatIsJustBeingStartedIsWaitedFor) {
    connection_.expectManager(true);
    std::string value;
    std::thread early([&] { value = get("radio_number"); });
    const Running running(folder_);
    early.join();
    EXPECT_EQ(value, "3");
}

TEST_F(Manager, IsFoundAgainAfterItWasStartedAnew) {
    {
        const Running running(folder_);
        EXPECT_EQ(get("radio_number"), "3");
    }
    EXPECT_EQ(get("radio_number"), "(no answer)");
    const Running running(folder_);
    EXPECT_EQ(get("radio_number"), "3");
}

TEST_F(Manager, KeepsItsSocketsPrivate) {
    const Running running(folder_);
    for (const char* name : {"socket", "notify"}) {
        struct stat status = {};
        ASSERT_EQ(stat(folder_.path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0077U, 0U);
    }
}

TEST_F(Manager, DoesNotTakeASocketThatIsServed) {
    const Running running(folder_);
    std::string problem;
    EXPECT_FALSE(common::listenOn(folder_.path("socket"), problem));
    EXPECT_NE(problem.find("another"), std::string::npos) << problem;
    EXPECT_EQ(get("radio_number"), "3");
}

TEST_F(Manager, DropsAnswersWhenToldTo) {
    const Running running(folder_);
    (void)control(R"({"op":"fault","fault":"drop","count":2})");
    EXPECT_EQ(get("radio_number"), "(no answer)");
    EXPECT_EQ(get("radio_number"), "(no answer)");
    EXPECT_EQ(get("radio_number"), "3");
}

TEST_F(Manager, WithHalfAnAnswerOrTooLongAnOneIsNotBelieved) {
    const Running running(folder_);
    for (const char* fault : {R"({"op":"fault","fault":"truncate"})", R"({"op":"fault","fault":"oversize"})"}) {
        (void)control(fault);
        EXPECT_EQ(get("radio_number"), "(no answer)") << fault;
        EXPECT_EQ(get("radio_number"), "3") << fault;
    }
}

TEST_F(Manager, ThatHangsIsGivenUpOnAndFoundAgain) {
    const Running running(folder_);
    (void)control(R"({"op":"fault","fault":"hang","seconds":2.5})");
    EXPECT_EQ(get("radio_number"), "(no answer)");
    std::string value;
    // Each of these gives up early, so that this ends well within their number.
    for (int i = 0; i < 100 && value != "3"; ++i)
        value = get("radio_number");
    EXPECT_EQ(value, "3");
}

TEST_F(Manager, CutsOffAClientThatSendsRubbish) {
    const Running running(folder_);
    for (const std::string& rubbish :
         {std::string("\xff\xff\xff\xff"), std::string(8, '\0'), std::string("\x08\0\0\0\x01\0\0\0\0\0\0\0", 12)}) {
        const int descriptor = connectTo("socket");
        ASSERT_EQ(send(descriptor, rubbish.data(), rubbish.size(), MSG_NOSIGNAL), static_cast<ssize_t>(rubbish.size()));
        char byte = 0;
        EXPECT_EQ(recv(descriptor, &byte, 1, 0), 0);
        (void)close(descriptor);
    }
    EXPECT_EQ(get("radio_number"), "3");
}

TEST_F(Manager, TellsListenersOfStations) {
    const Running running(folder_);
    const int descriptor = connectTo("notify");
    EXPECT_EQ(get("radio_number"), "3");  // by now the listener is known
    EXPECT_EQ(control(R"({"op":"station.join","mac":"02:00:00:00:00:77","bss":"wl1.2"})").rfind("{\"ok\":true", 0), 0U);
    unsigned char message[256];
    ASSERT_EQ(recv(descriptor, message, sizeof message, MSG_WAITALL), 256);
    EXPECT_EQ(message[0], 1);
    EXPECT_EQ(message[4], 2);
    EXPECT_EQ(message[8], 8);
    (void)control(R"({"op":"station.leave","mac":"02:00:00:00:00:77"})");
    ASSERT_EQ(recv(descriptor, message, 20, MSG_WAITALL), 20);
    EXPECT_EQ(message[8], 12);
    EXPECT_EQ(message[17], 0x77);
    (void)close(descriptor);
}

TEST_F(Manager, IsNotHeldUpByAListenerThatDoesNotRead) {
    const Running running(folder_);
    const int descriptor = connectTo("notify");
    EXPECT_EQ(get("radio_number"), "3");
    for (int i = 0; i < 6000; ++i) {
        (void)control(R"({"op":"station.leave","mac":"02:5a:00:00:01:01"})");
        (void)control(R"({"op":"station.join","mac":"02:5a:00:00:01:01"})");
    }
    EXPECT_EQ(get("radio_number"), "3");
    // The end follows the bytes that were sent.
    char piece[4096];
    ssize_t got = 0;
    std::size_t total = 0;
    while ((got = recv(descriptor, piece, sizeof piece, 0)) > 0)
        total += static_cast<std::size_t>(got);
    EXPECT_EQ(got, 0);
    EXPECT_LT(total, 6000U * 276U);
    (void)close(descriptor);
}

}  // namespace
}  // namespace quorvel::manager::test
