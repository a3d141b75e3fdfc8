// CZuString: the narrow, heap-owning byte string of the older interfaces.
//
// Bytes only: no code page is attached (text that meets the system is UTF-8),
// and case and blank tests are ASCII, byte by byte, as the C runtime's
// classic locale has them. The class never raises and never reports: a
// failed allocation leaves the string empty, out-of-range positions read as
// the character 0 or leave the string as it is. Integer results keep the
// older classes' convention (0 success, -1 end of data, -2 failure): a
// search gives -1 when it finds nothing.
//
// Numbers and single characters are rendered in a 50-byte scratch area
// inside the object, so appending them allocates only when the text buffer
// must grow; appending grows in blocks of 256 bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ZuUtilsExport.h"

class ZUUTILS_API CZuString {
 public:
  CZuString();
  // Null and "" give an empty string without a buffer. The length is taken
  // as a signed 32-bit count: a text of 2 GiB or more is taken as empty.
  CZuString(const char* text);  // NOLINT: implicit by design
  explicit CZuString(char c);   // the character 0 gives an empty string
  CZuString(const CZuString& other);
  CZuString(CZuString&& other) noexcept;
  // Numbers print as "%hd", "%hu", "%d", "%u", "%ld", "%lu", "%lld", "%llu",
  // "%g" by type (long is 32-bit on Windows and 64-bit on Linux).
  explicit CZuString(short value);
  explicit CZuString(unsigned short value);
  explicit CZuString(int value);
  explicit CZuString(unsigned int value);
  explicit CZuString(long value);
  explicit CZuString(unsigned long value);
  explicit CZuString(long long value);
  explicit CZuString(unsigned long long value);
  explicit CZuString(double value);
  ~CZuString();

  CZuString& operator=(const CZuString& other);
  CZuString& operator=(CZuString&& other) noexcept;
  CZuString& operator=(const char* text);

  // Appending in place.
  CZuString& operator+=(const CZuString& other);
  CZuString& operator+=(const char* text);
  CZuString& operator+=(char c);
  CZuString& operator+=(short value);
  CZuString& operator+=(unsigned short value);
  CZuString& operator+=(int value);
  CZuString& operator+=(unsigned int value);
  CZuString& operator+=(long value);
  CZuString& operator+=(unsigned long value);
  CZuString& operator+=(long long value);
  CZuString& operator+=(unsigned long long value);
  CZuString& operator+=(double value);

  // A new string: this one followed by the argument; this one is unchanged.
  // operator<< is the same as operator+ (it does not append in place).
  template <class T>
  CZuString operator+(const T& value) const {
    CZuString copy(*this);
    copy += value;
    return copy;
  }
  template <class T>
  CZuString operator<<(const T& value) const {
    return *this + value;
  }

  // "%llx" of the value widened to 64 bits: signed values are sign-extended,
  // so the short -1 gives sixteen f digits.
  CZuString& AppendHexValue(short value);
  CZuString& AppendHexValue(unsigned short value);
  CZuString& AppendHexValue(int value);
  CZuString& AppendHexValue(unsigned int value);
  CZuString& AppendHexValue(long value);
  CZuString& AppendHexValue(unsigned long value);
  CZuString& AppendHexValue(long long value);
  CZuString& AppendHexValue(unsigned long long value);
  static CZuString ToHexString(short value);
  static CZuString ToHexString(unsigned short value);
  static CZuString ToHexString(int value);
  static CZuString ToHexString(unsigned int value);
  static CZuString ToHexString(long value);
  static CZuString ToHexString(unsigned long value);
  static CZuString ToHexString(long long value);

  // Appends c unless the string is empty or already ends with c.
  CZuString& CheckAndAppendLastCharacter(char c);
  CZuString& AppendBackwardSlash() { return CheckAndAppendLastCharacter('\\'); }
  CZuString& AppendForwardSlash() { return CheckAndAppendLastCharacter('/'); }
  // Exactly `count` bytes of data, NULs included; null or 0 empties.
  CZuString& AssignBuffer(const char* data, std::size_t count);

  // Never null: an empty string reads as "".
  const char* c_str() const;
  operator const char*() const { return c_str(); }  // NOLINT: implicit by design
  char* GetBuffer() { return m_buffer; }
  std::size_t Length() const { return m_length; }
  bool IsEmpty() const { return m_length == 0; }
  std::uint64_t GetAllocatedSize() const { return m_capacity; }

  // The character at the index, or 0 at or beyond the end (or below 0).
  char operator[](int index) const;
  char operator[](std::size_t index) const;
  CZuString operator()(std::size_t start, std::size_t count) const { return SubStr(start, count); }
  // Empty when start is at or beyond the end. Only the count's low 32 bits
  // count: read as a negative int (as -1 is) they mean up to the end.
  CZuString SubStr(std::size_t start, std::size_t count) const;

  // Case-sensitive byte comparison.
  bool operator==(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) == 0; }
  bool operator!=(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) != 0; }
  bool operator<(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) < 0; }
  bool operator<=(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) <= 0; }
  bool operator>(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) > 0; }
  bool operator>=(const CZuString& other) const { return Safe_strcmp(c_str(), other.c_str()) >= 0; }
  bool operator==(const char* other) const { return Safe_strcmp(c_str(), other) == 0; }
  bool operator!=(const char* other) const { return Safe_strcmp(c_str(), other) != 0; }
  bool operator<(const char* other) const { return Safe_strcmp(c_str(), other) < 0; }
  bool operator<=(const char* other) const { return Safe_strcmp(c_str(), other) <= 0; }
  bool operator>(const char* other) const { return Safe_strcmp(c_str(), other) > 0; }
  bool operator>=(const char* other) const { return Safe_strcmp(c_str(), other) >= 0; }

  // Searches return the index, or -1 when not found, when the string is
  // empty, when the start lies beyond the end, or when the needle is null.
  // Find(c) also finds the terminator when c is 0.
  int Find(char c, std::size_t from = 0) const;
  int Find(const char* needle, std::size_t from = 0) const;
  int Find(char* needle, std::size_t from = 0) const { return Find(static_cast<const char*>(needle), from); }
  // Backward from index Length() - fromEnd down to 0; with fromEnd 0 the
  // terminator itself is examined first.
  int ReverseFind(char c, std::size_t fromEnd = 0) const;
  int ReverseFind(const char* needle, std::size_t fromEnd = 0) const;

  // Editing in place.
  CZuString& Clear();  // keeps the buffer
  // Nothing happens when pos is beyond the end or negative as a 32-bit int.
  CZuString& ChopAt(std::size_t pos);
  CZuString& CheckAndRemoveLastCharacter(char c);
  // Cuts at the last c, which goes with everything after it: 'a\b\c' with a
  // backslash gives 'a\b'.
  CZuString& RemoveLastToken(char c);
  CZuString& LTrim(char c);
  CZuString& RTrim(char c);
  // Blanks: space, tab, newline, vertical tab, form feed, carriage return.
  CZuString& LTrimAll();
  CZuString& RTrimAll();
  CZuString& RTrimBackwardSlash() { return RTrim('\\'); }
  CZuString& RTrimForwardSlash() { return RTrim('/'); }
  // Converted copies (ASCII letters only); this string is unchanged.
  CZuString ToLower() const;
  CZuString ToUpper() const;

  // Splits into tokens. Quotes are removed and keep delimiters inside them;
  // the escape character makes the next escape or quote character literal
  // (it does not protect a delimiter). Empty tokens are kept only when
  // keepEmpty is set; a trailing delimiter then gives a last empty token,
  // and so does a trailing '""'.
  void Tokenize(std::vector<CZuString>& out, char openQuote, char closeQuote, char escape, char delimiter,
                bool keepEmpty) const;
  // Any character of `delimiters` separates (null: none does).
  void Tokenize(std::vector<CZuString>& out, char openQuote, char closeQuote, char escape, const char* delimiters,
                bool keepEmpty) const;
  // openQuotes[i] opens a run that only closeQuotes[i] closes; where
  // closeQuotes is shorter (or null) the opening character closes its run.
  void Tokenize(std::vector<CZuString>& out, const char* openQuotes, const char* closeQuotes, char escape,
                char delimiter, bool keepEmpty) const;

  // Makes sure n bytes are available to write through GetBuffer(): true at
  // once when n does not exceed the used size, otherwise a buffer of exactly
  // n bytes replaces the old one (its contents are not kept) and the result
  // tells whether it could be allocated. Call ReCalculateLength() after
  // writing.
  bool AllocateBuffer(std::size_t n);
  void ShrinkBufferToFit();
  // The length up to the terminator after a direct write; a buffer without
  // a terminator is cut at its last byte, which becomes the terminator.
  std::size_t ReCalculateLength();

  // Numbered placeholders: {1} is args[0]. A number above the count of
  // arguments, or 0, is copied literally; any other character abandons an
  // open placeholder (its text is copied); one still open at the end is
  // dropped. Arguments may repeat or go unused.
  static CZuString Format(const CZuString& pattern, const std::vector<CZuString>& args);
  static CZuString Format(const CZuString& pattern);
  static CZuString Format(const CZuString& pattern, const CZuString& a1);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5, const CZuString& a6);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                          const CZuString& a8);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                          const CZuString& a8, const CZuString& a9);
  static CZuString Format(const CZuString& pattern, const CZuString& a1, const CZuString& a2, const CZuString& a3,
                          const CZuString& a4, const CZuString& a5, const CZuString& a6, const CZuString& a7,
                          const CZuString& a8, const CZuString& a9, const CZuString& a10);

 protected:
  // All appending goes through here: at most `count` bytes, stopping at a
  // NUL; a null text changes nothing.
  void Append(const char* text, std::size_t count);

  // Print into the scratch area; the printed length, or -1.
  int ConvertToStr(short value);
  int ConvertToStr(unsigned short value);
  int ConvertToStr(int value);
  int ConvertToStr(unsigned int value);
  int ConvertToStr(long value);
  int ConvertToStr(unsigned long value);
  int ConvertToStr(long long value);
  int ConvertToStr(unsigned long long value);
  int ConvertToStr(double value);

  // Identical pointers are equal, null reads as "", bytes compare unsigned;
  // -1, 0 or 1.
  static int Safe_strcmp(const char* a, const char* b);

 private:
  template <class T>
  void AppendNumber(T value);
  void AppendHex(unsigned long long bits);
  void AssignExact(const char* text, std::size_t count);
  void Release();
  void SetLength(std::size_t length);
  template <class IsDelimiter, class ClosingQuote>
  void TokenizeWith(std::vector<CZuString>& out, char escape, bool keepEmpty, IsDelimiter isDelimiter,
                    ClosingQuote closingQuote) const;

  std::uint64_t m_capacity = 0;
  char* m_buffer = nullptr;
  std::uint64_t m_usedSize = 0;
  std::int32_t m_ownsBuffer = 1;
  std::uint64_t m_length = 0;
  char m_scratch[50] = {};
};

ZUUTILS_API CZuString operator+(const char* text, const CZuString& s);
ZUUTILS_API bool operator==(const char* a, const CZuString& b);
ZUUTILS_API bool operator!=(const char* a, const CZuString& b);
ZUUTILS_API bool operator<(const char* a, const CZuString& b);
ZUUTILS_API bool operator<=(const char* a, const CZuString& b);
ZUUTILS_API bool operator>(const char* a, const CZuString& b);
ZUUTILS_API bool operator>=(const char* a, const CZuString& b);
