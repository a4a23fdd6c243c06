#include "web/server/metrics/Metrics.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "tests/web/Boards.h"

namespace quorvel::web_test {
namespace {

using web::Composer;

std::string metricsOf(const web::Picture& picture, const web::MetricsOptions& options = {}) {
    return web::metricsText({&picture}, {}, options);
}

bool has(const std::string& text, const std::string& line) {
    return text.find(line + "\n") != std::string::npos;
}

std::size_t countOf(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

}  // namespace

TEST(Metrics, HaveRadiosAndNetworks) {
    Composer composer;
    const std::string text = metricsOf(*composer.take(lookAt(10)));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_radio_utilization_ratio{gateway="test-board",radio="1",band="5GHz"} 0.4)"))
        << text;
    EXPECT_TRUE(has(text, R"(quorvel_wifi_radio_noise_dbm{gateway="test-board",radio="2",band="2.4GHz"} -91)"));
    EXPECT_TRUE(
        has(text,
            R"(quorvel_wifi_ssid_sent_bytes_total{gateway="test-board",radio="1",access_point="1",ssid="Home"} 2000)"));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_stations{gateway="test-board"} 2)"));
    EXPECT_TRUE(has(text, "# TYPE quorvel_wifi_ssid_sent_bytes_total counter"));
    EXPECT_TRUE(has(text, "# TYPE quorvel_wifi_radio_noise_dbm gauge"));
}

TEST(Metrics, NameStationsOnRequestOnly) {
    Composer composer;
    const auto picture = composer.take(lookAt(10));
    EXPECT_EQ(metricsOf(*picture).find("02:00:00"), std::string::npos);
    EXPECT_TRUE(has(metricsOf(*picture, {true}),
                    "quorvel_wifi_station_signal_dbm{gateway=\"test-board\",access_point=\"1\","
                    "mac=\"02:00:00:00:00:01\"} -60"));
}

TEST(Metrics, HaveNoValuesOfALostBoard) {
    Composer composer;
    (void)composer.take(lookAt(10));
    const std::string text = metricsOf(*composer.lose("gone"));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_board_up{gateway="test-board"} 0)"));
    EXPECT_EQ(text.find("quorvel_wifi_radio"), std::string::npos);
}

TEST(Metrics, HaveTheAgentsCounters) {
    Composer composer;
    web::Look look = lookAt(10);
    look.agent =
        hostd::protocol::ServiceStatus{"usp", true, {{"counters", {{"recordsReceived", 12}, {"state", "ready"}}}}};
    const std::string text = metricsOf(*composer.take(look));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_agent_records_received_total{gateway="test-board"} 12)"));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_agent_connected{gateway="test-board"} 1)"));
    EXPECT_EQ(text.find("ready"), std::string::npos);
}

TEST(Metrics, HaveTheTimesOfCallsAndRequests) {
    Composer composer;
    web::Look look = lookAt(10);
    look.counts.bounds = {0.001, 1};
    look.counts.pluginCalls = {{"get", 2, 0.25, {5, 3, 1}}};
    look.counts.managerRequests = {{"nvramGet", 0, 0.5, {7, 0, 0}}, {"wrong", 0, 0, {1}}};
    look.counts.requests = {{"trace.add", 4}};
    const std::string text = metricsOf(*composer.take(look));
    const std::string call = "quorvel_wifi_plugin_call_duration_seconds";
    EXPECT_TRUE(has(text, "# TYPE " + call + " histogram"));
    EXPECT_TRUE(has(text, call + R"(_bucket{gateway="test-board",call="get",le="0.001"} 5)")) << text;
    EXPECT_TRUE(has(text, call + R"(_bucket{gateway="test-board",call="get",le="1"} 8)"));
    EXPECT_TRUE(has(text, call + R"(_bucket{gateway="test-board",call="get",le="+Inf"} 9)"));
    EXPECT_TRUE(has(text, call + R"(_sum{gateway="test-board",call="get"} 0.25)"));
    EXPECT_TRUE(has(text, call + R"(_count{gateway="test-board",call="get"} 9)"));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_plugin_failed_calls_total{gateway="test-board",call="get"} 2)"));
    const std::string request = "quorvel_wifi_manager_request_duration_seconds";
    EXPECT_TRUE(has(text, request + R"(_count{gateway="test-board",request="nvram_get"} 7)"));
    EXPECT_EQ(text.find("wrong"), std::string::npos);
    EXPECT_TRUE(has(text, R"(quorvel_wifi_host_requests_total{gateway="test-board",request="trace_add"} 4)"));
}

TEST(Metrics, FollowTheCountsThoughThePageHasNoNews) {
    Composer composer;
    (void)composer.take(lookAt(10));
    const auto before = composer.take(lookAt(11));
    web::Look look = lookAt(12);
    look.counts.requests = {{"get", 5}};
    const auto after = composer.take(look);
    EXPECT_EQ(after->version, before->version);
    EXPECT_TRUE(has(metricsOf(*after), R"(quorvel_wifi_host_requests_total{gateway="test-board",request="get"} 5)"));
}

// A panel that asks for a metric that is not written stays empty for ever.
TEST(Metrics, AreThoseThatTheDashboardAsksFor) {
    Composer composer;
    web::Look look = lookAt(10);
    look.agent = hostd::protocol::ServiceStatus{"usp", true, {}};
    look.counts = {{1}, {{"get", 0, 0, {1, 0}}}, {{"get", 0, 0, {1, 0}}}, {{"get", 1}}};
    const std::string text = metricsOf(*composer.take(look));
    std::ifstream in(QUORVEL_DASHBOARD);
    const std::string dashboard{std::istreambuf_iterator<char>(in), {}};
    const std::regex name("quorvel_wifi_[a-z_]+");
    std::set<std::string> names;
    for (std::sregex_iterator at(dashboard.begin(), dashboard.end(), name), end; at != end; ++at)
        names.insert(at->str());
    EXPECT_GE(names.size(), 10U);
    for (const std::string& one : names)
        EXPECT_NE(text.find("# TYPE " + std::regex_replace(one, std::regex("_(bucket|sum|count)$"), "") + " "),
                  std::string::npos)
            << one;
}

TEST(Metrics, EscapeNames) {
    Composer composer;
    web::Look look = lookAt(10);
    look.live.radios[0].bss[0].ssid = "a\"b\\c\nd";
    EXPECT_NE(metricsOf(*composer.take(look)).find(R"(ssid="a\"b\\c\nd")"), std::string::npos);
}

TEST(Metrics, AreSummedOverTooManyGateways) {
    Composer composer;
    web::Look look = lookAt(10);
    look.counts = {{1}, {{"get", 0, 0.5, {3, 1}}, {"set", 0, 0, {1, 0}}}, {}, {}};
    const auto picture = composer.take(look);
    std::vector<web::Picture> pictures;
    for (int i = 0; i < 501; ++i) {
        pictures.push_back(*picture);
        pictures.back().name = "gateway-" + std::to_string(i);
    }
    std::vector<const web::Picture*> gateways;
    for (const web::Picture& one : pictures)
        gateways.push_back(&one);
    const std::string text = web::metricsText(gateways, {}, {});
    // 501 gateways have 1,002 radios: the counters are added, the noise cannot be.
    EXPECT_TRUE(has(text, R"(quorvel_wifi_ssid_sent_bytes_total{radio="1",access_point="1",ssid="Home"} 1002000)"))
        << text;
    EXPECT_EQ(text.find("quorvel_wifi_radio_noise_dbm"), std::string::npos);
    EXPECT_EQ(countOf(text, "quorvel_wifi_stations{gateway="), 501U);
    EXPECT_TRUE(has(text, R"(quorvel_wifi_plugin_call_duration_seconds_bucket{call="get",le="1"} 1503)"));
    EXPECT_TRUE(has(text, R"(quorvel_wifi_plugin_call_duration_seconds_sum{call="get"} 250.5)"));
}

}  // namespace quorvel::web_test
