#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// What writer and reader of object streams must agree on (docs/streams.md).
namespace zultav::detail {

// A first byte above 127 and both line ends: transfers that strip bits or translate lines show.
inline constexpr std::array<char, 6> kMagic = {'\x89', 'Z', 'U', 'L', '\r', '\n'};
inline constexpr std::uint16_t kFormatVersion = 1;

/// First number of a pointer or an object.
enum Tag : std::uint64_t {
  kNull = 0,
  kReference = 1,  // the object's number follows
  kNewClass = 2,   // the class's name and version follow, then the record
  kFirstClass = 3  // this and above: index of the class, counted from here; the record follows
};

// Every level costs stack in the reader, and the bytes decide how many levels there are.
inline constexpr int kMaxDepth = 1000;
inline constexpr std::size_t kMaxNameLength = 255;

/// A number of 64 bits needs ten groups of seven.
inline constexpr int kLastGroupShift = 63;

}  // namespace zultav::detail
