#pragma once

namespace quorvel::scripted {

// Runs the body in a process in which the plug-in has just been loaded: slot table, lock, diagnostics records and all
// other state of its own are as at the start, whatever earlier tests of this program did. Expectations inside the body
// are reported as usual; the platform is reset and active. Returns whether the body met all of them.
//
//     TEST(SlotTable, StartsInOrder) {
//         EXPECT_TRUE(runFresh([] { EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(9), 2U); }));
//     }
[[nodiscard]] bool runFresh(void (*body)());

}  // namespace quorvel::scripted
