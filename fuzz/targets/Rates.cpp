#include <cstring>
#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// Rate lists: the manager's texts when they are read, the host's when they are written.

namespace {

using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

using TextGetter = std::uint32_t (*)(std::uint32_t radio, char* buf, std::uint32_t len);

void read(TextGetter getter, std::uint32_t length) {
    ExactBuffer buffer(length + 1);
    const std::uint32_t result = getter(1, buffer.get(), length);
    require(isReadResult(result), "a read's result is one of a read");
    require(std::memchr(buffer.get(), '\0', length + 1) != nullptr, "what is read is terminated");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    run.platform.setVariableEverywhere("wlBand", std::to_string(input.byte() % 4));
    run.platform.setVariableEverywhere("wlgMode", std::to_string(input.byte() % 3));
    const std::string bytes = input.rest().substr(0, 1023);
    const std::string text = bytes.c_str();
    for (const char* name : {"wlBasicRate", "operationalDataTransmitRates", "supportedDataTransmitRates"}) {
        run.platform.setVariableEverywhere(name, text);
    }
    read(WiFiRadioBasicDataTransmitRatesGet, 256);
    read(WiFiRadioOperationalDataTransmitRatesGet, 256);
    read(WiFiRadioSupportedDataTransmitRatesGet, 256);
    ExactBuffer context(sizeof(WiFiRadioContext));
    require(WiFiRadioInitContext(context.get()) == 0, "the context is initialised");
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const std::uint32_t basic = WiFiRadioBasicDataTransmitRatesSet(context.get(), 1, bytes.data(), length);
    require(basic == 0 || basic == 8, "a text is staged or too long");
    const std::uint32_t operational = WiFiRadioOperationalDataTransmitRatesSet(context.get(), 1, bytes.data(), length);
    require(operational == 0 || operational == 8, "a text is staged or too long");
    require(isReadResult(WiFiRadioApplyContext(context.get(), 1)), "an apply's result is one of an apply");
    return 0;
}
