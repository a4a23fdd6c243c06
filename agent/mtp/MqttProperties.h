#pragma once

// MQTT 5 properties: built for sending, read when received.

#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::agent {

/// A list of properties under construction.
class MqttProperties {
  public:
    MqttProperties() = default;
    MqttProperties(const MqttProperties&) = delete;
    MqttProperties& operator=(const MqttProperties&) = delete;
    ~MqttProperties() {
        mosquitto_property_free_all(&list_);
    }

    void addByte(int identifier, std::uint8_t value) {
        (void)mosquitto_property_add_byte(&list_, identifier, value);  // fails without memory only
    }
    void addNumber(int identifier, std::uint32_t value) {
        (void)mosquitto_property_add_int32(&list_, identifier, value);
    }
    void addText(int identifier, const std::string& value) {
        (void)mosquitto_property_add_string(&list_, identifier, value.c_str());
    }
    void addUserProperty(const std::string& name, const std::string& value) {
        (void)mosquitto_property_add_string_pair(&list_, MQTT_PROP_USER_PROPERTY, name.c_str(), value.c_str());
    }
    [[nodiscard]] const mosquitto_property* get() const {
        return list_;
    }

  private:
    mosquitto_property* list_ = nullptr;
};

/// Returns the text property `identifier`, or the empty text when it is absent.
[[nodiscard]] std::string textProperty(const mosquitto_property* list, int identifier);

/// Returns the values of all User Properties with this name, in order.
[[nodiscard]] std::vector<std::string> userProperties(const mosquitto_property* list, const std::string& name);

}  // namespace quorvel::agent
