#include "Catalog.h"

#include <errors/ErrorUtil.h>
#include <platform/CompleteTypes.h>
#include <serialization/Bag.h>
#include <text/UTFOSAPI.h>

namespace zuscan {

namespace {

#define ZUSCAN_HERE(function) ZU_HERE("zuscan::" function)

constexpr std::size_t kFlushAt = 256 * 1024;

CZuError FileError(const FXCodeLocation& here, const FXPlatform::TSystemError& error, const std::string& path) {
  return FXPlatform::ErrorFromSystem(here, error).Push(here, "Path=[%s]", path.c_str());
}

FILETIME AsFileTime(unsigned long long value) {
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(value);
  time.dwHighDateTime = static_cast<DWORD>(value >> 32);
  return time;
}

unsigned long long FromFileTime(const FILETIME& time) {
  return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

// Reads an optional property: absent or of another type leaves `out` alone.
template <typename T>
void ReadOptional(CBag& bag, const char* key, T& out) {
  T value{};
  if (!bag.Read(key, value)) out = value;
}

unsigned long long ReadFileTime(CBag& bag, const char* key) {
  boost::any value;
  if (bag.ReadAny(key, value).IsError()) return 0;
  const FILETIME* time = boost::any_cast<FILETIME>(&value);
  return time ? FromFileTime(*time) : 0;
}

CZuError Serialize(CBag& bag, std::string& line) {
  CZuError result = bag.GetSerializedData(line);
  if (result.IsError()) result.Push(ZUSCAN_HERE("Serialize"));
  return result;
}

void WriteList(CBag& bag, const char* prefix, const std::vector<std::string>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    bag.Write(prefix + std::to_string(i), values[i]);
  }
}

std::vector<std::string> ReadList(CBag& bag, const char* prefix) {
  std::vector<std::string> values;
  for (std::string value;; values.push_back(value)) {
    if (bag.Read(prefix + std::to_string(values.size()), value).IsError()) break;
  }
  return values;
}

}  // namespace

CZuError SerializeEntry(const TCatalogEntry& entry, std::string& line) {
  CBag bag;
  bag.Write("Path", entry.path);
  bag.Write("Kind", entry.kind);
  bag.Write("Size", static_cast<unsigned long long>(entry.size));
  bag.WriteAny("Modified", AsFileTime(entry.modified));
  bag.Write("Attributes", entry.attributes);
  if (!entry.checksum.empty()) bag.Write("Checksum", entry.checksum);
  return Serialize(bag, line);
}

CCatalogWriter::~CCatalogWriter() {
  if (m_file.IsOpen()) {
    m_file.Close();
    CZuUTFOSAPI::unlink(m_temporaryPath.c_str());
  }
}

CZuError CCatalogWriter::Open(const std::string& path, const TCatalogHeader& header) {
  m_path = path;
  m_temporaryPath = path + ".partial";
  const FXPlatform::TSystemError error = m_file.Open(m_temporaryPath, FXPlatform::EPlainFileOpen::kCreateAlways);
  if (error.win32 != 0) return FileError(ZUSCAN_HERE("CCatalogWriter::Open"), error, m_temporaryPath);

  CBag bag;
  bag.Write("Format", header.format);
  bag.Write("Tool", header.tool);
  bag.Write("Host", header.host);
  WriteList(bag, "Root.", header.roots);
  WriteList(bag, "Rule.", header.rules);
  bag.Write("Checksum", header.checksum);
  bag.WriteAny("Start", AsFileTime(header.start));
  std::string line;
  CZuError result = Serialize(bag, line);
  if (!result) result = WriteLine(line);
  return result;
}

CZuError CCatalogWriter::WriteLine(const std::string& line) {
  m_buffer += line;
  m_buffer += '\n';
  return m_buffer.size() >= kFlushAt ? Flush() : CZuError::Success();
}

CZuError CCatalogWriter::Flush() {
  const FXPlatform::TSystemError error = m_file.Write(m_buffer.data(), m_buffer.size());
  m_buffer.clear();
  return error.win32 != 0 ? FileError(ZUSCAN_HERE("CCatalogWriter::Flush"), error, m_temporaryPath)
                          : CZuError::Success();
}

CZuError CCatalogWriter::Write(const TCatalogEntry& entry) {
  std::string line;
  CZuError result = SerializeEntry(entry, line);
  if (result.IsError()) return result;
  std::lock_guard<std::mutex> hold(m_lock);
  ++m_entries;
  return WriteLine(line);
}

CZuError CCatalogWriter::Close(const TCatalogTrailer& trailer) {
  CBag bag;
  bag.WriteAny("End", AsFileTime(trailer.end));
  bag.Write("Complete", trailer.complete);
  bag.Write("Entries", static_cast<unsigned long long>(trailer.entries));
  bag.Write("Errors", static_cast<unsigned long long>(trailer.errors));
  std::string line;
  CZuError result = Serialize(bag, line);
  if (!result) result = WriteLine(line);
  if (!result) result = Flush();
  if (!result) {
    const FXPlatform::TSystemError error = m_file.Sync();
    if (error.win32 != 0) result = FileError(ZUSCAN_HERE("CCatalogWriter::Close"), error, m_temporaryPath);
  }
  m_file.Close();
  if (!result) {
    const FXPlatform::TSystemError error = FXPlatform::ReplaceFileAtomically(m_temporaryPath, m_path);
    if (error.win32 != 0) result = FileError(ZUSCAN_HERE("CCatalogWriter::Close"), error, m_path);
  }
  if (result.IsError()) CZuUTFOSAPI::unlink(m_temporaryPath.c_str());
  return result;
}

namespace {

// One line of a catalogue into `catalog`: the first is the header.
void ReadLine(const std::string& line, bool first, TCatalog& catalog) {
  CBag bag;
  if (bag.LoadSerializedData(line).IsError()) {
    ++catalog.unreadableLines;
  } else if (first) {
    ReadOptional(bag, "Format", catalog.header.format);
    ReadOptional(bag, "Tool", catalog.header.tool);
    ReadOptional(bag, "Host", catalog.header.host);
    ReadOptional(bag, "Checksum", catalog.header.checksum);
    catalog.header.roots = ReadList(bag, "Root.");
    catalog.header.rules = ReadList(bag, "Rule.");
    catalog.header.start = ReadFileTime(bag, "Start");
  } else {
    TCatalogEntry entry;
    if (!bag.Read("Path", entry.path)) {
      ReadOptional(bag, "Kind", entry.kind);
      ReadOptional(bag, "Size", entry.size);
      ReadOptional(bag, "Attributes", entry.attributes);
      ReadOptional(bag, "Checksum", entry.checksum);
      entry.modified = ReadFileTime(bag, "Modified");
      std::string key = entry.path;
      catalog.entries[key] = std::move(entry);
    } else if (!bag.Read("Complete", catalog.trailer.complete)) {
      catalog.hasTrailer = true;
      catalog.trailer.end = ReadFileTime(bag, "End");
      ReadOptional(bag, "Entries", catalog.trailer.entries);
      ReadOptional(bag, "Errors", catalog.trailer.errors);
    }
  }
}

}  // namespace

CZuError ReadCatalog(const std::string& path, TCatalog& catalog) {
  const FXCodeLocation here = ZUSCAN_HERE("ReadCatalog");
  catalog = TCatalog();
  FXPlatform::CPlainFile file;
  FXPlatform::TSystemError error = file.Open(path, FXPlatform::EPlainFileOpen::kReadExisting);
  if (error.win32 != 0) return FileError(here, error, path);

  bool first = true;
  std::string pending;
  char chunk[64 * 1024];
  for (;;) {
    std::size_t read = 0;
    error = file.Read(chunk, sizeof chunk, read);
    if (error.win32 != 0) return FileError(here, error, path);
    if (read == 0) break;
    pending.append(chunk, read);
    std::size_t start = 0;
    for (std::size_t end; (end = pending.find('\n', start)) != std::string::npos; start = end + 1) {
      std::size_t stop = end;
      if (stop > start && pending[stop - 1] == '\r') --stop;
      ReadLine(pending.substr(start, stop - start), first, catalog);
      first = false;
    }
    pending.erase(0, start);
  }
  if (!pending.empty()) {
    ReadLine(pending, first, catalog);
    first = false;
  }
  if (first) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_DATA, "Empty catalogue, Path=[%s]", path.c_str());
  return CZuError::Success();
}

TCompareResult CompareCatalogs(const TCatalog& before, const TCatalog& after) {
  TCompareResult result;
  auto old = before.entries.begin();
  auto now = after.entries.begin();
  while (old != before.entries.end() || now != after.entries.end()) {
    if (now == after.entries.end() || (old != before.entries.end() && old->first < now->first)) {
      result.removed.push_back((old++)->first);
    } else if (old == before.entries.end() || now->first < old->first) {
      result.added.push_back((now++)->first);
    } else {
      const TCatalogEntry& a = old->second;
      const TCatalogEntry& b = now->second;
      std::string what;
      auto note = [&what](const char* item) { what += what.empty() ? item : std::string(", ") + item; };
      if (a.kind != b.kind) note("kind");
      if (a.size != b.size) note("size");
      if (a.modified != b.modified) note("time");
      if (!a.checksum.empty() && !b.checksum.empty() && a.checksum != b.checksum) note("checksum");
      if (what.empty()) {
        ++result.unchanged;
      } else {
        result.changed.emplace_back(now->first, what);
      }
      ++old;
      ++now;
    }
  }
  return result;
}

}  // namespace zuscan
