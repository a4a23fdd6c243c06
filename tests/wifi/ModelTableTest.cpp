#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "tests/wifi/DataModel.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiTable.h"

// The exported parameter table, word by word.

namespace quorvel {

namespace {

using datamodel::Access;
using datamodel::Function;
using datamodel::Object;
using datamodel::Parameter;
using datamodel::parameters;
using datamodel::Type;
using Words = std::map<std::size_t, std::uintptr_t>;

constexpr std::size_t kWords = 72;
constexpr std::size_t kEntries = quorvel::kParametersInTable;

static_assert(sizeof(gQuorvelWiFiDataModelTable) == kEntries * kWords * sizeof(std::uintptr_t));

std::uintptr_t word(std::size_t entry, std::size_t index) {
    std::uintptr_t value = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(&gQuorvelWiFiDataModelTable);
    std::memcpy(&value, bytes + (entry * kWords + index) * sizeof value, sizeof value);
    return value;
}

const char* text(std::size_t entry, std::size_t index) {
    const std::uintptr_t value = word(entry, index);
    return value == 0 ? "(null)" : reinterpret_cast<const char*>(value);
}

std::uintptr_t address(Function function) {
    return reinterpret_cast<std::uintptr_t>(function);
}

std::size_t typeCode(Type type) {
    switch (type) {
        case Type::String:
            return 0;
        case Type::Boolean:
            return 2;
        case Type::UnsignedInt:
            return 3;
        case Type::Int:
            break;
    }
    return 4;
}

bool writable(const Parameter& parameter) {
    return parameter.setter != nullptr;
}

// Quirk: writable texts of depth 2 have their setter in the slot where other texts have their getter.
bool writeOnlyInTable(const Parameter& parameter) {
    return parameter.getter == nullptr ||
           (parameter.depth == 2 && parameter.type == Type::String && writable(parameter));
}

std::size_t setterWord(const Parameter& parameter) {
    if (parameter.depth < 2) {
        return 39 + 2 * typeCode(parameter.type) + static_cast<std::size_t>(parameter.depth);
    }
    static const std::map<std::string, std::size_t> words = {
        {"WiFiAccessPointACAlias", 55},
        {"WiFiAccessPointACAIFSN", 65},
        {"WiFiAccessPointACECWMin", 65},
        {"WiFiAccessPointACECWMax", 65},
        {"WiFiAccessPointACTxOpMax", 65},
        {"WiFiAccessPointACAckPolicy", 59},
        {"WiFiAirtimeSchedulerStationsListMacAddress", 55},
        {"WiFiAirtimeSchedulerStationsListSchedulingType", 61},
        {"WiFiAirtimeSchedulerStationsListVideoPriority", 61},
    };
    return words.at(parameter.stem);
}

// All words of an entry behind the type that are not 0.
Words expected(const Parameter& parameter) {
    const Object& object = parameter.object();
    const auto depth = static_cast<std::size_t>(parameter.depth);
    Words words;
    words[3] = writable(parameter) ? 256 : 1;
    if (!writeOnlyInTable(parameter)) {
        words[depth == 2 ? 55 + typeCode(parameter.type) : 6 + 2 * typeCode(parameter.type) + depth] =
            address(parameter.getter);
    }
    if (!writable(parameter)) {
        return words;
    }
    words[5] = object.contextSize;
    words[setterWord(parameter)] = address(parameter.setter);
    words[depth == 2 ? 54 : 37 + depth] = address(object.applyContext);
    if (depth < 2) {
        words[36] = reinterpret_cast<std::uintptr_t>(object.initContext);
    }
    return words;
}

TEST(ModelTable, HasItsDescriptor) {
    EXPECT_EQ(sizeof(gQuorvelWiFiDataModelTableInfo), 16U);
    EXPECT_EQ(gQuorvelWiFiDataModelTableInfo[0], 0U);
    EXPECT_EQ(gQuorvelWiFiDataModelTableInfo[1], 0U);
    EXPECT_EQ(gQuorvelWiFiDataModelTableInfo[2], 0U);
    EXPECT_EQ(gQuorvelWiFiDataModelTableInfo[3], kEntries);
}

TEST(ModelTable, NamesEveryParameterInOrder) {
    ASSERT_EQ(parameters().size(), kEntries);
    for (std::size_t i = 0; i < kEntries; ++i) {
        const Parameter& parameter = parameters()[i];
        EXPECT_STREQ(text(i, 0), parameter.object().path) << i;
        EXPECT_STREQ(text(i, 1), parameter.name) << i;
        EXPECT_EQ(word(i, 2), typeCode(parameter.type)) << parameter.stem;
    }
}

TEST(ModelTable, HoldsEachFunctionInItsWordAndZeroElsewhere) {
    for (std::size_t i = 0; i < kEntries; ++i) {
        const Parameter& parameter = parameters()[i];
        const Words words = expected(parameter);
        for (std::size_t index = 3; index < kWords; ++index) {
            const auto found = words.find(index);
            EXPECT_EQ(word(i, index), found == words.end() ? 0 : found->second) << parameter.stem << " word " << index;
        }
    }
}

TEST(ModelTable, HasTheEntriesOfEachObjectTogether) {
    ASSERT_EQ(datamodel::objects().size(), quorvel::kObjectsInTable);
    std::size_t entry = 0;
    for (const Object& object : datamodel::objects()) {
        for (std::size_t i = 0; i < datamodel::parametersOf(object.prefix).size(); ++i, ++entry) {
            EXPECT_STREQ(text(entry, 0), object.path);
        }
    }
    EXPECT_EQ(entry, kEntries);
}

TEST(ModelTable, KeepsTheNodeNumbersOfBandUtilizationAndRestartApart) {
    // Quirk: the table lists BandUtilization before Restart and ResetToFactory; their nodes have the opposite order.
    std::size_t bandUtilization = 0;
    while (std::string(text(bandUtilization, 1)) != "BandUtilization") {
        ++bandUtilization;
    }
    EXPECT_STREQ(text(bandUtilization + 1, 1), "Restart");
    EXPECT_STREQ(text(bandUtilization + 2, 1), "ResetToFactory");
    EXPECT_EQ(datamodel::parameter("WiFiRadioRestart").node, 56U);
}

TEST(ModelTable, HasNoGetterForTheThreeWriteOnlyTexts) {
    std::set<std::string> withoutGetter;
    for (std::size_t i = 0; i < kEntries; ++i) {
        const Parameter& parameter = parameters()[i];
        bool found = false;
        for (std::size_t index = 6; index < 69; ++index) {
            found = found || (parameter.getter != nullptr && word(i, index) == address(parameter.getter));
        }
        if (!found) {
            withoutGetter.insert(parameter.stem);
        }
    }
    EXPECT_EQ(withoutGetter,
              (std::set<std::string>{"WiFiAccessPointACAlias", "WiFiAirtimeSchedulerStationsListMacAddress",
                                     "WiFiRadiopushRadioChannel2"}));
}

TEST(Mappers, PairSecurityModesWithTheManagersValues) {
    const std::pair<const char*, const char*> pairs[] = {
        {"None", "open"},
        {"None", "*DEL*"},
        {"WPA-Personal", "psk"},
        {"WPA2-Personal", "psk2"},
        {"WPA-WPA2-Personal", "psk psk2"},
        {"WPA-Enterprise", "wpa"},
        {"WPA2-Enterprise", "wpa2"},
        {"WPA-WPA2-Enterprise", "wpa wpa2"},
    };
    static_assert(sizeof(authModeMapper) == 8 * 2 * sizeof(const char*));
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_STREQ(authModeMapper[i].dataModel, pairs[i].first);
        EXPECT_STREQ(authModeMapper[i].manager, pairs[i].second);
    }
}

TEST(Mappers, PairCiphersWithTheManagersValues) {
    static_assert(sizeof(wpaEncryptionMapper) == 3 * 2 * sizeof(const char*));
    const char* const texts[] = {"tkip", "aes", "tkip+aes"};
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(wpaEncryptionMapper[i].code, i);
        EXPECT_STREQ(wpaEncryptionMapper[i].manager, texts[i]);
    }
}

}  // namespace

}  // namespace quorvel
