// UTF-8 <-> UTF-16 conversion against glibc's iconv and a naive
// per-code-point loop, on 1 MiB of ASCII, of mixed European and of CJK
// text; the string conversions (wide = UTF-32 here) against iconv and the
// FXUTF transcoders, each making a new string; Split, Join and
// case-insensitive search on 1 MiB against absl::StrSplit, absl::StrJoin
// and strcasestr. (simdutf would be the upper anchor of the conversions;
// Debian has no package of it.)
#include <iconv.h>
#include <strings.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <absl/strings/str_join.h>
#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>

#include "text/StringAlgo.h"
#include "text/StringConvert.h"
#include "text/UTF.h"

namespace {

constexpr std::size_t kMiB = 1 << 20;

// 1 MiB of the sample repeated, cut at a character boundary.
std::string Repeat(const std::string& sample) {
  std::string text;
  while (text.size() < kMiB) text += sample;
  std::size_t cut = kMiB;
  while ((static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  text.resize(cut);
  return text;
}

struct TInput {
  const char* name;
  std::string utf8;
  std::u16string utf16;
};

const std::vector<TInput>& Inputs() {
  static const std::vector<TInput> inputs = [] {
    const std::vector<std::pair<const char*, std::string>> samples = {
        {"ascii", "The backup agent copies every file of the volume and logs what it did. "},
        {"european",
         "Der B\xC3\xA4r l\xC3\xA4uft \xC3\xBC" "ber die Stra\xC3\x9F" "e; l'\xC3\xA9t\xC3\xA9 \xC3\xA0 Paris; "
         "\xC5\xBC\xC3\xB3\xC5\x82w, \xC4\x8D" "esk\xC3\xBD jazyk, se\xC3\xB1or, \xCE\xB1\xCE\xB2\xCE\xB3. "},
        {"cjk",
         "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD\xE3\x81\xAE\xE5\xA4\xA9\xE6\xB0\x97\xE3\x81\xAF\xE6\x99\xB4\xE3\x82"
         "\x8C\xE3\x81\xA7\xE3\x81\x99\xE3\x80\x82\xE5\x82\x99\xE4\xBB\xBD\xE6\x96\x87\xE4\xBB\xB6\xE5\xB7\xB2"
         "\xE5\xAE\x8C\xE6\x88\x90\xE3\x80\x82"},
    };
    std::vector<TInput> out;
    for (const auto& [name, sample] : samples) {
      TInput input{name, Repeat(sample), {}};
      input.utf16.resize(input.utf8.size());
      const auto* s = reinterpret_cast<const FXUTF::UTF8*>(input.utf8.data());
      auto* t = reinterpret_cast<FXUTF::UTF16*>(&input.utf16[0]);
      FXUTF::ConvertUTF8ToUTF16(&s, s + input.utf8.size(), &t, t + input.utf16.size(), FXUTF::strictConversion);
      input.utf16.resize(static_cast<std::size_t>(t - reinterpret_cast<FXUTF::UTF16*>(&input.utf16[0])));
      out.push_back(std::move(input));
    }
    return out;
  }();
  return inputs;
}

// The textbook decoder: one code point at a time, each checked and written
// on its own.
std::size_t NaiveUtf8ToUtf16(const unsigned char* s, std::size_t n, char16_t* t) {
  char16_t* start = t;
  for (std::size_t i = 0; i < n;) {
    const unsigned char c = s[i];
    std::uint32_t cp;
    std::size_t len;
    if (c < 0x80) {
      cp = c, len = 1;
    } else if ((c & 0xE0) == 0xC0) {
      cp = c & 0x1F, len = 2;
    } else if ((c & 0xF0) == 0xE0) {
      cp = c & 0x0F, len = 3;
    } else if ((c & 0xF8) == 0xF0) {
      cp = c & 0x07, len = 4;
    } else {
      *t++ = 0xFFFD, ++i;
      continue;
    }
    if (i + len > n) {
      *t++ = 0xFFFD;
      break;
    }
    bool ok = true;
    for (std::size_t k = 1; k < len; ++k) {
      ok = ok && (s[i + k] & 0xC0) == 0x80;
      cp = (cp << 6) | (s[i + k] & 0x3F);
    }
    i += len;
    if (!ok || cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) cp = 0xFFFD;
    if (cp > 0xFFFF) {
      cp -= 0x10000;
      *t++ = static_cast<char16_t>(0xD800 + (cp >> 10));
      *t++ = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    } else {
      *t++ = static_cast<char16_t>(cp);
    }
  }
  return static_cast<std::size_t>(t - start);
}

std::size_t NaiveUtf16ToUtf8(const char16_t* s, std::size_t n, unsigned char* t) {
  unsigned char* start = t;
  for (std::size_t i = 0; i < n; ++i) {
    std::uint32_t cp = s[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < n && s[i + 1] >= 0xDC00 && s[i + 1] < 0xE000)
      cp = 0x10000 + ((cp - 0xD800) << 10) + (s[++i] - 0xDC00);
    else if (cp >= 0xD800 && cp < 0xE000)
      cp = 0xFFFD;
    if (cp < 0x80) {
      *t++ = static_cast<unsigned char>(cp);
    } else if (cp < 0x800) {
      *t++ = static_cast<unsigned char>(0xC0 | (cp >> 6));
      *t++ = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      *t++ = static_cast<unsigned char>(0xE0 | (cp >> 12));
      *t++ = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
      *t++ = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    } else {
      *t++ = static_cast<unsigned char>(0xF0 | (cp >> 18));
      *t++ = static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F));
      *t++ = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
      *t++ = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    }
  }
  return static_cast<std::size_t>(t - start);
}

// One iconv conversion of the whole input into a buffer large enough.
std::size_t Iconv(iconv_t cd, const void* in, std::size_t inBytes, void* out, std::size_t outBytes) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* src = static_cast<char*>(const_cast<void*>(in));
  char* dst = static_cast<char*>(out);
  std::size_t left = outBytes;
  iconv(cd, &src, &inBytes, &dst, &left);
  return outBytes - left;
}

void Throughput(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

// UTF-8 -> UTF-16 into a buffer.
void ToUtf16Ours(benchmark::State& state, const TInput* input) {
  std::vector<FXUTF::UTF16> out(input->utf8.size());
  for (auto _ : state) {
    const auto* s = reinterpret_cast<const FXUTF::UTF8*>(input->utf8.data());
    FXUTF::UTF16* t = out.data();
    benchmark::DoNotOptimize(
        FXUTF::ConvertUTF8ToUTF16(&s, s + input->utf8.size(), &t, t + out.size(), FXUTF::strictConversion));
    benchmark::DoNotOptimize(t);
  }
  Throughput(state, input->utf8.size());
}
void ToUtf16Iconv(benchmark::State& state, const TInput* input) {
  std::vector<char16_t> out(input->utf8.size());
  iconv_t cd = iconv_open("UTF-16LE", "UTF-8");
  for (auto _ : state)
    benchmark::DoNotOptimize(Iconv(cd, input->utf8.data(), input->utf8.size(), out.data(), out.size() * 2));
  iconv_close(cd);
  Throughput(state, input->utf8.size());
}
void ToUtf16Naive(benchmark::State& state, const TInput* input) {
  std::vector<char16_t> out(input->utf8.size());
  for (auto _ : state)
    benchmark::DoNotOptimize(NaiveUtf8ToUtf16(reinterpret_cast<const unsigned char*>(input->utf8.data()),
                                              input->utf8.size(), out.data()));
  Throughput(state, input->utf8.size());
}

// UTF-16 -> UTF-8 into a buffer.
void ToUtf8Ours(benchmark::State& state, const TInput* input) {
  std::vector<FXUTF::UTF8> out(input->utf16.size() * 3);
  for (auto _ : state) {
    const auto* s = reinterpret_cast<const FXUTF::UTF16*>(input->utf16.data());
    FXUTF::UTF8* t = out.data();
    benchmark::DoNotOptimize(
        FXUTF::ConvertUTF16ToUTF8(&s, s + input->utf16.size(), &t, t + out.size(), FXUTF::strictConversion));
    benchmark::DoNotOptimize(t);
  }
  Throughput(state, input->utf8.size());
}
void ToUtf8Iconv(benchmark::State& state, const TInput* input) {
  std::vector<char> out(input->utf16.size() * 3);
  iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
  for (auto _ : state)
    benchmark::DoNotOptimize(Iconv(cd, input->utf16.data(), input->utf16.size() * 2, out.data(), out.size()));
  iconv_close(cd);
  Throughput(state, input->utf8.size());
}
void ToUtf8Naive(benchmark::State& state, const TInput* input) {
  std::vector<unsigned char> out(input->utf16.size() * 3);
  for (auto _ : state)
    benchmark::DoNotOptimize(NaiveUtf16ToUtf8(input->utf16.data(), input->utf16.size(), out.data()));
  Throughput(state, input->utf8.size());
}

// The string conversions every caller uses, result allocated each time
// (wchar_t is UTF-32 here, so iconv converts to WCHAR_T).
void ToWstringOurs(benchmark::State& state, const TInput* input) {
  for (auto _ : state) benchmark::DoNotOptimize(FXString::ToWstring(input->utf8));
  Throughput(state, input->utf8.size());
}
void ToWstringIconv(benchmark::State& state, const TInput* input) {
  iconv_t cd = iconv_open("WCHAR_T", "UTF-8");
  for (auto _ : state) {
    std::wstring out(input->utf8.size(), L'\0');
    const std::size_t bytes = Iconv(cd, input->utf8.data(), input->utf8.size(), &out[0], out.size() * sizeof(wchar_t));
    out.resize(bytes / sizeof(wchar_t));
    benchmark::DoNotOptimize(out);
  }
  iconv_close(cd);
  Throughput(state, input->utf8.size());
}
// The same through the buffer transcoders, into a string of the worst-case
// size cut to the output.
static_assert(sizeof(wchar_t) == sizeof(FXUTF::UTF32), "the FXUTF rows take wchar_t as UTF-32");
void ToWstringFxutf(benchmark::State& state, const TInput* input) {
  for (auto _ : state) {
    std::wstring out(input->utf8.size(), L'\0');
    const auto* s = reinterpret_cast<const FXUTF::UTF8*>(input->utf8.data());
    auto* begin = reinterpret_cast<FXUTF::UTF32*>(&out[0]);
    FXUTF::UTF32* t = begin;
    FXUTF::ConvertUTF8ToUTF32(&s, s + input->utf8.size(), &t, t + out.size(), FXUTF::lenientConversion);
    out.resize(static_cast<std::size_t>(t - begin));
    benchmark::DoNotOptimize(out);
  }
  Throughput(state, input->utf8.size());
}
void ToStringFxutf(benchmark::State& state, const TInput* input) {
  const std::wstring wide = FXString::ToWstring(input->utf8);
  for (auto _ : state) {
    std::string out(wide.size() * 4, '\0');
    const auto* s = reinterpret_cast<const FXUTF::UTF32*>(wide.data());
    auto* begin = reinterpret_cast<FXUTF::UTF8*>(&out[0]);
    FXUTF::UTF8* t = begin;
    FXUTF::ConvertUTF32ToUTF8(&s, s + wide.size(), &t, t + out.size(), FXUTF::lenientConversion);
    out.resize(static_cast<std::size_t>(t - begin));
    benchmark::DoNotOptimize(out);
  }
  Throughput(state, input->utf8.size());
}

void ToStringOurs(benchmark::State& state, const TInput* input) {
  const std::wstring wide = FXString::ToWstring(input->utf8);
  for (auto _ : state) benchmark::DoNotOptimize(FXString::ToString(wide));
  Throughput(state, input->utf8.size());
}
void ToStringIconv(benchmark::State& state, const TInput* input) {
  const std::wstring wide = FXString::ToWstring(input->utf8);
  iconv_t cd = iconv_open("UTF-8", "WCHAR_T");
  for (auto _ : state) {
    std::string out(wide.size() * 4, '\0');
    out.resize(Iconv(cd, wide.data(), wide.size() * sizeof(wchar_t), &out[0], out.size()));
    benchmark::DoNotOptimize(out);
  }
  iconv_close(cd);
  Throughput(state, input->utf8.size());
}

// 1 MiB of comma-separated words, the last one the needle of the search.
const std::string& Words() {
  static const std::string text = [] {
    const char* words[] = {"backup", "restore", "volume", "agent", "Journal", "filter", "path", "snapshot", ""};
    std::string t;
    for (std::size_t i = 0; t.size() < kMiB; ++i) {
      t += words[i % 9];
      t += ',';
    }
    return t + "jOURNAL sNAPSHOT";
  }();
  return text;
}

void SplitOurs(benchmark::State& state) {
  std::vector<std::string> out;
  for (auto _ : state) {
    FXString::Split(Words(), ",", out);
    benchmark::DoNotOptimize(out.data());
  }
  Throughput(state, Words().size());
}
void SplitAbsl(benchmark::State& state) {
  std::vector<std::string> out;
  for (auto _ : state) {
    out = absl::StrSplit(Words(), ',');
    benchmark::DoNotOptimize(out.data());
  }
  Throughput(state, Words().size());
}

const std::vector<std::string>& Parts() {
  static const std::vector<std::string> parts = absl::StrSplit(Words(), ',');
  return parts;
}
void JoinOurs(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(FXString::Join(Parts(), ","));
  Throughput(state, Words().size());
}
void JoinAbsl(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(absl::StrJoin(Parts(), ","));
  Throughput(state, Words().size());
}

void FindNoCaseOurs(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(FXString::FindString(Words().c_str(), "Journal Snapshot", true));
  Throughput(state, Words().size());
}
void FindNoCaseStrcasestr(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(strcasestr(Words().c_str(), "Journal Snapshot"));
  Throughput(state, Words().size());
}

const int kRegistered = [] {
  for (const TInput& input : Inputs()) {
    const std::string arg = std::string("/") + input.name;
    benchmark::RegisterBenchmark(("Utf8ToUtf16/ours" + arg).c_str(), ToUtf16Ours, &input);
    benchmark::RegisterBenchmark(("Utf8ToUtf16/iconv" + arg).c_str(), ToUtf16Iconv, &input);
    benchmark::RegisterBenchmark(("Utf8ToUtf16/naive" + arg).c_str(), ToUtf16Naive, &input);
    benchmark::RegisterBenchmark(("Utf16ToUtf8/ours" + arg).c_str(), ToUtf8Ours, &input);
    benchmark::RegisterBenchmark(("Utf16ToUtf8/iconv" + arg).c_str(), ToUtf8Iconv, &input);
    benchmark::RegisterBenchmark(("Utf16ToUtf8/naive" + arg).c_str(), ToUtf8Naive, &input);
    benchmark::RegisterBenchmark(("ToWstring/ours" + arg).c_str(), ToWstringOurs, &input);
    benchmark::RegisterBenchmark(("ToWstring/iconv" + arg).c_str(), ToWstringIconv, &input);
    benchmark::RegisterBenchmark(("ToWstring/FXUTF" + arg).c_str(), ToWstringFxutf, &input);
    benchmark::RegisterBenchmark(("ToString/ours" + arg).c_str(), ToStringOurs, &input);
    benchmark::RegisterBenchmark(("ToString/iconv" + arg).c_str(), ToStringIconv, &input);
    benchmark::RegisterBenchmark(("ToString/FXUTF" + arg).c_str(), ToStringFxutf, &input);
  }
  benchmark::RegisterBenchmark("Split/ours", SplitOurs);
  benchmark::RegisterBenchmark("Split/absl::StrSplit", SplitAbsl);
  benchmark::RegisterBenchmark("Join/ours", JoinOurs);
  benchmark::RegisterBenchmark("Join/absl::StrJoin", JoinAbsl);
  benchmark::RegisterBenchmark("FindNoCase/ours", FindNoCaseOurs);
  benchmark::RegisterBenchmark("FindNoCase/strcasestr", FindNoCaseStrcasestr);
  return 0;
}();

}  // namespace
