#include "platform/pasteboard/Pasteboard.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

// Says that it has three types and gives values for two.
class Card : public PasteboardWriting {
  public:
    std::vector<std::string> writableTypes() const override {
        return {"org.example.card", "org.example.none", std::string(kPasteboardTypeString)};
    }
    Value pasteboardPropertyListForType(std::string_view type) const override {
        if (type == "org.example.card") return Data("\x01\x02");
        return type == kPasteboardTypeString ? Value("card") : Value();
    }
};

class Nothing : public PasteboardWriting {
  public:
    std::vector<std::string> writableTypes() const override { return {"org.example.none"}; }
    Value pasteboardPropertyListForType(std::string_view) const override { return {}; }
};

} // namespace

TEST(Pasteboard, OffersTheTypesThatAnObjectGivesValuesFor) {
    Pasteboard pasteboard;
    pasteboard.writeObject(Card());
    pasteboard.writeObject(Nothing());
    EXPECT_EQ(pasteboard.types(), (std::vector<std::string>{"org.example.card", std::string(kPasteboardTypeString)}));
    EXPECT_EQ(pasteboard.items().size(), 1u);
    EXPECT_EQ(pasteboard.dataForType("org.example.card"), Data("\x01\x02"));
    EXPECT_EQ(pasteboard.stringForType(kPasteboardTypeString), u"card");
    EXPECT_EQ(pasteboard.dataForType(kPasteboardTypeString), Data("card"));
    EXPECT_FALSE(pasteboard.dataForType("org.example.none"));
    EXPECT_FALSE(pasteboard.stringForType("org.example.none"));
}

TEST(Pasteboard, TheFirstItemOfATypeWins) {
    Pasteboard pasteboard;
    pasteboard.addItem({{"a", Value("first")}, {"b", Value(Array{Value("x")})}});
    pasteboard.addItem({{"a", Value("second")}, {"c", Value(Data("third"))}});
    EXPECT_EQ(pasteboard.stringForType("a"), u"first");
    EXPECT_EQ(pasteboard.stringForType("c"), u"third");
    EXPECT_FALSE(pasteboard.stringForType("b")) << "an array";
    EXPECT_FALSE(pasteboard.dataForType("b"));
    EXPECT_EQ(pasteboard.types(), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(pasteboard.availableTypeFromArray({"x", "c", "a"}), "c");
    EXPECT_FALSE(pasteboard.availableTypeFromArray({"x"}));
    pasteboard.clearContents();
    EXPECT_TRUE(pasteboard.types().empty());
}
