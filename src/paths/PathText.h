// The text rules shared by the path functions, once for both character
// types. Internal to the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"
#include "platform/ZuTypes.h"

namespace FXPath {
namespace Detail {

template <class Char>
using TView = std::basic_string_view<Char>;
template <class Char>
using TString = std::basic_string<Char>;

template <class Char>
constexpr Char kSep = Char('\\');

template <class Char>
Char Lower(Char c) {
  return (c >= Char('A') && c <= Char('Z')) ? static_cast<Char>(c - Char('A') + Char('a')) : c;
}

// Whether s begins with the ASCII literal, folding case unless exact.
template <class Char>
bool StartsWith(TView<Char> s, std::string_view literal, bool exact = false) {
  if (s.size() < literal.size()) return false;
  for (std::size_t i = 0; i < literal.size(); ++i) {
    const Char c = s[i], l = static_cast<Char>(literal[i]);
    if (c != l && (exact || Lower(c) != Lower(l))) return false;
  }
  return true;
}

// A word of characters with the ASCII capitals made small, lane by lane
// (a lane is one character: 8, 16 or 32 bits). Per lane, with h its top
// bit: the top bit of (x & ~h) + (h - 'A') says the value below h is at
// least 'A', of (x & ~h) + (h - 'Z' - 1) that it is above 'Z'; a lane with h
// set is no ASCII capital and stays. No carry crosses a lane.
template <class Char>
std::uint64_t FoldAsciiWord(std::uint64_t x) {
  constexpr unsigned kBits = 8 * sizeof(Char);
  constexpr std::uint64_t kOnes = ~std::uint64_t(0) / ((std::uint64_t(1) << kBits) - 1);  // 1 per lane
  constexpr std::uint64_t kHigh = kOnes << (kBits - 1);
  const std::uint64_t low = x & ~kHigh;
  const std::uint64_t atLeastA = low + (kHigh - 'A' * kOnes);
  const std::uint64_t aboveZ = low + (kHigh - ('Z' + 1) * kOnes);
  const std::uint64_t capital = atLeastA & ~aboveZ & ~x & kHigh;
  return x | (capital >> (kBits - 1 - 5));  // the top bit moved onto 0x20
}

inline std::uint64_t LoadWord(const void* at) {
  std::uint64_t w;
  std::memcpy(&w, at, sizeof w);
  return w;
}

// The rest of EqualNoCase from the byte offset `from` on, where the texts
// first differ in their bytes: out of line, so that the loop over equal
// words stays small enough to inline.
bool EqualFoldedFrom(TView<char> a, TView<char> b, std::size_t from);
bool EqualFoldedFrom(TView<wchar_t> a, TView<wchar_t> b, std::size_t from);

// _strnicmp / _wcsnicmp equality. Most paths compared are spelled alike, so
// equal words are passed over first, inline and two at a time (a call to
// memcmp costs more than such a comparison); case is folded only from the
// first word that differs. The last word overlaps the one before rather than ending in a
// loop over the rest: it still holds whole characters, 8 being a multiple
// of every character size.
template <class Char>
bool EqualNoCase(TView<Char> a, TView<Char> b) {
  if (a.size() != b.size()) return false;
  const auto* pa = reinterpret_cast<const unsigned char*>(a.data());
  const auto* pb = reinterpret_cast<const unsigned char*>(b.data());
  const std::size_t bytes = a.size() * sizeof(Char);
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (bytes < kWord) return EqualFoldedFrom(a, b, 0);
  std::size_t i = 0;
  for (; i + 2 * kWord < bytes; i += 2 * kWord)
    if (((LoadWord(pa + i) ^ LoadWord(pb + i)) | (LoadWord(pa + i + kWord) ^ LoadWord(pb + i + kWord))) != 0)
      return EqualFoldedFrom(a, b, i);
  if (i + kWord < bytes && LoadWord(pa + i) != LoadWord(pb + i)) return EqualFoldedFrom(a, b, i);
  const std::size_t last = bytes - kWord;
  return LoadWord(pa + last) == LoadWord(pb + last) || EqualFoldedFrom(a, b, last);
}

template <class Char>
void AppendAscii(TString<Char>& s, std::string_view literal) {
  for (char c : literal) s.push_back(static_cast<Char>(c));
}

template <class Char>
bool IsDriveLetter(Char c) {
  return (c >= Char('a') && c <= Char('z')) || (c >= Char('A') && c <= Char('Z'));
}

// "X:" at the start (any character before the colon, as the rules read).
template <class Char>
bool HasDriveColon(TView<Char> p) {
  return p.size() >= 2 && p[1] == Char(':');
}

// A path reduced for sameness and ancestry: where its comparable rest
// starts and how long it is. The offset also tells the marks: only the UNC
// forms ("\\", "\\?\UNC\") reduce by 2 or 8; a single leading "\" by 1.
struct TReduced {
  std::size_t offset = 0;
  std::size_t length = 0;
  bool Unc() const { return offset == 2 || offset == 8; }
};

template <class Char>
constexpr Char kLongPrefix[4] = {Char('\\'), Char('\\'), Char('?'), Char('\\')};

template <class Char>
TReduced Reduce(TView<Char> p) {
  // This runs for every comparison: the long prefix is tested as one block
  // (a single load for narrow text), and a letter c is 'u' or 'U' exactly
  // when (c | 0x20) == 'u'.
  constexpr Char kSepChar = kSep<Char>;
  const std::size_t n = p.size();
  std::size_t offset;
  if (n >= 4 && std::memcmp(p.data(), kLongPrefix<Char>, sizeof kLongPrefix<Char>) == 0)
    offset = n >= 8 && (p[4] | Char(0x20)) == Char('u') && (p[5] | Char(0x20)) == Char('n') &&
                     (p[6] | Char(0x20)) == Char('c') && p[7] == kSepChar
                 ? 8
                 : 4;
  else if (n == 0 || p[0] != kSepChar)
    offset = 0;
  else
    offset = n >= 2 && p[1] == kSepChar ? 2 : 1;
  const std::size_t length = n - offset;
  return {offset, length > 0 && p[n - 1] == kSepChar ? length - 1 : length};
}

// The ancestry mark "relative": a single leading "\", or no leading "\" and
// no drive colon (the empty path too).
template <class Char>
bool Relative(TView<Char> p, const TReduced& r) {
  return r.offset == 1 || (r.offset == 0 && !HasDriveColon(p));
}

template <class Char>
bool DevicePath(TView<Char> p) {
  return p.size() >= 21 && StartsWith(p, "\\\\?\\GLOBALROOT\\Device");
}

template <class Char>
bool ShadowPath(TView<Char> p) {
  return p.size() >= 46 && StartsWith(p, "\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy");
}

template <class Char>
bool VolumeGuidPath(TView<Char> p) {
  if (StartsWith(p, "\\\\?\\Volume{")) return true;
  if (!StartsWith(p, "\\\\?\\") && !StartsWith(p, "\\\\.\\")) return false;
  const std::size_t open = p.find(Char('{'));
  if (open == TView<Char>::npos) return false;
  const std::size_t close = p.find(Char('}'), open + 1);
  return close != TView<Char>::npos && close - open - 1 == 36;
}

template <class Char>
bool VolumeUniqueId(TView<Char> text) {
  constexpr std::string_view kPrefix = "UniqueId:";
  if (!StartsWith(text, kPrefix)) return false;
  const TView<Char> digits = text.substr(kPrefix.size());
  if (digits.empty() || digits.size() % 2 != 0) return false;
  for (Char c : digits) {
    const Char l = Lower(c);
    if (!((l >= Char('0') && l <= Char('9')) || (l >= Char('a') && l <= Char('f')))) return false;
  }
  return true;
}

template <class Char>
bool SamePath(TView<Char> a, TView<Char> b) {
  const TReduced ra = Reduce(a), rb = Reduce(b);
  return ra.Unc() == rb.Unc() && EqualNoCase(TView<Char>(a.data() + ra.offset, ra.length),
                                             TView<Char>(b.data() + rb.offset, rb.length));
}

template <class Char>
bool Ancestor(TView<Char> a, TView<Char> b, bool allowEqual) {
  const TReduced ra = Reduce(a), rb = Reduce(b);
  const bool relative = Relative(a, ra);
  if (ra.Unc() != rb.Unc() || relative != Relative(b, rb) || ra.length > rb.length) return false;
  if (ra.length > 0 &&
      !EqualNoCase(TView<Char>(a.data() + ra.offset, ra.length), TView<Char>(b.data() + rb.offset, ra.length)))
    return false;
  if (ra.length == rb.length) return allowEqual;
  if (!relative || ra.length > 0) return b[rb.offset + ra.length] == kSep<Char>;
  return true;
}

// The length of the root (see Path.h), or false for an unterminated
// "\\?\Volume{".
template <class Char>
bool RootLength(TView<Char> p, std::size_t& length) {
  // Up to and with the next separator from `from`, or the whole text.
  auto through = [&p](std::size_t from) {
    const std::size_t at = p.find(kSep<Char>, from);
    return at == TView<Char>::npos ? p.size() : at + 1;
  };
  if (StartsWith(p, "\\\\?\\")) {
    const TView<Char> rest = p.substr(4);
    if (StartsWith(rest, "UNC\\")) {
      const std::size_t server = through(8);
      length = server < p.size() ? through(server) : server;
    } else if (StartsWith(rest, "GLOBALROOT\\Device\\")) {
      length = through(4 + 18);
    } else if (StartsWith(rest, "Volume{")) {
      const std::size_t close = p.find(Char('}'), 11);
      if (close == TView<Char>::npos) return false;
      length = close + 1 < p.size() && p[close + 1] == kSep<Char> ? close + 2 : close + 1;
    } else {
      length = through(4);
    }
  } else if (StartsWith(p, "\\\\.\\")) {
    length = through(4);
  } else if (StartsWith(p, "\\\\")) {
    const std::size_t server = through(2);
    length = server < p.size() ? through(server) : server;
  } else if (HasDriveColon(p)) {
    length = p.size() > 2 && p[2] == kSep<Char> ? 3 : 2;
  } else {
    length = !p.empty() && p[0] == kSep<Char> ? 1 : 0;
  }
  return true;
}

// Fully qualified: a root other than "" and "\" (and a drive's root only
// with its separator).
template <class Char>
bool IsFullyQualified(TView<Char> p) {
  if (StartsWith(p, "\\\\")) return true;
  return HasDriveColon(p) && p.size() > 2 && (p[2] == kSep<Char> || p[2] == Char('/'));
}

// A path of kMaxPathLength characters or more, reported by `function`.
inline CZuError TooLong(const char* function, std::size_t length) {
  return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_FILENAME_EXCED_RANGE,
                                 "Path is too long, Length=%llu", static_cast<unsigned long long>(length));
}

// The rules of Append: how the base changes, without allocating more than
// the one growth of the result.
template <class Char>
struct TAppendPlan {
  bool nothing = false;
  bool separator = false;
  TView<Char> tail;
};

template <class Char>
TAppendPlan<Char> PlanAppend(TView<Char> base, TView<Char> tail, unsigned int flags) {
  TAppendPlan<Char> plan;
  if ((flags & kAppendEmptyTail) == 0 && tail.empty()) {
    plan.nothing = true;
    return plan;
  }
  plan.separator = base.empty() ? (flags & kAppendNoLeadingDelimiter) == 0 : base.back() != kSep<Char>;
  plan.tail = !tail.empty() && tail.front() == kSep<Char> ? tail.substr(1) : tail;
  return plan;
}

template <class Char>
CZuError AppendTo(TString<Char>& base, TView<Char> tail, unsigned int flags) {
  const TAppendPlan<Char> plan = PlanAppend<Char>(base, tail, flags);
  if (plan.nothing) return CZuError::Success();
  const std::size_t length = base.size() + (plan.separator ? 1 : 0) + plan.tail.size();
  if (length >= kMaxPathLength)
    return TooLong("FXPath::Append", length);
  base.reserve(length);
  if (plan.separator) base.push_back(kSep<Char>);
  base.append(plan.tail);
  return CZuError::Success();
}

// Narrow text that reaches the system must be UTF-8; wide text must hold no
// lone surrogate (UTF-16) or value beyond U+10FFFF.
bool IsWellFormed(TView<char> text);
bool IsWellFormed(TView<wchar_t> text);

// Where in the path the part below the deepest registered synthetic mount
// point that contains it begins; 0 when none does.
std::size_t DeepestRegisteredMountEnd(TView<char> path);
std::size_t DeepestRegisteredMountEnd(TView<wchar_t> path);

// The text for error messages (UTF-8).
inline std::string Printable(TView<char> text) { return std::string(text); }
std::string Printable(TView<wchar_t> text);

// The narrow text as the system layer takes it (UTF-8) and back.
inline const std::string& ToSystem(const std::string& text) { return text; }
std::string ToSystem(const std::wstring& text);
inline void FromSystem(const std::string& text, std::string& out) { out = text; }
void FromSystem(const std::string& text, std::wstring& out);

}  // namespace Detail
}  // namespace FXPath
