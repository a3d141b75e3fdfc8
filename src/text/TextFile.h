// CTextFile: text files read and written line by line in one of four
// encodings, with the encoding detected from a byte-order mark on reading
// and the mark written for a new file.
//
// Encodings (the low byte of the open flags, and GetEncoding()):
//   0 detect on reading (ANSI on writing)   1 ANSI code page (no mark)
//   2 UTF-16LE (FF FE)   3 UTF-16BE (FE FF)   4 UTF-8 (EF BB BF)
// Flag 0x200 reads a file of a given encoding from its first byte, without
// looking for that encoding's mark, and on writing leaves the mark out.
//
// Narrow text on the caller's side is in the code page (SetCodePage); the
// default is the system's ANSI code page: GetACP() on Windows, UTF-8 (65001)
// on POSIX, whose narrow text is UTF-8. Wide text is UTF-16 on Windows and
// UTF-32 on POSIX, where a UTF-16 file's surrogate pairs become one wchar_t
// and an unpaired surrogate stays the unit it was (so text read and written
// back is unchanged). Pass-through (SetAnsiPassThru) hands the bytes of an
// ANSI file to wide lines one byte per character, and the bytes of a UTF-8
// file to narrow lines as they are; narrow text written to such a file goes
// out as it is, as it does to a UTF-8 file when the code page is UTF-8.
//
// Results are integers: 0 success, -1 end of file, -2 failure. A failed
// Open or read leaves its text in the calling thread's last-error text
// (GetLastErrorText), the thread's system error code untouched.
//
// Line buffers. ReadLine hands out lines in a buffer the caller owns and
// passes back on every call: one heap block, a 12-byte header ("BDSG", the
// allocated characters as an unsigned 32-bit count, a multiple of 1024, and
// the used characters including the terminator) and the characters; the
// caller's pointer points past the header. A null pointer is an empty
// buffer; the reader grows it and stores the new pointer. Free it with
// FreeLineBuffer.
#pragma once

#include <memory>
#include <string>

#include "ZuUtilsExport.h"
#include "platform/ZuTypes.h"

namespace FXPlatform {
class CPlainFile;
}  // namespace FXPlatform
class CTextFileReader;
class CTextFileWriter;

// What the readers and writers convert with; owned by the CTextFile.
struct TTextFileSettings {
  unsigned int codePage;
  std::string unknownChar;  // for characters the code page lacks; empty: "?"
  bool ansiPassThru;
};

class ZUUTILS_API CTextFile {
 public:
  enum EMode { kModeRead = 1, kModeCreate = 2, kModeAppend = 3 };
  enum EEncoding { kDetect = 0, kAnsi = 1, kUtf16LE = 2, kUtf16BE = 3, kUtf8 = 4 };
  static constexpr int kNoByteOrderMark = 0x200;

  CTextFile();
  ~CTextFile();
  CTextFile(const CTextFile&) = delete;
  CTextFile& operator=(const CTextFile&) = delete;

  // Mode 1 reads an existing file; 2 creates or truncates it for writing;
  // 3 (and any other value) opens or creates it for writing, and in mode 3
  // a file that is not empty is written at its end without a mark. A
  // bufferSize of 0 or less means 4096 bytes.
  int Open(const std::string& path, int mode, int flags, int bufferSize = 0);
  int Close();
  int Flush();
  // Win32 error codes (0 on success).
  DWORD GetFileSize(long long& size);
  DWORD GetFilePointer(long long& position);

  // The next byte (ANSI, UTF-8) or 16-bit unit (UTF-16, in host order);
  // carriage returns are skipped.
  int ReadChar();
  // The next line without its line end (a CR right before the LF in the
  // same buffer load is dropped; any other CR stays): 0 when a line feed
  // ended it, -1 at the end of the file with what was left, -2 on a read
  // error. *length is set to 0 first, then to the characters read.
  int ReadLine(int* length, char** line);
  int ReadLine(int* length, wchar_t** line);

  // Writes text (a length below 0: up to the terminator); 0 or -2.
  int Write(const char* text, int length = -1);
  int Write(const wchar_t* text, int length = -1);
  // Formats with the platform's wide printf (whose %s is wide on Windows
  // and narrow on POSIX: use %ls and %hs) and writes the text; *length is
  // the characters written. A text over 16 Mi characters fails.
  int FormatString(int* length, const wchar_t* format, ...);

  void SetCodePage(int codePage);
  void SetUnknownChar(const char* text);
  void SetAnsiPassThru(bool on);
  bool GetAnsiPassThru() const;
  int GetEncoding() const;

  static void FreeLineBuffer(char* line);
  static void FreeLineBuffer(wchar_t* line);
  // The calling thread's last failure text, such as
  // "Failed to open file [C:\x.txt] - The system cannot find the file specified."
  static std::string GetLastErrorText();

 private:
  int OpenReader();
  int OpenWriter(const std::string& path, int mode, int flags);
  int BeforeText();

  std::string m_path;
  int m_mode = 0;
  int m_encoding = 0;
  int m_flags = 0;
  int m_reserved = 0;
  int m_bufferSize = 0;
  std::unique_ptr<FXPlatform::CPlainFile> m_file;
  std::unique_ptr<CTextFileReader> m_reader;
  std::unique_ptr<CTextFileWriter> m_writer;
  bool m_writeByteOrderMark = false;
  TTextFileSettings m_settings;
};

// Whole lines through a CTextFile opened for writing, each ended with CR LF.
class ZUUTILS_API CTextFileLineWriter {
 public:
  explicit CTextFileLineWriter(CTextFile& file) : m_file(file) {}
  int WriteLine(const std::string& line);
  int WriteLine(const std::wstring& line);

 private:
  CTextFile& m_file;
};
