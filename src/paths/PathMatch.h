// Wildcard path matching in the family of BSD fnmatch, with three additions
// for a file-system walker: "**" as a whole component matches any number of
// components, a trailing "\***" matches the folder itself and everything
// below it, and a failed match of a folder against a longer pattern reports
// which pattern component would have to come next (the next-basename
// position), so that the walker can tell whether the folder is worth
// entering.
//
// CPathMatchTemplate<char> matches UTF-8 bytes; CPathMatchTemplate<unsigned
// long> matches code points (unsigned long is 32 bits on Windows and 64 on
// Linux; either holds a code point, and both behave identically). CPathMatch
// holds one of each and uses the code-point one ("long mode") only when the
// pattern holds "?" or "[", the only elements for which a byte is not a
// character.
//
// Invisible characters (U+FEFF, U+200B, U+200C) in a subject are skipped
// before each pattern element, in both unit widths.
//
// The matching step is the classic backtracking recursion, bounded in the
// manner of git's wildmatch: a try that runs out of subject, or a single star
// that reaches a delimiter, tells the stars above it that their later tries
// cannot succeed either. The answers, the work-data marks and the
// next-basename position are exactly those of the unbounded recursion, so a
// pattern such as "*a*a*a*a*a*a*a*a*b" costs time linear in the subject
// times the number of stars, not exponential. match() always matches with
// PATHMATCH_FLAG_PATHNAME; a caller of fnmatch without it keeps the plain
// recursion's cost for a star whose rest of the pattern holds a delimiter,
// since the marks that such tries write depend on every one of them.
//
// Matching in byte mode never allocates; long mode converts the subject once
// per call. A compiled matcher is read-only while matching: one may serve
// several threads, each with its own CPathMatchWorkData.
#pragma once

#include <cstddef>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

// The answer of match and fnmatch.
enum CPathMatchResult { PATHMATCH_NOMATCH = 0, PATHMATCH_MATCH = 1 };

// What getNextBasename found at the next-basename position.
enum CBaseNameType {
  BASENAME_NONE = 0,              // no next-basename position
  BASENAME_LITERAL_PREFIX = 1,    // literal characters, then a wildcard
  BASENAME_LITERAL = 2,           // a literal component, copied in full
  BASENAME_WILDCARD_OR_END = 3,   // empty, starting with a wildcard, or the pattern's end
};

// fnmatch flags.
enum : int {
  PATHMATCH_FLAG_NOESCAPE = 0x1,  // the escape character is an ordinary character
  PATHMATCH_FLAG_PATHNAME = 0x2,  // wildcards do not match the delimiter
  PATHMATCH_FLAG_PERIOD = 0x4,    // a leading "." must be matched by a literal "."
};

template <class C>
class CPathMatchTemplate;
class CPathMatch;
class CPathMatchUnc;

// The per-call record a match fills in; all zero on construction.
class ZUUTILS_API CPathMatchWorkData {
 public:
  bool nextBasenameExists() const { return m_nextBasename != nullptr; }
  bool isRecursiveMatch() const { return m_recursive; }
  bool isMatchEverything() const { return m_matchEverything; }
  bool isLiteralMatch() const { return m_literal; }
  // The next-basename position lies in the 32-bit pattern.
  bool isLong() const { return m_long; }
  const void* getSubject() const { return m_subject; }
  // Into the pattern that was matched, or the matcher's end sentinel.
  const void* getNextBasenamePosition() const { return m_nextBasename; }

 private:
  template <class C>
  friend class CPathMatchTemplate;
  friend class CPathMatch;
  friend class CPathMatchUnc;

  const void* m_nextBasename = nullptr;  // into the pattern, or the matcher's end sentinel
  const void* m_subject = nullptr;
  bool m_recursive = false;
  bool m_matchEverything = false;
  bool m_literal = false;
  bool m_long = false;
};

template <class C>
class ZUUTILS_API CPathMatchTemplate {
 public:
  // Compiled patterns are shorter than this, counting the escapes that
  // compilation inserts.
  static constexpr int kMaxPatternLength = 1026;

  CPathMatchTemplate();

  // Compiles the pattern: literal (every wildcard and escape character gets
  // an escape), wildcards in the last component only (1627 "Pattern contains
  // no delimiter, Delimiter=0x%X" without a delimiter), or full wildcard. A
  // compiled text reaching kMaxPatternLength units fails with 111 "Pattern
  // too long, MaxLength=%d". Case-insensitive matchers fold A-Z of the
  // compiled text. A null pattern is an empty one.
  CZuError initialize(const C* pattern, bool isWildcard, bool wildcardOnlyInName);

  // Resets the work data and runs fnmatch with PATHMATCH_FLAG_PATHNAME.
  CPathMatchResult match(CPathMatchWorkData& workData, const C* subject) const;
  // The matching step on a pattern the caller brings (compiled or not):
  // 1 match, 0 no match. Never allocates.
  int fnmatch(CPathMatchWorkData& workData, const C* pattern, const C* subject, int flags) const;
  // Copies the component at the next-basename position, escapes removed, to
  // buffer (at most capacity - 1 units and a terminator; a buffer of
  // kMaxPatternLength + 1 units always holds it).
  CBaseNameType getNextBasename(const CPathMatchWorkData& workData, C* buffer, std::size_t capacity) const;

  // Members are defined out of line: the DLL exports the two instances
  // whole, and an inline member of an exported instance would be missing.
  void caseInsensitive();
  void caseSensitive();
  bool getCaseSensitivity() const;
  // "," "." and "/" pair with the escape "\", and "\" with "/"; any other
  // delimiter is kept, logged, and leaves the escape as it was.
  void setDelimiter(C delimiter);
  C getDelimiter() const;
  void setEscape(C escape);
  C getEscape() const;
  const C* getPattern() const;

  static std::size_t myStrlen(const C* text);
  static const C* myStrchr(const C* text, C unit);
  static const C* myStrrchr(const C* text, C unit);
  static C* myStrcpy(C* target, const C* source);

 private:
  struct TContext;
  int doMatch(const TContext& context, const C* pattern, const C* subject, int flags) const;
  int doStar(const TContext& context, const C* pattern, const C* subject, int flags) const;
  // 1 member, 0 not, -1 not a well-formed class (then "[" is a literal).
  int rangematch(const C* pattern, C test, int flags, const C** next) const;

  unsigned char m_caseInsensitive = 0;
  C m_delimiter;
  C m_escape;
  C m_pattern[kMaxPatternLength + 1];
  C m_end[1];
};

extern template class CPathMatchTemplate<char>;
extern template class CPathMatchTemplate<unsigned long>;

// The public matcher: UTF-8 patterns and subjects, long mode when the
// pattern needs code points.
class ZUUTILS_API CPathMatch {
 public:
  CPathMatch();
  virtual ~CPathMatch();

  // As CPathMatchTemplate::initialize on the UTF-8 pattern; long mode when
  // it is a wildcard pattern holding "?" or "[" (the pattern must then be
  // valid UTF-8: a conversion failure is returned).
  virtual CZuError initialize(const char* pattern, bool isWildcard, bool wildcardOnlyInName);
  // In long mode the subject is converted to code points; a subject that is
  // not valid UTF-8 is logged (level 4) and matched by the byte template.
  // An ASCII subject against an ASCII pattern needs no conversion: every
  // unit is a code point, so the byte template gives the same answer, marks
  // and next component (the work data then says it did not run long).
  virtual CPathMatchResult match(CPathMatchWorkData& workData, const char* subject);
  CPathMatchResult match(const char* subject);
  // Always the 32-bit template (compiled only in long mode).
  CPathMatchResult match(CPathMatchWorkData& workData, const unsigned long* subject);

  // useLong converts pattern and subject to code points first (invalid
  // UTF-8 falls back to bytes); the next-basename position, which would
  // point into the converted copy, is then cleared.
  int fnmatch(CPathMatchWorkData& workData, const char* pattern, const char* subject, int flags,
              bool useLong = false);
  // The next component as UTF-8, converted back when the work data is long.
  CBaseNameType getNextBasename(const CPathMatchWorkData& workData, std::string& basename) const;

  bool IsLongMode() const { return m_longMode; }
  void caseInsensitive();
  void caseSensitive();
  bool getCaseSensitivity() const { return m_byte.getCaseSensitivity(); }
  void setDelimiter(char delimiter);
  char getDelimiter() const { return m_byte.getDelimiter(); }
  void setEscape(char escape);
  char getEscape() const { return m_byte.getEscape(); }
  const CPathMatchTemplate<char>& byteTemplate() const { return m_byte; }
  const CPathMatchTemplate<unsigned long>& longTemplate() const { return m_long; }

 private:
  CPathMatchTemplate<char> m_byte;
  CPathMatchTemplate<unsigned long> m_long;
  bool m_longMode = false;
  bool m_asciiPattern = true;
  std::size_t m_plainLead = 0;  // leading compiled units that are plain ASCII
};

// UNC paths become an ordinary first component: "\\srv\share\x" is matched
// as "\UNC-NT_srv\share\x", in patterns and subjects alike.
class ZUUTILS_API CPathMatchUnc : public CPathMatch {
 public:
  CZuError initialize(const char* pattern, bool isWildcard, bool wildcardOnlyInName) override;
  CPathMatchResult match(CPathMatchWorkData& workData, const char* subject) override;
  using CPathMatch::match;
};
