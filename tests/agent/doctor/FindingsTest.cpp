#include "agent/doctor/Findings.h"

#include <gtest/gtest.h>

#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent_test {
namespace {

using agent::Circumstances;
using agent::Finding;

const Circumstances kAgent{"os::025176-1", {"proto::lab"}, "/usp/endpoint", {"/usp/controller"}};

std::string record(const std::string& from, const std::string& to) {
    usp_record::Record record;
    record.set_version("1.4");
    record.set_from_id(from);
    record.set_to_id(to);
    record.mutable_no_session_context()->set_payload("x");
    return record.SerializeAsString();
}

std::string subjectOf(const std::string& topic, const std::string& from, const std::string& to) {
    return agent::judge(kAgent, topic, record(from, to)).subject;
}

TEST(UspDoctor, NamesSwappedTopics) {
    const Finding finding = agent::judge(kAgent, "/usp/controller", record("proto::lab", "os::025176-1"));
    EXPECT_EQ(finding.subject, "swapped topics");
    EXPECT_FALSE(finding.isGood);
    EXPECT_NE(finding.text.find("/usp/endpoint"), std::string::npos);
}

TEST(UspDoctor, NamesAnotherTopic) {
    EXPECT_EQ(subjectOf("somewhere/else", "proto::lab", "os::025176-1"), "wrong topic");
}

TEST(UspDoctor, NamesAWrongToId) {
    EXPECT_EQ(subjectOf("/usp/endpoint", "proto::lab", "proto::gw-1"), "wrong to_id");
}

TEST(UspDoctor, NamesAnUnknownController) {
    EXPECT_EQ(subjectOf("/usp/endpoint", "proto::stranger", "os::025176-1"), "unknown controller");
}

TEST(UspDoctor, IsContentWithAKnownController) {
    EXPECT_TRUE(agent::judge(kAgent, "/usp/endpoint", record("proto::lab", "os::025176-1")).isGood);
}

TEST(UspDoctor, SaysNothingOfTheAgentItselfOrOfOthers) {
    EXPECT_EQ(subjectOf("/usp/controller", "os::025176-1", "proto::lab"), "");
    EXPECT_EQ(subjectOf("somewhere/else", "proto::a", "proto::b"), "");
    EXPECT_EQ(agent::judge(kAgent, "/usp/endpoint", "no Record").subject, "");
}

}  // namespace
}  // namespace quorvel::agent_test
