// The cost of a result on the success path, against absl::Status and
// std::error_code; and code matching with and without the compiled table.
#include <system_error>

#include <absl/status/status.h>
#include <benchmark/benchmark.h>

#include "errors/ErrorUtil.h"

namespace {

#define ZU_NOINLINE __attribute__((noinline))

ZU_NOINLINE CZuError ZuLeaf(int i) {
  if (i < 0) return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, "ZuLeaf", __LINE__), 87);
  return CZuError::Success();
}
ZU_NOINLINE CZuError ZuMiddle(int i) {
  CZuError r = ZuLeaf(i);
  if (r.IsError()) return r.Push(FXCodeLocation(__FILE__, "ZuMiddle", __LINE__));
  return r;
}
ZU_NOINLINE CZuError ZuTop(int i) {
  CZuError r = ZuMiddle(i);
  if (r.IsError()) return r.Push(FXCodeLocation(__FILE__, "ZuTop", __LINE__));
  return r;
}

ZU_NOINLINE absl::Status AbslLeaf(int i) {
  if (i < 0) return absl::InvalidArgumentError("negative");
  return absl::OkStatus();
}
ZU_NOINLINE absl::Status AbslMiddle(int i) {
  absl::Status s = AbslLeaf(i);
  if (!s.ok()) return s;
  return s;
}
ZU_NOINLINE absl::Status AbslTop(int i) {
  absl::Status s = AbslMiddle(i);
  if (!s.ok()) return s;
  return s;
}

ZU_NOINLINE std::error_code EcLeaf(int i) {
  if (i < 0) return std::make_error_code(std::errc::invalid_argument);
  return std::error_code();
}
ZU_NOINLINE std::error_code EcMiddle(int i) {
  std::error_code e = EcLeaf(i);
  if (e) return e;
  return e;
}
ZU_NOINLINE std::error_code EcTop(int i) {
  std::error_code e = EcMiddle(i);
  if (e) return e;
  return e;
}

void SuccessOurs(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    CZuError r = ZuTop(i++ & 0xFF);
    benchmark::DoNotOptimize(r.IsError());
  }
}
void SuccessAbsl(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    absl::Status s = AbslTop(i++ & 0xFF);
    benchmark::DoNotOptimize(s.ok());
  }
}
void SuccessErrorCode(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) {
    std::error_code e = EcTop(i++ & 0xFF);
    benchmark::DoNotOptimize(static_cast<bool>(e));
  }
}

// Pairs that hit and miss the table, the common shape of an Is() call.
const HRESULT kCodes[][2] = {
    {static_cast<HRESULT>(0x80070002), static_cast<HRESULT>(0xECCC0002)},
    {static_cast<HRESULT>(0x80072742), static_cast<HRESULT>(0xECCC0072)},
    {static_cast<HRESULT>(0x80070005), static_cast<HRESULT>(0x80070057)},
    {static_cast<HRESULT>(0x80004005), static_cast<HRESULT>(0xECCC0016)},
};

void MatchLoop(benchmark::State& state) {
  std::size_t i = 0;
  for (auto _ : state) {
    const auto& pair = kCodes[i++ & 3];
    benchmark::DoNotOptimize(FXErrorUtil::Matches(pair[0], pair[1]));
  }
}

// Registration order matters: the scan runs before anything compiles the table.
void MatchesScan(benchmark::State& state) { MatchLoop(state); }
void MatchesCompiled(benchmark::State& state) {
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  MatchLoop(state);
}

const int kRegistered = [] {
  benchmark::RegisterBenchmark("ReturnSuccess3Deep/ours", SuccessOurs);
  benchmark::RegisterBenchmark("ReturnSuccess3Deep/absl::Status", SuccessAbsl);
  benchmark::RegisterBenchmark("ReturnSuccess3Deep/std::error_code", SuccessErrorCode);
  benchmark::RegisterBenchmark("Matches/table-scan", MatchesScan);
  benchmark::RegisterBenchmark("Matches/ours", MatchesCompiled);
  return 0;
}();

}  // namespace
