#include "web/server/http/Server.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <set>
#include <stdexcept>
#include <vector>

#include "web/server/http/Connection.h"

namespace quorvel::web {

namespace asio = boost::asio;
using boost::beast::error_code;

struct Server::Sockets {
    asio::io_context context;
    // Keeps run() going while nothing is awaited.
    asio::executor_work_guard<asio::io_context::executor_type> serving{context.get_executor()};
    asio::ip::tcp::acceptor acceptor{context};
    asio::signal_set signals{context};
    std::set<std::shared_ptr<Connection>> connections;

    [[nodiscard]] std::vector<std::shared_ptr<Connection>> all() const {
        return {connections.begin(), connections.end()};
    }
};

Server::Server(const Address& address, Limits limits)
    : address_(address), limits_(limits), sockets_(std::make_unique<Sockets>()) {
    asio::ip::tcp::acceptor& acceptor = sockets_->acceptor;
    try {
        const asio::ip::tcp::endpoint endpoint(asio::ip::make_address(address.host), address.port);
        acceptor.open(endpoint.protocol());
        acceptor.set_option(asio::socket_base::reuse_address(true));
        acceptor.bind(endpoint);
        acceptor.listen(asio::socket_base::max_listen_connections);
    } catch (const std::exception& error) {
        throw std::runtime_error("cannot listen on " + address.text() + ": " + error.what() +
                                 "; choose another address with --listen");
    }
    address_.port = acceptor.local_endpoint().port();
}

Server::~Server() {
    stop();
}

void Server::serve(const Site& site) {
    site_ = &site;
    accept();
}

void Server::run() {
    sockets_->context.run();
}

void Server::stopAtSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sockets_->signals.add(signal);
    sockets_->signals.async_wait([this](error_code error, int) {
        if (!error) stop();
    });
}

void Server::post(std::function<void()> work) {
    asio::post(sockets_->context, std::move(work));
}

void Server::accept() {
    sockets_->acceptor.async_accept([this](error_code error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted || !sockets_->acceptor.is_open()) return;
        if (!error) {
            if (sockets_->connections.size() < limits_.connections) {
                const auto connection = std::make_shared<Connection>(std::move(socket), *this);
                sockets_->connections.insert(connection);
                counts_.connections = sockets_->connections.size();
                connection->start();
            } else {
                ++counts_.dropped;
            }
        }
        accept();
    });
}

void Server::show(std::shared_ptr<const Picture> picture) {
    const bool changed =
        picture_ == nullptr || picture->version != picture_->version || picture->lastEvent != picture_->lastEvent;
    picture_ = std::move(picture);
    if (!changed) return;
    // A connection that ends here leaves the set, so that a copy is walked.
    for (const auto& connection : sockets_->all())
        connection->pictureChanged();
}

void Server::forget(const std::shared_ptr<Connection>& connection) {
    sockets_->connections.erase(connection);
    counts_.connections = sockets_->connections.size();
}

void Server::stop() {
    error_code ignored;
    sockets_->acceptor.close(ignored);
    sockets_->signals.cancel(ignored);
    for (const auto& connection : sockets_->all())
        connection->end();
    sockets_->serving.reset();
}

}  // namespace quorvel::web
