#include "gateway/hostd/StationEvents.h"

#include <cstring>
#include <string_view>

#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Simulation.h"
#include "host/StationRecords.h"

namespace quorvel::hostd {
namespace {

std::function<void(const protocol::StationEvent&)> theReceiver;

template <std::size_t Size>
std::string textIn(const char (&field)[Size]) {
    return presentable(std::string_view(field, strnlen(field, Size)));
}

std::int32_t signedOf(std::uint32_t number) {
    return static_cast<std::int32_t>(number);
}

// The plug-in's listener thread calls it.
std::uint32_t stationEvent(std::uint32_t accessPoint, std::uint32_t event, void* station) {
    const bool associated = event == QUORVEL_EVENT_ASSOCIATED;
    StationEventRecord record{};
    // Only an association has the whole record.
    std::memcpy(&record, station, associated ? sizeof record : sizeof record.mac);
    protocol::StationEvent news;
    news.accessPoint = accessPoint;
    news.event = event;
    news.kind = associated ? protocol::StationEventKind::kAssociated : protocol::StationEventKind::kLeft;
    news.station = textIn(record.mac);
    if (associated) {
        news.signalStrength = record.rssi;
        news.downlinkRate = signedOf(record.downlinkRate);
        news.uplinkRate = signedOf(record.uplinkRate);
        news.snr = signedOf(record.snr);
        news.standard = textIn(record.standard);
        news.bandwidth = signedOf(record.bandwidth);
    }
    theReceiver(news);
    return 0;
}

}  // namespace

void onStationEvents(std::function<void(const protocol::StationEvent&)> receiver) {
    theReceiver = std::move(receiver);
}

std::uint32_t listenForEvents(const Plugin& plugin) {
    // The events' socket is there once the manager answers.
    (void)askSimulation("state");
    using Callback = std::uint32_t(std::uint32_t, std::uint32_t, void*);
    auto* const start = plugin.find<std::uint32_t(Callback*)>("WiFiNewAPAssociatedDeviceCallbackRegister");
    return start == nullptr ? 1 : start(stationEvent);
}

void listenAnew(const Plugin& plugin) {
    auto* const stop = plugin.find<std::uint32_t()>("WiFiNewAPAssociatedDeviceCallbackDeRegister");
    if (stop != nullptr) (void)stop();  // the old listener's connection has ended
    (void)listenForEvents(plugin);      // a manager that does not answer is reported to its followers
}

}  // namespace quorvel::hostd
