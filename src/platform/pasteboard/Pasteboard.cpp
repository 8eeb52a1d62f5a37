#include "platform/pasteboard/Pasteboard.h"

#include <algorithm>

namespace platform {

void Pasteboard::writeObject(const PasteboardWriting& object) {
    Item item;
    for (std::string& type : object.writableTypes()) {
        Value value = object.pasteboardPropertyListForType(type);
        if (!value.isNull()) item.emplace_back(std::move(type), std::move(value));
    }
    if (!item.empty()) addItem(std::move(item));
}

std::vector<std::string> Pasteboard::types() const {
    std::vector<std::string> types;
    for (const Item& item : items_)
        for (const auto& [type, value] : item)
            if (std::ranges::find(types, type) == types.end()) types.push_back(type);
    return types;
}

std::optional<std::string> Pasteboard::availableTypeFromArray(const std::vector<std::string>& types) const {
    const auto offered =
        std::ranges::find_if(types, [&](const std::string& type) { return propertyListForType(type); });
    return offered == types.end() ? std::nullopt : std::optional(*offered);
}

const Value* Pasteboard::propertyListForType(std::string_view type) const {
    for (const Item& item : items_) {
        const auto found = std::ranges::find(item, type, &Entry::first);
        if (found != item.end()) return &found->second;
    }
    return nullptr;
}

std::optional<Data> Pasteboard::dataForType(std::string_view type) const {
    const Value* value = propertyListForType(type);
    if (!value) return std::nullopt;
    if (const auto* data = value->as<Data>()) return *data;
    if (value->as<std::u16string>()) return Data(value->utf8());
    return std::nullopt;
}

std::optional<std::u16string> Pasteboard::stringForType(std::string_view type) const {
    const Value* value = propertyListForType(type);
    if (!value) return std::nullopt;
    if (const auto* text = value->as<std::u16string>()) return *text;
    if (const auto* data = value->as<Data>()) return utf16FromUTF8(data->bytes());
    return std::nullopt;
}

} // namespace platform
