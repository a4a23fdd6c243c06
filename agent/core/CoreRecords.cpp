// Records in, Records out.
#include <algorithm>

#include "agent/core/AgentCore.h"

namespace quorvel::agent {
namespace {

// Requests of one controller that are being worked on; more are refused until some are answered.
constexpr std::size_t kMaxInWork = 1000;

std::size_t inWorkOf(const std::set<std::pair<std::string, std::string>>& all, const std::string& endpointId) {
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [&endpointId](const auto& each) { return each.first == endpointId; }));
}

const char* protocolName(Protocol protocol) {
    return protocol == Protocol::kMqtt ? "MQTT" : "WebSocket";
}

}  // namespace

void AgentCore::trace(TraceEntry::Direction direction, std::string_view bytes, std::uint64_t channel,
                      const std::string& topic, const std::string& from, const std::string& to,
                      const std::string& dropped) {
    if (!surroundings_.trace) return;
    TraceEntry entry;
    entry.time = context_.now;
    entry.direction = direction;
    const auto line = lines_.find(channel);
    if (line != lines_.end()) {
        entry.protocol = protocolName(line->second.channel.protocol);
        entry.peer = line->second.channel.peer;
    }
    entry.topic = topic;
    entry.from = from;
    entry.to = to;
    entry.bytes = bytes;
    entry.size = bytes.size();
    entry.dropped = dropped;
    surroundings_.trace(entry);
}

void AgentCore::drop(std::string_view bytes, const Source& source, const std::string& from, const std::string& to,
                     const std::string& reason) {
    ++counters_.dropped;
    trace(TraceEntry::Direction::kReceived, bytes, source.channel, source.topic, from, to, reason);
}

void AgentCore::onDropped(std::size_t size, const Source& source, const std::string& reason) {
    drop({}, source, "", "", reason + " (" + std::to_string(size) + " bytes)");
}

std::string AgentCore::reasonToDrop(const usp_record::Record& record, const ControllerEntry*& controller) const {
    if (record.to_id() != endpointId_) return "to_id is \"" + record.to_id() + "\", the agent is " + endpointId_;
    if (record.from_id() == endpointId_) return "from_id is the agent's own";
    controller = directory_.enabled(record.from_id());
    if (controller == nullptr) return "\"" + record.from_id() + "\" is not an enabled controller";
    return "";
}

bool AgentCore::onRecord(std::string_view bytes, const Source& source) {
    context_.now = std::max(context_.now, context_.gateway.boardTime());
    ++counters_.received;
    if (bytes.size() > kMaxRecord) {
        drop({}, source, "", "", "larger than " + std::to_string(kMaxRecord) + " bytes");
        return true;
    }
    usp_record::Record record;
    if (!record.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
        drop(bytes, source, "", "", "not a USP Record");
        return false;
    }
    if (record.record_type_case() == usp_record::Record::RECORD_TYPE_NOT_SET) {
        drop(bytes, source, record.from_id(), record.to_id(), "the Record carries nothing");
        return false;
    }
    const ControllerEntry* controller = nullptr;
    const std::string reason = reasonToDrop(record, controller);
    if (!reason.empty()) {
        drop(bytes, source, record.from_id(), record.to_id(), reason);
        return true;
    }
    const auto line = lines_.find(source.channel);
    if (line != lines_.end() && line->second.channel.protocol == Protocol::kWebSocket &&
        line->second.channel.endpointId.empty()) {
        line->second.channel.endpointId = record.from_id();
    }
    if (isVersion(record.version())) versions_[record.from_id()] = record.version();
    trace(TraceEntry::Direction::kReceived, bytes, source.channel, source.topic, record.from_id(), record.to_id(), "");
    // A copy: what the Record does may change the directory.
    const ControllerEntry entry = *controller;
    handle(record, entry, source);
    settle();
    return true;
}

void AgentCore::handle(const usp_record::Record& record, const ControllerEntry& controller, const Source& source) {
    const auto line = lines_.find(source.channel);
    switch (record.record_type_case()) {
        case usp_record::Record::kNoSessionContext:
            return handleMessage(record, controller, source);
        case usp_record::Record::kSessionContext: {
            const std::optional<ReplyTo> reply = replyTo(controller, source);
            if (!reply) return;
            const auto refusal = disconnectRecord(versionFor(controller.endpointId), endpointId_, controller.endpointId,
                                                  kSessionNotAllowed, "the agent uses no session context");
            (void)sendRecord(*reply, refusal);  // a channel that is gone needs no goodbye
            if (line != lines_.end()) line->second.greeted.erase(controller.endpointId);
            return;
        }
        case usp_record::Record::kDisconnect:
            if (line != lines_.end()) line->second.greeted.erase(controller.endpointId);
            return;
        case usp_record::Record::kWebsocketConnect:
        case usp_record::Record::kMqttConnect:
        case usp_record::Record::kStompConnect:
        case usp_record::Record::kUdsConnect:
            if (line != lines_.end()) {
                const std::optional<ReplyTo> reply = replyTo(controller, source);
                if (reply) greet(line->second, *reply);
            }
            delivery_->opened(controller);
            return;
        case usp_record::Record::RECORD_TYPE_NOT_SET:
            return;
    }
}

void AgentCore::handleMessage(const usp_record::Record& record, const ControllerEntry& controller,
                              const Source& source) {
    const std::string& payload = record.no_session_context().payload();
    const auto message = std::make_shared<usp::Msg>();
    const std::optional<ReplyTo> reply = replyTo(controller, source);
    if (!message->ParseFromString(payload) || message->header().msg_id().empty()) {
        ++counters_.dropped;
        return context_.log("a Message of " + controller.endpointId + " cannot be read, or has no msg_id");
    }
    const bool request =
        message->body().has_request() || !(message->body().has_response() || message->body().has_error());
    if (request && !reply) {
        ++counters_.dropped;
        return context_.log("a request of " + controller.endpointId +
                            " has no Response Topic, and no topic is configured");
    }
    if (record.payload_security() != usp_record::Record::PLAINTEXT) {
        if (!message->body().has_request()) return;
        const bool known = record.payload_security() == usp_record::Record::TLS12;
        return sendError(*reply, message->header().msg_id(),
                         {known ? kRecordUnsupported : kInvalidRecordValue, "the agent takes plain text only"});
    }
    if (!request) {
        (void)delivery_->answered(controller.endpointId, message->header().msg_id());  // a late one is ignored
        return;
    }
    handleRequest(message, controller, *reply);
}

void AgentCore::handleRequest(const std::shared_ptr<usp::Msg>& message, const ControllerEntry& controller,
                              const ReplyTo& reply) {
    ++counters_.requests;
    const RequestFault fault = checkMessage(*message);
    if (fault.code != kNone) return sendError(reply, message->header().msg_id(), {fault.code, fault.text});
    const std::pair<std::string, std::string> id(controller.endpointId, message->header().msg_id());
    if (inWork_.contains(id)) return;
    if (inWork_.size() >= kMaxInWork && inWorkOf(inWork_, controller.endpointId) >= kMaxInWork) {
        return sendError(reply, id.second, {kResourcesExceeded, "too many requests are waiting"});
    }
    inWork_.insert(id);
    tasks_.run(serve(message, {controller.row, controller.endpointId}, reply));
}

std::optional<AgentCore::ReplyTo> AgentCore::replyTo(const ControllerEntry& controller, const Source& source) const {
    const auto line = lines_.find(source.channel);
    if (line == lines_.end()) return std::nullopt;
    ReplyTo reply{controller.endpointId, {source.channel, source.responseTopic}};
    if (line->second.channel.protocol == Protocol::kWebSocket || !source.responseTopic.empty()) return reply;
    for (const ControllerWay& way : controller.ways) {
        if (way.protocol != Protocol::kMqtt || way.topic.empty()) continue;
        if (reply.destination.topic.empty() || way.mtpRow == line->second.channel.mtp)
            reply.destination.topic = way.topic;
    }
    if (reply.destination.topic.empty()) return std::nullopt;
    return reply;
}

std::optional<AgentCore::ReplyTo> AgentCore::wayTo(const ControllerEntry& controller) const {
    for (const ControllerWay& way : controller.ways) {
        for (const auto& [id, line] : lines_) {
            if (line.channel.protocol != way.protocol) continue;
            if (way.protocol == Protocol::kMqtt && line.channel.mtp == way.mtpRow && !way.topic.empty()) {
                return ReplyTo{controller.endpointId, {id, way.topic}};
            }
        }
    }
    // A WebSocket session that the controller has opened needs no row of its own.
    for (const auto& [id, line] : lines_) {
        if (line.channel.protocol == Protocol::kWebSocket && line.channel.endpointId == controller.endpointId) {
            return ReplyTo{controller.endpointId, {id, ""}};
        }
    }
    // Any other broker may do: several URLs are several ways to one controller.
    for (const ControllerWay& way : controller.ways) {
        if (way.protocol != Protocol::kMqtt || way.topic.empty()) continue;
        for (const auto& [id, line] : lines_) {
            if (line.channel.protocol == Protocol::kMqtt) return ReplyTo{controller.endpointId, {id, way.topic}};
        }
    }
    return std::nullopt;
}

std::string AgentCore::versionFor(const std::string& endpointId) const {
    const auto known = versions_.find(endpointId);
    return known == versions_.end() ? kOwnVersion : known->second;
}

void AgentCore::greet(Line& line, const ReplyTo& to) {
    if (!line.greeted.insert(to.endpointId).second) return;
    const usp_record::Record connect =
        connectRecord(versionFor(to.endpointId), endpointId_, to.endpointId, line.channel);
    std::string bytes = connect.SerializeAsString();
    trace(TraceEntry::Direction::kSent, bytes, to.destination.channel, to.destination.topic, endpointId_, to.endpointId,
          "");
    ++counters_.sent;
    (void)transports_.send(std::move(bytes), to.destination);  // a lost channel is greeted anew
}

bool AgentCore::sendRecord(const ReplyTo& to, const usp_record::Record& record) {
    const auto line = lines_.find(to.destination.channel);
    if (line == lines_.end()) return false;
    if (!record.has_disconnect()) greet(line->second, to);
    std::string bytes = record.SerializeAsString();
    const bool large = bytes.size() > kMaxRecord;
    trace(TraceEntry::Direction::kSent, bytes, to.destination.channel, to.destination.topic, endpointId_, to.endpointId,
          large ? "larger than the largest Record" : "");
    if (large) return false;
    ++counters_.sent;
    return transports_.send(std::move(bytes), to.destination);
}

void AgentCore::sendMessage(const ReplyTo& to, const usp::Msg& message) {
    std::string bytes = message.SerializeAsString();
    // Room for the Record around it.
    constexpr std::size_t kEnvelope = 1024;
    if (bytes.size() + kEnvelope > kMaxRecord && message.body().has_response()) {
        return sendError(
            to, message.header().msg_id(),
            {kResourcesExceeded, "the answer has " + std::to_string(bytes.size()) + " bytes; ask for less"});
    }
    (void)sendRecord(to, wrap(versionFor(to.endpointId), endpointId_, to.endpointId, std::move(bytes)));
}

void AgentCore::sendError(const ReplyTo& to, const std::string& messageId, const Problem& problem,
                          const std::vector<PathProblem>& paths) {
    ++counters_.errors;
    usp::Msg message;
    message.mutable_header()->set_msg_id(messageId);
    message.mutable_header()->set_msg_type(usp::Header::ERROR);
    usp::Error& error = *message.mutable_body()->mutable_error();
    error.set_err_code(problem.code);
    error.set_err_msg(problem.text);
    for (const PathProblem& each : paths) {
        auto& part = *error.add_param_errs();
        part.set_param_path(each.path);
        part.set_err_code(each.problem.code);
        part.set_err_msg(each.problem.text);
    }
    sendMessage(to, message);
}

bool AgentCore::sendToController(const ControllerEntry& controller, const std::string& message) {
    const std::optional<ReplyTo> to = wayTo(controller);
    if (!to) return false;
    return sendRecord(*to, wrap(versionFor(controller.endpointId), endpointId_, controller.endpointId, message));
}

void AgentCore::onConnected(const Channel& channel) {
    context_.now = std::max(context_.now, context_.gateway.boardTime());
    Line& line = lines_[channel.id];
    line.channel = channel;
    line.greeted.clear();
    for (const auto& [row, controller] : directory_.all()) {
        if (!controller.enabled) continue;
        if (channel.protocol == Protocol::kWebSocket) {
            if (channel.endpointId != controller.endpointId) continue;
            greet(line, {controller.endpointId, {channel.id, ""}});
            delivery_->opened(controller);
            continue;
        }
        const std::optional<ReplyTo> to = replyTo(controller, {channel.id, "", ""});
        if (!to) continue;
        greet(line, *to);
        delivery_->opened(controller);
    }
    settle();
}

void AgentCore::onLost(std::uint64_t channel, const std::string& reason) {
    const auto line = lines_.find(channel);
    if (line == lines_.end()) return;
    context_.log("lost " + line->second.channel.peer + ": " + reason);
    lines_.erase(line);
}

void AgentCore::farewell(const std::string& endpointId, const std::string& reason) {
    std::vector<std::uint64_t> sessions;
    for (auto& [id, line] : lines_) {
        if (!line.greeted.contains(endpointId)) continue;
        line.greeted.erase(endpointId);
        const ControllerEntry* const controller = directory_.enabled(endpointId);
        ReplyTo to{endpointId, {id, ""}};
        if (line.channel.protocol == Protocol::kMqtt) {
            const auto way = controller == nullptr ? std::nullopt : replyTo(*controller, {id, "", ""});
            if (!way) continue;
            to = *way;
        } else {
            sessions.push_back(id);
        }
        (void)sendRecord(
            to, disconnectRecord(versionFor(endpointId), endpointId_, endpointId, kNone, reason));  // best effort
    }
    for (const std::uint64_t id : sessions)
        transports_.closeChannel(id, reason);
}

}  // namespace quorvel::agent
