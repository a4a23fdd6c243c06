#include "gateway/board/Plan.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <variant>

#include "common/Descriptor.h"
#include "gateway/board/Failure.h"
#include "gateway/description/Reader.h"

namespace quorvel::board {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 5> kPrograms{"lspci", "i2cget", "insmod", "wl", "wlmngr2"};
constexpr const char* kPluginName = "libquorvel_wifi.so";

std::string readText(const fs::path& path, const std::string& what) {
    std::error_code error;
    if (fs::is_directory(path, error)) throw failure("Cannot read the " + what + " " + path.string(), EISDIR);
    std::ifstream file(path, std::ios::binary);
    if (!file) throw failure("Cannot read the " + what + " " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

fs::path absolute(const std::string& path) {
    return fs::absolute(path).lexically_normal();
}

// Other architectures' and versions' links lead to the files themselves, which the folder holds too.
bool isLibrary(const fs::directory_entry& entry) {
    const std::string name = entry.path().filename();
    return name.starts_with("lib") && name.find(".so") != std::string::npos && entry.is_regular_file();
}

bool isFileName(const std::string& board) {
    return board.find('/') != std::string::npos || board.ends_with(".json");
}

std::string shippedBoards(const fs::path& folder) {
    std::set<std::string> boards;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".json") boards.insert(entry.path().stem());
    }
    std::string names;
    for (const std::string& board : boards)
        names += (names.empty() ? "" : ", ") + board;
    return names.empty() ? "none" : names;
}

// Eight digits that differ from path to path (FNV-1a).
std::string digestOf(const std::string& path) {
    std::uint32_t hash = 2166136261U;
    for (const char each : path)
        hash = (hash ^ static_cast<unsigned char>(each)) * 16777619U;
    std::array<char, 9> text{};
    (void)std::snprintf(text.data(), text.size(), "%08x", hash);
    return text.data();
}

std::string shellQuoted(const std::string& word) {
    std::string quoted = "'";
    for (const char each : word)
        quoted += each == '\'' ? std::string("'\\''") : std::string(1, each);
    return quoted + "'";
}

}  // namespace

std::string findBoard(const Options& options) {
    std::error_code error;
    if (isFileName(options.board)) {
        if (!fs::exists(options.board, error))
            throw failure("Cannot find the board description " + options.board, ENOENT);
        return absolute(options.board);
    }
    const fs::path folder = fs::path(options.programFolder) / "boards";
    const fs::path file = folder / (options.board + ".json");
    if (options.board.empty() || !fs::exists(file, error))
        throw BoardError("There is no shipped board \"" + options.board + "\" in " + folder.string() +
                         "; there are: " + shippedBoards(folder) + ". The path of a board description does as well.");
    return absolute(file);
}

std::string findStateFolder(const Options& options) {
    if (!options.stateFolder.empty()) return absolute(options.stateFolder);
    const std::string file = findBoard(options);
    std::string name = fs::path(file).stem();
    // Two descriptions of the same name are two boards.
    if (isFileName(options.board)) name += "-" + digestOf(file);
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') return fs::path(state) / "quorvel-wifi" / name;
    const char* home = std::getenv("HOME");
    if (home == nullptr || home[0] != '/')
        throw BoardError("Neither XDG_STATE_HOME nor HOME is an absolute path; name a state folder.");
    return fs::path(home) / ".local/state/quorvel-wifi" / name;
}

Plan makePlan(const Options& options) {
    Plan plan;
    const fs::path folder = absolute(options.programFolder);
    std::error_code error;
    if (options.programFolder.empty() || !fs::is_directory(folder / "bin", error) ||
        !fs::is_directory(folder / "lib", error))
        throw BoardError("The program folder \"" + options.programFolder + "\" has no bin/ and lib/; build first.");
    for (const char* name : kPrograms) {
        if (fs::exists(folder / "bin" / name, error)) plan.programs.push_back(folder / "bin" / name);
    }
    for (const auto& entry : fs::directory_iterator(folder / "lib")) {
        if (isLibrary(entry) && entry.path().filename() != kPluginName) plan.libraries.push_back(entry.path());
    }
    plan.plugin = options.plugin.empty() ? folder / "lib" / kPluginName : absolute(options.plugin);
    if (!fs::is_regular_file(plan.plugin, error))
        throw failure("Cannot find the plug-in " + plan.plugin.string(), error ? error.value() : ENOENT);

    const std::string board = findBoard(options);
    plan.boardText = readText(board, "board description");
    const auto read = description::parseBoard(plan.boardText, board);
    if (const auto* wrong = std::get_if<description::Error>(&read)) throw BoardError(wrong->message);
    if (!options.configuration.empty()) plan.configurationText = readText(options.configuration, "host configuration");
    plan.state = findStateFolder(options);
    for (const std::string& writable : options.writableFolders)
        plan.writable.push_back(absolute(writable));
    plan.emulator = options.emulator;
    return plan;
}

std::string ownConfiguration(const std::string& daemon, const std::string& state) {
    return "# The host framework's configuration on this board.\n"
           "[Device.WiFi]\n"
           "WL_Driver = wl.ko\n"
           "WLCSM_Driver = wlcsm.ko\n"
           "\n"
           "[Device.WiFi.Daemon]\n"
           "program = " +
           daemon +
           "\n"
           "arguments = -c" +
           state + "/quorvel-dm-wifi.xml\n";
}

std::string emulatorScript(const std::vector<std::string>& emulator, const std::string& program) {
    std::string script = "#!/bin/sh\nexec";
    for (const std::string& word : emulator)
        script += " " + shellQuoted(word);
    return script + " " + shellQuoted(program) + " \"$@\"\n";
}

void writeFile(const std::string& path, const std::string& text, unsigned mode) {
    const common::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode));
    if (!file) throw failure("Cannot create " + path);
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = write(file.get(), text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw failure("Cannot write " + path);
        done += static_cast<std::size_t>(count);
    }
}

}  // namespace quorvel::board
