// The line layout, filtering, message handling, hook and header block of
// CZuLogger, checked against exact lines with the time column masked.
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/FileSystem.h"

namespace {

using namespace ZuLogTest;

class LoggerFormat : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(m_logger.Initialize(TestApp("FormatApp"), m_folder.Path()).IsError()); }

  // The lines written so far, time masked.
  std::vector<std::string> Body() const {
    std::vector<std::string> lines = BodyLines(m_logger.GetLogFilePath());
    for (std::string& line : lines) line = MaskTime(line);
    return lines;
  }

  CScratchFolder m_folder{"format"};
  CZuLogger m_logger;
};

TEST_F(LoggerFormat, ColumnsJobIdsAndLevels) {
  ASSERT_STREQ(kPrefixValue, std::getenv("EVDEBUG_GLOBAL_PREFIX"));
  const std::string start = LineStart();
  const std::string prefix = kPrefixField;

  m_logger.LogMessage(1, "CTest::Run", 42, "ctx", "value %d", 7);
  m_logger.LogMessage(1, "F", 0, 5LL, nullptr, "job five");
  m_logger.LogMessage(1, "F", 0, 0LL, nullptr, "job zero");
  m_logger.LogMessage(1, "F", 0, CZuLogger::kNoJobId, nullptr, "no job");
  m_logger.LogMessage(1, "F", 0, 123456789LL, nullptr, "wide job");
  m_logger.LogMessage(1, "F", 0, 5LL, nullptr, "job column grew");
  m_logger.LogMessage(1, "F", 0, -7LL, nullptr, "hashes as wide as the column");
  m_logger.LogMessage(3, "F", 0, nullptr, "above the default level 2: dropped");
  m_logger.LogMessage(-1, "F", 0, nullptr, "an alarm always passes");
  m_logger.SetDebugLevel(3);
  m_logger.LogMessage(3, "F", 0, nullptr, "level 3 now passes");
  m_logger.SetDebugLevel(-2);
  m_logger.LogMessage(-1, "F", 0, nullptr, "alarms pass whatever the level");
  m_logger.LogMessage(0, "F", 0, nullptr, "level 0 is above -2: dropped");
  m_logger.SetDebugLevel(2);
  m_logger.LogMessage(1, std::string(150, 'f').c_str(), 1, std::string(120, 'c').c_str(), "cut");
  m_logger.LogMessage("plain text");
  CZuLogger::SetShowLogLevel(true);
  m_logger.LogMessage(2, "F", 3, nullptr, "level shown");
  m_logger.LogMessage(-1, "F", 3, nullptr, "negative levels show 0");
  CZuLogger::SetShowLogLevel(false);

  const std::vector<std::string> expected = {
      start + "--- " + prefix + "CTest::Run(42) - ctx value 7",
      start + "5   " + prefix + "F() - job five",
      start + "### " + prefix + "F() - job zero",
      start + "--- " + prefix + "F() - no job",
      start + "123456789 " + prefix + "F() - wide job",
      start + "5         " + prefix + "F() - job column grew",
      start + "######### " + prefix + "F() - hashes as wide as the column",
      start + "--------- " + prefix + "F() - an alarm always passes",
      start + "--------- " + prefix + "F() - level 3 now passes",
      start + "--------- " + prefix + "F() - alarms pass whatever the level",
      start + "--------- " + prefix + std::string(100, 'f') + "(1) - " + std::string(100, 'c') + " cut",
      start + "--------- " + prefix + "plain text",
      start + "--------- #LgLvl2#" + prefix + "F(3) - level shown",
      start + "--------- #LgLvl0#" + prefix + "F(3) - negative levels show 0",
  };
  EXPECT_EQ(expected, Body());
}

TEST_F(LoggerFormat, PlaceholdersAndTheThreadColumn) {
  m_logger.LogMessage(1, nullptr, 9, nullptr, "bare, no placeholders");
  m_logger.SetPlaceHolderForPreMessage(true);
  EXPECT_TRUE(m_logger.getPlaceHolderForPreMessage());
  m_logger.LogMessage(1, nullptr, 0, nullptr, "placeholders");
  m_logger.LogMessage(1, "", 9, "", "placeholders with a line");
  m_logger.LogMessage(1, "F", 9, "ctx", "real fields win");
  m_logger.SetPlaceHolderForPreMessage(false);
  // The columns only grow: narrower widths asked later leave them as they are.
  m_logger.SetLogfileParams(0, 0, 0, 6, 1);
  m_logger.LogMessage(1, "F", 1, 5LL, nullptr, "wider job column");
  m_logger.SetLogfileParams(0, 0, 0, 2, 1);
  m_logger.LogMessage(1, "F", 2, 5LL, nullptr, "still as wide");

  const std::string start = LineStart();
  const std::string prefix = kPrefixField;
  const std::vector<std::string> expected = {
      start + "--- " + prefix + "bare, no placeholders",
      start + "--- " + prefix + "() - [ ] placeholders",
      start + "--- " + prefix + "(9) - [ ] placeholders with a line",
      start + "--- " + prefix + "F(9) - ctx real fields win",
      start + "5      " + prefix + "F(1) - wider job column",
      start + "5      " + prefix + "F(2) - still as wide",
  };
  EXPECT_EQ(expected, Body());
}

TEST_F(LoggerFormat, MessagesLongMultiLineAndNull) {
  const std::string fiveThousand(5000, 'a');
  const std::string mebibyte(1 << 20, 'b');
  const char* volatile nothing = nullptr;
  m_logger.LogMessage(1, "F", 1, nullptr, "%s", fiveThousand.c_str());
  m_logger.LogMessage(1, "F", 2, nullptr, "%s", mebibyte.c_str());
  m_logger.LogMessage(1, "F", 3, nullptr, "first\nsecond\nthird");
  m_logger.LogMessage(1, "F", 4, nullptr, "trailing line feeds go\n\n");
  m_logger.LogMessage(1, "F", 5, nullptr, "a CR LF\r\nstays as it is");
  m_logger.LogMessage(1, "F", 6, nullptr, "null %s", nothing);
  m_logger.LogMessage(1, "F", 7, nullptr, "%s", "");
  m_logger.LogMessage(1, "F", 8, nullptr, "still logging");

  const std::string start = LineStart() + "--- " + kPrefixField;
  const std::vector<std::string> body = Body();
  ASSERT_EQ(11u, body.size());
  EXPECT_EQ(start + "F(1) - " + fiveThousand, body[0]);
  // Cut to the 64 KiB buffer less its reserve, never beyond.
  EXPECT_EQ(0u, body[1].find(start + "F(2) - bbb"));
  EXPECT_LT(body[1].size(), 0x10000u - 200u);
  EXPECT_GT(body[1].size(), 0x10000u - 1000u);
  EXPECT_EQ(std::string::npos, body[1].find_first_not_of('b', (start + "F(2) - ").size()));
  EXPECT_EQ(start + "F(3) - first", body[2]);
  EXPECT_EQ("second", body[3]);
  EXPECT_EQ("third", body[4]);
  EXPECT_EQ(start + "F(4) - trailing line feeds go", body[5]);
  EXPECT_EQ(start + "F(5) - a CR LF", body[6]);
  EXPECT_EQ("stays as it is", body[7]);
  EXPECT_EQ(start + "F(6) - null (null)", body[8]);
  EXPECT_EQ(start + "F(7) - ", body[9]);
  EXPECT_EQ(start + "F(8) - still logging", body[10]);
}

std::vector<std::pair<int, std::string>> g_hooked;

bool KeepSecrets(CZuLogger*, int level, const char* text) {
  g_hooked.emplace_back(level, text);
  return std::string(text).find("secret") != std::string::npos;
}

bool ThrowingHook(CZuLogger*, int, const char*) { throw std::runtime_error("hook failed"); }

TEST_F(LoggerFormat, HookConsumesLinesAndExceptionsAreLogged) {
  g_hooked.clear();
  const CZuLogger::LogMessageHook previous = CZuLogger::SetLogMessageHook(KeepSecrets);
  m_logger.LogMessage(1, "F", 1, nullptr, "public");
  m_logger.LogMessage(0, "F", 2, nullptr, "secret");
  m_logger.LogMessage(3, "F", 3, nullptr, "filtered before the hook");
  CZuLogger::SetLogMessageHook(ThrowingHook);
  m_logger.LogMessage(1, "F", 4, nullptr, "boom %d", 4);
  CZuLogger::SetLogMessageHook(previous);

  const std::string start = LineStart() + "--- " + kPrefixField;
  ASSERT_EQ(2u, g_hooked.size());
  EXPECT_EQ(1, g_hooked[0].first);
  EXPECT_EQ(start + "F(1) - public", MaskTime(g_hooked[0].second));
  EXPECT_EQ(0, g_hooked[1].first);
  const std::vector<std::string> expected = {
      start + "F(1) - public",
      "@@@@@@@@@@@@@@@@@@",
      ">>>>>>>>>>>>>>>>>> GOT AN EXCEPTION DURING DEBUG MESSAGE HANDLING [boom %d]",
      "@@@@@@@@@@@@@@@@@@",
  };
  EXPECT_EQ(expected, Body());
}

TEST(Logger, HeaderBlockStartsEveryFile) {
  CScratchFolder folder("header");
  CZuLogger::SetPlatformInformation("host1", "phys1", "client1", "inst1", "TestOS 1.0", "10.0.0.1", "ctrl",
                                    "ctrlhost");
  CZuLogger::SetProcessorInformation("TestCPU", 64);
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("HeaderApp"), folder.Path(), 2, false, "ZuTests").IsError());
  logger.LogMessage(1, "F", 1, nullptr, "first line");

  const std::vector<std::string> lines = Lines(ReadFile(logger.GetLogFilePath()));
  ASSERT_EQ(12u, lines.size());
  const std::string border(80, '*');
  auto framed = [](const std::string& text) { return "* " + text + std::string(76 - text.size(), ' ') + " *"; };
  EXPECT_EQ(border, lines[0]);
  EXPECT_EQ(framed("Machine    : host1:phys1 (client1) (inst1)"), lines[1]);
  EXPECT_EQ(framed("IP Addrs   : 10.0.0.1"), lines[2]);
  EXPECT_EQ(framed("Module     : HeaderApp"), lines[3]);
  EXPECT_EQ(framed("Ctrlserver : ctrl:ctrlhost"), lines[4]);
  EXPECT_EQ(0u, lines[5].find("* Version    : ")) << lines[5];
  // "Date       : YYYY/MM/DD (zone GMT+hh:mm)"
  EXPECT_TRUE(MatchesPattern(lines[6].substr(0, 26), "* Date       : dddd/dd/dd ")) << lines[6];
  EXPECT_NE(std::string::npos, lines[6].find(" GMT")) << lines[6];
  EXPECT_EQ(framed("OS Type    : TestOS 1.0"), lines[7]);
  EXPECT_EQ(framed("Processor  : 64 bit (TestCPU)"), lines[8]);
  EXPECT_EQ(framed("Product    : ZuTests"), lines[9]);
  EXPECT_EQ(border, lines[10]);
  EXPECT_EQ(LineStart() + "--- " + kPrefixField + "F(1) - first line", MaskTime(lines[11]));
}

TEST(Logger, InitializeChecksNamesAndFolders) {
  CScratchFolder folder("init");
  CSyslogCapture syslog;
  CZuLogger logger;
  CZuError result = logger.Initialize("", folder.Path());
  EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_INVALID_PARAMETER));
  EXPECT_NE(std::string::npos, result.AsString().find("AppName empty")) << result.AsString();
  EXPECT_FALSE(logger.IsInitialized());
  logger.LogMessage(0, "F", 1, nullptr, "dropped: not initialised");
  result = logger.logMessages("refused");
  EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_INVALID_HANDLE));
  EXPECT_NE(std::string::npos, result.AsString().find("Uninitialized CZuLogger object"));
  EXPECT_TRUE(syslog.Contains("Uninitialized CZuLogger object"));

  WriteFile(folder.File("plain"), "a file, not a folder");
  EXPECT_TRUE(FXErrorUtil::IsWin32(logger.Initialize("App", folder.File("plain")), ERROR_ALREADY_EXISTS));
  EXPECT_FALSE(logger.IsInitialized());

  const std::string sep(1, FXPlatform::kPathSeparator);
  const std::string nested = folder.File("a") + sep + "b" + sep + "c";
  ASSERT_FALSE(logger.Initialize(TestApp("NestedApp"), nested).IsError());
  EXPECT_TRUE(FXPlatform::IsDirectory(nested));
  EXPECT_EQ(nested + sep + "NestedApp.log", logger.GetLogFilePath());
  EXPECT_EQ("Global\\ZuLogger_NestedApp", logger.GetLockName());
  EXPECT_TRUE(logger.CanUserWriteToLog());

  CZuLogger relative;
  ASSERT_FALSE(relative.Initialize(TestApp("RelativeApp"), "").IsError());
  EXPECT_EQ("." + sep + "RelativeApp.log", relative.GetLogFilePath());
  EXPECT_EQ("d/n_3.log", GetLogFileName("d/", "n", 3));
  std::string name;
  result = CZuLogger::GetLockName(nullptr, "dir", name);
  EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_ERRORS_ENCOUNTERED));
  EXPECT_NE(std::string::npos, result.AsString().find("Log name is empty"));
}

TEST(Logger, KeepOpenAndDirectWriting) {
  CScratchFolder folder("keepopen");
  CZuLogger logger;
  ASSERT_FALSE(logger.Initialize(TestApp("KeepOpenApp"), folder.Path(), 2, true).IsError());
  // Without the service library the first line turns to direct writing.
  EXPECT_EQ(LOGGING_MODE_SERVICE, logger.GetLoggingMode());
  logger.LogMessage(1, "F", 1, nullptr, "kept open");
  EXPECT_EQ(LOGGING_MODE_DIRECT, logger.GetLoggingMode());
  EXPECT_TRUE(logger.isLogFileOpen());
  logger.CloseLogFile(true);
  EXPECT_FALSE(logger.GetKeepLogFileOpen());
  logger.LogMessage(1, "F", 2, nullptr, "opened and closed");
  EXPECT_FALSE(logger.isLogFileOpen());
  EXPECT_EQ(2u, BodyLines(logger.GetLogFilePath()).size());
}

}  // namespace
