// CZuCRC32: the standard CRC-32 (ISO-HDLC, as in Ethernet, zip and zlib):
// polynomial 0x04C11DB7 reflected, register and final XOR all ones; the
// check value of "123456789" is 0xCBF43926.
//
// The object is fed pieces of any size; GetCRC32() may be read at any time
// and more data may follow. Copies are independent.
#pragma once

#include <cstdint>

#include "ZuUtilsExport.h"

class ZUUTILS_API CZuCRC32 {
 public:
  CZuCRC32() = default;

  void Reset() { m_register = 0xFFFFFFFFu; }

  // Adds bytes; a null pointer or zero length changes nothing. Where the
  // processor has carry-less multiplication (PCLMULQDQ, detected once per
  // process) long pieces are folded 64 bytes per step; otherwise, and for
  // what remains, UpdateCRC32_slicing8 does the work. All routines give
  // identical results.
  void UpdateCRC32(const unsigned char* data, unsigned int length);
  void UpdateCRC32(const char* data, unsigned int length) {
    UpdateCRC32(reinterpret_cast<const unsigned char*>(data), length);
  }
  // The portable routine: eight bytes per step through eight tables.
  void UpdateCRC32_slicing8(const unsigned char* data, unsigned int length);
  // One byte per step through the byte table.
  void UpdateCRC32_old(const unsigned char* data, unsigned int length);

  // The complement of the register; the register itself is kept.
  std::uint32_t GetCRC32() const { return ~m_register; }

  // Self-test of the fast routines over a fixed 128-byte text.
  static bool CheckWordByWord();

 private:
  std::uint32_t m_register = 0xFFFFFFFFu;
};
