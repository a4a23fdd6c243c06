#include "gateway/hostd/Worker.h"

#include <utility>

namespace quorvel::hostd {
namespace {

using protocol::Fault;
using protocol::FaultCode;
using protocol::Id;
using protocol::Part;

// Lines of an answer travel together up to this size.
constexpr std::size_t kTogether = 32768;
constexpr std::chrono::milliseconds kGlance{50};

}  // namespace

struct Worker::Job {
    std::shared_ptr<Connection> connection;
    Id id = 0;
    Work work;
    bool open = false;
    bool abandoned = false;  // the client has been answered that it takes too long
};

// Collects the lines of an answer so that a short answer is one message. Nothing is held back while the job waits.
class Worker::JobReply : public Reply {
  public:
    JobReply(Worker& worker, std::shared_ptr<Job> job) : worker_(worker), job_(std::move(job)) {}

    void part(const Part& part) override {
        lines_ += protocol::partLine(job_->id, part);
        for (const Fault& fault : part.faults)
            worker_.surroundings_.onFault(fault);
        if (lines_.size() >= kTogether || !part.faults.empty() || part.wait || part.done) send();
    }

    void send() {
        {
            const std::lock_guard lock(worker_.mutex_);
            if (job_->abandoned) lines_.clear();
        }
        if (!lines_.empty()) job_->connection->answer(lines_);
        lines_.clear();
    }

  private:
    Worker& worker_;
    std::shared_ptr<Job> job_;
    std::string lines_;
};

Worker::Worker(Heartbeat& heartbeat, Surroundings surroundings)
    : heartbeat_(heartbeat), surroundings_(std::move(surroundings)), thread_([this] { run(); }) {}

Worker::~Worker() {
    if (thread_.joinable() && !end()) thread_.detach();
}

void Worker::carryOut(const std::shared_ptr<Job>& job) {
    JobReply reply(*this, job);
    currentReply_ = &reply;
    heartbeat_.beat();
    try {
        job->work(reply);
    } catch (const std::exception& error) {
        reply.fault({FaultCode::kInternal, "", std::string("the host process failed: ") + error.what(), "", 0, ""});
    }
    heartbeat_.rest();
    Part last;
    last.done = !job->open;
    if (last.done) reply.part(last);
    reply.send();
    currentReply_ = nullptr;
}

void Worker::run() {
    for (;;) {
        std::shared_ptr<Job> job;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
            if (ending_) return;
            job = jobs_.front();
            jobs_.pop_front();
            current_ = job;
        }
        carryOut(job);
        const std::lock_guard lock(mutex_);
        current_.reset();
        stuck_ = false;
        changed_.notify_all();
    }
}

Part Worker::overdue() const {
    Part part;
    part.faults.push_back({FaultCode::kInternal, "", surroundings_.health(), "", 0, ""});
    return part;
}

void Worker::tell(const Job& job, Part part) {
    part.done = !job.open;
    job.connection->answer(protocol::partLine(job.id, part));
}

void Worker::enqueue(const std::shared_ptr<Connection>& connection, Id id, Work work, bool open) {
    auto job = std::make_shared<Job>(Job{connection, id, std::move(work), open});
    {
        const std::lock_guard lock(mutex_);
        if (!stuck_) {
            jobs_.push_back(job);
            changed_.notify_all();
            return;
        }
    }
    tell(*job, overdue());
}

void Worker::announceWait(unsigned seconds) {
    if (std::this_thread::get_id() != thread_.get_id() || currentReply_ == nullptr) return;
    Part part;
    part.wait = seconds;
    currentReply_->part(part);
}

void Worker::check() {
    if (!heartbeat_.overdue()) return;
    std::deque<std::shared_ptr<Job>> lost;
    {
        const std::lock_guard lock(mutex_);
        if (current_ == nullptr || current_->abandoned) return;
        current_->abandoned = true;
        stuck_ = true;
        lost.swap(jobs_);
        lost.push_front(current_);
    }
    const Part part = overdue();
    for (const Fault& fault : part.faults)
        surroundings_.onFault(fault);
    for (const auto& job : lost)
        tell(*job, part);
}

bool Worker::isBusy() const {
    const std::lock_guard lock(mutex_);
    return current_ != nullptr || !jobs_.empty();
}

bool Worker::end() {
    {
        std::unique_lock lock(mutex_);
        ending_ = true;
        changed_.notify_all();
        while (current_ != nullptr) {
            if (stuck_ || heartbeat_.overdue()) {
                lock.unlock();
                if (thread_.joinable()) thread_.detach();
                return false;
            }
            (void)changed_.wait_for(lock, kGlance);  // the loop looks again anyhow
        }
    }
    if (thread_.joinable()) thread_.join();
    return true;
}

}  // namespace quorvel::hostd
