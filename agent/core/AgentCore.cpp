#include "agent/core/AgentCore.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>

#include "agent/core/Configuration.h"
#include "agent/model/OwnRules.h"
#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

// How often to look for what no event has said. Where no subscription waits for it, the board may sleep longer.
constexpr std::chrono::seconds kCompareOften{5};
constexpr std::chrono::seconds kCompareSeldom{600};

std::function<double()> ownRandom() {
    return [engine = std::mt19937(std::random_device{}())]() mutable {
        return std::uniform_real_distribution<double>(0, 1)(engine);
    };
}

}  // namespace

AgentCore::AgentCore(Config config, Gateway& gateway, Transports& transports, Agent::Surroundings surroundings)
    : transports_(transports),
      surroundings_(std::move(surroundings)),
      endpointId_(endpointIdOf(config)),
      context_(std::move(config), gateway,
               [this](const Stations::Difference& difference) { noticeStations(difference); }),
      state_(context_.config.stateFolder) {
    if (surroundings_.log) context_.log = surroundings_.log;
    if (!surroundings_.random) surroundings_.random = ownRandom();
    delivery_ = std::make_unique<Delivery>(
        context_, timers_, directory_,
        [this](const ControllerEntry& controller, const std::string& message) {
            return sendToController(controller, message);
        },
        surroundings_.random);
    notifier_ = std::make_unique<Notifier>(context_, timers_, tasks_, directory_, *delivery_);
    notifier_->onExpiry([this](const std::string& row) { removeExpired(row); });
    CommandEffects effects;
    effects.powerCycle = [this](bool factory, const BootCause& cause) { powerCycle(factory, cause); };
    effects.onBoard = [this](const std::string& controller) { onBoard(controller); };
    effects.resetRetries = [this](const std::string& row) { transports_.resetRetries(row); };
    effects.changed = [this] { publish(); };
    effects.complete = [this](const std::string& object, const std::string& command, const std::string& key,
                              const Notifier::Outcome& outcome) {
        notifier_->tellComplete(object, command, key, outcome);
    };
    commands_ = std::make_unique<Commands>(context_, timers_, tasks_, std::move(effects));
    gateway.listen(this);
}

AgentCore::~AgentCore() {
    context_.gateway.listen(nullptr);
    context_.writes.close();
}

void AgentCore::defineComputed() {
    Store& store = context_.store;
    const DeviceFacts& device = context_.config.device;
    const std::pair<const char*, const std::string*> facts[] = {
        {"Manufacturer", &device.manufacturer},
        {"ManufacturerOUI", &device.oui},
        {"ProductClass", &device.productClass},
        {"SerialNumber", &device.serial},
        {"ModelName", &device.modelName},
        {"HardwareVersion", &device.hardwareVersion},
        {"SoftwareVersion", &device.softwareVersion},
    };
    for (const auto& [name, value] : facts)
        store.compute("Device.DeviceInfo.", name, [value = value] { return *value; });
    const auto upTime = [this] {
        return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(context_.now - startedAt_).count());
    };
    store.compute("Device.DeviceInfo.", "UpTime", upTime);
    store.compute("Device.LocalAgent.", "UpTime", upTime);
    store.compute("Device.LocalAgent.", "EndpointID", [this] { return endpointId_; });
    store.compute("Device.LocalAgent.", "SoftwareVersion", [&device] { return device.softwareVersion; });
}

void AgentCore::start() {
    context_.now = context_.gateway.boardTime();
    startedAt_ = context_.now;
    defineComputed();
    state_.load(context_.store);
    applyConfiguration(context_.config, endpointId_, context_.store);
    (void)context_.store.commit();  // nobody is subscribed yet
    context_.gateway.table([this](std::vector<TableRow> table) {
        if (begun_) return;
        begun_ = true;
        buildSchema(table);
        const BootCause cause = state_.boot.value_or(BootCause{});
        state_.boot.reset();
        begin(cause);
    });
}

void AgentCore::buildSchema(const std::vector<TableRow>& table) {
    auto schema = std::make_unique<Schema>(table);
    context_.store.adopt(*schema);
    context_.wifi.adopt(*schema);
    std::swap(context_.schema, schema);
    retired_.push_back(std::move(schema));
}

void AgentCore::begin(const BootCause& cause) {
    saveState();
    directory_.refresh(context_.store);
    notifier_->reload();
    for (const auto& [row, controller] : directory_.all())
        schedulePeriodic(row);
    tasks_.run(announceBoot(cause));
    configureTransports();
    compareLater(true);
    updateWatches();
    settle();
}

void AgentCore::stop(const std::string& reason) {
    for (const auto& [row, controller] : directory_.all()) {
        if (controller.enabled) farewell(controller.endpointId, reason);
    }
    transports_.stop(reason);
    lines_.clear();
}

void AgentCore::saveState() {
    const std::string wrong = state_.save(context_.store);
    if (!wrong.empty()) context_.log("the state could not be saved: " + wrong);
}

void AgentCore::publish() {
    if (context_.changes.empty()) return;
    std::vector<Change> changes;
    changes.swap(context_.changes);
    saveState();
    notifier_->tell(changes);
    const bool moved = std::any_of(changes.begin(), changes.end(), [](const Change& change) {
        return change.object.starts_with(kControllers) || change.object.starts_with(kAgentMtps) ||
               change.object.starts_with(kMqttClients);
    });
    if (moved) {
        const Directory before = directory_;
        directory_.refresh(context_.store);
        followControllers(before);
        configureTransports();
    }
    updateWatches();
}

// Updates the peers of controllers that were removed, disabled or rescheduled.
void AgentCore::followControllers(const Directory& before) {
    for (const auto& [row, entry] : before.all()) {
        const ControllerEntry* const now = directory_.byRow(row);
        const bool stays = now != nullptr && now->enabled && now->endpointId == entry.endpointId;
        if (now == nullptr) delivery_->endOf(row);
        if (entry.enabled && !stays) farewell(entry.endpointId, "the controller is not enabled any more");
        if (now == nullptr) schedulePeriodic(row);
    }
    for (const auto& [row, entry] : directory_.all())
        schedulePeriodic(row);
}

void AgentCore::configureTransports() {
    MtpSettings settings = transportSettings(context_.store, endpointId_);
    if (settings == configured_) return;
    configured_ = settings;
    transports_.configure(settings);
}

void AgentCore::updateWatches() {
    std::vector<std::string> paths = notifier_->watched();
    if (paths != watched_) {
        watched_ = paths;
        context_.gateway.watch(std::move(paths));
    }
    watchStationsLater();
    if (comparesOften_ != notifier_->followsRows()) compareLater(true);
}

void AgentCore::onStatus(const std::string& object, const std::string& parameter, const std::string& value) {
    const Object* const known = context_.schema->ofInstance(object);
    if (known == nullptr || !context_.store.has(object) || known->parameter(parameter) == nullptr) return;
    context_.now = std::max(context_.now, context_.gateway.boardTime());
    // An ID that the broker has assigned is stored, and used again.
    if (!known->parameter(parameter)->is(kComputed)) {
        if (context_.store.value(object, parameter) == value) return;
        context_.store.set(object, parameter, value);
        std::vector<Change> changes = context_.store.commit();
        context_.changes.insert(context_.changes.end(), changes.begin(), changes.end());
        // The transport knows; it must not connect anew for it.
        for (MqttSettings& mqtt : configured_.mqtt) {
            if (mqtt.clientRow == object && parameter == "ClientID") mqtt.clientId = value;
        }
        publish();
        return settle();
    }
    const std::string path = object + parameter;
    const auto before = statuses_.find(path);
    const std::string old = before == statuses_.end() ? known->parameter(parameter)->initial : before->second;
    statuses_[path] = value;
    context_.store.compute(object, parameter, [this, path] { return statuses_[path]; });
    if (old != value) notifier_->tellValue({object, parameter, value});
    settle();
}

void AgentCore::noticeStations(const Stations::Difference& difference) {
    for (const Stations::Row& row : difference.left)
        notifier_->tellDeleted(row.path);
    for (const Stations::Row& row : difference.joined)
        notifier_->tellCreated(row.path, {{"MACAddress", row.mac}});
}

void AgentCore::removeExpired(const std::string& row) {
    context_.store.remove(row);
    std::vector<Change> changes = context_.store.commit();
    context_.changes.insert(context_.changes.end(), changes.begin(), changes.end());
    publish();
}

void AgentCore::powerCycle(bool factory, const BootCause& cause) {
    state_.boot = cause;
    if (factory) {
        // Only the reason of the reset outlives it.
        for (const char* const table : {kSubscriptions, kControllers, kAgentMtps, kMqttClients}) {
            for (const std::string& row : context_.store.rows(table))
                removeRow(context_.store, row);
        }
        context_.store.set("Device.DeviceInfo.", "FriendlyName", "");
        context_.store.set("Device.DeviceInfo.", "ProvisioningCode", "");
        applyConfiguration(context_.config, endpointId_, context_.store);
        (void)context_.store.commit();  // the board is about to go: nobody is told
    }
    saveState();
    powerCycling_ = true;
    context_.gateway.powerCycle(factory, [this](const std::vector<GatewayFault>& faults) {
        if (faults.empty()) return;
        powerCycling_ = false;
        state_.boot.reset();
        saveState();
        context_.log("the board could not be restarted: " + faults.front().reason);
    });
}

void AgentCore::onRebooted() {
    const BootCause cause = state_.boot.value_or(BootCause{});
    state_.boot.reset();
    powerCycling_ = false;
    commands_->forget();
    for (const std::string& row : context_.store.rows(kSubscriptions)) {
        delivery_->endOf(row);
        if (!context_.store.flag(row, "Persistent")) context_.store.remove(row);
    }
    (void)context_.store.commit();  // a board that restarts tells nobody what it forgets
    context_.changes.clear();
    for (const auto& [row, controller] : directory_.all()) {
        delivery_->endOf(row);
        if (controller.enabled) farewell(controller.endpointId, "the board restarts");
    }
    startedAt_ = context_.gateway.boardTime();
    std::vector<std::uint64_t> open;
    for (const auto& [id, line] : lines_)
        open.push_back(id);
    for (const std::uint64_t id : open)
        transports_.closeChannel(id, "the board restarts");
    // A transport may close later; Boot! waits for the connection that follows.
    lines_.clear();
    begin(cause);
}

void AgentCore::onRestored() {
    if (begun_ && context_.schema->find("Device.WiFi.") == nullptr) {
        context_.gateway.table([this](const std::vector<TableRow>& table) { buildSchema(table); });
    }
    watched_.clear();
    updateWatches();
    compareLater(true);
}

void AgentCore::onStationEvent(const StationEvent& event) {
    changedAccessPoints_.insert(event.interface);
    context_.now = std::max(context_.now, context_.gateway.boardTime());
    if (!comparing_) {
        comparing_ = true;
        tasks_.run(pollStations(false));
    }
    // Only a hint: it may be one of several, and some get lost.
    if (!comparesOften_) compareLater(true);
    settle();
}

void AgentCore::onChanges(const std::vector<GatewayValue>& changes) {
    context_.now = std::max(context_.now, context_.gateway.boardTime());
    for (const Reading& reading : context_.wifi.translate(changes, false)) {
        std::string_view table;
        // Positions shift; stations are watched by the agent itself.
        if (!Stations::concerns(reading.object, table)) notifier_->tellValue(reading);
    }
    settle();
}

// Soon: once, whether a subscription waits for it or not.
void AgentCore::compareLater(bool soon) {
    timers_.cancel(compare_);
    comparesOften_ = notifier_->followsRows();
    compare_ = timers_.at(context_.now + (soon || comparesOften_ ? kCompareOften : kCompareSeldom), [this] {
        if (!comparing_) {
            comparing_ = true;
            tasks_.run(pollStations(true));
        }
        notifier_->resolveAgain();
        updateWatches();
        compareLater(false);
    });
}

nlohmann::ordered_json AgentCore::status() const {
    using Json = nlohmann::ordered_json;
    const Store& store = context_.store;
    Json mtps = Json::array();
    for (const std::string& row : store.rows(kAgentMtps)) {
        const std::string client = store.value(row + "MQTT.", "Reference") + ".";
        Json mtp{{"path", row},
                 {"protocol", store.value(row, "Protocol")},
                 {"enabled", store.flag(row, "Enable")},
                 {"status", store.value(row, "Status")}};
        if (store.has(client)) {
            mtp["broker"] = store.value(client, "BrokerAddress") + ":" + store.value(client, "BrokerPort");
            mtp["client"] = store.value(client, "Status");
            mtp["topic"] = store.value(row + "MQTT.", "ResponseTopicConfigured");
        }
        mtps.push_back(std::move(mtp));
    }
    Json sessions = Json::array();
    for (const auto& [id, line] : lines_) {
        sessions.push_back({{"protocol", line.channel.protocol == Protocol::kMqtt ? "MQTT" : "WebSocket"},
                            {"peer", line.channel.peer},
                            {"endpoint", line.channel.endpointId},
                            {"topic", line.channel.replyTopic}});
    }
    Json controllers = Json::array();
    for (const auto& [row, controller] : directory_.all()) {
        controllers.push_back({{"path", row},
                               {"endpoint", controller.endpointId},
                               {"enabled", controller.enabled},
                               {"reachable", wayTo(controller).has_value()}});
    }
    return {{"endpoint", endpointId_},
            {"mtps", std::move(mtps)},
            {"sessions", std::move(sessions)},
            {"controllers", std::move(controllers)},
            {"subscriptions", store.count(kSubscriptions)},
            {"counters",
             {{"received", counters_.received},
              {"sent", counters_.sent},
              {"dropped", counters_.dropped},
              {"requests", counters_.requests},
              {"errors", counters_.errors},
              {"notifies", delivery_->sent()},
              {"unanswered", delivery_->open()},
              {"undeliverable", delivery_->undeliverable()}}}};
}

}  // namespace quorvel::agent
