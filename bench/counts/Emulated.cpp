// Runs operations for instructions.py, which counts the instructions that the emulator logs. The cost of a call is the
// difference of two loops of different length: a mark is executed before, between and after them. Prints for each
// operation and side: loops, the operation, the side, the difference of the loops; and what is mapped where.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "bench/counts/NullPlatform.h"
#include "bench/counts/Operation.h"

extern "C" {
/// The mark. Its address is known before the program starts, since the program is loaded where it was linked.
void quorvelBenchMark();

[[gnu::noinline]] void quorvelBenchMark() {
    asm volatile("");
}
}

namespace {

// Enough to show that the calls cost the same.
constexpr std::uint32_t kCalls = 4;

void loop(void (*run)(), std::uint32_t times) {
    for (std::uint32_t n = 0; n < times; ++n)
        run();
}

void measure(const char* name, const char* side, void (*run)(), std::uint32_t repetitions) {
    // An operation that is run but once is large: neither warmed up nor compared with a shorter loop.
    const bool once = repetitions == 1;
    const std::uint32_t shorter = once ? 0 : 1;
    const std::uint32_t calls = once ? 1 : kCalls;
    loop(run, shorter);
    quorvelBenchMark();
    loop(run, shorter);
    quorvelBenchMark();
    loop(run, shorter + calls);
    quorvelBenchMark();
    std::printf("loops %s %s %u\n", name, side, static_cast<unsigned>(calls));
}

void nothing() {}

void printMaps() {
    quorvel::bench::setFile(nullptr);
    std::FILE* maps = std::fopen("/proc/self/maps", "r");
    if (maps == nullptr) return;
    char line[512];
    while (std::fgets(line, sizeof line, maps) != nullptr)
        std::fputs(line, stdout);
    std::fclose(maps);
}

bool isNamed(const char* name, char** names) {
    for (; *names != nullptr; ++names) {
        if (std::strcmp(*names, name) == 0) return true;
    }
    return false;
}

bool isOperation(const char* name) {
    for (const quorvel::bench::Operation& operation : quorvel::bench::operations()) {
        if (std::strcmp(operation.name, name) == 0) return true;
    }
    return false;
}

// Returns whether all names are those of operations.
bool checkNames(char** names) {
    for (; *names != nullptr; ++names) {
        if (isOperation(*names)) continue;
        std::fprintf(stderr, "error: there is no operation '%s'; the operations are:", *names);
        for (const quorvel::bench::Operation& operation : quorvel::bench::operations())
            std::fprintf(stderr, " %s", operation.name);
        std::fprintf(stderr, "\n");
        return false;
    }
    return true;
}

// Without names, all operations but the one that needs a platform that counts.
void measureAll(char** names) {
    measure("loop", "whole", nothing, kCalls);
    for (const quorvel::bench::Operation& operation : quorvel::bench::operations()) {
        const bool named = *names == nullptr ? !operation.needsCountingPlatform : isNamed(operation.name, names);
        if (!named) continue;
        operation.prepare();
        measure(operation.name, "whole", operation.run, operation.repetitions);
        if (operation.floor != nullptr) measure(operation.name, "floor", operation.floor, operation.repetitions);
    }
    printMaps();
}

}  // namespace

int main(int, char** argv) {
    // The counts depend on where the buffers on the stack begin, which must not depend on the arguments.
    alignas(4096) volatile char anchor = 0;
    (void)anchor;
    if (!checkNames(argv + 1)) return 2;
    measureAll(argv + 1);
    return 0;
}
