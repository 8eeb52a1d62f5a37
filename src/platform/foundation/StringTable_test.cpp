#include "platform/foundation/StringTable.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/foundation/Environment.h"
#include "platform/foundation/Locale.h"
#include "platform/foundation/MessageCatalogue.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

using Texts = std::vector<std::pair<std::string, std::string>>;

std::string catalogueFile(const Texts& texts, bool littleEndian) {
    std::string file, strings;
    const auto append = [&](std::size_t number) {
        for (unsigned i = 0; i < 4; ++i) file += static_cast<char>(number >> (littleEndian ? 8 * i : 24 - 8 * i));
    };
    const std::size_t tables = 28, size = texts.size() * 8, end = tables + 2 * size;
    for (const std::size_t number :
         {std::size_t{0x950412DE}, std::size_t{0}, texts.size(), tables, tables + size, std::size_t{0}, end})
        append(number);
    for (const bool isTranslation : {false, true}) {
        for (const auto& [english, translation] : texts) {
            const std::string& text = isTranslation ? translation : english;
            append(text.size());
            append(end + strings.size());
            strings += text + '\0';
        }
    }
    return file + strings;
}

void install(const std::filesystem::path& directory, const std::string& language, const Texts& texts) {
    std::filesystem::create_directories(directory / language / "LC_MESSAGES");
    std::ofstream(directory / language / "LC_MESSAGES/quillet-enex-import.mo", std::ios::binary)
        << catalogueFile(texts, true);
}

TEST(MessageCatalogue, ReadsBothByteOrders) {
    const Texts texts{{"", "Content-Type: text/plain; charset=UTF-8\n"},
                      {"Untitled", "Ohne Titel"},
                      {"file\0files", "Datei"},
                      {"left", ""}};
    for (const bool littleEndian : {true, false}) {
        const auto catalogue = MessageCatalogue::fromData(catalogueFile(texts, littleEndian));
        ASSERT_TRUE(catalogue);
        EXPECT_EQ(catalogue->translation("Untitled"), "Ohne Titel");
        EXPECT_EQ(catalogue->translation("file"), "Datei");
        EXPECT_EQ(catalogue->translation("left"), std::nullopt);
        EXPECT_EQ(catalogue->translation(""), std::nullopt);
        EXPECT_EQ(catalogue->translation("other"), std::nullopt);
    }
}

TEST(MessageCatalogue, DamagedFilesAreRefusedOrRead) {
    const std::string whole = catalogueFile({{"Untitled", "Ohne Titel"}}, true);
    EXPECT_FALSE(MessageCatalogue::fromData(""));
    EXPECT_FALSE(MessageCatalogue::fromData("not a catalogue at all, by far"));
    for (std::size_t size = 0; size + 1 < whole.size(); ++size)
        EXPECT_FALSE(MessageCatalogue::fromData(whole.substr(0, size)) &&
                     MessageCatalogue::fromData(whole.substr(0, size))->translation("Untitled"));
    EXPECT_TRUE(rc::check([&] {
        std::string file = whole;
        for (int i = 0; i < 3; ++i) file[*rc::gen::inRange<std::size_t>(4, file.size())] = *rc::gen::arbitrary<char>();
        MessageCatalogue::fromData(file);
    }));
}

TEST(StringTable, FollowsTheEnvironmentsLanguage) {
    const tests::ScratchDirectory scratch;
    install(scratch.path(), "de", {{"Untitled", "Ohne Titel"}, {"Note", "Notiz"}});
    install(scratch.path(), "de_AT", {{"Untitled", "Titellos"}});
    ScopedEnvironment environment;
    environment->catalogueDirectory = scratch.path();
    environment->localeIdentifier = "de_DE";
    EXPECT_EQ(localizedString("Untitled"), "Ohne Titel");
    EXPECT_EQ(localizedString("[Missing Attachment]"), "[Missing Attachment]");
    environment->localeIdentifier = "de_AT@calendar=gregorian";
    EXPECT_EQ(localizedString("Untitled"), "Titellos");
    environment->localeIdentifier = "en_US";
    EXPECT_EQ(localizedString("Untitled"), "Untitled");
    environment->localeIdentifier = "de";
    environment->catalogueDirectory = scratch / "none";
    EXPECT_EQ(localizedString("Untitled"), "Untitled");
}

TEST(StringTable, AnswersManyThreads) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int k = 0; k < 1000; ++k) EXPECT_EQ(localizedString("no such text"), "no such text");
        });
}

TEST(StringTable, MarkedTextsStayThemselves) {
    EXPECT_EQ(localizable("Untitled"), "Untitled");
}

TEST(Locale, CatalogueNamesGoFromSpecialToGeneral) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(catalogueNamesForLocale("de_AT"), (Names{"de_AT", "de"}));
    EXPECT_EQ(catalogueNamesForLocale("de"), (Names{"de"}));
    EXPECT_EQ(catalogueNamesForLocale("sr_Latn_RS"), (Names{"sr_RS@latin", "sr@latin", "sr_RS", "sr"}));
    EXPECT_EQ(catalogueNamesForLocale("zh_Hans_CN@calendar=chinese"), (Names{"zh_CN", "zh"}));
    EXPECT_EQ(catalogueNamesForLocale("ca_ES_VALENCIA"), (Names{"ca_ES", "ca"}));
}

} // namespace
} // namespace platform
