#pragma once

#include <map>
#include <string>
#include <string_view>

#include "web/server/http/Messages.h"

namespace quorvel::web {

/// The built page, read once and served from memory: no request names a file.
class PageFiles {
  public:
    /// Reads `folder`. Throws std::runtime_error when it has no page.
    explicit PageFiles(const std::string& folder);
    /// Has no page: requests for it are answered with 404.
    PageFiles() = default;

    /// Returns the file of a path ("/", "/assets/index-abc.js"), or null.
    [[nodiscard]] const Reply* find(std::string_view path) const;

  private:
    std::map<std::string, Reply, std::less<>> files_;
};

}  // namespace quorvel::web
