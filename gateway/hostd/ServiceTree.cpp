// The requests that show the tree: instances, datamodel, complete.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "gateway/hostd/Service.h"
#include "gateway/hostd/Suggestion.h"

namespace quorvel::hostd {

using Json = nlohmann::ordered_json;

namespace {

const char* typeName(Type type) {
    switch (type) {
        case Type::kText:
            return "string";
        case Type::kBoolean:
            return "boolean";
        case Type::kUnsignedInt:
            return "unsignedInt";
        case Type::kInt:
            return "int";
    }
    return "";
}

const char* accessName(const Parameter& parameter) {
    if (!parameter.writable) return "readOnly";
    return parameter.getter == 0 ? "writeOnly" : "readWrite";
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

void Service::instances(const Json& request, Reply& reply) {
    PathWalk walk(model_);
    Json found = Json::array();
    for (const Json& item : request.at("paths")) {
        std::vector<ObjectMatch> matches;
        const Fault fault = walk.objects(item.get<std::string>(), matches);
        if (fault.code != FaultCode::kNone) {
            reply.fault(fault);
            continue;
        }
        for (const ObjectMatch& match : matches) {
            const Node& node = model_.nodes()[static_cast<std::size_t>(match.node)];
            if (node.isInstance()) found.push_back(DataModel::concrete(node.path, match.instances));
        }
        (void)faultPassedOver(walk, item.get<std::string>(), reply);  // what there is, is listed
        heartbeat_.beat();
    }
    reply.part({{"instances", std::move(found)}});
}

void Service::dataModel(const Json& request, Reply& reply) {
    for (const Json& item : request.at("paths")) {
        const std::string path = item.get<std::string>();
        const std::string wanted = templateOf(path);
        Json found = Json::array();
        for (const Parameter& parameter : model_.parameters()) {
            const std::string full = model_.nodeOf(parameter).path + std::string(parameter.name);
            if (full != wanted && !(wanted.ends_with('.') && full.starts_with(wanted))) continue;
            found.push_back({{"path", full}, {"type", typeName(parameter.type)}, {"access", accessName(parameter)}});
        }
        if (found.empty()) {
            reply.fault(
                {FaultCode::kNoSuchPath, path, "the data model has no such path", suggestPath(model_, path), 0, ""});
            continue;
        }
        reply.part({{"parameters", std::move(found)}});
    }
}

void Service::complete(const Json& request, Reply& reply) {
    const std::string path = request.at("path").get<std::string>();
    const std::size_t dot = path.rfind('.');
    Json found = Json::array();
    if (dot == std::string::npos) {
        if (model_.root().path.starts_with(path)) found.push_back(model_.root().path);
        return reply.part({{"completions", std::move(found)}});
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
    if (node < 0) return reply.part({{"completions", std::move(found)}});
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
    reply.part({{"completions", std::move(found)}});
}

}  // namespace quorvel::hostd
