#pragma once

#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The words of a loaded library that lead its calls to other libraries. Needs no C++ run-time library, so that a
/// library for a device can use it as well.
namespace quorvel::common {

/// A word that a relocation has filled with the address of a symbol.
struct SymbolSlot {
    const char* name;
    void** word;
    std::uint32_t type;        ///< the relocation's, as the processor numbers them
    const ElfW(Sym) * symbol;  ///< of the library that has the word
    [[nodiscard]] bool imported() const {
        return symbol->st_shndx == SHN_UNDEF;
    }
};

/// The relocations that a library's dynamic section names.
class SymbolSlots {
  public:
    explicit SymbolSlots(const link_map& map) : base_(map.l_addr) {
        for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry)
            read(*entry);
    }

    /// Tells whether the library names symbols at all.
    [[nodiscard]] bool any() const {
        return symbols_ != nullptr && names_ != nullptr;
    }

    /// Calls `visit` with each slot.
    template <typename Visit>
    void forEach(const Visit& visit) const {
        if (!any()) return;
        forEachOf<ElfW(Rela)>(withAddends_, visit);
        forEachOf<ElfW(Rel)>(plain_, visit);
        if (callsHaveAddends_) {
            forEachOf<ElfW(Rela)>(calls_, visit);
        } else {
            forEachOf<ElfW(Rel)>(calls_, visit);
        }
    }

  private:
    struct Table {
        ElfW(Addr) begin = 0;
        std::size_t bytes = 0;
    };

    // Some C libraries have already added the load address.
    [[nodiscard]] ElfW(Addr) loaded(ElfW(Addr) address) const {
        return address < base_ ? base_ + address : address;
    }

    void read(const ElfW(Dyn) & entry) {
        switch (entry.d_tag) {
            case DT_SYMTAB:
                symbols_ = reinterpret_cast<const ElfW(Sym)*>(loaded(entry.d_un.d_ptr));
                break;
            case DT_STRTAB:
                names_ = reinterpret_cast<const char*>(loaded(entry.d_un.d_ptr));
                break;
            case DT_RELA:
                withAddends_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_RELASZ:
                withAddends_.bytes = entry.d_un.d_val;
                break;
            case DT_REL:
                plain_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_RELSZ:
                plain_.bytes = entry.d_un.d_val;
                break;
            case DT_JMPREL:
                calls_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_PLTRELSZ:
                calls_.bytes = entry.d_un.d_val;
                break;
            case DT_PLTREL:
                callsHaveAddends_ = entry.d_un.d_val == DT_RELA;
                break;
            default:
                break;
        }
    }

    template <typename Entry, typename Visit>
    void forEachOf(const Table& table, const Visit& visit) const {
        const auto* const entries = reinterpret_cast<const Entry*>(table.begin);
        for (std::size_t i = 0; i < table.bytes / sizeof(Entry); ++i) {
            const auto info = static_cast<std::uint64_t>(entries[i].r_info);
            constexpr bool kWide = sizeof(ElfW(Addr)) == 8;
            const std::uint64_t index = kWide ? info >> 32 : info >> 8;
            if (index == 0) continue;
            const ElfW(Sym)& symbol = symbols_[index];
            visit(SymbolSlot{names_ + symbol.st_name, reinterpret_cast<void**>(base_ + entries[i].r_offset),
                             static_cast<std::uint32_t>(kWide ? info & 0xFFFFFFFF : info & 0xFF), &symbol});
        }
    }

    ElfW(Addr) base_;
    const ElfW(Sym) * symbols_ = nullptr;
    const char* names_ = nullptr;
    Table withAddends_;
    Table plain_;
    Table calls_;
    bool callsHaveAddends_ = false;
};

/// The pages of a library that the loader has closed to writing once it had relocated it.
class ClosedPages {
  public:
    explicit ClosedPages(const link_map& map) : map_(map) {
        (void)dl_iterate_phdr(find, this);
    }
    ClosedPages(const ClosedPages&) = delete;
    ClosedPages& operator=(const ClosedPages&) = delete;

    /// Lets the pages be written. Returns false, with errno, when the system refuses it.
    [[nodiscard]] bool open() const {
        return bytes_ == 0 || mprotect(begin_, bytes_, PROT_READ | PROT_WRITE) == 0;
    }
    /// Closes them again. Returns false, with errno, when the system refuses it.
    [[nodiscard]] bool close() const {
        return bytes_ == 0 || mprotect(begin_, bytes_, PROT_READ) == 0;
    }

  private:
    static int find(dl_phdr_info* info, std::size_t /*size*/, void* self) {
        auto& pages = *static_cast<ClosedPages*>(self);
        if (info->dlpi_addr != pages.map_.l_addr || std::strcmp(info->dlpi_name, pages.map_.l_name) != 0) return 0;
        for (std::size_t i = 0; i < info->dlpi_phnum; ++i) {
            const ElfW(Phdr)& header = info->dlpi_phdr[i];
            if (header.p_type != PT_GNU_RELRO) continue;
            // The loader protects whole pages only.
            const auto page = static_cast<ElfW(Addr)>(sysconf(_SC_PAGESIZE));
            const ElfW(Addr) begin = (info->dlpi_addr + header.p_vaddr) / page * page;
            const ElfW(Addr) end = (info->dlpi_addr + header.p_vaddr + header.p_memsz) / page * page;
            pages.begin_ = reinterpret_cast<void*>(begin);
            pages.bytes_ = end - begin;
        }
        return 1;
    }

    const link_map& map_;
    void* begin_ = nullptr;
    std::size_t bytes_ = 0;
};

}  // namespace quorvel::common
