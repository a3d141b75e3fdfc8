// Splitting paths at their separators without ever splitting a root, and
// the operations built on it: pure text, the same on every platform.
#include <vector>

#include "paths/PathText.h"

namespace FXPath {
namespace Detail {
namespace {

template <class Char>
CZuError UnterminatedPrefix(const char* function, TView<Char> path) {
  return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_INVALID_NAME,
                                 "Path has an unterminated prefix, Path=[%s]", Printable(path).c_str());
}

template <class Char>
CZuError NotFullyQualified(const char* function, TView<Char> path) {
  return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_INVALID_PARAMETER,
                                 "Path is not fully qualified, Path=[%s]", Printable(path).c_str());
}

// A path cut into root, parent and leaf (views into it).
template <class Char>
struct TParts {
  TView<Char> root, parent, leaf;
};

template <class Char>
CZuError SplitAtParent(const char* function, TView<Char> p, TParts<Char>& parts) {
  std::size_t root = 0;
  if (!RootLength(p, root)) return UnterminatedPrefix(function, p);
  std::size_t end = p.size();
  if (end > root && p[end - 1] == kSep<Char>) --end;
  if (end <= root)
    return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_PATH_NOT_FOUND,
                                   "Nothing beyond the root of the path, Path=[%s]", Printable(p).c_str());
  parts.root = p.substr(0, root);
  const std::size_t last = p.rfind(kSep<Char>, end - 1);
  if (last == TView<Char>::npos || last < root) {
    parts.parent = parts.root;
    parts.leaf = p.substr(root, end - root);
  } else {
    parts.parent = p.substr(0, last);
    parts.leaf = p.substr(last + 1, end - last - 1);
  }
  return CZuError::Success();
}

template <class Char>
CZuError ParentPath(TView<Char> p, TString<Char>& parent, TString<Char>& leaf) {
  TParts<Char> parts;
  CZuError result = SplitAtParent("FXPath::SplitParentPath", p, parts);
  if (result.IsError()) return result;
  parent.assign(parts.parent);
  leaf.assign(parts.leaf);
  return result;
}

template <class Char>
TString<Char> WithDelimiter(TView<Char> folder, unsigned int flags) {
  TString<Char> out(folder);
  if ((flags & kSplitFolderWithDelimiter) != 0 && !out.empty() && out.back() != kSep<Char>) out.push_back(kSep<Char>);
  if ((flags & kSplitFolderWithDelimiter) == 0 && out.size() > 1 && out.back() == kSep<Char>) out.pop_back();
  return out;
}

template <class Char>
CZuError FullyQualifiedName(TView<Char> p, TString<Char>* root, TString<Char>& folder, TString<Char>& name,
                            unsigned int flags) {
  constexpr const char* kFunction = "FXPath::SplitFullyQualifiedName";
  if (!IsFullyQualified(p)) return NotFullyQualified(kFunction, p);
  TParts<Char> parts;
  CZuError result = SplitAtParent(kFunction, p, parts);
  if (result.IsError()) return result;
  if (root == nullptr) {
    folder = parts.parent.size() == parts.root.size() ? TString<Char>(parts.parent)
                                                      : WithDelimiter(parts.parent, flags);
  } else {
    *root = TString<Char>(parts.root);
    folder = WithDelimiter(parts.parent.substr(parts.root.size()), flags);
  }
  name.assign(parts.leaf);
  return result;
}

// Where in `path` the part below `folder` begins, when folder is path or an
// ancestor of it (same reduction as IsAncestorOf).
template <class Char>
bool BelowFolder(TView<Char> folder, TView<Char> path, std::size_t& offset) {
  if (!Ancestor(folder, path, true)) return false;
  offset = Reduce(path).offset + Reduce(folder).length;
  return true;
}

template <class Char>
CZuError Components(TView<Char> p, TView<Char> base, std::vector<TString<Char>>& out, unsigned int flags) {
  constexpr const char* kFunction = "FXPath::SplitPaths";
  std::size_t root = 0;
  if (!RootLength(p, root)) return UnterminatedPrefix(kFunction, p);
  std::size_t offset = root;
  if (!base.empty()) {
    if (!BelowFolder(base, p, offset))
      return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_PARAMETER,
                                     "Path is not below the base, Path=[%s], Base=[%s]", Printable(p).c_str(),
                                     Printable(base).c_str());
    if (offset < root) offset = root;
  }
  std::vector<TString<Char>> parts;
  if (offset > 0) parts.emplace_back(p.substr(0, offset));
  for (std::size_t at = offset; at < p.size();) {
    std::size_t next = p.find(kSep<Char>, at);
    if (next == TView<Char>::npos) next = p.size();
    if (next > at) parts.emplace_back((flags & kSplitCumulative) != 0 ? p.substr(0, next) : p.substr(at, next - at));
    at = next + 1;
  }
  out.swap(parts);
  return CZuError::Success();
}

template <class Char>
CZuError Replace(TString<Char>& path, TView<Char> oldPrefix, TView<Char> newPrefix) {
  std::size_t offset = 0;
  if (!BelowFolder(oldPrefix, TView<Char>(path), offset))
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::ReplacePath"), ERROR_INVALID_PARAMETER,
                                   "Path is not below the folder, Path=[%s], Folder=[%s]",
                                   Printable(TView<Char>(path)).c_str(), Printable(oldPrefix).c_str());
  TString<Char> result(newPrefix);
  CZuError status =
      AppendTo<Char>(result, TView<Char>(path).substr(offset), newPrefix.empty() ? kAppendNoLeadingDelimiter : 0);
  if (status.IsError()) return status.Push(ZU_HERE("FXPath::ReplacePath"));
  path.swap(result);
  return status;
}

template <class Char>
TView<Char> Leaf(TView<Char> p) {
  const std::size_t last = p.find_last_of(TString<Char>{kSep<Char>, Char('/')});
  return last == TView<Char>::npos ? p : p.substr(last + 1);
}

template <class Char>
CZuError VolumeRelative(TView<Char> p, TString<Char>& result, unsigned int flags) {
  constexpr const char* kFunction = "FXPath::GetVolumeRelativeName";
  if (!IsFullyQualified(p)) return NotFullyQualified(kFunction, p);
  std::size_t root = 0;
  if (!RootLength(p, root)) return UnterminatedPrefix(kFunction, p);
  const std::size_t mounted = DeepestRegisteredMountEnd(p);
  std::size_t start = mounted > root ? mounted : root;
  std::size_t end = p.size();
  if (start < end && p[start] == kSep<Char>) ++start;
  if (end > start && p[end - 1] == kSep<Char>) --end;
  TString<Char> out;
  if ((flags & kVolumeRelativeLeadingDelimiter) != 0) out.push_back(kSep<Char>);
  out.append(p.substr(start, end - start));
  result.swap(out);
  return CZuError::Success();
}

template <class Char>
CZuError DeviceBase(TView<Char> p, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::GetDevicePathBase";
  if (!DevicePath(p))
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_PARAMETER, "Not a device path, Path=[%s]",
                                   Printable(p).c_str());
  // The device name starts after "\\?\GLOBALROOT\Device\".
  const std::size_t at = p.size() > 22 ? p.find(kSep<Char>, 22) : TView<Char>::npos;
  if (at == TView<Char>::npos)
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_PATH_NOT_FOUND,
                                   "Cannot find device object path delimiter; Path could already be root, Path=%s",
                                   Printable(p).c_str());
  result.assign(p.substr(0, at + 1));
  return CZuError::Success();
}

template <class Char>
CZuError VolumeGuidBase(TView<Char> p, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::GetVolumeGuidPathBase";
  if (!VolumeGuidPath(p))
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_PARAMETER,
                                   "Not a volume GUID path, Path=[%s]", Printable(p).c_str());
  const std::size_t close = p.find(Char('}'), p.find(Char('{')));
  if (close == TView<Char>::npos) return UnterminatedPrefix(kFunction, p);
  TString<Char> out(p.substr(0, close + 1));
  out.push_back(kSep<Char>);
  result.swap(out);
  return CZuError::Success();
}

// The names below a root, doubled separators skipped.
template <class Char>
std::vector<TView<Char>> Names(TView<Char> p, std::size_t from) {
  std::vector<TView<Char>> names;
  for (std::size_t at = from; at < p.size();) {
    std::size_t next = p.find(kSep<Char>, at);
    if (next == TView<Char>::npos) next = p.size();
    if (next > at) names.push_back(p.substr(at, next - at));
    at = next + 1;
  }
  return names;
}

template <class Char>
CZuError Relative(TView<Char> path, TView<Char> folder, TString<Char>& result, unsigned int flags) {
  constexpr const char* kFunction = "FXPath::MakeRelativePathFromFolder";
  if (!IsFullyQualified(path)) return NotFullyQualified(kFunction, path);
  if (!IsFullyQualified(folder)) return NotFullyQualified(kFunction, folder);
  std::size_t pathRoot = 0, folderRoot = 0;
  if (!RootLength(path, pathRoot)) return UnterminatedPrefix(kFunction, path);
  if (!RootLength(folder, folderRoot)) return UnterminatedPrefix(kFunction, folder);
  if (!SamePath(path.substr(0, pathRoot), folder.substr(0, folderRoot)))
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_NOT_SAME_DEVICE,
                                   "Paths do not have a common volume, From=[%s], To=[%s]",
                                   Printable(folder).c_str(), Printable(path).c_str());
  const std::vector<TView<Char>> to = Names(path, pathRoot), from = Names(folder, folderRoot);
  std::size_t common = 0;
  while (common < to.size() && common < from.size() && EqualNoCase(to[common], from[common])) ++common;
  TString<Char> out;
  for (std::size_t i = common; i < from.size(); ++i) AppendAscii(out, i + 1 < from.size() || common < to.size() ? "..\\" : "..");
  if (out.empty() && (flags & kRelativeDotPrefix) != 0 && common < to.size()) AppendAscii(out, ".\\");
  for (std::size_t i = common; i < to.size(); ++i) {
    out.append(to[i]);
    if (i + 1 < to.size()) out.push_back(kSep<Char>);
  }
  if (out.empty()) AppendAscii(out, ".");
  result.swap(out);
  return CZuError::Success();
}

}  // namespace
}  // namespace Detail

using namespace Detail;

CZuError SplitParentPath(const std::string& path, std::string& parent, std::string& leaf) {
  return ParentPath<char>(path, parent, leaf);
}
CZuError SplitParentPath(const std::wstring& path, std::wstring& parent, std::wstring& leaf) {
  return ParentPath<wchar_t>(path, parent, leaf);
}

CZuError SplitFullyQualifiedName(const std::string& path, std::string& folder, std::string& name,
                                 unsigned int flags) {
  return FullyQualifiedName<char>(path, nullptr, folder, name, flags);
}
CZuError SplitFullyQualifiedName(const std::wstring& path, std::wstring& folder, std::wstring& name,
                                 unsigned int flags) {
  return FullyQualifiedName<wchar_t>(path, nullptr, folder, name, flags);
}
CZuError SplitFullyQualifiedName(const std::string& path, std::string& root, std::string& folder, std::string& name,
                                 unsigned int flags) {
  return FullyQualifiedName<char>(path, &root, folder, name, flags);
}
CZuError SplitFullyQualifiedName(const std::wstring& path, std::wstring& root, std::wstring& folder,
                                 std::wstring& name, unsigned int flags) {
  return FullyQualifiedName<wchar_t>(path, &root, folder, name, flags);
}

CZuError SplitPaths(const std::string& path, const std::string& base, std::vector<std::string>& out,
                    unsigned int flags) {
  return Components<char>(path, base, out, flags);
}
CZuError SplitPaths(const std::wstring& path, const std::wstring& base, std::vector<std::wstring>& out,
                    unsigned int flags) {
  return Components<wchar_t>(path, base, out, flags);
}

CZuError ReplacePath(std::string& path, const std::string& oldPrefix, const std::string& newPrefix) {
  return Replace<char>(path, oldPrefix, newPrefix);
}
CZuError ReplacePath(std::wstring& path, const std::wstring& oldPrefix, const std::wstring& newPrefix) {
  return Replace<wchar_t>(path, oldPrefix, newPrefix);
}

CZuError RemovePathFromFileName(std::string& path) {
  path = GetFileNameWithoutPath(path);
  return CZuError::Success();
}
CZuError RemovePathFromFileName(std::wstring& path) {
  path = GetFileNameWithoutPath(path);
  return CZuError::Success();
}
std::string GetFileNameWithoutPath(const std::string& path) { return std::string(Leaf<char>(path)); }
std::wstring GetFileNameWithoutPath(const std::wstring& path) { return std::wstring(Leaf<wchar_t>(path)); }

CZuError GetVolumeRelativeName(const std::string& path, std::string& result, unsigned int flags) {
  return VolumeRelative<char>(path, result, flags);
}
CZuError GetVolumeRelativeName(const std::wstring& path, std::wstring& result, unsigned int flags) {
  return VolumeRelative<wchar_t>(path, result, flags);
}

CZuError GetDevicePathBase(const std::string& path, std::string& result) { return DeviceBase<char>(path, result); }
CZuError GetDevicePathBase(const std::wstring& path, std::wstring& result) {
  return DeviceBase<wchar_t>(path, result);
}
CZuError GetVolumeGuidPathBase(const std::string& path, std::string& result) {
  return VolumeGuidBase<char>(path, result);
}
CZuError GetVolumeGuidPathBase(const std::wstring& path, std::wstring& result) {
  return VolumeGuidBase<wchar_t>(path, result);
}

CZuError MakeRelativePathFromFolder(const std::string& path, const std::string& folder, std::string& result,
                                    unsigned int flags) {
  return Relative<char>(path, folder, result, flags);
}
CZuError MakeRelativePathFromFolder(const std::wstring& path, const std::wstring& folder, std::wstring& result,
                                    unsigned int flags) {
  return Relative<wchar_t>(path, folder, result, flags);
}

}  // namespace FXPath
