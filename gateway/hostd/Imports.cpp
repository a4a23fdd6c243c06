#include "gateway/hostd/Imports.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quorvel::hostd {
namespace {

using Address = ElfW(Addr);

// What a library calls by name: one relocated word for each place that holds a function's address.
class Relocations {
  public:
    explicit Relocations(void* library) {
        if (dlinfo(library, RTLD_DI_LINKMAP, &map_) != 0) {
            throw std::runtime_error(std::string("cannot look into the plug-in: ") + dlerror());
        }
        for (const ElfW(Dyn)* entry = map_->l_ld; entry->d_tag != DT_NULL; ++entry)
            read(*entry);
    }

    [[nodiscard]] const link_map& map() const {
        return *map_;
    }

    /// Calls `visit` with the name of each symbol that is not defined in the library and the word that holds its
    /// address.
    void forEachImport(const std::function<void(std::string_view name, Address* word)>& visit) const {
        forEach<ElfW(Rela)>(rela_, visit);
        forEach<ElfW(Rel)>(rel_, visit);
        if (callsHaveAddends_) {
            forEach<ElfW(Rela)>(calls_, visit);
        } else {
            forEach<ElfW(Rel)>(calls_, visit);
        }
    }

  private:
    struct Table {
        Address begin = 0;
        std::size_t size = 0;
    };

    // Some C libraries have already added the load address.
    [[nodiscard]] Address loaded(Address address) const {
        return address < map_->l_addr ? map_->l_addr + address : address;
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
                rela_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_RELASZ:
                rela_.size = entry.d_un.d_val;
                break;
            case DT_REL:
                rel_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_RELSZ:
                rel_.size = entry.d_un.d_val;
                break;
            case DT_JMPREL:
                calls_.begin = loaded(entry.d_un.d_ptr);
                break;
            case DT_PLTRELSZ:
                calls_.size = entry.d_un.d_val;
                break;
            case DT_PLTREL:
                callsHaveAddends_ = entry.d_un.d_val == DT_RELA;
                break;
            default:
                break;
        }
    }

    template <typename Entry>
    void forEach(const Table& table, const std::function<void(std::string_view name, Address* word)>& visit) const {
        const auto* const entries = reinterpret_cast<const Entry*>(table.begin);
        for (std::size_t i = 0; i < table.size / sizeof(Entry); ++i) {
            const std::size_t index = sizeof(Address) == 8 ? ELF64_R_SYM(entries[i].r_info)
                                                           : ELF32_R_SYM(static_cast<std::uint32_t>(entries[i].r_info));
            if (index == 0 || symbols_[index].st_shndx != SHN_UNDEF) continue;
            visit(names_ + symbols_[index].st_name, reinterpret_cast<Address*>(map_->l_addr + entries[i].r_offset));
        }
    }

    link_map* map_ = nullptr;
    const ElfW(Sym) * symbols_ = nullptr;
    const char* names_ = nullptr;
    Table rela_;
    Table rel_;
    Table calls_;
    bool callsHaveAddends_ = false;
};

// Makes the part of a library that the loader has closed after relocation writable, for as long as the object lives.
class OpenedTable {
  public:
    explicit OpenedTable(const link_map& map) : map_(map) {
        (void)dl_iterate_phdr(find, this);
        if (size_ != 0 && mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error(std::string("the system does not let the plug-in's calls be led elsewhere: ") +
                                     std::strerror(errno) + "; run with --sandbox namespaces");
        }
    }
    OpenedTable(const OpenedTable&) = delete;
    OpenedTable& operator=(const OpenedTable&) = delete;
    ~OpenedTable() {
        if (size_ != 0) (void)mprotect(begin_, size_, PROT_READ);  // left open, it does no harm
    }

  private:
    static int find(dl_phdr_info* info, std::size_t, void* self) {
        auto& table = *static_cast<OpenedTable*>(self);
        if (info->dlpi_addr != table.map_.l_addr || std::strcmp(info->dlpi_name, table.map_.l_name) != 0) return 0;
        for (std::size_t i = 0; i < info->dlpi_phnum; ++i) {
            const ElfW(Phdr)& header = info->dlpi_phdr[i];
            if (header.p_type != PT_GNU_RELRO) continue;
            const auto page = static_cast<Address>(getpagesize());
            const Address begin = (info->dlpi_addr + header.p_vaddr) / page * page;
            const Address end = (info->dlpi_addr + header.p_vaddr + header.p_memsz) / page * page;
            table.begin_ = reinterpret_cast<void*>(begin);
            table.size_ = end - begin;
        }
        return 1;
    }

    const link_map& map_;
    void* begin_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace

std::size_t supply(void* library, std::span<const Supplied> calls) {
    const Relocations relocations(library);
    const OpenedTable opened(relocations.map());
    std::size_t count = 0;
    relocations.forEachImport([&](std::string_view name, Address* word) {
        for (const Supplied& call : calls) {
            if (name != call.name) continue;
            *word = reinterpret_cast<Address>(call.function);
            ++count;
        }
    });
    return count;
}

void* importOf(void* library, const char* name) {
    void* function = nullptr;
    Relocations(library).forEachImport([&](std::string_view each, const Address* word) {
        if (each == name) function = reinterpret_cast<void*>(*word);
    });
    return function;
}

}  // namespace quorvel::hostd
