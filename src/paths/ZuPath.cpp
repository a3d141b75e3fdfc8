// CZuPath: FXPath's rules over one narrow path, with both separators.
#include <algorithm>

#include "paths/Path.h"
#include "paths/PathText.h"
#include "platform/PathOs.h"

namespace {

using FXPath::Detail::TView;

// The text with every "/" turned into "\", the form FXPath reads.
std::string Backslashed(const char* path) {
  std::string text(path == nullptr ? "" : path);
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

CZuError NullPath(const char* function) {
  return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_INVALID_PARAMETER,
                                 "Path is NULL");
}

// What the path is; a path that does not exist is no failure.
CZuError Kind(const char* function, const char* path, bool& exists, FXPlatform::TPathKind& kind) {
  if (path == nullptr) return NullPath(function);
  std::string native;
  CZuError result = FXPath::MakeNativePath(std::string(path), native);
  if (!result.IsError()) result = FXPlatform::QueryPathKind(native, kind);
  if (FXErrorUtil::IsWin32(result, ERROR_FILE_NOT_FOUND) || FXErrorUtil::IsWin32(result, ERROR_PATH_NOT_FOUND)) {
    exists = false;
    kind = FXPlatform::TPathKind();
    return CZuError::Success();
  }
  if (result.IsError()) return result.Push(FXCodeLocation(__FILE__, function, __LINE__), "Path=[%s]", path);
  exists = true;
  return result;
}

template <class Pick>
CZuError KindAnswer(const char* function, const char* path, bool& answer, Pick pick) {
  bool exists = false;
  FXPlatform::TPathKind kind;
  CZuError result = Kind(function, path, exists, kind);
  if (!result.IsError()) answer = exists && pick(kind);
  return result;
}

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

}  // namespace

CZuPath::CZuPath(const char* path) : m_path(path) {}
CZuPath::CZuPath(const CZuPath& other) = default;
CZuPath& CZuPath::operator=(const CZuPath& other) = default;
CZuPath::~CZuPath() = default;

CZuString CZuPath::AbsPath() const { return AbsPath(m_path.c_str()); }
CZuString CZuPath::AbsPath(const char* path) {
  std::string full;
  if (path == nullptr || FXPath::TQGetFullPathName(std::string(path), full).IsError()) return CZuString();
  return CZuString(full.c_str());
}

CZuString CZuPath::Append(const char* a, const char* b) {
  return CZuString(FXPath::Join(std::string(a == nullptr ? "" : a), std::string(b == nullptr ? "" : b)).c_str());
}

CZuString CZuPath::GetBaseName() const { return GetBaseName(m_path.c_str()); }
CZuString CZuPath::GetBaseName(const char* path) {
  std::string parent, leaf;
  if (FXPath::SplitParentPath(Backslashed(path), parent, leaf).IsError()) return CZuString();
  return CZuString(leaf.c_str());
}

CZuString CZuPath::GetExt() const { return GetExt(m_path.c_str()); }
CZuString CZuPath::GetExt(const char* path) {
  const CZuString base = GetBaseName(path);
  const std::string_view name(base.c_str(), base.Length());
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return CZuString();
  return CZuString(std::string(name.substr(dot)).c_str());
}

CZuString CZuPath::GetParent() const { return GetParent(m_path.c_str()); }
CZuString CZuPath::GetParent(const char* path) {
  std::string parent, leaf;
  if (FXPath::SplitParentPath(Backslashed(path), parent, leaf).IsError()) return CZuString();
  return CZuString(parent.c_str());
}

CZuString CZuPath::GetRoot() const { return GetRoot(m_path.c_str()); }
CZuString CZuPath::GetRoot(const char* path) {
  const std::string text = Backslashed(path);
  std::size_t root = 0;
  if (!FXPath::Detail::RootLength<char>(text, root)) return CZuString();
  return CZuString(text.substr(0, root).c_str());
}

bool CZuPath::Exists() const { return Exists(m_path.c_str()); }
bool CZuPath::Exists(const char* path) {
  bool answer = false;
  return !Exists(path, answer).IsError() && answer;
}
CZuError CZuPath::Exists(bool& exists) const { return Exists(m_path.c_str(), exists); }
CZuError CZuPath::Exists(const char* path, bool& exists) {
  return KindAnswer("CZuPath::Exists", path, exists, [](const FXPlatform::TPathKind&) { return true; });
}

bool CZuPath::IsDirectory() const { return IsDirectory(m_path.c_str()); }
bool CZuPath::IsDirectory(const char* path) {
  bool answer = false;
  return !IsDirectory(path, answer).IsError() && answer;
}
CZuError CZuPath::IsDirectory(bool& directory) const { return IsDirectory(m_path.c_str(), directory); }
CZuError CZuPath::IsDirectory(const char* path, bool& directory) {
  return KindAnswer("CZuPath::IsDirectory", path, directory,
                    [](const FXPlatform::TPathKind& kind) { return kind.directory; });
}

bool CZuPath::IsFile() const { return IsFile(m_path.c_str()); }
bool CZuPath::IsFile(const char* path) {
  bool answer = false;
  return !IsFile(path, answer).IsError() && answer;
}
CZuError CZuPath::IsFile(bool& file) const { return IsFile(m_path.c_str(), file); }
CZuError CZuPath::IsFile(const char* path, bool& file) {
  return KindAnswer("CZuPath::IsFile", path, file, [](const FXPlatform::TPathKind& kind) { return kind.regular; });
}

CZuError CZuPath::IsLink(bool& link) const { return IsLink(m_path.c_str(), link); }
CZuError CZuPath::IsLink(const char* path, bool& link) {
  return KindAnswer("CZuPath::IsLink", path, link, [](const FXPlatform::TPathKind& kind) { return kind.link; });
}
CZuError CZuPath::IsBlockDev(bool& device) const { return IsBlockDev(m_path.c_str(), device); }
CZuError CZuPath::IsBlockDev(const char* path, bool& device) {
  return KindAnswer("CZuPath::IsBlockDev", path, device,
                    [](const FXPlatform::TPathKind& kind) { return kind.blockDevice; });
}
CZuError CZuPath::IsCharDev(bool& device) const { return IsCharDev(m_path.c_str(), device); }
CZuError CZuPath::IsCharDev(const char* path, bool& device) {
  return KindAnswer("CZuPath::IsCharDev", path, device,
                    [](const FXPlatform::TPathKind& kind) { return kind.charDevice; });
}

bool CZuPath::IsRoot() const { return IsRoot(m_path.c_str()); }
bool CZuPath::IsRoot(const char* path) {
  const std::string text = Backslashed(path);
  std::size_t root = 0;
  if (text.empty() || !FXPath::Detail::RootLength<char>(text, root) || root == 0) return false;
  return text.size() == root || (text.size() == root + 1 && text.back() == '\\');
}

bool CZuPath::IsAbsolute() const { return IsAbsolute(m_path.c_str()); }
bool CZuPath::IsAbsolute(const char* path) { return FXPath::Detail::IsFullyQualified<char>(Backslashed(path)); }

bool CZuPath::IsUNC() const { return IsUNC(m_path.c_str()); }
bool CZuPath::IsUNC(const char* path) { return path != nullptr && path[0] == '\\' && path[1] == '\\'; }

bool CZuPath::IsSystemPath() const { return IsSystemPath(m_path.c_str()); }
bool CZuPath::IsSystemPath(const char* path) {
  std::string full;
  if (path == nullptr || FXPath::TQGetFullPathName(std::string(path), full).IsError()) return false;
  for (const std::string& folder : FXPlatform::SystemFolders())
    if (FXPath::IsAncestorOf(folder, full, true)) return true;
  return false;
}

void CZuPath::Split(std::vector<CZuString>& components) const { Split(m_path.c_str(), components); }
void CZuPath::Split(const char* path, std::vector<CZuString>& components) {
  components.clear();
  const std::string text = Backslashed(path);
  for (std::size_t at = 0; at < text.size();) {
    std::size_t next = text.find('\\', at);
    if (next == std::string::npos) next = text.size();
    if (next > at) components.emplace_back(text.substr(at, next - at).c_str());
    at = next + 1;
  }
}

CZuError CZuPath::SplitUNC(CZuString& server, CZuString& share, CZuString& rest) const {
  return SplitUNC(m_path.c_str(), server, share, rest);
}
CZuError CZuPath::SplitUNC(const char* path, CZuString& server, CZuString& share, CZuString& rest) {
  if (path == nullptr) return NullPath("CZuPath::SplitUNC");
  const std::string text = Backslashed(path);
  const TView<char> p(text);
  std::size_t at;
  if (FXPath::Detail::StartsWith(p, "\\\\?\\UNC\\"))
    at = 8;
  else if (FXPath::Detail::StartsWith(p, "\\\\") && !FXPath::Detail::StartsWith(p, "\\\\?\\") &&
           !FXPath::Detail::StartsWith(p, "\\\\.\\"))
    at = 2;
  else
    return FXErrorUtil::ErrorWin32(ZU_HERE("CZuPath::SplitUNC"), ERROR_INVALID_PARAMETER,
                                   "Path is not a UNC path, Path=[%s]", path);
  const std::size_t serverEnd = std::min(p.find('\\', at), p.size());
  const std::size_t shareEnd = serverEnd < p.size() ? std::min(p.find('\\', serverEnd + 1), p.size()) : p.size();
  server = CZuString(std::string(p.substr(at, serverEnd - at)).c_str());
  share = serverEnd < p.size() ? CZuString(std::string(p.substr(serverEnd + 1, shareEnd - serverEnd - 1)).c_str())
                               : CZuString();
  rest = shareEnd < p.size() ? CZuString(std::string(p.substr(shareEnd + 1)).c_str()) : CZuString();
  return CZuError::Success();
}

bool CZuPath::isValidPath(const char* path, bool mustExist) {
  if (path == nullptr || *path == '\0') return false;
  const std::string_view p(path);
  // A leading "\\" stays (shares, "\\.\", "\\?\"); other runs of one
  // repeated separator become one.
  const std::size_t keep = p.size() >= 2 && p[0] == '\\' && p[1] == '\\' ? 2 : 0;
  std::string collapsed(p.substr(0, keep));
  for (std::size_t i = keep; i < p.size(); ++i)
    if (!(IsSeparator(p[i]) && !collapsed.empty() && collapsed.back() == p[i])) collapsed.push_back(p[i]);
  std::string full;
  if (FXPath::TQGetFullPathName(collapsed, full).IsError() || !FXPath::IsSamePathAs(full, Backslashed(collapsed.c_str())))
    return false;
  return !mustExist || !FXPath::DoesPathExist(full).IsError();
}

bool CZuPath::checkPathSanityForCommandLine(const char* path) {
  if (path == nullptr || *path == '\0') return false;
  for (const char* c = path; *c != '\0'; ++c) {
    const bool fine = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9') ||
                      *c == '_' || *c == '.' || *c == '/' || *c == '\\' || *c == '-' || *c == ' ' ||
                      (*c >= '\t' && *c <= '\r');
    if (!fine) return false;
  }
  return true;
}

CZuError CZuPath::isNFS(const char* path, bool& nfs) {
  nfs = false;
  if (path == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CZuPath::isNFS"), ERROR_INVALID_PARAMETER,
                                   "name parameter passed as null");
  std::string native;
  CZuError result = FXPath::MakeNativePath(std::string(path), native);
  bool answer = false;
  if (!result.IsError()) result = FXPlatform::IsNfs(native, answer);
  if (result.IsError()) return result.Push(ZU_HERE("CZuPath::isNFS"));
  nfs = answer;
  return result;
}

namespace {

CZuError DeletePermission(const char* function, const char* path, bool grant) {
  const FXCodeLocation here(__FILE__, function, __LINE__);
  if (path == nullptr) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "Path=(null)");
  if (*path == '\0') return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "Path=[]");
  std::string native;
  CZuError result = FXPath::MakeNativePath(std::string(path), native);
  if (!result.IsError()) result = FXPlatform::SetDeletePermission(native, grant);
  if (result.IsError()) result.Push(here);
  return result;
}

}  // namespace

CZuError CZuPath::GrantDeletePermissionsEx(const char* path) {
  return DeletePermission("CZuPath::GrantDeletePermissionsEx", path, true);
}
CZuError CZuPath::RevokeDeletePermissions(const char* path) {
  return DeletePermission("CZuPath::RevokeDeletePermissions", path, false);
}
