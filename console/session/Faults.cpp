#include "console/session/Faults.h"

#include <iostream>

namespace quorvel::console {

void printFault(const Session& session, const Fault& fault) {
    const Style style = session.errorStyle();
    const std::string text = (fault.path.empty() ? "" : fault.path + ": ") + fault.reason;
    const std::string code = std::to_string(static_cast<unsigned>(fault.code));
    std::cerr << style.dress("fault " + code, Colour::kBad) << " " << text;
    if (fault.result != 0) {
        std::cerr << " (result " << fault.result;
        if (!fault.log.empty()) std::cerr << ": " << fault.log;
        std::cerr << ")";
    }
    std::cerr << '\n';
    if (!fault.suggestion.empty()) std::cerr << "  did you mean " << fault.suggestion << " ?\n";
}

void printFaults(const Session& session, const std::vector<Fault>& faults) {
    std::cout << std::flush;
    for (const Fault& fault : faults)
        printFault(session, fault);
}

void printJson(Json result, const std::vector<Fault>& faults) {
    if (!faults.empty()) result["faults"] = protocol::toJson(faults);
    std::cout << result.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int reportFaults(const Session& session, const std::vector<Fault>& faults) {
    if (faults.empty()) return kDone;
    printFaults(session, faults);
    if (session.options.json) printJson(Json::object(), faults);
    return kFailed;
}

}  // namespace quorvel::console
