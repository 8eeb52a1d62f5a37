#include "platform/defaults/UserDefaults.h"

#include <csignal>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;
using namespace std::string_literals;

namespace {

class UserDefaultsTest : public testing::Test {
  protected:
    UserDefaultsTest() {
        environment->preferencesDirectory = (scratch / "config").string();
        environment->bundleIdentifier = "org.example.App";
        std::filesystem::create_directory(scratch / "config");
        previousSink = setSystemLogSink([this](std::string_view entry) { log.emplace_back(entry); });
    }
    ~UserDefaultsTest() override { setSystemLogSink(previousSink); }

    std::filesystem::path file(const std::string& domain) const { return scratch / "config" / (domain + ".plist"); }
    void write(const std::string& domain, const Dictionary& values) const {
        tests::writeFile(file(domain), *xmlDataFromPropertyList(Value(values)));
    }
    Value stored(const std::string& domain) const { return *propertyListFromData(tests::readFile(file(domain))); }

    tests::ScratchDirectory scratch;
    ScopedEnvironment environment;
    SystemLogSink previousSink;
    std::vector<std::string> log;
};

} // namespace

TEST_F(UserDefaultsTest, SearchesOwnDomainThenSuitesNewestFirstThenRegistered) {
    write("org.example.App", {{"a", 1}});
    write("suite.old", {{"a", 2}, {"b", 2}, {"c", 2}});
    write("suite.new", {{"a", 3}, {"b", 3}});
    UserDefaults defaults;
    defaults.registerDefaults({{"a", 9}, {"b", 9}, {"c", 9}, {"d", 8}});
    defaults.registerDefaults({{"d", 9}});
    defaults.addSuiteNamed("suite.old");
    defaults.addSuiteNamed("suite.new");
    EXPECT_EQ(defaults.integerForKey("a"), 1);
    EXPECT_EQ(defaults.integerForKey("b"), 3);
    EXPECT_EQ(defaults.integerForKey("c"), 2);
    EXPECT_EQ(defaults.integerForKey("d"), 9);
    EXPECT_EQ(defaults.objectForKey("e"), std::nullopt);
    defaults.addSuiteNamed("suite.old");
    EXPECT_EQ(defaults.integerForKey("b"), 2);
    EXPECT_TRUE(log.empty());
}

TEST_F(UserDefaultsTest, ConvertsAsItIsAsked) {
    write("org.example.App", {{"yes", "YES"},
                              {"one", "1x"},
                              {"no", "no"},
                              {"real", 2.5},
                              {"int", -7},
                              {"true", true},
                              {"text", " 42 apples"},
                              {"huge", "99999999999999999999"},
                              {"data", Data("d"s)}});
    const UserDefaults defaults;
    for (const auto* key : {"yes", "one", "real", "int", "true", "text"}) EXPECT_TRUE(defaults.boolForKey(key)) << key;
    for (const auto* key : {"no", "data", "absent"}) EXPECT_FALSE(defaults.boolForKey(key)) << key;
    EXPECT_EQ(defaults.integerForKey("text"), 42);
    EXPECT_EQ(defaults.integerForKey("real"), 2);
    EXPECT_EQ(defaults.integerForKey("int"), -7);
    EXPECT_EQ(defaults.integerForKey("huge"), INT64_MAX);
    EXPECT_EQ(defaults.stringForKey("int"), u"-7");
    EXPECT_EQ(defaults.stringForKey("real"), u"2.5");
    EXPECT_EQ(defaults.stringForKey("data"), std::nullopt);
    EXPECT_EQ(defaults.dataForKey("data"), Data("d"s));
    EXPECT_EQ(defaults.dataForKey("int"), std::nullopt);
}

TEST_F(UserDefaultsTest, WritesForItsOwnerOnlyAndKeepsOtherKeys) {
    write("org.example.App", {{"kept", "x"}, {"changed", 1}, {"removed", 1}});
    UserDefaults defaults;
    ASSERT_TRUE(defaults.setObject("changed", 2));
    ASSERT_TRUE(defaults.removeObject("removed"));
    ASSERT_TRUE(defaults.setObject("also removed", Value()));
    EXPECT_EQ(stored("org.example.App"), Value(Dictionary{{"kept", "x"}, {"changed", 2}}));
    EXPECT_EQ(defaults.integerForKey("changed"), 2);
    EXPECT_EQ(defaults.objectForKey("removed"), std::nullopt);
    struct stat status{};
    ASSERT_EQ(::stat(file("org.example.App").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(UserDefaultsTest, MakesTheDirectoryForItsFirstValue) {
    environment->preferencesDirectory = (scratch / "new" / "config").string();
    UserDefaults defaults;
    EXPECT_EQ(defaults.objectForKey("k"), std::nullopt);
    ASSERT_TRUE(defaults.setObject("k", "v"));
    EXPECT_EQ(UserDefaults("org.example.App").stringForKey("k"), u"v");
}

TEST_F(UserDefaultsTest, ReadsChangedFilesWhenASuiteIsAdded) {
    write("suite", {{"k", 1}});
    UserDefaults defaults;
    defaults.addSuiteNamed("suite");
    EXPECT_EQ(defaults.integerForKey("k"), 1);
    write("suite", {{"k", 2}});
    EXPECT_EQ(defaults.integerForKey("k"), 1);
    defaults.addSuiteNamed("suite");
    EXPECT_EQ(defaults.integerForKey("k"), 2);
}

TEST_F(UserDefaultsTest, TakesADamagedFileForEmptyAndLogsEachContentOnce) {
    tests::writeFile(file("suite"), "damaged");
    UserDefaults defaults;
    for (int i = 0; i < 3; ++i) {
        defaults.addSuiteNamed("suite");
        EXPECT_EQ(defaults.objectForKey("k"), std::nullopt);
    }
    EXPECT_EQ(log.size(), 1U);
    tests::writeFile(file("suite"), "damaged otherwise");
    defaults.addSuiteNamed("suite");
    EXPECT_EQ(defaults.objectForKey("k"), std::nullopt);
    EXPECT_EQ(log.size(), 2U);
    tests::writeFile(file("list"), *xmlDataFromPropertyList(Value(Array{1})));
    defaults.addSuiteNamed("list");
    EXPECT_EQ(defaults.objectForKey("k"), std::nullopt);
    EXPECT_EQ(log.size(), 3U);
}

TEST_F(UserDefaultsTest, KeepsADamagedFileAsideWhenItWrites) {
    tests::writeFile(file("org.example.App"), "damaged");
    ASSERT_TRUE(UserDefaults().setObject("k", 1));
    EXPECT_EQ(stored("org.example.App"), Value(Dictionary{{"k", 1}}));
    EXPECT_EQ(tests::readFile(file("org.example.App").string() + ".damaged"), "damaged");
}

TEST_F(UserDefaultsTest, LeavesTheFileWhenAValueCannotBeStored) {
    write("org.example.App", {{"k", 1}});
    UserDefaults defaults;
    EXPECT_FALSE(defaults.setObject("k", Value(Error("domain", 1))));
    EXPECT_EQ(stored("org.example.App"), Value(Dictionary{{"k", 1}}));
    EXPECT_EQ(defaults.integerForKey("k"), 1);
}

TEST_F(UserDefaultsTest, RefusesToWriteOverADirectoryOrThroughALockThatIsALink) {
    std::filesystem::create_directory(file("org.example.App"));
    EXPECT_FALSE(UserDefaults().setObject("k", 1));
    tests::writeFile(scratch / "victim", "mine");
    std::filesystem::create_symlink(scratch / "victim", file("other").string() + ".lock");
    EXPECT_FALSE(UserDefaults("other").setObject("k", 1));
    EXPECT_EQ(tests::readFile(scratch / "victim"), "mine");
}

TEST_F(UserDefaultsTest, CountsWhatCannotBeReadAsEmptyAndRefusesToWriteOverIt) {
    std::filesystem::create_directory(file("directory"));
    ASSERT_EQ(::mkfifo(file("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink(file("loop"), file("loop"));
    for (const auto* domain : {"directory", "pipe", "loop"}) {
        log.clear();
        UserDefaults defaults{std::string(domain)};
        for (int i = 0; i < 3; ++i) {
            defaults.addSuiteNamed("none");
            EXPECT_EQ(defaults.objectForKey("k"), std::nullopt) << domain;
        }
        EXPECT_EQ(log.size(), 1U) << domain;
        EXPECT_FALSE(defaults.setObject("k", 1)) << domain;
        EXPECT_TRUE(std::filesystem::is_directory(file("directory")));
    }
}

TEST_F(UserDefaultsTest, ReadsValuesThatAreNestedOrDamagedWithoutHarm) {
    const std::string deep = "<plist><dict><key>k</key>" + std::string(100'000, ' ') + [] {
        std::string arrays;
        for (int i = 0; i < 200'000; ++i) arrays += "<array>";
        return arrays;
    }();
    std::string cycle = "bplist00\xd1\x01\x00\x51k"s; // a dictionary whose value is itself
    cycle += "\x08\x0b"s + std::string(6, '\0') + "\x01\x01"s + "\0\0\0\0\0\0\0\x02"s + std::string(8, '\0') +
             "\0\0\0\0\0\0\0\x0d"s;
    for (const std::string& content : {deep, cycle, "bplist00"s, ""s, "\xef\xbb\xbf<plist/>"s, "<plist><dict>"s}) {
        log.clear();
        tests::writeFile(file("org.example.App"), content);
        EXPECT_EQ(UserDefaults().objectForKey("k"), std::nullopt);
        EXPECT_EQ(log.size(), 1U) << content.substr(0, 40);
    }
}

// A process that may not write a byte more stands for one with a full disk.
TEST_F(UserDefaultsTest, LeavesTheFileWhenTheDiskIsFull) {
    for (const std::string& before : {*xmlDataFromPropertyList(Value(Dictionary{{"k", 1}})), "damaged"s}) {
        tests::writeFile(file("org.example.App"), before);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit none{8, 8};
            ::setrlimit(RLIMIT_FSIZE, &none);
            UserDefaults defaults;
            const bool refused = !defaults.setObject("other", 2) && !defaults.objectForKey("other");
            ::_exit(refused ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(tests::readFile(file("org.example.App")), before);
        EXPECT_FALSE(std::filesystem::exists(file("org.example.App").string() + ".damaged"));
        EXPECT_FALSE(std::filesystem::exists(file("org.example.App").string() + ".new"));
    }
}

TEST_F(UserDefaultsTest, LosesNoKeyOfTwoProcessesThatWrite) {
    constexpr int kWrites = 40;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    UserDefaults defaults;
    for (int i = 0; i < kWrites; ++i) {
        const std::string key = (child == 0 ? "child " : "parent ") + std::to_string(i);
        if (!defaults.setObject(key, i) && child == 0) ::_exit(1);
    }
    if (child == 0) ::_exit(0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(stored("org.example.App").as<Dictionary>()->size(), 2U * kWrites);
}

TEST_F(UserDefaultsTest, FollowsTheEnvironmentsDirectoryAndIdentifier) {
    write("org.example.App", {{"k", 1}});
    write("org.example.Other", {{"k", 2}});
    UserDefaults& defaults = UserDefaults::standard();
    EXPECT_EQ(defaults.integerForKey("k"), 1);
    environment->bundleIdentifier = "org.example.Other";
    EXPECT_EQ(defaults.integerForKey("k"), 2);
    environment->preferencesDirectory = (scratch / "none").string();
    EXPECT_EQ(defaults.integerForKey("k"), 0);
}
