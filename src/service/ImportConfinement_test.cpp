#include "service/ImportConfinement.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"

namespace quillet {
namespace {

using platform::AllowedPath;
using platform::PathAccess;

class ImportConfinement : public testing::Test {
  protected:
    ~ImportConfinement() override {
        platform::Environment::current() = environment_;
        set("HOME", home_ ? home_->c_str() : nullptr);
        set("XDG_DATA_HOME", dataHome_ ? dataHome_->c_str() : nullptr);
    }

    static std::vector<AllowedPath> pathsWith(const char* home, const char* dataHome) {
        set("HOME", home);
        set("XDG_DATA_HOME", dataHome);
        return allowedPathsForImport(std::array<std::string, 2>{"/in/a.enex", "/in/b.enex"}, "/out");
    }

  private:
    static void set(const char* name, const char* value) { value ? ::setenv(name, value, 1) : ::unsetenv(name); }
    static std::optional<std::string> variable(const char* name) {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    }

    platform::Environment environment_ = platform::Environment::current();
    std::optional<std::string> home_ = variable("HOME"), dataHome_ = variable("XDG_DATA_HOME");
};

const AllowedPath* rowFor(const std::vector<AllowedPath>& paths, std::string_view path) {
    for (const AllowedPath& row : paths)
        if (row.path == path) return &row;
    return nullptr;
}

TEST_F(ImportConfinement, WritesToTheDestinationAlone) {
    const auto paths = pathsWith("/home/me", nullptr);
    ASSERT_NE(rowFor(paths, "/out"), nullptr);
    for (const AllowedPath& row : paths) EXPECT_EQ(row.access == PathAccess::writeTree, row.path == "/out") << row.path;
    for (const char* file : {"/in/a.enex", "/in/b.enex"}) {
        ASSERT_NE(rowFor(paths, file), nullptr);
        EXPECT_EQ(rowFor(paths, file)->access, PathAccess::readFile);
    }
}

TEST_F(ImportConfinement, ReadsThePreferencesButNotTheirDirectory) {
    platform::Environment::current().preferencesDirectory = "/home/me/.config";
    const auto paths = pathsWith("/home/me", nullptr);
    for (const char* file : {"/home/me/.config/Q7X2M9K4T1.com.tesseral.Quillet.plist",
                             "/home/me/.config/com.tesseral.Quillet.ENEXImport.plist"}) {
        ASSERT_NE(rowFor(paths, file), nullptr) << file;
        EXPECT_EQ(rowFor(paths, file)->access, PathAccess::readFile);
    }
    EXPECT_EQ(rowFor(paths, "/home/me/.config"), nullptr);
    EXPECT_EQ(rowFor(paths, "/home/me"), nullptr);
}

TEST_F(ImportConfinement, HasAReasonForEachPath) {
    for (const AllowedPath& row : pathsWith("/home/me", "/home/me/data")) EXPECT_FALSE(row.reason.empty()) << row.path;
}

TEST_F(ImportConfinement, FindsFontsWhereTheEnvironmentSays) {
    EXPECT_NE(rowFor(pathsWith("/home/me", nullptr), "/home/me/.local/share/fonts"), nullptr);
    EXPECT_NE(rowFor(pathsWith("/home/me", "/home/me/data"), "/home/me/data/fonts"), nullptr);
    EXPECT_NE(rowFor(pathsWith("/home/me", ""), "/home/me/.local/share/fonts"), nullptr);
    // A name that is no absolute path names nothing.
    EXPECT_NE(rowFor(pathsWith("/home/me", "../.."), "/home/me/.local/share/fonts"), nullptr);
    for (const char* home : {static_cast<const char*>(nullptr), "", "relative"})
        for (const AllowedPath& row : pathsWith(home, "also relative"))
            EXPECT_TRUE(row.path.starts_with('/')) << row.path;
}

// A process whose kernel has no Landlock; 1 when its import has logged that, and that alone.
int logsLessConfinement() {
    std::array<sock_filter, 4> program{{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_landlock_create_ruleset, 0, 1),
                                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
                                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
    std::vector<std::string> entries;
    platform::setSystemLogSink([&](std::string_view entry) { entries.emplace_back(entry); });
    const bool confined = confineForImport({}, "/nowhere").has_value();
    return confined &&
           entries == std::vector<std::string>{"This kernel confines the import less than it should: partial"};
}

TEST_F(ImportConfinement, LogsWhenTheKernelGivesLess) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(logsLessConfinement());
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
}

} // namespace
} // namespace quillet
