#include "Scanner.h"

#include <atomic>

#include <errors/ErrorUtil.h>
#include <paths/FilterSet.h>
#include <paths/Path.h>
#include <paths/TraverseFolder.h>
#include <platform/CompleteTypes.h>
#include <platform/OsFileApi.h>
#include <threads/Event.h>

#include "Checksum.h"

namespace zuscan {

namespace {

// The attributes a catalogue keeps: those every platform reports alike, so
// that catalogues of one tree agree whichever build wrote them.
constexpr DWORD kPortableAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                      FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;

}  // namespace

class CScanner::CWalker : public CTraverseFolder {
 public:
  CWalker(const TOptions& options, CFilterSet& filters, CCatalogWriter& catalog, TScanCounters& counters,
          CErrorReport& errors)
      : m_options(options),
        m_filters(filters),
        m_catalog(catalog),
        m_counters(counters),
        m_errors(errors),
        m_abort(new FXEvent(FXEvent::kManualReset)) {
    SetMaxWorkers(options.workers);
    SetAbortEvent(m_abort);
  }

  CZuError Scan(const std::vector<std::string>& roots) {
    for (const std::string& root : roots) {
      CZuError result = AddFolderToList(root);
      if (result.IsError()) return result;
    }
    return Traverse();
  }

  void Abort() {
    m_aborted.store(true);
    m_abort->Set();
  }
  bool WasAborted() const { return m_aborted.load(); }

 protected:
  // Hooks for one folder's entries run on the worker that took the folder,
  // so a per-thread note carries the folder's decision to its entries.
  CZuError OnTraverseFolder(const std::string& input, const std::string&) override {
    ++m_counters.folders;
    std::string folder;
    FXPath::MakeNormalPath(input, folder);
    t_takeAll = m_filters.IsMatchEntireFolder(folder) && !m_filters.IsIn(folder);
    return CZuError::Success();
  }

  CZuError OnFolder(const std::string& input, const std::string& output, const TFindData& data) override {
    const std::string path = Normal(input);
    if (Excluded(path)) {
      ++m_counters.skipped;
      // Nothing below can be taken back: the folder is never opened.
      if (m_filters.IsMatchEntireFolder(path)) {
        ++m_counters.pruned;
        return CZuError::Success();
      }
    } else {
      Record(path, "folder", data, std::string());
    }
    return CTraverseFolder::OnFolder(input, output, data);
  }

  CZuError OnFile(const std::string& input, const std::string&, const TFindData& data) override {
    const std::string path = Normal(input);
    if (Excluded(path)) {
      ++m_counters.skipped;
      return CZuError::Success();
    }
    std::string checksum;
    if (m_options.checksum != EChecksum::None) {
      unsigned long long read = 0;
      const CZuError result = ChecksumFile(input, m_options.checksum, checksum, read);
      m_counters.checksummed += read;
      if (result.IsError()) Fail(result);
    }
    ++m_counters.files;
    m_counters.bytes += data.nFileSize;
    Record(path, "file", data, checksum);
    return CZuError::Success();
  }

  // Links are catalogued as what they are, never followed.
  CZuError OnReparsePointFolder(const std::string& input, const std::string&, const TFindData& data) override {
    return RecordLink(input, data);
  }
  CZuError OnReparsePointFile(const std::string& input, const std::string&, const TFindData& data) override {
    return RecordLink(input, data);
  }

  // Unreadable folders and entries: counted, reported, and the walk goes on.
  CZuError OnFailedItem(const std::string&, const std::string&, const TFindData*, const CZuError& error) override {
    Fail(error);
    return CZuError::Success();
  }

 private:
  static std::string Normal(const std::string& path) {
    std::string normal;
    FXPath::MakeNormalPath(path, normal);
    return normal;
  }

  bool Excluded(const std::string& path) const { return !t_takeAll && m_filters.IsIn(path); }

  void Fail(const CZuError& error) {
    ++m_counters.errors;
    m_errors.Report(error, "zuscan::CScanner", __LINE__);
  }

  CZuError RecordLink(const std::string& input, const TFindData& data) {
    const std::string path = Normal(input);
    if (Excluded(path)) {
      ++m_counters.skipped;
    } else {
      Record(path, "link", data, std::string());
    }
    return CZuError::Success();
  }

  void Record(const std::string& path, const char* kind, const TFindData& data, const std::string& checksum) {
    TCatalogEntry entry;
    entry.path = path;
    entry.kind = kind;
    entry.size = data.nFileSize;
    entry.modified = static_cast<unsigned long long>(data.ftLastWriteTime.AsSystemTime());
    entry.attributes = data.dwFileAttributes & kPortableAttributes;
    entry.checksum = checksum;
    const CZuError result = m_catalog.Write(entry);
    if (result.IsError()) {
      Fail(result);
    } else {
      ++m_counters.entries;
    }
  }

  const TOptions& m_options;
  CFilterSet& m_filters;
  CCatalogWriter& m_catalog;
  TScanCounters& m_counters;
  CErrorReport& m_errors;
  boost::shared_ptr<FXEvent> m_abort;
  std::atomic<bool> m_aborted{false};
  static thread_local bool t_takeAll;
};

thread_local bool CScanner::CWalker::t_takeAll = false;

CScanner::CScanner(const TOptions& options, CFilterSet& filters, CCatalogWriter& catalog, TScanCounters& counters,
                   CErrorReport& errors)
    : m_walker(new CWalker(options, filters, catalog, counters, errors)) {}

CScanner::~CScanner() = default;

CZuError CScanner::Scan(const std::vector<std::string>& roots) { return m_walker->Scan(roots); }
void CScanner::Abort() { m_walker->Abort(); }
bool CScanner::WasAborted() const { return m_walker->WasAborted(); }

}  // namespace zuscan
