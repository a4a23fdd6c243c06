// Snapshots: a whole instance in one context.
#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {

void checkSnapshots(const Library& library, Report& report) {
    report.begin("snapshots: size, no node marked, the lock is free");
    for (const definitions::Object& object : definitions::objects()) {
        const Caller snapshot(library, std::string(object.prefix) + "InstanceGet");
        if (!snapshot.there()) continue;
        for (const bool answers : {false, true}) {
            Context context;
            const Context fresh = context;
            platform().managerAnswers = answers;
            (void)snapshot.with(context.word(), depthOf(object), 1);
            platform().managerAnswers = false;
            const std::string where = snapshot.name() + (answers ? "" : " of an instance that cannot be read");
            report.check(platform().contextInits == 1 && platform().contextSize == object.contextSize,
                         where + ": initialises " + std::to_string(platform().contextSize) + " bytes, expected " +
                             std::to_string(object.contextSize));
            report.check(nothingPending(context.bytes.data()), where + " marks nodes");
            report.check(lockBalanced(), where + " keeps the lock");
            report.check(std::memcmp(context.bytes.data() + object.contextSize, fresh.bytes.data() + object.contextSize,
                                     kContextRoom - object.contextSize) == 0,
                         where + " writes beyond the object's " + std::to_string(object.contextSize) + " bytes");
        }
    }

    report.begin("snapshots: a failing read's result is returned");
    platform().lockResult = 77;
    for (const definitions::Object& object : definitions::objects()) {
        const Caller snapshot(library, std::string(object.prefix) + "InstanceGet");
        if (!snapshot.there()) continue;
        Context context;
        report.expect(snapshot.name() + " when the lock fails", snapshot.with(context.word(), depthOf(object), 1), 77);
    }
    platform().lockResult = 0;
}

}  // namespace quorvel::selftest
