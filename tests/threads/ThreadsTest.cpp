#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/threads/ThreadPlatform.h"
#include "tests/wifi/DataModel.h"
#include "tests/wifi/Silence.h"
#include "tests/wifi/platform/Resources.h"
#include "wifi/QuorvelWiFiExports.h"

// Many threads of a host in the library at once, while events arrive. Rounds are counted, nothing waits for time.

namespace quorvel::threads {

namespace {

using datamodel::Access;
using datamodel::Object;
using datamodel::Parameter;
using datamodel::Type;

constexpr unsigned kThreads = 4;
constexpr unsigned kRounds = 5;
constexpr unsigned kEvents = 200;
constexpr unsigned kRegistrations = 40;

// Starts all threads at one moment.
template <typename Body>
void inThreads(unsigned count, const Body& body) {
    // The tests' own tables are made before anybody shares them.
    (void)datamodel::objects();
    (void)datamodel::parameters();
    std::atomic<unsigned> ready = 0;
    std::vector<std::thread> threads;
    for (unsigned n = 0; n < count; ++n) {
        threads.emplace_back([&ready, &body, count, n] {
            ++ready;
            while (ready < count) {
                std::this_thread::yield();
            }
            body(n);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void readEverything(std::atomic<unsigned>& wrong) {
    for (const Parameter& parameter : datamodel::parameters()) {
        if (parameter.getter == nullptr || parameter.access == Access::Station) {
            continue;
        }
        alignas(8) char out[4096] = {};
        wrong += parameter.get(1, 1, out, 2048) > 6 ? 1 : 0;
    }
}

// Stages every parameter that takes the number 2 or the text "54" and applies the lot.
void writeEverything(const Object& object, std::atomic<unsigned>& wrong) {
    std::vector<std::uint32_t> context(object.contextSize / 4 + 1);
    wrong += object.initContext(context.data()) != 0 ? 1 : 0;
    for (const Parameter& parameter : datamodel::parametersOf(object.prefix)) {
        if (!parameter.staged()) {
            continue;
        }
        const std::uint32_t result = parameter.type == Type::String ? parameter.setText(context.data(), "54", 2)
                                                                    : parameter.setNumber(context.data(), 2);
        wrong += result != 0 && result != 8 ? 1 : 0;
    }
    wrong += object.apply(context.data()) > 6 ? 1 : 0;
}

void snapshotEverything(std::atomic<unsigned>& wrong) {
    for (const Object& object : datamodel::objects()) {
        std::vector<std::uint32_t> context(object.contextSize / 4 + 1);
        wrong += object.snapshot(context.data()) > 6 ? 1 : 0;
    }
}

std::mutex eventsMutex;
std::condition_variable eventArrived;
unsigned events = 0;

// Calls back into the library, as a host does.
std::uint32_t takeStation(std::uint32_t, std::uint32_t, void*) {
    std::uint32_t channel = 0;
    const std::uint32_t result = WiFiRadioChannelGet(1, &channel);
    {
        const std::lock_guard<std::mutex> guard(eventsMutex);
        events += result == 0 ? 1 : 0;
    }
    eventArrived.notify_all();
    return 0;
}

// The other end of the event socket.
class EventSource {
  public:
    EventSource() {
        char folder[] = "/tmp/threads-test-XXXXXX";
        EXPECT_NE(mkdtemp(folder), nullptr);
        folder_ = folder;
        path_ = folder_ + "/events";
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.c_str(), path_.size());
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 128), 0);
        connectTo(path_);
    }
    ~EventSource() {
        (void)close(listener_);
        (void)unlink(path_.c_str());
        (void)rmdir(folder_.c_str());
    }
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    [[nodiscard]] int accept() const {
        return ::accept(listener_, nullptr, nullptr);
    }

    // Accepts one connection after the other, in a thread of its own, and closes each once its peer has, until `stop`.
    void acceptAll() {
        acceptor_ = std::thread([this] {
            for (int connection = accept(); connection >= 0; connection = accept()) {
                accepted_ = connection;
                char byte = 0;
                while (!stopped_ && read(connection, &byte, 1) > 0) {
                }
                accepted_ = -1;
                (void)close(connection);
            }
        });
    }
    void stop() {
        stopped_ = true;
        (void)shutdown(listener_, SHUT_RDWR);
        // A peer that was left open must not keep the test waiting.
        const int accepted = accepted_;
        if (accepted >= 0) (void)shutdown(accepted, SHUT_RDWR);
        acceptor_.join();
    }

    static void send(int connection) {
        const std::uint32_t message[5] = {0, 1, 12, 0, 0};
        EXPECT_EQ(::send(connection, message, sizeof message, MSG_NOSIGNAL), static_cast<ssize_t>(sizeof message));
    }

  private:
    std::string folder_;
    std::string path_;
    int listener_ = -1;
    std::thread acceptor_;
    std::atomic<bool> stopped_ = false;
    std::atomic<int> accepted_ = -1;
};

// The library's host need not join the listener; the test does, so that its end is ordered before the next step.
void endListener() {
    const pthread_t thread = qvlThreadId;
    EXPECT_EQ(WiFiNewAPAssociatedDeviceCallbackDeRegister(), 0U);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
}

}  // namespace

TEST(Threads, ReadStageApplyAndSnapshotWhileEventsArrive) {
    std::atomic<unsigned> wrong = 0;
    const EventSource source;
    ASSERT_EQ(WiFiLock(), 0U);
    ASSERT_EQ(WiFiUnlock(), 0U);
    std::optional<scripted::Silence> silence(std::in_place);
    ASSERT_EQ(WiFiNewAPAssociatedDeviceCallbackRegister(takeStation), 0U);
    const int connection = source.accept();
    ASSERT_GE(connection, 0);
    inThreads(kThreads + 1, [&wrong, connection](unsigned n) {
        if (n == kThreads) {
            for (unsigned event = 0; event < kEvents; ++event) {
                EventSource::send(connection);
            }
            return;
        }
        for (unsigned round = 0; round < kRounds; ++round) {
            readEverything(wrong);
            for (const Object& object : datamodel::objects()) {
                writeEverything(object, wrong);
            }
            snapshotEverything(wrong);
        }
    });
    {
        std::unique_lock<std::mutex> guard(eventsMutex);
        eventArrived.wait(guard, [] { return events == kEvents; });
    }
    endListener();
    (void)close(connection);
    silence.reset();
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(events, kEvents);
}

TEST(Threads, RegisterAndDeregisterRepeatedlyWhileOthersRead) {
    std::atomic<unsigned> wrong = 0;
    const EventSource source;
    ASSERT_EQ(WiFiLock(), 0U);
    ASSERT_EQ(WiFiUnlock(), 0U);
    std::optional<scripted::Silence> silence(std::in_place);
    inThreads(kThreads, [&wrong, &source](unsigned n) {
        if (n != 0) {
            for (unsigned round = 0; round < kRounds; ++round) {
                readEverything(wrong);
            }
            return;
        }
        for (unsigned registration = 0; registration < kRegistrations; ++registration) {
            unsigned before = 0;
            {
                const std::lock_guard<std::mutex> guard(eventsMutex);
                before = events;
            }
            wrong += WiFiNewAPAssociatedDeviceCallbackRegister(takeStation) != 0 ? 1 : 0;
            const int connection = source.accept();
            EventSource::send(connection);
            {
                std::unique_lock<std::mutex> guard(eventsMutex);
                eventArrived.wait(guard, [before] { return events > before; });
            }
            endListener();
            (void)close(connection);
        }
    });
    silence.reset();
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(events, kRegistrations);
}

namespace {

constexpr unsigned kPairs = 1000;

std::size_t openDescriptors() {
    return scripted::entriesOf("/proc/self/fd");
}

// Registers and deregisters, each time a little later, and lets several listeners end beside the next ones; returns
// when all of them have ended.
void registerAndDeregister() {
    constexpr unsigned kEndingAtOnce = 16;
    constexpr unsigned kLatest = 40;
    unsigned failures = 0;
    const scripted::Silence silence;
    std::vector<pthread_t> ending;
    const auto joinAll = [&ending, &failures] {
        for (const pthread_t thread : ending) {
            failures += pthread_join(thread, nullptr) != 0 ? 1 : 0;
        }
        ending.clear();
    };
    for (unsigned pair = 0; pair < kPairs; ++pair) {
        failures += WiFiNewAPAssociatedDeviceCallbackRegister(takeStation) != 0 ? 1 : 0;
        ending.push_back(qvlThreadId);
        for (unsigned later = 0; later < pair % kLatest; ++later) {
            std::this_thread::yield();
        }
        failures += WiFiNewAPAssociatedDeviceCallbackDeRegister() != 0 ? 1 : 0;
        if (ending.size() == kEndingAtOnce) joinAll();
    }
    joinAll();
    EXPECT_EQ(failures, 0U);
}

}  // namespace

TEST(Registrations, LeaveNoDescriptorWhereAServerListens) {
    EventSource source;
    const std::size_t before = openDescriptors();
    source.acceptAll();
    registerAndDeregister();
    source.stop();
    EXPECT_EQ(openDescriptors(), before);
}

// The server's queue is full before long: listeners are cancelled while they wait for their turn to connect.
TEST(Registrations, LeaveNoDescriptorWhereAServerAcceptsNothing) {
    const EventSource source;
    const std::size_t before = openDescriptors();
    registerAndDeregister();
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Registrations, LeaveNoDescriptorWhereNobodyListens) {
    { const EventSource gone; }
    const std::size_t before = openDescriptors();
    registerAndDeregister();
    EXPECT_EQ(openDescriptors(), before);
}

// A descriptor that is closed twice may be another thread's by then.
TEST(Registrations, CloseNoDescriptorOfAnotherThread) {
    EventSource source;
    source.acceptAll();
    std::atomic<bool> done = false;
    std::atomic<unsigned> lost = 0;
    std::thread other([&done, &lost] {
        while (!done) {
            const int descriptor = dup(STDOUT_FILENO);
            std::this_thread::yield();
            lost += close(descriptor) != 0 ? 1 : 0;
        }
    });
    registerAndDeregister();
    done = true;
    other.join();
    source.stop();
    EXPECT_EQ(lost, 0U);
}

TEST(Threads, MakeTheLockTogether) {
    std::atomic<unsigned> wrong = 0;
    inThreads(kThreads, [&wrong](unsigned) {
        std::uint32_t channel = 0;
        wrong += WiFiRadioChannelGet(1, &channel) != 0 || channel != 1 ? 1 : 0;
    });
    EXPECT_EQ(wrong, 0U);
}

TEST(Threads, ReadAccessPointsWhileSlotsChange) {
    std::atomic<unsigned> wrong = 0;
    ASSERT_EQ(WiFiLock(), 0U);
    ASSERT_EQ(WiFiUnlock(), 0U);
    inThreads(kThreads, [&wrong](unsigned n) {
        for (unsigned round = 0; round < 100 * kRounds; ++round) {
            if (n == 0) {
                wrong += WiFiSystemAccessPointDelete(24) != 0 ? 1 : 0;
                wrong += WiFiSystemAccessPointCreate(3, 24) != 0 ? 1 : 0;
                continue;
            }
            // Of the access point that moves, either answer is right; of another, only one.
            std::uint8_t enabled = 0;
            (void)WiFiAccessPointEnableGet(24, &enabled);
            wrong += WiFiAccessPointEnableGet(1, &enabled) != 0 ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0U);
}

TEST(Threads, SetContentionParametersAtOnce) {
    std::atomic<unsigned> wrong = 0;
    ASSERT_EQ(WiFiLock(), 0U);
    ASSERT_EQ(WiFiUnlock(), 0U);
    // Without the lock, by design: each thread's text is its own, and the store's last one stays.
    inThreads(kThreads, [&wrong](unsigned n) {
        for (unsigned round = 0; round < 100 * kRounds; ++round) {
            std::uint32_t value = 0;
            wrong += WiFiAccessPointACAIFSNSet(nullptr, 1, 1 + n, 2) != 0 ? 1 : 0;
            wrong += WiFiAccessPointACAIFSNGet(1, 1 + n, &value) != 0 ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0U);
}

}  // namespace quorvel::threads
