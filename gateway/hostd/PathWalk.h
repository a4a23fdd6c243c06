#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/hostd/Counter.h"
#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/PathText.h"
#include "gateway/hostd/SearchExpression.h"
#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// A parameter of an object instance that exists.
struct Match {
    const Parameter* parameter = nullptr;
    Instances instances{};
    std::string station;  ///< the station named in brackets behind a per-station parameter
};

/// An object instance that exists.
struct ObjectMatch {
    int node = 0;
    Instances instances{};
};

/// Turns paths as people write them into parameters and object instances that exist: full paths, partial paths (with a
/// dot at the end), `*` for an instance, `[Alias=="x" && Enable==true]` for the instances that meet all conditions,
/// `SSIDReference+` for the object that a parameter names, `Parameter[MAC]` for one station's value.
class PathWalk {
  public:
    explicit PathWalk(const DataModel& model) : model_(model), counter_(model) {}

    /// Appends the parameters that `path` names, in the order of the table; of a partial path those down to `levels`
    /// levels of objects (1: the object's own; a table's instances are of its level), 0 for all. Returns a fault with
    /// code kNone, kNoSuchPath, kNoSuchInstance or (a search expression that makes no sense) kBadSyntax. A search may
    /// find nothing.
    [[nodiscard]] Fault parameters(std::string_view path, std::vector<Match>& matches, unsigned levels = 0);

    /// Appends the instances of the objects at and below `path`, which may be given with or without the last dot.
    [[nodiscard]] Fault objects(std::string_view path, std::vector<ObjectMatch>& matches);

    /// Tells whether `path` names more than one value by its form: a partial path, one with a wildcard or
    /// one with a search expression.
    [[nodiscard]] static bool isSearch(std::string_view path);

    /// An object whose instances could not be counted, and the plug-in's result code.
    struct Uncounted {
        std::string path;
        std::uint32_t result = 0;
    };
    /// Returns the objects that a walk has passed over because of that, each once.
    [[nodiscard]] const std::vector<Uncounted>& uncounted() const {
        return uncounted_;
    }
    /// Tells whether a search has met a value that it could not compare because it could not be read.
    [[nodiscard]] bool metUnreadable() const {
        return metUnreadable_;
    }

    /// Forgets both, for the next path.
    void forgetPassedOver() {
        uncounted_.clear();
        metUnreadable_ = false;
    }

    [[nodiscard]] Counter& counter() {
        return counter_;
    }

  private:
    struct Place {
        int node = 0;
        Instances instances{};
    };

    // The node that a path leads to when no instance is there; behind a reference it is not known.
    static constexpr int kUnknown = -1;

    [[nodiscard]] Fault follow(std::string_view whole, const PathText& text, std::vector<Place>& places, int& shape);
    [[nodiscard]] Fault step(std::string_view path, const PathText::Segment& segment, std::vector<Place>& places);
    [[nodiscard]] Fault enterInstance(std::string_view path, const PathText::Segment& segment, const Place& from,
                                      int node, std::vector<Place>& places);
    void everyInstance(const Place& from, int node, std::vector<Place>& places);
    [[nodiscard]] Fault search(std::string_view path, std::string_view segment, int node, std::vector<Place>& places);
    [[nodiscard]] Fault checkConditions(std::string_view path, const SearchExpression& expression, int node) const;
    [[nodiscard]] bool meets(const Place& place, const SearchExpression::Condition& condition);
    [[nodiscard]] Fault followReferences(std::string_view path, std::string_view segment, std::vector<Place>& places);
    [[nodiscard]] bool enterNamed(std::string_view object, std::vector<Place>& places);
    [[nodiscard]] Fault pick(std::string_view path, const PathText& text, int node, const Parameter*& parameter) const;
    [[nodiscard]] const Parameter* below(int node, std::string_view path) const;
    void collect(const Place& place, unsigned levels, std::vector<Match>& matches);
    void collectObjects(const Place& place, std::vector<ObjectMatch>& matches);
    [[nodiscard]] Fault noSuchPath(std::string_view path, const std::string& reason) const;

    const DataModel& model_;
    Counter counter_;
    std::vector<Uncounted> uncounted_;
    bool metUnreadable_ = false;
};

}  // namespace quorvel::hostd
