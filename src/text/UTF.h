// FXUTF: buffer-to-buffer Unicode transcoders with strict checking, in the
// manner of the Unicode reference converter (ConvertUTF).
//
// Every function takes (&source cursor, source end, &target cursor, target
// end, flags) and advances both cursors past what it converted, also when it
// fails. On failure the source cursor stands at the first unit of the
// character that could not be converted, so a caller can grow its target and
// go on from there, or report the offset of the bad input. Target units
// after the returned cursor may have been written to (the fast path stores
// whole words), never beyond the target end.
//
// Failures (Win32 items, function "FXUTF::<name>"):
//   122 "Too few bytes in source, cannot convert"  the source ends inside a
//        sequence or after a high surrogate
//   111 "Insufficient target buffer size"          the next character does
//        not fit (nothing of it is written)
//   582 "Illegal character encountered; strict conversion failed,
//        character=0x%llX"                          strict mode met an unpaired
//        surrogate or a value above U+10FFFF
//   the IsLegalUTF8 error with "Illegal character encountered" pushed on it,
//        for a UTF-8 sequence that fails IsLegalUTF8, in either mode
// In lenient mode an unpaired surrogate or a value above U+10FFFF becomes
// U+FFFD and conversion goes on (the reference converter would pass an
// unpaired UTF-16 surrogate through; we never write ill-formed output).
//
// A null source or target cursor is ERROR_INVALID_PARAMETER. An empty
// source is success whatever the target.
#pragma once

#include <cstdint>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXUTF {

typedef std::uint8_t UTF8;
typedef std::uint16_t UTF16;
typedef std::uint32_t UTF32;

enum ConversionFlags { strictConversion = 0, lenientConversion = 1 };

ZUUTILS_API CZuError ConvertUTF8ToUTF16(const UTF8** sourceStart, const UTF8* sourceEnd, UTF16** targetStart,
                                        UTF16* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError ConvertUTF8ToUTF32(const UTF8** sourceStart, const UTF8* sourceEnd, UTF32** targetStart,
                                        UTF32* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError ConvertUTF16ToUTF8(const UTF16** sourceStart, const UTF16* sourceEnd, UTF8** targetStart,
                                        UTF8* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError ConvertUTF16ToUTF32(const UTF16** sourceStart, const UTF16* sourceEnd, UTF32** targetStart,
                                         UTF32* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError ConvertUTF32ToUTF8(const UTF32** sourceStart, const UTF32* sourceEnd, UTF8** targetStart,
                                        UTF8* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError ConvertUTF32ToUTF16(const UTF32** sourceStart, const UTF32* sourceEnd, UTF16** targetStart,
                                         UTF16* targetEnd, ConversionFlags flags);
// Copies with the same checks: pairs are kept, unpaired surrogates (and in
// UTF-32 values above U+10FFFF) fail in strict mode and become U+FFFD in
// lenient mode.
ZUUTILS_API CZuError CopyUTF16ToUTF16(const UTF16** sourceStart, const UTF16* sourceEnd, UTF16** targetStart,
                                      UTF16* targetEnd, ConversionFlags flags);
ZUUTILS_API CZuError CopyUTF32ToUTF32(const UTF32** sourceStart, const UTF32* sourceEnd, UTF32** targetStart,
                                      UTF32* targetEnd, ConversionFlags flags);

// Checks one UTF-8 sequence of `length` bytes (the length its first byte
// announces), from the last byte backward, with the reference converter's
// ranges: continuation bytes 0x80-0xBF; the second byte at least 0xA0 after
// 0xE0, at least 0x90 after 0xF0, at most 0x8F after 0xF4; the first byte not
// in 0x80-0xC1 and not above 0xF4. Like the reference, it lets the encoded
// surrogates (0xED 0xA0-0xBF) pass: the converters judge those by mode.
// Failures are Win32 582 (ERROR_ILLEGAL_CHARACTER) items of
// "FXUTF::IsLegalUTF8" whose text names the failing byte's position:
//   "Invalid character (N), Character=0x%X, Length=%d"        N = 4, 3, 2, 1
//   "Invalid character (2,0xE0|0xF0|0xF4), Character=0x%X, Length=%d"
//   "Unrecognized sequence length, Length=%d"                  length not 1-4
// A null pointer is ERROR_INVALID_PARAMETER.
ZUUTILS_API CZuError IsLegalUTF8(const unsigned char* bytes, int length);

}  // namespace FXUTF
