#include "gateway/hostd/Suggestion.h"

#include <gtest/gtest.h>

#include "gateway/hostd/Plugin.h"

namespace quorvel::hostd {
namespace {

TEST(Suggestion, IsTheNearestExistingPath) {
    const Plugin plugin(QUORVEL_FAKE_PLUGIN);
    const DataModel model(plugin.table());
    const std::pair<const char*, const char*> expected[] = {
        {"Device.WiFi.Radio.2.Chanel", "Device.WiFi.Radio.2.Channel"},
        {"Device.WiFi.radio.2.channel", "Device.WiFi.Radio.2.Channel"},
        {"Device.WiFI.Rado.2.Channel", "Device.WiFi.Radio.2.Channel"},
        {"WiFi.Radio.2.Channel", "Device.WiFi.Radio.2.Channel"},
        {"Device.WiFi.Radio.Channel", "Device.WiFi.Radio.*.Channel"},
        {"Device.WiFi.Radios.", "Device.WiFi.Radio."},
    };
    for (const auto& [path, nearest] : expected)
        EXPECT_EQ(suggestPath(model, path), nearest) << path;
}

}  // namespace
}  // namespace quorvel::hostd
