// Imports through a hostile worker: whatever it tries is refused, and whatever it does the caller gets a reply.
#include <array>
#include <cerrno>
#include <filesystem>
#include <future>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/ipc/Confinement.h"
#include "service/ConfinedParseOperation.h"
#include "service/Quillet_ENEX_Import.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

namespace fs = std::filesystem;
using platform::Array;
using platform::Dictionary;
using platform::URL;
using platform::Value;

class HostileWorker : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directory(inside_);
        fs::create_directory(outside_);
        tests::writeFile(secret_, "secret");
        tests::writeFile(scratch_ / "export.enex", "<en-export/>");
        fs::create_symlink(secret_, inside_ / "link");
    }

    Dictionary importWith(const std::string& attack, std::chrono::milliseconds patience = std::chrono::minutes(1)) {
        const auto importer = Quillet_ENEX_Import::create([&](const URL& file, const URL& directory) {
            return std::make_shared<ConfinedParseOperation>(file, directory,
                                                            WorkerProgram{QUILLET_HOSTILE_WORKER, {attack}, patience});
        });
        std::promise<Dictionary> reply;
        importer->importENEXFile(URL::fileURLWithPath(std::string(scratch_ / "export.enex")), {},
                                 URL::fileURLWithPath(std::string(inside_), true),
                                 [&](Dictionary answer) { reply.set_value(std::move(answer)); });
        return reply.get_future().get();
    }

    std::string log() const { return tests::readFile(inside_ / "export.log"); }

    tests::ScratchDirectory scratch_;
    const fs::path inside_ = scratch_ / "inside";
    const fs::path outside_ = scratch_ / "outside";
    const fs::path secret_ = outside_ / "secret";
};

struct Attack {
    const char* name;
    int refusal;
};

constexpr std::array kRefused{
    Attack{"read outside", EACCES},
    Attack{"read a system file", EACCES},
    Attack{"list outside", EACCES},
    Attack{"write outside", EACCES},
    Attack{"make outside", EACCES},
    Attack{"move out", EACCES},
    Attack{"read through a planted link", EACCES},
    Attack{"write through a planted link", EACCES},
    Attack{"plant a link", EACCES},
    Attack{"start a program", EPERM},
    Attack{"start a process", EPERM},
    Attack{"connect by TCP", EPERM},
    Attack{"connect by UDP", EPERM},
    Attack{"connect to the bus", EPERM},
    Attack{"trace", EPERM},
    Attack{"kill the service", EPERM},
    Attack{"chmod outside", EPERM},
    Attack{"setxattr outside", EPERM},
    Attack{"utime outside", EPERM},
#if !defined(__SANITIZE_ADDRESS__)
    Attack{"fill memory", ENOMEM},
#endif
};

TEST_F(HostileWorker, IsRefusedEveryAttack) {
    if (platform::availableConfinement() != platform::Confinement::full)
        GTEST_SKIP() << "this kernel confines " << confinementName(platform::availableConfinement());
    for (const Attack& attack : kRefused) {
        SCOPED_TRACE(attack.name);
        const Dictionary reply = importWith(attack.name);
        ASSERT_EQ(reply.count("Items"), 1U);
        EXPECT_EQ(*reply.at("Items").as<Array>(), Array());
        EXPECT_EQ(*reply.at("Error Notes").as<Array>(), Array{Value(attack.name)});
        EXPECT_NE(log().find("(NSPOSIXErrorDomain " + std::to_string(attack.refusal) + ")"), std::string::npos)
            << log();
    }
    EXPECT_EQ(tests::readFile(secret_), "secret");
    EXPECT_EQ(std::distance(fs::directory_iterator(outside_), fs::directory_iterator()), 1);
    struct stat status{};
    ASSERT_EQ(::stat(secret_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & S_IWOTH, 0U);
}

void expectDeath(const Dictionary& reply, const std::string& logFile) {
    const platform::Error* error = reply.count("Error") == 1 ? reply.at("Error").asError() : nullptr;
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain, "NSCocoaErrorDomain");
    EXPECT_EQ(error->code, 4097);
    EXPECT_EQ(reply.at("Log File"), Value(logFile));
    EXPECT_EQ(reply.count("Items"), 0U);
}

TEST_F(HostileWorker, ThatDiesStallsOrTalksNonsenseGivesAnError) {
    const std::string logFile = URL::fileURLWithPath(std::string(inside_ / "export.log")).absoluteString();
    expectDeath(importWith("crash"), logFile);
    EXPECT_NE(log().find("Finish parsing ENEX file with error: The import process ended before the import: signal 6"),
              std::string::npos)
        << log();
    expectDeath(importWith("leave"), logFile);
    expectDeath(importWith("talk nonsense"), logFile);
    expectDeath(importWith("stall", std::chrono::milliseconds(200)), logFile);
}

TEST_F(HostileWorker, ThatCannotBeStartedGivesAnError) {
    const auto importer = Quillet_ENEX_Import::create([](const URL& file, const URL& directory) {
        return std::make_shared<ConfinedParseOperation>(file, directory, WorkerProgram{"/no/such/program", {}});
    });
    std::promise<Dictionary> reply;
    importer->importENEXFile(URL::fileURLWithPath(std::string(scratch_ / "export.enex")), {},
                             URL::fileURLWithPath(std::string(inside_), true),
                             [&](Dictionary answer) { reply.set_value(std::move(answer)); });
    expectDeath(reply.get_future().get(), URL::fileURLWithPath(std::string(inside_ / "export.log")).absoluteString());
}

} // namespace
} // namespace quillet
