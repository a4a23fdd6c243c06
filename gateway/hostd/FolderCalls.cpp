#include "gateway/hostd/FolderCalls.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/InterfaceCounters.h"
#include "common/UnixAddress.h"
#include "gateway/hostd/LedPlaces.h"

namespace quorvel::hostd {
namespace {

constexpr const char* kNetworkDevices = "/proc/net/dev";

struct BoardFolder {
    LedPlaces places{""};
    std::string interfaces;
};

// Never destroyed: the plug-in's listener thread may call until the process is gone.
BoardFolder& boardFolder() {
    static auto* const kFolder = new BoardFolder;
    return *kFolder;
}

FILE* openNetworkDevices() {
    const std::string text = common::InterfaceCounters(boardFolder().interfaces).networkDevices();
    FILE* const file = fmemopen(nullptr, text.size() + 1, "w+");
    if (file == nullptr) return nullptr;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (written && std::fseek(file, 0, SEEK_SET) == 0) return file;
    (void)std::fclose(file);  // it holds nothing
    errno = EIO;
    return nullptr;
}

FILE* openOnBoard(const char* path, const char* mode) {
    if (std::strcmp(path, kNetworkDevices) == 0) return openNetworkDevices();
    return std::fopen(boardFolder().places.path(path).c_str(), mode);
}

FILE* runOnBoard(const char* command, const char* mode) {
    return popen(boardFolder().places.command(command).c_str(), mode);
}

int systemOnBoard(const char* command) {
    if (command == nullptr) return std::system(nullptr);
    return std::system(boardFolder().places.command(command).c_str());
}

int connectOnBoard(int descriptor, const sockaddr* address, socklen_t size) {
    if (size < sizeof(sockaddr_un) || address->sa_family != AF_UNIX) return connect(descriptor, address, size);
    sockaddr_un asked{};
    std::memcpy(&asked, address, sizeof asked);
    const std::string named(asked.sun_path, strnlen(asked.sun_path, sizeof asked.sun_path));
    const std::string led = boardFolder().places.path(named);
    if (led == named) return connect(descriptor, address, size);
    const common::UnixAddress place(led.c_str());
    if (place.valid()) return connect(descriptor, place.get(), common::UnixAddress::size());
    errno = ENAMETOOLONG;
    return -1;
}

template <typename Function>
void* addressOf(Function* function) {
    return reinterpret_cast<void*>(function);
}

}  // namespace

void setBoardFolder(const std::string& root, const std::string& interfaces) {
    boardFolder() = {LedPlaces(root), interfaces};
}

std::span<const Supplied> folderCalls() {
    static const std::array kCalls{
        Supplied{"fopen", addressOf(openOnBoard)},      Supplied{"fopen64", addressOf(openOnBoard)},
        Supplied{"popen", addressOf(runOnBoard)},       Supplied{"system", addressOf(systemOnBoard)},
        Supplied{"connect", addressOf(connectOnBoard)},
    };
    return kCalls;
}

}  // namespace quorvel::hostd
