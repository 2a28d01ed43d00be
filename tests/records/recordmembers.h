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

/// References to the members of a record, in the order of their declaration.
template<class R>
auto of(R& record)
{
    constexpr std::size_t size = count<R>();
    if constexpr (size == 1) {
        auto& [m1] = record;
        return std::tie(m1);
    } else if constexpr (size == 2) {
        auto& [m1, m2] = record;
        return std::tie(m1, m2);
    } else if constexpr (size == 3) {
        auto& [m1, m2, m3] = record;
        return std::tie(m1, m2, m3);
    } else if constexpr (size == 4) {
        auto& [m1, m2, m3, m4] = record;
        return std::tie(m1, m2, m3, m4);
    } else if constexpr (size == 5) {
        auto& [m1, m2, m3, m4, m5] = record;
        return std::tie(m1, m2, m3, m4, m5);
    } else if constexpr (size == 6) {
        auto& [m1, m2, m3, m4, m5, m6] = record;
        return std::tie(m1, m2, m3, m4, m5, m6);
    } else if constexpr (size == 7) {
        auto& [m1, m2, m3, m4, m5, m6, m7] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7);
    } else if constexpr (size == 8) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8);
    } else if constexpr (size == 9) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9);
    } else if constexpr (size == 10) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10);
    } else if constexpr (size == 11) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11);
    } else if constexpr (size == 12) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12);
    } else if constexpr (size == 13) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13);
    } else if constexpr (size == 14) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14);
    } else if constexpr (size == 15) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15);
    } else if constexpr (size == 16) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16);
    } else if constexpr (size == 17) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17);
    } else if constexpr (size == 18) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18] =
            record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18);
    } else if constexpr (size == 19) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18,
               m19] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19);
    } else if constexpr (size == 20) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18, m19,
               m20] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19, m20);
    } else if constexpr (size == 21) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18, m19,
               m20, m21] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19, m20, m21);
    } else if constexpr (size == 22) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18, m19,
               m20, m21, m22] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19, m20, m21, m22);
    } else if constexpr (size == 23) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18, m19,
               m20, m21, m22, m23] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19, m20, m21, m22, m23);
    } else if constexpr (size == 24) {
        auto& [m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17, m18, m19,
               m20, m21, m22, m23, m24] = record;
        return std::tie(m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15, m16, m17,
                        m18, m19, m20, m21, m22, m23, m24);
    }
}

} // namespace members

#endif
