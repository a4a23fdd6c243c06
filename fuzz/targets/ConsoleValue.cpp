#include <string>

#include "fuzz/Input.h"
#include "fuzz/PluginModel.h"
#include "gateway/hostd/Accessors.h"

// Values as a person types them, for parameters of every type.

using quorvel::fuzz::pluginModel;
using quorvel::fuzz::require;
using namespace quorvel::hostd;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::Input input(data, size);
    const Parameter& parameter = pluginModel().parameters()[input.byte() % pluginModel().parameters().size()];
    const std::string text = input.rest();
    Value value;
    const FaultCode code = parse(parameter, text, value);
    require(code == FaultCode::kNone || code == FaultCode::kWrongType || code == FaultCode::kValueRefused,
            "a text is a value, of the wrong type, or out of range");
    if (code != FaultCode::kNone) {
        return 0;
    }
    require(value.type == parameter.type, "a value has its parameter's type");
    require(value.type != Type::kBoolean || value.number <= 1, "a boolean is 0 or 1");
    require(value.type != Type::kText || value.text == text, "a text is taken whole");
    return 0;
}
