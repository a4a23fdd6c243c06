// TLS, with an authority of the test's own.
#include <filesystem>
#include <fstream>

#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

// A board of its own, whose agent knows the test's authority.
class Tls : public testing::Test {
  protected:
    Tls() {
        folder_ = std::filesystem::path(board_.stateFolder()) / "tls";
        std::filesystem::create_directory(folder_);
        must("openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=test-authority -keyout ca.key -out ca.pem");
        must("openssl req -newkey rsa:2048 -nodes -subj /CN=localhost -keyout place.key -out place.csr");
        write("names", "subjectAltName=DNS:localhost,IP:127.0.0.1\n");
        must(
            "openssl x509 -req -in place.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 -extfile names "
            "-out place.pem");
    }
    void must(const std::string& command) {
        const Board::Outcome outcome = runProgram({"sh", "-c", command}, folder_);
        EXPECT_EQ(outcome.status, 0) << outcome.output;
    }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name) << text;
    }
    // Starts a broker that speaks TLS at one port and plainly, for the controller, at another; and the agent.
    void startWithBroker(const std::string& host) {
        securePort_ = freePort();
        broker_.configure("listener " + std::to_string(securePort_) + " 127.0.0.1\ncertfile " +
                          (folder_ / "place.pem").string() + "\nkeyfile " + (folder_ / "place.key").string() + "\n");
        write("usp.json", R"({"mqtt": [{"name": "lab", "url": "mqtts://)" + host + ":" + std::to_string(securePort_) +
                              R"("}], "controllers": [{"endpointId": ")" + kControllerId +
                              R"(", "mtps": [{"mqtt": "lab", "topic": "/usp/controller"}]}], "tls": {"authorities": )" +
                              R"("ca.pem"}})");
        board_.mustRun({"up", "--usp-config", (folder_ / "usp.json").string()});
    }
    std::string askOverMqtt() {
        Controller controller(mqttCarrier(broker_.port(), "/usp/endpoint", "/usp/controller"),
                              {kControllerId, kAgentId});
        const auto values = valuesOf(controller.ask(get({"Device.LocalAgent.EndpointID"})));
        return values.empty() ? "" : values.begin()->second;
    }

    Board board_;
    Broker broker_;
    std::filesystem::path folder_;
    int securePort_ = 0;
};

TEST_F(Tls, T4_1_RequestsAreAnsweredOverTls) {
    startWithBroker("localhost");
    EXPECT_EQ(askOverMqtt(), kAgentId);
}

TEST_F(Tls, T7_9_WebSocketOverTlsWithABearerToken) {
    securePort_ = freePort();
    write("token", "a secret token\n");
    write("usp.json",
          R"({"listen": [{"url": "wss-listen://127.0.0.1:)" + std::to_string(securePort_) +
              R"(/usp"}], "controllers": [{"endpointId": ")" + kControllerId +
              R"("}], "tls": {"certificate": "place.pem", "key": "place.key", "bearerTokenFile": "token"}})");
    board_.mustRun({"up", "--usp-config", (folder_ / "usp.json").string()});
    const auto shakeHands = [this](const std::string& authorization) {
        const std::string request = R"(GET /usp?eid=)" + std::string(kControllerId) +
                                    R"( HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n)" +
                                    R"(Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n)" +
                                    R"(Sec-WebSocket-Protocol: v1.usp\r\n)" + authorization + R"(\r\n)";
        return runProgram(
                   {"sh", "-c",
                    "(printf '" + request + "'; sleep 2) | timeout 4 openssl s_client -quiet -verify_return_error " +
                        "-verify_hostname localhost -CAfile ca.pem -connect 127.0.0.1:" + std::to_string(securePort_)},
                   folder_)
            .output;
    };
    const std::string accepted = shakeHands(R"(Authorization: Bearer a secret token\r\n)");
    EXPECT_NE(accepted.find(" 101 "), std::string::npos) << accepted;
    EXPECT_NE(accepted.find(kAgentId), std::string::npos) << "the Connect Record is missing";
    const std::string refused = shakeHands("");
    EXPECT_EQ(refused.find(" 101 "), std::string::npos) << refused;
}

TEST_F(Tls, T11_3_BrokerIsVerified) {
    startWithBroker("localhost");
    EXPECT_EQ(askOverMqtt(), kAgentId);
    board_.mustRun({"down"});
    // The same broker with a certificate for another name is left alone.
    must("openssl req -newkey rsa:2048 -nodes -subj /CN=elsewhere -keyout place.key -out place.csr");
    write("names", "subjectAltName=DNS:elsewhere.example\n");
    must(
        "openssl x509 -req -in place.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 -extfile names -out "
        "place.pem");
    startWithBroker("localhost");
    const std::string status = board_.mustRun({"usp", "status", "--plain"});
    EXPECT_EQ(status.find("\tUp\t"), std::string::npos) << status;
    const Board::Outcome doctor = board_.run({"usp", "doctor", "--seconds", "1"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_NE(doctor.output.find("WRONG TLS"), std::string::npos) << doctor.output;
}

}  // namespace
}  // namespace quorvel::agent_test
