// Visits a property list from the top down, in file order and without recursion; what both writers are built on.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/plist/PropertyListLimits.h"

namespace platform {

// A stack of open containers. Works for visitors with
//     Result<> scalar(const Value&);
//     void openArray(const Array&); void openDictionary(const Dictionary&);
//     Result<> key(const std::string&);  before each value of a dictionary
//     void closeContainer();
// A null, an Error, and nesting beyond the limit of the readers are errors that name the place.
class PropertyListWalk {
  public:
    template<class Visitor>
    Result<> run(const Value& root, Visitor& visitor) {
        stack_.reserve(kUsualDepth);
        TRY(visit(root, visitor));
        while (!stack_.empty()) {
            Frame& frame = stack_.back();
            if (frame.index == frame.size()) {
                visitor.closeContainer();
                stack_.pop_back();
                continue;
            }
            if (frame.index++ > 0 && frame.dictionary) ++frame.entry;
            if (frame.dictionary) TRY(located(visitor.key(frame.entry->first)));
            TRY(visit(frame.dictionary ? frame.entry->second : (*frame.array)[frame.index - 1], visitor));
        }
        return {};
    }

  private:
    static constexpr std::size_t kUsualDepth = 4;

    struct Frame {
        const Array* array = nullptr;
        const Dictionary* dictionary = nullptr;
        Dictionary::const_iterator entry{}; // the current one
        std::size_t index = 0;              // one past the current one

        std::size_t size() const { return dictionary ? dictionary->size() : array->size(); }
    };

    template<class Visitor>
    Result<> visit(const Value& value, Visitor& visitor) {
        const auto* array = value.as<Array>();
        const auto* dictionary = value.as<Dictionary>();
        if (value.isNull() || value.asError()) return located(unwritable("a property list holds no null and no error"));
        if (!array && !dictionary) return located(visitor.scalar(value));
        if (stack_.size() == kMaximumPropertyListDepth) return located(unwritable("containers are nested too deep"));
        stack_.push_back({array, dictionary, dictionary ? dictionary->begin() : Dictionary::const_iterator{}});
        if (array)
            visitor.openArray(*array);
        else
            visitor.openDictionary(*dictionary);
        return {};
    }

    // The error with the keys and indexes that lead to the current value in front.
    Result<> located(Result<> result) const {
        if (result) return result;
        std::string place;
        for (const Frame& frame : stack_) {
            if (frame.index == 0) break;
            place += frame.dictionary ? "/" + frame.entry->first : fmt::format("/{}", frame.index - 1);
        }
        return unwritable(
            fmt::format("at “{}”: {}", place.empty() ? "/" : place, result.error().localizedDescription()));
    }

    std::vector<Frame> stack_;
};

} // namespace platform
