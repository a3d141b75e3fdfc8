#include "paths/FilterSet.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <unordered_map>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "paths/FilterIndex.h"
#include "platform/OsFileApi.h"
#include "platform/ZuTypes.h"

#ifndef ERROR_WRITE_FAULT
#define ERROR_WRITE_FAULT 29L
#endif

struct CFilterSetNode::TImpl {
  std::string key;               // the folded name the parent's map points at
  CFilterSetNode* up = nullptr;  // the parent, for the walks of a living set
  std::unordered_map<std::string_view, boost::shared_ptr<CFilterSetNode>> children;
  CFilterIndex filterIndex;
  CFilterIndex exceptionIndex;
  // A term of an engine other than 1 may match below any folder.
  bool filterBelowAnyFolder = false;
  bool exceptionBelowAnyFolder = false;
};

namespace {

inline char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// Calls visit(component) for each component of a path until it returns
// false: backslashes separate, empty components are dropped, and so is a
// leading "\\?\" or "\\?\UNC\".
template <class Visit>
void ForEachComponent(std::string_view path, Visit visit) {
  std::size_t i = 0;
  while (i < path.size() && path[i] == '\\') ++i;
  if (i >= 1 && path.compare(i, 2, "?\\") == 0) {
    i += 2;
    if (path.size() >= i + 4 && FoldAscii(path[i]) == 'u' && FoldAscii(path[i + 1]) == 'n' &&
        FoldAscii(path[i + 2]) == 'c' && path[i + 3] == '\\')
      i += 4;
  }
  while (i < path.size()) {
    std::size_t end = path.find('\\', i);
    if (end == std::string_view::npos) end = path.size();
    if (end > i && !visit(path.substr(i, end - i))) return;
    i = end + 1;
  }
}

bool IsState(const CFilterSetNode& node, unsigned long state) {
  return node.GetState().IsSelected(BFilterNodeState::FILTER_NODE_STATE, state);
}

bool EndsWith(const std::string& text, const char* tail) {
  const std::size_t n = std::char_traits<char>::length(tail);
  return text.size() >= n && text.compare(text.size() - n, n, tail) == 0;
}

std::string Join(const std::string& prefix, const std::string& path) {
  if (prefix.empty()) return path;
  if (path.empty()) return prefix;
  return prefix + "\\" + path;
}

}  // namespace

// The walks over a set's nodes.
struct CFilterSetInternals {
  typedef CFilterSetNode Node;

  static const Node* Up(const Node& node) { return node.m_impl->up; }

  static bool StopsWalk(const CFilterSet& set, const Node& node) {
    return set.m_noInherit || node.m_state.IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT);
  }

  // Calls visit(node) from `deepest` upward until visit returns true (then
  // true) or the walk ends after a NoInherit node.
  template <class Visit>
  static bool Upward(const CFilterSet& set, const Node* deepest, Visit visit) {
    for (const Node* n = deepest; n; n = Up(*n)) {
      if (visit(*n)) return true;
      if (StopsWalk(set, *n)) break;
    }
    return false;
  }

  static const Node* Deepest(const CFilterSet& set, const std::string& folded, bool& exact) {
    const Node* node = set.m_root.get();
    exact = true;
    ForEachComponent(folded, [&](std::string_view component) {
      const auto& children = node->m_impl->children;
      const auto found = children.empty() ? children.end() : children.find(component);
      if (found == children.end()) {
        exact = false;
        return false;
      }
      node = found->second.get();
      return true;
    });
    return node;
  }

  // Adds delta to a counter of every ancestor of node.
  static void Bump(Node& node, unsigned Node::*counter, int delta) {
    for (Node* n = node.m_impl->up; n; n = n->m_impl->up) n->*counter += static_cast<unsigned>(delta);
  }

  static void SetState(Node& node, BFilterNodeState state) {
    const bool wasEntry = node.m_state.AsValue() != 0;
    const bool wasException = IsState(node, BFilterNodeState::FILTER_NODE_EXCEPTION);
    const bool wasNoInherit = node.m_state.IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT);
    if (!state.IsSelected(BFilterNodeState::FILTER_NODE_STATE, BFilterNodeState::FILTER_NODE_PLACEHOLDER))
      node.m_state.Select(BFilterNodeState::FILTER_NODE_STATE, state.GetState());
    if (state.IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT)) node.m_state.Set(BFilterNodeState::FILTER_NODE_NOINHERIT);
    const bool isEntry = node.m_state.AsValue() != 0;
    const bool isException = IsState(node, BFilterNodeState::FILTER_NODE_EXCEPTION);
    const bool isNoInherit = node.m_state.IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT);
    if (isEntry != wasEntry) Bump(node, &Node::m_entriesBelow, isEntry ? 1 : -1);
    if (isException != wasException) Bump(node, &Node::m_exceptionsBelow, isException ? 1 : -1);
    if (isNoInherit != wasNoInherit) Bump(node, &Node::m_noInheritBelow, 1);
  }

  static void Reindex(Node& node, bool exposeRoot) {
    node.m_impl->filterIndex.Clear();
    node.m_impl->exceptionIndex.Clear();
    for (std::uint32_t i = 0; i < node.m_filters.size(); ++i)
      node.m_impl->filterIndex.Add(node.m_filters[i], i, exposeRoot);
    for (std::uint32_t i = 0; i < node.m_exceptions.size(); ++i)
      node.m_impl->exceptionIndex.Add(node.m_exceptions[i], i, exposeRoot);
    for (auto& child : node.m_impl->children) Reindex(*child.second, exposeRoot);
  }

  static std::vector<const Node*> SortedChildren(const Node& node) {
    std::vector<const Node*> children;
    children.reserve(node.m_impl->children.size());
    for (const auto& child : node.m_impl->children) children.push_back(child.second.get());
    std::sort(children.begin(), children.end(),
              [](const Node* a, const Node* b) { return a->m_impl->key < b->m_impl->key; });
    return children;
  }

  static bool Walk(const Node& node, const std::string& path, const CFilterSet::TWalkCallback& callback) {
    if (!callback(node, path)) return false;
    for (const Node* child : SortedChildren(node))
      if (!Walk(*child, path.empty() ? child->m_name : path + "\\" + child->m_name, callback)) return false;
    return true;
  }

  static void Surface(const Node& node, const std::string& path, std::vector<std::string>& out) {
    if (node.m_impl->up && node.HasEntries()) {
      out.push_back(path);
      return;
    }
    for (const Node* child : SortedChildren(node))
      Surface(*child, path.empty() ? child->m_name : path + "\\" + child->m_name, out);
  }

  static bool Filtered(const CFilterSet& set, unsigned long applies, const CFilterTermTestString& test,
                       const Node* deepest, boost::shared_ptr<CFilterContext>* context) {
    boost::shared_ptr<CFilterContext> found;
    bool filtered = Upward(set, deepest, [&](const Node& n) {
      if (!IsState(n, BFilterNodeState::FILTER_NODE_FILTER)) return false;
      found = n.m_context;
      return true;
    });
    if (!filtered) {
      bool anyApplied = false;
      filtered = Upward(set, deepest, [&](const Node& n) {
        if (n.m_filters.empty()) return false;
        const CFilterIndex& index = n.m_impl->filterIndex;
        anyApplied = anyApplied || (index.AppliesUnion() & applies) != 0;
        const std::uint32_t position = index.FindFirst(n.m_filters, applies, test);
        if (position == CFilterIndex::kNone) return false;
        found = n.m_filters[position].GetContext();
        return true;
      });
      if (!filtered && applies == FILTER_APPLIES_SELECTION && !anyApplied) filtered = true;
    }
    if (filtered) {
      filtered = !Upward(set, deepest, [](const Node& n) { return IsState(n, BFilterNodeState::FILTER_NODE_EXCEPTION); });
      if (filtered)
        filtered = !Upward(set, deepest, [&](const Node& n) {
          return !n.m_exceptions.empty() &&
                 n.m_impl->exceptionIndex.FindFirst(n.m_exceptions, applies, test) != CFilterIndex::kNone;
        });
    }
    if (context) {
      if (filtered)
        *context = found;
      else
        context->reset();
    }
    return filtered;
  }
};

CFilterSetNode::CFilterSetNode() : m_impl(new TImpl) {}

std::string CFilterSetNode::GetPath() const {
  std::vector<const CFilterSetNode*> chain;
  for (const CFilterSetNode* n = this; n->m_impl->up; n = n->m_impl->up) chain.push_back(n);
  std::string path;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    if (!path.empty()) path += '\\';
    path += (*it)->m_name;
  }
  return path;
}

bool CFilterSetNode::HasEntries() const {
  return m_state.AsValue() != 0 || !m_filters.empty() || !m_exceptions.empty();
}

CFilterSet::CFilterSet() : m_root(new CFilterSetNode) {}
CFilterSet::~CFilterSet() = default;

boost::shared_ptr<CFilterSetNode> CFilterSet::Search(const std::string& path) const {
  boost::shared_ptr<CFilterSetNode> node = m_root;
  std::string folded = path.c_str();  // a NUL ends a path
  for (char& c : folded) c = FoldAscii(c);
  ForEachComponent(folded, [&](std::string_view component) {
    const auto found = node->m_impl->children.find(component);
    if (found == node->m_impl->children.end()) return false;
    node = found->second;
    return true;
  });
  return node;
}

boost::shared_ptr<CFilterSetNode> CFilterSet::Node(const std::string& path) {
  boost::shared_ptr<CFilterSetNode> node = m_root;
  ForEachComponent(path, [&](std::string_view component) {
    std::string key(component);
    for (char& c : key) c = FoldAscii(c);
    auto found = node->m_impl->children.find(key);
    if (found == node->m_impl->children.end()) {
      boost::shared_ptr<CFilterSetNode> child(new CFilterSetNode);
      child->m_name = std::string(component);
      child->m_impl->key = std::move(key);
      child->m_impl->up = node.get();
      child->m_parent = node;
      found = node->m_impl->children.emplace(std::string_view(child->m_impl->key), child).first;
    }
    node = found->second;
    return true;
  });
  return node;
}

CZuError CFilterSet::AddFilterItem(BFilterNodeState state, const std::string& path,
                                   boost::shared_ptr<CFilterContext> context, const std::string& prefix) {
  if (m_writeProtected)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterSet::AddFilterItem"), ERROR_WRITE_PROTECT,
                                   "Filter set is write-protected, Filter=[%s]", path.c_str());
  if (CFilterTerm::IsWildcardItem(path)) {
    CFilterTerm term;
    term.SetPathMatchEscapeCharacter(m_escape);
    CZuError result = term.LoadRaw(path);
    if (result.IsError()) return result.Push(ZU_HERE("CFilterSet::AddFilterItem"));
    term.SetContext(std::move(context));
    return AddFilterItem(state, term, prefix);
  }
  const std::string full = Join(prefix.c_str(), path.c_str());  // a NUL ends a path
  bool any = false;
  ForEachComponent(full, [&](std::string_view) { return !(any = true); });
  if (!any)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterSet::AddFilterItem"), ERROR_INVALID_PARAMETER,
                                   "Empty filter path, Filter=[%s]", path.c_str());
  boost::shared_ptr<CFilterSetNode> node = Node(full);
  CFilterSetInternals::SetState(*node, state);
  node->m_context = std::move(context);
  return CZuError::Success();
}

CZuError CFilterSet::AddFilterItem(BFilterNodeState state, const CFilterTerm& term, const std::string& prefix) {
  if (m_writeProtected)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterSet::AddFilterItem"), ERROR_WRITE_PROTECT,
                                   "Filter set is write-protected, Filter=[%s]", term.GetFilterTerm().c_str());
  const bool isFilter = state.IsSelected(BFilterNodeState::FILTER_NODE_STATE, BFilterNodeState::FILTER_NODE_FILTER);
  const bool isException =
      state.IsSelected(BFilterNodeState::FILTER_NODE_STATE, BFilterNodeState::FILTER_NODE_EXCEPTION);
  if (!isFilter && !isException)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterSet::AddFilterItem"), ERROR_INVALID_PARAMETER,
                                   "Filter term needs the state Filter or Exception, State=[%s]",
                                   state.AsString().c_str());
  CFilterTerm added = term;
  if (added.GetEscape() != m_escape) added.SetPathMatchEscapeCharacter(m_escape);
  added.SetDefaultCaseInsensitive(m_insensitiveWildcards);
  added.SetFilterPrefix(prefix);
  CZuError engine = added.InitializeEngine();
  if (engine.IsError())
    CZuLogger::GetGlobalInstance().LogMessage(1, "CFilterSet::AddFilterItem", __LINE__, nullptr,
                                              "InitializeEngine failed, error=%s", engine.AsString().c_str());
  boost::shared_ptr<CFilterSetNode> node = Node(prefix.c_str());
  if (state.IsSet(BFilterNodeState::FILTER_NODE_NOINHERIT))
    CFilterSetInternals::SetState(*node, BFilterNodeState(BFilterNodeState::FILTER_NODE_NOINHERIT));
  std::vector<CFilterTerm>& list = isFilter ? node->m_filters : node->m_exceptions;
  CFilterIndex& index = isFilter ? node->m_impl->filterIndex : node->m_impl->exceptionIndex;
  list.push_back(added);
  if (added.GetEngine() != 1) (isFilter ? node->m_impl->filterBelowAnyFolder : node->m_impl->exceptionBelowAnyFolder) = true;
  index.Add(added, static_cast<std::uint32_t>(list.size() - 1), m_exposeRoot);
  CFilterSetInternals::Bump(*node, &CFilterSetNode::m_entriesBelow, 1);
  if (isException) CFilterSetInternals::Bump(*node, &CFilterSetNode::m_exceptionsBelow, 1);
  return CZuError::Success();
}

bool CFilterSet::IsIn(const std::string& path) const { return IsIn(FILTER_APPLIES_ALL, path); }

bool CFilterSet::IsIn(unsigned long applies, const std::string& path,
                      boost::shared_ptr<CFilterContext>* context) const {
  const CFilterTermTestString test(path, m_exposeRoot);
  return IsIn(applies, test, context);
}

bool CFilterSet::IsIn(unsigned long applies, const CFilterTermTestString& test,
                      boost::shared_ptr<CFilterContext>* context) const {
  bool exact = false;
  const CFilterSetNode* deepest = CFilterSetInternals::Deepest(*this, test.GetFoldedKey(), exact);
  return CFilterSetInternals::Filtered(*this, applies, test, deepest, context);
}

bool CFilterSet::IsMatchPossibleInFolder(const std::string& folder) const {
  const CFilterTermTestString test(folder, m_exposeRoot);
  bool exact = false;
  const CFilterSetNode* deepest = CFilterSetInternals::Deepest(*this, test.GetFoldedKey(), exact);
  if (exact && (deepest->m_entriesBelow > 0 || deepest->HasEntries())) return true;
  return CFilterSetInternals::Upward(*this, deepest, [&](const CFilterSetNode& n) {
    if (!IsState(n, BFilterNodeState::FILTER_NODE_PLACEHOLDER) || n.m_impl->filterBelowAnyFolder ||
        n.m_impl->exceptionBelowAnyFolder)
      return true;
    for (const CFilterTerm& term : n.m_filters)
      if (term.IsMatchPossibleInFolder(test)) return true;
    for (const CFilterTerm& term : n.m_exceptions)
      if (term.IsMatchPossibleInFolder(test)) return true;
    return false;
  });
}

bool CFilterSet::IsMatchEntireFolder(const std::string& folder) const {
  const CFilterTermTestString test(folder, m_exposeRoot);
  bool exact = false;
  const CFilterSetNode* deepest = CFilterSetInternals::Deepest(*this, test.GetFoldedKey(), exact);
  if (exact && deepest->m_noInheritBelow > 0) return false;
  auto reaches = [&](auto visit) { return CFilterSetInternals::Upward(*this, deepest, visit); };
  auto canMatchAtOrBelow = [&](const CFilterTerm& term) {
    return term.Matches(test) || term.IsMatchPossibleInFolder(test);
  };
  if (CFilterSetInternals::Filtered(*this, FILTER_APPLIES_ALL, test, deepest, nullptr)) {
    const bool byNode = reaches([](const CFilterSetNode& n) { return IsState(n, BFilterNodeState::FILTER_NODE_FILTER); });
    const bool byTrailingTerm = byNode || reaches([&](const CFilterSetNode& n) {
      for (const CFilterTerm& term : n.m_filters)
        if (term.GetEngine() == 1 && (EndsWith(term.GetFilterTerm(), "\\***") || EndsWith(term.GetFilterTerm(), "\\**")) &&
            term.Matches(test))
          return true;
      return false;
    });
    if (!byTrailingTerm) return false;
    if (exact && (deepest->m_exceptionsBelow > 0)) return false;
    return !reaches([&](const CFilterSetNode& n) {
      if (IsState(n, BFilterNodeState::FILTER_NODE_EXCEPTION) || n.m_impl->exceptionBelowAnyFolder) return true;
      for (const CFilterTerm& term : n.m_exceptions)
        if (canMatchAtOrBelow(term)) return true;
      return false;
    });
  }
  if (exact && deepest->m_entriesBelow > 0) return false;
  return !reaches([&](const CFilterSetNode& n) {
    if (IsState(n, BFilterNodeState::FILTER_NODE_FILTER) || n.m_impl->filterBelowAnyFolder) return true;
    for (const CFilterTerm& term : n.m_filters)
      if (canMatchAtOrBelow(term)) return true;
    return false;
  });
}

bool CFilterSet::IsPathOrChildInBackupContent(const std::string& path) const {
  if (!IsIn(path)) return true;
  const CFilterTermTestString test(path, m_exposeRoot);
  bool exact = false;
  const CFilterSetNode* deepest = CFilterSetInternals::Deepest(*this, test.GetFoldedKey(), exact);
  return exact && deepest->m_exceptionsBelow > 0;
}

void CFilterSet::Walk(const TWalkCallback& callback) const { CFilterSetInternals::Walk(*m_root, std::string(), callback); }

std::vector<std::string> CFilterSet::GetSurfaceList() const {
  std::vector<std::string> surface;
  CFilterSetInternals::Surface(*m_root, std::string(), surface);
  return surface;
}

bool CFilterSet::empty() const { return m_root->m_entriesBelow == 0 && !m_root->HasEntries(); }

void CFilterSet::DumpToLog(int level, int indent, const std::string& title) const {
  auto log = [&](const std::string& line) {
    if (m_log)
      m_log->LogMessage(level, "CFilterSet::DumpToLog", __LINE__, 0, nullptr, "%*s%s", indent, "", line.c_str());
    else
      CZuLogger::GetGlobalInstance().LogMessage(level, "CFilterSet::DumpToLog", __LINE__, nullptr, "%*s%s", indent, "",
                                                line.c_str());
  };
  log(title);
  Walk([&](const CFilterSetNode& node, const std::string& path) {
    if (node.GetState().AsValue() != 0)
      log("  [" + path + "] " + node.GetState().AsString());
    for (const CFilterTerm& term : node.GetFilterTerms()) log("  [" + path + "] Filter " + term.GetRawFilterTerm());
    for (const CFilterTerm& term : node.GetExceptionTerms())
      log("  [" + path + "] Exception " + term.GetRawFilterTerm());
    return true;
  });
}

CZuError CFilterSet::DumpDiagnosticData(CLineWriter& writer) const {
  CZuError result = writer.WriteLine("FilterSet: ExposeRoot=%d, NoInherit=%d, WriteProtected=%d, Escape=0x%02X, "
                                     "InsensitiveWildcards=%d",
                                     m_exposeRoot, m_noInherit, m_writeProtected,
                                     static_cast<unsigned>(static_cast<unsigned char>(m_escape)), m_insensitiveWildcards);
  Walk([&](const CFilterSetNode& node, const std::string& path) {
    if (!result.IsError())
      result = writer.WriteLine("Node [%s] State=[%s]", path.c_str(), node.GetState().AsString().c_str());
    for (const CFilterTerm& term : node.GetFilterTerms())
      if (!result.IsError()) result = writer.WriteLine("  Filter %s", term.GetRawFilterTerm().c_str());
    for (const CFilterTerm& term : node.GetExceptionTerms())
      if (!result.IsError()) result = writer.WriteLine("  Exception %s", term.GetRawFilterTerm().c_str());
    return !result.IsError();
  });
  if (result.IsError()) result.Push(ZU_HERE("CFilterSet::DumpDiagnosticData"));
  return result;
}

CZuError CFilterSet::DumpSurfaceDiagnosticData(CLineWriter& writer) const {
  CZuError result = CZuError::Success();
  for (const std::string& path : GetSurfaceList()) {
    const boost::shared_ptr<CFilterSetNode> node = Search(path);
    result = writer.WriteLine("Surface [%s] State=[%s] Filters=%u Exceptions=%u", path.c_str(),
                              node->GetState().AsString().c_str(), static_cast<unsigned>(node->GetFilterTerms().size()),
                              static_cast<unsigned>(node->GetExceptionTerms().size()));
    if (result.IsError()) return result.Push(ZU_HERE("CFilterSet::DumpSurfaceDiagnosticData"));
  }
  return result;
}

CZuError CFilterSet::SerializeToFile(const std::string& path) const {
  std::string text = "ZuFilterSet 1\n";
  char line[64];
  std::snprintf(line, sizeof line, "S 0x%X 0x%02X\n",
                (m_exposeRoot ? 1u : 0u) | (m_noInherit ? 2u : 0u) | (m_writeProtected ? 4u : 0u) |
                    (m_insensitiveWildcards ? 8u : 0u),
                static_cast<unsigned>(static_cast<unsigned char>(m_escape)));
  text += line;
  Walk([&](const CFilterSetNode& node, const std::string& nodePath) {
    if (node.GetState().AsValue() != 0) {
      std::snprintf(line, sizeof line, "N 0x%lX ", node.GetState().AsValue());
      text += line + nodePath + "\n";
    }
    for (const CFilterTerm& term : node.GetFilterTerms()) text += "F " + nodePath + "\t" + term.GetRawFilterTerm() + "\n";
    for (const CFilterTerm& term : node.GetExceptionTerms())
      text += "E " + nodePath + "\t" + term.GetRawFilterTerm() + "\n";
    return true;
  });
  FILE* file = nullptr;
  CZuError result = FXPlatform::CrtFopen(path.c_str(), "wb", file);
  if (result.IsError()) return result.Push(ZU_HERE("CFilterSet::SerializeToFile"));
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const bool closed = std::fclose(file) == 0;
  if (!written || !closed)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CFilterSet::SerializeToFile"), ERROR_WRITE_FAULT,
                                   "Writing the filter set failed, File=[%s]", path.c_str());
  return result;
}

void CFilterSet::ForEachTerm(const std::function<void(CFilterTerm&)>& change) {
  std::function<void(CFilterSetNode&)> visit = [&](CFilterSetNode& node) {
    for (CFilterTerm& term : node.m_filters) change(term);
    for (CFilterTerm& term : node.m_exceptions) change(term);
    for (auto& child : node.m_impl->children) visit(*child.second);
  };
  visit(*m_root);
}

void CFilterSet::SetExposeRoot(bool exposeRoot) {
  m_exposeRoot = exposeRoot;
  CFilterSetInternals::Reindex(*m_root, m_exposeRoot);
}

void CFilterSet::SetPathMatchEscapeCharacter(int escape) {
  m_escape = static_cast<char>(escape);
  ForEachTerm([&](CFilterTerm& term) {
    term.SetPathMatchEscapeCharacter(escape);
    term.InitializeEngine();
  });
  CFilterSetInternals::Reindex(*m_root, m_exposeRoot);
}

void CFilterSet::SetUseInsensitiveFilterForWildCard(bool insensitive) {
  m_insensitiveWildcards = insensitive;
  ForEachTerm([&](CFilterTerm& term) {
    term.SetDefaultCaseInsensitive(insensitive);
    term.InitializeEngine();
  });
}
