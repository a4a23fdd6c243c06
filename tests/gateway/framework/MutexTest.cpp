#include <gtest/gtest.h>
#include <quorvel.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

TEST(HostMutex, OfOneNameIsOneMutex) {
    void* first = nullptr;
    void* second = nullptr;
    void* other = nullptr;
    ASSERT_EQ(QuorvelOsCreateMutex("same", &first), 0U);
    ASSERT_EQ(QuorvelOsCreateMutex("same", &second), 0U);
    ASSERT_EQ(QuorvelOsCreateMutex("other", &other), 0U);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, other);
}

TEST(HostMutex, RefusesNull) {
    void* handle = nullptr;
    EXPECT_NE(QuorvelOsCreateMutex(nullptr, &handle), 0U);
    EXPECT_NE(QuorvelOsCreateMutex("name", nullptr), 0U);
    EXPECT_NE(QuorvelOsMutexLock(nullptr), 0U);
    EXPECT_NE(QuorvelOsMutexUnlock(nullptr), 0U);
}

TEST(HostMutex, ReportsASecondLockByTheSameThread) {
    void* handle = nullptr;
    ASSERT_EQ(QuorvelOsCreateMutex("twice", &handle), 0U);
    ASSERT_EQ(QuorvelOsMutexLock(handle), 0U);
    EXPECT_NE(QuorvelOsMutexLock(handle), 0U);
    EXPECT_EQ(QuorvelOsMutexUnlock(handle), 0U);
    EXPECT_NE(QuorvelOsMutexUnlock(handle), 0U);
}

TEST(HostMutex, KeepsThreadsApart) {
    void* handle = nullptr;
    ASSERT_EQ(QuorvelOsCreateMutex("apart", &handle), 0U);
    unsigned counter = 0;
    std::atomic<unsigned> failures{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int each = 0; each < 1000; ++each) {
                if (QuorvelOsMutexLock(handle) != 0) ++failures;
                ++counter;
                if (QuorvelOsMutexUnlock(handle) != 0) ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(counter, 4000U);
    EXPECT_EQ(failures, 0U);
}

}  // namespace
