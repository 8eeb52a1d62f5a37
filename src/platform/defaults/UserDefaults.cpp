#include "platform/defaults/UserDefaults.h"

#include <algorithm>
#include <cerrno>
#include <functional>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include "platform/base/SystemLog.h"
#include "platform/defaults/PreferencesFile.h"
#include "platform/foundation/Environment.h"

namespace platform {

namespace {

constexpr std::int64_t kBase = 10;

// The number that a text starts with, blanks before it allowed; 0 when it starts with none.
std::int64_t numberAtStart(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    text.remove_prefix(start);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        if (__builtin_mul_overflow(number, kBase, &number) || __builtin_add_overflow(number, c - '0', &number))
            return negative ? INT64_MIN : INT64_MAX;
    }
    return negative ? -number : number;
}

bool isTrueText(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return text == "yes" || text == "true" || numberAtStart(text) != 0;
}

} // namespace

UserDefaults& UserDefaults::standard() {
    static UserDefaults defaults;
    return defaults;
}

std::string UserDefaults::ownName() const {
    return domain_.empty() ? Environment::current().bundleIdentifier : domain_;
}

void UserDefaults::addSuiteNamed(std::string_view suite) {
    const std::lock_guard lock(mutex_);
    std::erase_if(suites_, [suite](const Domain& domain) { return domain.name == suite; });
    suites_.push_back({std::string(suite), {}, {}});
    own_.path.clear();
    for (Domain& domain : suites_) domain.path.clear();
}

void UserDefaults::registerDefaults(const Dictionary& defaults) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults) registered_.insert_or_assign(key, value);
}

const Dictionary& UserDefaults::valuesOf(Domain& domain, const std::string& name) const {
    std::string path = preferencesPath(name);
    if (domain.path != path) {
        domain.values = readFile(path);
        domain.path = std::move(path);
    }
    return domain.values;
}

Dictionary UserDefaults::readFile(const std::string& path) const {
    const PreferencesFile file = readPreferencesFile(path);
    if (!file.trouble.empty()) logOnce(path, file.bytes, file.trouble);
    return file.values;
}

void UserDefaults::logOnce(const std::string& path, std::string_view content, std::string_view reason) const {
    const std::size_t hash = std::hash<std::string_view>()(content) ^ std::hash<std::string_view>()(reason);
    if (logged_.emplace(path, hash).second)
        systemLog(fmt::format("Preferences in {} are taken for empty: {}", path, reason));
}

std::optional<Value> UserDefaults::objectForKey(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    if (const Value* value = find(valuesOf(own_, ownName()), key)) return *value;
    for (auto suite = suites_.rbegin(); suite != suites_.rend(); ++suite)
        if (const Value* value = find(valuesOf(*suite, suite->name), key)) return *value;
    const Value* value = find(registered_, key);
    return value ? std::optional(*value) : std::nullopt;
}

bool UserDefaults::boolForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return false;
    return value->as<std::u16string>() ? isTrueText(value->utf8()) : value->boolValue();
}

std::int64_t UserDefaults::integerForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return 0;
    return value->as<std::u16string>() ? numberAtStart(value->utf8()) : value->integerValue();
}

std::optional<std::u16string> UserDefaults::stringForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return std::nullopt;
    if (const auto* text = value->as<std::u16string>()) return *text;
    if (const auto* integer = value->as<std::int64_t>()) return utf16FromUTF8(fmt::format("{}", *integer));
    if (const auto* real = value->as<double>()) return utf16FromUTF8(fmt::format("{}", *real));
    if (const auto* flag = value->as<bool>()) return *flag ? u"1" : u"0";
    return std::nullopt;
}

std::optional<Data> UserDefaults::dataForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    const Data* data = value ? value->as<Data>() : nullptr;
    return data ? std::optional(*data) : std::nullopt;
}

Result<> UserDefaults::setObject(std::string_view key, const Value& value) {
    return change(key, value.isNull() ? nullptr : &value);
}

Result<> UserDefaults::removeObject(std::string_view key) {
    return change(key, nullptr);
}

Result<> UserDefaults::change(std::string_view key, const Value* value) {
    const std::lock_guard lock(mutex_);
    std::string path = preferencesPath(ownName());
    own_.values = TRY(changePreferencesFile(path, key, value));
    own_.path = std::move(path);
    return {};
}

} // namespace platform
