#include "agent/notify/Subscription.h"

#include <algorithm>

#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

using Kind = Segment::Kind;

// The segments behind "Device.".
std::vector<std::string_view> split(std::string_view object) {
    std::vector<std::string_view> segments;
    object.remove_prefix(std::min(object.find('.') + 1, object.size()));
    while (!object.empty()) {
        const std::size_t dot = std::min(object.find('.'), object.size());
        segments.push_back(object.substr(0, dot));
        object.remove_prefix(std::min(dot + 1, object.size()));
    }
    return segments;
}

bool matches(const Segment& segment, std::string_view text) {
    switch (segment.kind) {
        case Kind::kName:
            return segment.name == text;
        case Kind::kNumber:
            return isNumber(text) && numberOr(text, 0) == segment.number;
        case Kind::kAll:
            return isNumber(text);
        case Kind::kSearch:
        case Kind::kReference:
            return false;
    }
    return false;
}

bool leads(const Path& path, const std::vector<std::string_view>& segments) {
    if (path.segments.size() > segments.size()) return false;
    return std::equal(path.segments.begin(), path.segments.end(), segments.begin(), matches);
}

Subscription::Type typeOf(const std::string& type) {
    if (type == "ValueChange") return Subscription::Type::kValueChange;
    if (type == "ObjectCreation") return Subscription::Type::kObjectCreation;
    if (type == "ObjectDeletion") return Subscription::Type::kObjectDeletion;
    if (type == "OperationComplete") return Subscription::Type::kOperationComplete;
    return type == "Event" ? Subscription::Type::kEvent : Subscription::Type::kNone;
}

}  // namespace

bool ReferencePattern::coversLeaf(Path::Kind kind, std::string_view object, std::string_view leaf) const {
    if (path.kind != Path::Kind::kObject && (path.kind != kind || path.leaf != leaf)) return false;
    const bool whole = path.kind != Path::Kind::kObject;
    if (dynamic) {
        return std::any_of(found.begin(), found.end(), [&](const std::string& place) {
            return whole ? object == place : object.starts_with(place);
        });
    }
    const std::vector<std::string_view> segments = split(object);
    return leads(path, segments) && (!whole || path.segments.size() == segments.size());
}

bool ReferencePattern::coversCreated(std::string_view row) const {
    if (path.kind != Path::Kind::kObject) return false;
    if (dynamic) return std::find(found.begin(), found.end(), tableOf(row)) != found.end();
    const std::vector<std::string_view> segments = split(row);
    if (!leads(path, segments)) return false;
    const bool all = path.segments.size() == segments.size() && path.segments.back().kind == Kind::kAll;
    return all || path.segments.size() + 1 == segments.size();
}

bool ReferencePattern::coversDeleted(std::string_view row) const {
    if (coversCreated(row)) return true;
    if (path.kind != Path::Kind::kObject) return false;
    if (dynamic) return std::find(found.begin(), found.end(), row) != found.end();
    const std::vector<std::string_view> segments = split(row);
    return path.segments.size() == segments.size() && leads(path, segments);
}

ReferencePattern parseReferencePattern(const Schema& schema, const std::string& text) {
    ReferencePattern pattern{text, parsePath(text)};
    Path& path = pattern.path;
    pattern.dynamic = std::any_of(path.segments.begin(), path.segments.end(), [](const Segment& segment) {
        return segment.kind == Kind::kSearch || segment.kind == Kind::kReference;
    });
    if (path.kind != Path::Kind::kParameter) return pattern;
    // An object's path may lack its last dot.
    std::string model = "Device.";
    for (const Segment& segment : path.segments)
        model += segment.kind == Kind::kName ? segment.name + "." : "{i}.";
    const Object* const object = schema.find(model);
    if (object == nullptr || object->parameter(path.leaf) != nullptr || object->child(path.leaf) == nullptr)
        return pattern;
    path.segments.push_back({Kind::kName, path.leaf});
    path.leaf.clear();
    path.kind = Path::Kind::kObject;
    return pattern;
}

Subscription readSubscription(const Store& store, const std::string& row) {
    Subscription subscription;
    subscription.row = row;
    subscription.recipient = store.value(row, "Recipient") + ".";
    subscription.id = store.value(row, "ID");
    subscription.type = typeOf(store.value(row, "NotifType"));
    subscription.enabled = store.flag(row, "Enable");
    subscription.persistent = store.flag(row, "Persistent");
    subscription.retry = store.flag(row, "NotifRetry");
    subscription.expiration = store.number(row, "NotifExpiration");
    const std::uint32_t life = store.number(row, "TimeToLive");
    const auto born = parseDateTime(store.value(row, "CreationDate"));
    if (life != 0 && born) subscription.dies = *born + std::chrono::seconds(life);
    for (const std::string& item : listItems(store.value(row, "ReferenceList")))
        subscription.references.push_back(parseReferencePattern(store.schema(), item));
    return subscription;
}

}  // namespace quorvel::agent
