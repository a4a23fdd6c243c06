#include "tests/agent/controller/Controller.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <utility>

#include "agent/record/Records.h"

namespace quorvel::agent_test {
namespace {

constexpr int kAnswerMilliseconds = 10000;
constexpr int kLook = 50;

}  // namespace

Controller::Controller(std::unique_ptr<Carrier> carrier, Names given)
    : names(std::move(given)), carrier_(std::move(carrier)) {}

usp::Msg Controller::message(const std::string& request) {
    usp::Msg message;
    if (!google::protobuf::TextFormat::ParseFromString(request, message.mutable_body()->mutable_request())) {
        throw std::runtime_error("the test's request is malformed: " + request);
    }
    message.mutable_header()->set_msg_id("test-" + std::to_string(++lastId_));
    message.mutable_header()->set_msg_type(agent::requestType(message.body().request()));
    return message;
}

usp_record::Record Controller::wrap(const usp::Msg& message) const {
    usp_record::Record record;
    record.set_version("1.4");
    record.set_to_id(names.agent);
    record.set_from_id(names.self);
    record.mutable_no_session_context()->set_payload(message.SerializeAsString());
    return record;
}

void Controller::postBytes(const std::string& bytes) {
    carrier_->send(bytes);
}

void Controller::post(const usp_record::Record& record) {
    postBytes(record.SerializeAsString());
}

void Controller::post(const usp::Msg& message) {
    post(wrap(message));
}

std::string Controller::post(const std::string& request) {
    const usp::Msg sent = message(request);
    post(sent);
    return sent.header().msg_id();
}

usp::Msg Controller::ask(const std::string& request) {
    const std::string id = post(request);
    const auto answer = await(
        [&id](const Arrival& arrival) {
            return arrival.message && arrival.message->header().msg_id() == id &&
                   !arrival.message->body().has_request();
        },
        kAnswerMilliseconds);
    EXPECT_TRUE(answer) << "no answer to " << request;
    return answer ? *answer->message : usp::Msg();
}

std::optional<Arrival> Controller::await(const std::function<bool(const Arrival&)>& wanted, int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    std::size_t seen = 0;
    for (;;) {
        for (; seen < arrivals.size(); ++seen) {
            if (!wanted(arrivals[seen])) continue;
            Arrival found = std::move(arrivals[seen]);
            arrivals.erase(arrivals.begin() + static_cast<std::ptrdiff_t>(seen));
            return found;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return std::nullopt;
        carrier_->wait(static_cast<int>(std::min<std::int64_t>(left.count(), kLook)), arrivals);
    }
}

std::optional<usp::Notify> Controller::awaitNotify(const std::string& subscription, int milliseconds, bool answers) {
    const auto arrival = await(
        [&subscription](const Arrival& each) {
            return each.message && each.message->body().request().has_notify() &&
                   each.message->body().request().notify().subscription_id() == subscription;
        },
        milliseconds);
    if (!arrival) return std::nullopt;
    const usp::Notify& notify = arrival->message->body().request().notify();
    if (answers && notify.send_resp()) {
        usp::Msg answer;
        answer.mutable_header()->set_msg_id(arrival->message->header().msg_id());
        answer.mutable_header()->set_msg_type(usp::Header::NOTIFY_RESP);
        answer.mutable_body()->mutable_response()->mutable_notify_resp()->set_subscription_id(subscription);
        post(answer);
    }
    return notify;
}

std::size_t Controller::drain() {
    (void)ask("get_supported_protocol { controller_supported_protocol_versions: '1.4' }");
    const std::size_t count = arrivals.size();
    arrivals.clear();
    return count;
}

}  // namespace quorvel::agent_test
