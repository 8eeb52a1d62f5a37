#include "platform/archive/ClassRegistry.h"

namespace platform {

ClassRegistry& ClassRegistry::shared() {
    static ClassRegistry registry;
    return registry;
}

void ClassRegistry::add(ArchivableClass archivable) {
    if (byName_.contains(archivable.name)) return;
    const ArchivableClass* added =
        classes_.emplace_back(std::make_unique<ArchivableClass>(std::move(archivable))).get();
    byType_.emplace(added->type, added);
    byName_.emplace(added->name, added);
    for (const std::string& alias : added->aliases) byName_.emplace(alias, added);
}

const ArchivableClass* ClassRegistry::forType(std::type_index type) const {
    const auto found = byType_.find(type);
    return found == byType_.end() ? nullptr : found->second;
}

const ArchivableClass* ClassRegistry::forName(std::string_view className) const {
    const auto found = byName_.find(className);
    return found == byName_.end() ? nullptr : found->second;
}

void ClassRegistry::addView(std::type_index type, std::type_index base, Cast cast) {
    std::vector<View>& views = views_[type];
    for (const View& view : views)
        if (view.base == base) return;
    views.push_back({base, cast});
}

// Recursion over the depth of a class hierarchy, which the program fixes.
ClassRegistry::Pointer ClassRegistry::view(const Pointer& object, std::type_index type, std::type_index base) const {
    if (!object || type == base) return object;
    const auto found = views_.find(type);
    if (found == views_.end()) return nullptr;
    for (const View& direct : found->second)
        if (Pointer viewed = view(direct.cast(object), direct.base, base)) return viewed;
    return nullptr;
}

} // namespace platform
