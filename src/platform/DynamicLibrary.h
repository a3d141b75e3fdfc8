// Libraries loaded at run time (the event-message texts, the logging
// service). Windows searches its usual DLL path; POSIX searches as dlopen
// does (LD_LIBRARY_PATH, the runpath, the system folders).
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXPlatform {

// The file name of a library on this platform: "MsgTextLib_C" gives
// "MsgTextLib_C.dll" on Windows and "libMsgTextLib_C.so" elsewhere.
ZUUTILS_API std::string SharedLibraryFileName(const std::string& baseName);

class ZUUTILS_API CDynamicLibrary {
 public:
  CDynamicLibrary() = default;
  ~CDynamicLibrary() { Unload(); }
  CDynamicLibrary(const CDynamicLibrary&) = delete;
  CDynamicLibrary& operator=(const CDynamicLibrary&) = delete;

  // Loads `fileName` (a UTF-8 name or path), unloading what was loaded
  // before. Failure: ERROR_MOD_NOT_FOUND (126), with the loader's message on
  // POSIX as the description.
  CZuError Load(const std::string& fileName);
  // The exported symbol, or null when it is missing or nothing is loaded.
  void* Symbol(const char* name) const;
  void Unload();
  bool IsLoaded() const { return m_handle != nullptr; }

 private:
  void* m_handle = nullptr;
};

}  // namespace FXPlatform
