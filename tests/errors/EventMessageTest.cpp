// Event-message texts from a real message library, built by these tests
// (MsgTextLib.cpp). The program also runs with the library missing and with
// one lacking its export: ZU_TEST_MESSAGE_LIBRARY says which to expect.
#include <cstdlib>
#include <string>

#include <boost/any.hpp>
#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"

namespace {

using namespace FXErrorUtil;

const FXCodeLocation kHere("e.cpp", "CEvent::Run", 9);
const EErrorOutputFormat kCode = EErrorOutputFormat::USER_SINGLE_LINE_CODE;
const EErrorOutputFormat kDescription = EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE;

std::string ExpectedLibrary() {
  const char* state = std::getenv("ZU_TEST_MESSAGE_LIBRARY");
  return state != nullptr ? state : "good";
}

CZuError OpenFailure() {
  CZuError r = ErrorEventMessage(kHere, 0x05000101);
  r << "C:\\data" << 3;
  return r;
}

const char* const kUnavailable =
    "0xE8050101:{CEvent::Run(9)/EventMessage.0x05000101.5:257. (Localized string unavailable)}";

class EventMessageLibrary : public ::testing::Test {
 protected:
  void TearDown() override { UnloadAndDisableEventMessageLookup(); }
};

TEST_F(EventMessageLibrary, LoadedUsedUnloadedAndLoadedAgain) {
  const std::string expected = ExpectedLibrary();
  const CZuError r = OpenFailure();
  EXPECT_EQ(kUnavailable, r.AsString());  // the lookup starts switched off
  EXPECT_EQ("", r.AsString(kCode));

  const CZuError enabled = EnableEventMessageLookup();
  if (expected != "good") {
    const DWORD why = expected == "missing" ? ERROR_MOD_NOT_FOUND : ERROR_PROC_NOT_FOUND;
    EXPECT_TRUE(IsWin32(enabled, why)) << enabled.AsString();
    EXPECT_NE(std::string::npos, enabled.AsString().find("FXErrorUtil::EnableEventMessageLookup("));
    EXPECT_EQ(kUnavailable, r.AsString());
    EXPECT_TRUE(IsWin32(EnableEventMessageLookup(), why));  // nothing was kept loaded
    EXPECT_FALSE(UnloadAndDisableEventMessageLookup().IsError());
    return;
  }
  ASSERT_FALSE(enabled.IsError()) << enabled.AsString();
  EXPECT_EQ("0xE8050101:{CEvent::Run(9)/EventMessage.0x05000101.5:257.(Cannot open C:\\data on volume 3.\r\n)}",
            r.AsString());
  EXPECT_EQ("Cannot open C:\\data on volume 3.", r.AsString(kCode));
  EXPECT_FALSE(EnableEventMessageLookup().IsError());  // already loaded

  EXPECT_FALSE(UnloadAndDisableEventMessageLookup().IsError());
  EXPECT_EQ(kUnavailable, r.AsString());
  EXPECT_FALSE(UnloadAndDisableEventMessageLookup().IsError());  // nothing loaded: fine

  ASSERT_FALSE(EnableEventMessageLookup().IsError());
  EXPECT_EQ("Cannot open C:\\data on volume 3.", r.AsString(kCode));
  EXPECT_EQ(r.AsString(), r.Copy().AsString());  // the copy keeps the parameters
}

class EventMessageText : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(EnableEventMessageLookup().IsError()); }
  void TearDown() override { UnloadAndDisableEventMessageLookup(); }
};

TEST_F(EventMessageText, LinesKeptInTheLogAndJoinedForUsers) {
  CZuError r = ErrorEventMessage(kHere, 0x05000102);
  r << std::string("D:") << 2;
  EXPECT_EQ("0xE8050102:{CEvent::Run(9)/EventMessage.0x05000102.5:258.(Backup of D: finished.\r\n"
            "2 files failed, --Missing-Argument-3-- skipped.  \r\n\r\n)}",
            r.AsString());
  EXPECT_EQ("Backup of D: finished. 2 files failed, --Missing-Argument-3-- skipped.", r.AsString(kCode));
  EXPECT_EQ(r.AsString(kCode), r.AsString(kDescription));
}

TEST_F(EventMessageText, ParametersFormattedByTheirType) {
  CZuError r = ErrorEventMessage(kHere, 0x05000103);
  r << boost::any(static_cast<const char*>("copy")) << 42u << -5LL << 7ULL << -3L << 8UL << L"w\u00EFde";
  EXPECT_EQ("copy is 42% done; -5 7 -3 8 w\xC3\xAF" "de", r.AsString(kCode));
  CZuError odd = ErrorEventMessage(kHere, 0x05000103);
  odd << 1.5;
  EXPECT_EQ(0u, odd.AsString(kCode).find("--Unsupported-Argument-1-- is --Missing-Argument-2--"));

  CZuError none = ErrorEventMessage(kHere, 0x05000103);
  EXPECT_EQ("--Missing-Argument-1-- is --Missing-Argument-2--% done; --Missing-Argument-3-- --Missing-Argument-4-- "
            "--Missing-Argument-5-- --Missing-Argument-6-- --Missing-Argument-7--",
            none.AsString(kCode));
}

TEST_F(EventMessageText, ModulesDescriptionsAndUnknownIds) {
  const int id = (9 << 18) | (1 << 17) | 0x123;
  CZuError r = ErrorEventMessage(kHere, id, "retry %d", 2);
  r << 12;
  EXPECT_EQ(static_cast<HRESULT>(0xE8090123), r.GetErrorCode());
  EXPECT_EQ(0x123, GetEventMessage(r, 9));
  EXPECT_EQ("0xE8090123:{CEvent::Run(9)/EventMessage.0x00260123.9:291.(Job 12 stopped\r\n)-retry 2}", r.AsString());
  EXPECT_EQ("Job 12 stopped", r.AsString(kCode));
  EXPECT_EQ("Job 12 stopped, retry 2", r.AsString(kDescription));

  // Ids the library has no text for (null or empty) read as unavailable.
  for (const int unknown : {0x05000104, 0x05000999, 0}) {
    const CZuError u = ErrorEventMessage(kHere, unknown, "ctx");
    EXPECT_NE(std::string::npos, u.AsString().find(". (Localized string unavailable)-ctx}")) << unknown;
    EXPECT_EQ("ctx", u.AsString(kDescription));
  }
}

}  // namespace
