#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "gateway/hostd/Clock.h"
#include "gateway/hostd/Heartbeat.h"
#include "gateway/hostd/ManagerLook.h"
#include "gateway/hostd/Service.h"
#include "gateway/hostd/Services.h"
#include "gateway/hostd/Session.h"
#include "gateway/hostd/Worker.h"
#include "gateway/hostd/protocol/Counts.h"

namespace quorvel::hostd {

/// Why the server has ended.
enum class Ending : std::uint8_t { kShutdown, kPowerCycle, kFactoryReset };

/// The outcome of a command to the simulated surroundings: their answer, or why there is none.
struct Controlled {
    protocol::Json answer;
    std::string trouble;
};

/// Returns the operation of a command to the simulated surroundings, or the empty text.
[[nodiscard]] std::string operationOf(const protocol::Json& command);

/// Serves clients. Its loop never waits for anything but the next thing to do: requests that need the library are
/// carried out by one worker, requests that need the WLAN manager or the file system by another, and the rest at once.
class Server {
  public:
    struct Settings {
        int connected = -1;   ///< a client that is there from the start; the server ends when it goes
        int listening = -1;   ///< a listening socket for further clients
        std::string program;  ///< the program's version, for clients
        protocol::Boot boot;
        bool canCyclePower = false;  ///< whether the board comes back after Ending::kPowerCycle
        /// Says what the WLAN manager is doing, for an overdue request.
        std::function<std::string()> health;
        /// Registers for station events; returns the plug-in's result code. Called by the library's worker, once.
        std::function<std::uint32_t()> listen;
        /// Says that no event can come, or nothing. Called now and then while a client follows the manager.
        std::function<std::string()> absence = {};
        /// Returns the manager's process, whose end is then noticed at once; 0 for none.
        std::function<pid_t()> managerProcess = {};
        /// Hands a command to the simulated surroundings.
        std::function<Controlled(const protocol::Json& command)> control = {};
        /// Returns facts about the board.
        std::function<protocol::BoardFacts()> board = {};
        /// Looks around for the request "live".
        std::function<protocol::LivePicture()> look = {};
    };

    Server(Service& service, Heartbeat& heartbeat, Clock& clock, Settings settings);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// Serves until the end. Returns false when a worker is stuck, so that nothing may be called any more.
    [[nodiscard]] bool run();

    [[nodiscard]] Ending ending() const {
        return ending_;
    }

    /// Returns the cause of the power cycle with which the server has ended.
    [[nodiscard]] const std::string& cause() const {
        return settings_.boot.cause;
    }

    /// Hands news to the clients that follow the topic. Callable from any thread.
    void publish(protocol::Topic topic, protocol::Part part);

    /// Hands a change to the clients that follow changes, stamped with the board's time, and looks at watched values.
    /// Callable from any thread.
    void publishChange(protocol::Change change);

    /// Looks at watched values, because something may have changed. Callable from any thread.
    void boardChanged();

    /// Announces to the client whose request occupies the library that its answer will take about `seconds`.
    void announceWait(unsigned seconds);

    /// Has run() return. Callable from a signal handler.
    void stop();

  private:
    struct News {
        protocol::Topic topic;
        protocol::Part part;
    };
    class InlineReply;

    void accept();
    void readFrom(Session& session, bool& there);
    void handleLine(Session& session, const std::string& line);
    void dispatch(Session& session, protocol::Id id, protocol::Request request);
    void refuse(Session& session, protocol::Id id, const std::string& reason);
    void answer(Session& session, protocol::Id id, protocol::Part part);

    // Requests that are answered at once.
    void serve(Session& session, protocol::Id id, const protocol::Hello& request);
    void serve(Session& session, protocol::Id id, const protocol::Alive& request);
    void serve(Session& session, protocol::Id id, const protocol::Shutdown& request);
    void serve(Session& session, protocol::Id id, const protocol::CyclePower& request);
    void serve(Session& session, protocol::Id id, const protocol::Subscribe& request);
    void serve(Session& session, protocol::Id id, const protocol::Unsubscribe& request);
    void serve(Session& session, protocol::Id id, const protocol::Describe& request);
    void serve(Session& session, protocol::Id id, const protocol::ReadTime& request);
    void serve(Session& session, protocol::Id id, const protocol::Wake& request);
    void serve(Session& session, protocol::Id id, const protocol::Watch& request);
    void serve(Session& session, protocol::Id id, const protocol::ReportStatus& request);
    void serve(Session& session, protocol::Id id, const protocol::ReportTrace& request);
    void serve(Session& session, protocol::Id id, const protocol::ReadStatus& request);
    void serve(Session& session, protocol::Id id, const protocol::ReadTrace& request);
    // Requests that need the manager or files.
    void serve(Session& session, protocol::Id id, const protocol::Control& request);
    void serve(Session& session, protocol::Id id, const protocol::ReadBoard& request);
    void serve(Session& session, protocol::Id id, const protocol::LookAround& request);
    // Requests that need the library.
    void serve(Session& session, protocol::Id id, const protocol::Get& request);
    template <typename LibraryRequest>
    void serve(Session& session, protocol::Id id, const LibraryRequest& request);

    void control(const protocol::Control& request, Reply& reply);
    void lookAround(Reply& reply);
    [[nodiscard]] protocol::HostCounts completed(protocol::HostCounts counts) const;
    void listenForStations(Session& session, protocol::Id id);
    void deliverNews();
    void deliver(const News& news);
    void tellAbsence();
    void ringAlarms();
    void lookAtWatches();
    void followLog();
    void publishStatus(const std::string& service);
    void publishFault(const protocol::Fault& fault);
    void sessionEnded(const Session& session);
    [[nodiscard]] int patience() const;
    [[nodiscard]] bool awaitsManager() const;
    void wake() const;

    Service& service_;
    Heartbeat& heartbeat_;
    Clock& clock_;
    Settings settings_;
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    std::list<Session> sessions_;
    Services services_;
    ManagerLook managerLook_;
    std::map<std::string, std::uint64_t> requests_;  // by verb
    std::atomic<bool> listening_ = false;
    Ending ending_ = Ending::kShutdown;
    std::atomic<bool> stopping_ = false;

    std::mutex mutex_;
    std::deque<News> news_;
    bool changed_ = false;  // something may have changed since the last look at watches
    std::size_t logLines_ = 0;

    // Used by the manager's worker only.
    protocol::LivePicture picture_;
    std::chrono::steady_clock::time_point pictureTaken_{};
    bool hasPicture_ = false;

    Heartbeat managerHeartbeat_;
    Worker library_;
    Worker manager_;
};

}  // namespace quorvel::hostd
