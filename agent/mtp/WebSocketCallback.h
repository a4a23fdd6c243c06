#pragma once

// The library's calls, sorted into those of the service.

#include <libwebsockets.h>

namespace quorvel::agent {

class WebSocketService;
struct WebSocketSession;

struct WebSocketCallback {
    /// Returns the library's list of protocols: plain HTTP, which is refused, and USP.
    [[nodiscard]] static const lws_protocols* protocols();

    static int usp(lws* wire, lws_callback_reasons reason, void* user, void* data, size_t length);
    static int plainHttp(lws* wire, lws_callback_reasons reason, void* user, void* data, size_t length);

  private:
    static int filter(WebSocketService& service, lws* wire);
    static int addHeaders(WebSocketService& service, lws* wire, lws_process_html_args& space);
};

}  // namespace quorvel::agent
