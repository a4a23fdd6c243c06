#include <gtest/gtest.h>
#include <pthread.h>
#include <stdio_ext.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <regex>
#include <string>
#include <vector>

#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

extern "C" void* qvl_thread_main_loop(void* callback);

namespace {

using quorvel::scripted::Platform;
using quorvel::scripted::PlatformTest;
using quorvel::scripted::ReadStep;
using quorvel::scripted::runFresh;
using Texts = std::vector<std::string>;

constexpr std::size_t kRecordSize = 124;
const char kMac[] = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
const char kMacText[] = "00:1A:2B:3C:4D:5E";

struct Event {
    std::uint32_t ap;
    std::uint32_t code;
    std::string record;
};

std::mutex eventsMutex;
std::condition_variable eventArrived;
std::vector<Event> events;
bool lockHeldInCallback = false;
std::size_t unwrittenInCallback = 0;  // printed but not yet written out

std::uint32_t takeEvent(std::uint32_t ap, std::uint32_t code, void* station) {
    {
        const std::lock_guard<std::mutex> guard(eventsMutex);
        events.push_back({ap, code, std::string(static_cast<const char*>(station), kRecordSize)});
        lockHeldInCallback = lockHeldInCallback || Platform::instance().lockHeld();
        unwrittenInCallback += __fpending(stdout);
    }
    eventArrived.notify_all();
    return 4711;  // the listener ignores it
}

// Waits until the callback has been called `count` times.
void awaitEvents(std::size_t count) {
    std::unique_lock<std::mutex> guard(eventsMutex);
    eventArrived.wait(guard, [count] { return events.size() >= count; });
}

void send(int peer, const std::string& message) {
    ASSERT_EQ(write(peer, message.data(), message.size()), static_cast<ssize_t>(message.size()));
}

void append(std::string& bytes, std::uint32_t value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string header(std::uint32_t radio, std::uint32_t bss, std::uint32_t code) {
    std::string bytes;
    append(bytes, radio);
    append(bytes, bss);
    append(bytes, code);
    bytes.append(kMac, sizeof kMac);
    bytes.append("\xFF\xFF", 2);
    return bytes;
}

// An event 8 whose bytes behind the header count up, so that each field differs from its neighbours.
std::string association(std::uint32_t radio, std::uint32_t bss) {
    std::string bytes = header(radio, bss, 8);
    for (std::size_t offset = bytes.size(); offset < 256; ++offset) {
        bytes.push_back(static_cast<char>(offset));
    }
    return bytes;
}

class Listener : public PlatformTest {
  protected:
    Listener() {
        expectBlocksLeft();
        const std::lock_guard<std::mutex> guard(eventsMutex);
        events.clear();
        lockHeldInCallback = false;
        unwrittenInCallback = 0;
    }

    // Runs the listener until the reads are used up; returns what it printed.
    std::string listen(std::vector<ReadStep> reads) {
        platform.scriptReads(std::move(reads));
        testing::internal::CaptureStdout();
        platform.runInThread(qvl_thread_main_loop, reinterpret_cast<void*>(&takeEvent));
        unwritten = __fpending(stdout);
        (void)std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }

    static std::string logLine(std::uint32_t radio, std::uint32_t bss, std::uint32_t code) {
        return "New STA Association Event on wl" + std::to_string(radio) + "." + std::to_string(bss) + ", Event[" +
               std::to_string(code) + "], STA MAC[" + kMacText + "]";
    }

    static std::string printed(std::uint32_t radio, std::uint32_t bss, std::uint32_t code, std::size_t length) {
        return "qvl_thread_main_loop: recev event on wl" + std::to_string(radio) + "." + std::to_string(bss) +
               " Event=" + std::to_string(code) + " STA MAC=[" + kMacText + "] len=" + std::to_string(length) + "\n";
    }

    static std::string received(std::size_t length) {
        return "qvl_thread_main_loop: receive total_len=" + std::to_string(length) + "\n";
    }

    // Whether the output is this, with a line number of the source in place of each "#".
    static bool reads(const std::string& output, std::string expected) {
        const auto escaped = std::regex_replace(expected, std::regex(R"([.\[\]])"), R"(\$&)");
        return std::regex_match(output, std::regex(std::regex_replace(escaped, std::regex("#"), "[1-9][0-9]*")));
    }

    std::size_t unwritten = 0;  // printed by the listener but not written out

    const std::string kReady = "qvl_thread_main_loop is ready for new msg...\n";
};

TEST_F(Listener, TakesTenThousandEventsInABurst) {
    // As many whole messages as fit into a read: 14 pairs of an event 12 and an event 8.
    constexpr std::size_t kEvents = 10'000;
    const std::string pair = header(0, 0, 12) + association(0, 0);
    std::vector<ReadStep> reads;
    for (std::size_t sent = 0; sent < kEvents;) {
        std::string bytes;
        for (; sent < kEvents && bytes.size() + pair.size() <= 4096; sent += 2)
            bytes += pair;
        reads.push_back({bytes});
    }
    // Only the allocation of the receive buffer succeeds.
    platform.failFrom("calloc", 2);
    platform.fail("malloc");
    listen(std::move(reads));
    platform.succeed("malloc");
    platform.succeed("calloc");
    ASSERT_EQ(events.size(), kEvents);
    for (std::size_t n = 0; n < kEvents; ++n)
        ASSERT_EQ(events[n].code, n % 2 == 0 ? 12U : 8U) << n;
}

TEST_F(Listener, GoesOnAfterAMessageSplitAtAnyByte) {
    const std::string pair = header(1, 2, 12) + association(1, 2);
    for (std::size_t split = 0; split <= pair.size(); ++split) {
        events.clear();
        // The halves are not joined; a whole message behind them still arrives.
        listen({{pair.substr(0, split) + std::string(split == 0 ? 1 : 0, '\0')},
                {pair.substr(split) + std::string(split == pair.size() ? 1 : 0, '\0')},
                {header(0, 0, 12)}});
        ASSERT_FALSE(events.empty()) << split;
        EXPECT_EQ(events.back().ap, 1U) << split;
        EXPECT_EQ(events.back().code, 12U) << split;
        EXPECT_LE(events.size(), 3U) << split;
    }
}

TEST_F(Listener, LeavesItsBufferAndNothingElse) {
    const std::size_t before = platform.liveBlocks();
    (void)listen({{header(0, 0, 12)}, {association(0, 0)}});
    EXPECT_EQ(platform.liveBlocks(), before + 1);
}

TEST_F(Listener, ConnectsToItsSocket) {
    EXPECT_EQ(listen({}), kReady);
    EXPECT_EQ(platform.callTexts({"socket"}), Texts{"socket(1, 1, 0)"});
    EXPECT_EQ(platform.connectedPath(), "/tmp/notify-socket");
    EXPECT_EQ(platform.connectedLength(), 110U);
    EXPECT_EQ(sizeof(notifySocketPath), 19U);
    EXPECT_STREQ(notifySocketPath, "/tmp/notify-socket");
    EXPECT_EQ(platform.callTexts({"read"}), Texts{"read(out, 4096)"});
}

TEST_F(Listener, HandsADisassociationOver) {
    const std::string output = listen({{header(1, 2, 12), 0, 0}});
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].ap, 11U);
    EXPECT_EQ(events[0].code, 12U);
    EXPECT_EQ(events[0].record, kMacText + std::string(kRecordSize - 17, '\0'));
    EXPECT_EQ(platform.logTexts(2), Texts{logLine(1, 2, 12)});
    EXPECT_EQ(output, kReady + received(20) + printed(1, 2, 12, 20));
}

TEST_F(Listener, HandsAnAssociationOverWithItsDetails) {
    const std::string message = association(2, 7);
    (void)listen({{message, 0, 0}});
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].ap, 24U);
    EXPECT_EQ(events[0].code, 8U);
    std::string expected(kRecordSize, '\0');
    expected.replace(0, 17, kMacText);
    expected[32] = message[118];
    expected[33] = message[119];
    expected.replace(36, 4, message, 120, 4);
    expected.replace(40, 12, message, 128, 12);
    expected.replace(52, 4, message, 140, 4);
    expected.replace(56, 64, message, 144, 64);
    expected.replace(120, 4, message, 208, 4);
    EXPECT_EQ(events[0].record, expected);
}

TEST_F(Listener, CopiesTheDetailTextAsText) {
    std::string message = association(0, 0);
    message.replace(144, 64, "short" + std::string(1, '\0') + std::string(58, 'x'));
    (void)listen({{message, 0, 0}});
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].record.substr(56, 64), "short" + std::string(59, '\0'));
    EXPECT_EQ(events[0].record.substr(120, 4), message.substr(208, 4));
}

TEST_F(Listener, TakesSeveralMessagesFromOneRead) {
    const std::string output = listen({{header(0, 0, 12) + association(1, 2), 0, 0}});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].code, 12U);
    EXPECT_EQ(events[1].code, 8U);
    EXPECT_EQ(events[1].ap, 11U);
    EXPECT_EQ(output, kReady + received(276) + printed(0, 0, 12, 276) + printed(1, 2, 8, 256));
}

TEST_F(Listener, TakesARecordAfresh) {
    (void)listen({{association(0, 0) + header(0, 1, 12), 0, 0}});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].record, kMacText + std::string(kRecordSize - 17, '\0'));
}

TEST_F(Listener, FillsItsBufferWithOneRead) {
    std::string burst;
    for (int i = 0; i < 16; ++i) {
        burst += association(0, 0);
    }
    (void)listen({{burst, 0, 0}});
    EXPECT_EQ(events.size(), 16U);
}

TEST_F(Listener, DropsAnAssociationThatIsTooShort) {
    const std::string output = listen({{association(0, 0).substr(0, 100), 0, 0}, {header(0, 0, 12), 0, 0}});
    EXPECT_EQ(platform.logTexts(0), Texts{"message length too short[100]"});
    EXPECT_EQ(platform.logTexts(2), (Texts{logLine(0, 0, 8), logLine(0, 0, 12)}));
    EXPECT_EQ(output, kReady + received(100) + printed(0, 0, 8, 100) + received(20) + printed(0, 0, 12, 20));
    ASSERT_EQ(events.size(), 1U);  // the next read is taken from its start
    EXPECT_EQ(events[0].code, 12U);
}

TEST_F(Listener, DoesNotPutASplitMessageTogether) {
    const std::string message = association(0, 0);
    (void)listen({{message.substr(0, 255), 0, 0}, {message.substr(255), 0, 0}});
    EXPECT_EQ(platform.logTexts(0), Texts{"message length too short[255]"});
    EXPECT_TRUE(events.empty());
}

TEST_F(Listener, DropsAReadBelowAHeader) {
    const std::string output = listen({{header(0, 0, 12).substr(0, 19), 0, 0}});
    EXPECT_EQ(output, kReady + received(19));
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(platform.logs().size(), 0U);
}

TEST_F(Listener, DropsARemainderBelowAHeader) {
    (void)listen({{header(0, 0, 12) + "0123456789", 0, 0}, {header(0, 1, 12), 0, 0}});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].ap, 2U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(Listener, DropsWhatFollowsAnEventItDoesNotKnow) {
    const std::string output = listen({{header(0, 0, 9) + header(0, 0, 12), 0, 0}});
    EXPECT_EQ(platform.logTexts(2), Texts{logLine(0, 0, 9)});
    EXPECT_EQ(platform.logTexts(0), Texts{"Invalid STA event[9]"});
    EXPECT_EQ(output, kReady + received(40) + printed(0, 0, 9, 40));
    EXPECT_TRUE(events.empty());
}

TEST_F(Listener, SaysNumbersSigned) {
    const std::string output = listen({{header(0xFFFFFFFFU, 0xFFFFFFFEU, 0xFFFFFFFDU), 0, 0}});
    EXPECT_EQ(platform.logTexts(2),
              Texts{std::string("New STA Association Event on wl-1.-2, Event[-3], STA MAC[") + kMacText + "]"});
    EXPECT_EQ(platform.logTexts(0), Texts{"Invalid STA event[-3]"});
    EXPECT_EQ(output, kReady + received(20) + "qvl_thread_main_loop: recev event on wl-1.-2 Event=-3 STA MAC=[" +
                          kMacText + "] len=20\n");
}

// Radio and BSS of a message are not checked.
TEST_F(Listener, ComputesTheAccessPointFromAnyIndices) {
    (void)listen({{header(2, 9, 12) + header(5, 0, 12), 0, 0}});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].ap, 26U);
    EXPECT_EQ(events[1].ap, 41U);
}

TEST_F(Listener, ReadsAgainAfterAFailedRead) {
    const std::string output = listen({{"", -1, EIO}, {header(0, 0, 12), 0, 0}});
    EXPECT_EQ(events.size(), 1U);
    EXPECT_TRUE(reads(output, kReady + "qvl_thread_main_loop:# socket read failure " + std::to_string(EIO) + "\n" +
                                  received(20) + printed(0, 0, 12, 20)))
        << output;
}

// Quirk: the listener reads a closed peer again and again without a pause.
TEST_F(Listener, KeepsReadingFromAPeerThatIsGone) {
    const std::vector<ReadStep> ends(200, ReadStep{"", 0, 0});
    const std::string output = listen(ends);
    std::size_t lines = 0;
    for (std::size_t at = output.find("socket read failure"); at != std::string::npos;
         at = output.find("socket read failure", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(lines, 200U);
    EXPECT_EQ(platform.callCount("read"), 201U);
    EXPECT_EQ(platform.callCount("close"), 0U);
    EXPECT_EQ(platform.sleeps().size(), 0U);
}

TEST_F(Listener, EndsWhenThereIsNoSocket) {
    platform.fail("socket");
    const std::string output = listen({});
    EXPECT_TRUE(reads(output, "qvl_thread_main_loop:# domain socket failure " + std::to_string(EMFILE) + "\n"))
        << output;
    EXPECT_EQ(platform.callCount("connect"), 0U);
    EXPECT_EQ(platform.callCount("read"), 0U);
    EXPECT_EQ(platform.logs().size(), 0U);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(platform.callCount("close"), 0U);
}

TEST_F(Listener, EndsWhenNobodyServesTheSocket) {
    platform.fail("connect");
    const std::string output = listen({});
    // Without a newline.
    EXPECT_TRUE(reads(output, "qvl_thread_main_loop:# connect error " + std::to_string(ECONNREFUSED))) << output;
    EXPECT_EQ(platform.logs().size(), 0U);
    EXPECT_EQ(platform.callCount("close"), 1U);
    EXPECT_EQ(platform.callCount("connect"), 1U);
    EXPECT_EQ(platform.callCount("read"), 0U);
    // The descriptor is forgotten: there is nothing left to close.
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(platform.callCount("close"), 1U);
}

TEST_F(Listener, ClosesItsSocketWhenItIsDeregisteredWhileItConnects) {
    platform.onConnect([] { EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U); });
    EXPECT_EQ(listen({{header(0, 0, 12), 0, 0}}), "");
    EXPECT_EQ(platform.callTexts({"connect", "close", "read"}).size(), 2U);
    EXPECT_EQ(platform.callTexts({"close"}), Texts{"close(socket)"});
    // The socket was never handed over: a later deregistration has none to close.
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(platform.callCount("close"), 1U);
}

TEST_F(Listener, EndsWithItsSocketOpenWhenThereIsNoMemory) {
    for (const char* allocation : {"calloc", "malloc"}) {
        platform.fail(allocation);
    }
    const std::string output = listen({});
    EXPECT_EQ(output, kReady);
    ASSERT_EQ(platform.logTexts(0).size(), 1U);
    EXPECT_TRUE(reads(platform.logTexts(0)[0], "qvl_thread_main_loop:# malloc fails!\n"));
    EXPECT_EQ(platform.logs().size(), 1U);
    EXPECT_EQ(platform.callCount("read"), 0U);
    EXPECT_EQ(platform.callCount("close"), 0U);
    // Deregistration closes the socket, once.
    platform.succeed("calloc");
    platform.succeed("malloc");
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(platform.callTexts({"close"}), Texts{"close(socket)"});
    EXPECT_EQ(platform.logCount(2, "Deregister done."), 2U);
}

TEST_F(Listener, CallsBackWithoutTheLock) {
    (void)listen({{header(0, 0, 12), 0, 0}});
    EXPECT_EQ(events.size(), 1U);
    EXPECT_FALSE(lockHeldInCallback);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 0U);
}

TEST_F(Listener, WritesItsLinesOutAtOnce) {
    (void)listen({{header(0, 0, 12) + association(0, 0), 0, 0}});
    EXPECT_EQ(events.size(), 2U);
    EXPECT_EQ(unwrittenInCallback, 0U);
    (void)listen({{header(0, 0, 9), 0, 0}});
    EXPECT_EQ(unwritten, 0U);
    (void)listen({{"x", 0, 0}});
    EXPECT_EQ(unwritten, 0U);
}

TEST_F(Listener, LogsWithTheImplementationsNames) {
    (void)listen({{header(0, 0, 9), 0, 0}, {header(0, 0, 8), 0, 0}});
    EXPECT_EQ(platform.logs().size(), 4U);
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiImpl");
        EXPECT_EQ(line.function, "qvl_thread_main_loop");
    }
}

class Registration : public Listener {
  protected:
    // The front end logs that it is done; then its implementation logs `text`.
    void expectDoneBefore(const std::string& function, std::uint32_t level, const std::string& text) const {
        const auto logs = platform.logs();
        ASSERT_EQ(logs.size(), 2U);
        EXPECT_EQ(logs[0].text, function + " DONE");
        EXPECT_EQ(logs[0].level, 3U);
        EXPECT_EQ(logs[0].file, "wifi/QuorvelWiFi");
        EXPECT_EQ(logs[0].function, function);
        EXPECT_EQ(logs[1].text, text);
        EXPECT_EQ(logs[1].level, level);
        EXPECT_EQ(logs[1].file, "wifi/QuorvelWiFiImpl");
        EXPECT_EQ(logs[1].function, function + "Impl");
    }
};

TEST_F(Registration, RefusesNoCallback) {
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(nullptr), 6U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Invalid input params"});
    ASSERT_EQ(platform.logs().size(), 1U);
    EXPECT_EQ(platform.logs()[0].function, "WiFiNewAPAssociatedDeviceCallbackRegister");
    EXPECT_EQ(platform.logs()[0].file, "wifi/QuorvelWiFi");
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(Registration, DeliversFromARealSocketUntilDeregistered) {
    const int peer = platform.openPeer();
    ASSERT_GE(peer, 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 0U);
    send(peer, header(1, 2, 12));
    awaitEvents(1);
    send(peer, association(0, 0));
    awaitEvents(2);
    EXPECT_EQ(events[0].ap, 11U);
    EXPECT_EQ(events[1].ap, 1U);
    platform.awaitCalls("read", 3);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    platform.endThreads();
    (void)testing::internal::GetCapturedStdout();
    EXPECT_EQ(platform.callTexts({"pthread_create", "pthread_cancel", "close"}),
              (Texts{"pthread_create(default)", "pthread_cancel(listener)", "close(socket)"}));
    EXPECT_TRUE(platform.logged(2, "create thread success. \n"));
    EXPECT_TRUE(platform.logged(2, "Deregister done."));
    char byte = 0;
    EXPECT_EQ(read(peer, &byte, 1), 0);  // the listener's end is closed
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 0U);
}

TEST_F(Registration, SaysDoneBeforeItActs) {
    platform.fail("pthread_create");
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 1U);
    expectDoneBefore("WiFiNewAPAssociatedDeviceCallbackRegister", 0, "create thread fail. \n");
}

TEST_F(Registration, EndSaysDoneBeforeItActs) {
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    expectDoneBefore("WiFiNewAPAssociatedDeviceCallbackDeRegister", 2, "Deregister done.");
}

// Quirk: registration does not check for a running listener.
TEST_F(Registration, StartsASecondListenerThatTakesThePlaceOfTheFirst) {
    testing::internal::CaptureStdout();
    const int firstPeer = platform.openPeer();
    ASSERT_GE(firstPeer, 0);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 0U);
    platform.awaitCalls("read", 1);
    const pthread_t first = qvlThreadId;
    const int secondPeer = platform.openPeer();
    ASSERT_GE(secondPeer, 0);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 0U);
    platform.awaitCalls("read", 2);
    EXPECT_EQ(pthread_equal(first, qvlThreadId), 0);
    EXPECT_EQ(platform.callCount("pthread_create"), 2U);
    EXPECT_EQ(platform.callCount("pthread_cancel"), 0U);
    send(secondPeer, header(0, 3, 12));
    awaitEvents(1);
    EXPECT_EQ(events[0].ap, 4U);
    platform.awaitCalls("read", 3);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(platform.callTexts({"pthread_cancel", "close"}), (Texts{"pthread_cancel(listener)", "close(socket)"}));
    // Closes the second socket; the first one stays open without an owner.
    char byte = 0;
    EXPECT_EQ(read(secondPeer, &byte, 1), 0);
    EXPECT_EQ(recv(firstPeer, &byte, 1, MSG_DONTWAIT), -1);
    platform.endThreads();
    (void)testing::internal::GetCapturedStdout();
    (void)close(firstPeer);
}

TEST_F(Registration, CancelsTheRunningListenerWhenAnotherCannotBeCreated) {
    const int peer = platform.openPeer();
    ASSERT_GE(peer, 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 0U);
    platform.awaitCalls("read", 1);
    platform.failAt("pthread_create", 2);
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 1U);
    platform.endThreads();
    (void)testing::internal::GetCapturedStdout();
    EXPECT_EQ(platform.callTexts({"pthread_cancel"}), Texts{"pthread_cancel(listener)"});
}

// The cancel that follows a failed creation must be harmless with the C library's own call.
TEST(FirstRegistration, SurvivesAThreadThatCannotBeCreated) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        platform.setCancelReal(true);
        platform.fail("pthread_create");
        EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 1U);
        EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 1U);
        EXPECT_EQ(platform.logCount(0, "create thread fail. \n"), 2U);
    }));
}

TEST(FirstRegistration, IsNotNeededToDeregister) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        platform.setCancelReal(true);
        EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
        EXPECT_EQ(platform.logTexts(3), Texts{"WiFiNewAPAssociatedDeviceCallbackDeRegister DONE"});
        EXPECT_EQ(platform.logTexts(2), Texts{"Deregister done."});
        EXPECT_EQ(platform.callCount("close"), 0U);
    }));
}

TEST_F(Registration, CanBeRepeatedAfterDeregistering) {
    testing::internal::CaptureStdout();
    for (std::size_t round = 1; round <= 3; ++round) {
        const int peer = platform.openPeer();
        ASSERT_GE(peer, 0);
        EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(&takeEvent), 0U);
        send(peer, header(0, 0, 12));
        awaitEvents(round);
        platform.awaitCalls("read", 2 * round);
        EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
        platform.endThreads();
        (void)close(peer);
    }
    (void)testing::internal::GetCapturedStdout();
    EXPECT_EQ(platform.callTexts({"close"}).size(), 3U);
}

}  // namespace
