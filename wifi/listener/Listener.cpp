// The listener for station events: its thread, registration and deregistration.
#include "wifi/listener/Listener.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "host/StationRecords.h"
#include "wifi/Log.h"
#include "wifi/Result.h"
#include "wifi/listener/ListenerSocket.h"
#include "wifi/listener/StationEvents.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/Text.h"

using quorvel::kFailed;
using quorvel::kSuccess;

constinit const char notifySocketPath[19] = "/tmp/notify-socket";
pthread_t qvlThreadId;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiImpl";
constexpr char kListener[] = "qvl_thread_main_loop";
constexpr size_t kReceiveSize = 4096;

// Closes the descriptor at `own`, which the listener has not handed over. close() is a cancellation point: a listener
// that is cancelled there would leave the descriptor open.
void closeOwn(void* own) {
    int state = 0;
    (void)pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    close(*static_cast<const int32_t*>(own));
    (void)pthread_setcancelstate(state, nullptr);
}

// Connects `descriptor` to the event socket. Returns false, with the reason on standard output, when it cannot; it is
// closed then, as it is when the thread is cancelled meanwhile.
bool connectSocket(int32_t descriptor) {
    sockaddr_un address{};
    static_assert(sizeof address == 110);
    address.sun_family = AF_UNIX;
    quorvel::copyText(address.sun_path, sizeof address.sun_path, notifySocketPath);
    bool connected = false;
    pthread_cleanup_push(closeOwn, &descriptor);
    connected = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (!connected) printf("%s:%d connect error %d", kListener, __LINE__, errno);
    pthread_cleanup_pop(connected ? 0 : 1);
    return connected;
}

// Makes the listener's socket. Returns false when there is none.
bool openSocket() {
    const quorvel::ListenerGeneration generation = quorvel::listenerGeneration();
    // Deregistration cancels before it ends the generation: a listener of an ended one stops here.
    pthread_testcancel();
    const int32_t descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    // Quirk: a listener before this one loses its socket, though it is not deregistered.
    (void)quorvel::handOverListenerSocket(-1, generation);
    if (descriptor < 0) {
        printf("%s:%d domain socket failure %d\n", kListener, __LINE__, errno);
        return false;
    }
    if (!connectSocket(descriptor)) return false;
    if (quorvel::handOverListenerSocket(descriptor, generation)) return true;
    int32_t own = descriptor;
    closeOwn(&own);
    return false;
}

}  // namespace

void* qvl_thread_main_loop(void* callback) {
    if (!openSocket()) return nullptr;
    printf("%s is ready for new msg...\n", kListener);
    auto* buffer =
        static_cast<uint8_t*>(calloc(1, kReceiveSize));  // Quirk: one buffer is left behind for each registration.
    if (buffer == nullptr) {
        QUORVEL_LOG(Error, __func__, "%s:%d malloc fails!\n", __func__, __LINE__);
        return nullptr;
    }
    for (;;) {
        const ssize_t received = read(quorvel::listenerDescriptor(), buffer, kReceiveSize);
        if (received <= 0) {
            // Quirk: prints this line without a pause or an end once the peer is gone.
            printf("%s:%d socket read failure %d\n", __func__, __LINE__, errno);
            continue;
        }
        printf("%s: receive total_len=%d\n", __func__, static_cast<int>(received));
        fflush(stdout);
        quorvel::handleStationEvents(buffer, static_cast<size_t>(received),
                                     reinterpret_cast<AssociatedDeviceCallback>(callback));
    }
}

namespace {

// Cancels the listener last created. A thread that has ended is not joined, so its handle stays good; one that was
// never created has none.
void cancelListener() {
    if (qvlThreadId != pthread_t{}) (void)pthread_cancel(qvlThreadId);  // one that has ended is no failure
}

}  // namespace

uint32_t WiFiNewAPAssociatedDeviceCallbackRegisterImpl(AssociatedDeviceCallback callback) {
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, qvl_thread_main_loop, reinterpret_cast<void*>(callback)) != 0) {
        QUORVEL_LOG(Error, __func__, "create thread fail. \n");
        cancelListener();
        return kFailed;
    }
    qvlThreadId = thread;
    QUORVEL_LOG(Traffic, __func__, "create thread success. \n");
    return kSuccess;
}

uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegisterImpl(void) {
    cancelListener();
    quorvel::endListenerGeneration();
    QUORVEL_LOG(Traffic, __func__, "Deregister done.");
    return kSuccess;
}
