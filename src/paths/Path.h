// FXPath and CZuPath: the spellings of Windows paths, their native long
// form and normal form, joining, splitting, sameness and ancestry, the
// registry of synthetic mount points, and the few questions that need the
// file system.
//
// Paths are plain strings with the backslash as separator on every
// platform. Every FXPath operation exists for std::string (UTF-8) and for
// std::wstring with the same rules, character for character. Prefix tests
// and comparisons fold ASCII letters only. Predicates never fail and never
// allocate; transformations return CZuError and leave in/out arguments as
// they were when they fail.
//
// One file system, two builds. On POSIX the file system is shown as wine
// shows it to Windows programs: the POSIX root is drive Z:, so Z:\usr\share
// names /usr/share and the current folder reads as Z:\home\...; a POSIX path
// given with forward slashes (/usr/share) is a path rooted without a drive
// and resolves against the current folder's drive, Z:. Every rule below thus
// applies unchanged, and a folder has the same text in the Linux build and
// in the Windows build under wine. Other drives, UNC shares, device and
// volume GUID paths have no POSIX counterpart: calls that reach the system
// with them fail with ERROR_PATH_NOT_FOUND (text rules still apply to them).
// A POSIX name that this form cannot carry, one holding a backslash, is
// refused with ERROR_INVALID_NAME naming it, never mapped onto another file.
//
// Bad input:
//   - null buffers: ERROR_INVALID_PARAMETER, "Path is NULL";
//   - a path of kMaxPathLength characters or more (the system's limit even
//     for long-path forms) given to, or produced by, a transformation that
//     yields a path for the system: ERROR_FILENAME_EXCED_RANGE;
//   - narrow text that is not UTF-8, in calls that reach the system:
//     ERROR_NO_UNICODE_TRANSLATION (a wide text holding a lone surrogate
//     likewise); the pure text operations work on the bytes as given;
//   - unterminated prefixes ("\\?", "\\?\Volume{" without "}"): predicates
//     say no, transformations that need the root fail with
//     ERROR_INVALID_NAME.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"
#include "text/ZuString.h"

namespace FXPath {

// 32,767 characters: no path the system accepts is this long.
constexpr std::size_t kMaxPathLength = 32767;

// Append flags (a 32-bit word).
// Append a separator even when the tail is empty: "a" + "" gives "a\".
constexpr unsigned int kAppendEmptyTail = 0x1;
// An empty base stays without a leading separator: "" + "x" gives "x".
constexpr unsigned int kAppendNoLeadingDelimiter = 0x4;

// Split flags.
// Folders keep their trailing separator ("C:\a\" rather than "C:\a").
constexpr unsigned int kSplitFolderWithDelimiter = 0x1;
// SplitPaths: each element is the whole path up to that component.
constexpr unsigned int kSplitCumulative = 0x2;

// MakeRelativePathFromFolder flag: a path below the folder starts with ".\".
constexpr unsigned int kRelativeDotPrefix = 0x1;

// GetVolumeRelativeName flag: the result starts with a separator.
constexpr unsigned int kVolumeRelativeLeadingDelimiter = 0x1;

// ---- Classification (never fail, never allocate) --------------------------

// At least 21 characters and begins with "\\?\GLOBALROOT\Device".
ZUUTILS_API bool IsDevicePath(const std::string& path);
ZUUTILS_API bool IsDevicePath(const std::wstring& path);
// At least 46 characters, "\\?\GLOBALROOT\Device\HarddiskVolumeShadowCopy".
ZUUTILS_API bool IsShadowPath(const std::string& path);
ZUUTILS_API bool IsShadowPath(const std::wstring& path);
// Begins with "\\?\Volume{"; or begins with "\\?\" or "\\.\" and the text
// between the first "{" and the first "}" after it is 36 characters long.
ZUUTILS_API bool IsVolumeGuidPath(const std::string& path);
ZUUTILS_API bool IsVolumeGuidPath(const std::wstring& path);
// The text form of TQGetVolumeUniqueId: "UniqueId:" and an even, non-zero
// number of hexadecimal digits (the identifier's bytes in order).
ZUUTILS_API bool IsVolumeUniqueId(const std::string& text);
ZUUTILS_API bool IsVolumeUniqueId(const std::wstring& text);

// Both sides lose a leading "\\?\" (and "UNC\" after it: marked UNC), else a
// leading "\\" (marked UNC), else one leading "\"; then one trailing "\".
// Same when the UNC marks agree and the rests are equal ignoring case.
ZUUTILS_API bool IsSamePathAs(const std::string& a, const std::string& b);
ZUUTILS_API bool IsSamePathAs(const std::wstring& a, const std::wstring& b);
// Whether a contains b (or equals it, when allowEqual): reduced as for
// sameness, plus a "relative" mark; C:\dir is no ancestor of C:\directory.
ZUUTILS_API bool IsAncestorOf(const std::string& a, const std::string& b, bool allowEqual);
ZUUTILS_API bool IsAncestorOf(const std::wstring& a, const std::wstring& b, bool allowEqual);

// ---- Native, normal and long forms ----------------------------------------

// The native long form, by the first rule that applies:
//   1. "C:" or "C:\" (length 2 or 3, ":" second): unchanged;
//   2. "\\?\..." (exact): unchanged;  3. "\\." ...: unchanged;
//   4. "\\srv\..." becomes "\\?\UNC\srv\...";
//   5. "C:\..." or "C:/..." becomes "\\?\C:\...";
//   6. "X:.\rest": "\\?\" + current folder of drive X, rest appended;
//   7. "X:rest": the same without the dot;
//   8. "\rest" or "/rest": "\\?\" + the current folder's root + rest;
//   9. ".\rest": "\\?\" + current folder, rest appended; 10. ".": "\\?\" +
//      current folder; 11. anything else: "\\?\" + current folder, path
//      appended.
// Then every "/" becomes "\" and doubled backslashes after the first
// character are collapsed; ".." is not resolved. "\\?" alone is refused
// (ERROR_INVALID_NAME) rather than read as a share named "?".
// On POSIX the current folder is that of the process in the Z: form, and
// is also the current folder of drive Z:; other drives have only their
// root as current folder (as GetFullPathNameW reports for a drive never
// visited). So "/usr/share" gives "\\?\Z:\usr\share" and "usr" in /home/u
// gives "\\?\Z:\home\u\usr".
ZUUTILS_API CZuError MakeNativePath(std::string& path);
ZUUTILS_API CZuError MakeNativePath(std::wstring& path);
ZUUTILS_API CZuError MakeNativePath(const std::string& path, std::string& result);
ZUUTILS_API CZuError MakeNativePath(const std::wstring& path, std::wstring& result);

// "\\?\UNC\srv\s" becomes "\\srv\s"; "\\?\C:\x" becomes "C:\x"; anything
// else (volume GUID and device paths too) is kept. Always succeeds.
ZUUTILS_API CZuError MakeNormalPath(std::string& path);
ZUUTILS_API CZuError MakeNormalPath(std::wstring& path);
ZUUTILS_API CZuError MakeNormalPath(const std::string& path, std::string& result);
ZUUTILS_API CZuError MakeNormalPath(const std::wstring& path, std::wstring& result);

// Adds the long-path prefix to a fully qualified path: "\\srv\s" becomes
// "\\?\UNC\srv\s", "C:\x" becomes "\\?\C:\x"; prefixed paths are kept.
// Relative and drive-less rooted paths fail with ERROR_INVALID_PARAMETER.
ZUUTILS_API CZuError MakeLongPath(std::string& path);
ZUUTILS_API CZuError MakeLongPath(std::wstring& path);

// Resolves a path against the given folder, as text: fully qualified paths
// are kept, "\x" takes the folder's root, "X:x" on the folder's drive and
// relative paths are appended to the folder (a leading ".\" dropped);
// "X:x" on another drive is taken from that drive's root.
ZUUTILS_API CZuError MakeAbsolutePath(const std::string& path, const std::string& folder, std::string& result);
ZUUTILS_API CZuError MakeAbsolutePath(const std::wstring& path, const std::wstring& folder, std::wstring& result);

// The path relative to the folder ("..\x", "x", "." for the folder itself;
// ".\x" with kRelativeDotPrefix). Both must be fully qualified; roots that
// are not the same path fail with ERROR_NOT_SAME_DEVICE and "Paths do not
// have a common volume, From=[%s], To=[%s]".
ZUUTILS_API CZuError MakeRelativePathFromFolder(const std::string& path, const std::string& folder,
                                                std::string& result, unsigned int flags = 0);
ZUUTILS_API CZuError MakeRelativePathFromFolder(const std::wstring& path, const std::wstring& folder,
                                                std::wstring& result, unsigned int flags = 0);

// ---- Joining ---------------------------------------------------------------

// 1. Without kAppendEmptyTail an empty tail changes nothing.
// 2. A backslash is added to a non-empty base not ending in one, and to an
//    empty base unless kAppendNoLeadingDelimiter.
// 3. Exactly one leading backslash of the tail is dropped.
// Allocates at most once. A result of kMaxPathLength characters or more
// fails with ERROR_FILENAME_EXCED_RANGE and leaves the base as it was.
ZUUTILS_API CZuError Append(std::string& base, const std::string& tail, unsigned int flags = 0);
ZUUTILS_API CZuError Append(std::wstring& base, const std::wstring& tail, unsigned int flags = 0);
// The same into a zero-terminated buffer of bufferSize characters; a result
// that does not fit (with its terminator) fails with
// ERROR_INSUFFICIENT_BUFFER and leaves the buffer as it was. A null buffer
// fails with ERROR_INVALID_PARAMETER, "Path is NULL"; a null tail is empty.
ZUUTILS_API CZuError Append(char* buffer, std::size_t bufferSize, const char* tail, unsigned int flags = 0);
ZUUTILS_API CZuError Append(wchar_t* buffer, std::size_t bufferSize, const wchar_t* tail, unsigned int flags = 0);
// a with b appended; a itself when Append fails.
ZUUTILS_API std::string Join(const std::string& a, const std::string& b, unsigned int flags = 0);
ZUUTILS_API std::wstring Join(const std::wstring& a, const std::wstring& b, unsigned int flags = 0);

// Overwrites one trailing backslash with the terminator. Always succeeds
// (a null buffer is left alone).
ZUUTILS_API CZuError RemoveTrailingDelimiter(char* path);
ZUUTILS_API CZuError RemoveTrailingDelimiter(wchar_t* path);

// ---- Splitting ---------------------------------------------------------------
//
// The root of a path is never split. It is, with its trailing backslash
// when there is one: "\\?\UNC\srv\share\", "\\?\GLOBALROOT\Device\<name>\",
// "\\?\Volume{...}\", "\\?\C:\" (or the first component after "\\?\"),
// "\\.\<device>\", "\\srv\share\", "C:\" or "C:", "\"; a relative path has
// an empty root. "\\?\Volume{" without its "}" fails with
// ERROR_INVALID_NAME.

// Splits at the last separator beyond the root (one trailing separator
// disregarded): "C:\a\b" gives "C:\a" and "b", "C:\a" gives "C:\" and "a",
// "a" gives "" and "a". Nothing beyond the root fails with
// ERROR_PATH_NOT_FOUND.
ZUUTILS_API CZuError SplitParentPath(const std::string& path, std::string& parent, std::string& leaf);
ZUUTILS_API CZuError SplitParentPath(const std::wstring& path, std::wstring& parent, std::wstring& leaf);

// As SplitParentPath for a fully qualified path (relative and drive-less
// rooted paths fail with ERROR_INVALID_PARAMETER). The four-part form gives
// the root, the folder below the root ("" for a file in the root) and the
// name. With kSplitFolderWithDelimiter a non-empty folder ends with "\".
ZUUTILS_API CZuError SplitFullyQualifiedName(const std::string& path, std::string& folder, std::string& name,
                                             unsigned int flags = 0);
ZUUTILS_API CZuError SplitFullyQualifiedName(const std::wstring& path, std::wstring& folder, std::wstring& name,
                                             unsigned int flags = 0);
ZUUTILS_API CZuError SplitFullyQualifiedName(const std::string& path, std::string& root, std::string& folder,
                                             std::string& name, unsigned int flags = 0);
ZUUTILS_API CZuError SplitFullyQualifiedName(const std::wstring& path, std::wstring& root, std::wstring& folder,
                                             std::wstring& name, unsigned int flags = 0);

// The components of path below base: base itself first (the root when
// base is empty), then each name; with kSplitCumulative each element is the
// whole path up to there ("C:\", "C:\a", "C:\a\b"). A path not at or below
// base fails with ERROR_INVALID_PARAMETER. Empty components (doubled
// separators) are skipped.
ZUUTILS_API CZuError SplitPaths(const std::string& path, const std::string& base, std::vector<std::string>& out,
                                unsigned int flags = 0);
ZUUTILS_API CZuError SplitPaths(const std::wstring& path, const std::wstring& base,
                                std::vector<std::wstring>& out, unsigned int flags = 0);

// Replaces the leading folder oldPrefix (compared as by IsAncestorOf, equal
// allowed) with newPrefix; a path not below oldPrefix fails with
// ERROR_INVALID_PARAMETER.
ZUUTILS_API CZuError ReplacePath(std::string& path, const std::string& oldPrefix, const std::string& newPrefix);
ZUUTILS_API CZuError ReplacePath(std::wstring& path, const std::wstring& oldPrefix, const std::wstring& newPrefix);

// The leaf: the text after the last "\" or "/" (the whole path without one).
ZUUTILS_API CZuError RemovePathFromFileName(std::string& path);
ZUUTILS_API CZuError RemovePathFromFileName(std::wstring& path);
ZUUTILS_API std::string GetFileNameWithoutPath(const std::string& path);
ZUUTILS_API std::wstring GetFileNameWithoutPath(const std::wstring& path);

// The part of the path below its volume root: below the deepest registered
// synthetic mount point that contains it, else below its root; "" for the
// root itself. Without kVolumeRelativeLeadingDelimiter there is no leading
// "\". A relative path fails with ERROR_INVALID_PARAMETER.
ZUUTILS_API CZuError GetVolumeRelativeName(const std::string& path, std::string& result, unsigned int flags = 0);
ZUUTILS_API CZuError GetVolumeRelativeName(const std::wstring& path, std::wstring& result,
                                           unsigned int flags = 0);

// The device root of "\\?\GLOBALROOT\Device\<name>\..." as
// "\\?\GLOBALROOT\Device\<name>\"; without a "\" after the name it fails
// with ERROR_PATH_NOT_FOUND, "Cannot find device object path delimiter;
// Path could already be root, Path=%s". Not a device path:
// ERROR_INVALID_PARAMETER.
ZUUTILS_API CZuError GetDevicePathBase(const std::string& path, std::string& result);
ZUUTILS_API CZuError GetDevicePathBase(const std::wstring& path, std::wstring& result);
// The volume root "\\?\Volume{...}\" of a volume GUID path (any
// IsVolumeGuidPath form, its root kept as spelled). Not one:
// ERROR_INVALID_PARAMETER; no "}": ERROR_INVALID_NAME.
ZUUTILS_API CZuError GetVolumeGuidPathBase(const std::string& path, std::string& result);
ZUUTILS_API CZuError GetVolumeGuidPathBase(const std::wstring& path, std::wstring& result);

// ---- Synthetic mount points ---------------------------------------------------
//
// One process-wide list of (native path with one trailing "\", count) under
// one lock. Registering the same path again counts it again; it leaves the
// list when deregistered as often. Deregistering compares the argument as
// given (C:\mnt matches \\?\C:\mnt\); an unknown path is no error.
ZUUTILS_API CZuError RegisterSyntheticMountPoint(const std::string& path);
ZUUTILS_API CZuError RegisterSyntheticMountPoint(const std::wstring& path);
ZUUTILS_API CZuError DeregisterSyntheticMountPoint(const std::string& path);
ZUUTILS_API CZuError DeregisterSyntheticMountPoint(const std::wstring& path);

// A registered synthetic mount point, or a folder where a volume is mounted
// other than a drive's root (POSIX: an entry of the mount table other than
// "/"; Windows: GetVolumePathNameW gives the folder itself). Never fails.
ZUUTILS_API bool IsPathMountPoint(const std::string& path);
ZUUTILS_API bool IsPathMountPoint(const std::wstring& path);
// Whether the path lies below such a mount point; the second form gives
// the deepest one found (registered or real) in its native form.
ZUUTILS_API bool IsPathChildOfMountPointPath(const std::string& path);
ZUUTILS_API bool IsPathChildOfMountPointPath(const std::wstring& path);
ZUUTILS_API bool IsPathChildOfMountPointPath(const std::string& path, std::string& mountPoint);
ZUUTILS_API bool IsPathChildOfMountPointPath(const std::wstring& path, std::wstring& mountPoint);

// ---- Calls that reach the file system -------------------------------------------
//
// Each applies the native form of its path. Failures carry the Win32 code
// (POSIX: the errno's nearest code with the ErrNo item beneath) and the
// operation's name as location. The POSIX facility is named per call.

// The process's current folder (POSIX: getcwd in the Z: form), and that of
// one drive (POSIX: the process's for Z:, the root for other letters).
// Failures read "GetFullPathNameW failed, Path=[%s]".
ZUUTILS_API CZuError GetCurrentFolder(std::string& result);
ZUUTILS_API CZuError GetCurrentFolder(std::wstring& result);
ZUUTILS_API CZuError GetCurrentFolder(char drive, std::string& result);
ZUUTILS_API CZuError GetCurrentFolder(wchar_t drive, std::wstring& result);

// GetFullPathNameW (POSIX: the path made absolute and "." and ".."
// resolved as text, as GetFullPathNameW does, links not followed). The
// result keeps the input's form: a long-path input gives a long-path result.
ZUUTILS_API CZuError TQGetFullPathName(const std::string& path, std::string& result);
ZUUTILS_API CZuError TQGetFullPathName(const std::wstring& path, std::wstring& result);

// Success when the path exists (GetFileAttributesW; POSIX lstat), else the
// reason (ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED...).
ZUUTILS_API CZuError DoesPathExist(const std::string& path);
ZUUTILS_API CZuError DoesPathExist(const std::wstring& path);
// DoesPathExist tried up to 1 + retries times, one second apart, while the
// failure is something other than the path not existing (a share that is
// slow to answer).
ZUUTILS_API CZuError DoesUNCPathExistWithRetry(const std::string& path, unsigned int retries);
ZUUTILS_API CZuError DoesUNCPathExistWithRetry(const std::wstring& path, unsigned int retries);

// Whether both lie on one volume (POSIX: equal st_dev of the nearest
// existing folder of each).
ZUUTILS_API CZuError ArePathsOnSameVolume(const std::string& a, const std::string& b, bool& same);
ZUUTILS_API CZuError ArePathsOnSameVolume(const std::wstring& a, const std::wstring& b, bool& same);

// GetVolumePathNameW: the root of the volume holding the path, with a
// trailing "\", in normal form (POSIX: the deepest mount-table entry that
// contains the path's nearest existing folder, links resolved).
ZUUTILS_API CZuError TQGetVolumePathName(const std::string& path, std::string& result);
ZUUTILS_API CZuError TQGetVolumePathName(const std::wstring& path, std::wstring& result);
// GetVolumeNameForVolumeMountPointW: "\\?\Volume{GUID}\". POSIX has no
// volume GUIDs: ERROR_NOT_SUPPORTED naming the function.
ZUUTILS_API CZuError TQGetVolumeNameForVolumeMountPoint(const std::string& mountPoint, std::string& result);
ZUUTILS_API CZuError TQGetVolumeNameForVolumeMountPoint(const std::wstring& mountPoint, std::wstring& result);
// GetVolumeInformationW's serial number of the volume holding the path
// (POSIX: st_dev folded to 32 bits, the value CheckForCyclicSymbolicLink
// reports).
ZUUTILS_API CZuError TQGetVolumeSerialNumber(const std::string& path, DWORD& serial);
ZUUTILS_API CZuError TQGetVolumeSerialNumber(const std::wstring& path, DWORD& serial);
// The volume's unique identifier in the IsVolumeUniqueId form (Windows:
// IOCTL_MOUNTDEV_QUERY_UNIQUE_ID on the volume; POSIX: statvfs's f_fsid).
ZUUTILS_API CZuError TQGetVolumeUniqueId(const std::string& path, std::string& result);
ZUUTILS_API CZuError TQGetVolumeUniqueId(const std::wstring& path, std::wstring& result);
// GetVolumeInformationW's file-system flags (POSIX: statvfs, given as
// FILE_CASE_SENSITIVE_SEARCH 0x1 | FILE_CASE_PRESERVED_NAMES 0x2, plus
// FILE_READ_ONLY_VOLUME 0x80000 for a read-only mount).
ZUUTILS_API CZuError ApiGetVolumeFileSystemFlags(const std::string& path, DWORD& flags);
ZUUTILS_API CZuError ApiGetVolumeFileSystemFlags(const std::wstring& path, DWORD& flags);

// "%c:\" of the drive whose volume is mounted at the path (POSIX: "Z:\"
// when the path's st_dev is that of "/"); else ERROR_NOT_FOUND, "No drive
// letter found for %s".
ZUUTILS_API CZuError GetDriveLetterForMountPath(const std::string& mountPath, std::string& result);
ZUUTILS_API CZuError GetDriveLetterForMountPath(const std::wstring& mountPath, std::wstring& result);

// Fails with ERROR_CANT_RESOLVE_FILENAME when the path's target (links
// followed) is one of the path's own ancestors, by volume serial number
// and 64-bit file id (GetFileInformationByHandle; POSIX: stat's st_dev and
// st_ino). The items read "Target=[%s], VolumeSerialNumber=[0x%X],
// FileId=[0x%016llX]" and "Path=[%s], ..." for the ancestor.
ZUUTILS_API CZuError CheckForCyclicSymbolicLink(const std::string& path);
ZUUTILS_API CZuError CheckForCyclicSymbolicLink(const std::wstring& path);

}  // namespace FXPath

// One narrow path with the questions of FXPath asked of it; each query is
// also a static on a const char* (null: false, empty results, or
// ERROR_INVALID_PARAMETER "Path is NULL"). Both separators are accepted.
class ZUUTILS_API CZuPath {
 public:
  CZuPath(const char* path);  // NOLINT: implicit by design
  CZuPath(const CZuPath& other);
  CZuPath& operator=(const CZuPath& other);
  ~CZuPath();

  const CZuString& GetPath() const { return m_path; }

  // TQGetFullPathName (the C runtime's _fullpath is the same call); empty
  // when it fails.
  CZuString AbsPath() const;
  static CZuString AbsPath(const char* path);
  // FXPath::Join of the two.
  static CZuString Append(const char* a, const char* b);
  // The leaf ("b.txt"), its extension with the dot (".txt"; a leading dot
  // starts no extension), the parent, the root (FXPath's root rules).
  CZuString GetBaseName() const;
  static CZuString GetBaseName(const char* path);
  CZuString GetExt() const;
  static CZuString GetExt(const char* path);
  CZuString GetParent() const;
  static CZuString GetParent(const char* path);
  CZuString GetRoot() const;
  static CZuString GetRoot(const char* path);

  // lstat/GetFileAttributesW: a missing path is false without a failure.
  bool Exists() const;
  static bool Exists(const char* path);
  CZuError Exists(bool& exists) const;
  static CZuError Exists(const char* path, bool& exists);
  bool IsDirectory() const;
  static bool IsDirectory(const char* path);
  CZuError IsDirectory(bool& directory) const;
  static CZuError IsDirectory(const char* path, bool& directory);
  bool IsFile() const;
  static bool IsFile(const char* path);
  CZuError IsFile(bool& file) const;
  static CZuError IsFile(const char* path, bool& file);
  // A symbolic link or other reparse point; block and character devices
  // (Windows has no block devices in the file system: always false).
  CZuError IsLink(bool& link) const;
  static CZuError IsLink(const char* path, bool& link);
  CZuError IsBlockDev(bool& device) const;
  static CZuError IsBlockDev(const char* path, bool& device);
  CZuError IsCharDev(bool& device) const;
  static CZuError IsCharDev(const char* path, bool& device);

  // Nothing beyond the root; fully qualified; begins with "\\".
  bool IsRoot() const;
  static bool IsRoot(const char* path);
  bool IsAbsolute() const;
  static bool IsAbsolute(const char* path);
  bool IsUNC() const;
  static bool IsUNC(const char* path);
  // At or below the system's own folders (Windows: the Windows folder;
  // POSIX: Z:\bin, \boot, \dev, \etc, \lib, \lib32, \lib64, \libx32,
  // \proc, \sbin, \sys, \usr).
  bool IsSystemPath() const;
  static bool IsSystemPath(const char* path);

  // The non-empty components ("C:", "a", "b").
  void Split(std::vector<CZuString>& components) const;
  static void Split(const char* path, std::vector<CZuString>& components);
  // "\\srv\share\a\b" (or "\\?\UNC\srv\share\a\b") gives "srv", "share",
  // "a\b"; another path fails with ERROR_INVALID_PARAMETER.
  CZuError SplitUNC(CZuString& server, CZuString& share, CZuString& rest) const;
  static CZuError SplitUNC(const char* path, CZuString& server, CZuString& share, CZuString& rest);

  // Runs of one repeated separator become one (a leading "\\" of "\\",
  // "\\.\" and "\\?\" paths kept); the path is valid when that text is its
  // own full path (so relative paths and "." or ".." components are not),
  // and, with mustExist, when it exists.
  static bool isValidPath(const char* path, bool mustExist);
  // The whole text is letters, digits, "_", ".", "/", "\", white space and
  // "-", and not empty.
  static bool checkPathSanityForCommandLine(const char* path);
  // Windows: false with ERROR_NOT_SUPPORTED, "NFS check not supported on
  // this platform". POSIX: statfs's file-system type. A null path fails
  // with "name parameter passed as null".
  static CZuError isNFS(const char* path, bool& nfs);

  // Adds (removes) an access-allowed entry for the current user with the
  // DELETE right to the path's DACL. POSIX: deleting is governed by the
  // folder holding the entry, so the owner's write and search bits of the
  // parent folder are set (write cleared).
  static CZuError GrantDeletePermissionsEx(const char* path);
  static CZuError RevokeDeletePermissions(const char* path);

 private:
  CZuString m_path;
};
