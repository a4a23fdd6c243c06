#include "console/verbs/ScenarioFile.h"

#include <filesystem>
#include <fstream>

#include "console/commandline/NearestWord.h"
#include "gateway/launch/Shipped.h"
#include "scenario/Reader.h"

namespace quorvel::console {

std::string findScenario(const Session& session, const std::string& name) {
    std::error_code error;
    if (std::filesystem::exists(name, error) || name.find('/') != std::string::npos || name.ends_with(".json"))
        return name;
    const std::filesystem::path folder = shippedFolder(session.options, kScenarios);
    if (std::filesystem::exists(folder / (name + ".json"), error)) return folder / (name + ".json");
    const std::vector<std::string> known = shippedNames(session.options, kScenarios);
    throw scenario::ScenarioError(name + ": there is neither such a file nor such a shipped scenario" +
                                  didYouMean(name, known) + " (shipped: " + listed(known) + ")");
}

void checkWritable(const std::string& path) {
    if (path.empty() || std::ofstream(path, std::ios::app)) return;
    throw GatewayError("cannot write " + path + "; is its folder there and writable?");
}

void writeReport(const std::string& path, const std::string& text) {
    if (path.empty()) return;
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file) throw GatewayError("cannot write " + path + "; is its folder there and writable?");
}

}  // namespace quorvel::console
