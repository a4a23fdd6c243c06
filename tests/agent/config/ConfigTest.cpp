#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "agent/config/CommandLine.h"
#include "agent/config/ConfigFile.h"

namespace quorvel::agent_test {
namespace {

using agent::CommandLine;
using agent::Config;
using agent::ConfigError;

class UspConfig : public testing::Test {
  protected:
    UspConfig() {
        std::string name = (std::filesystem::temp_directory_path() / "usp-config-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        line_.boardFile = write("board.json", R"({"name": "lab", "oui": "02ABCD", "serial": "7"})");
        line_.stateFolder = folder_;
    }
    ~UspConfig() override {
        std::filesystem::remove_all(folder_);
    }

    std::string write(const std::string& name, const std::string& text) {
        std::ofstream(folder_ + "/" + name) << text;
        return folder_ + "/" + name;
    }
    Config withFile(const std::string& text) {
        line_.configFile = write("usp.json", text);
        return configFrom(line_);
    }
    std::string refusal() {
        try {
            (void)configFrom(line_);
        } catch (const ConfigError& error) {
            return error.what();
        }
        return "";
    }
    std::string refusalOfFile(const std::string& text) {
        line_.configFile = write("usp.json", text);
        return refusal();
    }

    std::string folder_;
    CommandLine line_;
};

TEST_F(UspConfig, OneUrlIsEnough) {
    line_.urls = {"mqtt://127.0.0.1:1884"};
    const Config config = configFrom(line_);
    ASSERT_EQ(config.mqttClients.size(), 1U);
    EXPECT_EQ(config.mqttClients.at(0).port, 1884);
    EXPECT_EQ(config.mqttClients.at(0).topic, "/usp/endpoint");
    ASSERT_EQ(config.controllers.size(), 1U);
    EXPECT_EQ(config.controllers.at(0).endpointId, "proto::interop-usp-controller");
    ASSERT_EQ(config.controllers.at(0).mtps.size(), 1U);
    EXPECT_EQ(config.controllers.at(0).mtps.at(0).topic, "/usp/controller");
    EXPECT_EQ(config.controllers.at(0).mtps.at(0).client, config.mqttClients.at(0).name);
    EXPECT_EQ(config.device.oui, "02ABCD");
    EXPECT_EQ(config.device.serial, "7");
    EXPECT_EQ(config.device.modelName, "lab");
}

TEST_F(UspConfig, SeveralUrlsAreWaysToOneController) {
    line_.urls = {"mqtt://a", "mqtt://b", "ws://c/d", "ws-listen://127.0.0.1:9000/usp"};
    line_.controller = "proto::lab";
    line_.topic = "t/{endpoint}";
    const Config config = configFrom(line_);
    EXPECT_EQ(config.mqttClients.size(), 2U);
    EXPECT_NE(config.mqttClients.at(0).name, config.mqttClients.at(1).name);
    EXPECT_EQ(config.mqttClients.at(1).topic, "t/{endpoint}");
    EXPECT_EQ(config.webSocketServers.size(), 1U);
    ASSERT_EQ(config.controllers.size(), 1U);
    EXPECT_EQ(config.controllers.at(0).mtps.size(), 3U);
    EXPECT_EQ(config.controllers.at(0).endpointId, "proto::lab");
}

TEST_F(UspConfig, WithoutAControllerThereIsNothingToDo) {
    EXPECT_NE(refusal().find("--usp URL"), std::string::npos);
}

TEST_F(UspConfig, PasswordComesFromAFileOrTheEnvironment) {
    line_.urls = {"mqtt://lab@127.0.0.1"};
    line_.password = "from the environment";
    EXPECT_EQ(configFrom(line_).mqttClients.at(0).password, "from the environment");
    line_.passwordFile = write("password", "from a file\nmore\n");
    EXPECT_EQ(configFrom(line_).mqttClients.at(0).password, "from a file");
    line_.passwordFile = folder_ + "/none";
    EXPECT_NE(refusal().find("cannot read a secret"), std::string::npos);
}

TEST_F(UspConfig, FileSaysEverything) {
    (void)write("token", "let me in\n");
    const Config config = withFile(R"({
        "endpointId": "proto::gw",
        "mqtt": [{"name": "b", "url": "mqtts://u@h:1", "topic": "x", "protocolVersion": "3.1.1", "clientId": "c",
                  "password": "p", "keepAlive": 20, "qos": 1}],
        "listen": [{"url": "wss-listen://0.0.0.0:2/usp", "keepAlive": 9}],
        "controllers": [{"endpointId": "proto::a", "mtps": [{"mqtt": "b", "topic": "y"}]},
                        {"endpointId": "proto::b", "enable": false, "mtps": [{"url": "wss://h:3/q"}]}],
        "tls": {"authorities": "ca.pem", "certificate": "c.pem", "key": "k.pem", "bearerTokenFile": "token"}})");
    EXPECT_EQ(config.endpointId, "proto::gw");
    EXPECT_EQ(config.mqttClients.at(0).protocolVersion, "3.1.1");
    EXPECT_EQ(config.mqttClients.at(0).qos, 1);
    EXPECT_EQ(config.mqttClients.at(0).password, "p");
    EXPECT_EQ(config.webSocketServers.at(0).keepAlive, 9U);
    EXPECT_EQ(config.controllers.size(), 2U);
    EXPECT_FALSE(config.controllers.at(1).enable);
    EXPECT_TRUE(config.controllers.at(1).mtps.at(0).tls);
    EXPECT_EQ(config.tls.authorities, folder_ + "/ca.pem");
    EXPECT_EQ(config.tls.bearerToken, "let me in");
}

TEST_F(UspConfig, FormattedConfigurationReadsBackTheSame) {
    const Config config = withFile(R"({
        "mqtt": [{"name": "b", "url": "mqtt://u@[::1]:1", "password": "p\"q"}],
        "listen": [{"name": "l", "url": "ws-listen://127.0.0.1:2/usp"}],
        "controllers": [{"endpointId": "proto::a", "mtps": [{"mqtt": "b"}, {"url": "ws://h:3/q"}]}]})");
    const std::string text = formatConfig(config);
    EXPECT_EQ(formatConfig(agent::parseConfig(text, "again", "/")), text);
    EXPECT_EQ(agent::parseConfig(text, "again", "/").mqttClients.at(0).password, "p\"q");
}

TEST_F(UspConfig, SavedFileIsForItsOwnerAlone) {
    line_.urls = {"mqtt://lab@127.0.0.1"};
    line_.password = "secret";
    const std::string path = folder_ + "/saved.json";
    std::ofstream(path) << "older";
    writeConfig(configFrom(line_), path);
    struct stat facts {};
    ASSERT_EQ(stat(path.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0600U);
    EXPECT_EQ(agent::readConfig(path).mqttClients.at(0).password, "secret");
}

TEST_F(UspConfig, MistakesInTheFileAreNamed) {
    EXPECT_NE(refusalOfFile("{").find("usp.json:1:2: this is not JSON"), std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"mqqt": []})").find("\"mqqt\" is unknown"), std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"mqtt": [{}]})").find("\"mqtt[0].url\" is missing"), std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"mqtt": [{"url": "ws://h"}]})").find("must be an mqtt://"), std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"mqtt": [{"url": "mqtt://h", "qos": 3}]})").find("from 0 to 2"), std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"mqtt": [{"url": "mqtt://h", "protocolVersion": "4"}]})").find("3.1.1"),
              std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"controllers": [{"mtps": [{"mqtt": "x"}]}]})").find("which is not in"),
              std::string::npos);
    EXPECT_NE(refusalOfFile(R"({"controllers": [{}, {}]})").find("two controllers"), std::string::npos);
    EXPECT_NE(refusalOfFile(std::string(200, '[')).find("usp.json: "), std::string::npos);
}

TEST_F(UspConfig, OpenPlaceNeedsTlsAndProof) {
    line_.urls = {"ws-listen://0.0.0.0:9000/usp"};
    EXPECT_NE(refusal().find("use wss-listen"), std::string::npos);
    line_.urls = {"wss-listen://0.0.0.0:9000/usp"};
    EXPECT_NE(refusal().find("needs a certificate"), std::string::npos);
    line_.configFile = write("usp.json", R"({"tls": {"certificate": "c", "key": "k"}})");
    EXPECT_NE(refusal().find("prove themselves"), std::string::npos);
    line_.configFile = write("usp.json", R"({"tls": {"certificate": "c", "key": "k", "clientAuthorities": "a"}})");
    EXPECT_EQ(refusal(), "");
}

TEST_F(UspConfig, UnprotectedBrokersElsewhereAreWarnedOf) {
    line_.urls = {"mqtt://127.0.0.1"};
    EXPECT_TRUE(warningsFor(configFrom(line_)).empty());
    line_.urls = {"mqtt://broker.example"};
    EXPECT_EQ(warningsFor(configFrom(line_)).size(), 2U);
    line_.urls = {"mqtts://broker.example"};
    EXPECT_EQ(warningsFor(configFrom(line_)).size(), 1U);
    line_.urls = {"mqtts://lab@broker.example"};
    line_.password = "p";
    EXPECT_TRUE(warningsFor(configFrom(line_)).empty());
}

}  // namespace
}  // namespace quorvel::agent_test
