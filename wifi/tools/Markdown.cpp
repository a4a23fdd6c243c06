#include "wifi/tools/Documents.h"
#include "wifi/tools/Wording.h"

namespace quorvel::model {
namespace {

constexpr std::string_view kIntroduction =
    "<!-- Generated from the definitions in wifi/*.def; after a change there run script/data-model. -->\n"
    "# Data model\n"
    "\n"
    "What the plug-in serves below `Device.WiFi.`, object by object in the order of the exported table. The columns:\n"
    "\n"
    "- *Type*: a string's number is the most characters it holds. A text read needs a buffer of at least that many "
    "bytes.\n"
    "- *Access*: a write is staged in the object's context and takes effect when the context is applied, unless it is "
    "said\n"
    "  to act at once.\n"
    "- *Range*: what a write accepts; anything else is refused with result 8.\n"
    "- *Source*: the WLAN manager's variable and how its text is converted, or what else the value is read from. A "
    "row\n"
    "  without a source is present so that the object is complete: reads succeed and leave the value, writes are "
    "dropped\n"
    "  unless the remark says otherwise.\n"
    "\n"
    "`explain PATH` of the console shows one row; `data-model.json` holds the same rows for programs.\n";

std::string cell(std::string_view text) {
    if (text.empty()) return "–";
    std::string escaped;
    for (const char each : text) {
        if (each == '|') escaped += '\\';
        escaped += each;
    }
    return escaped;
}

std::string objectLink(const Object& object) {
    return "| [`Device." + std::string(object.path) + ".`](#" + std::to_string(object.index) + "-" +
           std::string(object.prefix) + ") | " + std::to_string(parametersOf(object.index).size()) + " | `" +
           std::string(object.prefix) + "` | " + std::to_string(kContextSizes[object.index]) + " |\n";
}

std::string row(const Parameter& parameter) {
    return "| `" + std::string(parameter.name) + "` | " + typeText(parameter.type) + " | " +
           std::string(accessText(parameter.access)) + " | " + cell(rangeText(parameter)) + " | " +
           cell(parameter.unit) + " | " + cell(sourceText(parameter)) + " | " + cell(parameter.remark) + " |\n";
}

}  // namespace

std::string markdown() {
    std::string text(kIntroduction);
    text += "\n## Objects\n\n| Object | Parameters | Functions | Context, bytes |\n|---|---|---|---|\n";
    for (const Object& object : kObjects)
        text += objectLink(object);
    for (const Object& object : kObjects) {
        const std::string number = std::to_string(object.index);
        text +=
            "\n<a id=\"" + number + "-" + std::string(object.prefix) + "\"></a>\n## `Device." +
            std::string(object.path) +
            ".`\n\n| Parameter | Type | Access | Range | Unit | Source | Remarks |\n|---|---|---|---|---|---|---|\n";
        for (const Parameter& parameter : parametersOf(object.index))
            text += row(parameter);
    }
    return text;
}

}  // namespace quorvel::model
