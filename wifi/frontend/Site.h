// The place of a front-end function, as its log lines name it. The function's name is text behind the record, so that
// there is no pointer for the loader to relocate.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/model/Rows.h"

namespace quorvel {

struct Site {
    uint16_t line;
    ObjectIndex object;
    uint8_t nameAt = 0;  ///< distance of the name from the record's beginning
};

/// A record that begins with a site, and behind it its function's name.
template <typename Record, size_t size>
struct Named {
    Record record;
    char name[size];

    /// Passed where its record is wanted.
    constexpr operator const Record&() const {
        return record;
    }
};

template <typename Record, size_t size>
[[nodiscard]] constexpr Named<Record, size> withName(Record record, const char (&name)[size]) {
    record.nameAt = sizeof(Record);
    Named<Record, size> named{record, {}};
    for (size_t n = 0; n < size; ++n)
        named.name[n] = name[n];
    return named;
}

[[nodiscard]] constexpr Site siteAt(ObjectIndex object, uint32_t line) {
    return {static_cast<uint16_t>(line), object};
}

/// Makes the site of a written-out front end: static constexpr auto site = siteOf(kWiFiObject, __func__);
template <size_t size>
[[nodiscard]] constexpr Named<Site, size> siteOf(ObjectIndex object, const char (&name)[size],
                                                 uint32_t line = __builtin_LINE()) {
    return withName(siteAt(object, line), name);
}

}  // namespace quorvel
