#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "DataModel.h"
#include "QuorvelWiFiInternal.h"

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
#include "MappingRows.inc"
};

struct MappingOfObject {
    const char* prefix;
    std::uint32_t object;
    const MappingRow* rows;
    std::size_t count;
};

const MappingOfObject kTables[] = {
    {"WiFi", 1, kWiFiMapping, std::size(kWiFiMapping)},
    {"WiFiRadio", 2, kWiFiRadioMapping, std::size(kWiFiRadioMapping)},
    {"WiFiSSID", 5, kWiFiSSIDMapping, std::size(kWiFiSSIDMapping)},
    {"WiFiAccessPoint", 7, kWiFiAccessPointMapping, std::size(kWiFiAccessPointMapping)},
    {"WiFiAccessPointAccessPointControlFilterTable", 8, kWiFiAccessPointAccessPointControlFilterTableMapping,
     std::size(kWiFiAccessPointAccessPointControlFilterTableMapping)},
    {"WiFiAccessPointSecurity", 9, kWiFiAccessPointSecurityMapping, std::size(kWiFiAccessPointSecurityMapping)},
    {"WiFiAccessPointWPS", 11, kWiFiAccessPointWPSMapping, std::size(kWiFiAccessPointWPSMapping)},
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

}  // namespace

}  // namespace quorvel
