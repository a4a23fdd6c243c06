#include "recorder/replay/Player.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "recorder/library/RealLibrary.h"
#include "recorder/replay/Invoke.h"

namespace quorvel::recorder {

Player* player = nullptr;

namespace {

// The stream that the calling thread replays.
thread_local Stream* currentStream = nullptr;
thread_local void* currentListener = nullptr;

std::string nameOf(const Call& call, uint64_t number) {
    return "call " + std::to_string(number) + ", " + call.begin->function;
}

}  // namespace

Player::Player(const Recording& recording) : recording_(recording), tree_(makeCallTree(recording)) {
    for (const LibraryThread& thread : tree_.threads) {
        listeners_.push_back(std::make_unique<Listener>(Listener{
            Stream("listener " + std::to_string(listeners_.size() + 1), thread.begin->thread, thread.events)}));
    }
}

PlayResult Player::play(const PlayOptions& options) {
    PlayResult result;
    player = this;
    // A call's number is its place in the recording, whatever its turn.
    const uint64_t firstGap = tree_.gaps.empty() ? UINT64_MAX : tree_.gaps.front()->position;
    for (const size_t i : tree_.order()) {
        const Call& call = tree_.calls[i];
        if (i + 1 >= options.until) {
            if (options.trap) (void)std::raise(SIGTRAP);
            if (!options.trap) {
                result.stopped = "stopped before " + nameOf(call, i + 1);
                break;
            }
        }
        const uint64_t end = call.end == nullptr ? UINT64_MAX : call.end->position;
        if (firstGap < end) {
            result.stopped =
                "records are missing in or before " + nameOf(call, i + 1) + ": what follows depends on them";
            break;
        }
        if (call.end == nullptr) {
            result.stopped = "the recording ends in " + nameOf(call, i + 1);
            break;
        }
        playCall(call, i + 1, result);
    }
    letListenersReach(result.stopped.empty() ? UINT64_MAX : 0);
    const std::scoped_lock lock(mutex_);
    for (const auto& listener : listeners_) {
        const auto& found = listener->stream.differences();
        result.differences.insert(result.differences.end(), found.begin(), found.end());
    }
    result.differences = inOrder(std::move(result.differences));
    return result;
}

void Player::playCall(const Call& call, uint64_t number, PlayResult& result) {
    letListenersReach(call.begin->position);
    Stream stream(nameOf(call, number), call.begin->thread, call.events);
    const Invoker* const invoker = findInvoker(call.begin->function);
    if (invoker == nullptr || !invoker->replayable) {
        ++result.skipped;
        return;
    }
    CallMemory memory(*call.begin, kContextUses[invoker->function]);
    currentStream = &stream;
    const uint32_t code = invoker->invoke(memory);
    currentStream = nullptr;
    stream.finish();
    const auto recorded = call.end->valuesOf(ValueRole::kResult);
    if (!recorded.empty() && recorded.front()->number != code) {
        stream.note(call.end->position, "the recording's result is " + std::to_string(recorded.front()->number) +
                                            ", the library's is " + std::to_string(code));
    }
    for (std::string& difference : memory.compare(*call.end))
        stream.note(call.end->position, std::move(difference));
    ++result.calls;
    const auto& found = stream.differences();
    result.differences.insert(result.differences.end(), found.begin(), found.end());
}

const Record* Player::answer(RecordKind kind, const std::string& function, std::vector<Value> values) {
    if (currentListener == nullptr) {
        if (currentStream == nullptr) return nullptr;
        // Listeners first replay everything that they did before this moment.
        letListenersReach(currentStream->nextPosition() == UINT64_MAX ? 0 : currentStream->nextPosition());
        return currentStream->take(kind, function, values);
    }
    auto& listener = *static_cast<Listener*>(currentListener);
    std::unique_lock lock(mutex_);
    if (listener.stream.isDone()) {
        // Cancelled in the recording, or still waiting when it ended.
        lock.unlock();
        park(listener);
    }
    listener.waiting = true;
    moved_.notify_all();
    moved_.wait(lock, [&] { return listener.stream.nextPosition() < reached_; });
    listener.waiting = false;
    if (listener.cancelled) forgiveClosedSocket(listener, function, values);
    const Record* const record = listener.stream.take(kind, function, values);
    moved_.notify_all();
    if (record != nullptr) return record;
    lock.unlock();
    park(listener);
}

void Player::letListenersReach(uint64_t position) {
    std::unique_lock lock(mutex_);
    reached_ = std::max(reached_, position);
    moved_.notify_all();
    moved_.wait(lock, [&] {
        return std::ranges::all_of(listeners_, [&](const auto& listener) {
            // On its way to its next call, it still reads what the library's other threads may change.
            return !listener->running || listener->parked ||
                   (listener->waiting && listener->stream.nextPosition() >= reached_);
        });
    });
}

// The recording does not say whether a listener read before or after its canceller took the socket away from it.
void Player::forgiveClosedSocket(const Listener& listener, const std::string& function, std::vector<Value>& values) {
    constexpr uint32_t kNone = UINT32_MAX;
    const Record* const then = listener.stream.next();
    if (function != "read" || then == nullptr || then->function != function) return;
    const auto recorded = then->valuesOf(ValueRole::kArgument);
    if (!recorded.empty() && !values.empty() && values.front().number == kNone) values.front() = *recorded.front();
}

void Player::park(Listener& listener) {
    {
        const std::scoped_lock lock(mutex_);
        listener.parked = true;
        moved_.notify_all();
    }
    // The library's thread has no way back; it ends with the program.
    for (;;)
        pause();
}

void Player::cancelThread() {
    const std::scoped_lock lock(mutex_);
    if (newest_ != nullptr) newest_->cancelled = true;
}

void Player::startThread(void* (*start)(void*), void* argument) {
    if (nextListener_ >= listeners_.size()) return;
    Listener& listener = *listeners_[nextListener_++];
    {
        const std::scoped_lock lock(mutex_);
        listener.running = true;
    }
    newest_ = &listener;
    std::thread([this, start, argument, &listener] {
        currentListener = &listener;
        (void)start(argument);
        const std::scoped_lock lock(mutex_);
        listener.stream.finish();
        listener.running = false;
        moved_.notify_all();
    }).detach();
}

}  // namespace quorvel::recorder
