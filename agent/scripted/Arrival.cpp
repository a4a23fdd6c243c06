#include "agent/scripted/Arrival.h"

#include <map>
#include <string>

namespace quorvel::agent {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kShownValues = 3;

// In the order of their names, so that a log is the same each time.
Json sorted(const google::protobuf::Map<std::string, std::string>& values) {
    Json all = Json::object();
    for (const auto& [name, value] : std::map<std::string, std::string>(values.begin(), values.end()))
        all[name] = value;
    return all;
}

std::string words(const Json& values) {
    std::string text;
    std::size_t shown = 0;
    for (const auto& item : values.items()) {
        if (shown++ == kShownValues) return text + ", ...";
        text += (text.empty() ? " " : ", ") + item.key() + " = " + item.value().get<std::string>();
    }
    return text;
}

Json notification(const usp::Notify& notify) {
    Json json{{"kind", "notification"},
              {"type", ""},
              {"subscription", notify.subscription_id()},
              {"path", ""},
              {"value", ""},
              {"values", Json::object()},
              {"code", 0},
              {"text", ""}};
    if (notify.has_value_change()) {
        json["type"] = "ValueChange";
        json["path"] = notify.value_change().param_path();
        json["value"] = notify.value_change().param_value();
    } else if (notify.has_obj_creation()) {
        json["type"] = "ObjectCreation";
        json["path"] = notify.obj_creation().obj_path();
        json["values"] = sorted(notify.obj_creation().unique_keys());
    } else if (notify.has_obj_deletion()) {
        json["type"] = "ObjectDeletion";
        json["path"] = notify.obj_deletion().obj_path();
    } else if (notify.has_event()) {
        json["type"] = "Event";
        json["path"] = notify.event().obj_path() + notify.event().event_name();
        json["values"] = sorted(notify.event().params());
    } else if (notify.has_oper_complete()) {
        const auto& complete = notify.oper_complete();
        json["type"] = "OperationComplete";
        json["path"] = complete.obj_path() + complete.command_name();
        if (complete.has_cmd_failure()) {
            json["code"] = complete.cmd_failure().err_code();
        } else {
            json["values"] = sorted(complete.req_output_args().output_args());
        }
    } else if (notify.has_on_board_req()) {
        json["type"] = "OnBoardRequest";
        json["values"] = {{"OUI", notify.on_board_req().oui()},
                          {"SerialNumber", notify.on_board_req().serial_number()}};
    }
    std::string text = "notify " + json.at("type").get<std::string>();
    if (!json.at("path").get<std::string>().empty()) text += " " + json.at("path").get<std::string>();
    if (notify.has_value_change()) text += " = " + notify.value_change().param_value();
    if (json.at("code") != 0) text += " failed with " + json.at("code").dump();
    json["text"] = text + words(json.at("values"));
    return json;
}

// Gathers the results of an answer.
class Answer {
  public:
    void fault(const std::string& path, std::uint32_t code, const std::string& reason) {
        if (code != 0) faults_.push_back({{"path", path}, {"code", code}, {"reason", reason}});
    }
    template <typename Errors>
    void faults(const std::string& object, const Errors& errors) {
        for (const auto& each : errors)
            fault(object + each.param(), each.err_code(), each.err_msg());
    }
    void values(const std::string& object, const google::protobuf::Map<std::string, std::string>& values) {
        const Json all = sorted(values);
        for (const auto& item : all.items())
            values_[object + item.key()] = item.value();
    }
    void value(const std::string& path, const std::string& value) {
        values_[path] = value;
    }
    [[nodiscard]] Json json(const std::string& id, const std::string& type) const {
        const Json code = faults_.empty() ? Json(0) : faults_.front().at("code");
        std::string text = "answer " + id + " " + type + words(values_);
        std::size_t shown = 0;
        for (const Json& each : faults_) {
            if (shown++ == kShownValues) return named(id, type, code, text + "; ...");
            const std::string path = each.at("path").get<std::string>();
            text += "; fault " + each.at("code").dump() + (path.empty() ? "" : " " + path);
        }
        return named(id, type, code, text);
    }

  private:
    [[nodiscard]] Json named(const std::string& id, const std::string& type, const Json& code,
                             const std::string& text) const {
        return {{"kind", "answer"},  {"id", id},     {"type", type}, {"values", values_},
                {"faults", faults_}, {"code", code}, {"text", text}};
    }

    Json values_ = Json::object();
    Json faults_ = Json::array();
};

void take(const usp::GetResp& response, Answer& answer) {
    for (const auto& path : response.req_path_results()) {
        answer.fault(path.requested_path(), path.err_code(), path.err_msg());
        for (const auto& object : path.resolved_path_results())
            answer.values(object.resolved_path(), object.result_params());
    }
}

void take(const usp::SetResp& response, Answer& answer) {
    for (const auto& object : response.updated_obj_results()) {
        const auto& status = object.oper_status();
        if (status.has_oper_failure()) {
            for (const auto& instance : status.oper_failure().updated_inst_failures())
                answer.faults(instance.affected_path(), instance.param_errs());
            answer.fault(object.requested_path(), status.oper_failure().err_code(), status.oper_failure().err_msg());
        }
        for (const auto& instance : status.oper_success().updated_inst_results()) {
            answer.values(instance.affected_path(), instance.updated_params());
            answer.faults(instance.affected_path(), instance.param_errs());
        }
    }
}

void take(const usp::AddResp& response, Answer& answer) {
    for (const auto& object : response.created_obj_results()) {
        const auto& status = object.oper_status();
        if (status.has_oper_failure())
            answer.fault(object.requested_path(), status.oper_failure().err_code(), status.oper_failure().err_msg());
        const auto& created = status.oper_success();
        answer.values(created.instantiated_path(), created.unique_keys());
        answer.faults(created.instantiated_path(), created.param_errs());
    }
}

void take(const usp::DeleteResp& response, Answer& answer) {
    for (const auto& object : response.deleted_obj_results()) {
        const auto& status = object.oper_status();
        if (status.has_oper_failure())
            answer.fault(object.requested_path(), status.oper_failure().err_code(), status.oper_failure().err_msg());
        for (const std::string& path : status.oper_success().affected_paths())
            answer.value(path, "deleted");
        for (const auto& each : status.oper_success().unaffected_path_errs())
            answer.fault(each.unaffected_path(), each.err_code(), each.err_msg());
    }
}

void take(const usp::OperateResp& response, Answer& answer) {
    for (const auto& result : response.operation_results()) {
        if (result.has_cmd_failure())
            answer.fault(result.executed_command(), result.cmd_failure().err_code(), result.cmd_failure().err_msg());
        if (!result.req_obj_path().empty()) answer.value(result.executed_command(), result.req_obj_path());
        answer.values("", result.req_output_args().output_args());
    }
}

void take(const usp::Response& response, Answer& answer) {
    if (response.has_get_resp()) take(response.get_resp(), answer);
    if (response.has_set_resp()) take(response.set_resp(), answer);
    if (response.has_add_resp()) take(response.add_resp(), answer);
    if (response.has_delete_resp()) take(response.delete_resp(), answer);
    if (response.has_operate_resp()) take(response.operate_resp(), answer);
}

}  // namespace

Json arrivalOf(const usp::Msg& message) {
    if (message.body().request().has_notify()) return notification(message.body().request().notify());
    Answer answer;
    const std::string type = usp::Header::MsgType_Name(message.header().msg_type());
    if (message.body().has_error()) {
        const usp::Error& error = message.body().error();
        for (const auto& each : error.param_errs())
            answer.fault(each.param_path(), each.err_code(), each.err_msg());
        answer.fault("", error.err_code(), error.err_msg());
    } else {
        take(message.body().response(), answer);
    }
    return answer.json(message.header().msg_id(), type);
}

}  // namespace quorvel::agent
