#include "gateway/board/Sandbox.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/Descriptor.h"
#include "gateway/board/Failure.h"
#include "gateway/board/NamespaceAdvice.h"

namespace quorvel::board {
namespace {

namespace fs = std::filesystem;

// The new root is put together here; what the machine has in this place is reached through descriptors.
constexpr const char* kRoot = "/tmp";
// The machine's root by a name that an emulator does not lead to its own folder of libraries.
constexpr const char* kMachine = "/proc/self/root/";
const std::set<std::string> kOwnPlaces{"tmp", "var", "data", "board", "proc"};

std::string inRoot(const std::string& place) {
    return kRoot + place;
}

void mountOrThrow(const char* source, const std::string& target, const char* type, unsigned long flags,
                  const char* options) {
    if (mount(source, target.c_str(), type, flags, options) != 0)
        throw failure("Cannot mount " + target + " for the board");
}

void makeFolder(const std::string& place, mode_t mode = 0755) {
    if (mkdir(place.c_str(), mode) != 0 && errno != EEXIST) throw failure("Cannot create " + place + " for the board");
    if (chmod(place.c_str(), mode) != 0) throw failure("Cannot set the mode of " + place);
}

// A file or folder of the machine, held so that it stays within reach when its path is covered.
class Source {
  public:
    explicit Source(const fs::path& path) : path_(path), held_(open(path.c_str(), O_PATH | O_CLOEXEC)) {
        if (!held_) throw failure("Cannot open " + path.string());
    }
    [[nodiscard]] const fs::path& path() const {
        return path_;
    }
    void bindAt(const std::string& target) const {
        const std::string source = "/proc/self/fd/" + std::to_string(held_.get());
        if (mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
            throw failure("Cannot put " + path_.string() + " on the board");
    }
    // Binds to a new, empty file.
    void bindAsFile(const std::string& target) const {
        writeFile(target, "", 0644);
        bindAt(target);
    }

  private:
    fs::path path_;
    common::Descriptor held_;
};

struct Sources {
    std::vector<Source> programs;
    std::vector<Source> libraries;
    std::vector<Source> writable;
    Source plugin;
    Source state;

    explicit Sources(const Plan& plan) : plugin(plan.plugin), state(plan.state) {
        for (const fs::path& each : plan.programs)
            programs.emplace_back(each);
        for (const fs::path& each : plan.libraries)
            libraries.emplace_back(each);
        for (const fs::path& each : plan.writable)
            writable.emplace_back(each);
    }
};

void writeSetting(const std::string& path, const std::string& text) {
    const common::Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file || write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw failure("Cannot write " + path);
}

// Shows the machine's top level on the board: folders and files bound with all that is mounted below, links as they
// are.
void showMachine() {
    for (const auto& entry : fs::directory_iterator(kMachine)) {
        const std::string name = entry.path().filename();
        if (kOwnPlaces.contains(name)) continue;
        const std::string target = inRoot("/" + name);
        // Asked of the system itself: an emulator's folder listing need not know kinds.
        std::array<char, PATH_MAX> link{};
        const ssize_t length = readlink(entry.path().c_str(), link.data(), link.size() - 1);
        if (length >= 0) {
            if (symlink(link.data(), target.c_str()) != 0) throw failure("Cannot create " + target + " for the board");
            continue;
        }
        struct stat status {};
        if (stat(entry.path().c_str(), &status) != 0) continue;
        if (S_ISDIR(status.st_mode)) {
            makeFolder(target);
        } else if (S_ISREG(status.st_mode)) {
            writeFile(target, "", 0644);
        } else {
            continue;
        }
        if (mount(entry.path().c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0) continue;
        // Skip folders that this user may not read: nothing on the board can need them.
        if (errno != EACCES && errno != ENOENT) throw failure("Cannot show /" + name + " on the board");
    }
}

std::string unescaped(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 3 >= text.size()) {
            plain += text[at];
            continue;
        }
        plain += static_cast<char>(std::stoi(text.substr(at + 1, 3), nullptr, 8));
        at += 3;
    }
    return plain;
}

struct MountPoint {
    std::string path;
    unsigned long flags = 0;
};

// A mount that came from outside keeps the flags that it came with: the kernel refuses to take them away.
unsigned long flagsOf(const std::string& options) {
    constexpr std::array<std::pair<std::string_view, unsigned long>, 7> kFlags{{
        {"ro", MS_RDONLY},
        {"nosuid", MS_NOSUID},
        {"nodev", MS_NODEV},
        {"noexec", MS_NOEXEC},
        {"noatime", MS_NOATIME},
        {"nodiratime", MS_NODIRATIME},
        {"relatime", MS_RELATIME},
    }};
    unsigned long flags = 0;
    std::istringstream words(options);
    for (std::string word; std::getline(words, word, ',');) {
        for (const auto& [name, flag] : kFlags)
            flags |= word == name ? flag : 0;
    }
    return flags;
}

// The mounts below the one that `folder` shows. Those of an older mount there are hidden, though their paths are
// still listed.
std::vector<MountPoint> mountPointsBelow(const std::string& folder) {
    std::map<int, int> parents;
    std::map<int, MountPoint> points;
    int top = 0;
    std::ifstream file("/proc/self/mountinfo");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        int number = 0;
        int parent = 0;
        std::string device;
        std::string root;
        std::string path;
        std::string options;
        words >> number >> parent >> device >> root >> path >> options;
        path = unescaped(path);
        parents[number] = parent;
        if (path == folder && (top == 0 || parent == top)) top = number;
        if (path.starts_with(folder + "/")) points[number] = {path, flagsOf(options)};
    }
    const auto isInside = [&](int number) {
        while (number != top) {
            const auto next = parents.find(number);
            if (next == parents.end() || next->second == number) return false;
            number = next->second;
        }
        return true;
    };
    std::vector<MountPoint> inside;
    for (auto& [number, point] : points) {
        if (isInside(number)) inside.push_back(std::move(point));
    }
    return inside;
}

bool isBelow(const std::string& path, const std::string& place) {
    return (path + "/").starts_with(inRoot(place + "/"));
}

// A program on the board cannot change the machine's files. Single mounts deep in the tree that refuse stay as
// they are: the user's own rights still hold for them.
void protectMachine() {
    for (const MountPoint& point : mountPointsBelow(kRoot)) {
        // Devices are no files, and the board may write to places of its own.
        const auto holds = [&point](const char* place) { return isBelow(point.path, place); };
        if (std::ranges::any_of(std::array{"/dev", "/tmp", "/var", "/proc"}, holds)) continue;
        const unsigned long flags = MS_BIND | MS_REMOUNT | MS_RDONLY | point.flags;
        if (mount(nullptr, point.path.c_str(), nullptr, flags, nullptr) == 0) continue;
        if (fs::path(point.path).parent_path() == kRoot && errno != EACCES)
            throw failure("Cannot protect the machine's " + point.path.substr(std::strlen(kRoot)));
    }
}

void mountOwnPlaces() {
    for (const std::string& place : kOwnPlaces)
        makeFolder(inRoot("/" + place));
    constexpr const char* kSize = "mode=1777,size=256m";
    mountOrThrow("tmp", inRoot("/tmp"), "tmpfs", MS_NOSUID | MS_NODEV, kSize);
    mountOrThrow("var", inRoot("/var"), "tmpfs", MS_NOSUID | MS_NODEV, "mode=755,size=256m");
    for (const char* folder : {"/var/run", "/var/log", "/var/lib"})
        makeFolder(inRoot(folder));
    makeFolder(inRoot("/var/tmp"), 01777);
    if (mount("proc", inRoot("/proc").c_str(), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0)
        throw BoardError("Cannot mount the board's /proc. " + adviseOnNamespaces(errno));
    std::error_code error;
    // Shared memory and the view of devices are the board's own too where the kernel allows it; nothing depends on
    // them.
    if (fs::is_directory(inRoot("/dev/shm"), error))
        (void)mount("shm", inRoot("/dev/shm").c_str(), "tmpfs", MS_NOSUID | MS_NODEV, kSize);
    if (fs::is_directory(inRoot("/sys"), error))
        (void)mount("sysfs", inRoot("/sys").c_str(), "sysfs", MS_NOSUID | MS_NODEV | MS_NOEXEC | MS_RDONLY, nullptr);
}

void installPrograms(const Sources& sources, const Plan& plan) {
    const std::string real = plan.emulator.empty() ? "/board/bin/" : "/board/emulated/bin/";
    makeFolder(inRoot("/board/bin"));
    if (!plan.emulator.empty()) {
        makeFolder(inRoot("/board/emulated"));
        makeFolder(inRoot("/board/emulated/bin"));
        // Programs look for their libraries beside the folder that they are in.
        std::error_code error;
        fs::create_symlink("../lib", inRoot("/board/emulated/lib"), error);
        if (error) throw failure("Cannot create /board/emulated/lib", error.value());
    }
    for (const Source& program : sources.programs) {
        const std::string name = program.path().filename();
        program.bindAsFile(inRoot(real + name));
        if (!plan.emulator.empty())
            writeFile(inRoot("/board/bin/" + name), emulatorScript(plan.emulator, real + name), 0755);
    }
}

void installBoard(const Sources& sources, const Plan& plan) {
    installPrograms(sources, plan);
    makeFolder(inRoot("/board/lib"));
    for (const Source& library : sources.libraries)
        library.bindAsFile(inRoot("/board/lib/" + library.path().filename().string()));
    sources.plugin.bindAsFile(inRoot("/board/lib/libquorvel_wifi.so"));
    makeFolder(inRoot("/board/etc"));
    writeFile(inRoot("/board/etc/board.json"), plan.boardText, 0644);
    writeFile(inRoot("/board/etc/host.ini"),
              plan.configurationText.empty() ? ownConfiguration("/board/bin/wlmngr2", "/data") : plan.configurationText,
              0644);
}

// Binds a folder of the machine once more, over its read-only self.
void openWritable(const Source& folder) {
    const fs::path relative = folder.path().relative_path();
    if (relative.empty() || kOwnPlaces.contains(*relative.begin())) return;
    folder.bindAt(inRoot(folder.path()));
}

void changeRoot() {
    if (chdir(kRoot) != 0) throw failure("Cannot enter the board's root");
    // The old root lands on top of the new one and is taken off again: no folder for it is needed.
    if (syscall(SYS_pivot_root, ".", ".") != 0) throw failure("Cannot change to the board's root");
    if (umount2(".", MNT_DETACH) != 0) throw failure("Cannot let go of the machine's root");
    if (chdir("/") != 0) throw failure("Cannot enter the board's root");
    mountOrThrow(nullptr, "/", nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV, nullptr);
}

// No address configuration of the kernel's own: the interfaces count the simulated traffic and nothing else.
void quietenNetwork() {
    for (const char* which : {"all", "default"}) {
        const std::string name = std::string("/proc/sys/net/ipv6/conf/") + which + "/disable_ipv6";
        std::error_code error;
        if (fs::exists(name, error)) writeSetting(name, "1");
    }
}

void raiseLoopback() {
    const common::Descriptor control(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    if (!control || ioctl(control.get(), SIOCSIFFLAGS, &request) != 0)
        throw failure("Cannot raise the board's loopback");
}

// The driver tasks ask for real-time priority; a namespace's root may only have what its limits allow.
void allowRealTimePriority() {
    constexpr rlim_t kPriority = 5;
    rlimit limit{};
    if (getrlimit(RLIMIT_RTPRIO, &limit) != 0) return;
    limit.rlim_max = std::max(limit.rlim_max, kPriority);
    limit.rlim_cur = limit.rlim_max;
    (void)setrlimit(RLIMIT_RTPRIO, &limit);  // refused to ordinary users: then raising the tasks is refused as well
}

void becomeRootInside(uid_t user, gid_t group) {
    writeSetting("/proc/self/setgroups", "deny");
    writeSetting("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeSetting("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

}  // namespace

void enterNamespaces() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    allowRealTimePriority();
    constexpr int kKinds = CLONE_NEWNET | CLONE_NEWPID | CLONE_NEWIPC;
    if (unshare(CLONE_NEWUSER | kKinds) == 0) {
        becomeRootInside(user, group);
        return;
    }
    const int error = errno;
    // A user with the right to administer the system needs no user namespace for the others.
    if (unshare(kKinds) != 0) throw BoardError(adviseOnNamespaces(error));
}

void buildRoot(const Plan& plan) {
    if (unshare(CLONE_NEWNS) != 0) throw BoardError(adviseOnNamespaces(errno));
    mountOrThrow(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    {
        const Sources sources(plan);
        mountOrThrow("board", kRoot, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755,size=16m");
        showMachine();
        mountOwnPlaces();
        installBoard(sources, plan);
        protectMachine();
        sources.state.bindAt(inRoot("/data"));
        for (const Source& folder : sources.writable)
            openWritable(folder);
    }
    changeRoot();
    quietenNetwork();
    raiseLoopback();
}

}  // namespace quorvel::board
