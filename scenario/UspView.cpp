#include "scenario/UspView.h"

#include <cmath>

namespace quorvel::scenario {
namespace {

UspArrival read(const Json& json) {
    UspArrival arrival;
    const std::string kind = json.value("kind", "");
    if (kind == "notification") arrival.kind = UspArrival::Kind::kNotification;
    if (kind == "answer") arrival.kind = UspArrival::Kind::kAnswer;
    arrival.time = json.value("time", Time{0});
    arrival.subject = json.value(kind == "answer" ? "id" : "type", "");
    arrival.subscription = json.value("subscription", "");
    arrival.path = json.value("path", "");
    arrival.value = json.value("value", Json());
    arrival.values = json.value("values", Json::object());
    arrival.text = json.value("text", "");
    const unsigned code = json.value("code", 0U);
    for (const Json& fault : json.value("faults", Json::array()))
        arrival.faults.push_back({fault.value("code", 0U), fault.value("path", "")});
    if (arrival.faults.empty() && code != 0) arrival.faults.push_back({code, arrival.path});
    return arrival;
}

}  // namespace

void UspView::start(const launch::Options& options, Time now) {
    script_ = std::make_unique<launch::UspScript>(options, seed_, now);
    if (!broker_.is_null()) (void)script_->ask(broker_);  // it was taken before
}

std::string UspView::steerBroker(const Json& members) {
    broker_ = {{"op", "broker"}, {"how", members.at("how")}};
    if (members.contains("delay")) broker_["delay"] = std::llround(members.at("delay").get<double>() * 1000);
    return script_ == nullptr ? "" : script_->ask(broker_).value("error", "");
}

std::string UspView::perform(const Step& step) {
    if (step.action == "usp.broker") return steerBroker(step.members);
    if (script_ == nullptr) return "the board is off, and its USP agent with it";
    Json command = step.members;
    command["op"] = "request";
    command["id"] = step.id.empty() ? "request-" + std::to_string(++requests_) : step.id;
    const Json answer = script_->ask(command);
    if (answer.value("lost", false)) return "the broker is away; the controller cannot send";
    return answer.value("error", "");
}

std::vector<UspArrival> UspView::follow(Time now) {
    std::vector<UspArrival> arrivals;
    if (script_ == nullptr) return arrivals;
    const Json answer = script_->ask({{"op", "go"}, {"now", now}});
    for (const Json& each : answer.value("arrivals", Json::array()))
        arrivals.push_back(read(each));
    nextDue_ = answer.contains("next") ? std::optional(answer.at("next").get<Time>()) : std::nullopt;
    return arrivals;
}

}  // namespace quorvel::scenario
