// The path questions on Windows: the wide API on the native form.
#include "platform/PathOs.h"

#include <windows.h>

#include <aclapi.h>
#include <winioctl.h>

#include <cstring>
#include <cwchar>
#include <memory>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {
namespace {

// 32,767 characters and the terminator: the longest path the system takes.
constexpr DWORD kLongest = 32768;
// IOCTL_MOUNTDEV_QUERY_UNIQUE_ID of <mountdev.h>, which user-mode SDKs lack.
constexpr DWORD kQueryUniqueId = CTL_CODE(0x4D, 0, METHOD_BUFFERED, FILE_ANY_ACCESS);

FXCodeLocation Here(const char* function) { return FXCodeLocation(__FILE__, function, __LINE__); }

CZuError SystemFailure(const char* function, const char* call, const std::string& path) {
  const TSystemError error = LastSystemError();
  return ErrorFromSystem(Here(function), error).Push(Here(function), "%s failed, Path=[%s]", call, path.c_str());
}

// GetFullPathNameW, with the buffer the answer asks for.
CZuError FullPathOf(const char* function, const std::wstring& path, std::string& full) {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(buffer.size()), &buffer[0], nullptr);
    if (n == 0) return SystemFailure(function, "GetFullPathNameW", Narrow(path));
    if (n < buffer.size()) {
      buffer.resize(n);
      full = Narrow(buffer);
      return CZuError::Success();
    }
    buffer.resize(n);
  }
}

CZuError VolumeRootW(const char* function, const std::string& path, std::wstring& root) {
  std::unique_ptr<wchar_t[]> buffer(new wchar_t[kLongest]);
  if (!::GetVolumePathNameW(Widen(path).c_str(), buffer.get(), kLongest))
    return SystemFailure(function, "GetVolumePathNameW", path);
  root = buffer.get();
  // The drive form for a drive's volume, which every later call accepts.
  if (root.compare(0, 4, L"\\\\?\\") == 0 && root.size() >= 6 && root[5] == L':') root.erase(0, 4);
  return CZuError::Success();
}

CZuError VolumeGuidW(const char* function, const std::wstring& mountPoint, std::wstring& guid) {
  wchar_t buffer[64];
  if (!::GetVolumeNameForVolumeMountPointW(mountPoint.c_str(), buffer, 64))
    return SystemFailure(function, "GetVolumeNameForVolumeMountPointW", Narrow(mountPoint));
  guid = buffer;
  return CZuError::Success();
}

CZuError VolumeInformation(const char* function, const std::string& path, DWORD& serial, DWORD& flags) {
  std::wstring root;
  CZuError result = VolumeRootW(function, path, root);
  if (result.IsError()) return result;
  if (!::GetVolumeInformationW(root.c_str(), nullptr, 0, &serial, nullptr, &flags, nullptr, 0))
    return SystemFailure(function, "GetVolumeInformationW", Narrow(root));
  return result;
}

struct THandle {
  HANDLE handle;
  ~THandle() {
    if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
  }
};

// The SID of the process's user, in the buffer given.
bool ProcessUser(std::unique_ptr<unsigned char[]>& buffer, PSID& sid) {
  HANDLE token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
  DWORD size = 0;
  ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  buffer.reset(new unsigned char[size]);
  const bool ok = ::GetTokenInformation(token, TokenUser, buffer.get(), size, &size) != 0;
  ::CloseHandle(token);
  if (ok) sid = reinterpret_cast<TOKEN_USER*>(buffer.get())->User.Sid;
  return ok;
}

}  // namespace

CZuError CurrentFolder(std::string& folder) { return FullPathOf("FXPlatform::CurrentFolder", L".", folder); }

CZuError CurrentFolderOfDrive(char drive, std::string& folder) {
  const wchar_t path[] = {static_cast<wchar_t>(drive), L':', 0};
  return FullPathOf("FXPlatform::CurrentFolderOfDrive", path, folder);
}

CZuError FullPathName(const std::string& path, std::size_t, std::string& full) {
  return FullPathOf("FXPlatform::FullPathName", Widen(path), full);
}

CZuError QueryPathKind(const std::string& path, TPathKind& kind) {
  const DWORD attributes = ::GetFileAttributesW(Widen(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return SystemFailure("FXPlatform::QueryPathKind", "GetFileAttributesW", path);
  kind.directory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  kind.link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  kind.charDevice = (attributes & FILE_ATTRIBUTE_DEVICE) != 0;
  kind.regular = !kind.directory && !kind.charDevice;
  kind.blockDevice = false;
  return CZuError::Success();
}

CZuError VolumePathName(const std::string& path, std::string& root) {
  std::wstring wide;
  CZuError result = VolumeRootW("FXPlatform::VolumePathName", path, wide);
  if (!result.IsError()) root = Narrow(wide);
  return result;
}

CZuError VolumeGuidName(const std::string& mountPoint, std::string& guidPath) {
  std::wstring guid;
  CZuError result = VolumeGuidW("FXPlatform::VolumeGuidName", Widen(mountPoint), guid);
  if (!result.IsError()) guidPath = Narrow(guid);
  return result;
}

CZuError VolumeSerialNumber(const std::string& path, DWORD& serial) {
  DWORD value = 0, flags = 0;
  CZuError result = VolumeInformation("FXPlatform::VolumeSerialNumber", path, value, flags);
  if (!result.IsError()) serial = value;
  return result;
}

CZuError VolumeFileSystemFlags(const std::string& path, DWORD& flags) {
  DWORD serial = 0, value = 0;
  CZuError result = VolumeInformation("FXPlatform::VolumeFileSystemFlags", path, serial, value);
  if (!result.IsError()) flags = value;
  return result;
}

CZuError VolumeUniqueId(const std::string& path, std::string& hexDigits) {
  constexpr const char* kFunction = "FXPlatform::VolumeUniqueId";
  std::wstring root, guid;
  CZuError result = VolumeRootW(kFunction, path, root);
  if (!result.IsError()) result = VolumeGuidW(kFunction, root, guid);
  if (result.IsError()) return result;
  if (!guid.empty() && guid.back() == L'\\') guid.pop_back();  // the volume, not its root folder
  THandle volume{::CreateFileW(guid.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                               OPEN_EXISTING, 0, nullptr)};
  if (volume.handle == INVALID_HANDLE_VALUE) return SystemFailure(kFunction, "CreateFileW", Narrow(guid));
  unsigned char buffer[sizeof(USHORT) + 1024];
  DWORD returned = 0;
  if (!::DeviceIoControl(volume.handle, kQueryUniqueId, nullptr, 0, buffer, sizeof buffer, &returned, nullptr))
    return SystemFailure(kFunction, "DeviceIoControl", Narrow(guid));
  USHORT length = 0;
  std::memcpy(&length, buffer, sizeof length);
  if (length == 0 || returned < sizeof(USHORT) + length)
    return FXErrorUtil::ErrorWin32(Here(kFunction), ERROR_INVALID_DATA, "No unique id, Path=[%s]", path.c_str());
  static const char kDigits[] = "0123456789ABCDEF";
  std::string digits;
  for (USHORT i = 0; i < length; ++i) {
    digits.push_back(kDigits[buffer[sizeof(USHORT) + i] >> 4]);
    digits.push_back(kDigits[buffer[sizeof(USHORT) + i] & 0xF]);
  }
  hexDigits.swap(digits);
  return result;
}

CZuError SameVolume(const std::string& a, const std::string& b, bool& same) {
  constexpr const char* kFunction = "FXPlatform::SameVolume";
  std::wstring rootA, rootB, guidA, guidB;
  CZuError result = VolumeRootW(kFunction, a, rootA);
  if (!result.IsError()) result = VolumeRootW(kFunction, b, rootB);
  if (result.IsError()) return result;
  if (!VolumeGuidW(kFunction, rootA, guidA).IsError() && !VolumeGuidW(kFunction, rootB, guidB).IsError())
    same = _wcsicmp(guidA.c_str(), guidB.c_str()) == 0;
  else
    same = _wcsicmp(rootA.c_str(), rootB.c_str()) == 0;
  return result;
}

CZuError DriveLetterForMountPath(const std::string& path, char& letter) {
  constexpr const char* kFunction = "FXPlatform::DriveLetterForMountPath";
  std::wstring mountPoint = Widen(path), guid;
  if (!mountPoint.empty() && mountPoint.back() != L'\\') mountPoint.push_back(L'\\');
  CZuError result = VolumeGuidW(kFunction, mountPoint, guid);
  if (result.IsError()) return result;
  const DWORD drives = ::GetLogicalDrives();
  for (int i = 0; i < 26; ++i) {
    if ((drives & (1u << i)) == 0) continue;
    const wchar_t root[] = {static_cast<wchar_t>(L'A' + i), L':', L'\\', 0};
    std::wstring driveGuid;
    if (!VolumeGuidW(kFunction, root, driveGuid).IsError() && _wcsicmp(driveGuid.c_str(), guid.c_str()) == 0) {
      letter = static_cast<char>('A' + i);
      return result;
    }
  }
  return FXErrorUtil::ErrorWin32(Here(kFunction), ERROR_NOT_FOUND);
}

CZuError FileIdentity(const std::string& path, TFileIdentity& identity) {
  constexpr const char* kFunction = "FXPlatform::FileIdentity";
  THandle file{::CreateFileW(Widen(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)};
  if (file.handle == INVALID_HANDLE_VALUE) return SystemFailure(kFunction, "CreateFileW", path);
  BY_HANDLE_FILE_INFORMATION info;
  if (!::GetFileInformationByHandle(file.handle, &info))
    return SystemFailure(kFunction, "GetFileInformationByHandle", path);
  identity.volumeSerial = info.dwVolumeSerialNumber;
  identity.fileId = (static_cast<unsigned long long>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
  return CZuError::Success();
}

std::vector<std::string> SystemFolders() {
  wchar_t buffer[MAX_PATH + 1];
  const UINT n = ::GetWindowsDirectoryW(buffer, MAX_PATH + 1);
  if (n == 0 || n > MAX_PATH) return {};
  return {Narrow(std::wstring(buffer, n))};
}

CZuError IsNfs(const std::string&, bool&) {
  return FXErrorUtil::ErrorWin32(Here("FXPlatform::IsNfs"), ERROR_NOT_SUPPORTED,
                                 "NFS check not supported on this platform");
}

CZuError SetDeletePermission(const std::string& path, bool grant) {
  constexpr const char* kFunction = "FXPlatform::SetDeletePermission";
  std::wstring wide = Widen(path);
  PACL dacl = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  DWORD rc = ::GetNamedSecurityInfoW(wide.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl,
                                     nullptr, &descriptor);
  if (rc != ERROR_SUCCESS)
    return FXErrorUtil::ErrorWin32(Here(kFunction), rc, "Failed to get security desc. of path [%s], Line [%d]",
                                   path.c_str(), __LINE__);
  std::unique_ptr<void, decltype(&::LocalFree)> descriptorOwner(descriptor, &::LocalFree);
  std::unique_ptr<unsigned char[]> userBuffer;
  PSID user = nullptr;
  if (!ProcessUser(userBuffer, user))
    return SystemFailure(kFunction, "GetTokenInformation", path)
        .Push(Here(kFunction), "Failed to add access allowed entry to path [%s]", path.c_str());
  PACL updated = nullptr;
  if (grant) {
    EXPLICIT_ACCESS_W access = {};
    access.grfAccessPermissions = DELETE;
    access.grfAccessMode = GRANT_ACCESS;
    access.grfInheritance = NO_INHERITANCE;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.TrusteeType = TRUSTEE_IS_USER;
    access.Trustee.ptstrName = static_cast<LPWSTR>(user);
    rc = ::SetEntriesInAclW(1, &access, dacl, &updated);
    if (rc != ERROR_SUCCESS)
      return FXErrorUtil::ErrorWin32(Here(kFunction), rc, "Failed to add access allowed entry to path [%s]",
                                     path.c_str());
  } else if (dacl != nullptr) {
    // The user's own allowed entries lose the delete right; entries left
    // with no right at all go.
    for (DWORD i = dacl->AceCount; i-- > 0;) {
      ACCESS_ALLOWED_ACE* ace = nullptr;
      if (!::GetAce(dacl, i, reinterpret_cast<void**>(&ace)) || ace->Header.AceType != ACCESS_ALLOWED_ACE_TYPE ||
          (ace->Header.AceFlags & INHERITED_ACE) != 0 || !::EqualSid(&ace->SidStart, user))
        continue;
      ace->Mask &= ~static_cast<ACCESS_MASK>(DELETE);
      if (ace->Mask == 0) ::DeleteAce(dacl, i);
    }
  }
  std::unique_ptr<void, decltype(&::LocalFree)> updatedOwner(updated, &::LocalFree);
  rc = ::SetNamedSecurityInfoW(&wide[0], SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                               grant ? updated : dacl, nullptr);
  if (rc != ERROR_SUCCESS)
    return FXErrorUtil::ErrorWin32(Here(kFunction), rc, "Failed to set the security descriptor of path [%s], Line [%d]",
                                   path.c_str(), __LINE__);
  return CZuError::Success();
}

}  // namespace FXPlatform
