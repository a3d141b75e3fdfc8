// The FXPath calls that ask the file system: each makes its path native,
// asks the platform layer and reports with its own name as location.
#include <chrono>
#include <thread>

#include "paths/PathText.h"
#include "platform/PathOs.h"

namespace FXPath {
namespace Detail {
namespace {

FXCodeLocation Location(const char* function) { return FXCodeLocation(__FILE__, function, __LINE__); }

// The native form in the platform layer's text.
template <class Char>
CZuError SystemPath(const char* function, const TString<Char>& path, std::string& out) {
  TString<Char> native;
  CZuError result = MakeNativePath(path, native);
  if (result.IsError()) return result.Push(Location(function));
  std::string text = ToSystem(native);
  if (text.find('\0') != std::string::npos)
    return FXErrorUtil::ErrorWin32(Location(function), ERROR_INVALID_NAME, "Path holds a NUL character, Path=[%s]",
                                   text.c_str());
  out.swap(text);
  return result;
}

template <class Char>
CZuError FullPath(const TString<Char>& path, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::TQGetFullPathName";
  std::string text;
  CZuError status = SystemPath(kFunction, path, text);
  if (status.IsError()) return status;
  const bool longForm = StartsWith<Char>(path, "\\\\?\\");
  MakeNormalPath(text);
  std::size_t root = 0;
  RootLength<char>(text, root);
  std::string full;
  status = FXPlatform::FullPathName(text, root, full);
  if (status.IsError()) return status.Push(Location(kFunction), "GetFullPathNameW failed, Path=[%s]", text.c_str());
  if (longForm) MakeLongPath(full);
  FromSystem(full, result);
  return status;
}

template <class Char>
CZuError Exists(const TString<Char>& path) {
  constexpr const char* kFunction = "FXPath::DoesPathExist";
  std::string text;
  CZuError status = SystemPath(kFunction, path, text);
  if (status.IsError()) return status;
  FXPlatform::TPathKind kind;
  status = FXPlatform::QueryPathKind(text, kind);
  if (status.IsError()) status.Push(Location(kFunction), "Path=[%s]", text.c_str());
  return status;
}

template <class Char>
CZuError ExistsWithRetry(const TString<Char>& path, unsigned int retries) {
  for (unsigned int attempt = 0;; ++attempt) {
    CZuError status = Exists(path);
    if (!status.IsError() || attempt >= retries || FXErrorUtil::IsWin32(status, ERROR_FILE_NOT_FOUND) ||
        FXErrorUtil::IsWin32(status, ERROR_PATH_NOT_FOUND))
      return status.IsError() ? status.Push(Location("FXPath::DoesUNCPathExistWithRetry")) : status;
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}

template <class Char>
CZuError SameVolume(const TString<Char>& a, const TString<Char>& b, bool& same) {
  constexpr const char* kFunction = "FXPath::ArePathsOnSameVolume";
  std::string textA, textB;
  CZuError status = SystemPath(kFunction, a, textA);
  if (!status.IsError()) status = SystemPath(kFunction, b, textB);
  if (status.IsError()) return status;
  bool answer = false;
  status = FXPlatform::SameVolume(textA, textB, answer);
  if (status.IsError()) return status.Push(Location(kFunction), "A=[%s], B=[%s]", textA.c_str(), textB.c_str());
  same = answer;
  return status;
}

// The calls of one path and one result: the platform's answer, converted.
template <class Char, class Out, class Call>
CZuError Ask(const char* function, const TString<Char>& path, Out& out, Call call) {
  std::string text;
  CZuError status = SystemPath(function, path, text);
  if (status.IsError()) return status;
  status = call(text, out);
  if (status.IsError()) status.Push(Location(function), "Path=[%s]", text.c_str());
  return status;
}

template <class Char>
CZuError VolumePath(const TString<Char>& path, TString<Char>& result) {
  return Ask("FXPath::TQGetVolumePathName", path, result, [](const std::string& text, TString<Char>& out) {
    std::string root;
    CZuError status = FXPlatform::VolumePathName(text, root);
    if (!status.IsError()) {
      MakeNormalPath(root);
      FromSystem(root, out);
    }
    return status;
  });
}

template <class Char>
CZuError VolumeGuid(const TString<Char>& path, TString<Char>& result) {
  return Ask("FXPath::TQGetVolumeNameForVolumeMountPoint", path, result,
             [](const std::string& text, TString<Char>& out) {
               std::string mountPoint(text), guid;
               Append(mountPoint, std::string(), kAppendEmptyTail);  // the call wants the trailing "\"
               CZuError status = FXPlatform::VolumeGuidName(mountPoint, guid);
               if (!status.IsError()) FromSystem(guid, out);
               return status;
             });
}

template <class Char>
CZuError UniqueId(const TString<Char>& path, TString<Char>& result) {
  return Ask("FXPath::TQGetVolumeUniqueId", path, result, [](const std::string& text, TString<Char>& out) {
    std::string digits;
    CZuError status = FXPlatform::VolumeUniqueId(text, digits);
    if (!status.IsError()) FromSystem("UniqueId:" + digits, out);
    return status;
  });
}

template <class Char>
CZuError DriveLetter(const TString<Char>& path, TString<Char>& result) {
  constexpr const char* kFunction = "FXPath::GetDriveLetterForMountPath";
  std::string text;
  CZuError status = SystemPath(kFunction, path, text);
  if (status.IsError()) return status;
  char letter = 0;
  status = FXPlatform::DriveLetterForMountPath(text, letter);
  if (status.IsError()) return status.Push(Location(kFunction), "No drive letter found for %s", text.c_str());
  const char root[] = {letter, ':', '\\', 0};
  FromSystem(root, result);
  return status;
}

template <class Char>
CZuError CyclicLink(const TString<Char>& path) {
  constexpr const char* kFunction = "FXPath::CheckForCyclicSymbolicLink";
  std::string text;
  CZuError status = SystemPath(kFunction, path, text);
  if (status.IsError()) return status;
  auto identify = [](const std::string& of, FXPlatform::TFileIdentity& id) {
    CZuError found = FXPlatform::FileIdentity(of, id);
    if (found.IsError())
      found.Push(Location(kFunction), "GetFileInformationByHandle failed, Path=[%s]", of.c_str());
    return found;
  };
  FXPlatform::TFileIdentity target;
  status = identify(text, target);
  if (status.IsError()) return status;
  // Every ancestor up to the root; SplitParentPath fails once at the root.
  std::string ancestor = text, parent, leaf;
  while (!SplitParentPath(ancestor, parent, leaf).IsError()) {
    ancestor.swap(parent);
    FXPlatform::TFileIdentity id;
    status = identify(ancestor, id);
    if (status.IsError()) return status;
    if (id.volumeSerial == target.volumeSerial && id.fileId == target.fileId) {
      CZuError cycle = FXErrorUtil::ErrorWin32(
          Location(kFunction), ERROR_CANT_RESOLVE_FILENAME, "Path=[%s], VolumeSerialNumber=[0x%X], FileId=[0x%016llX]",
          ancestor.c_str(), static_cast<unsigned int>(id.volumeSerial), id.fileId);
      return cycle.Push(Location(kFunction), "Target=[%s], VolumeSerialNumber=[0x%X], FileId=[0x%016llX]",
                        text.c_str(), static_cast<unsigned int>(target.volumeSerial), target.fileId);
    }
  }
  return CZuError::Success();
}

}  // namespace
}  // namespace Detail

using namespace Detail;

CZuError TQGetFullPathName(const std::string& path, std::string& result) { return FullPath(path, result); }
CZuError TQGetFullPathName(const std::wstring& path, std::wstring& result) { return FullPath(path, result); }

CZuError DoesPathExist(const std::string& path) { return Exists(path); }
CZuError DoesPathExist(const std::wstring& path) { return Exists(path); }
CZuError DoesUNCPathExistWithRetry(const std::string& path, unsigned int retries) {
  return ExistsWithRetry(path, retries);
}
CZuError DoesUNCPathExistWithRetry(const std::wstring& path, unsigned int retries) {
  return ExistsWithRetry(path, retries);
}

CZuError ArePathsOnSameVolume(const std::string& a, const std::string& b, bool& same) {
  return SameVolume(a, b, same);
}
CZuError ArePathsOnSameVolume(const std::wstring& a, const std::wstring& b, bool& same) {
  return SameVolume(a, b, same);
}

CZuError TQGetVolumePathName(const std::string& path, std::string& result) { return VolumePath(path, result); }
CZuError TQGetVolumePathName(const std::wstring& path, std::wstring& result) { return VolumePath(path, result); }
CZuError TQGetVolumeNameForVolumeMountPoint(const std::string& mountPoint, std::string& result) {
  return VolumeGuid(mountPoint, result);
}
CZuError TQGetVolumeNameForVolumeMountPoint(const std::wstring& mountPoint, std::wstring& result) {
  return VolumeGuid(mountPoint, result);
}
CZuError TQGetVolumeSerialNumber(const std::string& path, DWORD& serial) {
  return Ask("FXPath::TQGetVolumeSerialNumber", path, serial, FXPlatform::VolumeSerialNumber);
}
CZuError TQGetVolumeSerialNumber(const std::wstring& path, DWORD& serial) {
  return Ask("FXPath::TQGetVolumeSerialNumber", path, serial, FXPlatform::VolumeSerialNumber);
}
CZuError TQGetVolumeUniqueId(const std::string& path, std::string& result) { return UniqueId(path, result); }
CZuError TQGetVolumeUniqueId(const std::wstring& path, std::wstring& result) { return UniqueId(path, result); }
CZuError ApiGetVolumeFileSystemFlags(const std::string& path, DWORD& flags) {
  return Ask("FXPath::ApiGetVolumeFileSystemFlags", path, flags, FXPlatform::VolumeFileSystemFlags);
}
CZuError ApiGetVolumeFileSystemFlags(const std::wstring& path, DWORD& flags) {
  return Ask("FXPath::ApiGetVolumeFileSystemFlags", path, flags, FXPlatform::VolumeFileSystemFlags);
}

CZuError GetDriveLetterForMountPath(const std::string& mountPath, std::string& result) {
  return DriveLetter(mountPath, result);
}
CZuError GetDriveLetterForMountPath(const std::wstring& mountPath, std::wstring& result) {
  return DriveLetter(mountPath, result);
}

CZuError CheckForCyclicSymbolicLink(const std::string& path) { return CyclicLink(path); }
CZuError CheckForCyclicSymbolicLink(const std::wstring& path) { return CyclicLink(path); }

}  // namespace FXPath
