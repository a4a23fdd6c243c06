#include "agent/scripted/ScriptedController.h"

#include <google/protobuf/util/json_util.h>

#include <stdexcept>

#include "agent/record/Records.h"
#include "agent/scripted/Arrival.h"

namespace quorvel::agent {
namespace {

std::string textOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

template <typename Object>
void fill(Object& object, const Json& settings) {
    for (const auto& item : settings.items()) {
        auto& setting = *object.add_param_settings();
        setting.set_param(item.key());
        setting.set_value(textOf(item.value()));
        setting.set_required(true);
    }
}

void addSubscription(usp::Add& add, const Json& order) {
    Json settings{{"Enable", true}, {"ID", order.at("id")}, {"NotifType", order.at("type")}};
    std::string references;
    for (const Json& path : order.at("references"))
        references += (references.empty() ? "" : ",") + textOf(path);
    settings["ReferenceList"] = references;
    settings["NotifRetry"] = order.value("retry", false);
    settings["Persistent"] = order.value("persistent", false);
    auto& object = *add.add_create_objs();
    object.set_obj_path("Device.LocalAgent.Subscription.");
    fill(object, settings);
}

void parse(const Json& json, usp::Request& request) {
    const auto status = google::protobuf::util::JsonStringToMessage(json.dump(), &request);
    if (!status.ok()) throw std::invalid_argument("it is not a USP request: " + status.ToString());
}

usp::Request requestOf(const Json& order) {
    usp::Request request;
    const bool partial = order.value("allowPartial", false);
    if (order.contains("get")) {
        for (const Json& path : order.at("get"))
            request.mutable_get()->add_param_paths(textOf(path));
    } else if (order.contains("set")) {
        request.mutable_set()->set_allow_partial(partial);
        for (const auto& item : order.at("set").items()) {
            auto& object = *request.mutable_set()->add_update_objs();
            object.set_obj_path(item.key());
            fill(object, item.value());
        }
    } else if (order.contains("add")) {
        request.mutable_add()->set_allow_partial(partial);
        for (const auto& item : order.at("add").items()) {
            auto& object = *request.mutable_add()->add_create_objs();
            object.set_obj_path(item.key());
            fill(object, item.value());
        }
    } else if (order.contains("subscribe")) {
        addSubscription(*request.mutable_add(), order.at("subscribe"));
    } else if (order.contains("delete")) {
        request.mutable_delete_()->set_allow_partial(partial);
        for (const Json& path : order.at("delete"))
            request.mutable_delete_()->add_obj_paths(textOf(path));
    } else if (order.contains("operate")) {
        auto& operate = *request.mutable_operate();
        operate.set_command(textOf(order.at("operate")));
        operate.set_send_resp(true);
        if (order.contains("arguments")) {
            for (const auto& item : order.at("arguments").items())
                (*operate.mutable_input_args())[item.key()] = textOf(item.value());
        }
    } else {
        parse(order.at("request"), request);
    }
    return request;
}

}  // namespace

std::string ScriptedController::wrapped(const usp::Msg& message) const {
    return wrap(kOwnVersion, self_, agent_, message.SerializeAsString()).SerializeAsString();
}

std::string ScriptedController::request(const std::string& id, const Json& order) const {
    usp::Msg message;
    *message.mutable_body()->mutable_request() = requestOf(order);
    message.mutable_header()->set_msg_id(id);
    message.mutable_header()->set_msg_type(requestType(message.body().request()));
    return wrapped(message);
}

std::optional<Json> ScriptedController::read(const std::string& bytes) const {
    usp_record::Record record;
    if (!record.ParseFromString(bytes)) return std::nullopt;
    if (!record.has_no_session_context()) {
        const std::string type = record.has_disconnect() ? "disconnect" : "connect";
        return Json{{"kind", "record"}, {"type", type}, {"text", type}};
    }
    usp::Msg message;
    if (!message.ParseFromString(record.no_session_context().payload())) return std::nullopt;
    return arrivalOf(message);
}

std::optional<std::string> ScriptedController::responseTo(const std::string& bytes) const {
    usp_record::Record record;
    usp::Msg message;
    if (!record.ParseFromString(bytes) || !message.ParseFromString(record.no_session_context().payload()))
        return std::nullopt;
    const usp::Notify& notify = message.body().request().notify();
    if (!message.body().request().has_notify() || !notify.send_resp()) return std::nullopt;
    usp::Msg answer;
    answer.mutable_header()->set_msg_id(message.header().msg_id());
    answer.mutable_header()->set_msg_type(usp::Header::NOTIFY_RESP);
    answer.mutable_body()->mutable_response()->mutable_notify_resp()->set_subscription_id(notify.subscription_id());
    return wrapped(answer);
}

}  // namespace quorvel::agent
