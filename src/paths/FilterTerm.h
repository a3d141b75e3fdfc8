// Filter terms: one include/exclude rule evaluated by one of several
// engines, and the prepared path that every term of a set is tested on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "paths/FilterFlags.h"

// The opaque object an owner attaches to a filter entry; IsIn hands the
// deciding entry's context back.
class ZUUTILS_API CFilterContext {
 public:
  virtual ~CFilterContext();
};

// The path under test, prepared once for every term of a set: the narrow
// text (one trailing backslash dropped, so "C:\" is the folder "C:") with
// and without one leading backslash, its code points on first
// request, and the folded key the set's term index looks up. Not for
// sharing between threads (the lazy parts are filled on first request).
class ZUUTILS_API CFilterTermTestString {
 public:
  // exposeRoot: terms see the form with a leading backslash.
  explicit CFilterTermTestString(const std::string& path, bool exposeRoot = false);
  explicit CFilterTermTestString(const std::wstring& path, bool exposeRoot = false);
  CFilterTermTestString(const CFilterTermTestString&) = delete;
  CFilterTermTestString& operator=(const CFilterTermTestString&) = delete;

  const char* GetStringWithLeadingBackslash() const { return m_with.c_str(); }
  const char* GetStringWithoutLeadingBackslash() const { return m_with.c_str() + 1; }
  // Of the form without the leading backslash.
  std::size_t GetLength() const { return m_with.size() - 1; }
  bool IsExposeRoot() const { return m_exposeRoot; }
  // The form with a leading backslash as code points; null when the text is
  // not valid UTF-8. Add 1 for the form without.
  const unsigned long* ConvertToUtf32() const;
  // The form without the leading backslash, A-Z folded: the key of the set's
  // tree. GetIndexKey also drops the invisible characters (U+FEFF, U+200B,
  // U+200C) that the matcher skips.
  const std::string& GetFoldedKey() const;
  const std::string& GetIndexKey() const;

 private:
  enum : unsigned char { kUtf32Made = 1, kFoldedMade = 2, kIndexMade = 4, kStripped = 8 };
  std::string m_with;
  bool m_exposeRoot;
  mutable unsigned char m_made = 0;
  mutable std::string m_folded;
  mutable std::string m_stripped;  // made only when the text holds invisible characters
  mutable std::vector<unsigned long> m_utf32;
};

// One filter rule. Engines: 1 wildcard path match (CPathMatchUnc), 3 match
// right (the path ends with a fixed tail), 5 plain string (equal to the
// path). Raw terms may carry other engine numbers (2, a regular
// expression, and 4, of other products of the family); this library keeps
// them for round trips and they match nothing.
//
// Case: a term is case-insensitive when SetForceCaseInsensitiveFilters was
// called, when its options say CaseInsensitive, or when they say
// CaseDefault and its set uses insensitive wildcard filters.
//
// The form a term sees: engine-1 and engine-5 terms whose text begins with
// the delimiter see the path with a leading backslash (a pattern that
// starts at the root needs a root to start at), as every term does when
// the set exposes the root; otherwise the path without it. So a bare "*.tmp",
// stored as "\**\*.tmp", takes .tmp files in every folder either way.
//
// Raw form: "<" context ">" text, the context a list of ":"-separated items:
//   "ci" / "cs"      CaseInsensitive / CaseSensitive (none: CaseDefault)
//   "e=0x%llX"       the engine; the text is then taken as it is
//   "a=0x%llX"       the applies mask (none: FILTER_APPLIES_ALL)
//   "WM" / "DT" / "FD"  ClassPath / ClassString / ClassDefault
// Unknown items are ignored. A text without the context is loaded as the
// class says (see LoadRaw).
//
// Copies share one private part: a setter on one is seen by all.
class ZUUTILS_API CFilterTerm {
 public:
  CFilterTerm();
  explicit CFilterTerm(BFilterTermOptions options);

  // Without a context: ClassString texts become engine 5; others engine 1,
  // with "\**\" put in front of a text that holds a wildcard or the escape
  // character and no backslash. An engine-1 pattern of the form
  // "\**\*<tail>" (the tail free of wildcards, escapes and delimiters) is
  // turned into engine 3 with that tail. Fails with 87 "Malformed raw
  // filter; context close '>' not found, Filter=[%s]" or 87 "Malformed raw
  // filter; empty filter term, Filter=[%s]". A NUL ends the raw text.
  CZuError LoadRaw(const std::string& raw);
  // The raw form, which LoadRaw reads back to the same term.
  std::string GetRawFilterTerm() const;

  bool Matches(const CFilterTermTestString& test) const;
  bool Matches(const std::string& path) const;
  bool Matches(const std::wstring& path) const;
  // Whether a path below the folder could match: engines other than 1
  // answer true; engine 1 matches the folder in folder mode and answers
  // whether the pattern goes on below it (a next-basename position was
  // recorded, or the match took everything below).
  bool IsMatchPossibleInFolder(const CFilterTermTestString& folder) const;
  bool IsMatchPossibleInFolder(const std::string& folder) const;

  // A raw term with context, or a text holding "*", "?" or "[" (after a
  // "\\?\" prefix only "[" anywhere, "*" and "?" after the prefix).
  static bool IsWildcardItem(const std::string& text);
  // Engine 1: the text ends with "***"; engine 2: with ".*".
  bool IsTrailingPathWildcard() const;
  // Same engine, text, options and applies mask.
  bool IsSameFilterAs(const CFilterTerm& other) const;

  void SetPathMatchDelimiter(int delimiter);
  void SetPathMatchEscapeCharacter(int escape);
  // Every term of the process becomes case-insensitive; never undone.
  static void SetForceCaseInsensitiveFilters();
  // CaseDefault terms are case-insensitive (set by the filter set).
  void SetDefaultCaseInsensitive(bool insensitive);
  bool IsCaseInsensitive() const;

  int GetEngine() const;
  unsigned long GetApplies() const;
  void SetApplies(unsigned long applies);
  bool AppliesTo(unsigned long applies) const { return (GetApplies() & applies) != 0; }
  const std::string& GetFilterTerm() const;
  // Engine 3: the tail the path must end with.
  const std::string& GetMatchRight() const;
  const std::string& GetFilterPrefix() const;
  void SetFilterPrefix(const std::string& prefix);
  BFilterTermOptions getOptions() const;
  void setOptions(BFilterTermOptions options);
  boost::shared_ptr<CFilterContext> GetContext() const;
  void SetContext(boost::shared_ptr<CFilterContext> context);
  char GetDelimiter() const;
  char GetEscape() const;
  // Builds the engine now rather than on first use (call before sharing the
  // term between threads).
  CZuError InitializeEngine() const;

 private:
  struct TData;
  bool MatchesForm(const CFilterTermTestString& test, bool folderMode) const;
  boost::shared_ptr<TData> m_data;
};
