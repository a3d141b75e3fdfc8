// The log writers and line writers.
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "LogTestSupport.h"
#include "errors/ErrorUtil.h"
#include "logging/LineWriter.h"
#include "logging/LogWriterInterface.h"
#include "platform/FileSystem.h"

namespace {

using namespace ZuLogTest;

// Records what it is asked to log, as "level|function|line|job|context|text".
class CRecordingWriter : public CLogWriterWrapperBase {
 public:
  void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId, const char* context,
                  const char* format, ...) override {
    va_list args;
    va_start(args, format);
    LogMessageV(level, function, line, jobId, context, format, args);
    va_end(args);
  }
  void LogMessageV(int level, const char* function, unsigned long line, unsigned long long jobId,
                   const char* context, const char* format, va_list args) override {
    char text[256];
    std::vsnprintf(text, sizeof text, format, args);
    entries.push_back(std::to_string(level) + "|" + function + "|" + std::to_string(line) + "|" +
                      std::to_string(jobId) + "|" + (context != nullptr ? context : "(none)") + "|" + text);
  }
  void SetDebugLevel(int level) override { m_level = level; }
  int GetDebugLevel() override { return m_level; }
  void RefreshConfiguration() override {}

  std::vector<std::string> entries;

 private:
  int m_level = 2;
};

// Keeps the lines written to it.
class CCollectingLineWriter : public CLineWriter {
 public:
  CZuError WriteString(const std::string& text) override {
    lines.push_back(text);
    return CLineWriter::WriteString(text);
  }
  std::vector<std::string> lines;
};

TEST(LogWriters, NullWriterDoesNothing) {
  const boost::shared_ptr<CLogWriterInterface> writer = CreateNullLogWriter();
  writer->SetDebugLevel(5);
  writer->SetDebugMask(0xFF);
  writer->LogMessage(-1, "F", 1, 0, nullptr, "%s", "nowhere");
  EXPECT_EQ(0, writer->GetDebugLevel());
  EXPECT_EQ(0ul, writer->GetDebugMask());
  EXPECT_FALSE(writer->GetThreadAttachment());
}

TEST(LogWriters, DefaultWriterOwnsALogger) {
  CScratchFolder folder("writer");
  const std::string app = TestApp("WriterApp");
  const boost::shared_ptr<CLogWriterInterface> writer = CreateDefaultLogWriter(folder.Path(), app);
  EXPECT_EQ(2, writer->GetDebugLevel());
  writer->SetDebugMask(0x30);
  EXPECT_EQ(0x30ul, writer->GetDebugMask());
  writer->LogMessage(1, "CAgent::Run", 12, 44, "job", "copied %d files", 3);
  writer->SetDebugLevel(0);
  writer->LogMessage(1, "CAgent::Run", 13, 44, nullptr, "now above the level");

  // A thread's attachment stamps its job and context where a line has none.
  const auto attached = boost::make_shared<CLogWriterInterfaceThreadWrapper>(writer, 77, "worker");
  EXPECT_EQ(attached, attached->GetThreadAttachment());
  EXPECT_EQ(0, attached->GetDebugLevel());
  attached->LogMessage(0, "CWorker::Step", 5, 0, nullptr, "attached");
  attached->LogMessage(0, "CWorker::Step", 6, 9, "own", "own job and context");

  const std::string start = LineStart();
  const std::vector<std::string> expected = {
      start + "44  " + kPrefixField + "CAgent::Run(12) - job copied 3 files",
      start + "77  " + kPrefixField + "CWorker::Step(5) - worker attached",
      start + "9   " + kPrefixField + "CWorker::Step(6) - own own job and context",
  };
  std::vector<std::string> body = BodyLines(folder.File(app + ".log"));
  for (std::string& line : body) line = MaskTime(line);
  EXPECT_EQ(expected, body);

  // Without a folder the log goes to the temporary folder.
  const std::string tempApp = TestApp("WriterTempApp");
  const std::string tempLog = FXPlatform::TempDirectory() + tempApp + ".log";
  FXPlatform::DeleteFileAt(tempLog);
  CreateDefaultLogWriter(tempApp.c_str())->LogMessage(0, "F", 1, 0, nullptr, "in temp");
  EXPECT_EQ(1u, BodyLines(tempLog).size());
  EXPECT_FALSE(FXPlatform::DeleteFileAt(tempLog).IsError());
}

TEST(LogWriters, ADefaultWriterWhoseLoggerFailedClaimsNoLevel) {
  CScratchFolder folder("writerfail");
  const boost::shared_ptr<CLogWriterInterface> writer = CreateDefaultLogWriter(folder.Path(), "");
  EXPECT_EQ(0, writer->GetDebugLevel());
  writer->SetDebugLevel(3);
  EXPECT_EQ(0, writer->GetDebugLevel());
  writer->LogMessage(-1, "F", 1, 0, nullptr, "dropped");
}

TEST(LineWriters, HexDumpOfTwentyBytes) {
  unsigned char data[20];
  for (int i = 0; i < 20; ++i) data[i] = static_cast<unsigned char>(i < 16 ? 'A' + i : 0x7E + i - 16);
  data[3] = '\n';
  CCollectingLineWriter writer;
  ASSERT_FALSE(writer.WriteBuffer("header", 0, data, sizeof data).IsError());
  const std::vector<std::string> expected = {
      "    header 00000000: 41 42 43 0A 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50  ABC.EFGHIJKLMNOP",
      "    header 00000010: 7E 7F 80 81" + std::string(12 * 3, ' ') + "  ~...",
  };
  EXPECT_EQ(expected, writer.lines);

  writer.lines.clear();
  ASSERT_FALSE(writer.WriteBuffer(nullptr, 0x1000, data, 1).IsError());
  EXPECT_EQ("           00001000: 41" + std::string(15 * 3, ' ') + "  A", writer.lines.at(0));
  EXPECT_FALSE(writer.WriteBuffer("empty", 0, nullptr, 0).IsError());
  EXPECT_TRUE(FXErrorUtil::IsWin32(writer.WriteBuffer("null", 0, nullptr, 4), ERROR_INVALID_PARAMETER));
}

TEST(LineWriters, WriteLineFormatsAndMarksOverflow) {
  CCollectingLineWriter writer;
  ASSERT_FALSE(writer.WriteLine("%s has %d items", "set", 3).IsError());
  const std::string huge(200000, 'h');
  ASSERT_FALSE(writer.WriteLine("%s", huge.c_str()).IsError());
  ASSERT_EQ(2u, writer.lines.size());
  EXPECT_EQ("set has 3 items", writer.lines[0]);
  EXPECT_EQ(0u, writer.lines[1].find("[BUFFEROVERFLOW] hhh"));
  EXPECT_LT(writer.lines[1].size(), huge.size());
  const char* volatile noFormat = nullptr;
  EXPECT_TRUE(FXErrorUtil::IsWin32(writer.WriteLine(noFormat), ERROR_INVALID_PARAMETER));
  EXPECT_EQ(2u, writer.lines.size());
}

TEST(LineWriters, OptionsIgnoreTheCaseOfTheirNames) {
  EXPECT_FALSE(CLineWriter().IsOptionEnabled("anything"));
  CLineWriterWithOptions options;
  options.SetOption("ShowDetails", true);
  options.SetOption("Verbose", false);
  EXPECT_TRUE(options.IsOptionEnabled("showdetails"));
  EXPECT_TRUE(options.IsOptionEnabled("SHOWDETAILS"));
  EXPECT_FALSE(options.IsOptionEnabled("verbose"));
  EXPECT_FALSE(options.IsOptionEnabled("Unknown"));
  options.SetOption("SHOWdetails", false);
  EXPECT_FALSE(options.IsOptionEnabled("ShowDetails"));
}

TEST(LineWriters, LogWriterLineWriterLogsAtLevelZero) {
  const auto recorder = boost::make_shared<CRecordingWriter>();
  CLogWriterLineWriter plain(recorder);
  CLogWriterLineWriter located(recorder, FXCodeLocation("filter.cpp", "CFilterSet::Dump", 310));
  EXPECT_FALSE(plain.WriteLine("rule %d", 1).IsError());
  EXPECT_FALSE(located.WriteString("located").IsError());
  recorder->SetDebugLevel(-1);
  EXPECT_FALSE(plain.WriteString("not logged: negative level").IsError());

  const std::vector<std::string> expected = {
      "0|CLogWriterLineWriter::WriteString|37|0|(none)|rule 1",
      "0|CFilterSet::Dump|310|0|(none)|located",
  };
  EXPECT_EQ(expected, recorder->entries);
}

}  // namespace
