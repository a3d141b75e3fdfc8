// Include/exclude filter sets: literal entries on a tree of path components
// and wildcard terms hung on the node under which they apply, with the
// decision a backup walker asks for every path and the folder questions that
// let it skip or take whole subtrees.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "logging/LineWriter.h"
#include "logging/LogWriterInterface.h"
#include "paths/FilterFlags.h"
#include "paths/FilterTerm.h"

class CFilterSetNode;

// Paths are split at backslashes; empty components and a leading "\\?\"
// are dropped, and a UNC path keeps "\\server" as its first component.
// Components compare case-insensitively (A-Z folded).
//
// Threads: build the set (AddFilterItem, settings) first; afterwards any
// number of threads may query it at once. Terms build their engines when
// they are added.
class ZUUTILS_API CFilterSet {
 public:
  CFilterSet();
  ~CFilterSet();
  CFilterSet(const CFilterSet&) = delete;
  CFilterSet& operator=(const CFilterSet&) = delete;

  // A literal path: the node for prefix + path takes the state group of
  // `state` ("Filter" or "Exception"; a placeholder keeps the node's state)
  // and its NoInherit bit, and the context. A wildcard item (see
  // CFilterTerm::IsWildcardItem) is loaded as a term with LoadRaw instead.
  CZuError AddFilterItem(BFilterNodeState state, const std::string& path,
                         boost::shared_ptr<CFilterContext> context = boost::shared_ptr<CFilterContext>(),
                         const std::string& prefix = std::string());
  // A term hung on the node of prefix: a filter when `state` says "Filter",
  // an exception when it says "Exception" (87 otherwise); NoInherit marks
  // that node. The term takes the set's escape character and case default.
  CZuError AddFilterItem(BFilterNodeState state, const CFilterTerm& term, const std::string& prefix = std::string());

  // Whether the path is filtered: literal filters upward from the deepest
  // node, then filter terms upward (each node's in stored order, only those
  // that apply), the selection rule for FILTER_APPLIES_SELECTION, and
  // exceptions (nodes, then terms, upward) that cancel a filtered answer.
  // Every upward walk stops after a NoInherit node. On a filtered answer
  // the deciding entry's context is returned, else the context is cleared.
  bool IsIn(const std::string& path) const;
  bool IsIn(unsigned long applies, const std::string& path,
            boost::shared_ptr<CFilterContext>* context = nullptr) const;
  bool IsIn(unsigned long applies, const CFilterTermTestString& test,
            boost::shared_ptr<CFilterContext>* context = nullptr) const;

  // True when the folder and everything below it get the same IsIn(path)
  // answer (all terms applying), so a walker may skip the subtree (when
  // IsIn(folder)) or take it whole (when not). True exactly when no
  // NoInherit node lies below the folder and either
  //   - the folder is filtered, by a "Filter" node at or above it or by a
  //     filter term ending in "\***" (or "\**", the folder strictly below
  //     the literal part) that matches it, and no exception can reach at or
  //     below the folder: no "Exception" node at, above (within reach) or
  //     below it, no exception term hung below it, and no exception term
  //     within reach that could match the folder or anything below it; or
  //   - the folder is not filtered, no "Filter" node reaches it, no entry
  //     lies below it, and no filter term within reach could match the
  //     folder or anything below it.
  // Other subtrees may still be decided alike; the answer is then false,
  // which costs a walker time but never a wrong decision.
  bool IsMatchEntireFolder(const std::string& folder) const;
  // False when nothing at or below the folder can be filtered or excepted:
  // no entry at or below it, no filter or exception state reaching it, and
  // no term within reach for which CFilterTerm::IsMatchPossibleInFolder.
  bool IsMatchPossibleInFolder(const std::string& folder) const;
  // Whether the path or a descendant is part of the content: not filtered
  // itself, or an "Exception" entry lies below it.
  bool IsPathOrChildInBackupContent(const std::string& path) const;

  // The deepest existing node for the path's components (the root when
  // none exists); parents are reached from it.
  boost::shared_ptr<CFilterSetNode> Search(const std::string& path) const;

  // Depth first from the root (path ""), a node before its children,
  // children in order of their folded names; the callback returns false to
  // stop.
  typedef std::function<bool(const CFilterSetNode& node, const std::string& path)> TWalkCallback;
  void Walk(const TWalkCallback& callback) const;
  // The paths of the shallowest nodes below the root that carry a state or
  // terms.
  std::vector<std::string> GetSurfaceList() const;
  void DumpToLog(int level, int indent, const std::string& title) const;
  CZuError DumpDiagnosticData(CLineWriter& writer) const;
  CZuError DumpSurfaceDiagnosticData(CLineWriter& writer) const;
  // A text file (UTF-8, lines ending in LF):
  //   "ZuFilterSet 1"
  //   "S <settings>"        expose-root, no-inherit, write-protected, escape,
  //                          insensitive wildcards as "0x%X" flags 1/2/4/-/8
  //                          and the escape character as "0x%02X"
  //   "N 0x%X <path>"       a node with a state (BFilterNodeState value)
  //   "F <prefix>\t<raw>"   a filter term under the node <prefix>
  //   "E <prefix>\t<raw>"   an exception term
  // in Walk order. <raw> is GetRawFilterTerm, which LoadRaw reads back.
  CZuError SerializeToFile(const std::string& path) const;
  bool empty() const;

  void SetExposeRoot(bool exposeRoot);
  bool IsExposeRoot() const { return m_exposeRoot; }
  // Every node acts as NoInherit: only the deepest node is consulted.
  void SetNoInherit(bool noInherit) { m_noInherit = noInherit; }
  // Adding fails with 19 (write-protected) while set.
  void SetWriteProtected(bool writeProtected) { m_writeProtected = writeProtected; }
  void SetPathMatchEscapeCharacter(int escape);
  void SetUseInsensitiveFilterForWildCard(bool insensitive);
  bool IsUseInsensitiveFilterForWildCardSet() const { return m_insensitiveWildcards; }
  // Where DumpToLog writes (default: the process-wide logger).
  void SetLogWriter(boost::shared_ptr<CLogWriterInterface> writer) { m_log = std::move(writer); }

 private:
  friend struct CFilterSetInternals;
  boost::shared_ptr<CFilterSetNode> Node(const std::string& path);
  void ForEachTerm(const std::function<void(CFilterTerm&)>& change);

  boost::shared_ptr<CFilterSetNode> m_root;
  bool m_exposeRoot = false;
  bool m_noInherit = false;
  bool m_writeProtected = false;
  bool m_insensitiveWildcards = false;
  char m_escape = '/';
  boost::shared_ptr<CLogWriterInterface> m_log;
};

// One node of a filter set's tree.
class ZUUTILS_API CFilterSetNode {
 public:
  const std::string& GetName() const { return m_name; }
  BFilterNodeState GetState() const { return m_state; }
  boost::shared_ptr<CFilterContext> GetContext() const { return m_context; }
  const std::vector<CFilterTerm>& GetFilterTerms() const { return m_filters; }
  const std::vector<CFilterTerm>& GetExceptionTerms() const { return m_exceptions; }
  boost::shared_ptr<CFilterSetNode> GetParent() const { return m_parent.lock(); }
  // The path from the root, components joined by backslashes.
  std::string GetPath() const;
  bool HasEntries() const;

 private:
  friend class CFilterSet;
  friend struct CFilterSetInternals;
  struct TImpl;
  CFilterSetNode();
  boost::shared_ptr<TImpl> m_impl;  // children and indexes
  std::string m_name;
  BFilterNodeState m_state;
  boost::shared_ptr<CFilterContext> m_context;
  boost::weak_ptr<CFilterSetNode> m_parent;
  std::vector<CFilterTerm> m_filters;
  std::vector<CFilterTerm> m_exceptions;
  // Strictly below this node: exception states and terms, NoInherit
  // marks, and entries of any kind.
  unsigned m_exceptionsBelow = 0;
  unsigned m_noInheritBelow = 0;
  unsigned m_entriesBelow = 0;
};
