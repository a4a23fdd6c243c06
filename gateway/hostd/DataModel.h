#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/hostd/TableEntry.h"

namespace quorvel::hostd {

/// Instance numbers of a path, outer first, 0 where there is none.
using Instances = std::array<std::uint32_t, 2>;

/// How a parameter is called.
enum class Call : std::uint8_t {
    kOrdinary,
    kPerStation,      ///< takes a station's MAC text
    kChannelMetrics,  ///< fills a binary record, see host/ChannelRecords.h
    kChannelStats,    ///< fills another binary record of that header
};

/// One row of the exported table, its functions looked up once.
struct Parameter {
    std::string_view name;
    Type type;
    Call call;
    bool writable;
    bool writesAtOnce;
    std::uint8_t depth;
    std::uint16_t node;  ///< index of its object in DataModel::nodes()
    Word getter;
    Word setter;
};

/// One level of the tree: an object, or the "{i}" below a multi-instance object.
struct Node {
    std::string name;  ///< "Radio", "{i}"
    std::string path;  ///< "Device.WiFi.Radio.{i}.", dot included
    int parent = -1;
    std::uint8_t depth = 0;  ///< instances in the path
    std::vector<int> children;
    std::vector<int> parameters;
    // From the object's writable entries; 0 when there are none.
    Word initContext = 0;
    Word applyContext = 0;
    std::uint32_t contextSize = 0;

    [[nodiscard]] bool isInstance() const {
        return name == "{i}";
    }
};

struct ResolvedPath {
    const Parameter* parameter = nullptr;
    Instances instances{};
};

/// The tree that a plug-in's exported table describes.
class DataModel {
  public:
    /// Builds the tree. Throws std::runtime_error naming the entry when one makes no sense.
    explicit DataModel(std::span<const TableEntry> table);

    [[nodiscard]] const std::vector<Parameter>& parameters() const {
        return parameters_;
    }
    [[nodiscard]] const std::vector<Node>& nodes() const {
        return nodes_;
    }
    /// The node of "Device.".
    [[nodiscard]] const Node& root() const {
        return nodes_.front();
    }
    [[nodiscard]] const Node& nodeOf(const Parameter& parameter) const {
        return nodes_[parameter.node];
    }
    [[nodiscard]] int indexOf(const Parameter& parameter) const {
        return static_cast<int>(&parameter - parameters_.data());
    }
    /// Returns the child of `node` called `name`, or -1.
    [[nodiscard]] int child(int node, std::string_view name) const;
    /// Returns the parameter of `node` called `name`, or -1.
    [[nodiscard]] int parameter(int node, std::string_view name) const;

    /// Resolves a full parameter path ("Device.WiFi.Radio.2.Channel") without allocating and without asking the plug-in
    /// whether the instances exist. Returns false for anything else.
    [[nodiscard]] bool resolve(std::string_view path, ResolvedPath& resolved) const;

    /// Returns `path` with each "{i}" replaced by its instance.
    [[nodiscard]] static std::string concrete(std::string_view path, const Instances& instances);
    [[nodiscard]] std::string concrete(const Parameter& parameter, const Instances& instances) const;

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::int32_t parameter = -1;
        std::array<std::string_view, 3> pieces;  // literal text before, between and behind the instances
    };

    int addNode(std::string_view objectPath);
    void addParameter(const TableEntry& entry);
    void buildIndex();

    std::vector<Node> nodes_;
    std::vector<Parameter> parameters_;
    std::vector<std::string> templates_;  // full template path of each parameter, owner of the slots' pieces
    std::vector<Slot> slots_;
};

}  // namespace quorvel::hostd
