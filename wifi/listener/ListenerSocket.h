// The listener's connected socket. The listener and deregistration share it without a lock; exactly one side closes it.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Counts deregistrations, so that a listener can tell whether it has been deregistered since it began.
using ListenerGeneration = uint32_t;

/// Returns the generation that a listener which begins now belongs to.
[[nodiscard]] ListenerGeneration listenerGeneration();

/// Hands `descriptor` (-1 for none) over to deregistration. It takes the place of the one handed over before, which
/// then belongs to nobody. Returns false when a deregistration has come first: the caller keeps the descriptor.
[[nodiscard]] bool handOverListenerSocket(int32_t descriptor, ListenerGeneration generation);

/// Returns the descriptor handed over last, or -1.
[[nodiscard]] int32_t listenerDescriptor();

/// Ends the generation and closes the descriptor handed over in it, if there is one.
void endListenerGeneration();

}  // namespace quorvel

#pragma GCC visibility pop
