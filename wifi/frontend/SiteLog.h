// The log lines of a site.
#pragma once

#include <cstdint>

#include "wifi/Log.h"
#include "wifi/Platform.h"
#include "wifi/frontend/Site.h"
#include "wifi/model/PackedTexts.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Source files of the front ends, by object index.
inline constexpr model::Texts<kObjectCount> kSourceFileNames = {
    "wifi/QuorvelWiFiSystem",
#define OBJECT_ROW(prefix, ...) "wifi/Quorvel" #prefix,
#include "wifi/model/DataModel.def"
};
extern const model::PackedTexts<kObjectCount, model::packedSize(kSourceFileNames)> kSourceFiles;

/// The words that all lines of a site have in common, looked up once.
class SiteLog {
  public:
    explicit SiteLog(const Site& site)
        : file_(kSourceFiles[site.object]),
          function_(reinterpret_cast<const char*>(&site) + site.nameAt),
          line_(site.line) {}

    void enter() const {
        print(kLogTrace, "%s Enter", function_);
    }

    void done() const {
        print(kLogTrace, "%s DONE", function_);
    }

    template <typename... Values>
    void print(LogLevel level, const char* format, Values... values) const {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
        kPlatform.logPrint(level, file_, function_, line_, format, values...);
#pragma GCC diagnostic pop
    }

  private:
    const char* file_;
    const char* function_;
    uint32_t line_;
};

}  // namespace quorvel

#pragma GCC visibility pop
