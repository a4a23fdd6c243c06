// The conformance check passes a conforming library and names each departure of another.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/abi/ElfFile.h"

namespace quorvel::selftest_test {
namespace {

struct Outcome {
    int status = -1;
    std::string text;

    [[nodiscard]] bool says(const std::string& words) const {
        return text.find(words) != std::string::npos;
    }
};

Outcome check(const std::string& arguments) {
    Outcome outcome;
    FILE* const output = popen((SELFTEST_COMMAND " " + arguments + " 2>&1").c_str(), "r");
    if (output == nullptr) return outcome;
    std::array<char, 4096> part{};
    while (const std::size_t count = std::fread(part.data(), 1, part.size(), output))
        outcome.text.append(part.data(), count);
    const int status = pclose(output);
    if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
    return outcome;
}

// A copy of the built plug-in with some of its bytes changed.
class Patched {
  public:
    Patched() {
        std::string folder = (std::filesystem::temp_directory_path() / "quorvel-selftest-XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no temporary folder");
        folder_ = folder;
        file_ = folder + "/libquorvel_wifi.so";
        std::filesystem::copy_file(SELFTEST_PLUGIN, file_);
    }
    Patched(const Patched&) = delete;
    Patched& operator=(const Patched&) = delete;
    ~Patched() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    // Overwrites 32 bits of what is exported under `name`.
    void put(const std::string& name, std::size_t offset, std::uint32_t value) const {
        const elf::ElfFile library(file_);
        const std::uint64_t address = library.symbol(name).address + offset;
        for (const elf::Segment& segment : library.segments()) {
            if (segment.type != 1 || address < segment.address || address >= segment.address + segment.fileSize)
                continue;
            write(segment.offset + (address - segment.address), &value, sizeof value);
            return;
        }
        throw std::runtime_error(name + " is in no segment");
    }
    // Overwrites a word that is no address in an entry of the table.
    void putWord(std::size_t entry, std::size_t word, std::uint32_t value) const {
        put("gQuorvelWiFiDataModelTable", (entry * 72 + word) * elf::ElfFile(file_).wordSize(), value);
    }
    // Replaces the first occurrence of `text` and its terminator.
    void rename(const std::string& text, const std::string& other) const {
        std::ifstream in(file_, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        const std::size_t place = bytes.find(std::string(1, '\0') + text + '\0');
        if (place == std::string::npos) throw std::runtime_error(text + " stands nowhere");
        write(place + 1, other.data(), other.size());
    }
    [[nodiscard]] Outcome check() const {
        return selftest_test::check(file_);
    }

  private:
    void write(std::uint64_t offset, const void* bytes, std::size_t size) const {
        std::fstream file(file_, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(offset));
        file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
        if (!file.good()) throw std::runtime_error("cannot write " + file_);
    }

    std::string folder_;
    std::string file_;
};

TEST(Selftest, PassesTheBuiltPlugin) {
    const Outcome outcome = check(SELFTEST_PLUGIN);
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    EXPECT_TRUE(outcome.says("conforms: ")) << outcome.text;
    EXPECT_FALSE(outcome.says("✗")) << outcome.text;
}

TEST(Selftest, ReportsInJson) {
    const Outcome outcome = check("--json " SELFTEST_PLUGIN);
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    EXPECT_EQ(outcome.text.find("{\n"), 0U);
    EXPECT_TRUE(outcome.says("\"passed\": true"));
    EXPECT_TRUE(check("--json " SELFTEST_BROKEN).says("\"passed\": false"));
}

TEST(Selftest, SeesAWrongNumberOfEntries) {
    const Patched plugin;
    plugin.put("gQuorvelWiFiDataModelTableInfo", 12, 244);
    const Outcome outcome = plugin.check();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says("word 3 is 244, expected 245")) << outcome.text;
}

struct WrongWord {
    std::size_t entry;
    std::size_t word;
    std::uint32_t value;
    const char* says;
};

class SelftestOfAnEntry : public testing::TestWithParam<WrongWord> {};

TEST_P(SelftestOfAnEntry, SeesAWrongWord) {
    const Patched plugin;
    plugin.putWord(GetParam().entry, GetParam().word, GetParam().value);
    const Outcome outcome = plugin.check();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says(GetParam().says)) << outcome.text;
    EXPECT_TRUE(outcome.says("does not conform: 1 failures in ")) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(
    Table, SelftestOfAnEntry,
    testing::Values(WrongWord{10, 2, 3, "entry 10 (WiFi.Radio.{i}.Enable): word 2 holds 3, expected 2"},
                    WrongWord{11, 3, 256, "entry 11 (WiFi.Radio.{i}.Status): word 3 holds 256, expected 1"},
                    WrongWord{12, 5, 9956, "entry 12 (WiFi.Radio.{i}.Alias): word 5 holds 9956, expected 9960"},
                    WrongWord{0, 4, 1, "entry 0 (WiFi.RadioNumberOfEntries): word 4 holds 1, expected 0"},
                    WrongWord{244, 71, 9, "word 71 holds 9, expected 0"}));

TEST(Selftest, SeesAFunctionThatIsNotExported) {
    const Patched plugin;
    plugin.rename("WiFiSSIDAliasGet", "WiFiSSIDAliasGot");
    const Outcome outcome = plugin.check();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says("WiFiSSIDAliasGet is not exported")) << outcome.text;
}

class SelftestOfABrokenPlugin : public testing::TestWithParam<const char*> {};

TEST_P(SelftestOfABrokenPlugin, SeesTheBrokenRule) {
    static const Outcome outcome = check("--json " SELFTEST_BROKEN);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says(GetParam())) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(
    Rules, SelftestOfABrokenPlugin,
    testing::Values("WiFiRadioInitContext: context of 9956 bytes, expected 9960",
                    "WiFiRadioCheckContextNodeSet of node 66: expected an error and no question to the host",
                    "WiFiRadioEnableGet without an output: returned 0, expected 6",
                    "WiFiRadioEnableGet without an output takes the lock",
                    "WiFiRadioEnableGet when the mutex cannot be made, first time: returned 0, expected 55",
                    "WiFiRadioEnableGet when the lock fails: returned 0, expected 77",
                    "WiFiRadioEnableGet of instance 1: locks 1 times, unlocks 0 times, expected once each",
                    "WiFiRadioAliasGet with a buffer of 63: returned 77, expected 8",
                    "WiFiRadioEnableSet of 2: returned 0, expected 8", "WiFiRadioEnableSet of 2 changes the context",
                    "WiFiRadioEnableSet of 1 does not mark node 1 and no other",
                    "WiFiRadioAliasSet with a context that was not initialised: returned 0, expected 5",
                    "WiFiRadioAliasSet of a text of 65: returned 0, expected 8",
                    "WiFiRadioAliasSet of a short text leaves the rest of a longer one behind it",
                    "WiFiRadioApplyContext when the lock fails: returned 0, expected 77",
                    "WiFiRadioApplyContext: initialises the context 0 times", "WiFiRadioInstanceGet marks nodes",
                    "WiFiRadioInstanceGet keeps the lock"));

TEST(Selftest, SaysWhereAPluginCrashes) {
    const Outcome outcome = check(SELFTEST_CRASHING);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says("the plug-in crashed in WiFiRadioStatsInitContext (invalid memory access)"))
        << outcome.text;
}

TEST(Selftest, SaysWhatCannotBeLoaded) {
    const Outcome outcome = check("/nowhere/libquorvel_wifi.so");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.says("cannot load the plug-in")) << outcome.text;
    EXPECT_TRUE(outcome.says("/nowhere/libquorvel_wifi.so")) << outcome.text;
}

TEST(Selftest, ExitsWithTwoForWrongUsage) {
    EXPECT_EQ(check("").status, 2);
    EXPECT_EQ(check("--quickly " SELFTEST_PLUGIN).status, 2);
    EXPECT_EQ(check(SELFTEST_PLUGIN " " SELFTEST_PLUGIN).status, 2);
}

}  // namespace
}  // namespace quorvel::selftest_test
