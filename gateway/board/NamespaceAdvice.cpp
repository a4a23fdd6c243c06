#include "gateway/board/NamespaceAdvice.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace quorvel::board {
namespace {

// The setting's value, or "" when the kernel does not have it.
std::string settingOf(const std::string& settings, const std::string& name) {
    std::ifstream file(settings + "/" + name);
    std::string value;
    file >> value;
    return value;
}

std::string cause(int error, const std::string& settings) {
    // The kernel answers so to a process with several threads, as an emulator has.
    if (error == EINVAL)
        return "a processor emulator cannot create a user namespace; start it inside one that is there already: "
               "`unshare --user --map-root-user EMULATOR PROGRAM`";
    if (settingOf(settings, "kernel/unprivileged_userns_clone") == "0")
        return "the kernel lets only root create them; allow it with `sysctl -w kernel.unprivileged_userns_clone=1`";
    for (const char* kind : {"user", "mnt", "net", "pid", "ipc"}) {
        std::string name = "max_";
        name.append(kind).append("_namespaces");
        if (settingOf(settings, "user/" + name) == "0")
            return std::string("the limit user.")
                .append(name)
                .append(" is 0; raise it with `sysctl -w user.")
                .append(name)
                .append("=10000`");
    }
    if (settingOf(settings, "kernel/apparmor_restrict_unprivileged_userns") == "1")
        return "AppArmor keeps ordinary programs from them; allow it with `sysctl -w "
               "kernel.apparmor_restrict_unprivileged_userns=0`, or give this program a profile with the rule "
               "`userns,`";
    return "inside a container, start it with `--security-opt seccomp=unconfined --security-opt apparmor=unconfined "
           "--security-opt systempaths=unconfined`, or with `--privileged`; as root in it, `--cap-add SYS_ADMIN "
           "--cap-add NET_ADMIN` do as well";
}

}  // namespace

std::string adviseOnNamespaces(int error, const std::string& settings) {
    return std::string("The board's namespaces cannot be created (") + std::strerror(error) +
           "): " + cause(error, settings) +
           ". Or run with --sandbox folder: then the host process keeps the board to its folder.";
}

}  // namespace quorvel::board
