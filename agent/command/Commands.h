#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "agent/Context.h"
#include "agent/Timers.h"
#include "agent/message/Instances.h"
#include "agent/model/StateFile.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Effects of commands outside of the data model.
struct CommandEffects {
    std::function<void(bool factory, BootCause cause)> powerCycle;
    std::function<void(const std::string& controller)> onBoard;
    std::function<void(const std::string& row)> resetRetries;
    /// Publishes what the last transaction has changed.
    std::function<void()> changed;
    std::function<void(const std::string& object, const std::string& command, const std::string& key,
                       const std::variant<Keys, Problem>& outcome)>
        complete;
};

/// Answers Operate, and keeps the Requests of asynchronous commands.
class Commands {
  public:
    Commands(Context& context, Timers& timers, TaskGroup& tasks, CommandEffects effects)
        : context_(context), timers_(timers), tasks_(tasks), effects_(std::move(effects)) {}

    /// Runs a command on each object that its path names. `afterwards` gets what must wait until the answer is sent.
    Task<void> answer(const Originator& originator, const usp::Operate& request, usp::OperateResp& answer,
                      std::vector<std::function<void()>>& afterwards);

    /// Forgets all Requests: the board has been restarted.
    void forget();

  private:
    using Outcome = std::variant<Keys, Problem>;
    struct Running {
        std::string object;
        std::string command;
        std::string key;
        Timers::Id timer = 0;  ///< of a command that can be canceled
    };

    Task<Outcome> runAtOnce(Place place, const Command& command, const usp::Operate& request,
                            std::vector<std::function<void()>>& afterwards);
    std::string begin(const Originator& originator, const Place& place, const usp::Operate& request,
                      const Command& command);
    Task<void> perform(std::string row);
    Task<Outcome> scan();
    Task<Problem> scanRadio(std::string radio);
    Task<Outcome> pushButton(std::string object);
    Task<void> sleep(std::chrono::seconds time);
    Task<std::string> read(std::string path);
    Task<Problem> write(std::string path);
    [[nodiscard]] Problem cancel(const std::string& row);
    void finish(const std::string& row, const Outcome& outcome);

    Context& context_;
    Timers& timers_;
    TaskGroup& tasks_;
    CommandEffects effects_;
    std::map<std::string, Running> running_;  // by row of the Request
};

}  // namespace quorvel::agent
