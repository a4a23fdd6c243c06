// The host configuration: read anew for every question, so that a change counts at once.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <span>
#include <string>

#include "gateway/framework/Ini.h"
#include "gateway/framework/Platform.h"

namespace {

using namespace quorvel::framework;

constexpr std::size_t kAuxiliarySize = 16;
constexpr std::size_t kValueSize = 64;
constexpr std::size_t kLargestFile = 1 << 20;

const char* fileName() {
    const char* name = std::getenv("QUORVEL_CONFIG");
    return name == nullptr || name[0] == '\0' ? "/board/etc/host.ini" : name;
}

bool readFile(const char* name, std::string& text) {
    const int file = open(name, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    char piece[4096];
    ssize_t count = 0;
    while (text.size() < kLargestFile &&
           ((count = read(file, piece, sizeof piece)) > 0 || (count < 0 && errno == EINTR))) {
        if (count > 0) text.append(piece, static_cast<std::size_t>(count));
    }
    const int problem = count < 0 ? errno : text.size() >= kLargestFile ? EFBIG : 0;
    close(file);
    errno = problem;
    return problem == 0;
}

std::optional<Ini> load() {
    const char* name = fileName();
    std::string text;
    if (!readFile(name, text)) {
        QUORVEL_HOST_LOG(0, "Configuration",
                         "Cannot read the host configuration %s: %s. QUORVEL_CONFIG names another one.", name,
                         std::strerror(errno));
        return std::nullopt;
    }
    IniError error;
    std::optional<Ini> ini = Ini::parse(text, error);
    if (!ini) QUORVEL_HOST_LOG(0, "Configuration", "%s:%u: %s", name, error.line, error.message.c_str());
    return ini;
}

// Copies the entry with its terminator; one that does not fit is refused, because a cut path names something else.
Result copyEntry(const Ini& ini, const char* section, const char* key, std::span<char> out) {
    const std::string* value = ini.find(section, key);
    if (value == nullptr) return kNotFound;
    if (value->size() >= out.size()) {
        QUORVEL_HOST_LOG(0, "Configuration", "%s: [%s] %s is %zu characters long, at most %zu are possible.",
                         fileName(), section, key, value->size(), out.size() - 1);
        return kTooLong;
    }
    std::memcpy(out.data(), value->c_str(), value->size() + 1);
    return kDone;
}

std::uint32_t getEntry(const char* section, const char* key, char* auxiliary, char* value) {
    const std::optional<Ini> ini = load();
    if (!ini) return kMalformed;
    const Result result = copyEntry(*ini, section, key, {value, kValueSize});
    if (result == kDone && auxiliary != nullptr) std::memset(auxiliary, 0, kAuxiliarySize);
    return result;
}

std::uint32_t getSpawnInfo(const char* section, SpawnInfo& info) {
    const std::optional<Ini> ini = load();
    if (!ini) return kMalformed;
    SpawnInfo found{};
    if (const Result result = copyEntry(*ini, section, "program", found.program); result != kDone) return result;
    const Result result = copyEntry(*ini, section, "arguments", found.arguments);
    if (result != kDone && result != kNotFound) return result;
    info = found;
    return kDone;
}

}  // namespace

std::uint32_t QuorvelUtilGetCfg(const char* section, const char* key, char* auxiliary, char* value) {
    if (section == nullptr || key == nullptr || value == nullptr) return kBadArgument;
    try {
        return getEntry(section, key, auxiliary, value);
    } catch (const std::exception&) {
        return kSystemFailure;
    }
}

std::uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* section, SpawnInfo* info) {
    if (section == nullptr || info == nullptr) return kBadArgument;
    try {
        return getSpawnInfo(section, *info);
    } catch (const std::exception&) {
        return kSystemFailure;
    }
}
