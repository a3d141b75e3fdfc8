// Command lines: the splitter takes any bytes; the tokens it gives come back
// unchanged from the rebuilt line; the option queries and the one-pass
// parser take any token vector without failing other than as documented.
#include <cmdline/CmdLineParser.h>
#include <cmdline/CommandLineArguments.h>
#include <cmdline/ProgramArguments.h>
#include <errors/ErrorUtil.h>
#include <logging/ZuLogger.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <string>
#include <vector>

namespace {

std::vector<std::string> TokensOf(const CCommandLineArguments& arguments) {
  std::vector<std::string> out;
  for (const CCommandLineArgument& a : arguments.GetArguments()) out.push_back(a.GetText());
  return out;
}

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CZuLogger::GetGlobalInstance().SetDebugLevel(1);
  const std::string text(reinterpret_cast<const char*>(data), size);

  // The line as one command line (up to its first NUL).
  CCommandLineArguments fromLine(text.c_str());
  const std::vector<std::string> tokens = TokensOf(fromLine);
  const std::string rebuilt = fromLine.GetCommandLineString();
  Check(TokensOf(CCommandLineArguments(rebuilt.c_str())) == tokens);

  // The bytes as an argument vector, one token per line: quoting must
  // carry every token (NUL aside) through a rebuilt line.
  std::vector<std::string> argv{"prog"};
  std::size_t start = 0;
  for (std::size_t i = 0; i <= text.size(); ++i)
    if (i == text.size() || text[i] == '\n') {
      std::string token = text.substr(start, i - start);
      token.erase(std::find(token.begin(), token.end(), '\0'), token.end());
      argv.push_back(token);
      start = i + 1;
    }
  std::vector<const char*> pointers;
  for (const std::string& s : argv) pointers.push_back(s.c_str());
  const int argc = static_cast<int>(pointers.size());
  CCommandLineArguments fromVector(argc, pointers.data());
  const std::vector<std::string> expected(argv.begin() + 1, argv.end());
  Check(TokensOf(fromVector) == expected);
  Check(TokensOf(CCommandLineArguments(fromVector.GetCommandLineString().c_str())) == expected);

  // Queries: a failure is one of the documented codes; marks only grow.
  const std::string name = argv.size() > 1 ? argv[1].substr(argv[1].empty() ? 0 : 1) : std::string("x");
  std::list<std::string> values;
  const CZuError listed = fromVector.GetOption(name, values);
  Check(!listed.IsError() || FXErrorUtil::IsWin32(listed, ERROR_NOT_FOUND) ||
        FXErrorUtil::IsWin32(listed, ERROR_INVALID_PARAMETER));
  const int unused = fromVector.GetUnusedArgumentCount();
  Check(unused >= 0 && unused <= argc - 1);
  std::string value;
  const CZuError one = fromVector.GetOption(name, value);
  Check(fromVector.GetUnusedArgumentCount() <= unused);
  Check(listed.IsError() == one.IsError() || !values.empty());

  CProgramArguments program(argc, pointers.data(), 0);
  const CZuError removed = program.RemoveOption(name, true);
  bool present = true;
  program.GetOption(name, present);
  Check(!present);
  Check(!removed.IsError() || FXErrorUtil::IsWin32(removed, ERROR_NOT_FOUND));

  for (char prefix : {'\0', '-', '/'}) {
    CCmdLineParser parser = prefix == '\0' ? CCmdLineParser() : CCmdLineParser(prefix);
    const CZuError parsed = parser.ParseCmdLine(argc, pointers.data());
    Check(!parsed.IsError() || FXErrorUtil::IsWin32(parsed, ERROR_ALREADY_ASSIGNED));
    Check(parser.getParamCount() <= argc - 1);
    for (const CZuString& key : parser.getParamList()) Check(parser.DoesParamExistsIgnoreCase(key));
  }
  return 0;
}
