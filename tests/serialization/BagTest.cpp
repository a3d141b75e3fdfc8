#include <climits>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "SerializationTestSupport.h"
#include "support/CountingNew.h"
#include "errors/ErrorUtil.h"
#include "platform/CompleteTypes.h"
#include "serialization/Bag.h"

using namespace ZuSerialTest;

namespace {

bool Has(const CZuError& r, const std::string& part) { return r.AsString().find(part) != std::string::npos; }

template <class T>
T ReadAs(const CBag& bag, const std::string& key) {
  T out{};
  const CZuError r = bag.Read(key, out);
  EXPECT_FALSE(r.IsError()) << key << ": " << r.AsString();
  return out;
}

TEST(Bag, KeysIgnoreCaseAndKeepTheirFirstSpelling) {
  CBag bag;
  ASSERT_FALSE(bag.Write("Size", 1).IsError());
  EXPECT_EQ("1", ReadAs<std::string>(bag, "SIZE"));
  ASSERT_FALSE(bag.Write("size", "two").IsError());
  EXPECT_EQ(std::list<std::string>{"Size"}, bag.allKeys());
  EXPECT_EQ("two", ReadAs<std::string>(bag, "Size"));

  // _stricmp's order: letters folded to lower case before bytes compare,
  // so '[' (after 'Z', before 'a') sorts first.
  for (const char* key : {"b", "A_", "a", "[", "B1"}) bag.Write(key, 0);
  EXPECT_EQ((std::list<std::string>{"[", "a", "A_", "b", "B1", "Size"}), bag.allKeys());
  EXPECT_TRUE(CBag().allKeys().empty());
}

TEST(Bag, TypedReadsConvertByTheTable) {
  CBag bag;
  bag.Write("hex", "0x1F");
  bag.Write("oct", "010");
  bag.Write("abc", "abc");
  bag.Write("TRUE", "TRUE");
  bag.Write("False", "False");
  bag.Write("two", "2");
  bag.Write("big", 5000000000LL);
  bag.Write("max32", "0xFFFFFFFF");
  bag.Write("u32", 4294967295u);
  bag.Write("flag", true);
  bag.Write("long", -7L);
  bag.Write("ulong", 7UL);
  bag.Write("u64", ULLONG_MAX);
  bag.Write("wide", L"42");
  bag.Write("wtrue", L"tRuE");
  bag.Write("accent", L"h\u00e9");
  bag.Write("utf8", "h\xC3\xA9");
  bag.Write("minus", -1);
  bag.Write("wbig", L"-9000000000");

  EXPECT_EQ(31, ReadAs<int>(bag, "hex"));
  EXPECT_EQ(8, ReadAs<int>(bag, "oct"));
  EXPECT_EQ(0, ReadAs<int>(bag, "abc"));
  EXPECT_TRUE(ReadAs<bool>(bag, "TRUE"));
  EXPECT_FALSE(ReadAs<bool>(bag, "False"));
  EXPECT_TRUE(ReadAs<bool>(bag, "two"));
  EXPECT_FALSE(ReadAs<bool>(bag, "abc"));
  EXPECT_EQ(705032704, ReadAs<int>(bag, "big"));
  EXPECT_EQ("5000000000", ReadAs<std::string>(bag, "big"));
  // 32-bit targets read text with strtol: it saturates at INT_MAX.
  EXPECT_EQ(2147483647u, ReadAs<unsigned int>(bag, "max32"));
  EXPECT_EQ(4294967295LL, ReadAs<long long>(bag, "max32"));
  EXPECT_EQ(-1, ReadAs<int>(bag, "u32"));
  EXPECT_EQ(1, ReadAs<int>(bag, "flag"));
  EXPECT_EQ("1", ReadAs<std::string>(bag, "flag"));
  EXPECT_EQ(L"1", ReadAs<std::wstring>(bag, "flag"));
  EXPECT_EQ("-7", ReadAs<std::string>(bag, "long"));
  EXPECT_EQ(-7LL, ReadAs<long long>(bag, "long"));
  EXPECT_EQ(7UL, ReadAs<unsigned long>(bag, "ulong"));
  EXPECT_EQ(L"7", ReadAs<std::wstring>(bag, "ulong"));
  EXPECT_EQ(L"18446744073709551615", ReadAs<std::wstring>(bag, "u64"));
  EXPECT_EQ(-1, ReadAs<int>(bag, "u64"));
  EXPECT_EQ(42LL, ReadAs<long long>(bag, "wide"));
  EXPECT_TRUE(ReadAs<bool>(bag, "wtrue"));
  EXPECT_EQ(-9000000000LL, ReadAs<long long>(bag, "wbig"));
  EXPECT_EQ(-2147483647 - 1, ReadAs<int>(bag, "wbig"));  // strtol saturates
  EXPECT_EQ("h\xC3\xA9", ReadAs<std::string>(bag, "accent"));
  EXPECT_EQ(L"h\u00e9", ReadAs<std::wstring>(bag, "utf8"));
  EXPECT_EQ(ULLONG_MAX, ReadAs<unsigned long long>(bag, "minus"));
  EXPECT_EQ(-1L, ReadAs<long>(bag, "minus"));
  EXPECT_TRUE(ReadAs<bool>(bag, "minus"));
}

TEST(Bag, ReadsOfOtherTypesFailWithTheirDemangledName) {
  CBag bag;
  bag.WriteAny("double", 1.5);
  bag.WriteAny("error", FXErrorUtil::ErrorWin32(ZU_HERE("Test"), 5));
  bag.WriteAny("empty", boost::any());
  int i = 9;
  unsigned u = 9;
  long l = 9;
  unsigned long ul = 9;
  long long ll = 9;
  unsigned long long ull = 9;
  bool b = true;
  std::string s = "kept";
  std::wstring w = L"kept";
  const std::vector<std::pair<const char*, std::function<CZuError()>>> reads = {
      {"int", [&] { return bag.Read("double", i); }},
      {"unsigned int", [&] { return bag.Read("double", u); }},
      {"long", [&] { return bag.Read("double", l); }},
      {"unsigned long", [&] { return bag.Read("double", ul); }},
      {"int64_t", [&] { return bag.Read("double", ll); }},
      {"uint64_t", [&] { return bag.Read("double", ull); }},
      {"bool", [&] { return bag.Read("double", b); }},
      {"string", [&] { return bag.Read("double", s); }},
      {"wstring", [&] { return bag.Read("double", w); }},
  };
  for (const auto& read : reads) {
    const CZuError r = read.second();
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_DATATYPE));
    EXPECT_TRUE(Has(r, std::string("Bag value of type 'double' different with expected type '") + read.first + "'"))
        << r.AsString();
    EXPECT_TRUE(Has(r, "CBag::Read"));
  }
  EXPECT_EQ(9, i);  // untouched without flag 2
  EXPECT_EQ("kept", s);
  EXPECT_TRUE(Has(bag.Read("error", i), "'CZuError'"));

  // Flag 2 clears first, also when the read then fails.
  EXPECT_TRUE(bag.Read("error", s, CBag::kReadClear).IsError());
  EXPECT_EQ("", s);
  // An empty value: flag 1 tolerates it, without it its type is void.
  i = 3;
  EXPECT_FALSE(bag.Read("empty", i, CBag::kReadTolerant).IsError());
  EXPECT_EQ(3, i);
  EXPECT_TRUE(Has(bag.Read("empty", i), "type 'void'"));
  EXPECT_FALSE(bag.Read("empty", i, CBag::kReadTolerant | CBag::kReadClear).IsError());
  EXPECT_EQ(0, i);
}

TEST(Bag, AbsentKeysAndFlags) {
  CBag bag;
  int i = 4;
  for (DWORD flags : {0u, 1u}) {
    const CZuError r = bag.Read("nokey", i, flags);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
    EXPECT_TRUE(Has(r, "PropertyName=[nokey]")) << r.AsString();
    EXPECT_TRUE(Has(r, "CBag::ReadAny") && Has(r, "CBag::Read(")) << r.AsString();
  }
  EXPECT_EQ(4, i);
  boost::any value = 5;
  EXPECT_FALSE(bag.ReadAny("nokey", value, CBag::kReadTolerant).IsError());
  EXPECT_EQ(5, boost::any_cast<int>(value));
  EXPECT_TRUE(bag.ReadAny("nokey", value, 0).IsError());
  EXPECT_FALSE(value.empty());  // only flag 2 clears
  EXPECT_TRUE(bag.ReadAny("nokey", value).IsError());
  EXPECT_TRUE(value.empty());

  // Null C strings store empty strings.
  bag.Write("n", static_cast<const char*>(nullptr));
  bag.Write("w", static_cast<const wchar_t*>(nullptr));
  ASSERT_FALSE(bag.ReadAny("n", value).IsError());
  EXPECT_EQ("", boost::any_cast<std::string>(value));
  EXPECT_EQ(L"", ReadAs<std::wstring>(bag, "w"));
}

TEST(Bag, CountersAddOnlyToTheirOwnType) {
  CBag bag;
  ASSERT_FALSE(bag.Add("c", 3LL).IsError());
  ASSERT_FALSE(bag.Add("c", 3LL).IsError());
  EXPECT_EQ(6LL, ReadAs<long long>(bag, "c"));
  EXPECT_TRUE(FXErrorUtil::IsWin32(bag.Add("c", 1ULL), ERROR_INVALID_DATATYPE));
  bag.Write("c", 1);
  const CZuError r = bag.Add("c", 3LL);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_DATATYPE));
  EXPECT_TRUE(Has(r, "CBag::Add"));
  boost::any value;
  bag.ReadAny("c", value);
  EXPECT_EQ(1, boost::any_cast<int>(value));

  bag.Write("max", LLONG_MAX);
  ASSERT_FALSE(bag.Add("max", 1LL).IsError());
  EXPECT_EQ(LLONG_MIN, ReadAs<long long>(bag, "max"));
  ASSERT_FALSE(bag.Add("u", ULLONG_MAX).IsError());
  ASSERT_FALSE(bag.Add("u", 2ULL).IsError());
  EXPECT_EQ(1ULL, ReadAs<unsigned long long>(bag, "u"));
}

class CCountProvider : public CBagProvider {
 public:
  int calls = 0;
  CZuError GetProperty(const std::string& name, boost::any& value) override {
    value = name + std::to_string(++calls);
    return CZuError::Success();
  }
};

TEST(Bag, ProvidersComputeTheirValueAtEachRead) {
  CBag bag;
  auto provider = boost::make_shared<CCountProvider>();
  bag.WriteAny("p", boost::shared_ptr<CBagProvider>(provider));
  EXPECT_EQ("p1", ReadAs<std::string>(bag, "p"));
  boost::any value;
  ASSERT_FALSE(bag.ReadAny("p", value).IsError());
  EXPECT_EQ("p2", boost::any_cast<std::string>(value));

  bag.WriteAny("base", boost::shared_ptr<CBagProvider>(boost::make_shared<CBagProvider>()));
  const CZuError r = bag.ReadAny("base", value);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
  EXPECT_TRUE(Has(r, "CBagProvider::GetProperty") && Has(r, "CBag::ReadAny")) << r.AsString();
  EXPECT_TRUE(value.empty());
  // Only exactly boost::shared_ptr<CBagProvider> asks; a derived pointer is a value.
  bag.WriteAny("derived", provider);
  ASSERT_FALSE(bag.ReadAny("derived", value).IsError());
  EXPECT_EQ(2, provider->calls);
}

TEST(Bag, CopiesShareOneBody) {
  CBag first;
  CBag second(first);
  CBag third;
  third = first;
  second.Write("k", 1);
  third.Write("j", 2);
  EXPECT_EQ(1, ReadAs<int>(first, "k"));
  EXPECT_EQ(2, ReadAs<int>(first, "j"));
  EXPECT_EQ(first.allKeys(), second.allKeys());
}

std::string Raw(const CBag& bag) {
  std::string text;
  EXPECT_FALSE(bag.GetSerializedData(text).IsError());
  return Decoded(text);
}

std::string Z(const char* text) { return std::string(text) + std::string(1, '\0'); }

TEST(Bag, SerializesWithTheTokenOfEachType) {
  CBag bag;
  bag.Write("n", 5);
  EXPECT_EQ(Token("1.1.16.2.", Z("n")) + Token("1.2.32.2.", Z("5")), Raw(bag));
  EXPECT_EQ(24u, Raw(bag).size());

  CBag empty;
  std::string text;
  ASSERT_FALSE(empty.GetSerializedData(text).IsError());
  EXPECT_EQ("<~~>", text);
  ASSERT_FALSE(bag.LoadSerializedData(text).IsError());
  EXPECT_TRUE(bag.allKeys().empty());

  // unsigned long travels as the unsigned 32-bit token, long not at all.
  CBag widths;
  widths.Write("a", 7UL);
  widths.Write("b", 7L);
  widths.WriteAny("c", FXErrorUtil::ErrorWin32(ZU_HERE("Test"), 5));
  EXPECT_EQ(Token("1.1.16.2.", Z("a")) + Token("1.2.33.2.", Z("7")) + Token("1.1.16.2.", Z("b")) +
                Token("1.3.16.5.", Z("long")) + Token("1.1.16.2.", Z("c")) + Token("1.3.16.9.", Z("CZuError")),
            Raw(widths));
  ASSERT_FALSE(widths.GetSerializedData(text).IsError());
  CBag loaded;
  loaded.Write("old", 1);
  const CZuError r = loaded.LoadSerializedData(text);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_UNSUPPORTED_TYPE));
  EXPECT_TRUE(Has(r, "PropertyName=b, Type=long") && Has(r, "CBagPrivate::LoadToken") &&
              Has(r, "CBag::LoadSerializedData"))
      << r.AsString();
  EXPECT_EQ(std::list<std::string>{"a"}, loaded.allKeys());
  boost::any value;
  loaded.ReadAny("a", value);
  EXPECT_EQ(7u, boost::any_cast<unsigned int>(value));

  if (!kZuIsWindows) {
    CBag wide;
    wide.Write("big", static_cast<unsigned long>(ULLONG_MAX));
    std::string unchanged = "unchanged";
    const CZuError e = wide.GetSerializedData(unchanged);
    EXPECT_TRUE(FXErrorUtil::IsWin32(e, 534));
    EXPECT_TRUE(Has(e, "does not fit the unsigned 32-bit token, PropertyName=big") &&
                Has(e, "CBag::GetSerializedData"))
        << e.AsString();
    EXPECT_EQ("unchanged", unchanged);
  }
}

TEST(Bag, LoadingNamesValuesAndStrayTokens) {
  CaptureLog();
  CBag bag;
  // A value without a name.
  CZuError r = bag.LoadSerializedData(Encoded(Token(2, 32, Z("1"))));
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_DATATYPE));
  EXPECT_TRUE(Has(r, "Property name was expected")) << r.AsString();

  // A name without its value is reported when the next name comes; a name
  // as another type and unknown ids are skipped; values of every type land.
  const std::string raw = Token(1, 16, Z("lost")) + Token(1, 16, Z("a")) + Token(1, 32, Z("7")) +
                          Token(2, 36, Z("1")) + Token(9, 16, Z("future")) + Token(1, 16, Z("b")) +
                          Token(2, 40, Z("0:0x1")) + Token(2, 17, std::string("x\0\0\0", 4)) + Token(1, 16, Z("tail"));
  r = bag.LoadSerializedData(Encoded(raw));
  EXPECT_FALSE(r.IsError()) << r.AsString();
  EXPECT_TRUE(Logged("Data was not received for property, PropertyName=lost"));
  EXPECT_EQ(1u, CountLogged("Data was not received"));
  EXPECT_EQ(3u, CountLogged("Unknown TokenId encountered"));  // id 1 as int, id 9, the LUID
  EXPECT_EQ((std::list<std::string>{"a", "b"}), bag.allKeys());
  EXPECT_TRUE(ReadAs<bool>(bag, "a"));
  EXPECT_EQ(L"x", ReadAs<std::wstring>(bag, "b"));

  // "tail" stays pending into the next load, which empties the map first.
  ClearLog();
  r = bag.LoadSerializedData(Encoded(Token(2, 32, Z("3"))));
  EXPECT_FALSE(r.IsError()) << r.AsString();
  EXPECT_EQ(std::list<std::string>{"tail"}, bag.allKeys());

  // A repeated key replaces its value, in the first spelling.
  r = bag.LoadSerializedData(Encoded(Token(1, 16, Z("K")) + Token(2, 32, Z("1")) + Token(1, 16, Z("k")) +
                                     Token(2, 33, Z("2"))));
  EXPECT_FALSE(r.IsError());
  EXPECT_EQ(std::list<std::string>{"K"}, bag.allKeys());
  boost::any value;
  bag.ReadAny("k", value);
  EXPECT_EQ(2u, boost::any_cast<unsigned int>(value));

  r = bag.LoadSerializedData("not ascii85");
  EXPECT_TRUE(r.IsError());
  EXPECT_TRUE(Has(r, "CBag::LoadSerializedData"));
  EXPECT_TRUE(bag.allKeys().empty());
}

}  // namespace

namespace {

TEST(Bag, FailedAllocationsLoseNothing) {
  // The Windows DLL keeps its own operator new: only the Linux run reaches
  // the library's allocations.
  if (kZuIsWindows) GTEST_SKIP() << "the library's allocations are counted on Linux only";
  CBag bag;
  bag.Write("a", 1);
  const std::string value = "a value longer than the small-string buffer";
  const std::string key = "b";
  ZuTest::FailNextAllocation();
  CZuError r = bag.Write(key, value);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_OUTOFMEMORY)) << r.AsString();
  ZuTest::FailNextAllocation();
  EXPECT_TRUE(bag.Write("a", 2).IsError());
  EXPECT_EQ(std::list<std::string>{"a"}, bag.allKeys());
  EXPECT_EQ(1, ReadAs<int>(bag, "a"));

  std::string text = "unchanged";
  ZuTest::FailNextAllocation();
  r = bag.GetSerializedData(text);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_OUTOFMEMORY)) << r.AsString();
  EXPECT_NE(std::string::npos, r.AsString().find("CBag::GetSerializedData"));
  EXPECT_EQ("unchanged", text);

  ASSERT_FALSE(bag.GetSerializedData(text).IsError());
  ZuTest::FailNextAllocation();
  r = bag.LoadSerializedData(text);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_OUTOFMEMORY)) << r.AsString();
  ASSERT_FALSE(bag.LoadSerializedData(text).IsError());
  EXPECT_EQ(1, ReadAs<int>(bag, "a"));
}

}  // namespace
