#include "platform/foundation/Environment.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/foundation/Locale.h"

namespace platform {
namespace {

TEST(UUID, PrintsAsUpperCaseGroups) {
    const UUID uuid{{0x68, 0x75, 0x3A, 0x44, 0x4D, 0x6F, 0x12, 0x26, 0x9C, 0x60, 0x00, 0x50, 0xE4, 0xC0, 0x00, 0x67}};
    EXPECT_EQ(uuid.string(), "68753A44-4D6F-1226-9C60-0050E4C00067");
}

TEST(UUID, RandomOnesAreVersionFourAndDiffer) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string text = UUID::random().string();
        EXPECT_EQ(text[14], '4');
        EXPECT_NE(std::string_view("89AB").find(text[19]), std::string_view::npos);
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

TEST(Environment, IsReplacedForAScopeOnly) {
    const std::string before = Environment::current().localeIdentifier;
    {
        ScopedEnvironment environment;
        environment->localeIdentifier = "tlh";
        environment->newUUID = [] { return UUID{}; };
        environment->now = [] { return Date{42}; };
        EXPECT_EQ(UUID::random(), UUID{});
        EXPECT_EQ(Environment::current().now(), Date{42});
    }
    EXPECT_EQ(Environment::current().localeIdentifier, before);
    EXPECT_FALSE(UUID::random() == UUID{});
}

TEST(Environment, NamesTheBundleAndItsDirectories) {
    const Environment& environment = Environment::current();
    EXPECT_EQ(environment.bundleIdentifier, "com.tesseral.Quillet.ENEXImport");
    EXPECT_FALSE(environment.bundleShortVersion.empty());
    EXPECT_TRUE(environment.preferencesDirectory.starts_with('/'));
    EXPECT_FALSE(environment.dataDirectory.empty());
    EXPECT_FALSE(environment.catalogueDirectory.empty());
    EXPECT_FALSE(environment.timeZoneName.empty());
    EXPECT_GT(environment.now().secondsSinceReferenceDate, 0);
}

TEST(Locale, POSIXNamesBecomeICUIdentifiers) {
    struct Row {
        const char *name, *identifier;
    };
    for (const Row& row : {Row{"de_DE.UTF-8", "de_DE"}, Row{"de_DE@euro", "de_DE"}, Row{"de", "de"},
                           Row{"sr_RS.UTF-8@latin", "sr_Latn_RS"}, Row{"sr@latin", "sr_Latn"}, Row{"C", "en_US_POSIX"},
                           Row{"C.UTF-8", "en_US_POSIX"}, Row{"POSIX", "en_US_POSIX"}, Row{"", "en_US_POSIX"}})
        EXPECT_EQ(localeIdentifierFromPOSIX(row.name), row.identifier) << row.name;
}

TEST(Locale, TimeZoneValuesBecomeZoneNames) {
    struct Row {
        const char *value, *name;
    };
    for (const Row& row :
         {Row{"Europe/Berlin", "Europe/Berlin"}, Row{":America/New_York", "America/New_York"},
          Row{"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
          Row{"../usr/share/zoneinfo/posix/Asia/Tokyo", "Asia/Tokyo"}, Row{"", "UTC"}, Row{":/etc/my-rules", "UTC"},
          Row{"EST5EDT", "EST5EDT"}, Row{"CET-1CEST,M3.5.0,M10.5.0/3", "CET-1CEST,M3.5.0,M10.5.0/3"}})
        EXPECT_EQ(timeZoneNameFromTZ(row.value), row.name) << row.value;
}

} // namespace
} // namespace platform
