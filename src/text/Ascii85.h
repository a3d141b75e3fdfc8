// CAscii85: Ascii85 in the Adobe framing, "<~" ... "~>", the text form of
// the serialized token stream.
//
// Encoding: groups of four bytes, most significant first, as five
// characters '!' to 'u'; a whole group of zeros as 'z'; a last group of n
// bytes (1 to 3) as its first n + 1 characters. No line breaks.
//
// Decoding skips NUL, backspace, tab, line feed, form feed, carriage
// return, space and DEL anywhere; '~' must be followed by '>' and ends the
// data (anything after it is ignored). A group whose value exceeds 2^32 - 1
// wraps modulo 2^32 without an error. Failures are Win32 errors:
//   13 (invalid data)   "Invalid beginning marker", "'z' inside a group",
//                       "Invalid ASCII85 character", "No end marker found",
//                       "Incomplete end marker found (~ without >)"
//   111 (buffer overflow) when the output does not fit; the bytes of the
//                       groups before it stay in the buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

// The owning array pointer in which the allocating Decode hands over its
// buffer.
template <class T>
using auto_ptr_array = std::unique_ptr<T[]>;

class ZUUTILS_API CAscii85 {
 public:
  // Replaces `out` with the text. Failure (out left unchanged): Win32 14
  // when the output cannot be allocated, 87 for a null `data` with a
  // nonzero length.
  static CZuError Encode(const char* data, std::size_t length, std::string& out);

  // Into the caller's buffer: `length` is its size on entry and the number
  // of bytes decoded on return (on failure, the bytes written before it).
  // A null `out` is a buffer of size 0.
  static CZuError Decode(const std::string& text, char* out, std::size_t& length);

  // Into a buffer of its own, handed over in `out` with its length on
  // success; on failure `out` and `length` are left unchanged.
  static CZuError Decode(const std::string& text, auto_ptr_array<char>& out, std::size_t& length);
};
