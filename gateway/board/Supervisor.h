#pragma once

#include <sys/types.h>

#include <csignal>
#include <vector>

namespace quorvel::board {

/// The signals that a board's processes hand on or wait for, blocked for as long as the object lives, so that none is
/// lost between a fork and the wait.
class BlockedSignals {
  public:
    BlockedSignals();
    ~BlockedSignals();
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t before_{};
};

/// Asks the kernel to kill this process when its parent dies. Returns false when `parent` is no longer the parent.
[[nodiscard]] bool dieWithParent(pid_t parent);

/// Asks the kernel to let this process know when its parent dies: `supervise` then kills the child that it waits for.
/// Returns false when `parent` is no longer the parent.
[[nodiscard]] bool hearOfParentsEnd(pid_t parent);

/// Waits until `child` has ended, reaping every other child that ends meanwhile and handing SIGTERM, SIGINT and SIGHUP
/// on. Signals must be blocked (BlockedSignals). Returns the child's exit status, 128 + signal when a signal ended it.
[[nodiscard]] int supervise(pid_t child);

/// Kills and reaps every process below this one, which must be a subreaper.
void endDescendants();

/// Returns the descriptors that are open now, without the standard ones.
[[nodiscard]] std::vector<int> openDescriptors();

/// Gives up standard input and output and closes `descriptors`.
void letGoOf(const std::vector<int>& descriptors);

}  // namespace quorvel::board
