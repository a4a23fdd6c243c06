#include "common/BoardProcesses.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace quorvel::common {
namespace {

class Child {
  public:
    Child() : process_(fork()) {
        if (process_ != 0) return;
        for (;;)
            pause();
    }
    ~Child() {
        (void)kill(process_, SIGKILL);
        (void)waitpid(process_, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    [[nodiscard]] pid_t id() const {
        return process_;
    }

  private:
    pid_t process_;
};

bool has(const std::vector<pid_t>& processes, pid_t process) {
    return std::find(processes.begin(), processes.end(), process) != processes.end();
}

TEST(BoardProcesses, AreTheChildrenOfEachThread) {
    const Child own;
    pid_t other = 0;
    std::thread([&] {
        const Child child;
        other = child.id();
        EXPECT_TRUE(has(childrenOf(getpid()), own.id()));
        EXPECT_TRUE(has(childrenOf(getpid()), other));
    }).join();
    EXPECT_FALSE(has(childrenOf(getpid()), other));
    EXPECT_TRUE(childrenOf(own.id()).empty());
}

TEST(BoardProcesses, AreAllInSightUnlessTheBoardsFirstIsNamed) {
    const Child child;
    ASSERT_EQ(unsetenv("QUORVEL_BOARD_FIRST_PROCESS"), 0);
    EXPECT_TRUE(has(boardProcesses(), getpid()));
    ASSERT_EQ(setenv("QUORVEL_BOARD_FIRST_PROCESS", std::to_string(getpid()).c_str(), 1), 0);
    EXPECT_FALSE(has(boardProcesses(), getpid()));
    EXPECT_TRUE(has(boardProcesses(), child.id()));
    ASSERT_EQ(setenv("QUORVEL_BOARD_FIRST_PROCESS", std::to_string(getppid()).c_str(), 1), 0);
    EXPECT_TRUE(has(boardProcesses(), child.id())) << "and what is below them";
    ASSERT_EQ(unsetenv("QUORVEL_BOARD_FIRST_PROCESS"), 0);
}

}  // namespace
}  // namespace quorvel::common
