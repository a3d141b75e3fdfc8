#include "errors/CodeLocation.h"

#include <cstdio>

// Without structured exception handling in this toolchain a bad pointer
// cannot be caught portably; the strings are literals by contract and a null
// function prints as "(null)".
std::string FXCodeLocation::AsString() const {
  char buffer[256];
  const int n = std::snprintf(buffer, sizeof buffer, "%s(%d)", m_function ? m_function : "(null)", m_line);
  if (n < 0) return std::string();
  return std::string(buffer);
}

std::string FXCodeLocation::AsString(EErrorOutputFormat format) const {
  if (format == EErrorOutputFormat::USER_SINGLE_LINE_CODE) return std::string();
  return AsString();
}
