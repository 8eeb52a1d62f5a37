#include "platform/xml/XMLArena.h"

#include <algorithm>
#include <cstring>

namespace platform {

namespace {

constexpr std::size_t kSmallestBlock = 1024;
constexpr std::size_t kLargestBlock = 64 * 1024; // unless a single text is larger

} // namespace

XMLArena::XMLArena(std::size_t expected) : nextBlock_(std::clamp(expected, kSmallestBlock, kLargestBlock)) {}

void XMLArena::addBlock(std::size_t size) {
    const std::size_t taken = std::max(size, nextBlock_);
    nextBlock_ = std::min(2 * nextBlock_, kLargestBlock);
    free_ = blocks_.emplace_back(std::make_unique_for_overwrite<char[]>(taken)).get();
    left_ = taken;
}

std::string_view XMLArena::copied(std::string_view text) {
    auto* to = static_cast<char*>(place(text.size(), 1));
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    return {to, text.size()};
}

std::string_view XMLArena::extended(std::string_view text, std::string_view more) {
    if (more.empty()) return text;
    const std::size_t size = text.size() + more.size();
    const bool isLast = text.data() + text.size() == free_ && !isOfSource(text);
    if (!isLast) text = copied(text);
    if (more.size() > left_) {
        // A long text has a block of its own, with room to grow; the one that it leaves is given back.
        const bool hadBlock = text.data() == blocks_.back().get();
        const auto former = hadBlock ? std::exchange(blocks_.back(), nullptr) : nullptr;
        addBlock(2 * size);
        std::memcpy(free_, text.data(), text.size());
        text = {free_, text.size()};
        free_ += text.size();
        left_ -= text.size();
    }
    std::memcpy(free_, more.data(), more.size());
    free_ += more.size();
    left_ -= more.size();
    return {text.data(), size};
}

} // namespace platform
