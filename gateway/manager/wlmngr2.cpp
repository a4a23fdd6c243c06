// The WLAN manager daemon.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <variant>

#include "gateway/description/Reader.h"
#include "gateway/manager/Server.h"
#include "gateway/manager/Service.h"

namespace {

using namespace quorvel::manager;

std::string fromEnvironment(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

int serve(const std::string& storePath) {
    auto board = quorvel::description::readBoardFile(fromEnvironment("QUORVEL_BOARD", "/board/etc/board.json"));
    if (const auto* error = std::get_if<quorvel::description::Error>(&board)) {
        (void)std::fprintf(stderr, "wlmngr2: %s\n", error->message.c_str());
        return 1;
    }
    BoardClock clock(realMilliseconds);
    if (fromEnvironment("QUORVEL_CLOCK", "real") == "virtual") clock.startVirtual();
    const auto seed = std::strtoull(fromEnvironment("QUORVEL_SEED", "1").c_str(), nullptr, 10);
    Service service(std::move(std::get<quorvel::description::Board>(board)), Store(storePath), std::move(clock), seed);
    service.setSignalling([](int signal) { (void)raise(signal); });  // a signal that does not exist is not asked for
    if (!service.problem().empty()) (void)std::fprintf(stderr, "wlmngr2: %s\n", service.problem().c_str());

    sigset_t ending;
    (void)sigemptyset(&ending);
    (void)sigaddset(&ending, SIGTERM);
    (void)sigaddset(&ending, SIGINT);
    (void)sigprocmask(SIG_BLOCK, &ending, nullptr);  // these cannot fail with valid arguments
    const int stop = signalfd(-1, &ending, SFD_CLOEXEC);
    if (stop < 0) {
        std::perror("wlmngr2: cannot wait for signals");
        return 1;
    }
    Server server(service, {fromEnvironment("QUORVEL_WLAN_SOCKET", "/var/run/wlmngr2.socket"),
                            fromEnvironment("QUORVEL_NOTIFY_SOCKET", "/tmp/notify-socket"),
                            fromEnvironment("QUORVEL_INTERFACES", "")});
    const std::string problem = server.open();
    if (!problem.empty()) {
        (void)std::fprintf(stderr, "wlmngr2: %s\n", problem.c_str());
        (void)close(stop);
        return 1;
    }
    server.run(stop);
    (void)close(stop);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Under an emulator the process would go by the emulator's name.
    (void)prctl(PR_SET_NAME, "wlmngr2");
    std::string store;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool known = argument.size() > 2 && argument.starts_with("-c") && store.empty();
        if (!known) {
            (void)std::fprintf(stderr, "wlmngr2: unexpected argument %s\nusage: wlmngr2 -cFILE\n", argv[i]);
            return 2;
        }
        store = argument.substr(2);
    }
    if (store.empty()) {
        (void)std::fputs("wlmngr2: no store given\nusage: wlmngr2 -cFILE\n", stderr);
        return 2;
    }
    try {
        return serve(store);
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "wlmngr2: %s\n", error.what());
        return 1;
    }
}
