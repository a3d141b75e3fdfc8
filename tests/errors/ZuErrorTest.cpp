#include <string>

#include <boost/any.hpp>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "errors/ZuError.h"

namespace {

const FXCodeLocation kA("a.cpp", "CA::Open", 10);
const FXCodeLocation kB("b.cpp", "CB::Read", 20);

TEST(ZuError, SuccessTextsAndPredicates) {
  const CZuError ok = CZuError::Success();
  EXPECT_FALSE(ok.IsError());
  EXPECT_TRUE(!ok);
  EXPECT_EQ(0, ok.GetErrorCode());
  EXPECT_EQ("Success", ok.AsString());
  EXPECT_EQ("Success", ok.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("Success", ok.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));
  EXPECT_TRUE(CZuErrorBroker::GetParameters(ok).empty());
}

TEST(ZuError, FailingCodeWithoutItems) {
  // A chain that lost its only item (allocation failure in a builder).
  const CZuError bare(static_cast<HRESULT>(0x80004005), nullptr);
  EXPECT_TRUE(bare.IsError());
  EXPECT_FALSE(!bare);
  EXPECT_EQ("0x80004005:", bare.AsString());
  EXPECT_EQ("", bare.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));

  // Codes that are not negative are no failure, whatever their value.
  const CZuError positive(1, nullptr);
  EXPECT_FALSE(positive.IsError());
  EXPECT_TRUE(!positive);
}

TEST(ZuError, ChainReadsNewestFirstAndUsersSeeTheRootCause) {
  CZuError r = FXErrorUtil::ErrorInt(kA, 7);
  r << 42 << "first";
  r.Push(kB);
  r << std::string("on B");

  EXPECT_EQ("0xEDDD0007:{CB::Read(20)} + {CA::Open(10)/Int.7.0x7}", r.AsString());
  EXPECT_EQ(r.AsString(), r.AsString(EErrorOutputFormat::LOGGING_FULL));
  EXPECT_EQ("Error (Int.7.0x7)", r.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));

  // The root cause's parameters; the streamed one after the push went to B.
  const FXErrorItem::Parameters& params = CZuErrorBroker::GetParameters(r);
  ASSERT_EQ(2u, params.size());
  EXPECT_EQ(42, boost::any_cast<int>(params[0]));
  EXPECT_EQ("first", boost::any_cast<std::string>(params[1]));
}

TEST(ZuError, PushNeverChangesTheCode) {
  CZuError ok = CZuError::Success();
  ok.Push(kA, "note %d", 1);
  EXPECT_EQ(0, ok.GetErrorCode());
  EXPECT_EQ("0x0:{CA::Open(10)/note 1}", ok.AsString());
}

TEST(ZuError, CopiesShareTheChainUntilCopy) {
  CZuError original = FXErrorUtil::ErrorInt(kA, 1);
  CZuError shared = original;
  shared.Push(kB);
  EXPECT_EQ(original.AsString(), shared.AsString());

  CZuError deep = original.Copy();
  deep.Push(kB, "only here");
  EXPECT_NE(original.AsString(), deep.AsString());
  EXPECT_EQ("0xEDDD0001:{CB::Read(20)/only here} + {CB::Read(20)} + {CA::Open(10)/Int.1.0x1}",
            deep.AsString());
  // Parameters are copied with their items, not shared.
  deep << 5;
  EXPECT_TRUE(CZuErrorBroker::GetParameters(original).empty());
}

TEST(ZuError, PushWithFormat) {
  CZuError r = FXErrorUtil::ErrorInt(kA, 1);
  r.Push(kB, nullptr);
  const char* empty = "";
  r.Push(kB, empty);
  r.Push(kB, "%s=%d", "size", 12);
  EXPECT_EQ("0xEDDD0001:{CB::Read(20)/size=12} + {CB::Read(20)} + {CB::Read(20)} + {CA::Open(10)/Int.1.0x1}",
            r.AsString());

  // More than the formatter's 128 KiB: the text is kept behind a marker.
  const std::string huge(200000, 'x');
  CZuError big = FXErrorUtil::ErrorInt(kA, 2);
  big.Push(kB, "%s", huge.c_str());
  const std::string text = big.AsString();
  const std::string marker = "{CB::Read(20)/[BUFFEROVERFLOW] xxx";
  ASSERT_EQ(0u, text.find("0xEDDD0002:" + marker));
  EXPECT_LT(text.size(), huge.size());
  EXPECT_GT(text.size(), 0x20000u - 1000);
}

TEST(ZuError, StreamedParameters) {
  CZuError ok = CZuError::Success();
  ok << 1;  // no chain: nothing happens, nothing breaks
  EXPECT_EQ("Success", ok.AsString());

  CZuError r = FXErrorUtil::ErrorInt(kA, 1);
  r << static_cast<const char*>(nullptr) << L"wide" << boost::any();
  const auto& params = CZuErrorBroker::GetParameters(r);
  ASSERT_EQ(3u, params.size());
  EXPECT_EQ("", boost::any_cast<std::string>(params[0]));
  EXPECT_EQ(L"wide", boost::any_cast<std::wstring>(params[1]));
  EXPECT_TRUE(params[2].empty());
}

TEST(CodeLocation, Texts) {
  EXPECT_EQ("(null)(7)", FXCodeLocation("f.cpp", nullptr, 7).AsString());
  EXPECT_EQ("CA::Open(-1)", FXCodeLocation(nullptr, "CA::Open", -1).AsString());
  EXPECT_FALSE(FXCodeLocation(nullptr, "CA::Open", 1).IsValid());
  EXPECT_TRUE(kA.IsValid());
  EXPECT_EQ("", kA.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("CA::Open(10)", kA.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));

  // The text is cut to 255 characters.
  const std::string longName(400, 'n');
  EXPECT_EQ(255u, FXCodeLocation("f", longName.c_str(), 1).AsString().size());
}

TEST(ErrorItem, PlainAndDescriptionTexts) {
  FXErrorItem plain(kA);
  EXPECT_EQ("CA::Open(10)", plain.AsString());
  EXPECT_EQ("", plain.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("CA::Open(10)", plain.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));

  FXErrorItemDescription described(kA, "disk gone");
  EXPECT_EQ("CA::Open(10)/disk gone", described.AsString());
  EXPECT_EQ("", described.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE));
  EXPECT_EQ("CA::Open(10)/disk gone", described.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));

  described << 3;
  const boost::shared_ptr<FXErrorItem> copy = described.Copy();
  EXPECT_EQ("CA::Open(10)/disk gone", copy->AsString());
  EXPECT_EQ(1u, copy->GetParameters().size());
  EXPECT_NE(nullptr, dynamic_cast<FXErrorItemDescription*>(copy.get()));
}

TEST(ErrorOutputFormat, NamesAndValues) {
  EErrorOutputFormat f;
  EXPECT_EQ(EErrorOutputFormat::LOGGING_FULL, f.AsEnum());
  f.FromValue(2);
  EXPECT_TRUE(f.IsSelected(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE));
  EXPECT_EQ("USER_SINGLE_LINE_DESCRIPTION_CODE", f.AsString());
  EXPECT_EQ(L"USER_SINGLE_LINE_DESCRIPTION_CODE", f.AsWstring());
  f.Select(EErrorOutputFormat::USER_SINGLE_LINE_CODE);
  EXPECT_EQ(1ul, f.AsValue());
  EXPECT_EQ("LOGGING_FULL", EErrorOutputFormat::AsString(EErrorOutputFormat::LOGGING_FULL));
  EXPECT_EQ("9", EErrorOutputFormat::AsString(static_cast<EErrorOutputFormat::ENUM>(9)));

  // A value outside the table prints the full text.
  const CZuError r = FXErrorUtil::ErrorInt(kA, 1);
  EXPECT_EQ(r.AsString(), r.AsString(static_cast<EErrorOutputFormat::ENUM>(9)));
}

}  // namespace
