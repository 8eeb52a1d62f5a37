#include "platform/foundation/PathString.h"

#include <algorithm>

namespace platform {

namespace {

template<class C>
using View = std::basic_string_view<C>;
template<class C>
using Text = std::basic_string<C>;

template<class C>
constexpr C kSlash = static_cast<C>('/');
template<class C>
constexpr C kDot = static_cast<C>('.');

// Without slashes at the end; the root keeps its one.
template<class C>
View<C> withoutTrailingSlashes(View<C> path) {
    while (path.size() > 1 && path.back() == kSlash<C>) path.remove_suffix(1);
    return path;
}

// Where the last component begins; `path` has no slash at its end.
template<class C>
std::size_t startOfLastComponent(View<C> path) {
    const std::size_t slash = path.rfind(kSlash<C>);
    return slash == View<C>::npos || path.size() == 1 ? 0 : slash + 1;
}

// The position of the "." before the extension, or npos; `path` has no slash at its end.
template<class C>
std::size_t extensionDot(View<C> path) {
    const std::size_t dot = path.rfind(kDot<C>);
    return dot != View<C>::npos && dot > startOfLastComponent(path) ? dot : View<C>::npos;
}

template<class C>
Text<C> extensionOf(View<C> path) {
    path = withoutTrailingSlashes(path);
    const std::size_t dot = extensionDot(path);
    return Text<C>(dot == View<C>::npos ? View<C>() : path.substr(dot + 1));
}

template<class C>
Text<C> withoutExtension(View<C> path) {
    path = withoutTrailingSlashes(path);
    return Text<C>(path.substr(0, extensionDot(path)));
}

template<class C>
Text<C> withExtension(View<C> path, View<C> extension) {
    const View<C> stem = withoutTrailingSlashes(path);
    if (extension.empty() || extension.find(kSlash<C>) != View<C>::npos || stem.empty() || stem.back() == kSlash<C>)
        return Text<C>(path);
    Text<C> result;
    result.reserve(stem.size() + 1 + extension.size());
    result.append(stem).append(1, kDot<C>).append(extension);
    return result;
}

template<class C>
Text<C> lastComponentOf(View<C> path) {
    path = withoutTrailingSlashes(path);
    return Text<C>(path.substr(startOfLastComponent(path)));
}

} // namespace

std::string pathExtension(std::string_view path) {
    return extensionOf(path);
}
std::u16string pathExtension(std::u16string_view path) {
    return extensionOf(path);
}
std::string deletingPathExtension(std::string_view path) {
    return withoutExtension(path);
}
std::u16string deletingPathExtension(std::u16string_view path) {
    return withoutExtension(path);
}
std::string appendingPathExtension(std::string_view path, std::string_view extension) {
    return withExtension(path, extension);
}
std::u16string appendingPathExtension(std::u16string_view path, std::u16string_view extension) {
    return withExtension(path, extension);
}
std::string lastPathComponent(std::string_view path) {
    return lastComponentOf(path);
}
std::u16string lastPathComponent(std::u16string_view path) {
    return lastComponentOf(path);
}
std::vector<std::string> pathComponents(std::string_view path) {
    std::vector<std::string> components;
    if (path.empty()) return components;
    if (path.front() == '/') components.emplace_back("/");
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end > start) components.emplace_back(path.substr(start, end - start));
        start = end + 1;
    }
    const bool hasName = path.find_first_not_of('/') != std::string_view::npos;
    if (hasName && path.back() == '/') components.emplace_back("/");
    return components;
}

} // namespace platform
