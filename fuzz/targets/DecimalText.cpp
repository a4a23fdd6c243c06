#include "wifi/parsing/DecimalText.h"
#include "fuzz/Input.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

// Numbers as the library reads and writes them, against the C library's own reading and writing.

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using quorvel::fuzz::require;
    const std::string text = std::string(reinterpret_cast<const char*>(data), size).c_str();
    const long number = quorvel::decimalNumber(text.c_str());
    require(number == std::strtol(text.c_str(), nullptr, 10), "a number is the C library's");

    std::uint32_t counter = 0;
    const char* end = quorvel::nextCounter(text.c_str(), counter);
    char* expectedEnd = nullptr;
    const unsigned long expected = std::strtoul(text.c_str(), &expectedEnd, 10);
    if (end == nullptr) {
        require(expectedEnd == text.c_str(), "what is no number is none for the C library");
    } else {
        require(end == expectedEnd, "a number ends where the C library's does");
        require(counter == static_cast<std::uint32_t>(expected), "a counter is the low 32 bits of the C library's");
    }

    unsigned long any = 0;
    const bool three = std::sscanf(text.c_str(), "%lu %lu %lu", &any, &any, &any) == 3;
    require(quorvel::beginsWithCounters(text.c_str(), 3) == three, "numbers in a row are the C library's");

    char written[16];
    const char* behind = quorvel::appendDecimal(written, counter);
    require(std::string(written) == std::to_string(counter), "a number is written as the C library does");
    require(*behind == '\0', "a written number is terminated");
    return 0;
}
