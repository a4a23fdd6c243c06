// The top-level object's implementation, and the listener for station events.
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <wlcsm.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "wifi/QuorvelWiFiInternal.h"

using quorvel::kFailed;
using quorvel::kSuccess;

namespace {
constexpr char kLogFile[] = "wifi/QuorvelWiFiImpl";
}

#define QUORVEL_DEFINITION "wifi/QuorvelWiFi.def"
#include "wifi/ImplementationExpansion.h"

uint32_t WiFiRadioNumberOfEntriesGetImpl(uint32_t* out) {
    *out = 0;
    quorvel::ManagerText value;
    if (!quorvel::readManager(0, 0, "radio_number", value)) {
        QUORVEL_LOG_ERROR("Radio number Get Fail");
        return kFailed;
    }
    *out = static_cast<uint32_t>(value.number());
    return kSuccess;
}

uint32_t WiFiBandSteeringCapabilityGetImpl(uint8_t* out) {
    *out = 1;
    return kSuccess;
}

uint32_t WiFiATMCapableGetImpl(uint8_t* out) {
    *out = 0;
    return kSuccess;
}

uint32_t WiFiApplyContextImpl(void* ctx) {
    const auto* context = static_cast<const WiFiContext*>(ctx);
    if (WiFiCheckContextNodeSet(ctx, WiFiNode::BandSteeringEnable) != 0) {
        const char* role = context->BandSteeringEnable == 1 ? "3" : "0";
        // A manager that does not take the role is not reported: meant.
        (void)wlcsm_nvram_set("bsd_role", role);
        for (uint32_t radio = 0; radio < quorvel::kRadios; ++radio)
            (void)wlcsm_mngr_set(radio, 0, "bsdRole", role);
        (void)Quorvel_ContextClearMap(ctx, WiFiNode::BandSteeringEnable);
    }
    return quorvel::applyMapped(quorvel::kWiFiObject, 1, ctx);
}

// Station events.

constinit const char notifySocketPath[19] = "/tmp/notify-socket";
pthread_t qvlThreadId;

namespace {

// The listener's socket; -1 when it has none. Registration and deregistration come from one host thread, one after the
// other, but the listener itself runs beside them.
std::atomic<int32_t> listenerSocket{-1};

constexpr size_t kReceiveSize = 4096;

struct EventHeader {
    uint32_t radio;  // from 0
    uint32_t bss;    // from 0
    uint32_t event;
    uint8_t mac[6];
    uint8_t reserved18[2];
};
static_assert(sizeof(EventHeader) == 20 && offsetof(EventHeader, mac) == 12);

constexpr uint32_t kStationDetails = 8;
constexpr uint32_t kStationOnly = 12;

struct DetailedEvent {
    EventHeader header;
    uint8_t reserved20[98];
    uint8_t detailByte1;
    uint8_t detailByte2;
    uint32_t detailWord1;
    uint8_t reserved124[4];
    uint8_t detailBlock[12];
    uint32_t detailWord2;
    char detailText[64];
    uint32_t detailWord3;
    uint8_t reserved212[44];
};
static_assert(sizeof(DetailedEvent) == 256 && offsetof(DetailedEvent, detailByte1) == 118);
static_assert(offsetof(DetailedEvent, detailWord1) == 120 && offsetof(DetailedEvent, detailBlock) == 128);
static_assert(offsetof(DetailedEvent, detailWord2) == 140 && offsetof(DetailedEvent, detailText) == 144);
static_assert(offsetof(DetailedEvent, detailWord3) == 208);

// What the callback is handed.
struct StationRecord {
    char mac[32];
    uint8_t detailByte1;
    uint8_t detailByte2;
    uint8_t reserved34[2];
    uint32_t detailWord1;
    uint8_t detailBlock[12];
    uint32_t detailWord2;
    char detailText[64];
    uint32_t detailWord3;
};
static_assert(sizeof(StationRecord) == 124 && offsetof(StationRecord, detailWord1) == 36);
static_assert(offsetof(StationRecord, detailBlock) == 40 && offsetof(StationRecord, detailWord2) == 52);
static_assert(offsetof(StationRecord, detailText) == 56 && offsetof(StationRecord, detailWord3) == 120);

constexpr char kListener[] = "qvl_thread_main_loop";

// Connects to the event socket. Returns false, with the reason on standard output, when there is none.
bool connectListener() {
    const int32_t descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    listenerSocket = descriptor;
    if (descriptor < 0) {
        printf("%s:%d domain socket failure %d\n", kListener, __LINE__, errno);
        return false;
    }
    sockaddr_un address{};
    static_assert(sizeof address == 110);
    address.sun_family = AF_UNIX;
    quorvel::copyText(address.sun_path, sizeof address.sun_path, notifySocketPath);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        printf("%s:%d connect error %d", kListener, __LINE__, errno);
        close(descriptor);
        listenerSocket = -1;
        return false;
    }
    return true;
}

void copyDetails(StationRecord& station, const uint8_t* message) {
    DetailedEvent event;
    memcpy(&event, message, sizeof event);
    station.detailByte1 = event.detailByte1;
    station.detailByte2 = event.detailByte2;
    station.detailWord1 = event.detailWord1;
    memcpy(station.detailBlock, event.detailBlock, sizeof station.detailBlock);
    station.detailWord2 = event.detailWord2;
    strncpy(station.detailText, event.detailText, sizeof station.detailText);
    station.detailWord3 = event.detailWord3;
}

// Writes a MAC address as colon-separated upper-case hexadecimal.
void formatMac(char* text, const uint8_t (&mac)[6]) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const uint8_t octet : mac) {
        *text++ = kDigits[octet >> 4];
        *text++ = kDigits[octet & 15];
        *text++ = ':';
    }
    text[-1] = '\0';
}

// Handles the message at the start of `length` bytes. Returns how many bytes it took; 0 discards the rest.
size_t handleEvent(const uint8_t* message, size_t length, AssociatedDeviceCallback callback) {
    EventHeader header;
    memcpy(&header, message, sizeof header);
    char mac[32] = {};
    formatMac(mac, header.mac);
    // Before the event code is looked at: an unknown event is told as an association too. Meant.
    QUORVEL_LOG_AS(kListener, quorvel::kLogTraffic, "New STA Association Event on wl%d.%d, Event[%d], STA MAC[%s]",
                   header.radio, header.bss, header.event, mac);
    // The word recev is spelt so.
    printf("%s: recev event on wl%d.%d Event=%d STA MAC=[%s] len=%d\n", kListener, static_cast<int>(header.radio),
           static_cast<int>(header.bss), static_cast<int>(header.event), mac, static_cast<int>(length));
    fflush(stdout);
    if (header.event != kStationDetails && header.event != kStationOnly) {
        QUORVEL_LOG_AS(kListener, quorvel::kLogError, "Invalid STA event[%d]", header.event);
        return 0;
    }
    StationRecord station{};
    memcpy(station.mac, mac, sizeof station.mac);
    size_t taken = sizeof(EventHeader);
    if (header.event == kStationDetails) {
        taken = sizeof(DetailedEvent);
        if (length < taken) {
            QUORVEL_LOG_AS(kListener, quorvel::kLogError, "message length too short[%d]", static_cast<int>(length));
            return 0;
        }
        copyDetails(station, message);
    }
    callback(header.radio * WiFiSystemMaxNumberOfAccessPointsPerRadio() + header.bss + 1, header.event, &station);
    return taken;
}

}  // namespace

void* qvl_thread_main_loop(void* callback) {
    if (!connectListener()) return nullptr;
    puts("qvl_thread_main_loop is ready for new msg...");
    auto* buffer = static_cast<uint8_t*>(calloc(1, kReceiveSize));  // never freed: the thread ends by cancellation
    if (buffer == nullptr) {
        QUORVEL_LOG_ERROR("%s:%d malloc fails!\n", __func__, __LINE__);
        return nullptr;
    }
    for (;;) {
        const ssize_t received = read(listenerSocket, buffer, kReceiveSize);
        if (received <= 0) {
            // Neither a pause nor an end when the peer is gone: meant.
            printf("%s:%d socket read failure %d\n", __func__, __LINE__, errno);
            continue;
        }
        printf("%s: receive total_len=%d\n", __func__, static_cast<int>(received));
        fflush(stdout);
        size_t left = static_cast<size_t>(received);
        const uint8_t* message = buffer;
        // What is shorter than a header is dropped: a message in two reads is not put together.
        while (left >= sizeof(EventHeader)) {
            const size_t taken = handleEvent(message, left, reinterpret_cast<AssociatedDeviceCallback>(callback));
            if (taken == 0) break;
            message += taken;
            left -= taken;
        }
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
        QUORVEL_LOG_ERROR("create thread fail. \n");
        cancelListener();
        return kFailed;
    }
    qvlThreadId = thread;
    QUORVEL_LOG_TRAFFIC("create thread success. \n");
    return kSuccess;
}

uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegisterImpl(void) {
    cancelListener();
    const int32_t descriptor = listenerSocket;
    if (descriptor >= 0) {
        close(descriptor);
        listenerSocket = -1;
    }
    QUORVEL_LOG_TRAFFIC("Deregister done.");
    return kSuccess;
}
