// What a run depends on besides its input: clock, identifiers, locale, time zone, bundle, directories. All of it comes
// in through this one object, so that a test fixes it.
#pragma once

#include <functional>
#include <string>

#include "platform/base/Date.h"
#include "platform/foundation/UUID.h"

namespace platform {

struct Environment {
    std::function<Date()> now;
    std::function<UUID()> newUUID;
    std::string localeIdentifier; // ICU form, "de_DE"
    std::string timeZoneName;     // "Europe/Berlin", or a rule as TZ may hold it
    bool darkAppearance = false;

    // The main bundle's identity.
    std::string bundleIdentifier;
    std::string bundleShortVersion;

    std::string dataDirectory;        // page template and data files; QUILLET_DATA_DIR overrides the installed one
    std::string preferencesDirectory; // $XDG_CONFIG_HOME, ~/.config when unset or relative
    std::string catalogueDirectory;   // message catalogues (gettext)

    // The process's environment, read from the system once at first use. Set it only while no other thread reads it.
    static Environment& current();
};

// Puts the environment back as it was at the end of a scope; for tests.
class ScopedEnvironment {
  public:
    ScopedEnvironment() : saved_(Environment::current()) {}
    ~ScopedEnvironment() { Environment::current() = saved_; }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    Environment* operator->() { return &Environment::current(); }

  private:
    Environment saved_;
};

} // namespace platform
