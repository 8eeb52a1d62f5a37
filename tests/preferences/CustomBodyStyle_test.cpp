// A changed Body style, from the preferences that the application writes to the page that the importer makes.
#include <cstdlib>
#include <string>

#include <spawn.h>
#include <sys/wait.h>

#include "platform/foundation/URL.h"
#include "styles/UserDefaultsArchiving.h"
#include "tests/support/StylesFixture.h"

using namespace quillet;
using Style = QLTNoteTextStyle;

namespace {

constexpr std::string_view kExport = R"(<?xml version="1.0" encoding="UTF-8"?>
<en-export><note><title>Page</title><content><![CDATA[<?xml version="1.0" encoding="UTF-8"?>
<en-note><div>Text of the page</div></en-note>]]></content>
<note-attributes><source>web.clip</source></note-attributes></note></en-export>)";

class CustomBodyStyle : public StylesFixture {
  protected:
    static void saveBody(const platform::Font& font) {
        const Style::Reference body = Style::defaultBodyNoteTextStyle();
        body->setFont(font);
        platform::UserDefaults application{std::string("Q7X2M9K4T1.com.tesseral.Quillet")};
        const auto styles = std::make_shared<platform::ObjectArray>(1, body);
        ASSERT_TRUE(archiveObject(application, platform::ArchivedObject(styles), QLTNoteTextStylesDefaultsKey));
    }

    // Runs the importer over the export and answers the page that it made.
    std::string importedPage(std::string_view directory) {
        const std::string file = (scratch_ / "page.enex").string(), into = (scratch_ / directory).string();
        tests::writeFile(file, kExport);
        std::string program = QUILLET_IMPORTER, quiet = "--quiet", input = file, output = into;
        std::string preferences = "XDG_CONFIG_HOME=" + scratch_.path().string();
        std::string data = "QUILLET_DATA_DIR=" + (tests::sourceDirectory() / "data").string();
        std::string locale = "LC_ALL=tr_TR.UTF-8"; // a decimal comma, a dotless i, and perhaps not installed
        char* const arguments[]{program.data(), quiet.data(), input.data(), output.data(), nullptr};
        char* const environment[]{preferences.data(), data.data(), locale.data(), nullptr};
        pid_t child = 0;
        EXPECT_EQ(::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environment), 0);
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        return tests::readFile(std::filesystem::path(into) / "Page.html");
    }
};

bool shows(const std::string& page, std::string_view font, std::string_view size) {
    const std::string style = "font-family: \"" + std::string(font) + "\"; font-size: " + std::string(size) + ";";
    return page.find(style) != std::string::npos;
}

} // namespace

TEST_F(CustomBodyStyle, ShowsInThePageOfTheNextImport) {
    const std::string before = importedPage("before");
    EXPECT_TRUE(shows(before, "HelveticaNeue", "12px")) << before;
    saveBody(platform::Font("Georgia-Bold", 19));
    const std::string after = importedPage("after");
    EXPECT_TRUE(shows(after, "Georgia-Bold", "19px")) << after;
    saveBody(platform::Font("Menlo-Regular", 10.5));
    const std::string again = importedPage("again");
    EXPECT_TRUE(shows(again, "Menlo-Regular", "10px")) << again;
}

TEST_F(CustomBodyStyle, OfADamagedFileShowsInNoPage) {
    tests::writeFile(scratch_ / "Q7X2M9K4T1.com.tesseral.Quillet.plist", "bplist00");
    EXPECT_TRUE(shows(importedPage("damaged"), "HelveticaNeue", "12px"));
}
