// CCommandLineArguments: the tokens of a program's command line, each with a
// "used" mark, queried by option name; what no query took is left over as
// the unused arguments.
//
// Options are tokens that begin with '-' (only the hyphen: a slash is an
// ordinary argument); the name is the rest of the token, compared without
// regard to ASCII case. An option's value is the token right after it,
// whatever it is.
//
// A single command-line string is split as the Windows C runtime splits a
// program's command line into argv: blanks and tabs separate tokens outside
// double quotes; a double quote opens or closes a quoted run (and is
// dropped); inside a run, two double quotes give one; 2n backslashes before
// a double quote give n backslashes and the quote keeps its meaning, 2n+1
// give n backslashes and a literal quote; other backslashes are literal. So
// 'a "b c" d' gives 'a', 'b c', 'd', and the quotes around a token are
// removed. Every token becomes an argument; the program name stays empty.
// GetCommandLineString quotes exactly the tokens that need it, so that
// splitting the line it returns gives the same tokens back.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

class ZUUTILS_API CCommandLineArgument {
 public:
  explicit CCommandLineArgument(const std::string& text) : m_text(text) {}

  const std::string& GetText() const { return m_text; }
  void SetText(const std::string& text) { m_text = text; }
  bool IsUsed() const { return m_used; }
  void SetUsed() { m_used = true; }

 private:
  std::string m_text;
  bool m_used = false;
};

namespace FXCommandLine {

// Splits a command line by the rules above; a null line gives no tokens.
ZUUTILS_API void Split(const char* line, std::vector<std::string>& tokens);
// The token as it must appear on a command line to be split back as it is:
// unchanged when it is not empty and holds no blank, tab, line end or
// double quote; otherwise in double quotes, with backslashes doubled where
// they come before a quote (an escaped one or the closing one).
ZUUTILS_API void AppendQuoted(const std::string& token, std::string& line);
// The tokens quoted and joined with single blanks.
ZUUTILS_API std::string Join(const std::vector<CCommandLineArgument>& arguments);

}  // namespace FXCommandLine

class ZUUTILS_API CCommandLineArguments {
 public:
  // The program name is argv[0]; each further element is an argument (wide
  // text as UTF-8). A null vector or a count below 2 gives no arguments; a
  // null element gives an empty argument.
  CCommandLineArguments(int argc, const char* const* argv);
  CCommandLineArguments(int argc, const wchar_t* const* argv);
  // A whole command line (see above); null is an empty line.
  explicit CCommandLineArguments(const char* commandLine);
  explicit CCommandLineArguments(const wchar_t* commandLine);

  // Whether the option occurs: ERROR_NOT_FOUND when it does not.
  CZuError GetOption(const std::string& name);
  // Always succeeds.
  CZuError GetOption(const std::string& name, bool& present);
  // The token after the first occurrence: ERROR_INVALID_PARAMETER when the
  // option is the last token, ERROR_NOT_FOUND when it is missing.
  CZuError GetOption(const std::string& name, std::string& value);
  // The token after every occurrence, in order; the values gathered before
  // an occurrence without a value stay in the list.
  CZuError GetOption(const std::string& name, std::list<std::string>& values);
  // Sets the value of an existing option, or appends the name exactly as
  // given (no hyphen is added) and the value.
  CZuError AddOption(const std::string& name, const std::string& value);
  CZuError AddOption(const std::string& name);
  // 0-based position among the arguments.
  CZuError GetArgument(int position, std::string& value);
  // Logs each unused argument at level 2 of the library logger.
  int GetUnusedArgumentCount();
  CZuError GetUnusedArguments(std::list<std::string>& out);
  std::string GetCommandLineString() const;

  const std::string& GetProgramName() const { return m_programName; }
  const std::vector<CCommandLineArgument>& GetArguments() const { return m_arguments; }

 private:
  std::string m_programName;
  std::vector<CCommandLineArgument> m_arguments;
};
