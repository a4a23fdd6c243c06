#include "tests/web/Boards.h"

namespace quorvel::web_test {
namespace {

using namespace hostd::protocol;

RadioState radio(unsigned number, const char* band, unsigned channel, const char* ssid) {
    RadioState state;
    state.radio = number;
    state.interface = "wl" + std::to_string(number - 1);
    state.band = band;
    state.status = "Up";
    state.channel = channel;
    state.bandwidth = 20;
    state.noise = -91;
    state.utilization = 40;
    state.stations = 1;
    BssState bss;
    bss.accessPoint = number;
    bss.interface = state.interface;
    bss.ssid = ssid;
    bss.bssid = "02:51:76:10:00:10";
    bss.status = "Up";
    bss.security = "psk2";
    bss.stations = 1;
    state.bss.push_back(bss);
    return state;
}

StationState station(const char* mac, unsigned accessPoint, double time) {
    StationState state;
    state.mac = mac;
    state.accessPoint = accessPoint;
    state.interface = "wl0";
    state.associated = true;
    state.wanted = true;
    state.rssi = -60;
    state.standard = "ac";
    state.bandwidth = 80;
    state.associations = 1;
    state.seconds = static_cast<std::uint64_t>(time);
    return state;
}

}  // namespace

web::Look lookAt(double time) {
    web::Look look;
    look.name = "test-board";
    look.live.clock.time = time;
    look.live.manager = {"wlmngr2", 17, "running"};
    look.live.radios = {radio(1, "5GHz", 36, "Home"), radio(2, "2.4GHz", 6, "Things")};
    look.live.stations = {station("02:00:00:00:00:01", 1, time), station("02:00:00:00:00:02", 2, time)};
    NeighbourState neighbour;
    neighbour.ssid = "Attic";
    neighbour.bssid = "02:6e:62:00:00:02";
    neighbour.channel = "6l";
    neighbour.width = 20;
    neighbour.rssi = -71;
    neighbour.security = "WPA2-Personal";
    look.live.neighbours = {neighbour};
    look.live.interfaces = {{"wl0", 1000, 10, 2000, 20}, {"wl1", 0, 0, 0, 0}};
    return look;
}

}  // namespace quorvel::web_test
