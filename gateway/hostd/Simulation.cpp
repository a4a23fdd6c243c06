#include "gateway/hostd/Simulation.h"

#include <cstdlib>
#include <memory>

#include "gateway/manager/WlcsmControl.h"

namespace quorvel::hostd {

std::string controlSimulation(const std::string& command) {
    struct Free {
        void operator()(char* text) const {
            std::free(text);
        }
    };
    const std::unique_ptr<char, Free> answer(wlcsm_control(command.c_str()));
    return answer == nullptr ? "" : answer.get();
}

}  // namespace quorvel::hostd
