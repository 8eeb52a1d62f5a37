#include "programs/export/FileSize.h"

#include <vector>

#include "platform/files/FileWrapper.h"

namespace quillet {

std::size_t sizeOfFiles(const platform::FileWrapper& wrapper) {
    std::size_t size = 0;
    std::vector<const platform::FileWrapper*> left{&wrapper};
    while (!left.empty()) {
        const platform::FileWrapper& next = *left.back();
        left.pop_back();
        size += next.regularFileContents().size();
        for (const auto& [name, child] : next.fileWrappers()) left.push_back(child.get());
    }
    return size;
}

} // namespace quillet
