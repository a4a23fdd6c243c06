// The requests that show the tree: instances, describe, complete.
#include <algorithm>

#include "gateway/hostd/Service.h"
#include "gateway/hostd/Suggestion.h"

namespace quorvel::hostd {

using protocol::Part;

namespace {

protocol::ParameterType typeOf(Type type) {
    switch (type) {
        case Type::kText:
            return protocol::ParameterType::kText;
        case Type::kBoolean:
            return protocol::ParameterType::kBoolean;
        case Type::kUnsignedInt:
            return protocol::ParameterType::kUnsignedInt;
        case Type::kInt:
            return protocol::ParameterType::kInt;
    }
    return protocol::ParameterType::kText;
}

protocol::Access accessOf(const Parameter& parameter) {
    if (!parameter.writable) return protocol::Access::kReadOnly;
    return parameter.getter == 0 ? protocol::Access::kWriteOnly : protocol::Access::kReadWrite;
}

protocol::ParameterKind kindOf(Call call) {
    switch (call) {
        case Call::kOrdinary:
            return protocol::ParameterKind::kOrdinary;
        case Call::kPerStation:
            return protocol::ParameterKind::kPerStation;
        case Call::kChannelMetrics:
        case Call::kChannelStats:
            return protocol::ParameterKind::kMeasurement;
    }
    return protocol::ParameterKind::kOrdinary;
}

// Replaces the instances and wildcards of a path by "{i}".
std::string templateOf(std::string_view path) {
    std::string text;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t dot = std::min(path.find('.', begin), path.size());
        const std::string_view segment = path.substr(begin, dot - begin);
        const bool instance =
            segment == "*" || (!segment.empty() && segment.find_first_not_of("0123456789") == std::string_view::npos);
        text += instance ? "{i}" : segment;
        if (dot < path.size()) text += '.';
        begin = dot + 1;
    }
    return text;
}

}  // namespace

void Service::answer(const protocol::Instances& request, Reply& reply) {
    begin();
    PathWalk walk(model_);
    Part part;
    for (const std::string& path : request.paths) {
        std::vector<ObjectMatch> matches;
        const Fault fault = walk.objects(path, matches);
        if (fault.code != FaultCode::kNone) {
            reply.fault(fault);
            continue;
        }
        for (const ObjectMatch& match : matches) {
            const Node& node = model_.nodes()[static_cast<std::size_t>(match.node)];
            if (node.isInstance()) part.instances.push_back(DataModel::concrete(node.path, match.instances));
        }
        // Instances that could be counted are listed all the same.
        (void)faultPassedOver(walk, path, [&reply](const Fault& passed) { reply.fault(passed); });
        heartbeat_.beat();
    }
    reply.part(part);
}

void Service::describe(const protocol::Describe& request, Reply& reply) const {
    for (const std::string& path : request.paths) {
        const std::string wanted = templateOf(path);
        Part part;
        for (const Parameter& parameter : model_.parameters()) {
            const std::string full = model_.nodeOf(parameter).path + std::string(parameter.name);
            if (full != wanted && !(wanted.ends_with('.') && full.starts_with(wanted))) continue;
            part.parameters.push_back(
                {full, typeOf(parameter.type), accessOf(parameter), kindOf(parameter.call), parameter.writesAtOnce});
        }
        if (part.parameters.empty()) {
            reply.fault(
                {FaultCode::kNoSuchPath, path, "the data model has no such path", suggestPath(model_, path), 0, ""});
            continue;
        }
        reply.part(part);
    }
}

void Service::answer(const protocol::Complete& request, Reply& reply) {
    begin();
    const std::string& path = request.path;
    const std::size_t dot = path.rfind('.');
    Part part;
    std::vector<std::string>& found = part.completions;
    if (dot == std::string::npos) {
        if (model_.root().path.starts_with(path)) found.push_back(model_.root().path);
        return reply.part(part);
    }
    const std::string base = path.substr(0, dot + 1);
    const std::string begun = path.substr(dot + 1);
    int node = 0;
    Instances outer{};
    const std::string shape = templateOf(base);
    for (std::size_t begin = shape.find('.') + 1; node >= 0 && begin < shape.size();) {
        const std::size_t end = shape.find('.', begin);
        node = model_.child(node, shape.substr(begin, end - begin));
        begin = end + 1;
    }
    if (node < 0) return reply.part(part);
    const Node& object = model_.nodes()[static_cast<std::size_t>(node)];
    for (const int child : object.children) {
        const Node& below = model_.nodes()[static_cast<std::size_t>(child)];
        if (!below.isInstance()) {
            if (below.name.starts_with(begun)) found.push_back(base + below.name + ".");
            continue;
        }
        // Which instances exist below an outer one follows from the number in front of them.
        for (std::size_t begin = 0, level = 0; begin < base.size() && level < outer.size();) {
            const std::size_t end = base.find('.', begin);
            const std::string segment = base.substr(begin, end - begin);
            if (!segment.empty() && segment.size() < 10 &&
                segment.find_first_not_of("0123456789") == std::string::npos) {
                outer[level++] = static_cast<std::uint32_t>(std::stoul(segment));
            }
            begin = end + 1;
        }
        PathWalk walk(model_);
        const std::uint32_t entries = walk.counter().count(child, outer).entries;
        for (std::uint32_t i = 1; i <= entries; ++i) {
            const std::string number = std::to_string(i);
            if (number.starts_with(begun)) found.push_back(base + number + ".");
        }
        if (begun.empty()) found.push_back(base + "*.");
    }
    for (const int parameter : object.parameters) {
        const std::string_view name = model_.parameters()[static_cast<std::size_t>(parameter)].name;
        if (name.starts_with(begun)) found.push_back(base + std::string(name));
    }
    reply.part(part);
}

}  // namespace quorvel::hostd
