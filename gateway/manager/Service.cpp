#include "gateway/manager/Service.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "gateway/manager/WlText.h"

namespace quorvel::manager {
namespace {

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void putBytes(Session& session, Answer& answer, std::string bytes) {
    session.bytes = std::move(bytes);
    answer.blocks[0] = {0, bytesOf(session.bytes)};
    answer.blockCount = 1;
}

template <typename Record>
std::string bytesOfRecord(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Hands out parts of a record: pairs of offset and length.
void putParts(Session& session, Answer& answer, std::string record,
              std::initializer_list<std::pair<std::size_t, std::size_t>> parts) {
    session.bytes = std::move(record);
    for (const auto& [offset, length] : parts) {
        answer.blocks[answer.blockCount++] = {static_cast<std::uint32_t>(offset),
                                              bytesOf(session.bytes).subspan(offset, length)};
    }
}

std::optional<std::string_view> optionalText(const Request& request, std::size_t index) {
    if (request.isNull[index]) return std::nullopt;
    return request.texts[index];
}

}  // namespace

Service::Service(description::Board board, Store store, BoardClock clock, std::uint64_t seed)
    : store_(std::move(store)), clock_(std::move(clock)), model_(std::move(board), store_.load(problem_), seed) {
    faults_.wl = model_.board().faults.wl;
    if (!problem_.empty()) model_.log("store", problem_);
}

void Service::followClock() {
    model_.advanceTo(std::max(model_.now(), clock_.now()));
}

// Ends or stops the manager when that has been asked for: the request has been taken and will not be answered.
void Service::comeTo(FaultPoint moment) {
    if (faults_.point != moment) return;
    faults_.point = FaultPoint::kNothing;
    signalling_(faults_.signal);
}

bool Service::save() {
    if (faults_.save) {
        model_.log("save", "failed: injected fault");
        return false;
    }
    if (const auto failure = store_.save(model_.saved(), [this] { comeTo(FaultPoint::kSave); })) {
        model_.log("save", "failed: " + *failure);
        return false;
    }
    model_.log("save", "done");
    return true;
}

void Service::longAnswer(Session& session, Answer& answer, std::string text, std::int32_t result) {
    session.longAnswer = std::move(text);
    answer.result = result;
    answer.value = static_cast<std::uint32_t>(session.longAnswer.size());
    answer.blocks[0] = {0, bytesOf(session.longAnswer).first(std::min(kPiece, session.longAnswer.size()))};
    answer.blockCount = 1;
}

void Service::handle(const Request& request, Session& session, Answer& answer) {
    const common::Stopwatch watch(durations_[static_cast<std::size_t>(request.operation)]);
    perform(request, session, answer);
}

void Service::perform(const Request& request, Session& session, Answer& answer) {
    constexpr std::int32_t kFailed = -1;
    followClock();
    answer = {};
    answer.operation = request.operation;
    const std::uint32_t* words = request.words;
    const std::string_view text = request.texts[0];
    switch (request.operation) {
        case Operation::kGet:
        case Operation::kExtGet:
            if (auto value = model_.get(words[0], words[1], text)) {
                answer.result = 1;
                putBytes(session, answer, std::move(*value));
            }
            comeTo(FaultPoint::kRead);
            return;
        case Operation::kSet:
            answer.result = model_.set(words[0], words[1], text, optionalText(request, 1)) ? 0 : kFailed;
            comeTo(FaultPoint::kWrite);
            return;
        case Operation::kNvramGet:
            if (auto value = model_.nvramGet(text)) {
                answer.result = 1;
                putBytes(session, answer, std::move(*value));
            }
            comeTo(FaultPoint::kRead);
            return;
        case Operation::kNvramSet:
            answer.result = model_.nvramSet(text, optionalText(request, 1)) ? 0 : kFailed;
            comeTo(FaultPoint::kWrite);
            return;
        case Operation::kSaveNvram:
            answer.result = save() ? 1 : 0;
            return;
        case Operation::kHalStarted:
            model_.halStarted();
            answer.result = 1;
            return;
        case Operation::kStartStopServices:
            answer.result = model_.startStopServices(words[0], words[3]) ? 1 : 0;
            return;
        case Operation::kRestart:
            answer.result = model_.restart(words[0]) ? 1 : 0;
            return;
        case Operation::kSendCsa:
            answer.result = model_.switchChannel(words[0], std::to_string(words[1])) ? 0 : kFailed;
            return;
        case Operation::kSendCsa2:
            answer.result = model_.switchChannel(words[0], text) ? 0 : kFailed;
            return;
        case Operation::kStaInfo:
            answer.result = kFailed;
            if (const auto record = model_.stationInfo(words[0], words[1], text)) {
                answer.result = 0;
                putBytes(session, answer, bytesOfRecord(*record));
            }
            return;
        case Operation::kSsidInfo:
            answer.result = kFailed;
            if (const auto record = model_.ssidInfo(words[0], words[1])) {
                answer.result = 0;
                putBytes(session, answer, bytesOfRecord(*record));
            }
            return;
        case Operation::kClientRxTxStatsResult:
            answer.result = words[2] <= 1 && model_.stationInfo(words[0], words[1], text) ? 0 : kFailed;
            return;
        case Operation::kSystemUpSecs:
            answer.value = model_.upSeconds();
            return;
        case Operation::kWlUpSecs:
            answer.value = model_.radioUpSeconds(words[0]);
            return;
        case Operation::kCiScanStart:
            answer.result = model_.startMeasurement(words[0], words[1], words[2]) ? 0 : kFailed;
            return;
        case Operation::kCiScanResults:
            answer.result = kFailed;
            if (const auto record = model_.channelMetrics(words[0])) {
                answer.result = 0;
                constexpr std::size_t kList = offsetof(ChannelMetricsRecord, neighbours);
                putParts(session, answer, bytesOfRecord(*record), {{0, 4}, {kList, sizeof *record - kList}});
            }
            return;
        case Operation::kChanimStats:
            answer.result = kFailed;
            if (const auto record = model_.channelMetrics(words[0])) {
                answer.result = 0;
                putParts(
                    session, answer, bytesOfRecord(*record),
                    {{offsetof(ChannelMetricsRecord, noise), 4}, {offsetof(ChannelMetricsRecord, utilization), 8}});
            }
            return;
        case Operation::kChannelStats:
            answer.result = kFailed;
            if (const auto record = model_.channelStats(words[0])) {
                answer.result = 0;
                putBytes(session, answer, bytesOfRecord(*record));
            }
            return;
        case Operation::kRadioChannelStats2:
            answer.result = kFailed;
            if (const auto record = model_.channelStats2(words[0]); record && words[1] >= sizeof *record) {
                answer.result = 0;
                putBytes(session, answer, bytesOfRecord(*record));
            }
            return;
        case Operation::kControl:
            longAnswer(session, answer, control(text), 0);
            return;
        case Operation::kWl: {
            const WlAnswer wl = wlText(model_, faults_.wl, text, request.texts[1]);
            longAnswer(session, answer, wl.text, wl.status);
            if (request.texts[1] == "scan") comeTo(FaultPoint::kScan);
            return;
        }
        case Operation::kMore: {
            const std::size_t from = std::min<std::size_t>(words[0], session.longAnswer.size());
            const auto rest = bytesOf(session.longAnswer).subspan(from);
            answer.value = static_cast<std::uint32_t>(session.longAnswer.size());
            answer.blocks[0] = {0, rest.first(std::min(kPiece, rest.size()))};
            answer.blockCount = 1;
            return;
        }
    }
}

}  // namespace quorvel::manager
