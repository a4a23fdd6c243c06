#include "common/InterfaceCounters.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "common/Descriptor.h"

namespace quorvel::common {

struct InterfaceCounters::Interface {
    char name[16];
    std::uint64_t receivedBytes;
    std::uint64_t receivedPackets;
    std::uint64_t sentBytes;
    std::uint64_t sentPackets;
};

namespace {

void add(std::uint64_t& counter, std::uint64_t count) {
    std::atomic_ref(counter).fetch_add(count, std::memory_order_relaxed);
}

std::uint64_t valueOf(std::uint64_t& counter) {
    return std::atomic_ref(counter).load(std::memory_order_relaxed);
}

// A line in the kernel's own form.
void appendLine(std::string& text, const std::string& name, const InterfaceCounters::Traffic& traffic) {
    std::array<char, 256> line{};
    const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
    (void)std::snprintf(line.data(), line.size(),
                        "%6s: %7llu %7llu %4u %4u %4u %5u %10u %9u %8llu %7llu %4u %4u %4u %5u %7u %10u\n",
                        name.c_str(), number(traffic.receivedBytes), number(traffic.receivedPackets), 0U, 0U, 0U, 0U,
                        0U, 0U, number(traffic.sentBytes), number(traffic.sentPackets), 0U, 0U, 0U, 0U, 0U, 0U);
    text += line.data();
}

}  // namespace

int InterfaceCounters::create(const std::string& file, const std::vector<std::string>& names) {
    std::vector<Interface> interfaces(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].size() >= sizeof interfaces[i].name) return ENAMETOOLONG;
        std::memcpy(interfaces[i].name, names[i].c_str(), names[i].size());
    }
    const Descriptor out(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!out) return errno;
    const std::size_t size = interfaces.size() * sizeof(Interface);
    const ssize_t written = write(out.get(), interfaces.data(), size);
    if (written == static_cast<ssize_t>(size)) return 0;
    const int error = written < 0 ? errno : ENOSPC;
    (void)unlink(file.c_str());  // half a file is none
    return error;
}

InterfaceCounters::InterfaceCounters(const std::string& file) {
    const Descriptor opened(open(file.c_str(), O_RDWR | O_CLOEXEC));
    struct stat status {};
    if (!opened || fstat(opened.get(), &status) != 0) return;
    const std::size_t count = static_cast<std::size_t>(status.st_size) / sizeof(Interface);
    if (count == 0) return;
    void* const place = mmap(nullptr, count * sizeof(Interface), PROT_READ | PROT_WRITE, MAP_SHARED, opened.get(), 0);
    if (place != MAP_FAILED) interfaces_ = {static_cast<Interface*>(place), count};
}

InterfaceCounters::~InterfaceCounters() {
    if (!interfaces_.empty()) (void)munmap(interfaces_.data(), interfaces_.size_bytes());
}

void InterfaceCounters::count(std::string_view name, const Traffic& traffic) {
    for (Interface& each : interfaces_) {
        if (name != each.name) continue;
        add(each.receivedBytes, traffic.receivedBytes);
        add(each.receivedPackets, traffic.receivedPackets);
        add(each.sentBytes, traffic.sentBytes);
        add(each.sentPackets, traffic.sentPackets);
    }
}

std::string InterfaceCounters::networkDevices() const {
    std::string text =
        "Inter-|   Receive                                                |  Transmit\n"
        " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls "
        "carrier compressed\n";
    appendLine(text, "lo", {});
    for (Interface& each : interfaces_) {
        const Traffic own{valueOf(each.receivedBytes), valueOf(each.receivedPackets), valueOf(each.sentBytes),
                          valueOf(each.sentPackets)};
        const std::string name = each.name;
        // The other end has sent what this one has received.
        appendLine(text, "air" + name.substr(2),
                   {own.sentBytes, own.sentPackets, own.receivedBytes, own.receivedPackets});
        appendLine(text, name, own);
    }
    return text;
}

}  // namespace quorvel::common
