// CZuCRC64: CRC-64/WE: the ECMA-182 polynomial 0x42F0E1EBA9EA3693 not
// reflected (most significant bit first), register and final XOR all ones;
// the check value of "123456789" is 0x62EC59E3F1A4F00A. (The CRC-64 of xz
// and liblzma is the reflected variant, CRC-64/XZ, with other values.)
//
// The object is fed pieces of any size; GetCRC64() may be read at any time
// and more data may follow. Copies are independent.
#pragma once

#include <cstdint>

#include "ZuUtilsExport.h"

class ZUUTILS_API CZuCRC64 {
 public:
  CZuCRC64() = default;

  void Reset() { m_register = ~std::uint64_t(0); }

  // Adds bytes; a null pointer or zero length changes nothing. Where the
  // processor has carry-less multiplication (PCLMULQDQ, detected once per
  // process) long pieces are folded 64 bytes per step; otherwise, and for
  // what remains, UpdateCRC64_slicing8 does the work. All routines give
  // identical results.
  void UpdateCRC64(const unsigned char* data, unsigned int length);
  void UpdateCRC64(const char* data, unsigned int length) {
    UpdateCRC64(reinterpret_cast<const unsigned char*>(data), length);
  }
  // The portable routine: eight bytes per step through eight tables.
  void UpdateCRC64_slicing8(const unsigned char* data, unsigned int length);
  // One byte per step through the byte table.
  void UpdateCRC64_old(const unsigned char* data, unsigned int length);

  // The complement of the register; the register itself is kept.
  std::uint64_t GetCRC64() const { return ~m_register; }

  // Self-test of the fast routines over a fixed 128-byte text.
  static bool CheckWordByWord();

 private:
  std::uint64_t m_register = ~std::uint64_t(0);
};
