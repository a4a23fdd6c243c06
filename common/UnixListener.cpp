#include "common/UnixListener.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "common/UnixAddress.h"

namespace quorvel::common {
namespace {

constexpr int kBacklog = 64;

bool answers(const UnixAddress& address) {
    const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return probe && connect(probe.get(), address.get(), UnixAddress::size()) == 0;
}

}  // namespace

bool isServed(const std::string& path) {
    const UnixAddress address(path.c_str());
    return address.valid() && answers(address);
}

Descriptor listenOn(const std::string& path, std::string& problem) {
    const UnixAddress address(path.c_str());
    if (!address.valid()) {
        problem = "the socket path " + path + " is longer than " + std::to_string(kMaxSocketPath) + " characters";
        return {};
    }
    if (answers(address)) {
        problem = "the socket " + path + " is served by another process; end that one first";
        return {};
    }
    struct stat left = {};
    if (lstat(path.c_str(), &left) == 0 && S_ISSOCK(left.st_mode)) (void)unlink(path.c_str());  // bind says if it stays
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const mode_t mask = umask(0177);
    const bool bound = listener && bind(listener.get(), address.get(), UnixAddress::size()) == 0 &&
                       listen(listener.get(), kBacklog) == 0;
    const int error = errno;
    (void)umask(mask);
    if (bound) return listener;
    problem = "cannot serve " + path + ": " + std::strerror(error);
    return {};
}

}  // namespace quorvel::common
