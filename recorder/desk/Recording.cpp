#include "recorder/desk/Recording.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "recorder/format/RecordValues.h"

namespace quorvel::recorder {

namespace {

constexpr uint64_t kNanosecondsOfSecond = 1'000'000'000;

bool isKnown(RecordKind kind) {
    switch (kind) {
        case RecordKind::kStart:
        case RecordKind::kName:
        case RecordKind::kCall:
        case RecordKind::kReturn:
        case RecordKind::kPlatform:
        case RecordKind::kLog:
        case RecordKind::kCallback:
        case RecordKind::kGap:
        case RecordKind::kEnd:
        case RecordKind::kThread:
            return true;
    }
    return false;
}

bool hasFunction(RecordKind kind) {
    return kind == RecordKind::kCall || kind == RecordKind::kReturn || kind == RecordKind::kPlatform ||
           kind == RecordKind::kLog || kind == RecordKind::kCallback;
}

// Reads the file record by record; the first wrong one ends it with its place and reason.
class Reader {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    std::variant<Recording, RecordingError> read() {
        if (bytes_.size() < sizeof kMagic || std::memcmp(bytes_.data(), kMagic, sizeof kMagic) != 0)
            return RecordingError{0, "this is not a recording: it does not begin with \"QVLREC01\""};
        position_ = sizeof kMagic;
        while (position_ < bytes_.size()) {
            RecordHead head{};
            const uint64_t left = bytes_.size() - position_;
            if (left < sizeof head) break;
            std::memcpy(&head, bytes_.data() + position_, sizeof head);
            if (head.length < sizeof head || head.length % 8 != 0 || head.length > kMaxRecordSize)
                return fail("the record's length is " + std::to_string(head.length) +
                            ": it must be a multiple of 8 from 24 to " + std::to_string(kMaxRecordSize));
            if (!isKnown(head.kind))
                return fail("the record's kind is " + std::to_string(static_cast<unsigned>(head.kind)) +
                            ", which this version does not know");
            if (left < head.length) break;
            if (!take(head)) return RecordingError{position_, reason_};
            position_ += head.length;
        }
        recording_.unreadBytes = bytes_.size() - position_;
        if (!started_) return fail("the recording has no start record");
        return std::move(recording_);
    }

  private:
    RecordingError fail(std::string reason) const {
        return {position_, std::move(reason)};
    }

    bool take(const RecordHead& head) {
        Record record;
        record.position = position_;
        record.kind = head.kind;
        record.thread = head.thread;
        record.error = head.error;
        const uint64_t time = head.seconds * kNanosecondsOfSecond + head.nanoseconds;
        // Records of the writer itself have no time.
        if (time != 0 && firstTime_ == 0) firstTime_ = time;
        record.nanoseconds = time > firstTime_ ? time - firstTime_ : 0;
        if (!takeValues(head, record)) return false;
        switch (head.kind) {
            case RecordKind::kStart:
                return start(record);
            case RecordKind::kName:
                return name(record);
            default:
                break;
        }
        if (!started_) return refuse("the record is not a start record, which comes first");
        if (hasFunction(head.kind)) {
            const auto found = names_.find(head.function);
            if (found == names_.end())
                return refuse("function " + std::to_string(head.function) + " was not named before");
            record.function = found->second;
        }
        if (head.kind == RecordKind::kGap &&
            (record.values.size() != 2 || !isNumber(record, 0) || !isNumber(record, 1)))
            return refuse("a gap has a count and a reason");
        recording_.ended = head.kind == RecordKind::kEnd;
        if (head.kind != RecordKind::kEnd) recording_.records.push_back(std::move(record));
        return true;
    }

    bool takeValues(const RecordHead& head, Record& record) {
        // The head was copied: the values follow it in the file.
        std::string whole(bytes_.substr(static_cast<std::size_t>(position_), head.length));
        const bool complete = forEachValue(*reinterpret_cast<const RecordHead*>(whole.data()),
                                           [&](ValueRole role, ValueType type, const uint8_t* bytes, uint32_t size) {
                                               Value value{role, type, 0, {}};
                                               switch (type) {
                                                   case ValueType::kNull:
                                                       break;
                                                   case ValueType::kNumber:
                                                   case ValueType::kNumber64:
                                                   case ValueType::kHandle:
                                                   case ValueType::kName:
                                                   case ValueType::kConstant:
                                                       if (size <= sizeof value.number)
                                                           std::memcpy(&value.number, bytes, size);
                                                       break;
                                                   case ValueType::kText:
                                                   case ValueType::kBytes:
                                                       value.bytes.assign(reinterpret_cast<const char*>(bytes), size);
                                                       break;
                                               }
                                               record.values.push_back(std::move(value));
                                           });
        if (!complete) return refuse("the record's values do not fit its length");
        for (Value& value : record.values) {
            if (value.type != ValueType::kName) continue;
            const auto found = names_.find(static_cast<uint32_t>(value.number));
            if (found == names_.end()) return refuse("text " + std::to_string(value.number) + " was not named before");
            value.bytes = found->second;
        }
        return true;
    }

    static bool isNumber(const Record& record, size_t index) {
        return index < record.values.size() && record.values[index].type == ValueType::kNumber;
    }

    bool start(const Record& record) {
        if (started_) return refuse("there is a second start record");
        if (record.values.size() != 5 || !isNumber(record, 0) || !isNumber(record, 1) || !isNumber(record, 2))
            return refuse("a start record has a version, a word size, flags, a time and a name");
        if (record.values[0].number != kFormatVersion)
            return refuse("the recording's version is " + std::to_string(record.values[0].number) +
                          "; this program reads version " + std::to_string(kFormatVersion));
        started_ = true;
        recording_.wordSize = static_cast<uint32_t>(record.values[1].number);
        const auto flags = static_cast<uint32_t>(record.values[2].number);
        recording_.replayable = (flags & kReplayable) != 0;
        recording_.macsKept = (flags & kMacsKept) != 0;
        recording_.ssidsKept = (flags & kSsidsKept) != 0;
        recording_.wallSeconds = record.values[3].number;
        recording_.library = record.values[4].bytes;
        return true;
    }

    bool name(const Record& record) {
        if (record.values.size() != 2 || !isNumber(record, 0) || record.values[1].type != ValueType::kText)
            return refuse("a name record has a number and a text");
        names_[static_cast<uint32_t>(record.values[0].number)] = record.values[1].bytes;
        return true;
    }

    bool refuse(std::string reason) {
        reason_ = std::move(reason);
        return false;
    }

    std::string_view bytes_;
    uint64_t position_ = 0;
    uint64_t firstTime_ = 0;
    bool started_ = false;
    std::string reason_;
    std::map<uint32_t, std::string> names_;
    Recording recording_;
};

}  // namespace

std::vector<const Value*> Record::valuesOf(ValueRole role) const {
    std::vector<const Value*> found;
    for (const Value& value : values) {
        if (value.role == role) found.push_back(&value);
    }
    return found;
}

std::variant<Recording, RecordingError> readRecording(std::string_view bytes) {
    return Reader(bytes).read();
}

std::variant<Recording, RecordingError> readRecordingFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return RecordingError{0, "cannot open " + path + ": " + std::strerror(errno)};
    std::ostringstream text;
    text << file.rdbuf();
    if (file.bad()) return RecordingError{0, "cannot read " + path + ": " + std::strerror(errno)};
    return readRecording(text.str());
}

}  // namespace quorvel::recorder
