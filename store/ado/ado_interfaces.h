// ADO's interfaces, from the system's header, and their identifiers. ADO answers to two identifiers
// for one and the same interface: the one that it has always had, and the one that replaced it when
// a few of its numbers became 64 bits wide on 64-bit machines.
#pragma once

#include <windows.h>

#include <ole2.h>

#include <adoint.h>

#include <array>
#include <cstdint>

namespace vlout::store::ado {

inline constexpr CLSID kConnectionClass{
    0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
inline constexpr CLSID kRecordsetClass{
    0x00000535, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

inline constexpr std::array<IID, 2> kConnection{
    {{0x00001515, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}},
     {0x00000515, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}}}};
inline constexpr std::array<IID, 2> kRecordset{
    {{0x0000150E, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}},
     {0x0000050E, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}}}};

// A number that ADO gives out. The header declares `long` where a 64-bit ADO writes 64 bits.
class Number {
 public:
  [[nodiscard]] long* out() { return reinterpret_cast<long*>(&value_); }
  [[nodiscard]] std::int64_t value() const { return static_cast<std::intptr_t>(value_); }

 private:
  std::int64_t value_ = 0;
};

}  // namespace vlout::store::ado
