#include "tests/torture/Consequences.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>

namespace quorvel::torture {

namespace {

using scripted::Call;
using scripted::LogLine;

constexpr std::optional<std::uint32_t> kGoesOn = std::nullopt;
constexpr std::uint32_t kFailed = 1;
constexpr std::uint32_t kInvalidInput = 6;
constexpr std::uint32_t kUninitialised = 5;
constexpr auto kUntouched = Output::Untouched;
constexpr auto kAsEver = Output::AsEver;
constexpr auto kValue = Output::Value;

// Log lines of the bridge for a variable that it cannot read or write.
constexpr char kUnread[] = "wlcsm_mngr_get: radio[%0], ssid[%1], varName[%2] FAIL.";
constexpr char kUnwritten[] = "wlcsm_mngr_set: radio[%0], ssid[%1], varName[%2] value[%3] FAIL.";
constexpr char kUnmapped[] = " No direct wlmgnr mapping for node[%1].";

// The first matching rule holds. The rules leave out the lines that a front end adds ("Impl call failed", "Get
// failed").
const std::vector<Rule>& rules() {
    static const std::vector<Rule> all = {
        // --- The lock
        {"WiFiLock and WiFiUnlock", "QuorvelOsMutex*", "", {}, kHostsCode, kAsEver},
        {"WiFiInit",
         "QuorvelOsMutexLock",
         "",
         {"Lock failed, result 77", "WiFiSystemInit Failure with errno 77"},
         kHostsCode,
         kAsEver},
        {"WiFiInit",
         "QuorvelOsMutexUnlock",
         "",
         {"Unlock failed, result 77", "WiFiSystemInit Failure with errno 77"},
         kHostsCode,
         kAsEver},
        {"WiFiSystemResetRadiosToFactory",
         "QuorvelOsMutexLock",
         "",
         {"Lock failed, result 77", "WiFiSystemResetRadioToFactory FAIL result 77"},
         kHostsCode,
         kAsEver},
        {"WiFiSystemResetRadiosToFactory",
         "QuorvelOsMutexUnlock",
         "",
         {"Unlock failed, result 77", "WiFiSystemResetRadioToFactory FAIL result 77"},
         kHostsCode,
         kAsEver},
        {"*", "QuorvelOsCreateMutex", "", {"Lock failed, result 77"}, kHostsCode, kUntouched},
        {"*", "QuorvelOsMutexLock", "", {"Lock failed, result 77"}, kHostsCode, kUntouched},
        // The implementation has finished by then.
        {"*", "QuorvelOsMutexUnlock", "", {"Unlock failed, result 77"}, kHostsCode, kAsEver},

        // --- Contexts
        {"*InitContext", "Quorvel_ContextInit", "", {}, kHostsCode, kUntouched},
        {"*", "Quorvel_ContextInit", "", {}, kGoesOn, kAsEver},
        {"*", "Quorvel_IsContextInit", "", {"Uninit context"}, kUninitialised, kUntouched},
        {"*", "Quorvel_ContextSetMap", "", {}, kGoesOn, kAsEver},
        {"*", "Quorvel_ContextZeroSetMap", "", {}, kGoesOn, kAsEver},
        // The bridge finds these nodes still marked and has no variable for them.
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 44", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 53", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 54", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 55", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 61", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "Quorvel_ContextClearMap", "ctx, 62", {kUnmapped}, kGoesOn, kAsEver},
        {"WiFiAccessPointWPSApplyContext", "Quorvel_ContextClearMap", "ctx, 7", {kUnmapped}, kGoesOn, kAsEver},
        {"*", "Quorvel_ContextClearMap", "", {}, kGoesOn, kAsEver},

        // --- Top level
        {"WiFiRadioNumberOfEntriesGet", "wlcsm_mngr_get", "", {"Radio number Get Fail"}, kFailed, kValue, "0"},
        {"WiFiBandSteeringEnableGet", "wlcsm_nvram_get", "", {}, kGoesOn, kValue, "0"},
        {"WiFiApplyContext", "wlcsm_nvram_set", "bsd_role", {}, kGoesOn, kAsEver},
        {"WiFiApplyContext", "wlcsm_mngr_set", "bsdRole", {}, kGoesOn, kAsEver},
        {"WiFiCommitSettingsSet", "wlcsm_mngr_restart", "", {"wlcsm_mngr_restart: radio[%0], FAIL."}, kFailed, kAsEver},

        // --- Radio reads
        {"WiFiRadioChannelGet", "wlcsm_mngr_get", "", {"wlcsm_mngr_get wlCurrentChannel FAIL"}, kFailed, kUntouched},
        {"WiFiRadioConfiguredChannelBandwidthGet",
         "wlcsm_mngr_get",
         "",
         {"wlcsm_mngr_get [wlNBw] failure on radioInstance[1]"},
         kFailed,
         kUntouched},
        {"WiFiRadioOperatingChannelBandwidthGet", "wlcsm_mngr_ext_get", "", {kUnread}, kFailed, kValue, "1"},
        {"WiFiRadioRegulatoryDomainGet", "wlcsm_mngr_ext_get", "", {kUnread}, kFailed, kValue, "I"},
        {"WiFiRadioBasicDataTransmitRatesGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet BASICDATATRANSMITRATES FAIL"},
         kFailed,
         kUntouched},
        {"WiFiRadioBasicDataTransmitRatesGet", "wlcsm_mngr_get", "wlBand", {"Invalid band[0]"}, kFailed, kUntouched},
        {"WiFiRadioBasicDataTransmitRatesGet", "wlcsm_mngr_get", "wlgMode", {}, kGoesOn, kAsEver},
        {"WiFiRadioOperationalDataTransmitRatesGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_OPERATIONALDATATRANSMITRATES FAIL"},
         kFailed,
         kUntouched},
        {"WiFiRadioSupportedDataTransmitRatesGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_SUPPORTEDDATATRANSMITRATES FAIL"},
         kFailed,
         kUntouched},
        {"WiFiRadioAutoChannelSelectionPreferenceListGet", "wlcsm_mngr_get", "", {}, kGoesOn, kValue, ""},
        // Without a PHY type the getter reads the other protection, which has the same value here.
        {"WiFiRadioCtsProtectionEnableGet", "wlcsm_mngr_get", "wlPhyType", {}, kGoesOn, kAsEver},
        {"WiFiRadioCtsProtectionEnableGet",
         "wlcsm_mngr_get",
         "wlNProtection",
         {"Invalid wlProtection[] in wlPhyType[n] mode"},
         kFailed,
         kUntouched},
        {"WiFiRadioCtsProtectionEnableGet",
         "wlcsm_mngr_get",
         "wlProtection",
         {"Invalid wlProtection[] in wlPhyType[] mode"},
         kFailed,
         kUntouched},
        {"WiFiRadioTxChainMaskGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_TXCHAINMASK Fail"},
         kFailed,
         kValue,
         "0"},
        {"WiFiRadioRxChainMaskGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_RXCHAINMASK Fail"},
         kFailed,
         kValue,
         "0"},
        {"WiFiRadioUpTimeGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Radio[1] is not enabled, WiFiRadioStatusGetImpl failure."},
         kFailed,
         kValue,
         "0"},
        {"WiFiRadioGreenfieldEnableGet", "wlcsm_mngr_get", "", {}, kGoesOn, kValue, "0"},
        {"WiFiRadioBandSteeringBandUtilizationThresholdGet",
         "wlcsm_mngr_ext_get",
         "wlBand",
         {kUnread},
         kGoesOn,
         kValue,
         "0"},
        {"WiFiRadioBandSteeringBandUtilizationThresholdGet",
         "wlcsm_nvram_get",
         "",
         {"wlcsm_nvram_get(%0) FAIL."},
         kGoesOn,
         kValue,
         "80"},
        {"WiFiRadioBandSteering*ThresholdGet",
         "wlcsm_nvram_get",
         "",
         {"wlcsm_nvram_get(%0) FAIL."},
         kGoesOn,
         kValue,
         "0"},
        {"WiFiRadioBandUtilizationGet", "wlcsm_mngr_get", "", {}, kGoesOn, kValue, "100"},

        // --- Measurements, read or staged: an unread dwell time is the default, an unstarted scan may have results.
        {"WiFiRadioDcsChannelMetricsGet", "wlcsm_mngr_ext_get", "dcsDwelltime", {kUnread}, kGoesOn, kAsEver},
        {"WiFiRadioChannelStatsGet", "wlcsm_mngr_ext_get", "dcsDwelltime", {kUnread}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_ext_get", "dcsDwelltime", {kUnread}, kGoesOn, kAsEver},
        {"WiFiRadio*", "wlcsm_mngr_ci_scan_start", "", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_mngr_ci_scanresults",
         "",
         {"DcsChannelMetrics fail to get scan results"},
         kGoesOn,
         kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_mngr_chanim_stats",
         "",
         {"DcsChannelMetrics fail to get chanim_stats"},
         kGoesOn,
         kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_mngr_channelstats",
         "",
         {"Channelstats fail to get results"},
         kGoesOn,
         kAsEver},
        {"*", "wlcsm_mngr_ci_scanresults", "", {"DcsChannelMetrics fail to get scan results"}, kFailed, kUntouched},
        // The list of the scan is in the caller's record by then.
        {"*", "wlcsm_mngr_chanim_stats", "", {"DcsChannelMetrics fail to get chanim_stats"}, kFailed, kAsEver},
        {"*", "wlcsm_mngr_channelstats", "", {"Channelstats fail to get results"}, kFailed, kUntouched},
        {"*", "wlcsm_mngr_getRadioChannelStats2", "", {"Channelstats2 fail to get results"}, kFailed, kUntouched},

        // --- Radio apply
        {"WiFiRadioApplyContext", "wlcsm_mngr_get", "wlBand", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_mngr_get",
         "wlgMode",
         {"Invalid set of Basic Rates - 54\n"},
         kInvalidInput,
         kUntouched,
         "",
         "wlBand"},
        {"WiFiRadioApplyContext", "wlcsm_mngr_get", "wlgMode", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_get", "wlPhyType", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_ext_get", "radio_status", {kUnread}, kGoesOn, kAsEver},
        // The band, asked for before a radar threshold and where the steering policy is missing.
        {"WiFiRadioApplyContext", "wlcsm_mngr_ext_get", "wlBand", {kUnread}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_set", "Protection", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_set", "AutoChannelEnable", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_mngr_set",
         "wlNPreambleType",
         {"wlcsm_mngr_set wlNPreambleType fail."},
         kGoesOn,
         kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_nvram_get", "", {"wlcsm_nvram_get(%0) FAIL."}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext",
         "wlcsm_nvram_set",
         "bsd_steering_policy",
         {"wlcsm_nvram_set(%0, %1) FAIL."},
         kGoesOn,
         kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_nvram_set", "auto_cha", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_restart", "", {}, kGoesOn, kAsEver},
        {"WiFiRadioApplyContext", "wlcsm_mngr_send_csa*", "", {}, kGoesOn, kAsEver},

        // --- Radio statistics and neighbours
        {"WiFiRadioStatsApplyContext", "system", "", {}, kGoesOn, kAsEver},
        {"WiFiRadioStatsApplyContext", "fopen", "", {"fopen [%0] fail"}, kFailed, kAsEver},
        {"WiFiRadioStatsApplyContext", "wlcsm_mngr_ext_get", "name", {kUnread}, kGoesOn, kAsEver},
        {"WiFiRadioStatsApplyContext", "calloc", "", {"Memory allocation fail."}, kGoesOn, kAsEver},
        {"WiFiRadioStats*Get",
         "wlcsm_mngr_ext_get",
         "radio_status",
         {kUnread, "Radio[1] is not Up, can't get stats."},
         kFailed,
         kUntouched},
        {"WiFiRadioStats*Get", "popen", "", {"popen [%0] fail"}, kFailed, kUntouched},
        // Quirk: the radio's counters log the name of the SSIDs' function.
        {"WiFi*Stats*Get", "fopen", "", {"Quorvel_P_WiFiSSIDStatsGet fopen() fail !!"}, kFailed, kUntouched},

        // --- Access points
        {"WiFiAccessPointAssociatedDeviceMacListGet",
         "wlcsm_mngr_get",
         "numStations",
         {"There is no station associated on AP[1]"},
         kFailed,
         kUntouched},
        {"WiFiAccessPointAssociatedDeviceMacListGet", "wlcsm_mngr_get", "wlStaInfo_", {}, kGoesOn, kValue, ""},
        {"WiFiAccessPointAssociatedDevice*Get",
         "wlcsm_mngr_get",
         "numStations",
         {"There is no station associated on AP[1]"},
         kFailed,
         kValue,
         "0"},
        // Nobody answers to the address in an empty record; and what is read of one is nothing.
        {"WiFiAccessPointAssociatedDevice*", "wlcsm_mngr_get", "wlStaInfo_", {}, kGoesOn, kValue, ""},
        {"WiFiAccessPointBeaconRateGet", "wlcsm_mngr_get", "wlBand", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointBeaconRateGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "Quorvel_P_WiFiWlcsmMngrGet WIFIACCESSPOINT_BEACONRATE fail"},
         kFailed,
         kUntouched},
        {"WiFiAccessPoint?xStatsResultGet",
         "wlcsm_mngr_clientRxTxStatsResult",
         "",
         {"wlcsm_mngr_clientRxTxStatsResult fail"},
         kFailed,
         kValue,
         "0"},
        {"WiFiAccessPointStatsGet", "wlcsm_mngr_sta_info", "", {"wlcsm_mngr_sta_info fail"}, kFailed, kValue, "0"},
        {"WiFiAccessPoint*Get", "wlcsm_mngr_get", "wlStaAssocCnt_", {}, kGoesOn, kValue, "0"},
        {"WiFiAccessPointSsidNameStatusGet",
         "wlcsm_mngr_ssid_info",
         "",
         {"wlcsm_mngr_ssid_info fail"},
         kFailed,
         kUntouched},
        {"WiFiAccessPointMacModeGet", "popen", "", {"popen fail fail"}, kFailed, kUntouched},
        // A filter list that cannot be read is empty.
        {"WiFiAccessPointClearAccessControlFilterTableGet",
         "wlcsm_mngr_ext_get",
         "wlFltMacList",
         {},
         kGoesOn,
         kValue,
         "1"},
        {"WiFiAccessPointAccessPointControlFilterTableMacAddressGet",
         "wlcsm_mngr_ext_get",
         "wlFltMacList",
         {},
         kGoesOn,
         kValue,
         ""},
        {"WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGet",
         "wlcsm_mngr_ext_get",
         "wlFltMacList",
         {},
         kGoesOn,
         kValue,
         "0"},

        // --- Security
        {"WiFiAccessPointSecurityModeEnabledGet",
         "wlcsm_mngr_get",
         "wlWep",
         {"Invalid wlWep value: "},
         kFailed,
         kUntouched},
        {"WiFiAccessPointSecurityModeEnabledGet", "wlcsm_mngr_get", "wlAuthMode", {}, kGoesOn, kValue, "None"},
        {"WiFiAccessPointSecurityApplyContext",
         "wlcsm_mngr_get",
         "wlWep",
         {"Invalid wlWep value: ", "WiFiAccessPointSecurityModeEnabledGetImpl fail."},
         kGoesOn,
         kAsEver},
        {"WiFiAccessPointSecurityApplyContext", "wlcsm_mngr_get", "wlAuthMode", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointSecurityApplyContext", "wlcsm_mngr_set", "\"wlWep\"", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointSecurityApplyContext", "wlcsm_mngr_set", "\"wlAuthMode\"", {}, kGoesOn, kAsEver},

        // --- WPS
        {"WiFiAccessPointWPSEnableGet",
         "wlcsm_mngr_ext_get",
         "",
         {kUnread, "WPS enable get fail"},
         kFailed,
         kUntouched},
        {"WiFiAccessPointWPSStatusGet", "wlcsm_nvram_get", "", {}, kGoesOn, kValue, "0"},
        {"WiFiAccessPointWPSApplyContext",
         "wlcsm_mngr_ext_get",
         "wlWscMode",
         {kUnread, "WPS enable get fail", "WPS is not enabled."},
         kGoesOn,
         kAsEver,
         "",
         "",
         true},
        {"WiFiAccessPointWPSApplyContext",
         "wlcsm_mngr_ext_get",
         "wlWscStaPin",
         {kUnread, "Invalid Station Pin Length."},
         kGoesOn,
         kAsEver},
        {"WiFiAccessPointWPSApplyContext", "wlcsm_mngr_set", "\"wlWscMode\"", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointWPSApplyContext", "wlcsm_mngr_set", "\"wlWscConfig\"", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointWPSApplyContext", "wlcsm_mngr_set", "\"wsc_force_restart\"", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointWPSApplyContext", "wlcsm_mngr_set", "\"wlWscAuthoStaMac\"", {}, kGoesOn, kAsEver},
        {"WiFiAccessPointWPSApplyContext", "wlcsm_nvram_set", "wps_mode", {}, kGoesOn, kAsEver},

        // --- Associated devices
        {"WiFiAccessPointAssociatedDeviceNumberOfEntriesGet",
         "wlcsm_mngr_ext_get",
         "numStations",
         {kUnread},
         kFailed,
         kUntouched},
        {"WiFiAccessPointAssociatedDevice*Get",
         "wlcsm_mngr_ext_get",
         "numStations",
         {kUnread, "WiFiAccessPointAssociatedDeviceNumberOfEntriesGetImpl Fail. ",
          "Quorvel_P_GetWiFiAccessPointAssociatedDeviceList Fail accessPointInstance[1] associatedDeviceInstance[1]"},
         kFailed,
         kUntouched},

        // --- Access categories
        {"WiFiAccessPointAC*",
         "wlcsm_nvram_get",
         "",
         {"wifi_ap_ac_config, failed to read nvram %0\n"},
         kFailed,
         kUntouched},
        {"WiFiAccessPointAC*Set", "wlcsm_nvram_set", "", {}, kGoesOn, kAsEver},

        // --- System
        {"WiFiSystemInit",
         "wlcsm_mngr_wifi_hal_started",
         "",
         {"wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_WIFI_HAL_STARTED, FAIL."},
         kFailed,
         kAsEver},
        {"WiFiSystemStartStopSecurityDaemons",
         "wlcsm_mngr_start_stop_services",
         "",
         {"wlcsm_mngr_start_stop_security_daemons: FAIL."},
         kFailed,
         kAsEver},
        {"WiFiSystemRadioInit", "wlcsm_mngr_restart", "", {"wlcsm_mngr_restart: radio[%0], FAIL."}, kFailed, kAsEver},
        {"WiFiSystemResetRadioToFactory",
         "wlcsm_mngr_set",
         "wlResetRadio",
         {"wlcsm_mngr_set wlResetRadio FAIL, radio[%0]"},
         kFailed,
         kAsEver},
        {"WiFiSystemResetRadiosToFactory",
         "wlcsm_mngr_set",
         "wlResetRadio",
         {"wlcsm_mngr_set wlResetRadio FAIL, radio[%0]", "WiFiSystemResetRadioToFactory FAIL result 1"},
         kFailed,
         kAsEver},
        {"WiFiSystemResetAccessPointToFactory",
         "wlcsm_mngr_set",
         "wlResetAP",
         {"wlcsm_mngr_set wlResetAP FAIL, radio[%0] accessPointIndex[%1]"},
         kFailed,
         kAsEver},
        {"WifiSaveNvram",
         "wlcsm_mngr_save_nvram",
         "",
         {"wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_SAVE_NVRAM, FAIL."},
         kFailed,
         kAsEver},

        // --- Start-up and shut-down
        {"*", "system", "", {}, kGoesOn, kAsEver},
        {"WiFiInit",
         "fopen",
         "/tmp/i2cget",
         {"File /tmp/i2cget Open fail.", "WBID is not supported"},
         kGoesOn,
         kAsEver},
        {"WiFiInit", "fopen", "/tmp/lspci", {"Open /tmp/lspci fail."}, kFailed, kAsEver},
        {"WiFiInit", "fopen", "/tmp/wl_instances.txt", {"Open /tmp/wl_instances.txt fail."}, kGoesOn, kAsEver},
        {"WiFiInit",
         "wlcsm_mngr_wifi_hal_started",
         "",
         {"wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_WIFI_HAL_STARTED, FAIL.", "WiFiSystemInit Failure with errno 1"},
         kFailed,
         kAsEver},
        {"WiFiInit",
         "QuorvelUtilGetCfg",
         "\"WL_Driver\"",
         {"Don't find WL_Driver in configure file."},
         kHostsCode,
         kAsEver},
        {"WiFiInit",
         "QuorvelUtilGetCfg",
         "\"WLCSM_Driver\"",
         {"Don't find WLCSM_Driver in configure file."},
         kHostsCode,
         kAsEver},
        {"WiFiInit", "QuorvelUtilGetPidByName", "", {}, kGoesOn, kAsEver},
        {"WiFiInit", "sched_setscheduler", "101", {"Could not set priority on wler_thread0.\n"}, kGoesOn, kAsEver},
        {"WiFiInit", "sched_setscheduler", "102", {"Could not set priority on wler_thread1.\n"}, kGoesOn, kAsEver},
        {"WiFiInit",
         "QuorvelUtilGetSpawnInfoFromCfg",
         "",
         {"Failed to get WiFi daemon info from config file. Fall back to default..."},
         kGoesOn,
         kAsEver},
        {"WiFiInit",
         "QuorvelOsSpawnProcess",
         "",
         {"could not spawn child %0", "Quorvel_P_WiFiLaunchWldaemon Failure with errno 77"},
         kHostsCode,
         kAsEver},
        {"Quorvel_P_WiFiLaunchWldaemon",
         "QuorvelUtilGetSpawnInfoFromCfg",
         "",
         {"Failed to get WiFi daemon info from config file. Fall back to default..."},
         kGoesOn,
         kAsEver},
        {"Quorvel_P_WiFiLaunchWldaemon",
         "QuorvelOsSpawnProcess",
         "",
         {"could not spawn child %0"},
         kHostsCode,
         kAsEver},
        // Quirk: terminating the default daemon logs nothing, unlike launching it.
        {"*", "QuorvelUtilGetSpawnInfoFromCfg", "", {}, kGoesOn, kAsEver},
        {"Quorvel_P_WiFiTerminateWldaemon", "QuorvelOsTerminateProcess", "", {}, kHostsCode, kAsEver},
        {"WiFiUnInit",
         "QuorvelOsTerminateProcess",
         "",
         {"Quorvel_P_WiFiTerminateWldaemon Failure with errno 77"},
         kHostsCode,
         kAsEver},
        {"*", "wlcsm_mngr_set", "wlBootTime", {}, kGoesOn, kAsEver},

        // --- Events: the listener's own troubles are printed, and nobody else's.
        {"*", "pthread_create", "", {"create thread fail. \n"}, kFailed, kAsEver},
        {"*", "pthread_cancel", "", {}, kGoesOn, kAsEver},
        {"*", "socket", "", {}, kGoesOn, kAsEver, "", "", true},
        {"*", "connect", "", {}, kGoesOn, kAsEver, "", "", true},
        {"*", "read", "", {}, kGoesOn, kAsEver},
        {"*", "calloc", "", {"qvl_thread_main_loop:* malloc fails!\n"}, kGoesOn, kAsEver, "", "", true},

        // --- The bridge: what is left goes through it.
        {"Quorvel_P_WiFiApplyContext", "wlcsm_mngr_set", "", {kUnwritten}, kGoesOn, kAsEver},
        {"*ApplyContext", "wlcsm_mngr_set", "", {kUnwritten}, kGoesOn, kAsEver},
        {"*Get", "wlcsm_mngr_ext_get", "", {kUnread}, kFailed, kUntouched},
    };
    return all;
}

bool endsWith(const std::string& text, std::string_view ending) {
    return text.size() >= ending.size() && std::string_view(text).substr(text.size() - ending.size()) == ending;
}

std::vector<std::string> argumentsOf(const Call& call) {
    std::vector<std::string> all;
    std::string one;
    bool quoted = false;
    for (const char each : call.arguments + ",") {
        if (each == '"') {
            quoted = !quoted;
        } else if (each == ',' && !quoted) {
            all.push_back(one);
            one.clear();
        } else if (each != ' ' || quoted) {
            one += each;
        }
    }
    return all;
}

std::string filled(const std::string& line, const Call& call) {
    const std::vector<std::string> arguments = argumentsOf(call);
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool place = line[i] == '%' && i + 1 < line.size() && std::isdigit(line[i + 1]) != 0;
        if (!place) {
            text += line[i];
            continue;
        }
        const auto n = static_cast<std::size_t>(line[++i] - '0');
        text += n < arguments.size() ? arguments[n] : "?";
    }
    return text;
}

// A trace line at the beginning or at the end of a function.
std::string functionOf(const LogLine& line, std::string_view word) {
    constexpr std::uint32_t kTrace = 3;
    return line.level == kTrace && endsWith(line.text, word) ? line.text.substr(0, line.text.size() - word.size()) : "";
}

// The exported functions at work when something happened, the innermost last.
std::vector<std::string> functionsAt(const std::vector<LogLine>& logs, std::uint64_t order) {
    std::vector<std::string> working;
    for (const LogLine& line : logs) {
        if (line.order > order) {
            break;
        }
        if (const std::string begun = functionOf(line, " Enter"); !begun.empty()) {
            // A function that was not done by then has failed, but for a snapshot, which is where it is called from.
            if (!working.empty() && !endsWith(working.back(), "InstanceGet")) {
                working.pop_back();
            }
            working.push_back(begun);
        } else if (const std::string done = functionOf(line, " DONE"); !working.empty() && done == working.back()) {
            // InitContext logs "DONE" before it calls the host.
            if (!endsWith(done, "InitContext")) {
                working.pop_back();
            }
        }
    }
    return working;
}

const Rule* ruleFor(const Failure& failure, const std::vector<Failure>& before) {
    for (const Rule& rule : rules()) {
        if (!reads(failure.function, rule.function) || !reads(failure.call.name, rule.call) ||
            failure.call.arguments.find(rule.argument) == std::string::npos) {
            continue;
        }
        const bool follows = std::any_of(before.begin(), before.end(), [&rule](const Failure& earlier) {
            return earlier.call.arguments.find(rule.afterFailed) != std::string::npos;
        });
        if (*rule.afterFailed == '\0' || follows) {
            return &rule;
        }
    }
    return nullptr;
}

// Log lines that the front ends add on the way out.
void addFrontEnds(const Failure& failure, std::vector<std::string>& lines) {
    const std::string code = std::to_string(*failure.rule->ends);
    const bool inFrontEnd = endsWith(failure.function, "Get") || endsWith(failure.function, "Get2") ||
                            endsWith(failure.function, "ApplyContext");
    if (inFrontEnd && failure.call.lockHeld && failure.call.name != "QuorvelOsMutexUnlock") {
        lines.push_back("Impl call failed, result " + code);
    }
    if (failure.caller.empty()) {
        return;
    }
    // Quirk: the snapshot of the filter table has a failure message of its own.
    const bool other = failure.caller == "WiFiAccessPointAccessPointControlFilterTableInstanceGet";
    lines.push_back((other ? "Impl call failed, result " : "Get failed, result ") + code);
}

bool isTold(const LogLine& line) {
    constexpr std::uint32_t kWarning = 1;
    return line.level <= kWarning;
}

std::size_t callsBefore(const Run& run, std::uint64_t order) {
    return static_cast<std::size_t>(
        std::count_if(run.calls.begin(), run.calls.end(), [order](const Call& call) { return call.order < order; }));
}

// Lines of the success path that a failed mark, or a way not taken, leaves out.
bool isLeftOut(const std::string& line, const std::vector<Failure>& failures) {
    return std::any_of(failures.begin(), failures.end(), [&line](const Failure& failure) {
        return failure.call.name == "Quorvel_ContextSetMap" &&
               line.find("node[" + argumentsOf(failure.call).back() + "]") != std::string::npos;
    });
}

}  // namespace

bool reads(const std::string& text, const std::string& pattern) {
    const std::size_t star = pattern.find('*');
    if (star == std::string::npos) {
        return text.size() == pattern.size() &&
               std::equal(text.begin(), text.end(), pattern.begin(),
                          [](char own, char wanted) { return own == wanted || wanted == '?'; });
    }
    if (!reads(text.substr(0, std::min(star, text.size())), pattern.substr(0, star))) {
        return false;
    }
    for (std::size_t from = star; from <= text.size(); ++from) {
        if (reads(text.substr(from), pattern.substr(star + 1))) {
            return true;
        }
    }
    return false;
}

const Failure* Aftermath::fatal() const {
    const auto found = std::find_if(failures.begin(), failures.end(),
                                    [](const Failure& failure) { return failure.rule->ends.has_value(); });
    return found == failures.end() ? nullptr : &*found;
}

bool Aftermath::failed(const std::string& call) const {
    return std::any_of(failures.begin(), failures.end(),
                       [&call](const Failure& failure) { return failure.call.name == call; });
}

Expectation expect(const std::string& scenario, const Run& success, const Run& run) {
    Expectation expectation;
    std::vector<Failure>& failures = expectation.aftermath.failures;
    std::uint64_t otherwiseFrom = UINT64_MAX;
    for (const Call& call : run.calls) {
        if (!call.forced) {
            continue;
        }
        Failure failure{call, scenario, "", nullptr};
        if (const std::vector<std::string> working = functionsAt(run.logs, call.order); !working.empty()) {
            failure.function = working.back();
            failure.caller = working.size() > 1 ? working.front() : "";
        }
        // Quirk: the snapshot of the filter table logs no "Enter".
        if (failure.caller.empty() && endsWith(scenario, "TableInstanceGet") && failure.function != scenario) {
            failure.caller = scenario;
        }
        failure.rule = ruleFor(failure, failures);
        if (failure.rule == nullptr) {
            expectation.missing.push_back("nothing says what comes of " + call.text() + " failing in " +
                                          failure.function);
            continue;
        }
        for (const char* line : failure.rule->lines) {
            expectation.lines.push_back(filled(line, call));
        }
        failures.push_back(failure);
        if (failure.rule->another || failure.rule->ends) {
            otherwiseFrom = std::min(otherwiseFrom, call.order);
        }
        if (failure.rule->ends) {
            addFrontEnds(failure, expectation.lines);
        }
    }
    const std::size_t sameWay = otherwiseFrom == UINT64_MAX ? SIZE_MAX : callsBefore(run, otherwiseFrom);
    for (const LogLine& line : success.logs) {
        if (isTold(line) && callsBefore(success, line.order) <= sameWay && !isLeftOut(line.text, failures)) {
            expectation.lines.push_back(line.text);
        }
    }
    Aftermath& aftermath = expectation.aftermath;
    aftermath.result = run.result;
    aftermath.succeeded = failures.empty();
    const Failure* fatal = aftermath.fatal();
    expectation.result = fatal != nullptr ? *fatal->rule->ends : success.result;
    return expectation;
}

std::string wrongInLog(const Expectation& expectation, const Run& run) {
    std::vector<std::string> told;
    for (const LogLine& line : run.logs) {
        if (isTold(line)) {
            told.push_back(line.text);
        }
    }
    for (const std::string& line : expectation.lines) {
        const auto found =
            std::find_if(told.begin(), told.end(), [&line](const std::string& text) { return reads(text, line); });
        if (found == told.end()) {
            return "\"" + line + "\" is not logged";
        }
        told.erase(found);
    }
    return told.empty() ? "" : "\"" + told.front() + "\" is logged";
}

std::string wrongInTrace(const Expectation& expectation, const Run& run) {
    std::map<std::string, int> undone;
    for (const LogLine& line : run.logs) {
        if (const std::string begun = functionOf(line, " Enter"); !begun.empty()) {
            ++undone[begun];
        }
    }
    for (const LogLine& line : run.logs) {
        const auto entry = undone.find(functionOf(line, " DONE"));
        if (entry != undone.end()) {
            --entry->second;
        }
    }
    const Failure* fatal = expectation.aftermath.fatal();
    for (const auto& [function, count] : undone) {
        // Quirk: these two log "DONE" whatever the result.
        const bool always = endsWith(function, "InitContext") || function == "WiFiCommitSettingsSet";
        const bool fails = fatal != nullptr && (function == fatal->function || function == fatal->caller);
        if (count != (fails && !always ? 1 : 0)) {
            return function + (count > 0 ? " does not say that it is done" : " says that it is done though it failed");
        }
    }
    return "";
}

std::vector<std::string> tracedFunctions(const Run& run) {
    std::vector<std::string> functions;
    for (const LogLine& line : run.logs) {
        for (const char* word : {" Enter", " DONE"}) {
            if (const std::string function = functionOf(line, word); !function.empty()) {
                functions.push_back(function);
            }
        }
    }
    return functions;
}

}  // namespace quorvel::torture
