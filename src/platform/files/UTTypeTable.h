// The declared types.
#pragma once

#include <span>
#include <string_view>

namespace platform {

// Lists are separated by blanks; the first extension and the first MIME type are the preferred ones.
struct UTTypeDeclaration {
    std::string_view identifier;
    std::string_view parents;
    std::string_view extensions;
    std::string_view mimeTypes;
};

// Parents may stand behind their children. Where two types name one tag, the first has it.
std::span<const UTTypeDeclaration> utTypeDeclarations();

} // namespace platform
