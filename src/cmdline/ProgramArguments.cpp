#include "cmdline/ProgramArguments.h"

#include "cmdline/ArgumentList.h"
#include "text/StringConvert.h"

namespace {

const FXCommandLine::TLocations kWhere = {"CProgramArguments::GetOption", "CProgramArguments::AddOption",
                                          "CProgramArguments::GetArgument",
                                          "CProgramArguments::GetUnusedArgumentCount",
                                          "CProgramArguments::RemoveOption"};

}  // namespace

CProgramArguments::CProgramArguments(int argc, const char* const* argv, unsigned int flags) : m_flags(flags) {
  FXCommandLine::FromVector(argc, argv, m_programName, m_arguments);
}
CProgramArguments::CProgramArguments(int argc, const wchar_t* const* argv, unsigned int flags) : m_flags(flags) {
  FXCommandLine::FromVector(argc, argv, m_programName, m_arguments);
}
CProgramArguments::CProgramArguments(const char* commandLine, unsigned int flags) : m_flags(flags) {
  FXCommandLine::FromLine(commandLine, m_arguments);
}
CProgramArguments::CProgramArguments(const wchar_t* commandLine, unsigned int flags) : m_flags(flags) {
  FXCommandLine::FromLine(commandLine, m_arguments);
}
CProgramArguments::~CProgramArguments() = default;

CZuError CProgramArguments::AddOption(const std::string& name, const std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).AddOption(name, value);
}
CZuError CProgramArguments::AddOption(const std::string& name) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).AddOption(name);
}
CZuError CProgramArguments::GetArgument(int position, std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetArgument(position, value);
}
CZuError CProgramArguments::GetOption(const std::string& name) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name);
}
CZuError CProgramArguments::GetOption(const std::string& name, bool& present) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, present);
}
CZuError CProgramArguments::GetOption(const std::string& name, std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, value);
}
CZuError CProgramArguments::GetOption(const std::string& name, std::list<std::string>& values) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, values);
}
int CProgramArguments::GetUnusedArgumentCount() {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetUnusedArgumentCount();
}
CZuError CProgramArguments::GetUnusedArguments(std::list<std::string>& out) {
  FXCommandLine::CArgumentList(m_arguments, kWhere).GetUnusedArguments(out);
  return CZuError::Success();
}
std::wstring CProgramArguments::GetCommandLineW() const { return FXString::ToWstring(FXCommandLine::Join(m_arguments)); }
std::string CProgramArguments::GetProgramName() const { return m_programName; }
CZuError CProgramArguments::RemoveOption(const std::string& name, bool withValue) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).RemoveOption(name, withValue);
}
CZuError CProgramArguments::GetAllArguemnts(std::list<std::string>& out) {
  for (const CCommandLineArgument& argument : m_arguments) out.push_back(argument.GetText());
  return CZuError::Success();
}
