#include "agent/notify/Delivery.h"

#include <algorithm>
#include <cmath>

#include "agent/proto/usp.pb.h"

namespace quorvel::agent {
namespace {

// Beyond this retry the intervals stay as they are.
constexpr unsigned kMaxDoublings = 10;
// Messages for a controller that has not connected yet; the oldest is dropped first.
constexpr std::size_t kMaxUnconnected = 100;
// Notifies that wait for their response; a controller that never responds must not fill the memory.
constexpr std::size_t kMaxOpen = 10000;

}  // namespace

void Delivery::deliver(const ControllerEntry& controller, usp::Notify notify, const std::string& subscription,
                       std::uint32_t expiration) {
    const bool repeated = notify.send_resp();
    const std::string id =
        "notify-" + std::to_string(context_.now.time_since_epoch().count()) + "-" + std::to_string(++lastId_);
    usp::Msg message;
    message.mutable_header()->set_msg_id(id);
    message.mutable_header()->set_msg_type(usp::Header::NOTIFY);
    *message.mutable_body()->mutable_request()->mutable_notify() = std::move(notify);
    std::string bytes = message.SerializeAsString();
    ++sent_;
    const bool gone = !send_(controller, bytes);
    if (gone && !repeated) {
        if (connected_[controller.row]) {
            ++undeliverable_;
            return;
        }
        auto& waiting = unconnected_[controller.row];
        waiting.push_back(std::move(bytes));
        if (waiting.size() > kMaxUnconnected) waiting.pop_front();
        return;
    }
    if (!repeated || open_.size() >= kMaxOpen) return;
    Open open;
    open.controller = controller.row;
    open.endpointId = controller.endpointId;
    open.subscription = subscription;
    open.message = std::move(bytes);
    open.forever = expiration == 0;
    open.expires = context_.now + std::chrono::seconds(expiration);
    schedule(id, open_[id] = std::move(open));
}

void Delivery::schedule(const std::string& id, Open& open) {
    const ControllerEntry* const controller = directory_.byRow(open.controller);
    const double least = controller == nullptr ? 5 : controller->retryMinimumWait;
    const double factor = controller == nullptr ? 2 : controller->retryMultiplier / 1000.0;
    const unsigned turn = std::min(open.tries + 1, kMaxDoublings);
    const double from = least * std::pow(factor, turn - 1);
    const double wait = from + random_() * (from * factor - from);
    const auto due = context_.now + std::chrono::milliseconds(std::llround(wait * 1000));
    if (!open.forever && due > open.expires) {
        // Kept until it expires, so that a late response is still known.
        open.timer = timers_.at(open.expires, [this, id] { open_.erase(id); });
        return;
    }
    open.timer = timers_.at(due, [this, id] { retry(id); });
}

void Delivery::retry(const std::string& id) {
    const auto found = open_.find(id);
    if (found == open_.end()) return;
    Open& open = found->second;
    ++open.tries;
    const ControllerEntry* const controller = directory_.byRow(open.controller);
    if (controller != nullptr && controller->enabled) (void)send_(*controller, open.message);  // the next retry follows
    schedule(id, open);
}

bool Delivery::answered(const std::string& endpointId, const std::string& messageId) {
    const auto found = open_.find(messageId);
    if (found == open_.end() || found->second.endpointId != endpointId) return false;
    timers_.cancel(found->second.timer);
    open_.erase(found);
    return true;
}

void Delivery::endOf(const std::string& row) {
    for (auto each = open_.begin(); each != open_.end();) {
        if (each->second.subscription != row && each->second.controller != row) {
            ++each;
            continue;
        }
        timers_.cancel(each->second.timer);
        each = open_.erase(each);
    }
    unconnected_.erase(row);
    connected_.erase(row);
}

void Delivery::opened(const ControllerEntry& controller) {
    connected_[controller.row] = true;
    const auto waiting = unconnected_.find(controller.row);
    if (waiting == unconnected_.end()) return;
    for (const std::string& message : waiting->second) {
        if (!send_(controller, message)) ++undeliverable_;
    }
    unconnected_.erase(waiting);
}

}  // namespace quorvel::agent
