// Path sameness, ancestry, joining and splitting against std::filesystem::path
// doing the same work (comparison, component-wise prefix, operator/,
// parent_path and filename) on paths of the same shape: eight realistic
// paths of 40 to 110 characters, ours in Windows form, the peer's in POSIX
// form (std::filesystem parses "/" on Linux). The peer's paths are built
// before timing, so only the operation is measured.
#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "paths/Path.h"

namespace fs = std::filesystem;

namespace {

const std::array<const char*, 8> kPaths = {
    "C:\\Users\\jdoe\\Documents\\Projects\\2026\\Quarterly Reports\\summary-final.docx",
    "C:\\ProgramData\\Vendor\\Agent\\cache\\chunks\\0a\\0a1b2c3d4e5f.bin",
    "D:\\Shares\\Engineering\\builds\\release\\x64\\bin\\ZuUtils.dll",
    "C:\\Windows\\System32\\DriverStore\\FileRepository\\netrtwlane.inf_amd64\\netrtwlane.sys",
    "E:\\Media\\Photos\\2025\\Holidays\\Beach\\IMG_20250714_101512.jpg",
    "C:\\Users\\jdoe\\AppData\\Local\\Temp\\backup-staging\\snapshot-17\\manifest.xml",
    "F:\\Archive\\Finance\\Ledgers\\FY2024\\Q3\\ledger-export.csv",
    "C:\\dev\\src\\agent\\paths\\tests\\fixtures\\deep\\er\\still\\deeper\\leaf.txt",
};

// The POSIX spelling of the same path for the peer: "/C/Users/...".
std::string Posix(const char* windowsPath) {
  std::string p = std::string("/") + windowsPath;
  p.erase(2, 1);  // the colon
  std::replace(p.begin(), p.end(), '\\', '/');
  return p;
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// The folder three levels up of each path (a likely ancestor) with a
// trailing separator as catalogues often have it; ours also in other case
// (the peer compares case-sensitively, so it gets the easier exact case).
std::string Ancestor(std::string path, bool otherCase) {
  for (int i = 0; i < 3; ++i) path.erase(path.find_last_of("\\/"));
  return (otherCase ? Upper(path) : path) + "\\";
}

struct TInputs {
  std::array<std::string, 8> ours, oursCopy, oursOther, oursOtherCase, oursDiffer, oursAncestor;
  std::array<fs::path, 8> peer, peerOther, peerDiffer, peerAncestor, peerFolded;
  std::array<std::string, 8> peerLong;  // the long spelling, as text arrives
  TInputs() {
    for (std::size_t i = 0; i < kPaths.size(); ++i) {
      ours[i] = kPaths[i];
      oursCopy[i] = ours[i];
      oursOtherCase[i] = "\\\\?\\" + Upper(ours[i]);
      oursOther[i] = "\\\\?\\" + ours[i];  // the same path in its long form
      oursAncestor[i] = Ancestor(ours[i], true);
      peer[i] = Posix(kPaths[i]);
      peerOther[i] = Posix(kPaths[i]);
      peerLong[i] = "//?" + Posix(kPaths[i]);
      std::string folded = Posix(kPaths[i]);
      for (char& c : folded) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      peerFolded[i] = folded;
      // Another file of the same folder: the usual miss of a lookup.
      oursDiffer[i] = ours[i];
      oursDiffer[i].back() = '_';
      peerDiffer[i] = Posix(oursDiffer[i].c_str());
      peerAncestor[i] = Posix(Ancestor(ours[i], false).c_str());
    }
  }
};

const TInputs& Inputs() {
  static const TInputs inputs;
  return inputs;
}

// The rows of IsSamePathAs:
// "identical": both sides compare two identical spellings (the same work on
//   the same input);
// "equal": ours compares the long form with the plain one, the peer two
//   identical spellings, the only sameness it sees by itself;
// "spellings": ours compares the long form in capitals with the plain one;
//   the same question asked of the peer the way a
//   std::filesystem caller must: strip the long prefix, fold case (into a
//   buffer kept between calls, so no allocation there) and compare as paths
//   with the stored side folded before timing; std::filesystem has neither
//   the prefix rule nor case-insensitive comparison;
// "differ": the last character differs.
enum class TSame { kIdentical, kEqual, kSpellings, kDiffer };

void IsSamePathAsOurs(benchmark::State& state, TSame row) {
  const TInputs& in = Inputs();
  const auto& other = row == TSame::kIdentical   ? in.oursCopy
                      : row == TSame::kSpellings ? in.oursOtherCase
                      : row == TSame::kDiffer    ? in.oursDiffer
                                                 : in.oursOther;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(FXPath::IsSamePathAs(in.ours[i], other[i]));
    i = (i + 1) % 8;
  }
}
BENCHMARK_CAPTURE(IsSamePathAsOurs, identical, TSame::kIdentical)->Name("IsSamePathAs/ours/identical");
BENCHMARK_CAPTURE(IsSamePathAsOurs, equal, TSame::kEqual)->Name("IsSamePathAs/ours/equal");
BENCHMARK_CAPTURE(IsSamePathAsOurs, spellings, TSame::kSpellings)->Name("IsSamePathAs/ours/spellings");
BENCHMARK_CAPTURE(IsSamePathAsOurs, differ, TSame::kDiffer)->Name("IsSamePathAs/ours/differ");

void IsSamePathAsPeer(benchmark::State& state, TSame row) {
  const TInputs& in = Inputs();
  const auto& other = row == TSame::kDiffer ? in.peerDiffer : in.peerOther;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(in.peer[i] == other[i]);
    i = (i + 1) % 8;
  }
}
BENCHMARK_CAPTURE(IsSamePathAsPeer, identical, TSame::kIdentical)->Name("IsSamePathAs/std_filesystem/identical");
BENCHMARK_CAPTURE(IsSamePathAsPeer, equal, TSame::kEqual)->Name("IsSamePathAs/std_filesystem/equal");
BENCHMARK_CAPTURE(IsSamePathAsPeer, differ, TSame::kDiffer)->Name("IsSamePathAs/std_filesystem/differ");

void IsSamePathAsPeerSpellings(benchmark::State& state) {
  const TInputs& in = Inputs();
  std::string folded;
  std::size_t i = 0;
  for (auto _ : state) {
    std::string_view text = in.peerLong[i];
    if (text.compare(0, 4, "//?/") == 0) text.remove_prefix(3);  // keeps the root "/"
    folded.assign(text);
    for (char& c : folded) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    benchmark::DoNotOptimize(in.peerFolded[i].compare(folded) == 0);
    i = (i + 1) % 8;
  }
}
BENCHMARK(IsSamePathAsPeerSpellings)->Name("IsSamePathAs/std_filesystem/spellings");

void IsAncestorOfOurs(benchmark::State& state) {
  const TInputs& in = Inputs();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(FXPath::IsAncestorOf(in.oursAncestor[i], in.ours[i], false));
    i = (i + 1) % 8;
  }
}
BENCHMARK(IsAncestorOfOurs)->Name("IsAncestorOf/ours");

void IsAncestorOfPeer(benchmark::State& state) {
  const TInputs& in = Inputs();
  std::size_t i = 0;
  for (auto _ : state) {
    // Component-wise prefix: the usual std::filesystem way to ask it.
    const fs::path& a = in.peerAncestor[i];
    const fs::path& b = in.peer[i];
    auto aEnd = a.end();
    if (!a.empty() && a.filename().empty()) --aEnd;  // the trailing separator's empty element
    const auto mismatch = std::mismatch(a.begin(), aEnd, b.begin(), b.end());
    benchmark::DoNotOptimize(mismatch.first == aEnd && mismatch.second != b.end());
    i = (i + 1) % 8;
  }
}
BENCHMARK(IsAncestorOfPeer)->Name("IsAncestorOf/std_filesystem");

void AppendOurs(benchmark::State& state) {
  const TInputs& in = Inputs();
  const std::string tail = "restore\\target\\item.dat";
  std::size_t i = 0;
  for (auto _ : state) {
    std::string joined = in.oursAncestor[i];
    FXPath::Append(joined, tail);
    benchmark::DoNotOptimize(joined.data());
    i = (i + 1) % 8;
  }
}
BENCHMARK(AppendOurs)->Name("Append/ours");

void AppendPeer(benchmark::State& state) {
  const TInputs& in = Inputs();
  const fs::path tail = "restore/target/item.dat";
  std::size_t i = 0;
  for (auto _ : state) {
    fs::path joined = in.peerAncestor[i];
    joined /= tail;
    benchmark::DoNotOptimize(joined.native().data());
    i = (i + 1) % 8;
  }
}
BENCHMARK(AppendPeer)->Name("Append/std_filesystem");

void SplitParentPathOurs(benchmark::State& state) {
  const TInputs& in = Inputs();
  std::string parent, leaf;
  std::size_t i = 0;
  for (auto _ : state) {
    FXPath::SplitParentPath(in.ours[i], parent, leaf);
    benchmark::DoNotOptimize(parent.data());
    benchmark::DoNotOptimize(leaf.data());
    i = (i + 1) % 8;
  }
}
BENCHMARK(SplitParentPathOurs)->Name("SplitParentPath/ours");

void SplitParentPathPeer(benchmark::State& state) {
  const TInputs& in = Inputs();
  std::size_t i = 0;
  for (auto _ : state) {
    fs::path parent = in.peer[i].parent_path();
    fs::path leaf = in.peer[i].filename();
    benchmark::DoNotOptimize(parent.native().data());
    benchmark::DoNotOptimize(leaf.native().data());
    i = (i + 1) % 8;
  }
}
BENCHMARK(SplitParentPathPeer)->Name("SplitParentPath/std_filesystem");

}  // namespace
