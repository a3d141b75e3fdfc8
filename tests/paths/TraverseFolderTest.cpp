#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "logging/LogWriterInterface.h"
#include "paths/Path.h"
#include "paths/TraverseFolder.h"
#include "platform/CompleteTypes.h"
#include "platform/DirectoryEnum.h"
#include "platform/OsFileApi.h"
#include "support/GeneratedTree.h"
#include "threads/Event.h"

namespace {
namespace fs = std::filesystem;

// Keeps every line at level 6 and below, formatted.
class CCapture : public CLogWriterNull {
 public:
  int GetDebugLevel() override { return 6; }
  void LogMessage(int level, const char* function, unsigned long line, unsigned long long jobId, const char* context,
                  const char* format, ...) override {
    va_list args;
    va_start(args, format);
    LogMessageV(level, function, line, jobId, context, format, args);
    va_end(args);
  }
  void LogMessageV(int level, const char* function, unsigned long, unsigned long long, const char*,
                   const char* format, va_list args) override {
    char text[2048];
    std::vsnprintf(text, sizeof text, format, args);
    std::lock_guard<std::mutex> hold(m_lock);
    m_lines.push_back(std::to_string(level) + " " + function + ": " + text);
  }
  // The lines that begin with the prefix (after level and function).
  std::vector<std::string> Find(const std::string& prefix) {
    std::lock_guard<std::mutex> hold(m_lock);
    std::vector<std::string> found;
    for (const std::string& line : m_lines) {
      const std::size_t colon = line.find(": ");
      if (line.compare(colon + 2, prefix.size(), prefix) == 0) found.push_back(line);
    }
    return found;
  }

 private:
  std::mutex m_lock;
  std::vector<std::string> m_lines;
};

// Records what every hook saw, by path relative to the root.
class CRecorder : public CTraverseFolder {
 public:
  explicit CRecorder(const std::string& root, boost::shared_ptr<CLogWriterInterface> log = {})
      : CTraverseFolder(log), m_root(FXPlatform::LibraryPathOf(root)) {}

  CZuError Run(int workers, const std::string& output = "Out") {
    SetMaxWorkers(workers);
    AddFolderToList(m_root, output);
    return Traverse();
  }

  std::string Relative(const std::string& path) const {
    return path.size() > m_root.size() ? path.substr(m_root.size() + 1) : std::string();
  }

  std::mutex lock;
  std::map<std::string, unsigned long long> files;  // relative path -> size
  std::map<std::string, std::string> outputs;       // relative path -> output path
  std::set<std::string> folders;
  std::multiset<std::string> traversed;             // OnTraverseFolder, relative
  std::multiset<std::string> reparseFolders;
  std::vector<std::pair<std::string, DWORD>> failed;  // relative path, Win32 code; "" data for folders
  std::atomic<int> onFile{0};

 protected:
  CZuError OnTraverseFolder(const std::string& input, const std::string&) override {
    std::lock_guard<std::mutex> hold(lock);
    traversed.insert(Relative(input));
    return CZuError::Success();
  }
  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    {
      std::lock_guard<std::mutex> hold(lock);
      EXPECT_TRUE(folders.insert(Relative(input)).second) << input;
      outputs[Relative(input)] = output;
    }
    return CTraverseFolder::OnFolder(input, output, data);
  }
  CZuError OnFile(const std::string& input, const std::string& output, const TFindData& data) override {
    ++onFile;
    std::lock_guard<std::mutex> hold(lock);
    EXPECT_TRUE(files.emplace(Relative(input), data.nFileSize).second) << "twice: " << input;
    outputs[Relative(input)] = output;
    return CZuError::Success();
  }
  CZuError OnReparsePointFolder(const std::string& input, const std::string&, const TFindData&) override {
    std::lock_guard<std::mutex> hold(lock);
    reparseFolders.insert(Relative(input));
    return CZuError::Success();
  }
  CZuError OnFailedItem(const std::string& input, const std::string&, const TFindData* data,
                        const CZuError& error) override {
    std::lock_guard<std::mutex> hold(lock);
    failed.emplace_back(data == nullptr ? "folder:" + Relative(input) : Relative(input),
                        FXErrorUtil::GetWin32(error));
    return CZuError::Success();
  }

  std::string m_root;
};

TEST(TraverseFolder, WalksAGeneratedTreeExactlyWithOneAndTwoWorkers) {
  const std::string root = ZuTest::ScratchFolder("walk");
  const ZuTest::TGeneratedTree tree = ZuTest::GenerateTree(root, {900, 4, 7, 60, 3});
  for (const int workers : {1, 2, 4}) {
    CRecorder walk(root);
    const CZuError result = walk.Run(workers);
    ASSERT_FALSE(result.IsError()) << result.AsString();
    ASSERT_EQ(tree.files.size(), walk.files.size()) << workers;
    for (std::size_t i = 0; i < tree.files.size(); ++i) {
      ASSERT_EQ(1u, walk.files.count(tree.files[i])) << tree.files[i];
      EXPECT_EQ(tree.fileSizes[i], walk.files.at(tree.files[i])) << tree.files[i];
      EXPECT_EQ("Out\\" + tree.files[i], walk.outputs.at(tree.files[i]));
    }
    EXPECT_EQ(std::set<std::string>(tree.folders.begin(), tree.folders.end()), walk.folders);
    // Every folder (and the root) is enumerated exactly once.
    EXPECT_EQ(tree.folders.size() + 1, walk.traversed.size());
    EXPECT_EQ(std::set<std::string>(walk.traversed.begin(), walk.traversed.end()).size(), walk.traversed.size());
    const TTraverseStatistics s = walk.GetStatistics();
    EXPECT_EQ(tree.folders.size() + 1, s.foldersEnumerated);
    EXPECT_EQ(tree.folders.size() + tree.files.size(), s.entries);
    EXPECT_EQ(0u, s.foldersSkipped + s.failedEntries + s.consumerErrors + s.folderErrors + s.retries);
  }
  ZuTest::RemoveTree(root);
}

// Prunes every folder named d0: below them nothing is opened.
class CPruner : public CRecorder {
 public:
  using CRecorder::CRecorder;

 protected:
  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    if (data.cFileName == "d0") return CZuError::Success();
    return CRecorder::OnFolder(input, output, data);
  }
};

TEST(TraverseFolder, AnOnFolderThatDoesNotQueuePrunesTheSubtree) {
  const std::string root = ZuTest::ScratchFolder("prune");
  const ZuTest::TGeneratedTree tree = ZuTest::GenerateTree(root, {800, 4, 6, 40, 5});
  CPruner walk(root);
  ASSERT_FALSE(walk.Run(2).IsError());
  std::size_t kept = 0;
  for (const std::string& folder : tree.folders) {
    const bool pruned = folder == "d0" || folder.rfind("d0\\", 0) == 0 || folder.find("\\d0\\") != std::string::npos ||
                        (folder.size() >= 3 && folder.compare(folder.size() - 3, 3, "\\d0") == 0);
    EXPECT_EQ(pruned ? 0u : 1u, walk.traversed.count(folder)) << folder;
    kept += pruned ? 0 : 1;
  }
  EXPECT_EQ(kept + 1, walk.GetStatistics().foldersEnumerated);
  ZuTest::RemoveTree(root);
}

// Deletes the folder it is told about before queuing it: the worker finds
// it gone, which is reported once, and the walk goes on.
class CDeleter : public CRecorder {
 public:
  CDeleter(const std::string& root, const std::string& system, boost::shared_ptr<CLogWriterInterface> log = {})
      : CRecorder(root, log), m_system(system) {}

 protected:
  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    if (data.cFileName == "doomed") fs::remove_all(fs::u8path(m_system) / "doomed");
    return CRecorder::OnFolder(input, output, data);
  }
  std::string m_system;
};

TEST(TraverseFolder, FoldersThatCannotBeOpenedAreReportedOnceAndSkipped) {
  const std::string root = ZuTest::ScratchFolder("gone");
  fs::create_directories(fs::u8path(root) / "doomed" / "inner");
  fs::create_directories(fs::u8path(root) / "sibling");
  std::ofstream(fs::u8path(root) / "sibling" / "kept.txt") << "1";
  CDeleter walk(root, root);
  const CZuError result = walk.Run(1);
  EXPECT_FALSE(result.IsError()) << result.AsString();  // not fatal
  ASSERT_EQ(1u, walk.failed.size());
  EXPECT_EQ("folder:doomed", walk.failed[0].first);
  EXPECT_TRUE(walk.failed[0].second == ERROR_PATH_NOT_FOUND || walk.failed[0].second == ERROR_FILE_NOT_FOUND)
      << walk.failed[0].second;
  EXPECT_EQ(1u, walk.files.count("sibling\\kept.txt"));
  const TTraverseStatistics s = walk.GetStatistics();
  EXPECT_EQ(1u, s.foldersSkipped);
  EXPECT_EQ(2u, s.foldersEnumerated);  // the root and sibling
  ZuTest::RemoveTree(root);
}

// A source that breaks the enumeration of folders named "flaky" after a
// few entries, `failures` times, with `code`.
class CFlakySource : public FXPlatform::IFolderSource {
 public:
  CFlakySource(DWORD code, int failures) : m_code(code), m_failuresLeft(failures) {}
  CZuError Open(const std::string& folder) override {
    m_flaky = folder.size() >= 5 && folder.compare(folder.size() - 5, 5, "flaky") == 0;
    m_given = 0;
    return m_real.Open(folder);
  }
  FXPlatform::EFindStep Next(TFindData& data, CZuError& error) override {
    if (m_flaky && m_failuresLeft != 0 && m_given == 3) {
      if (m_failuresLeft > 0) --m_failuresLeft;
      error = FXErrorUtil::ErrorWin32(ZU_HERE("CFlakySource::Next"), m_code);
      return FXPlatform::EFindStep::kFailed;
    }
    ++m_given;
    return m_real.Next(data, error);
  }

 private:
  FXPlatform::CDirectoryEnum m_real;
  DWORD m_code;
  int m_failuresLeft;  // -1: for ever
  bool m_flaky = false;
  int m_given = 0;
};

class CFlakyWalk : public CRecorder {
 public:
  CFlakyWalk(const std::string& root, DWORD code, int failures, boost::shared_ptr<CLogWriterInterface> log = {})
      : CRecorder(root, log), m_code(code), m_failures(failures) {}

 protected:
  std::unique_ptr<FXPlatform::IFolderSource> CreateFolderSource() override {
    return std::unique_ptr<FXPlatform::IFolderSource>(new CFlakySource(m_code, m_failures));
  }
  DWORD m_code;
  int m_failures;
};

TEST(TraverseFolder, NetworkLossRetriesWithoutHandingAnEntryOutTwice) {
  const std::string root = ZuTest::ScratchFolder("retry");
  fs::create_directories(fs::u8path(root) / "flaky");
  for (int i = 0; i < 10; ++i) std::ofstream(fs::u8path(root) / "flaky" / ("f" + std::to_string(i))) << "x";
  const struct {
    DWORD code;
    int failures;
    bool fails;
    unsigned long long retries;
    unsigned long long files;
  } cases[] = {
      {ERROR_NETNAME_DELETED, 2, false, 2, 10},     // recovers; each file once
      {ERROR_NETWORK_UNREACHABLE, -1, true, 5, 3},  // gives up after five retries
      {ERROR_ACCESS_DENIED, 1, true, 0, 3},         // not a network loss: no retry
  };
  for (const auto& c : cases) {
    CFlakyWalk walk(root, c.code, c.failures);
    const CZuError result = walk.Run(1);
    EXPECT_EQ(c.fails, result.IsError()) << c.code << " " << result.AsString();
    if (c.fails) {
      EXPECT_TRUE(FXErrorUtil::IsWin32(result, c.code)) << result.AsString();
    }
    if (c.retries == 5) {
      EXPECT_NE(std::string::npos, result.AsString().find("Retries=[5]")) << result.AsString();
    }
    const TTraverseStatistics s = walk.GetStatistics();
    EXPECT_EQ(c.retries, s.retries) << c.code;
    EXPECT_EQ(c.files, walk.files.size()) << c.code;  // the map insert checks "once"
    EXPECT_EQ(c.fails ? 1u : 0u, s.folderErrors) << c.code;
  }
  ZuTest::RemoveTree(root);
}

// Hooks that fail or throw on chosen files.
class CFailing : public CRecorder {
 public:
  CFailing(const std::string& root, bool throws) : CRecorder(root), m_throws(throws) {}

 protected:
  CZuError OnFile(const std::string& input, const std::string& output, const TFindData& data) override {
    if (data.cFileName.rfind("bad", 0) == 0) {
      ++onFile;
      if (m_throws) throw std::runtime_error("consumer blew up");
      return FXErrorUtil::ErrorWin32(ZU_HERE("CFailing::OnFile"), ERROR_DISK_FULL, "%s", input.c_str());
    }
    return CRecorder::OnFile(input, output, data);
  }
  bool m_throws;
};

TEST(TraverseFolder, ConsumerErrorsEndTheirFolderUnlessIgnored) {
  const std::string root = ZuTest::ScratchFolder("consumer");
  const fs::path base = fs::u8path(root);
  fs::create_directories(base / "bad");
  fs::create_directories(base / "good");
  for (int i = 0; i < 20; ++i) std::ofstream(base / "bad" / ("bad" + std::to_string(i))) << "";
  for (int i = 0; i < 20; ++i) std::ofstream(base / "good" / ("ok" + std::to_string(i))) << "";

  {  // a failure ends its folder after the first bad file; the rest is walked
    CFailing walk(root, false);
    const CZuError result = walk.Run(2);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_DISK_FULL)) << result.AsString();
    EXPECT_NE(std::string::npos, result.AsString().find("CTraverseFolder::ProcessItem"));
    EXPECT_EQ(1, walk.onFile.load() - 20);
    EXPECT_EQ(20u, walk.files.size());
    EXPECT_EQ(1u, walk.GetStatistics().consumerErrors);
  }
  {  // ignored: every bad file is offered, the traversal succeeds
    CFailing walk(root, false);
    walk.ignoreConsumerError(FXErrorUtil::ErrorWin32(ZU_HERE("test"), ERROR_DISK_FULL));
    const CZuError result = walk.Run(2);
    EXPECT_FALSE(result.IsError()) << result.AsString();
    EXPECT_EQ(40, walk.onFile.load());
    EXPECT_EQ(20u, walk.GetStatistics().ignoredErrors);
    EXPECT_EQ(0u, walk.GetStatistics().consumerErrors);
  }
  {  // a throwing hook is a failure with 1064; nothing escapes the worker
    CFailing walk(root, true);
    const CZuError result = walk.Run(2);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_EXCEPTION_IN_SERVICE)) << result.AsString();
    EXPECT_NE(std::string::npos, result.AsString().find("consumer blew up"));
    EXPECT_EQ(20u, walk.files.size());
  }
  ZuTest::RemoveTree(root);
}

class CFailedItemReportFails : public CRecorder {
 public:
  using CRecorder::CRecorder;

 protected:
  CZuError OnFailedItem(const std::string&, const std::string&, const TFindData*, const CZuError&) override {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFailedItemReportFails"), ERROR_BUSY);
  }
};

class CInitFails : public CRecorder {
 public:
  CInitFails(const std::string& root, int failures) : CRecorder(root), m_failuresLeft(failures) {}

 protected:
  CZuError OnInitializeWorker() override {
    if (m_failuresLeft.fetch_sub(1) > 0)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CInitFails"), ERROR_NOT_READY, "no worker today");
    return CZuError::Success();
  }
  std::atomic<int> m_failuresLeft;
};

TEST(TraverseFolder, FailingReportsAndWorkerInitialisation) {
  const std::string root = ZuTest::ScratchFolder("init");
  fs::create_directories(fs::u8path(root) / "a");
  std::ofstream(fs::u8path(root) / "a" / "x") << "";
  {
    // The root cannot be opened; its report fails too.
    CFailedItemReportFails failing(root + "/missing");
    const CZuError result = failing.Run(1);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_BUSY)) << result.AsString();
    EXPECT_NE(std::string::npos, result.AsString().find("Failed to report failed item.")) << result.AsString();
  }
  {  // no worker starts: the traversal fails with the reason
    CInitFails walk(root, 2);
    const CZuError result = walk.Run(2);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_NOT_READY)) << result.AsString();
    EXPECT_EQ(0u, walk.files.size());
  }
  {  // one of two workers starts: it does all the work
    CInitFails walk(root, 1);
    const CZuError result = walk.Run(2);
    EXPECT_FALSE(result.IsError()) << result.AsString();
    EXPECT_EQ(1u, walk.files.size());
  }
  ZuTest::RemoveTree(root);
}

class CAbortAfter : public CRecorder, public CAbortOperationCheck {
 public:
  CAbortAfter(const std::string& root, int after, bool byEvent, boost::shared_ptr<CLogWriterInterface> log = {})
      : CRecorder(root, log), m_after(after), m_event(boost::make_shared<FXEvent>(FXEvent::kManualReset)) {
    if (byEvent)
      SetAbortEvent(m_event);
    else
      SetAbortCheck(this);
  }
  bool IsOperationAborted() override { return onFile.load() >= m_after; }

 protected:
  CZuError OnFile(const std::string& input, const std::string& output, const TFindData& data) override {
    const CZuError result = CRecorder::OnFile(input, output, data);
    if (onFile.load() == m_after) m_event->Set();
    return result;
  }
  int m_after;
  boost::shared_ptr<FXEvent> m_event;
};

TEST(TraverseFolder, AbortMidwayByEventAndByCheck) {
  const std::string root = ZuTest::ScratchFolder("abort");
  const ZuTest::TGeneratedTree tree = ZuTest::GenerateTree(root, {1200, 4, 6, 50, 11});
  for (const bool byEvent : {true, false}) {
    CAbortAfter walk(root, 100, byEvent);
    const CZuError result = walk.Run(2);
    EXPECT_TRUE(FXErrorUtil::IsWin32(result, ERROR_OPERATION_ABORTED)) << result.AsString();
    EXPECT_NE(std::string::npos, result.AsString().find("Operation aborted"));
    EXPECT_GE(walk.files.size(), 100u);
    EXPECT_LT(walk.files.size(), tree.files.size());
  }
  ZuTest::RemoveTree(root);
}

TEST(TraverseFolder, LogLines) {
  const std::string root = ZuTest::ScratchFolder("log");
  const fs::path base = fs::u8path(root);
  fs::create_directories(base / "doomed");
  fs::create_directories(base / "flaky");
  for (int i = 0; i < 5; ++i) std::ofstream(base / "flaky" / ("f" + std::to_string(i))) << "";
  const std::string top = FXPlatform::LibraryPathOf(root);
  {
    const auto log = boost::make_shared<CCapture>();
    CDeleter walk(root, root, log);
    ASSERT_FALSE(walk.Run(1).IsError());
    const auto skipped = log->Find("TQFindFirstFile failed, ignoring, SearchPath=[" + top + "\\doomed\\*], error=");
    EXPECT_EQ(1u, skipped.size());
    EXPECT_EQ(1u, log->Find("OnTraverseFolder(" + top + ",Out) FoldersToTraverse=[0]").size());
    EXPECT_EQ(1u, log->Find("oFile.name=[doomed], input=[" + top + "\\doomed], output=[Out\\doomed]").size());
    EXPECT_EQ(3u, log->Find("Input=[").size());  // the root and two folders queued
  }
  {
    const auto log = boost::make_shared<CCapture>();
    CFlakyWalk walk(root, ERROR_NETNAME_DELETED, 1, log);
    ASSERT_FALSE(walk.Run(1).IsError());
    const auto retried = log->Find("Retrying folder enumeration after error encountered, Folder=[" + top +
                                   "\\flaky], LastProcessedFileName=[");
    ASSERT_EQ(1u, retried.size());
    EXPECT_EQ('1', retried[0][0]);
  }
  {
    const auto log = boost::make_shared<CCapture>();
    CAbortAfter walk(root, 0, false, log);
    EXPECT_TRUE(walk.Run(1).IsError());
    EXPECT_EQ(1u, log->Find("Traverse(" + top + ",Out) aborted, FoldersToTraverse=[").size());
  }
  ZuTest::RemoveTree(root);
}

// A chain of nested folders with a file at the bottom. Windows takes long
// paths in the "\\?\" form; POSIX refuses paths beyond PATH_MAX in any
// form, so there the chain is made a step at a time from the folder above.
std::string MakeChain(const std::string& root, int depth, const std::string& name) {
  std::string relative;
  for (int i = 0; i < depth; ++i) relative += name + "\\";
  if (kZuIsWindows) {
    std::string path = "\\\\?\\" + fs::absolute(fs::u8path(root)).u8string();
    for (int i = 0; i < depth; ++i) fs::create_directory(fs::u8path(path += "\\" + name));
    std::ofstream(fs::u8path(path + "\\bottom.txt")) << "bottom";
  } else {
    const fs::path saved = fs::current_path();
    fs::current_path(fs::u8path(root));
    for (int i = 0; i < depth; ++i) {
      fs::create_directory(fs::u8path(name));
      fs::current_path(fs::u8path(name));
    }
    std::ofstream("bottom.txt") << "bottom";
    fs::current_path(saved);
  }
  return relative + "bottom.txt";
}

// Undone from the bottom, the same way it was made.
void RemoveChain(const std::string& root, int depth, const std::string& name) {
  if (kZuIsWindows) {
    std::vector<std::string> chain{"\\\\?\\" + fs::absolute(fs::u8path(root)).u8string()};
    for (int i = 0; i < depth; ++i) chain.push_back(chain.back() + "\\" + name);
    fs::remove(fs::u8path(chain.back() + "\\bottom.txt"));
    while (chain.size() > 1) {
      fs::remove(fs::u8path(chain.back()));
      chain.pop_back();
    }
    return;
  }
  const fs::path saved = fs::current_path();
  fs::current_path(fs::u8path(root));
  for (int i = 0; i < depth; ++i) fs::current_path(fs::u8path(name));
  fs::remove("bottom.txt");
  for (int i = 0; i < depth; ++i) {
    fs::current_path("..");
    fs::remove(fs::u8path(name));
  }
  fs::current_path(saved);
}

TEST(TraverseFolder, Depth1000AndPathsBeyond4096Bytes) {
  // Under wine every call resolves the whole path again, so a Windows
  // build goes 300 deep: still far beyond MAX_PATH.
  const int depth = kZuIsWindows ? 300 : 1000;
  const struct {
    int depth;
    const char* name;
    bool posixOnly;  // wine hands the kernel the whole path, which it refuses
  } cases[] = {{depth, "d", false}, {1000, "dddddd", true}};
  for (const auto& c : cases) {
    if (c.posixOnly && kZuIsWindows) continue;
    const std::string root = ZuTest::ScratchFolder("deep");
    const std::string bottom = MakeChain(root, c.depth, c.name);
    CRecorder walk(root);
    const CZuError result = walk.Run(2);
    EXPECT_FALSE(result.IsError()) << result.AsString();
    EXPECT_EQ(1u, walk.files.count(bottom));
    EXPECT_EQ(static_cast<std::size_t>(c.depth), walk.folders.size());
    EXPECT_EQ(static_cast<unsigned long long>(c.depth) + 1, walk.GetStatistics().foldersEnumerated);
    RemoveChain(root, c.depth, c.name);
    ZuTest::RemoveTree(root);
  }
}

TEST(TraverseFolder, OneHundredThousandEntriesInOneFolder) {
  const std::string root = ZuTest::ScratchFolder("wide");
  // wine looks through the whole folder for every name it creates (names
  // are case-insensitive there), so a Windows build makes 4,000: still
  // several batches of the enumeration.
  const int count = kZuIsWindows ? 4000 : 100000;
  for (int i = 0; i < count; ++i) std::ofstream(fs::u8path(root) / ("entry" + std::to_string(i)));
  CRecorder walk(root);
  ASSERT_FALSE(walk.Run(2).IsError());
  EXPECT_EQ(static_cast<std::size_t>(count), walk.files.size());
  EXPECT_EQ(1u, walk.files.count("entry" + std::to_string(count - 1)));
  ZuTest::RemoveTree(root);
}

TEST(TraverseFolder, LinksAreReportedNotFollowedAndBadNamesAreFailedItems) {
  if (kZuIsWindows) GTEST_SKIP() << "symbolic links and undecodable names are made on the POSIX side";
  const std::string root = ZuTest::ScratchFolder("links");
  const fs::path base = fs::u8path(root);
  fs::create_directories(base / "a" / "b");
  fs::create_directory_symlink("..", base / "a" / "b" / "loop");  // leads back up
  std::ofstream(base / "a" / "bad\xFEname") << "";
  std::ofstream(base / "a" / "back\\slash") << "";
  CRecorder walk(root);
  const CZuError result = walk.Run(2);
  EXPECT_FALSE(result.IsError()) << result.AsString();
  EXPECT_EQ(std::multiset<std::string>{"a\\b\\loop"}, walk.reparseFolders);
  EXPECT_EQ(3u, walk.GetStatistics().foldersEnumerated);
  std::sort(walk.failed.begin(), walk.failed.end());
  const std::vector<std::pair<std::string, DWORD>> expected{{"a\\back\\slash", ERROR_INVALID_NAME},
                                                            {"a\\bad\\xFEname", ERROR_NO_UNICODE_TRANSLATION}};
  EXPECT_EQ(expected, walk.failed);
  EXPECT_EQ(2u, walk.GetStatistics().failedEntries);
  ZuTest::RemoveTree(root);
}

// Follows folder links through AddReparsePointToList, unless they lead
// back to an ancestor.
class CFollower : public CRecorder {
 public:
  using CRecorder::CRecorder;
  std::atomic<int> entered{0};
  std::atomic<int> cyclic{0};

 protected:
  CZuError OnReparsePointFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    CRecorder::OnReparsePointFolder(input, output, data);
    if (FXPath::CheckForCyclicSymbolicLink(input).IsError()) {
      ++cyclic;
      return CZuError::Success();
    }
    return AddReparsePointToList(input, output, input, data.dwReserved0, std::string());
  }
  CZuError OnTraverseReparsePoint(const std::string&, const std::string&, const std::string&, DWORD tag,
                                  const std::string&) override {
    EXPECT_EQ(DWORD(IO_REPARSE_TAG_SYMLINK), tag);
    ++entered;
    return CZuError::Success();
  }
};

TEST(TraverseFolder, ConsumersThatFollowLinksStopAtCycles) {
  if (kZuIsWindows) GTEST_SKIP() << "symbolic links are made on the POSIX side";
  const std::string root = ZuTest::ScratchFolder("follow");
  const fs::path base = fs::u8path(root);
  fs::create_directories(base / "a" / "b");
  fs::create_directories(base / "elsewhere");
  std::ofstream(base / "elsewhere" / "there.txt") << "";
  fs::create_directory_symlink("..", base / "a" / "b" / "loop");
  fs::create_directory_symlink("../elsewhere", base / "a" / "away");
  CFollower walk(root);
  const CZuError result = walk.Run(2);
  EXPECT_FALSE(result.IsError()) << result.AsString();
  EXPECT_EQ(1, walk.entered.load());
  EXPECT_EQ(1, walk.cyclic.load());
  EXPECT_EQ(1u, walk.files.count("a\\away\\there.txt"));
  EXPECT_EQ(1u, walk.files.count("elsewhere\\there.txt"));
  ZuTest::RemoveTree(root);
}

class CRoots : public CTraverseFolder {
 public:
  void Add(const std::string& input, const std::string& output) { AddFolderToList(input, output); }
  bool Already(const std::string& folder, std::string& out) { return FolderWillAlreadyBeTraversed(folder, "", out); }
};

TEST(TraverseFolder, FolderWillAlreadyBeTraversedLooksAtTheRoots) {
  CRoots walk;
  walk.Add("Z:\\data", "Y:\\copy");
  walk.Add("\\\\?\\Z:\\other\\", "Y:\\o");
  const struct {
    const char* folder;
    const char* output;  // null: not covered
  } cases[] = {
      {"Z:\\data", "Y:\\copy"},
      {"z:\\DATA\\sub\\deeper", "Y:\\copy\\sub\\deeper"},
      {"Z:\\other\\x", "Y:\\o\\x"},
      {"Z:\\database", nullptr},
      {"Z:\\", nullptr},
  };
  for (const auto& c : cases) {
    std::string out = "untouched";
    EXPECT_EQ(c.output != nullptr, walk.Already(c.folder, out)) << c.folder;
    EXPECT_EQ(c.output != nullptr ? c.output : "untouched", out) << c.folder;
  }
}

}  // namespace
