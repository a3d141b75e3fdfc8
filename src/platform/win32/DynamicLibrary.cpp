#include "platform/DynamicLibrary.h"

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {

std::string SharedLibraryFileName(const std::string& baseName) { return baseName + ".dll"; }

CZuError CDynamicLibrary::Load(const std::string& fileName) {
  Unload();
  m_handle = ::LoadLibraryW(Widen(fileName).c_str());
  if (m_handle == nullptr) {
    CZuError result = ErrorFromSystem(ZU_HERE("CDynamicLibrary::Load"), LastSystemError());
    return result.Push(ZU_HERE("CDynamicLibrary::Load"), "%s", fileName.c_str());
  }
  return CZuError::Success();
}

void* CDynamicLibrary::Symbol(const char* name) const {
  if (m_handle == nullptr) return nullptr;
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

void CDynamicLibrary::Unload() {
  if (m_handle != nullptr) ::FreeLibrary(static_cast<HMODULE>(m_handle));
  m_handle = nullptr;
}

}  // namespace FXPlatform
