#include "paths/PathMatch.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "text/UTF.h"

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
