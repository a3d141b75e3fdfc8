// The native long form and the current folders it resolves against.
#include "paths/PathText.h"
#include "platform/PathOs.h"
#include "text/StringAlgo.h"

namespace FXPath {
namespace Detail {
namespace {

template <class Char>
bool IsSlash(Char c) {
  return c == kSep<Char> || c == Char('/');
}

template <class Char>
CZuError CurrentFolderOf(TString<Char>& folder) {
  std::string current;
  CZuError result = FXPlatform::CurrentFolder(current);
  if (result.IsError())
    return result.Push(ZU_HERE("FXPath::GetCurrentFolder"), "GetFullPathNameW failed, Path=[.]");
  FromSystem(current, folder);
  return result;
}

template <class Char>
CZuError CurrentFolderOf(Char drive, TString<Char>& folder) {
  const bool letter = IsDriveLetter(drive);
  std::string current;
  CZuError result = letter ? FXPlatform::CurrentFolderOfDrive(static_cast<char>(drive), current)
                           : FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::GetCurrentFolder"), ERROR_INVALID_PARAMETER);
  if (result.IsError())
    return result.Push(ZU_HERE("FXPath::GetCurrentFolder"), "GetFullPathNameW failed, Path=[%c:]",
                       letter ? static_cast<char>(drive) : '?');
  FromSystem(current, folder);
  return result;
}

// "\\?\" before a drive path, "\\?\UNC\" instead of the "\\" of a share.
template <class Char>
TString<Char> LongPrefixed(TView<Char> full) {
  TString<Char> out;
  out.reserve(full.size() + 8);
  if (StartsWith(full, "\\\\?\\") || StartsWith(full, "\\\\.\\")) {
    out.append(full);
  } else if (StartsWith(full, "\\\\")) {
    AppendAscii(out, "\\\\?\\UNC\\");
    out.append(full.substr(2));
  } else {
    AppendAscii(out, "\\\\?\\");
    out.append(full);
  }
  return out;
}

template <class Char>
CZuError NativeForm(TView<Char> p, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::MakeNativePath";
  if (p.empty()) return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_PARAMETER, "Path is empty");
  if (p.size() >= kMaxPathLength)
    return TooLong(kFunction, p.size());
  if (!IsWellFormed(p))
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_NO_UNICODE_TRANSLATION,
                                   "Path is not well-formed Unicode, Path=[%s]", Printable(p).c_str());
  TString<Char> out;
  CZuError status = CZuError::Success();
  if ((p.size() == 2 || p.size() == 3) && p[1] == Char(':')) {
    out.assign(p);  // a bare drive gets no prefix
  } else if (StartsWith(p, "\\\\?\\", true) || StartsWith(p, "\\\\.")) {
    out.assign(p);
  } else if (StartsWith(p, "\\\\")) {
    // "\\?" is a long prefix cut short, not a share named "?".
    if (p.size() == 3 && p[2] == Char('?'))
      return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_NAME,
                                     "Path has an unterminated prefix, Path=[%s]", Printable(p).c_str());
    out = LongPrefixed(p);
  } else if (p.size() > 2 && p[1] == Char(':') && IsSlash(p[2])) {
    out = LongPrefixed(p);
  } else if (HasDriveColon(p)) {
    TString<Char> current;
    status = CurrentFolderOf(p[0], current);
    if (status.IsError())
      return status.Push(ZU_HERE(kFunction), "Unable to resolve relative path using current folder for drive %c, Path=[%s]",
                         static_cast<char>(p[0]), Printable(p).c_str());
    TView<Char> rest = p.substr(2);
    if (rest.size() >= 2 && rest[0] == Char('.') && IsSlash(rest[1])) rest.remove_prefix(2);
    out = LongPrefixed<Char>(current);
    status = AppendTo<Char>(out, rest, 0);
  } else {
    TString<Char> current;
    status = CurrentFolderOf(current);
    if (status.IsError())
      return status.Push(ZU_HERE(kFunction), "Unable to resolve relative path using current folder, Path=[%s]",
                         Printable(p).c_str());
    if (IsSlash(p[0])) {
      std::size_t root = 0;
      RootLength<Char>(current, root);
      TView<Char> drive = TView<Char>(current).substr(0, root);
      if (!drive.empty() && drive.back() == kSep<Char>) drive.remove_suffix(1);
      TString<Char> full(drive);
      full.append(p);
      out = LongPrefixed<Char>(full);
    } else if (p.size() >= 2 && p[0] == Char('.') && IsSlash(p[1])) {
      out = LongPrefixed<Char>(current);
      status = AppendTo<Char>(out, p.substr(2), 0);
    } else {
      out = LongPrefixed<Char>(current);
      if (!(p.size() == 1 && p[0] == Char('.'))) status = AppendTo<Char>(out, p, 0);
    }
  }
  if (status.IsError()) return status.Push(ZU_HERE(kFunction));
  const Char slash[] = {Char('/')}, sep[] = {kSep<Char>}, doubled[] = {kSep<Char>, kSep<Char>};
  FXString::ReplaceAll<Char>(out, TView<Char>(slash, 1), TView<Char>(sep, 1));
  FXString::ReplaceAll<Char>(out, TView<Char>(doubled, 2), TView<Char>(sep, 1), 1);
  if (out.size() >= kMaxPathLength)
    return TooLong(kFunction, out.size());
  result.swap(out);
  return CZuError::Success();
}

template <class Char>
CZuError AbsoluteForm(TView<Char> p, TView<Char> folder, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::MakeAbsolutePath";
  if (IsFullyQualified(p)) {
    result.assign(p);
    return CZuError::Success();
  }
  if (!IsFullyQualified(folder))
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_INVALID_PARAMETER,
                                   "Folder is not fully qualified, Folder=[%s]", Printable(folder).c_str());
  TString<Char> out;
  TView<Char> tail = p;
  if (!p.empty() && IsSlash(p[0])) {
    std::size_t root = 0;
    RootLength(folder, root);
    out.assign(folder.substr(0, root));
  } else if (HasDriveColon(p)) {
    tail = p.substr(2);
    if (HasDriveColon(folder) && Lower(folder[0]) == Lower(p[0])) {
      out.assign(folder);
    } else {
      out.assign(p.substr(0, 2));
      out.push_back(kSep<Char>);
    }
  } else {
    out.assign(folder);
  }
  if (tail.size() >= 2 && tail[0] == Char('.') && IsSlash(tail[1])) tail.remove_prefix(2);
  if (tail.size() == 1 && tail[0] == Char('.')) tail = TView<Char>();
  CZuError status = AppendTo<Char>(out, tail, 0);
  if (status.IsError()) return status.Push(ZU_HERE(kFunction));
  result.swap(out);
  return status;
}

}  // namespace
}  // namespace Detail

using namespace Detail;

// The result is built aside and swapped in, so the path may be both.
CZuError MakeNativePath(std::string& path) { return NativeForm<char>(path, path); }
CZuError MakeNativePath(std::wstring& path) { return NativeForm<wchar_t>(path, path); }
CZuError MakeNativePath(const std::string& path, std::string& result) { return NativeForm<char>(path, result); }
CZuError MakeNativePath(const std::wstring& path, std::wstring& result) {
  return NativeForm<wchar_t>(path, result);
}

CZuError MakeAbsolutePath(const std::string& path, const std::string& folder, std::string& result) {
  return AbsoluteForm<char>(path, folder, result);
}
CZuError MakeAbsolutePath(const std::wstring& path, const std::wstring& folder, std::wstring& result) {
  return AbsoluteForm<wchar_t>(path, folder, result);
}

CZuError GetCurrentFolder(std::string& result) { return CurrentFolderOf(result); }
CZuError GetCurrentFolder(std::wstring& result) { return CurrentFolderOf(result); }
CZuError GetCurrentFolder(char drive, std::string& result) { return CurrentFolderOf(drive, result); }
CZuError GetCurrentFolder(wchar_t drive, std::wstring& result) { return CurrentFolderOf(drive, result); }

}  // namespace FXPath
