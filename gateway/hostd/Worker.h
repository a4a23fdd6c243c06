#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "gateway/hostd/Connection.h"
#include "gateway/hostd/Heartbeat.h"
#include "gateway/hostd/Reply.h"
#include "gateway/hostd/protocol/Lines.h"

namespace quorvel::hostd {

/// A thread that carries out jobs one after the other. A job that never returns holds up this worker only: its client
/// and those behind it are answered with a fault that says why.
class Worker {
  public:
    using Work = std::function<void(Reply&)>;

    struct Surroundings {
        /// Says what the WLAN manager is doing, for an overdue job.
        std::function<std::string()> health;
        /// Called with each fault that a job answers with, from any thread.
        std::function<void(const protocol::Fault&)> onFault;
    };

    /// `heartbeat` is what the jobs' code beats.
    Worker(Heartbeat& heartbeat, Surroundings surroundings);
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    /// Queues a job whose answer goes to `connection`. The answer ends with `done` unless the job is `open`: then more
    /// parts with its id come from elsewhere. `work` is destroyed when it has run or been given up.
    void enqueue(const std::shared_ptr<Connection>& connection, protocol::Id id, Work work, bool open = false);

    /// Tells the client of the present job that its answer will take about `seconds`. Called by the job.
    void announceWait(unsigned seconds);

    /// Gives an overdue job up and answers its client and those of the jobs behind it with a fault. Called now and
    /// then.
    void check();

    [[nodiscard]] bool isBusy() const;

    /// Lets the present job finish within what it has announced, and ends the thread. Returns false when the job is
    /// stuck: the thread goes on then, and nothing that it may use can be torn down.
    [[nodiscard]] bool end();

  private:
    struct Job;
    class JobReply;

    void run();
    void carryOut(const std::shared_ptr<Job>& job);
    [[nodiscard]] protocol::Part overdue() const;
    static void tell(const Job& job, protocol::Part part);

    Heartbeat& heartbeat_;
    Surroundings surroundings_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::shared_ptr<Job>> jobs_;
    std::shared_ptr<Job> current_;
    JobReply* currentReply_ = nullptr;  // used by the worker's own thread only
    bool stuck_ = false;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace quorvel::hostd
