// The file-system questions behind FXPath and CZuPath (paths/Path.h).
//
// Paths in and out are Windows-form text in UTF-8 with backslashes; inputs
// are the native long form that FXPath::MakeNativePath makes ("\\?\C:\x",
// "\\?\UNC\srv\s\x", also "C:" and "C:\"). Windows hands them to the wide
// API as they are. POSIX shows its file system as drive Z: (as wine does):
// "\\?\Z:\usr\share" is /usr/share, and results come back as "Z:\...".
// There, other drives, UNC and device paths fail with ERROR_PATH_NOT_FOUND,
// and a POSIX name holding a backslash (which the Windows form cannot
// carry) fails with ERROR_INVALID_NAME naming it. Failures carry the Win32
// code; on POSIX the errno item lies beneath (platform/SystemError.h).
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "errors/ZuError.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

// The process's current folder ("C:\dir"; POSIX: getcwd as "Z:\home\u").
CZuError CurrentFolder(std::string& folder);
// GetFullPathNameW("X:"). POSIX: the process's current folder for Z:, the
// drive's root for other letters, as Windows gives for a drive not visited.
CZuError CurrentFolderOfDrive(char drive, std::string& folder);
// GetFullPathNameW of a fully qualified path in normal form whose root
// (drive, share, volume) takes rootLength characters. POSIX: "." and ".."
// components beyond the root resolved as text, as GetFullPathNameW does
// (links are not followed).
CZuError FullPathName(const std::string& path, std::size_t rootLength, std::string& full);

struct TPathKind {
  bool directory = false;
  bool regular = false;
  bool link = false;  // a symbolic link or other reparse point
  bool blockDevice = false;
  bool charDevice = false;
};
// GetFileAttributesW (links not followed). POSIX: lstat. A missing path
// fails (ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND).
CZuError QueryPathKind(const std::string& path, TPathKind& kind);

// GetVolumePathNameW: "C:\", "C:\mnt\vol\". POSIX: the deepest entry of the
// mount table (/proc/self/mounts) containing the nearest existing folder of
// the path, links resolved by realpath.
CZuError VolumePathName(const std::string& path, std::string& root);
// Whether a volume is mounted exactly at the path, not counting drive
// roots. POSIX: the path (links resolved) is in the mount table and not "/".
bool IsVolumeMountPoint(const std::string& path);
// GetVolumeNameForVolumeMountPointW. POSIX has no volume GUIDs:
// ERROR_NOT_SUPPORTED naming the function.
CZuError VolumeGuidName(const std::string& mountPoint, std::string& guidPath);
// GetVolumeInformationW's serial number. POSIX: stat's st_dev folded to 32
// bits (the same value FileIdentity reports).
CZuError VolumeSerialNumber(const std::string& path, DWORD& serial);
// The volume's unique identifier as hexadecimal digits. Windows:
// IOCTL_MOUNTDEV_QUERY_UNIQUE_ID on the volume. POSIX: statvfs's f_fsid.
CZuError VolumeUniqueId(const std::string& path, std::string& hexDigits);
// GetVolumeInformationW's file-system flags. POSIX: statvfs, as
// FILE_CASE_SENSITIVE_SEARCH | FILE_CASE_PRESERVED_NAMES, plus
// FILE_READ_ONLY_VOLUME on a read-only mount.
CZuError VolumeFileSystemFlags(const std::string& path, DWORD& flags);
// Whether both lie on one volume (Windows: the volume GUIDs of their volume
// roots, or the roots themselves where a GUID is not to be had; POSIX:
// st_dev of the nearest existing folder of each).
CZuError SameVolume(const std::string& a, const std::string& b, bool& same);
// The drive letter whose volume is the one mounted at the path, or
// ERROR_NOT_FOUND. POSIX: 'Z' when the path's st_dev is that of "/".
CZuError DriveLetterForMountPath(const std::string& path, char& letter);

struct TFileIdentity {
  DWORD volumeSerial = 0;
  unsigned long long fileId = 0;
};
// GetFileInformationByHandle on the file the path leads to (links
// followed). POSIX: stat's st_dev (folded as VolumeSerialNumber) and
// st_ino.
CZuError FileIdentity(const std::string& path, TFileIdentity& identity);

// The folders of the operating system itself (Windows: GetWindowsDirectoryW;
// POSIX: Z:\bin, boot, dev, etc, lib, lib32, lib64, libx32, proc, sbin, sys
// and usr).
std::vector<std::string> SystemFolders();

// Whether the path lies on NFS. Windows: ERROR_NOT_SUPPORTED, "NFS check
// not supported on this platform". POSIX: statfs's f_type.
CZuError IsNfs(const std::string& path, bool& nfs);

// Grants (or revokes) the right to delete the path. Windows: an
// access-allowed entry with DELETE for the process's user in the path's
// DACL (GetNamedSecurityInfoW, SetEntriesInAclW, SetNamedSecurityInfoW).
// POSIX: deleting an entry is governed by its folder, so the owner's write
// and search bits of the parent folder are set (the write bit cleared).
CZuError SetDeletePermission(const std::string& path, bool grant);

}  // namespace FXPlatform
