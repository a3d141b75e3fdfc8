#include "text/StringAlgo.h"

#include <cstdint>
#include <cstring>

// Match positions are read from bit masks in memory order.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "little-endian targets only");

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

// Narrow search without case: the positions whose first and last bytes
// fold to the needle's first and last are found sixteen at a time (GCC's
// vector types: SSE2 on x86-64), and only those are compared in full. Two
// anchors a needle's length apart rarely both match by chance. A byte folds
// to a lower-case letter f exactly when (byte | 0x20) == f; any other
// character only matches itself.
typedef unsigned char TBytes16 __attribute__((vector_size(16)));
typedef std::uint64_t TWords2 __attribute__((vector_size(16)));

struct TAnchor {
  unsigned char bits;     // ORed in before comparing: 0x20 for letters
  unsigned char pattern;  // what the byte must then equal
};

TAnchor AnchorOf(unsigned char folded) {
  const bool letter = folded >= 'a' && folded <= 'z';
  return {static_cast<unsigned char>(letter ? 0x20 : 0x00), folded};
}

const char* FindFoldedNarrow(const char* hay, std::size_t hayLength, const char* needle, std::size_t needleLength,
                             ECase mode) {
  const char* const end = hay + hayLength;
  const char* const last = end - needleLength;
  const std::size_t gap = needleLength - 1;
  const TAnchor first = AnchorOf(static_cast<unsigned char>(Folded(needle[0], mode)));
  const TAnchor final = AnchorOf(static_cast<unsigned char>(Folded(needle[gap], mode)));
  const TBytes16 bits0 = first.bits - TBytes16{}, pattern0 = first.pattern - TBytes16{};
  const TBytes16 bits1 = final.bits - TBytes16{}, pattern1 = final.pattern - TBytes16{};
  const char* p = hay;
  for (; end - p >= static_cast<std::ptrdiff_t>(gap + 16); p += 16) {
    TBytes16 a, b;
    std::memcpy(&a, p, 16);
    std::memcpy(&b, p + gap, 16);
    const TWords2 hits = reinterpret_cast<TWords2>(((a | bits0) == pattern0) & ((b | bits1) == pattern1));
    if ((hits[0] | hits[1]) == 0) continue;
    for (int h = 0; h < 2; ++h) {
      for (std::uint64_t m = hits[h]; m != 0; m &= m - 1) {
        const char* q = p + 8 * h + (__builtin_ctzll(m) >> 3);
        if (EqualFolded(q, needle, needleLength, mode)) return q;
      }
    }
  }
  for (; p <= last; ++p)
    if (EqualFolded(p, needle, needleLength, mode)) return p;
  return nullptr;
}

template <class Char>
const Char* FindFolded(const Char* hay, std::size_t hayLength, const Char* needle, std::size_t needleLength,
                       ECase mode) {
  if constexpr (sizeof(Char) == 1) {
    return FindFoldedNarrow(hay, hayLength, needle, needleLength, mode);
  } else {
    const Char* const last = hay + (hayLength - needleLength);
    const std::uint32_t first = Folded(needle[0], mode);
    for (const Char* p = hay; p <= last; ++p)
      if (Folded(*p, mode) == first && EqualFolded(p + 1, needle + 1, needleLength - 1, mode)) return p;
    return nullptr;
  }
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
    // A lone quote begins and ends with one, so it opens nothing.
    const bool opens = token.size() > 1 && token.front() == '"' && token.back() != '"';
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

// Copies of the short pieces that joining meets (words, path components)
// as a few moves instead of a call; long ones go to memcpy.
inline void CopyBytes(char* d, const char* s, std::size_t n) {
  if (n > 16) {
    std::memcpy(d, s, n);
  } else if (n >= 8) {
    std::uint64_t head, tail;
    std::memcpy(&head, s, 8);
    std::memcpy(&tail, s + n - 8, 8);
    std::memcpy(d, &head, 8);
    std::memcpy(d + n - 8, &tail, 8);
  } else if (n >= 4) {
    std::uint32_t head, tail;
    std::memcpy(&head, s, 4);
    std::memcpy(&tail, s + n - 4, 4);
    std::memcpy(d, &head, 4);
    std::memcpy(d + n - 4, &tail, 4);
  } else {
    for (std::size_t i = 0; i < n; ++i) d[i] = s[i];
  }
}

// The exact size first, then one copy of each piece. The delimiter is
// held in locals: the byte copies could otherwise alias it.
template <class Iterator, class Char>
void JoinT(Iterator first, Iterator last, const std::basic_string<Char>& delimiter, std::basic_string<Char>& out) {
  out.clear();
  if (first == last) return;
  const char* const separator = reinterpret_cast<const char*>(delimiter.data());
  const std::size_t separatorSize = delimiter.size() * sizeof(Char);
  std::size_t size = 0, count = 0;
  for (Iterator it = first; it != last; ++it, ++count) size += it->size();
  out.resize(size + (count - 1) * delimiter.size());
  char* p = reinterpret_cast<char*>(&out[0]);
  CopyBytes(p, reinterpret_cast<const char*>(first->data()), first->size() * sizeof(Char));
  p += first->size() * sizeof(Char);
  for (Iterator it = std::next(first); it != last; ++it) {
    CopyBytes(p, separator, separatorSize);
    p += separatorSize;
    const std::size_t bytes = it->size() * sizeof(Char);
    CopyBytes(p, reinterpret_cast<const char*>(it->data()), bytes);
    p += bytes;
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
