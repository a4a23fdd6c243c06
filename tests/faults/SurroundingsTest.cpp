// A board leaves its surroundings unchanged, also when it ends badly.
#include <net/if.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "tests/console/OnBoard.h"
#include "tests/faults/Processes.h"

namespace quorvel::faults_test {
namespace {

// The places by their fixed names that the plug-in and the manager use, which are a board's own.
constexpr const char* kPlaces[] = {"/tmp/i2cget",
                                   "/tmp/lspci",
                                   "/tmp/wl_instances.txt",
                                   "/tmp/notify-socket",
                                   "/var/run/wlmngr2.socket",
                                   "/var/wl0_scanresults",
                                   "/var/wl1_scanresults",
                                   "/var/wl2_scanresults",
                                   "/data",
                                   "/board"};

std::set<std::string> placesThere() {
    std::set<std::string> there;
    for (const char* place : kPlaces) {
        std::error_code error;
        if (!std::filesystem::exists(std::filesystem::symlink_status(place, error))) continue;
        const auto time = std::filesystem::last_write_time(place, error);
        there.insert(std::string(place) + " " + std::to_string(time.time_since_epoch().count()));
    }
    return there;
}

std::set<std::string> interfaces() {
    std::set<std::string> names;
    struct if_nameindex* const all = if_nameindex();
    if (all == nullptr) return names;
    for (const struct if_nameindex* each = all; each->if_index != 0; ++each)
        names.insert(each->if_name);
    if_freenameindex(all);
    return names;
}

class Surroundings : public console_test::OnBoard {
  protected:
    std::set<std::string> places_ = placesThere();
    std::set<std::string> interfaces_ = interfaces();

    void areAsTheyWere() const {
        EXPECT_EQ(placesThere(), places_);
        EXPECT_EQ(interfaces(), interfaces_);
    }
};

TEST_F(Surroundings, AreAsTheyWereWhileABoardIsUpAndAfterwards) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    areAsTheyWere();
    EXPECT_EQ(console_.run({"scan", "1"}).status, 0);
    EXPECT_EQ(console_.run({"set", "Device.WiFi.Radio.1.Alias=attic", "--save"}).status, 0);
    areAsTheyWere();
    EXPECT_EQ(console_.run({"down"}).status, 0);
    areAsTheyWere();
}

TEST_F(Surroundings, AreAsTheyWereWhenTheManagerWasKilled) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    const pid_t manager = managerOf(console_.state());
    ASSERT_GT(manager, 0);
    ASSERT_EQ(kill(manager, SIGKILL), 0);
    EXPECT_EQ(console_.run({"get", "Device.WiFi.Radio.1.Channel"}).status, 1);
    EXPECT_EQ(console_.run({"down"}).status, 0);
    areAsTheyWere();
}

}  // namespace
}  // namespace quorvel::faults_test
