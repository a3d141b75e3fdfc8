// printf-style formatting: FXString::Format (narrow and wide) with hostile
// formats built only from the conversions the library uses, each given an
// argument of its type, agrees with the C library's own output under the
// buffer rule (first size 2 * strlen(fmt) + 512, then steps of 16384 until
// 131072 is reached; the text fits when it leaves room for the terminator,
// otherwise it is cut there and the result is 111). CZuString::Format's
// numbered placeholders are checked against a plain model of their rule.
#include <text/StringFormat.h>
#include <text/ZuString.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr HRESULT kBufferOverflow = static_cast<HRESULT>(0x80070000 | 111);

// Reads the input byte by byte; zero once it runs out.
struct Reader {
  const uint8_t* data;
  std::size_t size;
  std::uint8_t Byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  std::uint64_t Word() {
    std::uint64_t v = 0;
    for (int i = 0; i < 8; ++i) v = (v << 8) | Byte();
    return v;
  }
};

// The arguments, one per slot in this order; a format uses a prefix of them.
enum Slot { kInt, kLongLong, kDouble, kString, kUnsigned, kULongLong, kDouble2, kString2, kSlots };

// One conversion for the slot's type, with flags, width and precision that
// the C standard defines for it.
template <class Char>
std::basic_string<Char> Conversion(Slot slot, Reader& in, bool wide) {
  const std::uint8_t f = in.Byte(), w = in.Byte(), p = in.Byte(), c = in.Byte();
  const bool isString = slot == kString || slot == kString2;
  const bool isChar = slot == kInt && !wide && c % 3 == 2;
  const bool isSigned = slot == kInt || slot == kLongLong || slot == kDouble || slot == kDouble2;
  const bool isFloat = slot == kDouble || slot == kDouble2;
  std::string conversion = "%";
  if (f & 1) conversion += '-';
  if ((f & 2) && isSigned && !isChar) conversion += '+';
  if ((f & 4) && isSigned && !isChar) conversion += ' ';
  if ((f & 8) && (isFloat || slot == kUnsigned || slot == kULongLong)) conversion += '#';
  if ((f & 16) && !isString && !isChar) conversion += '0';
  // Mostly narrow; a few widths land around the last buffer's size, where
  // a text either just fits or is cut.
  if (w != 0) conversion += std::to_string(w < 248 ? w : 0x20000u - 1024 + (w - 248) * 300u);
  if (p != 0 && !isChar) conversion += "." + std::to_string(p - 1);
  switch (slot) {
    case kInt: conversion += isChar ? "c" : (c % 3 == 0 ? "d" : "i"); break;
    case kLongLong: conversion += c % 2 ? "lld" : "lli"; break;
    case kDouble:
    case kDouble2: conversion += "feEgGaA"[c % 7]; break;
    case kString:
    case kString2: conversion += wide ? "ls" : "s"; break;
    case kUnsigned: conversion += "uxXo"[c % 4]; break;
    default: conversion += "ll"; conversion += "uxXo"[c % 4]; break;
  }
  return std::basic_string<Char>(conversion.begin(), conversion.end());
}

// Literal bytes, "%%", and conversions for the slots in turn.
template <class Char>
std::basic_string<Char> BuildFormat(Reader& in, bool wide) {
  std::basic_string<Char> fmt;
  int slot = 0;
  const std::size_t length = in.Byte() % 64;
  for (std::size_t i = 0; i < length && in.size > 0; ++i) {
    const std::uint8_t b = in.Byte();
    if (b >= 0xE0 && slot < kSlots) {
      fmt += Conversion<Char>(static_cast<Slot>(slot++), in, wide);
    } else if (b == '%' || b >= 0xE0) {
      fmt += Char('%');
      fmt += Char('%');
    } else if (b != 0) {
      fmt += static_cast<Char>(b);
    }
  }
  return fmt;
}

// The first N units of what the rule lets through, up to a NUL.
template <class Char>
std::basic_string<Char> Expected(const std::basic_string<Char>& full, std::size_t fmtLength, bool& fits) {
  std::size_t size = 2 * fmtLength + 512;
  for (;;) {
    if (full.size() < size) {
      fits = true;
      break;
    }
    if (size >= 0x20000) {
      fits = false;
      break;
    }
    size += 16384;
  }
  std::basic_string<Char> out = full.substr(0, fits ? full.size() : size - 1);
  const std::size_t nul = out.find(Char());
  if (nul != std::basic_string<Char>::npos) out.resize(nul);
  return out;
}

template <class Char>
void CheckAgainst(const std::basic_string<Char>& full, std::size_t fmtLength, const CZuError& result,
                  const std::basic_string<Char>& out) {
  bool fits = false;
  const std::basic_string<Char> expected = Expected(full, fmtLength, fits);
  FUZZ_CHECK(fits ? !result : result.GetErrorCode() == kBufferOverflow);
  FUZZ_CHECK(out == expected);
}

void Narrow(Reader& in) {
  const std::string fmt = BuildFormat<char>(in, false);
  const int i = static_cast<int>(in.Word());
  const long long ll = static_cast<long long>(in.Word());
  const std::uint64_t bits = in.Word(), bits2 = in.Word();
  double d, d2;
  std::memcpy(&d, &bits, sizeof d);
  std::memcpy(&d2, &bits2, sizeof d2);
  const unsigned u = static_cast<unsigned>(in.Word());
  const unsigned long long ull = in.Word();
  std::string s, s2;
  for (std::uint8_t n = in.Byte() % 40; n > 0; --n) s += static_cast<char>(in.Byte() | 1);
  for (std::uint8_t n = in.Byte() % 40; n > 0; --n) s2 += static_cast<char>(in.Byte() | 1);

  const int need = std::snprintf(nullptr, 0, fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2, s2.c_str());
  FUZZ_CHECK(need >= 0);
  std::string full(static_cast<std::size_t>(need) + 1, '\0');
  std::snprintf(&full[0], full.size(), fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2, s2.c_str());
  full.resize(static_cast<std::size_t>(need));

  std::string out = "stale";
  const CZuError result = FXString::Format(out, fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2, s2.c_str());
  CheckAgainst(full, fmt.size(), result, out);
  FUZZ_CHECK(FXString::Format(fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2, s2.c_str()) == out);
}

void Wide(Reader& in) {
  const std::wstring fmt = BuildFormat<wchar_t>(in, true);
  const int i = static_cast<int>(in.Word());
  const long long ll = static_cast<long long>(in.Word());
  const std::uint64_t bits = in.Word(), bits2 = in.Word();
  double d, d2;
  std::memcpy(&d, &bits, sizeof d);
  std::memcpy(&d2, &bits2, sizeof d2);
  const unsigned u = static_cast<unsigned>(in.Word());
  const unsigned long long ull = in.Word();
  std::wstring s, s2;
  for (std::uint8_t n = in.Byte() % 40; n > 0; --n) s += static_cast<wchar_t>(in.Byte() | 1);
  for (std::uint8_t n = in.Byte() % 40; n > 0; --n) s2 += static_cast<wchar_t>(in.Byte() | 1);

  // vswprintf does not report the length it needs: grow until it fits (the
  // formats above make at most eight widths of about 131072).
  std::vector<wchar_t> buffer(4096);
  int n = -1;
  while ((n = std::swprintf(buffer.data(), buffer.size(), fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2,
                            s2.c_str())) < 0 &&
         buffer.size() < (1u << 21))
    buffer.resize(buffer.size() * 8);
  if (n < 0) return;
  const std::wstring full(buffer.data(), static_cast<std::size_t>(n));

  std::wstring out = L"stale";
  const CZuError result = FXString::Format(out, fmt.c_str(), i, ll, d, s.c_str(), u, ull, d2, s2.c_str());
  CheckAgainst(full, fmt.size(), result, out);
}

// CZuString::Format's rule, written plainly: "{digits}" with 1 <= n <= count
// is the argument, any other closed placeholder its own text; an open one
// is copied up to the character that abandons it, and dropped at the end.
std::string PlaceholderModel(const std::string& pattern, const std::vector<std::string>& args) {
  std::string out;
  std::size_t i = 0;
  while (i < pattern.size()) {
    if (pattern[i] != '{') {
      out += pattern[i++];
      continue;
    }
    std::size_t j = i + 1;
    while (j < pattern.size() && pattern[j] >= '0' && pattern[j] <= '9') ++j;
    if (j == pattern.size()) break;
    if (pattern[j] == '}') {
      const std::string digits = pattern.substr(i + 1, j - i - 1);
      std::size_t n = 0;
      bool big = false;
      for (char c : digits) {
        n = n * 10 + static_cast<std::size_t>(c - '0');
        if (n > args.size()) big = true;
      }
      if (!big && n >= 1) {
        out += args[n - 1];
      } else {
        out += pattern.substr(i, j + 1 - i);
      }
      i = j + 1;
    } else {
      out += pattern.substr(i, j - i);
      i = j;
    }
  }
  return out;
}

void Placeholders(Reader& in) {
  std::vector<std::string> args(in.Byte() % 11);
  for (std::string& a : args)
    for (std::uint8_t n = in.Byte() % 8; n > 0; --n) a += static_cast<char>(in.Byte() | 1);
  std::string pattern;
  // A small alphabet so that braces and digits meet often.
  static const char kAlphabet[] = "{}0123456789ab{}1";
  while (in.size > 0) pattern += kAlphabet[in.Byte() % (sizeof kAlphabet - 1)];
  std::vector<CZuString> zuArgs;
  for (const std::string& a : args) zuArgs.emplace_back(a.c_str());
  const CZuString out = CZuString::Format(CZuString(pattern.c_str()), zuArgs);
  FUZZ_CHECK(std::string(out.c_str(), out.Length()) == PlaceholderModel(pattern, args));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in{data, size};
  switch (in.Byte() % 3) {
    case 0: Narrow(in); break;
    case 1: Wide(in); break;
    default: Placeholders(in); break;
  }
  return 0;
}
