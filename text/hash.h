// A hash that tells contents apart without keeping them. It is the same in every build for machines
// of one byte order. It is no protection against people who want two contents to look alike.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace vlout::text {

[[nodiscard]] inline std::uint64_t hashOf(std::string_view bytes) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::uint64_t hash = bytes.size() * kFactor;
  const auto mix = [&](std::uint64_t word) {
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
  };
  while (!bytes.empty()) {
    std::uint64_t word = 0;
    const std::size_t size = bytes.size() < sizeof word ? bytes.size() : sizeof word;
    std::memcpy(&word, bytes.data(), size);
    mix(word);
    bytes.remove_prefix(size);
  }
  mix(0);
  return hash;
}

}  // namespace vlout::text
