#include "cmdline/CmdLineParser.h"

#include <cstdio>
#include <cstring>

#include "errors/ErrorUtil.h"
#include "text/StringAlgo.h"

CCmdLineParser::CCmdLineParser() : m_prefix('-'), m_singlePrefix(false) {}
CCmdLineParser::CCmdLineParser(char prefix) : m_prefix(prefix), m_singlePrefix(true) {}

bool CCmdLineParser::IsOption(const char* token) const {
  if (token == nullptr || token[0] == '\0') return false;
  if (m_singlePrefix) return token[0] == m_prefix;
  return token[0] == '-' || token[0] == '/' || token[0] == '\\';
}

CZuError CCmdLineParser::ParseCmdLine(int argc, const char* const* argv) {
  if (argv == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CQCmdLineParser::ParseCmdLine"), ERROR_INVALID_PARAMETER,
                                   "NULL argument supplied");
  int i = 1;
  while (i < argc) {
    const char* token = argv[i] == nullptr ? "" : argv[i];
    CZuString name, value;
    if (IsOption(token)) {
      name = token + 1;
      ++i;
      if (i < argc && !IsOption(argv[i])) value = argv[i++];
    } else {
      char generated[32];
      std::snprintf(generated, sizeof generated, "position_%d", i);
      name = generated;
      value = token;
      ++i;
    }
    if (!m_parameters.emplace(name, value).second)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CQCmdLineParser::ParseCmdLine"), ERROR_ALREADY_ASSIGNED,
                                     "Parameter %s already present", name.c_str());
  }
  return CZuError::Success();
}

std::map<CZuString, CZuString>::const_iterator CCmdLineParser::FindIgnoreCase(const CZuString& name) const {
  for (auto it = m_parameters.begin(); it != m_parameters.end(); ++it)
    if (it->first.Length() == name.Length() &&
        FXString::Detail::EqualNoCase(it->first.c_str(), name.c_str(), name.Length()))
      return it;
  return m_parameters.end();
}

CZuError CCmdLineParser::getParamValue(const CZuString& name, CZuString& value) const {
  const auto it = m_parameters.find(name);
  if (it == m_parameters.end()) {
    value = "";
    return FXErrorUtil::ErrorWin32(ZU_HERE("CQCmdLineParser::getParamValue"), ERROR_NOT_FOUND,
                                   "Parameter %s not found", name.c_str());
  }
  value = it->second;
  return CZuError::Success();
}

CZuError CCmdLineParser::getParamValueIgnoreCase(const CZuString& name, CZuString& value) const {
  const auto it = FindIgnoreCase(name);
  if (it == m_parameters.end()) {
    value = "";
    return FXErrorUtil::ErrorWin32(ZU_HERE("CQCmdLineParser::getParamValueIgnoreCase"), ERROR_NOT_FOUND,
                                   "Parameter %s not found", name.c_str());
  }
  value = it->second;
  return CZuError::Success();
}

bool CCmdLineParser::DoesParamExists(const CZuString& name) const { return m_parameters.count(name) != 0; }
bool CCmdLineParser::DoesParamExistsIgnoreCase(const CZuString& name) const {
  return FindIgnoreCase(name) != m_parameters.end();
}
int CCmdLineParser::getParamCount() const { return static_cast<int>(m_parameters.size()); }

std::vector<CZuString> CCmdLineParser::getParamList() const {
  std::vector<CZuString> names;
  names.reserve(m_parameters.size());
  for (const auto& entry : m_parameters) names.push_back(entry.first);
  return names;
}
