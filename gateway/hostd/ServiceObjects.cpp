// The requests that work on whole objects through their extra exported functions: snapshot and operate.
#include <cstddef>
#include <cstring>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/ContextLayout.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/PluginCalls.h"
#include "gateway/hostd/Service.h"

namespace quorvel::hostd {

namespace {

// More than any context has; contexts that are only read state no size in the table.
constexpr std::size_t kSnapshotBytes = 16384;
// A radio's snapshot holds the two measurements.
constexpr std::chrono::milliseconds kSnapshotTime{5000};

Value valueIn(const Field& field, const char* bytes) {
    Value value;
    value.type = field.parameter->type;
    const char* const at = bytes + field.offset;
    if (value.type == Type::kText) {
        value.text.assign(at, strnlen(at, field.size));
    } else if (value.type == Type::kBoolean) {
        value.number = static_cast<std::uint8_t>(*at);
    } else {
        std::memcpy(&value.number, at, sizeof value.number);
    }
    return value;
}

std::string hexOf(const char* bytes, std::size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

Fault missing(const std::string& path, const std::string& reason) {
    return {FaultCode::kInternal, path, reason, "", 0, ""};
}

std::uint32_t callInstanceGet(Word function, unsigned depth, void* context, const Instances& at) {
    switch (depth) {
        case 0:
            return reinterpret_cast<std::uint32_t (*)(void*)>(function)(context);
        case 1:
            return reinterpret_cast<std::uint32_t (*)(void*, std::uint32_t)>(function)(context, at[0]);
        default:
            return reinterpret_cast<std::uint32_t (*)(void*, std::uint32_t, std::uint32_t)>(function)(context, at[0],
                                                                                                      at[1]);
    }
}

// Calls an extra function, which takes a text or nothing beside the context.
std::uint32_t callExtra(Word function, void* context, const std::optional<std::string>& text) {
    return counted(PluginCall::kOperate, [&] {
        if (!text) return reinterpret_cast<std::uint32_t (*)(void*)>(function)(context);
        using Function = std::uint32_t(void*, std::uint32_t, const char*, std::uint32_t);
        return reinterpret_cast<Function*>(function)(context, 0, text->c_str(),
                                                     static_cast<std::uint32_t>(text->size()));
    });
}

}  // namespace

void Service::answer(const protocol::TakeSnapshot& request, Reply& reply) {
    begin();
    const std::string& path = request.path;
    PathWalk walk(model_);
    std::vector<ObjectMatch> matches;
    const Fault fault = walk.objects(path, matches);
    if (fault.code != FaultCode::kNone) return reply.fault(fault);
    const bool passedOver = faultPassedOver(walk, path, [&reply](const Fault& passed) { reply.fault(passed); });
    if (matches.empty() && passedOver) return;
    if (matches.empty()) return reply.fault(missing(path, "the object has no instances now"));
    const ObjectMatch& match = matches.front();
    const Node& node = model_.nodes()[static_cast<std::size_t>(match.node)];
    const std::string object = DataModel::concrete(node.path, match.instances);
    if (object != path && object != path + ".") {
        return reply.fault(missing(path, "a snapshot shows one object instance, such as " + object));
    }

    if (const std::string why = trouble(); !why.empty()) {
        return reply.fault(missing(object, "the plug-in could not take the snapshot; " + why));
    }
    const std::string name = Plugin::prefixOf(model_, match.node) + "InstanceGet";
    auto* const instanceGet = plugin_.find<void()>(name);
    if (instanceGet == nullptr) return reply.fault(missing(path, "the plug-in exports no " + name));
    std::vector<Field> layout;
    {
        // Finding out a layout provokes refusals, which say nothing about the board.
        const LogTap::Silence quiet;
        heartbeat_.expect(kSnapshotTime);
        layout = layoutOf(model_, match.node, match.instances);
    }
    heartbeat_.expect(kSnapshotTime);
    LogTap::forgetErrors();
    std::vector<std::max_align_t> block(kSnapshotBytes / sizeof(std::max_align_t));
    const std::uint32_t result = counted(PluginCall::kSnapshot, [&] {
        return callInstanceGet(reinterpret_cast<Word>(instanceGet), node.depth, block.data(), match.instances);
    });
    heartbeat_.beat();
    if (result != 0) {
        return reply.fault(
            pluginFault(FaultCode::kInternal, object, "the plug-in could not take the snapshot", result));
    }

    const auto* const bytes = reinterpret_cast<const char*>(block.data());
    const std::uint32_t size = node.contextSize != 0 ? node.contextSize : sizeOf(layout);
    protocol::Part part;
    protocol::Snapshot& snapshot = part.snapshot.emplace();
    snapshot.path = object;
    snapshot.size = size;
    snapshot.hex = hexOf(bytes, size);
    if (sizeOf(layout) <= size) {
        for (const Field& field : layout) {
            // A measurement's record is binary.
            const bool binary =
                field.parameter->call == Call::kChannelMetrics || field.parameter->call == Call::kChannelStats;
            snapshot.fields.push_back({object + std::string(field.parameter->name), field.offset, field.size,
                                       binary ? protocol::Json(nullptr) : toJson(valueIn(field, bytes))});
        }
    }
    reply.part(part);
}

void Service::answer(const protocol::Operate& request, Reply& reply) {
    begin();
    const std::string& path = request.path;
    PathWalk walk(model_);
    std::vector<ObjectMatch> objects;
    Fault fault = walk.objects(path, objects);
    if (fault.code != FaultCode::kNone) return reply.fault(fault);
    if (objects.empty()) return reply.fault(missing(path, "the object has no instances now"));
    const ObjectMatch& object = objects.front();
    const Node& node = model_.nodes()[static_cast<std::size_t>(object.node)];

    Transaction transaction(model_);
    void* const context = node.contextSize == 0 ? nullptr : transaction.context(object.node, object.instances, 0);
    const std::string name = Plugin::prefixOf(model_, object.node) + request.function;
    auto* const function = plugin_.find<void()>(name);
    if (context == nullptr || function == nullptr) {
        return reply.fault(missing(path, "the plug-in exports no " + name + " for this object"));
    }
    std::uint32_t result = callExtra(reinterpret_cast<Word>(function), context, request.text);
    if (result != 0) return reply.fault(pluginFault(FaultCode::kValueRefused, path, name + " refuses it", result));

    std::vector<Transaction::Setting> settings;
    for (const protocol::Setting& asked : request.settings) {
        std::vector<Match> matches;
        fault = walk.parameters(asked.path, matches);
        if (fault.code != FaultCode::kNone) return reply.fault(fault);
        for (const Match& match : matches) {
            Value value;
            const FaultCode code =
                match.parameter->setter == 0 ? FaultCode::kReadOnly : parse(*match.parameter, asked.value, value);
            if (code != FaultCode::kNone) return reply.fault({code, asked.path, "the value is refused", "", 0, ""});
            settings.push_back({match.parameter, match.instances, std::move(value)});
        }
    }
    const auto onRefused = [&result](std::size_t, std::uint32_t refusal) {
        result = refusal;
        return false;
    };
    if (transaction.stage(settings, onRefused) && transaction.stageAtOnce(settings, onRefused)) {
        result = transaction.apply().result;
    }
    if (result != 0) {
        return reply.fault(pluginFault(FaultCode::kValueRefused, path, "the plug-in could not apply it", result));
    }
    changed(protocol::ChangeKind::kValues, {DataModel::concrete(node.path, object.instances)});
}

}  // namespace quorvel::hostd
