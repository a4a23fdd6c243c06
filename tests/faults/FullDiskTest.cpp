// A state folder on a small disk of its own, which a mount namespace gives the test.
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "tests/console/OnBoard.h"

namespace quorvel::faults_test {
namespace {

class FullDisk : public console_test::OnBoard {
  protected:
    // Runs shell lines in which `console` is the console on the small disk, `fill` leaves no room on it and `clear`
    // makes room again. Returns what they print.
    [[nodiscard]] std::string shell(const std::string& lines) const {
        const std::string disk = console_.state();
        const std::string script = "set -u; mount -t tmpfs -o size=256k small " + disk + " || exit; console() { '" +
                                   QUORVEL_CONSOLE + "' --state " + disk +
                                   " \"$@\" 2>&1; echo \"status $?\"; }; fill() { head -c 1000000 /dev/zero >" + disk +
                                   "/fill 2>/dev/null; }; clear() { rm " + disk + "/fill; }; " + lines;
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        const pid_t process = fork();
        if (process == 0) {
            (void)dup2(ends[1], STDOUT_FILENO);
            (void)dup2(ends[1], STDERR_FILENO);
            (void)execlp("unshare", "unshare", "-Urm", "sh", "-c", script.c_str(), nullptr);
            _exit(127);
        }
        (void)close(ends[1]);
        std::string printed;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;)
            printed.append(buffer.data(), static_cast<std::size_t>(count));
        (void)close(ends[0]);
        (void)waitpid(process, nullptr, 0);
        return printed;
    }
};

TEST_F(FullDisk, RefusesASaveAndKeepsWhatWasSaved) {
    EXPECT_EQ(
        shell("console set Device.WiFi.Radio.2.Channel=44 --save; fill; "
              "console set Device.WiFi.Radio.2.Channel=48 --save; console get Device.WiFi.Radio.2.Channel; "
              "clear; console set Device.WiFi.Radio.2.Channel=48 --save; console get Device.WiFi.Radio.2.Channel"),
        "Device.WiFi.Radio.2.Channel => 44\nstatus 0\n"
        "Device.WiFi.Radio.2.Channel => 48\n"
        "fault 7003 Device.WiFi.Radio.2.Channel: the values are applied but could not be saved (result 1: "
        "wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_SAVE_NVRAM, FAIL.)\nstatus 1\n"
        "Device.WiFi.Radio.2.Channel => 44\nstatus 0\n"
        "Device.WiFi.Radio.2.Channel => 48\nstatus 0\n"
        "Device.WiFi.Radio.2.Channel => 48\nstatus 0\n");
}

TEST_F(FullDisk, IsNamedWhenABoardCannotStartOnIt) {
    EXPECT_EQ(shell("fill; console get Device.WiFi.Radio.2.Channel; clear; console get Device.WiFi.Radio.2.Channel"),
              "quorvel-wifi: Cannot write the lock " + console_.state() +
                  "/.lock: No space left on device\nstatus 1\nDevice.WiFi.Radio.2.Channel => 149\nstatus 0\n");
}

}  // namespace
}  // namespace quorvel::faults_test
