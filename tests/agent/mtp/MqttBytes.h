#pragma once

// MQTT packets as bytes: a writer and a reader for the scripted broker.

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvel::agent_test {

/// Properties of MQTT 5 that the tests look at.
enum PropertyNumber : std::uint8_t {
    kContentType = 3,
    kResponseTopic = 8,
    kAssignedClientId = 18,
    kServerKeepAlive = 19,
    kRequestResponseInformation = 25,
    kResponseInformation = 26,
    kUserProperty = 38,
};

struct Properties {
    std::map<int, std::string> texts;
    std::map<int, std::uint32_t> numbers;
    std::vector<std::pair<std::string, std::string>> user;
};

class MqttWriter {
  public:
    MqttWriter& byte(unsigned value) {
        bytes_ += static_cast<char>(value);
        return *this;
    }
    MqttWriter& word(unsigned value) {
        return byte(value >> 8U).byte(value & 0xFFU);
    }
    MqttWriter& text(std::string_view value) {
        word(static_cast<unsigned>(value.size()));
        bytes_ += value;
        return *this;
    }
    MqttWriter& raw(std::string_view value) {
        bytes_ += value;
        return *this;
    }
    MqttWriter& length(std::size_t value) {
        do {
            unsigned digit = value % 128;
            value /= 128;
            if (value > 0) digit |= 0x80U;
            byte(digit);
        } while (value > 0);
        return *this;
    }
    MqttWriter& properties(const Properties& properties) {
        MqttWriter inner;
        for (const auto& [number, value] : properties.texts)
            inner.byte(static_cast<unsigned>(number)).text(value);
        for (const auto& [number, value] : properties.numbers) {
            inner.byte(static_cast<unsigned>(number));
            if (number == kServerKeepAlive) inner.word(value);
        }
        for (const auto& [name, value] : properties.user)
            inner.byte(kUserProperty).text(name).text(value);
        return length(inner.bytes_.size()).raw(inner.bytes_);
    }
    /// Returns the packet with its fixed header in front.
    [[nodiscard]] std::string packet(unsigned first) const {
        MqttWriter whole;
        whole.byte(first).length(bytes_.size()).raw(bytes_);
        return whole.bytes_;
    }

  private:
    std::string bytes_;
};

class MqttReader {
  public:
    explicit MqttReader(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool atEnd() const {
        return rest_.empty();
    }
    [[nodiscard]] std::string_view rest() const {
        return rest_;
    }
    unsigned byte() {
        return static_cast<unsigned char>(take(1)[0]);
    }
    unsigned word() {
        const unsigned high = byte();
        return high << 8U | byte();
    }
    std::uint32_t doubleWord() {
        const std::uint32_t high = word();
        return high << 16U | word();
    }
    std::string text() {
        return std::string(take(word()));
    }
    std::size_t length() {
        std::size_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            const unsigned digit = byte();
            value |= static_cast<std::size_t>(digit & 0x7FU) << shift;
            if ((digit & 0x80U) == 0) return value;
        }
    }
    Properties properties() {
        Properties found;
        MqttReader inner(take(length()));
        while (!inner.atEnd()) {
            const unsigned number = inner.byte();
            switch (number) {
                case 1:
                case 23:
                case kRequestResponseInformation:
                case 36:
                case 37:
                case 40:
                case 41:
                case 42:
                    found.numbers[static_cast<int>(number)] = inner.byte();
                    break;
                case kServerKeepAlive:
                case 33:
                case 34:
                case 35:
                    found.numbers[static_cast<int>(number)] = inner.word();
                    break;
                case 2:
                case 17:
                case 24:
                case 39:
                    found.numbers[static_cast<int>(number)] = inner.doubleWord();
                    break;
                case 11:
                    found.numbers[static_cast<int>(number)] = static_cast<std::uint32_t>(inner.length());
                    break;
                case kUserProperty: {
                    std::string name = inner.text();
                    found.user.emplace_back(std::move(name), inner.text());
                    break;
                }
                default:
                    found.texts[static_cast<int>(number)] = inner.text();
            }
        }
        return found;
    }
    std::string_view take(std::size_t count) {
        if (count > rest_.size()) throw std::runtime_error("the packet is too short");
        const std::string_view part = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return part;
    }

  private:
    std::string_view rest_;
};

}  // namespace quorvel::agent_test
