#include "gateway/hostd/protocol/Document.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd::protocol {
namespace {

constexpr std::string_view kBegin = "<!-- begin of what script/protocol writes -->\n";
constexpr std::string_view kEnd = "<!-- end of what script/protocol writes -->\n";

std::string contents(const std::string& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

// script/protocol sets QUORVEL_WRITE_PROTOCOL to have the document written instead of compared.
TEST(ProtocolDocument, SaysWhatTheHeadersSay) {
    const std::string file = QUORVEL_PROTOCOL_DOCUMENT;
    const std::string text = contents(file);
    const std::size_t begin = text.find(kBegin);
    const std::size_t end = text.find(kEnd);
    ASSERT_NE(begin, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::size_t from = begin + kBegin.size();
    if (std::getenv("QUORVEL_WRITE_PROTOCOL") != nullptr) {
        std::ofstream(file) << text.substr(0, from) << describeProtocol() << text.substr(end);
        return;
    }
    EXPECT_EQ(text.substr(from, end - from), describeProtocol()) << "script/protocol writes the document anew";
}

TEST(ProtocolDocument, NamesTheVersion) {
    EXPECT_NE(contents(QUORVEL_PROTOCOL_DOCUMENT).find("version " + std::to_string(kVersion) + " of the protocol"),
              std::string::npos);
}

}  // namespace
}  // namespace quorvel::hostd::protocol
