// How a function that can fail answers: a value or an Error, passed up with one word.
#pragma once

#include <expected>
#include <utility>

#include "platform/base/Error.h"

namespace platform {

// Result<> stands for "done" or an error.
template<class T = void>
using Result = std::expected<T, Error>;

// `return failure(error)` from any function with a Result.
inline std::unexpected<Error> failure(Error error) {
    return std::unexpected<Error>(std::move(error));
}

} // namespace platform

// The value of a Result; when it holds an error, the calling function returns that error at once.
//     const Data data = TRY(readFile(path));
#define QUILLET_TRY_NAMED(name, expression)                                                                            \
    __extension__({                                                                                                    \
        auto&& name = (expression);                                                                                    \
        if (!name) [[unlikely]]                                                                                        \
            return std::unexpected<::platform::Error>(std::move(name).error());                                        \
        *std::move(name);                                                                                              \
    })
#define QUILLET_TRY_JOIN(a, b) a##b
#define QUILLET_TRY_COUNTED(counter, expression) QUILLET_TRY_NAMED(QUILLET_TRY_JOIN(tried_, counter), expression)
#define TRY(expression) QUILLET_TRY_COUNTED(__COUNTER__, expression)
