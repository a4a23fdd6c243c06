#include "agent/notify/Notifier.h"

#include <algorithm>

#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

using Type = Subscription::Type;

bool concernsStations(const Path& path) {
    const auto& segments = path.segments;
    return segments.size() >= 2 && segments[0].name == "WiFi" && segments[1].name == "AccessPoint" &&
           (segments.size() < 4 || segments[3].name == "AssociatedDevice");
}

bool concernsWifi(const Path& path) {
    return path.segments.empty() || path.segments.front().name == "WiFi";
}

}  // namespace

usp::Notify Notifier::begin(const Subscription& subscription) const {
    usp::Notify notify;
    notify.set_subscription_id(subscription.id);
    notify.set_send_resp(subscription.retry);
    return notify;
}

void Notifier::send(const Subscription& subscription, usp::Notify notify) {
    const ControllerEntry* const controller = directory_.byRow(subscription.recipient);
    if (controller == nullptr || !controller->enabled) return;
    delivery_.deliver(*controller, std::move(notify), subscription.row, subscription.expiration);
}

template <typename Covers, typename Fill>
void Notifier::tellAll(Type type, const Covers& covers, const Fill& fill) {
    for (const auto& [row, subscription] : subscriptions_) {
        if (!subscription.enabled || subscription.type != type) continue;
        const auto& references = subscription.references;
        if (std::none_of(references.begin(), references.end(), covers)) continue;
        usp::Notify notify = begin(subscription);
        fill(notify);
        send(subscription, std::move(notify));
    }
}

void Notifier::tellValue(const Reading& reading) {
    const Object* const object = context_.schema->ofInstance(reading.object);
    const Parameter* const parameter = object == nullptr ? nullptr : object->parameter(reading.parameter);
    if (parameter == nullptr || parameter->is(kCounter) || parameter->access == Access::kWriteOnly) return;
    tellAll(
        Type::kValueChange,
        [&](const ReferencePattern& reference) {
            return reference.coversLeaf(Path::Kind::kParameter, reading.object, reading.parameter);
        },
        [&](usp::Notify& notify) {
            notify.mutable_value_change()->set_param_path(reading.object + reading.parameter);
            notify.mutable_value_change()->set_param_value(parameter->is(kSecured) ? "" : reading.value);
        });
}

void Notifier::tellCreated(const std::string& row, const Keys& keys) {
    tellAll(
        Type::kObjectCreation, [&](const ReferencePattern& reference) { return reference.coversCreated(row); },
        [&](usp::Notify& notify) {
            notify.mutable_obj_creation()->set_obj_path(row);
            notify.mutable_obj_creation()->mutable_unique_keys()->insert(keys.begin(), keys.end());
        });
}

void Notifier::tellDeleted(const std::string& row) {
    tellAll(
        Type::kObjectDeletion, [&](const ReferencePattern& reference) { return reference.coversDeleted(row); },
        [&](usp::Notify& notify) { notify.mutable_obj_deletion()->set_obj_path(row); });
}

void Notifier::tellComplete(const std::string& object, const std::string& command, const std::string& key,
                            const Outcome& outcome) {
    tellAll(
        Type::kOperationComplete,
        [&](const ReferencePattern& reference) { return reference.coversLeaf(Path::Kind::kCommand, object, command); },
        [&](usp::Notify& notify) {
            auto& complete = *notify.mutable_oper_complete();
            complete.set_obj_path(object);
            complete.set_command_name(command);
            complete.set_command_key(key);
            if (const auto* const problem = std::get_if<Problem>(&outcome)) {
                complete.mutable_cmd_failure()->set_err_code(problem->code);
                complete.mutable_cmd_failure()->set_err_msg(problem->text);
                return;
            }
            const Keys& outputs = std::get<Keys>(outcome);
            complete.mutable_req_output_args()->mutable_output_args()->insert(outputs.begin(), outputs.end());
        });
}

void Notifier::tellEvent(const std::string& object, const std::string& event,
                         const std::function<Keys(const ControllerEntry&)>& parameters, const std::string& only) {
    for (const auto& [row, subscription] : subscriptions_) {
        if (!subscription.enabled || subscription.type != Type::kEvent) continue;
        const auto& references = subscription.references;
        const bool covered = std::any_of(references.begin(), references.end(), [&](const ReferencePattern& reference) {
            return reference.coversLeaf(Path::Kind::kEvent, object, event);
        });
        const ControllerEntry* const controller = directory_.byRow(subscription.recipient);
        if (!covered || controller == nullptr || (!only.empty() && only != controller->row)) continue;
        usp::Notify notify = begin(subscription);
        notify.mutable_event()->set_obj_path(object);
        notify.mutable_event()->set_event_name(event);
        const Keys arguments = parameters(*controller);
        notify.mutable_event()->mutable_params()->insert(arguments.begin(), arguments.end());
        send(subscription, std::move(notify));
    }
}

void Notifier::askOnBoard(const ControllerEntry& controller) {
    usp::Notify notify;
    notify.set_send_resp(true);
    auto& request = *notify.mutable_on_board_req();
    request.set_oui(context_.config.device.oui);
    request.set_product_class(context_.config.device.productClass);
    request.set_serial_number(context_.config.device.serial);
    request.set_agent_supported_protocol_versions("1.3,1.4");
    delivery_.deliver(controller, std::move(notify), "", 0);
}

void Notifier::unload(const std::string& row) {
    const auto found = subscriptions_.find(row);
    if (found == subscriptions_.end()) return;
    timers_.cancel(found->second.death);
    subscriptions_.erase(found);
}

void Notifier::load(const std::string& row) {
    unload(row);
    if (!context_.store.has(row)) return;
    Subscription subscription = readSubscription(context_.store, row);
    if (subscription.dies) {
        subscription.death = timers_.at(*subscription.dies, [this, row] { remove_(row); });
    }
    const bool dynamic = std::any_of(subscription.references.begin(), subscription.references.end(),
                                     [](const ReferencePattern& reference) { return reference.dynamic; });
    subscriptions_[row] = std::move(subscription);
    if (dynamic) tasks_.run(resolve(row));
}

void Notifier::reload() {
    while (!subscriptions_.empty())
        unload(std::string(subscriptions_.begin()->first));
    for (const std::string& row : context_.store.rows(kSubscriptions))
        load(row);
}

Task<void> Notifier::resolve(std::string row) {
    for (std::size_t i = 0;; ++i) {
        auto at = subscriptions_.find(row);
        if (at == subscriptions_.end() || i >= at->second.references.size()) co_return;
        if (!at->second.references[i].dynamic) continue;
        const std::string text = at->second.references[i].text;
        const Resolution resolved = co_await context_.resolver.resolve(text, Resolver::Numbers::kLookUp);
        // The subscription may have gone, or changed, while the library was asked.
        at = subscriptions_.find(row);
        if (at == subscriptions_.end() || i >= at->second.references.size() || at->second.references[i].text != text)
            co_return;
        std::vector<std::string>& found = at->second.references[i].found;
        found.clear();
        for (const Place& place : resolved.places)
            found.push_back(place.path);
    }
}

void Notifier::resolveAgain() {
    std::vector<std::string> rows;
    for (const auto& [row, subscription] : subscriptions_) {
        const auto& references = subscription.references;
        if (std::any_of(references.begin(), references.end(),
                        [](const auto& reference) { return reference.dynamic; })) {
            rows.push_back(row);
        }
    }
    for (const std::string& row : rows)
        tasks_.run(resolve(row));
}

void Notifier::tell(const std::vector<Change>& changes) {
    std::vector<std::string> stale;
    for (const Change& change : changes) {
        if (change.object.starts_with(kSubscriptions)) stale.push_back(change.object);
        switch (change.kind) {
            case Change::Kind::kValue:
                tellValue({change.object, change.parameter, change.value});
                break;
            case Change::Kind::kAdded: {
                const Object* const object = context_.schema->ofInstance(change.object);
                if (object != nullptr) tellCreated(change.object, ownKeys(context_, {object, change.object, false}));
                break;
            }
            case Change::Kind::kRemoved:
                tellDeleted(change.object);
                break;
        }
    }
    for (const std::string& row : stale) {
        if (!context_.store.has(row)) delivery_.endOf(row);
        load(row);
    }
    resolveAgain();
}

std::vector<std::string> Notifier::watched() const {
    std::vector<std::string> paths;
    for (const auto& [row, subscription] : subscriptions_) {
        if (!subscription.enabled || subscription.type != Type::kValueChange) continue;
        for (const ReferencePattern& reference : subscription.references) {
            if (!concernsWifi(reference.path) || !reference.path.wrong.empty()) continue;
            if (reference.path.segments.empty()) {
                paths.emplace_back("Device.WiFi.");
                continue;
            }
            if (reference.dynamic) {
                for (const std::string& place : reference.found) {
                    std::string_view table;
                    if (!Stations::concerns(place, table)) paths.push_back(place + reference.path.leaf);
                }
                continue;
            }
            const bool stationsOnly = concernsStations(reference.path) && reference.path.segments.size() >= 4;
            const bool dotted = reference.path.kind != Path::Kind::kObject || reference.text.ends_with('.');
            if (!stationsOnly) paths.push_back(dotted ? reference.text : reference.text + ".");
        }
    }
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    return paths;
}

bool Notifier::followsRows() const {
    return std::any_of(subscriptions_.begin(), subscriptions_.end(), [](const auto& each) {
        const Subscription& subscription = each.second;
        if (!subscription.enabled) return false;
        const bool ofRows = subscription.type == Type::kObjectCreation || subscription.type == Type::kObjectDeletion;
        return std::any_of(subscription.references.begin(), subscription.references.end(), [&](const auto& reference) {
            return reference.dynamic || (ofRows && concernsWifi(reference.path));
        });
    });
}

bool Notifier::watchesStations() const {
    return std::any_of(subscriptions_.begin(), subscriptions_.end(), [](const auto& each) {
        const Subscription& subscription = each.second;
        if (!subscription.enabled || subscription.type != Type::kValueChange) return false;
        return std::any_of(subscription.references.begin(), subscription.references.end(), [](const auto& reference) {
            const Path& path = reference.path;
            // Objects above the stations, and paths below them.
            const bool above = path.kind == Path::Kind::kObject && concernsWifi(path) && path.segments.size() <= 1;
            const bool object = path.kind == Path::Kind::kObject || path.segments.size() >= 4;
            return above || (object && concernsStations(path));
        });
    });
}

}  // namespace quorvel::agent
