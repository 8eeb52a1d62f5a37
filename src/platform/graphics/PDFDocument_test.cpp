#include "platform/graphics/PDFDocument.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchDirectory.h"

using platform::Data;
using platform::PDFDocument;

namespace {

PDFDocument document(const char* name) {
    return PDFDocument(Data(tests::readFile(tests::sourceDirectory() / "tests/data/pdf" / name)));
}

} // namespace

TEST(PDFDocument, OnlyAUserPasswordLocks) {
    EXPECT_FALSE(document("open.pdf").isLocked());
    EXPECT_FALSE(document("owner-password.pdf").isLocked());
    EXPECT_TRUE(document("user-password.pdf").isLocked());
}

TEST(PDFDocument, EitherPasswordUnlocks) {
    const struct {
        const char* password;
        bool unlocks;
    } kCases[] = {{"secret", true}, {"owner", true}, {"", false}, {"Secret", false}};
    for (const auto& each : kCases)
        EXPECT_EQ(document("user-password.pdf").unlockWithPassword(each.password), each.unlocks) << each.password;
    EXPECT_TRUE(document("owner-password.pdf").unlockWithPassword(""));
}

TEST(PDFDocument, WhatCannotBeReadIsNotLocked) {
    const std::string bytes = tests::readFile(tests::sourceDirectory() / "tests/data/pdf/user-password.pdf");
    for (const std::string& damaged :
         {std::string(), std::string("%PDF-1.7"), std::string("junk"), bytes.substr(0, 40)})
        EXPECT_FALSE(PDFDocument(Data(damaged)).isLocked());
}
