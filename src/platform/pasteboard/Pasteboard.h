// Counterpart of NSPasteboard: values of several types for one thing, to be taken in the type that the taker prefers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Value.h"

namespace platform {

inline constexpr std::string_view kPasteboardTypeString = "public.utf8-plain-text";
inline constexpr std::string_view kPasteboardTypeURL = "public.url";
inline constexpr std::string_view kPasteboardTypeRTF = "public.rtf";
inline constexpr std::string_view kPasteboardTypeRTFD = "com.apple.flat-rtfd";
inline constexpr std::string_view kPasteboardTypeHTML = "public.html";

// Counterpart of NSPasteboardWriting: an object that can be put on a pasteboard.
class PasteboardWriting {
  public:
    virtual ~PasteboardWriting() = default;
    // Most telling first.
    virtual std::vector<std::string> writableTypes() const = 0;
    // Data, a string, an array or a dictionary; null for a type that is not written.
    virtual Value pasteboardPropertyListForType(std::string_view type) const = 0;
};

// A pasteboard of one's own: whoever holds it decides where its contents go.
class Pasteboard {
  public:
    // A type and its value.
    using Entry = std::pair<std::string, Value>;
    // The forms of one thing, in order of preference.
    using Item = std::vector<Entry>;

    void clearContents() { items_.clear(); }
    // Adds one item with every type that the object gives a value for.
    void writeObject(const PasteboardWriting& object);
    void addItem(Item item) { items_.push_back(std::move(item)); }
    const std::vector<Item>& items() const { return items_; }

    // Every type once, in the order in which the items offer them.
    std::vector<std::string> types() const;
    // The first of the types that is offered.
    std::optional<std::string> availableTypeFromArray(const std::vector<std::string>& types) const;

    // The first item's value of that type; null when none. data and string convert text in UTF-8.
    const Value* propertyListForType(std::string_view type) const;
    std::optional<Data> dataForType(std::string_view type) const;
    std::optional<std::u16string> stringForType(std::string_view type) const;

  private:
    std::vector<Item> items_;
};

} // namespace platform
