#include "tests/torture/TortureWorld.h"

#include <cstring>
#include <string>

#include "tests/wifi/AllReadsSucceed.h"

namespace quorvel::torture {

namespace {

constexpr char kScan[] =
    "SSID: \"Neighbour\"\n"
    "Mode: Managed\tRSSI: -64 dBm\tSNR: 0 dB\tnoise: -92 dBm\tFlags: RSSI on-channel\tChannel: 36/80\n"
    "BSSID: 02:11:22:33:44:55\tCapability: ESS\n"
    "Supported Rates: [ 6(b) 9 12(b) 18 24(b) 36 48 54 ]\n"
    "RSN (WPA2):\n"
    "\n"
    "SSID: \"Other\"\n"
    "Mode: Managed\tRSSI: -70 dBm\tnoise: -92 dBm\tChannel: 6\n"
    "\n";

SpawnInfo daemon() {
    SpawnInfo info{};
    std::memcpy(info.program, "/bin/wlmngr2", sizeof "/bin/wlmngr2");
    std::memcpy(info.arguments, "-c", sizeof "-c");
    return info;
}

}  // namespace

void makeWorld(scripted::Platform& platform) {
    scripted::letAllReadsSucceed(platform);
    // Start-up.
    platform.setFile("/tmp/i2cget", "0x0030\n");
    platform.setFile("/tmp/lspci", "00:00.0 0280: 14e4:43c5\n01:00.0 0280: 14e4:4360\n");
    platform.setConfiguration("Device.WiFi", "WL_Driver", "/lib/wl.ko");
    platform.setConfiguration("Device.WiFi", "WLCSM_Driver", "/lib/wlcsm.ko");
    platform.setSpawnInfo("Device.WiFi.Daemon", daemon());
    platform.setProcess("wler_thread0", 101);
    platform.setProcess("wler_thread1", 102);
    platform.setSystemUpSeconds(1234);
    // Scans and measurements.
    platform.setFile("/var/wl0_scanresults", kScan);
    platform.setVariableEverywhere("dcsDwelltime", "40");
    // Stations, steering and security.
    platform.setVariableEverywhere("wlStaAssocCnt_00:11:22:33:44:55", "7");
    platform.setNvram("wl0_bsd_steering_policy", "80 5 3 -75 0 0x40");
    platform.setNvram("wps_mode", "enabled");
    platform.setNvram("wps_proc_status", "2");
    platform.setVariableEverywhere("wlWscStaPin", "1234");
    platform.setCommandOutput("wl -i wl0 macmode", "2\n");
}

}  // namespace quorvel::torture
