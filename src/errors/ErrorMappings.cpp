// The equivalence of result codes across error domains.
#include <atomic>
#include <map>
#include <set>
#include <utility>

#include "errors/ErrorUtil.h"
#include "platform/InitLock.h"

namespace {

constexpr HRESULT W(unsigned n) { return static_cast<HRESULT>(0x80070000u | n); }
constexpr HRESULT E(unsigned n) { return static_cast<HRESULT>(0xECCC0000u | n); }

// Each group is a zero-terminated list of codes that denote one condition.
// Win32 and WinSock codes against the Microsoft C runtime's errno numbers.
constexpr HRESULT kGroups[][3] = {
    {W(1), E(1)},         {W(2), E(2)},         {W(3), E(2)},         {W(111), E(132)},
    {W(14), E(12)},       {W(80), E(17)},       {W(109), E(32)},      {W(258), E(138)},
    {W(112), E(28)},      {W(5), E(13)},        {E(4), W(10004)},     {E(9), W(10009)},
    {E(13), W(10013)},    {E(14), W(10014)},    {E(22), W(10022)},    {E(24), W(10024)},
    {E(140), W(10035)},   {E(112), W(10036)},   {E(103), W(10037)},   {E(128), W(10038)},
    {E(109), W(10039)},   {E(115), W(10040)},   {E(136), W(10041)},   {E(123), W(10042)},
    {E(135), W(10043)},   {E(130), W(10045)},   {E(102), W(10047)},   {E(100), W(10048)},
    {E(101), W(10049)},   {E(116), W(10050)},   {E(118), W(10051)},   {E(117), W(10052)},
    {E(106), W(10053)},   {E(108), W(10054)},   {E(119), W(10055)},   {E(113), W(10056)},
    {E(126), W(10057)},   {E(138), W(10060)},   {E(107), W(10061)},   {E(114), W(10062)},
    {E(38), W(10063)},    {E(110), W(10065)},   {E(41), W(10066)},    {E(11), W(11002)},
    {E(120), W(11004)},   {E(12), W(8)},        {E(22), W(87)},
    // Codes without a partner: they match only themselves.
    {E(1)}, {E(2)}, {E(3)}, {E(5)}, {E(6)}, {E(7)}, {E(8)}, {E(10)}, {E(11)}, {E(12)},
    {E(16)}, {E(17)}, {E(18)}, {E(19)}, {E(20)}, {E(21)}, {E(23)}, {E(25)}, {E(139)},
    {E(27)}, {E(28)}, {E(29)}, {E(30)}, {E(31)}, {E(32)}, {E(33)}, {E(34)}, {E(36)},
    {E(38)}, {E(39)}, {E(40)}, {E(41)}, {W(10044)}, {W(10046)}, {W(10058)}, {W(10059)},
    {W(10064)}, {W(10067)}, {W(10068)}, {W(10069)}, {W(10070)}, {W(10071)}, {W(10091)},
    {W(10092)}, {W(10093)}, {W(11001)}, {W(11003)}, {W(10101)}, {W(10107)}, {W(995)},
    {W(996)}, {W(997)}, {W(6)}, {},
};
static_assert(sizeof kGroups / sizeof kGroups[0] == 101, "the equivalence table has 101 groups");

struct TCompiled {
  std::set<std::pair<HRESULT, HRESULT>> pairs;
  std::map<HRESULT, std::set<HRESULT>> matches;
};

std::atomic<bool> g_compiled{false};

TCompiled& Compiled() {
  static TCompiled compiled;
  return compiled;
}

bool ScanGroups(HRESULT a, HRESULT b) {
  for (const auto& group : kGroups) {
    bool hasA = false, hasB = false;
    for (const HRESULT* code = group; code != group + 3 && *code != 0; ++code) {
      hasA = hasA || *code == a;
      hasB = hasB || *code == b;
    }
    if (hasA && hasB) return true;
  }
  return false;
}

}  // namespace

namespace FXErrorUtil {

bool Matches(HRESULT a, HRESULT b) {
  if (a == b) return true;
  if (!g_compiled.load(std::memory_order_acquire)) return ScanGroups(a, b);
  const auto& pairs = Compiled().pairs;
  return pairs.find(std::make_pair(a, b)) != pairs.end();
}

std::set<HRESULT> GetMatches(HRESULT code) {
  if (!g_compiled.load(std::memory_order_acquire)) return std::set<HRESULT>();
  const auto& matches = Compiled().matches;
  const auto it = matches.find(code);
  return it == matches.end() ? std::set<HRESULT>() : it->second;
}

void CompileErrorMappingsIntoContainer() {
  if (g_compiled.load(std::memory_order_acquire)) return;
  std::lock_guard<std::mutex> lock(FXPlatform::InitLock());
  if (g_compiled.load(std::memory_order_relaxed)) return;
  TCompiled& compiled = Compiled();
  for (const auto& group : kGroups) {
    for (int i = 0; i < 3 && group[i] != 0; ++i) {
      for (int j = i + 1; j < 3 && group[j] != 0; ++j) {
        compiled.pairs.emplace(group[i], group[j]);
        compiled.pairs.emplace(group[j], group[i]);
        compiled.matches[group[i]].insert(group[j]);
        compiled.matches[group[j]].insert(group[i]);
      }
    }
  }
  g_compiled.store(true, std::memory_order_release);
}

}  // namespace FXErrorUtil
