// get, set, instances, dump: the values of the data model.
#include <iostream>

#include "console/commandline/Assignment.h"
#include "console/session/Faults.h"
#include "console/session/Secrets.h"
#include "console/terminal/Table.h"
#include "console/verbs/DataModelXml.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

constexpr const char* kXmlFormat = "bbf-xml";

// Prints values as they come, or keeps them for the JSON at the end.
class ValuePrinter {
  public:
    explicit ValuePrinter(const Session& session) : session_(session), style_(session.outStyle()) {}

    void print(const std::vector<protocol::PathValue>& values) {
        for (const auto& [path, read] : values) {
            const Json value = shownValue(session_.options, path, read);
            if (session_.options.json) {
                kept_[path] = value;
            } else if (session_.options.plain) {
                std::cout << path << '\t' << textOf(value) << '\n';
            } else {
                std::cout << style_.dress(path, Colour::kName) << " => " << textOf(value) << '\n';
            }
        }
    }

    /// `more` are members of the JSON beside the values.
    void finish(const std::vector<Fault>& faults, const Json& more = Json::object()) {
        if (!session_.options.json) return;
        Json result{{"values", kept_}};
        result.update(more);
        printJson(std::move(result), faults);
    }

  private:
    const Session& session_;
    Style style_;
    Json kept_ = Json::object();
};

bool isSearch(const std::string& path) {
    return path.ends_with('.') || path.find(".*.") != std::string::npos || path.find(".[") != std::string::npos;
}

// A search goes on past what cannot be read; only a path that is wrong in itself makes it fail.
bool isFatal(const Fault& fault, const std::string& path) {
    return !isSearch(path) || fault.path.empty() || fault.path == path ||
           fault.code == protocol::FaultCode::kNoSuchPath;
}

int get(Session& session, const std::vector<std::string>& paths, unsigned maxDepth, bool strict) {
    ValuePrinter printer(session);
    std::vector<Fault> all;
    bool failed = false;
    for (const std::string& path : paths) {
        protocol::Get request;
        request.paths = {path};
        request.maxDepth = maxDepth;
        const std::vector<Fault> faults = session.ask(request, [&printer, &failed](const Part& part) {
            printer.print(part.values);
            failed = failed || part.managerLost;
        });
        printFaults(session, faults);
        for (const Fault& fault : faults)
            failed = failed || strict || isFatal(fault, path);
        all.insert(all.end(), faults.begin(), faults.end());
    }
    printer.finish(all);
    return failed ? kFailed : kDone;
}

int set(Session& session, const std::vector<std::string>& assignments, bool save) {
    protocol::Set request;
    request.save = save;
    for (const std::string& assignment : assignments) {
        const std::size_t sign = signIn(assignment);
        if (sign == std::string::npos || sign == 0) {
            throw CLI::ValidationError("\"" + assignment + "\" has no '=' behind a path; write PATH=VALUE");
        }
        const std::string path = assignment.substr(0, sign);
        request.settings.push_back({path, valueMeantBy(session, path, assignment.substr(sign + 1))});
    }
    ValuePrinter printer(session);
    Json differing = Json::object();
    const std::vector<Fault> faults = session.ask(request, [&](const Part& part) {
        printer.print(part.values);
        for (const auto& [path, value] : part.readBack)
            differing[path] = shownValue(session.options, path, value);
    });
    printFaults(session, faults);
    for (const auto& [path, value] : differing.items()) {
        std::cerr << "quorvel-wifi: warning: " << path << " was accepted but reads back as "
                  << (value.is_null() ? std::string(kMask) : value.dump()) << '\n';
    }
    printer.finish(faults, differing.empty() ? Json::object() : Json{{"readBack", differing}});
    if (faults.empty() && !save && !session.options.json && session.errorStyle().onTerminal()) {
        std::cerr << "not saved: the next power cycle forgets it (--save keeps it)\n";
    }
    return faults.empty() ? kDone : kFailed;
}

int instances(Session& session, const std::string& path) {
    std::vector<std::string> found;
    const std::vector<Fault> faults = session.ask(protocol::Instances{{path}}, [&found](const Part& part) {
        found.insert(found.end(), part.instances.begin(), part.instances.end());
    });
    if (!faults.empty()) return reportFaults(session, faults);
    if (session.options.json) {
        printJson({{"instances", found}}, {});
        return kDone;
    }
    for (const std::string& instance : found)
        std::cout << instance << '\n';
    return kDone;
}

int dumpDataModel(Session& session, const std::string& path, bool asXml) {
    std::vector<protocol::ParameterDescription> found;
    const std::vector<Fault> faults = session.ask(protocol::Describe{{path}}, [&found](const Part& part) {
        found.insert(found.end(), part.parameters.begin(), part.parameters.end());
    });
    if (!faults.empty()) return reportFaults(session, faults);
    if (asXml) {
        std::cout << dataModelXml(found);
        return kDone;
    }
    Table table({"Path", "Type", "Access"});
    Json list = Json::array();
    for (const protocol::ParameterDescription& each : found) {
        const std::string type(nameOf(each.type));
        const std::string access(nameOf(each.access));
        table.row({each.path, type, access});
        list.push_back({{"path", each.path}, {"type", type}, {"access", access}});
    }
    if (session.options.json) {
        printJson({{"parameters", list}}, {});
        return kDone;
    }
    session.options.plain ? table.printPlain(std::cout) : table.print(std::cout, session.outStyle());
    return kDone;
}

}  // namespace

void addValueVerbs(VerbContext& context) {
    Session& session = context.session;

    auto paths = std::make_shared<std::vector<std::string>>();
    auto strict = std::make_shared<bool>(false);
    auto maxDepth = std::make_shared<unsigned>(0);
    CLI::App* verb = context.add(
        kDataModelVerbs, "get", "Read parameters: full and partial paths, searches, references",
        "get Device.WiFi.Radio.2.Channel\nget Device.WiFi.Radio.*.Status\nget Device.WiFi.SSID.1. --max-depth 1\n"
        "get 'Device.WiFi.SSID.[Enable==true].SSID'\nget Device.WiFi.AccessPoint.2.SSIDReference+.SSID",
        [&session, paths, maxDepth, strict] { return get(session, *paths, *maxDepth, *strict); });
    context.take(verb, ArgumentKind::kPath, "PATH", *paths, "A parameter, or an object with a dot behind it")
        ->required();
    verb->add_option("--max-depth", *maxDepth, "Of partial paths, so many levels of objects; 1: the object's own")
        ->type_name("N")
        ->check(positive());
    verb->add_flag("--strict", *strict, "Exit with 1 when a search meets a parameter that cannot be read");

    auto assignments = std::make_shared<std::vector<std::string>>();
    auto save = std::make_shared<bool>(false);
    verb = context.add(kDataModelVerbs, "set", "Write parameters; all or, when one is refused, none",
                       "set Device.WiFi.SSID.1.SSID=Attic --save\n"
                       "set Device.WiFi.Radio.2.Channel=44 Device.WiFi.Radio.1.Channel=40\n"
                       "set Device.WiFi.AccessPoint.1.Security.KeyPassphrase=@passphrase.txt",
                       [&session, assignments, save] { return set(session, *assignments, *save); });
    context
        .take(verb, ArgumentKind::kAssignment, "PATH=VALUE", *assignments,
              "VALUE @FILE reads a file, - standard input, @@TEXT is @TEXT")
        ->required();
    verb->add_flag("--save", *save, "Make it survive a power cycle");

    auto object = std::make_shared<std::string>("Device.WiFi.");
    verb = context.add(kDataModelVerbs, "instances", "List the object instances at and below a path",
                       "instances Device.WiFi.Radio.\ninstances Device.WiFi.AccessPoint.1.",
                       [&session, object] { return instances(session, *object); });
    context.take(verb, ArgumentKind::kPath, "PATH", *object, "e.g. Device.WiFi.AccessPoint.");

    auto below = std::make_shared<std::string>("Device.");
    verb = context.add(kDataModelVerbs, "dump", "List what the plug-in's exported table has",
                       "dump datamodel\ndump datamodel Device.WiFi.Radio. --plain\ndump datamodel --format bbf-xml",
                       [] { return kDone; });
    verb->require_subcommand(1);
    CLI::App* const dataModel = verb->add_subcommand("datamodel", "Path, type and access of every parameter");
    dataModel->fallthrough();
    context.take(dataModel, ArgumentKind::kPath, "PATH", *below, "e.g. Device.WiFi.Radio.");
    auto format = std::make_shared<std::string>();
    dataModel->add_option("--format", *format, "bbf-xml: the Broadband Forum's DM XML form")
        ->type_name("FORM")
        ->check(oneOf({kXmlFormat}));
    int* const status = &context.status;
    // The outer verb's callback runs behind this one and would overwrite the status.
    verb->callback(
        [&session, below, format, status] { *status = dumpDataModel(session, *below, *format == kXmlFormat); });
}

}  // namespace quorvel::console
