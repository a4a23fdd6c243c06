#include "gateway/hostd/Recording.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace quorvel::hostd {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRecorder = "libquorvel_wifi_recorder.so";

// A board whose time runs ahead makes hours of calls in seconds; memory that the queue does not need is not used.
constexpr const char* kQueueBytes = "67108864";

std::runtime_error cannotRecord(const std::string& file, const std::string& reason) {
    return std::runtime_error("cannot record into " + file + ": " + reason);
}

}  // namespace

Recording::Recording(const std::string& file) {
    if (file.empty()) return;
    const fs::path path = fs::absolute(file);
    name_ = path.filename();
    if (name_.empty()) throw cannotRecord(file, "it names a folder; name a file in it");
    folder_ = common::Descriptor(open(path.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder_ || faccessat(folder_.get(), ".", W_OK, 0) != 0) throw cannotRecord(file, std::strerror(errno));
    struct stat found {};
    if (fstatat(folder_.get(), name_.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(found.st_mode))
        throw cannotRecord(file, "it is a link, a folder or a device; name a file");
}

std::string Recording::begin(const board::Places& places) const {
    std::string recorder = places.libraries + "/" + kRecorder;
    if (!fs::exists(recorder))
        throw std::runtime_error("cannot record: there is no " + recorder + "; build the target quorvel_wifi_recorder");
    const std::string file = "/proc/self/fd/" + std::to_string(folder_.get()) + "/" + name_;
    (void)setenv("QUORVEL_RECORDER_LIBRARY", places.plugin.c_str(), 1);
    (void)setenv("QUORVEL_RECORDER_FILE", file.c_str(), 1);
    (void)setenv("QUORVEL_RECORDER_QUEUE", kQueueBytes, 0);  // the caller's own wins
    return recorder;
}

std::string Recording::trouble() const {
    if (!isMade() || faccessat(folder_.get(), name_.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) return "";
    return "nothing is recorded: the recorder could not begin " + name_ + " (--log-level 0 shows its reason)";
}

}  // namespace quorvel::hostd
