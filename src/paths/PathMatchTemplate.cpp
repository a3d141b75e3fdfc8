#include "paths/PathMatch.h"

#include <cstdint>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/ZuTypes.h"

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

