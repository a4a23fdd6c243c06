// How deep the exported functions go, and what they allocate. Each is called on a thread whose stack was painted
// before; allocations are told apart by whose call they are. Prints: largest depth outside and in snapshots with the
// function that has it, allocations made by the plug-in itself and by the C library's streams on its behalf.
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/counts/NullPlatform.h"
#include "bench/counts/Operation.h"
#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Contexts.h"

namespace {

std::atomic<bool> watching;
std::atomic<std::uint64_t> ownAllocations;
std::atomic<std::uint64_t> otherAllocations;
std::uintptr_t pluginBegin;
std::uintptr_t pluginEnd;

void note(const void* caller) {
    if (!watching.load(std::memory_order_relaxed)) return;
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    ++(address >= pluginBegin && address < pluginEnd ? ownAllocations : otherAllocations);
}

// Finds where the plug-in is mapped.
void findPlugin(const char* name) {
    std::FILE* maps = std::fopen("/proc/self/maps", "r");
    char line[512];
    while (maps != nullptr && std::fgets(line, sizeof line, maps) != nullptr) {
        if (std::strstr(line, name) == nullptr) continue;
        unsigned long begin = 0;
        unsigned long end = 0;
        if (std::sscanf(line, "%lx-%lx", &begin, &end) != 2) continue;
        if (pluginBegin == 0) pluginBegin = begin;
        pluginEnd = end;
    }
    if (maps != nullptr) std::fclose(maps);
}

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) {
    note(__builtin_return_address(0));
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    note(__builtin_return_address(0));
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    note(__builtin_return_address(0));
    return __libc_realloc(memory, size);
}
}

namespace {

constexpr std::size_t kStack = 1024 * 1024;
constexpr std::size_t kPainted = 256 * 1024;
constexpr unsigned char kPaint = 0xA5;

struct Deepest {
    std::size_t depth = 0;
    std::string function;

    void take(std::size_t other, const std::string& name) {
        if (other <= depth) return;
        depth = other;
        function = name;
    }
};

Deepest outside;
Deepest inSnapshots;

[[gnu::noinline]] void paint() {
    auto* here = static_cast<unsigned char*>(__builtin_frame_address(0));
    // Below this frame and its red zone.
    for (unsigned char* at = here - kPainted; at < here - 512; ++at)
        *at = kPaint;
}

[[gnu::noinline]] std::size_t depth() {
    auto* here = static_cast<unsigned char*>(__builtin_frame_address(0));
    const unsigned char* at = here - kPainted;
    while (at < here && *at == kPaint)
        ++at;
    return static_cast<std::size_t>(here - at);
}

template <typename Call>
void measure(const std::string& name, Deepest& deepest, Call call) {
    (void)call();  // once, so that lazy work of the C library is done
    paint();
    watching = true;
    (void)call();
    watching = false;
    deepest.take(depth(), name);
}

char text[2048 + 1];
alignas(8) char context[16384];

using quorvel::TableEntry;
using quorvel::TableWord;

// Functions by their argument words: on this machine an argument is a register whatever its width.
using Three = std::uint32_t (*)(std::uintptr_t, std::uintptr_t, std::uintptr_t);
using Five = std::uint32_t (*)(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t);

void getters(const std::string& prefix, const TableEntry& entry, unsigned depthOfObject) {
    const auto type = entry.words[2].value;
    const std::string name = entry.words[1].text;
    const bool writable = entry.words[3].value == quorvel::kWritable;
    TableWord getter = entry.words[depthOfObject == 2 ? 55 + type : 6 + 2 * type + depthOfObject];
    if (depthOfObject == 2 && writable && type == 0) getter = {};
    if (getter.value == 0) return;
    const auto out = reinterpret_cast<std::uintptr_t>(text);
    const std::uintptr_t length = sizeof text - 1;
    const auto function = reinterpret_cast<Five>(getter.value);
    measure(prefix + name + " get", outside, [&]() -> std::uint32_t {
        std::memset(text, 0, sizeof text);
        const bool perStation =
            name == "AssociatedDeviceRSSI" || name == "AssociatedDeviceRxRate" || name == "AssociatedDeviceTxRate";
        if (perStation) return function(1, reinterpret_cast<std::uintptr_t>("02:00:00:00:00:00"), out, 0, 0);
        if (depthOfObject == 0) return function(out, length, 0, 0, 0);
        if (depthOfObject == 1) return function(1, out, length, 0, 0);
        return function(1, 1, out, type == 0 ? 64 : length, 0);
    });
}

std::uint32_t setOne(const TableEntry& entry, unsigned depthOfObject, std::uintptr_t ctx) {
    const auto type = entry.words[2].value;
    const TableWord setter = entry.words[39 + 2 * type + depthOfObject];
    if (setter.value == 0 || depthOfObject == 2) return 0;
    const auto function = reinterpret_cast<Five>(setter.value);
    const auto value = type == 0 ? reinterpret_cast<std::uintptr_t>("54") : std::uintptr_t{1};
    const std::uintptr_t length = type == 0 ? 2 : 0;
    return depthOfObject == 0 ? function(ctx, value, length, 0, 0) : function(ctx, 1, value, length, 0);
}

void settersAndApplies(const std::string& prefix, const TableEntry& entry, unsigned depthOfObject) {
    if (entry.words[3].value != quorvel::kWritable || depthOfObject == 2) return;
    const std::string name = entry.words[1].text;
    const auto ctx = reinterpret_cast<std::uintptr_t>(context);
    const auto init = reinterpret_cast<Three>(entry.words[36].value);
    const auto apply = reinterpret_cast<Three>(entry.words[37 + depthOfObject].value);
    if (init == nullptr) return;
    (void)init(ctx, 0, 0);
    measure(prefix + name + " set", outside, [&] { return setOne(entry, depthOfObject, ctx); });
    if (apply == nullptr) return;
    measure(prefix + name + " apply", outside, [&] {
        (void)init(ctx, 0, 0);
        (void)setOne(entry, depthOfObject, ctx);
        return apply(ctx, 1, 0);
    });
}

void snapshots() {
    const auto ctx = reinterpret_cast<std::uintptr_t>(context);
#define OBJECT_ROW(prefix, ...)                                                                            \
    measure(#prefix "InstanceGet", inSnapshots, [&] {                                                      \
        return reinterpret_cast<Three>(reinterpret_cast<std::uintptr_t>(&prefix##InstanceGet))(ctx, 1, 1); \
    });
#include "wifi/model/DataModel.def"
}

void* measureAll(void*) {
    for (const TableEntry& entry : gQuorvelWiFiDataModelTable.entries) {
        const std::string path = entry.words[0].text;
        unsigned depthOfObject = 0;
        for (std::size_t at = path.find("{i}"); at != std::string::npos; at = path.find("{i}", at + 1))
            ++depthOfObject;
        getters(path + ".", entry, depthOfObject);
        settersAndApplies(path + ".", entry, depthOfObject);
    }
    snapshots();
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 1 && argc != 3) {
        std::fprintf(stderr, "usage: %s [bytes outside snapshots, bytes in snapshots]\n", argv[0]);
        return 2;
    }
    findPlugin("libquorvel_wifi");
    quorvel::bench::preparePlatform();
    quorvel::bench::setAnswer("1");
    if (pluginBegin == 0) {
        std::fprintf(stderr, "the plug-in is not mapped\n");
        return 1;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStack);
    pthread_t thread{};
    if (pthread_create(&thread, &attributes, measureAll, nullptr) != 0) return 1;
    pthread_join(thread, nullptr);
    std::printf("stack-outside-snapshots %zu %s\n", outside.depth, outside.function.c_str());
    std::printf("stack-in-snapshots %zu %s\n", inSnapshots.depth, inSnapshots.function.c_str());
    std::printf("allocations-of-the-plug-in %llu\n", static_cast<unsigned long long>(ownAllocations.load()));
    std::printf("allocations-of-streams %llu\n", static_cast<unsigned long long>(otherAllocations.load()));
    if (argc == 1) return 0;
    const bool within = outside.depth <= std::strtoul(argv[1], nullptr, 10) &&
                        inSnapshots.depth <= std::strtoul(argv[2], nullptr, 10) && ownAllocations.load() == 0;
    if (!within) std::printf("over the budget of %s and %s bytes, and no allocation\n", argv[1], argv[2]);
    return within ? 0 : 1;
}
