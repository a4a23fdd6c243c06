#include "gateway/manager/Store.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

Saved sample(const std::string& tag, std::size_t entries) {
    Saved saved;
    for (std::size_t i = 0; i < entries; ++i)
        saved.variables["0.0.v" + std::to_string(i)] = tag + std::string(100, 'x');
    saved.nvram["gone"] = std::nullopt;
    saved.nvram["raw"] = "\x80\xff\x7f" + tag;
    return saved;
}

Saved loaded(const Store& store) {
    std::string problem;
    Saved saved = store.load(problem);
    EXPECT_EQ(problem, "");
    return saved;
}

TEST(Store, GivesBackWhatWasSaved) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    EXPECT_EQ(loaded(store), Saved{});
    ASSERT_FALSE(store.save(sample("a", 3)));
    EXPECT_EQ(loaded(store), sample("a", 3));
    ASSERT_FALSE(store.save(sample("b", 1)));
    EXPECT_EQ(loaded(store), sample("b", 1));
}

TEST(Store, IsPrivateToTheUser) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    ASSERT_FALSE(store.save({}));
    struct stat status = {};
    ASSERT_EQ(stat(store.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(Store, KeepsADamagedFileAside) {
    const TemporaryFolder folder;
    for (const char* damage :
         {"", "{", "[]", "{\"version\":2}", R"({"version":1,"variables":{"a":1},"nvram":{}})",
          R"({"version":1,"variables":{}})", "{\"version\":1,\"nvram\":{},\"variables\":{\"a\":\"\\u20ac\"}}"}) {
        const Store store(folder.path("store"));
        std::ofstream(store.path()) << damage;
        std::string problem;
        EXPECT_EQ(store.load(problem), Saved{}) << damage;
        EXPECT_NE(problem.find("damaged"), std::string::npos) << damage;
        EXPECT_FALSE(std::filesystem::exists(store.path())) << damage;
        EXPECT_TRUE(std::filesystem::exists(store.path() + ".damaged")) << damage;
    }
}

TEST(Store, StandsWhenTheDiskIsFull) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    ASSERT_FALSE(store.save(sample("old", 2)));
    // A limit on file sizes fails the write half-way, as a full disk does.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    const rlimit tight = {4096, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto failure = store.save(sample("new", 200));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    (void)signal(SIGXFSZ, handler);
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->find("cannot write"), std::string::npos) << *failure;
    EXPECT_EQ(loaded(store), sample("old", 2));
    EXPECT_FALSE(std::filesystem::exists(store.path() + ".new"));
}

TEST(Store, SaysThatItsFolderIsMissing) {
    const TemporaryFolder folder;
    const Store store(folder.path("none/store"));
    const auto failure = store.save({});
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->find("none/store"), std::string::npos);
}

TEST(Store, IgnoresWhatAnInterruptedSaveLeft) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    ASSERT_FALSE(store.save(sample("old", 2)));
    std::ofstream(store.path() + ".new") << "{\"version\":";
    EXPECT_EQ(loaded(store), sample("old", 2));
    ASSERT_FALSE(store.save(sample("new", 2)));
    EXPECT_EQ(loaded(store), sample("new", 2));
}

TEST(Store, IsTheOldOneWhenTheSaverIsKilledHalfway) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    ASSERT_FALSE(store.save(sample("old", 2)));
    const pid_t saver = fork();
    ASSERT_GE(saver, 0);
    if (saver == 0) {
        (void)store.save(sample("new", 200), [] { (void)raise(SIGKILL); });
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(saver, &status, 0), saver);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(std::filesystem::file_size(store.path() + ".new"), encodeSaved(sample("new", 200)).size() / 2);
    EXPECT_EQ(loaded(store), sample("old", 2));
}

// How long a save takes here.
std::chrono::nanoseconds durationOf(const Store& store, const Saved& saved) {
    constexpr int kSaves = 8;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kSaves; ++i)
        EXPECT_FALSE(store.save(saved));
    return (std::chrono::steady_clock::now() - begin) / kSaves;
}

TEST(Store, IsTheOldOrTheNewOneWheneverTheSaverIsKilled) {
    const TemporaryFolder folder;
    const Store store(folder.path("store"));
    const Saved a = sample("a", 300);
    const Saved b = sample("b", 200);
    const std::chrono::nanoseconds duration = durationOf(store, a);
    constexpr int kRounds = 200;
    int point = 0;
    for (int round = 0; round < kRounds; ++round) {
        int progress[2];
        ASSERT_EQ(pipe(progress), 0);
        const pid_t saver = fork();
        ASSERT_GE(saver, 0);
        if (saver == 0) {
            // Saves until it is killed, and ends by itself should nobody do so.
            for (int i = 0; i < 2000; ++i) {
                const char byte = 0;
                if (store.save(i % 2 == 0 ? b : a)) _exit(1);
                if (write(progress[1], &byte, 1) != 1) _exit(1);
            }
            _exit(0);
        }
        (void)close(progress[1]);
        // A byte comes between two saves; from round to round the kill comes later in the next ones, which may take
        // longer than those that were measured.
        char byte = 0;
        ASSERT_EQ(read(progress[0], &byte, 1), 1);
        const auto moment = std::chrono::steady_clock::now() + duration * 3 * round / kRounds;
        while (std::chrono::steady_clock::now() < moment) {
        }
        ASSERT_EQ(kill(saver, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(saver, &status, 0), saver);
        (void)close(progress[0]);
        ASSERT_TRUE(WIFSIGNALED(status));
        // A leftover temporary file shows that the kill hit the save.
        point += std::filesystem::exists(store.path() + ".new") ? 1 : 0;
        const Saved after = loaded(store);
        EXPECT_TRUE(after == a || after == b) << round;
        (void)std::filesystem::remove(store.path() + ".new");
    }
    EXPECT_GT(point, 0);
    (void)std::printf("killed %d times, %d of them in the middle of a save\n", kRounds, point);
}

}  // namespace
}  // namespace quorvel::manager::test
