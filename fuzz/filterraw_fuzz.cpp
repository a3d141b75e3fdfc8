// Raw filter terms: whatever loads writes back to a raw form that loads to
// the same term and writes back identically; and a set holding the term
// decides every path exactly as the term itself matches it (the set's
// index must never hide a term that matches).
// Input: the raw term, then paths, one a line.
#include <paths/FilterSet.h>

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  std::size_t end = input.find('\n');
  const std::string raw = input.substr(0, end);
  CFilterTerm term;
  if (term.LoadRaw(raw).IsError()) return 0;
  const std::string written = term.GetRawFilterTerm();
  CFilterTerm again;
  if (again.LoadRaw(written).IsError() || again.GetRawFilterTerm() != written || !again.IsSameFilterAs(term))
    std::abort();

  CFilterSet set;
  const bool exposeRoot = !raw.empty() && (raw.back() & 1);
  set.SetExposeRoot(exposeRoot);
  if (set.AddFilterItem(BFilterNodeState(BFilterNodeState::FILTER_NODE_FILTER), again).IsError()) std::abort();
  while (end != std::string::npos) {
    const std::size_t start = end + 1;
    end = input.find('\n', start);
    const std::string path = input.substr(start, end == std::string::npos ? std::string::npos : end - start);
    const CFilterTermTestString test(path, exposeRoot);
    if (set.IsIn(FILTER_APPLIES_ALL, test) != (again.GetApplies() != 0 && again.Matches(test))) std::abort();
    set.IsMatchPossibleInFolder(path);
    set.IsMatchEntireFolder(path);
  }
  return 0;
}
