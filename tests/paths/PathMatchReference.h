// The matching step as a plain backtracking recursion, every try made and
// every mark written in order: the yardstick for the bounded matcher, in the
// differential tests and the fuzz target. Exponential on purpose; callers
// keep inputs small.
#pragma once

#include <cstddef>
#include <string>

#include "paths/PathMatch.h"

namespace ZuTest {

template <class C>
struct TReferenceMatch {
  C delimiter = C('\\');
  C escape = C('/');
  bool insensitive = false;

  // Outputs, as CPathMatchWorkData holds them. nextBasename is an index into
  // the pattern, kNone, or kEndSentinel.
  static constexpr std::ptrdiff_t kNone = -1;
  static constexpr std::ptrdiff_t kEndSentinel = -2;
  std::ptrdiff_t nextBasename = kNone;
  bool recursive = false;
  bool matchEverything = false;
  bool literal = false;

  bool Match(const C* pattern, const C* subject, int flags) {
    nextBasename = kNone;
    recursive = matchEverything = false;
    literal = true;
    m_pattern = pattern;
    m_subject = subject;
    return Step(pattern, subject, flags);
  }

 private:
  const C* m_pattern = nullptr;
  const C* m_subject = nullptr;

  static bool Pathname(int flags) { return (flags & 0x2) != 0; }
  C Fold(C c) const { return insensitive && c >= C('A') && c <= C('Z') ? C(c - 'A' + 'a') : c; }

  static const C* Skip(const C* s) {
    for (;;) {
      if constexpr (sizeof(C) == 1) {
        const auto* u = reinterpret_cast<const unsigned char*>(s);
        if ((u[0] == 0xEF && u[1] == 0xBB && u[2] == 0xBF) ||
            (u[0] == 0xE2 && u[1] == 0x80 && (u[2] == 0x8B || u[2] == 0x8C))) {
          s += 3;
          continue;
        }
      } else if (*s == 0xFEFF || *s == 0x200B || *s == 0x200C) {
        ++s;
        continue;
      }
      return s;
    }
  }

  const C* Find(const C* s, C c) const {
    for (; *s; ++s)
      if (*s == c) return s;
    return nullptr;
  }

  bool Leading(const C* s, int flags) const {
    return (flags & 0x4) && *s == C('.') && (s == m_subject || (Pathname(flags) && s[-1] == delimiter));
  }

  static bool TripleStar(const C* p) { return p[0] == C('*') && p[1] == C('*') && p[2] == C('*') && !p[3]; }

  static long long Signed(C c) {
    if constexpr (sizeof(C) == 1)
      return static_cast<signed char>(c);
    else
      return static_cast<int>(c);
  }

  // 1 member, 0 not, -1 malformed.
  int Range(const C* p, C test, int flags, const C** next) const {
    bool negate = *p == C('!') || *p == C('^');
    if (negate) ++p;
    bool ok = false;
    bool first = true;
    for (;;) {
      C c = *p++;
      if (c == C(']') && !first) break;
      first = false;
      if (c == escape && !(flags & 0x1)) c = *p++;
      if (!c) return -1;
      if (c == delimiter && Pathname(flags)) return -1;
      if (p[0] == C('-') && p[1] && p[1] != C(']')) {
        C hi = p[1];
        p += 2;
        if (hi == escape && !(flags & 0x1)) hi = *p++;
        if (!hi) return 0;
        if (Signed(c) <= Signed(test) && Signed(test) <= Signed(hi)) ok = true;
      } else if (c == test) {
        ok = true;
      }
    }
    *next = p;
    return ok != negate;
  }

  bool Step(const C* p, const C* s, int flags) {
    for (;;) {
      s = Skip(s);
      C c = *p;
      if (!c) return !*s;
      if (c == C('*')) return Star(p, s, flags);
      if (c == C('?')) {
        literal = false;
        if (!*s || (Pathname(flags) && *s == delimiter) || Leading(s, flags)) return false;
        ++p, ++s;
        continue;
      }
      if (c == C('[')) {
        literal = false;
        if (!*s || (Pathname(flags) && *s == delimiter)) return false;
        const C* next = nullptr;
        const int member = Range(p + 1, Fold(*s), flags, &next);
        if (member == 0) return false;
        if (member == 1) {
          p = next, ++s;
          continue;
        }
      }
      if (c == escape && !(flags & 0x1) && p[1]) c = *++p;
      ++p;
      if (!*s) {
        if (c == delimiter) {
          nextBasename = recursive ? kEndSentinel : p - m_pattern;
          if (TripleStar(p)) return true;
        } else if (m_subject[0] == delimiter && !m_subject[1] && m_pattern[0] == delimiter) {
          nextBasename = 1;
        }
        return false;
      }
      if (Fold(*s) != c) return false;
      ++s;
    }
  }

  bool Star(const C* p, const C* s, int flags) {
    literal = false;
    const C* q = p;
    while (*q == C('*')) ++q;
    const bool rec = q - p >= 2 && Pathname(flags) && p > m_pattern && p[-1] == delimiter && (*q == delimiter || !*q);
    if (rec) {
      recursive = true;
      if (*q == delimiter) ++q;
    }
    if (!rec && Leading(s, flags)) return false;
    if (!*q) {
      if (rec) return matchEverything = true;
      return !Pathname(flags) || !Find(s, delimiter);
    }
    if (!rec && Pathname(flags) && *q == delimiter) {
      const C* next = Find(s, delimiter);
      if (!next) {
        nextBasename = q + 1 - m_pattern;
        if (TripleStar(q + 1)) return true;
        if (recursive) nextBasename = kEndSentinel;
        return false;
      }
      return Step(q, next, flags);
    }
    for (;;) {
      s = Skip(s);
      if (Step(q, s, flags & ~0x4)) return true;
      if (rec) {
        const C* next = Find(s, delimiter);
        if (!next) break;
        s = next + 1;
      } else {
        if (!*s || (Pathname(flags) && *s == delimiter)) break;
        ++s;
      }
    }
    if (rec)
      nextBasename = kEndSentinel;
    else if (*q == delimiter)
      nextBasename = q + 1 - m_pattern;
    return false;
  }
};

// The matcher next to the reference on one pair: the answer, every
// work-data mark and the next-basename position. Empty when they agree,
// else the first thing that differs.
template <class C>
std::string CompareWithReference(const std::basic_string<C>& pattern, const std::basic_string<C>& subject, int flags,
                                 bool insensitive) {
  CPathMatchTemplate<C> matcher;
  TReferenceMatch<C> reference;
  if (insensitive) matcher.caseInsensitive();
  reference.insensitive = insensitive;
  CPathMatchWorkData wd;
  const int got = matcher.fnmatch(wd, pattern.c_str(), subject.c_str(), flags);
  const bool want = reference.Match(pattern.c_str(), subject.c_str(), flags);
  std::ptrdiff_t position = TReferenceMatch<C>::kNone;
  if (wd.nextBasenameExists()) {
    const C* p = static_cast<const C*>(wd.getNextBasenamePosition());
    position = p >= pattern.c_str() && p <= pattern.c_str() + pattern.size() ? p - pattern.c_str()
                                                                             : TReferenceMatch<C>::kEndSentinel;
  }
  if (got != (want ? 1 : 0)) return "answer " + std::to_string(got);
  if (position != reference.nextBasename) return "next basename " + std::to_string(position);
  if (wd.isRecursiveMatch() != reference.recursive) return "recursive mark";
  if (wd.isMatchEverything() != reference.matchEverything) return "match-everything mark";
  if (wd.isLiteralMatch() != reference.literal) return "literal mark";
  return std::string();
}

}  // namespace ZuTest
