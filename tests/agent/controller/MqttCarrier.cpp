#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <chrono>
#include <stdexcept>
#include <utility>

#include "agent/mtp/MqttProperties.h"
#include "tests/agent/controller/Controller.h"

namespace quorvel::agent_test {
namespace {

class MqttCarrier final : public Carrier {
  public:
    MqttCarrier(int port, std::string agentTopic, std::string ownTopic, bool version5)
        : agentTopic_(std::move(agentTopic)), ownTopic_(std::move(ownTopic)), version5_(version5) {
        static const int initialised = mosquitto_lib_init();
        (void)initialised;
        client_ = mosquitto_new(nullptr, true, this);
        mosquitto_int_option(client_, MOSQ_OPT_PROTOCOL_VERSION, version5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311);
        mosquitto_int_option(client_, MOSQ_OPT_TCP_NODELAY, 1);
        mosquitto_subscribe_callback_set(client_, [](mosquitto*, void* self, int, int, const int*) {
            static_cast<MqttCarrier*>(self)->heard_ = true;
        });
        mosquitto_connect_callback_set(client_, [](mosquitto* client, void* self, int) {
            auto* carrier = static_cast<MqttCarrier*>(self);
            const std::string filter = carrier->version5_ ? carrier->ownTopic_ : carrier->ownTopic_ + "/#";
            mosquitto_subscribe(client, nullptr, filter.c_str(), 0);
        });
        mosquitto_message_v5_callback_set(client_, onMessage);
        if (mosquitto_connect(client_, "127.0.0.1", port, 60) != MOSQ_ERR_SUCCESS) {
            mosquitto_destroy(client_);
            throw std::runtime_error("the test's controller cannot connect to the broker");
        }
        std::deque<Arrival> nothing;
        for (int tries = 0; tries < 100 && !heard_; ++tries)
            wait(50, nothing);
        if (!heard_) throw std::runtime_error("the test's controller cannot subscribe");
    }
    MqttCarrier(const MqttCarrier&) = delete;
    MqttCarrier& operator=(const MqttCarrier&) = delete;
    ~MqttCarrier() override {
        mosquitto_disconnect(client_);
        mosquitto_destroy(client_);
    }

    void send(const std::string& bytes) override {
        agent::MqttProperties properties;
        std::string topic = agentTopic_;
        if (version5_) {
            properties.addText(MQTT_PROP_CONTENT_TYPE, "usp.msg");
            properties.addText(MQTT_PROP_RESPONSE_TOPIC, ownTopic_);
        } else {
            topic += "/reply-to=";
            for (const char letter : ownTopic_)
                topic += letter == '/' ? std::string("%2F") : std::string(1, letter);
        }
        mosquitto_publish_v5(client_, nullptr, topic.c_str(), static_cast<int>(bytes.size()), bytes.data(), 0, false,
                             properties.get());
    }

    void wait(int milliseconds, std::deque<Arrival>& arrivals) override {
        if (mosquitto_loop(client_, milliseconds, 1) != MOSQ_ERR_SUCCESS) mosquitto_reconnect(client_);
        for (Arrival& arrival : pending_)
            arrivals.push_back(std::move(arrival));
        pending_.clear();
    }

  private:
    static void onMessage(mosquitto* /*client*/, void* self, const mosquitto_message* message,
                          const mosquitto_property* properties) {
        Arrival arrival;
        arrival.topic = message->topic;
        arrival.qos = message->qos;
        arrival.contentType = agent::textProperty(properties, MQTT_PROP_CONTENT_TYPE);
        arrival.responseTopic = agent::textProperty(properties, MQTT_PROP_RESPONSE_TOPIC);
        if (!arrival.record.ParseFromArray(message->payload, message->payloadlen)) return;
        usp::Msg inner;
        if (arrival.record.has_no_session_context() &&
            inner.ParseFromString(arrival.record.no_session_context().payload())) {
            arrival.message = inner;
        }
        static_cast<MqttCarrier*>(self)->pending_.push_back(std::move(arrival));
    }

    mosquitto* client_ = nullptr;
    std::string agentTopic_;
    std::string ownTopic_;
    bool version5_;
    bool heard_ = false;
    std::deque<Arrival> pending_;
};

}  // namespace

std::unique_ptr<Carrier> mqttCarrier(int port, const std::string& agentTopic, const std::string& ownTopic,
                                     bool version5) {
    return std::make_unique<MqttCarrier>(port, agentTopic, ownTopic, version5);
}

}  // namespace quorvel::agent_test
