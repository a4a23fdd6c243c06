#include "gateway/board/StateFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "gateway/board/Failure.h"

namespace quorvel::board {
namespace {

constexpr int kTries = 100;
constexpr timespec kBetweenTries{0, 10'000'000};

void createPrivate(const std::string& folder) {
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::path(folder).parent_path();
    if (!parent.empty()) std::filesystem::create_directories(parent, error);
    if (error) throw failure("Cannot create the folder " + parent.string() + " for the board's state", error.value());
    if (mkdir(folder.c_str(), 0700) == 0) return;
    if (errno != EEXIST) throw failure("Cannot create the board's state folder " + folder);

    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) throw failure("Cannot look at the board's state folder " + folder);
    if (!S_ISDIR(status.st_mode)) throw BoardError("The board's state folder " + folder + " is a file; name a folder.");
    refuseForeignFolder(folder);
    if ((status.st_mode & 077) != 0 && chmod(folder.c_str(), 0700) != 0)
        throw failure("Cannot make the board's state folder " + folder + " private");
}

std::string holderOf(int lock) {
    std::array<char, 32> text{};
    if (pread(lock, text.data(), text.size() - 1, 0) <= 0) return "another process";
    return "process " + std::string(text.data());
}

}  // namespace

void refuseForeignFolder(const std::string& folder) {
    struct stat status {};
    if (stat(folder.c_str(), &status) == 0 && status.st_uid != geteuid())
        throw BoardError("The board's state folder " + folder + " belongs to another user; name one of your own.");
}

common::Descriptor takeStateFolder(const std::string& folder) {
    createPrivate(folder);
    const std::string name = folder + "/.lock";
    common::Descriptor lock(open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock) throw failure("Cannot open the lock " + name);
    // A board that is just being powered off lets go of its folder within moments.
    int tries = 0;
    while (flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) throw failure("Cannot lock " + name);
        if (++tries == kTries)
            throw BoardError("The state folder " + folder + " is in use by the board of " + holderOf(lock.get()) +
                             ". Power that board off, or name another state folder.");
        (void)nanosleep(&kBetweenTries, nullptr);  // a shorter wait only means an earlier try
    }
    const std::string holder = std::to_string(getpid());
    if (ftruncate(lock.get(), 0) != 0 || pwrite(lock.get(), holder.data(), holder.size(), 0) < 0)
        throw failure("Cannot write the lock " + name);
    return lock;
}

}  // namespace quorvel::board
