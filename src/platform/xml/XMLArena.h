// Where the nodes and texts of one document lie: memory that is taken piece by piece and given back all at once.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace platform {

class XMLArena {
  public:
    // For about that many bytes of nodes and texts: more are no harm.
    explicit XMLArena(std::size_t expected);
    XMLArena(const XMLArena&) = delete; // what lies here is known by its address
    XMLArena& operator=(const XMLArena&) = delete;

    // Objects are never destroyed.
    template<class T, class... Arguments>
    T* make(Arguments&&... arguments) {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (place(sizeof(T), alignof(T))) T(std::forward<Arguments>(arguments)...);
    }
    // Uninitialised.
    template<class T>
    T* makeArray(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        return static_cast<T*>(place(count * sizeof(T), alignof(T)));
    }

    // Stores the text that the others are parts of, for the most part: these are not stored again.
    std::string_view storedSource(std::string_view text) { return source_ = copied(text); }
    std::string_view stored(std::string_view text) { return isOfSource(text) ? text : copied(text); }
    // A stored text with more behind it. Without a copy when nothing has been stored since, as when a text comes in
    // pieces.
    std::string_view extended(std::string_view text, std::string_view more);

  private:
    bool isOfSource(std::string_view text) const {
        return std::less_equal()(source_.data(), text.data()) &&
               std::less_equal()(text.data() + text.size(), source_.data() + source_.size());
    }
    std::string_view copied(std::string_view text);
    void* place(std::size_t size, std::size_t alignment) {
        void* place = free_;
        if (!std::align(alignment, size, place, left_)) {
            addBlock(size); // as aligned as any object needs
            place = free_;
        }
        free_ = static_cast<char*>(place) + size;
        left_ -= size;
        return place;
    }
    void addBlock(std::size_t size);

    std::vector<std::unique_ptr<char[]>> blocks_;
    std::string_view source_;
    char* free_ = nullptr; // in the last block
    std::size_t left_ = 0;
    std::size_t nextBlock_; // doubled with each block
};

} // namespace platform
