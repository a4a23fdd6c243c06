#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "gateway/hostd/client/Client.h"
#include "web/server/live/Composer.h"

namespace quorvel::web {

/// Looks at the board once a second, in a thread of its own and over one connection, however many browsers there are.
/// Finds the board again when it was lost.
class BoardFeed {
  public:
    /// Called in the feed's thread with the picture after each look.
    using OnPicture = std::function<void(std::shared_ptr<const Picture>)>;

    /// Begins to look at the board with this state folder.
    BoardFeed(std::string stateFolder, OnPicture onPicture);
    BoardFeed(const BoardFeed&) = delete;
    BoardFeed& operator=(const BoardFeed&) = delete;
    ~BoardFeed();

    /// Returns the last ten minutes as JSON text. Callable from any thread.
    [[nodiscard]] std::string historyText();

  private:
    void run();
    void lookOnce();
    void connect();
    [[nodiscard]] Look look();
    void takeLog(Look& look);
    [[nodiscard]] bool rest();

    const std::string stateFolder_;
    const OnPicture onPicture_;
    std::unique_ptr<hostd::Client> client_;
    std::string name_;
    std::uint64_t lastEntry_ = 0;
    std::uint64_t lastTrace_ = 0;

    std::mutex mutex_;  // for what follows
    std::condition_variable changed_;
    Composer composer_;
    bool ending_ = false;

    std::thread thread_;
};

}  // namespace quorvel::web
