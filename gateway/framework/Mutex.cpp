// Named mutexes of the process.

#include <pthread.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "gateway/framework/Platform.h"

namespace {

using namespace quorvel::framework;

struct Registry {
    std::mutex mutex;
    std::map<std::string, std::unique_ptr<pthread_mutex_t>> named;
};

// Never destroyed: other threads may still hold a mutex while the process exits.
Registry& registry() {
    static auto* const kRegistry = new Registry;
    return *kRegistry;
}

// A second lock by the same thread and an unlock by another one are reported instead of hanging or passing.
std::unique_ptr<pthread_mutex_t> makeMutex() {
    auto made = std::make_unique<pthread_mutex_t>();
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return nullptr;
    const bool good = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK) == 0 &&
                      pthread_mutex_init(made.get(), &attributes) == 0;
    (void)pthread_mutexattr_destroy(&attributes);
    return good ? std::move(made) : nullptr;
}

std::uint32_t createMutex(const char* name, void** handle) {
    const std::lock_guard<std::mutex> guard(registry().mutex);
    std::unique_ptr<pthread_mutex_t>& place = registry().named[name];
    if (place == nullptr) place = makeMutex();
    if (place == nullptr) return kSystemFailure;
    *handle = place.get();
    return kDone;
}

}  // namespace

std::uint32_t QuorvelOsCreateMutex(const char* name, void** handle) {
    if (name == nullptr || handle == nullptr) return kBadArgument;
    try {
        return createMutex(name, handle);
    } catch (const std::bad_alloc&) {
        return kSystemFailure;
    }
}

std::uint32_t QuorvelOsMutexLock(void* handle) {
    if (handle == nullptr) return kBadArgument;
    return pthread_mutex_lock(static_cast<pthread_mutex_t*>(handle)) == 0 ? kDone : kSystemFailure;
}

std::uint32_t QuorvelOsMutexUnlock(void* handle) {
    if (handle == nullptr) return kBadArgument;
    return pthread_mutex_unlock(static_cast<pthread_mutex_t*>(handle)) == 0 ? kDone : kSystemFailure;
}
