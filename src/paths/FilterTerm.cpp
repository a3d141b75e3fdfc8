#include "paths/FilterTerm.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "paths/PathMatch.h"
#include "platform/ZuTypes.h"
#include "text/StringConvert.h"
#include "text/UTF.h"

namespace {

std::atomic<bool> g_forceCaseInsensitive{false};

inline char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// Length of the invisible character (U+FEFF, U+200B, U+200C) at text, else 0.
inline int InvisibleAt(const char* text, std::size_t left) {
  if (left < 3) return 0;
  const auto* u = reinterpret_cast<const unsigned char*>(text);
  if (u[0] == 0xEF) return u[1] == 0xBB && u[2] == 0xBF ? 3 : 0;
  if (u[0] == 0xE2) return u[1] == 0x80 && (u[2] == 0x8B || u[2] == 0x8C) ? 3 : 0;
  return 0;
}

// The tail of a pattern "\**\*<tail>" whose tail is plain printable ASCII
// without wildcards, escape or delimiter: such a pattern takes exactly the
// paths whose last component ends with the tail. Empty when the pattern has
// another form.
std::string MatchRightTail(const std::string& pattern, char escape) {
  static const char kLead[] = "\\**\\*";
  if (pattern.compare(0, 5, kLead) != 0 || pattern.size() == 5) return std::string();
  for (std::size_t i = 5; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c < 0x20 || c > 0x7E || c == '*' || c == '?' || c == '[' || c == '\\' || c == escape) return std::string();
  }
  return pattern.substr(5);
}

}  // namespace

CFilterContext::~CFilterContext() = default;

// ---------------------------------------------------------------------------
// CFilterTermTestString

CFilterTermTestString::CFilterTermTestString(const std::string& path, bool exposeRoot) : m_exposeRoot(exposeRoot) {
  const std::size_t length = std::strlen(path.c_str());  // a NUL ends the path, as for the matchers
  const std::size_t skip = length && path[0] == '\\' ? 1 : 0;
  const std::size_t trailing = length > skip + 1 && path[length - 1] == '\\' ? 1 : 0;
  m_with.reserve(length + 1 - skip);
  m_with += '\\';
  m_with.append(path, skip, length - skip - trailing);
}

CFilterTermTestString::CFilterTermTestString(const std::wstring& path, bool exposeRoot)
    : CFilterTermTestString(FXString::ToString(path), exposeRoot) {}

const unsigned long* CFilterTermTestString::ConvertToUtf32() const {
  if (!(m_made & kUtf32Made)) {
    m_made |= kUtf32Made;
    std::vector<FXUTF::UTF32> units(m_with.size() + 1);
    const auto* source = reinterpret_cast<const FXUTF::UTF8*>(m_with.data());
    FXUTF::UTF32* target = units.data();
    if (!FXUTF::ConvertUTF8ToUTF32(&source, source + m_with.size(), &target, units.data() + m_with.size(),
                                   FXUTF::strictConversion)
             .IsError()) {
      m_utf32.assign(units.data(), target);
      m_utf32.push_back(0);
    }
  }
  return m_utf32.empty() ? nullptr : m_utf32.data();
}

const std::string& CFilterTermTestString::GetFoldedKey() const {
  if (!(m_made & kFoldedMade)) {
    m_made |= kFoldedMade;
    m_folded.assign(m_with, 1, std::string::npos);
    for (char& c : m_folded) c = FoldAscii(c);
  }
  return m_folded;
}

const std::string& CFilterTermTestString::GetIndexKey() const {
  const std::string& folded = GetFoldedKey();
  if (!(m_made & kIndexMade)) {
    m_made |= kIndexMade;
    if (folded.find_first_of("\xEF\xE2") != std::string::npos) {
      for (std::size_t i = 0; i < folded.size();) {
        const int n = InvisibleAt(folded.data() + i, folded.size() - i);
        if (n)
          i += static_cast<std::size_t>(n);
        else
          m_stripped += folded[i++];
      }
      if (m_stripped.size() != folded.size()) m_made |= kStripped;
    }
  }
  return (m_made & kStripped) ? m_stripped : folded;
}

// ---------------------------------------------------------------------------
// CFilterTerm

struct CFilterTerm::TData {
  unsigned long long engine = 1;
  unsigned long applies = FILTER_APPLIES_ALL;
  std::string text;
  std::string tail;
  std::string prefix;
  BFilterTermOptions options;
  boost::shared_ptr<CFilterContext> context;
  char delimiter = '\\';
  char escape = '/';
  bool defaultInsensitive = false;

  std::mutex lock;
  std::atomic<int> engineState{0};  // 0 not built, 1 ready, -1 failed
  std::unique_ptr<CPathMatchUnc> matcher;

  void ResetEngine() {
    std::lock_guard<std::mutex> guard(lock);
    engineState.store(0, std::memory_order_release);
    matcher.reset();
  }
};

CFilterTerm::CFilterTerm() : m_data(new TData) {}

CFilterTerm::CFilterTerm(BFilterTermOptions options) : m_data(new TData) { m_data->options = options; }

bool CFilterTerm::IsWildcardItem(const std::string& text) {
  if (!text.empty() && text[0] == '<') return true;
  if (text.compare(0, 4, "\\\\?\\") == 0)
    return text.find_first_of("*?", 4) != std::string::npos || text.find('[') != std::string::npos;
  return text.find_first_of("*?[") != std::string::npos;
}

CZuError CFilterTerm::LoadRaw(const std::string& text0) {
  // The text as the C string it stands for: matchers stop at a NUL.
  const std::string raw = text0.substr(0, text0.find('\0'));
  TData& d = *m_data;
  std::string text = raw;
  bool engineGiven = false;
  if (!raw.empty() && raw[0] == '<') {
    const std::size_t close = raw.find('>');
    if (close == std::string::npos)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterTerm::LoadRaw"), ERROR_INVALID_PARAMETER,
                                     "Malformed raw filter; context close '>' not found, Filter=[%s]", raw.c_str());
    const std::string context = raw.substr(1, close - 1);
    text = raw.substr(close + 1);
    if (text.empty())
      return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterTerm::LoadRaw"), ERROR_INVALID_PARAMETER,
                                     "Malformed raw filter; empty filter term, Filter=[%s]", raw.c_str());
    for (std::size_t start = 0; start <= context.size();) {
      std::size_t end = context.find(':', start);
      if (end == std::string::npos) end = context.size();
      const std::string item = context.substr(start, end - start);
      start = end + 1;
      if (item == "ci") {
        d.options.Select(BFilterTermOptions::FILTER_CASE_STATE, BFilterTermOptions::FILTER_CASE_INSENSITIVE);
      } else if (item == "cs") {
        d.options.Select(BFilterTermOptions::FILTER_CASE_STATE, BFilterTermOptions::FILTER_CASE_SENSITIVE);
      } else if (item.compare(0, 2, "e=") == 0) {
        d.engine = std::strtoull(item.c_str() + 2, nullptr, 16);
        engineGiven = true;
      } else if (item.compare(0, 2, "a=") == 0) {
        d.applies = static_cast<unsigned long>(std::strtoull(item.c_str() + 2, nullptr, 16) & 0xFFFFFFFFULL);
      } else if (item == "WM") {
        d.options.Select(BFilterTermOptions::FILTER_CLASS_STATE, BFilterTermOptions::FILTER_CLASS_PATH);
      } else if (item == "DT") {
        d.options.Select(BFilterTermOptions::FILTER_CLASS_STATE, BFilterTermOptions::FILTER_CLASS_STRING);
      } else if (item == "FD") {
        d.options.Select(BFilterTermOptions::FILTER_CLASS_STATE, BFilterTermOptions::FILTER_CLASS_DEFAULT);
      }
    }
  } else if (text.empty()) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterTerm::LoadRaw"), ERROR_INVALID_PARAMETER,
                                   "Malformed raw filter; empty filter term, Filter=[%s]", raw.c_str());
  }
  if (!engineGiven) {
    if (d.options.IsSelected(BFilterTermOptions::FILTER_CLASS_STATE, BFilterTermOptions::FILTER_CLASS_STRING)) {
      d.engine = 5;
    } else {
      d.engine = 1;
      const char special[] = {'*', '[', '?', d.escape, 0};
      if (text.find_first_of(special) != std::string::npos && text.find('\\') == std::string::npos)
        text = "\\**\\" + text;
    }
  }
  d.text = text;
  d.tail.clear();
  if (d.engine == 1 && d.delimiter == '\\') {
    d.tail = MatchRightTail(text, d.escape);
    if (!d.tail.empty()) {
      d.engine = 3;
      CZuLogger::GetGlobalInstance().LogMessage(
          3, "CFilterTerm::LoadRaw", __LINE__, nullptr,
          "Converting PathMatch filter to MatchRight, FilterTerm=[%s], MatchRight=[%s]", text.c_str(), d.tail.c_str());
    }
  } else if (d.engine == 3) {
    d.tail = MatchRightTail(text, d.escape);
    if (d.tail.empty()) d.tail = text;
  }
  d.ResetEngine();
  CZuLogger::GetGlobalInstance().LogMessage(3, "CFilterTerm::LoadRaw", __LINE__, nullptr,
                                            "FilterEngine=[%d], FilterApplies=[%d], FilterTerm=[%s]",
                                            static_cast<int>(d.engine), static_cast<int>(d.applies),
                                            d.text.c_str());
  return CZuError::Success();
}

std::string CFilterTerm::GetRawFilterTerm() const {
  const TData& d = *m_data;
  std::string raw = "<";
  if (d.options.IsSelected(BFilterTermOptions::FILTER_CASE_STATE, BFilterTermOptions::FILTER_CASE_INSENSITIVE))
    raw += ":ci";
  else if (d.options.IsSelected(BFilterTermOptions::FILTER_CASE_STATE, BFilterTermOptions::FILTER_CASE_SENSITIVE))
    raw += ":cs";
  char number[40];
  std::snprintf(number, sizeof number, ":e=0x%llX", d.engine);
  raw += number;
  if (d.applies != FILTER_APPLIES_ALL) {
    std::snprintf(number, sizeof number, ":a=0x%llX", static_cast<unsigned long long>(d.applies));
    raw += number;
  }
  const unsigned long cls = d.options.GetSelected(BFilterTermOptions::FILTER_CLASS_STATE);
  raw += cls == BFilterTermOptions::FILTER_CLASS_PATH ? ":WM" : cls == BFilterTermOptions::FILTER_CLASS_STRING ? ":DT" : ":FD";
  raw += '>';
  raw += d.text;
  return raw;
}

CZuError CFilterTerm::InitializeEngine() const {
  TData& d = *m_data;
  if (d.engine != 1) return CZuError::Success();
  std::lock_guard<std::mutex> guard(d.lock);
  if (d.engineState.load(std::memory_order_acquire) == 1) return CZuError::Success();
  std::unique_ptr<CPathMatchUnc> matcher(new CPathMatchUnc);
  matcher->setDelimiter(d.delimiter);
  matcher->setEscape(d.escape);
  if (IsCaseInsensitive()) matcher->caseInsensitive();
  CZuError result = matcher->initialize(d.text.c_str(), true, false);
  if (result.IsError()) {
    d.engineState.store(-1, std::memory_order_release);
    return result.Push(ZU_HERE("CFilterTerm::InitializeEngine"));
  }
  d.matcher = std::move(matcher);
  d.engineState.store(1, std::memory_order_release);
  return result;
}

bool CFilterTerm::MatchesForm(const CFilterTermTestString& test, bool folderMode) const {
  const TData& d = *m_data;
  const bool with = test.IsExposeRoot() || (!d.text.empty() && d.text[0] == d.delimiter);
  const char* form = with ? test.GetStringWithLeadingBackslash() : test.GetStringWithoutLeadingBackslash();
  switch (d.engine) {
    case 1: {
      int state = d.engineState.load(std::memory_order_acquire);
      if (state == 0) {
        CZuError result = InitializeEngine();
        if (result.IsError())
          CZuLogger::GetGlobalInstance().LogMessage(
              1, folderMode ? "CFilterTerm::IsMatchPossibleInFolder" : "CFilterTerm::Matches", __LINE__, nullptr,
              "InitializeEngine failed, error=%s", result.AsString().c_str());
        state = d.engineState.load(std::memory_order_acquire);
      }
      if (state != 1) return false;
      CPathMatchWorkData wd;
      CPathMatchResult matched;
      const unsigned long* points =
          d.matcher->IsLongMode() && !(form[0] == '\\' && form[1] == '\\') ? test.ConvertToUtf32() : nullptr;
      if (points)
        matched = d.matcher->match(wd, points + (with ? 0 : 1));
      else
        matched = d.matcher->match(wd, form);
      if (folderMode) return wd.nextBasenameExists() || wd.isMatchEverything();
      return matched == PATHMATCH_MATCH;
    }
    case 3: {
      if (folderMode) return true;
      // The last component ends with the tail, invisible characters skipped
      // as the wildcard matcher skips them.
      const char* s = test.GetStringWithoutLeadingBackslash();
      std::size_t i = test.GetLength();
      const bool fold = IsCaseInsensitive();
      for (std::size_t j = d.tail.size(); j > 0; --j) {
        while (i >= 3 && InvisibleAt(s + i - 3, 3)) i -= 3;
        if (i == 0) return false;
        const char c = s[i - 1], t = d.tail[j - 1];
        if (c != t && !(fold && FoldAscii(c) == FoldAscii(t))) return false;
        --i;
      }
      return true;
    }
    case 5: {
      if (folderMode) return true;
      if (!IsCaseInsensitive()) return d.text == form;
      const std::size_t n = std::strlen(form);
      if (n != d.text.size()) return false;
      for (std::size_t i = 0; i < n; ++i)
        if (FoldAscii(form[i]) != FoldAscii(d.text[i])) return false;
      return true;
    }
    default:
      return folderMode;
  }
}

bool CFilterTerm::Matches(const CFilterTermTestString& test) const { return MatchesForm(test, false); }
bool CFilterTerm::Matches(const std::string& path) const { return Matches(CFilterTermTestString(path)); }
bool CFilterTerm::Matches(const std::wstring& path) const { return Matches(CFilterTermTestString(path)); }

bool CFilterTerm::IsMatchPossibleInFolder(const CFilterTermTestString& folder) const {
  return MatchesForm(folder, true);
}

bool CFilterTerm::IsMatchPossibleInFolder(const std::string& folder) const {
  return IsMatchPossibleInFolder(CFilterTermTestString(folder));
}

bool CFilterTerm::IsTrailingPathWildcard() const {
  const std::string& t = m_data->text;
  auto endsWith = [&](const char* tail) {
    const std::size_t n = std::strlen(tail);
    return t.size() >= n && t.compare(t.size() - n, n, tail) == 0;
  };
  if (m_data->engine == 1) return endsWith("***");
  if (m_data->engine == 2) return endsWith(".*");
  return false;
}

bool CFilterTerm::IsSameFilterAs(const CFilterTerm& other) const {
  const TData& a = *m_data;
  const TData& b = *other.m_data;
  return a.engine == b.engine && a.text == b.text && a.options == b.options && a.applies == b.applies;
}

void CFilterTerm::SetPathMatchDelimiter(int delimiter) {
  m_data->delimiter = static_cast<char>(delimiter);
  m_data->ResetEngine();
}

void CFilterTerm::SetPathMatchEscapeCharacter(int escape) {
  m_data->escape = static_cast<char>(escape);
  m_data->ResetEngine();
}

void CFilterTerm::SetForceCaseInsensitiveFilters() { g_forceCaseInsensitive.store(true); }

void CFilterTerm::SetDefaultCaseInsensitive(bool insensitive) {
  if (m_data->defaultInsensitive == insensitive) return;
  m_data->defaultInsensitive = insensitive;
  m_data->ResetEngine();
}

bool CFilterTerm::IsCaseInsensitive() const {
  const unsigned long c = m_data->options.GetSelected(BFilterTermOptions::FILTER_CASE_STATE);
  return g_forceCaseInsensitive.load(std::memory_order_relaxed) || c == BFilterTermOptions::FILTER_CASE_INSENSITIVE ||
         (c == BFilterTermOptions::FILTER_CASE_DEFAULT && m_data->defaultInsensitive);
}

int CFilterTerm::GetEngine() const { return static_cast<int>(m_data->engine); }
unsigned long CFilterTerm::GetApplies() const { return m_data->applies; }
void CFilterTerm::SetApplies(unsigned long applies) { m_data->applies = applies & 0xFFFFFFFFUL; }
const std::string& CFilterTerm::GetFilterTerm() const { return m_data->text; }
const std::string& CFilterTerm::GetMatchRight() const { return m_data->tail; }
const std::string& CFilterTerm::GetFilterPrefix() const { return m_data->prefix; }
void CFilterTerm::SetFilterPrefix(const std::string& prefix) { m_data->prefix = prefix; }
BFilterTermOptions CFilterTerm::getOptions() const { return m_data->options; }

void CFilterTerm::setOptions(BFilterTermOptions options) {
  m_data->options = options;
  m_data->ResetEngine();
}

boost::shared_ptr<CFilterContext> CFilterTerm::GetContext() const { return m_data->context; }
void CFilterTerm::SetContext(boost::shared_ptr<CFilterContext> context) { m_data->context = std::move(context); }
char CFilterTerm::GetDelimiter() const { return m_data->delimiter; }
char CFilterTerm::GetEscape() const { return m_data->escape; }
