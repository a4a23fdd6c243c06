// The listener for station events.
#pragma once

#pragma GCC visibility push(hidden)

/// Runs the listener; `callback` is its AssociatedDeviceCallback. Returns null, when it cannot listen.
extern "C" void* qvl_thread_main_loop(void* callback);

#pragma GCC visibility pop
