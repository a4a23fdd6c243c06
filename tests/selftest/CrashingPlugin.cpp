// A library whose one function does not look at what it is given.
#include <cstdint>

extern "C" __attribute__((visibility("default"))) std::uint32_t WiFiRadioStatsInitContext(
    volatile std::uint8_t* context) {
    *context = 1;
    return 0;
}
