#include "console/session/ProgramName.h"

#include <cstdlib>

namespace quorvel::console {

std::string programName(bool inShell) {
    if (inShell) return "";
    const char* const name = std::getenv("QUORVEL_COMMAND");
    return name == nullptr || *name == '\0' ? "quorvel-wifi" : name;
}

}  // namespace quorvel::console
