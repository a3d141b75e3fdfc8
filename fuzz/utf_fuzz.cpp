// The UTF transcoders: strict and lenient conversion agree wherever strict
// succeeds, lenient output is always well-formed, a target too small to hold
// everything fails with 111 and the conversion resumes where it stopped, and
// both agree with the never-failing FXString::ToString/ToWstring.
#include <text/StringConvert.h>
#include <text/UTF.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using FXUTF::UTF16;
using FXUTF::UTF32;
using FXUTF::UTF8;

constexpr HRESULT kInsufficientBuffer = static_cast<HRESULT>(0x80070000 | 111);
constexpr HRESULT kTooFew = static_cast<HRESULT>(0x80070000 | 122);

template <class From, class To>
using Converter = CZuError (*)(const From**, const From*, To**, To*, FXUTF::ConversionFlags);

// Converts all of `source`; ok tells success. With `chunk` > 0 the target
// grows by that many units after every 111, which must resume exactly where
// the conversion stopped.
template <class From, class To>
std::vector<To> Convert(Converter<From, To> convert, const std::vector<From>& source, FXUTF::ConversionFlags flags,
                        std::size_t chunk, bool& ok, HRESULT& code) {
  std::vector<To> out(chunk == 0 ? source.size() * 4 + 1 : chunk);
  const From* s = source.data();
  const From* const end = s + source.size();
  std::size_t written = 0;
  for (;;) {
    To* t = out.data() + written;
    const From* before = s;
    CZuError result = convert(&s, end, &t, out.data() + out.size(), flags);
    FUZZ_CHECK(s >= before && s <= end && t >= out.data() + written && t <= out.data() + out.size());
    written = static_cast<std::size_t>(t - out.data());
    code = result.GetErrorCode();
    if (chunk != 0 && code == kInsufficientBuffer) {
      out.resize(out.size() + chunk);
      continue;
    }
    ok = !result;
    if (ok) FUZZ_CHECK(s == end);
    out.resize(written);
    return out;
  }
}

// Well-formed UTF-32: no surrogates, nothing above U+10FFFF.
bool WellFormed(const std::vector<UTF32>& text) {
  for (UTF32 c : text)
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) return false;
  return true;
}

std::vector<UTF32> Widen(const std::wstring& text) { return std::vector<UTF32>(text.begin(), text.end()); }

template <class Char>
std::vector<Char> UpToNul(const std::vector<Char>& text) {
  std::vector<Char> out;
  for (Char c : text) {
    if (c == 0) break;
    out.push_back(c);
  }
  return out;
}

void FromUTF8(const std::vector<UTF8>& source, std::size_t chunk) {
  bool strictOk = false, lenientOk = false, chunkedOk = false;
  HRESULT strictCode = 0, lenientCode = 0, chunkedCode = 0;
  const auto strict = Convert<UTF8, UTF32>(FXUTF::ConvertUTF8ToUTF32, source, FXUTF::strictConversion, 0, strictOk,
                                           strictCode);
  const auto lenient = Convert<UTF8, UTF32>(FXUTF::ConvertUTF8ToUTF32, source, FXUTF::lenientConversion, 0,
                                            lenientOk, lenientCode);
  const auto chunked = Convert<UTF8, UTF32>(FXUTF::ConvertUTF8ToUTF32, source, FXUTF::lenientConversion, chunk,
                                            chunkedOk, chunkedCode);
  FUZZ_CHECK(chunkedOk == lenientOk && chunkedCode == lenientCode && chunked == lenient);
  FUZZ_CHECK(WellFormed(lenient));
  if (strictOk) FUZZ_CHECK(lenientOk && strict == lenient);

  // Through UTF-16 to UTF-32 gives the same code points.
  bool ok16 = false, back16 = false;
  HRESULT code16 = 0, codeBack = 0;
  const auto utf16 = Convert<UTF8, UTF16>(FXUTF::ConvertUTF8ToUTF16, source, FXUTF::lenientConversion, 0, ok16,
                                          code16);
  FUZZ_CHECK(ok16 == lenientOk);
  if (ok16) {
    const auto via16 = Convert<UTF16, UTF32>(FXUTF::ConvertUTF16ToUTF32, utf16, FXUTF::strictConversion, 0, back16,
                                             codeBack);
    FUZZ_CHECK(back16 && via16 == lenient);
  }

  // Strictly valid UTF-8 is what the never-failing conversion reads too,
  // and it comes back byte for byte.
  if (strictOk) {
    const std::vector<UTF8> text = UpToNul(source);
    const std::string narrow(text.begin(), text.end());
    const std::wstring wide = FXString::ToWstring(narrow);
    FUZZ_CHECK(Widen(wide) == UpToNul(strict));
    FUZZ_CHECK(FXString::ToString(wide) == narrow);
  } else {
    // Whatever the input, ToWstring's output is well-formed and survives
    // the strict converters both ways.
    const std::string narrow(source.begin(), source.end());
    const auto wide = Widen(FXString::ToWstring(narrow));
    FUZZ_CHECK(WellFormed(wide));
    const std::string round = FXString::ToString(FXString::ToWstring(narrow));
    const std::vector<UTF8> roundBytes(round.begin(), round.end());
    bool again = false;
    HRESULT codeAgain = 0;
    const auto back = Convert<UTF8, UTF32>(FXUTF::ConvertUTF8ToUTF32, roundBytes, FXUTF::strictConversion, 0, again,
                                           codeAgain);
    FUZZ_CHECK(again && back == wide);
  }
}

void FromUTF32(const std::vector<UTF32>& source, std::size_t chunk) {
  bool strictOk = false, lenientOk = false, chunkedOk = false;
  HRESULT strictCode = 0, lenientCode = 0, chunkedCode = 0;
  const auto strict = Convert<UTF32, UTF8>(FXUTF::ConvertUTF32ToUTF8, source, FXUTF::strictConversion, 0, strictOk,
                                           strictCode);
  const auto lenient = Convert<UTF32, UTF8>(FXUTF::ConvertUTF32ToUTF8, source, FXUTF::lenientConversion, 0,
                                            lenientOk, lenientCode);
  const auto chunked = Convert<UTF32, UTF8>(FXUTF::ConvertUTF32ToUTF8, source, FXUTF::lenientConversion, chunk,
                                            chunkedOk, chunkedCode);
  // Lenient conversion from UTF-32 has nothing left to fail on.
  FUZZ_CHECK(lenientOk && chunkedOk && chunked == lenient);
  FUZZ_CHECK(strictOk == WellFormed(source));
  if (strictOk) FUZZ_CHECK(strict == lenient);

  // The never-failing conversion replaces each bad unit as lenient does.
  if (sizeof(wchar_t) == 4) {
    const std::vector<UTF32> units = UpToNul(source);
    const std::wstring wide(units.begin(), units.end());
    bool ok = false;
    HRESULT code = 0;
    const auto expected = Convert<UTF32, UTF8>(FXUTF::ConvertUTF32ToUTF8, units, FXUTF::lenientConversion, 0, ok,
                                               code);
    const std::string narrow = FXString::ToString(wide);
    FUZZ_CHECK(ok && std::vector<UTF8>(narrow.begin(), narrow.end()) == expected);
  }

  // UTF-32 to UTF-16 and back loses nothing once lenient made it valid.
  bool ok16 = false, okBack = false;
  HRESULT code16 = 0, codeBack = 0;
  const auto utf16 = Convert<UTF32, UTF16>(FXUTF::ConvertUTF32ToUTF16, source, FXUTF::lenientConversion, 0, ok16,
                                           code16);
  FUZZ_CHECK(ok16);
  const auto back = Convert<UTF16, UTF32>(FXUTF::ConvertUTF16ToUTF32, utf16, FXUTF::strictConversion, 0, okBack,
                                          codeBack);
  FUZZ_CHECK(okBack && WellFormed(back));
  if (strictOk) FUZZ_CHECK(back == source);
}

void FromUTF16(std::vector<UTF16> source, std::size_t chunk) {
  // A high surrogate at the very end may be the first half of a pair the
  // next buffer completes: too few units, in either mode.
  while (!source.empty() && source.back() >= 0xD800 && source.back() <= 0xDBFF) {
    bool ok = false;
    HRESULT code = 0;
    Convert<UTF16, UTF8>(FXUTF::ConvertUTF16ToUTF8, source, FXUTF::lenientConversion, 0, ok, code);
    FUZZ_CHECK(!ok && code == kTooFew);
    source.pop_back();
  }
  bool strictOk = false, lenientOk = false, chunkedOk = false;
  HRESULT strictCode = 0, lenientCode = 0, chunkedCode = 0;
  const auto strict = Convert<UTF16, UTF8>(FXUTF::ConvertUTF16ToUTF8, source, FXUTF::strictConversion, 0, strictOk,
                                           strictCode);
  const auto lenient = Convert<UTF16, UTF8>(FXUTF::ConvertUTF16ToUTF8, source, FXUTF::lenientConversion, 0,
                                            lenientOk, lenientCode);
  const auto chunked = Convert<UTF16, UTF8>(FXUTF::ConvertUTF16ToUTF8, source, FXUTF::lenientConversion, chunk,
                                            chunkedOk, chunkedCode);
  FUZZ_CHECK(lenientOk && chunkedOk && chunked == lenient);
  if (strictOk) FUZZ_CHECK(strict == lenient);

  // Same code points as through UTF-32.
  bool ok32 = false, ok8 = false;
  HRESULT code32 = 0, code8 = 0;
  const auto utf32 = Convert<UTF16, UTF32>(FXUTF::ConvertUTF16ToUTF32, source, FXUTF::lenientConversion, 0, ok32,
                                           code32);
  FUZZ_CHECK(ok32 && WellFormed(utf32));
  const auto utf8 = Convert<UTF32, UTF8>(FXUTF::ConvertUTF32ToUTF8, utf32, FXUTF::strictConversion, 0, ok8, code8);
  FUZZ_CHECK(ok8 && utf8 == lenient);

  bool okCopy = false, okCopyStrict = false;
  HRESULT codeCopy = 0, codeCopyStrict = 0;
  const auto copied = Convert<UTF16, UTF16>(FXUTF::CopyUTF16ToUTF16, source, FXUTF::lenientConversion, 0, okCopy,
                                            codeCopy);
  Convert<UTF16, UTF16>(FXUTF::CopyUTF16ToUTF16, source, FXUTF::strictConversion, 0, okCopyStrict, codeCopyStrict);
  FUZZ_CHECK(okCopy && copied.size() == source.size() && okCopyStrict == strictOk);
  if (strictOk) FUZZ_CHECK(copied == source);
}

}  // namespace

// The first byte picks the source form and the growth step of the chunked
// run; the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const unsigned mode = data[0] % 3;
  const std::size_t chunk = 1 + (data[0] >> 2) % 9;
  ++data;
  --size;
  if (mode == 0) {
    FromUTF8(std::vector<UTF8>(data, data + size), chunk);
  } else if (mode == 1) {
    std::vector<UTF16> units(size / 2);
    for (std::size_t i = 0; i < units.size(); ++i)
      units[i] = static_cast<UTF16>(data[2 * i] | (data[2 * i + 1] << 8));
    FromUTF16(units, chunk);
  } else {
    // Mostly near the interesting ranges: the top byte picks a plane.
    std::vector<UTF32> units(size / 3);
    for (std::size_t i = 0; i < units.size(); ++i)
      units[i] = static_cast<UTF32>(data[3 * i] | (data[3 * i + 1] << 8)) |
                 (static_cast<UTF32>(data[3 * i + 2] % 20) << 16) |
                 (data[3 * i + 2] >= 250 ? 0x80000000u : 0u);
    FromUTF32(units, chunk);
  }
  return 0;
}
