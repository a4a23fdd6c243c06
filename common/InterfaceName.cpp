#include "common/InterfaceName.h"

namespace quorvel::common {

std::string interfaceName(unsigned radio, unsigned bss, const char* prefix) {
    std::string name = prefix;
    name += std::to_string(radio);
    if (bss != 0) name += "." + std::to_string(bss);
    return name;
}

}  // namespace quorvel::common
