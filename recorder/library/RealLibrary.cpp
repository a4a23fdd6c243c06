#include "recorder/library/RealLibrary.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "common/SymbolSlots.h"
#include "recorder/library/QueuedValues.h"

namespace quorvel::recorder {

void* realFunctions[kFunctionCount];
const pthread_t* realThreadId;
ConstantRange constantRange{};

namespace {

void* handle;
char failure[512];

#if defined(__arm__)
constexpr uint32_t kJumpSlot = R_ARM_JUMP_SLOT;
constexpr uint32_t kData = R_ARM_GLOB_DAT;
constexpr uint32_t kAddress = R_ARM_ABS32;
#elif defined(__i386__)
constexpr uint32_t kJumpSlot = R_386_JMP_SLOT;
constexpr uint32_t kData = R_386_GLOB_DAT;
constexpr uint32_t kAddress = R_386_32;
#elif defined(__x86_64__)
constexpr uint32_t kJumpSlot = R_X86_64_JUMP_SLOT;
constexpr uint32_t kData = R_X86_64_GLOB_DAT;
constexpr uint32_t kAddress = R_X86_64_64;
#elif defined(__aarch64__)
constexpr uint32_t kJumpSlot = R_AARCH64_JUMP_SLOT;
constexpr uint32_t kData = R_AARCH64_GLOB_DAT;
constexpr uint32_t kAddress = R_AARCH64_ABS64;
#else
#error "name this processor's relocation types"
#endif

// The segments that nobody writes: code and constants.
struct Constants {
    ElfW(Addr) base;
    uintptr_t begin = 0;
    uintptr_t end = 0;
};

int findConstants(dl_phdr_info* info, size_t /*size*/, void* user) {
    auto* const constants = static_cast<Constants*>(user);
    if (info->dlpi_addr != constants->base) return 0;
    for (unsigned i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type != PT_LOAD || (header.p_flags & PF_W) != 0) continue;
        const uintptr_t begin = constants->base + header.p_vaddr;
        constants->begin = constants->end == 0 ? begin : std::min(constants->begin, begin);
        constants->end = std::max<uintptr_t>(constants->end, begin + header.p_memsz);
    }
    return 1;
}

// Gives a slot of the library to the recorder when it belongs to an import that the recorder replaces.
void redirect(const common::SymbolSlot& slot, ElfW(Addr) base, Import* imports, uint32_t count) {
    if (slot.type != kJumpSlot && slot.type != kData && slot.type != kAddress) return;
    if (!slot.imported()) {
        // The recorder exports the same names: what the library has of its own stays the library's.
        if (slot.type != kAddress) *slot.word = reinterpret_cast<void*>(base + slot.symbol->st_value);
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (strcmp(imports[i].name, slot.name) != 0) continue;
        if (*slot.word == imports[i].replacement) return;
        imports[i].original = *slot.word;
        *slot.word = imports[i].replacement;
        return;
    }
}

}  // namespace

const char* openRealLibrary(const char* path) {
    // Everything is bound at once, so that each import's slot holds the address that it is bound to.
    handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        (void)snprintf(failure, sizeof failure, "cannot load the recorded library: %s", dlerror());
        return failure;
    }
    for (uint32_t i = 0; i < kFunctionCount; ++i) {
        realFunctions[i] = dlsym(handle, kFunctionNames[i]);
        if (realFunctions[i] != nullptr) continue;
        (void)snprintf(failure, sizeof failure, "%s has no function %s: it is not a version that this recorder knows",
                       path, kFunctionNames[i]);
        return failure;
    }
    realThreadId = static_cast<const pthread_t*>(dlsym(handle, "qvlThreadId"));
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0) {
        Constants constants{map->l_addr};
        (void)dl_iterate_phdr(findConstants, &constants);
        constantRange = {constants.begin, constants.end - constants.begin};
    }
    if (realThreadId != nullptr) return nullptr;
    (void)snprintf(failure, sizeof failure, "%s has no object qvlThreadId", path);
    return failure;
}

const char* replaceImports(Import* imports, uint32_t count) {
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) return "the loader does not say where the recorded library is";
    const common::SymbolSlots slots(*map);
    if (!slots.any()) return "the recorded library has no dynamic symbols";
    const common::ClosedPages pages(*map);
    if (!pages.open()) return "the system does not let the recorder change the recorded library's imports";
    slots.forEach([&](const common::SymbolSlot& slot) { redirect(slot, map->l_addr, imports, count); });
    if (!pages.close()) return "the system does not let the recorder protect the recorded library's imports again";
    return nullptr;
}

}  // namespace quorvel::recorder
