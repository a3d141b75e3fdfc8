// ZuBase64: Base64 of RFC 4648 in its standard form (alphabet ending in
// "+/", padded with '=') and its URL form (ending in "-_", unpadded).
//
// Encoding never breaks lines. Decoding accepts both alphabets at once,
// padding or none, and line feeds (LF only) after any complete group of four
// characters and at the end. Anything else (another character, a carriage
// return, a single character left over) is invalid, and invalid text decodes
// to an empty result: there is no partial result and no error code.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"

class ZUUTILS_API ZuBase64 {
 public:
  static std::string Encode(const std::string& data);
  static std::string Encode(const char* data, std::size_t length);
  static std::string Encode_url(const std::string& data);
  static std::string Encode_url(const char* data, std::size_t length);

  static std::string Decode(const std::string& text);
  static std::string Decode(const char* text, std::size_t length);
  // The bytes replace the vector's contents.
  static void Decode(const std::string& text, std::vector<unsigned char>& out);
  static void Decode(const char* text, std::size_t length, std::vector<unsigned char>& out);

  // Into the caller's buffer, followed by a terminator: the number of
  // characters or bytes written, or -1 when `out` is null, `outSize` is 0,
  // `length` is negative (or `data` null with a positive length), the result
  // and its terminator do not fit, or (decoding) the text is invalid or
  // decodes to nothing. After -1 `out` holds an empty string where it can.
  static int Encode(const char* data, int length, char* out, std::size_t outSize);
  static int Decode(const char* text, int length, char* out, std::size_t outSize);
};
