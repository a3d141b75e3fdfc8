// The walk: a folder traversal whose hooks decide every path with the filter
// set, skip excluded subtrees without opening them, checksum the files taken
// and hand each entry to the catalogue.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <errors/ZuError.h>

#include "Catalog.h"
#include "Counters.h"
#include "ErrorReport.h"
#include "Options.h"

class CFilterSet;

namespace zuscan {

class CScanner {
 public:
  CScanner(const TOptions& options, CFilterSet& filters, CCatalogWriter& catalog, TScanCounters& counters,
           CErrorReport& errors);
  ~CScanner();

  // Walks the roots (normal-form folder paths) and returns when every
  // folder is done or the scan was aborted.
  CZuError Scan(const std::vector<std::string>& roots);
  // Safe from any thread; the workers stop after the entries in hand.
  void Abort();
  bool WasAborted() const;

 private:
  class CWalker;
  std::unique_ptr<CWalker> m_walker;
};

}  // namespace zuscan
