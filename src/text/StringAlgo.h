// String algorithms over std::string and std::wstring.
//
// Narrow and wide variants follow the same rules and share one template.
// Case-insensitive work is ASCII folding only, character by character, as
// the C runtime does in its classic locale: no locale is consulted anywhere.
#pragma once

#include <cstddef>
#include <list>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "ZuUtilsExport.h"

namespace FXString {

namespace Detail {

// Keeps a parameter out of template deduction, so that a literal or a
// standard string may be passed where the first argument fixed the type.
template <class T>
struct TNonDeduced {
  typedef T type;
};
template <class Char>
using TView = typename TNonDeduced<std::basic_string_view<Char>>::type;

template <class Char>
Char AsciiLower(Char c) {
  return (c >= Char('A') && c <= Char('Z')) ? static_cast<Char>(c - Char('A') + Char('a')) : c;
}
template <class Char>
Char AsciiUpper(Char c) {
  return (c >= Char('a') && c <= Char('z')) ? static_cast<Char>(c - Char('a') + Char('A')) : c;
}

// _strnicmp / _wcsnicmp equality over n characters.
template <class Char>
bool EqualNoCase(const Char* a, const Char* b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (a[i] != b[i] && AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  return true;
}

// How Find compares: exactly; folding ASCII letters as _strnicmp and
// _wcsnicmp do; or as FindString without case, which for wide text folds the
// low byte of each character and compares only those (so L'A' matches
// U+0161, whose low byte is 'a'). Narrow text folds the same in both ways.
enum ECase { kExact, kFoldAscii, kFoldLowByte };

// The first match of the needle in [hay, hay + hayLength), or null; an
// empty needle matches at the start.
ZUUTILS_API const char* Find(const char* hay, std::size_t hayLength, const char* needle, std::size_t needleLength,
                             ECase mode);
ZUUTILS_API const wchar_t* Find(const wchar_t* hay, std::size_t hayLength, const wchar_t* needle,
                                std::size_t needleLength, ECase mode);

// Writes the delimiter to the stream when AppendWithDelimiter wants one.
ZUUTILS_API void WriteDelimiter(std::stringstream& stream, const char* delimiter, std::size_t length);

}  // namespace Detail

// Split and the forms built on it: bit 0 of the flags erases further
// delimiters right after one, so runs of delimiters give no empty tokens
// between them (a leading or trailing delimiter still gives an empty first
// or last token).
constexpr unsigned int kSplitMergeDelimiters = 1;

// The output is cleared first; an empty text gives no tokens. The
// delimiter is a whole string, matched exactly; an empty one gives the
// whole text as one token. 'a,,b' on ',' gives 'a', '', 'b' (merged:
// 'a', 'b'); 'a,' gives 'a', ''.
ZUUTILS_API void Split(const std::string& text, const std::string& delimiter, std::vector<std::string>& out,
                       unsigned int flags = 0);
ZUUTILS_API void Split(const std::string& text, const std::string& delimiter, std::list<std::string>& out,
                       unsigned int flags = 0);
ZUUTILS_API void Split(const std::wstring& text, const std::wstring& delimiter, std::vector<std::wstring>& out,
                       unsigned int flags = 0);
ZUUTILS_API void Split(const std::wstring& text, const std::wstring& delimiter, std::list<std::wstring>& out,
                       unsigned int flags = 0);

// As Split, and a token that begins with a double quote and does not end
// with one (a lone quote does both, so it opens nothing) is joined with the following
// tokens, the delimiter put back between them, up to one that ends with a
// double quote (or the end of the text). The quotes stay in the token:
// 'a "b c" d' on ' ' gives 'a', '"b c"', 'd'.
ZUUTILS_API void SplitArguments(const std::string& text, const std::string& delimiter,
                                std::vector<std::string>& out, unsigned int flags = 0);
ZUUTILS_API void SplitArguments(const std::string& text, const std::string& delimiter, std::list<std::string>& out,
                                unsigned int flags = 0);
// A list of paths, split as SplitArguments does: a quoted path may hold
// the delimiter ('"C:\a;b";D:\c' on ';' gives '"C:\a;b"', 'D:\c').
ZUUTILS_API void SplitPaths(const std::string& text, const std::string& delimiter, std::vector<std::string>& out,
                            unsigned int flags = 0);

// The elements with the delimiter between them (a set in its order); empty
// elements are kept, an empty container gives "".
ZUUTILS_API void Join(const std::list<std::string>& items, const std::string& delimiter, std::string& out);
ZUUTILS_API void Join(const std::set<std::string>& items, const std::string& delimiter, std::string& out);
ZUUTILS_API void Join(const std::vector<std::string>& items, const std::string& delimiter, std::string& out);
ZUUTILS_API void Join(const std::list<std::wstring>& items, const std::wstring& delimiter, std::wstring& out);
ZUUTILS_API void Join(const std::set<std::wstring>& items, const std::wstring& delimiter, std::wstring& out);
ZUUTILS_API void Join(const std::vector<std::wstring>& items, const std::wstring& delimiter, std::wstring& out);
ZUUTILS_API std::string Join(const std::list<std::string>& items, const std::string& delimiter);
ZUUTILS_API std::string Join(const std::set<std::string>& items, const std::string& delimiter);
ZUUTILS_API std::string Join(const std::vector<std::string>& items, const std::string& delimiter);
// The elements first .. first + count - 1, cut at the end of the vector.
ZUUTILS_API std::string Join(const std::vector<std::string>& items, const std::string& delimiter, std::size_t first,
                             std::size_t count);

// Writes the value to the stream, after the delimiter where one is wanted.
// A delimiter of other than one character is left out when the stream
// already ends with it (and never written when empty or on an empty
// stream). A one-character delimiter is compared with the character at the
// stream's read position, which then moves on by one: the first call that
// finds text compares the first character, the next one the second, and
// so on. Older callers depend on exactly that. When the read position
// reaches the end the delimiter is written and the stream stays usable.
template <class T>
void AppendWithDelimiter(std::stringstream& stream, const T& value, const std::string& delimiter) {
  Detail::WriteDelimiter(stream, delimiter.data(), delimiter.size());
  stream << value;
}
template <class T>
void AppendWithDelimiter(std::stringstream& stream, const T& value, const char* delimiter) {
  const std::string_view view = delimiter == nullptr ? std::string_view() : std::string_view(delimiter);
  Detail::WriteDelimiter(stream, view.data(), view.size());
  stream << value;
}
template <class T>
void AppendWithDelimiter(std::stringstream& stream, const T& value, char delimiter) {
  Detail::WriteDelimiter(stream, &delimiter, 1);
  stream << value;
}

// `chars` is a set: the longest leading and trailing runs of its members are
// removed; a string made only of them becomes empty.
template <class Char>
void TrimLeft(std::basic_string<Char>& s, const Char* chars) {
  s.erase(0, s.find_first_not_of(chars));
}
template <class Char>
void TrimRight(std::basic_string<Char>& s, const Char* chars) {
  const auto last = s.find_last_not_of(chars);
  s.erase(last == std::basic_string<Char>::npos ? 0 : last + 1);
}
template <class Char>
void Trim(std::basic_string<Char>& s, const Char* chars) {
  TrimRight(s, chars);
  TrimLeft(s, chars);
}

// ASCII letters only.
template <class Char>
void ToLower(std::basic_string<Char>& s) {
  for (Char& c : s) c = Detail::AsciiLower(c);
}
template <class Char>
void ToUpper(std::basic_string<Char>& s) {
  for (Char& c : s) c = Detail::AsciiUpper(c);
}

// The first match in the haystack, or null: an empty needle matches the
// haystack itself; an empty haystack holds no other needle; null matches
// nothing.
template <class Char>
const Char* FindString(const Char* haystack, const Char* needle, bool ignoreCase) {
  if (haystack == nullptr || needle == nullptr) return nullptr;
  const std::basic_string_view<Char> hay(haystack), pin(needle);
  if (hay.empty()) return pin.empty() ? haystack : nullptr;
  return Detail::Find(hay.data(), hay.size(), pin.data(), pin.size(),
                      ignoreCase ? Detail::kFoldLowByte : Detail::kExact);
}
// The index of the first match in characters, or -1.
template <class Char>
long long FindStringPos(const std::basic_string<Char>& haystack, Detail::TView<Char> needle, bool ignoreCase) {
  const Char* hit = Detail::Find(haystack.data(), haystack.size(), needle.data(), needle.size(),
                                 ignoreCase ? Detail::kFoldLowByte : Detail::kExact);
  return hit == nullptr ? -1 : static_cast<long long>(hit - haystack.data());
}

// Each removes its prefix or suffix when the string is not empty and has
// it, and says whether it did; an empty prefix or suffix counts as present.
template <class Char>
bool RemoveLeft(std::basic_string<Char>& s, Detail::TView<Char> prefix) {
  if (s.empty() || s.size() < prefix.size() || s.compare(0, prefix.size(), prefix.data(), prefix.size()) != 0)
    return false;
  s.erase(0, prefix.size());
  return true;
}
template <class Char>
bool RemoveLeftNoCase(std::basic_string<Char>& s, Detail::TView<Char> prefix) {
  if (s.empty() || s.size() < prefix.size() || !Detail::EqualNoCase(s.data(), prefix.data(), prefix.size()))
    return false;
  s.erase(0, prefix.size());
  return true;
}
template <class Char>
bool RemoveRight(std::basic_string<Char>& s, Detail::TView<Char> suffix) {
  if (s.empty() || s.size() < suffix.size() ||
      s.compare(s.size() - suffix.size(), suffix.size(), suffix.data(), suffix.size()) != 0)
    return false;
  s.erase(s.size() - suffix.size());
  return true;
}
template <class Char>
bool RemoveRightNoCase(std::basic_string<Char>& s, Detail::TView<Char> suffix) {
  if (s.empty() || s.size() < suffix.size() ||
      !Detail::EqualNoCase(s.data() + s.size() - suffix.size(), suffix.data(), suffix.size()))
    return false;
  s.erase(s.size() - suffix.size());
  return true;
}

namespace Detail {

template <class Char>
int ReplaceAllWith(std::basic_string<Char>& s, TView<Char> from, TView<Char> to, std::size_t start,
                   bool ignoreCase) {
  if (from.empty() || start > s.size()) return 0;
  // The result is built in one pass; nothing is allocated when nothing
  // matches. The search goes on after each match in the source, which is
  // where it would go on after the inserted text in place.
  std::basic_string<Char> out;
  int count = 0;
  std::size_t done = 0, at = start;
  const ECase mode = ignoreCase ? kFoldAscii : kExact;
  while (const Char* hit = Find(s.data() + at, s.size() - at, from.data(), from.size(), mode)) {
    const std::size_t i = static_cast<std::size_t>(hit - s.data());
    out.append(s, done, i - done).append(to.data(), to.size());
    done = at = i + from.size();
    ++count;
  }
  if (count > 0) {
    out.append(s, done, std::basic_string<Char>::npos);
    s.swap(out);
  }
  return count;
}

template <class Char>
int ReplaceLeftWith(std::basic_string<Char>& s, TView<Char> prefix, TView<Char> replacement, bool ignoreCase) {
  if (prefix.empty() || s.size() < prefix.size()) return 0;
  const bool match = ignoreCase ? EqualNoCase(s.data(), prefix.data(), prefix.size())
                                : s.compare(0, prefix.size(), prefix.data(), prefix.size()) == 0;
  if (!match) return 0;
  s.replace(0, prefix.size(), replacement.data(), replacement.size());
  return 1;
}

template <class Char>
int ReplaceRightWith(std::basic_string<Char>& s, TView<Char> suffix, TView<Char> replacement, bool ignoreCase) {
  if (suffix.empty() || s.size() < suffix.size()) return 0;
  const std::size_t at = s.size() - suffix.size();
  const bool match = ignoreCase ? EqualNoCase(s.data() + at, suffix.data(), suffix.size())
                                : s.compare(at, suffix.size(), suffix.data(), suffix.size()) == 0;
  if (!match) return 0;
  s.replace(at, suffix.size(), replacement.data(), replacement.size());
  return 1;
}

}  // namespace Detail

// Replaces every occurrence from index `start` on and returns how many;
// the search resumes after the inserted text, so 'aa' with 'a' -> 'aa'
// gives 'aaaa'. An empty search text replaces nothing.
template <class Char>
int ReplaceAll(std::basic_string<Char>& s, Detail::TView<Char> from, Detail::TView<Char> to,
               std::size_t start = 0) {
  return Detail::ReplaceAllWith<Char>(s, from, to, start, false);
}
template <class Char>
int ReplaceAllNoCase(std::basic_string<Char>& s, Detail::TView<Char> from, Detail::TView<Char> to,
                     std::size_t start = 0) {
  return Detail::ReplaceAllWith<Char>(s, from, to, start, true);
}
template <class Char>
std::basic_string<Char> CopyAndReplaceAll(const std::basic_string<Char>& source, Detail::TView<Char> from,
                                          Detail::TView<Char> to) {
  std::basic_string<Char> copy(source);
  ReplaceAll<Char>(copy, from, to, 0);
  return copy;
}

// Replaces the text between each `left` and the next `right` after it,
// keeping the markers, from index `start` on; returns how many. The next
// search starts where `right` was found before the replacement, not
// adjusted for the change of length: a shorter replacement may make it skip
// text, a longer one start inside the inserted text. A replacement that
// keeps producing new markers stops after as many replacements as the text
// had characters.
template <class Char>
int ReplaceAllByMatchingLeftAndRight(std::basic_string<Char>& s, Detail::TView<Char> left,
                                     Detail::TView<Char> right, Detail::TView<Char> replacement,
                                     std::size_t start = 0) {
  if (s.empty() || left.empty() || right.empty() || start >= s.size()) return 0;
  const std::size_t limit = s.size();
  int count = 0;
  std::size_t pos = start;
  while (pos < s.size() && static_cast<std::size_t>(count) < limit) {
    const std::size_t l = s.find(left.data(), pos, left.size());
    if (l == std::basic_string<Char>::npos) break;
    const std::size_t inner = l + left.size();
    const std::size_t r = s.find(right.data(), inner, right.size());
    if (r == std::basic_string<Char>::npos) break;
    s.replace(inner, r - inner, replacement.data(), replacement.size());
    ++count;
    pos = r;
  }
  return count;
}

// Replace a prefix (suffix) that is there; 1 when replaced, else 0. An
// empty prefix (suffix) replaces nothing.
template <class Char>
int ReplaceLeft(std::basic_string<Char>& s, Detail::TView<Char> prefix, Detail::TView<Char> replacement) {
  return Detail::ReplaceLeftWith<Char>(s, prefix, replacement, false);
}
template <class Char>
int ReplaceLeftNoCase(std::basic_string<Char>& s, Detail::TView<Char> prefix, Detail::TView<Char> replacement) {
  return Detail::ReplaceLeftWith<Char>(s, prefix, replacement, true);
}
template <class Char>
int ReplaceRight(std::basic_string<Char>& s, Detail::TView<Char> suffix, Detail::TView<Char> replacement) {
  return Detail::ReplaceRightWith<Char>(s, suffix, replacement, false);
}
template <class Char>
int ReplaceRightNoCase(std::basic_string<Char>& s, Detail::TView<Char> suffix, Detail::TView<Char> replacement) {
  return Detail::ReplaceRightWith<Char>(s, suffix, replacement, true);
}

}  // namespace FXString
