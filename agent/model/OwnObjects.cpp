// The agent's own data model, one line per parameter.
#include "agent/model/Schema.h"

namespace quorvel::agent {
namespace {

using Type = ValueType;
constexpr Access kR = Access::kReadOnly;
constexpr Access kW = Access::kReadWrite;

Parameter text(std::string name, Access access, std::uint32_t most = 0, std::string initial = "", unsigned marks = 0) {
    return {std::move(name), Type::kString, access, std::move(initial), marks, 0, most};
}

Parameter flag(std::string name, Access access, std::string initial, unsigned marks = 0) {
    return {std::move(name), Type::kBoolean, access, std::move(initial), marks};
}

Parameter number(std::string name, Access access, std::string initial, std::uint32_t least = 0, std::uint32_t most = 0,
                 unsigned marks = 0) {
    return {std::move(name), Type::kUnsignedInt, access, std::move(initial), marks, least, most};
}

Parameter choice(std::string name, Access access, std::string initial, std::vector<std::string> choices,
                 unsigned marks = 0) {
    return {std::move(name), Type::kString, access, std::move(initial), marks, 0, 0, std::move(choices)};
}

Parameter alias() {
    return text("Alias", kW, 64, "", kWriteOnce);
}

Parameter count(std::string name) {
    return number(std::move(name), kR, "0", 0, 0, kComputed);
}

Object device() {
    return {"Device.",
            false,
            false,
            {text("RootDataModelVersion", kR, 0, "2.19", kComputed)},
            {{"Reboot()", false, {"Cause", "Reason"}},
             {"FactoryReset()", false, {"Cause", "Reason"}},
             {"ScheduleTimer()", true, {"DelaySeconds"}, {}, {"DelaySeconds"}}},
            {{"Boot!", {"CommandKey", "Cause", "Reason", "FirmwareUpdated", "ParameterMap"}}}};
}

Object deviceInfo() {
    return {"Device.DeviceInfo.",
            false,
            false,
            {text("Manufacturer", kR, 64, "", kComputed), text("ManufacturerOUI", kR, 6, "", kComputed),
             text("ProductClass", kR, 64, "", kComputed), text("SerialNumber", kR, 64, "", kComputed),
             text("ModelName", kR, 64, "", kComputed), text("HardwareVersion", kR, 64, "", kComputed),
             text("SoftwareVersion", kR, 64, "", kComputed), number("UpTime", kR, "0", 0, 0, kComputed | kCounter),
             text("FriendlyName", kW, 32), text("ProvisioningCode", kW, 64)}};
}

Object localAgent() {
    return {"Device.LocalAgent.",
            false,
            false,
            {text("EndpointID", kR, 0, "", kComputed), text("SoftwareVersion", kR, 64, "", kComputed),
             number("UpTime", kR, "0", 0, 0, kComputed | kCounter),
             text("SupportedProtocols", kR, 0, "MQTT,WebSocket", kComputed | kList),
             text("AdvertisedDeviceSubtypes", kR, 0, "", kComputed | kList), count("MTPNumberOfEntries"),
             count("ControllerNumberOfEntries"), count("SubscriptionNumberOfEntries"), count("RequestNumberOfEntries")},
            {},
            {{"Periodic!"}}};
}

std::vector<Object> agentTransports() {
    return {{"Device.LocalAgent.MTP.{i}.",
             true,
             false,
             {alias(), choice("Protocol", kW, "MQTT", {"MQTT", "WebSocket"}), flag("Enable", kW, "false"),
              text("Status", kR, 0, "Down", kComputed), flag("EnableMDNS", kW, "true")},
             {},
             {},
             {{"Alias"}}},
            {"Device.LocalAgent.MTP.{i}.MQTT.",
             false,
             false,
             {text("Reference", kW, 256, "", kReference), text("ResponseTopicConfigured", kW, 65535),
              text("ResponseTopicDiscovered", kR, 0, "", kComputed), number("PublishQoS", kW, "0", 0, 2)}},
            {"Device.LocalAgent.MTP.{i}.WebSocket.",
             false,
             false,
             {text("Interfaces", kW, 0, "", kList), number("Port", kW, "8443", 1, 65535), text("Path", kW, 256),
              flag("EnableEncryption", kW, "true"), number("KeepAliveInterval", kW, "60", 1, 65535)}}};
}

std::vector<Object> controllers() {
    return {
        {"Device.LocalAgent.Controller.{i}.",
         true,
         false,
         {alias(),
          text("EndpointID", kW, 256),
          flag("Enable", kW, "false"),
          text("AssignedRole", kR, 0, "", kList),
          text("ProvisioningCode", kW, 64),
          number("PeriodicNotifInterval", kW, "86400", 1, 4294967295U),
          {"PeriodicNotifTime", Type::kDateTime, kW, "0001-01-01T00:00:00Z"},
          number("USPNotifRetryMinimumWaitInterval", kW, "5", 1, 65535),
          number("USPNotifRetryIntervalMultiplier", kW, "2000", 1000, 65535),
          count("MTPNumberOfEntries"),
          count("BootParameterNumberOfEntries"),
          flag("OnBoardingComplete", kW, "false"),
          number("OnBoardingRestartTime", kW, "0")},
         {{"SendOnBoardRequest()"}},
         {},
         {{"EndpointID"}, {"Alias"}}},
        {"Device.LocalAgent.Controller.{i}.MTP.{i}.",
         true,
         false,
         {alias(), flag("Enable", kW, "false"), choice("Protocol", kW, "MQTT", {"MQTT", "WebSocket"}),
          number("Order", kW, "1", 1, 4294967295U)},
         {},
         {},
         {{"Protocol"}, {"Alias"}}},
        {"Device.LocalAgent.Controller.{i}.MTP.{i}.MQTT.",
         false,
         false,
         {text("Topic", kW, 65535), text("AgentMTPReference", kW, 256, "", kReference)}},
        {"Device.LocalAgent.Controller.{i}.MTP.{i}.WebSocket.",
         false,
         false,
         {text("Host", kW, 256), number("Port", kW, "8443", 1, 65535), text("Path", kW, 256),
          flag("EnableEncryption", kW, "true"), number("KeepAliveInterval", kW, "60", 1, 65535),
          number("CurrentRetryCount", kR, "0", 0, 0, kComputed),
          number("SessionRetryMinimumWaitInterval", kW, "5", 1, 65535),
          number("SessionRetryIntervalMultiplier", kW, "2000", 1000, 65535)},
         {{"Reset()"}}},
        {"Device.LocalAgent.Controller.{i}.BootParameter.{i}.",
         true,
         false,
         {alias(), flag("Enable", kW, "false"), text("ParameterName", kW, 256)},
         {},
         {},
         {{"ParameterName"}, {"Alias"}}},
    };
}

Object subscription() {
    return {
        "Device.LocalAgent.Subscription.{i}.",
        true,
        false,
        {alias(),
         flag("Enable", kW, "false"),
         text("Recipient", kR, 0, "", kReference),
         {"ID", Type::kString, kW, "", kWriteOnce, 1, 64},
         {"CreationDate", Type::kDateTime, kR, "0001-01-01T00:00:00Z"},
         choice("NotifType", kW, "", {"ValueChange", "ObjectCreation", "ObjectDeletion", "OperationComplete", "Event"}),
         text("ReferenceList", kW, 0, "", kList | kWriteOnce),
         flag("Persistent", kW, "false"),
         number("TimeToLive", kW, "0"),
         flag("NotifRetry", kW, "false"),
         number("NotifExpiration", kW, "0")},
        {},
        {},
        {{"Recipient", "ID"}, {"Alias"}}};
}

Object request() {
    return {"Device.LocalAgent.Request.{i}.",
            false,
            false,
            {text("Alias", kR, 64), text("Originator", kR, 256), text("Command", kR, 256), text("CommandKey", kR),
             text("Status", kR)},
            {{"Cancel()"}},
            {},
            {{"Originator", "Command", "CommandKey"}, {"Alias"}}};
}

std::vector<Object> mqtt() {
    const std::vector<std::string> transports{"TCP/IP", "TLS"};
    return {{"Device.MQTT.", false, false, {count("ClientNumberOfEntries")}},
            {"Device.MQTT.Capabilities.",
             false,
             false,
             {text("ProtocolVersionsSupported", kR, 0, "5.0,3.1.1", kComputed | kList),
              text("TransportProtocolSupported", kR, 0, "TCP/IP,TLS", kComputed | kList)}},
            {"Device.MQTT.Client.{i}.",
             true,
             false,
             {alias(),
              text("Name", kW, 64),
              flag("Enable", kW, "false"),
              text("Status", kR, 0, "Disabled", kComputed),
              choice("ProtocolVersion", kW, "5.0", {"5.0", "3.1.1"}),
              text("BrokerAddress", kW, 256),
              number("BrokerPort", kW, "1883", 1, 65535),
              choice("TransportProtocol", kW, "TCP/IP", transports),
              flag("CleanSession", kW, "true"),
              flag("CleanStart", kW, "true"),
              number("KeepAliveTime", kW, "60", 0, 65535),
              text("ClientID", kW, 65535),
              text("Username", kW, 256),
              text("Password", kW, 256, "", kSecured),
              number("MessageRetryTime", kW, "5", 1, 65535),
              number("ConnectRetryTime", kW, "5", 1, 65535),
              number("ConnectRetryIntervalMultiplier", kW, "2000", 1000, 65535),
              number("ConnectRetryMaxInterval", kW, "30720", 1, 4294967295U),
              text("ResponseInformation", kR, 0, "", kComputed),
              count("SubscriptionNumberOfEntries")},
             {},
             {},
             {{"Name"}, {"Alias"}}},
            {"Device.MQTT.Client.{i}.Subscription.{i}.",
             true,
             false,
             {alias(), flag("Enable", kW, "false"), text("Status", kR, 0, "Unsubscribed", kComputed),
              text("Topic", kW, 65535), number("QoS", kW, "0", 0, 2)},
             {},
             {},
             {{"Topic"}, {"Alias"}}}};
}

}  // namespace

std::vector<Object> ownObjects() {
    std::vector<Object> objects{device(), deviceInfo(), localAgent()};
    for (std::vector<Object>& group : std::vector<std::vector<Object>>{agentTransports(), controllers()})
        for (Object& object : group)
            objects.push_back(std::move(object));
    objects.push_back(subscription());
    objects.push_back(request());
    for (Object& object : mqtt())
        objects.push_back(std::move(object));
    return objects;
}

}  // namespace quorvel::agent
