#include "text/TextFileWriter.h"

#include <cstring>
#include <vector>

#include "platform/CodePage.h"
#include "platform/PlainFile.h"
#include "text/TextFileSupport.h"

namespace {

// UTF-16 units as bytes in the file's order.
void UnitsToBytes(const std::u16string& units, bool bigEndian, std::string& out) {
  out.resize(units.size() * 2);
  char* p = &out[0];
  for (const char16_t unit : units) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    *p++ = bigEndian ? high : low;
    *p++ = bigEndian ? low : high;
  }
}

}  // namespace

CTextFileWriter::CTextFileWriter(const std::string& path, FXPlatform::CPlainFile* file, std::size_t bufferSize,
                                 const TTextFileSettings* settings)
    : m_path(path), m_file(file), m_bufferSize(bufferSize), m_buffer(new char[bufferSize]), m_settings(settings) {}

CTextFileWriter::~CTextFileWriter() { Flush(); }

int CTextFileWriter::Flush() {
  if (m_fill == 0) return 0;
  const FXPlatform::TSystemError error = m_file->Write(m_buffer.get(), m_fill);
  m_fill = 0;
  return error.win32 == 0 ? 0 : -2;
}

int CTextFileWriter::WriteBOM() { return 0; }

int CTextFileWriter::WriteBytes(const char* data, std::size_t size) {
  while (size > 0) {
    if (m_fill == m_bufferSize && Flush() != 0) return -2;
    const std::size_t room = m_bufferSize - m_fill;
    const std::size_t chunk = size < room ? size : room;
    std::memcpy(m_buffer.get() + m_fill, data, chunk);
    m_fill += chunk;
    data += chunk;
    size -= chunk;
  }
  return m_fill == m_bufferSize ? Flush() : 0;
}

int CTextFileWriter::WriteNarrow(const char* text, std::size_t length, bool keepBytes) {
  if (keepBytes) return WriteBytes(text, length);
  m_units.clear();
  if (!FXPlatform::CodePageToUtf16(m_settings->codePage, text, length, m_units)) return -2;
  std::vector<wchar_t> wide(m_units.size());
  const std::size_t count = FXTextFile::UnitsToWide(m_units.data(), m_units.size(), wide.data());
  return Write(wide.data(), count);
}

int ANSI_CTextFileWriter::Write(const wchar_t* text, std::size_t length) {
  FXTextFile::WideToUnits(text, length, m_units);
  m_bytes.clear();
  if (!FXPlatform::Utf16ToCodePage(m_settings->codePage, m_units.data(), m_units.size(), m_settings->unknownChar,
                                   m_bytes))
    return -2;
  return WriteBytes(m_bytes.data(), m_bytes.size());
}

int UTF16LE_CTextFileWriter::Write(const wchar_t* text, std::size_t length) {
  FXTextFile::WideToUnits(text, length, m_units);
  UnitsToBytes(m_units, false, m_bytes);
  return WriteBytes(m_bytes.data(), m_bytes.size());
}
int UTF16LE_CTextFileWriter::WriteBOM() { return WriteBytes("\xFF\xFE", 2); }

int UTF16BE_CTextFileWriter::Write(const wchar_t* text, std::size_t length) {
  FXTextFile::WideToUnits(text, length, m_units);
  UnitsToBytes(m_units, true, m_bytes);
  return WriteBytes(m_bytes.data(), m_bytes.size());
}
int UTF16BE_CTextFileWriter::WriteBOM() { return WriteBytes("\xFE\xFF", 2); }

int UTF8_CTextFileWriter::Write(const wchar_t* text, std::size_t length) {
  FXTextFile::WideToUnits(text, length, m_units);
  m_bytes.clear();
  FXPlatform::Utf16ToCodePage(FXPlatform::kCodePageUtf8, m_units.data(), m_units.size(), std::string(), m_bytes);
  return WriteBytes(m_bytes.data(), m_bytes.size());
}
int UTF8_CTextFileWriter::WriteBOM() { return WriteBytes("\xEF\xBB\xBF", 3); }
