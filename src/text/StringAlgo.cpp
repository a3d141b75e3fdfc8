#include "text/StringAlgo.h"

#include <cstdint>
#include <cstring>

namespace {

using FXString::Detail::AsciiLower;
using FXString::Detail::ECase;

// Each character as the chosen comparison sees it.
template <class Char>
std::uint32_t Folded(Char c, ECase mode) {
  if constexpr (sizeof(Char) == 1) {
    return AsciiLower(static_cast<unsigned char>(c));
  } else {
    const auto u = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Char>>(c));
    return mode == FXString::Detail::kFoldLowByte ? AsciiLower(u & 0xFFu) : AsciiLower(u);
  }
}

template <class Char>
bool EqualFolded(const Char* a, const Char* b, std::size_t n, ECase mode) {
  for (std::size_t i = 0; i < n; ++i)
    if (a[i] != b[i] && Folded(a[i], mode) != Folded(b[i], mode)) return false;
  return true;
}

// The high bit of every byte of v that is zero, and no other bit.
std::uint64_t ZeroBytes(std::uint64_t v) {
  const std::uint64_t low7 = 0x7F7F7F7F7F7F7F7Full;
  return ~(((v & low7) + low7) | v | low7);
}

// The next position in [p, last] whose byte folds to `first`, a letter:
// exactly the bytes b with (b | 0x20) == first. Eight bytes are tested at
// once while eight can be read before `end`.
const char* NextLetter(const char* p, const char* last, const char* end, unsigned char first) {
  const std::uint64_t pattern = 0x0101010101010101ull * first;
  for (; p <= last && end - p >= 8; p += 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    if (ZeroBytes((word | 0x2020202020202020ull) ^ pattern) == 0) continue;
    for (int k = 0; k < 8 && p + k <= last; ++k)
      if ((static_cast<unsigned char>(p[k]) | 0x20u) == first) return p + k;
  }
  for (; p <= last; ++p)
    if ((static_cast<unsigned char>(*p) | 0x20u) == first) return p;
  return nullptr;
}

template <class Char>
const Char* FindFolded(const Char* hay, std::size_t hayLength, const Char* needle, std::size_t needleLength,
                       ECase mode) {
  const Char* const end = hay + hayLength;
  const Char* const last = end - needleLength;
  const std::uint32_t first = Folded(needle[0], mode);
  for (const Char* p = hay; p <= last; ++p) {
    if constexpr (sizeof(Char) == 1) {
      if (first >= 'a' && first <= 'z') {
        p = NextLetter(p, last, end, static_cast<unsigned char>(first));
      } else {
        p = static_cast<const Char*>(std::memchr(p, static_cast<int>(first), static_cast<std::size_t>(last - p) + 1));
      }
      if (p == nullptr) return nullptr;
    } else {
      if (Folded(*p, mode) != first) continue;
    }
    if (EqualFolded(p + 1, needle + 1, needleLength - 1, mode)) return p;
  }
  return nullptr;
}

template <class Char>
const Char* FindT(const Char* hay, std::size_t hayLength, const Char* needle, std::size_t needleLength,
                  ECase mode) {
  if (needleLength == 0) return hay;
  if (needleLength > hayLength) return nullptr;
  if (mode != FXString::Detail::kExact) return FindFolded(hay, hayLength, needle, needleLength, mode);
  const std::size_t at = std::basic_string_view<Char>(hay, hayLength).find(needle, 0, needleLength);
  return at == std::basic_string_view<Char>::npos ? nullptr : hay + at;
}

template <class Char, class Container>
void SplitT(const std::basic_string<Char>& text, const std::basic_string<Char>& delimiter, Container& out,
            unsigned int flags) {
  out.clear();
  if (text.empty()) return;
  const std::size_t n = delimiter.size();
  if (n == 0) {
    out.push_back(text);
    return;
  }
  const bool merge = (flags & FXString::kSplitMergeDelimiters) != 0;
  const Char* s = text.data();
  const Char* const end = s + text.size();
  for (;;) {
    const Char* hit = FindT(s, static_cast<std::size_t>(end - s), delimiter.data(), n, FXString::Detail::kExact);
    if (hit == nullptr) {
      out.emplace_back(s, end);
      return;
    }
    out.emplace_back(s, hit);
    s = hit + n;
    if (merge)
      while (static_cast<std::size_t>(end - s) >= n && std::char_traits<Char>::compare(s, delimiter.data(), n) == 0)
        s += n;
  }
}

// Joins a token that opens a double-quoted run with the tokens up to the one
// that closes it.
template <class Container>
void KeepQuotedRuns(Container& tokens, const std::string& delimiter) {
  auto it = tokens.begin();
  while (it != tokens.end()) {
    const std::string& token = *it;
    const bool opens = !token.empty() && token.front() == '"' && (token.size() == 1 || token.back() != '"');
    auto next = std::next(it);
    if (opens) {
      while (next != tokens.end()) {
        const bool closes = !next->empty() && next->back() == '"';
        it->append(delimiter).append(*next);
        next = tokens.erase(next);
        if (closes) break;
      }
    }
    it = next;
  }
}

// The exact size first, then one copy of each piece.
template <class Iterator, class Char>
void JoinT(Iterator first, Iterator last, const std::basic_string<Char>& delimiter, std::basic_string<Char>& out) {
  out.clear();
  if (first == last) return;
  std::size_t size = 0, count = 0;
  for (Iterator it = first; it != last; ++it, ++count) size += it->size();
  out.resize(size + (count - 1) * delimiter.size());
  Char* p = &out[0];
  typedef std::char_traits<Char> Traits;
  p = Traits::copy(p, first->data(), first->size()) + first->size();
  for (Iterator it = std::next(first); it != last; ++it) {
    p = Traits::copy(p, delimiter.data(), delimiter.size()) + delimiter.size();
    p = Traits::copy(p, it->data(), it->size()) + it->size();
  }
}

}  // namespace

namespace FXString {

namespace Detail {

const char* Find(const char* hay, std::size_t hayLength, const char* needle, std::size_t needleLength, ECase mode) {
  return FindT(hay, hayLength, needle, needleLength, mode);
}
const wchar_t* Find(const wchar_t* hay, std::size_t hayLength, const wchar_t* needle, std::size_t needleLength,
                    ECase mode) {
  return FindT(hay, hayLength, needle, needleLength, mode);
}

void WriteDelimiter(std::stringstream& stream, const char* delimiter, std::size_t length) {
  const std::streamoff written = stream.tellp();
  if (length == 0 || written <= 0) return;
  if (length == 1) {
    const std::stringstream::int_type c = stream.get();
    if (c == std::stringstream::traits_type::eof()) stream.clear();  // read position at the end
    if (c != std::stringstream::traits_type::to_int_type(*delimiter)) stream.write(delimiter, 1);
    return;
  }
  const auto n = static_cast<std::streamoff>(length);
  if (written > n) {
    stream.seekg(-n, std::ios_base::end);
    bool same = true;
    for (std::size_t i = 0; i < length && same; ++i)
      same = stream.get() == std::stringstream::traits_type::to_int_type(delimiter[i]);
    if (!stream) stream.clear();
    if (same) return;
  }
  stream.write(delimiter, n);
}

}  // namespace Detail

void Split(const std::string& text, const std::string& delimiter, std::vector<std::string>& out,
           unsigned int flags) {
  SplitT(text, delimiter, out, flags);
}
void Split(const std::string& text, const std::string& delimiter, std::list<std::string>& out, unsigned int flags) {
  SplitT(text, delimiter, out, flags);
}
void Split(const std::wstring& text, const std::wstring& delimiter, std::vector<std::wstring>& out,
           unsigned int flags) {
  SplitT(text, delimiter, out, flags);
}
void Split(const std::wstring& text, const std::wstring& delimiter, std::list<std::wstring>& out,
           unsigned int flags) {
  SplitT(text, delimiter, out, flags);
}

void SplitArguments(const std::string& text, const std::string& delimiter, std::vector<std::string>& out,
                    unsigned int flags) {
  SplitT(text, delimiter, out, flags);
  KeepQuotedRuns(out, delimiter);
}
void SplitArguments(const std::string& text, const std::string& delimiter, std::list<std::string>& out,
                    unsigned int flags) {
  SplitT(text, delimiter, out, flags);
  KeepQuotedRuns(out, delimiter);
}
void SplitPaths(const std::string& text, const std::string& delimiter, std::vector<std::string>& out,
                unsigned int flags) {
  SplitArguments(text, delimiter, out, flags);
}

void Join(const std::list<std::string>& items, const std::string& delimiter, std::string& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}
void Join(const std::set<std::string>& items, const std::string& delimiter, std::string& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}
void Join(const std::vector<std::string>& items, const std::string& delimiter, std::string& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}
void Join(const std::list<std::wstring>& items, const std::wstring& delimiter, std::wstring& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}
void Join(const std::set<std::wstring>& items, const std::wstring& delimiter, std::wstring& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}
void Join(const std::vector<std::wstring>& items, const std::wstring& delimiter, std::wstring& out) {
  JoinT(items.begin(), items.end(), delimiter, out);
}

std::string Join(const std::list<std::string>& items, const std::string& delimiter) {
  std::string out;
  JoinT(items.begin(), items.end(), delimiter, out);
  return out;
}
std::string Join(const std::set<std::string>& items, const std::string& delimiter) {
  std::string out;
  JoinT(items.begin(), items.end(), delimiter, out);
  return out;
}
std::string Join(const std::vector<std::string>& items, const std::string& delimiter) {
  std::string out;
  JoinT(items.begin(), items.end(), delimiter, out);
  return out;
}
std::string Join(const std::vector<std::string>& items, const std::string& delimiter, std::size_t first,
                 std::size_t count) {
  std::string out;
  if (first >= items.size()) return out;
  const std::size_t last = count < items.size() - first ? first + count : items.size();
  JoinT(items.begin() + static_cast<std::ptrdiff_t>(first), items.begin() + static_cast<std::ptrdiff_t>(last),
        delimiter, out);
  return out;
}

}  // namespace FXString
