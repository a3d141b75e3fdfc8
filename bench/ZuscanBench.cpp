// zuscan on the traversal benchmark's generated tree (about 200,000
// entries), 2 workers, warm cache: a metadata catalogue against
// `bfs -printf '%p %s %T@\n'`, and a catalogue with an MD5 of every file
// against `find -type f -print0 | xargs -0 -P2 md5sum`. Peers write to
// /dev/null; zuscan writes its catalogue to the temporary folder.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "support/GeneratedTree.h"
#include "zuscan/Zuscan.h"

namespace {

namespace fs = std::filesystem;

const std::string& Root() {
  static const std::string root = ZuTest::BenchTree().root;
  return root;
}

void Zuscan(benchmark::State& state, const char* checksum) {
  const std::string work = (fs::temp_directory_path() / "zu_zuscan_bench").string();
  fs::create_directories(work);
  std::vector<std::string> arguments = {"zuscan", "-quiet", "-workers", "2", "-checksum", checksum,
                                        "-catalog", work + "/bench.catalog", "-log-dir", work, Root()};
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(&argument[0]);
  std::atomic<bool> never{false};
  zuscan::TConsole console;
  console.out = std::fopen("/dev/null", "w");
  console.interrupted = &never;
  for (auto _ : state) {
    if (zuscan::Run(static_cast<int>(argv.size()), argv.data(), console) != zuscan::kExitDone) {
      state.SkipWithError("zuscan failed");
      break;
    }
  }
  std::fclose(console.out);
  state.counters["entries/s"] = benchmark::Counter(static_cast<double>(ZuTest::BenchTree().entries),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void Shell(benchmark::State& state, const std::string& program, const std::string& command) {
  if (std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) != 0) {
    state.SkipWithError((program + " is not installed (scripts/setup --bench)").c_str());
    return;
  }
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) {
      state.SkipWithError((command + " failed").c_str());
      return;
    }
  }
  state.counters["entries/s"] = benchmark::Counter(static_cast<double>(ZuTest::BenchTree().entries),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void Register() {
  benchmark::RegisterBenchmark("Catalog/ours", Zuscan, "none")->Unit(benchmark::kMillisecond)->UseRealTime();
  benchmark::RegisterBenchmark("Catalog/bfs", [](benchmark::State& state) {
    Shell(state, "bfs", "bfs " + Root() + " -printf '%p %s %T@\\n' >/dev/null 2>&1");
  })->Unit(benchmark::kMillisecond)->UseRealTime();
  benchmark::RegisterBenchmark("CatalogMd5/ours", Zuscan, "md5")->Unit(benchmark::kMillisecond)->UseRealTime();
  benchmark::RegisterBenchmark("CatalogMd5/find-xargs-md5sum", [](benchmark::State& state) {
    Shell(state, "md5sum", "find " + Root() + " -type f -print0 | xargs -0 -P2 md5sum >/dev/null 2>&1");
  })->Unit(benchmark::kMillisecond)->UseRealTime();
}

const int kRegistered = (Register(), 0);

}  // namespace
