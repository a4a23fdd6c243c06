#include "gateway/launch/Client.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>

namespace quorvel::launch {

using Json = nlohmann::ordered_json;

namespace {

// A host process that does not even say that it is there within both is stopped or lost: two seconds all in all.
constexpr int kSilence = 500;
constexpr int kPatience = 1400;
constexpr int kGlance = 100;
constexpr int kProbeId = -1;
constexpr const char* kNoAnswer =
    "the host process (quorvel-wifi-host) does not answer: it is stopped or hangs; continue or end it, then start the "
    "board again";

}  // namespace

Client::~Client() {
    (void)close(descriptor_);  // nothing is buffered
}

void Client::send(const Json& request) {
    const std::string text = request.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::send(descriptor_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw GatewayError("the host process is gone; start the board again");
        sent += static_cast<std::size_t>(count);
    }
}

bool Client::line(std::string& text, int milliseconds) {
    for (;;) {
        const std::size_t end = pending_.find('\n');
        if (end != std::string::npos) {
            text = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return true;
        }
        pollfd waiting{descriptor_, POLLIN, 0};
        const int ready = poll(&waiting, 1, milliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) return false;
        char buffer[65536];
        const ssize_t count = recv(descriptor_, buffer, sizeof buffer, 0);
        if (count < 0 && errno == EINTR) return false;
        if (count <= 0) {
            throw GatewayError(
                "the host process ended unexpectedly; run again with --log-level 0 to see its last words");
        }
        pending_.append(buffer, static_cast<std::size_t>(count));
    }
}

bool Client::awaitLine(std::string& text, int milliseconds) {
    for (int waited = 0; waited < milliseconds; waited += kGlance) {
        if (line(text, kGlance)) return true;
        if (idle) idle();
    }
    return false;
}

void Client::ask(Json request, const OnPart& onPart) {
    const int id = ++lastId_;
    request["id"] = id;
    send(request);
    bool probed = false;
    for (std::string text;;) {
        if (!awaitLine(text, probed ? kPatience : kSilence)) {
            if (probed) throw GatewayError(kNoAnswer);
            send({{"id", kProbeId}, {"do", "alive"}});
            probed = true;
            continue;
        }
        probed = false;
        const Json part = Json::parse(text, nullptr, false);
        if (!part.is_object()) continue;
        if (part.value("id", 0) != id) {
            if (other) other(part);
            continue;
        }
        onPart(part);
        if (part.contains("done")) return;
    }
}

void Client::follow(Json request, const OnPart& onPart, const std::function<bool()>& stop) {
    const int id = ++lastId_;
    request["id"] = id;
    send(request);
    std::string text;
    bool probed = false;
    for (int silent = 0; !stop();) {
        if (!line(text, kGlance)) {
            silent += kGlance;
            if (silent < (probed ? kPatience : kSilence)) continue;
            if (probed) throw GatewayError(kNoAnswer);
            send({{"id", kProbeId}, {"do", "alive"}});
            probed = true;
            silent = 0;
            continue;
        }
        probed = false;
        silent = 0;
        const Json part = Json::parse(text, nullptr, false);
        if (!part.is_object() || part.value("id", 0) != id) continue;
        onPart(part);
        if (part.contains("done")) return;
    }
    ask({{"do", "unsubscribe"}}, [](const Json&) {});
}

}  // namespace quorvel::launch
