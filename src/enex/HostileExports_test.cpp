// Exports that break off, go deep or wide, or do not fit into memory.
#include <sys/resource.h>

#include <cstdlib>
#include <fstream>
#include <new>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "enex/ImportCase.h"

namespace quillet {
namespace {

using platform::Result;

TEST(EvernoteXMLParseOperation, EndsOnceWhereverTheFileBreaksOff) {
    const std::string whole = exported(std::string(kFullNote) + std::string(kFullNote));
    Import import;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        import.blocks.clear();
        import.run(std::string_view(whole).substr(0, length));
        EXPECT_EQ(import.ends(), 1U) << length;
        EXPECT_TRUE(import.blocks.back().starts_with("end")) << length;
    }
}

TEST(EvernoteXMLParseOperation, SurvivesHostileFiles) {
    std::string deep = "<note><title>t</title>";
    for (int i = 0; i < 1'000'000; ++i) deep += "<a>";
    std::string wide = "<note><title>t</title><a";
    for (int i = 0; i < 100'000; ++i) wide += fmt::format(" a{}=''", i);
    for (const auto& xml : {deep, wide + "/></note>"}) {
        Import import;
        import.run(xml);
        EXPECT_EQ(import.blocks, (std::vector<std::string>{"end EvernoteXMLParseOperationErrorDomain 1006"}));
    }
}

#ifndef __SANITIZE_ADDRESS__ // which reserves more than any limit leaves

// Lowers how much more memory this process may take.
class MemoryLimit {
  public:
    explicit MemoryLimit(std::size_t more) {
        ::getrlimit(RLIMIT_DATA, &saved_);
        rlimit limit = saved_;
        limit.rlim_cur = dataSize() + more;
        ::setrlimit(RLIMIT_DATA, &limit);
    }
    ~MemoryLimit() { ::setrlimit(RLIMIT_DATA, &saved_); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    static std::size_t dataSize() {
        std::ifstream status("/proc/self/status");
        std::string line;
        while (std::getline(status, line))
            if (line.starts_with("VmData:")) return std::strtoull(line.c_str() + 7, nullptr, 10) * 1024;
        return 0;
    }
    rlimit saved_{};
};

TEST(EvernoteXMLParseOperation, LosesOnlyTheNoteThatDoesNotFitIntoMemory) {
    constexpr std::size_t kSize = 64 << 20;
    const std::string small = "<note><title>a</title></note>";
    std::string sections;
    while (sections.size() < kSize) sections += "<![CDATA[" + std::string(1 << 20, 'A') + "]]>";
    const std::string rows[] = {
        "<note><title>b</title><resource><data>" + std::string(kSize, 'A') + "</data></resource></note>",
        "<note><title>b</title><content>" + sections + "</content></note>",
    };
    for (const std::string& row : rows) {
        Import import;
        const std::string text = "<x>" + small + row + small + "</x>";
        const MemoryLimit limit(40 << 20);
        import.run(text);
        EXPECT_EQ(import.blocks, (std::vector<std::string>{
                                     "entry", "error EvernoteXMLParseOperationErrorDomain 1004 'b'", "entry", "end"}));
    }
}

TEST(EvernoteXMLParseOperation, EndsWithAnErrorForATitleThatDoesNotFitIntoMemory) {
    Import import;
    const std::string text = "<x><note><title>" + std::string(64 << 20, 'A') + "</title></note></x>";
    const MemoryLimit limit(40 << 20);
    import.run(text);
    EXPECT_EQ(import.blocks, (std::vector<std::string>{"end NSXMLParserErrorDomain 2"}));
}

#endif

TEST(EvernoteXMLParseOperation, SaysWhatAConversionLacked) {
    Import import;
    import.convert = [](EvernoteXMLItem&) -> Result<std::optional<ItemEntry>> { throw std::bad_alloc(); };
    import.prepare = [](EvernoteXMLParseOperation& operation) {
        operation.parseOperationDidExportItemBlock = [](const Result<ItemEntry>& entry) {
            ASSERT_FALSE(entry);
            EXPECT_EQ(entry.error().localizedDescription(), "The note does not fit into memory.");
        };
    };
    import.run("<note/>");
    EXPECT_EQ(import.blocks, (std::vector<std::string>{"end"}));
}

} // namespace
} // namespace quillet
