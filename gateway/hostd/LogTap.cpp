#include "gateway/hostd/LogTap.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "gateway/framework/HostControl.h"

namespace quorvel::hostd {
namespace {

// Enough for an error to be understood; a plug-in that logs without end must not fill the memory.
constexpr std::size_t kMaxErrors = 2048;

thread_local std::string theErrors;

std::atomic<std::uint32_t> theOutputLevel{0};
std::atomic<std::uint32_t> theFollowedLevel{0};
std::atomic<int> theSilence{0};
// The log's own lock is held while a line is taken: no code logs under this one.
std::mutex theFollowerLock;
LogTap::Follower theFollower;

// Returns the text behind "[time] error file:line function: ".
std::string_view textOf(std::string_view line) {
    const std::size_t text = line.find(": ");
    return text == std::string_view::npos ? line : line.substr(text + 2);
}

void keep(std::string_view text) {
    for (std::size_t begin = 0; begin < theErrors.size();) {
        const std::size_t end = std::min(theErrors.find("; ", begin), theErrors.size());
        if (std::string_view(theErrors).substr(begin, end - begin) == text) return;
        begin = end + 2;
    }
    if (theErrors.size() + text.size() > kMaxErrors) return;
    if (!theErrors.empty()) theErrors += "; ";
    theErrors += text;
}

void print(std::string_view line) {
    const std::string whole = std::string(line) + "\n";
    (void)!write(STDERR_FILENO, whole.data(), whole.size());  // a closed log loses its lines
}

void take(std::uint32_t level, const char* text, void*) {
    std::string_view line(text);
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (theSilence > 0) return;
    if (level == 0) keep(textOf(line));
    if (level <= theOutputLevel) print(line);
    const std::lock_guard lock(theFollowerLock);
    if (theFollower && level <= theFollowedLevel) theFollower(level, line);
}

void letThrough() {
    bool followed = false;
    {
        const std::lock_guard lock(theFollowerLock);
        followed = static_cast<bool>(theFollower);
    }
    QuorvelHost_SetLogLevel(std::max(theOutputLevel.load(), followed ? theFollowedLevel.load() : 0U));
}

}  // namespace

void LogTap::install() {
    QuorvelHost_SetLogSink(take, nullptr);
}

std::string LogTap::errors() {
    return theErrors;
}

void LogTap::forgetErrors() {
    theErrors.clear();
}

void LogTap::setOutputLevel(std::uint32_t level) {
    theOutputLevel = level;
    letThrough();
}

void LogTap::follow(std::uint32_t level, Follower follower) {
    {
        const std::lock_guard lock(theFollowerLock);
        theFollowedLevel = level;
        theFollower = std::move(follower);
    }
    letThrough();
}

LogTap::Silence::Silence() {
    ++theSilence;
}

LogTap::Silence::~Silence() {
    --theSilence;
}

}  // namespace quorvel::hostd
