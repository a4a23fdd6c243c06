// A plug-in with an empty table that reaches places by fixed names, as the shipped one does.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#pragma GCC visibility push(default)
extern "C" {

extern const std::uint32_t gQuorvelWiFiDataModelTableInfo[4];
extern const std::uintptr_t gQuorvelWiFiDataModelTable[1];
const std::uint32_t gQuorvelWiFiDataModelTableInfo[4] = {};
const std::uintptr_t gQuorvelWiFiDataModelTable[1] = {};

// Reads the file into `text` of `size` bytes. Returns 0, or -1 when it cannot be opened.
int fixedPlacesRead(const char* path, char* text, std::size_t size) {
    FILE* const file = std::fopen(path, "r");
    if (file == nullptr) return -1;
    text[std::fread(text, 1, size - 1, file)] = '\0';
    return std::fclose(file);
}

int fixedPlacesReadCommand(const char* command, char* text, std::size_t size) {
    FILE* const output = popen(command, "r");
    if (output == nullptr) return -1;
    text[std::fread(text, 1, size - 1, output)] = '\0';
    return pclose(output);
}

int fixedPlacesRun(const char* command) {
    return std::system(command);
}

// Connects to the path. Returns 0 or -1.
int fixedPlacesConnect(const char* path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    const int result = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    (void)close(descriptor);
    return result;
}

unsigned fixedPlacesSleep(unsigned seconds) {
    return sleep(seconds);
}
}
#pragma GCC visibility pop
