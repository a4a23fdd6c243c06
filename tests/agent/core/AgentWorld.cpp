#include "tests/agent/core/AgentWorld.h"

#include <cstdlib>

namespace quorvel::agent_test {

bool ScriptedTransports::send(std::string record, const Destination& destination) {
    if (broken) return false;
    Sent one;
    EXPECT_TRUE(one.record.ParseFromString(record));
    one.destination = destination;
    sent.push_back(std::move(one));
    return true;
}

AgentWorld::AgentWorld() {
    std::string place = (std::filesystem::temp_directory_path() / "quorvel-agent-XXXXXX").string();
    EXPECT_NE(mkdtemp(place.data()), nullptr);
    folder_ = place;
    config.stateFolder = place;
    config.device.oui = "001122";
    config.device.serial = "42";
    config.device.softwareVersion = "1.0";
    MqttClientConfig client;
    client.name = "broker";
    client.address = "127.0.0.1";
    config.mqttClients.push_back(client);
    ControllerConfig controller;
    controller.endpointId = kController;
    ControllerMtpConfig way;
    way.client = "broker";
    controller.mtps.push_back(way);
    config.controllers.push_back(controller);
}

AgentWorld::~AgentWorld() {
    agent.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void AgentWorld::start() {
    Agent::Surroundings surroundings;
    surroundings.random = [this] { return random; };
    surroundings.trace = [this](const TraceEntry& entry) { traced.push_back(entry); };
    surroundings.log = [this](const std::string& line) { logged.push_back(line); };
    agent = std::make_unique<Agent>(config, gateway, transports, surroundings);
    agent->start();
}

void AgentWorld::connect(std::uint64_t channel) {
    channel_ = channel;
    Channel opened;
    opened.id = channel;
    opened.mtp = "Device.LocalAgent.MTP.1.";
    opened.peer = "127.0.0.1:1883";
    opened.replyTopic = "/usp/endpoint";
    opened.mqttVersion = "5.0";
    agent->onConnected(opened);
}

void AgentWorld::restart() {
    agent.reset();
    transports.sent.clear();
    seen_ = 0;
    start();
    connect();
}

usp::Msg AgentWorld::request(usp::Header::MsgType type) {
    usp::Msg message;
    message.mutable_header()->set_msg_type(type);
    (void)message.mutable_body()->mutable_request();
    return message;
}

usp_record::Record AgentWorld::record(const usp::Msg& message, const std::string& from, const std::string& to) {
    usp_record::Record record;
    record.set_version("1.4");
    record.set_from_id(from);
    record.set_to_id(to);
    record.mutable_no_session_context()->set_payload(message.SerializeAsString());
    return record;
}

void AgentWorld::deliver(const usp_record::Record& record, const std::string& responseTopic) {
    EXPECT_TRUE(agent->onRecord(record.SerializeAsString(), {channel_, "/usp/endpoint", responseTopic}));
}

usp::Msg AgentWorld::ask(usp::Msg message, const std::string& from) {
    const std::string id = "GET@" + std::to_string(++lastId_);
    if (message.header().msg_id().empty()) message.mutable_header()->set_msg_id(id);
    const std::size_t before = transports.sent.size();
    deliver(record(message, from));
    for (std::size_t i = before; i < transports.sent.size(); ++i) {
        usp::Msg answer;
        if (!answer.ParseFromString(transports.sent[i].record.no_session_context().payload())) continue;
        if (answer.header().msg_id() == message.header().msg_id()) return answer;
    }
    return {};
}

usp::GetResp AgentWorld::get(const std::vector<std::string>& paths, unsigned depth) {
    usp::Msg message = request(usp::Header::GET);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_get();
    asked.set_max_depth(depth);
    for (const std::string& path : paths)
        asked.add_param_paths(path);
    return ask(message).body().response().get_resp();
}

usp::Msg AgentWorld::set(const std::string& object, const std::vector<std::pair<std::string, std::string>>& settings,
                         bool partial, bool required) {
    usp::Msg message = request(usp::Header::SET);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_set();
    asked.set_allow_partial(partial);
    auto& update = *asked.add_update_objs();
    update.set_obj_path(object);
    for (const auto& [name, value] : settings) {
        auto& setting = *update.add_param_settings();
        setting.set_param(name);
        setting.set_value(value);
        setting.set_required(required);
    }
    return ask(message);
}

usp::Msg AgentWorld::add(const std::string& table, const std::vector<std::pair<std::string, std::string>>& settings,
                         bool partial, bool required) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    asked.set_allow_partial(partial);
    auto& object = *asked.add_create_objs();
    object.set_obj_path(table);
    for (const auto& [name, value] : settings) {
        auto& setting = *object.add_param_settings();
        setting.set_param(name);
        setting.set_value(value);
        setting.set_required(required);
    }
    return ask(message);
}

usp::Msg AgentWorld::remove(const std::vector<std::string>& paths, bool partial) {
    usp::Msg message = request(usp::Header::DELETE);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_delete_();
    asked.set_allow_partial(partial);
    for (const std::string& path : paths)
        asked.add_obj_paths(path);
    return ask(message);
}

usp::Msg AgentWorld::operate(const std::string& command, const std::map<std::string, std::string>& arguments,
                             const std::string& key, bool respond) {
    usp::Msg message = request(usp::Header::OPERATE);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_operate();
    asked.set_command(command);
    asked.set_command_key(key);
    asked.set_send_resp(respond);
    asked.mutable_input_args()->insert(arguments.begin(), arguments.end());
    return ask(message);
}

usp::GetInstancesResp AgentWorld::instances(const std::vector<std::string>& paths, bool first) {
    usp::Msg message = request(usp::Header::GET_INSTANCES);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_get_instances();
    asked.set_first_level_only(first);
    for (const std::string& path : paths)
        asked.add_obj_paths(path);
    return ask(message).body().response().get_instances_resp();
}

usp::GetSupportedDMResp AgentWorld::model(const std::vector<std::string>& paths, bool first, bool all) {
    usp::Msg message = request(usp::Header::GET_SUPPORTED_DM);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_get_supported_dm();
    asked.set_first_level_only(first);
    asked.set_return_commands(all);
    asked.set_return_events(all);
    asked.set_return_params(all);
    asked.set_return_unique_key_sets(all);
    for (const std::string& path : paths)
        asked.add_obj_paths(path);
    return ask(message).body().response().get_supported_dm_resp();
}

std::string AgentWorld::subscribe(const std::string& id, const std::string& type, const std::string& references,
                                  std::vector<std::pair<std::string, std::string>> more) {
    std::vector<std::pair<std::string, std::string>> settings{
        {"Enable", "true"}, {"ID", id}, {"NotifType", type}, {"ReferenceList", references}};
    settings.insert(settings.end(), more.begin(), more.end());
    const usp::Msg answer = add(kSubscriptionTable, settings);
    if (!answer.body().has_response()) {
        ADD_FAILURE() << answer.ShortDebugString();
        return "";
    }
    return answer.body().response().add_resp().created_obj_results(0).oper_status().oper_success().instantiated_path();
}

std::string AgentWorld::value(const std::string& path) {
    const usp::GetResp answer = get({path});
    if (answer.req_path_results_size() != 1 || answer.req_path_results(0).resolved_path_results_size() != 1) return "?";
    const auto& parameters = answer.req_path_results(0).resolved_path_results(0).result_params();
    return parameters.size() == 1 ? parameters.begin()->second : "?";
}

std::vector<usp::Notify> AgentWorld::notifies() {
    std::vector<usp::Notify> found;
    for (; seen_ < transports.sent.size(); ++seen_) {
        usp::Msg message;
        const auto& record = transports.sent[seen_].record;
        if (!record.has_no_session_context() || !message.ParseFromString(record.no_session_context().payload()))
            continue;
        if (!message.body().request().has_notify()) continue;
        lastNotifyId = message.header().msg_id();
        found.push_back(message.body().request().notify());
    }
    return found;
}

void AgentWorld::respondToNotify(const std::string& subscription, const std::string& id, const std::string& from) {
    usp::Msg message;
    message.mutable_header()->set_msg_id(id);
    message.mutable_header()->set_msg_type(usp::Header::NOTIFY_RESP);
    message.mutable_body()->mutable_response()->mutable_notify_resp()->set_subscription_id(subscription);
    deliver(record(message, from));
}

void AgentWorld::pass(std::chrono::milliseconds time) {
    gateway.time += time;
    agent->tick(gateway.time);
}

}  // namespace quorvel::agent_test
