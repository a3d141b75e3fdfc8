// INIFileReader: keys of an INI file through the platform's private-profile
// service (platform/PrivateProfile.h), whose rules decide the syntax:
// sections in brackets, key=value lines, names compared without regard to
// ASCII case, the first of duplicate keys and sections winning, lines that
// begin with ';' ignored. The class adds growing buffers, trimming of
// values and keeps its last lists.
//
// Nothing is reported: a missing file, section or key reads as empty.
#pragma once

#include <string>
#include <vector>

#include "ZuUtilsExport.h"

class ZUUTILS_API INIFileReader {
 public:
  INIFileReader() = default;
  explicit INIFileReader(std::string fileName) : m_fileName(std::move(fileName)) {}

  void setINIFileName(const std::string& fileName) { m_fileName = fileName; }

  // The value without the blanks, tabs and line-end characters around it.
  std::string getKeyValue(const std::string& section, const std::string& key);
  // The section's "key=value" entries in file order; replaced by the next call.
  const std::vector<std::string>& getSectionData(const std::string& section);
  // The section names in file order, as many as fit 1000 characters with a
  // NUL after each; replaced by the next call.
  const std::vector<std::string>& getSectionNames();
  // Whether the section holds a key: an empty section counts as absent.
  bool sectionExists(const std::string& section);
  // Nonzero on success.
  unsigned int setKeyValue(const std::string& section, const std::string& key, const std::string& value);

 private:
  std::string m_fileName;
  std::vector<std::string> m_sectionData;
  std::vector<std::string> m_sectionNames;
};
