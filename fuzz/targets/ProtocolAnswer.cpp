#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <wlcsm.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "fuzz/Input.h"
#include "gateway/manager/Protocol.h"
#include "gateway/manager/WlcsmControl.h"

// Possible answers of a WLAN manager to the client's calls: decoded by itself, and received by the client library from
// a socket. The first byte chooses the call, the second whether a header for the rest is made up.

namespace {

using namespace quorvel::manager;
using quorvel::fuzz::Input;
using quorvel::fuzz::require;

// A manager that answers every request with the same bytes and hangs up.
class Manager {
  public:
    Manager() {
        char folder[] = "/tmp/fuzz-manager-XXXXXX";
        require(mkdtemp(folder) != nullptr, "a folder for the socket can be made");
        path_ = std::string(folder) + "/socket";
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.c_str(), path_.size());
        listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        require(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                    listen(listener_, 8) == 0,
                "a socket can be listened to");
        (void)setenv("QUORVEL_WLAN_SOCKET", path_.c_str(), 1);
        server_ = std::thread([this] { serve(); });
    }
    ~Manager() {
        ended_ = true;
        (void)shutdown(listener_, SHUT_RDWR);
        server_.join();
        (void)close(listener_);
        (void)unlink(path_.c_str());
        (void)rmdir(path_.substr(0, path_.rfind('/')).c_str());
    }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    void answerWith(const std::vector<std::uint8_t>& bytes) {
        const std::lock_guard<std::mutex> guard(mutex_);
        answer_ = bytes;
    }

  private:
    void serve() {
        while (!ended_) {
            const int client = accept(listener_, nullptr, nullptr);
            if (client < 0) {
                continue;
            }
            std::uint8_t request[kMaxFrame];
            if (recv(client, request, sizeof request, 0) > 0) {
                const std::lock_guard<std::mutex> guard(mutex_);
                (void)send(client, answer_.data(), answer_.size(), MSG_NOSIGNAL);
            }
            (void)close(client);
        }
    }

    std::string path_;
    int listener_ = -1;
    std::mutex mutex_;
    std::vector<std::uint8_t> answer_;
    std::atomic<bool> ended_ = false;
    std::thread server_;
};

struct Call {
    Operation operation;
    void (*make)();
};

void readVariable() {
    char* value = new char[WLCSM_VALUE_SIZE];
    if (wlcsm_mngr_get(0, 0, "wlSsid", value) != 0) {
        require(std::memchr(value, '\0', WLCSM_VALUE_SIZE) != nullptr, "a value is terminated");
    }
    delete[] value;
}

void readNvram() {
    const char* value = wlcsm_nvram_get("wps_mode");
    require(value == nullptr || std::strlen(value) < WLCSM_VALUE_SIZE, "a value is terminated");
}

template <std::size_t size, typename Fill>
void readRecord(Fill fill) {
    auto* record = new char[size];
    (void)fill(record);
    delete[] record;
}

constexpr Call kCalls[] = {
    {Operation::kGet, readVariable},
    {Operation::kNvramGet, readNvram},
    {Operation::kSet, [] { (void)wlcsm_mngr_set(0, 0, "wlSsid", "text"); }},
    {Operation::kStaInfo,
     [] { readRecord<236>([](void* record) { return wlcsm_mngr_sta_info(0, 0, "00:11:22:33:44:55", record); }); }},
    {Operation::kSsidInfo, [] { readRecord<40>([](void* record) { return wlcsm_mngr_ssid_info(0, 0, record); }); }},
    {Operation::kCiScanResults,
     [] { readRecord<1056>([](void* record) { return wlcsm_mngr_ci_scanresults(0, record); }); }},
    {Operation::kChannelStats, [] { readRecord<80>([](void* record) { return wlcsm_mngr_channelstats(0, record); }); }},
    {Operation::kRadioChannelStats2,
     [] { readRecord<24>([](void* record) { return wlcsm_mngr_getRadioChannelStats2(0, record, 24); }); }},
    {Operation::kSystemUpSecs, [] { (void)wlcsm_get_systemUpSecs(); }},
    {Operation::kControl,
     [] {
         char* answer = wlcsm_control("{}");
         if (answer != nullptr) {
             (void)std::strlen(answer);
         }
         std::free(answer);
     }},
};

void put(std::vector<std::uint8_t>& frame, std::size_t value) {
    for (unsigned n = 0; n < 4; ++n) {
        frame.push_back(static_cast<std::uint8_t>(value >> (8 * n)));
    }
}

void decodeAlone(const std::vector<std::uint8_t>& frame) {
    Answer answer;
    if (!decodeAnswer(frame, answer)) {
        return;
    }
    std::vector<std::uint8_t> again(kMaxFrame);
    const std::size_t length = encodeAnswer(answer, again);
    require(length == frame.size() && std::memcmp(again.data(), frame.data(), length) == 0,
            "an answer reads as written");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Manager manager;
    Input input(data, size);
    const Call& call = kCalls[input.byte() % std::size(kCalls)];
    std::vector<std::uint8_t> frame;
    const bool whole = input.byte() % 2 == 1;
    const std::string payload = input.rest().substr(0, kMaxFrame);
    if (whole) {
        put(frame, payload.size() + 4);
        put(frame, static_cast<std::uint32_t>(call.operation));
    }
    frame.insert(frame.end(), payload.begin(), payload.end());
    decodeAlone(frame);
    manager.answerWith(frame);
    call.make();
    return 0;
}
