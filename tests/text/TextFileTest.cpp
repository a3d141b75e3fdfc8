#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"
#include "support/FileBytes.h"
#include "platform/ZuTypes.h"
#include "text/StringConvert.h"
#include "text/TextFile.h"

namespace {

std::string TempPath(const std::string& name) { return FXPlatform::TempDirectory() + "zu_textfile_" + name; }

using ZuTest::ReadBytes;
using ZuTest::WriteBytes;

std::string Utf8Of(const std::string& text) { return text; }
std::string Utf8Of(const std::wstring& text) { return FXString::ToString(text); }

// Every line of the file with the result that ended it, narrow or wide
// (wide lines shown as UTF-8 for the comparisons), until -1 or -2.
template <class Char>
std::vector<std::pair<int, std::string>> Lines(CTextFile& file) {
  std::vector<std::pair<int, std::string>> out;
  Char* line = nullptr;
  for (int rc = 0; rc == 0;) {
    int length = -7;
    rc = file.ReadLine(&length, &line);
    if (rc == -2) {
      out.emplace_back(rc, "");
      break;
    }
    EXPECT_EQ(std::char_traits<Char>::length(line), static_cast<std::size_t>(length));
    out.emplace_back(rc, Utf8Of(std::basic_string<Char>(line, static_cast<std::size_t>(length))));
  }
  CTextFile::FreeLineBuffer(line);
  return out;
}

std::vector<std::pair<int, std::string>> ReadAll(const std::string& bytes, int flags, bool wide, int bufferSize = 0,
                                                 int* encoding = nullptr) {
  const std::string path = TempPath("read.txt");
  WriteBytes(path, bytes);
  CTextFile file;
  file.SetCodePage(65001);
  if (file.Open(path, CTextFile::kModeRead, flags, bufferSize) != 0) return {{-2, "open"}};
  if (encoding != nullptr) *encoding = file.GetEncoding();
  return wide ? Lines<wchar_t>(file) : Lines<char>(file);
}

typedef std::vector<std::pair<int, std::string>> LineList;

TEST(TextFile, DetectsTheEncodingFromTheMark) {
  struct {
    std::string bytes;
    int encoding;
    LineList lines;
    LineList narrow;  // when it differs: ANSI bytes reach narrow lines as they are
  } const cases[] = {
      {"", 0, {{-1, ""}}, {}},
      {"\xFF\xFE", 2, {{-1, ""}}, {}},
      {std::string("\xFF\xFE" "a\0\n\0b\0", 8), 2, {{0, "a"}, {-1, "b"}}, {}},
      {std::string("\xFE\xFF\0a\0\r\0\n\0b", 10), 3, {{0, "a"}, {-1, "b"}}, {}},
      {"\xEF\xBB\xBF" "a\r\nb", 4, {{0, "a"}, {-1, "b"}}, {}},
      {"\xFF" "A\n", 1, {{0, "\xEF\xBF\xBD" "A"}, {-1, ""}}, {{0, "\xFF" "A"}, {-1, ""}}},  // the FF is text
      {"\xEF\xBB" "A", 1, {{-1, "\xEF\xBF\xBD" "A"}}, {{-1, "\xEF\xBB" "A"}}},
      {"\xFE", 1, {{-1, "\xEF\xBF\xBD"}}, {{-1, "\xFE"}}},
      {"plain\n\n", 1, {{0, "plain"}, {0, ""}, {-1, ""}}, {}},
  };
  for (const auto& c : cases) {
    for (bool wide : {false, true}) {
      SCOPED_TRACE(testing::Message() << "bytes " << testing::PrintToString(c.bytes) << (wide ? " wide" : " narrow"));
      int encoding = -1;
      EXPECT_EQ(wide || c.narrow.empty() ? c.lines : c.narrow, ReadAll(c.bytes, 0, wide, 0, &encoding));
      EXPECT_EQ(c.encoding, encoding);
    }
  }
}

TEST(TextFile, GivenEncodingSkipsItsMarkUnlessTold) {
  const std::string utf8 = "\xEF\xBB\xBF" "x";
  EXPECT_EQ((LineList{{-1, "x"}}), ReadAll(utf8, CTextFile::kUtf8, false));
  EXPECT_EQ((LineList{{-1, "\xEF\xBB\xBF" "x"}}), ReadAll(utf8, CTextFile::kUtf8 | CTextFile::kNoByteOrderMark, false));
  const std::string le = std::string("\xFF\xFEx\0", 4);
  EXPECT_EQ((LineList{{-1, "x"}}), ReadAll(le, CTextFile::kUtf16LE, true));
  EXPECT_EQ((LineList{{-1, "\xEF\xBB\xBFx"}}), ReadAll(le, CTextFile::kUtf16LE | CTextFile::kNoByteOrderMark, true));
  // A file without a mark read as the given encoding from its start; the
  // last odd byte of a UTF-16 file belongs to no unit.
  EXPECT_EQ((LineList{{0, "a"}, {-1, "b"}}), ReadAll(std::string("\0a\0\n\0b\0", 7), CTextFile::kUtf16BE, false));
  // ANSI files are never looked at for a mark.
  EXPECT_EQ((LineList{{-1, "\xEF\xBB\xBF" "x"}}), ReadAll(utf8, CTextFile::kAnsi, false));
}

TEST(TextFile, CarriageReturnsAcrossBufferLoads) {
  // With a 2-byte buffer "a\r" and "\nb" are separate loads: the CR stays.
  EXPECT_EQ((LineList{{0, "a\r"}, {-1, "b"}}), ReadAll("a\r\nb", 1, false, 2));
  EXPECT_EQ((LineList{{0, "a"}, {-1, "b"}}), ReadAll("a\r\nb", 1, false, 3));
  EXPECT_EQ((LineList{{0, "x\ry"}, {0, "\r"}, {-1, ""}}), ReadAll("x\ry\n\r\r\n", 1, false));
  // The same in UTF-16, where the unit is two bytes.
  const std::string le = std::string("\xFF\xFE" "a\0\r\0\n\0b\0", 10);
  EXPECT_EQ((LineList{{0, "a\r"}, {-1, "b"}}), ReadAll(le, 0, true, 4));
  EXPECT_EQ((LineList{{0, "a"}, {-1, "b"}}), ReadAll(le, 0, true, 6));

  // Text without CR reads the same with every buffer size, odd ones included.
  const std::string text = "\xEF\xBB\xBF" "first line\n\nthird \xC3\xA9\xE6\x96\x87\xF0\x9F\x98\x80 line\nlast";
  const LineList expected{{0, "first line"}, {0, ""}, {0, "third \xC3\xA9\xE6\x96\x87\xF0\x9F\x98\x80 line"}, {-1, "last"}};
  for (int size = 1; size < 40; ++size)
    for (bool wide : {false, true}) ASSERT_EQ(expected, ReadAll(text, 0, wide, size)) << size;

  WriteBytes(TempPath("chars.txt"), "a\r\nb\rc");
  CTextFile file;
  ASSERT_EQ(0, file.Open(TempPath("chars.txt"), 1, 1, 2));
  std::string chars;
  for (int c; (c = file.ReadChar()) >= 0;) chars += static_cast<char>(c);
  EXPECT_EQ("a\nbc", chars);
  EXPECT_EQ(-1, file.ReadChar());
  file.Close();
  WriteBytes(TempPath("chars.txt"), le);
  ASSERT_EQ(0, file.Open(TempPath("chars.txt"), 1, 0));
  std::vector<int> units;
  for (int c; (c = file.ReadChar()) >= 0;) units.push_back(c);
  EXPECT_EQ((std::vector<int>{'a', '\n', 'b'}), units);
}

TEST(TextFile, LineBufferLayout) {
  const std::string path = TempPath("long.txt");
  WriteBytes(path, std::string(3000, 'x') + "\nshort\n");
  CTextFile file;
  ASSERT_EQ(0, file.Open(path, 1, 1, 100));
  char* line = nullptr;
  int length = 0;
  ASSERT_EQ(0, file.ReadLine(&length, &line));
  const char* header = line - 12;
  std::uint32_t allocated, used;
  std::memcpy(&allocated, header + 4, 4);
  std::memcpy(&used, header + 8, 4);
  EXPECT_EQ(0, std::memcmp(header, "BDSG", 4));
  EXPECT_EQ(3072u, allocated);
  EXPECT_EQ(3001u, used);
  EXPECT_EQ(3000, length);
  char* const before = line;
  ASSERT_EQ(0, file.ReadLine(&length, &line));
  EXPECT_EQ(before, line);  // reused, not grown
  std::memcpy(&used, line - 4, 4);
  EXPECT_EQ(6u, used);
  EXPECT_STREQ("short", line);
  CTextFile::FreeLineBuffer(line);
}

TEST(TextFile, InvalidInputConvertsWithoutFailing) {
  // A lone surrogate: kept in a wide line, U+FFFD in a UTF-8 narrow one.
  const std::string lone = std::string("\xFF\xFE\x00\xD8" "a\0", 6);
  EXPECT_EQ((LineList{{-1, "\xEF\xBF\xBD" "a"}}), ReadAll(lone, 0, false));
  {
    CTextFile file;
    ASSERT_EQ(0, file.Open(TempPath("read.txt"), 1, 0));
    wchar_t* line = nullptr;
    int length = 0;
    EXPECT_EQ(-1, file.ReadLine(&length, &line));
    ASSERT_EQ(2, length);
    EXPECT_EQ(0xD800, static_cast<int>(line[0]));
    CTextFile::FreeLineBuffer(line);
  }
  // Ill-formed UTF-8 becomes U+FFFD, narrow and wide.
  for (bool wide : {false, true})
    EXPECT_EQ((LineList{{-1, "\xEF\xBF\xBD(\xEF\xBF\xBD" "b\xEF\xBF\xBD"}}),
              ReadAll("\xEF\xBB\xBF\xC3(\xE6\x96" "b\xF0\x9F\x98", 0, wide));
}

// Narrow lines of a UTF-8 file pass unchanged exactly when well-formed,
// wherever the sequence falls within the 16-byte blocks of the check.
TEST(TextFile, WellFormedUtf8PassesIllFormedIsReplaced) {
  const std::string good[] = {"\xC3\xA9", "\xE6\x96\x87", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF"};
  const std::string bad[] = {"\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80",
                             "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80", "\xC3", "\xE6\x96", "\xFF",
                             "\xC3\xA9\xA9"};
  std::string text = "\xEF\xBB\xBF", expected;
  std::vector<std::pair<std::string, bool>> lines;
  for (std::size_t offset = 0; offset < 34; ++offset) {
    for (const std::string& g : good) lines.emplace_back(std::string(offset, 'a') + g + "z", true);
    for (const std::string& b : bad) {
      lines.emplace_back(std::string(offset, 'a') + b + "z", false);
      lines.emplace_back(std::string(offset, 'a') + b, false);  // at the end of the line
    }
  }
  for (const auto& line : lines) text += line.first + "\n";
  const LineList got = ReadAll(text, 0, false);
  ASSERT_EQ(lines.size() + 1, got.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    SCOPED_TRACE(testing::PrintToString(lines[i].first));
    EXPECT_EQ(lines[i].second, got[i].second == lines[i].first);
    EXPECT_EQ(FXString::ToString(FXString::ToWstring(got[i].second)), got[i].second);
  }
}

TEST(TextFile, CodePages) {
  struct {
    int codePage;
    std::string ansi;      // the bytes of an ANSI file
    std::wstring unicode;  // what they read as
  } const cases[] = {
      {1252, "caf\xE9 \x80", L"caf\u00e9 \u20ac"},
      {1251, "\xCF\xF0\xE8", L"\u041f\u0440\u0438"},
      {437, "\x82\xB0", L"\u00e9\u2591"},
      {932, "\x82\xA0\x8A\xBF", L"\u3042\u6f22"},
      {936, "\xD6\xD0", L"\u4e2d"},
      {949, "\xC7\xD1", L"\ud55c"},
      {950, "\xA4\xA4", L"\u4e2d"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.codePage);
    const std::string path = TempPath("cp.txt");
    WriteBytes(path, c.ansi);
    CTextFile file;
    file.SetCodePage(c.codePage);
    ASSERT_EQ(0, file.Open(path, 1, CTextFile::kAnsi));
    wchar_t* line = nullptr;
    int length = 0;
    EXPECT_EQ(-1, file.ReadLine(&length, &line));
    EXPECT_EQ(c.unicode, std::wstring(line, static_cast<std::size_t>(length)));
    CTextFile::FreeLineBuffer(line);

    // Written back as ANSI from wide text gives the bytes again.
    ASSERT_EQ(0, file.Open(path, 2, CTextFile::kAnsi));
    EXPECT_EQ(0, file.Write(c.unicode.c_str()));
    EXPECT_EQ(0, file.Close());
    EXPECT_EQ(c.ansi, ReadBytes(path));
  }
  // A character the code page lacks becomes the unknown character.
  const std::string path = TempPath("cp.txt");
  CTextFile file;
  file.SetCodePage(1252);
  file.SetUnknownChar("#");
  ASSERT_EQ(0, file.Open(path, 2, CTextFile::kAnsi));
  EXPECT_EQ(0, file.Write(L"a\u4e2db"));
  file.Close();
  EXPECT_EQ("a#b", ReadBytes(path));
  // Pass-through hands ANSI bytes to wide lines one by one.
  WriteBytes(path, "\xE9\x80");
  file.SetAnsiPassThru(true);
  EXPECT_TRUE(file.GetAnsiPassThru());
  ASSERT_EQ(0, file.Open(path, 1, CTextFile::kAnsi));
  wchar_t* line = nullptr;
  int length = 0;
  EXPECT_EQ(-1, file.ReadLine(&length, &line));
  EXPECT_EQ((std::wstring{wchar_t(0xE9), wchar_t(0x80)}), std::wstring(line, static_cast<std::size_t>(length)));
  CTextFile::FreeLineBuffer(line);
}

// Random lines of every plane written in each encoding read back the same,
// wide and narrow (UTF-8 code page), with the right mark.
TEST(TextFile, WriteReadRoundTrip) {
  std::mt19937 random(3);
  const char32_t pool[] = {'a', ' ', '\t', 0xE9, 0x416, 0x4E2D, 0xFFFD, 0x1F600, 0x10FFFF};
  std::vector<std::wstring> lines;
  for (int i = 0; i < 50; ++i) {
    std::u32string text;
    for (int n = static_cast<int>(random() % 30); n > 0; --n) text += pool[random() % (sizeof pool / sizeof *pool)];
    std::string utf8;
    for (char32_t c : text) {
      if (c < 0x80) utf8 += static_cast<char>(c);
      else if (c < 0x800) utf8 += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
      else if (c < 0x10000)
        utf8 += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
                 static_cast<char>(0x80 | (c & 0x3F))};
      else
        utf8 += {static_cast<char>(0xF0 | c >> 18), static_cast<char>(0x80 | (c >> 12 & 0x3F)),
                 static_cast<char>(0x80 | (c >> 6 & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
    }
    lines.push_back(FXString::ToWstring(utf8));
  }
  const char* marks[] = {"", "", "\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF"};
  for (int encoding : {2, 3, 4}) {
    SCOPED_TRACE(encoding);
    const std::string path = TempPath("roundtrip.txt");
    CTextFile file;
    file.SetCodePage(65001);
    ASSERT_EQ(0, file.Open(path, 2, encoding, 7));
    CTextFileLineWriter writer(file);
    for (std::size_t i = 0; i < lines.size(); ++i)
      ASSERT_EQ(0, i % 2 ? writer.WriteLine(lines[i]) : writer.WriteLine(FXString::ToString(lines[i])));
    ASSERT_EQ(0, file.Close());
    EXPECT_EQ(0, ReadBytes(path).compare(0, std::strlen(marks[encoding]), marks[encoding]));
    for (bool wide : {false, true}) {
      // One buffer load: a CR at the end of a load would stay in its line.
      ASSERT_EQ(0, file.Open(path, 1, 0, 1 << 20));
      EXPECT_EQ(encoding, file.GetEncoding());
      const LineList got = wide ? Lines<wchar_t>(file) : Lines<char>(file);
      ASSERT_EQ(lines.size() + 1, got.size());
      for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(FXString::ToString(lines[i]), got[i].second) << i;
    }
  }
}

TEST(TextFile, WritingModesAndMarks) {
  const std::string path = TempPath("modes.txt");
  CTextFile file;
  ASSERT_EQ(0, file.Open(path, 2, CTextFile::kUtf16LE));
  ASSERT_EQ(0, file.Close());
  EXPECT_EQ("", ReadBytes(path));  // no text, no mark
  ASSERT_EQ(0, file.Open(path, 2, CTextFile::kUtf16LE));
  int length = 0;
  EXPECT_EQ(0, file.FormatString(&length, L"%d-%d", 12, 345));
  EXPECT_EQ(6, length);
  long long size = -1, position = -1;
  EXPECT_EQ(0u, file.Flush() == 0 ? file.GetFileSize(size) : 1u);
  EXPECT_EQ(14, size);
  EXPECT_EQ(0u, file.GetFilePointer(position));
  EXPECT_EQ(14, position);
  ASSERT_EQ(0, file.Close());
  // Appending to a file with text: at its end, no second mark.
  ASSERT_EQ(0, file.Open(path, 3, CTextFile::kUtf16LE));
  EXPECT_EQ(0, file.Write("!"));
  ASSERT_EQ(0, file.Close());
  EXPECT_EQ(std::string("\xFF\xFE" "1\0" "2\0-\0" "3\0" "4\0" "5\0!\0", 16), ReadBytes(path));
  // Flag 0x200 leaves the mark out; encoding 0 writes ANSI.
  ASSERT_EQ(0, file.Open(path, 2, CTextFile::kUtf8 | CTextFile::kNoByteOrderMark));
  EXPECT_EQ(0, file.Write(L"x"));
  ASSERT_EQ(0, file.Close());
  EXPECT_EQ("x", ReadBytes(path));
  ASSERT_EQ(0, file.Open(path, 2, 0));
  EXPECT_EQ(CTextFile::kAnsi, file.GetEncoding());
  EXPECT_EQ(-1, file.ReadChar() == -2 ? -1 : 0);  // no reader while writing
  file.Close();
}

TEST(TextFile, FailuresAndNames) {
  CTextFile file;
  const std::string missing = TempPath("missing/none.txt");
  EXPECT_EQ(-2, file.Open(missing, 1, 0));
  const std::string text = CTextFile::GetLastErrorText();
  EXPECT_EQ(0u, text.find("Failed to open file [" + missing + "] - ")) << text;
  EXPECT_GT(text.size(), missing.size() + 26);
  int length = 5;
  char* line = nullptr;
  EXPECT_EQ(-2, file.ReadLine(&length, &line));
  EXPECT_EQ(-2, file.Write("x"));
  EXPECT_EQ(-2, file.Open(TempPath("bad.txt"), 2, 9));  // no such encoding

  // A UTF-8 name in a folder deep enough for the path to pass MAX_PATH.
  std::string folder = FXPlatform::TempDirectory() + "zu_textfile_long";
  for (int i = 0; i < 6; ++i) folder += std::string(1, FXPlatform::kPathSeparator) + std::string(45, char('a' + i));
  const std::string made = kZuIsWindows ? "\\\\?\\" + folder : folder;
  ASSERT_FALSE(FXPlatform::CreateDirectories(made).IsError());
  const std::string path = folder + FXPlatform::kPathSeparator + "\xC3\xA9\xE6\x96\x87.txt";
  ASSERT_GT(path.size(), 260u);
  ASSERT_EQ(0, file.Open(path, 2, CTextFile::kUtf8)) << CTextFile::GetLastErrorText();
  EXPECT_EQ(0, file.Write("deep"));
  ASSERT_EQ(0, file.Close());
  ASSERT_EQ(0, file.Open(path, 1, 0));
  EXPECT_EQ((LineList{{-1, "deep"}}), Lines<char>(file));
  file.Close();

  if (!kZuIsWindows) {
    // A read error: a folder opens for reading on POSIX, and reading fails.
    ASSERT_EQ(0, file.Open(folder, 1, CTextFile::kAnsi));
    EXPECT_EQ(-2, file.ReadLine(&length, &line));
    EXPECT_EQ(0, length);
    EXPECT_EQ(-2, file.ReadChar());
    EXPECT_EQ(-2, file.Open(folder, 1, 0));  // the failure comes while looking for a mark
  }
  CTextFile::FreeLineBuffer(line);
}

TEST(TextFile, LineOf64MiB) {
  const std::string path = TempPath("huge.txt");
  WriteBytes(path, std::string(64u << 20, 'q') + "\nz");
  CTextFile file;
  ASSERT_EQ(0, file.Open(path, 1, CTextFile::kAnsi, 1 << 16));
  char* line = nullptr;
  int length = 0;
  ASSERT_EQ(0, file.ReadLine(&length, &line));
  EXPECT_EQ(64 << 20, length);
  EXPECT_EQ('q', line[length - 1]);
  EXPECT_EQ(-1, file.ReadLine(&length, &line));
  EXPECT_STREQ("z", line);
  CTextFile::FreeLineBuffer(line);
  file.Close();
  FXPlatform::DeleteFileAt(path);
}

}  // namespace
