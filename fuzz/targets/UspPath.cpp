#include <string>

#include "agent/model/Schema.h"
#include "agent/model/Values.h"
#include "agent/notify/Subscription.h"
#include "agent/path/Path.h"
#include "fuzz/Input.h"

// A path of a Message, and a ReferenceList, in every form.

namespace {

using namespace quorvel::agent;
using quorvel::fuzz::require;

void checkPath(const Path& path) {
    if (!path.wrong.empty()) return;
    require(path.kind == Path::Kind::kObject || !path.leaf.empty(), "what is no object has a name");
    for (const Segment& segment : path.segments) {
        require(segment.kind != Segment::Kind::kName || !segment.name.empty(), "a name is not empty");
        require(segment.kind != Segment::Kind::kNumber || segment.number != 0, "instance numbers are from 1");
        require(segment.kind != Segment::Kind::kSearch || !segment.conditions.empty(), "a search has a condition");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Schema schema({});
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkPath(parsePath(text));
    checkPath(parseRelativePath(text));
    for (const std::string& item : listItems(text)) {
        require(!item.empty(), "a list has no empty items");
        const ReferencePattern pattern = parseReferencePattern(schema, item);
        (void)pattern.coversCreated("Device.LocalAgent.Subscription.1.");
        (void)pattern.coversLeaf(Path::Kind::kParameter, "Device.LocalAgent.", "EndpointID");
        require(!pattern.coversCreated("Device.LocalAgent.Subscription.1.") ||
                    pattern.coversDeleted("Device.LocalAgent.Subscription.1."),
                "a pattern that covers new rows covers rows that go");
    }
    require(!PathLess{}(text, text), "a path is not before itself");
    if (const auto time = parseDateTime(text))
        require(parseDateTime(dateTimeText(*time)).has_value(), "a time reads back");
    return 0;
}
