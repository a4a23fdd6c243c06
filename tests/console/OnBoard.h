#pragma once

#include <gtest/gtest.h>

#include "tests/console/Command.h"

namespace quorvel::console_test {

// A test that needs a board.
class OnBoard : public testing::Test {
  protected:
    void SetUp() override {
        if (!whyNoBoard().empty()) GTEST_SKIP() << "no board can run here: " << whyNoBoard();
    }

    Console console_;
};

}  // namespace quorvel::console_test
