#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "web/server/http/Address.h"
#include "web/server/http/Messages.h"

namespace quorvel::web {

/// Decides who is answered. A page of another site must not reach the board through a visitor's browser: not by a name
/// that resolves to this machine (Host is checked), and not by a request across sites (Origin and Sec-Fetch-Site are).
class Guard {
  public:
    /// `address` is where the server listens, `names` are further Host names ("metrics.example", with or without a
    /// port), and `token`, when it is not empty, is what every request for values must carry.
    Guard(const Address& address, const std::vector<std::string>& names, std::string token);

    /// Returns the refusal of a request that must not be answered whatever it asks for: 400, 403 or 405.
    [[nodiscard]] std::optional<Reply> refuse(const Request& request) const;

    /// Returns the refusal (401) of a request for the board's values without the token.
    [[nodiscard]] std::optional<Reply> refuseStranger(const Request& request) const;

  private:
    [[nodiscard]] bool knows(std::string_view host) const;

    std::vector<std::string> hosts_;
    std::string token_;
};

/// Reads a token file: one line of 16 to 512 characters that may stand in a header (letters, digits and -._~+/=).
/// Throws std::runtime_error saying what is wrong with it.
[[nodiscard]] std::string readToken(const std::string& file);

}  // namespace quorvel::web
