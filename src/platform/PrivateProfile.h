// The private-profile (INI file) service: GetPrivateProfileString,
// GetPrivateProfileSection, GetPrivateProfileSectionNames and
// WritePrivateProfileString, with UTF-8 text on both sides.
//
// Windows calls the wide functions (names and texts converted from and to
// UTF-8). POSIX has no such service: FXIniProfile (text/IniProfile.h) reads
// and writes the file by the same rules, and a write replaces the file
// through a temporary file and an atomic rename, so that a crash leaves the
// old file or the new one, never a part.
//
// Sizes count characters: UTF-16 units on Windows, bytes on POSIX (the same
// for ASCII). Each function fills `out` with what the service put in a
// buffer of `size` characters, up to the returned count (NULs included for
// the lists), and returns the service's count.
#pragma once

#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {

// A null key asks for the section's key names; a null section for the
// names of all sections. A null default is an empty one.
ZUUTILS_API DWORD ProfileGetString(const char* section, const char* key, const char* defaultValue, DWORD size,
                                   const std::string& fileName, std::string& out);
ZUUTILS_API DWORD ProfileGetSection(const char* section, DWORD size, const std::string& fileName, std::string& out);
ZUUTILS_API DWORD ProfileGetSectionNames(DWORD size, const std::string& fileName, std::string& out);
// Nonzero on success.
ZUUTILS_API DWORD ProfileWriteString(const char* section, const char* key, const char* value,
                                     const std::string& fileName);

}  // namespace FXPlatform
