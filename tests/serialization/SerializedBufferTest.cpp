#include <climits>
#include <cstdint>
#include <cstring>
#include <list>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SerializationTestSupport.h"
#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "platform/Sid.h"
#include "serialization/SerializedBuffer.h"

using namespace ZuSerialTest;

namespace {

std::string Z(const char* text) { return std::string(text) + std::string(1, '\0'); }

FXPlatform::CSidRecord Sid(const char* text) {
  FXPlatform::CSidRecord sid;
  EXPECT_FALSE(FXPlatform::StringToSid(text, std::strlen(text), sid).IsError()) << text;
  return sid;
}

std::vector<std::string> Load(const std::string& raw, CZuError* error = nullptr) {
  CRecorder recorder;
  const CZuError result = recorder.Load(raw.data(), raw.size());
  if (error != nullptr)
    *error = result;
  else
    EXPECT_FALSE(result.IsError()) << result.AsString();
  return recorder.tokens;
}

TEST(SerializedBuffer, EveryWriterGivesItsHeaderAndPayload) {
  GUID guid = {0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0x00, 0xDD, 0x01, 0x06, 0x62, 0xDA}};
  LUID luid;
  luid.HighPart = -1;
  luid.LowPart = 0x3E7;
  FILETIME time;
  time.dwHighDateTime = 0x01D6B6F5;
  time.dwLowDateTime = 0x12345678;
  FXPlatform::CSidRecord sid = Sid("S-1-5-32-544");
  const DWORD dword = 4000000000u;

  CSerializedBuffer b;
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 1, std::string("ab")).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 2, std::string()).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 3, static_cast<const char*>(nullptr)).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 4, std::list<std::string>{"x", "yz"}).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 5, std::wstring()).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 6, L"h\u00e9\U0001F600").IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 7, -5).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 8, 4294967295u).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 9, dword).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 10, -1LL).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 11, ULLONG_MAX).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 12, true).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 13, time).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 14, guid).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 15, luid).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 16, sid.Get()).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&b, 17, "\x00\xFF", 2).IsError());

  const std::string expected =
      Token("1.1.16.3.", Z("ab")) + Token("1.2.16.1.", Z("")) + Token("1.3.16.1.", Z("")) +
      Token("1.4.16.2.", Z("x")) + Token("1.4.16.3.", Z("yz")) + Token("1.5.17.2.", std::string(2, '\0')) +
      Token("1.6.17.10.", std::string("h\0\xE9\0\x3D\xD8\x00\xDE\0\0", 10)) + Token("1.7.32.3.", Z("-5")) +
      Token("1.8.33.11.", Z("4294967295")) + Token("1.9.33.11.", Z("4000000000")) + Token("1.10.34.3.", Z("-1")) +
      Token("1.11.35.21.", Z("18446744073709551615")) + Token("1.12.36.2.", Z("1")) +
      Token("1.13.37.19.", Z("132494402742670968")) +
      Token("1.14.39.39.", Z("{6B29FC40-CA47-1067-B31D-00DD010662DA}")) + Token("1.15.40.9.", Z("-1:0x3e7")) +
      Token("1.16.41.13.", Z("S-1-5-32-544")) + Token("1.17.1.2.", std::string("\x00\xFF", 2));
  EXPECT_EQ(expected, Bytes(b));

  // And every token reads back to its value.
  const std::vector<std::string> tokens = Load(Bytes(b));
  const std::vector<std::string> values = {
      "string:1:ab", "string:2:", "string:3:", "string:4:x", "string:4:yz", "wstring:5:", "wstring:6:68 e9 1f600",
      "i32:7:-5", "u32:8:4294967295", "u32:9:4000000000", "i64:10:-1", "u64:11:18446744073709551615",
      "bool:12:true", "filetime:13:01d6b6f5:12345678", "guid:14:{6B29FC40-CA47-1067-B31D-00DD010662DA}",
      "luid:15:-1:0x3e7", "sid:16:S-1-5-32-544", "bytes:17:00ff"};
  if (sizeof(wchar_t) == 2) {
    EXPECT_EQ("wstring:6:68 e9 d83d de00", tokens[6]);
    EXPECT_EQ(std::vector<std::string>(values.begin(), values.begin() + 6),
              std::vector<std::string>(tokens.begin(), tokens.begin() + 6));
  } else {
    EXPECT_EQ(values, tokens);
  }
}

TEST(SerializedBuffer, GrowsBySlackAndHandsItsBlockOver) {
  CSerializedBuffer buffer;
  EXPECT_EQ(nullptr, buffer.GetBuffer());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 1, "x", 1).IsError());  // "1.1.1.1." NUL x: 10 bytes
  EXPECT_EQ(10u, buffer.GetBufferSize());
  EXPECT_EQ(10u + CSerializedBuffer::m_stCbExtraAllocation, buffer.GetCapacity());
  const char* block = buffer.GetBuffer();
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 2, 7).IsError());
  EXPECT_EQ(block, buffer.GetBuffer());  // fitted into the slack
  const std::string bytes = Bytes(buffer);

  CSerializedBuffer taker(buffer);
  EXPECT_EQ(block, taker.GetBuffer());
  EXPECT_EQ(nullptr, buffer.GetBuffer());
  EXPECT_EQ(bytes.size(), buffer.GetBufferSize());  // the counts stay
  CSerializedBuffer assigned;
  ASSERT_FALSE(CSerializedBase::AddToken(&assigned, 3, true).IsError());
  assigned = taker;
  EXPECT_EQ(bytes, Bytes(assigned));
  EXPECT_EQ(nullptr, taker.GetBuffer());
  EXPECT_EQ(Encoded(bytes), assigned.GetBufferAsString());

  // A buffer whose block went elsewhere starts afresh.
  EXPECT_EQ("<~~>", buffer.GetBufferAsString());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 4, 5).IsError());
  EXPECT_EQ(Token("1.4.32.2.", Z("5")), Bytes(buffer));

  EXPECT_TRUE(FXErrorUtil::IsWin32(CSerializedBase::AddToken(nullptr, 1, 5), ERROR_INVALID_PARAMETER));
  const CZuError huge = CSerializedBase::AddToken(&buffer, 1, "x", SIZE_MAX - 4);
  EXPECT_TRUE(FXErrorUtil::IsWin32(huge, ERROR_OUTOFMEMORY)) << huge.AsString();
  EXPECT_EQ(Token("1.4.32.2.", Z("5")), Bytes(buffer));
}

TEST(SerializedBuffer, NumbersReadAsTheCRuntimeReadsThemAtTheTokensWidth) {
  struct TCase {
    unsigned type;
    const char* payload;
    const char* value;
  };
  const TCase cases[] = {
      {32, "0x1F", "i32:1:31"},           {32, "010", "i32:1:8"},
      {32, " \t-12z", "i32:1:-12"},       {32, "abc", "i32:1:0"},
      {32, "0x", "i32:1:0"},              {32, "2147483648", "i32:1:2147483647"},
      {32, "-2147483649", "i32:1:-2147483648"},
      {33, "-1", "u32:1:4294967295"},     {33, "4294967296", "u32:1:4294967295"},
      {33, "-4294967296", "u32:1:4294967295"},
      {34, "9223372036854775808", "i64:1:9223372036854775807"},
      {34, "-0x8000000000000000", "i64:1:-9223372036854775808"},
      {35, "-1", "u64:1:18446744073709551615"},
      {35, "99999999999999999999", "u64:1:18446744073709551615"},
      {36, "2", "bool:1:true"},           {36, "0", "bool:1:false"},
      {36, "x", "bool:1:false"},          {37, "4294967296", "filetime:1:00000001:00000000"},
  };
  for (const TCase& c : cases)
    EXPECT_EQ(std::vector<std::string>{c.value}, Load(Token(1, c.type, Z(c.payload)))) << c.type << " " << c.payload;

  // Payloads without their terminator, or with more zeros, read as well.
  EXPECT_EQ(std::vector<std::string>{"i32:1:42"}, Load(Token(1, 32, "42")));
  EXPECT_EQ(std::vector<std::string>{"string:1:ab"}, Load(Token(1, 16, "ab")));
  EXPECT_EQ(std::vector<std::string>{std::string("string:1:a\0", 11)}, Load(Token(1, 16, std::string("a\0\0", 3))));
  EXPECT_EQ(std::vector<std::string>{"wstring:1:61"}, Load(Token(1, 17, std::string("a\0\0", 3))));
  // An unpaired surrogate stays what it was.
  EXPECT_EQ(std::vector<std::string>{"wstring:1:d800 61"}, Load(Token(1, 17, std::string("\x00\xD8" "a\0", 4))));
  // Type 0: bytes for the plain character overload.
  EXPECT_EQ(std::vector<std::string>{"chars:9:6100"}, Load(Token(9, 0, std::string("a\0", 2))));
}

TEST(SerializedBuffer, IdentifierTextsReadBackOrFailTheToken) {
  EXPECT_EQ(std::vector<std::string>{"guid:1:{6B29FC40-CA47-1067-B31D-00DD010662DA}"},
            Load(Token(1, 39, Z("{6b29fc40-ca47-1067-b31d-00dd010662da}"))));
  EXPECT_EQ(std::vector<std::string>{"luid:1:2147483647:0xffffffff"},
            Load(Token(1, 40, Z("2147483647:0xFFFFFFFF"))));
  EXPECT_EQ(std::vector<std::string>{"luid:1:-2147483648:0x0"}, Load(Token(1, 40, Z("-2147483648:0x0"))));

  CaptureLog();
  const char* const bad[][2] = {
      {"39", "{6B29FC40-CA47-1067-B31D-00DD010662D}"}, {"39", "6B29FC40-CA47-1067-B31D-00DD010662DA"},
      {"39", "{6B29FC40+CA47-1067-B31D-00DD010662DA}"}, {"39", "{6B29FC40-CA47-1067-B31D-00DD010662DG}"},
      {"40", "0:3e7"}, {"40", "2147483648:0x1"}, {"40", ":0x1"}, {"40", "1:0x123456789"}, {"40", "1:0x"},
      {"41", "S-1-5-018"}, {"41", "SY"}, {"41", "s-1-5-18"}, {"41", "S-1-5-18-"},
  };
  for (const auto& c : bad) {
    CZuError error = CZuError::Success();
    const std::string raw = Token(1, 32, Z("1")) + Token(2, static_cast<unsigned>(std::stoul(c[0])), Z(c[1])) +
                            Token(3, 32, Z("3"));
    EXPECT_EQ(std::vector<std::string>{"i32:1:1"}, Load(raw, &error)) << c[1];
    const DWORD code = c[0][1] == '1' ? ERROR_INVALID_SID : ERROR_INVALID_DATA;
    EXPECT_TRUE(FXErrorUtil::IsWin32(error, code)) << c[1] << ": " << error.AsString();
    EXPECT_NE(std::string::npos, error.AsString().find("CSerializedBase::Load")) << error.AsString();
  }
  EXPECT_EQ(sizeof bad / sizeof bad[0], CountLogged("Error while loading token, Type=["));
}

TEST(SerializedBuffer, SidTextsAreCanonicalOnBothPlatforms) {
  for (const char* text : {"S-1-5-18", "S-1-5-32-544", "S-1-5-21-3623811015-3361044348-30300820-1013", "S-1-16-12288",
                           "S-1-1-0", "S-1-5-21-1-2-3-4-5-6-7-8-9-10-11-12-13-14"}) {
    FXPlatform::CSidRecord sid = Sid(text);
    std::string back;
    ASSERT_FALSE(FXPlatform::SidToString(sid.Get(), back).IsError()) << text;
    EXPECT_EQ(text, back);
  }
  EXPECT_EQ(8u + 2 * 4, Sid("S-1-5-32-544").Size());
  for (const char* text : {"", "S-1-", "S-1-5-", "S-1-5--1", "S-1-5-018", "s-1-5-18", "S-2-5-18", "BA", "SY",
                           " S-1-5-18", "S-1-5-18 ", "S-1-5-4294967296", "S-1-0x0000000000FF-1",
                           "S-1-5-21-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15"}) {
    FXPlatform::CSidRecord sid;
    const CZuError r = FXPlatform::StringToSid(text, std::strlen(text), sid);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_SID)) << "'" << text << "' " << r.AsString();
  }
  std::string text = "kept";
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPlatform::SidToString(nullptr, text), ERROR_INVALID_PARAMETER));
  FXPlatform::CSidRecord broken = Sid("S-1-5-18");
  static_cast<unsigned char*>(broken.Get())[0] = 2;  // revision 2 does not exist
  EXPECT_TRUE(FXErrorUtil::IsWin32(FXPlatform::SidToString(broken.Get(), text), ERROR_INVALID_SID));
  EXPECT_EQ("kept", text);
  CSerializedBuffer buffer;
  EXPECT_TRUE(FXErrorUtil::IsWin32(CSerializedBase::AddToken(&buffer, 1, broken.Get()), ERROR_INVALID_SID));
  EXPECT_EQ(0u, buffer.GetBufferSize());

  if (!kZuIsWindows) {
    // An authority beyond 32 bits prints in hexadecimal, as Windows prints it.
    FXPlatform::CSidRecord wide = Sid("S-1-0x123456789ABC-7");
    std::string back;
    ASSERT_FALSE(FXPlatform::SidToString(wide.Get(), back).IsError());
    EXPECT_EQ("S-1-0x123456789ABC-7", back);
  }
}

TEST(SerializedBuffer, DamagedStreamsEndWithAClearErrorOrSkipTheToken) {
  CaptureLog();
  const std::string one = Token(1, 32, Z("1"));
  const std::string two = Token(2, 32, Z("2"));
  struct TCase {
    std::string raw;
    HRESULT code;  // 0: loads
    const char* text;  // in the error, or else in the log
    std::vector<std::string> tokens;
  };
  const TCase cases[] = {
      {"", 0, nullptr, {}},
      {one + "1.2.32.2.", ERROR_INVALID_DATA, "Token header not terminated", {"i32:1:1"}},
      {one + Token("1.2.32", "2") + two, ERROR_INVALID_DATA, "Token header without length", {"i32:1:1"}},
      {one + Token("", "") + two, ERROR_INVALID_DATA, "Token header without length", {"i32:1:1"}},
      {one + Token("1.5.32.2", Z("5")) + two, 0, "Unexpected split size, size=[4], Token=[1.5.32.2]",
       {"i32:1:1", "i32:5:5", "i32:2:2"}},
      {one + Token("1.5.32.2.extra.", Z("5")) + two, 0, nullptr, {"i32:1:1", "i32:5:5", "i32:2:2"}},
      {one + Token("1.2.32.3.", Z("5")), ERROR_INVALID_DATA, "Token length exceeds the data", {"i32:1:1"}},
      {one + Token("1.2.1.18446744073709551615.", "x"), ERROR_INVALID_DATA, "Length=[18446744073709551615]",
       {"i32:1:1"}},
      {one + Token("1.2.1.99999999999999999999999.", "x"), ERROR_INVALID_DATA, "Token length exceeds", {"i32:1:1"}},
      {one + Token("1.2.1.-1.", "x"), ERROR_INVALID_DATA, "Token length exceeds", {"i32:1:1"}},
      {one + Token("2.7.32.2.", Z("7")) + two, 0, "Unknown version found in token identifier, version=[2]",
       {"i32:1:1", "i32:2:2"}},
      {one + Token("a.b.c.d.", "") + two, 0, "version=[0], Token=[a.b.c.d.]", {"i32:1:1", "i32:2:2"}},
      {one + Token("1.x.32.2.", Z("9")) + two, 0, nullptr, {"i32:1:1", "i32:0:9", "i32:2:2"}},
      {one + Token(8, 99, "new") + two, 0, "Unknown TokenType encountered, Type=[99], Id=[8], Length=[3]",
       {"i32:1:1", "i32:2:2"}},
      {one + Token("1.8.0x10.2.", Z("h")) + two, 0, nullptr, {"i32:1:1", "string:8:h", "i32:2:2"}},
  };
  for (const TCase& c : cases) {
    ClearLog();
    CZuError error = CZuError::Success();
    EXPECT_EQ(c.tokens, Load(c.raw, &error)) << c.raw;
    EXPECT_EQ(c.code == 0, !error) << c.raw << " " << error.AsString();
    if (c.code != 0) {
      EXPECT_TRUE(FXErrorUtil::IsWin32(error, c.code)) << error.AsString();
      if (c.text != nullptr) {
        EXPECT_NE(std::string::npos, error.AsString().find(c.text)) << error.AsString();
      }
    } else if (c.text != nullptr) {
      EXPECT_TRUE(Logged(c.text)) << c.text;
    }
  }
}

TEST(SerializedBuffer, UnknownIdsAreSkippedAndOtherFailuresEndTheLoad) {
  CaptureLog();
  // The base class accepts nothing: every token is an unknown id.
  CSerializedBase base;
  const std::string raw = Token(1, 32, Z("1")) + Token(2, 16, Z("x")) + Token(3, 41, Z("S-1-5-18"));
  EXPECT_FALSE(base.Load(raw.data(), raw.size()).IsError());
  EXPECT_EQ(3u, CountLogged("Unknown TokenId encountered"));
  EXPECT_TRUE(Logged("Unknown TokenId encountered, Type=[41], Id=[3], Length=[9]"));

  // A failure of another kind stops at its token.
  class CPicky : public CRecorder {
   public:
    using CRecorder::LoadToken;
    CZuError LoadToken(DWORD id, int value) override {
      if (value < 0) return FXErrorUtil::ErrorWin32(ZU_HERE("CPicky::LoadToken"), ERROR_INVALID_DATATYPE, "negative");
      return CRecorder::LoadToken(id, value);
    }
  } picky;
  const std::string stream = Token(1, 32, Z("1")) + Token(2, 32, Z("-2")) + Token(3, 32, Z("3"));
  ClearLog();
  const CZuError r = picky.Load(stream.data(), stream.size());
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_DATATYPE));
  EXPECT_NE(std::string::npos, r.AsString().find("CSerializedBase::Load")) << r.AsString();
  EXPECT_EQ(std::vector<std::string>{"i32:1:1"}, picky.tokens);
  EXPECT_TRUE(Logged("Error while loading token, Type=[32], Id=[2], Length=[3], error="));

  // Text that is not Ascii85 loads nothing.
  CRecorder recorder;
  const CZuError text = recorder.Load(std::string("<~abc"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(text, ERROR_INVALID_DATA)) << text.AsString();
  EXPECT_NE(std::string::npos, text.AsString().find("CSerializedBase::Load"));
  EXPECT_TRUE(recorder.tokens.empty());
  EXPECT_FALSE(recorder.Load(Encoded(stream)).IsError());
  EXPECT_EQ(3u, recorder.tokens.size());
}

TEST(SerializedBuffer, ManyTokensAndRandomGarbage) {
  CSerializedBuffer buffer;
  for (int i = 0; i < 100000; ++i) ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 1, i).IsError());
  CRecorder recorder;
  ASSERT_FALSE(recorder.Load(buffer.GetBufferAsString()).IsError());
  ASSERT_EQ(100000u, recorder.tokens.size());
  EXPECT_EQ("i32:1:99999", recorder.tokens.back());

  // Mutated copies of a valid stream: any answer but a crash; what loads
  // before the damage is what the stream held there.
  const std::string valid = Bytes(buffer).substr(0, 2000);
  std::mt19937 random(15);
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = valid;
    for (int n = 0; n < 1 + round % 4; ++n)
      damaged[random() % damaged.size()] = static_cast<char>(round % 3 == 0 ? '.' : random());
    CRecorder r;
    r.Load(damaged.data(), damaged.size());
  }
}

// An object that saves a few tokens, for the context.
class CPair : public CRecorder {
 public:
  CZuError Save(CSerializedBuffer* buffer) const override {
    CZuError r = AddToken(buffer, 1, std::string("first"));
    return r.IsError() ? r : AddToken(buffer, 2, 2u);
  }
};

TEST(SerializedBuffer, ContextCarriesTheTextOfAnObject) {
  CSerializedContext context;
  EXPECT_EQ("", context.AsSerialized());
  ASSERT_FALSE(context.Capture(CPair()).IsError());
  EXPECT_EQ(Encoded(Token(1, 16, Z("first")) + Token(2, 33, Z("2"))), context.AsSerialized());
  const CSerializedContext copy = context;
  CRecorder recorder;
  ASSERT_FALSE(copy.Restore(recorder).IsError());
  EXPECT_EQ((std::vector<std::string>{"string:1:first", "u32:2:2"}), recorder.tokens);

  const CZuError r = CSerializedContext("<~broken").Restore(recorder);
  EXPECT_TRUE(r.IsError());
  EXPECT_NE(std::string::npos, r.AsString().find("CSerializedContext::Restore"));

  // DWORD reaches the unsigned int overload on both platforms.
  CSerializedBase& base = recorder;
  recorder.tokens.clear();
  ASSERT_FALSE(base.LoadToken(4, static_cast<DWORD>(4000000000u)).IsError());
  EXPECT_EQ(std::vector<std::string>{"u32:4:4000000000"}, recorder.tokens);
}

}  // namespace
