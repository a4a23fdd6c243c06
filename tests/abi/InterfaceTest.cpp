#include <elf.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/abi/ElfFile.h"
#include "tests/abi/PlainDataModel.h"

// The library's interface as a host finds it in the built file. Nothing of the library's sources is included here: what
// is expected stands in DataModel.txt and Exports.txt. The library, and the folder of the two lists, are the program's
// arguments.

namespace quorvel::abi {

namespace {

constexpr unsigned kWordsPerEntry = 72;

std::string libraryPath;
std::string listFolder;

const elf::ElfFile& library() {
    static const elf::ElfFile file(libraryPath);
    return file;
}

const DataModel& dataModel() {
    static const DataModel model = readDataModel(listFolder + "/DataModel.txt");
    return model;
}

const Exports& exports() {
    static const Exports list = readExports(listFolder + "/Exports.txt");
    return list;
}

std::set<std::string> expectedFunctions() {
    std::set<std::string> names(exports().functions.begin(), exports().functions.end());
    for (const Object& object : dataModel().objects) {
        for (const char* suffix : {"InitContext", "CheckContextNodeSet", "ApplyContext", "InstanceGet"}) {
            names.insert(object.prefix + suffix);
        }
    }
    for (const Parameter& parameter : dataModel().parameters) {
        if (parameter.readable()) names.insert(parameter.getter());
        if (parameter.writable) names.insert(parameter.setter());
    }
    return names;
}

std::set<std::string> exportedSymbols(bool functions) {
    std::set<std::string> names;
    for (const elf::Symbol& symbol : library().symbols()) {
        if (symbol.defined && symbol.function == functions) names.insert(symbol.name);
    }
    return names;
}

std::uint64_t entryWord(std::size_t entry, unsigned word) {
    const std::size_t bytes = library().wordSize();
    return library().word(library().symbol("gQuorvelWiFiDataModelTable").address +
                          (entry * kWordsPerEntry + word) * bytes);
}

// The name of the exported function at an address; for another address, the address.
std::string functionAt(std::uint64_t address) {
    static const std::map<std::uint64_t, std::string> names = [] {
        std::map<std::uint64_t, std::string> all;
        for (const elf::Symbol& symbol : library().symbols()) {
            if (symbol.defined && symbol.function) all[symbol.address] = symbol.name;
        }
        return all;
    }();
    const auto found = names.find(address);
    return found == names.end() ? "address " + std::to_string(address) : found->second;
}

// The words of an entry behind its texts and type, as text, without the words that are 0.
std::map<unsigned, std::string> expectedWords(const Parameter& parameter) {
    const Object& object = parameter.object;
    std::map<unsigned, std::string> words;
    words[3] = parameter.writable ? "256" : "1";
    if (parameter.readableByTable()) words[parameter.getterWord()] = parameter.getter();
    if (!parameter.writable) return words;
    words[5] = std::to_string(object.contextSize);
    words[parameter.setterWord()] = parameter.setter();
    words[object.depth == 2 ? 54 : 37 + object.depth] = object.prefix + "ApplyContext";
    if (object.depth < 2) words[36] = object.prefix + "InitContext";
    return words;
}

std::map<unsigned, std::string> foundWords(std::size_t entry) {
    std::map<unsigned, std::string> words;
    for (unsigned word = 3; word < kWordsPerEntry; ++word) {
        const std::uint64_t value = entryWord(entry, word);
        if (value != 0) words[word] = word < 6 ? std::to_string(value) : functionAt(value);
    }
    return words;
}

}  // namespace

TEST(Exports, AreTheInterfaceAndNothingElse) {
    EXPECT_EQ(exportedSymbols(true), expectedFunctions());
    std::set<std::string> objects;
    for (const ExportedObject& object : exports().objects)
        objects.insert(object.name);
    EXPECT_EQ(exportedSymbols(false), objects);
}

TEST(Exports, HaveTheirSizes) {
    for (const ExportedObject& object : exports().objects) {
        // The table's words are those of its entries.
        const std::size_t times = object.name == "gQuorvelWiFiDataModelTable" ? dataModel().statedParameters : 1;
        EXPECT_EQ(library().symbol(object.name).size, times * object.words * library().wordSize() + object.bytes)
            << object.name;
    }
}

TEST(Exports, ResultFromTheStatedNumbersOfObjectsAndParameters) {
    EXPECT_EQ(dataModel().objects.size(), dataModel().statedObjects);
    EXPECT_EQ(dataModel().parameters.size(), dataModel().statedParameters);
    std::map<std::string, unsigned> entries;
    for (const Parameter& parameter : dataModel().parameters)
        ++entries[parameter.object.path];
    for (const Object& object : dataModel().objects)
        EXPECT_EQ(entries[object.path], object.entries) << object.path;
}

TEST(Dependencies, AreThePlatformAndTheCLibrary) {
    std::set<std::string> needed;
    for (const std::string& name : library().dynamicTexts(DT_NEEDED)) {
        needed.insert(name);
    }
    EXPECT_EQ(needed, (std::set<std::string>{"libc.so.6", "libquorvel.so", "libwlcsm.so"}));
}

TEST(Dependencies, TakeNothingFromTheCppRuntime) {
    for (const elf::Symbol& symbol : library().symbols()) {
        // The start files refer weakly to the C library's own __cxa_finalize.
        if (symbol.defined || (symbol.weak && symbol.name == "__cxa_finalize")) continue;
        EXPECT_NE(symbol.name.rfind("_Z", 0), 0U) << symbol.name;
        EXPECT_NE(symbol.name.rfind("__cxa", 0), 0U) << symbol.name;
        EXPECT_NE(symbol.name.rfind("__gxx", 0), 0U) << symbol.name;
        EXPECT_NE(symbol.name.rfind("_Unwind", 0), 0U) << symbol.name;
    }
}

TEST(Hardening, NeedsNoTextRelocations) {
    EXPECT_FALSE(library().hasDynamic(DT_TEXTREL));
    EXPECT_EQ(library().dynamic(DT_FLAGS) & DF_TEXTREL, 0U);
}

TEST(Hardening, IsReadOnlyAfterRelocation) {
    EXPECT_NE(library().segment(PT_GNU_RELRO), nullptr);
    EXPECT_TRUE(library().hasDynamic(DT_BIND_NOW) || (library().dynamic(DT_FLAGS) & DF_BIND_NOW) != 0 ||
                (library().dynamic(DT_FLAGS_1) & DF_1_NOW) != 0);
}

TEST(Hardening, HasNoExecutableStackAndNoWritableCode) {
    const elf::Segment* stack = library().segment(PT_GNU_STACK);
    ASSERT_NE(stack, nullptr);
    EXPECT_EQ(stack->flags & PF_X, 0U);
    for (const elf::Segment& segment : library().segments()) {
        if (segment.type != PT_LOAD) continue;
        EXPECT_NE(segment.flags & (PF_W | PF_X), static_cast<unsigned>(PF_W | PF_X));
    }
}

TEST(Hardening, SearchesNoFolderOfItsOwn) {
    EXPECT_FALSE(library().hasDynamic(DT_RPATH));
    EXPECT_FALSE(library().hasDynamic(DT_RUNPATH));
}

TEST(Loading, RunsNothing) {
    constexpr std::uint64_t kTags[] = {DT_INIT, DT_INIT_ARRAY, DT_PREINIT_ARRAY, DT_FINI, DT_FINI_ARRAY};
    for (const std::uint64_t tag : kTags)
        EXPECT_FALSE(library().hasDynamic(tag)) << tag;
}

TEST(Table, StandsInMemoryThatIsReadOnlyAfterRelocation) {
    const elf::Segment* readOnly = library().segment(PT_GNU_RELRO);
    ASSERT_NE(readOnly, nullptr);
    const elf::Symbol& table = library().symbol("gQuorvelWiFiDataModelTable");
    EXPECT_GE(table.address, readOnly->address);
    EXPECT_LE(table.address + table.size, readOnly->address + readOnly->memorySize);
}

TEST(Table, SaysHowManyEntriesItHas) {
    const std::uint64_t info = library().symbol("gQuorvelWiFiDataModelTableInfo").address;
    EXPECT_EQ(library().word32(info), 0U);
    EXPECT_EQ(library().word32(info + 4), 0U);
    EXPECT_EQ(library().word32(info + 8), 0U);
    EXPECT_EQ(library().word32(info + 12), dataModel().statedParameters);
}

TEST(Table, NamesEveryParameterInOrder) {
    for (std::size_t entry = 0; entry < dataModel().parameters.size(); ++entry) {
        const Parameter& parameter = dataModel().parameters[entry];
        SCOPED_TRACE("entry " + std::to_string(entry));
        EXPECT_EQ(library().text(entryWord(entry, 0)), parameter.object.path);
        EXPECT_EQ(library().text(entryWord(entry, 1)), parameter.name);
        EXPECT_EQ(entryWord(entry, 2), static_cast<unsigned>(parameter.type));
    }
}

TEST(Table, HasEachFunctionWhereTypeAndDepthPutItAndZeroElsewhere) {
    for (std::size_t entry = 0; entry < dataModel().parameters.size(); ++entry) {
        const Parameter& parameter = dataModel().parameters[entry];
        EXPECT_EQ(foundWords(entry), expectedWords(parameter)) << parameter.object.path << "." << parameter.name;
    }
}

namespace {

const char* machineName(std::uint16_t machine) {
    switch (machine) {
        case EM_X86_64:
            return "x86-64";
        case EM_386:
            return "i386";
        case EM_ARM:
            return "arm";
        default:
            return "?";
    }
}

void printManifest() {
    unsigned writable = 0;
    unsigned slots = 0;
    for (std::size_t entry = 0; entry < dataModel().parameters.size(); ++entry) {
        writable += dataModel().parameters[entry].writable ? 1 : 0;
        slots += static_cast<unsigned>(foundWords(entry).size());
    }
    std::string needed;
    for (const std::string& name : library().dynamicTexts(DT_NEEDED))
        needed += " " + name;
    const elf::Segment* stack = library().segment(PT_GNU_STACK);
    (void)std::printf("\nInterface of %s\n", libraryPath.c_str());
    (void)std::printf("  machine             %s, %zu-bit words, %zu bytes in the file\n",
                      machineName(library().machine()), 8 * library().wordSize(), library().fileBytes());
    (void)std::printf("  exported functions  %zu (%zu expected)\n", exportedSymbols(true).size(),
                      expectedFunctions().size());
    (void)std::printf("  exported objects    %zu (%zu expected)\n", exportedSymbols(false).size(),
                      exports().objects.size());
    (void)std::printf("  needs              %s\n", needed.c_str());
    (void)std::printf("  table               %u entries of %u words, %u writable, %u words in use behind the type\n",
                      library().word32(library().symbol("gQuorvelWiFiDataModelTableInfo").address + 12), kWordsPerEntry,
                      writable, slots);
    (void)std::printf("  relocation          text %s, read-only after %s, bound at load %s\n",
                      library().hasDynamic(DT_TEXTREL) ? "patched" : "untouched",
                      library().segment(PT_GNU_RELRO) != nullptr ? "yes" : "no",
                      (library().dynamic(DT_FLAGS) & DF_BIND_NOW) != 0 ? "yes" : "no");
    (void)std::printf("  stack               %s\n",
                      stack != nullptr && (stack->flags & PF_X) == 0 ? "not executable" : "executable");
    (void)std::printf("  search path         %s\n",
                      library().hasDynamic(DT_RUNPATH) || library().hasDynamic(DT_RPATH) ? "its own" : "none");
    (void)std::printf("  constructors        %llu (none expected)\n",
                      static_cast<unsigned long long>(library().dynamic(DT_INIT_ARRAYSZ) / library().wordSize()));
}

}  // namespace

}  // namespace quorvel::abi

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 3) {
        (void)std::fprintf(stderr, "usage: %s LIBRARY FOLDER-OF-LISTS\n", argv[0]);
        return 2;
    }
    quorvel::abi::libraryPath = argv[1];
    quorvel::abi::listFolder = argv[2];
    const int result = RUN_ALL_TESTS();
    quorvel::abi::printManifest();
    return result;
}
