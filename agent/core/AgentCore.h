#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Agent.h"
#include "agent/Context.h"
#include "agent/Timers.h"
#include "agent/command/Commands.h"
#include "agent/model/StateFile.h"
#include "agent/notify/Delivery.h"
#include "agent/notify/Directory.h"
#include "agent/notify/Notifier.h"
#include "agent/record/Records.h"

namespace quorvel::agent {

/// The agent behind its facade.
class AgentCore final : public GatewayListener {
  public:
    AgentCore(Config config, Gateway& gateway, Transports& transports, Agent::Surroundings surroundings);
    AgentCore(const AgentCore&) = delete;
    AgentCore& operator=(const AgentCore&) = delete;
    ~AgentCore() override;

    void start();
    void stop(const std::string& reason);
    void tick(BoardInstant now);
    [[nodiscard]] std::optional<BoardInstant> nextDue() const {
        return timers_.next();
    }
    [[nodiscard]] nlohmann::ordered_json status() const;
    [[nodiscard]] const std::string& endpointId() const {
        return endpointId_;
    }

    void onConnected(const Channel& channel);
    void onLost(std::uint64_t channel, const std::string& reason);
    [[nodiscard]] bool onRecord(std::string_view bytes, const Source& source);
    void onDropped(std::size_t size, const Source& source, const std::string& reason);
    void onStatus(const std::string& object, const std::string& parameter, const std::string& value);

    void onStationEvent(const StationEvent& event) override;
    void onChanges(const std::vector<GatewayValue>& changes) override;
    void onBoardTime(BoardInstant now) override;
    void onRestored() override;
    void onRebooted() override;

  private:
    /// Where the answer to a Request goes.
    struct ReplyTo {
        std::string endpointId;
        Destination destination;
    };
    struct Line {
        Channel channel;
        std::set<std::string> greeted;  ///< Endpoint IDs that have had their Connect Record
    };
    struct Counters {
        std::uint64_t received = 0;
        std::uint64_t sent = 0;
        std::uint64_t dropped = 0;
        std::uint64_t requests = 0;
        std::uint64_t errors = 0;
    };

    // Records (CoreRecords.cpp)
    [[nodiscard]] std::string reasonToDrop(const usp_record::Record& record, const ControllerEntry*& controller) const;
    void handle(const usp_record::Record& record, const ControllerEntry& controller, const Source& source);
    void handleMessage(const usp_record::Record& record, const ControllerEntry& controller, const Source& source);
    void handleRequest(const std::shared_ptr<usp::Msg>& message, const ControllerEntry& controller,
                       const ReplyTo& reply);
    [[nodiscard]] std::optional<ReplyTo> replyTo(const ControllerEntry& controller, const Source& source) const;
    void sendMessage(const ReplyTo& to, const usp::Msg& message);
    void sendError(const ReplyTo& to, const std::string& messageId, const Problem& problem,
                   const std::vector<PathProblem>& paths = {});
    [[nodiscard]] bool sendRecord(const ReplyTo& to, const usp_record::Record& record);
    void greet(Line& line, const ReplyTo& to);
    [[nodiscard]] bool sendToController(const ControllerEntry& controller, const std::string& message);
    [[nodiscard]] std::optional<ReplyTo> wayTo(const ControllerEntry& controller) const;
    [[nodiscard]] std::string versionFor(const std::string& endpointId) const;
    void trace(TraceEntry::Direction direction, std::string_view bytes, std::uint64_t channel, const std::string& topic,
               const std::string& from, const std::string& to, const std::string& dropped);
    void drop(std::string_view bytes, const Source& source, const std::string& from, const std::string& to,
              const std::string& reason);

    // Messages (CoreMessages.cpp)
    Task<void> serve(std::shared_ptr<usp::Msg> message, Originator originator, ReplyTo reply);
    Task<void> answer(const usp::Request& request, const Originator& originator, usp::Response& response,
                      std::vector<std::function<void()>>& afterwards);

    // Consequences of changes (AgentCore.cpp, CoreTimes.cpp)
    void buildSchema(const std::vector<TableRow>& table);
    void defineComputed();
    void begin(const BootCause& cause);
    void saveState();
    void publish();
    void followControllers(const Directory& before);
    void configureTransports();
    void updateWatches();
    void schedulePeriodic(const std::string& row);
    void compareLater(bool soon);
    void watchStationsLater();
    Task<void> pollStations(bool whole);
    Task<void> announceBoot(BootCause cause);
    void powerCycle(bool factory, const BootCause& cause);
    void onBoard(const std::string& controller);
    void settle();
    void farewell(const std::string& endpointId, const std::string& reason);
    void noticeStations(const Stations::Difference& difference);
    void removeExpired(const std::string& row);

    Transports& transports_;
    Agent::Surroundings surroundings_;
    std::string endpointId_;
    BoardInstant startedAt_{};
    Timers timers_;
    Directory directory_;
    Context context_;
    StateFile state_;
    Timers::Id compare_ = 0;
    std::vector<std::unique_ptr<Schema>> retired_;  // tasks may still refer to them
    bool begun_ = false;
    std::map<std::string, std::string> statuses_;  // reported by the transports, by path
    std::map<std::uint64_t, Line> lines_;
    std::map<std::string, std::string> versions_;  // of the peers' last Records, by Endpoint ID
    std::set<std::pair<std::string, std::string>> inWork_;
    std::map<std::string, Timers::Id> periodic_;
    std::map<std::string, Timers::Id> onBoarding_;
    std::map<std::string, std::string> stationValues_;
    MtpSettings configured_;
    std::vector<std::string> watched_;
    Counters counters_;
    bool comparing_ = false;
    bool comparesOften_ = false;
    std::set<std::string> changedAccessPoints_;  ///< that an event has named since the last look
    bool pollingStations_ = false;
    bool powerCycling_ = false;
    std::optional<BoardInstant> wakeAt_;
    // Tasks refer to everything above, and end first.
    std::unique_ptr<Delivery> delivery_;
    TaskGroup tasks_;
    std::unique_ptr<Notifier> notifier_;
    std::unique_ptr<Commands> commands_;
};

}  // namespace quorvel::agent
