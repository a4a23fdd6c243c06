// The exported table, word by word.
#include <algorithm>
#include <cstring>

#include "selftest/Checks.h"
#include "selftest/Expectation.h"

namespace quorvel::selftest {
namespace {

constexpr std::size_t kFirstFunction = 6;

std::string found(const Library& library, std::size_t word, Word value) {
    // Types, sizes and other numbers precede the functions.
    return word < kFirstFunction ? std::to_string(value) : library.describe(value);
}

void checkEntry(const Library& library, const Parameter& parameter, const Word* entry, std::size_t number,
                Report& report) {
    const std::string where = "entry " + std::to_string(number) + " (" + parameter.path() + ")";
    const auto checkWord = [&](std::size_t word, const std::string& expected, const std::string& is) {
        report.check(is == expected,
                     where + ": word " + std::to_string(word) + " holds " + is + ", expected " + expected);
    };
    checkWord(0, "\"" + std::string(parameter.object->path) + "\"", library.text(entry[0]));
    checkWord(1, "\"" + std::string(parameter.row->name) + "\"", library.text(entry[1]));
    const auto words = parameter.words();
    for (std::size_t word = 2; word < kWordsPerEntry; ++word)
        checkWord(word, words[word].empty() ? "0" : words[word], found(library, word, entry[word]));
}

}  // namespace

void checkTable(const Library& library, Report& report) {
    report.begin("the table's descriptor is 0, 0, 0 and the number of parameters");
    const Word descriptor = library.find("gQuorvelWiFiDataModelTableInfo");
    if (library.sizeOf("gQuorvelWiFiDataModelTableInfo") < 16) {
        report.fail("the descriptor is missing or too small to be looked at");
    } else {
        std::uint32_t words[4];
        std::memcpy(words, reinterpret_cast<const void*>(descriptor), sizeof words);
        for (std::size_t i = 0; i < 4; ++i) {
            const std::uint32_t expected = i == 3 ? static_cast<std::uint32_t>(parameters().size()) : 0;
            report.check(words[i] == expected, "word " + std::to_string(i) + " is " + std::to_string(words[i]) +
                                                   ", expected " + std::to_string(expected));
        }
    }

    report.begin("every word of every table entry is what it should be");
    const std::size_t entries = library.sizeOf("gQuorvelWiFiDataModelTable") / (kWordsPerEntry * sizeof(Word));
    if (entries < parameters().size()) {
        report.fail("the table has room for " + std::to_string(entries) + " entries, expected " +
                    std::to_string(parameters().size()));
    }
    const auto* const table = reinterpret_cast<const Word*>(library.find("gQuorvelWiFiDataModelTable"));
    for (std::size_t i = 0; i < std::min(entries, parameters().size()); ++i)
        checkEntry(library, parameters()[i], table + i * kWordsPerEntry, i, report);
}

}  // namespace quorvel::selftest
