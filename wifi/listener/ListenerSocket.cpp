#include "wifi/listener/ListenerSocket.h"

#include <unistd.h>

#include <atomic>

namespace quorvel {

namespace {

struct Shared {
    int32_t descriptor;
    ListenerGeneration generation;
};

// One word, so that a listener cannot hand its socket over to a deregistration that is past.
constinit std::atomic<Shared> shared{Shared{-1, 0}};
static_assert(decltype(shared)::is_always_lock_free);

}  // namespace

ListenerGeneration listenerGeneration() {
    return shared.load().generation;
}

bool handOverListenerSocket(int32_t descriptor, ListenerGeneration generation) {
    Shared before = shared.load();
    while (before.generation == generation) {
        if (shared.compare_exchange_weak(before, Shared{descriptor, generation})) return true;
    }
    return false;
}

int32_t listenerDescriptor() {
    return shared.load().descriptor;
}

void endListenerGeneration() {
    Shared before = shared.load();
    while (!shared.compare_exchange_weak(before, Shared{-1, before.generation + 1})) {
        // A listener has handed its socket over meanwhile: `before` is read anew.
    }
    if (before.descriptor >= 0) close(before.descriptor);
}

}  // namespace quorvel
