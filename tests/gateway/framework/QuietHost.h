#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "gateway/framework/HostControl.h"

// The fixture of tests that look at what the host answers and not at what it logs.
class QuietHost : public testing::Test {
  protected:
    QuietHost() {
        QuorvelHost_SetLogSink([](std::uint32_t, const char*, void*) {}, nullptr);
        QuorvelHost_ClearLastError();
    }
    ~QuietHost() override {
        QuorvelHost_SetLogSink(nullptr, nullptr);
    }
};
