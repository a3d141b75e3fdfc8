// Whole files as bytes for the tests, through the library's platform file
// handle, so that paths mean the same as they do to the code under test.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "platform/PlainFile.h"

namespace ZuTest {

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  FXPlatform::CPlainFile file;
  ASSERT_EQ(0u, file.Open(path, FXPlatform::EPlainFileOpen::kCreateAlways).win32) << path;
  ASSERT_EQ(0u, file.Write(bytes.data(), bytes.size()).win32);
}

// "<missing>" when the file cannot be opened.
inline std::string ReadBytes(const std::string& path) {
  FXPlatform::CPlainFile file;
  std::string out;
  if (file.Open(path, FXPlatform::EPlainFileOpen::kReadExisting).win32 != 0) return "<missing>";
  char buffer[4096];
  std::size_t read = 0;
  while (file.Read(buffer, sizeof buffer, read).win32 == 0 && read > 0) out.append(buffer, read);
  return out;
}

}  // namespace ZuTest
