// The hand-off to the logging service library. This program runs with the
// stand-in library (FakeLogService.cpp) on its library search path.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "logging/ZuLogger.h"
#include "platform/DynamicLibrary.h"
#include "platform/FileSystem.h"

namespace {

using namespace ZuLogTest;

TEST(LoggingService, TakesTheLinesUntilItRefusesOne) {
  CScratchFolder folder("service");
  const std::string app = TestApp("ServiceApp");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(app, folder.Path()).IsError());
  logger.LogMessage(1, "F", 1, nullptr, "to the service");
  EXPECT_EQ(LOGGING_MODE_SERVICE, logger.GetLoggingMode());
  EXPECT_FALSE(FXPlatform::PathExists(logger.GetLogFilePath()));

  // The library the logger loaded, found the same way.
  FXPlatform::CDynamicLibrary service;
  ASSERT_FALSE(service.Load(kZuIsWindows ? "libtqloggingservice.dll" : "libtqloggingservice.so").IsError());
  const auto count = reinterpret_cast<int (*)()>(service.Symbol("FakeServiceLineCount"));
  const auto line = reinterpret_cast<const char* (*)(int)>(service.Symbol("FakeServiceLine"));
  const auto refuse = reinterpret_cast<void (*)(int)>(service.Symbol("FakeServiceRefuse"));
  ASSERT_TRUE(count && line && refuse);
  ASSERT_EQ(1, count());
  const std::string taken = line(0);
  const std::string head = "LogMessageAsyncSameProcess|" + app + "|" + folder.Path() + "|";
  ASSERT_EQ(0u, taken.find(head)) << taken;
  EXPECT_EQ(LineStart() + "--- " + kPrefixField + "F(1) - to the service\r\n", MaskTime(taken.substr(head.size())));

  // A refused line is written here, and so is every later one.
  refuse(1);
  logger.LogMessage(1, "F", 2, nullptr, "refused");
  EXPECT_EQ(LOGGING_MODE_DIRECT, logger.GetLoggingMode());
  refuse(0);
  logger.LogMessage(1, "F", 3, nullptr, "written here for good");
  EXPECT_EQ(1, count());
  std::vector<std::string> body = BodyLines(logger.GetLogFilePath());
  for (std::string& text : body) text = MaskTime(text);
  const std::string start = LineStart() + "--- " + kPrefixField;
  EXPECT_EQ((std::vector<std::string>{start + "F(2) - refused", start + "F(3) - written here for good"}), body);
}

}  // namespace
