// Snapshots: a whole instance in one context.
#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {

void checkSnapshots(const Library& library, Report& report) {
    report.begin("snapshots: size, no node marked, the lock is free");
    for (const model::Object& object : model::kObjects) {
        const Caller snapshot(library, std::string(object.prefix) + "InstanceGet");
        if (!snapshot.there()) continue;
        for (const bool answers : {false, true}) {
            Context context;
            const Context fresh = context;
            platform().managerAnswers = answers;
            (void)snapshot.with(context.word(), depthOf(object), 1);
            platform().managerAnswers = false;
            const std::string where = snapshot.name() + (answers ? "" : " of an instance that cannot be read");
            report.check(platform().contextInits == 1 && platform().contextSize == contextSizeOf(object),
                         where + ": initialises " + std::to_string(platform().contextSize) + " bytes, expected " +
                             std::to_string(contextSizeOf(object)));
            report.check(nothingPending(context.bytes.data()), where + " marks nodes");
            report.check(lockBalanced(), where + " keeps the lock");
            report.check(
                std::memcmp(context.bytes.data() + contextSizeOf(object), fresh.bytes.data() + contextSizeOf(object),
                            kContextRoom - contextSizeOf(object)) == 0,
                where + " writes beyond the object's " + std::to_string(contextSizeOf(object)) + " bytes");
        }
    }

    report.begin("snapshots: a failing read's result is returned");
    platform().lockResult = 77;
    for (const model::Object& object : model::kObjects) {
        const Caller snapshot(library, std::string(object.prefix) + "InstanceGet");
        if (!snapshot.there()) continue;
        Context context;
        report.expect(snapshot.name() + " when the lock fails", snapshot.with(context.word(), depthOf(object), 1), 77);
    }
    platform().lockResult = 0;
}

}  // namespace quorvel::selftest
