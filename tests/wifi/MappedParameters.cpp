#include "tests/wifi/MappedParameters.h"

#include <vector>

namespace quorvel {

using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

std::string MappedParameters::readCall(const char* variable) {
    return "wlcsm_mngr_ext_get(1, 2, \"" + std::string(variable) + "\")";
}

std::string MappedParameters::writeCall(const char* variable, const std::string& text) {
    return "wlcsm_mngr_set(1, 2, \"" + std::string(variable) + "\", \"" + text + "\")";
}

void MappedParameters::expectUnderLock(const char* call) {
    for (const auto& made : platform.calls()) {
        if (made.name == call) {
            EXPECT_TRUE(made.lockHeld) << made.text();
        }
    }
}

void MappedParameters::expectRead(const MappedNumber& number) {
    SCOPED_TRACE(std::string(number.stem) + " from \"" + number.text + "\"");
    const Parameter& parameter = datamodel::parameter(number.stem);
    platform.forget();
    platform.setVariable(kRadioIndex, kSubIndex, number.variable, number.text);
    GuardedBlock out(parameter.width());
    EXPECT_EQ(parameter.get(kAccessPoint, 0, out.get(), 0), 0U);
    if (parameter.type == Type::Boolean) {
        EXPECT_EQ(out.at<std::uint8_t>(0), number.value);
    } else {
        EXPECT_EQ(out.at<std::uint32_t>(0), number.value);
    }
    EXPECT_TRUE(out.intact());
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get"}), Texts{readCall(number.variable)});
    expectUnderLock("wlcsm_mngr_ext_get");
}

void MappedParameters::expectRead(const MappedText& text) {
    SCOPED_TRACE(text.stem);
    const Parameter& parameter = datamodel::parameter(text.stem);
    // The last text leaves no room for its end and is cut to make some.
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{1}, std::size_t{parameter.capacity - 1}, std::size_t{parameter.capacity + 1}}) {
        platform.forget();
        const std::string value(length, 'v');
        platform.setVariable(kRadioIndex, kSubIndex, text.variable, value);
        GuardedBlock out(parameter.capacity);
        EXPECT_EQ(parameter.get(kAccessPoint, 0, out.get(), parameter.capacity), 0U);
        EXPECT_STREQ(out.text(), value.substr(0, parameter.capacity - 1).c_str());
        EXPECT_TRUE(out.intact());
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get"}), Texts{readCall(text.variable)});
        expectUnderLock("wlcsm_mngr_ext_get");
    }
}

void MappedParameters::expectFailure(const char* stem, const char* variable) {
    SCOPED_TRACE(stem);
    const Parameter& parameter = datamodel::parameter(stem);
    platform.forget();
    platform.removeVariable(kRadioIndex, kSubIndex, variable);
    const std::size_t size = parameter.type == Type::String ? parameter.capacity : parameter.width();
    GuardedBlock out(size);
    EXPECT_EQ(parameter.get(kAccessPoint, 0, out.get(), parameter.capacity), 1U);
    EXPECT_EQ(out.bytes(0, size), std::string(size, '\xEE'));
    EXPECT_TRUE(out.intact());
    EXPECT_TRUE(platform.logged(0, "wlcsm_mngr_get: radio[1], ssid[2], varName[" + std::string(variable) + "] FAIL."));
    EXPECT_TRUE(platform.logged(0, "Impl call failed, result 1"));
}

void MappedParameters::expectWritten(const MappedNumber& number, Apply apply) {
    SCOPED_TRACE(std::string(number.stem) + " to \"" + number.text + "\"");
    const Parameter& parameter = datamodel::parameter(number.stem);
    GuardedBlock context(parameter.object().contextSize);
    ASSERT_EQ(parameter.object().initContext(context.get()), 0U);
    ASSERT_EQ(parameter.setNumber(context.get(), number.value), 0U);
    platform.forget();
    EXPECT_EQ(apply(context.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"}),
              Texts{writeCall(number.variable, number.text)});
    expectUnderLock("wlcsm_mngr_set");
    EXPECT_TRUE(context.intact());
}

void MappedParameters::expectWritten(const MappedText& text, Apply apply) {
    SCOPED_TRACE(text.stem);
    const Parameter& parameter = datamodel::parameter(text.stem);
    for (const std::uint32_t length : {0U, 1U, parameter.capacity}) {
        GuardedBlock context(parameter.object().contextSize);
        ASSERT_EQ(parameter.object().initContext(context.get()), 0U);
        context.write(132, std::string(context.size() - 132, 'Z'));
        const std::string value(length, 'v');
        ASSERT_EQ(parameter.setText(context.get(), value.c_str(), length), 0U);
        platform.forget();
        EXPECT_EQ(apply(context.get(), kAccessPoint), 0U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"}), Texts{writeCall(text.variable, value)});
        expectUnderLock("wlcsm_mngr_set");
        EXPECT_TRUE(context.intact());
    }
}

void MappedParameters::expectUntouched(const char* stem) {
    SCOPED_TRACE(stem);
    const Parameter& parameter = datamodel::parameter(stem);
    const std::size_t size = parameter.type == Type::String ? parameter.capacity : parameter.width();
    platform.forget();
    GuardedBlock out(size);
    EXPECT_EQ(parameter.get(kAccessPoint, 1, out.get(), parameter.capacity), 0U);
    EXPECT_EQ(out.bytes(0, size), std::string(size, '\xEE'));
    EXPECT_TRUE(out.intact());
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get", "wlcsm_nvram_get"}), Texts{});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

}  // namespace quorvel
