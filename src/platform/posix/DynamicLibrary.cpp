#include "platform/DynamicLibrary.h"

#include <dlfcn.h>

#include "errors/ErrorUtil.h"

namespace FXPlatform {

std::string SharedLibraryFileName(const std::string& baseName) { return "lib" + baseName + ".so"; }

CZuError CDynamicLibrary::Load(const std::string& fileName) {
  Unload();
  m_handle = ::dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_handle == nullptr) {
    const char* why = ::dlerror();
    return FXErrorUtil::ErrorWin32(ZU_HERE("CDynamicLibrary::Load"), ERROR_MOD_NOT_FOUND, "%s",
                                   why ? why : fileName.c_str());
  }
  return CZuError::Success();
}

void* CDynamicLibrary::Symbol(const char* name) const {
  return m_handle ? ::dlsym(m_handle, name) : nullptr;
}

void CDynamicLibrary::Unload() {
  if (m_handle != nullptr) ::dlclose(m_handle);
  m_handle = nullptr;
}

}  // namespace FXPlatform
