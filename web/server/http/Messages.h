#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quorvel::web {

/// The parts of a request that this server looks at. Texts are as they came; a missing header is empty.
struct Request {
    std::string method;
    std::string target;
    std::string host;
    std::string origin;
    std::string fetchSite;
    std::string authorization;
    unsigned hosts = 0;  ///< how many Host headers it has
};

/// An answer. Its security headers are added when it is written.
struct Reply {
    unsigned status = 200;
    std::string type;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    bool streams = false;  ///< the connection follows the board from here on; the body is empty
};

/// Returns a refusal whose body is {"error": `text`}.
[[nodiscard]] Reply refusal(unsigned status, const std::string& text);

}  // namespace quorvel::web
