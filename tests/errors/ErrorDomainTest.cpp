// Folding of domain values into result codes and reading them back.
#include <cstdint>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"

namespace {

using namespace FXErrorUtil;

const FXCodeLocation kHere("d.cpp", "CDomain::Test", 5);

HRESULT H(std::uint32_t bits) { return static_cast<HRESULT>(bits); }
CZuError Code(std::uint32_t bits) { return CZuError(H(bits), nullptr); }

class ErrorDomain : public ::testing::Test {
 protected:
  void SetUp() override { CompileErrorMappingsIntoContainer(); }
};

TEST_F(ErrorDomain, Folding) {
  EXPECT_EQ(H(0x80070005), ErrorWin32(kHere, 5).GetErrorCode());
  EXPECT_EQ(H(0x80070306), ErrorWin32(kHere, 0).GetErrorCode());  // 0 reads as 774
  EXPECT_EQ(H(0x80071234), ErrorWin32(kHere, 0x00051234).GetErrorCode());
  EXPECT_EQ(H(0x80004005), ErrorWin32(kHere, 0x80004005).GetErrorCode());  // negative: as is
  EXPECT_EQ(H(0x80004005), ErrorHResult(kHere, H(0x80004005)).GetErrorCode());
  EXPECT_EQ(H(0xECCC0002), ErrorErrNo(kHere, 2).GetErrorCode());
  EXPECT_EQ(H(0xEC000194), ErrorHttp(kHere, 404).GetErrorCode());
  EXPECT_EQ(H(0xEDDD0007), ErrorInt(kHere, 7).GetErrorCode());
  EXPECT_EQ(H(0xEDB0010A), ErrorSQLite(kHere, 266).GetErrorCode());
  EXPECT_EQ(H(0xEDA00009), ErrorTQResult(kHere, 9).GetErrorCode());
  // The value is OR-ed unmasked: high bits leak into the facility.
  EXPECT_EQ(H(0xEDDF0001), ErrorInt(kHere, 0x00020001).GetErrorCode());
  EXPECT_EQ(H(0xFFFFFFFF), ErrorErrNo(kHere, -1).GetErrorCode());

  // Event messages: module from bits 24..30, or from 18..27 when bit 17 is set.
  EXPECT_EQ(0, ErrorEventMessage(kHere, 0).GetErrorCode());
  EXPECT_EQ(H(0xE8050123), ErrorEventMessage(kHere, 0x05000123).GetErrorCode());
  EXPECT_EQ(H(0xE8090123), ErrorEventMessage(kHere, (9 << 18) | (1 << 17) | 0x8123).GetErrorCode());
}

TEST_F(ErrorDomain, ItemsKeepTheValueGiven) {
  const CZuError r = ErrorWin32(kHere, 0);
  EXPECT_NE(std::string::npos, r.AsString().find("/W32.0."));
  EXPECT_TRUE(IsWin32(ErrorWin32(kHere, 5), 5));
  EXPECT_FALSE(IsWin32(r, 0));  // compared as 0, not 774
  EXPECT_TRUE(IsWin32(r, ERROR_ERRORS_ENCOUNTERED));
  EXPECT_TRUE(IsNotErrNo(r, 2));
}

TEST_F(ErrorDomain, ReadBackDirectAndThroughEquivalents) {
  EXPECT_EQ(0u, GetWin32(CZuError::Success()));
  EXPECT_EQ(0, GetErrNo(Code(1)));
  EXPECT_EQ(65535u, GetWin32(Code(0x8007FFFF)));
  EXPECT_EQ(774u, GetWin32(Code(0x80041234)));
  EXPECT_EQ(65535, GetErrNo(Code(0x80041234)));
  EXPECT_EQ(65535, GetHttp(Code(0x80041234)));
  EXPECT_EQ(-1, GetInt(Code(0x80041234)));

  EXPECT_EQ(2, GetErrNo(ErrorWin32(kHere, 3)));     // W3 ~ E2
  EXPECT_EQ(2u, GetWin32(ErrorErrNo(kHere, 2)));    // E2 ~ W2 and W3: smallest first
  EXPECT_EQ(258u, GetWin32(ErrorErrNo(kHere, 138)));  // E138 ~ W258 and W10060: ascending signed
  EXPECT_EQ(404, GetHttp(ErrorHttp(kHere, 404)));
  EXPECT_EQ(7, GetInt(ErrorInt(kHere, 7)));
  EXPECT_EQ(266, GetSQLite(ErrorSQLite(kHere, 266)));
  EXPECT_EQ(9, GetTQResult(ErrorTQResult(kHere, 9)));

  // SQLite and TQResult accept any customer code directly...
  EXPECT_EQ(7, GetTQResult(ErrorInt(kHere, 7)));
  EXPECT_EQ(2, GetSQLite(ErrorErrNo(kHere, 2)));
  // ...but their equivalents must fit both customer bit and facility.
  EXPECT_EQ(-1, GetTQResult(ErrorWin32(kHere, 2)));
}

TEST_F(ErrorDomain, EventMessageReadBack) {
  const CZuError r = ErrorEventMessage(kHere, 0x05000123);
  EXPECT_TRUE(IsTypeEventMessage(r));
  EXPECT_EQ(0x123, GetEventMessage(r));
  EXPECT_EQ(0x123, GetEventMessage(r, 5));
  EXPECT_EQ(-1, GetEventMessage(r, 6));
  EXPECT_EQ(-1, GetEventMessage(ErrorInt(kHere, 1)));
  // Local number 0 of module 5 is no message of module 6.
  const CZuError zero = ErrorEventMessage(kHere, 0x05000000);
  EXPECT_EQ(0, GetEventMessage(zero, 5));
  EXPECT_EQ(-1, GetEventMessage(zero, 6));
  EXPECT_EQ(0, GetEventMessage(CZuError::Success(), 6));
  EXPECT_TRUE(IsEventMessage(r, 0x05000123));
  EXPECT_FALSE(IsEventMessage(ErrorInt(kHere, 0x123), 0x05000123));
  EXPECT_TRUE(IsEventMessage(CZuError::Success(), 0));
}

TEST_F(ErrorDomain, TypeTests) {
  EXPECT_TRUE(IsTypeWin32(ErrorWin32(kHere, 5)));
  EXPECT_TRUE(IsTypeWin32(H(0x00070005)));
  EXPECT_FALSE(IsTypeWin32(ErrorErrNo(kHere, 5)));
  EXPECT_TRUE(IsTypeErrNo(ErrorErrNo(kHere, 5)));
  EXPECT_FALSE(IsTypeErrNo(H(0x8CCC0005)));  // no customer bit
  EXPECT_FALSE(IsTypeEventMessage(ErrorWin32(kHere, 5)));
}

TEST_F(ErrorDomain, NumberOnlyDomainTexts) {
  // Int and TQResult have no code text, so their texts are fully known here.
  const CZuError i = ErrorInt(kHere, 26);
  EXPECT_EQ("0xEDDD001A:{CDomain::Test(5)/Int.26.0x1A}", i.AsString());
  EXPECT_EQ("Error (Int.26.0x1A)", i.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("CDomain::Test(5)/Int.26.0x1A", i.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));

  const CZuError d = ErrorTQResult(kHere, 255, "queue %s", "full");
  EXPECT_EQ("0xEDA000FF:{CDomain::Test(5)/TQ.0xFF-queue full}", d.AsString());
  EXPECT_EQ("Error (TQ.0xFF)", d.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("queue full (TQ.0xFF)", d.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));

  CZuError pushed = ErrorInt(kHere, 1);
  PushInt(pushed, kHere, 2, "ctx");
  PushTQResult(pushed, kHere, 3, nullptr);
  EXPECT_EQ("0xEDDD0001:{CDomain::Test(5)/TQ.0x3} + {CDomain::Test(5)/Int.2.0x2-ctx} + {CDomain::Test(5)/Int.1.0x1}",
            pushed.AsString());
}

TEST_F(ErrorDomain, DescriptionItemsOfTextDomains) {
  const CZuError r = ErrorErrNo(kHere, 2, "opening %s", "a.txt");
  const std::string full = r.AsString();
  EXPECT_EQ(0u, full.find("0xECCC0002:{CDomain::Test(5)/ErrNo.2"));
  EXPECT_EQ("-opening a.txt}", full.substr(full.size() - 15));
  const std::string line = r.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE);
  EXPECT_EQ("opening a.txt (ErrNo.2)", line.substr(line.size() - 23));
  EXPECT_EQ(line.find("opening"), line.rfind("opening"));
}

}  // namespace
