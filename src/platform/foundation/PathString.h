// Counterpart of NSString's path methods: pure text, nothing is looked up. Those on names come for UTF-8 bytes and for
// UTF-16, in which file names are measured.
//
// Slashes at the end are ignored ("a.b/" has the extension "b"). An extension is what follows the last "." of the
// last component, unless that "." is the component's first character: ".hidden" has none, "a." has an empty one.
// Everything else counts, blanks too: the extension of "Vol. 2" is " 2".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// "" when there is none.
std::string pathExtension(std::string_view path);
std::u16string pathExtension(std::u16string_view path);

// "a.b.c" → "a.b"; "a." → "a"; ".hidden" stays. Slashes at the end go.
std::string deletingPathExtension(std::string_view path);
std::u16string deletingPathExtension(std::u16string_view path);

// "a" and "b" → "a.b". Slashes at the end of the path go. An empty extension or one with a "/", and a path without
// a component ("", "/"), change nothing.
std::string appendingPathExtension(std::string_view path, std::string_view extension);
std::u16string appendingPathExtension(std::u16string_view path, std::u16string_view extension);

// "/a/b/" → "b"; "/" → "/"; "" → "".
std::string lastPathComponent(std::string_view path);
std::u16string lastPathComponent(std::u16string_view path);

// "/a//b/" → "/", "a", "b", "/": a slash at the start and one at the end are components of their own.
std::vector<std::string> pathComponents(std::string_view path);

} // namespace platform
