// snapshot, security: whole objects.
#include <array>
#include <iostream>

#include "console/session/Faults.h"
#include "console/session/Secrets.h"
#include "console/terminal/Table.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

constexpr std::size_t kRowBytes = 16;

unsigned byteAt(const std::string& hex, std::size_t index) {
    return static_cast<unsigned>(std::stoul(hex.substr(2 * index, 2), nullptr, 16));
}

void printHex(const std::string& hex, std::ostream& out) {
    const std::size_t size = hex.size() / 2;
    for (std::size_t row = 0; row < size; row += kRowBytes) {
        std::array<char, 24> offset{};
        (void)std::snprintf(offset.data(), offset.size(), "%06zx ", row);
        std::string line = offset.data();
        std::string text;
        for (std::size_t i = row; i < row + kRowBytes; ++i) {
            if (i >= size) {
                line += "   ";
                continue;
            }
            const unsigned byte = byteAt(hex, i);
            line += " " + hex.substr(2 * i, 2);
            text += byte >= 0x20 && byte < 0x7f ? static_cast<char>(byte) : '.';
        }
        out << line << "  " << text << '\n';
    }
}

// Blots the bytes of secret fields out of the dump.
void maskHex(protocol::Snapshot& taken) {
    for (const protocol::SnapshotField& field : taken.fields) {
        if (!isSecret(field.path)) continue;
        const std::size_t begin = std::size_t{2} * field.offset;
        const std::size_t count = std::size_t{2} * field.size;
        if (begin + count <= taken.hex.size()) taken.hex.replace(begin, count, count, '0');
    }
}

int snapshot(Session& session, const std::string& path, bool hex) {
    protocol::Snapshot taken;
    const std::vector<Fault> faults = session.ask(protocol::TakeSnapshot{path}, [&taken](const Part& part) {
        if (part.snapshot) taken = *part.snapshot;
    });
    if (!faults.empty()) return reportFaults(session, faults);
    if (!session.options.reveal) maskHex(taken);
    for (protocol::SnapshotField& field : taken.fields)
        field.value = shownValue(session.options, field.path, field.value);
    if (session.options.json) {
        Json shown = protocol::toJson(taken);
        if (!hex) shown.erase("hex");
        printJson({{"snapshot", shown}}, {});
        return kDone;
    }
    if (hex) {
        printHex(taken.hex, std::cout);
        return kDone;
    }
    Table table({"Offset", "Bytes", "Parameter", "Value"});
    for (const protocol::SnapshotField& field : taken.fields) {
        table.row({std::to_string(field.offset), std::to_string(field.size), field.path,
                   field.value.is_null() ? "(measurement)" : textOf(field.value)});
    }
    if (session.options.plain) {
        table.printPlain(std::cout);
        return kDone;
    }
    std::cout << taken.path << "  " << taken.size << " bytes\n";
    table.print(std::cout, session.outStyle());
    if (table.empty()) std::cout << "  the layout of this object is not known; --hex shows the bytes\n";
    return kDone;
}

int security(Session& session, unsigned accessPoint) {
    const std::string base = "Device.WiFi.AccessPoint." + std::to_string(accessPoint) + ".Security.";
    std::vector<Fault> faults;
    const Readings readings = readPaths(session, {base}, &faults);
    if (!faults.empty()) return reportFaults(session, faults);
    Json kept = Json::object();
    Table table({"Security of access point " + std::to_string(accessPoint), ""});
    for (const auto& [path, value] : readings.all()) {
        const std::string name = path.substr(base.size());
        const Json shown = shownValue(session.options, path, value);
        kept[name] = shown;
        table.row({name, textOf(shown)});
    }
    if (session.options.json) {
        printJson({{"accessPoint", accessPoint}, {"security", kept}}, {});
        return kDone;
    }
    session.options.plain ? table.printPlain(std::cout) : table.print(std::cout, session.outStyle());
    return kDone;
}

}  // namespace

void addObjectVerbs(VerbContext& context) {
    Session& session = context.session;
    auto path = std::make_shared<std::string>();
    auto hex = std::make_shared<bool>(false);
    CLI::App* verb =
        context.add(kDataModelVerbs, "snapshot", "Take one object instance as a whole, as it lies in memory",
                    "snapshot Device.WiFi.SSID.1.\nsnapshot Device.WiFi.Radio.1. --hex",
                    [&session, path, hex] { return snapshot(session, *path, *hex); });
    context.take(verb, ArgumentKind::kPath, "PATH", *path, "e.g. Device.WiFi.SSID.1.")->required();
    verb->add_flag("--hex", *hex, "Show the bytes of the object's context");

    auto accessPoint = std::make_shared<unsigned>(0);
    verb = context.add(kDataModelVerbs, "security", "Show an access point's security, secrets hidden",
                       "security 1\nsecurity 1 --reveal",
                       [&session, accessPoint] { return security(session, *accessPoint); });
    context.take(verb, ArgumentKind::kAccessPoint, "AP", *accessPoint, "Access-point instance")->required();
}

}  // namespace quorvel::console
