#include "paths/TraverseFolderPrivate.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <thread>
#include <unordered_set>

#include <boost/make_shared.hpp>

#include "errors/ErrorUtil.h"
#include "logging/LogWriterInterface.h"
#include "paths/Path.h"
#include "threads/Event.h"

namespace {

std::string Text(const CZuError& error) { return error.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE); }

// A hook's result; one that throws has failed with ERROR_EXCEPTION_IN_SERVICE.
template <class Hook>
CZuError CallHook(const char* name, Hook hook) {
  try {
    return hook();
  } catch (const std::exception& e) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CTraverseFolderPrivate::CallHook"), ERROR_EXCEPTION_IN_SERVICE,
                                   "%s threw an exception: %s", name, e.what());
  } catch (...) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CTraverseFolderPrivate::CallHook"), ERROR_EXCEPTION_IN_SERVICE,
                                   "%s threw an exception", name);
  }
}

// The last of the NUL-terminated names.
std::string LastName(const std::string& names) {
  if (names.empty()) return std::string();
  const std::size_t end = names.size() - 1;
  std::size_t begin = end;
  while (begin > 0 && names[begin - 1] != '\0') --begin;
  return names.substr(begin, end - begin);
}

bool IsNetworkLoss(const CZuError& error) {
  return FXErrorUtil::IsWin32(error, ERROR_NETNAME_DELETED) || FXErrorUtil::IsWin32(error, ERROR_DEV_NOT_EXIST) ||
         FXErrorUtil::IsWin32(error, ERROR_NETWORK_UNREACHABLE);
}

}  // namespace

CTraverseFolderWorker::CTraverseFolderWorker(CTraverseFolderPrivate& traversal) : m_traversal(traversal) {}

void CTraverseFolderWorker::OnStart() {
  SetDescription(m_traversal.Name());
  if (!m_traversal.InitializeWorker(*this)) InternalStop();
}

void CTraverseFolderWorker::OnEvent() {
  TPendingFolder folder;
  while (m_traversal.Take(folder, *this)) m_traversal.TraverseOne(*this, folder);
}

CTraverseFolderPrivate::CTraverseFolderPrivate(CTraverseFolder& owner, boost::shared_ptr<CLogWriterInterface> log)
    : m_owner(owner), m_log(log) {}

CTraverseFolderPrivate::~CTraverseFolderPrivate() { StopAllWorkers(); }

void CTraverseFolderPrivate::Log(int level, const char* function, unsigned long line, const char* format, ...) {
  if (level > m_log->GetDebugLevel() && level != -1) return;
  va_list args;
  va_start(args, format);
  m_log->LogMessageV(level, function, line, 0, nullptr, format, args);
  va_end(args);
}

void CTraverseFolderPrivate::Add(TPendingFolder&& folder) {
  if (folder.kind == TPendingFolder::kReparsePoint)
    Log(6, "CTraverseFolderPrivate::AddReparsePointToList", __LINE__,
        "Input=[%s], Output=[%s], ReparsePoint=[%s], Tag=[0x%X], Target=[%s]", folder.input.c_str(),
        folder.output.c_str(), folder.point.c_str(), static_cast<unsigned>(folder.tag), folder.target.c_str());
  else
    Log(6, "CTraverseFolderPrivate::AddFolderToList", __LINE__, "Input=[%s], Output=[%s]", folder.input.c_str(),
        folder.output.c_str());
  CTraverseFolderWorker* wake = nullptr;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!m_started) m_roots.push_back(folder);
    m_queue.push_back(std::move(folder));
    if (!m_idle.empty()) {
      wake = m_idle.back();
      m_idle.pop_back();
      ++m_busy;
    }
  }
  if (wake != nullptr) wake->SetEvent();
}

bool CTraverseFolderPrivate::Take(TPendingFolder& folder, CTraverseFolderWorker& worker) {
  std::lock_guard<std::mutex> hold(m_lock);
  if (!m_queue.empty() && !m_aborted.load(std::memory_order_relaxed)) {
    folder = std::move(m_queue.front());
    m_queue.pop_front();
    return true;
  }
  m_idle.push_back(&worker);
  if (--m_busy == 0) m_signal->Set();
  return false;
}

bool CTraverseFolderPrivate::InitializeWorker(CTraverseFolderWorker& worker) {
  CZuError result = CallHook("OnInitializeWorker", [this] { return m_owner.OnInitializeWorker(); });
  if (!result.IsError()) {
    result = CallHook("CreateFolderSource", [&] {
      worker.m_source = m_owner.CreateFolderSource();
      return worker.m_source ? CZuError::Success()
                             : FXErrorUtil::ErrorWin32(ZU_HERE("CTraverseFolderPrivate::InitializeWorker"),
                                                       ERROR_INVALID_HANDLE, "No folder source");
    });
  }
  if (!result.IsError()) return true;
  Log(1, "CTraverseFolderPrivate::InitializeWorker", __LINE__, "OnInitializeWorker failed, error=%s",
      Text(result).c_str());
  std::lock_guard<std::mutex> hold(m_lock);
  if (!m_startFailure.IsError()) m_startFailure = result;
  if (--m_busy == 0) m_signal->Set();
  return false;
}

bool CTraverseFolderPrivate::IsAborted() {
  if (m_aborted.load(std::memory_order_relaxed)) return true;
  const bool aborted = (m_abortEvent && m_abortEvent->WaitAlertable(DWORD(0)) == 0) ||
                       (m_abortCheck != nullptr && m_abortCheck->IsOperationAborted());
  if (aborted) m_aborted.store(true, std::memory_order_relaxed);
  return aborted;
}

void CTraverseFolderPrivate::RecordFailure(const CZuError& error) {
  std::lock_guard<std::mutex> hold(m_lock);
  if (!m_failure.IsError()) m_failure = error;
}

bool CTraverseFolderPrivate::PassOver(CTraverseFolderWorker& worker, const CZuError& error) {
  for (const HRESULT code : m_ignored) {
    if (error.Is(code)) {
      ++worker.m_statistics.ignoredErrors;
      Log(2, "CTraverseFolderPrivate::PassOver", __LINE__, "Ignoring consumer error, error=%s", Text(error).c_str());
      return true;
    }
  }
  ++worker.m_statistics.consumerErrors;
  Log(1, "CTraverseFolderPrivate::PassOver", __LINE__, "Consumer error ends the folder, error=%s",
      Text(error).c_str());
  RecordFailure(error);
  return false;
}

void CTraverseFolderPrivate::TraverseOne(CTraverseFolderWorker& worker, const TPendingFolder& folder) {
  const FXCodeLocation here = ZU_HERE("CTraverseFolderPrivate::TraverseOne");
  if (IsAborted()) return;
  try {
    CZuError result = CZuError::Success();
    if (folder.kind == TPendingFolder::kReparsePoint) {
      result = CallHook("OnTraverseReparsePoint", [&] {
        return m_owner.OnTraverseReparsePoint(folder.input, folder.output, folder.point, folder.tag, folder.target);
      });
    } else {
      if (m_log->GetDebugLevel() >= 6) {
        std::size_t pending;
        {
          std::lock_guard<std::mutex> hold(m_lock);
          pending = m_queue.size();
        }
        Log(6, "CTraverseFolderPrivate::TraverseOne", __LINE__, "OnTraverseFolder(%s,%s) FoldersToTraverse=[%llu]",
            folder.input.c_str(), folder.output.c_str(), static_cast<unsigned long long>(pending));
      }
      result = CallHook("OnTraverseFolder", [&] { return m_owner.OnTraverseFolder(folder.input, folder.output); });
    }
    if (result.IsError() && !PassOver(worker, result.Push(here))) return;

    std::string searchPath = folder.input;
    FXPath::Append(searchPath, "*", 0);
    const CZuError opened = worker.m_source->Open(folder.input);
    if (opened.IsError()) {
      ++worker.m_statistics.foldersSkipped;
      Log(1, "CTraverseFolderPrivate::TraverseOne", __LINE__, "TQFindFirstFile failed, ignoring, SearchPath=[%s], error=%s",
          searchPath.c_str(), Text(opened).c_str());
      CZuError reported =
          CallHook("OnFailedItem", [&] { return m_owner.OnFailedItem(folder.input, folder.output, nullptr, opened); });
      if (reported.IsError()) PassOver(worker, reported.Push(here, "Failed to report failed item."));
      return;
    }
    const CZuError enumerated = EnumerateFolder(worker, folder, searchPath);
    ++worker.m_statistics.foldersEnumerated;
    if (enumerated.IsError()) {
      ++worker.m_statistics.folderErrors;
      Log(1, "CTraverseFolderPrivate::TraverseOne", __LINE__, "Folder enumeration failed, SearchPath=[%s], error=%s",
          searchPath.c_str(), Text(enumerated).c_str());
      RecordFailure(enumerated);
    }
  } catch (...) {
    // Our own work ran out of memory: the folder is lost, the walk is not.
    ++worker.m_statistics.folderErrors;
    const CZuError failure = FXErrorUtil::ErrorWin32(here, ERROR_NOT_ENOUGH_MEMORY, "Folder=[%s]", folder.input.c_str());
    Log(1, "CTraverseFolderPrivate::TraverseOne", __LINE__, "Folder abandoned, error=%s", Text(failure).c_str());
    RecordFailure(failure);
  }
}

CZuError CTraverseFolderPrivate::EnumerateFolder(CTraverseFolderWorker& worker, const TPendingFolder& folder,
                                                 const std::string& searchPath) {
  const FXCodeLocation here = ZU_HERE("CTraverseFolderPrivate::EnumerateFolder");
  FXPlatform::IFolderSource& source = *worker.m_source;
  TFindData& data = worker.m_data;
  TTraverseStatistics& statistics = worker.m_statistics;
  worker.m_handedOut.clear();
  std::unordered_set<std::string> handedOutBeforeRetry;
  int retries = 0;
  CZuError failure = CZuError::Success();
  CZuError error = CZuError::Success();
  for (;;) {
    if (failure.IsError()) {
      if (!IsNetworkLoss(failure)) return failure.Push(here, "SearchPath=[%s]", searchPath.c_str());
      if (retries == CTraverseFolderPrivate::kMaxRetries)
        return failure.Push(here, "SearchPath=[%s], Retries=[%d]", searchPath.c_str(), retries);
      const std::string last = LastName(worker.m_handedOut);
      Log(1, "CTraverseFolderPrivate::EnumerateFolder", __LINE__,
          "Retrying folder enumeration after error encountered, Folder=[%s], LastProcessedFileName=[%s], error=%s",
          folder.input.c_str(), last.c_str(), Text(failure).c_str());
      for (int slept = 0; slept < kRetryDelayMs && !IsAborted(); slept += 100)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      if (IsAborted()) return CZuError::Success();
      ++retries;
      ++statistics.retries;
      handedOutBeforeRetry.clear();
      for (std::size_t at = 0; at < worker.m_handedOut.size();) {
        const std::size_t end = worker.m_handedOut.find('\0', at);
        handedOutBeforeRetry.insert(worker.m_handedOut.substr(at, end - at));
        at = end + 1;
      }
      failure = source.Open(folder.input);
      continue;
    }
    const FXPlatform::EFindStep step = source.Next(data, error);
    if (step == FXPlatform::EFindStep::kEnd) return CZuError::Success();
    if (step == FXPlatform::EFindStep::kFailed) {
      if (FXErrorUtil::IsWin32(error, ERROR_NO_MORE_FILES)) return CZuError::Success();
      failure = error;
      continue;
    }
    if (m_aborted.load(std::memory_order_relaxed)) return CZuError::Success();
    if (!handedOutBeforeRetry.empty() && handedOutBeforeRetry.count(data.cFileName) != 0) continue;
    worker.m_handedOut.append(data.cFileName).push_back('\0');
    CZuError result = CZuError::Success();
    if (step == FXPlatform::EFindStep::kEntry) {
      ++statistics.entries;
      result = CallHook("ProcessItem", [&] { return m_owner.ProcessItem(folder.input, folder.output, data); });
    } else {
      ++statistics.failedEntries;
      Log(1, "CTraverseFolderPrivate::EnumerateFolder", __LINE__, "Entry cannot be described, Folder=[%s], error=%s",
          folder.input.c_str(), Text(error).c_str());
      std::string input = folder.input;
      FXPath::Append(input, data.cFileName, 0);
      std::string output;
      if (!folder.output.empty()) {
        output = folder.output;
        FXPath::Append(output, data.cFileName, 0);
      }
      result = CallHook("OnFailedItem", [&] { return m_owner.OnFailedItem(input, output, &data, error); });
      if (result.IsError()) result.Push(here, "Failed to report failed item.");
    }
    if (result.IsError() && !PassOver(worker, result)) return CZuError::Success();
  }
}

CZuError CTraverseFolderPrivate::Traverse() {
  const FXCodeLocation here = ZU_HERE("CTraverseFolder::Traverse");
  const std::string rootInput = m_roots.empty() ? std::string() : m_roots.front().input;
  const std::string rootOutput = m_roots.empty() ? std::string() : m_roots.front().output;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (m_started)
      return FXErrorUtil::ErrorWin32(here, ERROR_ALREADY_INITIALIZED, "A traversal object runs once");
    m_started = true;
    m_busy = static_cast<std::size_t>(m_maxWorkers);
  }
  char name[64];
  std::snprintf(name, sizeof name, "Local\\TQ-TraverseFolder-%p", static_cast<void*>(&m_owner));
  m_name = name;
  m_signal = boost::make_shared<FXEvent>(0);

  for (int i = 0; i < m_maxWorkers; ++i) m_workers.emplace_back(new CTraverseFolderWorker(*this));
  for (auto& worker : m_workers) {
    worker->Start();
    worker->SetEvent();
  }
  for (;;) {
    {
      std::lock_guard<std::mutex> hold(m_lock);
      if (m_busy == 0) break;
    }
    m_signal->WaitAlertable(DWORD(100));
    IsAborted();
  }
  StopAllWorkers();
  for (const auto& worker : m_workers) {
    const TTraverseStatistics& s = worker->Statistics();
    m_statistics.foldersEnumerated += s.foldersEnumerated;
    m_statistics.foldersSkipped += s.foldersSkipped;
    m_statistics.entries += s.entries;
    m_statistics.failedEntries += s.failedEntries;
    m_statistics.retries += s.retries;
    m_statistics.consumerErrors += s.consumerErrors;
    m_statistics.ignoredErrors += s.ignoredErrors;
    m_statistics.folderErrors += s.folderErrors;
  }
  const unsigned long long pending = m_queue.size();
  if (m_aborted.load()) {
    Log(1, "CTraverseFolder::Traverse", __LINE__, "Traverse(%s,%s) aborted, FoldersToTraverse=[%llu]",
        rootInput.c_str(), rootOutput.c_str(), pending);
    m_queue.clear();
    return FXErrorUtil::ErrorWin32(here, ERROR_OPERATION_ABORTED, "Operation aborted");
  }
  if (pending != 0) {
    m_queue.clear();
    CZuError failure = m_startFailure;
    return failure.Push(here, "No worker could start, FoldersToTraverse=[%llu]", pending);
  }
  if (m_failure.IsError()) {
    CZuError failure = m_failure;
    return failure.Push(here);
  }
  return CZuError::Success();
}

void CTraverseFolderPrivate::StopAllWorkers() {
  // All are told first, so that they wind down together.
  for (auto& worker : m_workers) worker->Stop(false);
  for (auto& worker : m_workers) worker->Stop(true);
}
