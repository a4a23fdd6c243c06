#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/wifi/AllReadsSucceed.h"
#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

// Checks the common pattern of all accessors with every parameter of the data model.

namespace quorvel {

namespace {

using datamodel::Access;
using datamodel::Object;
using datamodel::objects;
using datamodel::Parameter;
using datamodel::parameters;
using datamodel::Type;
using scripted::GuardedBlock;
using scripted::LogLine;

using Texts = std::vector<std::string>;

constexpr std::size_t kHeader = 132;
constexpr std::size_t kOutputSize = 8192;

bool isPin(const Parameter& parameter) {
    return std::strcmp(parameter.stem, "WiFiAccessPointWPSDevicePIN") == 0 ||
           std::strcmp(parameter.stem, "WiFiAccessPointWPSEnrolleePin") == 0;
}

bool isNeighbouring(const Parameter& parameter) {
    return std::strcmp(parameter.prefix, "WiFiNeighboringDiagnosticsResult") == 0;
}

class FrontEnd : public scripted::PlatformTest {
  protected:
    // The lines that the function itself logged, as "level text".
    Texts linesOf(const std::string& function, const std::string& file) const {
        Texts lines;
        for (const LogLine& line : platform.logs()) {
            if (line.function == function) {
                lines.push_back(std::to_string(line.level) + " " + line.text);
                EXPECT_EQ(line.file, file) << line.text;
                EXPECT_GT(line.line, 0U) << line.text;
            }
        }
        return lines;
    }

    // The function's own log lines and the host's calls of these names, in order.
    Texts sequenceOf(const std::string& function, std::initializer_list<const char*> calls) const {
        std::map<std::uint64_t, std::string> ordered;
        for (const LogLine& line : platform.logs()) {
            if (line.function == function) {
                ordered[line.order] = std::to_string(line.level) + " " + line.text;
            }
        }
        for (const scripted::Call& call : platform.calls()) {
            for (const char* name : calls) {
                if (call.name == name) {
                    ordered[call.order] = call.name;
                }
            }
        }
        Texts sequence;
        for (const auto& step : ordered) {
            sequence.push_back(step.second);
        }
        return sequence;
    }

    std::size_t locks() const {
        return platform.callCount("QuorvelOsMutexLock");
    }

    std::size_t unlocks() const {
        return platform.callCount("QuorvelOsMutexUnlock");
    }

    void fresh() {
        platform.reset();
    }
};

class Getters : public FrontEnd {
  protected:
    // Calls `check` for each parameter with a getter, on a platform reset before each.
    template <typename Check>
    void forEach(Check check) {
        for (const Parameter& parameter : parameters()) {
            if (parameter.getter == nullptr) {
                continue;
            }
            SCOPED_TRACE(parameter.getterName());
            fresh();
            check(parameter);
        }
    }

    Texts lines(const Parameter& parameter) const {
        return linesOf(parameter.getterName(), parameter.object().file());
    }

    Texts sequence(const Parameter& parameter) const {
        return sequenceOf(parameter.getterName(), {"QuorvelOsMutexLock", "QuorvelOsMutexUnlock"});
    }

    GuardedBlock output{kOutputSize};
};

TEST_F(Getters, RefuseANullOutputWithoutLocking) {
    forEach([this](const Parameter& parameter) {
        EXPECT_EQ(parameter.get(1, 1, nullptr, kOutputSize), 6U);
        EXPECT_EQ(lines(parameter), (Texts{"3 " + parameter.getterName() + " Enter", "0 Invalid input params"}));
        EXPECT_EQ(platform.callTexts(), Texts{});
    });
}

TEST_F(Getters, RefuseABufferBelowTheMinimumWithoutLocking) {
    forEach([this](const Parameter& parameter) {
        if (parameter.type != Type::String) {
            return;
        }
        for (const std::uint32_t length : {0U, parameter.capacity - 1}) {
            fresh();
            EXPECT_EQ(parameter.get(1, 1, output.get(), length), 8U);
            EXPECT_EQ(lines(parameter), (Texts{"3 " + parameter.getterName() + " Enter", "0 Value out of range"}));
            EXPECT_EQ(platform.callTexts(), Texts{});
        }
        EXPECT_EQ(parameter.get(1, 1, nullptr, 0), 6U);
    });
}

TEST_F(Getters, ProceedWithABufferOfExactlyTheMinimum) {
    forEach([this](const Parameter& parameter) {
        if (parameter.type != Type::String) {
            return;
        }
        scripted::letAllReadsSucceed(platform);
        (void)parameter.get(1, 1, output.get(), parameter.capacity);
        EXPECT_EQ(locks(), 1U);
        EXPECT_EQ(unlocks(), 1U);
        EXPECT_FALSE(platform.logged(0, "Value out of range"));
    });
}

TEST_F(Getters, LockCallUnlockAndSaySo) {
    std::size_t succeeded = 0;
    forEach([this, &succeeded](const Parameter& parameter) {
        scripted::letAllReadsSucceed(platform);
        const std::uint32_t result = parameter.get(1, 1, output.get(), kOutputSize);
        if (isNeighbouring(parameter)) {
            EXPECT_EQ(result, 1U);
            return;
        }
        EXPECT_EQ(result, 0U);
        EXPECT_EQ(lines(parameter),
                  (Texts{"3 " + parameter.getterName() + " Enter", "3 " + parameter.getterName() + " DONE"}));
        EXPECT_EQ(locks(), 1U);
        EXPECT_EQ(unlocks(), 1U);
        EXPECT_TRUE(output.intact());
        ++succeeded;
    });
    EXPECT_EQ(succeeded, 245U - 1U - 18U);  // one parameter is write-only, and there are no scan results
}

TEST_F(Getters, AskThePlatformForValuesOnlyUnderTheLock) {
    forEach([this](const Parameter& parameter) {
        scripted::letAllReadsSucceed(platform);
        (void)parameter.get(1, 1, output.get(), kOutputSize);
        for (const scripted::Call& call : platform.calls()) {
            if (call.name.rfind("Quorvel", 0) != 0) {
                EXPECT_TRUE(call.lockHeld) << call.text();
            }
        }
    });
}

TEST_F(Getters, ReturnTheLocksFailure) {
    forEach([this](const Parameter& parameter) {
        platform.answer("QuorvelOsMutexLock", 77);
        EXPECT_EQ(parameter.get(1, 1, output.get(), kOutputSize), 77U);
        EXPECT_EQ(lines(parameter), (Texts{"3 " + parameter.getterName() + " Enter", "0 Lock failed, result 77"}));
        EXPECT_EQ(unlocks(), 0U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_nvram_get", "popen", "fopen"}),
                  Texts{});
    });
}

TEST_F(Getters, ReleaseTheLockAndReturnTheImplementationsFailure) {
    std::size_t failed = 0;
    forEach([this, &failed](const Parameter& parameter) {
        const std::uint32_t result = parameter.get(1, 1, output.get(), kOutputSize);
        EXPECT_EQ(locks(), 1U);
        EXPECT_EQ(unlocks(), 1U);
        const std::string last = result == 0 ? "3 " + parameter.getterName() + " DONE"
                                             : "0 Impl call failed, result " + std::to_string(result);
        EXPECT_EQ(lines(parameter), (Texts{"3 " + parameter.getterName() + " Enter", last}));
        failed += result == 0 ? 0 : 1;
    });
    EXPECT_GT(failed, 100U);  // every mapped read fails on a platform without variables
}

TEST_F(Getters, PreferTheImplementationsFailureToTheUnlocks) {
    const Parameter& parameter = datamodel::parameter("WiFiRadioChannel");
    platform.answer("QuorvelOsMutexUnlock", 55);
    EXPECT_EQ(parameter.get(1, 1, output.get(), kOutputSize), 1U);
    EXPECT_FALSE(platform.logged(0, "Unlock failed, result 55"));
}

TEST_F(Getters, ReturnTheUnlocksFailureThoughTheValueWasRead) {
    forEach([this](const Parameter& parameter) {
        if (isNeighbouring(parameter)) {
            return;
        }
        scripted::letAllReadsSucceed(platform);
        platform.answer("QuorvelOsMutexUnlock", 55);
        EXPECT_EQ(parameter.get(1, 1, output.get(), kOutputSize), 55U);
        EXPECT_EQ(lines(parameter), (Texts{"3 " + parameter.getterName() + " Enter", "0 Unlock failed, result 55"}));
    });
}

TEST_F(Getters, LogAndLockInOrder) {
    forEach([this](const Parameter& parameter) {
        const std::string enter = "3 " + parameter.getterName() + " Enter";
        std::uint32_t result = parameter.get(1, 1, output.get(), kOutputSize);
        if (result != 0) {
            EXPECT_EQ(sequence(parameter),
                      (Texts{enter, "QuorvelOsMutexLock", "0 Impl call failed, result " + std::to_string(result),
                             "QuorvelOsMutexUnlock"}));
        }
        fresh();
        scripted::letAllReadsSucceed(platform);
        result = parameter.get(1, 1, output.get(), kOutputSize);
        if (result == 0) {
            EXPECT_EQ(sequence(parameter), (Texts{enter, "QuorvelOsMutexLock", "QuorvelOsMutexUnlock",
                                                  "3 " + parameter.getterName() + " DONE"}));
        }
        platform.forget();
        platform.answer("QuorvelOsMutexLock", 77);
        EXPECT_EQ(parameter.get(1, 1, output.get(), kOutputSize), 77U);
        EXPECT_EQ(sequence(parameter), (Texts{enter, "QuorvelOsMutexLock", "0 Lock failed, result 77"}));
    });
}

TEST_F(Getters, GiveTheCallersLengthToTheImplementation) {
    const std::pair<const char*, const char*> texts[] = {
        {"WiFiBridgeInfo", "wlBridgeInfo"},
        {"WiFiRadioAlias", "rAlias"},
        {"WiFiRadioAutoChannelSelectionPreferenceList", "wlAcsPrefChannels"},
        {"WiFiSSIDSSID", "wlSsid"},
        {"WiFiAccessPointStatus", "status"},
        {"WiFiAccessPointAccessPointControlFilterTableMacAddress", "wlFltMacList"},
        {"WiFiAccessPointSecurityWEPKey", "wlKey1"},
        {"WiFiAccessPointWPSDevicePIN", "wlWscDevPin"},
    };
    for (const auto& [stem, variable] : texts) {
        SCOPED_TRACE(stem);
        fresh();
        const Parameter& parameter = datamodel::parameter(stem);
        platform.setVariableEverywhere(variable, std::string(1000, 'x'));
        for (const std::uint32_t length : {parameter.capacity, parameter.capacity + 7}) {
            GuardedBlock text(length);
            EXPECT_EQ(parameter.get(1, 1, text.get(), length), 0U);
            EXPECT_EQ(text.bytes(0, length), std::string(length - 1, 'x') + '\0');
            EXPECT_TRUE(text.intact());
        }
    }
}

TEST_F(Getters, LeaveTheInstanceToTheImplementation) {
    std::uint32_t value = 0;
    EXPECT_EQ(datamodel::parameter("WiFiRadioBeaconPeriod").get(4, 0, &value, 0), 6U);
    EXPECT_EQ(locks(), 1U);
    EXPECT_TRUE(platform.logged(0, "Invalid radioIdx[4] or ssidIdx[1]"));
    EXPECT_TRUE(platform.logged(0, "Impl call failed, result 6"));
}

class Setters : public FrontEnd {
  protected:
    // Calls `check` for each staging setter with an initialised context whose fields hold 0xAA.
    template <typename Check>
    void forEach(Check check) {
        for (const Parameter& parameter : parameters()) {
            if (!parameter.staged()) {
                continue;
            }
            SCOPED_TRACE(parameter.setterName());
            fresh();
            GuardedBlock context = prepared(parameter);
            check(parameter, context);
            EXPECT_TRUE(context.intact());
            EXPECT_EQ(locks(), 0U);
            EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set", "wlcsm_mngr_restart", "system"}),
                      Texts{});
        }
    }

    GuardedBlock prepared(const Parameter& parameter) {
        const Object& object = parameter.object();
        GuardedBlock context(object.contextSize);
        EXPECT_EQ(object.initContext(context.get()), 0U);
        context.write(kHeader, std::string(object.contextSize - kHeader, '\xAA'));
        platform.forget();
        return context;
    }

    std::uint32_t setSomething(const Parameter& parameter, void* ctx) const {
        return parameter.type == Type::String ? parameter.setText(ctx, "text", 4)
                                              : parameter.setNumber(ctx, parameter.low);
    }

    // The context without the parameter's own field.
    static std::string others(const Parameter& parameter, const GuardedBlock& context) {
        return context.bytes(kHeader, parameter.offset() - kHeader) +
               context.bytes(parameter.offset() + parameter.width(),
                             context.size() - parameter.offset() - parameter.width());
    }

    Texts lines(const Parameter& parameter) const {
        return linesOf(parameter.setterName(), parameter.object().file());
    }

    Texts refused(const Parameter& parameter, const std::string& message) const {
        return {"3 " + parameter.setterName() + " Enter", "0 " + message};
    }

    Texts done(const Parameter& parameter) const {
        return {"3 " + parameter.setterName() + " Enter", "3 " + parameter.setterName() + " DONE"};
    }
};

TEST_F(Setters, RefuseANullContext) {
    forEach([this](const Parameter& parameter, GuardedBlock&) {
        EXPECT_EQ(setSomething(parameter, nullptr), 2U);
        EXPECT_EQ(lines(parameter), refused(parameter, "Invalid context"));
    });
}

TEST_F(Setters, RefuseAContextThatWasNeverInitialised) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        context.write(0, std::string(context.size(), '\xBB'));
        EXPECT_EQ(setSomething(parameter, context.get()), 5U);
        EXPECT_EQ(lines(parameter), refused(parameter, "Uninit context"));
        EXPECT_EQ(context.bytes(0, context.size()), std::string(context.size(), '\xBB'));
    });
}

TEST_F(Setters, TakeAnyAnswerButZeroForAnUninitialisedContext) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        const std::string before = context.bytes(0, context.size());
        platform.answer("Quorvel_IsContextInit", 64);
        EXPECT_EQ(setSomething(parameter, context.get()), 5U);
        EXPECT_EQ(lines(parameter), refused(parameter, "Uninit context"));
        EXPECT_EQ(context.bytes(0, context.size()), before);
    });
}

TEST_F(Setters, RefuseANullText) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type != Type::String) {
            return;
        }
        const std::string before = context.bytes(0, context.size());
        EXPECT_EQ(parameter.setText(context.get(), nullptr, 4), 6U);
        EXPECT_EQ(lines(parameter), refused(parameter, "Invalid input params"));
        EXPECT_EQ(context.bytes(0, context.size()), before);
    });
}

TEST_F(Setters, AcceptATextThatFillsItsField) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type != Type::String || isPin(parameter)) {
            return;
        }
        const std::string text(parameter.capacity, 'x');
        EXPECT_EQ(parameter.setText(context.get(), (text + "beyond").c_str(), parameter.capacity), 0U);
        EXPECT_EQ(context.bytes(parameter.offset(), parameter.capacity), text);
        EXPECT_EQ(others(parameter, context), std::string(context.size() - kHeader - parameter.width(), '\xAA'));
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 1U);
        EXPECT_EQ(lines(parameter), done(parameter));
    });
}

TEST_F(Setters, RefuseATextLongerThanItsField) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type != Type::String || isPin(parameter)) {
            return;
        }
        const std::string before = context.bytes(0, context.size());
        const std::string text(parameter.capacity + 1, 'x');
        for (const std::uint32_t length : {parameter.capacity + 1, 0xFFFFFFFFU}) {
            platform.forget();
            EXPECT_EQ(parameter.setText(context.get(), text.c_str(), length), 8U);
            EXPECT_EQ(lines(parameter), refused(parameter, "Value out of range"));
            EXPECT_EQ(context.bytes(0, context.size()), before);
        }
    });
}

TEST_F(Setters, ReplaceTheWholeField) {
    forEach([](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type != Type::String || isPin(parameter)) {
            return;
        }
        const std::string full(parameter.capacity, 'x');
        ASSERT_EQ(parameter.setText(context.get(), full.c_str(), parameter.capacity), 0U);
        std::string expected(parameter.capacity, '\0');
        expected.replace(0, 2, "ab");
        // Two bytes are asked for; then four, of which the text's end leaves two.
        EXPECT_EQ(parameter.setText(context.get(), "abcd", 2), 0U);
        EXPECT_EQ(context.bytes(parameter.offset(), parameter.capacity), expected);
        ASSERT_EQ(parameter.setText(context.get(), full.c_str(), parameter.capacity), 0U);
        EXPECT_EQ(parameter.setText(context.get(), "ab\0d", 4), 0U);
        EXPECT_EQ(context.bytes(parameter.offset(), parameter.capacity), expected);
        ASSERT_EQ(parameter.setText(context.get(), full.c_str(), parameter.capacity), 0U);
        EXPECT_EQ(parameter.setText(context.get(), "", 0), 0U);
        EXPECT_EQ(context.bytes(parameter.offset(), parameter.capacity), std::string(parameter.capacity, '\0'));
    });
}

TEST_F(Setters, StageNumbersInTheirField) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type == Type::String) {
            return;
        }
        const std::set<std::uint32_t> values = {parameter.low, parameter.low + (parameter.high - parameter.low) / 2,
                                                parameter.high};
        for (const std::uint32_t value : values) {
            platform.forget();
            EXPECT_EQ(parameter.setNumber(context.get(), value), 0U) << value;
            if (parameter.type == Type::Boolean) {
                EXPECT_EQ(context.at<std::uint8_t>(parameter.offset()), value);
            } else {
                EXPECT_EQ(context.at<std::uint32_t>(parameter.offset()), value);
            }
            EXPECT_EQ(lines(parameter), done(parameter));
        }
        EXPECT_EQ(others(parameter, context), std::string(context.size() - kHeader - parameter.width(), '\xAA'));
    });
}

TEST_F(Setters, RefuseNumbersOutOfRange) {
    std::size_t refusals = 0;
    forEach([this, &refusals](const Parameter& parameter, GuardedBlock& context) {
        if (parameter.type == Type::String || parameter.high == 0xFFFFFFFFU) {
            return;
        }
        std::set<std::uint32_t> values = {parameter.high + 1, 256U, 257U, 0x80000000U, 0xFFFFFFFFU};
        if (parameter.low > 0) {
            values.insert({0U, parameter.low - 1});
        }
        const std::string before = context.bytes(0, context.size());
        for (const std::uint32_t value : values) {
            platform.forget();
            EXPECT_EQ(parameter.setNumber(context.get(), value), 8U) << value;
            EXPECT_EQ(lines(parameter), refused(parameter, "Value out of range")) << value;
            EXPECT_EQ(context.bytes(0, context.size()), before) << value;
        }
        ++refusals;
    });
    EXPECT_GT(refusals, 30U);
}

TEST_F(Setters, MarkTheirOwnNodeAndNoOther) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        if (isPin(parameter)) {
            EXPECT_EQ(parameter.setText(context.get(), "12345678", 8), 0U);
        } else {
            EXPECT_EQ(setSomething(parameter, context.get()), 0U);
        }
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextSetMap"}),
                  Texts{"Quorvel_ContextSetMap(ctx, " + std::to_string(parameter.node) + ")"});
        for (std::uint32_t node = 0; node <= parameter.object().nodeLimit; ++node) {
            EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), node), node == parameter.node ? 1U : 0U);
        }
    });
}

TEST_F(Setters, LogAndMarkInOrderThoughTheMarkIsRefused) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        for (const std::int64_t answer : {0, 9}) {
            platform.forget();
            platform.answer("Quorvel_ContextSetMap", answer);
            EXPECT_EQ(isPin(parameter) ? parameter.setText(context.get(), "12345678", 8)
                                       : setSomething(parameter, context.get()),
                      0U);
            EXPECT_EQ(sequenceOf(parameter.setterName(),
                                 {"Quorvel_IsContextInit", "Quorvel_ContextSetMap", "Quorvel_ContextInit"}),
                      (Texts{"3 " + parameter.setterName() + " Enter", "Quorvel_IsContextInit", "Quorvel_ContextSetMap",
                             "3 " + parameter.setterName() + " DONE"}));
        }
    });
}

// A context belongs to one instance; the setter ignores the argument.
TEST_F(Setters, DoNotLookAtTheInstances) {
    forEach([](const Parameter& parameter, GuardedBlock& context) {
        const std::string text(isPin(parameter) ? 8 : parameter.capacity, 't');
        if (parameter.type == Type::String) {
            EXPECT_EQ(parameter.setText(context.get(), text.c_str(), static_cast<std::uint32_t>(text.size()), 0, 99),
                      0U);
            EXPECT_EQ(context.bytes(parameter.offset(), text.size()), text);
        } else {
            EXPECT_EQ(parameter.setNumber(context.get(), parameter.high, 0xFFFFFFFF, 0), 0U);
        }
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 1U);
    });
}

TEST_F(Setters, RefuseForTheFirstReason) {
    forEach([this](const Parameter& parameter, GuardedBlock& context) {
        GuardedBlock uninitialised(parameter.object().contextSize);
        const auto set = [&parameter](void* ctx, const char* text, std::uint32_t value) {
            return parameter.type == Type::String ? parameter.setText(ctx, text, value)
                                                  : parameter.setNumber(ctx, value);
        };
        const auto expect = [this, &parameter](std::uint32_t result, std::uint32_t expected, const char* message) {
            EXPECT_EQ(result, expected);
            EXPECT_EQ(lines(parameter), refused(parameter, message));
            platform.forget();
        };
        // A text that is null and too long, or a number that is too high for most.
        expect(set(nullptr, nullptr, 0xFFFFFFFF), 2, "Invalid context");
        expect(set(uninitialised.get(), nullptr, 0xFFFFFFFF), 5, "Uninit context");
        if (parameter.type == Type::String) {
            expect(set(context.get(), nullptr, 0xFFFFFFFF), 6, "Invalid input params");
        }
    });
}

TEST_F(Setters, OfPinsLeaveTheContextWhenTheyRefuse) {
    for (const char* stem : {"WiFiAccessPointWPSDevicePIN", "WiFiAccessPointWPSEnrolleePin"}) {
        SCOPED_TRACE(stem);
        fresh();
        const Parameter& parameter = datamodel::parameter(stem);
        GuardedBlock context = prepared(parameter);
        const std::string before = context.bytes(0, context.size());
        for (const std::uint32_t length : {0U, 3U, 6U, 9U, 16U, 17U, 0xFFFFFFFFU}) {
            platform.forget();
            EXPECT_EQ(parameter.setText(context.get(), "12345678901234567890", length), 8U) << length;
            EXPECT_EQ(lines(parameter), refused(parameter, "Value out of range"));
            EXPECT_EQ(context.bytes(0, context.size()), before);
        }
    }
}

TEST_F(Setters, OfPinsTakeExactLengths) {
    const Parameter& device = datamodel::parameter("WiFiAccessPointWPSDevicePIN");
    const Parameter& enrollee = datamodel::parameter("WiFiAccessPointWPSEnrolleePin");
    GuardedBlock context = prepared(device);
    const std::string digits = "12345678901234567890";
    for (std::uint32_t length = 0; length <= 18; ++length) {
        SCOPED_TRACE(length);
        const std::string text = digits.substr(0, length);
        EXPECT_EQ(device.setText(context.get(), text.c_str(), length), length == 8 ? 0U : 8U);
        EXPECT_EQ(enrollee.setText(context.get(), text.c_str(), length), length == 4 || length == 8 ? 0U : 8U);
    }
    EXPECT_EQ(device.setText(context.get(), "87654321", 16), 0U);
    EXPECT_EQ(context.bytes(device.offset(), 16), std::string("87654321\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(device.setText(context.get(), "12345678", 17), 8U);
    EXPECT_EQ(enrollee.setText(context.get(), "1234", 17), 8U);
    EXPECT_EQ(enrollee.setText(context.get(), "1234", 16), 0U);
    EXPECT_EQ(context.bytes(enrollee.offset(), 16), std::string("1234\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(device.setText(context.get(), nullptr, 8), 6U);
}

class Contexts : public FrontEnd {
  protected:
    template <typename Check>
    void forEach(Check check) {
        for (const Object& object : objects()) {
            SCOPED_TRACE(object.prefix);
            fresh();
            check(object);
        }
    }
};

TEST_F(Contexts, EndWithTheirLastField) {
    forEach([](const Object& object) {
        const std::vector<Parameter> own = datamodel::parametersOf(object.prefix);
        std::size_t end = own.back().offset() + own.back().width();
        if (std::string(object.prefix) == "WiFiAccessPointWPS") {
            end += 16;  // the method's text
        }
        end = (end + 3) / 4 * 4;
        if (std::string(object.prefix) == "WiFiAccessPointAssociatedDevice") {
            end += 32;  // eight counters
        }
        EXPECT_EQ(end, object.contextSize);
    });
}

TEST_F(Contexts, AreInitialisedWithTheirObjectsSize) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        EXPECT_EQ(object.initContext(context.get()), 0U);
        const std::string name = object.function("InitContext");
        EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_ContextInit(ctx, " + std::to_string(object.contextSize) + ")"});
        EXPECT_EQ(linesOf(name, object.file()), (Texts{"3 " + name + " Enter", "3 " + name + " DONE"}));
        EXPECT_EQ(context.bytes(kHeader, object.contextSize - kHeader),
                  std::string(object.contextSize - kHeader, '\0'));
        EXPECT_TRUE(context.intact());
    });
}

TEST_F(Contexts, InitialisationSaysDoneBeforeTheHostIsAsked) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        platform.answer("Quorvel_ContextInit", 9);
        EXPECT_EQ(object.initContext(context.get()), 9U);
        ASSERT_EQ(platform.logs().size(), 2U);
        EXPECT_EQ(platform.logs()[1].text, object.function("InitContext DONE"));
        EXPECT_LT(platform.logs()[1].order, platform.calls().at(0).order);
    });
}

TEST_F(Contexts, RefuseToInitialiseNothing) {
    forEach([this](const Object& object) {
        EXPECT_EQ(object.initContext(nullptr), 2U);
        const std::string name = object.function("InitContext");
        EXPECT_EQ(linesOf(name, object.file()), (Texts{"3 " + name + " Enter", "0 Invalid context"}));
        EXPECT_EQ(platform.callTexts(), Texts{});
    });
}

TEST_F(Contexts, AnswerForNodesUpToTheLimit) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        const std::string name = object.function("CheckContextNodeSet");
        const bool saysDone = std::string(object.prefix) != "WiFiRadioStats";
        for (const std::uint32_t node : {0U, 1U, object.nodeLimit}) {
            platform.forget();
            // Quirk: passes the host's truth value on unchanged.
            platform.answer("Quorvel_IsContextSetMap", 64);
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 64U);
            EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_IsContextSetMap(ctx, " + std::to_string(node) + ")"});
            EXPECT_EQ(linesOf(name, object.file()), saysDone ? Texts{"3 " + name + " DONE"} : Texts{});
            EXPECT_EQ(sequenceOf(name, {"Quorvel_IsContextSetMap"}),
                      saysDone ? (Texts{"3 " + name + " DONE", "Quorvel_IsContextSetMap"})
                               : Texts{"Quorvel_IsContextSetMap"});
            platform.succeed("Quorvel_IsContextSetMap");
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 0U);
        }
    });
}

TEST_F(Contexts, RefuseNodesAboveTheLimit) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        const std::string name = object.function("CheckContextNodeSet");
        const std::string message = std::string(object.prefix) == "WiFi" ? "0 Exceeded nodes" : "0 Exceeded subnodes";
        for (const std::uint32_t node : {object.nodeLimit + 1, 0xFFFFFFFFU}) {
            platform.forget();
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 0U);
            EXPECT_EQ(linesOf(name, object.file()), Texts{message});
            EXPECT_EQ(platform.callTexts(), Texts{});
        }
    });
}

TEST_F(Contexts, AnswerNoForNoContext) {
    forEach([this](const Object& object) {
        const std::string name = object.function("CheckContextNodeSet");
        EXPECT_EQ(object.checkContextNodeSet(nullptr, 1), 0U);
        EXPECT_EQ(linesOf(name, object.file()), Texts{"0 Invalid context"});
        EXPECT_EQ(platform.callTexts(), Texts{});
    });
}

class Applies : public Contexts {
  protected:
    // All objects but the access category, which checks nothing.
    template <typename Check>
    void forEachChecked(Check check) {
        forEach([&check](const Object& object) {
            if (std::string(object.prefix) != "WiFiAccessPointAC") {
                check(object);
            }
        });
    }

    Texts lines(const Object& object) const {
        return linesOf(object.function("ApplyContext"), object.file());
    }
};

TEST_F(Applies, RefuseANullContext) {
    forEachChecked([this](const Object& object) {
        EXPECT_EQ(object.apply(nullptr), 2U);
        EXPECT_EQ(lines(object), (Texts{"3 " + object.function("ApplyContext Enter"), "0 Invalid context"}));
        EXPECT_EQ(platform.callTexts(), Texts{});
    });
}

TEST_F(Applies, RefuseAnUninitialisedContextWithoutLocking) {
    forEachChecked([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        EXPECT_EQ(object.apply(context.get()), 5U);
        EXPECT_EQ(lines(object), (Texts{"3 " + object.function("ApplyContext Enter"), "0 Uninit context"}));
        EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_IsContextInit(ctx)"});
        platform.answer("Quorvel_IsContextInit", 64);
        EXPECT_EQ(object.apply(context.get()), 5U);
        EXPECT_EQ(locks(), 0U);
    });
}

TEST_F(Applies, ReturnTheLocksFailure) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        platform.answer("QuorvelOsMutexLock", 77);
        EXPECT_EQ(object.apply(context.get()), 77U);
        EXPECT_EQ(lines(object), (Texts{"3 " + object.function("ApplyContext Enter"), "0 Lock failed, result 77"}));
        EXPECT_EQ(unlocks(), 0U);
    });
}

TEST_F(Applies, LeaveACleanContextBehind) {
    forEachChecked([this](const Object& object) {
        scripted::letAllReadsSucceed(platform);
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        // RadioApplyTest covers the radio's own nodes.
        const bool radio = std::string(object.prefix).rfind("WiFiRadio", 0) == 0;
        for (const Parameter& parameter : datamodel::parametersOf(object.prefix)) {
            if (parameter.staged() && parameter.type != Type::String &&
                (!radio || std::string(parameter.stem) == "WiFiRadioBeaconPeriod")) {
                ASSERT_EQ(parameter.setNumber(context.get(), parameter.low), 0U) << parameter.name;
            }
        }
        platform.forget();
        EXPECT_EQ(object.apply(context.get()), 0U);
        EXPECT_EQ(lines(object),
                  (Texts{"3 " + object.function("ApplyContext Enter"), "3 " + object.function("ApplyContext DONE")}));
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextInit"}),
                  Texts{"Quorvel_ContextInit(ctx, " + std::to_string(object.contextSize) + ")"});
        for (std::uint32_t node = 0; node <= object.nodeLimit; ++node) {
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 0U);
        }
        EXPECT_EQ(context.bytes(kHeader, object.contextSize - kHeader),
                  std::string(object.contextSize - kHeader, '\0'));
        EXPECT_EQ(locks(), 1U);
        EXPECT_EQ(unlocks(), 1U);
        EXPECT_TRUE(context.intact());
    });
}

TEST_F(Applies, LogLockAndInitialiseInOrder) {
    forEach([this](const Object& object) {
        const bool checked = std::string(object.prefix) != "WiFiAccessPointAC";
        const std::string name = object.function("ApplyContext");
        const auto sequence = [this, &name] {
            return sequenceOf(
                name, {"Quorvel_IsContextInit", "QuorvelOsMutexLock", "QuorvelOsMutexUnlock", "Quorvel_ContextInit"});
        };
        Texts begin = {"3 " + name + " Enter"};
        if (checked) {
            begin.push_back("Quorvel_IsContextInit");
        }
        begin.push_back("QuorvelOsMutexLock");
        const auto and_ = [&begin](const Texts& rest) {
            Texts all = begin;
            all.insert(all.end(), rest.begin(), rest.end());
            return all;
        };
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        platform.forget();
        EXPECT_EQ(object.apply(context.get()), 0U);
        EXPECT_EQ(sequence(), checked ? and_({"QuorvelOsMutexUnlock", "Quorvel_ContextInit", "3 " + name + " DONE"})
                                      : and_({"QuorvelOsMutexUnlock", "3 " + name + " DONE"}));
        platform.forget();
        platform.answer("QuorvelOsMutexUnlock", 55);
        EXPECT_EQ(object.apply(context.get()), 55U);
        EXPECT_EQ(sequence(), and_({"QuorvelOsMutexUnlock", "0 Unlock failed, result 55"}));
        platform.reset();
        ASSERT_EQ(object.initContext(context.get()), 0U);
        platform.forget();
        platform.answer("QuorvelOsMutexLock", 77);
        EXPECT_EQ(object.apply(context.get()), 77U);
        EXPECT_EQ(sequence(), and_({"0 Lock failed, result 77"}));
    });
}

TEST_F(Applies, NameTheImplementationsFailureBeforeTheyUnlock) {
    GuardedBlock context(344);
    ASSERT_EQ(datamodel::parameter("WiFiSSIDSSID").object().initContext(context.get()), 0U);
    platform.forget();
    EXPECT_EQ(WiFiSSIDApplyContext(context.get(), 25), 6U);
    EXPECT_EQ(sequenceOf("WiFiSSIDApplyContext", {"Quorvel_IsContextInit", "QuorvelOsMutexLock", "QuorvelOsMutexUnlock",
                                                  "Quorvel_ContextInit"}),
              (Texts{"3 WiFiSSIDApplyContext Enter", "Quorvel_IsContextInit", "QuorvelOsMutexLock",
                     "0 Impl call failed, result 6", "QuorvelOsMutexUnlock"}));
}

TEST_F(Applies, DoNotLookAtTheResultOfInitialisingAgain) {
    forEachChecked([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        platform.answer("Quorvel_ContextInit", 9);
        EXPECT_EQ(object.apply(context.get()), 0U);
    });
}

TEST_F(Applies, ReturnTheUnlocksFailureAndKeepTheContext) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        platform.forget();
        platform.answer("QuorvelOsMutexUnlock", 55);
        EXPECT_EQ(object.apply(context.get()), 55U);
        EXPECT_EQ(lines(object), (Texts{"3 " + object.function("ApplyContext Enter"), "0 Unlock failed, result 55"}));
        EXPECT_EQ(platform.callCount("Quorvel_ContextInit"), 0U);
    });
}

TEST_F(Applies, KeepTheContextWhenTheImplementationFails) {
    const Parameter& ssid = datamodel::parameter("WiFiSSIDSSID");
    GuardedBlock context(ssid.object().contextSize);
    ASSERT_EQ(ssid.object().initContext(context.get()), 0U);
    ASSERT_EQ(ssid.setText(context.get(), "home", 4), 0U);
    const std::string before = context.bytes(0, context.size());
    platform.forget();
    using Apply = std::uint32_t (*)(void*, std::uint32_t);
    EXPECT_EQ(reinterpret_cast<Apply>(ssid.object().applyContext)(context.get(), 25), 6U);
    EXPECT_EQ(lines(ssid.object()), (Texts{"3 WiFiSSIDApplyContext Enter", "0 Impl call failed, result 6"}));
    EXPECT_EQ(context.bytes(0, context.size()), before);
    EXPECT_EQ(unlocks(), 1U);
    platform.answer("QuorvelOsMutexUnlock", 55);
    EXPECT_EQ(reinterpret_cast<Apply>(ssid.object().applyContext)(context.get(), 25), 6U);
}

// The first call that locks creates the lock; each later call tries again until one succeeds.
TEST(FirstOfAll, EveryWrapperReturnsTheFailureToCreateTheLock) {
    EXPECT_TRUE(scripted::runFresh([] {
        scripted::Platform& platform = scripted::Platform::instance();
        platform.answer("QuorvelOsCreateMutex", 33);
        GuardedBlock output(kOutputSize);
        for (const Parameter& parameter : parameters()) {
            if (parameter.getter != nullptr) {
                EXPECT_EQ(parameter.get(1, 1, output.get(), kOutputSize), 33U) << parameter.stem;
            }
        }
        for (const Object& object : objects()) {
            GuardedBlock context(object.contextSize);
            ASSERT_EQ(object.initContext(context.get()), 0U);
            EXPECT_EQ(object.apply(context.get()), 33U) << object.prefix;
        }
        EXPECT_EQ(platform.logCount(0, "Lock failed, result 33"), 244U + 19U);
        EXPECT_EQ(platform.callCount("QuorvelOsCreateMutex"), 244U + 19U);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 0U);
        platform.succeed("QuorvelOsCreateMutex");
        std::uint8_t value = 0;
        EXPECT_EQ(datamodel::parameter("WiFiATMCapable").get(1, 1, &value, 0), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
    }));
}

}  // namespace

}  // namespace quorvel
