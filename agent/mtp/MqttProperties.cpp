#include "agent/mtp/MqttProperties.h"

#include <cstdlib>

namespace quorvel::agent {

std::string textProperty(const mosquitto_property* list, int identifier) {
    char* text = nullptr;
    if (mosquitto_property_read_string(list, identifier, &text, false) == nullptr) return "";
    std::string value = text == nullptr ? "" : text;
    std::free(text);
    return value;
}

std::vector<std::string> userProperties(const mosquitto_property* list, const std::string& name) {
    std::vector<std::string> values;
    bool skipFirst = false;
    for (const mosquitto_property* entry = list; entry != nullptr; skipFirst = true) {
        char* found = nullptr;
        char* value = nullptr;
        entry = mosquitto_property_read_string_pair(entry, MQTT_PROP_USER_PROPERTY, &found, &value, skipFirst);
        if (entry != nullptr && found != nullptr && value != nullptr && name == found) values.emplace_back(value);
        std::free(found);
        std::free(value);
    }
    return values;
}

}  // namespace quorvel::agent
