#include "gateway/hostd/PathWalk.h"

#include <algorithm>
#include <charconv>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/Suggestion.h"

namespace quorvel::hostd {
namespace {

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

std::uint32_t numberOf(std::string_view text) {
    std::uint32_t number = 0;
    // It has digits only; one that is too large is none that exists, like 0.
    (void)std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

bool PathWalk::isSearch(std::string_view path) {
    const PathText text(path);
    return path.ends_with('.') || std::any_of(text.objects.begin(), text.objects.end(), [](const auto& segment) {
               return segment.text == "*" || isExpression(segment.text);
           });
}

Fault PathWalk::noSuchPath(std::string_view path, const std::string& reason) const {
    Fault fault;
    fault.code = FaultCode::kNoSuchPath;
    fault.path = path;
    fault.reason = reason;
    if (path.find_first_of("[+") == std::string_view::npos) fault.suggestion = suggestPath(model_, path);
    return fault;
}

void PathWalk::everyInstance(const Place& from, int node, std::vector<Place>& places) {
    const auto [entries, result] = counter_.count(node, from.instances);
    if (result != 0) {
        const int object = model_.nodes()[at(node)].parent;
        const std::string path = DataModel::concrete(model_.nodes()[at(object)].path, from.instances);
        const auto same = [&path](const Uncounted& one) { return one.path == path; };
        if (std::none_of(uncounted_.begin(), uncounted_.end(), same)) uncounted_.push_back({path, result});
    }
    for (std::uint32_t instance = 1; instance <= entries; ++instance) {
        Place place{node, from.instances};
        place.instances[model_.nodes()[at(node)].depth - 1U] = instance;
        places.push_back(place);
    }
}

Fault PathWalk::enterInstance(std::string_view path, const PathText::Segment& segment, const Place& from, int node,
                              std::vector<Place>& places) {
    if (segment.text == "*") {
        everyInstance(from, node, places);
        return {};
    }
    if (isExpression(segment.text)) {
        std::vector<Place> found;
        everyInstance(from, node, found);
        Fault fault = search(path, segment.text, node, found);
        places.insert(places.end(), found.begin(), found.end());
        return fault;
    }
    const std::uint32_t instance = numberOf(segment.text);
    const Counter::Count count = counter_.count(node, from.instances);
    // Where the count itself cannot be read, the plug-in's answer to the parameter says more.
    if (count.result != 0 || (instance >= 1 && instance <= count.entries)) {
        Place place{node, from.instances};
        place.instances[model_.nodes()[at(node)].depth - 1U] = instance;
        places.push_back(place);
        return {};
    }
    Fault fault;
    fault.code = FaultCode::kNoSuchInstance;
    fault.path = path;
    const std::string object(path.substr(0, segment.end - segment.text.size()));
    fault.reason = "there is no object instance " + object + std::string(segment.text) + ".; " + object +
                   (count.entries == 0   ? " has no instances now"
                    : count.entries == 1 ? " has the instance 1 only"
                                         : " has the instances 1 to " + std::to_string(count.entries));
    return fault;
}

const Parameter* PathWalk::below(int node, std::string_view path) const {
    for (std::size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.')) {
        const std::string_view segment = path.substr(0, dot);
        node = model_.child(node, standsForInstances(segment) ? "{i}" : segment);
        if (node < 0) return nullptr;
        path.remove_prefix(dot + 1);
    }
    const int index = model_.parameter(node, path);
    return index < 0 ? nullptr : &model_.parameters()[at(index)];
}

Fault PathWalk::checkConditions(std::string_view path, const SearchExpression& expression, int node) const {
    for (const SearchExpression::Condition& condition : expression.conditions()) {
        // Where a reference leads shows only when it is followed.
        if (condition.path.find('+') != std::string::npos) continue;
        const Parameter* const parameter = below(node, condition.path);
        if (parameter == nullptr) {
            Fault fault = noSuchPath(path, model_.nodes()[at(node)].path + " has no parameter " + condition.path);
            std::string meant = model_.nodes()[at(node)].path + condition.path;
            for (std::size_t i = meant.find("{i}"); i != std::string::npos; i = meant.find("{i}"))
                meant.replace(i, 3, "*");
            fault.suggestion = suggestPath(model_, meant);
            return fault;
        }
        const std::string wrong = parameter->getter == 0 || parameter->call != Call::kOrdinary
                                      ? condition.path + " has no value of its own to compare"
                                      : SearchExpression::check(condition, parameter->type);
        if (!wrong.empty()) return {FaultCode::kBadSyntax, std::string(path), wrong, "", 0, ""};
    }
    return {};
}

bool PathWalk::meets(const Place& place, const SearchExpression::Condition& condition) {
    std::vector<Match> matches;
    const std::string path = DataModel::concrete(model_.nodes()[at(place.node)].path, place.instances) + condition.path;
    if (parameters(path, matches).code != FaultCode::kNone) return false;
    return std::any_of(matches.begin(), matches.end(), [this, &condition](const Match& match) {
        const Parameter& parameter = *match.parameter;
        if (parameter.getter == 0 || parameter.call != Call::kOrdinary) return false;
        if (!SearchExpression::check(condition, parameter.type).empty()) return false;
        Value value;
        // A value that cannot be read meets no condition.
        if (read(parameter, match.instances, value) == 0) return SearchExpression::holds(condition, value);
        metUnreadable_ = true;
        return false;
    });
}

Fault PathWalk::search(std::string_view path, std::string_view segment, int node, std::vector<Place>& places) {
    SearchExpression expression;
    std::string wrong = "a bracket is left open";
    if (segment.ends_with(']')) wrong = expression.parse(segment.substr(1, segment.size() - 2));
    if (!wrong.empty()) return {FaultCode::kBadSyntax, std::string(path), wrong, "", 0, ""};
    Fault fault = checkConditions(path, expression, node);
    if (fault.code != FaultCode::kNone) return fault;
    std::erase_if(places, [&](const Place& place) {
        return !std::all_of(expression.conditions().begin(), expression.conditions().end(),
                            [&](const auto& condition) { return meets(place, condition); });
    });
    return {};
}

bool PathWalk::enterNamed(std::string_view object, std::vector<Place>& places) {
    const std::string path = object.ends_with('.') ? std::string(object) : std::string(object) + ".";
    const PathText text(path);
    // The value comes from the device: it may name an object, but not search.
    const bool plain = text.rooted && std::all_of(text.objects.begin(), text.objects.end(), [](const auto& segment) {
                           return segment.text != "*" && !isExpression(segment.text) && !isReference(segment.text);
                       });
    int shape = 0;
    std::vector<Place> found{{0, {}}};
    if (!plain || text.objects.empty() || follow(path, text, found, shape).code != FaultCode::kNone) return false;
    places.insert(places.end(), found.begin(), found.end());
    return true;
}

Fault PathWalk::followReferences(std::string_view path, std::string_view segment, std::vector<Place>& places) {
    const std::string_view name = segment.substr(0, segment.size() - 1);
    std::vector<Place> next;
    for (const Place& from : places) {
        const int index = model_.parameter(from.node, name);
        const Parameter* const parameter = index < 0 ? nullptr : &model_.parameters()[at(index)];
        if (parameter == nullptr || parameter->type != Type::kText || parameter->getter == 0) {
            return noSuchPath(path, "there is no reference " + model_.nodes()[at(from.node)].path + std::string(name));
        }
        Value value;
        const std::uint32_t result = read(*parameter, from.instances, value);
        bool led = false;
        for (std::size_t begin = 0; result == 0 && begin < value.text.size();) {
            const std::size_t end = std::min(value.text.find(',', begin), value.text.size());
            led = enterNamed(std::string_view(value.text).substr(begin, end - begin), next) || led;
            begin = end + 1;
        }
        // A search passes over references that lead nowhere.
        if (led || isSearch(path) || places.size() > 1) continue;
        const std::string reason =
            result != 0 ? " cannot be read" : " is \"" + value.text + "\", which names no object";
        return {FaultCode::kNoSuchInstance,
                std::string(path),
                model_.concrete(*parameter, from.instances) + reason,
                "",
                result,
                ""};
    }
    places = std::move(next);
    return {};
}

Fault PathWalk::step(std::string_view path, const PathText::Segment& segment, std::vector<Place>& places) {
    std::vector<Place> next;
    Fault fault;
    for (const Place& from : places) {
        const bool instance = standsForInstances(segment.text);
        const int node = model_.child(from.node, instance ? "{i}" : segment.text);
        if (node < 0) return noSuchPath(path, "the data model has no such path");
        if (!instance) {
            next.push_back({node, from.instances});
            continue;
        }
        fault = enterInstance(path, segment, from, node, next);
        // With several places to start from, one of them may lack an instance.
        if (fault.code != FaultCode::kNone && (places.size() == 1 || isExpression(segment.text))) return fault;
    }
    places = std::move(next);
    return {};
}

Fault PathWalk::follow(std::string_view whole, const PathText& text, std::vector<Place>& places, int& shape) {
    for (const PathText::Segment& segment : text.objects) {
        const bool reference = isReference(segment.text);
        if (shape != kUnknown && !reference) {
            shape = model_.child(shape, standsForInstances(segment.text) ? "{i}" : segment.text);
            if (shape < 0) return noSuchPath(whole, "the data model has no such path");
        }
        // An expression is looked at even when it has nothing to choose from.
        if (places.empty() && shape != kUnknown && isExpression(segment.text)) {
            if (Fault fault = search(whole, segment.text, shape, places); fault.code != FaultCode::kNone) return fault;
        }
        Fault fault = reference ? followReferences(whole, segment.text, places) : step(whole, segment, places);
        if (fault.code != FaultCode::kNone) return fault;
        if (reference) shape = places.empty() ? kUnknown : places.front().node;
    }
    return {};
}

Fault PathWalk::pick(std::string_view path, const PathText& text, int node, const Parameter*& parameter) const {
    if (isExpression(text.name)) {
        const char* const reason = text.name.ends_with(']')
                                       ? "a search is followed by a dot, or by a dot and a parameter"
                                       : "a bracket or a quote is left open";
        return {FaultCode::kBadSyntax, std::string(path), reason, "", 0, ""};
    }
    const int index = model_.parameter(node, text.name);
    if (index < 0 && model_.child(node, text.name) >= 0) {
        return noSuchPath(path, "this is an object, not a parameter; its path ends with a dot");
    }
    parameter = index < 0 ? nullptr : &model_.parameters()[at(index)];
    if (parameter == nullptr || (!text.station.empty() && parameter->call != Call::kPerStation)) {
        return noSuchPath(path, "the data model has no such path");
    }
    return {};
}

Fault PathWalk::parameters(std::string_view whole, std::vector<Match>& matches, unsigned levels) {
    const PathText text(whole);
    if (!text.rooted) return noSuchPath(whole, "paths begin with \"Device.\"");
    std::vector<Place> places{{0, {}}};
    int shape = 0;  // the node that the names lead to, also when a search finds nothing
    Fault fault = follow(whole, text, places, shape);
    if (fault.code != FaultCode::kNone) return fault;
    if (text.name.empty()) {
        for (const Place& place : places)
            collect(place, levels, matches);
        return {};
    }
    const Parameter* parameter = nullptr;
    if (shape != kUnknown) {
        fault = pick(whole, text, shape, parameter);
        if (fault.code != FaultCode::kNone) return fault;
    }
    for (const Place& place : places) {
        // Behind references, places need not be of one kind.
        fault = pick(whole, text, place.node, parameter);
        if (fault.code != FaultCode::kNone) return fault;
        matches.push_back({parameter, place.instances, std::string(text.station)});
    }
    return {};
}

void PathWalk::collect(const Place& place, unsigned levels, std::vector<Match>& matches) {
    const Node& node = model_.nodes()[at(place.node)];
    for (const int index : node.parameters) {
        matches.push_back({&model_.parameters()[at(index)], place.instances, ""});
    }
    for (const int child : node.children) {
        const bool instances = model_.nodes()[at(child)].isInstance();
        if (!instances && levels == 1) continue;
        std::vector<Place> below;
        if (instances) {
            everyInstance(place, child, below);
        } else {
            below.push_back({child, place.instances});
        }
        for (const Place& next : below)
            collect(next, instances || levels == 0 ? levels : levels - 1, matches);
    }
}

Fault PathWalk::objects(std::string_view whole, std::vector<ObjectMatch>& matches) {
    const std::string path = whole.ends_with('.') ? std::string(whole) : std::string(whole) + ".";
    const PathText text(path);
    if (!text.rooted) return noSuchPath(whole, "paths begin with \"Device.\"");
    std::vector<Place> places{{0, {}}};
    int shape = 0;
    Fault fault = follow(path, text, places, shape);
    if (fault.code == FaultCode::kNoSuchPath && !whole.ends_with('.')) {
        std::vector<Match> parameter;
        if (parameters(whole, parameter).code == FaultCode::kNone) {
            return {FaultCode::kNoSuchPath, std::string(whole), "this is a parameter, not an object", "", 0, ""};
        }
    }
    if (fault.code != FaultCode::kNone) {
        if (fault.path == path) fault.path = whole;
        return fault;
    }
    for (const Place& place : places)
        collectObjects(place, matches);
    return {};
}

void PathWalk::collectObjects(const Place& place, std::vector<ObjectMatch>& matches) {
    const Node& node = model_.nodes()[at(place.node)];
    if (!node.parameters.empty()) matches.push_back({place.node, place.instances});
    for (const int child : node.children) {
        std::vector<Place> below;
        if (model_.nodes()[at(child)].isInstance()) {
            everyInstance(place, child, below);
        } else {
            below.push_back({child, place.instances});
        }
        for (const Place& next : below)
            collectObjects(next, matches);
    }
}

}  // namespace quorvel::hostd
