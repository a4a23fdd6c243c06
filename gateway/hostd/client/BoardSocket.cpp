#include "gateway/hostd/client/BoardSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/UnixAddress.h"
#include "common/UnixListener.h"

namespace quorvel::hostd {
namespace {

using common::Descriptor;

Descriptor openFolder(const std::string& folder) {
    return Descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// A socket's path may hold no more than 107 characters; through the descriptor of its folder it never does.
std::string socketIn(const Descriptor& folder) {
    return "/proc/self/fd/" + std::to_string(folder.get()) + "/" + kBoardSocket;
}

}  // namespace

Descriptor connectToBoard(const std::string& stateFolder) {
    const Descriptor folder = openFolder(stateFolder);
    if (!folder) return {};
    const common::UnixAddress address(socketIn(folder).c_str());
    Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!descriptor || connect(descriptor.get(), address.get(), common::UnixAddress::size()) != 0) return {};
    return descriptor;
}

Descriptor listenForClients(const std::string& stateFolder, std::string& problem) {
    const Descriptor folder = openFolder(stateFolder);
    if (folder) return common::listenOn(socketIn(folder), problem);
    problem = std::strerror(errno);
    return {};
}

void removeBoardSocket(const std::string& stateFolder) {
    const Descriptor folder = openFolder(stateFolder);
    if (folder) (void)unlink(socketIn(folder).c_str());  // it may be gone already
}

}  // namespace quorvel::hostd
