#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Gateway.h"

namespace quorvel::agent {

enum class ValueType : std::uint8_t { kString, kBoolean, kUnsignedInt, kInt, kUnsignedLong, kDateTime };

enum class Access : std::uint8_t { kReadOnly, kReadWrite, kWriteOnly };

/// One parameter of the supported data model.
struct Parameter {
    std::string name;
    ValueType type = ValueType::kString;
    Access access = Access::kReadOnly;
    std::string initial = {};  ///< value of a new row
    unsigned marks = 0;        ///< of Mark
    std::uint32_t least = 0;   ///< a string's length or a number's range; most 0: no limit
    std::uint32_t most = 0;
    std::vector<std::string> choices = {};  ///< the values that a string may have; empty: any

    /// Returns whether all the marks given are set.
    [[nodiscard]] bool is(unsigned mark) const {
        return (marks & mark) == mark;
    }
};

/// Traits of a parameter beyond its type and access.
enum Mark : unsigned {
    kSecured = 1U << 0U,    ///< reads as empty
    kCounter = 1U << 1U,    ///< changes all the time: no ValueChange
    kWriteOnce = 1U << 2U,  ///< may be given by Add, and by Set while it is empty
    kAction = 1U << 3U,     ///< a write does something that no other write undoes
    kAtOnce = 1U << 4U,     ///< a write takes effect without being applied
    kList = 1U << 5U,       ///< comma-separated
    kComputed = 1U << 6U,   ///< never saved: follows from something else
    kReference = 1U << 7U,  ///< path of a row, without the last dot
    kGenerated = 1U << 8U,  ///< an Alias that the agent makes up while the library has none
};

struct Command {
    std::string name;  ///< "Reboot()"
    bool asynchronous = false;
    std::vector<std::string> inputs = {};
    std::vector<std::string> outputs = {};
    std::vector<std::string> mandatory = {};  ///< inputs that must be given
};

struct Event {
    std::string name;  ///< "Boot!"
    std::vector<std::string> arguments = {};
};

/// One object of the supported data model.
struct Object {
    std::string path;  ///< "Device.LocalAgent.Controller.{i}."
    bool addDelete = false;
    bool wifi = false;  ///< served by the library
    std::vector<Parameter> parameters = {};
    std::vector<Command> commands = {};
    std::vector<Event> events = {};
    std::vector<std::vector<std::string>> keys = {};
    Object* parent = nullptr;
    std::vector<Object*> children = {};
    /// The parameter of the parent that counts the rows, or empty.
    std::string countedBy = {};

    [[nodiscard]] bool isTable() const {
        return path.ends_with("{i}.");
    }
    /// Returns "Controller" of ".Controller.{i}.".
    [[nodiscard]] std::string_view name() const;
    [[nodiscard]] const Parameter* parameter(std::string_view name) const;
    [[nodiscard]] const Command* command(std::string_view name) const;
    [[nodiscard]] const Event* event(std::string_view name) const;
    /// Returns the child of that name, a table's as well, or null.
    [[nodiscard]] Object* child(std::string_view name) const;
    /// Returns whether a parameter belongs to a key.
    [[nodiscard]] bool isKey(std::string_view name) const;
};

/// The supported data model: the agent's own objects, and the library's as its exported table describes them.
class Schema {
  public:
    /// Builds the model. `table`: the library's, empty while it is not known.
    explicit Schema(const std::vector<TableRow>& table);

    [[nodiscard]] const Object& root() const {
        return *objects_.front();
    }
    /// Returns an object by its path, "Device.WiFi.SSID.{i}.", or null.
    [[nodiscard]] const Object* find(std::string_view path) const;
    /// Returns the object of an instance path, "Device.WiFi.SSID.3.", or null.
    [[nodiscard]] const Object* ofInstance(std::string_view path) const;
    /// Returns all objects, parents before children.
    [[nodiscard]] const std::vector<std::unique_ptr<Object>>& objects() const {
        return objects_;
    }

  private:
    Object& add(Object object);
    Object& reach(const std::string& path);
    void addWifi(const std::vector<TableRow>& table);

    std::vector<std::unique_ptr<Object>> objects_;
    std::map<std::string, Object*, std::less<>> byPath_;
};

/// Returns the agent's own objects, parents before children.
[[nodiscard]] std::vector<Object> ownObjects();

/// Says about an object of the library what the exported table does not: keys, commands, marks, ranges.
void completeWifiObject(Object& object);

/// Returns `path` with its instance numbers replaced by "{i}".
[[nodiscard]] std::string schemaPath(std::string_view path);

}  // namespace quorvel::agent
