#include "console/commandline/Documentation.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "common/EditDistance.h"
#include "common/OutsideBrackets.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::console {

using Json = nlohmann::ordered_json;

namespace {

constexpr const char* kPlace = "/share/quorvel-wifi/data-model.json";
constexpr std::string_view kInstance = "{i}";

bool isInstance(std::string_view segment) {
    if (segment == "*" || segment.starts_with('[')) return true;
    return !segment.empty() && segment.find_first_not_of("0123456789") == std::string_view::npos;
}

// Replaces instances and their placeholders by "{i}", and keeps the originals.
std::string templateOf(std::string_view path, std::vector<std::string>* instances = nullptr) {
    std::string text;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(common::findOutsideBrackets(path, '.', begin), path.size());
        const std::string_view segment = path.substr(begin, end - begin);
        const bool instance = isInstance(segment);
        if (instance && instances != nullptr) instances->emplace_back(segment);
        text += instance ? kInstance : segment;
        if (end < path.size()) text += '.';
        begin = end + 1;
    }
    // A station's MAC follows the name.
    const std::size_t bracket = text.find('[', text.rfind('.') == std::string::npos ? 0 : text.rfind('.'));
    return bracket == std::string::npos ? text : text.substr(0, bracket);
}

// The marks that set names apart in the documents would only disturb on a terminal or in JSON.
std::string withoutMarks(std::istream& file) {
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::erase(text, '`');
    return text;
}

}  // namespace

Documentation::Documentation(const Options& options) : document_(std::make_unique<Json>()) {
    const std::string place = programFolder(options) + kPlace;
    std::ifstream file(place);
    if (file) *document_ = Json::parse(withoutMarks(file), nullptr, false);
    if (!document_->is_object() || !document_->contains("parameters")) {
        throw launch::GatewayError("the description of the data model is missing (" + place +
                                   "); build or install all of it");
    }
}

Documentation::~Documentation() = default;

Json Documentation::below(std::string_view path) const {
    const std::string wanted = templateOf(path);
    Json found = Json::array();
    for (const Json& parameter : document_->at("parameters")) {
        const std::string full = parameter.value("path", "");
        if (full == wanted || (wanted.ends_with('.') && full.starts_with(wanted))) found.push_back(parameter);
    }
    return found;
}

Json Documentation::find(std::string_view path) const {
    const Json found = below(path);
    return found.size() == 1 && !path.ends_with('.') ? found.front() : Json(nullptr);
}

std::string Documentation::nearest(std::string_view path) const {
    std::vector<std::string> instances;
    const std::string wanted = templateOf(path, &instances);
    bool object = wanted.ends_with('.');
    // Perhaps only the dot behind an object is missing.
    for (const Json& item : document_->at("objects"))
        object = object || item.value("path", "") == wanted + ".";
    std::string best;
    unsigned least = static_cast<unsigned>(wanted.size());
    for (const Json& item : document_->at(object ? "objects" : "parameters")) {
        const std::string known = item.value("path", "");
        const unsigned cost = common::editDistance(wanted, known);
        if (cost >= least) continue;
        least = cost;
        best = known;
    }
    for (std::size_t at = best.find(kInstance), i = 0; at != std::string::npos; at = best.find(kInstance), ++i) {
        best.replace(at, kInstance.size(), i < instances.size() ? instances[i] : "*");
    }
    return best;
}

std::vector<std::string> Documentation::completions(const std::string& path) const {
    const std::size_t last = path.rfind('.');
    const std::string base = last == std::string::npos ? "" : path.substr(0, last + 1);
    const std::string shape = templateOf(base);
    std::vector<std::string> found;
    for (const Json& parameter : document_->at("parameters")) {
        const std::string full = parameter.value("path", "");
        if (!full.starts_with(shape)) continue;
        const std::size_t dot = full.find('.', shape.size());
        std::string next = full.substr(shape.size(), dot == std::string::npos ? dot : dot + 1 - shape.size());
        if (next.starts_with(kInstance)) next.replace(0, kInstance.size(), "*");
        next.insert(0, base);
        if (next.starts_with(path) && std::find(found.begin(), found.end(), next) == found.end()) found.push_back(next);
    }
    return found;
}

}  // namespace quorvel::console
