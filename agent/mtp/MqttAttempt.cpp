#include "agent/mtp/MqttAttempt.h"

#include <mosquitto.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>
#include <utility>

#include "agent/mtp/MqttProperties.h"
#include "agent/mtp/MqttTopics.h"

namespace quorvel::agent {
namespace {

// The broker keeps larger packets to itself. Records beyond the agent's own limit are still received, so that they are
// counted.
constexpr std::uint32_t kLargestPacket = 8U << 20U;

void initialiseLibrary() {
    static const int result = mosquitto_lib_init();
    (void)result;  // fails without memory only; each client would fail then
}

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

int secure(mosquitto* client, const TlsConfig& tls) {
    if (tls.authorities.empty()) {
        const int result = mosquitto_int_option(client, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
        if (result != MOSQ_ERR_SUCCESS) return result;
    }
    return mosquitto_tls_set(client, orNull(tls.authorities), nullptr, orNull(tls.certificate), orNull(tls.key),
                             nullptr);
}

std::string describe(int result, int number, const MqttSettings& settings) {
    const std::string place = settings.address + ":" + std::to_string(settings.port);
    if (result == MOSQ_ERR_ERRNO) return "cannot connect to " + place + ": " + std::strerror(number);
    if (result == MOSQ_ERR_EAI) return "cannot find the host " + settings.address;
    if (result == MOSQ_ERR_TLS) return "TLS with " + place + " failed: the certificate or its name was not accepted";
    if (result == MOSQ_ERR_INVAL && settings.tls) {
        return "TLS with " + place + " failed: a certificate or key file is missing or does not fit";
    }
    return "cannot connect to " + place + ": " + mosquitto_strerror(result);
}

}  // namespace

void MqttClientEnd::operator()(mosquitto* client) const {
    mosquitto_destroy(client);
}

std::shared_ptr<MqttAttempt> MqttAttempt::start(const Order& order) {
    initialiseLibrary();
    std::shared_ptr<MqttAttempt> attempt(new MqttAttempt);
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);  // signals are for the agent's own thread
    std::thread([attempt, order] { attempt->run(order); }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return attempt;
}

MqttAttempt::MqttAttempt() : ended_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

MqttAttempt::~MqttAttempt() {
    (void)close(ended_);
}

void MqttAttempt::run(const Order& order) {
    const MqttSettings& settings = order.settings;
    const bool version5 = speaksVersion5(settings);
    // A session can only be taken up again under the same client ID.
    const bool clean = (version5 ? settings.cleanStart : settings.cleanSession) || settings.clientId.empty();
    MqttClient client(mosquitto_new(orNull(settings.clientId), clean, nullptr));
    int result = client == nullptr ? MOSQ_ERR_NOMEM : MOSQ_ERR_SUCCESS;
    int number = 0;
    if (result == MOSQ_ERR_SUCCESS) {
        (void)mosquitto_int_option(client.get(), MOSQ_OPT_PROTOCOL_VERSION,
                                   version5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311);
        (void)mosquitto_int_option(client.get(), MOSQ_OPT_TCP_NODELAY, 1);
        if (!settings.username.empty()) {
            result = mosquitto_username_pw_set(client.get(), settings.username.c_str(), orNull(settings.password));
        }
    }
    if (result == MOSQ_ERR_SUCCESS && settings.tls) result = secure(client.get(), order.tls);
    if (result == MOSQ_ERR_SUCCESS) {
        MqttProperties properties;
        if (version5) {
            properties.addByte(MQTT_PROP_REQUEST_RESPONSE_INFORMATION, 1);
            properties.addNumber(MQTT_PROP_MAXIMUM_PACKET_SIZE, kLargestPacket);
            properties.addUserProperty("usp-endpoint-id", order.endpointId);
        }
        result = mosquitto_connect_bind_v5(client.get(), settings.address.c_str(), settings.port,
                                           static_cast<int>(settings.keepAlive), nullptr, properties.get());
        number = errno;
    }
    if (result == MOSQ_ERR_SUCCESS) {
        client_ = std::move(client);
    } else {
        trouble_ = describe(result, number, settings);
    }
    done_.store(true, std::memory_order_release);
    const std::uint64_t one = 1;
    (void)!write(ended_, &one, sizeof one);  // cannot fail: the counter is at zero
}

MqttClient MqttAttempt::take(std::string& trouble) {
    if (!done_.load(std::memory_order_acquire)) return nullptr;
    trouble = trouble_;
    return std::move(client_);
}

}  // namespace quorvel::agent
