#include "scenario/Sampler.h"

#include <algorithm>

namespace quorvel::scenario {
namespace {

std::string lastName(const std::string& path) {
    return path.substr(path.rfind('.') + 1);
}

}  // namespace

Sampler::Sampler(const Scenario& scenario) {
    for (const Expectation& one : scenario.expectations) {
        const bool parameter = one.kind == Expectation::Kind::kParameter || one.kind == Expectation::Kind::kUnreadable;
        if (parameter && std::find(paths_.begin(), paths_.end(), one.subject) == paths_.end())
            paths_.push_back(one.subject);
    }
}

void Sampler::sample(Stage& stage) {
    if (!stage.managerRuns()) return;
    leaveMeasurementsOut(stage);
    sampleParameters(stage);
    sampleStations(stage);
}

// Reading a measurement has a radio measure, which takes board time: a picture must not change what it shows.
void Sampler::leaveMeasurementsOut(Stage& stage) {
    if (checked_) return;
    checked_ = true;
    std::set<std::string> measurements;
    (void)stage.ask(hostd::protocol::Describe{{"Device."}}, [&](const hostd::protocol::Part& part) {
        for (const auto& parameter : part.parameters) {
            if (parameter.kind == hostd::protocol::ParameterKind::kMeasurement)
                measurements.insert(lastName(parameter.path));
        }
    });
    std::erase_if(paths_, [&](const std::string& path) { return measurements.contains(lastName(path)); });
}

void Sampler::sampleParameters(Stage& stage) {
    if (paths_.empty()) return;
    hostd::protocol::Get request;
    request.paths = paths_;
    const Time now = stage.now();
    std::set<std::string> read;
    (void)stage.ask(request, [&](const hostd::protocol::Part& part) {  // what gives a fault has no value now
        for (const auto& [path, value] : part.values) {
            if (!read.insert(path).second) continue;
            const auto known = std::find_if(recording_.parameters.begin(), recording_.parameters.end(),
                                            [&path = path](const Course& one) { return one.path == path; });
            Course& course =
                known != recording_.parameters.end() ? *known : recording_.parameters.emplace_back(Course{path, {}});
            course.samples.push_back({now, value});
        }
    });
    for (Course& course : recording_.parameters) {
        if (!read.contains(course.path)) course.samples.push_back({now, nullptr});
    }
}

void Sampler::sampleStations(Stage& stage) {
    Json json;
    if (!stage.control({{"op", "station.list"}}, &json).empty()) return;
    const auto answer = hostd::protocol::readSimulationAnswer(json);
    if (!answer) return;
    for (const auto& one : answer->stations)
        recording_.stations.push_back({stage.now(), one.mac, one.associated ? one.accessPoint : 0, one.rssi});
}

}  // namespace quorvel::scenario
