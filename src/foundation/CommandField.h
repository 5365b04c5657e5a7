/*
 * How the fields of a record are described: a row for each, in C and in C++. In C++ the compiler
 * also holds the type in a row to that of the member.
 */
#pragma once

#ifdef __KERNEL__
#include <linux/stddef.h>
#include <linux/types.h>
#else
#include <stddef.h>
#include <stdint.h>
#endif

enum VELKFieldType { VELK_UNSIGNED32, VELK_SIGNED32, VELK_BYTE, VELK_TEXT };

struct VELKField {
    const char* name;
    enum VELKFieldType type;
    size_t offset;
    size_t elementSize;
    size_t count;  // elements; of a text, its bytes
    // What a valid record holds in each element; of a text, how long it is without its final zero.
    int64_t smallest;
    int64_t largest;
    uint8_t isReserved;  // always zero
};

// What a field may hold: the smallest value, the largest, and whether it is reserved.
#define VELK_BETWEEN(smallest, largest) smallest, largest, 0
#define VELK_AT_LEAST(smallest) smallest, 0x7FFFFFFFFFFFFFFF, 0
#define VELK_ANY VELK_AT_LEAST(-0x7FFFFFFFFFFFFFFF - 1)
#define VELK_FLAG VELK_BETWEEN(0, 1)
#define VELK_ID VELK_AT_LEAST(1)
#define VELK_ZERO VELK_BETWEEN(0, 0)
#define VELK_RESERVED 0, 0, 1

#ifdef __cplusplus

#include <algorithm>
#include <limits>
#include <type_traits>

namespace velkfields {

template <typename Element>
constexpr VELKFieldType typeOf() = delete;  // records have no elements of other types than these
template <>
constexpr VELKFieldType typeOf<uint32_t>() {
    return VELK_UNSIGNED32;
}
template <>
constexpr VELKFieldType typeOf<int32_t>() {
    return VELK_SIGNED32;
}
template <>
constexpr VELKFieldType typeOf<uint8_t>() {
    return VELK_BYTE;
}
template <>
constexpr VELKFieldType typeOf<char>() {
    return VELK_TEXT;
}

// The row of a member: the values are cut to those that its type can hold.
template <typename Member, typename Element>
constexpr VELKField describe(const char* name, size_t offset, int64_t smallest, int64_t largest,
                             uint8_t isReserved) {
    static_assert(std::is_same_v<std::remove_all_extents_t<Member>, Element>);
    using Limits = std::numeric_limits<Element>;
    constexpr size_t count = std::is_array_v<Member> ? std::extent_v<Member> : 1;
    constexpr bool isText = typeOf<Element>() == VELK_TEXT;
    constexpr int64_t lowest = isText ? 0 : int64_t{Limits::min()};
    constexpr int64_t highest = isText ? int64_t{count} - 1 : int64_t{Limits::max()};
    return {name,
            typeOf<Element>(),
            offset,
            sizeof(Element),
            count,
            std::max(smallest, lowest),
            std::min(largest, highest),
            isReserved};
}

}  // namespace velkfields

#define VELK_CONSTANT inline constexpr
// A member has no name at run time but the one that the preprocessor makes of it.
#define VELK_FIELD(Record, Element, member, ...)                                               \
    velkfields::describe<decltype(Record::member), Element>(#member, offsetof(Record, member), \
                                                            __VA_ARGS__)

#else

#define VELK_CONSTANT static const __attribute__((__unused__))
#define VELK_FIELD(Record, Element, member, ...)                                   \
    {                                                                              \
#member,                                                                   \
                _Generic((Element)0, uint32_t                                      \
                         : VELK_UNSIGNED32, int32_t                                \
                         : VELK_SIGNED32, uint8_t                                  \
                         : VELK_BYTE, char                                         \
                         : VELK_TEXT),                                             \
                offsetof(struct Record, member), sizeof(Element),                  \
                sizeof(((struct Record*)0)->member) / sizeof(Element), __VA_ARGS__ \
    }

#endif
