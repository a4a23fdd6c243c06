#include "console/verbs/DataModelXml.h"

#include <map>
#include <string_view>

#include "common/Markup.h"

namespace quorvel::console {
namespace {

constexpr const char* kHead = R"(<?xml version="1.0" encoding="UTF-8"?>
<dm:document xmlns:dm="urn:broadband-forum-org:cwmp:datamodel-1-14"
             xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
             xsi:schemaLocation="urn:broadband-forum-org:cwmp:datamodel-1-14 cwmp-datamodel-1-14.xsd"
             spec="urn:quorvel:wifi:supported-data-model" file="quorvel-wifi.xml">
  <description>What the plug-in's exported table supports.</description>
  <model name="Device:2.19">
)";
constexpr const char* kFoot = "  </model>\n</dm:document>\n";

std::string parameterXml(const std::string& name, const hostd::protocol::ParameterDescription& parameter) {
    const bool readOnly = parameter.access == hostd::protocol::Access::kReadOnly;
    const bool hidden = parameter.access == hostd::protocol::Access::kWriteOnly;
    const std::string type(nameOf(parameter.type));
    return "      <parameter name=\"" + common::escapedMarkup(name) + "\" access=\"" +
           (readOnly ? "readOnly" : "readWrite") + "\">\n        <syntax" + (hidden ? " hidden=\"true\"" : "") + "><" +
           type + "/></syntax>\n      </parameter>\n";
}

std::string objectXml(const std::string& path, const std::string& parameters) {
    const bool isTable = path.ends_with("{i}.");
    return "    <object name=\"" + common::escapedMarkup(path) + "\" access=\"readOnly\" minEntries=\"" +
           (isTable ? "0" : "1") + "\" maxEntries=\"" + (isTable ? "unbounded" : "1") + "\">\n" + parameters +
           "    </object>\n";
}

}  // namespace

std::string dataModelXml(const std::vector<hostd::protocol::ParameterDescription>& parameters) {
    std::vector<std::string> order;
    std::map<std::string, std::string> objects;
    for (const hostd::protocol::ParameterDescription& parameter : parameters) {
        const std::size_t end = parameter.path.rfind('.') + 1;
        const std::string object = parameter.path.substr(0, end);
        const auto [entry, isNew] = objects.try_emplace(object);
        if (isNew) order.push_back(object);
        entry->second += parameterXml(parameter.path.substr(end), parameter);
    }
    std::string text = kHead;
    for (const std::string& object : order)
        text += objectXml(object, objects.at(object));
    return text + kFoot;
}

}  // namespace quorvel::console
