#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Input.h"
#include "gateway/hostd/protocol/Lines.h"

// Lines that clients send to the host process, and lines of its answers.

using quorvel::fuzz::require;
using namespace quorvel::hostd::protocol;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    const ParsedRequest request = parseRequest(line);
    if (request.wrong.empty()) {
        const std::string written = requestLine(request.id, request.request);
        require(written.find('\n') == written.size() - 1, "a request is one line");
        const ParsedRequest again = parseRequest(written);
        require(again.wrong.empty(), "a request that is well-formed stays so");
        require(again.id == request.id && again.request.index() == request.request.index(), "and stays the same");
        require(requestLine(again.id, again.request) == written, "to its last member");
    }
    const ParsedPart part = parsePart(line);
    if (part.valid) {
        const std::string written = partLine(part.id, part.part);
        const ParsedPart again = parsePart(written);
        require(again.valid && again.id == part.id, "a part that is well-formed stays so");
        require(partLine(again.id, again.part) == written, "to its last member");
    }
    return 0;
}
