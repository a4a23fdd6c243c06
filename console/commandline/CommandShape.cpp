#include "console/commandline/CommandShape.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace quorvel::console {
namespace {

// The library adds what is checked to the name of a value.
std::string valueName(const CLI::Option& option) {
    const std::string name = option.get_type_size_max() > 0 ? option.get_type_name() : "";
    return name.substr(0, name.find(':'));
}

}  // namespace

const CommandShape* CommandShape::verb(const std::string& wanted) const {
    const auto found =
        std::find_if(verbs.begin(), verbs.end(), [&wanted](const CommandShape& each) { return each.name == wanted; });
    return found == verbs.end() ? nullptr : &*found;
}

std::vector<std::string> CommandShape::verbNames() const {
    std::vector<std::string> names;
    for (const CommandShape& each : verbs)
        names.push_back(each.name);
    return names;
}

std::vector<std::string> CommandShape::optionNames() const {
    std::vector<std::string> names;
    for (const Option& option : options)
        names.push_back(option.name);
    return names;
}

CommandShape shapeOf(const CLI::App& app, const ArgumentKinds& kinds) {
    const auto kindOf = [&kinds](const CLI::Option* option) {
        const auto found = kinds.find(option);
        return found == kinds.end() ? ArgumentKind::kOther : found->second;
    };
    CommandShape shape;
    shape.name = app.get_name();
    shape.heading = app.get_group();
    shape.description = app.get_description();
    std::istringstream examples(app.get_footer());
    for (std::string line; std::getline(examples, line);)
        shape.examples.push_back(line);
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            shape.positionals.push_back({option->get_name(true), option->get_description(), option->get_required(),
                                         option->get_items_expected_max() > 1, kindOf(option)});
            continue;
        }
        for (const std::string& name : option->get_lnames())
            shape.options.push_back({"--" + name, valueName(*option), option->get_description(), kindOf(option)});
    }
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        shape.verbs.push_back(shapeOf(*verb, kinds));
    }
    return shape;
}

}  // namespace quorvel::console
