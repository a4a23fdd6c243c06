#include "gateway/hostd/Simulation.h"

#include <cstdlib>
#include <memory>

#include "gateway/manager/WlcsmControl.h"

namespace quorvel::hostd {

using protocol::Json;

namespace {

Json ask(const Json& command) {
    Json answer = Json::parse(controlSimulation(command.dump()), nullptr, false);
    return answer.is_object() ? answer : Json(nullptr);
}

}  // namespace

std::string controlSimulation(const std::string& command) {
    struct Free {
        void operator()(char* text) const {
            std::free(text);
        }
    };
    const std::unique_ptr<char, Free> answer(wlcsm_control(command.c_str()));
    return answer == nullptr ? "" : answer.get();
}

Json askSimulation(const char* operation) {
    return ask({{"op", operation}});
}

Json advanceSimulation(unsigned seconds) {
    return ask({{"op", "time"}, {"advance", seconds}});
}

}  // namespace quorvel::hostd
