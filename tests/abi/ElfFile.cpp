#include "ElfFile.h"

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

}  // namespace

ElfFile::ElfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (bytes_.size() < sizeof(Elf32_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0) {
        refuse(path + " is no ELF file");
    }
    if (bytes_[EI_DATA] != ELFDATA2LSB) refuse(path + " is not little-endian");
    wordSize_ = bytes_[EI_CLASS] == ELFCLASS64 ? 8 : 4;
    machine_ = static_cast<std::uint16_t>(read(offsetof(Elf32_Ehdr, e_machine), 2));
    readSegments();
    readSections();
    readSymbols();
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

void ElfFile::readSegments() {
    const bool wide = wordSize_ == 8;
    const std::uint64_t start = wide ? read(offsetof(Elf64_Ehdr, e_phoff), 8) : read(offsetof(Elf32_Ehdr, e_phoff), 4);
    const std::uint64_t count = wide ? read(offsetof(Elf64_Ehdr, e_phnum), 2) : read(offsetof(Elf32_Ehdr, e_phnum), 2);
    for (std::uint64_t n = 0; n < count; ++n) {
        Segment segment;
        if (wide) {
            const std::uint64_t at = start + n * sizeof(Elf64_Phdr);
            segment.type = static_cast<std::uint32_t>(read(at + offsetof(Elf64_Phdr, p_type), 4));
            segment.flags = static_cast<std::uint32_t>(read(at + offsetof(Elf64_Phdr, p_flags), 4));
            segment.offset = read(at + offsetof(Elf64_Phdr, p_offset), 8);
            segment.address = read(at + offsetof(Elf64_Phdr, p_vaddr), 8);
            segment.fileSize = read(at + offsetof(Elf64_Phdr, p_filesz), 8);
            segment.memorySize = read(at + offsetof(Elf64_Phdr, p_memsz), 8);
        } else {
            const std::uint64_t at = start + n * sizeof(Elf32_Phdr);
            segment.type = static_cast<std::uint32_t>(read(at + offsetof(Elf32_Phdr, p_type), 4));
            segment.flags = static_cast<std::uint32_t>(read(at + offsetof(Elf32_Phdr, p_flags), 4));
            segment.offset = read(at + offsetof(Elf32_Phdr, p_offset), 4);
            segment.address = read(at + offsetof(Elf32_Phdr, p_vaddr), 4);
            segment.fileSize = read(at + offsetof(Elf32_Phdr, p_filesz), 4);
            segment.memorySize = read(at + offsetof(Elf32_Phdr, p_memsz), 4);
        }
        segments_.push_back(segment);
    }
}

void ElfFile::readSections() {
    const bool wide = wordSize_ == 8;
    const std::uint64_t start = wide ? read(offsetof(Elf64_Ehdr, e_shoff), 8) : read(offsetof(Elf32_Ehdr, e_shoff), 4);
    const std::uint64_t count = wide ? read(offsetof(Elf64_Ehdr, e_shnum), 2) : read(offsetof(Elf32_Ehdr, e_shnum), 2);
    for (std::uint64_t n = 0; n < count; ++n) {
        Section section;
        if (wide) {
            const std::uint64_t at = start + n * sizeof(Elf64_Shdr);
            section.type = static_cast<std::uint32_t>(read(at + offsetof(Elf64_Shdr, sh_type), 4));
            section.flags = read(at + offsetof(Elf64_Shdr, sh_flags), 8);
            section.offset = read(at + offsetof(Elf64_Shdr, sh_offset), 8);
            section.size = read(at + offsetof(Elf64_Shdr, sh_size), 8);
            section.link = static_cast<std::uint32_t>(read(at + offsetof(Elf64_Shdr, sh_link), 4));
            section.entrySize = read(at + offsetof(Elf64_Shdr, sh_entsize), 8);
        } else {
            const std::uint64_t at = start + n * sizeof(Elf32_Shdr);
            section.type = static_cast<std::uint32_t>(read(at + offsetof(Elf32_Shdr, sh_type), 4));
            section.flags = read(at + offsetof(Elf32_Shdr, sh_flags), 4);
            section.offset = read(at + offsetof(Elf32_Shdr, sh_offset), 4);
            section.size = read(at + offsetof(Elf32_Shdr, sh_size), 4);
            section.link = static_cast<std::uint32_t>(read(at + offsetof(Elf32_Shdr, sh_link), 4));
            section.entrySize = read(at + offsetof(Elf32_Shdr, sh_entsize), 4);
        }
        sections_.push_back(section);
    }
}

void ElfFile::readSymbols() {
    for (const Section& section : sections_) {
        if (section.type != SHT_DYNSYM) continue;
        const std::uint64_t texts = sections_.at(section.link).offset;
        for (std::uint64_t at = section.offset; at < section.offset + section.size; at += section.entrySize) {
            Symbol symbol;
            std::uint64_t info = 0;
            std::uint64_t home = 0;
            symbol.name = textAt(texts + read(at, 4));
            if (wordSize_ == 8) {
                info = read(at + offsetof(Elf64_Sym, st_info), 1);
                home = read(at + offsetof(Elf64_Sym, st_shndx), 2);
                symbol.address = read(at + offsetof(Elf64_Sym, st_value), 8);
                symbol.size = read(at + offsetof(Elf64_Sym, st_size), 8);
            } else {
                info = read(at + offsetof(Elf32_Sym, st_info), 1);
                home = read(at + offsetof(Elf32_Sym, st_shndx), 2);
                symbol.address = read(at + offsetof(Elf32_Sym, st_value), 4);
                symbol.size = read(at + offsetof(Elf32_Sym, st_size), 4);
            }
            symbol.function = (info & 0xF) == STT_FUNC;
            symbol.weak = info >> 4 == STB_WEAK;
            // A section's symbol is local: nobody else sees it.
            symbol.defined = home != SHN_UNDEF && info >> 4 != STB_LOCAL;
            symbols_.push_back(symbol);
        }
    }
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
