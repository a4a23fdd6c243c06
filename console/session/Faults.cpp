#include "console/session/Faults.h"

#include <iostream>

namespace quorvel::console {

void printFault(const Session& session, const Json& fault) {
    const Style style = session.errorStyle();
    const std::string path = fault.value("path", "");
    std::string text = path.empty() ? "" : path + ": ";
    text += fault.value("reason", "");
    std::cerr << style.dress("fault " + std::to_string(fault.value("code", 0)), Colour::kBad) << " " << text;
    if (fault.contains("result")) {
        std::cerr << " (result " << fault.value("result", 0U);
        if (fault.contains("log")) std::cerr << ": " << fault.value("log", "");
        std::cerr << ")";
    }
    std::cerr << '\n';
    if (fault.contains("suggestion")) std::cerr << "  did you mean " << fault.value("suggestion", "") << " ?\n";
}

void printFaults(const Session& session, const std::vector<Json>& faults) {
    std::cout << std::flush;
    for (const Json& fault : faults)
        printFault(session, fault);
}

void printJson(Json result, const std::vector<Json>& faults) {
    if (!faults.empty()) result["faults"] = faults;
    std::cout << result.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int reportFaults(const Session& session, const std::vector<Json>& faults) {
    if (faults.empty()) return kDone;
    printFaults(session, faults);
    if (session.options.json) printJson(Json::object(), faults);
    return kFailed;
}

}  // namespace quorvel::console
