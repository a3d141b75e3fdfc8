#include "text/StringConvert.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

#include "text/UTFCore.h"

namespace {

// Short texts (names, paths) are converted on the stack and copied once
// into a string of the exact size. A long text becomes wide straight in its
// result, in room of the worst-case size reserved at the start, and the
// result is cut to the length produced (no copy). A vector pass counting
// the exact size first was measured no faster: what it saves in clearing a
// smaller string it spends reading the input twice.
constexpr std::size_t kStackUnits = 256;

// A long text becomes UTF-8 a piece at a time on the stack, each piece
// appended to a result whose worst-case room was reserved (not cleared) at
// the start: that room is three or four times what most texts need, and
// clearing it was measured to cost more than copying the pieces from the
// cache. (Wide results are the other way round: their worst case is about
// their size, and the copy costs more than the clearing.)
constexpr std::size_t kPieceUnits = 2048;

// The worst case of output units per input unit.
constexpr std::size_t kUtf8PerWide = sizeof(wchar_t) == 2 ? 3 : 4;

// Where a long text may be cut for the next stretch: at a byte that is not
// a continuation byte, or after three of them, so that no sequence and no
// ill-formed subpart spans the cut and the pieces convert as the whole.
const std::uint8_t* StretchEnd(const std::uint8_t* x) {
  for (int k = 0; k < 4; ++k)
    if (!FXUTFDetail::IsContinuation(x[-k])) return x - k;
  return x;
}

// Converts up to the first NUL. Plain ASCII is widened in one pass that
// also looks for the NUL; other text is searched for it a stretch at a
// time, each just before it is converted, so that the conversion reads the
// stretch from the cache rather than from memory a second time.
std::wstring Utf8ToWide(const char* text, std::size_t length) {
  constexpr std::ptrdiff_t kStretch = 1 << 14;
  const auto* s = reinterpret_cast<const std::uint8_t*>(text);
  try {
    if (length <= kStackUnits) {
      const void* nul = std::memchr(s, 0, length);
      const std::uint8_t* e = nul != nullptr ? static_cast<const std::uint8_t*>(nul) : s + length;
      wchar_t buffer[kStackUnits];
      const wchar_t* end = FXUTFDetail::DecodeUtf8Replacing(s, e, buffer);
      return std::wstring(buffer, static_cast<std::size_t>(end - buffer));
    }
    // The result grows a stretch at a time within the room reserved at the
    // start, so that the zeros its growth writes are still in the cache
    // when the conversion overwrites them.
    std::wstring out;
    out.reserve(length);
    const std::uint8_t* e = s + length;
    while (s != e) {
      const std::uint8_t* stop = e - s > kStretch ? StretchEnd(s + kStretch) : e;
      const std::size_t done = out.size();
      out.resize(done + static_cast<std::size_t>(stop - s));
      wchar_t* t = &out[done];
      const std::uint8_t* rest = FXUTFDetail::WidenAsciiUntilNul(s, stop, t);
      if (rest != stop) {
        const void* nul = std::memchr(rest, 0, static_cast<std::size_t>(stop - rest));
        if (nul != nullptr) e = stop = static_cast<const std::uint8_t*>(nul);
        t = FXUTFDetail::DecodeUtf8Replacing(rest, stop, t);
      }
      out.resize(static_cast<std::size_t>(t - out.data()));
      s = stop;
    }
    return out;
  } catch (const std::bad_alloc&) {
    return std::wstring();
  }
}

// Converts up to the first NUL. A NUL of the output is where the first
// NUL of the input went (no conversion makes one of anything else, and a
// surrogate cut off by it is replaced as it would be at the end), so each
// converted piece is searched rather than the wide input.
std::string WideToUtf8(const wchar_t* text, std::size_t length) {
  const wchar_t* const e = text + length;
  try {
    std::string out;
    if (length > kPieceUnits) out.reserve(length * kUtf8PerWide);
    std::uint8_t buffer[kPieceUnits * kUtf8PerWide];
    for (const wchar_t* s = text; s != e;) {
      // A piece never ends between the units of a surrogate pair.
      const wchar_t* stop = e - s > static_cast<std::ptrdiff_t>(kPieceUnits) ? s + kPieceUnits : e;
      if (stop != e && FXUTFDetail::IsLowSurrogate(FXUTFDetail::Value(*stop))) --stop;
      const std::uint8_t* end = FXUTFDetail::EncodeUtf8Replacing(s, stop, buffer);
      const void* nul = std::memchr(buffer, 0, static_cast<std::size_t>(end - buffer));
      if (nul != nullptr) end = static_cast<const std::uint8_t*>(nul);
      out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(end - buffer));
      if (nul != nullptr) break;
      s = stop;
    }
    return out;
  } catch (const std::bad_alloc&) {
    return std::string();
  }
}

}  // namespace

namespace FXString {

std::string ToString(const std::wstring& text) { return WideToUtf8(text.data(), text.size()); }
std::string ToString(const wchar_t* text) {
  return text == nullptr ? std::string() : WideToUtf8(text, std::wcslen(text));
}

std::wstring ToWstring(const std::string& text) { return Utf8ToWide(text.data(), text.size()); }
std::wstring ToWstring(const char* text) {
  return text == nullptr ? std::wstring() : Utf8ToWide(text, std::strlen(text));
}

std::string ToString(const std::string& text, unsigned long) { return text; }
std::wstring ToWstring(const std::wstring& text, unsigned long) { return text; }

std::string ToString(const char* text) { return text == nullptr ? std::string() : std::string(text); }
std::wstring ToWstring(const wchar_t* text) { return text == nullptr ? std::wstring() : std::wstring(text); }

std::wstring ToTstring(const std::string& text) { return ToWstring(text); }

}  // namespace FXString
