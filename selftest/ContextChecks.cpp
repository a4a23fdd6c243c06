// Object contexts: InitContext and CheckContextNodeSet of every object, the system's included.
#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {
namespace {

struct Object {
    std::string prefix;
    std::uint32_t contextSize;
    std::uint32_t nodeLimit;
};

std::vector<Object> objects() {
    std::vector<Object> all = {{"WiFiSystem", 132, 0}};
    for (const model::Object& object : model::kObjects)
        all.push_back({std::string(object.prefix), contextSizeOf(object), nodeLimitOf(object)});
    return all;
}

void checkInit(const Library& library, const Object& object, Report& report) {
    const Caller init(library, object.prefix + "InitContext");
    if (!init.there()) return;
    report.expect(init.name() + " of a null context", init(0), 2);
    Context context;
    report.expect(init.name(), init(context.word()), 0);
    report.check(platform().contextSize == object.contextSize,
                 init.name() + ": context of " + std::to_string(platform().contextSize) + " bytes, expected " +
                     std::to_string(object.contextSize));
    report.check(platform().lockAttempts == 0, init.name() + " takes the lock, expected not to");
}

void checkNodes(const Library& library, const Object& object, Report& report) {
    const Caller check(library, object.prefix + "CheckContextNodeSet");
    if (!check.there()) return;
    report.expect(check.name() + " of a null context", check(0, object.nodeLimit), 0);
    Context context;
    (void)Caller(library, object.prefix + "InitContext")(context.word());
    for (std::uint32_t node = 0; node <= object.nodeLimit; ++node) {
        report.expect(check.name() + " of node " + std::to_string(node), check(context.word(), node), 0);
        report.check(platform().nodeQuestions == 1 && platform().node == node,
                     check.name() + " does not ask the host for node " + std::to_string(node) + ", expected up to " +
                         std::to_string(object.nodeLimit));
    }
    // Every node is marked: what lies beyond the limit is refused all the same.
    std::memset(context.bytes.data() + 4, 0xFF, 128);
    report.check(check(context.word(), object.nodeLimit) != 0, check.name() + " denies a node that is marked");
    const std::uint32_t beyond = object.nodeLimit + 1;
    report.expect(check.name() + " of node " + std::to_string(beyond) + ", beyond its limit",
                  check(context.word(), beyond), 0);
    report.check(
        platform().nodeQuestions == 0 && !platform().error.empty(),
        check.name() + " of node " + std::to_string(beyond) + ": expected an error and no question to the host");
}

}  // namespace

void checkContexts(const Library& library, Report& report) {
    report.begin("contexts: null is refused, sizes are the objects'");
    for (const Object& object : objects())
        checkInit(library, object, report);
    report.begin("nodes of a context: null and nodes beyond the limit are none");
    for (const Object& object : objects()) {
        if (library.find(object.prefix + "InitContext") != 0) checkNodes(library, object, report);
    }
}

}  // namespace quorvel::selftest
