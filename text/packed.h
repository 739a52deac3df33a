// Packs numbers and texts into bytes and unpacks them again, for files that only this program
// reads, on the machine that wrote them.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace vlout::text {

template <typename Number>
void pack(std::string& bytes, Number number) {
  static_assert(std::is_integral_v<Number>);
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

inline void pack(std::string& bytes, std::string_view text) {
  pack(bytes, static_cast<std::uint32_t>(text.size()));
  bytes.append(text);
}

// Takes numbers and texts off the front. Once one of them is incomplete, nothing more can be read.
class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : left_(bytes) {}

  template <typename Number>
  Number number() {
    Number number{};
    const std::string_view bytes = take(sizeof number);
    if (!bytes.empty()) std::memcpy(&number, bytes.data(), sizeof number);
    return number;
  }
  std::string_view text() { return take(number<std::uint32_t>()); }
  [[nodiscard]] bool isGood() const { return isGood_; }
  [[nodiscard]] std::size_t left() const { return left_.size(); }

 private:
  std::string_view take(std::size_t size) {
    isGood_ = isGood_ && size <= left_.size();
    if (!isGood_) return {};
    const std::string_view bytes = left_.substr(0, size);
    left_.remove_prefix(size);
    return bytes;
  }

  std::string_view left_;
  bool isGood_ = true;
};

}  // namespace vlout::text
