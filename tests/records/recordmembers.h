#ifndef TESTS_RECORDS_RECORDMEMBERS_H
#define TESTS_RECORDS_RECORDMEMBERS_H

// The members of a record as the compiler knows them: their number, places and types, without any
// help from the library's lists.

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

namespace members {

struct Anything
{
    template<class T>
    operator T() const;
};

template<class R, class Indices, class = void>
struct TakesInitialisers : std::false_type
{
};
template<std::size_t>
using AnythingAt = Anything;
template<class R, std::size_t... I>
struct TakesInitialisers<R, std::index_sequence<I...>, std::void_t<decltype(R{AnythingAt<I>{}...})>>
    : std::true_type
{
};

/// How many members the aggregate R has: the largest number of initialisers that it takes.
template<class R, std::size_t Tried = 25>
constexpr std::size_t count()
{
    static_assert(std::is_aggregate_v<R>);
    if constexpr (TakesInitialisers<R, std::make_index_sequence<Tried>>::value) {
        static_assert(Tried < 25, "a record with more members than this header can bind");
        return Tried;
    } else {
        return count<R, Tried - 1>();
    }
}

template<std::size_t N>
using Size = std::integral_constant<std::size_t, N>;

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names.
#define BIND_MEMBERS(number, ...)                                                                  \
    template<class R>                                                                              \
    auto tied(R& record, Size<number>)                                                             \
    {                                                                                              \
        auto& [__VA_ARGS__] = record;                                                              \
        return std::tie(__VA_ARGS__);                                                              \
    }
// NOLINTEND(bugprone-macro-parentheses)
BIND_MEMBERS(1, m1)
BIND_MEMBERS(2, m1, m2)
BIND_MEMBERS(3, m1, m2, m3)
BIND_MEMBERS(4, m1, m2, m3, m4)
BIND_MEMBERS(5, m1, m2, m3, m4, m5)
BIND_MEMBERS(6, m1, m2, m3, m4, m5, m6)
BIND_MEMBERS(7, m1, m2, m3, m4, m5, m6, m7)
BIND_MEMBERS(8, m1, m2, m3, m4, m5, m6, m7, m8)
BIND_MEMBERS(9, m1, m2, m3, m4, m5, m6, m7, m8, m9)
BIND_MEMBERS(10, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10)
BIND_MEMBERS(11, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11)
BIND_MEMBERS(12, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12)
BIND_MEMBERS(13, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13)
BIND_MEMBERS(14, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14)
BIND_MEMBERS(15, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15)
BIND_MEMBERS(16, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16)
BIND_MEMBERS(17, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17)
BIND_MEMBERS(18, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18)
BIND_MEMBERS(19, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19)
BIND_MEMBERS(20, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19, m20)
BIND_MEMBERS(21, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19, m20, m21)
BIND_MEMBERS(22, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19, m20, m21, m22)
BIND_MEMBERS(23, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19, m20, m21, m22, m23)
BIND_MEMBERS(24, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
             m19, m20, m21, m22, m23, m24)
#undef BIND_MEMBERS

/// References to the members of a record, in the order of their declaration.
template<class R>
auto of(R& record)
{
    return tied(record, Size<count<R>()>());
}

} // namespace members

#endif
