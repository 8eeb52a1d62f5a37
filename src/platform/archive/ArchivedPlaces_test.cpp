// What is written by place is what the same objects give when they are encoded one by one.
#include <gtest/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/UUID.h"

using namespace platform;

namespace {

struct Unregistered {};

TEST(ArchivedPlaces, AnArrayOfPlacesIsTheArchiveOfAnArrayOfTheObjects) {
    registerFoundationClasses();
    const auto url = std::make_shared<const URL>(*URL::fromString("https://example.com/"));
    const ObjectArray objects{
        url, Value(std::u16string(u"a text")), url, Value(std::u16string(u"a text")), ArchivedObject(), Value(2.5)};

    KeyedArchiver one(KeyedArchiver::Coding::plain), other(KeyedArchiver::Coding::plain);
    one.encodeObject("objects", std::make_shared<const ObjectArray>(objects));
    const auto placeOf = [&](const ArchivedObject& object) {
        const auto value = object.as<Value>();
        const auto* const text = value ? value->as<std::u16string>() : nullptr;
        return text ? other.placeOfString(*text) : other.placeOf(object);
    };
    other.encodeArrayOfPlaces("objects", objects | std::views::transform(placeOf));
    EXPECT_EQ(one.finish()->bytes(), other.finish()->bytes());
}

TEST(ArchivedPlaces, AnObjectThatIsNotSharedIsArchivedLikeOneThatIs) {
    registerFoundationClasses();
    const URL url = *URL::fromString("https://example.com/");
    const std::vector<Value> values{Value(Date{1}), Value(), Value(Array{Value(1), Value(Date{2})}), Value(2.5)};

    KeyedArchiver one(KeyedArchiver::Coding::plain), other(KeyedArchiver::Coding::plain);
    one.encodeObject("url", std::make_shared<const URL>(url));
    other.encodePlace("url", other.placeOfNew(url));
    for (const Value& value : values) {
        one.encodeObject("value", ArchivedObject(value));
        other.encodePlace("value", other.placeOf(value));
    }
    EXPECT_EQ(one.finish()->bytes(), other.finish()->bytes());
}

TEST(ArchivedPlaces, ANewObjectIsAnotherEachTime) {
    registerFoundationClasses();
    KeyedArchiver archiver(KeyedArchiver::Coding::plain);
    const UUID uuid{};
    EXPECT_NE(archiver.placeOfNew(uuid), archiver.placeOfNew(uuid));
}

TEST(ArchivedPlaces, AnObjectOfARefusedClassMakesTheArchiveFail) {
    KeyedArchiver archiver(KeyedArchiver::Coding::plain);
    bool encodesFields = false;
    EXPECT_EQ(archiver.addObject<Unregistered>([&] { encodesFields = true; }), 0U);
    EXPECT_FALSE(encodesFields);
    EXPECT_FALSE(archiver.finish().has_value());
}

} // namespace
