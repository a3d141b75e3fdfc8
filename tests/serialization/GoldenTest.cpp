// Golden serialized texts, checked in: both builds must write these bags
// and streams byte for byte and read them back to the same values. Run with
// ZU_UPDATE_GOLDEN set to rewrite them after a deliberate format change.
#include <climits>
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SerializationTestSupport.h"
#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "platform/Sid.h"
#include "serialization/Bag.h"

using namespace ZuSerialTest;

namespace {

std::string Z(const char* text) { return std::string(text) + std::string(1, '\0'); }

const GUID kGuid = {0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0x00, 0xDD, 0x01, 0x06, 0x62, 0xDA}};

FILETIME Time() {
  FILETIME time;
  time.dwHighDateTime = 0x01DB3D8E;
  time.dwLowDateTime = 0x8D4C2A00;
  return time;
}

// Checks what a build writes against the golden text (or rewrites it).
void Compare(const std::string& name, const std::string& written) {
  if (UpdateGolden()) WriteGolden(name, written + "\n");
  const std::string golden = ReadGolden(name);
  ASSERT_FALSE(golden.empty()) << name << " missing under " << ZU_SERIALIZATION_GOLDEN_DIR;
  EXPECT_EQ(golden, written + "\n") << name;
}

std::string Golden(const std::string& name) {
  std::string text = ReadGolden(name);
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

CBag EveryType() {
  CBag bag;
  bag.Write("String", "p\xC3\xA4th\\x \"q\"");
  bag.Write("Empty", "");
  bag.Write("Wide", L"w\u00e9\u4e2d\U0001F600");
  bag.Write("Int", -123456);
  bag.Write("UInt", 4000000000u);
  bag.Write("ULong", 4000000001UL);
  bag.Write("Int64", -9000000000LL);
  bag.Write("UInt64", ULLONG_MAX);
  bag.Write("Bool", true);
  bag.WriteAny("FileTime", Time());
  bag.WriteAny("Guid", kGuid);
  return bag;
}

TEST(Golden, BagWithEveryValueType) {
  std::string text;
  ASSERT_FALSE(EveryType().GetSerializedData(text).IsError());
  Compare("bag_every_type.txt", text);

  CBag bag;
  const CZuError r = bag.LoadSerializedData(Golden("bag_every_type.txt"));
  ASSERT_FALSE(r.IsError()) << r.AsString();
  EXPECT_EQ((std::list<std::string>{"Bool", "Empty", "FileTime", "Guid", "Int", "Int64", "String", "UInt",
                                    "UInt64", "ULong", "Wide"}),
            bag.allKeys());
  auto value = [&bag](const char* key) {
    boost::any v;
    EXPECT_FALSE(bag.ReadAny(key, v).IsError()) << key;
    return v;
  };
  EXPECT_EQ("p\xC3\xA4th\\x \"q\"", boost::any_cast<std::string>(value("String")));
  EXPECT_EQ("", boost::any_cast<std::string>(value("Empty")));
  EXPECT_EQ(L"w\u00e9\u4e2d\U0001F600", boost::any_cast<std::wstring>(value("Wide")));
  EXPECT_EQ(-123456, boost::any_cast<int>(value("Int")));
  EXPECT_EQ(4000000000u, boost::any_cast<unsigned int>(value("UInt")));
  EXPECT_EQ(4000000001u, boost::any_cast<unsigned int>(value("ULong")));  // comes back as unsigned int
  EXPECT_EQ(-9000000000LL, boost::any_cast<long long>(value("Int64")));
  EXPECT_EQ(ULLONG_MAX, boost::any_cast<unsigned long long>(value("UInt64")));
  EXPECT_TRUE(boost::any_cast<bool>(value("Bool")));
  const FILETIME time = boost::any_cast<FILETIME>(value("FileTime"));
  EXPECT_EQ(Time().dwHighDateTime, time.dwHighDateTime);
  EXPECT_EQ(Time().dwLowDateTime, time.dwLowDateTime);
  const GUID guid = boost::any_cast<GUID>(value("Guid"));
  EXPECT_EQ(0, std::memcmp(&kGuid, &guid, sizeof guid));

  // Loaded, it writes the same text again, but for the unsigned long.
  ASSERT_FALSE(bag.GetSerializedData(text).IsError());
  EXPECT_EQ(Golden("bag_every_type.txt"), text);
}

TEST(Golden, BagWithTypesThatDoNotTravel) {
  CBag bag;
  bag.Write("a", 7UL);
  bag.Write("b", 7L);
  bag.WriteAny("c", FXErrorUtil::ErrorWin32(ZU_HERE("Golden"), 5));
  bag.WriteAny("d", boost::shared_ptr<CBagProvider>());
  std::string text;
  ASSERT_FALSE(bag.GetSerializedData(text).IsError());
  Compare("bag_unsupported.txt", text);

  CBag loaded;
  const CZuError r = loaded.LoadSerializedData(Golden("bag_unsupported.txt"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_UNSUPPORTED_TYPE));
  EXPECT_NE(std::string::npos, r.AsString().find("PropertyName=b, Type=long")) << r.AsString();
  EXPECT_EQ(std::list<std::string>{"a"}, loaded.allKeys());
  EXPECT_NE(std::string::npos, Decoded(text).find(Z("boost::shared_ptr<CBagProvider>")));
}

TEST(Golden, IdentifierTokens) {
  LUID luid;
  luid.HighPart = -2;
  luid.LowPart = 0x3E7;
  FXPlatform::CSidRecord sid;
  const std::string sidText = "S-1-5-21-3623811015-3361044348-30300820-1013";
  ASSERT_FALSE(FXPlatform::StringToSid(sidText.data(), sidText.size(), sid).IsError());
  CSerializedBuffer buffer;
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 1, kGuid).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 2, luid).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 3, sid.Get()).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 4, Time()).IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 5, L"\u00e9").IsError());
  ASSERT_FALSE(CSerializedBase::AddToken(&buffer, 6, "\x01\x00\xFE", 3).IsError());
  Compare("identifiers.txt", buffer.GetBufferAsString());

  CRecorder recorder;
  ASSERT_FALSE(recorder.Load(Golden("identifiers.txt")).IsError());
  EXPECT_EQ((std::vector<std::string>{"guid:1:{6B29FC40-CA47-1067-B31D-00DD010662DA}", "luid:2:-2:0x3e7",
                                      "sid:3:" + sidText, "filetime:4:01db3d8e:8d4c2a00", "wstring:5:e9",
                                      "bytes:6:0100fe"}),
            recorder.tokens);
}

// Tokens that this reader does not know, between ones it does: an unknown
// id, a type from a newer writer, an identifier the bag does not take, a
// newer version and a header with more fields.
std::string NewerStream() {
  return Token(1, 16, Z("Alpha")) + Token(2, 32, Z("1")) + Token(7, 16, Z("added later")) +
         Token(2, 50, std::string("\x00\x01\x02z", 4)) + Token(1, 16, Z("Beta")) + Token(2, 16, Z("b")) +
         Token(2, 41, Z("S-1-5-18")) + Token("2.1.16.6.", Z("Gamma")) + Token("1.1.16.6.newer.", Z("Delta")) +
         Token(2, 36, Z("1"));
}

TEST(Golden, StreamWithTokensFromANewerWriter) {
  Compare("stream_newer_writer.txt", Encoded(NewerStream()));

  CaptureLog();
  CBag bag;
  const CZuError r = bag.LoadSerializedData(Golden("stream_newer_writer.txt"));
  ASSERT_FALSE(r.IsError()) << r.AsString();
  EXPECT_EQ((std::list<std::string>{"Alpha", "Beta", "Delta"}), bag.allKeys());
  int alpha = 0;
  std::string beta;
  bool delta = false;
  EXPECT_FALSE(bag.Read("alpha", alpha).IsError());
  EXPECT_FALSE(bag.Read("beta", beta).IsError());
  EXPECT_FALSE(bag.Read("delta", delta).IsError());
  EXPECT_EQ(1, alpha);
  EXPECT_EQ("b", beta);
  EXPECT_TRUE(delta);
  EXPECT_TRUE(Logged("Unknown TokenId encountered, Type=[16], Id=[7], Length=[12]"));
  EXPECT_TRUE(Logged("Unknown TokenType encountered, Type=[50], Id=[2], Length=[4]"));
  EXPECT_TRUE(Logged("Unknown TokenId encountered, Type=[41], Id=[2], Length=[9]"));
  EXPECT_TRUE(Logged("Unknown version found in token identifier, version=[2], Token=[2.1.16.6.]"));

  // The recorder sees the same tokens on both platforms.
  CRecorder recorder;
  ASSERT_FALSE(recorder.Load(Golden("stream_newer_writer.txt")).IsError());
  EXPECT_EQ((std::vector<std::string>{"string:1:Alpha", "i32:2:1", "string:7:added later", "string:1:Beta",
                                      "string:2:b", "sid:2:S-1-5-18", "string:1:Delta", "bool:2:true"}),
            recorder.tokens);
}

}  // namespace
