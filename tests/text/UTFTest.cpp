#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "platform/DynamicLibrary.h"
#include "text/StringConvert.h"
#include "text/UTF.h"

namespace {

using FXUTF::UTF16;
using FXUTF::UTF32;
using FXUTF::UTF8;

// The code points of a wide string, whatever the width of wchar_t.
std::u32string CodePoints(const std::wstring& wide) {
  std::u32string out;
  for (std::size_t i = 0; i < wide.size(); ++i) {
    auto c = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(wide[i]));
    if (sizeof(wchar_t) == 2 && c >= 0xD800 && c < 0xDC00 && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 &&
        wide[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(wide[++i]) - 0xDC00);
    out += c;
  }
  return out;
}

std::wstring Wide(const std::u32string& points) {
  std::wstring out;
  for (char32_t c : points) {
    if (sizeof(wchar_t) == 2 && c > 0xFFFF) {
      out += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      out += static_cast<wchar_t>(c);
    }
  }
  return out;
}

struct TGolden {
  const char* name;
  std::string utf8;
  std::u32string points;  // what ToWstring gives
  bool valid;             // and ToString gives the input back
};

// Runs unchanged on both platforms: the same bytes give the same code
// points whether wchar_t holds UTF-16 or UTF-32.
const std::vector<TGolden>& Golden() {
  static const std::vector<TGolden> table = {
      {"empty", "", U"", true},
      {"ascii", "Az~\x7F", U"Az~\x7F", true},
      {"two bytes", "\xC2\x80\xDF\xBF", U"\u0080\u07FF", true},
      {"three bytes", "\xE0\xA0\x80\xEF\xBF\xBF", U"\u0800\uFFFF", true},
      {"four bytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", U"\U00010000\U0010FFFF", true},
      {"mixed", "K\xC3\xB6ln \xE6\x9D\xB1\xE4\xBA\xAC \xF0\x9F\x98\x80", U"K\u00F6ln \u6771\u4EAC \U0001F600", true},
      {"stops at NUL", std::string("a\0b", 3), U"a", false},
      {"lone continuation", "a\x80z", U"a\uFFFDz", false},
      {"overlong two", "\xC0\x80", U"\uFFFD\uFFFD", false},
      {"overlong three", "\xE0\x80\x80", U"\uFFFD\uFFFD\uFFFD", false},
      {"surrogate", "\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD", false},
      {"above U+10FFFF", "\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD", false},
      {"F5 and FF", "\xF5\xFF", U"\uFFFD\uFFFD", false},
      {"truncated at end", "x\xF0\x9F\x98", U"x\uFFFD", false},
      {"truncated before ASCII", "\xE6\x9D" "A\xC3", U"\uFFFD" "A\uFFFD", false},
      {"bad third byte", "\xF0\x9F\x41", U"\uFFFDA", false},
      {"three-byte run", "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD\xE6\x9D\xB1", U"\u6771\u4EAC\u90FD\u6771", true},
      {"surrogate inside a run", "\xE6\x9D\xB1\xE4\xBA\xAC\xED\xA0\x80\xE9\x83\xBD",
       U"\u6771\u4EAC\uFFFD\uFFFD\uFFFD\u90FD", false},
  };
  return table;
}

TEST(StringConvert, GoldenVectors) {
  for (const TGolden& g : Golden()) {
    SCOPED_TRACE(g.name);
    const std::wstring wide = FXString::ToWstring(g.utf8);
    EXPECT_EQ(g.points, CodePoints(wide));
    EXPECT_EQ(wide, FXString::ToWstring(g.utf8.c_str()));
    EXPECT_EQ(wide, FXString::ToTstring(g.utf8));
    if (g.valid) {
      EXPECT_EQ(g.utf8, FXString::ToString(wide));
      EXPECT_EQ(g.utf8, FXString::ToString(Wide(g.points).c_str()));
    }
  }
}

TEST(StringConvert, LongTextsAndInvalidWideInput) {
  // Past the short-text path, with every kind of sequence at every offset.
  std::string text;
  for (int i = 0; i < 300; ++i) text += "ab\xC3\xA9\xE6\x9D\xB1\xF0\x9F\x98\x80" + std::string(i % 17, 'x');
  EXPECT_EQ(text, FXString::ToString(FXString::ToWstring(text)));
  std::string broken = text;
  broken[broken.size() / 2] = '\xFF';
  EXPECT_NE(std::string::npos, FXString::ToString(FXString::ToWstring(broken)).find("\xEF\xBF\xBD"));

  const std::wstring highAlone(1, static_cast<wchar_t>(0xD800));
  EXPECT_EQ("\xEF\xBF\xBD", FXString::ToString(highAlone));
  EXPECT_EQ("a\xEF\xBF\xBD" "b", FXString::ToString(L"a" + std::wstring(1, static_cast<wchar_t>(0xDC00)) + L"b"));
  EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD",
            FXString::ToString(std::wstring{static_cast<wchar_t>(0xDBFF), static_cast<wchar_t>(0xDBFF)}));
  if (sizeof(wchar_t) == 4) {
    EXPECT_EQ("\xEF\xBF\xBD", FXString::ToString(std::wstring(1, static_cast<wchar_t>(0x110000))));
    EXPECT_EQ("\xEF\xBF\xBD", FXString::ToString(std::wstring(1, static_cast<wchar_t>(-1))));
  }
  EXPECT_EQ("a", FXString::ToString(std::wstring(L"a\0b", 3)));
  // An unpaired surrogate inside a run of CJK characters, which are taken
  // two at a time.
  const std::wstring run{0x6771, 0x4EAC, static_cast<wchar_t>(0xD800), 0x90FD, 0x6771, 0x4EAC};
  EXPECT_EQ("\xE6\x9D\xB1\xE4\xBA\xAC\xEF\xBF\xBD\xE9\x83\xBD\xE6\x9D\xB1\xE4\xBA\xAC", FXString::ToString(run));

  EXPECT_EQ("", FXString::ToString(static_cast<const wchar_t*>(nullptr)));
  EXPECT_EQ(L"", FXString::ToWstring(static_cast<const char*>(nullptr)));
  EXPECT_EQ("", FXString::ToString(static_cast<const char*>(nullptr)));
  EXPECT_EQ(L"", FXString::ToWstring(static_cast<const wchar_t*>(nullptr)));
  EXPECT_EQ("\xFF", FXString::ToString(std::string("\xFF"), 1252));  // copies, whatever the code page
  EXPECT_EQ(L"x", FXString::ToWstring(std::wstring(L"x"), 65001));
}

// The conversion agrees with the system's on valid text. Windows only: the
// functions are looked up at run time, so the test needs no platform code.
TEST(StringConvert, AgreesWithTheWindowsConverter) {
  if (!kZuIsWindows) GTEST_SKIP() << "Windows only";
  typedef int (*ToWide)(unsigned int, DWORD, const char*, int, wchar_t*, int);
  typedef int (*ToNarrow)(unsigned int, DWORD, const wchar_t*, int, char*, int, const char*, int*);
  FXPlatform::CDynamicLibrary kernel;
  ASSERT_FALSE(kernel.Load(FXPlatform::SharedLibraryFileName("kernel32")).IsError());
  const auto toWide = reinterpret_cast<ToWide>(kernel.Symbol("MultiByteToWideChar"));
  const auto toNarrow = reinterpret_cast<ToNarrow>(kernel.Symbol("WideCharToMultiByte"));
  ASSERT_TRUE(toWide != nullptr && toNarrow != nullptr);
  const unsigned int kUtf8 = 65001;
  for (const TGolden& g : Golden()) {
    if (!g.valid || g.utf8.empty()) continue;
    SCOPED_TRACE(g.name);
    std::wstring wide(g.utf8.size() + 1, L'\0');
    const int n = toWide(kUtf8, 0, g.utf8.data(), static_cast<int>(g.utf8.size()), &wide[0],
                         static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(n));
    EXPECT_EQ(wide, FXString::ToWstring(g.utf8));
    std::string narrow(wide.size() * 3 + 1, '\0');
    const int m = toNarrow(kUtf8, 0, wide.data(), static_cast<int>(wide.size()), &narrow[0],
                           static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(m));
    EXPECT_EQ(narrow, FXString::ToString(wide));
  }
}

DWORD Win32Code(const CZuError& r) { return FXErrorUtil::GetWin32(r); }
bool Says(const CZuError& r, const std::string& text) { return r.AsString().find(text) != std::string::npos; }

std::vector<UTF8> Bytes(const std::string& s) { return std::vector<UTF8>(s.begin(), s.end()); }

// The Unicode boundary values through every converter, both modes.
TEST(FXUTF, BoundaryValuesRoundTrip) {
  const std::vector<UTF32> points = {0x0, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
  const std::string utf8("\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xEF\xBF\xBF"
                         "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
                         29);
  const std::vector<UTF16> utf16 = {0x0,    0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                    0xE000, 0xFFFD, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF};
  for (const auto flags : {FXUTF::strictConversion, FXUTF::lenientConversion}) {
    const std::vector<UTF8> bytes = Bytes(utf8);
    UTF16 u16[32];
    UTF32 u32[32];
    UTF8 u8[64];

    const UTF8* s8 = bytes.data();
    UTF16* t16 = u16;
    ASSERT_FALSE(FXUTF::ConvertUTF8ToUTF16(&s8, s8 + bytes.size(), &t16, u16 + 32, flags).IsError());
    EXPECT_EQ(bytes.data() + bytes.size(), s8);
    EXPECT_EQ(utf16, std::vector<UTF16>(u16, t16));

    const UTF16* s16 = u16;
    UTF32* t32 = u32;
    ASSERT_FALSE(FXUTF::ConvertUTF16ToUTF32(&s16, t16, &t32, u32 + 32, flags).IsError());
    EXPECT_EQ(points, std::vector<UTF32>(u32, t32));

    const UTF32* s32 = u32;
    UTF8* t8 = u8;
    ASSERT_FALSE(FXUTF::ConvertUTF32ToUTF8(&s32, t32, &t8, u8 + 64, flags).IsError());
    EXPECT_EQ(bytes, std::vector<UTF8>(u8, t8));

    s8 = bytes.data();
    UTF32* w32 = u32;
    ASSERT_FALSE(FXUTF::ConvertUTF8ToUTF32(&s8, s8 + bytes.size(), &w32, u32 + 32, flags).IsError());
    EXPECT_EQ(points, std::vector<UTF32>(u32, w32));

    s32 = u32;
    UTF16* w16 = u16;
    ASSERT_FALSE(FXUTF::ConvertUTF32ToUTF16(&s32, w32, &w16, u16 + 32, flags).IsError());
    EXPECT_EQ(utf16, std::vector<UTF16>(u16, w16));

    s16 = u16;
    UTF8* w8 = u8;
    ASSERT_FALSE(FXUTF::ConvertUTF16ToUTF8(&s16, w16, &w8, u8 + 64, flags).IsError());
    EXPECT_EQ(bytes, std::vector<UTF8>(u8, w8));

    UTF16 copy16[32];
    s16 = u16;
    UTF16* c16 = copy16;
    ASSERT_FALSE(FXUTF::CopyUTF16ToUTF16(&s16, w16, &c16, copy16 + 32, flags).IsError());
    EXPECT_EQ(utf16, std::vector<UTF16>(copy16, c16));
    UTF32 copy32[32];
    s32 = u32;
    UTF32* c32 = copy32;
    ASSERT_FALSE(FXUTF::CopyUTF32ToUTF32(&s32, w32, &c32, copy32 + 32, flags).IsError());
    EXPECT_EQ(points, std::vector<UTF32>(copy32, c32));
  }
}

TEST(FXUTF, SurrogatesAndOutOfRangeByMode) {
  // Unpaired UTF-16 surrogates: strict stops at them, lenient writes U+FFFD.
  const UTF16 lone[] = {0x41, 0xDC00, 0x42, 0xD800, 0x43};
  UTF8 out[32];
  const UTF16* s = lone;
  UTF8* t = out;
  CZuError r = FXUTF::ConvertUTF16ToUTF8(&s, lone + 5, &t, out + 32, FXUTF::strictConversion);
  EXPECT_EQ(DWORD(ERROR_ILLEGAL_CHARACTER), Win32Code(r));
  EXPECT_TRUE(Says(r, "FXUTF::ConvertUTF16ToUTF8"));
  EXPECT_TRUE(Says(r, "Illegal character encountered; strict conversion failed, character=0xDC00"));
  EXPECT_EQ(lone + 1, s);
  EXPECT_EQ(out + 1, t);
  s = lone;
  t = out;
  ASSERT_FALSE(FXUTF::ConvertUTF16ToUTF8(&s, lone + 5, &t, out + 32, FXUTF::lenientConversion).IsError());
  EXPECT_EQ("A\xEF\xBF\xBD" "B\xEF\xBF\xBD" "C", std::string(out, t));

  // ... also inside a run of CJK characters, which are taken two at a time.
  const UTF16 run[] = {0x6771, 0x4EAC, 0x90FD, 0xDC00, 0x6771};
  s = run;
  t = out;
  r = FXUTF::ConvertUTF16ToUTF8(&s, run + 5, &t, out + 32, FXUTF::strictConversion);
  EXPECT_TRUE(Says(r, "character=0xDC00"));
  EXPECT_EQ(run + 3, s);
  EXPECT_EQ(out + 9, t);

  // UTF-32 surrogates and values above U+10FFFF.
  const UTF32 wide[] = {0x110000, 0xDFFF, 0xFFFFFFFF};
  UTF16 u16[8];
  const UTF32* s32 = wide;
  UTF16* t16 = u16;
  r = FXUTF::ConvertUTF32ToUTF16(&s32, wide + 3, &t16, u16 + 8, FXUTF::strictConversion);
  EXPECT_TRUE(Says(r, "character=0x110000"));
  EXPECT_EQ(wide, s32);
  UTF32 copy[4];
  UTF32* c32 = copy;
  s32 = wide + 1;
  r = FXUTF::CopyUTF32ToUTF32(&s32, wide + 3, &c32, copy + 4, FXUTF::strictConversion);
  EXPECT_TRUE(Says(r, "FXUTF::CopyUTF32ToUTF32"));
  EXPECT_TRUE(Says(r, "character=0xDFFF"));
  r = FXUTF::CopyUTF32ToUTF32(&s32, wide + 3, &c32, nullptr, FXUTF::strictConversion);
  EXPECT_EQ(DWORD(ERROR_INVALID_PARAMETER), Win32Code(r));  // a target without an end
  s32 = wide;
  t16 = u16;
  ASSERT_FALSE(FXUTF::ConvertUTF32ToUTF16(&s32, wide + 3, &t16, u16 + 8, FXUTF::lenientConversion).IsError());
  EXPECT_EQ((std::vector<UTF16>{0xFFFD, 0xFFFD, 0xFFFD}), std::vector<UTF16>(u16, t16));

  // An encoded surrogate passes IsLegalUTF8 and is then judged by mode.
  const std::vector<UTF8> encoded = Bytes("x\xED\xA0\x80y");
  const UTF8* s8 = encoded.data();
  UTF32 u32[8];
  UTF32* t32 = u32;
  r = FXUTF::ConvertUTF8ToUTF32(&s8, s8 + encoded.size(), &t32, u32 + 8, FXUTF::strictConversion);
  EXPECT_TRUE(Says(r, "character=0xD800"));
  EXPECT_EQ(encoded.data() + 1, s8);
  s8 = encoded.data();
  t32 = u32;
  ASSERT_FALSE(FXUTF::ConvertUTF8ToUTF32(&s8, s8 + encoded.size(), &t32, u32 + 8, FXUTF::lenientConversion).IsError());
  EXPECT_EQ((std::vector<UTF32>{'x', 0xFFFD, 'y'}), std::vector<UTF32>(u32, t32));
}

TEST(FXUTF, CursorsShowHowFarItGot) {
  // The source ends inside a sequence.
  const std::vector<UTF8> cut = Bytes("AB\xE2\x82");
  const UTF8* s8 = cut.data();
  UTF16 u16[8];
  UTF16* t16 = u16;
  CZuError r = FXUTF::ConvertUTF8ToUTF16(&s8, s8 + cut.size(), &t16, u16 + 8, FXUTF::lenientConversion);
  EXPECT_EQ(DWORD(ERROR_INSUFFICIENT_BUFFER), Win32Code(r));
  EXPECT_TRUE(Says(r, "Too few bytes in source, cannot convert"));
  EXPECT_EQ(cut.data() + 2, s8);
  EXPECT_EQ(u16 + 2, t16);

  // ... or after a high surrogate.
  const UTF16 high[] = {0x41, 0xD83D};
  const UTF16* s16 = high;
  UTF32 u32[4];
  UTF32* t32 = u32;
  r = FXUTF::ConvertUTF16ToUTF32(&s16, high + 2, &t32, u32 + 4, FXUTF::lenientConversion);
  EXPECT_EQ(DWORD(ERROR_INSUFFICIENT_BUFFER), Win32Code(r));
  EXPECT_EQ(high + 1, s16);

  // The target has no room: the source stops at the character that did
  // not fit, and nothing of it is written.
  const std::vector<UTF8> text = Bytes("AB\xE2\x82\xAC\xF0\x9F\x98\x80");
  s8 = text.data();
  t16 = u16;
  r = FXUTF::ConvertUTF8ToUTF16(&s8, s8 + text.size(), &t16, u16 + 4, FXUTF::strictConversion);
  EXPECT_EQ(DWORD(ERROR_BUFFER_OVERFLOW), Win32Code(r));
  EXPECT_TRUE(Says(r, "Insufficient target buffer size"));
  EXPECT_EQ(text.data() + 5, s8);  // the pair needs two units, one is left
  EXPECT_EQ(u16 + 3, t16);
  UTF8 small[3];
  const UTF16 euro[] = {0x41, 0x20AC};
  s16 = euro;
  UTF8* t8 = small;
  r = FXUTF::ConvertUTF16ToUTF8(&s16, euro + 2, &t8, small + 3, FXUTF::strictConversion);
  EXPECT_EQ(DWORD(ERROR_BUFFER_OVERFLOW), Win32Code(r));
  EXPECT_EQ(euro + 1, s16);
  EXPECT_EQ(small + 1, t8);
  // A long ASCII run into a short target stops exactly at its end.
  const std::vector<UTF8> ascii(100, 'a');
  s8 = ascii.data();
  t16 = u16;
  r = FXUTF::ConvertUTF8ToUTF16(&s8, s8 + ascii.size(), &t16, u16 + 8, FXUTF::strictConversion);
  EXPECT_EQ(DWORD(ERROR_BUFFER_OVERFLOW), Win32Code(r));
  EXPECT_EQ(ascii.data() + 8, s8);

  // Illegal UTF-8 fails in either mode, with IsLegalUTF8's message beneath.
  const std::vector<UTF8> overlong = Bytes("a\xC0\x80");
  s8 = overlong.data();
  t16 = u16;
  r = FXUTF::ConvertUTF8ToUTF16(&s8, s8 + overlong.size(), &t16, u16 + 8, FXUTF::lenientConversion);
  EXPECT_EQ(DWORD(ERROR_ILLEGAL_CHARACTER), Win32Code(r));
  EXPECT_TRUE(Says(r, "Invalid character (1), Character=0xC0, Length=2"));
  EXPECT_TRUE(Says(r, "FXUTF::ConvertUTF8ToUTF16"));
  EXPECT_TRUE(Says(r, "Illegal character encountered"));
  EXPECT_EQ(overlong.data() + 1, s8);

  // Null cursors, and an empty source.
  EXPECT_EQ(DWORD(ERROR_INVALID_PARAMETER),
            Win32Code(FXUTF::ConvertUTF8ToUTF16(nullptr, nullptr, &t16, u16 + 8, FXUTF::strictConversion)));
  const UTF8* none = nullptr;
  UTF16* noTarget = nullptr;
  EXPECT_FALSE(FXUTF::ConvertUTF8ToUTF16(&none, nullptr, &noTarget, nullptr, FXUTF::strictConversion).IsError());
}

// A small target makes the converter stop and go on at every possible
// place; the pieces must add up to the whole.
TEST(FXUTF, PiecewiseConversionAddsUpToTheWhole) {
  std::string text;
  for (int i = 0; i < 40; ++i) text += "ab\xC3\xA9\xE6\x9D\xB1\xF0\x9F\x98\x80" + std::string(i % 19, 'x');
  const std::vector<UTF8> bytes = Bytes(text);
  std::vector<UTF16> whole(bytes.size());
  const UTF8* s8 = bytes.data();
  UTF16* t16 = whole.data();
  ASSERT_FALSE(FXUTF::ConvertUTF8ToUTF16(&s8, s8 + bytes.size(), &t16, t16 + whole.size(), FXUTF::strictConversion).IsError());
  whole.resize(static_cast<std::size_t>(t16 - whole.data()));
  // Two units hold any character in UTF-16, four bytes in UTF-8.
  for (std::size_t room = 2; room <= 9; ++room) {
    SCOPED_TRACE(room);
    std::vector<UTF16> pieces;
    s8 = bytes.data();
    while (s8 < bytes.data() + bytes.size()) {
      UTF16 buffer[9];
      t16 = buffer;
      const CZuError r = FXUTF::ConvertUTF8ToUTF16(&s8, bytes.data() + bytes.size(), &t16, buffer + room,
                                                   FXUTF::strictConversion);
      ASSERT_TRUE(!r.IsError() || Win32Code(r) == ERROR_BUFFER_OVERFLOW);
      ASSERT_GT(t16, buffer);
      pieces.insert(pieces.end(), buffer, t16);
    }
    EXPECT_EQ(whole, pieces);
  }
  for (std::size_t room = 4; room <= 9; ++room) {
    SCOPED_TRACE(room);
    std::vector<UTF8> back;
    const UTF16* s16 = whole.data();
    while (s16 < whole.data() + whole.size()) {
      UTF8 buffer[9];
      UTF8* t8 = buffer;
      FXUTF::ConvertUTF16ToUTF8(&s16, whole.data() + whole.size(), &t8, buffer + room, FXUTF::strictConversion);
      ASSERT_GT(t8, buffer);
      back.insert(back.end(), buffer, t8);
    }
    EXPECT_EQ(bytes, back);
  }
}

CZuError ToUtf8(const UTF16** s, const UTF16* e, UTF8** t, UTF8* te, FXUTF::ConversionFlags flags) {
  return FXUTF::ConvertUTF16ToUTF8(s, e, t, te, flags);
}
CZuError ToUtf8(const UTF32** s, const UTF32* e, UTF8** t, UTF8* te, FXUTF::ConversionFlags flags) {
  return FXUTF::ConvertUTF32ToUTF8(s, e, t, te, flags);
}

// Runs of ASCII and characters of every length, with unpaired surrogates
// and (in UTF-32) values above U+10FFFF among them; never a NUL.
template <class Unit>
std::vector<Unit> RandomText(std::mt19937& random) {
  const auto in = [&random](std::uint32_t low, std::uint32_t high) {
    return std::uniform_int_distribution<std::uint32_t>(low, high)(random);
  };
  std::vector<Unit> units;
  const std::uint32_t pieces = in(1, 24);
  for (std::uint32_t i = 0; i < pieces; ++i) {
    switch (in(0, 6)) {
      case 0: units.insert(units.end(), in(1, 20), static_cast<Unit>(in(1, 0x7F))); break;
      case 1: units.push_back(static_cast<Unit>(in(0x80, 0x7FF))); break;
      case 2: units.push_back(static_cast<Unit>(in(0x800, 0xD7FF))); break;
      case 3: units.push_back(static_cast<Unit>(in(0xE000, 0xFFFF))); break;
      case 4: units.push_back(static_cast<Unit>(in(0xD800, 0xDFFF))); break;
      case 5:
        if (sizeof(Unit) == 4) {
          units.push_back(static_cast<Unit>(in(0x10000, 0x10FFFF)));
        } else {
          units.push_back(static_cast<Unit>(in(0xD800, 0xDBFF)));
          units.push_back(static_cast<Unit>(in(0xDC00, 0xDFFF)));
        }
        break;
      default: units.push_back(static_cast<Unit>(sizeof(Unit) == 4 ? in(0x110000, 0xFFFFFFFF) : in(0xDC00, 0xDFFF)));
    }
  }
  return units;
}

// The fast path reads blocks of units; random text puts every kind of
// character and fault at every place in them. A target of four bytes
// leaves it one unit at a time, so the whole conversion must match one
// taken piece by piece: output, cursors and error.
template <class Unit>
void ExpectBlocksMatchPieces() {
  std::mt19937 random(20261123);
  for (int round = 0; round < 2000; ++round) {
    const std::vector<Unit> text = RandomText<Unit>(random);
    const Unit* const end = text.data() + text.size();
    for (const FXUTF::ConversionFlags flags : {FXUTF::strictConversion, FXUTF::lenientConversion}) {
      std::vector<UTF8> whole(text.size() * 4);
      const Unit* s = text.data();
      UTF8* t = whole.data();
      const CZuError r = ToUtf8(&s, end, &t, whole.data() + whole.size(), flags);
      whole.resize(static_cast<std::size_t>(t - whole.data()));

      std::vector<UTF8> pieces;
      const Unit* p = text.data();
      CZuError last = CZuError::Success();
      while (p < end) {
        UTF8 buffer[4];
        UTF8* b = buffer;
        last = ToUtf8(&p, end, &b, buffer + 4, flags);
        pieces.insert(pieces.end(), buffer, b);
        if (last.IsError() && Win32Code(last) != ERROR_BUFFER_OVERFLOW) break;
      }
      ASSERT_EQ(pieces, whole) << "round " << round << ", flags " << flags;
      ASSERT_EQ(p, s) << "round " << round;
      ASSERT_EQ(Win32Code(last), Win32Code(r)) << "round " << round;
      // Lenient FXUTF still stops at a high surrogate that ends the text,
      // which ToString replaces.
      if (flags == FXUTF::lenientConversion && !r.IsError() && sizeof(Unit) == sizeof(wchar_t)) {
        const std::wstring wide(text.begin(), text.end());
        ASSERT_EQ(std::string(whole.begin(), whole.end()), FXString::ToString(wide)) << "round " << round;
      }
    }
  }
}

TEST(FXUTF, BlocksMatchOneCharacterAtATime) {
  ExpectBlocksMatchPieces<UTF16>();
  ExpectBlocksMatchPieces<UTF32>();
}

TEST(FXUTF, IsLegalUTF8NamesTheFault) {
  struct TCase {
    std::string bytes;
    const char* message;
  };
  const std::vector<TCase> cases = {
      {"\xF0\x90\x80\x41", "Invalid character (4), Character=0x41, Length=4"},
      {"\xE2\x82\x41", "Invalid character (3), Character=0x41, Length=3"},
      {"\xC3\xC0", "Invalid character (2), Character=0xC0, Length=2"},
      {"\xC3\x41", "Invalid character (2), Character=0x41, Length=2"},
      {"\xE0\x9F\x80", "Invalid character (2,0xE0), Character=0x9F, Length=3"},
      {"\xF0\x8F\x80\x80", "Invalid character (2,0xF0), Character=0x8F, Length=4"},
      {"\xF4\x90\x80\x80", "Invalid character (2,0xF4), Character=0x90, Length=4"},
      {"\xF4\x3A\x8A\xB7", "Invalid character (2), Character=0x3A, Length=4"},
      {"\xE0\x0A\x80", "Invalid character (2), Character=0xA, Length=3"},
      {"\x80", "Invalid character (1), Character=0x80, Length=1"},
      {"\xF5\x80\x80\x80", "Invalid character (1), Character=0xF5, Length=4"},
      {"\xF8\x88\x80\x80\x80", "Unrecognized sequence length, Length=5"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.message);
    const std::vector<UTF8> bytes = Bytes(c.bytes);
    const CZuError r = FXUTF::IsLegalUTF8(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_EQ(DWORD(ERROR_ILLEGAL_CHARACTER), Win32Code(r));
    EXPECT_TRUE(Says(r, c.message)) << r.AsString();
    EXPECT_TRUE(Says(r, "FXUTF::IsLegalUTF8"));
  }
  for (const std::string legal : {"\x41", "\xC2\x80", "\xE0\xA0\x80", "\xED\xA0\x80", "\xF4\x8F\xBF\xBF"}) {
    const std::vector<UTF8> bytes = Bytes(legal);
    EXPECT_FALSE(FXUTF::IsLegalUTF8(bytes.data(), static_cast<int>(bytes.size())).IsError());
  }
  EXPECT_TRUE(Says(FXUTF::IsLegalUTF8(nullptr, 0), "Unrecognized sequence length, Length=0"));
  EXPECT_EQ(DWORD(ERROR_INVALID_PARAMETER), Win32Code(FXUTF::IsLegalUTF8(nullptr, 2)));
}

}  // namespace
