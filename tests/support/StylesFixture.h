// What tests of styles stand on: preferences of their own, counted identifiers, light appearance, a captured log.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/SystemLog.h"
#include "platform/defaults/NotificationCenter.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/Environment.h"
#include "styles/NoteTextStyleCoding.h"
#include "styles/QLTNoteTextStyle.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {

class StylesFixture : public testing::Test {
  protected:
    void SetUp() override {
        registerArchivableStyleClasses();
        environment_->preferencesDirectory = scratch_.path().string();
        environment_->bundleIdentifier = "org.example.styles";
        environment_->localeIdentifier = "en_US";
        environment_->darkAppearance = false;
        environment_->newUUID = [this] {
            platform::UUID uuid;
            uuid.bytes.back() = ++identifiers_;
            return uuid;
        };
        savedSink_ = platform::setSystemLogSink([this](std::string_view entry) { log_.emplace_back(entry); });
        QLTNoteTextStyle::reloadStylesFromDefaults();
        subscription_ = platform::NotificationCenter::defaultCenter().addObserver(
            QLTNoteTextStyleDefaultsDidChangeNotification, [this] { ++notifications_; });
    }
    void TearDown() override {
        subscription_.end();
        QLTNoteTextStyle::reloadStylesFromDefaults();
        platform::setSystemLogSink(std::move(savedSink_));
    }

    static platform::UserDefaults& defaults() { return platform::UserDefaults::standard(); }

    tests::ScratchDirectory scratch_;
    platform::ScopedEnvironment environment_;
    std::uint8_t identifiers_ = 0;
    std::vector<std::string> log_;
    platform::SystemLogSink savedSink_;
    platform::NotificationCenter::Subscription subscription_;
    int notifications_ = 0;
};

} // namespace quillet
