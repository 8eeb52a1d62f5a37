// Counterpart of NSKeyedUnarchiver: reads a keyed archive from anywhere.
//
// Works without recursion: everything that an object refers to is decoded before the object itself. A reference back
// to an object that is still being decoded (a cycle) reads as nil. Objects and depth are bounded.
//
// An object that cannot be decoded (its class is unknown or not allowed, its contents are wrong) matters only when
// somebody asks for it: the object that does is then undecodable too, up to the root, whose error is the answer.
// Without secure coding an object of an unknown class, or with contents that make no sense, reads as nil instead. Keys
// that a class does not ask for are passed over, whatever they hold. The class list of the archive ("$classes") is not
// searched for a known base; the classes that the archive itself proposes in place of its own ("$classhints") are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/ArchivedObject.h"
#include "platform/archive/ClassRegistry.h"
#include "platform/base/Result.h"

namespace platform {

struct UnarchiveOptions {
    bool requiresSecureCoding = true;
    // Class names; their subclasses are meant too. Under secure coding every object must be of one of them, save that
    // strings, numbers, data and dates are always allowed inside. Otherwise only the root must; empty allows every
    // class.
    std::vector<std::string> allowedClasses{};
    std::size_t maximumObjects = 4'000'000;
    std::size_t maximumDepth = 512;
};

// The object under `key`. Errors: NSCocoaErrorDomain 4864 with a text that says what is wrong and at which object.
Result<ArchivedObject> unarchivedObject(std::string_view archive, const UnarchiveOptions& options,
                                        std::string_view key = "root");

} // namespace platform
