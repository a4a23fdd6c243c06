// The request that writes parameters: set.
#include <nlohmann/json.hpp>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/Service.h"

namespace quorvel::hostd {

using Json = nlohmann::ordered_json;

namespace {

// Applying a radio restarts it; a scan waits for five seconds of board time.
constexpr std::chrono::milliseconds kApplyTime{8000};

const char* typeName(Type type) {
    switch (type) {
        case Type::kText:
            return "string";
        case Type::kBoolean:
            return "boolean (true or false)";
        case Type::kUnsignedInt:
            return "unsignedInt";
        case Type::kInt:
            return "int";
    }
    return "";
}

}  // namespace

void Service::set(const Json& request, Reply& reply) {
    PathWalk walk(model_);
    std::vector<Transaction::Setting> settings;
    bool refused = false;
    const auto refuse = [&](const Fault& fault) {
        refused = true;
        reply.fault(fault);
    };
    for (const Json& item : request.at("settings")) {
        const std::string path = item.at("path").get<std::string>();
        const std::string text = item.at("value").get<std::string>();
        std::vector<Match> matches;
        Fault fault = walk.parameters(path, matches);
        if (fault.code == FaultCode::kNone && path.ends_with('.')) {
            fault = {FaultCode::kNoSuchPath, path, "a partial path cannot be set; name the parameter", "", 0, ""};
        }
        if (fault.code != FaultCode::kNone) {
            refuse(fault);
            continue;
        }
        for (const Match& match : matches) {
            const std::string shown = model_.concrete(*match.parameter, match.instances);
            if (match.parameter->setter == 0) {
                refuse({FaultCode::kReadOnly, shown, "the parameter is read-only", "", 0, ""});
                continue;
            }
            Transaction::Setting setting{match.parameter, match.instances, {}};
            const FaultCode code = parse(*match.parameter, text, setting.value);
            if (code != FaultCode::kNone) {
                const std::string reason =
                    (code == FaultCode::kWrongType ? "\"" + text + "\" is no " : "\"" + text + "\" does not fit an ") +
                    typeName(match.parameter->type);
                refuse({code, shown, reason, "", 0, ""});
                continue;
            }
            settings.push_back(std::move(setting));
        }
    }
    if (!refused && !faultPassedOver(walk, "", reply)) setAll(settings, request.value("save", false), reply);
}

void Service::setAll(const std::vector<Transaction::Setting>& settings, bool save, Reply& reply) {
    const auto pathOf = [&](std::size_t i) { return model_.concrete(*settings[i].parameter, settings[i].instances); };
    if (settings.empty()) return;
    // Some applies would wait for seconds before nobody answers.
    if (const std::string why = trouble(); !why.empty()) {
        return reply.fault({FaultCode::kInternal, pathOf(0), "nothing was set; " + why, "", 0, ""});
    }
    Transaction transaction(model_);
    heartbeat_.beat();
    const Transaction::Outcome staged = transaction.stageAll(settings);
    if (staged.result != 0) {
        return reply.fault(pluginFault(FaultCode::kValueRefused, pathOf(staged.failed), "the plug-in refuses the value",
                                       staged.result));
    }
    heartbeat_.expect(kApplyTime);
    LogTap::forgetErrors();
    const Transaction::Outcome applied = transaction.apply();
    if (applied.result != 0) {
        const std::string why = trouble();
        const FaultCode code = why.empty() ? FaultCode::kValueRefused : FaultCode::kInternal;
        return reply.fault(pluginFault(
            code, pathOf(applied.failed),
            "the plug-in could not apply the object's values" + (why.empty() ? "" : "; " + why), applied.result));
    }
    // Not every apply notices that nobody took its values.
    if (const std::string why = trouble(); !why.empty()) {
        return reply.fault(pluginFault(FaultCode::kInternal, pathOf(0), "the values may not have arrived; " + why, 0));
    }
    for (const auto& setting : settings) {
        values_.emplace_back(model_.concrete(*setting.parameter, setting.instances), setting.value);
    }
    flush(reply);
    readBack(settings, reply);
    if (!save) return;
    heartbeat_.beat();
    const auto saveNvram = plugin_.find<std::uint32_t()>("WifiSaveNvram");
    const std::uint32_t result = saveNvram == nullptr ? 1 : saveNvram();
    if (result == 0) return;
    const std::string why = trouble();
    reply.fault(pluginFault(FaultCode::kInternal, pathOf(0),
                            "the values are applied but could not be saved" + (why.empty() ? "" : "; " + why), result));
}

// Tells which values the device does not have now although it has taken them.
void Service::readBack(const std::vector<Transaction::Setting>& settings, Reply& reply) {
    Json differing = Json::array();
    for (const Transaction::Setting& setting : settings) {
        const Parameter& parameter = *setting.parameter;
        if (parameter.getter == 0 || parameter.call != Call::kOrdinary) continue;
        heartbeat_.beat();
        Value now;
        if (read(parameter, setting.instances, now) != 0 || now == setting.value) continue;
        differing.push_back({{"path", model_.concrete(parameter, setting.instances)}, {"value", toJson(now)}});
    }
    if (!differing.empty()) reply.part({{"readBack", std::move(differing)}});
}

}  // namespace quorvel::hostd
