#include <cstdint>
#include <cstdlib>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"

namespace {

HRESULT W(std::uint32_t n) { return static_cast<HRESULT>(0x80070000u | n); }
HRESULT E(std::uint32_t n) { return static_cast<HRESULT>(0xECCC0000u | n); }

struct TProbe {
  HRESULT a, b;
  bool expected;
};

// Pairs whose answer must not depend on whether the table is compiled.
const TProbe kProbes[] = {
    {W(2), E(2), true},      {E(2), W(2), true},       {W(3), E(2), true},
    {W(2), W(3), false},     {E(22), W(87), true},     {E(22), W(10022), true},
    {W(87), W(10022), false}, {E(12), W(8), true},     {W(14), E(12), true},
    {W(8), W(14), false},    {E(1), E(1), true},       {W(10044), W(10044), true},
    {W(995), E(4), false},   {0, 0, true},             {W(5), E(13), true},
};

// Captures the uncompiled state before any test can compile the table.
class UncompiledSnapshot : public ::testing::Environment {
 public:
  void SetUp() override {
    for (const TProbe& p : kProbes) before.push_back(FXErrorUtil::Matches(p.a, p.b));
    matchesBefore = FXErrorUtil::GetMatches(W(2));
  }
  std::vector<bool> before;
  std::set<HRESULT> matchesBefore;
};

UncompiledSnapshot* const g_snapshot =
    static_cast<UncompiledSnapshot*>(::testing::AddGlobalTestEnvironment(new UncompiledSnapshot));

TEST(EquivalenceTable, SameAnswersBeforeAndAfterCompilation) {
  ASSERT_EQ(sizeof kProbes / sizeof kProbes[0], g_snapshot->before.size());
  EXPECT_TRUE(g_snapshot->matchesBefore.empty());
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  for (std::size_t i = 0; i < g_snapshot->before.size(); ++i) {
    const TProbe& p = kProbes[i];
    SCOPED_TRACE(::testing::Message() << std::hex << p.a << " ~ " << p.b);
    EXPECT_EQ(p.expected, g_snapshot->before[i]);
    EXPECT_EQ(p.expected, FXErrorUtil::Matches(p.a, p.b));
    EXPECT_EQ(p.expected, CZuError(p.a, nullptr).Is(p.b));
    EXPECT_NE(p.expected, CZuError(p.a, nullptr).IsNot(p.b));
  }
}

TEST(EquivalenceTable, GetMatchesListsPartnersInAscendingOrder) {
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  EXPECT_EQ((std::set<HRESULT>{W(2), W(3)}), FXErrorUtil::GetMatches(E(2)));
  EXPECT_EQ((std::set<HRESULT>{W(258), W(10060)}), FXErrorUtil::GetMatches(E(138)));
  EXPECT_EQ((std::set<HRESULT>{E(2)}), FXErrorUtil::GetMatches(W(3)));
  // A single-code group lists nothing, not even the code itself.
  EXPECT_TRUE(FXErrorUtil::GetMatches(E(3)).empty());
  EXPECT_TRUE(FXErrorUtil::GetMatches(W(10044)).empty());
  EXPECT_TRUE(FXErrorUtil::GetMatches(static_cast<HRESULT>(0x80004005)).empty());
}

// Eight threads compile the table at once and read it at once; 0 when every
// one saw the right answers.
int RaceToCompile() {
  // Compiled already, the race would prove nothing.
  if (!FXErrorUtil::GetMatches(E(2)).empty()) return 2;
  std::vector<std::thread> threads;
  std::vector<int> hits(8, 0);
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t, &hits] {
      FXErrorUtil::CompileErrorMappingsIntoContainer();
      for (int i = 0; i < 1000; ++i) hits[t] += FXErrorUtil::Matches(W(3), E(2)) ? 1 : 0;
      hits[t] += FXErrorUtil::GetMatches(E(2)).size() == 2 ? 1 : 0;
    });
  }
  for (auto& thread : threads) thread.join();
  for (int h : hits)
    if (h != 1001) return 1;
  return 0;
}

// In a process of its own (the death-test child runs this test alone from
// the start), where no other test has compiled the table yet.
TEST(EquivalenceTableDeathTest, CompilationRacesSafely) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(RaceToCompile()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
