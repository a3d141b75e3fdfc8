#include "paths/SimpleFolderIterator.h"

#include <algorithm>
#include <utility>

#include "errors/ErrorUtil.h"
#include "paths/Path.h"
#include "paths/PathMatch.h"
#include "platform/CompleteTypes.h"
#include "platform/OsFileApi.h"

namespace {

unsigned char Fold(unsigned char c) { return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + 32) : c; }

// ASCII letters folded first, then bytes, so that the order is total.
bool NameBefore(const std::string& a, const std::string& b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char x = Fold(static_cast<unsigned char>(a[i]));
    const unsigned char y = Fold(static_cast<unsigned char>(b[i]));
    if (x != y) return x < y;
  }
  if (a.size() != b.size()) return a.size() < b.size();
  return a < b;
}

}  // namespace

bool CSimpleFolderItem::IsFolder() const {
  return (m_data.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) ==
         FILE_ATTRIBUTE_DIRECTORY;
}

bool CSimpleFolderItem::IsReparsePoint() const { return (m_data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }

CSimpleFolderIteratorCallback::~CSimpleFolderIteratorCallback() = default;

bool CSimpleFolderIteratorCallback::OnQueryItem(const CSimpleFolderItem&) { return true; }

bool CSimpleFolderIteratorCallback::OnQueryIterateFolderContents(const CSimpleFolderItem&) { return true; }

bool CSimpleFolderIteratorCallback::OnQueryOpenError(const std::string&, const CZuError&) { return true; }

CSimpleFolderFilterByItemName::CSimpleFolderFilterByItemName(bool filterFolders) : m_filterFolders(filterFolders) {}

CSimpleFolderFilterByItemName::~CSimpleFolderFilterByItemName() = default;

CZuError CSimpleFolderFilterByItemName::AddPattern(const std::string& pattern) {
  std::unique_ptr<CPathMatch> matcher(new CPathMatch);
  matcher->caseInsensitive();
  CZuError result = matcher->initialize(pattern.c_str(), true, false);
  if (result.IsError())
    return result.Push(ZU_HERE("CSimpleFolderFilterByItemName::AddPattern"), "Pattern=[%s]", pattern.c_str());
  m_patterns.push_back(std::move(matcher));
  return result;
}

bool CSimpleFolderFilterByItemName::Admits(const std::string& name) {
  for (const auto& pattern : m_patterns)
    if (pattern->match(name.c_str()) == PATHMATCH_MATCH) return true;
  return false;
}

bool CSimpleFolderFilterByItemName::OnQueryItem(const CSimpleFolderItem& item) {
  return (item.IsFolder() && !m_filterFolders) || Admits(item.GetName());
}

bool CSimpleFolderFilterByItemName::OnQueryIterateFolderContents(const CSimpleFolderItem& folder) {
  return !m_filterFolders || Admits(folder.GetName());
}

struct CSimpleFolderIterator::TLevel {
  std::vector<CSimpleFolderItem> items;
  std::size_t next = 0;
};

CSimpleFolderIterator::CSimpleFolderIterator() : CSimpleFolderIterator(false) {}

CSimpleFolderIterator::CSimpleFolderIterator(bool tree) : m_tree(tree), m_enum(new FXPlatform::CDirectoryEnum) {}

CSimpleFolderIterator::~CSimpleFolderIterator() = default;

CSimpleFolderTreeIterator::CSimpleFolderTreeIterator() : CSimpleFolderIterator(true) {}

CZuError CSimpleFolderIterator::SetOption(ESimpleFolderIteratorOption option, unsigned value) {
  switch (option) {
    case ESimpleFolderIteratorOption::kSkipFiles: m_skipFiles = value != 0; break;
    case ESimpleFolderIteratorOption::kSkipFolders: m_skipFolders = value != 0; break;
    case ESimpleFolderIteratorOption::kSkipHidden: m_skipHidden = value != 0; break;
    case ESimpleFolderIteratorOption::kFollowReparsePoints: m_followReparsePoints = value != 0; break;
    case ESimpleFolderIteratorOption::kMaxDepth: m_maxDepth = value; break;
    default:
      return FXErrorUtil::ErrorWin32(ZU_HERE("CSimpleFolderIterator::SetOption"), ERROR_INVALID_PARAMETER,
                                     "Option=[%d]", static_cast<int>(option));
  }
  return CZuError::Success();
}

void CSimpleFolderIterator::SetCallback(CSimpleFolderIteratorCallback* callback) {
  m_callback = callback != nullptr ? callback : &m_defaults;
}

CZuError CSimpleFolderIterator::ReadFolder(const std::string& folder, int depth) {
  CZuError result = m_enum->Open(folder);
  if (result.IsError()) return result;
  std::unique_ptr<TLevel> level(new TLevel);
  CSimpleFolderItem item;
  item.m_depth = depth;
  FXPlatform::EFindStep step;
  while ((step = m_enum->Next(item.m_data, item.m_error)) != FXPlatform::EFindStep::kEnd) {
    if (step == FXPlatform::EFindStep::kFailed) return item.m_error;
    if (step == FXPlatform::EFindStep::kEntry) item.m_error = CZuError::Success();
    if (m_skipHidden && (item.m_data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0) continue;
    item.m_path = folder;
    FXPath::Append(item.m_path, item.m_data.cFileName, 0);
    level->items.push_back(item);
  }
  m_enum->Close();
  std::sort(level->items.begin(), level->items.end(),
            [](const CSimpleFolderItem& a, const CSimpleFolderItem& b) { return NameBefore(a.GetName(), b.GetName()); });
  m_levels.push_back(std::move(level));
  return CZuError::Success();
}

CZuError CSimpleFolderIterator::Open(const std::string& folder) {
  m_levels.clear();
  m_enter.reset();
  CZuError result = ReadFolder(folder, 0);
  if (result.IsError()) result.Push(ZU_HERE("CSimpleFolderIterator::Open"), "Folder=[%s]", folder.c_str());
  return result;
}

CZuError CSimpleFolderIterator::GetNextItem(CSimpleFolderItem& item) {
  const FXCodeLocation here = ZU_HERE("CSimpleFolderIterator::GetNextItem");
  for (;;) {
    if (m_enter) {
      const std::unique_ptr<CSimpleFolderItem> folder = std::move(m_enter);
      const CZuError opened = ReadFolder(folder->GetPath(), folder->GetDepth() + 1);
      if (opened.IsError() && !m_callback->OnQueryOpenError(folder->GetPath(), opened)) {
        m_levels.clear();
        CZuError failure = opened;
        return failure.Push(here, "Folder=[%s]", folder->GetPath().c_str());
      }
      continue;
    }
    if (m_levels.empty()) return FXErrorUtil::ErrorWin32(here, ERROR_NO_MORE_FILES);
    TLevel& level = *m_levels.back();
    if (level.next == level.items.size()) {
      m_levels.pop_back();
      continue;
    }
    CSimpleFolderItem& candidate = level.items[level.next++];
    const bool isFolder = candidate.IsFolder();
    const bool isFolderLink = candidate.IsReparsePoint() &&
                              (candidate.GetFindData().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool returned = !(isFolder ? m_skipFolders : m_skipFiles) && m_callback->OnQueryItem(candidate);
    const bool enter = m_tree && !candidate.IsFailed() && (isFolder || (isFolderLink && m_followReparsePoints)) &&
                       static_cast<unsigned>(candidate.GetDepth()) < m_maxDepth &&
                       m_callback->OnQueryIterateFolderContents(candidate) &&
                       !(isFolderLink && FXPath::CheckForCyclicSymbolicLink(candidate.GetPath()).IsError());
    if (enter) m_enter.reset(new CSimpleFolderItem(candidate));
    if (returned) {
      item = std::move(candidate);
      return CZuError::Success();
    }
  }
}
