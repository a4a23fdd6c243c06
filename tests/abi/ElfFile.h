#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A shared library as the dynamic loader sees it, read from its file: of either word size, little-endian.
namespace quorvel::elf {

struct Symbol {
    std::string name;
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    bool function = false;
    bool defined = false;  // here, for everybody
    bool weak = false;
};

struct Dynamic {
    std::uint64_t tag = 0;
    std::uint64_t value = 0;
};

struct Segment {
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    std::uint64_t offset = 0;
    std::uint64_t address = 0;
    std::uint64_t fileSize = 0;
    std::uint64_t memorySize = 0;
};

class ElfFile {
  public:
    // Reads the file and applies the relocations that do not depend on other libraries. Throws std::runtime_error, with
    // what was expected, for a file that is none.
    explicit ElfFile(const std::string& path);

    [[nodiscard]] std::size_t wordSize() const {
        return wordSize_;
    }
    [[nodiscard]] std::uint16_t machine() const {
        return machine_;
    }
    // Dynamic symbols, undefined ones included.
    [[nodiscard]] const std::vector<Symbol>& symbols() const {
        return symbols_;
    }
    [[nodiscard]] const std::vector<Dynamic>& dynamics() const {
        return dynamics_;
    }
    [[nodiscard]] const std::vector<Segment>& segments() const {
        return segments_;
    }
    [[nodiscard]] std::size_t fileBytes() const {
        return bytes_.size();
    }
    [[nodiscard]] bool hasDynamic(std::uint64_t tag) const;
    // The value of the first entry with this tag, 0 when there is none.
    [[nodiscard]] std::uint64_t dynamic(std::uint64_t tag) const;
    // The texts of all entries with this tag (libraries needed, own name, run-time paths).
    [[nodiscard]] std::vector<std::string> dynamicTexts(std::uint64_t tag) const;
    // Null when there is no segment of this type.
    [[nodiscard]] const Segment* segment(std::uint32_t type) const;
    [[nodiscard]] const Symbol& symbol(const std::string& name) const;

    // The machine word at an address once the library is loaded at address 0.
    [[nodiscard]] std::uint64_t word(std::uint64_t address) const;
    [[nodiscard]] std::uint32_t word32(std::uint64_t address) const;
    [[nodiscard]] std::string text(std::uint64_t address) const;

  private:
    struct Section {
        std::uint32_t type = 0;
        std::uint64_t flags = 0;
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
        std::uint32_t link = 0;
        std::uint64_t entrySize = 0;
    };

    [[nodiscard]] std::uint64_t read(std::uint64_t offset, std::size_t size) const;
    void write(std::uint64_t offset, std::uint64_t value);
    [[nodiscard]] std::string textAt(std::uint64_t offset) const;
    [[nodiscard]] std::uint64_t offsetOf(std::uint64_t address) const;
    // `Words` names the records of one word size.
    template <typename Words>
    void readTables();
    template <typename Words>
    void readSegments();
    template <typename Words>
    void readSections();
    template <typename Words>
    void readSymbols();
    void readDynamics();
    void relocate();

    std::vector<std::uint8_t> bytes_;
    std::size_t wordSize_ = 0;
    std::uint16_t machine_ = 0;
    std::vector<Segment> segments_;
    std::vector<Section> sections_;
    std::vector<Symbol> symbols_;
    std::vector<Dynamic> dynamics_;
};

}  // namespace quorvel::elf
