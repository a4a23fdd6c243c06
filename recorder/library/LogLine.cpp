// The host framework's log call, recorded: the most frequent call of the library.
#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/Replacements.h"
#include "recorder/library/Variadic.h"

namespace quorvel::recorder::replacement {

namespace {

// A line is recorded before it is printed: the arguments are then still what the library gave.
void record(uint32_t level, const char* file, const char* function, uint32_t line, const FormatArguments& arguments) {
    queue.append<RecordKind::kLog>(numberInRecord(kImport_Quorvel_LogPrint), Number{level}, Number{line},
                                   Constant{file}, Constant{function}, arguments);
}

}  // namespace

#if defined(__arm__)

// The product's. The line is passed on by a jump, with registers and stack as the library left them, so that its
// arguments need not be copied for a call.
namespace {

// The call's registers as they were pushed, and behind them its arguments on the stack.
struct Frame {
    uint32_t level;
    const char* file;
    const char* function;
    uint32_t line;
    Word saved[2];
    const char* format;
    Word words[kMaxFormatWords];  // as many as the format takes
};

[[gnu::noinline]] void recordAny(const Frame& frame) {
    FormatArguments::Room room;
    record(frame.level, frame.file, frame.function, frame.line, {frame.format, frame.words, room});
}

// Records a line whose arguments are a word each where the thread's batch has room for it.
inline bool recordPlain(const FormatShape& shape, const Frame& frame) {
    constexpr uint32_t kFixed = kHeadWords + 5;
    Queue::OpenBatch& open = Queue::current();
    Word* const at = open.at;
    const Word* const end = open.end;
    const uint32_t count = shape.plainWords;
    if (static_cast<uint32_t>(end - at) < kFixed + count) return false;
    at[2] = frame.level;
    at[3] = frame.line;
    at[4] = reinterpret_cast<Word>(frame.file);
    at[5] = reinterpret_cast<Word>(frame.function);
    at[6] = reinterpret_cast<Word>(frame.format);
    Word* const tail = FormatArguments::putWords(shape, frame.words, at + kFixed, end);
    if (tail == nullptr) return false;
    at[0] = reinterpret_cast<Word>(&kLayoutOf<RecordKind::kLog, Number, Number, Constant, Constant, FormatArguments>);
    at[1] = Queue::sizeAndFunction(tail - at, numberInRecord(kImport_Quorvel_LogPrint));
    open.at = tail;
    return true;
}

}  // namespace

extern "C" [[gnu::used]] void* quorvelRecordLogLine(const Frame* frame);

// Records the line, and returns where it goes.
void* quorvelRecordLogLine(const Frame* frame) {
    const char* const format = frame->format;
    const ShapeSlot& slot = slotOf(format);
    const bool isKnown = slot.format.load(std::memory_order_acquire) == format;
    if (!isKnown || !recordPlain(slot.shape, *frame)) recordAny(*frame);
    return imports[kImport_Quorvel_LogPrint].original;
}

[[gnu::naked]] void Quorvel_LogPrint(uint32_t, const char*, const char*, uint32_t, const char*, ...) {
    asm("push {r0-r3, r4, lr}\n\t"
        "mov r0, sp\n\t"
        "bl quorvelRecordLogLine\n\t"
        "mov ip, r0\n\t"
        "pop {r0-r3, r4, lr}\n\t"
        "bx ip");
}

#else

void Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    FormatArguments::Room room;
    const FormatArguments arguments(format, list, room);
    record(level, file, function, line, arguments);
    arguments.call(QUORVEL_ORIGINAL(Quorvel_LogPrint), level, file, function, line, format);
    va_end(list);
}

#endif

}  // namespace quorvel::recorder::replacement
