#include "gateway/board/NamespaceAdvice.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "tests/gateway/framework/ScratchFolder.h"

namespace {

class NamespaceAdvice : public testing::Test {
  protected:
    NamespaceAdvice() {
        std::filesystem::create_directories(settings_.path() + "/kernel");
        std::filesystem::create_directories(settings_.path() + "/user");
    }
    [[nodiscard]] bool advises(const std::string& text) const {
        return quorvel::board::adviseOnNamespaces(EPERM, settings_.path()).find(text) != std::string::npos;
    }

    ScratchFolder settings_;
};

TEST_F(NamespaceAdvice, NamesTheSettingThatKeepsThemToRoot) {
    (void)settings_.write("kernel/unprivileged_userns_clone", "0\n");
    EXPECT_TRUE(advises("sysctl -w kernel.unprivileged_userns_clone=1"));
}

TEST_F(NamespaceAdvice, NamesTheLimitThatIsZero) {
    (void)settings_.write("kernel/unprivileged_userns_clone", "1\n");
    (void)settings_.write("user/max_user_namespaces", "100\n");
    (void)settings_.write("user/max_net_namespaces", "0\n");
    EXPECT_TRUE(advises("sysctl -w user.max_net_namespaces="));
}

TEST_F(NamespaceAdvice, NamesAppArmorsRestriction) {
    (void)settings_.write("kernel/apparmor_restrict_unprivileged_userns", "1\n");
    EXPECT_TRUE(advises("kernel.apparmor_restrict_unprivileged_userns=0"));
}

TEST_F(NamespaceAdvice, NamesTheFlagsOfAContainerOtherwise) {
    EXPECT_TRUE(advises("--security-opt seccomp=unconfined"));
    EXPECT_TRUE(advises("--cap-add SYS_ADMIN"));
}

TEST_F(NamespaceAdvice, SaysHowAnEmulatorGetsThem) {
    (void)settings_.write("kernel/unprivileged_userns_clone", "0\n");
    const std::string advice = quorvel::board::adviseOnNamespaces(EINVAL, settings_.path());
    EXPECT_NE(advice.find("unshare --user --map-root-user EMULATOR PROGRAM"), std::string::npos) << advice;
    EXPECT_EQ(advice.find("sysctl"), std::string::npos) << advice;
}

TEST_F(NamespaceAdvice, TellsTheSystemsReasonAndTheWayWithout) {
    EXPECT_TRUE(advises("Operation not permitted"));
    EXPECT_TRUE(advises("--sandbox folder"));
}

}  // namespace
