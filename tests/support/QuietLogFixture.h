// For tests whose input is bad on purpose: what is said about it does not reach the machine's log.
#pragma once

#include <string_view>

#include <gtest/gtest.h>

#include "platform/base/SystemLog.h"

namespace platform {

class QuietLogFixture : public testing::Test {
  protected:
    void SetUp() override {
        saved_ = setSystemLogSink([](std::string_view) {});
    }
    void TearDown() override { setSystemLogSink(saved_); }

  private:
    SystemLogSink saved_;
};

} // namespace platform
