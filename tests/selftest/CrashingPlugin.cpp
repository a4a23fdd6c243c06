// A library whose one function does not look at what it is given.
#include <cstdint>

extern "C" __attribute__((visibility("default"))) uint32_t WiFiRadioStatsInitContext(volatile uint8_t* context) {
    *context = 1;
    return 0;
}
