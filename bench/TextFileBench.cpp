// CTextFile::ReadLine on 64 MiB of text from a warm page cache: narrow lines
// of a UTF-8 file against std::getline on an std::ifstream, and wide lines
// of a UTF-16LE file against std::getline on the UTF-8 file followed by the
// library's own conversion (FXString::ToWstring).
#include <cstdio>
#include <fstream>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "platform/FileSystem.h"
#include "text/StringConvert.h"
#include "text/TextFile.h"

namespace {

constexpr std::size_t kSize = 64u << 20;

struct TFiles {
  std::string utf8, utf16;
  std::size_t bytes = 0;
};

// Lines of 0 to 120 characters, mostly ASCII with some European and CJK
// words, as log and list files have them; CR LF line ends.
const TFiles& Files() {
  static const TFiles files = [] {
    TFiles f;
    f.utf8 = FXPlatform::TempDirectory() + "zu_textfile_bench_utf8.txt";
    f.utf16 = FXPlatform::TempDirectory() + "zu_textfile_bench_utf16.txt";
    const char* words[] = {"backup", "C:\\Program Files\\Agent", "volume", "r\xC3\xA9sum\xC3\xA9", "\xE6\x96\x87\xE4\xBB\xB6",
                           "12345", "copied", "Stra\xC3\x9F" "e", "the", "file"};
    std::mt19937 random(11);
    std::string text = "\xEF\xBB\xBF";
    while (text.size() < kSize) {
      std::string line;
      const std::size_t length = random() % 121;
      while (line.size() < length) line += std::string(words[random() % 10]) + ' ';
      text += line + "\r\n";
    }
    std::ofstream(f.utf8, std::ios::binary) << text;
    const std::wstring wide = FXString::ToWstring(text.substr(3));
    std::string utf16 = "\xFF\xFE";
    for (const wchar_t c : wide) {
      const auto put = [&](unsigned unit) {
        utf16 += static_cast<char>(unit & 0xFF);
        utf16 += static_cast<char>(unit >> 8);
      };
      const unsigned code = static_cast<unsigned>(c);
      if (code >= 0x10000) {
        put(0xD800 + ((code - 0x10000) >> 10));
        put(0xDC00 + ((code - 0x10000) & 0x3FF));
      } else {
        put(code);
      }
    }
    std::ofstream(f.utf16, std::ios::binary) << utf16;
    f.bytes = text.size();
    return f;
  }();
  return files;
}

template <class Char>
void ReadWithTextFile(benchmark::State& state, const std::string& path) {
  std::size_t lines = 0;
  for (auto _ : state) {
    CTextFile file;
    if (file.Open(path, CTextFile::kModeRead, CTextFile::kDetect, 1 << 16) != 0) state.SkipWithError("open");
    Char* line = nullptr;
    int length = 0;
    lines = 0;
    while (file.ReadLine(&length, &line) == 0) ++lines;
    benchmark::DoNotOptimize(line);
    CTextFile::FreeLineBuffer(line);
  }
  state.counters["lines"] = static_cast<double>(lines);
  state.SetBytesProcessed(static_cast<long long>(state.iterations() * Files().bytes));
}

void NarrowOurs(benchmark::State& state) { ReadWithTextFile<char>(state, Files().utf8); }

void NarrowGetline(benchmark::State& state) {
  for (auto _ : state) {
    std::ifstream in(Files().utf8, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) benchmark::DoNotOptimize(line.data());
  }
  state.SetBytesProcessed(static_cast<long long>(state.iterations() * Files().bytes));
}

void WideOurs(benchmark::State& state) { ReadWithTextFile<wchar_t>(state, Files().utf16); }

void WideGetlineConvert(benchmark::State& state) {
  for (auto _ : state) {
    std::ifstream in(Files().utf8, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
      const std::wstring wide = FXString::ToWstring(line);
      benchmark::DoNotOptimize(wide.data());
    }
  }
  state.SetBytesProcessed(static_cast<long long>(state.iterations() * Files().bytes));
}

}  // namespace

BENCHMARK(NarrowOurs)->Name("readline_utf8_narrow/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(NarrowGetline)->Name("readline_utf8_narrow/std_getline")->Unit(benchmark::kMillisecond);
BENCHMARK(WideOurs)->Name("readline_utf16le_wide/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(WideGetlineConvert)
    ->Name("readline_utf16le_wide/std_getline_ToWstring")
    ->Unit(benchmark::kMillisecond);
