// Another import's sweep at the worst moments of making an output: the C library's calls between which it may come are
// replaced here by ones that let it.
#include "platform/files/OutputDirectory.h"

#include <cerrno>
#include <functional>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/foundation/URL.h"
#include "tests/support/ScratchDirectory.h"

using namespace platform;

namespace {

// Called, unless empty, when an entry has been made and not been opened yet, and before one is locked.
std::function<void()> afterMaking, beforeLocking;

void let(const std::function<void()>& hook) {
    const int result = errno;
    if (hook) hook();
    errno = result;
}

} // namespace

extern "C" int mkdirat(int directory, const char* name, mode_t mode) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_mkdirat, directory, name, mode));
    if (result == 0) let(afterMaking);
    return result;
}

extern "C" int flock(int descriptor, int operation) noexcept {
    let(beforeLocking);
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

namespace {

class Sweep : public testing::Test {
  protected:
    ~Sweep() override { afterMaking = beforeLocking = nullptr; }

    OutputDirectory opened() const {
        auto directory = OutputDirectory::openURL(URL::fileURLWithPath(scratch_.path().string(), true));
        EXPECT_TRUE(directory);
        return *std::move(directory);
    }

    // Comes so many times, each time with what is then there, and never in its own way.
    void sweepAt(std::function<void()>& moment, int times) {
        moment = [this, &moment, times]() mutable {
            if (times-- <= 0) return;
            const auto hook = std::exchange(moment, nullptr);
            const auto other = std::exchange(&moment == &afterMaking ? beforeLocking : afterMaking, nullptr);
            swept_ += opened().removeLeftovers();
            moment = hook;
            (&moment == &afterMaking ? beforeLocking : afterMaking) = other;
        };
    }

    // What was made is whole and gets its name.
    static void expectToMove(Result<PendingOutput> made, const char* name) {
        ASSERT_TRUE(made) << made.error().description();
        EXPECT_TRUE(made->moveIntoPlace(name));
    }

    tests::ScratchDirectory scratch_;
    std::size_t swept_ = 0;
};

TEST_F(Sweep, BetweenMakingAPackageAndOpeningItCostsNothingButAnotherTry) {
    OutputDirectory directory = opened();
    for (const int times : {1, 5, 99}) {
        swept_ = 0;
        sweepAt(afterMaking, times);
        expectToMove(directory.createPackage(), ("note " + std::to_string(times)).c_str());
        EXPECT_EQ(swept_, static_cast<std::size_t>(times));
    }
}

TEST_F(Sweep, BetweenOpeningAnOutputAndLockingItCostsNothingButAnotherTry) {
    OutputDirectory directory = opened();
    for (const int times : {1, 5}) {
        swept_ = 0;
        sweepAt(beforeLocking, times);
        expectToMove(directory.createPackage(), ("note " + std::to_string(times)).c_str());
        sweepAt(beforeLocking, times);
        expectToMove(directory.createFile(), ("file " + std::to_string(times)).c_str());
        EXPECT_EQ(swept_, static_cast<std::size_t>(2 * times));
    }
}

TEST_F(Sweep, ThatNeverEndsIsAnError) {
    OutputDirectory directory = opened();
    sweepAt(afterMaking, 1'000'000);
    const auto made = directory.createPackage();
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().underlyingError()->code, ENOENT);
    EXPECT_LT(swept_, 1'000U);
}

TEST_F(Sweep, DoesNotTouchAScratchDirectoryThatIsBeingMade) {
    OutputDirectory directory = opened();
    sweepAt(afterMaking, 1);
    const auto one = directory.createScratchDirectory("11111111-2222-3333-4444-555555555555");
    sweepAt(beforeLocking, 1);
    const auto other = directory.createScratchDirectory("21111111-2222-3333-4444-555555555555");
    EXPECT_TRUE(one && other);
    EXPECT_EQ(swept_, 0U);
    EXPECT_TRUE(directory.isReachable("11111111-2222-3333-4444-555555555555"));
    EXPECT_TRUE(directory.isReachable("21111111-2222-3333-4444-555555555555"));
}

} // namespace
