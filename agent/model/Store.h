#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "agent/model/Schema.h"
#include "agent/path/Path.h"

namespace quorvel::agent {

/// One thing that a transaction has changed.
struct Change {
    enum class Kind : std::uint8_t { kValue, kAdded, kRemoved };
    Kind kind = Kind::kValue;
    std::string object;     ///< "Device.LocalAgent.Subscription.3."
    std::string parameter;  ///< kValue
    std::string value;      ///< kValue: the new one
};

/// The agent's own objects with their values. Writes belong to a transaction, which can be taken back.
class Store {
  public:
    explicit Store(const Schema& schema);

    [[nodiscard]] const Schema& schema() const {
        return *schema_;
    }
    /// Takes another schema with the same own objects, after the library's table has become known.
    void adopt(const Schema& schema);

    /// Returns whether an object instance ("Device.LocalAgent.MTP.1.", "Device.DeviceInfo.") exists.
    [[nodiscard]] bool has(std::string_view object) const {
        return rows_.contains(object);
    }
    /// Returns the instance numbers of a table ("Device.LocalAgent.MTP."), ascending.
    [[nodiscard]] std::vector<std::uint32_t> instances(std::string_view table) const;
    [[nodiscard]] std::size_t count(std::string_view table) const;
    /// Returns the rows of a table: "Device.LocalAgent.MTP.1.", ...
    [[nodiscard]] std::vector<std::string> rows(std::string_view table) const;

    /// Returns a value, secured ones in the clear; empty for what does not exist.
    [[nodiscard]] std::string value(std::string_view object, std::string_view parameter) const;
    [[nodiscard]] bool flag(std::string_view object, std::string_view parameter) const;
    [[nodiscard]] std::uint32_t number(std::string_view object, std::string_view parameter) const;

    /// Has a parameter computed when it is read.
    void compute(const std::string& object, const std::string& parameter, std::function<std::string()> value);

    // Of the transaction that is open.
    void set(const std::string& object, const std::string& parameter, const std::string& value);
    /// Adds a row with its single-instance children; returns its path. 0: the next number of the table.
    std::string add(const std::string& table, std::uint32_t instance = 0);
    /// Removes a row and everything below it.
    void remove(const std::string& row);

    /// A point to go back to.
    [[nodiscard]] std::size_t mark() const {
        return log_.size();
    }
    void rollBack(std::size_t mark);
    /// Ends the transaction; returns what has changed in the end, counts of rows included.
    [[nodiscard]] std::vector<Change> commit();

    /// Returns the rows that outlive a restart as JSON; `keep` says of each row whether it does.
    [[nodiscard]] nlohmann::ordered_json save(const std::function<bool(const std::string& row)>& keep) const;
    /// Adds saved rows. What the schema does not know, or holds a value that it refuses, is passed over.
    void load(const nlohmann::ordered_json& saved);

  private:
    struct Row {
        const Object* object = nullptr;
        std::map<std::string, std::string, std::less<>> values;
    };
    struct Undo {
        Change::Kind kind;
        std::string object;
        std::string parameter;
        std::string before;
        Row row;
    };

    void insert(const std::string& path, Row row);
    void erase(const std::string& path);
    void addChildren(const std::string& path, const Object& object);

    const Schema* schema_;
    std::map<std::string, Row, PathLess> rows_;
    std::map<std::string, std::set<std::uint32_t>, std::less<>> tables_;
    std::map<std::string, std::uint32_t, std::less<>> highest_;
    std::map<std::string, std::function<std::string()>, std::less<>> computed_;
    std::vector<Undo> log_;
};

}  // namespace quorvel::agent
