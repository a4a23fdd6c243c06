#include "web/server/http/Connection.h"

#include <boost/asio/write.hpp>
#include <utility>

namespace quorvel::web {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using beast::error_code;

Connection::Connection(asio::ip::tcp::socket socket, Server& server)
    : stream_(std::move(socket)),
      server_(server),
      // The next request waits in the socket until this one is answered.
      buffer_(kHeadLimit),
      heartbeat_(stream_.get_executor()) {}

void Connection::start() {
    readRequest(server_.limits_.toAsk);
}

void Connection::end() {
    if (std::exchange(ended_, true)) return;
    if (streams_) --server_.counts_.streams;
    heartbeat_.cancel();
    stream_.cancel();
    error_code ignored;
    stream_.socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    stream_.socket().close(ignored);
    server_.forget(shared_from_this());
}

void Connection::readRequest(std::chrono::milliseconds time) {
    parser_.emplace();
    bound(*parser_);
    // The time is for the whole head: a byte now and then does not extend it.
    stream_.expires_after(time);
    http::async_read(stream_, buffer_, *parser_,
                     [self = shared_from_this()](error_code error, std::size_t) { self->takeRequest(error); });
}

void Connection::takeRequest(error_code error) {
    if (ended_) return;
    if (error == beast::error::timeout) {
        ++server_.counts_.dropped;
        return end();
    }
    const bool ofProtocol = error.category() == http::make_error_code(http::error::bad_method).category();
    if (error == http::error::end_of_stream || error == http::error::partial_message || (error && !ofProtocol))
        return end();
    ++server_.counts_.requests;
    if (error) {
        ++server_.counts_.refused;
        return send(malformed(error), false);
    }
    Reply reply = server_.site_->answer(requestOf(*parser_), *server_.picture_);
    if (reply.streams && server_.counts_.streams >= server_.limits_.streams) {
        ++server_.counts_.dropped;
        reply = refusal(503, "too many pages are open; close one");
    }
    if (reply.status >= 400) ++server_.counts_.refused;
    const bool streams = reply.streams && parser_->get().method() == http::verb::get;
    const bool keepAlive = parser_->get().keep_alive() && !reply.streams;
    if (streams) {
        streams_ = true;
        ++server_.counts_.streams;
    }
    send(std::move(reply), keepAlive);
}

void Connection::send(Reply reply, bool keepAlive) {
    const bool head = parser_->get().method() == http::verb::head;
    reply_.emplace(wireReply(std::move(reply), parser_->get().version(), keepAlive, head));
    stream_.expires_after(server_.limits_.toTake);
    const auto written = [self = shared_from_this(), keepAlive](error_code error, std::size_t) {
        if (self->ended_) return;
        if (error == beast::error::timeout) ++self->server_.counts_.dropped;
        if (error) return self->end();
        if (self->streams_) return self->beginStream();
        if (!keepAlive) return self->end();
        self->readRequest(self->server_.limits_.keepAlive);
    };
    if (streams_ || head) {
        // Only the head of the answer.
        const auto serializer = std::make_shared<http::response_serializer<http::string_body>>(*reply_);
        http::async_write_header(stream_, *serializer,
                                 [serializer, written](error_code error, std::size_t size) { written(error, size); });
        return;
    }
    http::async_write(stream_, *reply_, written);
}

void Connection::beginStream() {
    reply_.reset();
    const Picture& picture = *server_.picture_;
    version_ = picture.version;
    event_ = picture.lastEvent;
    awaitEnd();
    sendText("event: picture\ndata: " + pictureText(picture) + "\n\n");
}

void Connection::pictureChanged() {
    if (streams_ && !ended_) sendNews();
}

// A client that is slower than the board gets several changes as one, so that nothing piles up.
void Connection::sendNews() {
    if (writing_) return;
    const Picture& picture = *server_.picture_;
    const std::string news = updateText(picture, version_, event_);
    if (news.empty()) return awaitHeartbeat();
    version_ = picture.version;
    event_ = picture.lastEvent;
    sendText("event: update\ndata: " + news + "\n\n");
}

void Connection::sendText(std::string text) {
    writing_ = true;
    sending_ = std::move(text);
    stream_.expires_after(server_.limits_.toTake);
    asio::async_write(stream_, asio::buffer(sending_), [self = shared_from_this()](error_code error, std::size_t) {
        if (self->ended_) return;
        if (error == beast::error::timeout) ++self->server_.counts_.dropped;
        if (error) return self->end();
        self->writing_ = false;
        self->stream_.expires_never();
        self->sendNews();
    });
}

// A stream's client sends nothing; what it sends ends it, as its leaving does.
void Connection::awaitEnd() {
    stream_.socket().async_wait(asio::ip::tcp::socket::wait_read, [self = shared_from_this()](error_code error) {
        // The write that ran out of time has closed the socket, and ends the connection itself.
        if (error != asio::error::operation_aborted) self->end();
    });
}

void Connection::awaitHeartbeat() {
    heartbeat_.expires_after(server_.limits_.heartbeat);
    heartbeat_.async_wait([self = shared_from_this()](error_code error) {
        if (error || self->ended_ || self->writing_) return;
        self->sendText(":\n\n");
    });
}

}  // namespace quorvel::web
