// Counterpart of NSUserDefaults: preferences in property list files, searched domain by domain.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

// A key is looked up in the own domain, then in the suites, the one added last first, then among the registered
// defaults. A domain is the file NAME.plist, binary or XML, in the environment's directory for preferences; it is read
// when it is first needed. A damaged or unreadable file counts as empty and gives one line in the system log for
// each content. All members may be called from any thread.
class UserDefaults {
  public:
    // The own domain is the main bundle's identifier, followed as the environment changes.
    static UserDefaults& standard();
    UserDefaults() = default;
    explicit UserDefaults(std::string domain) : domain_(std::move(domain)) {}

    // Puts the suite above those added before, and has every file read again at its next use.
    void addSuiteNamed(std::string_view suite);
    // Values for keys that no file has; a later call overrides single keys of an earlier one.
    void registerDefaults(const Dictionary& defaults);

    std::optional<Value> objectForKey(std::string_view key) const;
    // False without a value; numbers as they convert, of strings YES, true and non-zero numbers are true.
    bool boolForKey(std::string_view key) const;
    // 0 without a value; a string gives the number at its start.
    std::int64_t integerForKey(std::string_view key) const;
    std::optional<std::u16string> stringForKey(std::string_view key) const; // numbers as text
    std::optional<Data> dataForKey(std::string_view key) const;

    // Changes one key of the own domain's file, from what the file holds at that moment, under a lock: of two
    // processes that write, only the older value of the same key is lost. The file is replaced as a whole, mode 0600.
    // On failure the file stays as it was.
    Result<> setObject(std::string_view key, const Value& value);
    Result<> removeObject(std::string_view key);

  private:
    struct Domain {
        std::string name;
        std::string path; // that `values` was read from; "" before
        Dictionary values;
    };

    std::string ownName() const;
    const Dictionary& valuesOf(Domain& domain, const std::string& name) const;
    Dictionary readFile(const std::string& path) const;
    void logOnce(const std::string& path, std::string_view content, std::string_view reason) const;
    Result<> change(std::string_view key, const Value* value);

    std::string domain_; // "" for the main bundle's
    mutable std::mutex mutex_;
    mutable Domain own_;
    mutable std::vector<Domain> suites_; // oldest first
    Dictionary registered_;
    mutable std::set<std::pair<std::string, std::size_t>> logged_; // path and hash of the content
};

} // namespace platform
