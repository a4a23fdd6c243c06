#include "gateway/board/OpenPlaces.h"

#include <filesystem>
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

}  // namespace

Places makeOpenPlaces(const Plan& plan) {
    const fs::path board = plan.state / "board";
    std::error_code error;
    fs::remove_all(board, error);
    for (const char* folder : {"bin", "lib", "etc", "run"}) {
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
    places.plugin = board / "lib/libquorvel_wifi.so";
    places.programs = board / "bin";
    places.libraries = board / "lib";
    places.boardFile = board / "etc/board.json";
    places.configuration = board / "etc/host.ini";
    places.state = plan.state;
    places.hostState = plan.state;
    places.socket = board / "run/wlmngr2.socket";
    if (places.socket.size() > common::kMaxSocketPath)
        throw BoardError("The path of the state folder " + plan.state.string() +
                         " is too long for a socket in it; name a shorter one.");
    writeFile(places.boardFile, plan.boardText, 0644);
    // The daemon is found on PATH: a configured program has room for 63 characters only.
    writeFile(places.configuration,
              plan.configurationText.empty() ? ownConfiguration("wlmngr2", plan.state) : plan.configurationText, 0644);
    return places;
}

}  // namespace quorvel::board
