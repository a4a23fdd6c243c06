// The requests that write parameters: set and save.
#include <algorithm>

#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/PluginCalls.h"
#include "gateway/hostd/Service.h"

namespace quorvel::hostd {

using protocol::Part;

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
            return "unsignedInt (a whole number from 0 to 4294967295)";
        case Type::kInt:
            return "int (a whole number from -2147483648 to 2147483647)";
    }
    return "";
}

const char* articleOf(Type type) {
    return type == Type::kUnsignedInt || type == Type::kInt ? "an " : "a ";
}

bool isReadable(const Parameter& parameter) {
    return parameter.getter != 0 && parameter.call == Call::kOrdinary;
}

}  // namespace

/// One set request on its way: from its texts to values on the device, or to none.
class Service::Writing {
  public:
    Writing(Service& service, const protocol::Set& request, Reply& reply)
        : service_(service), request_(request), reply_(reply), transaction_(service.model_) {}

    void run() {
        if (!resolve() || settings_.empty()) return;
        // Some applies would wait for seconds before they fail.
        if (const std::string why = service_.trouble(); !why.empty()) {
            return reply_.fault({FaultCode::kInternal, pathOf(0), "nothing was set; " + why, "", 0, ""});
        }
        service_.heartbeat_.beat();
        LogTap::forgetErrors();
        if (!stage(false) || request_.checkOnly) return;
        if (request_.undo) readBefore();
        const bool staged = stage(true);
        if (!staged) return undo(0);
        if (apply()) finish();
    }

  private:
    [[nodiscard]] std::string pathOf(std::size_t i) const {
        return service_.model_.concrete(*settings_[i].parameter, settings_[i].instances);
    }

    [[nodiscard]] bool resolve();
    [[nodiscard]] bool resolveOne(const protocol::Setting& asked, PathWalk& walk);
    [[nodiscard]] bool stage(bool atOnce);
    void readBefore();
    [[nodiscard]] bool apply();
    void tellApplied(std::size_t count);
    void undo(std::size_t applied);
    void finish();
    void readBack();

    Service& service_;
    const protocol::Set& request_;
    Reply& reply_;
    Transaction transaction_;
    std::vector<Transaction::Setting> settings_;
    std::vector<bool> needed_;   // of each setting
    std::vector<bool> refused_;  // of each setting
    std::vector<std::optional<Value>> before_;
};

// Returns false when nothing is to be set.
bool Service::Writing::resolve() {
    PathWalk walk(service_.model_);
    bool refused = false;
    for (const protocol::Setting& asked : request_.settings) {
        if (!resolveOne(asked, walk) && asked.needed) refused = true;
    }
    refused_.resize(settings_.size());
    const auto report = [this](const Fault& fault) { reply_.fault(fault); };
    return !refused && !service_.faultPassedOver(walk, "", report);
}

bool Service::Writing::resolveOne(const protocol::Setting& asked, PathWalk& walk) {
    std::vector<Match> matches;
    Fault fault = walk.parameters(asked.path, matches);
    if (fault.code == FaultCode::kNone && asked.path.ends_with('.')) {
        fault = {FaultCode::kNoSuchPath, asked.path, "a partial path cannot be set; name the parameter", "", 0, ""};
    }
    if (fault.code != FaultCode::kNone) {
        reply_.fault(std::move(fault));
        return false;
    }
    bool all = true;
    for (const Match& match : matches) {
        const std::string shown = service_.model_.concrete(*match.parameter, match.instances);
        if (match.parameter->setter == 0) {
            reply_.fault({FaultCode::kReadOnly, shown, "the parameter is read-only", "", 0, ""});
            all = false;
            continue;
        }
        Transaction::Setting setting{match.parameter, match.instances, {}};
        const FaultCode code = parse(*match.parameter, asked.value, setting.value);
        if (code != FaultCode::kNone) {
            const std::string rule = articleOf(match.parameter->type) + std::string(typeName(match.parameter->type));
            const std::string verb = code == FaultCode::kWrongType ? "\" is not " : "\" does not fit ";
            reply_.fault({code, shown, "\"" + asked.value + verb + rule, "", 0, ""});
            all = false;
            continue;
        }
        settings_.push_back(std::move(setting));
        needed_.push_back(asked.needed);
    }
    return all;
}

// Returns false when a needed setting was refused.
bool Service::Writing::stage(bool atOnce) {
    bool refused = false;
    const auto onRefused = [&](std::size_t i, std::uint32_t result) {
        refused_[i] = true;
        reply_.fault(pluginFault(FaultCode::kValueRefused, pathOf(i), "the plug-in refuses the value", result));
        LogTap::forgetErrors();
        refused = refused || needed_[i];
        return !needed_[i] || request_.everyFault;
    };
    const bool whole =
        atOnce ? transaction_.stageAtOnce(settings_, onRefused) : transaction_.stage(settings_, onRefused);
    return whole && !refused;
}

void Service::Writing::readBefore() {
    for (const Transaction::Setting& setting : settings_) {
        service_.heartbeat_.beat();
        Value value;
        const bool known = isReadable(*setting.parameter) && read(*setting.parameter, setting.instances, value) == 0;
        before_.push_back(known ? std::optional(value) : std::nullopt);
    }
}

// Returns false when an object instance could not be applied.
bool Service::Writing::apply() {
    service_.heartbeat_.expect(kApplyTime);
    LogTap::forgetErrors();
    const Transaction::Outcome applied = transaction_.apply();
    const std::string why = service_.trouble();
    if (applied.result != 0) {
        const FaultCode code = why.empty() ? FaultCode::kValueRefused : FaultCode::kInternal;
        reply_.fault(pluginFault(code, pathOf(applied.failed),
                                 "the plug-in could not apply the object's values" + (why.empty() ? "" : "; " + why),
                                 applied.result));
        tellApplied(applied.applied);
        undo(applied.applied);
        return false;
    }
    tellApplied(applied.applied);
    if (why.empty()) return true;
    // Not every apply notices that its values did not arrive.
    reply_.fault(pluginFault(FaultCode::kInternal, pathOf(0), "the values may not have arrived; " + why, 0));
    return false;
}

void Service::Writing::tellApplied(std::size_t count) {
    Part part;
    std::vector<std::string> paths;
    const std::vector<Transaction::Object> objects = transaction_.objects();
    for (std::size_t i = 0; i < std::min(count, objects.size()); ++i) {
        const Node& node = service_.model_.nodes()[static_cast<std::size_t>(objects[i].node)];
        part.applied.push_back(DataModel::concrete(node.path, objects[i].instances));
        for (std::size_t s = 0; s < settings_.size(); ++s) {
            const bool here = settings_[s].parameter->node == objects[i].node &&
                              settings_[s].instances == objects[i].instances && !refused_[s];
            if (here) paths.push_back(pathOf(s));
        }
    }
    reply_.part(part);
    service_.changed(protocol::ChangeKind::kValues, std::move(paths));
}

// Writes the values before back: those of the first `applied` object instances, and what was written at once.
void Service::Writing::undo(std::size_t applied) {
    if (!request_.undo) return;
    std::vector<Transaction::Object> objects = transaction_.objects();
    objects.resize(std::min(applied, objects.size()));
    const auto reached = [&](const Transaction::Setting& setting) {
        return setting.parameter->writesAtOnce ||
               std::any_of(objects.begin(), objects.end(), [&setting](const Transaction::Object& object) {
                   return object.node == setting.parameter->node && object.instances == setting.instances;
               });
    };
    Part part;
    std::vector<Transaction::Setting> earlier;
    const auto lost = [&](std::size_t i, std::uint32_t result) {
        reply_.fault(
            pluginFault(FaultCode::kInternal, pathOf(i), "the value before could not be written back", result));
    };
    for (std::size_t i = 0; i < settings_.size(); ++i) {
        if (refused_[i] || !reached(settings_[i])) continue;
        if (!before_[i]) {
            lost(i, 0);
            continue;
        }
        earlier.push_back({settings_[i].parameter, settings_[i].instances, *before_[i]});
        part.undone.push_back(pathOf(i));
    }
    service_.heartbeat_.expect(kApplyTime);
    LogTap::forgetErrors();
    Transaction back(service_.model_);
    const auto onRefused = [&](std::size_t i, std::uint32_t result) {
        reply_.fault(pluginFault(FaultCode::kInternal, part.undone[i], "the value before is refused", result));
        return true;
    };
    (void)back.stage(earlier, onRefused);  // each refusal is reported
    (void)back.stageAtOnce(earlier, onRefused);
    const Transaction::Outcome outcome = back.apply();
    if (outcome.result != 0) {
        reply_.fault(pluginFault(FaultCode::kInternal, part.undone[outcome.failed],
                                 "the object's values before could not be applied", outcome.result));
        return;
    }
    if (!part.undone.empty()) reply_.part(part);
}

void Service::Writing::finish() {
    Part part;
    for (std::size_t i = 0; i < settings_.size(); ++i) {
        if (!refused_[i]) part.values.push_back({pathOf(i), toJson(settings_[i].value)});
    }
    if (!part.values.empty()) reply_.part(part);
    readBack();
    if (!request_.save) return;
    service_.heartbeat_.beat();
    const std::uint32_t result = service_.saveNow();
    if (result == 0) return;
    const std::string why = service_.trouble();
    reply_.fault(pluginFault(FaultCode::kInternal, pathOf(0),
                             "the values are applied but could not be saved" + (why.empty() ? "" : "; " + why),
                             result));
}

// Reports values that the device does not have now although it has accepted them.
void Service::Writing::readBack() {
    Part part;
    for (std::size_t i = 0; i < settings_.size(); ++i) {
        const Parameter& parameter = *settings_[i].parameter;
        if (refused_[i] || !isReadable(parameter)) continue;
        service_.heartbeat_.beat();
        Value now;
        if (read(parameter, settings_[i].instances, now) != 0 || now == settings_[i].value) continue;
        part.readBack.push_back({pathOf(i), toJson(now)});
    }
    if (!part.readBack.empty()) reply_.part(part);
}

void Service::answer(const protocol::Set& request, Reply& reply) {
    begin();
    Writing(*this, request, reply).run();
}

std::uint32_t Service::saveNow() {
    auto* const save = plugin_.find<std::uint32_t()>("WifiSaveNvram");
    const std::uint32_t result = save == nullptr ? 1 : counted(PluginCall::kSave, save);
    if (result == 0) changed(protocol::ChangeKind::kSaved, {});
    return result;
}

void Service::answer(const protocol::Save&, Reply& reply) {
    begin();
    heartbeat_.expect(kApplyTime);
    const std::uint32_t result = saveNow();
    if (result == 0) return;
    const std::string why = trouble();
    reply.fault(pluginFault(FaultCode::kInternal, "",
                            "the running configuration could not be saved" + (why.empty() ? "" : "; " + why), result));
}

}  // namespace quorvel::hostd
