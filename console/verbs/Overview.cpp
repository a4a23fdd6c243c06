// overview, demo: the gateway on one screen, and the way from a value to the device and back.
#include <iostream>

#include "console/session/Faults.h"
#include "console/session/ProgramName.h"
#include "console/terminal/Table.h"
#include "console/terminal/Units.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

std::string instancePath(const char* object, unsigned instance) {
    return std::string("Device.WiFi.") + object + "." + std::to_string(instance) + ".";
}

unsigned numberAt(const Readings& readings, const std::string& path) {
    const Json value = readings.at(path);
    return value.is_number_unsigned() ? value.get<unsigned>() : 0;
}

protocol::BoardFacts boardOf(Session& session, std::vector<Fault>& faults) {
    protocol::BoardFacts board;
    faults = session.ask(protocol::ReadBoard{}, [&board](const Part& part) {
        if (part.board) board = *part.board;
    });
    return board;
}

std::string taskText(const protocol::Task& task) {
    return task.name + " " + task.state;
}

std::string textOrDash(const Json& value) {
    return value.is_null() ? "-" : textOf(value);
}

void printBoard(const Session& session, const protocol::BoardFacts& board) {
    const Style style = session.outStyle();
    std::string chips;
    for (const Json& chip : board.chips) {
        chips += (chips.empty() ? "" : ", ") + textOf(chip);
    }
    std::string tasks;
    for (const protocol::Task& task : board.tasks)
        tasks += (tasks.empty() ? "" : ", ") + taskText(task);
    std::cout << style.dress("Board", Colour::kHeading) << "    " << textOrDash(board.name) << " ("
              << textOrDash(board.identifier) << "), Wi-Fi chips found: " << board.chipsFound.value_or("-")
              << (chips.empty() ? "" : " of " + chips) << '\n'
              << style.dress("Drivers", Colour::kHeading) << "  " << tasks << '\n'
              << style.dress("Daemon", Colour::kHeading) << "   " << taskText(board.manager) << '\n';
}

void printRadios(const Session& session, const Readings& readings) {
    Table table({"Radio", "Name", "Band", "Channel", "MHz", "Status", "Up-time"});
    const unsigned radios = numberAt(readings, "Device.WiFi.RadioNumberOfEntries");
    for (unsigned i = 1; i <= radios; ++i) {
        const std::string path = instancePath("Radio", i);
        const Json upTime = readings.at(path + "UpTime");
        table.row({std::to_string(i), readings.text(path + "Name"),
                   bandText(readings.text(path + "OperatingFrequencyBand")), readings.text(path + "Channel"),
                   bandwidthText(readings.at(path + "OperatingChannelBandwidth")), readings.text(path + "Status"),
                   upTime.is_number_unsigned() ? duration(upTime.get<std::uint64_t>()) : "-"});
    }
    table.print(std::cout, session.outStyle());
}

void printNetworks(const Session& session, const Readings& readings) {
    Table table({"SSID", "Name", "Network", "BSSID", "Status", "Stations"});
    unsigned off = 0;
    const unsigned networks = numberAt(readings, "Device.WiFi.SSIDNumberOfEntries");
    for (unsigned i = 1; i <= networks; ++i) {
        const std::string path = instancePath("SSID", i);
        if (readings.at(path + "Enable") != Json(true)) {
            ++off;
            continue;
        }
        table.row({std::to_string(i), readings.text(path + "Name"), readings.text(path + "SSID"),
                   readings.text(path + "BSSID"), readings.text(path + "Status"),
                   readings.text(instancePath("AccessPoint", i) + "AssociatedDeviceNumberOfEntries")});
    }
    table.print(std::cout, session.outStyle());
    if (off > 0) std::cout << "  and " << off << " more that are disabled\n";
}

void printStations(const Session& session, const Readings& readings) {
    Table table({"AP", "Station", "RSSI", "Signal", "Down Mb/s", "Up Mb/s", "Standard"});
    const unsigned accessPoints = numberAt(readings, "Device.WiFi.AccessPointNumberOfEntries");
    for (unsigned i = 1; i <= accessPoints; ++i) {
        const std::string path = instancePath("AccessPoint", i);
        const unsigned stations = numberAt(readings, path + "AssociatedDeviceNumberOfEntries");
        for (unsigned j = 1; j <= stations; ++j) {
            const std::string station = path + "AssociatedDevice." + std::to_string(j) + ".";
            const Json rssi = readings.at(station + "SignalStrength");
            if (!rssi.is_number()) continue;
            table.row({std::to_string(i), readings.text(station + "MACAddress"), textOf(rssi),
                       signalBar(rssi.get<int>()), megabits(readings.at(station + "LastDataDownlinkRate")),
                       megabits(readings.at(station + "LastDataUplinkRate")), readings.text(station + "OperStandard")});
        }
    }
    if (table.empty()) {
        std::cout << "  no station is associated\n";
    } else {
        table.print(std::cout, session.outStyle());
    }
}

Json valuesAsJson(const Readings& readings) {
    Json values = Json::object();
    for (const auto& [path, value] : readings.all())
        values[path] = value;
    return values;
}

// Sets a channel and reads it back; the value that it had is put back at the end.
class RoundTrip {
  public:
    explicit RoundTrip(Session& session)
        : session_(session), people_(!session.options.json && !session.options.plain) {}

    [[nodiscard]] const Json& steps() const {
        return steps_;
    }

    int run() {
        const std::string path = "Device.WiFi.Radio.2.Channel";
        std::vector<Fault> faults;
        const std::string before = readPaths(session_, {path}, &faults).text(path);
        const std::string possible = readPaths(session_, {"Device.WiFi.Radio.2.PossibleChannels"}, nullptr)
                                         .text("Device.WiFi.Radio.2.PossibleChannels");
        if (!faults.empty()) return reportFaults(session_, faults);
        const std::string other = another(possible, before);
        if (other.empty()) return kDone;
        if (people_) {
            std::cout << '\n' << session_.outStyle().dress("Set, apply, read back, save", Colour::kHeading) << '\n';
        }
        step("get " + path, path + " => " + before);
        if (!set(path, other, true)) return kFailed;
        step("set " + path + "=" + other + " --save", "staged, applied once, saved");
        step("get " + path, path + " => " + readPaths(session_, {path}, nullptr).text(path));
        if (!set(path, before, true)) return kFailed;
        step("set " + path + "=" + before + " --save", "as it was");
        return kDone;
    }

  private:
    static std::string another(const std::string& possible, const std::string& current) {
        for (std::size_t begin = 0; begin < possible.size();) {
            const std::size_t end = std::min(possible.find_first_of(", ", begin), possible.size());
            std::string channel = possible.substr(begin, end - begin);
            const bool number = !channel.empty() && channel.find_first_not_of("0123456789") == std::string::npos;
            if (number && channel != current) return channel;
            begin = end + 1;
        }
        return "";
    }

    void step(const std::string& command, const std::string& answer) {
        steps_.push_back({{"command", command}, {"answer", answer}});
        if (session_.options.plain) {
            std::cout << "$ " << command << '\t' << answer << '\n';
        } else if (people_) {
            std::cout << "  $ " << programName() << " " << command << "\n    " << answer << '\n';
        }
        std::cout << std::flush;
    }

    bool set(const std::string& path, const std::string& value, bool save) {
        protocol::Set request;
        request.settings.push_back({path, value});
        request.save = save;
        const std::vector<Fault> faults = session_.ask(request);
        printFaults(session_, faults);
        return faults.empty();
    }

    Session& session_;
    bool people_;
    Json steps_ = Json::array();
};

void printWhatIsNext(const Session& session) {
    struct Suggestion {
        const char* command;
        const char* meaning;
    };
    static constexpr Suggestion kNext[] = {
        {"set Device.WiFi.SSID.1.SSID=Attic --save", "change an SSID for good"},
        {"get Device.WiFi.SSID.1.", "read it back"},
        {"up", "a board that stays up"},
        {"station join 02:00:00:00:00:77 1", "a station joins access point 1"},
        {"stations", "see it on the air"},
        {"scan 1", "what radio 1 hears"},
        {"down", "switch the board off"},
        {"play guest-network", "a scenario with expectations"},
        {"shell", "with completion and history"},
        {"help", "everything else"},
    };
    constexpr std::size_t kCommandWidth = 34;
    const std::string program = programName();
    std::cout << '\n' << session.outStyle().dress("Try next", Colour::kHeading) << '\n';
    for (const Suggestion& next : kNext) {
        const std::size_t length = std::string_view(next.command).size();
        const std::size_t gap = length < kCommandWidth ? kCommandWidth - length : 2;
        std::cout << "  " << program << ' ' << next.command << std::string(gap, ' ') << next.meaning << '\n';
    }
}

int demonstrate(Session& session) {
    Json result;
    int status = showOverview(session, &result);
    if (status != kDone) return status;
    RoundTrip trip(session);
    status = trip.run();
    if (session.options.json && status == kDone) {
        printJson({{"overview", std::move(result)}, {"steps", trip.steps()}}, {});
    } else if (!session.options.plain && status == kDone) {
        printWhatIsNext(session);
    }
    return status;
}

}  // namespace

int showOverview(Session& session, Json* result) {
    std::vector<Fault> faults;
    const protocol::BoardFacts board = boardOf(session, faults);
    if (!faults.empty()) return reportFaults(session, faults);
    const Readings readings = readPaths(session,
                                        {"Device.WiFi.RadioNumberOfEntries",
                                         "Device.WiFi.SSIDNumberOfEntries",
                                         "Device.WiFi.AccessPointNumberOfEntries",
                                         "Device.WiFi.Radio.*.Name",
                                         "Device.WiFi.Radio.*.OperatingFrequencyBand",
                                         "Device.WiFi.Radio.*.Channel",
                                         "Device.WiFi.Radio.*.OperatingChannelBandwidth",
                                         "Device.WiFi.Radio.*.Status",
                                         "Device.WiFi.Radio.*.UpTime",
                                         "Device.WiFi.SSID.*.Enable",
                                         "Device.WiFi.SSID.*.Name",
                                         "Device.WiFi.SSID.*.SSID",
                                         "Device.WiFi.SSID.*.BSSID",
                                         "Device.WiFi.SSID.*.Status",
                                         "Device.WiFi.AccessPoint.*.AssociatedDeviceNumberOfEntries",
                                         "Device.WiFi.AccessPoint.*.AssociatedDevice.*.MACAddress",
                                         "Device.WiFi.AccessPoint.*.AssociatedDevice.*.SignalStrength",
                                         "Device.WiFi.AccessPoint.*.AssociatedDevice.*.LastDataDownlinkRate",
                                         "Device.WiFi.AccessPoint.*.AssociatedDevice.*.LastDataUplinkRate",
                                         "Device.WiFi.AccessPoint.*.AssociatedDevice.*.OperStandard"},
                                        &faults);
    const int status = faults.empty() ? kDone : kFailed;
    if (session.options.json) {
        const Json whole{{"board", protocol::toJson(board)}, {"values", valuesAsJson(readings)}};
        if (result == nullptr || status != kDone) {
            printJson(whole, faults);
        } else {
            *result = whole;
        }
        return status;
    }
    printFaults(session, faults);
    if (session.options.plain) {
        for (const auto& [path, value] : readings.all())
            std::cout << path << '\t' << textOf(value) << '\n';
        return status;
    }
    printBoard(session, board);
    // Nothing but headings would follow.
    if (readings.all().empty()) return status;
    std::cout << '\n';
    printRadios(session, readings);
    std::cout << '\n';
    printNetworks(session, readings);
    std::cout << '\n';
    printStations(session, readings);
    std::cout << std::flush;
    return status;
}

void addOverviewVerbs(VerbContext& context) {
    Session& session = context.session;
    (void)context.add(kBoardVerbs, "overview", "The gateway on one screen", "overview\noverview --board dual-band",
                      [&session] { return showOverview(session); });
    (void)context.add(kBoardVerbs, "demo", "Overview, then set, apply, read back and save before your eyes", "demo",
                      [&session] { return demonstrate(session); });
}

}  // namespace quorvel::console
