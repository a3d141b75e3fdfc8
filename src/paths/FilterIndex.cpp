#include "paths/FilterIndex.h"

#include <cstring>

namespace {

inline char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

std::string Folded(std::string text) {
  for (char& c : text) c = FoldAscii(c);
  return text;
}

inline bool HasWildcard(std::string_view text) { return text.find_first_of("*?[") != std::string_view::npos; }

// The key of a term's tail: from its last "." on, or else its last unit.
std::string_view SuffixKey(std::string_view tail) {
  const std::size_t dot = tail.rfind('.');
  return dot != std::string_view::npos ? tail.substr(dot) : tail.substr(tail.size() - 1);
}

}  // namespace

void CFilterIndex::CSieve::Add(std::string_view key) {
  const std::size_t bit = Signature(key) & (m_words.size() * 64 - 1);
  m_words[bit / 64] |= std::uint64_t(1) << (bit % 64);
}

void CFilterIndex::CSieve::Rebuild(const TMap& map) {
  std::size_t words = 1;
  while (words * 64 < map.size() * 16) words *= 2;
  m_words.assign(words, 0);
  for (const auto& entry : map) Add(entry.first);
}

void CFilterIndex::Clear() {
  m_prefixSieve = CSieve();
  m_componentSieve = CSieve();
  m_exact.clear();
  m_suffix.clear();
  m_prefix.clear();
  m_component.clear();
  m_generic.clear();
  m_keys.clear();
  m_applies = 0;
}

void CFilterIndex::Put(TMap& map, const std::string& key, std::uint32_t position, CSieve* sieve) {
  auto found = map.find(key);
  if (found == map.end()) {
    m_keys.push_back(key);
    found = map.emplace(std::string_view(m_keys.back()), TBucket()).first;
    if (sieve) {
      if (map.size() * 16 > sieve->Bits())
        sieve->Rebuild(map);
      else
        sieve->Add(found->first);
    }
  }
  found->second.push_back(position);
}

void CFilterIndex::Add(const CFilterTerm& term, std::uint32_t position, bool exposeRoot) {
  m_applies |= term.GetApplies();
  const int engine = term.GetEngine();
  if (engine != 1 && engine != 3 && engine != 5) return;  // matches nothing
  if (engine == 3) {
    Put(m_suffix, std::string(SuffixKey(Folded(term.GetMatchRight()))), position);
    return;
  }
  const std::string folded = Folded(term.GetFilterTerm());
  const char delimiter = term.GetDelimiter();
  // Shapes are read with the default delimiter and without escapes; a text
  // that holds invisible characters or the UNC rewrite's marker may match
  // paths that do not contain it literally.
  const bool plain = delimiter == '\\' && (engine == 5 || folded.find(term.GetEscape()) == std::string::npos) &&
                     folded.find("\xEF\xBB\xBF") == std::string::npos &&
                     folded.find("\xE2\x80\x8B") == std::string::npos &&
                     folded.find("\xE2\x80\x8C") == std::string::npos && folded.find("unc-nt_") == std::string::npos;
  const bool rooted = !folded.empty() && folded[0] == '\\';
  if (!plain || (exposeRoot && !rooted)) {
    m_generic.push_back(position);
    return;
  }
  // The text as compared with the path without its leading backslash.
  const std::string_view base = std::string_view(folded).substr(rooted ? 1 : 0);
  if (engine == 5 || !HasWildcard(base)) {
    Put(m_exact, std::string(base), position);
    return;
  }
  const std::size_t lastDelimiter = base.rfind('\\');
  const std::string_view last = lastDelimiter == std::string_view::npos ? base : base.substr(lastDelimiter + 1);
  const std::size_t lastWild = last.find_last_of("*?[]");
  if (lastWild != std::string_view::npos && lastWild + 1 < last.size()) {
    Put(m_suffix, std::string(SuffixKey(last.substr(lastWild + 1))), position);
    return;
  }
  const std::size_t firstWild = base.find_first_of("*?[");
  const std::size_t folderEnd = base.rfind('\\', firstWild);
  if (folderEnd != std::string_view::npos && folderEnd > 0) {
    Put(m_prefix, std::string(base.substr(0, folderEnd)), position, &m_prefixSieve);
    return;
  }
  // The last literal component.
  for (std::size_t end = base.size(); end != std::string_view::npos && end > 0;) {
    const std::size_t start = base.rfind('\\', end - 1);
    const std::size_t from = start == std::string_view::npos ? 0 : start + 1;
    const std::string_view component = base.substr(from, end - from);
    if (!component.empty() && !HasWildcard(component)) {
      Put(m_component, std::string(component), position, &m_componentSieve);
      return;
    }
    end = start;
  }
  m_generic.push_back(position);
}

std::uint32_t CFilterIndex::FindFirst(const std::vector<CFilterTerm>& terms, unsigned long applies,
                                      const CFilterTermTestString& test) const {
  std::uint32_t best = kNone;
  auto scan = [&](const TBucket& bucket) {
    for (const std::uint32_t position : bucket) {
      if (position >= best) return;
      const CFilterTerm& term = terms[position];
      if (term.AppliesTo(applies) && term.Matches(test)) {
        best = position;
        return;
      }
    }
  };
  auto lookUp = [&](const TMap& map, std::string_view key) {
    const auto found = map.find(key);
    if (found != map.end()) scan(found->second);
  };
  const std::string_view key = test.GetIndexKey();
  if (!m_exact.empty()) lookUp(m_exact, key);
  if (!m_suffix.empty()) {
    const std::size_t slash = key.rfind('\\');
    const std::string_view last = slash == std::string_view::npos ? key : key.substr(slash + 1);
    if (!last.empty()) {
      const std::size_t dot = last.rfind('.');
      if (dot != std::string_view::npos) lookUp(m_suffix, last.substr(dot));
      if (dot != last.size() - 1) lookUp(m_suffix, last.substr(last.size() - 1));
    }
  }
  if (!m_prefix.empty() || !m_component.empty()) {
    std::size_t start = 0;
    for (std::size_t i = 0; i <= key.size(); ++i) {
      if (i < key.size() && key[i] != '\\') continue;
      if (i > 0 && m_prefixSieve.MayHold(key.substr(0, i))) lookUp(m_prefix, key.substr(0, i));
      if (i > start && m_componentSieve.MayHold(key.substr(start, i - start)))
        lookUp(m_component, key.substr(start, i - start));
      start = i + 1;
    }
  }
  scan(m_generic);
  return best;
}
