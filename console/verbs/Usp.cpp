// usp status, usp trace, usp doctor: the USP agent beside the board.
#include <iostream>
#include <memory>

#include "console/commandline/Help.h"
#include "console/session/Faults.h"
#include "console/terminal/Table.h"
#include "console/verbs/Verbs.h"
#include "gateway/launch/UspAgent.h"

namespace quorvel::console {
namespace {

constexpr const char* kService = "usp";
constexpr unsigned kUsualCount = 20;

std::string noAgentText(const Session& session) {
    return "no USP agent serves this board; " + session.commandFor("up") + " --usp URL starts one";
}

std::string member(const Json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() ? "" : textOf(*found);
}

Json listOf(const Json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() || !found->is_array() ? Json::array() : *found;
}

void printSection(const Session& session, const char* title, Table& table) {
    if (session.options.plain) {
        table.printPlain(std::cout);
        return;
    }
    std::cout << title << '\n';
    table.print(std::cout, session.outStyle());
    std::cout << '\n';
}

void printStatus(const Session& session, const protocol::ServiceStatus& agent) {
    const Json& status = agent.status;
    if (!session.options.plain) {
        std::cout << "Agent " << member(status, "endpoint") << (agent.connected ? "" : " (not connected: it has ended)")
                  << "\n\n";
    }
    Table mtps({"MTP", "Protocol", "Status", "Broker", "Topic"});
    for (const Json& mtp : listOf(status, "mtps")) {
        mtps.row({member(mtp, "path"), member(mtp, "protocol"), member(mtp, "status"), member(mtp, "broker"),
                  member(mtp, "topic")});
    }
    printSection(session, "Transports", mtps);
    Table sessions({"Session", "Peer", "Endpoint"});
    for (const Json& each : listOf(status, "sessions"))
        sessions.row({member(each, "protocol"), member(each, "peer"), member(each, "endpoint")});
    printSection(session, "Sessions", sessions);
    Table controllers({"Controller", "Endpoint", "Enabled", "Reachable"});
    for (const Json& each : listOf(status, "controllers")) {
        controllers.row(
            {member(each, "path"), member(each, "endpoint"), member(each, "enabled"), member(each, "reachable")});
    }
    printSection(session, "Controllers", controllers);
    Table counters({"Counter", "Value"});
    counters.row({"subscriptions", member(status, "subscriptions")});
    const auto found = status.find("counters");
    if (found != status.end() && found->is_object()) {
        for (const auto& [name, value] : found->items())
            counters.row({name, textOf(value)});
    }
    printSection(session, "Counters", counters);
}

int showStatus(Session& session) {
    std::vector<protocol::ServiceStatus> found;
    const std::vector<Fault> faults = session.ask(protocol::ReadStatus{kService}, [&found](const Part& part) {
        found.insert(found.end(), part.status.begin(), part.status.end());
    });
    if (!faults.empty()) return reportFaults(session, faults);
    if (session.options.json) {
        printJson({{"agent", found.empty() ? Json(nullptr) : protocol::toJson(found.front())}}, {});
        return kDone;
    }
    if (found.empty()) {
        std::cout << noAgentText(session) << '\n';
        return kDone;
    }
    printStatus(session, found.front());
    return kDone;
}

// The kind of a message and what it is about, in a few words.
std::string summaryOf(const Json& entry) {
    const auto message = entry.find("message");
    if (message == entry.end() || !message->is_object()) {
        const auto record = entry.find("record");
        if (record == entry.end() || !record->is_object()) return "";
        for (const char* kind : {"mqtt_connect", "websocket_connect", "disconnect", "session_context"}) {
            if (record->contains(kind)) return kind;
        }
        return "";
    }
    const Json header = message->value("header", Json::object());
    const std::string type = member(header, "msg_type");
    return (type.empty() ? "ERROR" : type) + " " + member(header, "msg_id");  // the first of the types is left out
}

void printEntry(const Session& session, const protocol::TraceEntry& traced) {
    const Json& entry = traced.entry;
    const bool sent = member(entry, "direction") == "sent";
    const std::string place = member(entry, "topic").empty() ? member(entry, "peer") : member(entry, "topic");
    const std::string peer = sent ? member(entry, "to") : member(entry, "from");
    if (session.options.plain) {
        std::cout << traced.number << '\t' << member(entry, "time") << '\t' << member(entry, "direction") << '\t'
                  << member(entry, "protocol") << '\t' << place << '\t' << peer << '\t' << summaryOf(entry) << '\t'
                  << member(entry, "dropped") << '\n';
        return;
    }
    std::cout << member(entry, "time") << (sent ? " -> " : " <- ") << member(entry, "protocol") << ' ' << place << "  "
              << peer << "  " << summaryOf(entry) << '\n';
    if (!member(entry, "dropped").empty()) std::cout << "    dropped: " << member(entry, "dropped") << '\n';
    const auto message = entry.find("message");
    if (message == entry.end() || !message->is_object() || !message->contains("body")) return;
    const std::string body = message->at("body").dump(2, ' ', false, Json::error_handler_t::replace);
    std::string indented = "    ";
    for (const char letter : body) {
        indented += letter;
        if (letter == '\n') indented += "    ";
    }
    std::cout << indented << '\n';
}

int showTrace(Session& session, unsigned count) {
    std::vector<protocol::TraceEntry> entries;
    protocol::ReadTrace request;
    request.service = kService;
    request.count = count;
    const std::vector<Fault> faults = session.ask(
        request, [&entries](const Part& part) { entries.insert(entries.end(), part.trace.begin(), part.trace.end()); });
    if (!faults.empty()) return reportFaults(session, faults);
    if (session.options.json) {
        Json list = Json::array();
        for (const protocol::TraceEntry& entry : entries)
            list.push_back(protocol::toJson(entry));
        printJson({{"trace", list}}, {});
        return kDone;
    }
    for (const protocol::TraceEntry& entry : entries)
        printEntry(session, entry);
    if (entries.empty() && !session.options.plain) std::cout << "no Record has been sent or received\n";
    return kDone;
}

int examine(Session& session, unsigned seconds) {
    std::vector<std::string> words = {"doctor", "--state", launch::stateFolder(session.options), "--seconds",
                                      std::to_string(seconds)};
    if (session.options.json) words.emplace_back("--json");
    return launch::runUspProgram(session.options, words);
}

}  // namespace

void addUspVerbs(VerbContext& context) {
    Session& session = context.session;
    CLI::App* const verb = context.add(kBoardVerbs, "usp", "Look at the USP agent that serves a board",
                                       "usp status\nusp trace --count 5", [] { return kDone; });
    verb->require_subcommand(1);
    CLI::App* const status = verb->add_subcommand("status", "Transports, sessions, controllers and counters");
    status->fallthrough();
    auto count = std::make_shared<unsigned>(kUsualCount);
    CLI::App* const trace = verb->add_subcommand("trace", "The latest Records and Messages, decoded; secrets hidden");
    trace->fallthrough();
    trace->add_option("--count", *count, "So many of the latest")->type_name("N")->check(positive());
    auto seconds = std::make_shared<unsigned>(5);
    CLI::App* const doctor = verb->add_subcommand("doctor", "Find out why controller and agent do not hear each other");
    doctor->fallthrough();
    doctor->add_option("--seconds", *seconds, "How long to listen for the controller")
        ->type_name("N")
        ->check(positive());
    int* const result = &context.status;
    // The outer verb's callback runs behind those of its subcommands and would overwrite the status.
    verb->callback([&session, status, trace, count, seconds, result] {
        if (status->parsed()) {
            *result = showStatus(session);
        } else if (trace->parsed()) {
            *result = showTrace(session, *count);
        } else {
            *result = examine(session, *seconds);
        }
    });
}

}  // namespace quorvel::console
