#pragma once

// The simulated gateway's board: power, sandbox and places.

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::board {

/// The means that keep a board apart from the machine and from other boards.
enum class Sandbox {
    kAutomatic,   ///< namespaces, or the folder where the machine refuses them
    kNamespaces,  ///< the kernel's namespaces: the board sees nothing but its own
    kFolder,      ///< the host process leads the plug-in to places in the state folder
};

/// Returns the sandbox that `word` asks for: "automatic", "namespaces" or "folder"; nothing for another word.
[[nodiscard]] std::optional<Sandbox> sandboxCalled(std::string_view word);

/// The choices with which a board is powered up.
struct Options {
    /// A path to a board description (it contains a '/' or ends in ".json"), or the name of a shipped board: NAME.json
    /// in `boards/` of the program folder.
    std::string board = "tri-band";

    /// The only folder that survives a power cycle; created private to the user when missing. Empty: the user's state
    /// folder ($XDG_STATE_HOME or ~/.local/state) + "/quorvel-wifi/" + the board's name.
    std::string stateFolder;

    /// Where the built files are: bin/ with the board's tools and the daemon, lib/ with the libraries, boards/ with the
    /// shipped board descriptions. May lie anywhere, also below /tmp, /var or /data. Required.
    std::string programFolder;

    /// The plug-in under test. Empty: lib/libquorvel_wifi.so of the program folder.
    std::string plugin;

    /// A host configuration (INI) to use instead of the board's own. Empty: the board's own.
    std::string configuration;

    /// Programs call the option `--sandbox`; error texts name it so.
    Sandbox sandbox = Sandbox::kAutomatic;

    /// Folders of the machine that stay writable on the board (log files, coverage data); everything else of the
    /// machine is read-only there. One that /tmp, /var, /data or /board hides cannot be reached and is ignored.
    std::vector<std::string> writableFolders;

    /// Words put before every program of /board/bin, for programs built for another processor: {"qemu-arm", "-L",
    /// "/usr/arm-linux-gnueabihf"}. Empty: programs run as they are.
    std::vector<std::string> emulator;

    // Descriptors that stay open in the process outside the board as well; negative numbers are left out.
    std::vector<int> kept;

    // Called in the process outside with the status that it is about to exit with, when the board is off. Empty:
    // nothing is done then.
    std::function<void(int status)> ended;
};

/// Where things are, as seen by the process on the board. In the folder sandbox these are places below `root` instead
/// of the ones named here, and the state folder itself.
struct Places {
    std::string root;           ///< "", or the folder that plays the machine's root for the plug-in's /tmp and /var
    std::string interfaces;     ///< "", or the file with the interfaces' counters (common/InterfaceCounters.h)
    std::string notice;         ///< why the board has another sandbox than namespaces, unless that was asked for
    std::string plugin;         ///< /board/lib/libquorvel_wifi.so, whatever the file was called outside
    std::string programs;       ///< /board/bin
    std::string libraries;      ///< /board/lib
    std::string boardFile;      ///< /board/etc/board.json
    std::string configuration;  ///< /board/etc/host.ini
    std::string state;          ///< /data
    std::string socket;         ///< /var/run/wlmngr2.socket, the WLAN manager's
    std::string notifySocket;   ///< /tmp/notify-socket, the station events'
    std::string hostState;      ///< the state folder's name outside, for messages
};

/// A board that could not be powered up: what failed, with which value, and what to do next.
class BoardError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Powers the board up and returns on it.
///
/// Call it from a process with one thread, after parsing options and before loading the platform's libraries. The call
/// forks: it returns in the new process, an ordinary process of the board; the calling process never returns from it.
/// It stays outside, waits, hands SIGTERM, SIGINT and SIGHUP on, and exits with the new process's status (128 + signal
/// when a signal ended it). The board's first process (id 1) is neither of the two: it takes in orphans and reaps them.
///
/// The board is off when the returned process has ended: everything else that still runs on it is killed before the
/// calling process exits. It is also off when the calling process dies, for whatever reason. Nothing of it outlives
/// either. In the folder sandbox, /tmp and /var of the board are removed then; a board whose processes outside were all
/// killed leaves them, and the next one on the state folder begins with empty ones.
///
/// In the returned process:
/// - every descriptor that the caller had open is still open (a socket to talk through); in the process that stays
///   outside and in the board's first process they are closed, and so are their standard input and output;
/// - the working folder is `/` (in the folder sandbox: `root`);
/// - PATH begins with the board's programs, LD_LIBRARY_PATH (for programs started from here) with its libraries, and
///   QUORVEL_CONFIG, QUORVEL_BOARD, QUORVEL_STATE, QUORVEL_WLAN_SOCKET, QUORVEL_NOTIFY_SOCKET name the board's places,
///   QUORVEL_INTERFACES the counters of a board in the folder sandbox, QUORVEL_BOARD_FIRST_PROCESS the process whose
///   descendants are the board's.
///
/// The folder sandbox isolates boards that mean no harm; it is no boundary against a plug-in that does. The returned
/// process must lead the plug-in's calls for /tmp, /var and /proc/net/dev to `root` and `interfaces`.
///
/// Throws BoardError, in the calling process only, when the board cannot be powered up: nothing of it runs then. A
/// state folder belongs to one board at a time; a second one waits a second for it and then gives up.
[[nodiscard]] Places enterBoard(const Options& options);

/// Returns the path of the board description that `options` names. Throws BoardError when there is none.
[[nodiscard]] std::string findBoard(const Options& options);

/// Returns the state folder that `options` name, without creating it.
[[nodiscard]] std::string findStateFolder(const Options& options);

}  // namespace quorvel::board
