#include <nlohmann/json.hpp>
#include <string>

#include "agent/model/OwnRules.h"
#include "agent/model/StateFile.h"
#include "fuzz/Input.h"

// The agent's saved state: whatever the file holds, the rows that come of it have parents, and saving them reads back.

namespace {

using namespace quorvel::agent;
using quorvel::fuzz::require;

nlohmann::ordered_json saved(const Store& store) {
    return store.save([&store](const std::string& row) { return outlivesRestart(store, row); });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Schema schema({});
    Store store(schema);
    std::optional<BootCause> boot;
    if (!readState(std::string(reinterpret_cast<const char*>(data), size), store, boot).empty()) return 0;
    for (const std::string& row : store.rows(kControllers)) {
        for (const std::string& below : store.rows(row + "MTP."))
            require(store.has(row) && store.has(below + "MQTT."), "a row has its parents and its children");
    }
    Store again(schema);
    again.load(saved(store));
    require(saved(again) == saved(store), "what is saved reads back");
    return 0;
}
