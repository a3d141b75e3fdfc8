// The machinery behind CTraverseFolder: the queue of pending folders with
// its lock and the wake-up of idle workers, the workers themselves, and one
// folder's enumeration with its retries. Internal to the library.
#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "errors/ErrorUtil.h"
#include "errors/ZuError.h"
#include "paths/TraverseFolder.h"
#include "platform/DirectoryEnum.h"
#include "threads/AlertableEventThread.h"

class CLogWriterInterface;
class CTraverseFolderPrivate;

// One element of the queue.
struct TPendingFolder {
  enum : unsigned char { kFolder = 0, kReparsePoint = 1 };
  unsigned char kind = kFolder;
  std::string input;
  std::string output;
  std::string point;   // reparse points: the point's path
  std::string target;  // and its target
  DWORD tag = 0;
};

// A worker sleeps on its own event; the queue sets it when it hands the
// worker new work. It takes folders until the queue is empty, then goes back
// to sleep as idle.
class CTraverseFolderWorker : public CAlertableEventThread {
 public:
  explicit CTraverseFolderWorker(CTraverseFolderPrivate& traversal);
  // The hooks use this object's members: stop before they go.
  ~CTraverseFolderWorker() override { Stop(true); }

  // What this worker did; read once the worker has stopped.
  const TTraverseStatistics& Statistics() const { return m_statistics; }

 protected:
  void OnStart() override;
  void OnEvent() override;

 private:
  friend class CTraverseFolderPrivate;
  CTraverseFolderPrivate& m_traversal;
  std::unique_ptr<FXPlatform::IFolderSource> m_source;
  TFindData m_data;
  // The names handed out from the folder in hand, each followed by a NUL:
  // what a restarted enumeration must not hand out again. Kept as one
  // string, whose capacity stays, so that recording a name never allocates.
  std::string m_handedOut;
  TTraverseStatistics m_statistics;
};

class CTraverseFolderPrivate {
 public:
  // The enumeration's codes that mean "the network went away": retried.
  static constexpr int kMaxRetries = 5;
  static constexpr int kRetryDelayMs = 1000;

  CTraverseFolderPrivate(CTraverseFolder& owner, boost::shared_ptr<CLogWriterInterface> log);
  ~CTraverseFolderPrivate();

  CZuError Traverse();
  void Add(TPendingFolder&& folder);
  void StopAllWorkers();

  // Worker side.
  bool Take(TPendingFolder& folder, CTraverseFolderWorker& worker);
  // OnInitializeWorker and the worker's folder source; false (logged, and
  // the worker counted out) when the worker cannot take work.
  bool InitializeWorker(CTraverseFolderWorker& worker);
  const std::string& Name() const { return m_name; }
  void TraverseOne(CTraverseFolderWorker& worker, const TPendingFolder& folder);
  bool IsAborted();

  CTraverseFolder& m_owner;
  boost::shared_ptr<CLogWriterInterface> m_log;
  int m_maxWorkers = 1;
  boost::shared_ptr<FXEvent> m_abortEvent;
  CAbortOperationCheck* m_abortCheck = nullptr;
  std::vector<HRESULT> m_ignored;
  std::vector<TPendingFolder> m_roots;
  TTraverseStatistics m_statistics;

 private:
  CZuError EnumerateFolder(CTraverseFolderWorker& worker, const TPendingFolder& folder, const std::string& searchPath);
  // A hook's failure: false when it ends the folder (recorded), true when
  // it is one the consumer asked to pass over.
  bool PassOver(CTraverseFolderWorker& worker, const CZuError& error);
  void RecordFailure(const CZuError& error);
  void Log(int level, const char* function, unsigned long line, const char* format, ...) ZU_PRINTF_FORMAT(5, 6);

  std::mutex m_lock;  // the queue, the idle list, m_busy, m_failure
  std::deque<TPendingFolder> m_queue;
  std::vector<CTraverseFolderWorker*> m_idle;
  std::size_t m_busy = 0;
  bool m_started = false;
  CZuError m_failure = CZuError::Success();
  CZuError m_startFailure = CZuError::Success();
  std::atomic<bool> m_aborted{false};
  std::vector<std::unique_ptr<CTraverseFolderWorker>> m_workers;
  // Set when the last busy worker goes idle: the thread in Traverse() waits
  // on it. Its name, "Local\TQ-TraverseFolder-%p", names the workers too.
  boost::shared_ptr<FXEvent> m_signal;
  std::string m_name;
};
