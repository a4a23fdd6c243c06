#include "scenario/UspReader.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "scenario/ConditionReader.h"

namespace quorvel::scenario {
namespace {

using common::JsonCursor;

constexpr std::size_t kLongestId = 64;
constexpr std::array<const char*, 7> kRequests{"get", "set", "add", "delete", "operate", "subscribe", "request"};

void checkScalars(const JsonCursor& values) {
    values.eachKey([](const std::string&, const JsonCursor& value) {
        if (value.value().is_structured() || value.value().is_null()) value.fail("true, false, a number or a text");
    });
}

void checkPaths(const JsonCursor& paths) {
    paths.each([](const JsonCursor& path) { (void)path.text(); });
    if (paths.value().empty()) paths.fail("at least one path");
}

void checkObjects(const JsonCursor& objects) {
    objects.eachKey([](const std::string&, const JsonCursor& settings) { checkScalars(settings); });
    if (objects.value().empty()) objects.fail("at least one object path with its values");
}

void checkSubscription(const JsonCursor& subscription) {
    subscription.allow({"id", "type", "references", "retry", "persistent"});
    if (subscription.at("id").text().size() > kLongestId) subscription.at("id").fail("at most 64 characters");
    (void)subscription.at("type").oneOf(
        {"ValueChange", "ObjectCreation", "ObjectDeletion", "OperationComplete", "Event"});
    checkPaths(subscription.at("references"));
    for (const char* flag : {"retry", "persistent"}) {
        if (subscription.has(flag)) (void)subscription.at(flag).boolean();
    }
}

}  // namespace

void checkUspBroker(const JsonCursor& step) {
    step.allow({"at", "id", "do", "how", "delay"});
    const std::string how = step.at("how").oneOf({"down", "up", "slow"});
    if (how == "slow") {
        (void)step.at("delay").milliseconds();
    } else if (step.has("delay")) {
        step.at("delay").fail("no delay beside \"" + how + "\"; it goes with \"slow\"");
    }
}

void checkUspRequest(const JsonCursor& step) {
    step.allow({"at", "id", "do", "get", "set", "add", "delete", "operate", "subscribe", "request", "allowPartial",
                "arguments"});
    const auto count =
        std::count_if(kRequests.begin(), kRequests.end(), [&](const char* one) { return step.has(one); });
    if (count != 1) step.fail("exactly one of get, set, add, delete, operate, subscribe, request");
    for (const char* paths : {"get", "delete"}) {
        if (step.has(paths)) checkPaths(step.at(paths));
    }
    for (const char* objects : {"set", "add"}) {
        if (step.has(objects)) checkObjects(step.at(objects));
    }
    if (step.has("operate")) (void)step.at("operate").text();
    if (step.has("arguments")) {
        if (!step.has("operate")) step.at("arguments").fail("arguments beside \"operate\" only");
        checkScalars(step.at("arguments"));
    }
    if (step.has("subscribe")) checkSubscription(step.at("subscribe"));
    if (step.has("request") && !step.at("request").value().is_object()) step.at("request").fail("an object");
    if (step.has("allowPartial")) (void)step.at("allowPartial").boolean();
}

bool isUspExpectation(const JsonCursor& member) {
    return member.has("notification") || member.has("answer");
}

void readUspExpectation(const JsonCursor& member, const std::vector<Step>& timeline, Expectation& expectation) {
    constexpr unsigned kFirstCode = 7000;
    constexpr unsigned kLastCode = 7999;
    if (member.has("notification")) {
        member.allow({"at", "by", "after", "notification", "subscription", "path", "member", "equals", "differs",
                      "oneOf", "matches", "code", "atLeast", "atMost"});
        expectation.kind = Expectation::Kind::kNotification;
        expectation.subject = member.at("notification")
                                  .oneOf({"ValueChange", "ObjectCreation", "ObjectDeletion", "OperationComplete",
                                          "Event", "OnBoardRequest"});
        if (member.has("subscription")) expectation.subscription = member.at("subscription").text();
        if (member.has("member")) expectation.member = member.at("member").text();
    } else {
        member.allow({"at", "by", "after", "answer", "path", "equals", "differs", "oneOf", "matches", "code", "atLeast",
                      "atMost"});
        expectation.kind = Expectation::Kind::kAnswer;
        expectation.subject = member.at("answer").text();
        const bool known = std::any_of(timeline.begin(), timeline.end(), [&](const Step& step) {
            return step.id == expectation.subject && step.action == "usp.request";
        });
        if (!known) member.at("answer").fail("the \"id\" of a step \"usp.request\" of the timeline");
    }
    if (member.has("path")) expectation.path = member.at("path").text();
    if (member.has("code") && member.at("code").count(0, kLastCode) != 0)
        expectation.code = member.at("code").count(kFirstCode, kLastCode);
    else if (member.has("code"))
        expectation.code = 0;
    const bool compared = hasTextCondition(member);
    if (compared) expectation.wanted = readTextCondition(member);
    if (expectation.kind == Expectation::Kind::kAnswer && compared && !member.has("path"))
        member.fail("\"path\" beside the value of an answer");
    if (compared && member.has("code")) member.at("code").fail("either \"code\" or a value");
}

}  // namespace quorvel::scenario
