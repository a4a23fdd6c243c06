#include "gateway/manager/Server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "common/UnixListener.h"

namespace quorvel::manager {
namespace {

constexpr std::size_t kMostClients = 200;

}  // namespace

Server::Server(Service& service, Places places)
    : service_(service),
      socketPath_(std::move(places.socket)),
      events_(std::move(places.notifySocket)),
      pump_(std::move(places.counters)) {}

Server::~Server() {
    for (const auto& entry : clients_)
        (void)close(entry.first);
    if (!listener_.get()) return;
    (void)unlink(socketPath_.c_str());  // gone is as good
}

std::string Server::open() {
    std::string problem;
    // Open the event socket first: a client that reaches the manager expects it.
    problem = events_.open();
    if (!problem.empty()) return problem;
    listener_ = common::listenOn(socketPath_, problem);
    // Drop the events from before anybody could listen.
    (void)service_.model().takeMessages();
    return problem;
}

void Server::accept() {
    for (;;) {
        const int descriptor = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (descriptor < 0) return;
        if (clients_.size() >= kMostClients) {
            (void)close(descriptor);
            continue;
        }
        clients_[descriptor];
    }
}

void Server::receive(int descriptor, Client& client) {
    std::array<std::uint8_t, 16384> piece;
    while (client.in.size() <= kMaxFrame) {
        const ssize_t got = recv(descriptor, piece.data(), piece.size(), 0);
        if (got > 0) {
            client.in.insert(client.in.end(), piece.begin(), piece.begin() + got);
            continue;
        }
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
        client.dead = true;
        return;
    }
}

// Performs the next request, once the last answer is on its way.
void Server::serve(Client& client) {
    while (client.out.empty() && !client.closing && !client.dead && client.in.size() >= 4 && hangUntil_ == 0) {
        const std::size_t size = frameSize(client.in);
        if (size == 0) {
            client.dead = true;
            return;
        }
        if (client.in.size() < size) return;
        Request request;
        if (!decodeRequest(std::span(client.in).first(size), request)) {
            client.dead = true;
            return;
        }
        Faults& faults = service_.faults();
        if (faults.drop > 0 && request.operation != Operation::kControl) {
            --faults.drop;
            client.dead = true;
            return;
        }
        Answer answer;
        service_.handle(request, client.session, answer);
        client.out.resize(kMaxFrame);
        client.out.resize(encodeAnswer(answer, client.out));
        client.sent = 0;
        client.in.erase(client.in.begin(), client.in.begin() + static_cast<std::ptrdiff_t>(size));
        if (request.operation == Operation::kControl) {
            if (faults.hangFor > 0) hangUntil_ = realMilliseconds() + faults.hangFor;
            faults.hangFor = 0;
        } else if (faults.truncate > 0) {
            --faults.truncate;
            client.out.resize(client.out.size() / 2);
            client.closing = true;
        } else if (faults.oversize > 0) {
            --faults.oversize;
            std::fill_n(client.out.begin(), 3, std::uint8_t{0xff});
        }
    }
}

void Server::send(int descriptor, Client& client) {
    while (client.sent < client.out.size()) {
        const ssize_t done =
            ::send(descriptor, client.out.data() + client.sent, client.out.size() - client.sent, MSG_NOSIGNAL);
        if (done > 0) {
            client.sent += static_cast<std::size_t>(done);
            continue;
        }
        if (done < 0 && errno == EINTR) continue;
        if (done < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return;
        client.dead = true;
        return;
    }
    client.out.clear();
    client.sent = 0;
    if (client.closing) client.dead = true;
}

int Server::timeout() const {
    Milliseconds wait = -1;
    if (hangUntil_ != 0) wait = std::max<Milliseconds>(0, hangUntil_ - realMilliseconds());
    if (!service_.clock().isVirtual()) {
        if (const auto next = service_.model().nextChange()) {
            const Milliseconds left = std::max<Milliseconds>(0, *next - service_.clock().now());
            wait = wait < 0 ? left : std::min(wait, left);
        }
    }
    return static_cast<int>(std::min<Milliseconds>(wait, 60'000));
}

void Server::run(int stop) {
    for (;;) {
        std::vector<pollfd> watched = {{stop, POLLIN, 0}, {listener_.get(), POLLIN, 0}};
        events_.watch(watched);
        const std::size_t firstClient = watched.size();
        if (hangUntil_ == 0) {
            for (const auto& [descriptor, client] : clients_) {
                watched.push_back({descriptor, static_cast<short>(client.out.empty() ? POLLIN : POLLOUT), 0});
            }
        }
        if (poll(watched.data(), watched.size(), timeout()) < 0 && errno != EINTR) return;
        if ((watched[0].revents & POLLIN) != 0) return;
        if ((watched[1].revents & POLLIN) != 0) accept();
        if (hangUntil_ != 0 && realMilliseconds() >= hangUntil_) hangUntil_ = 0;
        events_.serve(watched);
        service_.setListeners(events_.listeners());
        for (std::size_t i = firstClient; i < watched.size(); ++i) {
            if (watched[i].revents == 0) continue;
            Client& client = clients_.at(watched[i].fd);
            if ((watched[i].revents & POLLOUT) != 0)
                send(watched[i].fd, client);
            else
                receive(watched[i].fd, client);
        }
        for (auto& [descriptor, client] : clients_) {
            do {
                serve(client);
                if (!client.dead) send(descriptor, client);
            } while (!client.dead && client.out.empty() && hangUntil_ == 0 && client.in.size() >= 4 &&
                     frameSize(client.in) <= client.in.size());
        }
        std::erase_if(clients_, [](const auto& entry) {
            if (entry.second.dead) (void)close(entry.first);
            return entry.second.dead;
        });
        service_.followClock();
        for (const StationMessage& message : service_.model().takeMessages())
            events_.publish(message);
        pump_.send(service_.model().takeKernelTraffic());
    }
}

}  // namespace quorvel::manager
