#include "agent/scripted/SteadyGateway.h"

#include <utility>

namespace quorvel::agent {

SteadyGateway::SteadyGateway(Gateway& real) : real_(real) {
    real_.listen(this);
}

SteadyGateway::~SteadyGateway() {
    real_.listen(nullptr);
}

template <typename... Results>
std::function<void(Results...)> SteadyGateway::counted(std::function<void(Results...)> done) {
    ++open_;
    return [this, done = std::move(done)](Results... results) {
        --open_;
        done(std::move(results)...);
    };
}

void SteadyGateway::ask(std::function<void()> request) {
    if (!held_) return request();
    waiting_.push_back(std::move(request));
}

void SteadyGateway::release() {
    held_ = false;
    for (const StationEvent& event : std::exchange(events_, {}))
        onStationEvent(event);
    for (const auto& request : std::exchange(waiting_, {}))
        request();
}

void SteadyGateway::look() {
    if (watched_.empty()) return;
    get(watched_, 0, [this](const GetAnswer& answer) {
        if (answer.lost) return;
        std::map<std::string, std::string> values;
        std::vector<GatewayValue> changes;
        for (const GatewayValue& each : answer.values) {
            const auto before = seen_.find(each.path);
            if (!first_ && (before == seen_.end() || before->second != each.value)) changes.push_back(each);
            values[each.path] = each.value;
        }
        seen_ = std::move(values);
        first_ = false;
        if (!changes.empty() && listener_ != nullptr) listener_->onChanges(changes);
    });
}

void SteadyGateway::probe() {
    get({"Device.WiFi.RadioNumberOfEntries"}, 0, [](const GetAnswer&) {});
}

void SteadyGateway::table(std::function<void(std::vector<TableRow>)> done) {
    ask([this, done = std::move(done)] { real_.table(counted(done)); });
}

void SteadyGateway::get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) {
    ask([this, paths = std::move(paths), levels, done = std::move(done)] { real_.get(paths, levels, counted(done)); });
}

void SteadyGateway::instances(std::vector<std::string> tables,
                              std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) {
    ask([this, tables = std::move(tables), done = std::move(done)] { real_.instances(tables, counted(done)); });
}

void SteadyGateway::check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    ask([this, settings = std::move(settings), done = std::move(done)] { real_.check(settings, counted(done)); });
}

void SteadyGateway::set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    ask([this, settings = std::move(settings), done = std::move(done)] { real_.set(settings, counted(done)); });
}

void SteadyGateway::save(std::function<void(SaveAnswer)> done) {
    ask([this, done = std::move(done)] { real_.save(counted(done)); });
}

void SteadyGateway::scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) {
    ask([this, radio = std::move(radio), done = std::move(done)] { real_.scan(radio, counted(done)); });
}

void SteadyGateway::pushButton(std::string wps, std::function<void(std::vector<GatewayFault>)> done) {
    ask([this, wps = std::move(wps), done = std::move(done)] { real_.pushButton(wps, counted(done)); });
}

void SteadyGateway::watch(std::vector<std::string> paths) {
    watched_ = std::move(paths);
    seen_.clear();
    first_ = true;
    look();
}

void SteadyGateway::powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) {
    ask([this, factory, done = std::move(done)] { real_.powerCycle(factory, counted(done)); });
}

void SteadyGateway::onStationEvent(const StationEvent& event) {
    if (held_) return events_.push_back(event);
    if (listener_ != nullptr) listener_->onStationEvent(event);
}

void SteadyGateway::onRestored() {
    if (listener_ != nullptr) listener_->onRestored();
}

void SteadyGateway::onRebooted() {
    if (listener_ != nullptr) listener_->onRebooted();
}

}  // namespace quorvel::agent
