#include "Completion.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "Dispatcher.h"
#include "Documentation.h"

namespace quorvel::console {
namespace {

using Candidates = std::vector<std::string>;

// A range that is longer than this is no choice.
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
    Completer(Session& session, const std::vector<std::string>& words) : session_(session), words_(words) {}

    Candidates run() {
        const VerbShape program = commandShape();
        const VerbShape* verb = &program;
        std::size_t positional = 0;
        for (std::size_t i = 0; i + 1 < words_.size(); ++i) {
            const std::string& word = words_[i];
            if (word.starts_with('-')) {
                if (takesValue(program, *verb, word)) ++i;
                if (i + 1 == words_.size()) return optionValues(word);
                continue;
            }
            const auto found = std::find_if(verb->verbs.begin(), verb->verbs.end(),
                                            [&word](const VerbShape& each) { return each.name == word; });
            if (found != verb->verbs.end()) {
                verb = &*found;
            } else {
                ++positional;
            }
        }
        if (current().starts_with('-')) return options(program, *verb);
        if (!verb->verbs.empty() && positional == 0) return names(verb->verbs);
        if (verb->positionals.empty()) return {};
        return values(*verb, verb->positionals[std::min(positional, verb->positionals.size() - 1)], positional);
    }

  private:
    [[nodiscard]] const std::string& current() const {
        return words_.back();
    }

    [[nodiscard]] Candidates fitting(const Candidates& all) const {
        Candidates found;
        std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                     [this](const std::string& each) { return each.starts_with(current()); });
        return found;
    }

    static bool takesValue(const VerbShape& program, const VerbShape& verb, const std::string& word) {
        for (const VerbShape* shape : {&program, &verb}) {
            for (const VerbShape::Option& option : shape->options) {
                if (option.name == word) return !option.value.empty();
            }
        }
        return false;
    }

    [[nodiscard]] Candidates names(const std::vector<VerbShape>& verbs) const {
        Candidates all;
        for (const VerbShape& verb : verbs)
            all.push_back(verb.name);
        return fitting(all);
    }

    [[nodiscard]] Candidates options(const VerbShape& program, const VerbShape& verb) const {
        Candidates all;
        for (const VerbShape* shape : {&verb, &program}) {
            for (const VerbShape::Option& option : shape->options) {
                if (std::find(all.begin(), all.end(), option.name) == all.end()) all.push_back(option.name);
            }
        }
        return fitting(all);
    }

    [[nodiscard]] Candidates optionValues(const std::string& option) const {
        if (option == "--log-level" || option == "--level") return fitting({"0", "1", "2", "3"});
        if (option != "--board") return {};
        Candidates boards;
        std::error_code ignored;
        for (const auto& file :
             std::filesystem::directory_iterator(programFolder(session_.options) + "/boards", ignored))
            boards.push_back(file.path().stem().string());
        std::sort(boards.begin(), boards.end());
        return fitting(boards);
    }

    [[nodiscard]] Candidates values(const VerbShape& verb, const std::string& positional, std::size_t index) {
        if (positional == "ACTION") return fitting({"push", "pin", "cancel"});
        if (positional == "RADIO") return index == 0 ? fitting(instancesOf("Device.WiFi.Radio.")) : Candidates{};
        if (positional == "AP" && (index == 0) == (verb.positionals.front() == "AP")) {
            return fitting(instancesOf("Device.WiFi.AccessPoint."));
        }
        if (positional == "PATH=VALUE" && current().find('=') != std::string::npos) return parameterValues();
        if (positional.find("PATH") == std::string::npos) return {};
        Candidates found = paths(current());
        if (positional != "PATH=VALUE") return found;
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
            session_.gateway().client().ask({{"do", "complete"}, {"path", begun}}, [&found](const Json& part) {
                if (part.contains("completions")) found = part.at("completions").get<Candidates>();
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

    [[nodiscard]] Candidates parameterValues() {
        const std::size_t sign = current().find('=');
        const std::string path = current().substr(0, sign);
        Candidates all;
        try {
            all = valuesOf(path);
        } catch (const GatewayError&) {
            return {};  // likewise
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
    const std::vector<std::string>& words_;
};

}  // namespace

std::vector<std::string> complete(Session& session, const std::vector<std::string>& words) {
    return words.empty() ? Candidates{} : Completer(session, words).run();
}

int printCompletions(Session& session, const std::vector<std::string>& words) {
    for (std::size_t i = 0; i + 2 < words.size(); ++i) {
        if (words[i] == "--board") session.options.board = words[i + 1];
        if (words[i] == "--state") session.options.state = words[i + 1];
        if (words[i] == "--programs") session.options.programs = words[i + 1];
    }
    for (const std::string& candidate : complete(session, words))
        std::cout << candidate << '\n';
    return kDone;
}

}  // namespace quorvel::console
