#include "platform/plist/PropertyList.h"

#include <optional>
#include <vector>

#include <fmt/format.h>

#include "platform/plist/BinaryPropertyListReader.h"
#include "platform/plist/BinaryPropertyListWriter.h"
#include "platform/plist/PropertyListLimits.h"
#include "platform/plist/PropertyListWalk.h"
#include "platform/plist/XMLPropertyListReader.h"

namespace platform {

namespace {

// Gives each value its object: a container before its contents, a dictionary's keys before its values.
class BinaryVisitor {
  public:
    using Object = BinaryPropertyListWriter::Reference;

    Result<> scalar(const Value& value) {
        add(append(value));
        return {};
    }

    void openArray(const Array& array) { open(false, array.size()); }

    void openDictionary(const Dictionary& dictionary) {
        open(true, dictionary.size());
        std::vector<Object>& keys = stack_.back().keys;
        keys.reserve(dictionary.size());
        for (const auto& [key, value] : dictionary) keys.push_back(writer_.string(key));
    }

    Result<> key(const std::string&) { return {}; }

    void closeContainer() {
        const Frame frame = std::move(stack_.back());
        stack_.pop_back();
        if (frame.isDictionary)
            writer_.fillDictionary(frame.object, frame.keys, frame.values);
        else
            writer_.fillArray(frame.object, frame.values);
    }

    std::string finish() && { return writer_.finish(0); }

  private:
    struct Frame {
        Object object = 0;
        bool isDictionary = false;
        std::vector<Object> keys, values;
    };

    Object append(const Value& value) {
        if (const auto* boolean = value.as<bool>()) return writer_.boolean(*boolean);
        if (const auto* integer = value.as<std::int64_t>()) return writer_.integer(*integer);
        if (const auto* real = value.as<double>()) return writer_.real(*real);
        if (const auto* text = value.as<std::u16string>()) return writer_.string(*text);
        if (const auto* data = value.as<Data>()) return writer_.data(data->bytes());
        if (const auto* date = value.as<Date>()) return writer_.date(*date);
        return writer_.uid(value.as<UID>()->value);
    }

    void add(Object object) {
        if (!stack_.empty()) stack_.back().values.push_back(object);
    }

    void open(bool isDictionary, std::size_t size) {
        const Object object = writer_.reserve();
        add(object);
        Frame& frame = stack_.emplace_back();
        frame.object = object;
        frame.isDictionary = isDictionary;
        frame.values.reserve(size);
    }

    BinaryPropertyListWriter writer_;
    std::vector<Frame> stack_;
};

} // namespace

Result<Value> propertyListFromData(std::string_view bytes) {
    if (bytes.size() > kMaximumPropertyListSize)
        return corruptPropertyList(fmt::format("Property list: {} bytes are too many.", bytes.size()));
    return isBinaryPropertyList(bytes) ? valueFromBinaryPropertyList(bytes) : valueFromXMLPropertyList(bytes);
}

Result<std::string> binaryDataFromPropertyList(const Value& value) {
    BinaryVisitor visitor;
    TRY(PropertyListWalk().run(value, visitor));
    return std::move(visitor).finish();
}

} // namespace platform
