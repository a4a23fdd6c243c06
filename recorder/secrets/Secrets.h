// Replaces the secrets of records before they are stored.
#pragma once

#include <cstdint>
#include <cstring>

#include "recorder/format/Format.h"
#include "recorder/format/RecordValues.h"
#include "recorder/secrets/Disguise.h"
#include "recorder/secrets/SecretParameters.h"

namespace quorvel::recorder {

class Secrets {
  public:
    struct Kept {
        bool macs = false;
        bool ssids = false;
    };

    constexpr Secrets(const SipKey& key, Kept kept) : disguise_(key), kept_(kept) {}

    /// Replaces the secrets in a record's values, in place: where the record's function says that there is one, and
    /// wherever a secret that was seen before occurs again. `function` is the name of the record's function, `textOf`
    /// gives the text of a named one by its number.
    template <typename TextOf>
    void replaceIn(RecordHead* record, const char* function, TextOf textOf) {
        Values values{};
        // The record is the caller's to change; only the reader of values takes it as constant.
        (void)forEachValue(*record, [&](ValueRole role, ValueType type, const uint8_t* bytes, uint32_t size) {
            if (values.count == kMaxValues) return;
            if (type == ValueType::kText || type == ValueType::kBytes) {
                values.list[values.count++] = {role, type, size, reinterpret_cast<char*>(const_cast<uint8_t*>(bytes)),
                                               false};
            } else if (type == ValueType::kName) {
                uint32_t number;
                memcpy(&number, bytes, sizeof number);
                // A constant of the library holds no secret: it is only looked at.
                const char* const text = textOf(number);
                values.list[values.count++] = {role, type, static_cast<uint32_t>(strlen(text)), const_cast<char*>(text),
                                               true};
            }
        });  // the caller's records are whole
        replaceIn(record->kind, function, values);
    }

  private:
    // One value of the record that is looked at.
    struct Value {
        ValueRole role;
        ValueType type;
        uint32_t size;
        char* bytes;
        bool done;
    };
    static constexpr uint32_t kMaxValues = 64;
    struct Values {
        Value list[kMaxValues];
        uint32_t count;
    };

    // A secret that was seen, and what takes its place.
    struct Seen {
        uint8_t size;
        char original[128];
        char replacement[128];
    };
    static constexpr uint32_t kMaxSeen = 96;
    // A shorter text may stand for something else elsewhere.
    static constexpr uint32_t kShortestSeen = 5;

    void replaceIn(RecordKind kind, const char* function, Values& values);
    [[nodiscard]] bool isKept(SecretClass secret) const {
        return secret == SecretClass::kSsid && kept_.ssids;
    }
    void replaceTyped(RecordKind kind, const char* function, Values& values);
    [[nodiscard]] static bool isContextHeader(const Value& value);
    void replaceCall(const char* function, Values& values);
    void replaceVariable(Values& values);
    void replaceLoggedSsid(Values& values);
    void replaceManagerRecord(const char* function, Values& values);
    void replaceEvents(Value& value);
    void replaceBinaryMac(char* bytes);
    void replaceText(char* bytes, uint32_t size, SecretClass secret);
    void replaceRuns(Value& value, SecretClass secret);
    void replaceLine(Value& value);
    void replaceSeen(const Value& value) const;
    void remember(const char* original, const char* replacement, uint32_t size);

    Disguise disguise_;
    Kept kept_;
    Seen seen_[kMaxSeen] = {};
    uint32_t seenCount_ = 0;
    uint32_t nextSeen_ = 0;
};

}  // namespace quorvel::recorder
