#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/FilterSet.h"
#include "paths/PathMatch.h"
#include "platform/FileSystem.h"

namespace {

struct TNamed : CFilterContext {
  explicit TNamed(std::string n) : name(std::move(n)) {}
  std::string name;
};

boost::shared_ptr<CFilterContext> Named(const char* name) { return boost::shared_ptr<CFilterContext>(new TNamed(name)); }

std::string NameOf(const boost::shared_ptr<CFilterContext>& context) {
  return context ? static_cast<const TNamed&>(*context).name : std::string("-");
}

const BFilterNodeState kFilter(BFilterNodeState::FILTER_NODE_FILTER);
const BFilterNodeState kException(BFilterNodeState::FILTER_NODE_EXCEPTION);

TEST(FilterFlags, PrintAndSelect) {
  BFilterNodeState state(BFilterNodeState::FILTER_NODE_EXCEPTION | BFilterNodeState::FILTER_NODE_NOINHERIT);
  EXPECT_EQ(state.AsString(), "Exception|NoInherit");
  EXPECT_EQ(BFilterNodeState().AsString(), "(Placeholder)");
  state.Select(BFilterNodeState::FILTER_NODE_STATE, BFilterNodeState::FILTER_NODE_FILTER);
  EXPECT_EQ(state.AsValue(), 0x5u);
  state.Clear(BFilterNodeState::FILTER_NODE_NOINHERIT);
  EXPECT_TRUE(state.IsClear(BFilterNodeState::FILTER_NODE_NOINHERIT));
  EXPECT_EQ(BFilterTermOptions(0x21).AsString(), "CaseInsensitive|ClassString");
  EXPECT_EQ(BFilterTermOptions(0x103).AsWstring(), L"ClassDefault|0x103");
  EXPECT_EQ(EPathCacheResult(EPathCacheResult::PATHCACHE_RESULT_NOT_CACHED).AsString(), "PATHCACHE_RESULT_NOT_CACHED");
}

TEST(FilterTerm, LoadRawShapesAndRoundTrip) {
  struct {
    const char* raw;
    unsigned long options;
    int engine;
    const char* text;
    const char* tail;
  } const cases[] = {
      {"*.tmp", 0, 3, "\\**\\*.tmp", ".tmp"},
      {"Thumbs.db", 0, 1, "Thumbs.db", ""},
      {"C:\\data\\*.tmp", 0, 1, "C:\\data\\*.tmp", ""},
      {"a/b", 0, 1, "\\**\\a/b", ""},
      {"*.t?p", 0, 1, "\\**\\*.t?p", ""},
      {"*.tmp", 0x20, 5, "*.tmp", ""},
      {"<:ci:e=0x1:WM>C:\\x\\*", 0, 1, "C:\\x\\*", ""},
      {"<:cs:e=0x3:a=0x4:FD>\\**\\*.log", 0, 3, "\\**\\*.log", ".log"},
      {"<:e=0x2:DT>.*", 0, 2, ".*", ""},
      {"<>x", 0, 1, "x", ""},
  };
  for (const auto& c : cases) {
    CFilterTerm term{BFilterTermOptions(c.options)};
    ASSERT_FALSE(term.LoadRaw(c.raw).IsError()) << c.raw;
    EXPECT_EQ(term.GetEngine(), c.engine) << c.raw;
    EXPECT_EQ(term.GetFilterTerm(), c.text) << c.raw;
    EXPECT_EQ(term.GetMatchRight(), c.tail) << c.raw;
    CFilterTerm again;
    ASSERT_FALSE(again.LoadRaw(term.GetRawFilterTerm()).IsError()) << term.GetRawFilterTerm();
    EXPECT_TRUE(again.IsSameFilterAs(term)) << term.GetRawFilterTerm();
    EXPECT_EQ(again.GetRawFilterTerm(), term.GetRawFilterTerm());
  }
  CFilterTerm ci;
  ASSERT_FALSE(ci.LoadRaw("<:ci:e=0x1:a=0x5:WM>C:\\x\\*").IsError());
  EXPECT_EQ(ci.GetRawFilterTerm(), "<:ci:e=0x1:a=0x5:WM>C:\\x\\*");
  EXPECT_TRUE(ci.IsCaseInsensitive());
  EXPECT_TRUE(ci.AppliesTo(4));
  EXPECT_FALSE(ci.AppliesTo(2));

  for (const char* bad : {"<:ci", "<:ci:e=0x1", "<:ci>", ""}) {
    CFilterTerm term;
    const CZuError result = term.LoadRaw(bad);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, 87)) << bad;
    EXPECT_NE(result.AsString().find("Malformed raw filter"), std::string::npos) << bad;
  }
  CFilterTerm unclosed;
  EXPECT_NE(unclosed.LoadRaw("<:ci").AsString().find("context close '>' not found, Filter=[<:ci]"), std::string::npos);
}

TEST(FilterTerm, WildcardItemsAndTrailing) {
  EXPECT_TRUE(CFilterTerm::IsWildcardItem("<:ci>x"));
  EXPECT_TRUE(CFilterTerm::IsWildcardItem("C:\\a*"));
  EXPECT_FALSE(CFilterTerm::IsWildcardItem("C:\\abc"));
  EXPECT_FALSE(CFilterTerm::IsWildcardItem("\\\\?\\C:\\abc"));
  EXPECT_TRUE(CFilterTerm::IsWildcardItem("\\\\?\\C:\\a?c"));
  EXPECT_TRUE(CFilterTerm::IsWildcardItem("\\\\?[C:\\abc"));
  CFilterTerm term;
  ASSERT_FALSE(term.LoadRaw("C:\\data\\***").IsError());
  EXPECT_TRUE(term.IsTrailingPathWildcard());
  EXPECT_TRUE(term.IsMatchPossibleInFolder("C:\\data"));
  EXPECT_TRUE(term.IsMatchPossibleInFolder("C:\\"));
  EXPECT_FALSE(term.IsMatchPossibleInFolder("D:\\data"));
  CFilterTerm name;
  ASSERT_FALSE(name.LoadRaw("C:\\data\\*.txt").IsError());
  EXPECT_TRUE(name.IsMatchPossibleInFolder("C:\\data"));
  EXPECT_FALSE(name.IsMatchPossibleInFolder("C:\\data\\sub"));
}

TEST(FilterTerm, MatchRightAgreesWithThePattern) {
  // The converted term and the pattern it came from take the same paths.
  CFilterTerm right, pattern;
  ASSERT_FALSE(right.LoadRaw("*.tmp").IsError());
  ASSERT_FALSE(pattern.LoadRaw("<:e=0x1:WM>\\**\\*.tmp").IsError());
  ASSERT_EQ(pattern.GetEngine(), 3);  // loading converts it too
  CPathMatch reference;
  ASSERT_FALSE(reference.initialize("\\**\\*.tmp", true, false).IsError());
  for (const char* path : {"C:\\a.tmp", "C:\\x\\.tmp", "C:\\x\\a.tmp\\b", "a.tmp", "C:\\a.tm\xE2\x80\x8Bp",
                           "C:\\a.TMP", "C:\\tmp", "C:\\a.tmp\xEF\xBB\xBF", ""}) {
    const CFilterTermTestString test(path);
    EXPECT_EQ(right.Matches(test), reference.match(test.GetStringWithLeadingBackslash()) == PATHMATCH_MATCH)
        << path;
  }
}

TEST(FilterSet, DecisionsByTable) {
  CFilterSet set;
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\data", Named("data")).IsError());
  ASSERT_FALSE(set.AddFilterItem(kException, "C:\\data\\keep", Named("keep")).IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "*.tmp", Named("tmp")).IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "\\**\\cache\\**", Named("cache")).IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\Windows\\Temp\\***", Named("temp")).IsError());
  ASSERT_FALSE(set.AddFilterItem(kException, "*.keep.tmp", Named("x")).IsError());
  ASSERT_FALSE(set.AddFilterItem(BFilterNodeState(BFilterNodeState::FILTER_NODE_NOINHERIT), "C:\\Windows\\Temp\\own",
                                 Named("own"))
                   .IsError());
  struct {
    const char* path;
    bool filtered;
    const char* context;
  } const cases[] = {
      {"C:\\data", true, "data"},
      {"c:\\DATA\\a\\b.txt", true, "data"},
      {"C:\\data\\keep\\b.txt", false, "-"},
      {"C:\\data\\keeper\\b.txt", true, "data"},
      {"C:\\users\\a.tmp", true, "tmp"},
      {"C:\\users\\a.tmpx", false, "-"},
      {"C:\\users\\a.keep.tmp", false, "-"},
      {"C:\\users\\cache\\x", true, "cache"},
      {"C:\\users\\cache", false, "-"},
      {"C:\\Windows\\Temp", true, "temp"},
      {"C:\\Windows\\Temp\\a\\b", true, "temp"},
      {"C:\\Windows\\Temp\\own\\b", false, "-"},  // NoInherit stops the walk
      {"C:\\Windows\\Temp\\own\\b.tmp", false, "-"},
      {"C:\\Windows\\Tempo", false, "-"},
  };
  for (const auto& c : cases) {
    boost::shared_ptr<CFilterContext> context = Named("stale");
    EXPECT_EQ(set.IsIn(FILTER_APPLIES_ALL, c.path, &context), c.filtered) << c.path;
    EXPECT_EQ(NameOf(context), c.context) << c.path;
  }
  EXPECT_EQ(set.GetSurfaceList(), (std::vector<std::string>{"C:\\data", "C:\\Windows\\Temp\\own"}));
}

TEST(FilterSet, AppliesSelectionExposeRootAndCase) {
  CFilterSet set;
  CFilterTerm backupOnly;
  ASSERT_FALSE(backupOnly.LoadRaw("<:a=0x1>C:\\b\\*").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, backupOnly).IsError());
  EXPECT_TRUE(set.IsIn(FILTER_APPLIES_BACKUP, "C:\\b\\x"));
  EXPECT_FALSE(set.IsIn(FILTER_APPLIES_RESTORE, "C:\\b\\x"));
  // Selection: no selecting term on the way, so everything is filtered.
  EXPECT_TRUE(set.IsIn(FILTER_APPLIES_SELECTION, "C:\\other"));
  CFilterTerm selecting;
  ASSERT_FALSE(selecting.LoadRaw("<:a=0x4>C:\\s\\*").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, selecting).IsError());
  EXPECT_FALSE(set.IsIn(FILTER_APPLIES_SELECTION, "C:\\other"));
  EXPECT_TRUE(set.IsIn(FILTER_APPLIES_SELECTION, "C:\\s\\x"));

  CFilterSet rooted;
  ASSERT_FALSE(rooted.AddFilterItem(kFilter, "C:\\r\\*").IsError());
  EXPECT_TRUE(rooted.IsIn("C:\\r\\x"));
  rooted.SetExposeRoot(true);
  EXPECT_FALSE(rooted.IsIn("C:\\r\\x"));
  ASSERT_FALSE(rooted.AddFilterItem(kFilter, "\\D:\\r\\*").IsError());
  EXPECT_TRUE(rooted.IsIn("D:\\r\\x"));

  CFilterSet cased;
  ASSERT_FALSE(cased.AddFilterItem(kFilter, "C:\\Up\\*").IsError());
  EXPECT_FALSE(cased.IsIn("C:\\up\\x"));
  cased.SetUseInsensitiveFilterForWildCard(true);
  EXPECT_TRUE(cased.IsUseInsensitiveFilterForWildCardSet());
  EXPECT_TRUE(cased.IsIn("C:\\up\\x"));

  cased.SetWriteProtected(true);
  EXPECT_TRUE(FXErrorUtil::IsWin32(cased.AddFilterItem(kFilter, "C:\\y"), 19));
  CFilterSet empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_TRUE(FXErrorUtil::IsWin32(empty.AddFilterItem(kFilter, "\\\\"), 87));
  EXPECT_TRUE(FXErrorUtil::IsWin32(empty.AddFilterItem(kFilter, "<:ci"), 87));
  EXPECT_TRUE(FXErrorUtil::IsWin32(empty.AddFilterItem(BFilterNodeState(), "*.x"), 87));
  EXPECT_TRUE(empty.empty());
}

// The decision's steps as a plain loop over every term in stored order, on the
// set's public tree: the yardstick for the indexed decision.
bool ReferenceIsIn(const CFilterSet& set, unsigned long applies, const std::string& path) {
  const CFilterTermTestString test(path, set.IsExposeRoot());
  const boost::shared_ptr<CFilterSetNode> deepest = set.Search(path);
  auto upward = [&](auto visit) {
    for (boost::shared_ptr<CFilterSetNode> n = deepest; n; n = n->GetParent()) {
      if (visit(*n)) return true;
      if (n->GetState().IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT)) break;
    }
    return false;
  };
  auto state = [](const CFilterSetNode& n, unsigned long s) {
    return n.GetState().IsSelected(BFilterNodeState::FILTER_NODE_STATE, s);
  };
  bool filtered = upward([&](const CFilterSetNode& n) { return state(n, BFilterNodeState::FILTER_NODE_FILTER); });
  bool anyApplied = false;
  if (!filtered)
    filtered = upward([&](const CFilterSetNode& n) {
      for (const CFilterTerm& t : n.GetFilterTerms()) {
        if (!t.AppliesTo(applies)) continue;
        anyApplied = true;
        if (t.Matches(test)) return true;
      }
      return false;
    });
  if (!filtered && applies == 4 && !anyApplied) filtered = true;
  if (filtered && upward([&](const CFilterSetNode& n) { return state(n, BFilterNodeState::FILTER_NODE_EXCEPTION); }))
    filtered = false;
  if (filtered && upward([&](const CFilterSetNode& n) {
        for (const CFilterTerm& t : n.GetExceptionTerms())
          if (t.AppliesTo(applies) && t.Matches(test)) return true;
        return false;
      }))
    filtered = false;
  return filtered;
}

struct TRandomSet {
  std::mt19937 rng;
  explicit TRandomSet(unsigned seed) : rng(seed) {}
  const char* Pick(std::initializer_list<const char*> list) { return list.begin()[rng() % list.size()]; }
  std::string Name() { return Pick({"a", "b", "Cache", "tmp", "x.tmp", "y.LOG", "a.b", "keep", "A"}); }
  std::string Path(int depth) {
    std::string path = Pick({"C:", "c:", "D:", "\\\\srv"});
    for (int i = 0; i < depth; ++i) path += "\\" + Name();
    return path;
  }
  std::string Rule() {
    switch (rng() % 10) {
      case 0: return Path(1 + static_cast<int>(rng() % 3));
      case 1: return Pick({"*.tmp", "*.log", "*.LOG", "*~", "x*", "*.b"});
      case 2: return std::string("\\**\\") + Pick({"cache", "a", "keep"}) + "\\**";
      case 3: return Path(1 + static_cast<int>(rng() % 2)) + "\\***";
      case 4: return Path(1 + static_cast<int>(rng() % 2)) + "\\*";
      case 5: return Path(1) + "\\**\\" + Pick({"*.tmp", "a", "b?", "[ab]"});
      case 6: return Pick({"<:ci>*.TMP", "<:cs:a=0x4>C:\\a\\*", "<:ci:a=0x1>\\**\\A", "<:e=0x5:DT>C:\\a\\b"});
      case 7: return Path(1) + "\\" + Pick({"a", "b"}) + "*";
      case 8: return Pick({"C:\\*\\a", "\\**\\*.b\\**", "D:\\?\\***", "C:\\a/*"});
      default: return Path(2) + "\\" + Name();
    }
  }
};

TEST(FilterSet, IndexedDecisionAgreesWithPlainLoop) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    TRandomSet gen(seed);
    CFilterSet set;
    if (seed % 3 == 0) set.SetExposeRoot(true);
    if (seed % 4 == 0) set.SetUseInsensitiveFilterForWildCard(true);
    const int rules = 5 + static_cast<int>(gen.rng() % 40);
    for (int i = 0; i < rules; ++i) {
      const BFilterNodeState state(gen.rng() % 5 == 0 ? BFilterNodeState::FILTER_NODE_EXCEPTION
                                                      : BFilterNodeState::FILTER_NODE_FILTER);
      const std::string prefix = gen.rng() % 4 == 0 ? gen.Path(1) : std::string();
      std::string rule = gen.Rule();
      if (!prefix.empty() && !CFilterTerm::IsWildcardItem(rule)) rule = gen.Name();
      ASSERT_FALSE(set.AddFilterItem(state, rule, boost::shared_ptr<CFilterContext>(), prefix).IsError()) << rule;
    }
    if (seed % 5 == 0)
      set.AddFilterItem(BFilterNodeState(BFilterNodeState::FILTER_NODE_NOINHERIT), gen.Path(2));
    for (int i = 0; i < 300; ++i) {
      std::string path = gen.Path(static_cast<int>(gen.rng() % 5));
      if (gen.rng() % 10 == 0) path.insert(path.size() / 2, "\xE2\x80\x8B");
      const unsigned long applies = gen.Pick({"1", "4", "all"})[0] == 'a' ? FILTER_APPLIES_ALL
                                                                           : static_cast<unsigned long>(gen.rng() % 2 ? 1 : 4);
      ASSERT_EQ(set.IsIn(applies, path), ReferenceIsIn(set, applies, path)) << "seed " << seed << " path " << path;
    }
  }
}

// A built set answers several threads at once as it answers one.
TEST(FilterSet, ConcurrentQueriesAgree) {
  TRandomSet gen(77);
  CFilterSet set;
  for (int i = 0; i < 200; ++i) set.AddFilterItem(BFilterNodeState(BFilterNodeState::FILTER_NODE_FILTER), gen.Rule());
  std::vector<std::string> paths;
  std::vector<char> expected;
  for (int i = 0; i < 400; ++i) {
    paths.push_back(gen.Path(static_cast<int>(gen.rng() % 5)));
    expected.push_back(set.IsIn(paths.back()));
  }
  std::vector<int> mismatches(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int round = 0; round < 5; ++round)
        for (std::size_t i = 0; i < paths.size(); ++i) mismatches[t] += set.IsIn(paths[i]) != (expected[i] != 0);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

// Whenever the set says a folder is decided as a whole, or holds nothing it
// could match, the paths below agree.
TEST(FilterSet, FolderAnswersHoldForDescendants) {
  int decided = 0, impossible = 0;
  for (unsigned seed = 100; seed < 160; ++seed) {
    TRandomSet gen(seed);
    CFilterSet set;
    const int rules = 3 + static_cast<int>(gen.rng() % 12);
    for (int i = 0; i < rules; ++i)
      set.AddFilterItem(BFilterNodeState(gen.rng() % 6 == 0 ? BFilterNodeState::FILTER_NODE_EXCEPTION
                                                            : BFilterNodeState::FILTER_NODE_FILTER),
                        gen.Rule());
    for (int i = 0; i < 100; ++i) {
      const std::string folder = gen.Path(static_cast<int>(gen.rng() % 3));
      const bool entire = set.IsMatchEntireFolder(folder);
      const bool possible = set.IsMatchPossibleInFolder(folder);
      const bool in = set.IsIn(folder);
      decided += entire;
      impossible += !possible;
      for (int j = 0; j < 20; ++j) {
        std::string below = folder;
        for (int k = static_cast<int>(gen.rng() % 3); k >= 0; --k) below += "\\" + gen.Name();
        if (entire) {
          ASSERT_EQ(set.IsIn(below), in) << folder << " / " << below;
        }
        if (!possible) {
          ASSERT_FALSE(set.IsIn(below)) << folder << " / " << below;
        }
      }
    }
  }
  EXPECT_GT(decided, 100);
  EXPECT_GT(impossible, 100);
}

TEST(FilterSet, FolderQuestionsByExample) {
  CFilterSet set;
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\data").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\logs").IsError());
  ASSERT_FALSE(set.AddFilterItem(kException, "C:\\logs\\keep").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\Temp\\***").IsError());
  EXPECT_TRUE(set.IsMatchEntireFolder("C:\\data"));
  EXPECT_TRUE(set.IsMatchEntireFolder("C:\\data\\x"));
  EXPECT_FALSE(set.IsMatchEntireFolder("C:\\logs"));
  EXPECT_TRUE(set.IsMatchEntireFolder("C:\\logs\\other"));
  EXPECT_TRUE(set.IsMatchEntireFolder("C:\\temp"));
  EXPECT_TRUE(set.IsMatchEntireFolder("C:\\Temp\\a\\b"));
  EXPECT_TRUE(set.IsMatchEntireFolder("D:\\"));
  EXPECT_FALSE(set.IsMatchEntireFolder("C:\\"));
  EXPECT_TRUE(set.IsPathOrChildInBackupContent("C:\\logs"));
  EXPECT_FALSE(set.IsPathOrChildInBackupContent("C:\\data"));
  EXPECT_FALSE(set.IsMatchPossibleInFolder("D:\\x"));
  EXPECT_TRUE(set.IsMatchPossibleInFolder("C:\\"));
  ASSERT_FALSE(set.AddFilterItem(kFilter, "*.tmp").IsError());
  EXPECT_TRUE(set.IsMatchPossibleInFolder("D:\\x"));
  EXPECT_FALSE(set.IsMatchEntireFolder("D:\\x"));
}

struct TLines : CLineWriter {
  std::vector<std::string> lines;
  CZuError WriteString(const std::string& text) override {
    lines.push_back(text);
    return CZuError::Success();
  }
};

TEST(FilterSet, SerializedLinesLoadBack) {
  CFilterSet set;
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\data").IsError());
  ASSERT_FALSE(set.AddFilterItem(kException, "<:ci:a=0x3>*.keep", boost::shared_ptr<CFilterContext>(), "C:\\data").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "*.tmp").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\x\\**\\y?").IsError());
  const std::string file = FXPlatform::TempDirectory() + "zu_filterset_test.txt";
  ASSERT_FALSE(set.SerializeToFile(file).IsError());
  std::ifstream in(file.c_str());
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::remove(file.c_str());
  ASSERT_GE(lines.size(), 6u);
  EXPECT_EQ(lines[0], "ZuFilterSet 1");
  EXPECT_EQ(lines[1], "S 0x0 0x2F");
  CFilterSet loaded;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    if (line[0] == 'N') {
      const std::size_t space = line.find(' ', 2);
      loaded.AddFilterItem(BFilterNodeState(std::stoul(line.substr(2, space - 2), nullptr, 16)), line.substr(space + 1));
      continue;
    }
    const std::size_t tab = line.find('\t');
    CFilterTerm term;
    ASSERT_FALSE(term.LoadRaw(line.substr(tab + 1)).IsError()) << line;
    ASSERT_FALSE(loaded.AddFilterItem(line[0] == 'F' ? kFilter : kException, term, line.substr(2, tab - 2)).IsError());
  }
  TLines a, b;
  ASSERT_FALSE(set.DumpDiagnosticData(a).IsError());
  ASSERT_FALSE(loaded.DumpDiagnosticData(b).IsError());
  EXPECT_EQ(a.lines, b.lines);
  TLines surface;
  ASSERT_FALSE(set.DumpSurfaceDiagnosticData(surface).IsError());
  ASSERT_EQ(surface.lines.size(), 1u);
  EXPECT_EQ(surface.lines[0], "Surface [C:\\data] State=[Filter] Filters=0 Exceptions=1");
}

TEST(FilterSet, HostileInputFinishes) {
  CFilterSet set;
  ASSERT_FALSE(set.AddFilterItem(kFilter, "\\**\\a*a*a*a*a*a*a*b\\**").IsError());
  ASSERT_FALSE(set.AddFilterItem(kFilter, std::string(1100, 'x') + "*").IsError());  // engine fails, logged
  ASSERT_FALSE(set.AddFilterItem(kFilter, "C:\\deep").IsError());
  std::string deep = "C:\\deep";
  for (int i = 0; i < 4096; ++i) deep += "\\d";
  EXPECT_TRUE(set.IsIn(deep));
  EXPECT_TRUE(set.IsMatchEntireFolder(deep));
  const std::string wide = "C:\\" + std::string(64 * 1024, 'a');
  EXPECT_FALSE(set.IsIn(wide));
  std::string invalid = "C:\\\xFF\xFE\\a";
  EXPECT_FALSE(set.IsIn(invalid));
  // A NUL ends raw terms and paths alike, for the index as for the matcher.
  CFilterSet nul;
  CFilterTerm cut;
  ASSERT_FALSE(cut.LoadRaw(std::string("\\**\\\0cache\\**", 14)).IsError());
  EXPECT_EQ(cut.GetFilterTerm(), "\\**\\");
  ASSERT_FALSE(nul.AddFilterItem(kFilter, cut).IsError());
  EXPECT_TRUE(nul.IsIn(std::string("D:\\x\0y", 6)));
  EXPECT_TRUE(cut.Matches(std::string("D:\\x")));
}

}  // namespace
