#include "tests/agent/conformance/Requests.h"

namespace quorvel::agent_test {
namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char letter : text) {
        if (letter == '\'' || letter == '\\') result += '\\';
        result += letter;
    }
    return result + "'";
}

std::string truth(bool value) {
    return value ? "true" : "false";
}

std::string listOf(const char* name, const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += std::string(name) + ": " + quoted(text) + " ";
    return result;
}

std::string changesOf(const char* name, const std::vector<Change>& changes) {
    std::string result;
    for (const Change& change : changes) {
        result += std::string(name) + " { obj_path: " + quoted(change.path) + " ";
        for (const Param& param : change.params) {
            result += "param_settings { param: " + quoted(param.name) + " value: " + quoted(param.value) +
                      " required: " + truth(param.required) + " } ";
        }
        result += "} ";
    }
    return result;
}

}  // namespace

std::string add(bool allowPartial, const std::vector<Change>& changes) {
    return "add { allow_partial: " + truth(allowPartial) + " " + changesOf("create_objs", changes) + "}";
}

std::string set(bool allowPartial, const std::vector<Change>& changes) {
    return "set { allow_partial: " + truth(allowPartial) + " " + changesOf("update_objs", changes) + "}";
}

std::string del(bool allowPartial, const std::vector<std::string>& paths) {
    return "delete { allow_partial: " + truth(allowPartial) + " " + listOf("obj_paths", paths) + "}";
}

std::string get(const std::vector<std::string>& paths, unsigned maxDepth) {
    return "get { max_depth: " + std::to_string(maxDepth) + " " + listOf("param_paths", paths) + "}";
}

std::string instances(const std::vector<std::string>& paths, bool firstLevelOnly) {
    return "get_instances { first_level_only: " + truth(firstLevelOnly) + " " + listOf("obj_paths", paths) + "}";
}

std::string supported(const std::vector<std::string>& paths, bool firstLevelOnly, bool everything) {
    const std::string flag = truth(everything);
    return "get_supported_dm { first_level_only: " + truth(firstLevelOnly) + " return_commands: " + flag +
           " return_events: " + flag + " return_params: " + flag + " return_unique_key_sets: " + flag + " " +
           listOf("obj_paths", paths) + "}";
}

std::string operate(const std::string& command, const std::string& key, bool sendResp,
                    const std::vector<Param>& arguments) {
    std::string result = "operate { command: " + quoted(command) + " command_key: " + quoted(key) +
                         " send_resp: " + truth(sendResp) + " ";
    for (const Param& argument : arguments)
        result += "input_args { key: " + quoted(argument.name) + " value: " + quoted(argument.value) + " } ";
    return result + "}";
}

Change subscription(const std::string& id, const std::string& type, const std::string& references,
                    const std::vector<Param>& more) {
    Change change{"Device.LocalAgent.Subscription.",
                  {{"Enable", "true"}, {"ID", id}, {"NotifType", type}, {"ReferenceList", references}}};
    change.params.insert(change.params.end(), more.begin(), more.end());
    return change;
}

std::map<std::string, std::string> valuesOf(const usp::Msg& answer) {
    std::map<std::string, std::string> values;
    for (const auto& path : answer.body().response().get_resp().req_path_results()) {
        for (const auto& object : path.resolved_path_results()) {
            for (const auto& [name, value] : object.result_params())
                values[object.resolved_path() + name] = value;
        }
    }
    return values;
}

std::string createdRow(const usp::Msg& answer, int index) {
    const auto& results = answer.body().response().add_resp().created_obj_results();
    if (results.size() <= index) return "";
    return results[index].oper_status().oper_success().instantiated_path();
}

std::vector<std::string> instancesOf(const usp::Msg& answer, int index) {
    std::vector<std::string> paths;
    const auto& results = answer.body().response().get_instances_resp().req_path_results();
    if (results.size() <= index) return paths;
    for (const auto& instance : results[index].curr_insts())
        paths.push_back(instance.instantiated_obj_path());
    return paths;
}

}  // namespace quorvel::agent_test
