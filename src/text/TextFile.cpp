#include "platform/PlainFile.h"
#include "text/TextFile.h"

#include <cstdarg>
#include <cwchar>
#include <new>
#include <vector>

#include "platform/CodePage.h"
#include "platform/SystemMessage.h"
#include "text/TextFileReader.h"
#include "text/TextFileSupport.h"
#include "text/TextFileWriter.h"

namespace FXTextFile {

namespace {
thread_local std::string t_lastErrorText;
}  // namespace

void SetLastErrorText(const std::string& text) { t_lastErrorText = text; }

}  // namespace FXTextFile

namespace {

constexpr int kDefaultBufferSize = 4096;
constexpr std::size_t kMaxFormatted = 16u << 20;

// The system's text for the failure, or the C runtime's where the system
// has none (POSIX), without its line end.
std::string ErrorText(const FXPlatform::TSystemError& error) {
  std::string text;
  FXPlatform::SystemMessage(error.win32, text);
  if (text.empty() && error.crtErrno >= 0) text = FXPlatform::CRuntimeErrorText(error.crtErrno);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

template <class Char>
std::size_t LengthOf(const Char* text, int length) {
  if (length >= 0) return static_cast<std::size_t>(length);
  std::size_t n = 0;
  while (text[n] != Char(0)) ++n;
  return n;
}

}  // namespace

CTextFile::CTextFile() : m_settings{FXPlatform::SystemAnsiCodePage(), std::string(), false} {}

CTextFile::~CTextFile() { Close(); }

int CTextFile::Open(const std::string& path, int mode, int flags, int bufferSize) {
  Close();
  m_path = path;
  m_mode = mode;
  m_flags = flags;
  m_encoding = flags & 0xFF;
  m_bufferSize = bufferSize > 0 ? bufferSize : kDefaultBufferSize;
  const FXPlatform::EPlainFileOpen how = mode == kModeRead     ? FXPlatform::EPlainFileOpen::kReadExisting
                                         : mode == kModeCreate ? FXPlatform::EPlainFileOpen::kCreateAlways
                                                               : FXPlatform::EPlainFileOpen::kOpenAlways;
  FXPlatform::TSystemError error;
  if (m_encoding > kUtf8) error.win32 = ERROR_INVALID_PARAMETER;
  m_file.reset(new FXPlatform::CPlainFile);
  if (error.win32 == 0) error = m_file->Open(path, how);
  if (error.win32 != 0) {
    m_file.reset();
    FXTextFile::SetLastErrorText("Failed to open file [" + path + "] - " + ErrorText(error));
    return -2;
  }
  // A buffer of the caller's size may not be had: that fails the open.
  try {
    return mode == kModeRead ? OpenReader() : OpenWriter(path, mode, flags);
  } catch (const std::bad_alloc&) {
    Close();
    FXTextFile::SetLastErrorText("Failed to open file [" + path + "] - " + ErrorText(FXPlatform::TSystemError{
                                     static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY), -1}));
    return -2;
  }
}

int CTextFile::OpenWriter(const std::string& path, int mode, int flags) {
  if (m_encoding == kDetect) m_encoding = kAnsi;
  long long size = 0;
  if (m_file->GetSize(size).win32 != 0 || (mode == kModeAppend && size > 0 && m_file->SeekToEnd().win32 != 0)) {
    Close();
    return -2;
  }
  m_writeByteOrderMark = size == 0 && (flags & kNoByteOrderMark) == 0;
  const std::size_t buffer = static_cast<std::size_t>(m_bufferSize);
  switch (m_encoding) {
    case kUtf16LE: m_writer.reset(new UTF16LE_CTextFileWriter(path, m_file.get(), buffer, &m_settings)); break;
    case kUtf16BE: m_writer.reset(new UTF16BE_CTextFileWriter(path, m_file.get(), buffer, &m_settings)); break;
    case kUtf8: m_writer.reset(new UTF8_CTextFileWriter(path, m_file.get(), buffer, &m_settings)); break;
    default: m_writer.reset(new ANSI_CTextFileWriter(path, m_file.get(), buffer, &m_settings)); break;
  }
  return 0;
}

// Looks at the first bytes for a byte-order mark, then starts the reader
// behind the mark (or at the start).
int CTextFile::OpenReader() {
  const bool sniff = m_encoding == kDetect || ((m_flags & kNoByteOrderMark) == 0 && m_encoding != kAnsi);
  unsigned char head[3] = {0, 0, 0};
  std::size_t have = 0;
  if (sniff) {
    while (have < 3) {
      std::size_t read = 0;
      const FXPlatform::TSystemError error = m_file->Read(head + have, 3 - have, read);
      if (error.win32 != 0) {
        FXTextFile::SetLastErrorText(ErrorText(error));
        Close();
        return -2;
      }
      if (read == 0) break;
      have += read;
    }
  }
  const bool little = have >= 2 && head[0] == 0xFF && head[1] == 0xFE;
  const bool big = have >= 2 && head[0] == 0xFE && head[1] == 0xFF;
  const bool utf8 = have == 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF;
  std::size_t skip = 0;
  if (m_encoding == kDetect) {
    if (have == 0) {
      m_reader.reset(new CTextFileReader(m_path, m_file.get(), 0, &m_settings));
      return 0;
    }
    m_encoding = little ? kUtf16LE : big ? kUtf16BE : utf8 ? kUtf8 : kAnsi;
    skip = little || big ? 2 : utf8 ? 3 : 0;
  } else if (sniff) {
    skip = (m_encoding == kUtf16LE && little) || (m_encoding == kUtf16BE && big) ? 2
           : m_encoding == kUtf8 && utf8                                         ? 3
                                                                                 : 0;
  }
  if (sniff && m_file->Seek(static_cast<long long>(skip)).win32 != 0) {
    Close();
    return -2;
  }
  std::size_t buffer = static_cast<std::size_t>(m_bufferSize);
  switch (m_encoding) {
    case kUtf16LE:
    case kUtf16BE:
      buffer = buffer < 2 ? 2 : buffer & ~static_cast<std::size_t>(1);  // whole units
      if (m_encoding == kUtf16LE)
        m_reader.reset(new UTF16LE_CTextFileReader(m_path, m_file.get(), buffer, &m_settings));
      else
        m_reader.reset(new UTF16BE_CTextFileReader(m_path, m_file.get(), buffer, &m_settings));
      break;
    case kUtf8: m_reader.reset(new UTF8_CTextFileReader(m_path, m_file.get(), buffer, &m_settings)); break;
    default: m_reader.reset(new ANSI_CTextFileReader(m_path, m_file.get(), buffer, &m_settings)); break;
  }
  return 0;
}

int CTextFile::Close() {
  int rc = 0;
  if (m_writer) rc = m_writer->Flush();
  m_writer.reset();
  m_reader.reset();
  m_file.reset();
  m_writeByteOrderMark = false;
  return rc;
}

int CTextFile::Flush() {
  if (!m_writer) return m_reader ? 0 : -2;
  return m_writer->Flush();
}

DWORD CTextFile::GetFileSize(long long& size) {
  size = 0;
  return m_file ? m_file->GetSize(size).win32 : static_cast<DWORD>(ERROR_INVALID_HANDLE);
}

DWORD CTextFile::GetFilePointer(long long& position) {
  position = 0;
  return m_file ? m_file->GetPosition(position).win32 : static_cast<DWORD>(ERROR_INVALID_HANDLE);
}

int CTextFile::ReadChar() { return m_reader ? m_reader->ReadChar() : -2; }

int CTextFile::ReadLine(int* length, char** line) {
  if (length == nullptr || line == nullptr) return -2;
  *length = 0;
  return m_reader ? m_reader->ReadLine(length, line) : -2;
}

int CTextFile::ReadLine(int* length, wchar_t** line) {
  if (length == nullptr || line == nullptr) return -2;
  *length = 0;
  return m_reader ? m_reader->ReadLine(length, line) : -2;
}

// The mark goes before the first text of a new or empty file.
int CTextFile::BeforeText() {
  if (!m_writer) return -2;
  if (!m_writeByteOrderMark) return 0;
  m_writeByteOrderMark = false;
  return m_writer->WriteBOM();
}

int CTextFile::Write(const char* text, int length) {
  if (text == nullptr || BeforeText() != 0) return -2;
  const bool keepBytes = m_encoding == kAnsi || (m_encoding == kUtf8 && (m_settings.ansiPassThru ||
                                                                         m_settings.codePage == FXPlatform::kCodePageUtf8));
  return m_writer->WriteNarrow(text, LengthOf(text, length), keepBytes);
}

int CTextFile::Write(const wchar_t* text, int length) {
  if (text == nullptr || BeforeText() != 0) return -2;
  return m_writer->Write(text, LengthOf(text, length));
}

int CTextFile::FormatString(int* length, const wchar_t* format, ...) {
  if (length != nullptr) *length = 0;
  if (format == nullptr || !m_writer) return -2;
  std::vector<wchar_t> buffer(256);
  for (;;) {
    va_list args;
    va_start(args, format);
    const int written = std::vswprintf(buffer.data(), buffer.size(), format, args);
    va_end(args);
    if (written >= 0 && static_cast<std::size_t>(written) < buffer.size()) {
      if (length != nullptr) *length = written;
      return Write(buffer.data(), written);
    }
    // Too small (or a conversion the runtime refused): try a larger buffer.
    if (buffer.size() >= kMaxFormatted) return -2;
    buffer.resize(buffer.size() * 4);
  }
}

void CTextFile::SetCodePage(int codePage) { m_settings.codePage = static_cast<unsigned int>(codePage); }
void CTextFile::SetUnknownChar(const char* text) { m_settings.unknownChar = text == nullptr ? "" : text; }
void CTextFile::SetAnsiPassThru(bool on) { m_settings.ansiPassThru = on; }
bool CTextFile::GetAnsiPassThru() const { return m_settings.ansiPassThru; }
int CTextFile::GetEncoding() const { return m_encoding; }

void CTextFile::FreeLineBuffer(char* line) { FXTextFile::CLineBuffer<char>::Free(line); }
void CTextFile::FreeLineBuffer(wchar_t* line) { FXTextFile::CLineBuffer<wchar_t>::Free(line); }

std::string CTextFile::GetLastErrorText() { return FXTextFile::t_lastErrorText; }

int CTextFileLineWriter::WriteLine(const std::string& line) {
  if (m_file.Write(line.data(), static_cast<int>(line.size())) != 0) return -2;
  return m_file.Write("\r\n", 2);
}

int CTextFileLineWriter::WriteLine(const std::wstring& line) {
  if (m_file.Write(line.data(), static_cast<int>(line.size())) != 0) return -2;
  return m_file.Write(L"\r\n", 2);
}
