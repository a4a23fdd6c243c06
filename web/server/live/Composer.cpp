#include "web/server/live/Composer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "web/server/live/Secrets.h"

namespace quorvel::web {
namespace {

using Json = nlohmann::ordered_json;
using hostd::protocol::LivePicture;
using hostd::protocol::StationState;
using hostd::protocol::TraceEntry;

constexpr const char* kWords[] = {"up", "silent", "lost"};

Json radiosOf(const LivePicture& live) {
    Json list = Json::array();
    for (const auto& one : live.radios) {
        list.push_back({{"radio", one.radio},
                        {"interface", one.interface},
                        {"band", one.band},
                        {"status", one.status},
                        {"channel", one.channel},
                        {"bandwidth", one.bandwidth},
                        {"autoChannel", one.autoChannel},
                        {"noise", one.noise},
                        {"utilization", one.utilization},
                        {"stations", one.stations}});
    }
    return list;
}

Json bssOf(const LivePicture& live) {
    Json list = Json::array();
    for (const auto& radio : live.radios) {
        for (const auto& one : radio.bss) {
            list.push_back({{"accessPoint", one.accessPoint},
                            {"radio", radio.radio},
                            {"interface", one.interface},
                            {"ssid", one.ssid},
                            {"bssid", one.bssid},
                            {"status", one.status},
                            {"security", one.security},
                            {"stations", one.stations}});
        }
    }
    return list;
}

// "6", "6l", "36/80": the primary channel comes first.
unsigned primaryChannel(const std::string& text) {
    unsigned channel = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), channel);  // 0 where there is no number
    return channel;
}

Json neighboursOf(const LivePicture& live) {
    Json list = Json::array();
    for (const auto& one : live.neighbours) {
        list.push_back({{"ssid", one.ssid},
                        {"bssid", one.bssid},
                        {"channel", primaryChannel(one.channel)},
                        {"width", one.width},
                        {"rssi", one.rssi},
                        {"security", one.security}});
    }
    return list;
}

Json stationOf(const StationState& one, double since) {
    Json json{{"mac", one.mac},
              {"accessPoint", one.accessPoint},
              {"associated", one.associated},
              {"rssi", one.rssi},
              {"standard", one.standard},
              {"bandwidth", one.bandwidth},
              {"downlinkRate", one.downlinkRate},
              {"uplinkRate", one.uplinkRate},
              {"downlinkTraffic", one.downlinkTraffic},
              {"uplinkTraffic", one.uplinkTraffic},
              {"since", since}};
    if (one.refusal) json["refusal"] = *one.refusal;
    return json;
}

Json trafficOf(const LivePicture& live, const std::map<unsigned, Rates>& rates) {
    Json list = Json::array();
    for (const auto& radio : live.radios) {
        for (const auto& bss : radio.bss) {
            const auto counted = std::find_if(live.interfaces.begin(), live.interfaces.end(),
                                              [&bss](const auto& one) { return one.interface == bss.interface; });
            if (counted == live.interfaces.end()) continue;
            const auto found = rates.find(bss.accessPoint);
            const Rates rate = found == rates.end() ? Rates{} : found->second;
            list.push_back({{"accessPoint", bss.accessPoint},
                            {"ssid", bss.ssid},
                            {"sent", counted->bytesSent},
                            {"received", counted->bytesReceived},
                            {"sentRate", rate.sent},
                            {"receivedRate", rate.received}});
        }
    }
    return list;
}

Json agentOf(const std::optional<hostd::protocol::ServiceStatus>& agent) {
    if (!agent) return nullptr;
    const Json status = agent->status.is_object() ? withoutSecretMembers(agent->status) : Json::object();
    return {{"connected", agent->connected}, {"status", status}};
}

// One line for an entry of a service's trace, whose members are the service's own.
std::string traceText(const TraceEntry& entry) {
    static constexpr std::size_t kLongest = 300;
    std::string text = withoutSecretMembers(entry.entry).dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > kLongest) {
        // Not in the middle of a character.
        std::size_t end = kLongest;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
            --end;
        text = text.substr(0, end) + "...";
    }
    return text;
}

// Rates come from counters that move in steps; a difference without meaning is not worth an update.
double rounded(double value) {
    return std::round(value / 100) * 100;
}

void setMember(Picture& next, Member which, const Json& value) {
    Picture::Text& text = next.members[static_cast<std::size_t>(which)];
    std::string json = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (json == text.json) return;
    text.json = std::move(json);
    text.version = next.version;
}

}  // namespace

Composer::Composer() {
    auto first = std::make_unique<Picture>();
    setState(*first, BoardState::kLost, "no board has answered yet");
    for (const Member member :
         {Member::kRadios, Member::kBss, Member::kStations, Member::kNeighbours, Member::kTraffic})
        setMember(*first, member, Json::array());
    setMember(*first, Member::kAgent, nullptr);
    picture_ = std::move(first);
}

std::shared_ptr<const Picture> Composer::take(const Look& look) {
    auto next = std::make_unique<Picture>(*picture_);
    next->version = picture_->version + 1;
    next->name = look.name;
    takeEvents(look);
    const bool running = look.live.manager.state == "running";
    const BoardState state = running ? BoardState::kUp : BoardState::kSilent;
    if (state == BoardState::kUp && picture_->state != BoardState::kUp)
        events_.add(look.live.clock.time, "page", "found", "the board \"" + look.name + "\" answers");
    if (running) {
        takeValues(*next, look);
    } else {
        // The last values stay on the page.
        next->live.clock = look.live.clock;
        next->live.manager = look.live.manager;
    }
    next->agent = look.agent;
    next->counts = look.counts;
    setMember(*next, Member::kAgent, agentOf(look.agent));
    const std::string reason = running ? "" : "it is " + look.live.manager.state;
    if (state == BoardState::kSilent && picture_->state != BoardState::kSilent)
        events_.add(look.live.clock.time, "page", "silent", "the WLAN manager is " + look.live.manager.state);
    setState(*next, state, reason);
    return publish(std::move(next));
}

std::shared_ptr<const Picture> Composer::lose(const std::string& reason) {
    auto next = std::make_unique<Picture>(*picture_);
    next->version = picture_->version + 1;
    if (picture_->state != BoardState::kLost)
        events_.add(picture_->live.clock.time, "page", "lost", "the board does not answer: " + reason);
    setState(*next, BoardState::kLost, reason);
    return publish(std::move(next));
}

void Composer::setState(Picture& next, BoardState state, const std::string& reason) {
    next.state = state;
    Json board{{"state", kWords[static_cast<std::size_t>(state)]}, {"name", next.name}, {"reason", reason}};
    const std::string withoutTime = board.dump(-1, ' ', false, Json::error_handler_t::replace);
    // The time alone is no news: the page's own clock goes on.
    const bool same = withoutTime == boardWithoutTime_;
    const std::uint64_t before = next.member(Member::kBoard).version;
    board["time"] = next.live.clock.time;
    board["clockRuns"] = !next.live.clock.isVirtual;
    setMember(next, Member::kBoard, board);
    if (same) next.members[static_cast<std::size_t>(Member::kBoard)].version = before;
    boardWithoutTime_ = withoutTime;
}

void Composer::takeValues(Picture& next, const Look& look) {
    next.live = look.live;
    const double now = look.live.clock.time;
    rates_ = ratesOf(look.live);
    history_.add(look.live, rates_);
    setMember(next, Member::kRadios, radiosOf(look.live));
    setMember(next, Member::kBss, bssOf(look.live));
    setMember(next, Member::kNeighbours, neighboursOf(look.live));
    setMember(next, Member::kTraffic, trafficOf(look.live, rates_));
    Json stations = Json::array();
    std::map<std::string, Association> present;
    for (const auto& station : look.live.stations) {
        const double since = station.associated ? sinceOf(station, now) : 0;
        present[station.mac] = {station.associations, station.accessPoint, since};
        stations.push_back(stationOf(station, since));
    }
    associations_ = std::move(present);
    setMember(next, Member::kStations, stations);
}

// The board counts whole seconds since the association: the moment is computed once, or it would waver.
double Composer::sinceOf(const StationState& station, double now) {
    const auto known = associations_.find(station.mac);
    const double since = std::max(0.0, std::round(now - static_cast<double>(station.seconds)));
    if (known == associations_.end()) return since;
    const Association& before = known->second;
    const bool same = before.number == station.associations && before.accessPoint == station.accessPoint;
    return same && std::abs(before.since - since) <= 2 ? before.since : since;
}

std::map<unsigned, Rates> Composer::ratesOf(const LivePicture& live) {
    const double elapsed = live.clock.time - counted_;
    if (elapsed == 0 && !counters_.empty()) return rates_;
    std::map<unsigned, Rates> rates;
    for (const auto& radio : live.radios) {
        for (const auto& bss : radio.bss) {
            const auto now = std::find_if(live.interfaces.begin(), live.interfaces.end(),
                                          [&bss](const auto& one) { return one.interface == bss.interface; });
            const auto before = counters_.find(bss.interface);
            if (now == live.interfaces.end() || before == counters_.end() || elapsed <= 0) continue;
            const auto rate = [elapsed](std::uint64_t from, std::uint64_t to) {
                return to < from ? 0.0 : rounded(8.0 * static_cast<double>(to - from) / elapsed);
            };
            rates[bss.accessPoint] = {rate(before->second.bytesSent, now->bytesSent),
                                      rate(before->second.bytesReceived, now->bytesReceived)};
        }
    }
    counters_.clear();
    for (const auto& one : live.interfaces)
        counters_[one.interface] = one;
    counted_ = live.clock.time;
    return rates;
}

void Composer::takeEvents(const Look& look) {
    for (const auto& entry : look.log)
        events_.add(entry.time, "board", entry.kind, withoutSecrets(entry.text));
    for (const auto& entry : look.trace)
        events_.add(entry.time, "agent", entry.service, traceText(entry));
}

// A picture that shows the same as the one before keeps its version, so that nothing is sent; the metrics need it
// still.
std::shared_ptr<const Picture> Composer::publish(std::unique_ptr<Picture> next) {
    next->events = events_.all();
    next->lastEvent = events_.last();
    const bool changed = std::any_of(next->members.begin(), next->members.end(),
                                     [&next](const Picture::Text& text) { return text.version == next->version; });
    if (!changed) next->version = picture_->version;
    picture_ = std::move(next);
    return picture_;
}

}  // namespace quorvel::web
