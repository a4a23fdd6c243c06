#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

#include "gateway/hostd/client/BoardSocket.h"
#include "gateway/hostd/protocol/Lines.h"
#include "tests/web/Boards.h"
#include "web/server/live/BoardFeed.h"

namespace quorvel::web_test {
namespace {

namespace protocol = hostd::protocol;

/// A host process of the test's making: answers one client at a time, and counts.
class FakeHost {
  public:
    explicit FakeHost(const std::string& folder) : listening_(hostd::listenForClients(folder, problem_)) {
        EXPECT_TRUE(listening_) << problem_;
        thread_ = std::thread([this] { run(); });
    }
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;
    ~FakeHost() {
        ending_ = true;
        thread_.join();
    }

    std::atomic<unsigned> connections = 0;
    std::atomic<unsigned> looks = 0;
    std::atomic<unsigned> lines = 0;

  private:
    static bool readable(int descriptor) {
        pollfd waiting{descriptor, POLLIN, 0};
        return poll(&waiting, 1, 20) > 0;
    }

    void run() {
        while (!ending_) {
            if (!readable(listening_.get())) continue;
            const int client = accept(listening_.get(), nullptr, nullptr);
            if (client < 0) continue;
            ++connections;
            serve(client);
            (void)close(client);
        }
    }

    void serve(int client) {
        std::string pending;
        while (!ending_) {
            if (!readable(client)) continue;
            char buffer[4096];
            const ssize_t count = recv(client, buffer, sizeof buffer, 0);
            if (count <= 0) return;
            pending.append(buffer, static_cast<std::size_t>(count));
            for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
                answer(client, pending.substr(0, end));
                pending.erase(0, end + 1);
            }
        }
    }

    void answer(int client, const std::string& line) {
        ++lines;
        const protocol::ParsedRequest parsed = protocol::parseRequest(line);
        protocol::Part part;
        if (std::holds_alternative<protocol::LookAround>(parsed.request)) part.live = lookAt(10 + ++looks).live;
        if (std::holds_alternative<protocol::Control>(parsed.request))
            part.control = protocol::Json{{"ok", true}, {"events", protocol::Json::array()}, {"last", 0}};
        part.done = true;
        const std::string text = protocol::partLine(parsed.id, part);
        (void)::send(client, text.data(), text.size(), MSG_NOSIGNAL);  // a client that is gone is seen at the next read
    }

    std::string problem_;
    common::Descriptor listening_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

class Folder {
  public:
    Folder() {
        path_ = (std::filesystem::temp_directory_path() / "quorvel-feed-XXXXXX").string();
        if (mkdtemp(path_.data()) == nullptr) path_.clear();
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    [[nodiscard]] const std::string& path() const {
        return path_;
    }

  private:
    std::string path_;
};

/// Waits for pictures, at most ten seconds for each.
class Pictures {
  public:
    void add(std::shared_ptr<const web::Picture> picture) {
        const std::lock_guard lock(mutex_);
        latest_ = std::move(picture);
        changed_.notify_all();
    }
    [[nodiscard]] bool await(web::BoardState state) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return latest_ != nullptr && latest_->state == state; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::shared_ptr<const web::Picture> latest_;
};

}  // namespace

TEST(BoardFeed, FindsABoardAndFindsItAgain) {
    const Folder folder;
    Pictures pictures;
    web::BoardFeed feed(folder.path(), [&](std::shared_ptr<const web::Picture> one) { pictures.add(std::move(one)); });
    for (int life = 0; life < 2; ++life) {
        {
            const FakeHost host(folder.path());
            EXPECT_TRUE(pictures.await(web::BoardState::kUp)) << life;
        }
        hostd::removeBoardSocket(folder.path());
        EXPECT_TRUE(pictures.await(web::BoardState::kLost)) << life;
    }
}

// The feed knows no browsers: it asks the same of the board whether there is one or ten.
TEST(BoardFeed, AsksOverOneConnectionAndLooksOncePerSecond) {
    const Folder folder;
    const FakeHost host(folder.path());
    Pictures pictures;
    const auto begin = std::chrono::steady_clock::now();
    {
        web::BoardFeed feed(folder.path(),
                            [&](std::shared_ptr<const web::Picture> one) { pictures.add(std::move(one)); });
        ASSERT_TRUE(pictures.await(web::BoardState::kUp));
        for (int i = 0; i < 100; ++i)
            EXPECT_FALSE(feed.historyText().empty());
        const auto deadline = begin + std::chrono::seconds(20);
        while (host.looks < 3 && std::chrono::steady_clock::now() < deadline)
            (void)poll(nullptr, 0, 20);
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
    EXPECT_EQ(host.connections, 1U);
    EXPECT_GE(host.looks, 3U);
    EXPECT_LE(host.looks, 2U + static_cast<unsigned>(seconds.count()));
    // Greeting and name once; five requests a look, at most one of them unfinished.
    EXPECT_LE(host.lines, 2U + 5U * (host.looks + 1));
}

}  // namespace quorvel::web_test
