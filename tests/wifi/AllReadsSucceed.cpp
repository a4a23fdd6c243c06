#include "tests/wifi/AllReadsSucceed.h"

#include <cstring>
#include <string>

namespace quorvel::scripted {

void letAllReadsSucceed(Platform& platform) {
    for (const char* name : {"radio_number",
                             "bssid_number",
                             "ssid_number",
                             "sta_number",
                             "wlBridgeInfo",
                             "bsdRole",
                             "wlEnbl",
                             "rAlias",
                             "name",
                             "lastChange",
                             "maxBitRate",
                             "wlFreqBands",
                             "wlBand",
                             "supportedStandards",
                             "operatingStandards",
                             "possibleChannels",
                             "wlCurrentChannel",
                             "wlChannel",
                             "autoChannelSupported",
                             "AutoChannelEnable",
                             "autoChannelRefreshPeriod",
                             "wlAcsChanDwellTime",
                             "wlNBw",
                             "wlNBwCap",
                             "wlNCtrlsb",
                             "guardInterval",
                             "MCS",
                             "transmitPowerSupported",
                             "wlTxPwrPcnt",
                             "IEEE80211hSupported",
                             "WlRegMode",
                             "radarThreshold",
                             "wlCountryRev",
                             "retryLimit",
                             "wlFrgThrshld",
                             "wlRtsThrshld",
                             "longRetryLimit",
                             "wlBcnIntvl",
                             "wlDtmIntvl",
                             "wlPreambleType",
                             "operationalDataTransmitRates",
                             "wlAcsExclChannels",
                             "wlAcsPrefChannels",
                             "wlObssCoex",
                             "wlStbcTx",
                             "wlAmsdu",
                             "wlTxChain",
                             "wlRxChain",
                             "wlNPreambleType",
                             "wlResetRadio",
                             "WlBandUtilization",
                             "dcsDwelltime",
                             "wlAtf",
                             "wlgMode",
                             "wlEnblSsid",
                             "sAlias",
                             "wlBssid",
                             "wlSsid",
                             "apAlias",
                             "SSIDReference",
                             "wlHide",
                             "WMMCapability",
                             "UAPSDCapability",
                             "wlDisableWme",
                             "wlWmeApsd",
                             "numStations",
                             "wlMaxAssoc",
                             "wlAPIsolation",
                             "wlFltMacMode",
                             "wlFltMacList",
                             "wlProbeResponseMF",
                             "wlWmeNoAck",
                             "wlBeaconRate",
                             "wlResetAP",
                             "reset",
                             "modesSupported",
                             "wlPmf",
                             "wlKey1",
                             "wlKey2",
                             "wlKey3",
                             "wlKey4",
                             "preSharedKey",
                             "wlWpaPsk",
                             "wlWpaGTKRekey",
                             "wlRadiusServerIP",
                             "secondaryRadiusServerIPAddr",
                             "wlRadiusPort",
                             "secondaryRadiusServerPort",
                             "wlRadiusKey",
                             "secondaryRadiusSecret",
                             "wlKeyIndex",
                             "wlWpa",
                             "configMethodsSupported",
                             "configMethodsEnabled",
                             "wlWscDevPin",
                             "wlWscAPMode",
                             "wlWscStaPin",
                             "wlWscMode"}) {
        platform.setVariableEverywhere(name, "1");
    }
    platform.setVariableEverywhere("radio_status", "Up");
    platform.setVariableEverywhere("status", "Up");
    platform.setVariableEverywhere("wlBasicRate", "default");
    platform.setVariableEverywhere("wlPhyType", "n");
    platform.setVariableEverywhere("wlNProtection", "auto");
    platform.setVariableEverywhere("wlProtection", "auto");
    platform.setVariableEverywhere("wlAuthMode", "psk2");
    platform.setVariableEverywhere("wlWep", "disabled");
    std::string station(240, '\0');
    std::memcpy(station.data(), "00:11:22:33:44:55", 17);
    platform.setVariableEverywhere("wlStaInfo_0", station);
    platform.setNvram("wl0_wme_ap_be", "15 63 3 0 0 off off");
    platform.setNvram("bsd_role", "3");
    platform.setCommandOutput("wl -i wl0 counters",
                              "txframe 1 txbyte 2 txerror 3\nrxframe 4 rxbyte 5 rxerror 6\n"
                              "rxbadplcp 7 rxbadfcs 8 rxbadsrcmac 9 rxmgocast 10\n");
    platform.setCommandOutput("wl -i wl0 status", "Mode: Managed RSSI: 0 dBm SNR: 0 dB noise: -90 dBm\n");
    platform.setFile(
        "/proc/net/dev",
        "Inter-|   Receive                                                |  Transmit\n"
        " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo\n"
        "   wl0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n");
}

}  // namespace quorvel::scripted
