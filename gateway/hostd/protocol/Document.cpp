#include "gateway/hostd/protocol/Document.h"

#include <set>
#include <utility>
#include <vector>

#include "gateway/hostd/protocol/Codec.h"
#include "gateway/hostd/protocol/Counts.h"
#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd::protocol {
namespace {

template <typename Type>
inline constexpr const char* kRecordName = nullptr;
template <>
inline constexpr const char* kRecordName<Fault> = "fault";
template <>
inline constexpr const char* kRecordName<PathValue> = "value";
template <>
inline constexpr const char* kRecordName<Setting> = "setting";
template <>
inline constexpr const char* kRecordName<ParameterDescription> = "parameter";
template <>
inline constexpr const char* kRecordName<Snapshot> = "snapshot";
template <>
inline constexpr const char* kRecordName<SnapshotField> = "field";
template <>
inline constexpr const char* kRecordName<BoardFacts> = "board";
template <>
inline constexpr const char* kRecordName<Task> = "task";
template <>
inline constexpr const char* kRecordName<BoardClock> = "clock";
template <>
inline constexpr const char* kRecordName<Boot> = "boot";
template <>
inline constexpr const char* kRecordName<StationEvent> = "event";
template <>
inline constexpr const char* kRecordName<LogLine> = "line";
template <>
inline constexpr const char* kRecordName<Change> = "change";
template <>
inline constexpr const char* kRecordName<ServiceStatus> = "status";
template <>
inline constexpr const char* kRecordName<TraceEntry> = "trace entry";
template <>
inline constexpr const char* kRecordName<LivePicture> = "picture";
template <>
inline constexpr const char* kRecordName<RadioState> = "radio";
template <>
inline constexpr const char* kRecordName<BssState> = "BSS";
template <>
inline constexpr const char* kRecordName<StationState> = "station";
template <>
inline constexpr const char* kRecordName<NeighbourState> = "neighbour";
template <>
inline constexpr const char* kRecordName<InterfaceCounters> = "counters";
template <>
inline constexpr const char* kRecordName<CallCount> = "call count";
template <>
inline constexpr const char* kRecordName<RequestCount> = "request count";

// The words for a member's form, in the singular or plural.
template <typename Type>
std::string formOf(bool several = false) {
    if constexpr (kIsOptional<Type>) {
        return formOf<typename Type::value_type>(several);
    } else if constexpr (kIsVector<Type>) {
        return "array of " + formOf<typename Type::value_type>(true);
    } else if constexpr (Record<Type>) {
        static_assert(kRecordName<Type> != nullptr, "give the record a name for the document");
        return std::string("object: ") + kRecordName<Type>;
    } else if constexpr (Named<Type>) {
        std::string texts;
        for (const auto& [value, name] : names(Type{}))
            texts += (texts.empty() ? "" : ", ") + std::string("`") + name + "`";
        return texts;
    } else {
        std::string words = expectedOf<Type>(several);
        return words.starts_with("a ") ? words.substr(2) : words;
    }
}

class Writer {
  public:
    template <typename Kind>
    void request() {
        text_ += std::string("### `") + Kind::kVerb + "`\n\n" + Kind::kMeaning + "\n\n";
        members<Kind>();
    }

    template <Record Type>
    void members() {
        std::string rows;
        std::vector<void (Writer::*)()> further;
        forEachMember<Type>([&](const auto& member) {
            using Value = std::remove_cvref_t<decltype(std::declval<Type>().*member.place)>;
            const bool needed = member.presence == Presence::kRequired;
            rows += std::string("| `") + member.name + "` | " + formOf<Value>() + " | " + (needed ? "yes" : "") +
                    " | " + member.meaning + " |\n";
            note<Value>();
        });
        if (!rows.empty()) text_ += "| Member | Form | Always | Meaning |\n|---|---|---|---|\n" + rows + "\n";
    }

    // Writes the records that have been mentioned, and those that these mention.
    void records() {
        while (!pending_.empty()) {
            const auto [name, write] = pending_.front();
            pending_.erase(pending_.begin());
            text_ += "### " + std::string(name) + "\n\n";
            (this->*write)();
        }
    }

    std::string text_;

  private:
    template <typename Type>
    void note() {
        if constexpr (kIsOptional<Type> || kIsVector<Type>) {
            note<typename Type::value_type>();
        } else if constexpr (Record<Type>) {
            if (known_.insert(kRecordName<Type>).second)
                pending_.emplace_back(kRecordName<Type>, &Writer::members<Type>);
        }
    }

    std::set<std::string> known_;
    std::vector<std::pair<const char*, void (Writer::*)()>> pending_;
};

template <std::size_t... Index>
void writeRequests(Writer& writer, std::index_sequence<Index...>) {
    (writer.request<std::variant_alternative_t<Index, Request>>(), ...);
}

}  // namespace

std::string describeProtocol() {
    Writer writer;
    writer.text_ = "## Requests\n\n";
    writeRequests(writer, std::make_index_sequence<std::variant_size_v<Request>>());
    writer.text_ += "## Parts of an answer\n\n";
    writer.members<Part>();
    writer.text_ += "## Status of the service `host`\n\n";
    writer.members<HostCounts>();
    writer.text_ += "## Records\n\n";
    writer.records();
    writer.text_.pop_back();
    return writer.text_;
}

}  // namespace quorvel::hostd::protocol
