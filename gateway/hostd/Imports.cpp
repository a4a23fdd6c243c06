#include "gateway/hostd/Imports.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include "common/SymbolSlots.h"

namespace quorvel::hostd {
namespace {

const link_map& mapOf(void* library) {
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) {
        throw std::runtime_error(std::string("cannot look into the plug-in: ") + dlerror());
    }
    return *map;
}

}  // namespace

std::size_t supply(void* library, std::span<const Supplied> calls) {
    const link_map& map = mapOf(library);
    const common::ClosedPages pages(map);
    if (!pages.open()) {
        throw std::runtime_error(std::string("the system does not let the plug-in's calls be led elsewhere: ") +
                                 std::strerror(errno) + "; run with --sandbox namespaces");
    }
    std::size_t count = 0;
    common::SymbolSlots(map).forEach([&](const common::SymbolSlot& slot) {
        if (!slot.imported()) return;
        for (const Supplied& call : calls) {
            if (std::strcmp(slot.name, call.name) != 0) continue;
            *slot.word = call.function;
            ++count;
        }
    });
    (void)pages.close();  // left open, they do no harm
    return count;
}

void* importOf(void* library, const char* name) {
    void* function = nullptr;
    common::SymbolSlots(mapOf(library)).forEach([&](const common::SymbolSlot& slot) {
        if (slot.imported() && std::strcmp(slot.name, name) == 0) function = *slot.word;
    });
    return function;
}

}  // namespace quorvel::hostd
