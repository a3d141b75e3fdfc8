// The token list shared by CCommandLineArguments and CProgramArguments: one
// implementation of every query, reporting under the owning class's names.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "cmdline/CommandLineArguments.h"
#include "errors/ZuError.h"

namespace FXCommandLine {

// The code locations of one owning class ("Class::Method" literals).
struct TLocations {
  const char* getOption;
  const char* addOption;
  const char* getArgument;
  const char* getUnusedArgumentCount;
  const char* removeOption;
};

class CArgumentList {
 public:
  static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

  CArgumentList(std::vector<CCommandLineArgument>& arguments, const TLocations& where)
      : m_arguments(arguments), m_where(where) {}

  // The first token from `start` on that is '-' followed by the name,
  // ignoring case.
  std::size_t FindOption(const std::string& name, std::size_t start = 0) const;

  CZuError GetOption(const std::string& name);
  CZuError GetOption(const std::string& name, bool& present);
  CZuError GetOption(const std::string& name, std::string& value);
  CZuError GetOption(const std::string& name, std::list<std::string>& values);
  CZuError AddOption(const std::string& name, const std::string& value);
  CZuError AddOption(const std::string& name);
  CZuError GetArgument(int position, std::string& value);
  int GetUnusedArgumentCount();
  void GetUnusedArguments(std::list<std::string>& out) const;
  CZuError RemoveOption(const std::string& name, bool withValue);

 private:
  std::vector<CCommandLineArgument>& m_arguments;
  const TLocations& m_where;
};

// Fills the program name and the arguments from argc/argv (wide text as
// UTF-8), or the arguments from one command line.
void FromVector(int argc, const char* const* argv, std::string& programName,
                std::vector<CCommandLineArgument>& arguments);
void FromVector(int argc, const wchar_t* const* argv, std::string& programName,
                std::vector<CCommandLineArgument>& arguments);
void FromLine(const char* line, std::vector<CCommandLineArgument>& arguments);
void FromLine(const wchar_t* line, std::vector<CCommandLineArgument>& arguments);

}  // namespace FXCommandLine
