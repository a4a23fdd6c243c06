#include "gateway/hostd/client/BoardSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "common/Descriptor.h"

namespace quorvel::hostd {
namespace {

using common::Descriptor;

constexpr int kBacklog = 64;

// A socket's path may hold no more than 107 characters; through the descriptor of its folder it never does.
class SocketPlace {
  public:
    explicit SocketPlace(const std::string& folder) : folder_(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        address_.sun_family = AF_UNIX;
        (void)std::snprintf(address_.sun_path, sizeof address_.sun_path, "/proc/self/fd/%d/%s", folder_.get(),
                            kBoardSocket);
    }
    [[nodiscard]] bool isThere() const {
        return static_cast<bool>(folder_);
    }
    [[nodiscard]] const sockaddr* address() const {
        return reinterpret_cast<const sockaddr*>(&address_);
    }
    [[nodiscard]] const char* path() const {
        return address_.sun_path;
    }

  private:
    Descriptor folder_;
    sockaddr_un address_{};
};

Descriptor makeSocket() {
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

}  // namespace

int connectToBoard(const std::string& stateFolder) {
    const SocketPlace place(stateFolder);
    if (!place.isThere()) return -1;
    Descriptor descriptor = makeSocket();
    if (!descriptor || connect(descriptor.get(), place.address(), sizeof(sockaddr_un)) != 0) return -1;
    return descriptor.release();
}

int listenForClients(const std::string& stateFolder) {
    const SocketPlace place(stateFolder);
    if (!place.isThere()) return -1;
    Descriptor descriptor = makeSocket();
    if (!descriptor) return -1;
    (void)unlink(place.path());  // no board answers there
    // From its first moment on, the socket is its owner's alone.
    const mode_t mask = umask(0177);
    const bool bound = bind(descriptor.get(), place.address(), sizeof(sockaddr_un)) == 0;
    const int error = errno;
    (void)umask(mask);
    errno = error;
    if (!bound || listen(descriptor.get(), kBacklog) != 0) return -1;
    return descriptor.release();
}

void removeBoardSocket(const std::string& stateFolder) {
    (void)unlink(SocketPlace(stateFolder).path());  // it may be gone already
}

}  // namespace quorvel::hostd
