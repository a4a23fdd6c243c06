#include "agent/mtp/MqttLink.h"

#include <mosquitto.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <utility>

#include "agent/mtp/MqttProperties.h"

namespace quorvel::agent {
namespace {

constexpr std::size_t kMostUnsentBytes = 16U << 20U;
// Looking so often in a keep-alive time keeps well within the half more that a broker grants.
constexpr std::uint32_t kKeepAliveSteps = 4;
constexpr std::uint32_t kLongestStep = 60;  // seconds
constexpr int kFirstRefusal = 0x80;         // reason codes from here on are failures

}  // namespace

// The library's calls back, all made while this thread is in one of its functions.
struct MqttLink::Callbacks {
    static MqttLink& of(void* link) {
        return *static_cast<MqttLink*>(link);
    }

    static void connected(mosquitto* /*client*/, void* object, int code, int /*flags*/,
                          const mosquitto_property* properties) {
        MqttLink& link = of(object);
        if (code != 0) {
            const char* text = link.version5_ ? mosquitto_reason_string(code) : mosquitto_connack_string(code);
            link.refusal_ = std::string("the broker refused the connection: ") + text;
            return;
        }
        std::uint16_t imposed = 0;
        if (mosquitto_property_read_int16(properties, MQTT_PROP_SERVER_KEEP_ALIVE, &imposed, false) != nullptr) {
            link.keepAlive_ = imposed;
            link.scheduleKeepAlive();
        }
        link.accept(
            {textProperty(properties, MQTT_PROP_RESPONSE_INFORMATION), userProperties(properties, "subscribe-topic")},
            textProperty(properties, MQTT_PROP_ASSIGNED_CLIENT_IDENTIFIER));
    }

    static void disconnected(mosquitto* /*client*/, void* object, int code, const mosquitto_property* /*properties*/) {
        MqttLink& link = of(object);
        if (!link.refusal_.empty()) return;
        link.refusal_ = "the connection to the broker ended";
        if (code >= kFirstRefusal) link.refusal_ += std::string(": ") + mosquitto_reason_string(code);
    }

    static void message(mosquitto* /*client*/, void* object, const mosquitto_message* message,
                        const mosquitto_property* properties) {
        MqttLink& link = of(object);
        MqttMessage received;
        received.topic = message->topic;
        received.payload.assign(static_cast<const char*>(message->payload),
                                static_cast<std::size_t>(message->payloadlen));
        if (link.version5_) {
            received.replyTopic = textProperty(properties, MQTT_PROP_RESPONSE_TOPIC);
            received.contentType = textProperty(properties, MQTT_PROP_CONTENT_TYPE);
        } else {
            received.replyTopic = replyTopicIn(received.topic);
        }
        link.received_.push_back(std::move(received));
    }

    static void subscribed(mosquitto* /*client*/, void* object, int number, int count, const int* granted,
                           const mosquitto_property* /*properties*/) {
        of(object).noteGrant(number, count > 0 && granted[0] < kFirstRefusal);
    }

    static void published(mosquitto* /*client*/, void* object, int number, int /*code*/,
                          const mosquitto_property* /*properties*/) {
        of(object).noteSent(number);
    }

    static void set(mosquitto* client, MqttLink& link) {
        mosquitto_user_data_set(client, &link);
        mosquitto_connect_v5_callback_set(client, connected);
        mosquitto_disconnect_v5_callback_set(client, disconnected);
        mosquitto_message_v5_callback_set(client, message);
        mosquitto_subscribe_v5_callback_set(client, subscribed);
        mosquitto_publish_v5_callback_set(client, published);
    }
};

MqttLink::MqttLink(EventLoop& loop, MqttAttempt::Order order, MqttListener& listener)
    : loop_(loop),
      order_(std::move(order)),
      version5_(speaksVersion5(order_.settings)),
      listener_(listener),
      backOff_(order_.settings.retryTime, order_.settings.retryMultiplier, order_.settings.retryMaxInterval,
               std::random_device{}()) {}

MqttLink::~MqttLink() {
    *alive_ = false;
    stop();
}

void MqttLink::start() {
    if (state_ == MqttState::kConnecting || state_ == MqttState::kConnected) return;
    connectNow();
}

void MqttLink::stop() {
    loop_.cancel(timer_);
    if (client_ != nullptr) {
        (void)mosquitto_disconnect(client_.get());  // a connection that is gone already needs none
        while (mosquitto_want_write(client_.get()) && mosquitto_loop_write(client_.get(), 1) == MOSQ_ERR_SUCCESS &&
               unsentBytes_ == 0) {
        }
    }
    drop();
    state_ = MqttState::kDisabled;
}

void MqttLink::restart(const std::string& reason) {
    if (client_ == nullptr) return;
    (void)mosquitto_disconnect(client_.get());  // the connection ends in any case
    lose(reason, MqttState::kUnreachable);
    // The broker is not to blame: nothing to wait for.
    connectNow();
}

void MqttLink::connectNow() {
    loop_.cancel(timer_);
    enter(MqttState::kConnecting);
    attempt_ = MqttAttempt::start(order_);
    loop_.watch(attempt_->descriptor(), POLLIN, [this](short) { finishAttempt(); });
}

void MqttLink::connectLater() {
    loop_.cancel(timer_);
    timer_ = loop_.after(backOff_.next(), [this] { connectNow(); });
}

void MqttLink::finishAttempt() {
    loop_.forget(attempt_->descriptor());
    std::string trouble;
    client_ = std::exchange(attempt_, nullptr)->take(trouble);
    if (client_ == nullptr) {
        lose(trouble, MqttState::kUnreachable);
        return;
    }
    Callbacks::set(client_.get(), *this);
    descriptor_ = mosquitto_socket(client_.get());
    wantsWrite_ = false;
    keepAlive_ = order_.settings.keepAlive;
    loop_.watch(descriptor_, POLLIN, [this](short events) { serve(events); });
    scheduleKeepAlive();
    afterCalls();
}

void MqttLink::serve(short events) {
    if ((events & POLLOUT) != 0) (void)mosquitto_loop_write(client_.get(), 1);  // afterCalls() sees a lost socket
    // One packet for each call, so that no peer holds up the others.
    if ((events & (POLLIN | POLLERR | POLLHUP)) != 0) (void)mosquitto_loop_read(client_.get(), 1);
    afterCalls();
}

void MqttLink::scheduleKeepAlive() {
    loop_.cancel(timer_);
    const std::uint32_t step = keepAlive_ == 0 ? kLongestStep : keepAlive_ / kKeepAliveSteps;
    timer_ = loop_.after(std::chrono::seconds(std::clamp(step, 1U, kLongestStep)), [this] {
        (void)mosquitto_loop_misc(client_.get());  // afterCalls() sees a lost socket
        scheduleKeepAlive();
        afterCalls();
    });
}

void MqttLink::afterCalls() {
    const std::shared_ptr<bool> alive = alive_;
    if (!assignedId_.empty()) listener_.mqttAssigned(std::exchange(assignedId_, {}));
    if (!*alive || client_ == nullptr) return;
    std::vector<MqttMessage> received = std::exchange(received_, {});
    for (MqttMessage& message : received) {
        listener_.mqttReceived(std::move(message));
        if (!*alive || client_ == nullptr) return;
    }
    if (mosquitto_socket(client_.get()) < 0) {
        lose(refusal_.empty() ? "the connection to the broker ended" : refusal_, MqttState::kUnreachable);
        return;
    }
    if (state_ == MqttState::kConnecting && planFulfilled_) becomeReadyOrLeave();
    if (!*alive || client_ == nullptr) return;
    if (std::exchange(grantsChanged_, false) && ready_) listener_.mqttChanged();
    if (!*alive || client_ == nullptr) return;
    const bool wants = mosquitto_want_write(client_.get());
    if (wants == wantsWrite_) return;
    wantsWrite_ = wants;
    loop_.change(descriptor_, static_cast<short>(wants ? POLLIN | POLLOUT : POLLIN));
}

void MqttLink::lose(const std::string& reason, MqttState state) {
    const bool wasReady = ready_;
    trouble_ = reason;
    drop();
    connectLater();
    const std::shared_ptr<bool> alive = alive_;
    if (wasReady) listener_.mqttLost(reason);
    if (*alive) enter(state);
}

void MqttLink::drop() {
    if (attempt_ != nullptr) loop_.forget(attempt_->descriptor());
    attempt_.reset();
    if (descriptor_ >= 0) loop_.forget(descriptor_);
    descriptor_ = -1;
    client_.reset();
    ready_ = false;
    planFulfilled_ = false;
    refusal_.clear();
    asked_.clear();
    grants_.clear();
    received_.clear();
    unsent_.clear();
    unsentBytes_ = 0;
}

void MqttLink::accept(const BrokerWishes& broker, const std::string& assignedId) {
    broker_ = broker;
    plan_ = planTopics(order_.settings, broker_);
    if (order_.settings.clientId.empty()) order_.settings.clientId = assignedId_ = assignedId;
    for (const PlannedTopic& topic : plan_.topics)
        subscribe(topic);
    planFulfilled_ = plan_.topics.empty();
}

void MqttLink::subscribe(const PlannedTopic& topic) {
    int number = 0;
    grants_[topic.topic] = Grant::kRefused;
    if (mosquitto_subscribe(client_.get(), &number, topic.filter.c_str(), topic.qos) != MOSQ_ERR_SUCCESS) return;
    grants_[topic.topic] = Grant::kAsked;
    asked_[number] = topic.topic;
}

void MqttLink::noteGrant(int message, bool granted) {
    const auto asked = asked_.find(message);
    if (asked == asked_.end()) return;
    grants_[asked->second] = granted ? Grant::kGranted : Grant::kRefused;
    asked_.erase(asked);
    planFulfilled_ = asked_.empty();
    grantsChanged_ = true;
}

void MqttLink::leave() {
    (void)mosquitto_disconnect(client_.get());  // the connection ends in any case
    lose(plan_.topics.empty() ? "no topic to subscribe to: the agent could not hear an answer"
                              : "the broker refused every subscription",
         MqttState::kMisconfigured);
}

void MqttLink::becomeReadyOrLeave() {
    const bool any =
        std::any_of(grants_.begin(), grants_.end(), [](const auto& entry) { return entry.second == Grant::kGranted; });
    if (!any) {
        leave();
        return;
    }
    backOff_.reset();
    trouble_.clear();
    ready_ = true;
    const std::shared_ptr<bool> alive = alive_;
    enter(MqttState::kConnected);
    if (*alive && ready_) listener_.mqttReady(plan_.replyTopic, broker_.responseInformation);
}

bool MqttLink::send(const std::string& topic, std::string_view record) {
    if (!ready_ || topic.empty() || unsentBytes_ + record.size() > kMostUnsentBytes) return false;
    MqttProperties properties;
    if (version5_) {
        properties.addText(MQTT_PROP_CONTENT_TYPE, "usp.msg");
        if (!plan_.replyTopic.empty()) properties.addText(MQTT_PROP_RESPONSE_TOPIC, plan_.replyTopic);
    }
    const std::string place = version5_ ? topic : withReplyTopic(topic, plan_.replyTopic);
    int number = 0;
    sentAtOnce_ = 0;
    const int result = mosquitto_publish_v5(client_.get(), &number, place.c_str(), static_cast<int>(record.size()),
                                            record.data(), order_.settings.publishQos, false, properties.get());
    if (result != MOSQ_ERR_SUCCESS) return false;
    if (number != sentAtOnce_) {
        unsent_[number] = record.size();
        unsentBytes_ += record.size();
    }
    if (mosquitto_want_write(client_.get()) && !wantsWrite_) {
        wantsWrite_ = true;
        loop_.change(descriptor_, POLLIN | POLLOUT);
    }
    return true;
}

void MqttLink::noteSent(int message) {
    sentAtOnce_ = message;
    const auto entry = unsent_.find(message);
    if (entry == unsent_.end()) return;
    unsentBytes_ -= entry->second;
    unsent_.erase(entry);
}

void MqttLink::change(const MqttSettings& settings) {
    // The client ID may be the one that the broker assigned: it is the data model's by now, or will be soon.
    order_.settings.subscriptions = settings.subscriptions;
    order_.settings.responseTopicConfigured = settings.responseTopicConfigured;
    order_.settings.publishQos = settings.publishQos;
    if (state_ == MqttState::kMisconfigured) connectNow();
    if (!ready_) return;
    const TopicPlan before = std::exchange(plan_, planTopics(order_.settings, broker_));
    const auto has = [](const TopicPlan& plan, const PlannedTopic& wanted) {
        return std::any_of(plan.topics.begin(), plan.topics.end(),
                           [&wanted](const PlannedTopic& topic) { return topic.filter == wanted.filter; });
    };
    for (const PlannedTopic& topic : before.topics) {
        if (has(plan_, topic)) continue;
        grants_.erase(topic.topic);
        (void)mosquitto_unsubscribe(client_.get(), nullptr, topic.filter.c_str());  // afterCalls() sees a lost socket
    }
    for (const PlannedTopic& topic : plan_.topics) {
        if (!has(before, topic)) subscribe(topic);
    }
    if (plan_.topics.empty()) leave();
}

bool MqttLink::isSubscribed(const std::string& topic) const {
    const auto entry = grants_.find(topic);
    return entry != grants_.end() && entry->second == Grant::kGranted;
}

bool MqttLink::wasRefused(const std::string& topic) const {
    const auto entry = grants_.find(topic);
    return entry != grants_.end() && entry->second == Grant::kRefused;
}

void MqttLink::enter(MqttState state) {
    if (state_ == state) return;
    state_ = state;
    listener_.mqttChanged();
}

}  // namespace quorvel::agent
