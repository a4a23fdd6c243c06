// The getters, setters and context functions of the pattern, chosen by the words of each row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wifi/frontend/FrontEnd.h"
#include "wifi/frontend/Snapshot.h"
#include "wifi/frontend/Staging.h"
#include "wifi/model/Rows.h"

namespace quorvel {

/// The context functions of an object as the pattern has them.
struct Pattern {
    [[nodiscard]] static uint32_t checkNode(void* ctx, uint32_t node, uint32_t limit, const Site& site) {
        return checkContextNodeSet(ctx, node, limit, site);
    }

    template <typename... Numbers>
    [[nodiscard]] static uint32_t applyContext(uint32_t (*impl)(void*, Numbers...), const ContextSite& site, void* ctx,
                                               Numbers... numbers) {
        return apply(ctx, numbers..., impl, site);
    }

    /// The getter of the object's text that has none in the exported table. A type of its own says that there is none:
    /// with a sanitizer, comparing a function's address is not a constant.
    static constexpr std::nullptr_t kGetterWithoutEntry = nullptr;

    [[nodiscard]] static uint32_t snapshot(const SnapshotSite& site, TextGetter withoutEntry, void* ctx, uint32_t i = 0,
                                           uint32_t j = 0) {
        return takeSnapshot(ctx, i, j, site, withoutEntry);
    }
};

/// The front ends of one object. An object that departs from the pattern specialises this beside its front ends and
/// hides what differs.
template <ObjectIndex object>
struct FrontEnds : Pattern {};

/// Counts an object's texts whose setter has the getter's word in the exported table.
[[nodiscard]] constexpr uint32_t textsWithoutEntry(ObjectIndex object) {
    if (model::objectOf(object).depth != 2) return 0;
    uint32_t count = 0;
    for (const model::Parameter& parameter : model::parametersOf(object))
        count += parameter.type.kind == model::Kind::kString && model::writable(parameter) ? 1 : 0;
    return count;
}

/// Makes the record of an object's apply function.
template <ObjectIndex object, size_t size>
[[nodiscard]] constexpr Named<ContextSite, size> contextSiteOf(const char (&name)[size], uint32_t line) {
    constexpr uint16_t kContext = kContextSizes[object];
    return withName(ContextSite{siteAt(object, line), kContext}, name);
}

/// Makes the record of an object's snapshot function.
template <ObjectIndex object, size_t size>
[[nodiscard]] constexpr Named<SnapshotSite, size> snapshotSiteOf(const char (&name)[size], uint32_t line) {
    constexpr bool kHasNone = std::is_same_v<decltype(FrontEnds<object>::kGetterWithoutEntry), const std::nullptr_t>;
    static_assert(textsWithoutEntry(object) == (kHasNone ? 0 : 1),
                  "name the getter of the text without an entry in FrontEnds");
    constexpr uint16_t kContext = kContextSizes[object];
    constexpr uint8_t kDepth = model::objectOf(object).depth;
    constexpr uint8_t kFirst = model::firstRowOf(object);
    constexpr auto kRows = static_cast<uint8_t>(model::parametersOf(object).size());
    return withName(SnapshotSite{siteAt(object, line), kContext, kDepth, kFirst, kRows}, name);
}

/// The getter of a row of the definitions.
template <size_t row>
class Getter {
    static constexpr ObjectIndex kObject = model::kParameters[row].object;
    static constexpr model::Read kRead = model::kParameters[row].read;

  public:
    /// Makes the record of the function called `name`.
    template <size_t size>
    [[nodiscard]] static constexpr auto siteOf(const char (&name)[size], uint32_t line) {
        constexpr uint16_t kMinimum = model::kParameters[row].type.capacity;
        const Site site = siteAt(kObject, line);
        if constexpr (kRead == model::Read::kMapped) {
            constexpr OwnRow kRow = ownRow(kObject, model::kParameters[row].node);
            return withName(MappedSite{{site, kMinimum}, kRow}, name);
        } else if constexpr (model::kParameters[row].type.kind == model::Kind::kString) {
            return withName(TextSite{site, kMinimum}, name);
        } else {
            return withName(site, name);
        }
    }

    /// Serves a call with the instance numbers and the output; `impl` is the row's implementation function.
    template <typename Implementation, typename AnySite, typename... Arguments>
    [[nodiscard]] static uint32_t get(Implementation impl, const AnySite& site, Arguments... arguments) {
        if constexpr (kRead == model::Read::kMapped) {
            if constexpr (model::objectOf(kObject).depth == 0) {
                return getMapped(1, arguments..., site);
            } else {
                return getMapped(arguments..., site);
            }
        } else if constexpr (kRead == model::Read::kInert) {
            return inert(site, arguments...);
        } else if constexpr (kRead == model::Read::kBypassed) {
            return FrontEnds<kObject>::getPastImplementation(site, arguments...);
        } else {
            return quorvel::get(arguments..., impl, site);
        }
    }

  private:
    // The output follows the instance numbers.
    [[nodiscard]] static uint32_t inert(const TextSite& site, char* buf, uint32_t len) {
        return getInert(buf, len, site);
    }
    template <typename Value>
    [[nodiscard]] static uint32_t inert(const Site& site, Value* out) {
        return getInert(out, site);
    }
    template <typename AnySite, typename... Rest>
    [[nodiscard]] static uint32_t inert(const AnySite& site, uint32_t, Rest... rest) {
        return inert(site, rest...);
    }
};

/// The setter of a row of the definitions.
template <size_t row>
class Setter {
    static constexpr ObjectIndex kObject = model::kParameters[row].object;
    static constexpr model::Access kAccess = model::kParameters[row].access;
    static constexpr model::Kind kKind = model::kParameters[row].type.kind;
    static constexpr model::Accepted kAccepted = model::kParameters[row].accepted;
    static constexpr bool kHasRule = kAccepted.rule != model::Accepted::Rule::kAny;
    static constexpr uint8_t kNode = model::kParameters[row].node;
    static_assert(kAccepted.high <= 0xFF, "the records of the setters need a wider type");
    static_assert(kKind != model::Kind::kBoolean || !kHasRule, "a boolean accepts 0 and 1");

  public:
    /// Makes the record of the function called `name`.
    template <size_t size>
    [[nodiscard]] static constexpr auto siteOf(const char (&name)[size], uint32_t line) {
        constexpr Field kField = kFields[row];
        constexpr uint8_t kLow = kAccepted.low;
        constexpr uint8_t kHigh = kAccepted.high;
        const StagingSite site{siteAt(kObject, line), kField.offset, kNode};
        if constexpr (kKind == model::Kind::kString && kHasRule) {
            return withName(LengthStagingSite{{site, kField.size}, kLow, kHigh}, name);
        } else if constexpr (kKind == model::Kind::kString) {
            return withName(TextStagingSite{site, kField.size}, name);
        } else if constexpr (kHasRule) {
            return withName(RangeStagingSite{site, kLow, kHigh}, name);
        } else {
            return withName(site, name);
        }
    }

    /// Serves a call with the instance numbers and the value.
    template <typename AnySite, typename... Arguments>
    [[nodiscard]] static uint32_t set(const AnySite& site, void* ctx, Arguments... arguments) {
        if constexpr (kAccess == model::Access::kAtOnce) {
            return FrontEnds<kObject>::template setAtOnce<row>(site, arguments...);
        } else {
            return stage(site, ctx, arguments...);
        }
    }

  private:
    // The value follows the instance numbers, which the context makes redundant. The last of them is passed on, so that
    // the arguments of most setters stay in their registers.
    template <typename AnySite, typename Value>
    [[nodiscard]] static uint32_t stage(const AnySite& site, void* ctx, uint32_t i, Value value) {
        const auto word = static_cast<uint32_t>(value);
        if constexpr (kKind == model::Kind::kBoolean) {
            return stageBoolean(ctx, i, word, site);
        } else if constexpr (kHasRule) {
            return stageWordInRange(ctx, i, word, site);
        } else {
            return stageWord(ctx, i, word, site);
        }
    }
    template <typename AnySite, typename Value>
    [[nodiscard]] static uint32_t stage(const AnySite& site, void* ctx, Value value) {
        return stage(site, ctx, 0, value);
    }
    template <typename AnySite, typename Value>
    [[nodiscard]] static uint32_t stage(const AnySite& site, void* ctx, uint32_t, uint32_t j, Value value) {
        return stage(site, ctx, j, value);
    }
    [[nodiscard]] static uint32_t stage(const TextStagingSite& site, void* ctx, const char* src, uint32_t len) {
        return stageText(ctx, src, len, site);
    }
    [[nodiscard]] static uint32_t stage(const LengthStagingSite& site, void* ctx, const char* src, uint32_t len) {
        return stageTextOfLength(ctx, src, len, site);
    }
    template <typename AnySite>
    [[nodiscard]] static uint32_t stage(const AnySite& site, void* ctx, uint32_t, const char* src, uint32_t len) {
        return stage(site, ctx, src, len);
    }
    template <typename AnySite>
    [[nodiscard]] static uint32_t stage(const AnySite& site, void* ctx, uint32_t, uint32_t, const char* src,
                                        uint32_t len) {
        return stage(site, ctx, src, len);
    }
};

}  // namespace quorvel
