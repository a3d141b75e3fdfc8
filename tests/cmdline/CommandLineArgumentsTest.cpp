#include <list>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cmdline/CommandLineArguments.h"
#include "cmdline/ProgramArguments.h"
#include "errors/ErrorUtil.h"
#include "text/StringConvert.h"

namespace {

typedef std::vector<std::string> Strings;
typedef std::list<std::string> List;

bool Contains(const CZuError& r, const std::string& text) { return r.AsString().find(text) != std::string::npos; }

Strings TokensOf(const CCommandLineArguments& arguments) {
  Strings out;
  for (const CCommandLineArgument& a : arguments.GetArguments()) out.push_back(a.GetText());
  return out;
}

CCommandLineArguments FromVector(const Strings& argv) {
  std::vector<const char*> pointers;
  for (const std::string& s : argv) pointers.push_back(s.c_str());
  return CCommandLineArguments(static_cast<int>(pointers.size()), pointers.data());
}

TEST(CommandLineArguments, ValueFormMarksOptionAndValue) {
  CCommandLineArguments a = FromVector({"prog", "-Out", "file.txt", "extra"});
  EXPECT_EQ("prog", a.GetProgramName());
  std::string value;
  ASSERT_FALSE(a.GetOption("out", value).IsError());
  EXPECT_EQ("file.txt", value);
  EXPECT_EQ(1, a.GetUnusedArgumentCount());
  List unused;
  EXPECT_FALSE(a.GetUnusedArguments(unused).IsError());
  EXPECT_EQ(List{"extra"}, unused);
}

TEST(CommandLineArguments, MissingValuesAndOptions) {
  CCommandLineArguments a = FromVector({"prog", "-v", "/w"});
  std::string value = "kept";
  // -v is followed by /w, an ordinary argument, so that is its value.
  EXPECT_FALSE(a.GetOption("v", value).IsError());
  EXPECT_EQ("/w", value);

  CCommandLineArguments b = FromVector({"prog", "-v"});
  CZuError r = b.GetOption("v", value);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(Contains(r, "No parameter found for option, OptionName=v")) << r.AsString();
  EXPECT_TRUE(Contains(r, "CCommandLineArguments::GetOption"));
  bool present = false;
  EXPECT_FALSE(b.GetOption("V", present).IsError());
  EXPECT_TRUE(present);
  EXPECT_FALSE(b.GetOption("w", present).IsError());
  EXPECT_FALSE(present);
  r = b.GetOption("w");
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
  EXPECT_TRUE(Contains(r, "OptionName=w"));

  // A slash is not an option prefix here.
  CCommandLineArguments c = FromVector({"prog", "/v"});
  EXPECT_TRUE(FXErrorUtil::IsWin32(c.GetOption("v"), ERROR_NOT_FOUND));
  EXPECT_EQ(1, c.GetUnusedArgumentCount());
}

TEST(CommandLineArguments, ListFormGathersEveryOccurrence) {
  List values;
  CCommandLineArguments a = FromVector({"prog", "-a", "1", "-A", "-a", "x"});
  EXPECT_FALSE(a.GetOption("a", values).IsError());
  // The value of the second occurrence is "-a", which is not an occurrence.
  EXPECT_EQ((List{"1", "-a"}), values);

  CCommandLineArguments b = FromVector({"prog", "-a", "1", "-a"});
  CZuError r = b.GetOption("a", values);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(Contains(r, "OptionName=a, Occurrence=2")) << r.AsString();
  EXPECT_EQ(List{"1"}, values);
  EXPECT_EQ(1, b.GetUnusedArgumentCount());  // the last -a

  values = {"stale"};
  EXPECT_TRUE(FXErrorUtil::IsWin32(b.GetOption("z", values), ERROR_NOT_FOUND));
  EXPECT_TRUE(values.empty());
}

TEST(CommandLineArguments, AddOptionKeepsItsAsymmetry) {
  CCommandLineArguments a = FromVector({"prog", "-k", "old"});
  EXPECT_FALSE(a.AddOption("K", "new").IsError());
  EXPECT_EQ((Strings{"-k", "new"}), TokensOf(a));
  // Appended without a hyphen: a later lookup does not find it.
  EXPECT_FALSE(a.AddOption("n", "1").IsError());
  EXPECT_FALSE(a.AddOption("n", "2").IsError());
  EXPECT_FALSE(a.AddOption("flag").IsError());
  EXPECT_FALSE(a.AddOption("k").IsError());
  EXPECT_EQ((Strings{"-k", "new", "n", "1", "n", "2", "flag"}), TokensOf(a));
  EXPECT_FALSE(a.AddOption("-m", "v").IsError());
  std::string value;
  EXPECT_TRUE(FXErrorUtil::IsWin32(a.GetOption("-m", value), ERROR_NOT_FOUND));

  CCommandLineArguments b = FromVector({"prog", "-last"});
  CZuError r = b.AddOption("last", "v");
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(Contains(r, "CCommandLineArguments::AddOption"));
}

TEST(CommandLineArguments, GetArgumentBounds) {
  CCommandLineArguments a = FromVector({"prog", "x", "y"});
  std::string value;
  EXPECT_FALSE(a.GetArgument(1, value).IsError());
  EXPECT_EQ("y", value);
  EXPECT_EQ(1, a.GetUnusedArgumentCount());
  for (int position : {-1, 2, 1 << 30}) {
    CZuError r = a.GetArgument(position, value);
    EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
    EXPECT_TRUE(Contains(r, "Position=" + std::to_string(position) + ", Count=2")) << r.AsString();
  }
}

TEST(CommandLineArguments, EmptyAndDegenerateInputs) {
  const char* none = nullptr;
  EXPECT_TRUE(TokensOf(CCommandLineArguments(none)).empty());
  EXPECT_TRUE(TokensOf(CCommandLineArguments(static_cast<const wchar_t*>(nullptr))).empty());
  EXPECT_TRUE(TokensOf(CCommandLineArguments("  \t ")).empty());
  EXPECT_TRUE(TokensOf(CCommandLineArguments(0, static_cast<const char* const*>(nullptr))).empty());
  EXPECT_TRUE(TokensOf(FromVector({"prog"})).empty());
  const char* withNull[] = {"p", nullptr, "x"};
  EXPECT_EQ((Strings{"", "x"}), TokensOf(CCommandLineArguments(3, withNull)));
  // An unterminated quote runs to the end of the line.
  EXPECT_EQ((Strings{"a", "b c "}), TokensOf(CCommandLineArguments("a \"b c ")));
  EXPECT_EQ((Strings{"a", ""}), TokensOf(CCommandLineArguments("a \"")));
}

TEST(CommandLineArguments, SplitsAsTheRuntimeDoes) {
  struct {
    const char* line;
    Strings tokens;
  } const cases[] = {
      {"a \"b c\" d", {"a", "b c", "d"}},
      {"\"\" x", {"", "x"}},
      {"a\\\\b \\\"q\\\" c\\", {"a\\\\b", "\"q\"", "c\\"}},
      {"\"a\\\\\" b", {"a\\", "b"}},
      {"\"a\\\\\\\"b\"", {"a\\\"b"}},
      {"\"x\"\"y\"", {"x\"y"}},
      {"a\"b c\"d", {"ab cd"}},
      {"-k\tv", {"-k", "v"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    EXPECT_EQ(c.tokens, TokensOf(CCommandLineArguments(c.line)));
    EXPECT_EQ(c.tokens, TokensOf(CCommandLineArguments(FXString::ToWstring(c.line).c_str())));
  }
  CCommandLineArguments wide(L"-n \"\u00e9t\u00e9 x\"");
  std::string value;
  EXPECT_FALSE(wide.GetOption("N", value).IsError());
  EXPECT_EQ("\xc3\xa9t\xc3\xa9 x", value);
}

// Generated tokens of blanks, quotes, backslashes and letters come back
// unchanged from the rebuilt line, through both classes.
TEST(CommandLineArguments, RebuiltLineSplitsIntoTheSameTokens) {
  std::mt19937 random(7);
  const char alphabet[] = {' ', '\t', '"', '\\', 'a', '-', '\n'};
  for (int round = 0; round < 2000; ++round) {
    Strings argv{"prog"};
    const int count = static_cast<int>(random() % 5);
    for (int i = 0; i < count; ++i) {
      std::string token;
      const int length = static_cast<int>(random() % 7);
      for (int j = 0; j < length; ++j) token += alphabet[random() % sizeof alphabet];
      argv.push_back(token);
    }
    const Strings expected(argv.begin() + 1, argv.end());
    const std::string line = FromVector(argv).GetCommandLineString();
    SCOPED_TRACE(line);
    ASSERT_EQ(expected, TokensOf(CCommandLineArguments(line.c_str())));

    std::vector<const char*> pointers;
    for (const std::string& s : argv) pointers.push_back(s.c_str());
    const std::wstring wide = CProgramArguments(count + 1, pointers.data(), 0).GetCommandLineW();
    List all;
    EXPECT_FALSE(CProgramArguments(wide.c_str(), 0).GetAllArguemnts(all).IsError());
    ASSERT_EQ(expected, Strings(all.begin(), all.end()));
  }
  EXPECT_EQ("plain \"a b\" \"\" \"q\\\"\" \"s\\ \" t\\ \"v\\\\\\\"\"",
            FromVector({"p", "plain", "a b", "", "q\"", "s\\ ", "t\\", "v\\\""}).GetCommandLineString());
}

TEST(CommandLineArguments, HundredThousandArguments) {
  std::string line;
  for (int i = 0; i < 100000; ++i) line += i % 2 ? "v ": "-o ";
  CCommandLineArguments a(line.c_str());
  ASSERT_EQ(100000u, a.GetArguments().size());
  List values;
  EXPECT_FALSE(a.GetOption("o", values).IsError());
  EXPECT_EQ(50000u, values.size());
  EXPECT_EQ(0, a.GetUnusedArgumentCount());
  EXPECT_EQ(line.substr(0, line.size() - 1), a.GetCommandLineString());
}

TEST(ProgramArguments, VirtualModelWithRemoval) {
  const wchar_t* argv[] = {L"C:\\p.exe", L"-a", L"1", L"x", L"-A", L"2", L"-b"};
  CProgramArguments p(7, argv, 0x15);
  EXPECT_EQ(0x15u, p.GetFlags());
  EXPECT_EQ("C:\\p.exe", p.GetProgramName());
  std::string value;
  CZuError r = p.GetOption("b", value);
  EXPECT_TRUE(Contains(r, "CProgramArguments::GetOption"));
  EXPECT_FALSE(p.RemoveOption("a", true).IsError());
  List all;
  EXPECT_FALSE(p.GetAllArguemnts(all).IsError());
  EXPECT_EQ((List{"x", "-b"}), all);
  EXPECT_FALSE(p.RemoveOption("B", false).IsError());
  r = p.RemoveOption("b", false);
  EXPECT_TRUE(FXErrorUtil::IsWin32(r, ERROR_NOT_FOUND));
  EXPECT_TRUE(Contains(r, "CProgramArguments::RemoveOption"));
  EXPECT_EQ(L"x", p.GetCommandLineW());
}

}  // namespace
