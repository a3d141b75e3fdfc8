// CTraverseFolder: a folder tree walked breadth first by a pool of worker
// threads, each entry handed to a hook chosen by its kind.
//
// The consumer derives, lists its start folders with AddFolderToList and
// calls Traverse(). Workers take folders from a first-in, first-out queue,
// enumerate them (platform/DirectoryEnum.h: one TFindData per entry) and
// call ProcessItem for every entry, which builds the input path (where the
// entry is) and the output path (where the consumer is to put it) and calls
// OnFolder, OnFile, OnReparsePointFolder or OnReparsePointFile. The default
// OnFolder queues the folder: that is how the walk descends, and a consumer
// that overrides it without calling it prunes the subtree. Reparse points
// (symbolic links) are reported, never entered, unless the consumer queues
// them with AddReparsePointToList.
//
// Paths are UTF-8 in the library's path form (backslashes; on POSIX the file
// system is drive Z:). An output folder left empty gives empty output paths.
//
// Hooks run on the worker threads, several at once with more than one
// worker: they must be thread-safe. A hook that throws is treated as one
// that failed with ERROR_EXCEPTION_IN_SERVICE (1064).
//
// Errors, and what each does to the walk:
//   - a folder that cannot be opened: logged ("TQFindFirstFile failed,
//     ignoring, ..."), reported to OnFailedItem without a record, skipped;
//     the walk goes on and Traverse() still succeeds;
//   - an entry that cannot be described (a name the path form cannot carry,
//     a failing stat): reported to OnFailedItem, the folder goes on;
//   - an enumeration that breaks with 64, 55 or 1231 (the network went away)
//     is restarted after 1000 ms, up to 5 times, and never hands an entry out
//     twice; with any other code, or after the fifth retry, the folder ends
//     with that error. A logon failure (1326) is not retried: waiting does
//     not bring credentials back, so it ends the folder (or, when opening,
//     skips it) like any other error;
//   - a hook's failure (a consumer error) ends its folder and is the result
//     of Traverse(), unless its code was passed to ignoreConsumerError: an
//     ignored error is logged at level 2 and counted, and the folder goes on.
//     OnFailedItem's own failure is such a consumer error, "Failed to report
//     failed item.".
// Each error is logged once and counted once (GetStatistics). Traverse()
// returns the first error that ended a folder, or ERROR_OPERATION_ABORTED
// ("Operation aborted") when the walk was aborted.
#pragma once

#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/DirectoryEnum.h"

class CLogWriterInterface;
class CTraverseFolderPrivate;
class FXEvent;

// Asked by a running traversal whether to stop: between entries by the
// workers and every 100 ms by the thread in Traverse(). Must be thread-safe.
class ZUUTILS_API CAbortOperationCheck {
 public:
  virtual ~CAbortOperationCheck();
  virtual bool IsOperationAborted() = 0;
};

// What one traversal did; exact once Traverse() has returned.
struct TTraverseStatistics {
  unsigned long long foldersEnumerated = 0;  // opened and read to the end (or to a hook's failure)
  unsigned long long foldersSkipped = 0;     // could not be opened
  unsigned long long entries = 0;            // handed to ProcessItem
  unsigned long long failedEntries = 0;      // handed to OnFailedItem with a record
  unsigned long long retries = 0;            // restarted enumerations
  unsigned long long consumerErrors = 0;     // hook failures that ended a folder
  unsigned long long ignoredErrors = 0;      // hook failures passed over
  unsigned long long folderErrors = 0;       // enumerations that ended with an error
};

class ZUUTILS_API CTraverseFolder {
 public:
  // Logs to the writer; none: to nothing.
  explicit CTraverseFolder(boost::shared_ptr<CLogWriterInterface> log = boost::shared_ptr<CLogWriterInterface>());
  virtual ~CTraverseFolder();
  CTraverseFolder(const CTraverseFolder&) = delete;
  CTraverseFolder& operator=(const CTraverseFolder&) = delete;

  // Walks the folders listed so far; returns when done or aborted. One call
  // per object.
  CZuError Traverse();

  // Below 1 means 1; a new traversal has one worker.
  void SetMaxWorkers(int workers);
  // Either stops the walk: the event once it is set, the check once it
  // answers true. Workers finish the entry in hand; folders still queued
  // are dropped (their number is logged).
  void SetAbortEvent(boost::shared_ptr<FXEvent> event);
  void SetAbortCheck(CAbortOperationCheck* check);
  // Hook failures with a code that matches this one's (CZuError::Is) no
  // longer end their folder nor fail the traversal (see above).
  void ignoreConsumerError(const CZuError& error);

  TTraverseStatistics GetStatistics() const;

 protected:
  // Queues a folder (logged at level 6). Before Traverse() the folders so
  // listed are the roots that FolderWillAlreadyBeTraversed looks at.
  CZuError AddFolderToList(const std::string& inputFolder, const std::string& outputFolder = std::string());
  // Queues a reparse point to be entered: a worker calls
  // OnTraverseReparsePoint and, when it succeeds, enumerates inputFolder.
  CZuError AddReparsePointToList(const std::string& inputFolder, const std::string& outputFolder,
                                 const std::string& reparsePoint, DWORD tag, const std::string& target);
  // One enumerated entry of inputFolder: builds its two paths and calls
  // the hook of its kind; a hook's failure comes back with this location.
  CZuError ProcessItem(const std::string& inputFolder, const std::string& outputFolder, const TFindData& entry);
  // True when the folder lies at or below a root folder of this traversal,
  // so that it will be walked anyway; newOutputPath then tells where its
  // entries will go (the root's output folder plus the rest of the path),
  // which replaces the output folder the caller had in mind.
  bool FolderWillAlreadyBeTraversed(const std::string& folder, const std::string& outputFolder,
                                    std::string& newOutputPath);

  // The hooks. Each default succeeds; OnFolder's queues the folder.
  virtual CZuError OnTraverseFolder(const std::string& inputFolder, const std::string& outputFolder);
  virtual CZuError OnFolder(const std::string& inputPath, const std::string& outputPath, const TFindData& data);
  virtual CZuError OnFile(const std::string& inputPath, const std::string& outputPath, const TFindData& data);
  virtual CZuError OnReparsePointFolder(const std::string& inputPath, const std::string& outputPath,
                                        const TFindData& data);
  virtual CZuError OnReparsePointFile(const std::string& inputPath, const std::string& outputPath,
                                      const TFindData& data);
  virtual CZuError OnTraverseReparsePoint(const std::string& inputFolder, const std::string& outputFolder,
                                          const std::string& reparsePoint, DWORD tag, const std::string& target);
  // Once in each worker thread before it takes work; a worker whose call
  // fails takes none ("OnInitializeWorker failed, error=%s").
  virtual CZuError OnInitializeWorker();
  // An entry that could not be described (data set) or a folder that could
  // not be opened (data null). The default logs nothing more and succeeds.
  virtual CZuError OnFailedItem(const std::string& inputPath, const std::string& outputPath, const TFindData* data,
                                const CZuError& error);
  // The folder source of one worker, called once per worker thread; the
  // platform's enumeration by default.
  virtual std::unique_ptr<FXPlatform::IFolderSource> CreateFolderSource();

 private:
  friend class CTraverseFolderPrivate;
  std::unique_ptr<CTraverseFolderPrivate> m_private;
};
