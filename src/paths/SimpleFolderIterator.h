// Single-threaded iteration over one folder (CSimpleFolderIterator) or a
// folder tree (CSimpleFolderTreeIterator): the caller pulls one item at a
// time with GetNextItem, on its own thread, with no hooks to implement.
//
// Order, the same on every platform and every run:
//   - a folder's entries come sorted by name, compared with ASCII letters
//     folded to lower case and then byte by byte (so "a" < "B" < "b");
//   - the tree iterator goes depth first: a folder's item comes first, then
//     (when it is entered) everything below it, then its next sibling.
// Reparse points (symbolic links) are returned and not entered unless
// kFollowReparsePoints is set; a link that leads back to one of its own
// ancestors is then still not entered (checked with the folders' identity).
//
// Entries that cannot be described (platform/DirectoryEnum.h) come as
// failed items: IsFailed() with the error, the name shown as well as it can
// be. A folder that cannot be opened below the start folder goes to the
// callback's OnQueryOpenError: true passes over it, false ends the
// iteration with that error. GetNextItem returns ERROR_NO_MORE_FILES at the
// end.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/DirectoryEnum.h"

class CPathMatch;

class ZUUTILS_API CSimpleFolderItem {
 public:
  const std::string& GetPath() const { return m_path; }      // the folder's path and the name
  const std::string& GetName() const { return m_data.cFileName; }
  const TFindData& GetFindData() const { return m_data; }
  // 0 for the entries of the opened folder, 1 below them, ...
  int GetDepth() const { return m_depth; }
  // A folder that is not a reparse point.
  bool IsFolder() const;
  bool IsReparsePoint() const;
  bool IsFailed() const { return m_error.IsError(); }
  const CZuError& GetError() const { return m_error; }

 private:
  friend class CSimpleFolderIterator;
  std::string m_path;
  TFindData m_data;
  int m_depth = 0;
  CZuError m_error = CZuError::Success();
};

class ZUUTILS_API CSimpleFolderIteratorCallback {
 public:
  virtual ~CSimpleFolderIteratorCallback();
  // Whether the item is returned; default true. Folders that are not
  // returned are still entered.
  virtual bool OnQueryItem(const CSimpleFolderItem& item);
  // Tree iterator: whether to enter the folder just returned (or passed
  // over by OnQueryItem); default true.
  virtual bool OnQueryIterateFolderContents(const CSimpleFolderItem& folder);
  // A folder below the start that cannot be opened: true (the default)
  // passes over it, false ends the iteration with the error.
  virtual bool OnQueryOpenError(const std::string& folder, const CZuError& error);
};

// Returns the items whose name matches one of its wildcard patterns, as the
// library's path matcher reads them (paths/PathMatch.h: '*', '?', '[...]',
// ASCII letters in any case). Folders are always returned and entered
// unless filterFolders is set, which subjects their names to the patterns
// too (a folder that does not match is then neither returned nor entered).
// No pattern matches nothing.
class ZUUTILS_API CSimpleFolderFilterByItemName : public CSimpleFolderIteratorCallback {
 public:
  explicit CSimpleFolderFilterByItemName(bool filterFolders = false);
  ~CSimpleFolderFilterByItemName() override;
  // A pattern the matcher cannot compile (not valid UTF-8) is refused.
  CZuError AddPattern(const std::string& pattern);
  bool OnQueryItem(const CSimpleFolderItem& item) override;
  bool OnQueryIterateFolderContents(const CSimpleFolderItem& folder) override;

 private:
  bool Admits(const std::string& name);
  std::vector<std::unique_ptr<CPathMatch>> m_patterns;
  bool m_filterFolders;
};

enum class ESimpleFolderIteratorOption {
  kSkipFiles,            // 0/1: files are not returned
  kSkipFolders,          // 0/1: folders are not returned (still entered)
  kSkipHidden,           // 0/1: hidden entries are neither returned nor entered
  kFollowReparsePoints,  // 0/1: the tree iterator enters folder links
  kMaxDepth,             // the tree iterator enters folders down to this depth; default unlimited
};

class ZUUTILS_API CSimpleFolderIterator {
 public:
  CSimpleFolderIterator();
  virtual ~CSimpleFolderIterator();
  CSimpleFolderIterator(const CSimpleFolderIterator&) = delete;
  CSimpleFolderIterator& operator=(const CSimpleFolderIterator&) = delete;

  // Starts over on the folder; a folder that cannot be opened fails here.
  CZuError Open(const std::string& folder);
  CZuError GetNextItem(CSimpleFolderItem& item);
  // Unknown options are ERROR_INVALID_PARAMETER. Takes effect for folders
  // opened afterwards.
  CZuError SetOption(ESimpleFolderIteratorOption option, unsigned value);
  // Not owned; null restores the defaults.
  void SetCallback(CSimpleFolderIteratorCallback* callback);

 protected:
  explicit CSimpleFolderIterator(bool tree);

 private:
  struct TLevel;
  CZuError ReadFolder(const std::string& folder, int depth);
  bool IsCyclic(const std::string& folder) const;

  const bool m_tree;
  bool m_skipFiles = false;
  bool m_skipFolders = false;
  bool m_skipHidden = false;
  bool m_followReparsePoints = false;
  unsigned m_maxDepth = ~0u;
  CSimpleFolderIteratorCallback m_defaults;
  CSimpleFolderIteratorCallback* m_callback = &m_defaults;
  std::unique_ptr<FXPlatform::CDirectoryEnum> m_enum;
  std::vector<std::unique_ptr<TLevel>> m_levels;
  std::unique_ptr<CSimpleFolderItem> m_enter;  // the folder to enter before the next item
};

class ZUUTILS_API CSimpleFolderTreeIterator : public CSimpleFolderIterator {
 public:
  CSimpleFolderTreeIterator();
};
