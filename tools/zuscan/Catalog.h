// The catalogue: a UTF-8 text file of serialized property bags, one a line.
//
//   line 1      the header bag: Format, Tool, Host, Root.<n>, Rule.<n>,
//               Checksum, Start
//   lines 2...  one bag an entry: Path (normal form), Kind ("file",
//               "folder", "link"), Size, Modified (FILETIME), Attributes,
//               and Checksum when one was asked for
//   last line   the trailer bag: End, Complete, Entries, Errors
//
// A reader skips properties it does not know and lines whose bags carry
// tokens it cannot load, so an older zuscan reads a newer catalogue. The
// file is written under a temporary name and renamed when it is closed, so
// the final name never holds half a catalogue; an interrupted scan still
// closes it, with Complete false.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <errors/ZuError.h>
#include <platform/PlainFile.h>
#include <platform/ZuTypes.h>

namespace zuscan {

constexpr unsigned int kCatalogFormat = 1;

struct TCatalogEntry {
  std::string path;
  std::string kind;
  unsigned long long size = 0;
  unsigned long long modified = 0;  // FILETIME as one number
  unsigned int attributes = 0;
  std::string checksum;
};

struct TCatalogHeader {
  unsigned int format = kCatalogFormat;
  std::string tool;
  std::string host;
  std::vector<std::string> roots;
  std::vector<std::string> rules;
  std::string checksum;
  unsigned long long start = 0;
};

struct TCatalogTrailer {
  unsigned long long end = 0;
  bool complete = false;
  unsigned long long entries = 0;
  unsigned long long errors = 0;
};

// The serialized text of one line; the entry's own, independent of the
// platform that wrote it.
CZuError SerializeEntry(const TCatalogEntry& entry, std::string& line);

class CCatalogWriter {
 public:
  ~CCatalogWriter();
  CZuError Open(const std::string& path, const TCatalogHeader& header);
  // Safe to call from several threads.
  CZuError Write(const TCatalogEntry& entry);
  // Writes the trailer, closes and renames the file to its final name.
  CZuError Close(const TCatalogTrailer& trailer);

 private:
  // Lines collect in a buffer written in large pieces; the caller holds
  // m_lock, or is the only thread.
  CZuError WriteLine(const std::string& line);
  CZuError Flush();

  std::mutex m_lock;
  FXPlatform::CPlainFile m_file;
  std::string m_buffer;
  std::string m_path;
  std::string m_temporaryPath;
  unsigned long long m_entries = 0;
};

struct TCatalog {
  TCatalogHeader header;
  bool hasTrailer = false;
  TCatalogTrailer trailer;
  std::map<std::string, TCatalogEntry> entries;  // by path
  unsigned long long unreadableLines = 0;
};

CZuError ReadCatalog(const std::string& path, TCatalog& catalog);

struct TCompareResult {
  std::vector<std::string> added, removed;
  std::vector<std::pair<std::string, std::string>> changed;  // path, what changed
  unsigned long long unchanged = 0;
};

// Checksums are compared only when both catalogues have one for the entry.
TCompareResult CompareCatalogs(const TCatalog& before, const TCatalog& after);

}  // namespace zuscan
