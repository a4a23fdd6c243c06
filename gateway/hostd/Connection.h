#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace quorvel::hostd {

/// A client's stream socket with lines in both directions. Nobody ever waits for the client: lines that its socket does
/// not take at once are kept for flush(), and a client that lets too much pile up is disconnected.
class Connection {
  public:
    /// The most bytes of news (of subscriptions) that a client may leave unread.
    static constexpr std::size_t kMaxNews = 1U << 20U;
    /// While more than this is unread, the client's further requests are left unread as well.
    static constexpr std::size_t kCongested = 1U << 20U;
    /// The most bytes of any kind that are kept for a client.
    static constexpr std::size_t kMaxUnsent = 64U << 20U;

    /// Takes over a connected socket. `unsent` is called, from any thread, when something is left for flush().
    Connection(int descriptor, std::function<void()> unsent) : descriptor_(descriptor), onUnsent_(std::move(unsent)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    [[nodiscard]] int descriptor() const {
        return descriptor_;
    }

    /// Sends lines of an answer, newlines included. Callable from any thread.
    void answer(std::string_view lines);

    /// Sends a line of news, or disconnects a client that has left too many of them unread. Callable from any thread.
    void push(std::string_view line);

    /// Sends what is unsent, as far as the socket takes it.
    void flush();

    [[nodiscard]] bool hasUnsent() const;
    [[nodiscard]] bool isCongested() const;

    /// Reads what has come and appends the whole lines. Returns false when the client is gone.
    [[nodiscard]] bool receive(std::vector<std::string>& lines);

  private:
    struct Piece {
        std::string text;
        bool news;
    };

    void keep(std::string_view text, bool news);
    void sendKept();
    [[nodiscard]] std::size_t sendSome(std::string_view text);
    void disconnect();

    int descriptor_;
    std::function<void()> onUnsent_;
    mutable std::mutex mutex_;
    std::deque<Piece> pieces_;
    std::size_t sentOfFirst_ = 0;
    std::size_t unsent_ = 0;      // bytes in pieces_
    std::size_t unsentNews_ = 0;  // of these, bytes of news
    bool broken_ = false;
    std::string received_;
};

}  // namespace quorvel::hostd
