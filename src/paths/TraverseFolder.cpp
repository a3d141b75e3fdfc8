#include "paths/TraverseFolder.h"

#include "errors/ErrorUtil.h"
#include "logging/LogWriterInterface.h"
#include "paths/Path.h"
#include "paths/TraverseFolderPrivate.h"
#include "platform/CompleteTypes.h"
#include "platform/OsFileApi.h"

CAbortOperationCheck::~CAbortOperationCheck() = default;

CTraverseFolder::CTraverseFolder(boost::shared_ptr<CLogWriterInterface> log)
    : m_private(new CTraverseFolderPrivate(*this, log ? log : CreateNullLogWriter())) {}

// The workers call our hooks: they must be gone before the derived part
// of the object is, which is why a consumer's destructor should not rely
// on this one; Traverse() has stopped them already when it returned.
CTraverseFolder::~CTraverseFolder() { m_private->StopAllWorkers(); }

CZuError CTraverseFolder::Traverse() { return m_private->Traverse(); }

void CTraverseFolder::SetMaxWorkers(int workers) { m_private->m_maxWorkers = workers < 1 ? 1 : workers; }

void CTraverseFolder::SetAbortEvent(boost::shared_ptr<FXEvent> event) { m_private->m_abortEvent = event; }

void CTraverseFolder::SetAbortCheck(CAbortOperationCheck* check) { m_private->m_abortCheck = check; }

void CTraverseFolder::ignoreConsumerError(const CZuError& error) {
  m_private->m_ignored.push_back(error.GetErrorCode());
}

TTraverseStatistics CTraverseFolder::GetStatistics() const { return m_private->m_statistics; }

CZuError CTraverseFolder::AddFolderToList(const std::string& inputFolder, const std::string& outputFolder) {
  TPendingFolder folder;
  folder.input = inputFolder;
  folder.output = outputFolder;
  m_private->Add(std::move(folder));
  return CZuError::Success();
}

CZuError CTraverseFolder::AddReparsePointToList(const std::string& inputFolder, const std::string& outputFolder,
                                                const std::string& reparsePoint, DWORD tag,
                                                const std::string& target) {
  TPendingFolder folder;
  folder.kind = TPendingFolder::kReparsePoint;
  folder.input = inputFolder;
  folder.output = outputFolder;
  folder.point = reparsePoint;
  folder.tag = tag;
  folder.target = target;
  m_private->Add(std::move(folder));
  return CZuError::Success();
}

CZuError CTraverseFolder::ProcessItem(const std::string& inputFolder, const std::string& outputFolder,
                                      const TFindData& entry) {
  const std::string& name = entry.cFileName.empty() ? entry.cAlternateFileName : entry.cFileName;
  std::string input;
  input.reserve(inputFolder.size() + name.size() + 1);
  input = inputFolder;
  FXPath::Append(input, name, 0);
  std::string output;
  if (!outputFolder.empty()) {
    output.reserve(outputFolder.size() + name.size() + 1);
    output = outputFolder;
    FXPath::Append(output, name, 0);
  }
  if (m_private->m_log->GetDebugLevel() >= 6)
    m_private->m_log->LogMessage(6, "CTraverseFolder::ProcessItem", __LINE__, 0, nullptr,
                                 "oFile.name=[%s], input=[%s], output=[%s]", name.c_str(), input.c_str(),
                                 output.c_str());
  const DWORD attributes = entry.dwFileAttributes;
  CZuError result = CZuError::Success();
  if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
    result = (attributes & FILE_ATTRIBUTE_DIRECTORY) ? OnReparsePointFolder(input, output, entry)
                                                     : OnReparsePointFile(input, output, entry);
  } else if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
    result = OnFolder(input, output, entry);
  } else {
    result = OnFile(input, output, entry);
  }
  if (result.IsError()) result.Push(ZU_HERE("CTraverseFolder::ProcessItem"));
  return result;
}

bool CTraverseFolder::FolderWillAlreadyBeTraversed(const std::string& folder, const std::string&,
                                                   std::string& newOutputPath) {
  for (const TPendingFolder& root : m_private->m_roots) {
    if (!FXPath::IsAncestorOf(root.input, folder, true)) continue;
    // The part of the folder below the root, put below the root's output.
    std::string normalRoot = root.input;
    std::string normalFolder = folder;
    FXPath::MakeNormalPath(normalRoot);
    FXPath::MakeNormalPath(normalFolder);
    std::size_t rootLength = normalRoot.size();
    if (rootLength > 0 && normalRoot[rootLength - 1] == '\\') --rootLength;
    newOutputPath = root.output;
    if (normalFolder.size() > rootLength + 1) FXPath::Append(newOutputPath, normalFolder.substr(rootLength + 1), 0);
    m_private->m_log->LogMessage(2, "CTraverseFolder::FolderWillAlreadyBeTraversed", __LINE__, 0, nullptr,
                                 "Folder %s will already be traversed through %s, NewOutputPath=[%s]", folder.c_str(),
                                 root.input.c_str(), newOutputPath.c_str());
    return true;
  }
  return false;
}

CZuError CTraverseFolder::OnTraverseFolder(const std::string&, const std::string&) { return CZuError::Success(); }

CZuError CTraverseFolder::OnFolder(const std::string& inputPath, const std::string& outputPath, const TFindData&) {
  return AddFolderToList(inputPath, outputPath);
}

CZuError CTraverseFolder::OnFile(const std::string&, const std::string&, const TFindData&) {
  return CZuError::Success();
}

CZuError CTraverseFolder::OnReparsePointFolder(const std::string&, const std::string&, const TFindData&) {
  return CZuError::Success();
}

CZuError CTraverseFolder::OnReparsePointFile(const std::string&, const std::string&, const TFindData&) {
  return CZuError::Success();
}

CZuError CTraverseFolder::OnTraverseReparsePoint(const std::string&, const std::string&, const std::string&, DWORD,
                                                 const std::string&) {
  return CZuError::Success();
}

CZuError CTraverseFolder::OnInitializeWorker() { return CZuError::Success(); }

CZuError CTraverseFolder::OnFailedItem(const std::string&, const std::string&, const TFindData*, const CZuError&) {
  return CZuError::Success();
}

std::unique_ptr<FXPlatform::IFolderSource> CTraverseFolder::CreateFolderSource() {
  return std::unique_ptr<FXPlatform::IFolderSource>(new FXPlatform::CDirectoryEnum);
}
