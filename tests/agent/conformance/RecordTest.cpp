// Records that must be met with silence, and those that must not.
#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

class Records : public Tp469 {
  protected:
    // Sends a Record and expects nothing in return, up to the answer of a request behind it.
    void expectSilence(const std::string& bytes) {
        (void)controller_.drain();
        controller_.postBytes(bytes);
        EXPECT_EQ(controller_.drain(), 0U);
    }
    usp_record::Record request() {
        return controller_.wrap(controller_.message(get({"Device.LocalAgent.EndpointID"})));
    }
};

TEST_F(Records, T2_1_OwnFromIdIsDropped) {
    usp_record::Record record = request();
    record.set_from_id(kAgentId);
    expectSilence(record.SerializeAsString());
}

TEST_F(Records, T2_2_WrongToIdIsDropped) {
    usp_record::Record record = request();
    record.set_to_id("proto::somebody-else");
    expectSilence(record.SerializeAsString());
}

TEST_F(Records, T3_1_JunkIsDropped) {
    expectSilence("this is not a Record");
    expectSilence(request().SerializeAsString().substr(0, 20));
}

}  // namespace
}  // namespace quorvel::agent_test
