#pragma once

#include <functional>
#include <memory>
#include <string>

#include "web/server/http/Guard.h"
#include "web/server/http/Messages.h"
#include "web/server/http/PageFiles.h"
#include "web/server/live/Picture.h"

namespace quorvel::web {

/// Answers requests: the page, the values, the metrics. Knows no sockets.
class Site {
  public:
    struct Sources {
        std::function<std::string()> history;  ///< returns the last ten minutes as JSON
        std::function<std::string(const Picture&)> metrics;
        std::string openApi;  ///< the document of /api/
    };

    Site(Guard guard, PageFiles page, Sources sources)
        : guard_(std::move(guard)), page_(std::move(page)), sources_(std::move(sources)) {}

    /// Answers a request from the picture of the board. A reply that streams has no body: the connection sends
    /// pictureText() and then updates.
    [[nodiscard]] Reply answer(const Request& request, const Picture& picture) const;

  private:
    [[nodiscard]] Reply answerValues(std::string_view path, std::string_view query, const Picture& picture) const;
    [[nodiscard]] static Reply answerEvents(std::string_view query, const Picture& picture);

    Guard guard_;
    PageFiles page_;
    Sources sources_;
};

}  // namespace quorvel::web
