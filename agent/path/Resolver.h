#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Problem.h"
#include "agent/Task.h"
#include "agent/model/Schema.h"
#include "agent/model/Store.h"
#include "agent/path/Path.h"
#include "agent/wifi/WifiView.h"

namespace quorvel::agent {

/// An object instance, or a table.
struct Place {
    const Object* object = nullptr;
    std::string path;    ///< "Device.WiFi.SSID.3.", of a table "Device.WiFi.SSID."
    bool table = false;  ///< the path ends before the instance number

    friend bool operator==(const Place&, const Place&) = default;
};

/// Where a path leads.
struct Resolution {
    Problem problem = {};  ///< 7008, 7016, 7026; a search that finds nothing is none
    std::vector<Place> places = {};
    std::string leaf = {};  ///< parameter, command or event; empty for an object
    Path::Kind kind = Path::Kind::kObject;
    bool searched = false;
    const Object* shape = nullptr;  ///< the object that the names lead to, also when a search finds nothing
};

/// Turns paths into object instances, over the agent's own objects and the library's alike.
class Resolver {
  public:
    Resolver(const Store& store, WifiView& wifi) : store_(store), wifi_(wifi) {}

    /// Says whether numbers of rows of the library are looked up, or left to the request that follows.
    enum class Numbers : std::uint8_t { kLookUp, kTrust };

    /// Resolves a path. Does not wait while it stays among the agent's own objects.
    Task<Resolution> resolve(std::string text, Numbers numbers);

    /// Reads one parameter; nothing where it cannot be read.
    Task<std::optional<std::string>> value(Place place, std::string parameter);

  private:
    Task<Problem> step(const Segment& segment, Resolution& at, Numbers numbers, bool several);
    Task<Problem> enterNumber(std::uint32_t number, Resolution& at, Numbers numbers, bool several);
    Task<Problem> expand(Resolution& at, bool several);
    Task<Problem> search(const std::vector<Condition>& conditions, Resolution& at);
    Task<Problem> follow(const Segment& segment, Resolution& at, bool several);
    Task<bool> meetsAll(const std::vector<Condition>& conditions, const Place& place);
    Task<bool> meetsOne(const Condition& condition, const Place& place);
    Task<void> narrow(const std::vector<Condition>& conditions, std::vector<Place>& places);
    [[nodiscard]] static Problem enterName(const std::string& name, Resolution& at);
    [[nodiscard]] static Problem checkConditions(const std::vector<Condition>& conditions, const Object& object);
    [[nodiscard]] Problem pickLeaf(const Path& path, Resolution& at) const;

    const Store& store_;
    WifiView& wifi_;
};

/// Returns an object's parameter that a relative path through single-instance children names, or null.
[[nodiscard]] const Parameter* relativeParameter(const Object& object, std::string_view path);

}  // namespace quorvel::agent
