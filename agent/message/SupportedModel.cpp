#include "agent/message/SupportedModel.h"

#include <string>

#include "agent/Problem.h"
#include "agent/path/Path.h"

namespace quorvel::agent {
namespace {

using Resp = usp::GetSupportedDMResp;
using Result = Resp::SupportedObjectResult;

constexpr const char* kModelUri = "urn:broadband-forum-org:tr-181-2-19-0";

Resp::ParamValueType typeOf(const Parameter& parameter) {
    switch (parameter.type) {
        case ValueType::kString:
            return Resp::PARAM_STRING;
        case ValueType::kBoolean:
            return Resp::PARAM_BOOLEAN;
        case ValueType::kUnsignedInt:
            return Resp::PARAM_UNSIGNED_INT;
        case ValueType::kInt:
            return Resp::PARAM_INT;
        case ValueType::kUnsignedLong:
            return Resp::PARAM_UNSIGNED_LONG;
        case ValueType::kDateTime:
            return Resp::PARAM_DATE_TIME;
    }
    return Resp::PARAM_UNKNOWN;
}

Resp::ParamAccessType accessOf(const Parameter& parameter) {
    switch (parameter.access) {
        case Access::kReadOnly:
            return Resp::PARAM_READ_ONLY;
        case Access::kReadWrite:
            return Resp::PARAM_READ_WRITE;
        case Access::kWriteOnly:
            return Resp::PARAM_WRITE_ONLY;
    }
    return Resp::PARAM_READ_ONLY;
}

void addParameter(const Parameter& parameter, Result& result) {
    auto& added = *result.add_supported_params();
    added.set_param_name(parameter.name);
    added.set_access(accessOf(parameter));
    added.set_value_type(typeOf(parameter));
    const bool ignored = parameter.is(kCounter) || parameter.access == Access::kWriteOnly;
    added.set_value_change(ignored ? Resp::VALUE_CHANGE_WILL_IGNORE : Resp::VALUE_CHANGE_ALLOWED);
}

void addCommand(const Command& command, Result& result) {
    auto& added = *result.add_supported_commands();
    added.set_command_name(command.name);
    for (const std::string& name : command.inputs)
        added.add_input_arg_names(name);
    for (const std::string& name : command.outputs)
        added.add_output_arg_names(name);
    added.set_command_type(command.asynchronous ? Resp::CMD_ASYNC : Resp::CMD_SYNC);
}

void addEvent(const Event& event, Result& result) {
    auto& added = *result.add_supported_events();
    added.set_event_name(event.name);
    for (const std::string& name : event.arguments)
        added.add_arg_names(name);
}

Result& addObject(const Object& object, bool keys, Resp::RequestedObjectResult& results) {
    Result& result = *results.add_supported_objs();
    result.set_supported_obj_path(object.path);
    result.set_access(object.addDelete ? Resp::OBJ_ADD_DELETE : Resp::OBJ_READ_ONLY);
    result.set_is_multi_instance(object.isTable());
    if (!keys) return result;
    for (const auto& key : object.keys) {
        auto& set = *result.add_unique_key_sets();
        for (const std::string& name : key)
            set.add_key_names(name);
    }
    return result;
}

void addWhole(const Object& object, const usp::GetSupportedDM& request, Resp::RequestedObjectResult& results) {
    Result& result = addObject(object, request.return_unique_key_sets(), results);
    if (request.return_params()) {
        for (const Parameter& parameter : object.parameters)
            addParameter(parameter, result);
    }
    if (request.return_commands()) {
        for (const Command& command : object.commands)
            addCommand(command, result);
    }
    if (request.return_events()) {
        for (const Event& event : object.events)
            addEvent(event, result);
    }
    for (const Object* const child : object.children) {
        if (request.first_level_only()) {
            (void)addObject(*child, request.return_unique_key_sets(), results);
        } else {
            addWhole(*child, request, results);
        }
    }
}

// The form that the schema knows a path by: instances as "{i}".
std::string modelPath(std::string path) {
    for (std::size_t star = path.find(".*"); star != std::string::npos; star = path.find(".*"))
        path.replace(star, 2, ".{i}");
    return schemaPath(path);
}

const Object* findObject(const Schema& schema, const std::string& path) {
    const std::string dotted = path.ends_with('.') ? path : path + ".";
    const Object* const object = schema.find(dotted);
    return object != nullptr ? object : schema.find(dotted + "{i}.");
}

// Adds the object of a parameter, command or event with that alone; false when there is none.
bool addLeaf(const Schema& schema, const std::string& path, Resp::RequestedObjectResult& results) {
    const std::size_t dot = path.rfind('.') + 1;
    const Object* const object = schema.find(path.substr(0, dot));
    if (object == nullptr || dot == 0) return false;
    const std::string leaf = path.substr(dot);
    const Parameter* const parameter = object->parameter(leaf);
    const Command* const command = object->command(leaf);
    const Event* const event = object->event(leaf);
    if (parameter == nullptr && command == nullptr && event == nullptr) return false;
    Result& result = addObject(*object, false, results);
    if (parameter != nullptr) addParameter(*parameter, result);
    if (command != nullptr) addCommand(*command, result);
    if (event != nullptr) addEvent(*event, result);
    return true;
}

}  // namespace

void answerGetSupportedDM(const Schema& schema, const usp::GetSupportedDM& request, Resp& answer) {
    for (const std::string& asked : request.obj_paths()) {
        auto& results = *answer.add_req_obj_results();
        results.set_req_obj_path(asked);
        results.set_data_model_inst_uri(kModelUri);
        const std::string path = modelPath(asked);
        if (const Object* const object = findObject(schema, path); object != nullptr) {
            addWhole(*object, request, results);
        } else if (!addLeaf(schema, path, results)) {
            results.set_err_code(kInvalidPath);
            results.set_err_msg("\"" + asked.substr(0, 256) + "\" is not in the supported data model");
        }
    }
}

}  // namespace quorvel::agent
