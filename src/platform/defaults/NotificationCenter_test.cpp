#include "platform/defaults/NotificationCenter.h"

#include <optional>

#include <gtest/gtest.h>

using platform::NotificationCenter;

TEST(NotificationCenter, CallsTheObserversOfANameInOrder) {
    NotificationCenter center;
    std::string calls;
    const auto a = center.addObserver("changed", [&] { calls += 'a'; });
    const auto b = center.addObserver("other", [&] { calls += 'b'; });
    const auto c = center.addObserver("changed", [&] { calls += 'c'; });
    center.post("changed");
    center.post("nobody listens");
    EXPECT_EQ(calls, "ac");
}

TEST(NotificationCenter, StopsCallingWhenASubscriptionEnds) {
    NotificationCenter center;
    int calls = 0;
    {
        const auto subscription = center.addObserver("n", [&] { ++calls; });
        center.post("n");
    }
    center.post("n");
    EXPECT_EQ(calls, 1);
    auto moved = center.addObserver("n", [&] { ++calls; });
    auto kept = std::move(moved);
    center.post("n");
    kept = center.addObserver("n", [&] { calls += 10; });
    center.post("n");
    EXPECT_EQ(calls, 12);
}

TEST(NotificationCenter, LetsObserversEndAndAddAndPostDuringAPost) {
    NotificationCenter center;
    std::string calls;
    NotificationCenter::Subscription second, added;
    const auto first = center.addObserver("n", [&] {
        calls += '1';
        second.end();
        added = center.addObserver("n", [&] { calls += '3'; });
        center.post("inner");
    });
    second = center.addObserver("n", [&] { calls += '2'; });
    const auto inner = center.addObserver("inner", [&] { calls += 'i'; });
    center.post("n");
    EXPECT_EQ(calls, "1i");
}

TEST(NotificationCenter, SurvivesItsCentre) {
    std::optional<NotificationCenter> center(std::in_place);
    const auto subscription = center->addObserver("n", [] {});
    center.reset();
}
