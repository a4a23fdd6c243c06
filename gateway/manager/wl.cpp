// The board's wireless tool: asks the WLAN manager and prints what it says.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gateway/manager/Connection.h"

int main(int argc, char** argv) {
    using namespace quorvel::manager;
    constexpr unsigned kHangSeconds = 5;
    if (argc != 4 || std::strcmp(argv[1], "-i") != 0) {
        (void)std::fputs("usage: wl -i INTERFACE counters|status|scan|scanresults|macmode\n", stderr);
        return 2;
    }
    static Connection connection;
    connection.expectManager(false);
    Request request;
    request.operation = Operation::kWl;
    request.texts[0] = argv[2];
    request.texts[1] = argv[3];
    std::int32_t status = 1;
    char* text = connection.callLong(request, status);
    if (text == nullptr) {
        (void)std::fputs("wl: the WLAN manager does not answer; is wlmngr2 running?\n", stderr);
        return 1;
    }
    if (status > 1) (void)sleep(kHangSeconds);
    const bool written = std::fputs(text, status == 0 ? stdout : stderr) >= 0 && std::fflush(stdout) == 0;
    std::free(text);
    return status == 0 && written ? 0 : 1;
}
