// Walking a generated tree of about 200,000 entries (folders 4 to 8 deep,
// 1 to 200 entries each), warm cache, every entry's path, size and
// modification time written to /dev/null: CTraverseFolder with 1 and 2
// workers against `bfs -printf '%p %s %T@\n'` and `find -printf` (the same
// output) and `fd -u` (names only, so a lower bound: it never reads a size
// or a time). bfs and find walk with one thread in both groups; fd gets as
// many threads as our walker. Entries per second are in the counters.
//
// The tree is made once below the temporary folder and kept for later runs
// (ZU_TRAVERSE_BENCH_TREE names another place).
//
// Pruning: a filter set excludes the first-level folders that hold about
// half the tree; the walk asks it for every folder and queues only those it
// does not exclude whole, so the excluded folders are never opened (the
// counters show the folders opened and any excluded one opened by
// mistake). bfs and find get the same folders as -prune.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "paths/FilterSet.h"
#include "paths/TraverseFolder.h"
#include "platform/DirectoryEnum.h"
#include "support/GeneratedTree.h"

namespace {
namespace fs = std::filesystem;

const ZuTest::TBenchTree& Tree() { return ZuTest::BenchTree(); }

// The root's first-level folders whose subtrees hold about half the entries.
const std::vector<std::string>& HalfTheTree() {
  static const std::vector<std::string> half = [] {
    std::vector<std::string> chosen;
    std::size_t excluded = 0;
    for (const auto& child : fs::directory_iterator(Tree().root)) {
      if (!child.is_directory() || excluded * 2 >= Tree().entries) continue;
      std::size_t below = 1;
      for (auto it = fs::recursive_directory_iterator(child.path()); it != fs::recursive_directory_iterator(); ++it)
        ++below;
      if ((excluded + below) * 10 > Tree().entries * 6) continue;  // not much over half
      excluded += below;
      chosen.push_back(child.path().filename().string());
    }
    return chosen;
  }();
  return half;
}

// Runs of a command-line finder with its output to /dev/null; the arguments
// come before and after the tree's root.
void RunPeer(benchmark::State& state, const std::string& program, const std::string& before,
             const std::string& after, bool wholeTree = true) {
  const std::string command = program + " " + before + " " + Tree().root + " " + after + " >/dev/null 2>&1";
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
  if (wholeTree)
    state.counters["entries/s"] =
        benchmark::Counter(static_cast<double>(Tree().entries), benchmark::Counter::kIsIterationInvariantRate);
}

void Bfs(benchmark::State& state) { RunPeer(state, "bfs", "", "-printf '%p %s %T@\\n'"); }
void Find(benchmark::State& state) { RunPeer(state, "find", "", "-printf '%p %s %T@\\n'"); }
// Debian installs fd as fdfind.
void Fd(benchmark::State& state, int threads) {
  RunPeer(state, "fdfind", "-u -j " + std::to_string(threads) + " .", "");
}

// What `-printf '%p %s %T@\n'` prints, from the hooks: each worker fills a
// buffer of its own and hands it to /dev/null in large writes.
class CPrintingWalk : public CTraverseFolder {
 public:
  explicit CPrintingWalk(std::FILE* sink) : m_sink(sink) {}
  ~CPrintingWalk() override {
    for (std::string& text : m_buffers) std::fwrite(text.data(), 1, text.size(), m_sink);
  }

 protected:
  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    Print(input, data);
    return CTraverseFolder::OnFolder(input, output, data);
  }
  CZuError OnFile(const std::string& input, const std::string&, const TFindData& data) override {
    Print(input, data);
    return CZuError::Success();
  }

 private:
  static constexpr std::size_t kFlushAt = 64 * 1024;
  static constexpr int kMaxWorkers = 64;

  std::string& Buffer() {
    thread_local const CPrintingWalk* owner = nullptr;
    thread_local int slot = 0;
    if (owner != this) {
      owner = this;
      slot = m_nextSlot++;
      m_buffers[slot].reserve(kFlushAt + 4096);
    }
    return m_buffers[slot];
  }

  void Print(const std::string& path, const TFindData& data) {
    std::string& text = Buffer();
    // Seconds since 1970 with the seven decimals that 100 ns give.
    const long long ticks = data.ftLastWriteTime.AsSystemTime() - 116444736000000000ll;
    char numbers[64];
    const int length = std::snprintf(numbers, sizeof numbers, " %llu %lld.%07lld\n", data.nFileSize,
                                     ticks / 10000000, ticks % 10000000);
    text += path;
    text.append(numbers, static_cast<std::size_t>(length));
    if (text.size() >= kFlushAt) {
      std::lock_guard<std::mutex> hold(m_lock);
      std::fwrite(text.data(), 1, text.size(), m_sink);
      text.clear();
    }
  }

  std::FILE* m_sink;
  std::mutex m_lock;
  std::atomic<int> m_nextSlot{0};
  std::string m_buffers[kMaxWorkers];
};

class CRootedWalk : public CPrintingWalk {
 public:
  CRootedWalk(std::FILE* sink, int workers) : CPrintingWalk(sink) {
    SetMaxWorkers(workers);
    AddFolderToList(FXPlatform::LibraryPathOf(Tree().root));
  }
  ~CRootedWalk() override = default;
};

void Ours(benchmark::State& state, int workers) {
  std::FILE* sink = std::fopen("/dev/null", "wb");
  unsigned long long entries = 0;
  for (auto _ : state) {
    CRootedWalk walk(sink, workers);
    const CZuError result = walk.Traverse();
    if (result.IsError()) {
      state.SkipWithError(result.AsString().c_str());
      break;
    }
    entries = walk.GetStatistics().entries;
    state.counters["folders_opened"] = static_cast<double>(walk.GetStatistics().foldersEnumerated);
  }
  std::fclose(sink);
  // The root itself is not an entry of the tree.
  if (entries != Tree().entries) state.SkipWithError("the walk missed entries");
  state.counters["entries/s"] =
      benchmark::Counter(static_cast<double>(Tree().entries), benchmark::Counter::kIsIterationInvariantRate);
}

// The walk above, asking a filter set about every folder and file.
class CFilteredWalk : public CPrintingWalk {
 public:
  CFilteredWalk(std::FILE* sink, const CFilterSet& filters) : CPrintingWalk(sink), m_filters(filters) {
    SetMaxWorkers(2);
    AddFolderToList(FXPlatform::LibraryPathOf(Tree().root));
  }
  ~CFilteredWalk() override = default;
  std::atomic<int> excludedOpened{0};

 protected:
  CZuError OnTraverseFolder(const std::string& input, const std::string&) override {
    if (m_filters.IsIn(input)) ++excludedOpened;
    return CZuError::Success();
  }
  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    if (m_filters.IsIn(input) && m_filters.IsMatchEntireFolder(input)) return CZuError::Success();
    return CPrintingWalk::OnFolder(input, output, data);
  }
  CZuError OnFile(const std::string& input, const std::string& output, const TFindData& data) override {
    if (m_filters.IsIn(input)) return CZuError::Success();
    return CPrintingWalk::OnFile(input, output, data);
  }

 private:
  const CFilterSet& m_filters;
};

void OursPruned(benchmark::State& state) {
  CFilterSet filters;
  for (const std::string& name : HalfTheTree())
    filters.AddFilterItem(BFilterNodeState(BFilterNodeState::FILTER_NODE_FILTER),
                          FXPlatform::LibraryPathOf(Tree().root) + "\\" + name);
  std::FILE* sink = std::fopen("/dev/null", "wb");
  for (auto _ : state) {
    CFilteredWalk walk(sink, filters);
    const CZuError result = walk.Traverse();
    if (result.IsError()) {
      state.SkipWithError(result.AsString().c_str());
      break;
    }
    state.counters["folders_opened"] = static_cast<double>(walk.GetStatistics().foldersEnumerated);
    state.counters["entries_seen"] = static_cast<double>(walk.GetStatistics().entries);
    state.counters["excluded_opened"] = walk.excludedOpened.load();
  }
  std::fclose(sink);
}

std::string PruneArguments() {
  std::string arguments = "\\(";
  for (const std::string& name : HalfTheTree())
    arguments += (arguments.size() > 2 ? " -o -path " : " -path ") + Tree().root + "/" + name;
  return arguments + " \\) -prune -o -printf '%p %s %T@\\n'";
}
void BfsPruned(benchmark::State& state) { RunPeer(state, "bfs", "", PruneArguments(), false); }
void FindPruned(benchmark::State& state) { RunPeer(state, "find", "", PruneArguments(), false); }

}  // namespace

BENCHMARK_CAPTURE(Ours, 1, 1)->Name("traverse_1worker/ours")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK_CAPTURE(Ours, 2, 2)->Name("traverse_2workers/ours")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(Bfs)->Name("traverse_1worker/bfs")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(Find)->Name("traverse_1worker/find")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK_CAPTURE(Fd, 1, 1)->Name("traverse_1worker/fd")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(Bfs)->Name("traverse_2workers/bfs")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(Find)->Name("traverse_2workers/find")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK_CAPTURE(Fd, 2, 2)->Name("traverse_2workers/fd")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(OursPruned)->Name("traverse_pruned/ours")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(BfsPruned)->Name("traverse_pruned/bfs")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
BENCHMARK(FindPruned)->Name("traverse_pruned/find")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
