#include "platform/PrivateProfile.h"

#include <unistd.h>

#include "platform/PlainFile.h"
#include "platform/SystemPath.h"
#include "text/IniProfile.h"

namespace FXPlatform {

namespace {

// The whole file; false when it exists and cannot be read. A missing file
// is an empty one.
bool Contents(const std::string& fileName, std::string& text) {
  text.clear();
  CPlainFile file;
  const TSystemError error = file.Open(fileName, EPlainFileOpen::kReadExisting);
  if (error.win32 != 0) return error.win32 == ERROR_FILE_NOT_FOUND || error.win32 == ERROR_PATH_NOT_FOUND;
  char buffer[65536];
  for (;;) {
    std::size_t read = 0;
    if (file.Read(buffer, sizeof buffer, read).win32 != 0) return false;
    if (read == 0) return true;
    text.append(buffer, read);
  }
}

// A file that cannot be read reads as empty, as the service has it.
void Load(const std::string& fileName, FXIniProfile::TProfile& profile) {
  std::string text;
  if (!Contents(fileName, text)) text.clear();
  FXIniProfile::Parse(text, profile);
}

}  // namespace

DWORD ProfileGetString(const char* section, const char* key, const char* defaultValue, DWORD size,
                       const std::string& fileName, std::string& out) {
  FXIniProfile::TProfile profile;
  Load(fileName, profile);
  return FXIniProfile::GetString(profile, section, key, defaultValue, size, out);
}

DWORD ProfileGetSection(const char* section, DWORD size, const std::string& fileName, std::string& out) {
  FXIniProfile::TProfile profile;
  Load(fileName, profile);
  return FXIniProfile::GetSection(profile, section, size, out);
}

DWORD ProfileGetSectionNames(DWORD size, const std::string& fileName, std::string& out) {
  FXIniProfile::TProfile profile;
  Load(fileName, profile);
  return FXIniProfile::GetSectionNames(profile, size, out);
}

// The new text goes to a temporary file beside the old one, reaches the
// disk, and replaces the old file in one rename.
DWORD ProfileWriteString(const char* section, const char* key, const char* value, const std::string& fileName) {
  if (section == nullptr || key == nullptr || value == nullptr) return 0;
  std::string text;
  if (!Contents(fileName, text)) return 0;
  text = FXIniProfile::SetString(text, section, key, value);
  const std::string temporary = fileName + ".~" + std::to_string(::getpid());
  CPlainFile file;
  if (file.Open(temporary, EPlainFileOpen::kCreateAlways).win32 != 0) return 0;
  const bool written = file.Write(text.data(), text.size()).win32 == 0 && file.Sync().win32 == 0;
  file.Close();
  if (!written || ReplaceFileAtomically(temporary, fileName).win32 != 0) {
    std::string posix;
    if (!SystemPathOf(temporary, posix).IsError()) ::unlink(posix.c_str());
    return 0;
  }
  return 1;
}

}  // namespace FXPlatform
