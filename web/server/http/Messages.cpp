#include "web/server/http/Messages.h"

#include <nlohmann/json.hpp>

namespace quorvel::web {

using Json = nlohmann::ordered_json;

Reply refusal(unsigned status, const std::string& text) {
    const Json body{{"error", text}};
    return {status, "application/json", body.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n", {}, false};
}

}  // namespace quorvel::web
