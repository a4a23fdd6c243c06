#include "recorder/library/Session.h"

#include <pthread.h>

#include <cstdio>

#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/RealLibrary.h"
#include "recorder/library/Settings.h"
#include "recorder/library/Writer.h"

namespace quorvel::recorder {

constinit Session session;

namespace {

void complain(const char* sentence) {
    (void)fprintf(stderr, "quorvel_wifi recorder: %s\n", sentence);
}

// The writer stores what is queued before the library goes away.
[[gnu::destructor]] void end() {
    endWriting();
}

}  // namespace

bool Session::open() {
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    (void)pthread_once(&once, [] { session.openOnce(); });  // fails for an invalid control alone
    return state_.load(std::memory_order_acquire) == State::kOpen;
}

void Session::openOnce() {
    const Settings settings = readSettings();
    const char* failure = settings.mistake[0] != '\0' ? settings.mistake : openRealLibrary(settings.library);
    if (failure != nullptr) {
        complain(failure);
        state_.store(State::kFailed, std::memory_order_release);
        return;
    }
    const char* reason = queue.open(settings.queue) ? nullptr : "the system has no memory for the queue";
    if (reason == nullptr) reason = beginWriting(settings);
    if (reason == nullptr) reason = replaceImports(imports, kImportCount);
    if (reason != nullptr) {
        queue.abandon();
        complain(reason);
        complain("the library works without being recorded");
    }
    recording_ = reason == nullptr;
    state_.store(State::kOpen, std::memory_order_release);
}

}  // namespace quorvel::recorder
