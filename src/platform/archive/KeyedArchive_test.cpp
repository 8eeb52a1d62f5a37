// Archives written and read back, and read from forms that other writers make.
#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/base/Range.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/UUID.h"
#include "platform/plist/PropertyList.h"

using namespace platform;
using namespace std::string_literals;

namespace {

// A linked structure with a base class, as text attachments are.
struct Item {
    virtual ~Item() = default;
    std::u16string name;
    double weight = 0;
    std::shared_ptr<Item> next;
};
struct Marked : virtual Item {
    bool marked = false;
};
struct Secret {};

template<class T>
Result<ArchivedObject> decodeItem(const ArchivedFields& fields) {
    auto item = std::make_shared<T>();
    item->name = fields.decodeString("name").value_or(std::u16string());
    item->weight = fields.decodeDouble("weight");
    item->next = fields.decodeObject("next").asMutable<Item>();
    if constexpr (std::is_same_v<T, Marked>) item->marked = fields.decodeBool("marked");
    return ArchivedObject(item);
}

void encodeItem(KeyedArchiver& archiver, const Item& item) {
    archiver.encodeObject("name", Value(item.name));
    archiver.encodeDouble("weight", item.weight);
    archiver.encodeObject("next", item.next);
}

void encodeMarked(KeyedArchiver& archiver, const Marked& item) {
    encodeItem(archiver, item);
    archiver.encodeBool("marked", item.marked);
}

class KeyedArchiveTest : public testing::Test {
  protected:
    KeyedArchiveTest() {
        registerFoundationClasses();
        ClassRegistry& registry = ClassRegistry::shared();
        registry.add(
            {"Item", {"Item", "NSObject"}, {}, typeid(Item), true, encoderOf<Item>(encodeItem), decodeItem<Item>});
        registry.add({"Marked",
                      {"Marked", "Item", "NSObject"},
                      {"OldMarked"},
                      typeid(Marked),
                      true,
                      encoderOf<Marked>(encodeMarked),
                      decodeItem<Marked>});
        registry.add({"Secret",
                      {"Secret", "NSObject"},
                      {},
                      typeid(Secret),
                      false,
                      [](KeyedArchiver&, const void*) {},
                      [](const ArchivedFields&) -> Result<ArchivedObject> { return std::make_shared<Secret>(); }});
        registry.addBase<Marked, Item>();
    }

    static Data archived(const ArchivedObject& object) {
        auto archive = KeyedArchiver::archivedData(object, KeyedArchiver::Coding::secure);
        EXPECT_TRUE(archive) << archive.error().description();
        return archive ? *archive : Data();
    }

    static ArchivedObject unarchived(const Data& archive, UnarchiveOptions options = {.requiresSecureCoding = false}) {
        auto object = unarchivedObject(archive.bytes(), options);
        EXPECT_TRUE(object) << object.error().description();
        return object ? *object : ArchivedObject();
    }

    static std::string errorOf(const Value& archive, UnarchiveOptions options = {.requiresSecureCoding = false}) {
        const auto object = unarchivedObject(*binaryDataFromPropertyList(archive), options);
        if (object) return "no error";
        EXPECT_EQ(object.error().code, 4864);
        return object.error().localizedDescription();
    }

    static Value archiveOf(Array objects) {
        return Dictionary{{"$version", 100000},
                          {"$archiver", "NSKeyedArchiver"},
                          {"$top", Dictionary{{"root", UID{1}}}},
                          {"$objects", std::move(objects)}};
    }

    static Value classNamed(const char* name) {
        return Dictionary{{"$classname", name}, {"$classes", Array{Value(name), Value("NSObject")}}};
    }

    static ArchivedObject fromList(const Value& list, UnarchiveOptions options = {.requiresSecureCoding = false}) {
        return unarchived(Data(*binaryDataFromPropertyList(list)), std::move(options));
    }
};

} // namespace

TEST_F(KeyedArchiveTest, NumbersDepthFirstWithTheClassBehindItsFirstObject) {
    const auto second = std::make_shared<Item>();
    second->name = u"second";
    second->weight = 2;
    const auto first = std::make_shared<Item>();
    first->name = u"first";
    first->weight = 1;
    first->next = second;
    const auto list = propertyListFromData(archived(first).bytes());
    ASSERT_TRUE(list);
    const Value expected = archiveOf({
        "$null",
        Dictionary{{"name", UID{2}}, {"weight", 1.0}, {"next", UID{3}}, {"$class", UID{5}}},
        "first",
        Dictionary{{"name", UID{4}}, {"weight", 2.0}, {"next", UID{0}}, {"$class", UID{5}}},
        "second",
        classNamed("Item"),
    });
    EXPECT_EQ(*list, expected);
}

// Keys are known by their addresses: here all have one, as literals whose places meet have nearly.
TEST_F(KeyedArchiveTest, TellsKeysOfOneAddressApart) {
    std::vector<std::string> names{"key", "ke", "k", "$key", "$$", std::string(39, 'x'), std::string(40, 'x')};
    for (int i = 10; i < 40; ++i) names.push_back("key" + std::to_string(i));
    for (int i = 0; i < 3; ++i) names.push_back("$" + std::to_string(i));
    KeyedArchiver archiver(KeyedArchiver::Coding::plain);
    std::array<char, 64> place{};
    Dictionary fields;
    const auto encodeAll = [&] {
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::ranges::copy(names[i], place.begin());
            archiver.encodeInteger({place.data(), names[i].size()}, static_cast<std::int64_t>(i));
            fields[(names[i].starts_with('$') ? "$" : "") + names[i]] = static_cast<std::int64_t>(i);
        }
    };
    encodeAll();
    archiver.encodePlace("object", archiver.addObject<ObjectDictionary>(encodeAll));
    const auto archive = archiver.finish();
    ASSERT_TRUE(archive);
    const Value list = *propertyListFromData(archive->bytes());
    const Dictionary& archived = *list.as<Dictionary>();
    Dictionary top = fields, object = fields;
    top["object"] = UID{1};
    object["$class"] = UID{2};
    EXPECT_EQ(archived.at("$top"), Value(top));
    EXPECT_EQ((*archived.at("$objects").as<Array>())[1], Value(object));
}

TEST_F(KeyedArchiveTest, WritesTheSameObjectOnce) {
    const auto shared = std::make_shared<Item>();
    const Data archive = archived(std::make_shared<ObjectArray>(ObjectArray{shared, shared, Value("a"), Value("a")}));
    const auto array = unarchived(archive).as<ObjectArray>();
    ASSERT_TRUE(array);
    ASSERT_EQ(array->size(), 4U);
    EXPECT_EQ((*array)[0].identity(), (*array)[1].identity());
    EXPECT_EQ((*array)[2].identity(), (*array)[3].identity());
}

TEST_F(KeyedArchiveTest, WritesTheSameListOnce) {
    const auto list = std::make_shared<const Value>(Array{Value("a"), Value(1), Array{Value("a")}});
    const auto equal = std::make_shared<const Value>(*list);
    const auto array =
        unarchived(archived(std::make_shared<ObjectArray>(ObjectArray{list, list, equal}))).as<ObjectArray>();
    ASSERT_TRUE(array);
    ASSERT_EQ(array->size(), 3U);
    EXPECT_EQ((*array)[0].identity(), (*array)[1].identity());
    EXPECT_NE((*array)[0].identity(), (*array)[2].identity());
    for (const ArchivedObject& object : *array) EXPECT_EQ(propertyListFromObject(object), *list);
}

TEST_F(KeyedArchiveTest, TellsTemporariesApart) {
    ObjectArray dates;
    for (int i = 0; i < 100; ++i) dates.emplace_back(Value(Date{static_cast<double>(i)}));
    const auto array = unarchived(archived(std::make_shared<ObjectArray>(dates))).as<ObjectArray>();
    ASSERT_TRUE(array);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(*(*array)[static_cast<std::size_t>(i)].as<Value>(), Value(Date{static_cast<double>(i)}));
}

TEST_F(KeyedArchiveTest, ReadsADerivedObjectAsItsBase) {
    const auto marked = std::make_shared<Marked>();
    marked->name = u"m";
    marked->marked = true;
    const std::shared_ptr<Item> base = marked;
    const ArchivedObject object = unarchived(archived(base));
    ASSERT_TRUE(object.as<Marked>());
    EXPECT_TRUE(object.as<Marked>()->marked);
    ASSERT_TRUE(object.as<Item>());
    EXPECT_EQ(object.as<Item>()->name, u"m");
    EXPECT_EQ(object.as<URL>(), nullptr);
    EXPECT_EQ(unarchived(archived(std::make_shared<Item>())).as<Marked>(), nullptr);
}

TEST_F(KeyedArchiveTest, BringsEveryFoundationValueBack) {
    const std::u16string lone = u"a\xD800z";
    const Value kValues[] = {Value("text"),     Value(lone),
                             Value(""),         Value(true),
                             Value(false),      Value(0),
                             Value(-1),         Value(std::int64_t{1} << 40),
                             Value(0.5),        Value(Data("\0x"s)),
                             Value(Date{1.25}), Value()};
    for (const Value& value : kValues) {
        const auto read =
            unarchived(archived(value), {.requiresSecureCoding = true,
                                         .allowedClasses = {"NSString", "NSNumber", "NSData", "NSDate", "NSNull"}});
        ASSERT_TRUE(read.as<Value>());
        EXPECT_EQ(*read.as<Value>(), value);
    }
    const auto url = std::make_shared<URL>(*URL::fromString("https://example.org/a?b=c"));
    EXPECT_EQ(*unarchived(archived(url)).as<URL>(), *url);
    const auto uuid = std::make_shared<UUID>(UUID{{1, 2, 3, 255}});
    EXPECT_EQ(*unarchived(archived(uuid)).as<UUID>(), *uuid);
    const auto range = std::make_shared<Range>(Range{12, 3});
    EXPECT_EQ(*unarchived(archived(range)).as<Range>(), *range);
    const auto nowhere = std::make_shared<Range>(Range{kNotFound, 0});
    EXPECT_EQ(*unarchived(archived(nowhere)).as<Range>(), *nowhere);
    EXPECT_TRUE(unarchived(archived(ArchivedObject())).isNull());
}

TEST_F(KeyedArchiveTest, BringsPropertyListsBack) {
    const Value list = Dictionary{{"red", 0.5},
                                  {"$odd", Array{1, "two", Dictionary{}, Array{}}},
                                  {"nested", Dictionary{{"k", Data("d"s)}, {"t", true}}}};
    const auto object = unarchived(archived(list));
    EXPECT_EQ(propertyListFromObject(object), list);
    EXPECT_EQ(propertyListFromObject(object, 5), std::nullopt);
    EXPECT_EQ(propertyListFromObject(std::make_shared<Item>()), std::nullopt);
}

TEST_F(KeyedArchiveTest, WritesAgainTheBytesThatItRead) {
    const auto first = std::make_shared<Marked>();
    first->next = std::make_shared<Item>();
    first->next->name = u"é";
    ObjectDictionary dictionary{{Value("a"), first},
                                {Value("b"), std::make_shared<ObjectSet>(ObjectSet{{Value(3), {}}})}};
    const Data archive = archived(std::make_shared<ObjectDictionary>(dictionary));
    EXPECT_EQ(archived(unarchived(archive)).bytes(), archive.bytes());
}

TEST_F(KeyedArchiveTest, ReadsTheFormsOfMutableClasses) {
    EXPECT_EQ(*fromList(archiveOf({"$null", Dictionary{{"NS.string", "m"}, {"$class", UID{2}}},
                                   classNamed("NSMutableString")}))
                   .as<Value>(),
              Value("m"));
    EXPECT_EQ(*fromList(archiveOf({"$null", Dictionary{{"NS.data", Data("m"s)}, {"$class", UID{2}}},
                                   classNamed("NSMutableData")}))
                   .as<Value>(),
              Value(Data("m"s)));
    EXPECT_EQ(fromList(archiveOf({"$null", Dictionary{{"NS.objects", Array{UID{3}}}, {"$class", UID{2}}},
                                  classNamed("NSMutableArray"), 7}))
                  .as<ObjectArray>()
                  ->size(),
              1U);
    EXPECT_EQ(
        fromList(archiveOf({"$null",
                            Dictionary{{"NS.keys", Array{UID{3}}}, {"NS.objects", Array{UID{3}}}, {"$class", UID{2}}},
                            classNamed("NSMutableDictionary"), "k"}))
            .as<ObjectDictionary>()
            ->size(),
        1U);
    EXPECT_TRUE(fromList(archiveOf({"$null", Dictionary{{"$class", UID{2}}}, classNamed("OldMarked")})).as<Marked>());
}

TEST_F(KeyedArchiveTest, ResolvesAURLAgainstItsBase) {
    const auto url =
        fromList(archiveOf({"$null", Dictionary{{"NS.base", UID{3}}, {"NS.relative", UID{5}}, {"$class", UID{2}}},
                            classNamed("NSURL"),
                            Dictionary{{"NS.base", UID{0}}, {"NS.relative", UID{4}}, {"$class", UID{2}}},
                            "https://example.org/a/b", "c"}))
            .as<URL>();
    ASSERT_TRUE(url);
    EXPECT_EQ(url->absoluteString(), "https://example.org/a/c");
}

TEST_F(KeyedArchiveTest, ReadsTheXMLForm) {
    const auto item = std::make_shared<Item>();
    item->name = u"x";
    const auto xml = xmlDataFromPropertyList(*propertyListFromData(archived(item).bytes()));
    ASSERT_TRUE(xml);
    EXPECT_EQ(unarchived(Data(*xml)).as<Item>()->name, u"x");
}

TEST_F(KeyedArchiveTest, ConvertsNumbersAsTheyAreAskedFor) {
    const auto item = fromList(archiveOf({"$null", Dictionary{{"weight", 3}, {"marked", 1}, {"$class", UID{2}}},
                                          classNamed("Marked")}))
                          .as<Marked>();
    ASSERT_TRUE(item);
    EXPECT_EQ(item->weight, 3.0);
    EXPECT_TRUE(item->marked);
    EXPECT_EQ(item->name, u"");
}

TEST_F(KeyedArchiveTest, PassesOverKeysThatNobodyAsksFor) {
    const auto item =
        fromList(
            archiveOf({"$null", Dictionary{{"extra", UID{3}}, {"lost", UID{99}}, {"weight", 1.5}, {"$class", UID{2}}},
                       classNamed("Item"), Dictionary{{"$class", UID{4}}}, classNamed("Forbidden")}),
            {.requiresSecureCoding = true, .allowedClasses = {"Item"}})
            .as<Item>();
    ASSERT_TRUE(item);
    EXPECT_EQ(item->weight, 1.5);
}

TEST_F(KeyedArchiveTest, ReadsUnknownClassesAsNilWithoutSecureCodingOnly) {
    const Value list = archiveOf(
        {"$null", Dictionary{{"next", UID{3}}, {"$class", UID{2}}}, classNamed("Item"), Dictionary{{"$class", UID{4}}},
         Dictionary{{"$classname", "Unknown"}, {"$classes", Array{"Unknown", "Item", "NSObject"}}}});
    EXPECT_EQ(fromList(list).as<Item>()->next, nullptr);
    EXPECT_EQ(errorOf(list, {.requiresSecureCoding = true, .allowedClasses = {"Item", "Unknown"}}),
              "Object 3 of the archive is of the class “Unknown”, which is not allowed.");
    EXPECT_EQ(errorOf(archiveOf({"$null", Dictionary{{"$class", UID{2}}}, classNamed("Unknown")})),
              "The archive's root is of an unknown class.");
}

TEST_F(KeyedArchiveTest, HoldsEveryObjectAgainstTheAllowedClassesUnderSecureCoding) {
    const auto marked = std::make_shared<Marked>();
    marked->next = std::make_shared<Marked>();
    const Data archive = archived(marked);
    EXPECT_TRUE(unarchivedObject(archive.bytes(), {.requiresSecureCoding = true, .allowedClasses = {"Item"}}));
    EXPECT_FALSE(unarchivedObject(archive.bytes(), {.requiresSecureCoding = true, .allowedClasses = {"NSArray"}}));
    EXPECT_FALSE(unarchivedObject(archive.bytes(), {}));
    const Data array = archived(std::make_shared<ObjectArray>(ObjectArray{marked}));
    EXPECT_FALSE(unarchivedObject(array.bytes(), {.requiresSecureCoding = true, .allowedClasses = {"Item"}}));
    EXPECT_TRUE(unarchivedObject(array.bytes(), {.requiresSecureCoding = true, .allowedClasses = {"Item", "NSArray"}}));
}

TEST_F(KeyedArchiveTest, ServesNobodyWhoAsksForAClassWithABareValue) {
    const auto allows = [](const Value& root, std::vector<std::string> classes) {
        return unarchivedObject(archived(root).bytes(),
                                {.requiresSecureCoding = true, .allowedClasses = std::move(classes)})
            .has_value();
    };
    for (const Value& root : {Value("text"), Value(7), Value(Data("d"s))}) {
        EXPECT_FALSE(allows(root, {"Item"}));
        EXPECT_TRUE(allows(root, {"Item", "NSString", "NSValue", "NSData"}));
    }
}

TEST_F(KeyedArchiveTest, TakesTheClassThatTheArchiveProposesForAnUnknownOne) {
    const auto described = [](Value hints) {
        return Dictionary{{"$classname", "FutureItem"},
                          {"$classes", Array{"FutureItem", "Item", "NSObject"}},
                          {"$classhints", std::move(hints)}};
    };
    const auto list = [&](Value hints) {
        return archiveOf({"$null", Dictionary{{"weight", 2}, {"$class", UID{2}}}, described(std::move(hints))});
    };
    const UnarchiveOptions secure{.requiresSecureCoding = true, .allowedClasses = {"Item"}};
    EXPECT_EQ(fromList(list(Array{"Unknown", "Item"}), secure).as<Item>()->weight, 2);
    EXPECT_NE(errorOf(list(Array{"Unknown", "Secret"}), secure), "no error");
    EXPECT_EQ(errorOf(list("Item")), "The archive's root is of an unknown class.");
}

TEST_F(KeyedArchiveTest, ReadsSenselessContentsAsNilWithoutSecureCodingOnly) {
    const Value list = archiveOf({"$null", Dictionary{{"next", UID{3}}, {"weight", 2}, {"$class", UID{2}}},
                                  classNamed("Item"), Dictionary{{"$class", UID{4}}}, classNamed("NSURL")});
    EXPECT_EQ(fromList(list).as<Item>()->weight, 2);
    EXPECT_EQ(errorOf(list, {.requiresSecureCoding = true, .allowedClasses = {"Item", "NSURL"}}),
              "Object 3 of the archive (NSURL) cannot be decoded: a URL holds no address.");
}

TEST_F(KeyedArchiveTest, HoldsOnlyTheRootAgainstTheAllowedClassesOtherwise) {
    const Data array = archived(std::make_shared<ObjectArray>(ObjectArray{std::make_shared<Item>()}));
    EXPECT_TRUE(unarchivedObject(array.bytes(), {.requiresSecureCoding = false, .allowedClasses = {"NSArray"}}));
    EXPECT_FALSE(unarchivedObject(array.bytes(), {.requiresSecureCoding = false, .allowedClasses = {"Item"}}));
}

TEST_F(KeyedArchiveTest, KeepsInsecureClassesOutOfSecureArchives) {
    const auto secret = std::make_shared<Secret>();
    const auto refused = KeyedArchiver::archivedData(secret, KeyedArchiver::Coding::secure);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, 4866);
    const auto plain = KeyedArchiver::archivedData(secret, KeyedArchiver::Coding::plain);
    ASSERT_TRUE(plain);
    EXPECT_TRUE(unarchived(*plain).as<Secret>());
    EXPECT_FALSE(unarchivedObject(plain->bytes(), {.requiresSecureCoding = true, .allowedClasses = {"Secret"}}));
    struct Unregistered {};
    EXPECT_FALSE(KeyedArchiver::archivedData(std::make_shared<Unregistered>(), KeyedArchiver::Coding::plain));
}

TEST_F(KeyedArchiveTest, ReadsACycleAsNil) {
    const auto item = fromList(archiveOf({"$null", Dictionary{{"next", UID{3}}, {"$class", UID{2}}}, classNamed("Item"),
                                          Dictionary{{"next", UID{1}}, {"weight", 4}, {"$class", UID{2}}}}))
                          .as<Item>();
    ASSERT_TRUE(item && item->next);
    EXPECT_EQ(item->next->weight, 4);
    EXPECT_EQ(item->next->next, nullptr);
}

TEST_F(KeyedArchiveTest, WritesACycleOnce) {
    const auto item = std::make_shared<Item>();
    item->next = item;
    const Data archive = archived(item);
    EXPECT_EQ(unarchived(archive).as<Item>()->next, nullptr);
    item->next.reset();
}

TEST_F(KeyedArchiveTest, BoundsDepthAndNumberOfObjects) {
    Array objects{"$null"};
    for (std::uint64_t i = 1; i <= 2000; ++i)
        objects.push_back(Dictionary{{"next", UID{i < 2000 ? i + 1 : 0}}, {"$class", UID{2001}}});
    objects.push_back(classNamed("Item"));
    EXPECT_EQ(errorOf(archiveOf(objects)), "The archive's objects are nested deeper than 512.");
    EXPECT_TRUE(fromList(archiveOf(objects), {.requiresSecureCoding = false, .maximumDepth = 2001}).as<Item>());
    EXPECT_EQ(errorOf(archiveOf(objects), {.requiresSecureCoding = false, .maximumObjects = 2001}),
              "The archive has more than 2001 objects.");
}

TEST_F(KeyedArchiveTest, SaysWhatIsWrongWithAnArchive) {
    const Value item = Dictionary{{"name", UID{9}}, {"$class", UID{2}}};
    const struct {
        Value archive;
        const char* error;
    } kCases[] = {
        {Value(Array{}), "The property list is no keyed archive."},
        {Dictionary{{"$objects", Array{}}}, "The property list is no keyed archive."},
        {Dictionary{{"$archiver", "Other"}, {"$top", Dictionary{}}, {"$objects", Array{}}},
         "The archive is of the kind “Other”."},
        {Dictionary{{"$top", Dictionary{}}, {"$objects", Array{}}}, "The archive has no object under “root”."},
        {archiveOf({"$null"}), "The archive has no object 1."},
        {archiveOf({"$null", Dictionary{{"a", 1}}}), "Object 1 of the archive has no class."},
        {archiveOf({"$null", Array{}}), "Object 1 of the archive has no class."},
        {archiveOf({"$null", Dictionary{{"$class", UID{77}}}}), "Object 1 of the archive has no class."},
        {archiveOf({"$null", Dictionary{{"$class", UID{1}}}}), "Object 1 of the archive has no class."},
        {archiveOf({"$null", item, classNamed("Item")}), "The archive has no object 9."},
        {archiveOf({"$null", Dictionary{{"NS.uuidbytes", Data("short"s)}, {"$class", UID{2}}}, classNamed("NSUUID")}),
         "Object 1 of the archive (NSUUID) cannot be decoded: a UUID has not 16 bytes."},
        {archiveOf({"$null", Dictionary{{"NS.keys", Array{UID{0}}}, {"$class", UID{2}}}, classNamed("NSDictionary")}),
         "Object 1 of the archive (NSDictionary) cannot be decoded: a dictionary has not as many keys as objects."},
    };
    for (const auto& [archive, error] : kCases) EXPECT_EQ(errorOf(archive), error);
    EXPECT_FALSE(unarchivedObject("no property list", {}));
}
