#include "recorder/library/RealLibrary.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "recorder/library/Values.h"

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

constexpr uint32_t typeOfRelocation(ElfW(Xword) info) {
    return sizeof(void*) == 8 ? static_cast<uint32_t>(info) : static_cast<uint32_t>(info & 0xFF);
}
constexpr uint32_t symbolOfRelocation(ElfW(Xword) info) {
    return static_cast<uint32_t>(sizeof(void*) == 8 ? info >> 32 : info >> 8);
}

// The parts of the loaded file that relocations need.
struct Image {
    ElfW(Addr) base = 0;
    const ElfW(Sym) * symbols = nullptr;
    const char* texts = nullptr;
    const void* jumps = nullptr;
    size_t jumpBytes = 0;
    bool jumpsHaveAddends = false;
    const void* plain = nullptr;
    size_t plainBytes = 0;
    const void* addended = nullptr;
    size_t addendedBytes = 0;
};

// The C library relocates the addresses in the dynamic section itself.
Image imageOf(const link_map& map) {
    Image image;
    image.base = map.l_addr;
    for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto* address = reinterpret_cast<const void*>(entry->d_un.d_ptr);
        switch (entry->d_tag) {
            case DT_SYMTAB:
                image.symbols = static_cast<const ElfW(Sym)*>(address);
                break;
            case DT_STRTAB:
                image.texts = static_cast<const char*>(address);
                break;
            case DT_JMPREL:
                image.jumps = address;
                break;
            case DT_PLTRELSZ:
                image.jumpBytes = entry->d_un.d_val;
                break;
            case DT_PLTREL:
                image.jumpsHaveAddends = entry->d_un.d_val == DT_RELA;
                break;
            case DT_REL:
                image.plain = address;
                break;
            case DT_RELSZ:
                image.plainBytes = entry->d_un.d_val;
                break;
            case DT_RELA:
                image.addended = address;
                break;
            case DT_RELASZ:
                image.addendedBytes = entry->d_un.d_val;
                break;
            default:
                break;
        }
    }
    return image;
}

// The pages that are read-only once the file is relocated.
struct ProtectedPages {
    ElfW(Addr) base;
    void* begin = nullptr;
    size_t bytes = 0;
};

int findProtectedPages(dl_phdr_info* info, size_t /*size*/, void* user) {
    auto* const pages = static_cast<ProtectedPages*>(user);
    if (info->dlpi_addr != pages->base) return 0;
    for (unsigned i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type != PT_GNU_RELRO) continue;
        const auto page = static_cast<ElfW(Addr)>(sysconf(_SC_PAGESIZE));
        const ElfW(Addr) begin = (pages->base + header.p_vaddr) & ~(page - 1);
        // The loader protects whole pages only.
        const ElfW(Addr) end = (pages->base + header.p_vaddr + header.p_memsz) & ~(page - 1);
        pages->begin = reinterpret_cast<void*>(begin);
        pages->bytes = end - begin;
    }
    return 1;
}

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

// Gives one slot of the library to the recorder when it belongs to an import that the recorder replaces.
void redirect(const Image& image, ElfW(Addr) offset, ElfW(Xword) info, Import* imports, uint32_t count) {
    const uint32_t type = typeOfRelocation(info);
    if (type != kJumpSlot && type != kData && type != kAddress) return;
    const ElfW(Sym)& symbol = image.symbols[symbolOfRelocation(info)];
    const char* const name = image.texts + symbol.st_name;
    auto* const slot = reinterpret_cast<void**>(image.base + offset);
    if (symbol.st_shndx != SHN_UNDEF) {
        // The recorder exports the same names: what the library has of its own stays the library's.
        if (type != kAddress) *slot = reinterpret_cast<void*>(image.base + symbol.st_value);
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (strcmp(imports[i].name, name) != 0) continue;
        if (*slot == imports[i].replacement) return;
        imports[i].original = *slot;
        *slot = imports[i].replacement;
        return;
    }
}

template <typename Relocation>
void redirectAll(const Image& image, const void* table, size_t bytes, Import* imports, uint32_t count) {
    const auto* relocation = static_cast<const Relocation*>(table);
    for (size_t i = 0; i < bytes / sizeof(Relocation); ++i)
        redirect(image, relocation[i].r_offset, relocation[i].r_info, imports, count);
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
    const Image image = imageOf(*map);
    if (image.symbols == nullptr || image.texts == nullptr) return "the recorded library has no dynamic symbols";
    ProtectedPages pages{image.base};
    (void)dl_iterate_phdr(findProtectedPages, &pages);
    if (pages.bytes != 0 && mprotect(pages.begin, pages.bytes, PROT_READ | PROT_WRITE) != 0)
        return "the system does not let the recorder change the recorded library's imports";
    if (image.jumpsHaveAddends) {
        redirectAll<ElfW(Rela)>(image, image.jumps, image.jumpBytes, imports, count);
    } else {
        redirectAll<ElfW(Rel)>(image, image.jumps, image.jumpBytes, imports, count);
    }
    redirectAll<ElfW(Rel)>(image, image.plain, image.plainBytes, imports, count);
    redirectAll<ElfW(Rela)>(image, image.addended, image.addendedBytes, imports, count);
    if (pages.bytes != 0 && mprotect(pages.begin, pages.bytes, PROT_READ) != 0)
        return "the system does not let the recorder protect the recorded library's imports again";
    return nullptr;
}

}  // namespace quorvel::recorder
