// Plays a recording: calls the library as the host did, and answers it as the platform did.
#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "recorder/desk/CallTree.h"
#include "recorder/replay/Stream.h"

namespace quorvel::recorder {

struct PlayResult {
    uint64_t calls = 0;
    uint64_t skipped = 0;  ///< calls that a replay cannot make
    std::string stopped;   ///< empty, or why the replay ended before the recording
    std::vector<Difference> differences;
};

struct PlayOptions {
    uint64_t until = UINT64_MAX;  ///< number of the call, from 1, before which to stop
    bool trap = false;            ///< stop there for a debugger
};

class Player {
  public:
    /// The recording must be replayable and outlive the player.
    explicit Player(const Recording& recording);

    /// Plays the calls in the order in which they got the library's lock.
    [[nodiscard]] PlayResult play(const PlayOptions& options);

    /// Answers the library: called in place of the platform, on any thread.
    const Record* answer(RecordKind kind, const std::string& function, std::vector<Value> values);
    /// Starts the library's next recorded thread.
    void startThread(void* (*start)(void*), void* argument);
    /// Takes note that the library cancels the thread that it started last.
    void cancelThread();

  private:
    struct Listener {
        Stream stream;
        bool running = false;
        bool waiting = false;  // in a call of the platform that is not answered yet
        bool parked = false;
        bool cancelled = false;
    };

    void playCall(const Call& call, uint64_t number, PlayResult& result);
    void letListenersReach(uint64_t position);
    [[noreturn]] void park(Listener& listener);
    static void forgiveClosedSocket(const Listener& listener, const std::string& function, std::vector<Value>& values);

    const Recording& recording_;
    CallTree tree_;
    std::vector<std::unique_ptr<Listener>> listeners_;
    size_t nextListener_ = 0;
    Listener* newest_ = nullptr;  // of the listeners that were started
    std::mutex mutex_;
    std::condition_variable moved_;
    uint64_t reached_ = 0;  // listeners may do what the recording has before this position
};

/// The player that the replacements ask.
extern Player* player;

}  // namespace quorvel::recorder
