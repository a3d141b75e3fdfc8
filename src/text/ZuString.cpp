#include "text/ZuString.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

// What every accessor hands out for a string without text.
const char kEmpty[] = "";

// Appending grows to the next multiple of 256 strictly above the needed
// length, so that repeated short appends reallocate rarely.
std::size_t GrownCapacity(std::size_t needed) { return (needed + 256) & ~static_cast<std::size_t>(255); }

// strnlen, which the C++ standard library does not have.
std::size_t BoundedLength(const char* text, std::size_t count) {
  const void* nul = std::memchr(text, '\0', count);
  return nul == nullptr ? count : static_cast<std::size_t>(static_cast<const char*>(nul) - text);
}

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
char AsciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

// Low 32 bits read as a signed count, the way the older interface took
// positions and counts.
bool IsNegative32(std::size_t value) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(value)) < 0; }

}  // namespace

CZuString::CZuString() = default;

CZuString::CZuString(const char* text) {
  if (text == nullptr) return;
  const std::size_t n = std::strlen(text);
  if (n > 0 && n <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) AssignExact(text, n);
}

CZuString::CZuString(char c) {
  if (c != '\0') AssignExact(&c, 1);
}

CZuString::CZuString(const CZuString& other) {
  if (other.m_length > 0) AssignExact(other.m_buffer, other.m_length);
}

CZuString::CZuString(CZuString&& other) noexcept
    : m_capacity(other.m_capacity),
      m_buffer(other.m_buffer),
      m_usedSize(other.m_usedSize),
      m_ownsBuffer(other.m_ownsBuffer),
      m_length(other.m_length) {
  other.m_capacity = 0;
  other.m_buffer = nullptr;
  other.m_usedSize = 0;
  other.m_ownsBuffer = 1;
  other.m_length = 0;
}

#define ZU_NUMBER_CONSTRUCTOR(Type)         \
  CZuString::CZuString(Type value) {        \
    const int n = ConvertToStr(value);      \
    if (n > 0) AssignExact(m_scratch, n);   \
  }
ZU_NUMBER_CONSTRUCTOR(short)
ZU_NUMBER_CONSTRUCTOR(unsigned short)
ZU_NUMBER_CONSTRUCTOR(int)
ZU_NUMBER_CONSTRUCTOR(unsigned int)
ZU_NUMBER_CONSTRUCTOR(long)
ZU_NUMBER_CONSTRUCTOR(unsigned long)
ZU_NUMBER_CONSTRUCTOR(long long)
ZU_NUMBER_CONSTRUCTOR(unsigned long long)
ZU_NUMBER_CONSTRUCTOR(double)
#undef ZU_NUMBER_CONSTRUCTOR

CZuString::~CZuString() { Release(); }

CZuString& CZuString::operator=(const CZuString& other) {
  if (this == &other) return *this;
  if (other.m_length == 0) {
    Release();
  } else {
    AssignExact(other.m_buffer, other.m_length);
  }
  return *this;
}

CZuString& CZuString::operator=(CZuString&& other) noexcept {
  if (this == &other) return *this;
  Release();
  m_capacity = other.m_capacity;
  m_buffer = other.m_buffer;
  m_usedSize = other.m_usedSize;
  m_ownsBuffer = other.m_ownsBuffer;
  m_length = other.m_length;
  other.m_capacity = 0;
  other.m_buffer = nullptr;
  other.m_usedSize = 0;
  other.m_ownsBuffer = 1;
  other.m_length = 0;
  return *this;
}

CZuString& CZuString::operator=(const char* text) {
  const std::size_t n = text == nullptr ? 0 : std::strlen(text);
  if (n == 0 || n > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    Release();
  } else {
    AssignExact(text, n);
  }
  return *this;
}

void CZuString::Release() {
  if (m_ownsBuffer) std::free(m_buffer);
  m_capacity = 0;
  m_buffer = nullptr;
  m_usedSize = 0;
  m_ownsBuffer = 1;
  m_length = 0;
}

// A buffer of exactly count + 1 bytes. The text may lie inside the old
// buffer, so that one is freed only after the copy.
void CZuString::AssignExact(const char* text, std::size_t count) {
  char* buffer = static_cast<char*>(std::malloc(count + 1));
  if (buffer != nullptr) {
    std::memcpy(buffer, text, count);
    buffer[count] = '\0';
  }
  Release();
  if (buffer == nullptr) return;
  m_buffer = buffer;
  m_capacity = count + 1;
  SetLength(count);
}

void CZuString::SetLength(std::size_t length) {
  m_length = length;
  m_usedSize = m_buffer != nullptr ? length + 1 : 0;
  if (m_buffer != nullptr) m_buffer[length] = '\0';
}

void CZuString::Append(const char* text, std::size_t count) {
  if (text == nullptr) return;
  const std::size_t n = BoundedLength(text, count);
  if (n == 0) return;
  const std::size_t length = m_length;
  const std::size_t capacity = GrownCapacity(length + n);
  if (m_buffer == nullptr || m_capacity < capacity) {
    char* buffer = static_cast<char*>(std::malloc(capacity));
    if (buffer == nullptr) {
      Release();
      return;
    }
    if (length > 0) std::memcpy(buffer, m_buffer, length);
    std::memcpy(buffer + length, text, n);  // before the old buffer goes: text may lie in it
    Release();
    m_buffer = buffer;
    m_capacity = capacity;
  } else {
    std::memmove(m_buffer + length, text, n);
  }
  SetLength(length + n);
}

CZuString& CZuString::operator+=(const CZuString& other) {
  // A copy first when appending to itself: the buffer may move.
  if (this == &other) {
    const CZuString copy(other);
    Append(copy.m_buffer, copy.m_length);
  } else {
    Append(other.m_buffer, other.m_length);
  }
  return *this;
}

CZuString& CZuString::operator+=(const char* text) {
  if (text != nullptr) Append(text, std::strlen(text));
  return *this;
}

CZuString& CZuString::operator+=(char c) {
  m_scratch[0] = c;
  Append(m_scratch, 1);
  return *this;
}

template <class T>
void CZuString::AppendNumber(T value) {
  const int n = ConvertToStr(value);
  if (n > 0) Append(m_scratch, static_cast<std::size_t>(n));
}

#define ZU_NUMBER_APPEND(Type)                      \
  CZuString& CZuString::operator+=(Type value) {    \
    AppendNumber(value);                            \
    return *this;                                   \
  }
ZU_NUMBER_APPEND(short)
ZU_NUMBER_APPEND(unsigned short)
ZU_NUMBER_APPEND(int)
ZU_NUMBER_APPEND(unsigned int)
ZU_NUMBER_APPEND(long)
ZU_NUMBER_APPEND(unsigned long)
ZU_NUMBER_APPEND(long long)
ZU_NUMBER_APPEND(unsigned long long)
ZU_NUMBER_APPEND(double)
#undef ZU_NUMBER_APPEND

#define ZU_CONVERT_TO_STR(Type, format)                                       \
  int CZuString::ConvertToStr(Type value) {                                  \
    const int n = std::snprintf(m_scratch, sizeof m_scratch, format, value); \
    return n < 0 || n >= static_cast<int>(sizeof m_scratch) ? -1 : n;        \
  }
ZU_CONVERT_TO_STR(short, "%hd")
ZU_CONVERT_TO_STR(unsigned short, "%hu")
ZU_CONVERT_TO_STR(int, "%d")
ZU_CONVERT_TO_STR(unsigned int, "%u")
ZU_CONVERT_TO_STR(long, "%ld")
ZU_CONVERT_TO_STR(unsigned long, "%lu")
ZU_CONVERT_TO_STR(long long, "%lld")
ZU_CONVERT_TO_STR(unsigned long long, "%llu")
ZU_CONVERT_TO_STR(double, "%g")
#undef ZU_CONVERT_TO_STR

void CZuString::AppendHex(unsigned long long bits) {
  const int n = std::snprintf(m_scratch, sizeof m_scratch, "%llx", bits);
  if (n > 0) Append(m_scratch, static_cast<std::size_t>(n));
}

// Signed values go through long long, so they are sign-extended.
#define ZU_HEX(Type, Wide)                                                                   \
  CZuString& CZuString::AppendHexValue(Type value) {                                         \
    AppendHex(static_cast<unsigned long long>(static_cast<Wide>(value)));                    \
    return *this;                                                                            \
  }
ZU_HEX(short, long long)
ZU_HEX(unsigned short, unsigned long long)
ZU_HEX(int, long long)
ZU_HEX(unsigned int, unsigned long long)
ZU_HEX(long, long long)
ZU_HEX(unsigned long, unsigned long long)
ZU_HEX(long long, long long)
ZU_HEX(unsigned long long, unsigned long long)
#undef ZU_HEX

#define ZU_TO_HEX(Type)                                \
  CZuString CZuString::ToHexString(Type value) {       \
    CZuString text;                                    \
    text.AppendHexValue(value);                        \
    return text;                                       \
  }
ZU_TO_HEX(short)
ZU_TO_HEX(unsigned short)
ZU_TO_HEX(int)
ZU_TO_HEX(unsigned int)
ZU_TO_HEX(long)
ZU_TO_HEX(unsigned long)
ZU_TO_HEX(long long)
#undef ZU_TO_HEX

CZuString& CZuString::CheckAndAppendLastCharacter(char c) {
  if (m_length > 0 && m_buffer[m_length - 1] != c) *this += c;
  return *this;
}

CZuString& CZuString::AssignBuffer(const char* data, std::size_t count) {
  if (data == nullptr || count == 0) {
    Release();
  } else {
    AssignExact(data, count);
  }
  return *this;
}

const char* CZuString::c_str() const { return m_usedSize == 0 || m_buffer == nullptr ? kEmpty : m_buffer; }

char CZuString::operator[](int index) const {
  return index < 0 ? '\0' : (*this)[static_cast<std::size_t>(index)];
}

char CZuString::operator[](std::size_t index) const { return index < m_length ? m_buffer[index] : '\0'; }

CZuString CZuString::SubStr(std::size_t start, std::size_t count) const {
  CZuString part;
  if (start >= m_length) return part;
  const std::size_t rest = m_length - start;
  // The count is a 32-bit int: its high half is not part of it.
  count = static_cast<std::uint32_t>(count);
  if (IsNegative32(count) || count > rest) count = rest;
  if (count > 0) part.AssignExact(m_buffer + start, count);
  return part;
}

int CZuString::Safe_strcmp(const char* a, const char* b) {
  if (a == b) return 0;
  if (a == nullptr) a = kEmpty;
  if (b == nullptr) b = kEmpty;
  const int c = std::strcmp(a, b);  // compares as unsigned char
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

int CZuString::Find(char c, std::size_t from) const {
  if (m_length == 0 || from > m_length) return -1;
  // The terminator takes part, so that the character 0 is found there.
  const void* hit = std::memchr(m_buffer + from, c, m_length + 1 - from);
  return hit == nullptr ? -1 : static_cast<int>(static_cast<const char*>(hit) - m_buffer);
}

int CZuString::Find(const char* needle, std::size_t from) const {
  if (m_length == 0 || from > m_length || needle == nullptr) return -1;
  const std::size_t at = std::string_view(m_buffer, m_length).find(needle, from);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

int CZuString::ReverseFind(char c, std::size_t fromEnd) const {
  if (m_length == 0 || fromEnd > m_length) return -1;
  for (std::size_t i = m_length - fromEnd + 1; i-- > 0;)
    if (m_buffer[i] == c) return static_cast<int>(i);
  return -1;
}

int CZuString::ReverseFind(const char* needle, std::size_t fromEnd) const {
  if (m_length == 0 || fromEnd > m_length || needle == nullptr) return -1;
  const std::size_t n = std::strlen(needle);
  for (std::size_t i = m_length - fromEnd + 1; i-- > 0;)
    if (i + n <= m_length && std::memcmp(m_buffer + i, needle, n) == 0) return static_cast<int>(i);
  return -1;
}

CZuString& CZuString::Clear() {
  m_length = 0;
  m_usedSize = 0;
  if (m_buffer != nullptr) m_buffer[0] = '\0';
  return *this;
}

CZuString& CZuString::ChopAt(std::size_t pos) {
  if (pos <= m_length && !IsNegative32(pos) && m_buffer != nullptr) SetLength(pos);
  return *this;
}

CZuString& CZuString::CheckAndRemoveLastCharacter(char c) {
  if (m_length > 0 && m_buffer[m_length - 1] == c) SetLength(m_length - 1);
  return *this;
}

CZuString& CZuString::RemoveLastToken(char c) {
  const int at = ReverseFind(c, 0);
  if (at >= 0) SetLength(static_cast<std::size_t>(at));
  return *this;
}

CZuString& CZuString::LTrim(char c) {
  std::size_t k = 0;
  while (k < m_length && m_buffer[k] == c) ++k;
  if (k > 0) {
    std::memmove(m_buffer, m_buffer + k, m_length - k);
    SetLength(m_length - k);
  }
  return *this;
}

CZuString& CZuString::RTrim(char c) {
  std::size_t n = m_length;
  while (n > 0 && m_buffer[n - 1] == c) --n;
  if (n != m_length) SetLength(n);
  return *this;
}

CZuString& CZuString::LTrimAll() {
  std::size_t k = 0;
  while (k < m_length && IsBlank(m_buffer[k])) ++k;
  if (k > 0) {
    std::memmove(m_buffer, m_buffer + k, m_length - k);
    SetLength(m_length - k);
  }
  return *this;
}

CZuString& CZuString::RTrimAll() {
  std::size_t n = m_length;
  while (n > 0 && IsBlank(m_buffer[n - 1])) --n;
  if (n != m_length) SetLength(n);
  return *this;
}

CZuString CZuString::ToLower() const {
  CZuString copy(*this);
  for (std::size_t i = 0; i < copy.m_length; ++i) copy.m_buffer[i] = AsciiLower(copy.m_buffer[i]);
  return copy;
}

CZuString CZuString::ToUpper() const {
  CZuString copy(*this);
  for (std::size_t i = 0; i < copy.m_length; ++i) copy.m_buffer[i] = AsciiUpper(copy.m_buffer[i]);
  return copy;
}

template <class IsDelimiter, class ClosingQuote>
void CZuString::TokenizeWith(std::vector<CZuString>& out, char escape, bool keepEmpty, IsDelimiter isDelimiter,
                             ClosingQuote closingQuote) const {
  out.clear();
  CZuString token;
  bool inQuotes = false;
  bool escaped = false;
  // A delimiter or an opening quote starts a token, even one that stays
  // empty: 'a,' and 'a,""' both end in an empty token.
  bool started = false;
  char close = '\0';
  for (std::size_t i = 0; i < m_length; ++i) {
    const char c = m_buffer[i];
    if (c == escape) {
      if (escaped) token += c;
      escaped = !escaped;
      continue;
    }
    if (inQuotes) {
      if (c == close && !escaped) {
        inQuotes = false;
        continue;
      }
    } else if (!escaped) {
      const int closing = closingQuote(c);
      if (closing >= 0) {
        inQuotes = true;
        started = true;
        close = static_cast<char>(closing);
        continue;
      }
    }
    escaped = false;
    if (!inQuotes && isDelimiter(c)) {
      if (!token.IsEmpty() || keepEmpty) {
        out.push_back(token);
        token.Clear();
      }
      started = true;
      continue;
    }
    token += c;
  }
  if (!token.IsEmpty() || (keepEmpty && started)) out.push_back(token);
}

void CZuString::Tokenize(std::vector<CZuString>& out, char openQuote, char closeQuote, char escape, char delimiter,
                         bool keepEmpty) const {
  TokenizeWith(
      out, escape, keepEmpty, [delimiter](char c) { return c == delimiter; },
      [openQuote, closeQuote](char c) { return c == openQuote ? static_cast<unsigned char>(closeQuote) : -1; });
}

void CZuString::Tokenize(std::vector<CZuString>& out, char openQuote, char closeQuote, char escape,
                         const char* delimiters, bool keepEmpty) const {
  TokenizeWith(
      out, escape, keepEmpty,
      [delimiters](char c) { return c != '\0' && delimiters != nullptr && std::strchr(delimiters, c) != nullptr; },
      [openQuote, closeQuote](char c) { return c == openQuote ? static_cast<unsigned char>(closeQuote) : -1; });
}

void CZuString::Tokenize(std::vector<CZuString>& out, const char* openQuotes, const char* closeQuotes, char escape,
                         char delimiter, bool keepEmpty) const {
  const std::size_t closeCount = closeQuotes == nullptr ? 0 : std::strlen(closeQuotes);
  TokenizeWith(
      out, escape, keepEmpty, [delimiter](char c) { return c == delimiter; },
      [openQuotes, closeQuotes, closeCount](char c) -> int {
        if (c == '\0' || openQuotes == nullptr) return -1;
        const char* at = std::strchr(openQuotes, c);
        if (at == nullptr) return -1;
        const std::size_t i = static_cast<std::size_t>(at - openQuotes);
        return static_cast<unsigned char>(i < closeCount ? closeQuotes[i] : c);
      });
}

bool CZuString::AllocateBuffer(std::size_t n) {
  if (n <= m_usedSize) return true;
  Release();
  m_buffer = static_cast<char*>(std::malloc(n));
  if (m_buffer == nullptr) return false;
  m_buffer[0] = '\0';
  m_capacity = n;
  m_usedSize = n;
  return true;
}

void CZuString::ShrinkBufferToFit() {
  if (m_length == 0) {
    Release();
  } else if (m_capacity != m_length + 1) {
    AssignExact(m_buffer, m_length);
  }
}

std::size_t CZuString::ReCalculateLength() {
  if (m_buffer == nullptr) {
    m_length = 0;
    m_usedSize = 0;
    return 0;
  }
  std::size_t n = BoundedLength(m_buffer, m_capacity);
  if (n == m_capacity) n = m_capacity - 1;
  SetLength(n);
  return n;
}

CZuString CZuString::Format(const CZuString& pattern, const std::vector<CZuString>& args) {
  CZuString out;
  const char* p = pattern.c_str();
  const std::size_t length = pattern.Length();
  bool inBraces = false;
  std::size_t open = 0;     // index of the '{' of the open placeholder
  std::size_t number = 0;   // its digits so far, saturated
  for (std::size_t i = 0; i < length; ++i) {
    const char c = p[i];
    if (!inBraces) {
      if (c == '{') {
        inBraces = true;
        open = i;
        number = 0;
      } else {
        out += c;
      }
    } else if (c >= '0' && c <= '9') {
      if (number <= args.size()) number = number * 10 + static_cast<std::size_t>(c - '0');
    } else if (c == '}') {
      if (number >= 1 && number <= args.size()) {
        out += args[number - 1];
      } else {
        out.Append(p + open, i + 1 - open);
      }
      inBraces = false;
    } else {
      // Not a placeholder after all: its text so far, then c afresh.
      out.Append(p + open, i - open);
      inBraces = false;
      --i;
    }
  }
  return out;
}

CZuString CZuString::Format(const CZuString& pattern) { return Format(pattern, std::vector<CZuString>()); }
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1) { return Format(pattern, std::vector<CZuString>{a1}); }
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2) {
  return Format(pattern, std::vector<CZuString>{a1, a2});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2,
                            const CZuString& a3) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5, const CZuString& a6) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5, a6});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5, a6, a7});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                            const CZuString& a8) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5, a6, a7, a8});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                            const CZuString& a8, const CZuString& a9) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5, a6, a7, a8, a9});
}
CZuString CZuString::Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                            const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                            const CZuString& a8, const CZuString& a9, const CZuString& a10) {
  return Format(pattern, std::vector<CZuString>{a1, a2, a3, a4, a5, a6, a7, a8, a9, a10});
}

CZuString operator+(const char* text, const CZuString& s) {
  CZuString joined(text);
  joined += s;
  return joined;
}

bool operator==(const char* a, const CZuString& b) { return b == a; }
bool operator!=(const char* a, const CZuString& b) { return b != a; }
bool operator<(const char* a, const CZuString& b) { return b > a; }
bool operator<=(const char* a, const CZuString& b) { return b >= a; }
bool operator>(const char* a, const CZuString& b) { return b < a; }
bool operator>=(const char* a, const CZuString& b) { return b <= a; }
