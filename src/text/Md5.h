// CMd5: the MD5 message digest (RFC 1321). Start, Process any number of
// pieces, End, then GetCode. For checksums of data, not for security.
#pragma once

#include <cstdint>

#include "ZuUtilsExport.h"

class ZUUTILS_API CMd5 {
 public:
  // Ready for data, as after Start().
  CMd5() { Start(); }

  void Start();

  // Adds bytes; zero length (or a null pointer) does nothing. Whole 64-byte
  // blocks are taken straight from `data` while the internal buffer is
  // empty; only a partial block is copied.
  void Process(const char* data, unsigned int length);

  // Appends the padding and the bit length and processes the last blocks.
  // Call once; Start() again before the object is reused.
  void End();

  // The 16-byte digest (A, B, C, D, each least significant byte first).
  void GetCode(unsigned char digest[16]) const;

 private:
  void ProcessBlocks(const unsigned char* blocks, std::uint64_t count);

  std::uint32_t m_state[4];
  std::uint64_t m_byteCount;
  unsigned char m_buffer[64];
  std::uint32_t m_bufferFill;
};
