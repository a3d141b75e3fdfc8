// The process-wide registry of synthetic mount points, and the mount-point
// questions that combine it with the volumes the system reports.
#include <list>
#include <mutex>
#include <new>

#include "paths/PathText.h"
#include "platform/PathOs.h"
#include "text/StringConvert.h"

namespace FXPath {
namespace Detail {
namespace {

// Each path is kept in both forms, so that either kind of caller compares
// with its own text and nothing is converted under the lock.
struct TMountEntry {
  std::string narrow;
  std::wstring wide;
  long count = 0;

  const std::string& Text(char) const { return narrow; }
  const std::wstring& Text(wchar_t) const { return wide; }
};

struct TRegistry {
  std::mutex lock;
  std::list<TMountEntry> entries;
};

TRegistry& Registry() {
  static TRegistry registry;  // never destroyed before the last caller
  return registry;
}

template <class Char>
CZuError Register(TView<Char> path) {
  constexpr const char* kFunction = "FXPath::RegisterSyntheticMountPoint";
  TString<Char> native;
  CZuError result = MakeNativePath(TString<Char>(path), native);
  if (result.IsError()) return result.Push(ZU_HERE(kFunction));
  const Char sep[] = {kSep<Char>, Char(0)};
  result = Append(native, TString<Char>(sep), 0);
  if (result.IsError()) return result.Push(ZU_HERE(kFunction));
  try {
    TRegistry& registry = Registry();
    std::lock_guard<std::mutex> guard(registry.lock);
    for (TMountEntry& entry : registry.entries) {
      if (entry.count > 0 && SamePath<Char>(entry.Text(Char()), native)) {
        ++entry.count;
        return result;
      }
    }
    TMountEntry entry;
    entry.count = 1;
    if constexpr (sizeof(Char) == 1) {
      entry.narrow = native;
      entry.wide = FXString::ToWstring(native);
    } else {
      entry.wide = native;
      entry.narrow = FXString::ToString(native);
    }
    registry.entries.push_back(std::move(entry));
  } catch (const std::bad_alloc&) {
    return FXErrorUtil::ErrorWin32(ZU_HERE(kFunction), ERROR_OUTOFMEMORY, "Cannot add mount point, Path=[%s]",
                                   Printable(path).c_str());
  }
  return result;
}

template <class Char>
CZuError Deregister(TView<Char> path) {
  TRegistry& registry = Registry();
  std::lock_guard<std::mutex> guard(registry.lock);
  for (auto it = registry.entries.begin(); it != registry.entries.end(); ++it) {
    if (it->count > 0 && SamePath<Char>(it->Text(Char()), path)) {
      if (--it->count < 1) registry.entries.erase(it);
      break;
    }
  }
  return CZuError::Success();
}

template <class Char>
bool IsRegistered(TView<Char> path) {
  TRegistry& registry = Registry();
  std::lock_guard<std::mutex> guard(registry.lock);
  for (const TMountEntry& entry : registry.entries)
    if (entry.count > 0 && SamePath<Char>(entry.Text(Char()), path)) return true;
  return false;
}

// The deepest registered mount point strictly (or not) above the path:
// where the part below it begins in the path, and the entry's text.
template <class Char>
std::size_t DeepestRegistered(TView<Char> path, bool allowEqual, TString<Char>* mountPoint) {
  std::size_t best = 0;
  TRegistry& registry = Registry();
  std::lock_guard<std::mutex> guard(registry.lock);
  for (const TMountEntry& entry : registry.entries) {
    const TString<Char>& text = entry.Text(Char());
    if (entry.count <= 0 || !Ancestor<Char>(text, path, allowEqual)) continue;
    const std::size_t end = Reduce(path).offset + Reduce<Char>(text).length;
    if (end > best) {
      best = end;
      if (mountPoint != nullptr) *mountPoint = text;
    }
  }
  return best;
}

// A root the system reports for a volume, unless it is a drive's own root.
template <class Char>
bool IsDriveRoot(TView<Char> root) {
  return root.size() <= 3 && HasDriveColon(root);
}

// The root of the volume holding the path, in normal form; empty when the
// system cannot tell.
template <class Char>
TString<Char> VolumeRoot(const TString<Char>& native) {
  std::string volume;
  if (FXPlatform::VolumePathName(ToSystem(native), volume).IsError()) volume.clear();
  TString<Char> root;
  FromSystem(volume, root);
  MakeNormalPath(root);
  return root;
}

// A folder is a mount point when it is the root of the volume holding it.
template <class Char>
bool RealMountPoint(TView<Char> path) {
  TString<Char> native;
  if (MakeNativePath(TString<Char>(path), native).IsError()) return false;
  const TString<Char> root = VolumeRoot(native);
  return !root.empty() && !IsDriveRoot<Char>(root) && SamePath<Char>(root, native);
}

template <class Char>
bool ChildOfMountPoint(TView<Char> path, TString<Char>* mountPoint) {
  TString<Char> registered;
  const std::size_t registeredEnd = DeepestRegistered(path, false, &registered);
  TString<Char> native, real;
  if (!MakeNativePath(TString<Char>(path), native).IsError()) real = VolumeRoot(native);
  const bool realFound = !real.empty() && !IsDriveRoot<Char>(real) && Ancestor<Char>(real, native, false);
  if (realFound && (registeredEnd == 0 || Reduce<Char>(real).length >= Reduce<Char>(registered).length)) {
    if (mountPoint != nullptr) MakeNativePath(real, *mountPoint);
    return true;
  }
  if (registeredEnd == 0) return false;
  if (mountPoint != nullptr) mountPoint->swap(registered);
  return true;
}

}  // namespace

std::size_t DeepestRegisteredMountEnd(TView<char> path) { return DeepestRegistered<char>(path, true, nullptr); }
std::size_t DeepestRegisteredMountEnd(TView<wchar_t> path) {
  return DeepestRegistered<wchar_t>(path, true, nullptr);
}

}  // namespace Detail

using namespace Detail;

CZuError RegisterSyntheticMountPoint(const std::string& path) { return Register<char>(path); }
CZuError RegisterSyntheticMountPoint(const std::wstring& path) { return Register<wchar_t>(path); }
CZuError DeregisterSyntheticMountPoint(const std::string& path) { return Deregister<char>(path); }
CZuError DeregisterSyntheticMountPoint(const std::wstring& path) { return Deregister<wchar_t>(path); }

bool IsPathMountPoint(const std::string& path) { return IsRegistered<char>(path) || RealMountPoint<char>(path); }
bool IsPathMountPoint(const std::wstring& path) {
  return IsRegistered<wchar_t>(path) || RealMountPoint<wchar_t>(path);
}
bool IsPathChildOfMountPointPath(const std::string& path) { return ChildOfMountPoint<char>(path, nullptr); }
bool IsPathChildOfMountPointPath(const std::wstring& path) { return ChildOfMountPoint<wchar_t>(path, nullptr); }
bool IsPathChildOfMountPointPath(const std::string& path, std::string& mountPoint) {
  return ChildOfMountPoint<char>(path, &mountPoint);
}
bool IsPathChildOfMountPointPath(const std::wstring& path, std::wstring& mountPoint) {
  return ChildOfMountPoint<wchar_t>(path, &mountPoint);
}

}  // namespace FXPath
