#include "platform/text/TextAttachment.h"

#include <gtest/gtest.h>

#include "platform/files/FileWrapper.h"

namespace platform {
namespace {

TEST(TextAttachments, TakeTheirTypeFromTheNameOfTheirFileUnlessItWasSet) {
    struct Row {
        std::string_view name, type;
    };
    const Row kRows[] = {
        {"photo.jpg", "public.jpeg"},
        {"PLAN.PDF", "com.adobe.pdf"},
        {"a.b.txt", "public.plain-text"},
        {"noextension", ""},
        {".hidden", ""},
        {"trailing.", ""},
    };
    for (const Row& row : kRows) {
        const auto wrapper = FileWrapper::regularFile(Data());
        wrapper->setPreferredFilename(std::string(row.name));
        EXPECT_EQ(TextAttachment(wrapper).fileType(), row.type) << row.name;
    }
    const auto wrapper = FileWrapper::regularFile(Data());
    wrapper->setPreferredFilename("photo.jpg");
    TextAttachment attachment(wrapper);
    attachment.setFileType("public.png");
    EXPECT_EQ(attachment.fileType(), "public.png");
    EXPECT_EQ(TextAttachment(Data("x"), "public.data").fileType(), "public.data");
    EXPECT_EQ(TextAttachment().fileType(), "");
}

TEST(TextAttachments, MakeOthersOfTheirClass) {
    const auto wrapper = FileWrapper::regularFile(Data());
    const auto made = TextAttachment().sameClassWithFileWrapper(wrapper);
    EXPECT_EQ(made->className(), "NSTextAttachment");
    EXPECT_EQ(made->fileWrapper(), wrapper);
}

} // namespace
} // namespace platform
