#include "agent/record/Records.h"

#include <algorithm>

#include "agent/Problem.h"

namespace quorvel::agent {
namespace {

usp_record::Record envelope(const std::string& version, const std::string& from, const std::string& to) {
    usp_record::Record record;
    record.set_version(version);
    record.set_from_id(from);
    record.set_to_id(to);
    return record;
}

template <typename Message>
bool hasUnknown(const Message& message) {
    return !message.GetReflection()->GetUnknownFields(message).empty();
}

RequestFault checkRequest(const usp::Request& request) {
    switch (request.req_type_case()) {
        case usp::Request::REQ_TYPE_NOT_SET:
            if (hasUnknown(request)) return {kMessageNotSupported, "the agent does not know this kind of request"};
            return {kInvalidArguments, "the request says nothing"};
        case usp::Request::kNotify:
            return {kMessageNotSupported, "an agent takes no Notify"};
        case usp::Request::kRegister:
        case usp::Request::kDeregister:
            return {kMessageNotSupported, "this agent takes no registrations"};
        case usp::Request::kGet:
        case usp::Request::kGetSupportedDm:
        case usp::Request::kGetInstances:
        case usp::Request::kSet:
        case usp::Request::kAdd:
        case usp::Request::kDelete:
        case usp::Request::kOperate:
        case usp::Request::kGetSupportedProtocol:
            return {};
    }
    return {kMessageNotSupported, "the agent does not know this kind of request"};
}

}  // namespace

bool isVersion(std::string_view version) {
    if (!version.starts_with("1.")) return false;
    version.remove_prefix(2);
    return !version.empty() && version.size() <= 3 &&
           std::all_of(version.begin(), version.end(), [](char c) { return c >= '0' && c <= '9'; });
}

usp_record::Record wrap(const std::string& version, const std::string& from, const std::string& to,
                        std::string message) {
    usp_record::Record record = envelope(version, from, to);
    record.mutable_no_session_context()->set_payload(std::move(message));
    return record;
}

usp_record::Record connectRecord(const std::string& version, const std::string& from, const std::string& to,
                                 const Channel& channel) {
    usp_record::Record record = envelope(version, from, to);
    if (channel.protocol == Protocol::kWebSocket) {
        (void)record.mutable_websocket_connect();  // empty, but there
        return record;
    }
    auto& connect = *record.mutable_mqtt_connect();
    connect.set_version(channel.mqttVersion == "3.1.1" ? usp_record::MQTTConnectRecord::V3_1_1
                                                       : usp_record::MQTTConnectRecord::V5);
    connect.set_subscribed_topic(channel.replyTopic);
    return record;
}

usp_record::Record disconnectRecord(const std::string& version, const std::string& from, const std::string& to,
                                    std::uint32_t code, const std::string& reason) {
    usp_record::Record record = envelope(version, from, to);
    record.mutable_disconnect()->set_reason_code(code);
    record.mutable_disconnect()->set_reason(reason);
    return record;
}

usp::Header::MsgType requestType(const usp::Request& request) {
    switch (request.req_type_case()) {
        case usp::Request::kGet:
            return usp::Header::GET;
        case usp::Request::kGetSupportedDm:
            return usp::Header::GET_SUPPORTED_DM;
        case usp::Request::kGetInstances:
            return usp::Header::GET_INSTANCES;
        case usp::Request::kSet:
            return usp::Header::SET;
        case usp::Request::kAdd:
            return usp::Header::ADD;
        case usp::Request::kDelete:
            return usp::Header::DELETE;
        case usp::Request::kOperate:
            return usp::Header::OPERATE;
        case usp::Request::kNotify:
            return usp::Header::NOTIFY;
        case usp::Request::kGetSupportedProtocol:
            return usp::Header::GET_SUPPORTED_PROTO;
        case usp::Request::kRegister:
            return usp::Header::REGISTER;
        case usp::Request::kDeregister:
            return usp::Header::DEREGISTER;
        case usp::Request::REQ_TYPE_NOT_SET:
            return usp::Header::ERROR;
    }
    return usp::Header::ERROR;
}

RequestFault checkMessage(const usp::Msg& message) {
    if (!usp::Header::MsgType_IsValid(message.header().msg_type())) {
        return {kInvalidArguments, "msg_type " + std::to_string(message.header().msg_type()) + " is unknown"};
    }
    if (!message.body().has_request()) return {kInvalidArguments, "the Message has no body"};
    return checkRequest(message.body().request());
}

}  // namespace quorvel::agent
