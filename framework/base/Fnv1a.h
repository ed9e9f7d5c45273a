#pragma once

#include <cstdint>
#include <string_view>

namespace zultav {

/// The 64-bit FNV-1a hash: spreads names over a table, and finds what a disk or a transfer has done
/// to bytes, not what a forger has.
/// @param hash  that of the bytes before these
constexpr std::uint64_t Fnv1a(std::string_view bytes,
                              std::uint64_t hash = 0xcbf29ce484222325) noexcept {
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  return hash;
}

}  // namespace zultav
