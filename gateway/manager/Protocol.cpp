#include "gateway/manager/Protocol.h"

#include <cstring>

namespace quorvel::manager {
namespace {

class Writer {
  public:
    explicit Writer(std::span<std::uint8_t> out) : out_(out.first(out.size() < kMaxFrame ? out.size() : kMaxFrame)) {}

    void word(std::uint32_t value) {
        std::uint8_t bytes[4];
        for (unsigned i = 0; i < 4; ++i)
            bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
        raw(bytes, sizeof bytes);
    }

    void raw(const void* bytes, std::size_t count) {
        if (count > out_.size() - at_) good_ = false;
        if (!good_ || count == 0) return;
        std::memcpy(out_.data() + at_, bytes, count);
        at_ += count;
    }

    std::size_t finish() {
        if (!good_ || at_ < kFrameHeader) return 0;
        const std::size_t size = at_;
        at_ = 0;
        word(static_cast<std::uint32_t>(size - 4));
        return size;
    }

  private:
    std::span<std::uint8_t> out_;
    std::size_t at_ = 0;
    bool good_ = true;
};

class Reader {
  public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint32_t word() {
        const auto four = raw(4);
        if (four.size() != 4) return 0;
        return static_cast<std::uint32_t>(four[0]) | static_cast<std::uint32_t>(four[1]) << 8U |
               static_cast<std::uint32_t>(four[2]) << 16U | static_cast<std::uint32_t>(four[3]) << 24U;
    }

    std::span<const std::uint8_t> raw(std::size_t count) {
        if (count > bytes_.size() - at_) good_ = false;
        if (!good_) return {};
        const auto result = bytes_.subspan(at_, count);
        at_ += count;
        return result;
    }

    [[nodiscard]] bool good() const {
        return good_;
    }

    [[nodiscard]] bool finished() const {
        return good_ && at_ == bytes_.size();
    }

  private:
    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    bool good_ = true;
};

// Checks length and operation and leaves the reader at the payload.
bool readHeader(Reader& reader, std::span<const std::uint8_t> frame, Operation& operation) {
    if (frame.size() < kFrameHeader || frame.size() > kMaxFrame) return false;
    if (reader.word() != frame.size() - 4) return false;
    const std::uint32_t number = reader.word();
    if (number == 0 || number > kLastOperation) return false;
    operation = static_cast<Operation>(number);
    return true;
}

}  // namespace

Shape shapeOf(Operation operation) {
    switch (operation) {
        case Operation::kGet:
        case Operation::kExtGet:
            return {2, 1};
        case Operation::kSet:
            return {2, 2};
        case Operation::kNvramGet:
            return {0, 1};
        case Operation::kNvramSet:
            return {0, 2};
        case Operation::kSaveNvram:
        case Operation::kHalStarted:
            return {3, 0};
        case Operation::kStartStopServices:
        case Operation::kRestart:
            return {4, 0};
        case Operation::kSendCsa:
            return {2, 0};
        case Operation::kSendCsa2:
            return {1, 1};
        case Operation::kStaInfo:
            return {2, 1};
        case Operation::kSsidInfo:
            return {2, 0};
        case Operation::kClientRxTxStatsResult:
            return {5, 1};
        case Operation::kSystemUpSecs:
            return {0, 0};
        case Operation::kWlUpSecs:
            return {1, 0};
        case Operation::kCiScanStart:
            return {4, 0};
        case Operation::kCiScanResults:
        case Operation::kChanimStats:
        case Operation::kChannelStats:
            return {1, 0};
        case Operation::kRadioChannelStats2:
            return {2, 0};
        case Operation::kControl:
            return {0, 1};
        case Operation::kWl:
            return {0, 2};
        case Operation::kMore:
            return {1, 0};
    }
    return {0, 0};
}

std::size_t encodeRequest(const Request& request, std::span<std::uint8_t> out) {
    const Shape shape = shapeOf(request.operation);
    Writer writer(out);
    writer.word(0);
    writer.word(static_cast<std::uint32_t>(request.operation));
    for (std::size_t i = 0; i < shape.words; ++i)
        writer.word(request.words[i]);
    for (std::size_t i = 0; i < shape.texts; ++i) {
        if (request.isNull[i]) {
            writer.word(kNoText);
            continue;
        }
        if (request.texts[i].size() > kMaxFrame) return 0;
        writer.word(static_cast<std::uint32_t>(request.texts[i].size()));
        writer.raw(request.texts[i].data(), request.texts[i].size());
    }
    return writer.finish();
}

std::size_t encodeAnswer(const Answer& answer, std::span<std::uint8_t> out) {
    if (answer.blockCount > kMaxBlocks) return 0;
    Writer writer(out);
    writer.word(0);
    writer.word(static_cast<std::uint32_t>(answer.operation));
    writer.word(static_cast<std::uint32_t>(answer.result));
    writer.word(answer.value);
    writer.word(static_cast<std::uint32_t>(answer.blockCount));
    for (std::size_t i = 0; i < answer.blockCount; ++i) {
        const Block& block = answer.blocks[i];
        if (block.bytes.size() > kMaxFrame) return 0;
        writer.word(block.offset);
        writer.word(static_cast<std::uint32_t>(block.bytes.size()));
        writer.raw(block.bytes.data(), block.bytes.size());
    }
    return writer.finish();
}

std::size_t frameSize(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 4) return 0;
    const std::size_t size = std::size_t{Reader(bytes).word()} + 4;
    return size < kFrameHeader || size > kMaxFrame ? 0 : size;
}

bool decodeRequest(std::span<const std::uint8_t> frame, Request& request) {
    Reader reader(frame);
    if (!readHeader(reader, frame, request.operation)) return false;
    const Shape shape = shapeOf(request.operation);
    for (std::size_t i = 0; i < shape.words; ++i)
        request.words[i] = reader.word();
    for (std::size_t i = 0; i < shape.texts; ++i) {
        const std::uint32_t length = reader.word();
        request.isNull[i] = length == kNoText;
        const auto bytes = request.isNull[i] ? std::span<const std::uint8_t>{} : reader.raw(length);
        // A text is handed on as C text by both sides, so that it holds no NUL.
        if (!bytes.empty() && std::memchr(bytes.data(), 0, bytes.size()) != nullptr) return false;
        request.texts[i] = {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    return reader.finished();
}

bool decodeAnswer(std::span<const std::uint8_t> frame, Answer& answer) {
    Reader reader(frame);
    if (!readHeader(reader, frame, answer.operation)) return false;
    answer.result = static_cast<std::int32_t>(reader.word());
    answer.value = reader.word();
    answer.blockCount = reader.word();
    if (!reader.good() || answer.blockCount > kMaxBlocks) return false;
    for (std::size_t i = 0; i < answer.blockCount; ++i) {
        answer.blocks[i].offset = reader.word();
        const std::uint32_t length = reader.word();
        answer.blocks[i].bytes = reader.raw(length);
    }
    return reader.finished();
}

}  // namespace quorvel::manager
