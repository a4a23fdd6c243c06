#include "console/commandline/Completion.h"

#include <algorithm>
#include <filesystem>

#include "console/commandline/Assignment.h"
#include "console/commandline/Documentation.h"
#include "gateway/launch/Shipped.h"

namespace quorvel::console {
namespace {

using Candidates = std::vector<std::string>;

// A longer range is not listed number by number.
constexpr long kMostNumbers = 32;

// Parameters whose sibling lists what they can be.
struct Choice {
    std::string_view parameter;
    std::string_view list;
};
constexpr Choice kChoices[] = {{"ModeEnabled", "ModesSupported"},
                               {"ConfigMethodsEnabled", "ConfigMethodsSupported"},
                               {"OperatingFrequencyBand", "SupportedFrequencyBands"},
                               {"OperatingStandards", "SupportedStandards"},
                               {"Channel", "PossibleChannels"}};

class Completer {
  public:
    Completer(Session& session, const CommandShape& program, const std::vector<std::string>& words)
        : session_(session), program_(program), words_(words) {}

    Candidates run() {
        const CommandShape* verb = &program_;
        for (std::size_t i = 0; i + 1 < words_.size(); ++i) {
            const std::string& word = words_[i];
            if (word.starts_with('-') && word.size() > 1) {
                const CommandShape::Option* const option = optionOf(*verb, word);
                if (option == nullptr || option->value.empty()) continue;
                if (++i + 1 == words_.size()) return values(option->kind, current());
                continue;
            }
            if (const CommandShape* const inner = verb->verb(word); inner != nullptr && given_.empty()) {
                verb = inner;
            } else {
                given_.push_back(word);
            }
        }
        if (current().starts_with('-') && current().size() > 1) return options(*verb);
        if (!verb->verbs.empty() && given_.empty()) return fitting(verb->verbNames(), current());
        if (verb->positionals.empty()) return {};
        const std::size_t last = verb->positionals.size() - 1;
        if (given_.size() > last && !verb->positionals[last].many) return {};
        return values(verb->positionals[std::min(given_.size(), last)].kind, current());
    }

  private:
    [[nodiscard]] const std::string& current() const {
        return words_.back();
    }

    [[nodiscard]] static Candidates fitting(const Candidates& all, const std::string& begun) {
        Candidates found;
        std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                     [&begun](const std::string& each) { return each.starts_with(begun); });
        return found;
    }
    [[nodiscard]] Candidates fitting(const Candidates& all) const {
        return fitting(all, current());
    }

    [[nodiscard]] const CommandShape::Option* optionOf(const CommandShape& verb, const std::string& name) const {
        for (const CommandShape* shape : {&verb, &program_}) {
            for (const CommandShape::Option& option : shape->options) {
                if (option.name == name) return &option;
            }
        }
        return nullptr;
    }

    [[nodiscard]] Candidates options(const CommandShape& verb) {
        if (const std::size_t sign = current().find('='); sign != std::string::npos) {
            const CommandShape::Option* const option = optionOf(verb, current().substr(0, sign));
            Candidates all = option == nullptr ? Candidates{} : values(option->kind, current().substr(sign + 1));
            for (std::string& value : all)
                value.insert(0, current().substr(0, sign + 1));
            return all;
        }
        Candidates all = verb.optionNames();
        for (const std::string& name : program_.optionNames()) {
            if (std::find(all.begin(), all.end(), name) == all.end()) all.push_back(name);
        }
        // No verb takes --version: "version" is a verb of its own.
        if (&verb != &program_) std::erase(all, "--version");
        return fitting(all);
    }

    // Files, folders with a slash behind them; hidden ones only when they are asked for.
    [[nodiscard]] static Candidates filesAt(const std::string& begun, bool foldersOnly = false) {
        const std::size_t slash = begun.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : begun.substr(0, slash + 1);
        const std::string name = begun.substr(folder.size());
        Candidates found;
        std::error_code ignored;
        for (const auto& file : std::filesystem::directory_iterator(folder.empty() ? "." : folder, ignored)) {
            const std::string candidate = file.path().filename();
            if (!candidate.starts_with(name) || (candidate.starts_with('.') && name.empty())) continue;
            const bool isFolder = file.is_directory(ignored);
            if (isFolder || !foldersOnly) found.push_back(folder + candidate + (isFolder ? "/" : ""));
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    [[nodiscard]] Candidates helpWords() const {
        const CommandShape* verb = &program_;
        for (const std::string& word : given_)
            verb = verb == nullptr ? nullptr : verb->verb(word);
        return verb == nullptr ? Candidates{} : fitting(verb->verbNames());
    }

    [[nodiscard]] Candidates values(ArgumentKind kind, const std::string& begun) {
        switch (kind) {
            case ArgumentKind::kOther:
                return {};
            case ArgumentKind::kAccessPoint:
                return fitting(instancesOf("Device.WiFi.AccessPoint."), begun);
            case ArgumentKind::kAssignment:
                return assignments(begun);
            case ArgumentKind::kBoard:
                return shippedOrFiles("boards", begun);
            case ArgumentKind::kChannel:
                return fitting(channelsOf("Device.WiFi.Radio." + given_.front() + "."), begun);
            case ArgumentKind::kFile:
                return filesAt(begun);
            case ArgumentKind::kFolder:
                return filesAt(begun, true);
            case ArgumentKind::kLogLevel:
                return fitting({"0", "1", "2", "3"}, begun);
            case ArgumentKind::kMac:
                return fitting(stations(), begun);
            case ArgumentKind::kPath:
                return paths(begun);
            case ArgumentKind::kRadio:
                return fitting(instancesOf("Device.WiFi.Radio."), begun);
            case ArgumentKind::kRadioOrPath:
                return radiosOrPaths(begun);
            case ArgumentKind::kSandbox:
                return fitting({"folder", "namespaces"}, begun);
            case ArgumentKind::kScenario:
                return shippedOrFiles("scenarios", begun);
            case ArgumentKind::kVerb:
                return helpWords();
            case ArgumentKind::kWpsAction:
                return fitting({"push", "pin", "cancel"}, begun);
        }
        return {};
    }

    // Names of shipped files; when none fits, files.
    [[nodiscard]] Candidates shippedOrFiles(const char* folder, const std::string& begun) const {
        Candidates found = fitting(launch::shippedNames(session_.options, folder), begun);
        return found.empty() ? filesAt(begun) : found;
    }

    [[nodiscard]] Candidates radiosOrPaths(const std::string& begun) {
        Candidates found = paths(begun);
        const Candidates radios = begun.empty() ? instancesOf("Device.WiFi.Radio.") : Candidates{};
        found.insert(found.end(), radios.begin(), radios.end());
        return found;
    }

    [[nodiscard]] Candidates assignments(const std::string& begun) {
        if (signIn(begun) != std::string::npos) return parameterValues();
        Candidates found = paths(begun);
        for (std::string& path : found) {
            if (!path.ends_with('.')) path += '=';
        }
        return found;
    }

    [[nodiscard]] bool boardIsThere() const {
        return session_.hasGateway() || Gateway::findRunning(session_.options) != nullptr;
    }

    [[nodiscard]] Candidates paths(const std::string& begun) {
        Candidates found;
        try {
            if (!boardIsThere()) return Documentation(session_.options).completions(begun);
            (void)session_.gateway().client().ask(protocol::Complete{begun}, [&found](const Part& part) {
                found.insert(found.end(), part.completions.begin(), part.completions.end());
            });
        } catch (const GatewayError&) {
            found.clear();  // the command itself says what is wrong
        }
        return found;
    }

    // Returns the instances of an object as bare numbers.
    [[nodiscard]] Candidates instancesOf(const std::string& object) {
        Candidates all;
        for (const std::string& path : paths(object)) {
            std::string number = path.substr(object.size(), path.size() - object.size() - 1);
            if (number != "*") all.push_back(std::move(number));
        }
        return all;
    }

    [[nodiscard]] Candidates stations() {
        Candidates all;
        if (!boardIsThere()) return all;
        try {
            (void)session_.gateway().client().ask(
                protocol::Control{{{"op", "station.list"}}}, [&all](const Part& part) {
                    const auto answer = part.control ? protocol::readSimulationAnswer(*part.control) : std::nullopt;
                    if (!answer) return;
                    for (const protocol::StationState& station : answer->stations)
                        all.push_back(station.mac);
                });
        } catch (const GatewayError&) {
            all.clear();  // the command itself says what is wrong
        }
        return all;
    }

    [[nodiscard]] Candidates channelsOf(const std::string& radio) {
        if (!boardIsThere()) return {};
        try {
            const std::string list = radio + "PossibleChannels";
            return elements(readPaths(session_, {list}, nullptr).text(list));
        } catch (const GatewayError&) {
            return {};  // the command itself says what is wrong
        }
    }

    [[nodiscard]] Candidates parameterValues() {
        const std::size_t sign = signIn(current());
        const std::string path = current().substr(0, sign);
        Candidates all;
        try {
            all = valuesOf(path);
        } catch (const GatewayError&) {
            return {};  // the command itself says what is wrong
        }
        for (std::string& value : all)
            value.insert(0, path + "=");
        return fitting(all);
    }

    [[nodiscard]] Candidates valuesOf(const std::string& path) {
        const Json parameter = Documentation(session_.options).find(path);
        if (parameter.is_null()) return {};
        if (parameter.value("type", "") == "boolean") return {"true", "false"};
        if (parameter.value("name", "") == "SSIDReference") {
            Candidates all;
            for (const std::string& number : instancesOf("Device.WiFi.SSID."))
                all.push_back("Device.WiFi.SSID." + number + ".");
            return all;
        }
        if (const Json range = parameter.value("range", Json(nullptr)); range.is_array()) {
            const long low = range.at(0).get<long>();
            const long high = range.at(1).get<long>();
            Candidates all;
            for (long number = low; high - low <= kMostNumbers && number <= high; ++number)
                all.push_back(std::to_string(number));
            return all;
        }
        const auto* const choice =
            std::find_if(std::begin(kChoices), std::end(kChoices),
                         [&parameter](const Choice& each) { return parameter.value("name", "") == each.parameter; });
        if (choice == std::end(kChoices) || !boardIsThere()) return {};
        const std::string list = path.substr(0, path.rfind('.') + 1) + std::string(choice->list);
        return elements(readPaths(session_, {list}, nullptr).text(list));
    }

    static Candidates elements(const std::string& list) {
        Candidates all;
        for (std::size_t begin = 0; begin < list.size();) {
            const std::size_t end = std::min(list.find_first_of(", ", begin), list.size());
            if (end > begin) all.push_back(list.substr(begin, end - begin));
            begin = end + 1;
        }
        return all;
    }

    Session& session_;
    const CommandShape& program_;
    const std::vector<std::string>& words_;
    std::vector<std::string> given_;  // arguments in front of the current word
};

}  // namespace

std::vector<std::string> complete(Session& session, const CommandShape& program,
                                  const std::vector<std::string>& words) {
    return words.empty() ? Candidates{} : Completer(session, program, words).run();
}

}  // namespace quorvel::console
