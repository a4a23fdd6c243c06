#include "gateway/board/FolderPlaces.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "common/UnixAddress.h"
#include "gateway/board/Failure.h"

namespace quorvel::board {
namespace {

namespace fs = std::filesystem;

void linkTo(const fs::path& file, const fs::path& link) {
    std::error_code error;
    fs::create_symlink(file, link, error);
    if (error) throw failure("Cannot create " + link.string(), error.value());
}

// The most characters of a configured program's arguments.
constexpr std::size_t kMaxArguments = 255;

fs::path rootOf(const Plan& plan) {
    return plan.state / "board";
}

// Refuses a state folder in which one of the longest paths would not do.
void checkLengths(const Plan& plan, const Places& places, const std::string& configuration) {
    const auto refuse = [&plan](std::size_t surplus, const std::string& what) {
        throw BoardError("The path of the state folder " + plan.state.string() + " is " + std::to_string(surplus) +
                         " characters too long for " + what + "; name a shorter one.");
    };
    const std::size_t longest = std::max(places.socket.size(), places.notifySocket.size());
    if (longest > common::kMaxSocketPath) {
        refuse(longest - common::kMaxSocketPath,
               "a socket in it (at most " + std::to_string(common::kMaxSocketPath) + ")");
    }
    constexpr std::string_view kArguments = "arguments = ";
    const std::size_t begin = configuration.find(kArguments);
    if (begin == std::string::npos) return;
    const std::size_t length = configuration.find('\n', begin) - begin - kArguments.size();
    if (length > kMaxArguments) refuse(length - kMaxArguments, "the WLAN manager's arguments");
}

}  // namespace

Places makeFolderPlaces(const Plan& plan) {
    const fs::path board = rootOf(plan);
    removeFolderPlaces(plan);
    std::error_code error;
    for (const char* folder : {"bin", "lib", "etc", "tmp", "var/run", "var/log", "var/lib", "var/tmp"}) {
        fs::create_directories(board / folder, error);
        if (error) throw failure("Cannot create " + (board / folder).string(), error.value());
    }
    for (const fs::path& program : plan.programs) {
        const fs::path place = board / "bin" / program.filename();
        if (plan.emulator.empty()) {
            linkTo(program, place);
        } else {
            writeFile(place, emulatorScript(plan.emulator, program), 0755);
        }
    }
    for (const fs::path& library : plan.libraries)
        linkTo(library, board / "lib" / library.filename());
    linkTo(plan.plugin, board / "lib/libquorvel_wifi.so");

    Places places;
    places.root = board;
    places.interfaces = board / "interfaces";
    places.plugin = board / "lib/libquorvel_wifi.so";
    places.programs = board / "bin";
    places.libraries = board / "lib";
    places.boardFile = board / "etc/board.json";
    places.configuration = board / "etc/host.ini";
    places.state = plan.state;
    places.hostState = plan.state;
    places.socket = board / "var/run/wlmngr2.socket";
    places.notifySocket = board / "tmp/notify-socket";
    // The daemon is found on PATH: a configured program has room for 63 characters only.
    const std::string own = ownConfiguration("wlmngr2", plan.state);
    const std::string& configuration = plan.configurationText.empty() ? own : plan.configurationText;
    checkLengths(plan, places, own);
    writeFile(places.boardFile, plan.boardText, 0644);
    writeFile(places.configuration, configuration, 0644);
    if (chdir(board.c_str()) != 0) throw failure("Cannot enter " + board.string());
    return places;
}

void removeFolderPlaces(const Plan& plan) {
    std::error_code error;  // something left over shows when the next board's places are made
    fs::remove_all(rootOf(plan), error);
}

}  // namespace quorvel::board
