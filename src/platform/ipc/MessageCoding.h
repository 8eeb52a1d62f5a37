// Values as messages: dictionaries become a{sv} and come back.
//
//   bool b, integer x, real d, string s, data ay, date s (ISO 8601), dictionary a{sv}, null left out
//   list: as when all are strings, aa{sv} when all are dictionaries, else av; an empty one as its key says
//   error: a{sv} of "domain" s, "code" x, "localizedDescription" s and "userInfo" a{sv}
//
// Text that UTF-8 without NUL cannot hold (a lone surrogate, U+0000) arrives as U+FFFD. A dictionary of exactly the
// four keys of an error is read back as one.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace platform {

// What an empty list under a key is a list of, as a message signature: {"Items", "a{sv}"}.
struct ListSignature {
    std::string_view key;
    std::string_view element;
};

// How deep values may lie in each other: a bus drops the sender of a message with more than 64 containers in each
// other, of which a dictionary takes three.
inline constexpr int kMaximumMessageDepth = 20;

// The message's bytes, in this machine's byte order. An error when the dictionary is too deep.
Result<std::string> encodedMessage(const Dictionary& dictionary, std::span<const ListSignature> lists = {});

// Reads what encodedMessage made; an error for any other bytes.
Result<Dictionary> decodedMessage(std::string_view bytes);

} // namespace platform
