// CProgramArguments: the command-line model of CCommandLineArguments (see
// cmdline/CommandLineArguments.h for options, values and splitting) as
// virtual operations, with the program name, a flags word and the removal
// of options.
//
// The flags word is stored for the caller and read back by GetFlags; the
// class itself gives it no meaning.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "cmdline/CommandLineArguments.h"
#include "errors/ZuError.h"

class ZUUTILS_API CProgramArguments {
 public:
  CProgramArguments(int argc, const char* const* argv, unsigned int flags);
  CProgramArguments(int argc, const wchar_t* const* argv, unsigned int flags);
  CProgramArguments(const char* commandLine, unsigned int flags);
  CProgramArguments(const wchar_t* commandLine, unsigned int flags);
  virtual ~CProgramArguments();

  virtual CZuError AddOption(const std::string& name, const std::string& value);
  virtual CZuError AddOption(const std::string& name);
  virtual CZuError GetArgument(int position, std::string& value);
  virtual CZuError GetOption(const std::string& name);
  virtual CZuError GetOption(const std::string& name, bool& present);
  virtual CZuError GetOption(const std::string& name, std::string& value);
  virtual CZuError GetOption(const std::string& name, std::list<std::string>& values);
  virtual int GetUnusedArgumentCount();
  virtual CZuError GetUnusedArguments(std::list<std::string>& out);
  // The arguments quoted as in CCommandLineArguments::GetCommandLineString.
  virtual std::wstring GetCommandLineW() const;
  virtual std::string GetProgramName() const;
  // Removes every occurrence of the option; withValue also removes the
  // token after each. ERROR_NOT_FOUND when the option does not occur.
  virtual CZuError RemoveOption(const std::string& name, bool withValue);
  // Appends the text of every argument, used or not, in order.
  virtual CZuError GetAllArguemnts(std::list<std::string>& out);

  unsigned int GetFlags() const { return m_flags; }

 private:
  unsigned int m_flags;
  std::string m_programName;
  std::vector<CCommandLineArgument> m_arguments;
};
