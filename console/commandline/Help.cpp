#include "console/commandline/Help.h"

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "console/session/ProgramName.h"
#include "console/terminal/Table.h"

namespace quorvel::console {

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t kVerbWidth = 13;

// Two columns; what is too wide for the first has the second on the next line.
std::string row(const std::string& left, const std::string& right, std::size_t width) {
    std::string line = "  " + left;
    if (left.size() + 1 < width) {
        line.resize(width + 2, ' ');
    } else {
        line += "\n" + std::string(width + 2, ' ');
    }
    return line + right + "\n";
}

std::string optionText(const CommandShape::Option& option) {
    return option.name + (option.value.empty() ? "" : " " + option.value);
}

std::string usageOf(const CommandShape& verb) {
    std::string text;
    if (!verb.verbs.empty()) {
        std::string choice;
        for (const std::string& name : verb.verbNames())
            choice += (choice.empty() ? "" : "|") + name;
        text += " " + choice + " ...";
    }
    for (const CommandShape::Positional& positional : verb.positionals) {
        const std::string name = positional.name + (positional.many ? "..." : "");
        text += positional.required ? " " + name : " [" + name + "]";
    }
    for (const CommandShape::Option& option : verb.options) {
        if (option.name != "--help") text += " [" + optionText(option) + "]";
    }
    return text;
}

std::string optionRows(const CommandShape& shape) {
    std::size_t width = 0;
    for (const CommandShape::Option& option : shape.options) {
        if (option.name != "--help") width = std::max(width, optionText(option).size() + 2);
    }
    for (const CommandShape::Positional& positional : shape.positionals)
        width = std::max(width, positional.name.size() + 2);
    std::string text;
    for (const CommandShape::Positional& positional : shape.positionals)
        text += row(positional.name, positional.description, width);
    for (const CommandShape::Option& option : shape.options) {
        if (option.name != "--help") text += row(optionText(option), option.description, width);
    }
    return text;
}

std::string inFront(bool inShell) {
    const std::string name = programName(inShell);
    return name.empty() ? "" : name + " ";
}

}  // namespace

std::string programHelp(const CommandShape& program, const Style& style, bool inShell) {
    std::string text;
    if (!inShell) {
        text = program.description + "\n\nUsage: " + programName() + " [OPTIONS] VERB [ARGUMENTS]\n";
    }
    for (const char* heading : {kDataModelVerbs, kAirVerbs, kBoardVerbs, kManyVerbs}) {
        text += (text.empty() ? "" : "\n") + style.dress(heading, Colour::kHeading) + "\n";
        for (const CommandShape& verb : program.verbs) {
            if (verb.heading == heading) text += row(verb.name, verb.description, kVerbWidth);
        }
    }
    if (inShell) return text + row("exit", "End the shell", kVerbWidth) + "\nhelp VERB shows a verb with examples.\n";
    text += "\n" + style.dress("Options of every verb", Colour::kHeading) + "\n" + optionRows(program);
    return text + "\n" + programName() + " help VERB  shows a verb, with examples\n" + programName() +
           " demo       shows the gateway\n";
}

std::string verbHelp(const CommandShape& program, const std::vector<std::string>& words, const Style& style,
                     bool inShell) {
    const CommandShape* verb = &program;
    std::vector<std::string> examples;
    std::string name;
    for (const std::string& word : words) {
        const CommandShape* const inner = verb->verb(word);
        if (inner == nullptr) break;
        verb = inner;
        name += (name.empty() ? "" : " ") + word;
        if (!verb->examples.empty()) examples = verb->examples;
    }
    std::string text = verb->description + "\n\nUsage: " + inFront(inShell) + name + usageOf(*verb) + "\n\n";
    for (const CommandShape& inner : verb->verbs)
        text += row(inner.name + usageOf(inner), inner.description, 2 * kVerbWidth + 6);
    text += optionRows(*verb);
    // An example of another of the verb's verbs would only confuse.
    std::erase_if(examples, [&name](const std::string& example) { return !example.starts_with(name); });
    if (!text.ends_with("\n\n")) text += "\n";
    if (!examples.empty()) text += style.dress("Examples", Colour::kHeading) + "\n";
    for (const std::string& example : examples)
        text += "  " + inFront(inShell) + example + "\n";
    if (!inShell)
        text += "\nOptions that every verb takes (--json, --plain, --board ...): " + programName() + " --help\n";
    return text;
}

Json shapeAsJson(const CommandShape& shape) {
    Json json{{"name", shape.name}, {"description", shape.description}};
    if (!shape.heading.empty()) json["heading"] = shape.heading;
    json["arguments"] = Json::array();
    for (const CommandShape::Positional& each : shape.positionals) {
        json["arguments"].push_back(
            {{"name", each.name}, {"description", each.description}, {"required", each.required}, {"many", each.many}});
    }
    json["options"] = Json::array();
    for (const CommandShape::Option& each : shape.options) {
        json["options"].push_back({{"name", each.name},
                                   {"value", each.value.empty() ? Json(nullptr) : Json(each.value)},
                                   {"description", each.description}});
    }
    json["examples"] = shape.examples;
    json["verbs"] = Json::array();
    for (const CommandShape& verb : shape.verbs)
        json["verbs"].push_back(shapeAsJson(verb));
    return json;
}

}  // namespace quorvel::console
