// Where in the source an error was raised or passed on.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "errors/ErrorOutputFormat.h"

// The strings are not owned: they are meant to be literals such as __FILE__.
class ZUUTILS_API FXCodeLocation {
 public:
  FXCodeLocation() = default;
  FXCodeLocation(const char* file, const char* function, int line)
      : m_file(file), m_function(function), m_line(line) {}

  const char* GetFile() const { return m_file; }
  const char* GetFunction() const { return m_function; }
  int GetLine() const { return m_line; }
  bool IsValid() const { return m_file != nullptr; }

  // "function(line)", at most 255 characters; "(null)" for a null function.
  std::string AsString() const;
  // Empty for USER_SINGLE_LINE_CODE, AsString() otherwise.
  std::string AsString(EErrorOutputFormat format) const;

 private:
  const char* m_file = nullptr;
  const char* m_function = nullptr;
  int m_line = 0;
};

// The current file and line with the function named by the caller, as
// "Class::Method": that name is part of the error text users and support
// staff search for, so it is spelled out rather than taken from __func__.
#define ZU_HERE(function) FXCodeLocation(__FILE__, function, __LINE__)
