#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdline/CmdLineParser.h"
#include "errors/ErrorUtil.h"

namespace {

typedef std::vector<std::string> Strings;

CZuError Parse(CCmdLineParser& parser, const Strings& argv) {
  std::vector<const char*> pointers;
  for (const std::string& s : argv) pointers.push_back(s.c_str());
  return parser.ParseCmdLine(static_cast<int>(pointers.size()), pointers.data());
}

std::string ValueOf(const CCmdLineParser& parser, const char* name) {
  CZuString value("stale");
  const CZuError r = parser.getParamValue(name, value);
  return r.IsError() ? "<missing:" + std::string(value.c_str()) + ">" : std::string(value.c_str());
}

TEST(CmdLineParser, PositionalsAndOptionsInDefaultMode) {
  CCmdLineParser parser;
  ASSERT_FALSE(Parse(parser, {"prog", "x", "-k", "v", "y", "/s", "\\t", "-e"}).IsError());
  EXPECT_EQ("x", ValueOf(parser, "position_1"));
  EXPECT_EQ("v", ValueOf(parser, "k"));
  EXPECT_EQ("y", ValueOf(parser, "position_4"));
  EXPECT_EQ("", ValueOf(parser, "s"));  // followed by an option
  EXPECT_EQ("", ValueOf(parser, "t"));
  EXPECT_EQ("", ValueOf(parser, "e"));
  EXPECT_EQ("<missing:>", ValueOf(parser, "K"));
  EXPECT_EQ(6, parser.getParamCount());
  EXPECT_TRUE(parser.DoesParamExistsIgnoreCase("K"));
  EXPECT_FALSE(parser.DoesParamExists("K"));
  CZuString value;
  EXPECT_FALSE(parser.getParamValueIgnoreCase("POSITION_1", value).IsError());
  EXPECT_STREQ("x", value.c_str());
  CZuError r = parser.getParamValueIgnoreCase("zz", value);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
  EXPECT_NE(std::string::npos, r.AsString().find("CQCmdLineParser::getParamValueIgnoreCase"));
  EXPECT_NE(std::string::npos, r.AsString().find("Parameter zz not found"));
  std::vector<std::string> names;
  for (const CZuString& n : parser.getParamList()) names.push_back(n.c_str());
  EXPECT_EQ((Strings{"e", "k", "position_1", "position_4", "s", "t"}), names);
}

TEST(CmdLineParser, SinglePrefixMode) {
  CCmdLineParser parser('+');
  ASSERT_FALSE(Parse(parser, {"prog", "+a", "-v", "/w", "+b"}).IsError());
  EXPECT_EQ("-v", ValueOf(parser, "a"));
  EXPECT_EQ("/w", ValueOf(parser, "position_3"));
  EXPECT_EQ("", ValueOf(parser, "b"));
}

TEST(CmdLineParser, FailuresKeepWhatWasStored) {
  CCmdLineParser parser;
  CZuError r = Parse(parser, {"prog", "-k", "-k", "x"});
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_ALREADY_ASSIGNED));
  EXPECT_NE(std::string::npos, r.AsString().find("Parameter k already present")) << r.AsString();
  EXPECT_EQ(1, parser.getParamCount());

  r = parser.ParseCmdLine(3, nullptr);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_PARAMETER));
  EXPECT_NE(std::string::npos, r.AsString().find("NULL argument supplied"));
  EXPECT_NE(std::string::npos, r.AsString().find("CQCmdLineParser::ParseCmdLine"));

  CCmdLineParser empty;
  EXPECT_FALSE(Parse(empty, {"prog"}).IsError());
  const char* withNull[] = {"p", nullptr, "-", nullptr};
  EXPECT_FALSE(empty.ParseCmdLine(4, withNull).IsError());
  EXPECT_EQ("", ValueOf(empty, "position_1"));
  EXPECT_EQ("", ValueOf(empty, ""));  // the bare prefix names ""
}

}  // namespace
