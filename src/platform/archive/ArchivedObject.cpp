#include "platform/archive/ArchivedObject.h"

#include "platform/archive/ClassRegistry.h"

namespace platform {

std::shared_ptr<const void> ArchivedObject::viewedAs(std::type_index type) const {
    return type_ == type ? pointer_ : ClassRegistry::shared().view(pointer_, type_, type);
}

namespace {

// Turns objects into values from the leaves up on an explicit stack; the budget bounds both time and size.
class PropertyListBuilder {
  public:
    explicit PropertyListBuilder(std::size_t budget) : budget_(budget) {}

    std::optional<Value> build(const ArchivedObject& root) {
        Value result;
        if (!place(root, result)) return std::nullopt;
        while (!stack_.empty()) {
            Level& level = stack_.back();
            if (level.next == level.count()) {
                finish(level);
                stack_.pop_back();
                continue;
            }
            const ArchivedObject& element = level.element(level.next);
            Value& target = level.values[level.next++];
            if (!place(element, target)) return std::nullopt;
        }
        return result;
    }

  private:
    struct Level {
        const ObjectArray* array;
        const ObjectDictionary* dictionary;
        Value* target;
        std::vector<Value> values;
        std::size_t next = 0;

        std::size_t count() const { return array ? array->size() : dictionary->size(); }
        const ArchivedObject& element(std::size_t i) const { return array ? (*array)[i] : (*dictionary)[i].second; }
    };

    bool place(const ArchivedObject& object, Value& target) {
        if (budget_ == 0) return false;
        --budget_;
        if (const auto value = object.as<Value>()) {
            target = *value;
            return true;
        }
        Level level{object.as<ObjectArray>().get(), object.as<ObjectDictionary>().get(), &target, {}};
        if (!level.array && !level.dictionary) return false;
        if (level.count() > budget_) return false;
        if (level.dictionary)
            for (const auto& [key, value] : *level.dictionary)
                if (!key.as<Value>() || !key.as<Value>()->as<std::u16string>()) return false;
        level.values.resize(level.count()); // never resized again: the levels above write into it
        stack_.push_back(std::move(level));
        return true;
    }

    static void finish(Level& level) {
        if (level.array) {
            *level.target = Value(Array(std::move(level.values)));
            return;
        }
        Dictionary dictionary;
        for (std::size_t i = 0; i < level.values.size(); ++i)
            dictionary.insert_or_assign((*level.dictionary)[i].first.as<Value>()->utf8(), std::move(level.values[i]));
        *level.target = Value(std::move(dictionary));
    }

    std::size_t budget_;
    std::vector<Level> stack_;
};

} // namespace

std::optional<Value> propertyListFromObject(const ArchivedObject& object, std::size_t maximumValues) {
    return PropertyListBuilder(maximumValues).build(object);
}

// Recursion over a property list of our own, whose depth readers bound.
ArchivedObject objectFromPropertyList(const Value& value) {
    if (const auto* array = value.as<Array>()) {
        ObjectArray objects;
        objects.reserve(array->size());
        for (const Value& element : *array) objects.push_back(objectFromPropertyList(element));
        return std::make_shared<const ObjectArray>(std::move(objects));
    }
    if (const auto* dictionary = value.as<Dictionary>()) {
        ObjectDictionary objects;
        objects.reserve(dictionary->size());
        for (const auto& [key, element] : *dictionary)
            objects.emplace_back(Value(key), objectFromPropertyList(element));
        return std::make_shared<const ObjectDictionary>(std::move(objects));
    }
    return value;
}

} // namespace platform
