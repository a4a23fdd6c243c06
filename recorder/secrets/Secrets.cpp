#include "recorder/secrets/Secrets.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace quorvel::recorder {

namespace {

SecretClass classOfVariable(std::string_view name) {
    for (const SecretParameter& secret : kSecretParameters) {
        if (!secret.variable.empty() && secret.variable == name) return secret.secret;
    }
    return SecretClass::kNone;
}

const SecretParameter* parameterOfFunction(std::string_view function) {
    for (const SecretParameter& secret : kSecretParameters) {
        if (secret.getter == function || secret.setter == function) return &secret;
    }
    return nullptr;
}

// The object whose context a function takes as a whole.
bool takesContextOf(std::string_view function, ObjectIndex object) {
    constexpr std::string_view kEndings[] = {"InitContext", "ApplyContext", "InstanceGet"};
    const std::string_view prefix = model::objectOf(object).prefix;
    return function.starts_with(prefix) &&
           std::ranges::any_of(kEndings, [&](auto ending) { return function.substr(prefix.size()) == ending; });
}

}  // namespace

void Secrets::replaceIn(RecordKind kind, const char* function, Values& values) {
    replaceTyped(kind, function, values);
    for (uint32_t i = 0; i < values.count; ++i) {
        Value& value = values.list[i];
        if (value.type == ValueType::kName) continue;
        replaceLine(value);
        if (!value.done) replaceSeen(value);
        if (!kept_.macs) disguise_.macsIn(value.bytes, value.size);
    }
}

void Secrets::replaceTyped(RecordKind kind, const char* function, Values& values) {
    switch (kind) {
        case RecordKind::kCall:
        case RecordKind::kReturn:
            return replaceCall(function, values);
        case RecordKind::kLog:
            replaceLoggedSsid(values);
            return replaceVariable(values);
        case RecordKind::kPlatform:
        case RecordKind::kCallback:
            replaceVariable(values);
            return replaceManagerRecord(function, values);
        case RecordKind::kStart:
        case RecordKind::kName:
        case RecordKind::kGap:
        case RecordKind::kThread:
        case RecordKind::kEnd:
            return;
    }
}

// A setter has the header of its context before the field.
bool Secrets::isContextHeader(const Value& value) {
    return (value.role == ValueRole::kBefore || value.role == ValueRole::kAfter) && value.size == kContextHeaderSize;
}

void Secrets::replaceCall(const char* function, Values& values) {
    if (const SecretParameter* const secret = parameterOfFunction(function); secret != nullptr) {
        for (uint32_t i = 0; i < values.count; ++i) {
            if (!isContextHeader(values.list[i])) replaceRuns(values.list[i], secret->secret);
        }
        return;
    }
    for (const SecretParameter& secret : kSecretParameters) {
        if (!takesContextOf(function, secret.object)) continue;
        for (uint32_t i = 0; i < values.count; ++i) {
            Value& value = values.list[i];
            if (value.size < uint32_t{secret.field.offset} + secret.field.size) continue;
            Value field{value.role, value.type, secret.field.size, value.bytes + secret.field.offset, false};
            replaceRuns(field, secret.secret);
        }
    }
}

// A value follows the name of its variable, in calls of the manager as in log lines.
void Secrets::replaceVariable(Values& values) {
    for (uint32_t i = 0; i + 1 < values.count; ++i) {
        const Value& name = values.list[i];
        if (name.type == ValueType::kBytes) continue;
        const SecretClass secret = classOfVariable({name.bytes, name.size});
        if (secret != SecretClass::kNone && values.list[i + 1].type != ValueType::kName)
            replaceRuns(values.list[i + 1], secret);
    }
}

// The line about a network that a scan found: with the beginning of its name, which may be too short to be known again.
void Secrets::replaceLoggedSsid(Values& values) {
    constexpr std::string_view kFound = "_SSID[%d] found: %s";
    for (uint32_t i = 0; i + 1 < values.count; ++i) {
        const Value& format = values.list[i];
        if (format.type != ValueType::kName || !std::string_view(format.bytes, format.size).ends_with(kFound)) continue;
        if (values.list[i + 1].type == ValueType::kText) replaceRuns(values.list[i + 1], SecretClass::kSsid);
    }
}

void Secrets::replaceManagerRecord(const char* function, Values& values) {
    constexpr uint32_t kMetricsSize = 1056;
    constexpr uint32_t kFirstNeighbour = 28;
    constexpr uint32_t kNeighbourSize = 16;
    constexpr uint32_t kNeighbours = 64;
    constexpr uint32_t kSsidFieldSize = 36;
    const std::string_view name = function;
    for (uint32_t i = 0; i < values.count; ++i) {
        Value& value = values.list[i];
        if (value.type != ValueType::kBytes) continue;
        if (name == "wlcsm_mngr_ssid_info") {
            Value field{value.role, value.type, std::min(value.size, kSsidFieldSize), value.bytes, false};
            replaceRuns(field, SecretClass::kSsid);
        } else if (name == "read") {
            replaceEvents(value);
        } else if (value.size == kMetricsSize && name.starts_with("wlcsm_mngr_c")) {
            for (uint32_t k = 0; k < kNeighbours; ++k)
                replaceBinaryMac(value.bytes + kFirstNeighbour + k * kNeighbourSize);
        }
    }
}

// Station events: a header of 20 bytes with the address at 12; with code 8 a message has 256 bytes.
void Secrets::replaceEvents(Value& value) {
    constexpr uint32_t kHeaderSize = 20;
    constexpr uint32_t kDetailedSize = 256;
    uint32_t at = 0;
    while (at + kHeaderSize <= value.size) {
        uint32_t event;
        memcpy(&event, value.bytes + at + 8, sizeof event);
        replaceBinaryMac(value.bytes + at + 12);
        at += event == 8 ? kDetailedSize : kHeaderSize;
    }
}

void Secrets::replaceBinaryMac(char* bytes) {
    if (kept_.macs) return;
    uint8_t octets[6];
    memcpy(octets, bytes, sizeof octets);
    disguise_.mac(octets);
    memcpy(bytes, octets, sizeof octets);
}

// The line of a scan that names a network.
void Secrets::replaceLine(Value& value) {
    constexpr std::string_view kBegin = "SSID: \"";
    const std::string_view line(value.bytes, value.size);
    if (value.done || kept_.ssids || !line.starts_with(kBegin)) return;
    const size_t last = line.rfind('"');
    const size_t end = last >= kBegin.size() ? last : line.find_last_not_of("\r\n") + 1;
    replaceText(value.bytes + kBegin.size(), static_cast<uint32_t>(end - kBegin.size()), SecretClass::kSsid);
    value.done = true;
}

void Secrets::replaceRuns(Value& value, SecretClass secret) {
    value.done = true;
    if (isKept(secret)) return;
    uint32_t at = 0;
    while (at < value.size) {
        const auto run = static_cast<uint32_t>(strnlen(value.bytes + at, value.size - at));
        replaceText(value.bytes + at, run, secret);
        at += run + 1;
    }
}

void Secrets::replaceText(char* bytes, uint32_t size, SecretClass secret) {
    if (isKept(secret) || size == 0) return;
    char original[sizeof Seen::original];
    const bool remembered = size >= kShortestSeen && size <= sizeof original;
    if (remembered) memcpy(original, bytes, size);
    disguise_.text(bytes, size);
    if (remembered) remember(original, bytes, size);
}

void Secrets::remember(const char* original, const char* replacement, uint32_t size) {
    for (uint32_t i = 0; i < seenCount_; ++i) {
        if (seen_[i].size == size && memcmp(seen_[i].original, original, size) == 0) return;
    }
    // The oldest gives way.
    Seen& seen = seen_[nextSeen_];
    nextSeen_ = (nextSeen_ + 1) % kMaxSeen;
    seenCount_ = std::max(seenCount_, nextSeen_ == 0 ? kMaxSeen : nextSeen_);
    seen.size = static_cast<uint8_t>(size);
    memcpy(seen.original, original, size);
    memcpy(seen.replacement, replacement, size);
}

void Secrets::replaceSeen(const Value& value) const {
    for (uint32_t i = 0; i < seenCount_; ++i) {
        const Seen& seen = seen_[i];
        char* at = value.bytes;
        char* const end = value.bytes + value.size;
        while (static_cast<uint32_t>(end - at) >= seen.size) {
            at = static_cast<char*>(memmem(at, static_cast<size_t>(end - at), seen.original, seen.size));
            if (at == nullptr) break;
            memcpy(at, seen.replacement, seen.size);
            at += seen.size;
        }
    }
}

}  // namespace quorvel::recorder
