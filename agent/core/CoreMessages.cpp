// Requests and their answers.
#include "agent/core/AgentCore.h"
#include "agent/message/Add.h"
#include "agent/message/Get.h"
#include "agent/message/Instances.h"
#include "agent/message/Set.h"
#include "agent/message/SupportedModel.h"

namespace quorvel::agent {
namespace {

usp::Header::MsgType answerType(const usp::Request& request) {
    switch (request.req_type_case()) {
        case usp::Request::kGet:
            return usp::Header::GET_RESP;
        case usp::Request::kGetSupportedDm:
            return usp::Header::GET_SUPPORTED_DM_RESP;
        case usp::Request::kGetInstances:
            return usp::Header::GET_INSTANCES_RESP;
        case usp::Request::kSet:
            return usp::Header::SET_RESP;
        case usp::Request::kAdd:
            return usp::Header::ADD_RESP;
        case usp::Request::kDelete:
            return usp::Header::DELETE_RESP;
        case usp::Request::kOperate:
            return usp::Header::OPERATE_RESP;
        case usp::Request::kGetSupportedProtocol:
            return usp::Header::GET_SUPPORTED_PROTO_RESP;
        case usp::Request::kNotify:
        case usp::Request::kRegister:
        case usp::Request::kDeregister:
        case usp::Request::REQ_TYPE_NOT_SET:
            break;
    }
    return usp::Header::ERROR;
}

}  // namespace

Task<void> AgentCore::answer(const usp::Request& request, const Originator& originator, usp::Response& response,
                             std::vector<std::function<void()>>& afterwards) {
    switch (request.req_type_case()) {
        case usp::Request::kGet:
            co_await answerGet(context_, request.get(), *response.mutable_get_resp());
            break;
        case usp::Request::kGetSupportedDm:
            answerGetSupportedDM(*context_.schema, request.get_supported_dm(),
                                 *response.mutable_get_supported_dm_resp());
            break;
        case usp::Request::kGetInstances:
            co_await answerGetInstances(context_, request.get_instances(), *response.mutable_get_instances_resp());
            break;
        case usp::Request::kSet:
            co_await answerSet(context_, request.set(), *response.mutable_set_resp());
            break;
        case usp::Request::kAdd:
            co_await answerAdd(context_, originator, request.add(), *response.mutable_add_resp());
            break;
        case usp::Request::kDelete:
            co_await answerDelete(context_, request.delete_(), *response.mutable_delete_resp());
            break;
        case usp::Request::kOperate:
            co_await commands_->answer(originator, request.operate(), *response.mutable_operate_resp(), afterwards);
            break;
        case usp::Request::kGetSupportedProtocol:
            response.mutable_get_supported_protocol_resp()->set_agent_supported_protocol_versions("1.3,1.4");
            break;
        case usp::Request::kNotify:
        case usp::Request::kRegister:
        case usp::Request::kDeregister:
        case usp::Request::REQ_TYPE_NOT_SET:
            break;
    }
}

Task<void> AgentCore::serve(std::shared_ptr<usp::Msg> message, Originator originator, ReplyTo reply) {
    const usp::Request& request = message->body().request();
    const std::string id = message->header().msg_id();
    usp::Msg reaction;
    reaction.mutable_header()->set_msg_id(id);
    reaction.mutable_header()->set_msg_type(answerType(request));
    std::vector<std::function<void()>> afterwards;
    std::optional<Refusal> refused;
    try {
        co_await answer(request, originator, *reaction.mutable_body()->mutable_response(), afterwards);
    } catch (const Refusal& refusal) {
        refused = refusal;
    } catch (const std::exception& error) {
        refused = Refusal({kInternalError, error.what()});
    }
    if (!context_.changes.empty()) saveState();
    inWork_.erase({originator.endpointId, id});
    const bool silent = request.has_operate() && !request.operate().send_resp();
    if (refused) {
        if (!silent) sendError(reply, id, refused->problem(), refused->paths());
    } else if (!silent) {
        sendMessage(reply, reaction);
    }
    publish();
    for (const auto& action : afterwards)
        action();
    settle();
}

}  // namespace quorvel::agent
