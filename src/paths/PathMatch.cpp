#include "paths/PathMatch.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/ZuTypes.h"
#include "text/UTF.h"

namespace {

// What a step of the recursion tells the stars above it. Beyond plain "no
// match", ABORT_ALL says the subject ran out, so no star above can do better
// by trying later positions; ABORT_TO_STARSTAR says a single star reached a
// delimiter, so only a recursive "**" above can still help by moving to a
// later component.
enum : int { kNoMatch = 0, kMatch = 1, kAbortAll = 2, kAbortToStarStar = 3 };

template <class C>
struct TUnits;

template <>
struct TUnits<char> {
  static constexpr const char* kInitialize = "CPathMatchTemplate<char>::initialize";
  static constexpr const char* kSetDelimiter = "CPathMatchTemplate<char>::setDelimiter";
  // Length of the invisible character at text (U+FEFF, U+200B, U+200C in
  // UTF-8), else 0.
  static int Invisible(const char* text) {
    const auto* u = reinterpret_cast<const unsigned char*>(text);
    if (u[0] == 0xEF) return u[1] == 0xBB && u[2] == 0xBF ? 3 : 0;
    if (u[0] == 0xE2) return u[1] == 0x80 && (u[2] == 0x8B || u[2] == 0x8C) ? 3 : 0;
    return 0;
  }
  static long long Signed(char c) { return static_cast<signed char>(c); }
  // True for 0xE2 and 0xEF, the first bytes of the invisible characters
  // (and for a few other bytes, which then take the general path).
  static bool MayBeInvisible(char c) { return (static_cast<unsigned char>(c) | 0x0D) == 0xEF; }
};

template <>
struct TUnits<unsigned long> {
  static constexpr const char* kInitialize = "CPathMatchTemplate<unsigned long>::initialize";
  static constexpr const char* kSetDelimiter = "CPathMatchTemplate<unsigned long>::setDelimiter";
  static int Invisible(const unsigned long* text) {
    return *text == 0xFEFF || *text == 0x200B || *text == 0x200C ? 1 : 0;
  }
  static long long Signed(unsigned long c) { return static_cast<long long>(static_cast<std::int32_t>(c)); }
  static bool MayBeInvisible(unsigned long c) { return c >= 0x200B; }
};

template <class C>
inline const C* SkipInvisible(const C* s) {
  for (int n; (n = TUnits<C>::Invisible(s)) != 0;) s += n;
  return s;
}

template <class C>
inline C Fold(C c, bool insensitive) {
  return insensitive && c >= C('A') && c <= C('Z') ? C(c + ('a' - 'A')) : c;
}

template <class C>
inline bool IsWildcard(C c) {
  return c == C('*') || c == C('?') || c == C('[');
}

// "***" and the end: what may follow the last delimiter of a pattern that
// takes a folder itself.
template <class C>
inline bool IsTripleStar(const C* p) {
  return p[0] == C('*') && p[1] == C('*') && p[2] == C('*') && p[3] == C(0);
}

}  // namespace

template <class C>
struct CPathMatchTemplate<C>::TContext {
  CPathMatchWorkData* workData;
  const C* patternStart;
  const C* subjectStart;
};

template <class C>
CPathMatchTemplate<C>::CPathMatchTemplate() : m_delimiter(C('\\')), m_escape(C('/')) {
  m_pattern[0] = 0;
  m_end[0] = 0;
}

template <class C>
void CPathMatchTemplate<C>::caseInsensitive() {
  m_caseInsensitive = 1;
}

template <class C>
void CPathMatchTemplate<C>::caseSensitive() {
  m_caseInsensitive = 0;
}

template <class C>
bool CPathMatchTemplate<C>::getCaseSensitivity() const {
  return m_caseInsensitive == 0;
}

template <class C>
C CPathMatchTemplate<C>::getDelimiter() const {
  return m_delimiter;
}

template <class C>
void CPathMatchTemplate<C>::setEscape(C escape) {
  m_escape = escape;
}

template <class C>
C CPathMatchTemplate<C>::getEscape() const {
  return m_escape;
}

template <class C>
const C* CPathMatchTemplate<C>::getPattern() const {
  return m_pattern;
}

template <class C>
std::size_t CPathMatchTemplate<C>::myStrlen(const C* text) {
  const C* p = text;
  while (*p) ++p;
  return static_cast<std::size_t>(p - text);
}

template <class C>
const C* CPathMatchTemplate<C>::myStrchr(const C* text, C unit) {
  for (;; ++text) {
    if (*text == unit) return text;
    if (!*text) return nullptr;
  }
}

template <class C>
const C* CPathMatchTemplate<C>::myStrrchr(const C* text, C unit) {
  const C* found = nullptr;
  for (;; ++text) {
    if (*text == unit) found = text;
    if (!*text) return found;
  }
}

template <class C>
C* CPathMatchTemplate<C>::myStrcpy(C* target, const C* source) {
  C* t = target;
  while ((*t++ = *source++) != 0) {
  }
  return target;
}

template <class C>
void CPathMatchTemplate<C>::setDelimiter(C delimiter) {
  m_delimiter = delimiter;
  if (delimiter == C(',') || delimiter == C('.') || delimiter == C('/'))
    m_escape = C('\\');
  else if (delimiter == C('\\'))
    m_escape = C('/');
  else
    CZuLogger::GetGlobalInstance().LogMessage(1, TUnits<C>::kSetDelimiter, __LINE__, nullptr,
                                              "Illegal delimiter 0x%X, escape remains 0x%X",
                                              static_cast<unsigned>(delimiter), static_cast<unsigned>(m_escape));
}

template <class C>
CZuError CPathMatchTemplate<C>::initialize(const C* pattern, bool isWildcard, bool wildcardOnlyInName) {
  static const C kEmpty[1] = {0};
  if (!pattern) pattern = kEmpty;
  // Units before `literalEnd` get escapes; the rest is copied as it is.
  const C* literalEnd = pattern;
  if (!isWildcard) {
    literalEnd = pattern + myStrlen(pattern);
  } else if (wildcardOnlyInName) {
    literalEnd = myStrrchr(pattern, m_delimiter);
    if (!literalEnd)
      return FXErrorUtil::ErrorWin32(ZU_HERE(TUnits<C>::kInitialize), ERROR_FUNCTION_FAILED,
                                     "Pattern contains no delimiter, Delimiter=0x%X",
                                     static_cast<unsigned>(m_delimiter));
  }
  int length = 0;
  for (const C* p = pattern; *p; ++p) {
    const bool escape = p < literalEnd && (IsWildcard(*p) || *p == m_escape);
    if (length + (escape ? 2 : 1) >= kMaxPatternLength) {
      m_pattern[0] = 0;
      return FXErrorUtil::ErrorWin32(ZU_HERE(TUnits<C>::kInitialize), ERROR_BUFFER_OVERFLOW,
                                     "Pattern too long, MaxLength=%d", kMaxPatternLength);
    }
    if (escape) m_pattern[length++] = m_escape;
    m_pattern[length++] = *p;
  }
  m_pattern[length] = 0;
  if (m_caseInsensitive)
    for (int i = 0; i < length; ++i) m_pattern[i] = Fold(m_pattern[i], true);
  return CZuError::Success();
}

template <class C>
CPathMatchResult CPathMatchTemplate<C>::match(CPathMatchWorkData& workData, const C* subject) const {
  workData.m_nextBasename = nullptr;
  workData.m_recursive = false;
  workData.m_matchEverything = false;
  workData.m_subject = subject;
  return fnmatch(workData, m_pattern, subject, PATHMATCH_FLAG_PATHNAME) == 1 ? PATHMATCH_MATCH
                                                                              : PATHMATCH_NOMATCH;
}

template <class C>
int CPathMatchTemplate<C>::fnmatch(CPathMatchWorkData& workData, const C* pattern, const C* subject,
                                   int flags) const {
  static const C kEmpty[1] = {0};
  if (!pattern) pattern = kEmpty;
  if (!subject) subject = kEmpty;
  workData.m_literal = true;
  const TContext context{&workData, pattern, subject};
  return doMatch(context, pattern, subject, flags) == kMatch ? 1 : 0;
}

template <class C>
int CPathMatchTemplate<C>::doMatch(const TContext& context, const C* p, const C* s, int flags) const {
  CPathMatchWorkData& wd = *context.workData;
  const bool pathname = (flags & PATHMATCH_FLAG_PATHNAME) != 0;
  const bool insensitive = m_caseInsensitive != 0;
  auto leadingPeriod = [&](const C* at) {
    return (flags & PATHMATCH_FLAG_PERIOD) && *at == C('.') &&
           (at == context.subjectStart || (pathname && at[-1] == m_delimiter));
  };
  for (;;) {
    C c = *p;
    // The common step first: a plain pattern character against a subject
    // character that cannot start an invisible one.
    if (c != 0 && !IsWildcard(c) && c != m_escape && *s != 0 && !TUnits<C>::MayBeInvisible(*s)) {
      if (Fold(*s, insensitive) != c) return kNoMatch;
      ++p, ++s;
      continue;
    }
    s = SkipInvisible(s);
    if (c == 0) return *s == 0 ? kMatch : kNoMatch;
    if (c == C('*')) return doStar(context, p, s, flags);
    if (c == C('?')) {
      wd.m_literal = false;
      if (*s == 0) return kAbortAll;
      if ((pathname && *s == m_delimiter) || leadingPeriod(s)) return kNoMatch;
      ++p, ++s;
      continue;
    }
    if (c == C('[')) {
      wd.m_literal = false;
      if (*s == 0) return kAbortAll;
      if (pathname && *s == m_delimiter) return kNoMatch;
      const C* next = nullptr;
      const int member = rangematch(p + 1, Fold(*s, insensitive), flags, &next);
      if (member >= 0) {
        if (member == 0) return kNoMatch;
        p = next, ++s;
        continue;
      }
      // Not a well-formed class: the "[" stands for itself.
    }
    if (c == m_escape && !(flags & PATHMATCH_FLAG_NOESCAPE) && p[1] != 0) c = *++p;
    ++p;
    if (*s == 0) {
      if (c == m_delimiter) {
        wd.m_nextBasename = wd.m_recursive ? m_end : p;
        if (IsTripleStar(p)) return kMatch;
      } else if (context.subjectStart[0] == m_delimiter && context.subjectStart[1] == 0 &&
                 context.patternStart[0] == m_delimiter) {
        wd.m_nextBasename = context.patternStart + 1;
      }
      return kAbortAll;
    }
    if (Fold(*s, insensitive) != c) return kNoMatch;
    ++s;
  }
}

template <class C>
int CPathMatchTemplate<C>::doStar(const TContext& context, const C* p, const C* s, int flags) const {
  CPathMatchWorkData& wd = *context.workData;
  const bool pathname = (flags & PATHMATCH_FLAG_PATHNAME) != 0;
  wd.m_literal = false;
  const C* q = p;
  while (*q == C('*')) ++q;
  const bool recursive = q - p >= 2 && pathname && p > context.patternStart && p[-1] == m_delimiter &&
                         (*q == m_delimiter || *q == 0);
  if (recursive) {
    wd.m_recursive = true;
    if (*q == m_delimiter) ++q;
  }
  if (!recursive && (flags & PATHMATCH_FLAG_PERIOD) && *s == C('.') &&
      (s == context.subjectStart || (pathname && s[-1] == m_delimiter)))
    return kNoMatch;
  if (*q == 0) {
    if (recursive) {
      wd.m_matchEverything = true;
      return kMatch;
    }
    return !pathname || !myStrchr(s, m_delimiter) ? kMatch : kAbortToStarStar;
  }
  if (!recursive && pathname && *q == m_delimiter) {
    const C* next = myStrchr(s, m_delimiter);
    if (!next) {
      wd.m_nextBasename = q + 1;
      if (IsTripleStar(q + 1)) return kMatch;
      if (wd.m_recursive) wd.m_nextBasename = m_end;
      return kAbortAll;
    }
    return doMatch(context, q, next, flags);
  }
  const int tryFlags = flags & ~PATHMATCH_FLAG_PERIOD;
  // Skipping the remaining tries must not skip a mark they would write.
  // Every mark is written at a delimiter of the pattern; under pathname a
  // single star's later tries reach such a delimiter only where an earlier
  // try already did. Without pathname that holds only for a rest of the
  // pattern that holds no delimiter at all.
  const bool mayStop = recursive || pathname || !myStrchr(q, m_delimiter);
  // A try whose first element is a plain character that the subject does
  // not hold there fails at once and writes nothing: it needs no call.
  const C head = *q;
  const bool plainHead = !IsWildcard(head) && head != m_escape && head != m_delimiter;
  const bool insensitive = m_caseInsensitive != 0;
  int result = kAbortAll;
  for (;;) {
    s = SkipInvisible(s);
    const int tried =
        plainHead && *s != 0 && Fold(*s, insensitive) != head ? kNoMatch : doMatch(context, q, s, tryFlags);
    if (tried == kMatch) return kMatch;
    if (recursive) {
      // A later component may still do; running out of subject ends it.
      if (tried == kAbortAll) break;
      const C* next = myStrchr(s, m_delimiter);
      if (!next) break;
      s = next + 1;
    } else {
      if (tried != kNoMatch && mayStop) {
        result = tried;
        break;
      }
      if (*s == 0) break;
      if (pathname && *s == m_delimiter) {
        result = kAbortToStarStar;
        break;
      }
      ++s;
    }
  }
  if (recursive)
    wd.m_nextBasename = m_end;
  else if (*q == m_delimiter)
    wd.m_nextBasename = q + 1;
  return result;
}

template <class C>
int CPathMatchTemplate<C>::rangematch(const C* p, C test, int flags, const C** next) const {
  const bool escapes = !(flags & PATHMATCH_FLAG_NOESCAPE);
  const bool negate = *p == C('!') || *p == C('^');
  if (negate) ++p;
  const long long t = TUnits<C>::Signed(test);
  bool ok = false;
  C c = *p++;
  do {
    if (c == m_escape && escapes) c = *p++;
    if (c == 0) return -1;
    if (c == m_delimiter && (flags & PATHMATCH_FLAG_PATHNAME)) return -1;
    C c2;
    if (*p == C('-') && (c2 = p[1]) != 0 && c2 != C(']')) {
      p += 2;
      if (c2 == m_escape && escapes) c2 = *p++;
      if (c2 == 0) return 0;
      if (TUnits<C>::Signed(c) <= t && t <= TUnits<C>::Signed(c2)) ok = true;
    } else if (c == test) {
      ok = true;
    }
  } while ((c = *p++) != C(']'));
  *next = p;
  return ok != negate ? 1 : 0;
}

template <class C>
CBaseNameType CPathMatchTemplate<C>::getNextBasename(const CPathMatchWorkData& workData, C* buffer,
                                                     std::size_t capacity) const {
  if (capacity) buffer[0] = 0;
  if (!workData.m_nextBasename) return BASENAME_NONE;
  const C* p = static_cast<const C*>(workData.m_nextBasename);
  std::size_t copied = 0;
  for (; *p && *p != m_delimiter; ++p) {
    if (IsWildcard(*p)) {
      if (capacity) buffer[copied < capacity ? copied : capacity - 1] = 0;
      return copied ? BASENAME_LITERAL_PREFIX : BASENAME_WILDCARD_OR_END;
    }
    if (*p == m_escape && p[1]) ++p;
    if (copied + 1 < capacity) buffer[copied] = *p;
    ++copied;
  }
  if (capacity) buffer[copied < capacity ? copied : capacity - 1] = 0;
  return copied ? BASENAME_LITERAL : BASENAME_WILDCARD_OR_END;
}

template class CPathMatchTemplate<char>;
template class CPathMatchTemplate<unsigned long>;

namespace {

constexpr const char* kUncPrefix = "\\UNC-NT_";

// UTF-8 to code points, strictly: a subject that is not valid UTF-8 is left
// to the byte matcher. Short texts stay on the stack.
class CCodePoints {
 public:
  CZuError Convert(const char* text) {
    const std::size_t length = std::strlen(text);
    FXUTF::UTF32* units = m_stackUnits;
    if (length + 1 > kStack) {
      m_heapUnits.resize(length + 1);
      units = m_heapUnits.data();
    }
    const auto* source = reinterpret_cast<const FXUTF::UTF8*>(text);
    FXUTF::UTF32* target = units;
    CZuError result =
        FXUTF::ConvertUTF8ToUTF32(&source, source + length, &target, units + length, FXUTF::strictConversion);
    if (result.IsError()) return result;
    const std::size_t count = static_cast<std::size_t>(target - units);
    m_text = m_stackText;
    if (count + 1 > kStack) {
      m_heapText.resize(count + 1);
      m_text = m_heapText.data();
    }
    for (std::size_t i = 0; i < count; ++i) m_text[i] = units[i];
    m_text[count] = 0;
    return result;
  }
  const unsigned long* Text() const { return m_text; }

 private:
  static constexpr std::size_t kStack = 256;
  FXUTF::UTF32 m_stackUnits[kStack];
  unsigned long m_stackText[kStack];
  std::vector<FXUTF::UTF32> m_heapUnits;
  std::vector<unsigned long> m_heapText;
  unsigned long* m_text = m_stackText;
};

}  // namespace

CPathMatch::CPathMatch() = default;
CPathMatch::~CPathMatch() = default;

namespace {

bool IsAscii(const char* text) {
  const std::size_t length = std::strlen(text);
  std::uint64_t any = 0;
  std::size_t i = 0;
  for (; i + 8 <= length; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text + i, 8);
    any |= word;
  }
  for (; i < length; ++i) any |= static_cast<unsigned char>(text[i]);
  return (any & 0x8080808080808080ULL) == 0;
}

}  // namespace

CZuError CPathMatch::initialize(const char* pattern, bool isWildcard, bool wildcardOnlyInName) {
  if (!pattern) pattern = "";
  m_longMode = false;
  m_asciiPattern = IsAscii(pattern);
  m_plainLead = 0;
  CZuError result = m_byte.initialize(pattern, isWildcard, wildcardOnlyInName);
  if (result.IsError()) return result.Push(ZU_HERE("CPathMatch::initialize"));
  const char* compiled = m_byte.getPattern();
  while (compiled[m_plainLead] && static_cast<unsigned char>(compiled[m_plainLead]) < 0x80 &&
         !std::strchr("*?[", compiled[m_plainLead]) && compiled[m_plainLead] != m_byte.getEscape())
    ++m_plainLead;
  if (!isWildcard || !std::strpbrk(pattern, "?[")) return result;
  CCodePoints points;
  result = points.Convert(pattern);
  if (!result.IsError()) result = m_long.initialize(points.Text(), isWildcard, wildcardOnlyInName);
  if (result.IsError()) return result.Push(ZU_HERE("CPathMatch::initialize"));
  m_longMode = true;
  return result;
}

CPathMatchResult CPathMatch::match(CPathMatchWorkData& workData, const char* subject) {
  if (!subject) subject = "";
  // A subject that differs from the pattern's plain ASCII lead, before
  // either ends or meets another byte, fails in both templates at once and
  // leaves the marks as a failed literal comparison does.
  const bool fold = !m_byte.getCaseSensitivity();
  const char* lead = m_byte.getPattern();
  for (std::size_t i = 0; i < m_plainLead; ++i) {
    const char c = subject[i];
    if (c == 0 || static_cast<unsigned char>(c) >= 0x80) break;
    const char folded = fold && c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    if (folded != lead[i]) {
      workData.m_nextBasename = nullptr;
      workData.m_recursive = false;
      workData.m_matchEverything = false;
      workData.m_literal = true;
      workData.m_long = false;
      workData.m_subject = subject;
      return PATHMATCH_NOMATCH;
    }
  }
  if (m_longMode && !(m_asciiPattern && IsAscii(subject))) {
    CCodePoints points;
    CZuError converted = points.Convert(subject);
    if (!converted.IsError()) {
      const CPathMatchResult result = m_long.match(workData, points.Text());
      // The subject record names the caller's text, not the converted copy.
      workData.m_subject = subject;
      workData.m_long = true;
      return result;
    }
    CZuLogger::GetGlobalInstance().LogMessage(4, "CPathMatch::match", __LINE__, nullptr,
                                              "ConvertTo UTF32 failed, error=%s",
                                              converted.AsString().c_str());
  }
  workData.m_long = false;
  return m_byte.match(workData, subject);
}

CPathMatchResult CPathMatch::match(const char* subject) {
  CPathMatchWorkData workData;
  return match(workData, subject);
}

CPathMatchResult CPathMatch::match(CPathMatchWorkData& workData, const unsigned long* subject) {
  static const unsigned long kEmpty[1] = {0};
  workData.m_long = true;
  return m_long.match(workData, subject ? subject : kEmpty);
}

int CPathMatch::fnmatch(CPathMatchWorkData& workData, const char* pattern, const char* subject, int flags,
                        bool useLong) {
  if (!useLong) {
    workData.m_long = false;
    return m_byte.fnmatch(workData, pattern, subject, flags);
  }
  CCodePoints longPattern, longSubject;
  if (longPattern.Convert(pattern ? pattern : "").IsError() || longSubject.Convert(subject ? subject : "").IsError())
    return m_byte.fnmatch(workData, pattern, subject, flags);
  // The next-basename position would point into the converted copy.
  const int result = m_long.fnmatch(workData, longPattern.Text(), longSubject.Text(), flags);
  workData.m_nextBasename = nullptr;
  return result;
}

CBaseNameType CPathMatch::getNextBasename(const CPathMatchWorkData& workData, std::string& basename) const {
  basename.clear();
  if (!workData.m_long) {
    char buffer[CPathMatchTemplate<char>::kMaxPatternLength + 1];
    const CBaseNameType type = m_byte.getNextBasename(workData, buffer, sizeof buffer);
    basename = buffer;
    return type;
  }
  unsigned long buffer[CPathMatchTemplate<unsigned long>::kMaxPatternLength + 1];
  const CBaseNameType type = m_long.getNextBasename(workData, buffer, CPathMatchTemplate<unsigned long>::kMaxPatternLength + 1);
  for (const unsigned long* p = buffer; *p; ++p) {
    const unsigned long c = *p;
    if (c < 0x80) {
      basename += static_cast<char>(c);
    } else if (c < 0x800) {
      basename += static_cast<char>(0xC0 | (c >> 6));
      basename += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      basename += static_cast<char>(0xE0 | (c >> 12));
      basename += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      basename += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      basename += static_cast<char>(0xF0 | (c >> 18));
      basename += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      basename += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      basename += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return type;
}

void CPathMatch::caseInsensitive() {
  m_byte.caseInsensitive();
  m_long.caseInsensitive();
}

void CPathMatch::caseSensitive() {
  m_byte.caseSensitive();
  m_long.caseSensitive();
}

void CPathMatch::setDelimiter(char delimiter) {
  m_byte.setDelimiter(delimiter);
  m_long.setDelimiter(static_cast<unsigned char>(delimiter));
}

void CPathMatch::setEscape(char escape) {
  m_byte.setEscape(escape);
  m_long.setEscape(static_cast<unsigned char>(escape));
}

namespace {

// "\\srv\x" -> "\UNC-NT_srv\x"; other texts unchanged.
std::string UncRewrite(const char* text) {
  if (text[0] == '\\' && text[1] == '\\') return kUncPrefix + std::string(text + 2);
  return text;
}

}  // namespace

CZuError CPathMatchUnc::initialize(const char* pattern, bool isWildcard, bool wildcardOnlyInName) {
  CZuError result = CPathMatch::initialize(UncRewrite(pattern ? pattern : "").c_str(), isWildcard, wildcardOnlyInName);
  if (result.IsError()) result.Push(ZU_HERE("CPathMatchUnc::initialize"));
  return result;
}

CPathMatchResult CPathMatchUnc::match(CPathMatchWorkData& workData, const char* subject) {
  if (!subject || subject[0] != '\\' || subject[1] != '\\') return CPathMatch::match(workData, subject);
  const std::string rewritten = UncRewrite(subject);
  const CPathMatchResult result = CPathMatch::match(workData, rewritten.c_str());
  workData.m_subject = subject;
  return result;
}
