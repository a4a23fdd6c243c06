#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/model/Mapping.h"

// The tables that bind nodes to the manager's variables, row by row.

namespace quorvel {

namespace {

struct ExpectedRow {
    const char* prefix;
    std::uint32_t node;
    const char* name;
    const char* conversion;
    const char* variable;
};

const ExpectedRow kRows[] = {
#define ROW(prefix, node, name, conversion, variable) {#prefix, node, #name, conversion, variable},
#include "tests/wifi/MappingRows.inc"
};

struct MappingOfObject {
    const char* prefix;
    std::uint32_t object;
    const MappingRow* rows;
    std::size_t count;
};

template <ObjectIndex object>
MappingOfObject tableOf(const char* prefix) {
    constexpr Mapping kMapping = mappingOf<object>();
    return {prefix, object, kMapping.rows, kMapping.count};
}

const MappingOfObject kTables[] = {
    tableOf<kWiFiObject>("WiFi"),
    tableOf<kWiFiRadioObject>("WiFiRadio"),
    tableOf<kWiFiSSIDObject>("WiFiSSID"),
    tableOf<kWiFiAccessPointObject>("WiFiAccessPoint"),
    tableOf<kWiFiAccessPointAccessPointControlFilterTableObject>("WiFiAccessPointAccessPointControlFilterTable"),
    tableOf<kWiFiAccessPointSecurityObject>("WiFiAccessPointSecurity"),
    tableOf<kWiFiAccessPointWPSObject>("WiFiAccessPointWPS"),
};

TEST(Mapping, BeginsWithTheObjectsIndex) {
    for (const MappingOfObject& table : kTables) {
        EXPECT_EQ(table.rows[0].node, table.object) << table.prefix;
        EXPECT_EQ(table.rows[0].field, 0U) << table.prefix;
        EXPECT_STREQ(table.rows[0].conversion, "") << table.prefix;
        EXPECT_STREQ(table.rows[0].variable, "") << table.prefix;
    }
}

TEST(Mapping, HasOneRowForEachNode) {
    static_assert(std::size(kRows) == 10 + 65 + 6 + 24 + 2 + 21 + 8);
    for (const MappingOfObject& table : kTables) {
        const auto rows = std::count_if(std::begin(kRows), std::end(kRows), [&table](const ExpectedRow& row) {
            return std::strcmp(row.prefix, table.prefix) == 0;
        });
        EXPECT_EQ(table.count, static_cast<std::size_t>(rows) + 1) << table.prefix;
    }
}

TEST(Mapping, BindsEachNodeToItsVariableConversionAndField) {
    for (const ExpectedRow& expected : kRows) {
        const std::string stem = std::string(expected.name) == "RadioChannelStats"
                                     ? "WiFiRadioChannelStats"
                                     : std::string(expected.prefix) + expected.name;
        SCOPED_TRACE(stem);
        const datamodel::Parameter& parameter = datamodel::parameter(stem);
        EXPECT_EQ(parameter.node, expected.node);
        const auto* table =
            std::find_if(std::begin(kTables), std::end(kTables), [&expected](const MappingOfObject& candidate) {
                return std::strcmp(candidate.prefix, expected.prefix) == 0;
            });
        ASSERT_NE(table, std::end(kTables));
        const MappingRow& row = table->rows[expected.node];
        EXPECT_EQ(row.node, expected.node);
        EXPECT_EQ(row.field, parameter.offset());
        EXPECT_STREQ(row.conversion, expected.conversion);
        EXPECT_STREQ(row.variable, expected.variable);
    }
}

class MappedApply : public scripted::PlatformTest {};

// Quirk: the walk over the WPS nodes goes one node beyond the table.
TEST_F(MappedApply, AsksForEveryNodeOfItsTable) {
    const std::pair<const char*, std::uint32_t> lastNodes[] = {{"WiFi", 10},
                                                               {"WiFiRadio", 65},
                                                               {"WiFiSSID", 6},
                                                               {"WiFiAccessPoint", 24},
                                                               {"WiFiAccessPointAccessPointControlFilterTable", 2},
                                                               {"WiFiAccessPointSecurity", 21},
                                                               {"WiFiAccessPointWPS", 9}};
    for (const auto& [prefix, last] : lastNodes) {
        SCOPED_TRACE(prefix);
        const auto& objects = datamodel::objects();
        const auto object = std::find_if(objects.begin(), objects.end(), [wanted = prefix](const datamodel::Object& o) {
            return std::strcmp(o.prefix, wanted) == 0;
        });
        ASSERT_NE(object, objects.end());
        scripted::GuardedBlock context(object->contextSize);
        ASSERT_EQ(object->initContext(context.get()), 0U);
        platform.forget();
        EXPECT_EQ(object->apply(context.get()), 0U);
        std::vector<std::string> walk;
        for (std::uint32_t node = 1; node <= last; ++node) {
            walk.push_back("Quorvel_IsContextSetMap(ctx, " + std::to_string(node) + ")");
        }
        // The apply has checked the object's own nodes before.
        std::vector<std::string> asked = platform.callTexts({"Quorvel_IsContextSetMap"});
        ASSERT_GE(asked.size(), walk.size());
        asked.erase(asked.begin(), asked.end() - static_cast<std::ptrdiff_t>(walk.size()));
        EXPECT_EQ(asked, walk);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"}), std::vector<std::string>{});
    }
}

}  // namespace

}  // namespace quorvel
