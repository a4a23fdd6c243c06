#include "gateway/board/Board.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>
#include <vector>

#include "common/Descriptor.h"
#include "gateway/board/Failure.h"
#include "gateway/board/FolderPlaces.h"
#include "gateway/board/Plan.h"
#include "gateway/board/Sandbox.h"
#include "gateway/board/StateFolder.h"
#include "gateway/board/Supervisor.h"

// The board's processes, each the parent of the next:
//
//   caller      outside; waits for the answer of the others, then for their end
//   guardian    has entered the namespaces, which begin with its child (only with a sandbox)
//   first       process 1 of the board; built the root; takes in orphans
//   host        the process that enterBoard returns in
//
// Each dies with its parent, and with `first` everything on the board: the kernel ends a process namespace with its
// first process. In the folder sandbox `first` and the caller take in the processes that lose their parents, and end
// what is left before they go.
namespace quorvel::board {
namespace {

constexpr char kPoweredUp[] = "!";

// The state that the board's processes share until each goes its own way.
struct Power {
    Plan plan;
    pid_t caller = 0;
    std::vector<int> inherited;  // descriptors of the caller's, for the host alone
    common::Descriptor lock;     // the state folder's, held by all
    common::Descriptor report;   // where the caller reads whether the board has come up
};

struct Pipe {
    common::Descriptor reader;
    common::Descriptor writer;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw failure("Cannot create a pipe");
    return {common::Descriptor(ends[0]), common::Descriptor(ends[1])};
}

pid_t forkOrThrow() {
    const pid_t child = fork();
    if (child < 0) throw failure("Cannot start the board's process");
    return child;
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 512> piece{};
    ssize_t count = 0;
    while ((count = read(descriptor, piece.data(), piece.size())) > 0 || (count < 0 && errno == EINTR)) {
        if (count > 0) text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text;
}

void answer(common::Descriptor& report, const std::string& text) {
    (void)!write(report.get(), text.data(), text.size());  // a caller that is gone takes this process with it
    report.reset();
}

// A parent outside the process namespace has no id inside: whether it lives shows in a pipe that it alone holds open.
bool hasEnded(const common::Descriptor& parentsPipe) {
    pollfd entry{parentsPipe.get(), POLLIN, 0};
    return poll(&entry, 1, 0) != 0;
}

void setVariable(const char* name, const std::string& value) {
    if (setenv(name, value.c_str(), 1) != 0) throw failure(std::string("Cannot set ") + name);
}

void prepend(const char* name, const std::string& folder, const char* otherwise) {
    const char* before = std::getenv(name);
    const std::string rest = before != nullptr && before[0] != '\0' ? before : otherwise;
    setVariable(name, rest.empty() ? folder : folder + ":" + rest);
}

void setEnvironment(const Places& places, pid_t first) {
    prepend("PATH", places.programs, "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin");
    prepend("LD_LIBRARY_PATH", places.libraries, "");
    setVariable("QUORVEL_CONFIG", places.configuration);
    setVariable("QUORVEL_BOARD", places.boardFile);
    setVariable("QUORVEL_STATE", places.state);
    setVariable("QUORVEL_WLAN_SOCKET", places.socket);
    setVariable("QUORVEL_NOTIFY_SOCKET", places.notifySocket);
    setVariable("QUORVEL_INTERFACES", places.interfaces);
    setVariable("QUORVEL_BOARD_FIRST_PROCESS", std::to_string(first));
}

Places sandboxPlaces(const Plan& plan) {
    Places places;
    places.plugin = "/board/lib/libquorvel_wifi.so";
    places.programs = "/board/bin";
    places.libraries = "/board/lib";
    places.boardFile = "/board/etc/board.json";
    places.configuration = "/board/etc/host.ini";
    places.state = "/data";
    places.hostState = plan.state;
    places.socket = "/var/run/wlmngr2.socket";
    places.notifySocket = "/tmp/notify-socket";
    return places;
}

// Runs a process of the board. Reports an exception to the caller and ends the process.
template <typename Work>
Places runOrReport(Power& power, Work work) {
    try {
        return work();
    } catch (const std::exception& problem) {
        answer(power.report, problem.what());
    }
    _exit(1);
}

// Forks the host from the board's first process. Returns in the host only.
Places forkHost(const Places& places, Power& power) {
    const pid_t first = getpid();
    const pid_t host = forkOrThrow();
    if (host == 0) {
        if (!dieWithParent(first)) _exit(1);
        setEnvironment(places, first);
        answer(power.report, kPoweredUp);
        return places;
    }
    power.report.reset();
    // In the folder sandbox this process is the last to go: who waits for the end of the board's descriptors finds its
    // folder free.
    letGoOf(places.root.empty() ? power.inherited : std::vector<int>());
    const int status = supervise(host);
    endDescendants();
    if (!places.root.empty()) removeFolderPlaces(power.plan);
    _exit(status);
}

Places beFirstInSandbox(Power& power, const common::Descriptor& guardiansPipe) {
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || hasEnded(guardiansPipe)) _exit(1);
    buildRoot(power.plan);
    return forkHost(sandboxPlaces(power.plan), power);
}

Places beGuardian(Power& power) {
    enterNamespaces();
    // Entering a user namespace can forget an earlier request.
    if (!dieWithParent(power.caller)) _exit(1);
    Pipe life = makePipe();
    const pid_t first = forkOrThrow();
    if (first == 0) {
        life.writer.reset();
        return runOrReport(power, [&] { return beFirstInSandbox(power, life.reader); });
    }
    power.report.reset();
    letGoOf(power.inherited);
    _exit(supervise(first));
}

// Emulators refuse it: then what leaves its parents behind is on its own, which the driver's tasks take for the end.
void takeInOrphans() {
    (void)prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Places beFirstInFolder(Power& power) {
    // The caller's death ends the board, but not this process, before everything else on the board has ended.
    if (!hearOfParentsEnd(power.caller)) _exit(1);
    takeInOrphans();
    return forkHost(makeFolderPlaces(power.plan), power);
}

// Stays outside. Throws when the board did not come up, otherwise ends with the board.
[[noreturn]] void waitOutside(pid_t child, const common::Descriptor& answers, const Power& power,
                              const Options& options, bool inFolder) {
    const std::string text = readAll(answers.get());
    if (text == kPoweredUp) {
        std::vector<int> others = power.inherited;
        std::erase_if(others, [&options](int number) { return std::ranges::count(options.kept, number) > 0; });
        letGoOf(others);
        const int ended = supervise(child);
        if (inFolder) {
            endDescendants();
            removeFolderPlaces(power.plan);
        }
        if (options.ended) options.ended(ended);
        _exit(ended);
    }
    const int status = supervise(child);
    if (!text.empty()) throw BoardError(text);
    throw BoardError("The board's first process ended unexpectedly with status " + std::to_string(status) + ".");
}

// Forks the board's processes. Returns in the host only; throws in the caller when the board did not come up.
Places powerUp(Power& power, const Options& options, bool inFolder) {
    Pipe report = makePipe();
    if (inFolder) takeInOrphans();
    const pid_t child = forkOrThrow();
    if (child > 0) {
        report.writer.reset();
        waitOutside(child, report.reader, power, options, inFolder);
    }
    report.reader.reset();
    power.report = std::move(report.writer);
    return runOrReport(power, [&] { return inFolder ? beFirstInFolder(power) : beGuardian(power); });
}

Places powerUpInSandbox(Power& power, const Options& options) {
    switch (options.sandbox) {
        case Sandbox::kNamespaces:
            return powerUp(power, options, false);
        case Sandbox::kFolder:
            return powerUp(power, options, true);
        case Sandbox::kAutomatic:
            break;
    }
    try {
        return powerUp(power, options, false);
    } catch (const BoardError&) {
        Places places = powerUp(power, options, true);
        places.notice =
            "namespaces are refused here, so the board is kept to its folder (--sandbox namespaces says why)";
        return places;
    }
}

}  // namespace

std::optional<Sandbox> sandboxCalled(std::string_view word) {
    if (word == "automatic") return Sandbox::kAutomatic;
    if (word == "namespaces") return Sandbox::kNamespaces;
    if (word == "folder") return Sandbox::kFolder;
    return std::nullopt;
}

Places enterBoard(const Options& options) {
    Power power;
    power.plan = makePlan(options);
    power.caller = getpid();
    power.inherited = openDescriptors();
    power.lock = takeStateFolder(power.plan.state);
    (void)std::fflush(nullptr);  // or both sides of a fork would write it

    const BlockedSignals blocked;  // until this returns, in the process that it returns in
    Places places = powerUpInSandbox(power, options);
    // The host keeps the state folder taken as well.
    static common::Descriptor held;
    held = std::move(power.lock);
    return places;
}

}  // namespace quorvel::board
