#include "Session.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "Interrupt.h"
#include "Progress.h"

namespace quorvel::console {

Session::~Session() = default;

Style Session::outStyle() const {
    return {options, STDOUT_FILENO};
}

Style Session::errorStyle() const {
    return {options, STDERR_FILENO};
}

Gateway& Session::gateway() {
    if (gateway_ != nullptr) return *gateway_;
    Progress progress(errorStyle());
    progress.say("starting the board " + options.board + " ...");
    gateway_ = Gateway::open(options);
    progress.clear();
    if (!gateway_->bootTrouble().empty()) std::cerr << "quorvel-wifi: warning: " << gateway_->bootTrouble() << '\n';
    return *gateway_;
}

std::vector<Json> Session::ask(const Json& request, const Client::OnPart& onPart) {
    Client& client = gateway().client();
    Progress progress(errorStyle());
    std::vector<Json> faults;
    client.idle = [&progress] { progress.tick(); };
    client.ask(request, [&](const Json& part) {
        if (part.contains("wait")) progress.expect(part.at("wait").get<unsigned>());
        if (part.contains("faults")) {
            for (const Json& fault : part.at("faults"))
                faults.push_back(fault);
        }
        onPart(part);
    });
    client.idle = nullptr;
    return faults;
}

void Session::letTimePass(unsigned seconds, bool quiet) {
    if (gateway().runsAhead()) {
        (void)ask({{"do", "control"}, {"command", {{"op", "time"}, {"advance", seconds}}}}, [](const Json&) {});
        return;
    }
    Progress progress(errorStyle());
    if (!quiet) progress.expect(seconds);
    for (unsigned waited = 0; waited < seconds * 10 && !Interrupt::happened(); ++waited) {
        (void)poll(nullptr, 0, 100);
        progress.tick();
    }
}

void Readings::add(const Json& values) {
    for (const Json& item : values)
        values_.emplace_back(item.at("path").get<std::string>(), item.at("value"));
}

Json Readings::at(const std::string& path) const {
    const auto found =
        std::find_if(values_.begin(), values_.end(), [&path](const auto& value) { return value.first == path; });
    return found == values_.end() ? Json(nullptr) : found->second;
}

std::string Readings::text(const std::string& path) const {
    const Json value = at(path);
    return value.is_null() ? "-" : textOf(value);
}

Readings readPaths(Session& session, const std::vector<std::string>& paths, std::vector<Json>* faults) {
    Readings readings;
    const std::vector<Json> failed = session.ask({{"do", "get"}, {"paths", paths}}, [&readings](const Json& part) {
        if (part.contains("values")) readings.add(part.at("values"));
    });
    if (faults == nullptr) return readings;
    for (const Json& fault : failed) {
        const std::string path = fault.value("path", "");
        if (path.empty() || std::find(paths.begin(), paths.end(), path) != paths.end()) faults->push_back(fault);
    }
    return readings;
}

std::string textOf(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

}  // namespace quorvel::console
