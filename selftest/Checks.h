#pragma once

#include "selftest/Library.h"
#include "selftest/Report.h"

namespace quorvel::selftest {

// Each adds its groups to the report. Functions that are not there are the first group's affair; the others pass them
// over.

void checkExports(const Library& library, Report& report);
void checkTable(const Library& library, Report& report);
/// Must come before every other call that locks: it watches the first one.
void checkLockCreation(const Library& library, Report& report);
void checkContexts(const Library& library, Report& report);
void checkSetters(const Library& library, Report& report);
void checkGetters(const Library& library, Report& report);
void checkApplies(const Library& library, Report& report);
void checkSnapshots(const Library& library, Report& report);

}  // namespace quorvel::selftest
