// explain: what the definitions say about parameters.
#include <iostream>

#include "console/commandline/Documentation.h"
#include "console/session/Faults.h"
#include "console/terminal/Table.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

std::string textAt(const Json& parameter, const char* name) {
    const auto found = parameter.find(name);
    return found == parameter.end() || found->is_null() ? "" : textOf(*found);
}

std::string accepts(const Json& parameter) {
    if (!parameter.value("writable", false)) return "";
    const std::string text = textAt(parameter, "accepts");
    return text.empty() ? "any" : text;
}

void printOne(const Session& session, const Json& parameter) {
    const Style style = session.outStyle();
    std::cout << style.dress(textAt(parameter, "path"), Colour::kName) << '\n';
    const auto line = [&style](std::string name, const std::string& text) {
        if (text.empty()) return;
        name.resize(10, ' ');
        std::cout << "  " << style.dress(name, Colour::kHeading) << text << '\n';
    };
    line("type", textAt(parameter, "type"));
    line("access", textAt(parameter, "access"));
    line("accepts", accepts(parameter));
    line("unit", textAt(parameter, "unit"));
    line("source", textAt(parameter, "source"));
    line("remark", textAt(parameter, "remark"));
    line("getter", textAt(parameter, "getter"));
    line("setter", textAt(parameter, "setter"));
}

Table tableOf(const Json& parameters) {
    Table table({"Parameter", "Type", "Access", "Accepts", "Unit", "Source", "Remark"});
    for (const Json& parameter : parameters) {
        table.row({textAt(parameter, "path"), textAt(parameter, "type"), textAt(parameter, "access"),
                   accepts(parameter), textAt(parameter, "unit"), textAt(parameter, "source"),
                   textAt(parameter, "remark")});
    }
    return table;
}

int explain(const Session& session, const std::string& path) {
    const Documentation documentation(session.options);
    const Json found = documentation.below(path);
    if (found.empty()) {
        return reportFaults(session, {{protocol::FaultCode::kNoSuchPath, path, "the data model has no such path",
                                       documentation.nearest(path), 0, ""}});
    }
    if (session.options.json) {
        printJson({{"parameters", found}}, {});
    } else if (session.options.plain) {
        tableOf(found).printPlain(std::cout);
    } else if (found.size() == 1) {
        printOne(session, found.front());
    } else if (const Table table = tableOf(found);
               session.outStyle().columns() == 0 || table.width() <= session.outStyle().columns()) {
        table.print(std::cout, session.outStyle());
    } else {
        // Too wide for the terminal.
        for (const Json& parameter : found) {
            if (parameter != found.front()) std::cout << '\n';
            printOne(session, parameter);
        }
    }
    return kDone;
}

}  // namespace

void addExplainVerbs(VerbContext& context) {
    Session& session = context.session;
    auto path = std::make_shared<std::string>();
    CLI::App* const verb = context.add(kDataModelVerbs, "explain", "Show a parameter's type, range, unit and source",
                                       "explain Device.WiFi.Radio.2.DcsDwelltime\nexplain Device.WiFi.SSID.",
                                       [&session, path] { return explain(session, *path); });
    context
        .take(verb, ArgumentKind::kPath, "PATH", *path, "e.g. Device.WiFi.Radio.2.DcsDwelltime or Device.WiFi.SSID.")
        ->required();
}

}  // namespace quorvel::console
