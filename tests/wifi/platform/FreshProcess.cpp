#include "tests/wifi/platform/FreshProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/wifi/platform/RealCalls.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

#ifdef QUORVEL_COVERAGE
// The coverage of a fresh process counts too, although it skips its exit handlers.
extern "C" void __gcov_dump();
#endif

// Before the first test a child is forked that never touches the plug-in. Each fresh run is a fork of that child.

namespace quorvel::scripted {

namespace {

using Body = void (*)();

int requestEnd = -1;  // the tests' process writes the body's address here
int resultEnd = -1;   // and reads its outcome there

template <typename Value>
bool receive(int descriptor, Value& value) {
    return __real_read(descriptor, &value, sizeof value) == static_cast<ssize_t>(sizeof value);
}

template <typename Value>
bool send(int descriptor, Value value) {
    return write(descriptor, &value, sizeof value) == static_cast<ssize_t>(sizeof value);
}

[[noreturn]] void runBody(Body body) {
    Platform& platform = Platform::instance();
    platform.reset();
    platform.activate(true);
    body();
    platform.endThreads();
    platform.activate(false);
    (void)std::fflush(nullptr);
#ifdef QUORVEL_COVERAGE
    __gcov_dump();
#endif
    _exit(testing::UnitTest::GetInstance()->Failed() ? 1 : 0);
}

[[noreturn]] void serve(int requests, int results) {
    Body body = nullptr;
    while (receive(requests, body)) {
        const pid_t child = fork();
        if (child == 0) {
            runBody(body);
        }
        int status = -1;
        const bool ended = child > 0 && waitpid(child, &status, 0) == child;
        if (!send(results, ended ? status : -1)) {
            break;
        }
    }
    _exit(0);
}

class FreshProcesses : public testing::Environment {
  public:
    void SetUp() override {
        int requests[2] = {-1, -1};
        int results[2] = {-1, -1};
        ASSERT_EQ(pipe(requests), 0);
        ASSERT_EQ(pipe(results), 0);
        (void)std::fflush(nullptr);
        server_ = fork();
        ASSERT_GE(server_, 0);
        if (server_ == 0) {
            (void)__real_close(requests[1]);
            (void)__real_close(results[0]);
            serve(requests[0], results[1]);
        }
        (void)__real_close(requests[0]);
        (void)__real_close(results[1]);
        requestEnd = requests[1];
        resultEnd = results[0];
    }

    void TearDown() override {
        (void)__real_close(requestEnd);
        (void)__real_close(resultEnd);
        (void)waitpid(server_, nullptr, 0);
    }

  private:
    pid_t server_ = -1;
};

const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new FreshProcesses);

}  // namespace

bool runFresh(void (*body)()) {
    (void)std::fflush(nullptr);
    int status = -1;
    if (!send(requestEnd, body) || !receive(resultEnd, status)) {
        ADD_FAILURE() << "the process that keeps a fresh state is gone";
        return false;
    }
    if (!WIFEXITED(status)) {
        ADD_FAILURE() << "the fresh process was ended by signal " << WTERMSIG(status);
        return false;
    }
    return WEXITSTATUS(status) == 0;
}

}  // namespace quorvel::scripted
