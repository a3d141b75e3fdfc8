#include "text/UTF.h"

#include "errors/ErrorUtil.h"
#include "text/UTFCore.h"

using namespace FXUTFDetail;

namespace {

// Which check of IsLegalUTF8 failed; kLegal when none did.
enum EUtf8Fault { kLegal, kByte4, kByte3, kByte2, kByte2E0, kByte2F0, kByte2F4, kByte1, kBadLength };

// The reference converter's isLegalUTF8, telling which byte failed.
EUtf8Fault CheckUtf8(const std::uint8_t* b, int length, std::uint8_t& failing) {
  switch (length) {
    default:
      return kBadLength;
    case 4:
      if (!IsContinuation(b[3])) return failing = b[3], kByte4;
      [[fallthrough]];
    case 3:
      if (!IsContinuation(b[2])) return failing = b[2], kByte3;
      [[fallthrough]];
    case 2: {
      const std::uint8_t a = b[1];
      failing = a;
      // A continuation byte first, whatever the lead: after 0xF4 a byte
      // below 0x80 would otherwise pass and decode above U+10FFFF.
      if (a < 0x80 || a > 0xBF) return kByte2;
      switch (b[0]) {
        case 0xE0:
          if (a < 0xA0) return kByte2E0;
          break;
        case 0xF0:
          if (a < 0x90) return kByte2F0;
          break;
        case 0xF4:
          if (a > 0x8F) return kByte2F4;
          break;
        default:
          break;
      }
    }
      [[fallthrough]];
    case 1:
      failing = b[0];
      if (b[0] >= 0x80 && b[0] < 0xC2) return kByte1;
  }
  if (b[0] > 0xF4) return kByte1;
  return kLegal;
}

CZuError Utf8FaultError(EUtf8Fault fault, std::uint8_t failing, int length) {
  static const char* const kMessages[] = {
      "",
      "Invalid character (4), Character=0x%X, Length=%d",
      "Invalid character (3), Character=0x%X, Length=%d",
      "Invalid character (2), Character=0x%X, Length=%d",
      "Invalid character (2,0xE0), Character=0x%X, Length=%d",
      "Invalid character (2,0xF0), Character=0x%X, Length=%d",
      "Invalid character (2,0xF4), Character=0x%X, Length=%d",
      "Invalid character (1), Character=0x%X, Length=%d",
  };
  const FXCodeLocation here = ZU_HERE("FXUTF::IsLegalUTF8");
  if (fault == kBadLength)
    return FXErrorUtil::ErrorWin32(here, ERROR_ILLEGAL_CHARACTER, "Unrecognized sequence length, Length=%d", length);
  return FXErrorUtil::ErrorWin32(here, ERROR_ILLEGAL_CHARACTER, kMessages[fault], static_cast<unsigned int>(failing),
                                 length);
}

// The number of bytes after a lead byte, as the reference converter's
// trailingBytesForUTF8 table has it (0xF8-0xFF announce 5 and 6 bytes,
// which IsLegalUTF8 then rejects).
int TrailingBytes(std::uint8_t lead) {
  if (lead < 0xC0) return 0;
  if (lead < 0xE0) return 1;
  if (lead < 0xF0) return 2;
  if (lead < 0xF8) return 3;
  if (lead < 0xFC) return 4;
  return 5;
}

// The outcome of reading one character from the source.
enum EReadStatus { kRead, kExhausted, kIllegal, kIllegalUtf8 };

struct TRead {
  EReadStatus status;
  std::uint32_t value;       // the character, or the offending value
  EUtf8Fault fault;          // kIllegalUtf8: which check failed,
  std::uint8_t failing;      //   on which byte,
  int length;                //   for a sequence of this length
};

// Reads one character at s (s < e), advancing s past it only when it was
// read. Lenient mode turns unpaired surrogates and values above U+10FFFF
// into U+FFFD; strict mode reports them.
inline TRead ReadOne(const std::uint8_t*& s, const std::uint8_t* e, FXUTF::ConversionFlags flags) {
  const int extra = TrailingBytes(*s);
  if (extra >= e - s) return {kExhausted, *s, kLegal, 0, 0};
  std::uint8_t failing = 0;
  const EUtf8Fault fault = CheckUtf8(s, extra + 1, failing);
  if (fault != kLegal) return {kIllegalUtf8, *s, fault, failing, extra + 1};
  std::uint32_t c = extra == 0   ? s[0]
                    : extra == 1 ? ((s[0] & 0x1Fu) << 6) | (s[1] & 0x3Fu)
                    : extra == 2 ? ((s[0] & 0x0Fu) << 12) | ((s[1] & 0x3Fu) << 6) | (s[2] & 0x3Fu)
                                 : ((s[0] & 0x07u) << 18) | ((s[1] & 0x3Fu) << 12) | ((s[2] & 0x3Fu) << 6) |
                                       (s[3] & 0x3Fu);
  if (IsSurrogate(c)) {
    if (flags == FXUTF::strictConversion) return {kIllegal, c, kLegal, 0, 0};
    c = kReplacement;
  }
  s += extra + 1;
  return {kRead, c, kLegal, 0, 0};
}

inline TRead ReadOne(const std::uint16_t*& s, const std::uint16_t* e, FXUTF::ConversionFlags flags) {
  std::uint32_t c = *s;
  std::size_t used = 1;
  if (IsHighSurrogate(c)) {
    if (s + 1 == e) return {kExhausted, c, kLegal, 0, 0};
    if (IsLowSurrogate(s[1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (s[1] - 0xDC00u);
      used = 2;
    } else if (flags == FXUTF::strictConversion) {
      return {kIllegal, c, kLegal, 0, 0};
    } else {
      c = kReplacement;
    }
  } else if (IsLowSurrogate(c)) {
    if (flags == FXUTF::strictConversion) return {kIllegal, c, kLegal, 0, 0};
    c = kReplacement;
  }
  s += used;
  return {kRead, c, kLegal, 0, 0};
}

inline TRead ReadOne(const std::uint32_t*& s, const std::uint32_t*, FXUTF::ConversionFlags flags) {
  std::uint32_t c = *s;
  if (IsSurrogate(c) || c > kMaxLegal) {
    if (flags == FXUTF::strictConversion) return {kIllegal, c, kLegal, 0, 0};
    c = kReplacement;
  }
  ++s;
  return {kRead, c, kLegal, 0, 0};
}

// Writes one character if it fits; false leaves t unchanged.
inline bool WriteOne(std::uint8_t*& t, std::uint8_t* e, std::uint32_t c) {
  const std::ptrdiff_t need = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
  if (e - t < need) return false;
  t = PutUtf8(t, c);
  return true;
}
inline bool WriteOne(std::uint16_t*& t, std::uint16_t* e, std::uint32_t c) {
  if (e - t < (c > 0xFFFF ? 2 : 1)) return false;
  t = Put(t, c);
  return true;
}
inline bool WriteOne(std::uint32_t*& t, std::uint32_t* e, std::uint32_t c) {
  if (t == e) return false;
  *t++ = c;
  return true;
}

// The fast path of each pair of forms: converts a well-formed prefix of at
// most `left` source units that surely fits in `room` target units, and
// returns where it stopped. Pairs without a decoder of their own copy ASCII.
inline const std::uint8_t* FastPrefix(const std::uint8_t* s, std::size_t left, std::uint16_t*& t, std::size_t room) {
  return DecodeWellFormed(s, s + (left < room ? left : room), t);
}
inline const std::uint8_t* FastPrefix(const std::uint8_t* s, std::size_t left, std::uint32_t*& t, std::size_t room) {
  return DecodeWellFormed(s, s + (left < room ? left : room), t);
}
inline const std::uint16_t* FastPrefix(const std::uint16_t* s, std::size_t left, std::uint8_t*& t, std::size_t room) {
  return EncodeWellFormed(s, s + (left < room / 3 ? left : room / 3), t);
}
inline const std::uint32_t* FastPrefix(const std::uint32_t* s, std::size_t left, std::uint8_t*& t, std::size_t room) {
  return EncodeWellFormed(s, s + (left < room / 4 ? left : room / 4), t);
}
template <class Src, class Dst>
const Src* FastPrefix(const Src* s, std::size_t left, Dst*& t, std::size_t room) {
  const std::size_t n = CopyAscii(s, t, left < room ? left : room);
  t += n;
  return s + n;
}

// The loop every converter shares: the fast path while it makes progress,
// else one character the careful way, which also finds every fault.
template <class Src, class Dst>
CZuError Transcode(const char* function, const Src** sourceStart, const Src* sourceEnd, Dst** targetStart,
                   Dst* targetEnd, FXUTF::ConversionFlags flags) {
  if (sourceStart == nullptr || targetStart == nullptr || (*sourceStart == nullptr) != (sourceEnd == nullptr) ||
      (*targetStart == nullptr) != (targetEnd == nullptr))
    return FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_INVALID_PARAMETER);
  const Src* s = *sourceStart;
  Dst* t = *targetStart;
  CZuError result = CZuError::Success();
  while (s < sourceEnd) {
    if (t < targetEnd) {
      const Src* stop = FastPrefix(s, static_cast<std::size_t>(sourceEnd - s), t,
                                   static_cast<std::size_t>(targetEnd - t));
      if (stop != s) {
        s = stop;
        continue;
      }
    }
    const Src* const start = s;
    const TRead read = ReadOne(s, sourceEnd, flags);
    if (read.status == kExhausted) {
      result = FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_INSUFFICIENT_BUFFER,
                                       "Too few bytes in source, cannot convert");
      break;
    }
    if (read.status == kIllegal) {
      result = FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_ILLEGAL_CHARACTER,
                                       "Illegal character encountered; strict conversion failed, character=0x%llX",
                                       static_cast<unsigned long long>(read.value));
      break;
    }
    if (read.status == kIllegalUtf8) {
      result = Utf8FaultError(read.fault, read.failing, read.length);
      result.Push(ZU_HERE(function), "Illegal character encountered");
      break;
    }
    if (!WriteOne(t, targetEnd, read.value)) {
      s = start;
      result = FXErrorUtil::ErrorWin32(ZU_HERE(function), ERROR_BUFFER_OVERFLOW, "Insufficient target buffer size");
      break;
    }
  }
  *sourceStart = s;
  *targetStart = t;
  return result;
}

}  // namespace

namespace FXUTF {

CZuError ConvertUTF8ToUTF16(const UTF8** sourceStart, const UTF8* sourceEnd, UTF16** targetStart, UTF16* targetEnd,
                            ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF8ToUTF16", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError ConvertUTF8ToUTF32(const UTF8** sourceStart, const UTF8* sourceEnd, UTF32** targetStart, UTF32* targetEnd,
                            ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF8ToUTF32", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError ConvertUTF16ToUTF8(const UTF16** sourceStart, const UTF16* sourceEnd, UTF8** targetStart, UTF8* targetEnd,
                            ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF16ToUTF8", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError ConvertUTF16ToUTF32(const UTF16** sourceStart, const UTF16* sourceEnd, UTF32** targetStart,
                             UTF32* targetEnd, ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF16ToUTF32", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError ConvertUTF32ToUTF8(const UTF32** sourceStart, const UTF32* sourceEnd, UTF8** targetStart, UTF8* targetEnd,
                            ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF32ToUTF8", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError ConvertUTF32ToUTF16(const UTF32** sourceStart, const UTF32* sourceEnd, UTF16** targetStart,
                             UTF16* targetEnd, ConversionFlags flags) {
  return Transcode("FXUTF::ConvertUTF32ToUTF16", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError CopyUTF16ToUTF16(const UTF16** sourceStart, const UTF16* sourceEnd, UTF16** targetStart, UTF16* targetEnd,
                          ConversionFlags flags) {
  return Transcode("FXUTF::CopyUTF16ToUTF16", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}
CZuError CopyUTF32ToUTF32(const UTF32** sourceStart, const UTF32* sourceEnd, UTF32** targetStart, UTF32* targetEnd,
                          ConversionFlags flags) {
  return Transcode("FXUTF::CopyUTF32ToUTF32", sourceStart, sourceEnd, targetStart, targetEnd, flags);
}

CZuError IsLegalUTF8(const unsigned char* bytes, int length) {
  if (length < 1 || length > 4) return Utf8FaultError(kBadLength, 0, length);
  if (bytes == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("FXUTF::IsLegalUTF8"), ERROR_INVALID_PARAMETER);
  std::uint8_t failing = 0;
  const EUtf8Fault fault = CheckUtf8(bytes, length, failing);
  return fault == kLegal ? CZuError::Success() : Utf8FaultError(fault, failing, length);
}

}  // namespace FXUTF
