#include "tests/abi/ElfFile.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace quorvel::elf {

namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw std::runtime_error(what);
}

enum class Relocation { None, Relative, Symbol, Other };

Relocation relocationOf(std::uint16_t machine, std::uint64_t type) {
    switch (machine) {
        case EM_X86_64:
            if (type == R_X86_64_RELATIVE) return Relocation::Relative;
            if (type == R_X86_64_64 || type == R_X86_64_GLOB_DAT || type == R_X86_64_JUMP_SLOT)
                return Relocation::Symbol;
            break;
        case EM_386:
            if (type == R_386_RELATIVE) return Relocation::Relative;
            if (type == R_386_32 || type == R_386_GLOB_DAT || type == R_386_JMP_SLOT) return Relocation::Symbol;
            break;
        case EM_ARM:
            if (type == R_ARM_RELATIVE) return Relocation::Relative;
            if (type == R_ARM_ABS32 || type == R_ARM_GLOB_DAT || type == R_ARM_JUMP_SLOT) return Relocation::Symbol;
            break;
        default:
            refuse("machine " + std::to_string(machine) + " is none that this reader relocates for");
    }
    return type == 0 ? Relocation::None : Relocation::Other;
}

struct Words32 {
    using Header = Elf32_Ehdr;
    using Segment = Elf32_Phdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
};

struct Words64 {
    using Header = Elf64_Ehdr;
    using Segment = Elf64_Phdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
};

}  // namespace

// A field of the record at an offset of the file.
#define FIELD(at, Record, field) read((at) + offsetof(Record, field), sizeof(Record::field))

template <typename Words>
void ElfFile::readTables() {
    readSegments<Words>();
    readSections<Words>();
    readSymbols<Words>();
}

template <typename Words>
void ElfFile::readSegments() {
    using Header = typename Words::Header;
    using Entry = typename Words::Segment;
    const std::uint64_t start = FIELD(0, Header, e_phoff);
    const std::uint64_t count = FIELD(0, Header, e_phnum);
    for (std::uint64_t n = 0; n < count; ++n) {
        const std::uint64_t at = start + n * sizeof(Entry);
        Segment segment;
        segment.type = static_cast<std::uint32_t>(FIELD(at, Entry, p_type));
        segment.flags = static_cast<std::uint32_t>(FIELD(at, Entry, p_flags));
        segment.offset = FIELD(at, Entry, p_offset);
        segment.address = FIELD(at, Entry, p_vaddr);
        segment.fileSize = FIELD(at, Entry, p_filesz);
        segment.memorySize = FIELD(at, Entry, p_memsz);
        segments_.push_back(segment);
    }
}

template <typename Words>
void ElfFile::readSections() {
    using Header = typename Words::Header;
    using Entry = typename Words::Section;
    const std::uint64_t start = FIELD(0, Header, e_shoff);
    const std::uint64_t count = FIELD(0, Header, e_shnum);
    for (std::uint64_t n = 0; n < count; ++n) {
        const std::uint64_t at = start + n * sizeof(Entry);
        Section section;
        section.type = static_cast<std::uint32_t>(FIELD(at, Entry, sh_type));
        section.flags = FIELD(at, Entry, sh_flags);
        section.offset = FIELD(at, Entry, sh_offset);
        section.size = FIELD(at, Entry, sh_size);
        section.link = static_cast<std::uint32_t>(FIELD(at, Entry, sh_link));
        section.entrySize = FIELD(at, Entry, sh_entsize);
        sections_.push_back(section);
    }
}

template <typename Words>
void ElfFile::readSymbols() {
    using Entry = typename Words::Symbol;
    for (const Section& section : sections_) {
        if (section.type != SHT_DYNSYM) continue;
        const std::uint64_t texts = sections_.at(section.link).offset;
        for (std::uint64_t at = section.offset; at < section.offset + section.size; at += section.entrySize) {
            const std::uint64_t info = FIELD(at, Entry, st_info);
            const std::uint64_t home = FIELD(at, Entry, st_shndx);
            Symbol symbol;
            symbol.name = textAt(texts + FIELD(at, Entry, st_name));
            symbol.address = FIELD(at, Entry, st_value);
            symbol.size = FIELD(at, Entry, st_size);
            symbol.function = (info & 0xF) == STT_FUNC;
            symbol.weak = info >> 4 == STB_WEAK;
            // A section's symbol is local: nobody else sees it.
            symbol.defined = home != SHN_UNDEF && info >> 4 != STB_LOCAL;
            symbols_.push_back(symbol);
        }
    }
}

#undef FIELD

ElfFile::ElfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (bytes_.size() < sizeof(Elf32_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0) {
        refuse(path + " is no ELF file");
    }
    if (bytes_[EI_DATA] != ELFDATA2LSB) refuse(path + " is not little-endian");
    wordSize_ = bytes_[EI_CLASS] == ELFCLASS64 ? 8 : 4;
    machine_ = static_cast<std::uint16_t>(read(offsetof(Elf32_Ehdr, e_machine), 2));
    if (wordSize_ == 8) {
        readTables<Words64>();
    } else {
        readTables<Words32>();
    }
    readDynamics();
    relocate();
}

std::uint64_t ElfFile::read(std::uint64_t offset, std::size_t size) const {
    if (offset > bytes_.size() || bytes_.size() - offset < size) refuse("the file ends where more is announced");
    std::uint64_t value = 0;
    for (std::size_t n = 0; n < size; ++n)
        value |= std::uint64_t{bytes_[static_cast<std::size_t>(offset) + n]} << (8 * n);
    return value;
}

void ElfFile::write(std::uint64_t offset, std::uint64_t value) {
    (void)read(offset, wordSize_);  // refuses what is outside
    for (std::size_t n = 0; n < wordSize_; ++n)
        bytes_[static_cast<std::size_t>(offset) + n] = static_cast<std::uint8_t>(value >> (8 * n));
}

std::string ElfFile::textAt(std::uint64_t offset) const {
    std::string text;
    for (;; ++offset) {
        const auto character = static_cast<char>(read(offset, 1));
        if (character == '\0') return text;
        text += character;
    }
}

std::uint64_t ElfFile::offsetOf(std::uint64_t address) const {
    for (const Segment& each : segments_) {
        if (each.type == PT_LOAD && address >= each.address && address - each.address < each.fileSize) {
            return address - each.address + each.offset;
        }
    }
    refuse("no part of the file is loaded at address " + std::to_string(address));
}

void ElfFile::readDynamics() {
    const Segment* dynamicSegment = segment(PT_DYNAMIC);
    if (dynamicSegment == nullptr) refuse("the file has no dynamic segment: is it a shared library?");
    const std::uint64_t end = dynamicSegment->offset + dynamicSegment->fileSize;
    for (std::uint64_t at = dynamicSegment->offset; at < end; at += 2 * wordSize_) {
        const Dynamic entry{read(at, wordSize_), read(at + wordSize_, wordSize_)};
        if (entry.tag == DT_NULL) break;
        dynamics_.push_back(entry);
    }
}

void ElfFile::relocate() {
    for (const Section& section : sections_) {
        const bool withAddend = section.type == SHT_RELA;
        if ((!withAddend && section.type != SHT_REL) || (section.flags & SHF_ALLOC) == 0) continue;
        for (std::uint64_t at = section.offset; at < section.offset + section.size; at += section.entrySize) {
            const std::uint64_t place = offsetOf(read(at, wordSize_));
            const std::uint64_t info = read(at + wordSize_, wordSize_);
            const std::uint64_t type = wordSize_ == 8 ? ELF64_R_TYPE(info) : ELF32_R_TYPE(info);
            const std::uint64_t index = wordSize_ == 8 ? ELF64_R_SYM(info) : ELF32_R_SYM(info);
            const std::uint64_t addend = withAddend ? read(at + 2 * wordSize_, wordSize_) : read(place, wordSize_);
            switch (relocationOf(machine_, type)) {
                case Relocation::Relative:
                    write(place, addend);
                    break;
                case Relocation::Symbol:
                    if (symbols_.at(static_cast<std::size_t>(index)).address != 0)
                        write(place, symbols_.at(static_cast<std::size_t>(index)).address + addend);
                    break;
                case Relocation::None:
                    break;
                case Relocation::Other:
                    refuse("relocation type " + std::to_string(type) + " is none that a plain library has");
            }
        }
    }
}

bool ElfFile::hasDynamic(std::uint64_t tag) const {
    for (const Dynamic& each : dynamics_) {
        if (each.tag == tag) return true;
    }
    return false;
}

std::uint64_t ElfFile::dynamic(std::uint64_t tag) const {
    for (const Dynamic& each : dynamics_) {
        if (each.tag == tag) return each.value;
    }
    return 0;
}

std::vector<std::string> ElfFile::dynamicTexts(std::uint64_t tag) const {
    const std::uint64_t texts = offsetOf(dynamic(DT_STRTAB));
    std::vector<std::string> found;
    for (const Dynamic& each : dynamics_) {
        if (each.tag == tag) found.push_back(textAt(texts + each.value));
    }
    return found;
}

const Segment* ElfFile::segment(std::uint32_t type) const {
    for (const Segment& each : segments_) {
        if (each.type == type) return &each;
    }
    return nullptr;
}

const Symbol& ElfFile::symbol(const std::string& name) const {
    for (const Symbol& each : symbols_) {
        if (each.defined && each.name == name) return each;
    }
    refuse("the library does not export " + name);
}

std::uint64_t ElfFile::word(std::uint64_t address) const {
    return read(offsetOf(address), wordSize_);
}

std::uint32_t ElfFile::word32(std::uint64_t address) const {
    return static_cast<std::uint32_t>(read(offsetOf(address), 4));
}

std::string ElfFile::text(std::uint64_t address) const {
    return textAt(offsetOf(address));
}

}  // namespace quorvel::elf
