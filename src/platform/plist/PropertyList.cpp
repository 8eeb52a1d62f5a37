#include "platform/plist/PropertyList.h"

#include <optional>
#include <span>
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

    BinaryVisitor() {
        stack_.reserve(kUsualDepth);
        references_.reserve(kUsualReferences);
    }

    Result<> scalar(const Value& value) {
        references_.push_back(append(value));
        return {};
    }

    void openArray(const Array&) { open(false); }

    void openDictionary(const Dictionary& dictionary) {
        open(true);
        for (const auto& [key, value] : dictionary) references_.push_back(writer_.string(key));
    }

    Result<> key(const std::string&) { return {}; }

    void closeContainer() {
        const Frame frame = stack_.back();
        stack_.pop_back();
        const auto contents = std::span<const Object>(references_).subspan(frame.first);
        if (frame.isDictionary)
            writer_.fillDictionary(frame.object, contents.first(contents.size() / 2),
                                   contents.last(contents.size() / 2));
        else
            writer_.fillArray(frame.object, contents);
        references_.resize(frame.first);
    }

    std::string finish() && { return writer_.finish(0); }

  private:
    static constexpr std::size_t kUsualDepth = 4, kUsualReferences = 32;

    struct Frame {
        Object object;
        bool isDictionary;
        std::size_t first; // of its contents
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

    void open(bool isDictionary) {
        const Object object = writer_.reserve();
        references_.push_back(object);
        stack_.push_back({object, isDictionary, references_.size()});
    }

    BinaryPropertyListWriter writer_;
    std::vector<Frame> stack_;
    std::vector<Object> references_; // to the contents of all open containers; a dictionary's values follow its keys
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
