#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "gateway/hostd/Heartbeat.h"
#include "gateway/hostd/Service.h"

namespace quorvel::hostd {

/// One client: a stream socket with a JSON object per line in each direction. Requests carry an "id", which every line
/// of the answer repeats; the last line of an answer has the member "done".
class Connection {
  public:
    explicit Connection(int descriptor) : descriptor_(descriptor) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    [[nodiscard]] int descriptor() const {
        return descriptor_;
    }
    /// Sends a line. What a client does not take within some seconds is lost, and the client with it.
    void send(const nlohmann::ordered_json& line);
    /// Reads what has come and appends the whole lines. Returns false when the client is gone.
    [[nodiscard]] bool receive(std::vector<std::string>& lines);

    // Used by the polling thread only.
    std::string eventId;         ///< the id of the request for events, as JSON text
    std::string toldAbsence;     ///< why no event can come, as it was told
    std::string logId;           ///< likewise of the request for the log
    std::uint32_t logLevel = 0;  ///< lines above it are not for this client

  private:
    int descriptor_;
    std::mutex sending_;
    bool broken_ = false;
    std::string pending_;
};

/// Serves clients from one thread and has one worker call the plug-in, so that a plug-in that never returns holds up
/// nothing but its request: the client is told, and told why.
class Server {
  public:
    struct Settings {
        int connected = -1;  ///< a client that is there from the start; the server ends when it goes. Or:
        int listening = -1;  ///< a listening socket; the server ends on the request "shutdown"
        /// Says what the WLAN manager is doing, for an overdue request.
        std::function<std::string()> health;
        /// Registers for station events; returns the plug-in's result code. Called by the worker, once.
        std::function<std::uint32_t()> listen;
        /// Says that no event can come, or nothing. Called now and then while somebody waits for events; asks nobody.
        std::function<std::string()> absence = {};
    };

    Server(Service& service, Heartbeat& heartbeat, Settings settings);

    /// Serves until the end. Returns false when the worker is stuck, so that nothing may be called any more.
    [[nodiscard]] bool run();

    /// Hands an event to the clients that asked for events. Callable from any thread.
    void publish(const nlohmann::ordered_json& event);

    /// Announces to the client being served that its answer will take about `seconds`.
    void announceWait(unsigned seconds);

    /// Has run() return. Callable from a signal handler.
    void stop();

  private:
    struct Job;
    class JobReply;

    void work();
    void accept();
    void take(const std::shared_ptr<Connection>& connection, const std::string& line);
    void enqueue(const std::shared_ptr<Connection>& connection, const nlohmann::ordered_json& request);
    void checkWorker();
    void deliverEvents();
    void tellAbsence();
    void deliverLog();
    void followLog();
    void wake() const;

    Service& service_;
    Heartbeat& heartbeat_;
    Settings settings_;
    std::chrono::steady_clock::time_point nextLook_{};
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    std::vector<std::shared_ptr<Connection>> connections_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::shared_ptr<Job>> jobs_;
    std::shared_ptr<Job> current_;
    std::deque<std::string> events_;
    std::deque<std::pair<std::uint32_t, std::string>> log_;
    std::atomic<bool> ending_ = false;
    bool listening_ = false;
    bool stuck_ = false;
};

}  // namespace quorvel::hostd
