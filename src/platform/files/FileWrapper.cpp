#include "platform/files/FileWrapper.h"

#include <fmt/core.h>

namespace platform {

namespace {

// Stands between the number and the name in the key of a further child of the same name.
constexpr std::string_view kNumberedKeyMark = "__#$!@%!#__";

} // namespace

std::shared_ptr<FileWrapper> FileWrapper::regularFile(Data contents) {
    auto wrapper = std::make_shared<FileWrapper>();
    wrapper->contents_ = std::move(contents);
    return wrapper;
}

std::shared_ptr<FileWrapper> FileWrapper::directory(Children children) {
    auto wrapper = std::make_shared<FileWrapper>();
    wrapper->isDirectory_ = true;
    wrapper->attributes_.posixPermissions = 0755;
    for (auto& [key, child] : children) wrapper->setFileWrapper(std::move(key), std::move(child));
    return wrapper;
}

std::shared_ptr<FileWrapper> FileWrapper::childNamed(std::string_view key) const {
    const auto position = positions_.find(key);
    return position == positions_.end() ? nullptr : children_[position->second].second;
}

std::string FileWrapper::addFileWrapper(std::shared_ptr<FileWrapper> child) {
    std::string key = freeKeyFor(child->preferredFilename_);
    positions_.emplace(key, children_.size());
    children_.emplace_back(key, std::move(child));
    return key;
}

std::string FileWrapper::freeKeyFor(const std::string& name) {
    if (!positions_.contains(name)) return name;
    std::size_t& number = lastNumbers_[name];
    while (true) {
        std::string key = fmt::format("{}{}{}", ++number, kNumberedKeyMark, name);
        if (!positions_.contains(key)) return key;
    }
}

void FileWrapper::setFileWrapper(std::string key, std::shared_ptr<FileWrapper> child) {
    child->preferredFilename_ = key;
    const auto [position, added] = positions_.emplace(key, children_.size());
    if (added) {
        children_.emplace_back(std::move(key), std::move(child));
    } else {
        children_[position->second].second = std::move(child);
    }
}

void FileWrapper::removeFileWrapper(std::string_view key) {
    const auto position = positions_.find(key);
    if (position == positions_.end()) return;
    const std::size_t index = position->second;
    positions_.erase(position);
    children_.erase(children_.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < children_.size(); ++i) positions_.find(children_[i].first)->second = i;
    lastNumbers_.clear();
}

} // namespace platform
