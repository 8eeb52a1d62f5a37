// The archive's objects are decoded from the leaves up: a walk with an explicit stack visits what an object refers to
// before the object itself. An object is decoded once, however many refer to it. What becomes of each is kept beside
// its index: the decoded object, or why there is none, which turns into an error only when a class asks for it.
#include "platform/archive/KeyedUnarchiver.h"

#include <algorithm>
#include <unordered_map>

#include <fmt/core.h>

#include "platform/plist/PropertyList.h"

namespace platform {

namespace {

constexpr std::string_view kClassKey = "$class";

// Classes that any archive may hold without being named.
constexpr std::string_view kAlwaysAllowed[]{"NSString", "NSNumber", "NSData", "NSDate"};

// A reference is a UID, or, in the XML form, a dictionary with the one key CF$UID.
std::optional<std::uint64_t> referenceOf(const Value& value) {
    if (const auto* uid = value.as<UID>()) return uid->value;
    const auto* dictionary = value.as<Dictionary>();
    if (!dictionary || dictionary->size() != 1 || dictionary->begin()->first != "CF$UID") return std::nullopt;
    const auto* number = dictionary->begin()->second.as<std::int64_t>();
    return number && *number >= 0 ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
}

// The class of a value that stands in "$objects" without a class description.
std::string_view bareClassName(const Value& value) {
    if (value.as<std::u16string>()) return "NSString";
    if (value.as<Data>()) return "NSData";
    return value.as<Date>() ? "NSDate" : "NSNumber";
}

// One entry of "$objects" and what became of it.
struct Slot {
    enum class State : std::uint8_t { unseen, open, done, failed };
    State state = State::unseen;
    ArchivedObject object;
};

struct Class {
    std::string name;
    const ArchivableClass* archivable = nullptr;
    bool allowed = false;
};

class Unarchiver;

class ObjectFields : public ArchivedFields {
  public:
    ObjectFields(const Unarchiver& unarchiver, const Dictionary& fields, std::string_view className)
        : unarchiver_(unarchiver), fields_(fields), className_(className) {}

    bool containsValueForKey(std::string_view key) const override { return field(key) != nullptr; }
    bool decodeBool(std::string_view key) const override;
    std::int64_t decodeInteger(std::string_view key) const override;
    double decodeDouble(std::string_view key) const override;
    std::optional<std::string_view> decodeBytes(std::string_view key) const override;
    ArchivedObject decodeObject(std::string_view key) const override;
    ObjectArray decodeReferences(std::string_view key) const override;
    std::optional<std::u16string> decodeString(std::string_view key) const override;
    std::string_view className() const override { return className_; }

    // The first undecodable object that the class asked for.
    std::optional<std::uint64_t> failedReference() const { return failed_; }

  private:
    const Value* field(std::string_view key) const;
    const Value* plainValue(std::string_view key) const;
    ArchivedObject resolve(std::uint64_t reference) const;

    const Unarchiver& unarchiver_;
    const Dictionary& fields_;
    std::string_view className_;
    mutable std::optional<std::uint64_t> failed_;
};

class Unarchiver {
  public:
    explicit Unarchiver(const UnarchiveOptions& options) : options_(options) {}

    Result<ArchivedObject> unarchive(std::string_view archive, std::string_view key) {
        archive_ = TRY(propertyListFromData(archive));
        const std::uint64_t root = TRY(rootReference(key));
        if (root == 0) return ArchivedObject();
        TRY(decodeReachableFrom(root));
        if (errors_.contains(root)) return failure(errorOf(root));
        if (slots_[root].object.isNull()) return failure(undecodable("The archive's root is of an unknown class."));
        if (!rootIsAllowed(root)) return failure(undecodable("The archive's root is of a class that is not allowed."));
        return slots_[root].object;
    }

    const Slot& slot(std::uint64_t reference) const { return slots_[reference]; }
    bool contains(std::uint64_t reference) const { return reference < slots_.size(); }

  private:
    struct Frame {
        std::uint64_t index;
        std::vector<std::uint64_t> references;
        std::size_t next = 0;
    };

    Result<std::uint64_t> rootReference(std::string_view key) {
        const auto* top = archive_.as<Dictionary>();
        const auto* archiver = top ? find(*top, "$archiver") : nullptr;
        const auto* objects = top ? find(*top, "$objects") : nullptr;
        const auto* roots = top ? find(*top, "$top") : nullptr;
        if (!objects || !objects->as<Array>() || !roots || !roots->as<Dictionary>())
            return failure(undecodable("The property list is no keyed archive."));
        if (archiver && archiver->utf8() != "NSKeyedArchiver")
            return failure(undecodable(fmt::format("The archive is of the kind “{}”.", archiver->utf8())));
        objects_ = objects->as<Array>();
        if (objects_->size() > options_.maximumObjects)
            return failure(undecodable(fmt::format("The archive has more than {} objects.", options_.maximumObjects)));
        slots_.resize(objects_->size());
        const Value* root = find(*roots->as<Dictionary>(), key);
        const auto reference = root ? referenceOf(*root) : std::nullopt;
        if (!reference) return failure(undecodable(fmt::format("The archive has no object under “{}”.", key)));
        if (!contains(*reference))
            return failure(undecodable(fmt::format("The archive has no object {}.", *reference)));
        return *reference;
    }

    Result<> decodeReachableFrom(std::uint64_t root) {
        std::vector<Frame> stack;
        enter(stack, root);
        while (!stack.empty()) {
            Frame& frame = stack.back();
            if (frame.next < frame.references.size()) {
                const std::uint64_t reference = frame.references[frame.next++];
                if (!contains(reference) || slots_[reference].state != Slot::State::unseen) continue;
                if (stack.size() == options_.maximumDepth)
                    return failure(undecodable(
                        fmt::format("The archive's objects are nested deeper than {}.", options_.maximumDepth)));
                enter(stack, reference);
                continue;
            }
            decode(frame.index);
            stack.pop_back();
        }
        return {};
    }

    // A bare value is decoded at once; an object waits for what it refers to.
    void enter(std::vector<Frame>& stack, std::uint64_t index) {
        Slot& entered = slots_[index];
        const Value& stored = (*objects_)[index];
        const auto* fields = stored.as<Dictionary>();
        if (!fields) {
            enterBareValue(entered, index, stored);
            return;
        }
        entered.state = Slot::State::open;
        Frame frame{index, {}, 0};
        if (mayDecode(*fields)) collectReferences(*fields, frame.references);
        stack.push_back(std::move(frame));
    }

    void enterBareValue(Slot& entered, std::uint64_t index, const Value& stored) {
        entered.state = Slot::State::done;
        if (index == 0) return;
        if (stored.as<Array>() || stored.as<UID>()) {
            entered.state = Slot::State::failed;
            errors_.emplace(index, undecodable(fmt::format("Object {} of the archive has no class.", index)));
            return;
        }
        entered.object = stored;
    }

    static void collectReferences(const Dictionary& fields, std::vector<std::uint64_t>& references) {
        for (const auto& [key, value] : fields) {
            if (key == kClassKey) continue;
            if (const auto reference = referenceOf(value)) {
                references.push_back(*reference);
            } else if (const auto* array = value.as<Array>()) {
                for (const Value& element : *array)
                    if (const auto inner = referenceOf(element)) references.push_back(*inner);
            }
        }
    }

    bool mayDecode(const Dictionary& fields) {
        const Class* found = classOf(fields);
        return found && found->archivable && found->allowed;
    }

    // Null when the object names no class.
    const Class* classOf(const Dictionary& fields) {
        const Value* field = find(fields, kClassKey);
        const auto reference = field ? referenceOf(*field) : std::nullopt;
        if (!reference || !contains(*reference)) return nullptr;
        const auto known = classes_.find(*reference);
        if (known != classes_.end()) return known->second.name.empty() ? nullptr : &known->second;
        Class& added = classes_[*reference];
        const auto* description = (*objects_)[*reference].as<Dictionary>();
        const Value* name = description ? find(*description, "$classname") : nullptr;
        if (!name || name->utf8().empty()) return nullptr;
        added.name = name->utf8();
        added.archivable = ClassRegistry::shared().forName(added.name);
        if (!added.archivable) takeHint(*description, added);
        added.allowed = !options_.requiresSecureCoding || isAllowed(added);
        return &added;
    }

    // What the archive proposes to whoever does not know the class.
    static void takeHint(const Dictionary& description, Class& unknown) {
        const Value* field = find(description, "$classhints");
        const auto* hints = field ? field->as<Array>() : nullptr;
        if (!hints) return;
        for (const Value& hint : *hints) {
            const ArchivableClass* known = ClassRegistry::shared().forName(hint.utf8());
            if (!known) continue;
            unknown = {.name = known->name, .archivable = known};
            return;
        }
    }

    // Whether the class, or one that it is derived from as this process knows it, is among the allowed ones.
    bool isAllowed(const Class& checked) const {
        if (!checked.archivable) return false;
        if (options_.requiresSecureCoding && !checked.archivable->supportsSecureCoding) return false;
        const auto alwaysAllowed = [](std::string_view name) {
            return std::ranges::find(kAlwaysAllowed, name) != std::end(kAlwaysAllowed);
        };
        return isNamed(checked) || std::ranges::any_of(checked.archivable->chain, alwaysAllowed);
    }

    bool isNamed(const Class& checked) const {
        const auto named = [&](std::string_view name) {
            return std::ranges::find(options_.allowedClasses, name) != options_.allowedClasses.end();
        };
        return named(checked.name) || std::ranges::any_of(checked.archivable->chain, named);
    }

    // Who asks for one class is not served with a string.
    bool rootIsAllowed(std::uint64_t root) {
        if (options_.allowedClasses.empty()) return true;
        const Value& stored = (*objects_)[root];
        const auto* fields = stored.as<Dictionary>();
        const Class* described = fields ? classOf(*fields) : nullptr;
        if (described) return isNamed(*described);
        const std::string_view name = bareClassName(stored);
        return isNamed({.name = std::string(name), .archivable = ClassRegistry::shared().forName(name)});
    }

    void decode(std::uint64_t index) {
        Slot& decoded = slots_[index];
        auto object = decodeFields(index, *(*objects_)[index].as<Dictionary>());
        decoded.state = object ? Slot::State::done : Slot::State::failed;
        if (object) {
            decoded.object = *std::move(object);
        } else {
            errors_.emplace(index, std::move(object).error());
        }
    }

    Result<ArchivedObject> decodeFields(std::uint64_t index, const Dictionary& fields) {
        const Class* found = classOf(fields);
        if (!found) return failure(undecodable(fmt::format("Object {} of the archive has no class.", index)));
        if (!found->allowed)
            return failure(undecodable(fmt::format(
                "Object {} of the archive is of the class “{}”, which is not allowed.", index, found->name)));
        if (!found->archivable) return ArchivedObject();
        const ObjectFields decoder(*this, fields, found->name);
        auto object = found->archivable->decode(decoder);
        if (const auto failed = decoder.failedReference()) return failure(errorOf(*failed));
        if (object) return object;
        Error senseless = undecodable(fmt::format("Object {} of the archive ({}) cannot be decoded: {}.", index,
                                                  found->name, object.error().localizedDescription()));
        if (options_.requiresSecureCoding) return failure(std::move(senseless));
        errors_.emplace(index, std::move(senseless)); // matters for the root alone
        return ArchivedObject();
    }

    Error errorOf(std::uint64_t reference) const {
        const auto found = errors_.find(reference);
        if (found != errors_.end()) return found->second;
        return undecodable(fmt::format("The archive has no object {}.", reference));
    }

    const UnarchiveOptions& options_;
    Value archive_;
    const Array* objects_ = nullptr;
    std::vector<Slot> slots_;
    std::unordered_map<std::uint64_t, Class> classes_; // by the class description's index
    std::unordered_map<std::uint64_t, Error> errors_;  // why there is no object
};

// ---- fields

const Value* ObjectFields::field(std::string_view key) const {
    return key.starts_with('$') ? find(fields_, "$" + std::string(key)) : find(fields_, key);
}

// The value under the key, inline or as an object.
const Value* ObjectFields::plainValue(std::string_view key) const {
    const Value* value = field(key);
    const auto reference = value ? referenceOf(*value) : std::nullopt;
    if (!reference) return value;
    return resolve(*reference).as<Value>().get(); // kept alive by its slot
}

ArchivedObject ObjectFields::resolve(std::uint64_t reference) const {
    if (!unarchiver_.contains(reference) || unarchiver_.slot(reference).state == Slot::State::failed) {
        if (!failed_) failed_ = reference;
        return {};
    }
    return unarchiver_.slot(reference).object;
}

bool ObjectFields::decodeBool(std::string_view key) const {
    const Value* value = plainValue(key);
    return value && value->boolValue();
}

std::int64_t ObjectFields::decodeInteger(std::string_view key) const {
    const Value* value = plainValue(key);
    return value ? value->integerValue() : 0;
}

double ObjectFields::decodeDouble(std::string_view key) const {
    const Value* value = plainValue(key);
    return value ? value->doubleValue() : 0;
}

std::optional<std::string_view> ObjectFields::decodeBytes(std::string_view key) const {
    const Value* value = plainValue(key);
    const auto* data = value ? value->as<Data>() : nullptr;
    return data ? std::optional(data->bytes()) : std::nullopt;
}

std::optional<std::u16string> ObjectFields::decodeString(std::string_view key) const {
    const Value* value = plainValue(key);
    const auto* text = value ? value->as<std::u16string>() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

ArchivedObject ObjectFields::decodeObject(std::string_view key) const {
    const Value* value = field(key);
    const auto reference = value ? referenceOf(*value) : std::nullopt;
    return reference ? resolve(*reference) : ArchivedObject();
}

ObjectArray ObjectFields::decodeReferences(std::string_view key) const {
    const Value* value = field(key);
    const auto* array = value ? value->as<Array>() : nullptr;
    ObjectArray objects;
    if (!array) return objects;
    objects.reserve(array->size());
    for (const Value& element : *array) {
        const auto reference = referenceOf(element);
        objects.push_back(reference ? resolve(*reference) : ArchivedObject());
    }
    return objects;
}

} // namespace

Result<ArchivedObject> unarchivedObject(std::string_view archive, const UnarchiveOptions& options,
                                        std::string_view key) {
    return Unarchiver(options).unarchive(archive, key);
}

} // namespace platform
