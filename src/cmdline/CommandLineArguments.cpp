#include "cmdline/CommandLineArguments.h"

#include "cmdline/ArgumentList.h"

namespace {

const FXCommandLine::TLocations kWhere = {
    "CCommandLineArguments::GetOption", "CCommandLineArguments::AddOption", "CCommandLineArguments::GetArgument",
    "CCommandLineArguments::GetUnusedArgumentCount", "CCommandLineArguments::RemoveOption"};

}  // namespace

CCommandLineArguments::CCommandLineArguments(int argc, const char* const* argv) {
  FXCommandLine::FromVector(argc, argv, m_programName, m_arguments);
}
CCommandLineArguments::CCommandLineArguments(int argc, const wchar_t* const* argv) {
  FXCommandLine::FromVector(argc, argv, m_programName, m_arguments);
}
CCommandLineArguments::CCommandLineArguments(const char* commandLine) {
  FXCommandLine::FromLine(commandLine, m_arguments);
}
CCommandLineArguments::CCommandLineArguments(const wchar_t* commandLine) {
  FXCommandLine::FromLine(commandLine, m_arguments);
}

CZuError CCommandLineArguments::GetOption(const std::string& name) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name);
}
CZuError CCommandLineArguments::GetOption(const std::string& name, bool& present) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, present);
}
CZuError CCommandLineArguments::GetOption(const std::string& name, std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, value);
}
CZuError CCommandLineArguments::GetOption(const std::string& name, std::list<std::string>& values) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetOption(name, values);
}
CZuError CCommandLineArguments::AddOption(const std::string& name, const std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).AddOption(name, value);
}
CZuError CCommandLineArguments::AddOption(const std::string& name) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).AddOption(name);
}
CZuError CCommandLineArguments::GetArgument(int position, std::string& value) {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetArgument(position, value);
}
int CCommandLineArguments::GetUnusedArgumentCount() {
  return FXCommandLine::CArgumentList(m_arguments, kWhere).GetUnusedArgumentCount();
}
CZuError CCommandLineArguments::GetUnusedArguments(std::list<std::string>& out) {
  FXCommandLine::CArgumentList(m_arguments, kWhere).GetUnusedArguments(out);
  return CZuError::Success();
}
std::string CCommandLineArguments::GetCommandLineString() const { return FXCommandLine::Join(m_arguments); }
