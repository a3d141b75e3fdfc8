// Path matching against glibc fnmatch(FNM_PATHNAME), and filter-set
// decisions at 10 to 10,000 rules against a loop of fnmatch over the same
// rules. "FilterFlatness" sets IsIn at 10,000 rules (ours) against IsIn at
// 10 rules: a ratio of at least 0.5 means the cost per path at 10,000 rules
// stays within twice the cost at 10.
#include <fnmatch.h>

#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "paths/FilterSet.h"
#include "paths/PathMatch.h"

namespace {

std::string Slashes(std::string text) {
  for (char& c : text)
    if (c == '\\') c = '/';
  return text;
}

const std::vector<std::string>& SamplePaths() {
  static const std::vector<std::string> paths = [] {
    std::mt19937 rng(7);
    const char* roots[] = {"C:\\Users\\alice", "C:\\Users\\bob", "C:\\Program Files\\Vendor", "C:\\data",
                           "C:\\src\\project", "D:\\archive", "C:\\Windows\\Temp", "C:\\log"};
    const char* folders[] = {"AppData", "Local", "Temp", "bin", "docs", "cache", "2024", "build", "lib", "src"};
    const char* files[] = {"report.txt", "notes.docx", "app-01.log", "main.cpp", "core.dll", "image.png",
                           "data.tmp", "setup.exe", "index.html", "archive.zip"};
    std::vector<std::string> out;
    for (int i = 0; i < 256; ++i) {
      std::string path = roots[rng() % 8];
      for (int d = static_cast<int>(rng() % 4); d > 0; --d) path += std::string("\\") + folders[rng() % 10];
      out.push_back(path + "\\" + files[rng() % 10]);
    }
    return out;
  }();
  return paths;
}

const std::vector<std::string> kStarPatterns = {
    "C:\\Users\\*\\AppData\\*\\*.tmp", "C:\\data\\*.txt", "C:\\Program Files\\*\\bin\\*.dll", "C:\\src\\*\\*.cpp",
    "*\\*\\*.zip"};
const std::vector<std::string> kClassPatterns = {"C:\\log\\app-??.log", "C:\\src\\[a-m]*\\*.cpp",
                                                 "C:\\Users\\[ab]*\\*\\*.tx?"};

void MatchOurs(benchmark::State& state, const std::vector<std::string>& patterns) {
  std::vector<CPathMatch> matchers(patterns.size());
  for (std::size_t i = 0; i < patterns.size(); ++i) matchers[i].initialize(patterns[i].c_str(), true, false);
  const auto& paths = SamplePaths();
  CPathMatchWorkData wd;
  for (auto _ : state) {
    int hits = 0;
    for (auto& m : matchers)
      for (const auto& p : paths) hits += m.match(wd, p.c_str());
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(static_cast<long long>(state.iterations() * matchers.size() * paths.size()));
}

void MatchFnmatch(benchmark::State& state, const std::vector<std::string>& patterns) {
  std::vector<std::string> slashed, paths;
  for (const auto& p : patterns) slashed.push_back(Slashes(p));
  for (const auto& p : SamplePaths()) paths.push_back(Slashes(p));
  for (auto _ : state) {
    int hits = 0;
    for (const auto& pattern : slashed)
      for (const auto& p : paths) hits += fnmatch(pattern.c_str(), p.c_str(), FNM_PATHNAME) == 0;
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(static_cast<long long>(state.iterations() * slashed.size() * paths.size()));
}

void BM_StarOurs(benchmark::State& s) { MatchOurs(s, kStarPatterns); }
void BM_StarFnmatch(benchmark::State& s) { MatchFnmatch(s, kStarPatterns); }
void BM_ClassOurs(benchmark::State& s) { MatchOurs(s, kClassPatterns); }
void BM_ClassFnmatch(benchmark::State& s) { MatchFnmatch(s, kClassPatterns); }
BENCHMARK(BM_StarOurs)->Name("PathMatchStar/ours");
BENCHMARK(BM_StarFnmatch)->Name("PathMatchStar/fnmatch");
BENCHMARK(BM_ClassOurs)->Name("PathMatchClass/ours");
BENCHMARK(BM_ClassFnmatch)->Name("PathMatchClass/fnmatch");

// A realistic mix: literal folders, "*.ext", "\**\name\**", "dir\***", and
// a few exceptions. Each rule also as fnmatch patterns with flags.
struct TRule {
  bool exception;
  std::string text;
  std::vector<std::pair<std::string, int>> fnmatchForms;
};

std::vector<TRule> MakeRules(int count) {
  std::mt19937 rng(static_cast<unsigned>(count));
  std::vector<TRule> rules;
  const char* drives[] = {"C:", "D:"};
  auto name = [&](const char* stem) { return std::string(stem) + std::to_string(rng() % (count * 4 + 10)); };
  for (int i = 0; i < count; ++i) {
    const int kind = i < 6 ? i : static_cast<int>(rng() % 20);
    TRule rule{false, "", {}};
    std::string folder = std::string(drives[rng() % 2]) + "\\" + name("dir") + "\\" + name("sub");
    if (kind == 0) folder = "C:\\Users\\alice\\Temp";
    if (kind < 2 || (kind >= 6 && kind < 12)) {  // literal folder
      rule.text = folder;
      rule.fnmatchForms = {{Slashes(folder), FNM_PATHNAME | FNM_LEADING_DIR}};
    } else if (kind == 2 || (kind >= 12 && kind < 15)) {  // extension anywhere
      const std::string ext = kind == 2 ? "tmp" : name("x");
      rule.text = "*." + ext;
      rule.fnmatchForms = {{"*." + ext, 0}};
    } else if (kind == 3 || (kind >= 15 && kind < 17)) {  // a folder name anywhere
      const std::string n = kind == 3 ? "cache" : name("cache");
      rule.text = "\\**\\" + n + "\\**";
      rule.fnmatchForms = {{"*/" + n + "/*", 0}};
    } else if (kind == 4 || (kind >= 17 && kind < 19)) {  // a folder and everything below
      if (kind == 4) folder = "C:\\Windows\\Temp";
      rule.text = folder + "\\***";
      rule.fnmatchForms = {{Slashes(folder), FNM_PATHNAME | FNM_LEADING_DIR}};
    } else {  // exception
      rule.exception = true;
      const std::string ext = kind == 5 ? "keep" : name("k");
      rule.text = "*." + ext;
      rule.fnmatchForms = {{"*." + ext, 0}};
    }
    rules.push_back(rule);
  }
  return rules;
}

void FilterIsIn(benchmark::State& state, int count) {
  const auto rules = MakeRules(count);
  CFilterSet set;
  for (const auto& r : rules)
    set.AddFilterItem(BFilterNodeState(r.exception ? BFilterNodeState::FILTER_NODE_EXCEPTION
                                                   : BFilterNodeState::FILTER_NODE_FILTER),
                      r.text);
  const auto& paths = SamplePaths();
  for (auto _ : state) {
    int in = 0;
    for (const auto& p : paths) in += set.IsIn(p);
    benchmark::DoNotOptimize(in);
  }
  state.SetItemsProcessed(static_cast<long long>(state.iterations() * paths.size()));
}

void FilterFnmatchLoop(benchmark::State& state) {
  const auto rules = MakeRules(static_cast<int>(state.range(0)));
  std::vector<std::string> paths;
  for (const auto& p : SamplePaths()) paths.push_back(Slashes(p));
  auto any = [&](const std::string& path, bool exception) {
    for (const auto& r : rules)
      if (r.exception == exception)
        for (const auto& [pattern, flags] : r.fnmatchForms)
          if (fnmatch(pattern.c_str(), path.c_str(), flags) == 0) return true;
    return false;
  };
  for (auto _ : state) {
    int in = 0;
    for (const auto& p : paths) in += any(p, false) && !any(p, true);
    benchmark::DoNotOptimize(in);
  }
  state.SetItemsProcessed(static_cast<long long>(state.iterations() * paths.size()));
}

void FilterOurs(benchmark::State& state) { FilterIsIn(state, static_cast<int>(state.range(0))); }
void FlatnessAt10000(benchmark::State& state) { FilterIsIn(state, 10000); }
void FlatnessAt10(benchmark::State& state) { FilterIsIn(state, 10); }

BENCHMARK(FilterOurs)->Name("FilterIsIn/ours")->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(FilterFnmatchLoop)->Name("FilterIsIn/fnmatch-loop")->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(FlatnessAt10000)->Name("FilterFlatness/ours");
BENCHMARK(FlatnessAt10)->Name("FilterFlatness/10-rules");

}  // namespace
