// CCmdLineParser: one pass over an argument vector into a map from
// parameter name to value.
//
// An option is a token that begins with the prefix character (the
// constructor taking a char) or, by default, with '-', '/' or '\'. Its name
// is the rest of the token; the next token is its value unless that is an
// option too (then the value is empty). Any other token is positional and
// named "position_<index in argv>". Names are unique: a repeated one stops
// the parse with ERROR_ALREADY_ASSIGNED, keeping what was stored before.
#pragma once

#include <map>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "text/ZuString.h"

class ZUUTILS_API CCmdLineParser {
 public:
  CCmdLineParser();
  explicit CCmdLineParser(char prefix);

  CZuError ParseCmdLine(int argc, const char* const* argv);

  CZuError getParamValue(const CZuString& name, CZuString& value) const;
  CZuError getParamValueIgnoreCase(const CZuString& name, CZuString& value) const;
  bool DoesParamExists(const CZuString& name) const;
  bool DoesParamExistsIgnoreCase(const CZuString& name) const;
  int getParamCount() const;
  std::vector<CZuString> getParamList() const;

 private:
  bool IsOption(const char* token) const;
  std::map<CZuString, CZuString>::const_iterator FindIgnoreCase(const CZuString& name) const;

  std::map<CZuString, CZuString> m_parameters;
  char m_prefix;
  bool m_singlePrefix;
};
