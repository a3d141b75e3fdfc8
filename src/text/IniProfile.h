// FXIniProfile: the private-profile rules of Windows over the text of an
// INI file, for platforms without that service (see
// platform/PrivateProfile.h). Portable text logic; it never touches a file.
//
// The rules, as the service keeps them:
// - Lines end at CR or LF (any run of them); blanks, tabs, the other ASCII
//   white space and Ctrl-Z around a line are ignored, and so are empty lines.
// - "[name]" starts a section: the name runs from the '[' to the last ']',
//   without the white space inside the brackets.
//   A '[' line without ']' is an entry. Entries before the first section
//   belong to an unnamed one.
// - An entry is "name=value" (the first '='; blanks around the '=' are
//   dropped) or a name alone, which has no value. Entries whose name begins
//   with ';' are comments: they are found by name but never listed. A run
//   of entries with an empty name keeps only its first.
// - Lookups compare names without regard to ASCII case, after trimming the
//   name asked for; the first matching section and entry win. A value in
//   matching quotes (" or ') is returned without them.
// - A UTF-8 byte-order mark is skipped; text is taken as bytes, up to a NUL.
// Results fill a buffer of `size` characters as the service does,
// truncating and counting the same way (see the functions).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ZuUtilsExport.h"

namespace FXIniProfile {

struct TEntry {
  std::string name;
  bool hasValue = false;
  std::string value;
  std::size_t line = 0;  // the entry's line, counted from 0
};

struct TSection {
  std::string name;  // empty for the entries before the first section
  std::vector<TEntry> entries;
  static constexpr std::size_t kNoLine = static_cast<std::size_t>(-1);
  std::size_t line = kNoLine;      // the header's line
  std::size_t lastLine = kNoLine;  // the last non-empty line of the section
};

struct TLine {
  std::size_t begin = 0, end = 0;  // the text without its line end
  std::size_t next = 0;            // where the next line begins
};

struct TProfile {
  std::vector<TSection> sections;  // the unnamed one first
  std::vector<TLine> lines;
};

ZUUTILS_API void Parse(const std::string& text, TProfile& profile);

// GetPrivateProfileString: with a key, the value (or the default) cut to
// size - 1 characters, returning its length; without a key, the names of
// the section's entries that have a value, NUL-separated (or the default
// when there are none). `out` gets the returned characters.
ZUUTILS_API std::uint32_t GetString(const TProfile& profile, const char* section, const char* key,
                                    const char* defaultValue, std::uint32_t size, std::string& out);
// GetPrivateProfileSection: "name=value" (or "name") entries, NUL-separated;
// a cut list returns size - 2.
ZUUTILS_API std::uint32_t GetSection(const TProfile& profile, const char* section, std::uint32_t size,
                                     std::string& out);
// GetPrivateProfileSectionNames: the named sections, NUL-separated; a cut
// list (its last name cut short) returns size - 2.
ZUUTILS_API std::uint32_t GetSectionNames(const TProfile& profile, std::uint32_t size, std::string& out);

// The text with the key set: the first matching entry's line becomes
// "name=value"; a new entry goes after the last non-empty line of the first
// matching section; a new section, with its entry, at the end (line ends as
// the file's first, CR LF in a file without one). Every other line stays as
// it was. Leading blanks of the value are dropped, as the service does.
ZUUTILS_API std::string SetString(const std::string& text, const std::string& section, const std::string& key,
                                  const std::string& value);

}  // namespace FXIniProfile
