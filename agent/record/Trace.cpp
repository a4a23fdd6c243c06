#include "agent/Trace.h"

#include <google/protobuf/util/json_util.h>

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "agent/model/Values.h"
#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kMask = "****";

bool isSecret(std::string_view path) {
    std::string name;
    for (const char c : path.substr(path.rfind('.') + 1))
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (name.find("passphrase") != std::string::npos || name.find("password") != std::string::npos) return true;
    return name == "presharedkey" || name.starts_with("wepkey") || name.ends_with("secret") || name.ends_with("pin");
}

template <typename Objects>
void maskSettings(Objects& objects) {
    for (auto& object : objects) {
        for (auto& setting : *object.mutable_param_settings()) {
            if (isSecret(setting.param())) setting.set_value(kMask);
        }
    }
}

void maskValues(google::protobuf::Map<std::string, std::string>& values) {
    for (auto& [name, value] : values) {
        if (isSecret(name) && !value.empty()) value = kMask;
    }
}

void mask(usp::Msg& message) {
    if (message.body().has_request()) {
        usp::Request& request = *message.mutable_body()->mutable_request();
        if (request.has_set()) maskSettings(*request.mutable_set()->mutable_update_objs());
        if (request.has_add()) maskSettings(*request.mutable_add()->mutable_create_objs());
        if (request.has_operate()) maskValues(*request.mutable_operate()->mutable_input_args());
        if (request.has_notify() && request.notify().has_value_change()) {
            auto& change = *request.mutable_notify()->mutable_value_change();
            if (isSecret(change.param_path())) change.set_param_value(kMask);
        }
    }
    if (!message.body().has_response()) return;
    usp::Response& response = *message.mutable_body()->mutable_response();
    if (response.has_get_resp()) {
        for (auto& path : *response.mutable_get_resp()->mutable_req_path_results())
            for (auto& object : *path.mutable_resolved_path_results())
                maskValues(*object.mutable_result_params());
    }
    if (response.has_set_resp()) {
        for (auto& object : *response.mutable_set_resp()->mutable_updated_obj_results())
            if (object.oper_status().has_oper_success())
                for (auto& instance :
                     *object.mutable_oper_status()->mutable_oper_success()->mutable_updated_inst_results())
                    maskValues(*instance.mutable_updated_params());
    }
}

Json decoded(const google::protobuf::Message& message) {
    google::protobuf::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    std::string text;
    if (!google::protobuf::util::MessageToJsonString(message, &text, options).ok()) return nullptr;
    return Json::parse(text, nullptr, false);
}

}  // namespace

Json toJson(const TraceEntry& entry) {
    Json json{{"time", dateTimeText(entry.time)},
              {"direction", entry.direction == TraceEntry::Direction::kSent ? "sent" : "received"},
              {"protocol", entry.protocol},
              {"peer", entry.peer}};
    if (!entry.topic.empty()) json["topic"] = entry.topic;
    json["from"] = entry.from;
    json["to"] = entry.to;
    json["size"] = entry.size;
    if (!entry.dropped.empty()) json["dropped"] = entry.dropped;
    usp_record::Record record;
    if (entry.bytes.empty() || !record.ParseFromString(entry.bytes)) return json;
    usp::Msg message;
    const bool readable = record.has_no_session_context() &&
                          record.payload_security() == usp_record::Record::PLAINTEXT &&
                          message.ParseFromString(record.no_session_context().payload());
    if (record.has_no_session_context()) record.mutable_no_session_context()->clear_payload();
    if (record.has_session_context()) record.mutable_session_context()->clear_payload();
    json["record"] = decoded(record);
    if (!readable) return json;
    mask(message);
    json["message"] = decoded(message);
    return json;
}

}  // namespace quorvel::agent
