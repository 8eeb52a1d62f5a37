#include "platform/files/ResourceValues.h"

#include <ctime>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/URL.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;
using namespace std::string_literals;

namespace {

std::optional<std::string> attribute(const std::filesystem::path& path, const char* name) {
    std::string bytes(65536, '\0');
    const ssize_t size = ::getxattr(path.c_str(), name, bytes.data(), bytes.size());
    if (size < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

class ResourceValuesTest : public testing::Test {
  protected:
    ResourceValuesTest() { tests::writeFile(path, "x"); }
    URL url() const { return URL::fileURLWithPath(path.string()); }
    ResourceValues read() const {
        const auto values = resourceValuesOfItemAtURL(url());
        EXPECT_TRUE(values) << values.error().description();
        return values.value_or(ResourceValues());
    }
    void set(const ResourceValues& values) const {
        const auto done = setResourceValuesOfItemAtURL(values, url());
        EXPECT_TRUE(done) << done.error().description();
    }

    tests::ScratchDirectory scratch;
    std::filesystem::path path = scratch / "file.txt";
};

} // namespace

TEST_F(ResourceValuesTest, BringsEveryValueBack) {
    const ResourceValues values{true,
                                true,
                                Date::fromUnixTime(1714554902),
                                {{u"one", u"zwei, drei", u"\U0001F600"}},
                                Date::fromUnixTime(-12.25)};
    set(values);
    EXPECT_EQ(read(), values);
}

TEST_F(ResourceValuesTest, WritesTheAttributesThatOtherProgramsRead) {
    set({true, {}, Date::fromUnixTime(1714554902.9), {{u"Red", u"a,b", u"", u"Red", u"x\n7"}}, {}});
    EXPECT_EQ(attribute(path, "user.com.tesseral.quillet.creationDate"), "2024-05-01T09:15:02Z");
    EXPECT_EQ(attribute(path, "user.xdg.tags"), "Red,a‚b,x\n7");
    EXPECT_EQ(attribute(path, "user.com.apple.FinderInfo"), std::string(9, '\0') + "\x10" + std::string(22, '\0'));
    const auto tags = attribute(path, "user.com.apple.metadata:_kMDItemUserTags");
    ASSERT_TRUE(tags);
    EXPECT_TRUE(tags->starts_with("bplist00"));
    EXPECT_EQ(*propertyListFromData(*tags), Value(Array{"Red", "a,b", "", "Red", "x\n7\n0"}));
}

TEST_F(ResourceValuesTest, KeepsTheOtherFlagsAndRemovesTheAttributeWhenAllAreOff) {
    std::string info(32, '\0');
    info[8] = 0x40; // invisible
    info[31] = 'z';
    ASSERT_EQ(::setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0), 0);
    set({true, true, {}, {}, {}});
    info[8] = 0x60;
    info[9] = 0x10;
    EXPECT_EQ(attribute(path, "user.com.apple.FinderInfo"), info);
    std::filesystem::remove(path);
    tests::writeFile(path, "x");
    set({true, {}, {}, {}, {}});
    set({false, {}, {}, {}, {}});
    EXPECT_EQ(attribute(path, "user.com.apple.FinderInfo"), std::nullopt);
}

TEST_F(ResourceValuesTest, ReadsTagsOfOtherWriters) {
    const std::string shared = " one,, two ,";
    ASSERT_EQ(::setxattr(path.c_str(), "user.xdg.tags", shared.data(), shared.size(), 0), 0);
    EXPECT_EQ(read().tagNames, (std::vector<std::u16string>{u"one", u"two"}));
    const std::string exact = *binaryDataFromPropertyList(Value(Array{"Red\n6", "foo", 3}));
    ASSERT_EQ(::setxattr(path.c_str(), "user.com.apple.metadata:_kMDItemUserTags", exact.data(), exact.size(), 0), 0);
    EXPECT_EQ(read().tagNames, (std::vector<std::u16string>{u"Red", u"foo"}));
    set({{}, {}, {}, std::vector<std::u16string>{}, {}});
    EXPECT_TRUE(read().tagNames->empty());
    EXPECT_EQ(attribute(path, "user.xdg.tags"), std::nullopt);
}

TEST_F(ResourceValuesTest, FallsBackToTheBirthTime) {
    const auto now = static_cast<double>(::time(nullptr));
    for (const std::string text : {"2024-13-01T00:00:00Z", "yesterday", "2024-05-01T24:00:00Z"}) {
        ASSERT_EQ(::setxattr(path.c_str(), "user.com.tesseral.quillet.creationDate", text.data(), text.size(), 0), 0);
        ASSERT_TRUE(read().creationDate);
        EXPECT_NEAR(read().creationDate->unixTime(), now, 100) << text;
    }
}

TEST_F(ResourceValuesTest, SetsTheTimeLast) {
    std::filesystem::create_directory(scratch / "package");
    const URL package = URL::fileURLWithPath((scratch / "package").string(), true);
    const ResourceValues values{true, true, Date{0}, {{u"t"}}, Date::fromUnixTime(1000000000.5)};
    ASSERT_TRUE(setResourceValuesOfItemAtURL(values, package));
    EXPECT_EQ(*resourceValuesOfItemAtURL(package), values);
}

TEST_F(ResourceValuesTest, KeepsWhatFitsAndListsWhatDoesNot) {
    const ResourceValues values{true, {}, Date{0}, {{std::u16string(70000, u'x')}}, Date::fromUnixTime(5)};
    const auto done = setResourceValuesOfItemAtURL(values, url());
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().code, 512);
    const std::string description = done.error().localizedDescription();
    EXPECT_NE(description.find(path.string()), std::string::npos);
    EXPECT_NE(description.find("user.xdg.tags ("), std::string::npos);
    EXPECT_NE(description.find("_kMDItemUserTags ("), std::string::npos);
    EXPECT_EQ(read().hasHiddenExtension, true);
    EXPECT_EQ(read().creationDate, Date{0});
    EXPECT_EQ(read().contentModificationDate, Date::fromUnixTime(5));
}

// Most of /proc has no user attributes and takes no times.
TEST_F(ResourceValuesTest, ListsEveryAttributeOfAFileSystemWithoutAny) {
    const FileDescriptor file = openAt(AT_FDCWD, "/proc/self/status", O_RDONLY);
    ASSERT_TRUE(file);
    const auto refused = setResourceValues(file.get(), {true, {}, Date{0}, {{u"t"}}, {}});
    ASSERT_EQ(refused.size(), 4U);
    for (const RefusedAttribute& each : refused) EXPECT_NE(each.errorNumber, 0) << each.name;
    EXPECT_FALSE(hasHiddenExtension(file.get()));
}

TEST_F(ResourceValuesTest, ClampsTimesThatNoFileHolds) {
    for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_TRUE(setResourceValuesOfItemAtURL({{}, {}, {}, {}, Date{seconds}}, url()).has_value()) << seconds;
}

TEST_F(ResourceValuesTest, FollowsNoLinkAndReportsAMissingFile) {
    std::filesystem::create_symlink(path, scratch / "link");
    EXPECT_FALSE(
        setResourceValuesOfItemAtURL({true, {}, {}, {}, {}}, URL::fileURLWithPath((scratch / "link").string())));
    const auto missing = resourceValuesOfItemAtURL(URL::fileURLWithPath((scratch / "none").string()));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, 260);
}

TEST_F(ResourceValuesTest, MayNotChangeSomebodyElsesFile) {
    if (::getuid() != 0) GTEST_SKIP() << "needs root to become nobody";
    const FileDescriptor file = openAt(AT_FDCWD, path.c_str(), O_RDONLY);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setuid(65534) != 0) ::_exit(99);
        const auto refused = setResourceValues(file.get(), {true, {}, {}, {}, Date{0}});
        ::_exit(refused.size() == 2 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}
