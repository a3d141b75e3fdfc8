// The readers behind CTextFile (text/TextFile.h), one per encoding. The base
// class reads a file that has nothing to read: it reports the end at once.
//
// A reader loads the file block by block into its buffer and collects a
// line from it in the file's unit (byte or 16-bit unit; a UTF-16 file's
// last odd byte belongs to no unit and is dropped), then converts the line
// to the caller's form into the caller's line buffer.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ZuUtilsExport.h"
#include "text/TextFile.h"

class ZUUTILS_API CTextFileReader {
 public:
  // A bufferSize of 0 gives a reader without buffer, at its end at once.
  CTextFileReader(const std::string& path, FXPlatform::CPlainFile* file, std::size_t bufferSize,
                  const TTextFileSettings* settings);
  virtual ~CTextFileReader();
  CTextFileReader(const CTextFileReader&) = delete;
  CTextFileReader& operator=(const CTextFileReader&) = delete;

  virtual int ReadChar();
  virtual int ReadLine(int* length, wchar_t** line);
  virtual int ReadLine(int* length, char** line);

 protected:
  // Appends the rest of the current line in the file's units to `sink`
  // (0 at a line feed, -1 at the end, -2 on a read error).
  template <class Unit, bool kSwapped, class Sink>
  int Collect(Sink& sink);
  template <class Unit, bool kSwapped>
  int NextUnit();
  template <bool kSwapped>
  int ReadUtf16Line(int* length, wchar_t** line);
  template <bool kSwapped>
  int ReadUtf16Line(int* length, char** line);

  std::string m_path;
  FXPlatform::CPlainFile* m_file;
  std::size_t m_bufferSize;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_position = 0;  // bytes
  std::size_t m_valid = 0;     // bytes
  bool m_endOfFile = false;
  std::size_t m_loads = 0;  // blocks read so far
  const TTextFileSettings* m_settings;
  // Scratch space of the conversions, kept to spare an allocation per line.
  std::string m_bytes;
  std::u16string m_units;
  std::string m_narrow;

 private:
  int Fill();
};

class ZUUTILS_API ANSI_CTextFileReader : public CTextFileReader {
 public:
  using CTextFileReader::CTextFileReader;
  int ReadChar() override;
  int ReadLine(int* length, wchar_t** line) override;
  int ReadLine(int* length, char** line) override;
};

class ZUUTILS_API UTF16LE_CTextFileReader : public CTextFileReader {
 public:
  using CTextFileReader::CTextFileReader;
  int ReadChar() override;
  int ReadLine(int* length, wchar_t** line) override;
  int ReadLine(int* length, char** line) override;
};

class ZUUTILS_API UTF16BE_CTextFileReader : public CTextFileReader {
 public:
  using CTextFileReader::CTextFileReader;
  int ReadChar() override;
  int ReadLine(int* length, wchar_t** line) override;
  int ReadLine(int* length, char** line) override;
};

class ZUUTILS_API UTF8_CTextFileReader : public CTextFileReader {
 public:
  using CTextFileReader::CTextFileReader;
  int ReadChar() override;
  int ReadLine(int* length, wchar_t** line) override;
  int ReadLine(int* length, char** line) override;

 private:
  bool IsWellFormedLine(const char* line, std::size_t size, std::size_t loads, std::size_t start);

  // Whether the whole lines of the current block are well-formed, checked
  // once per block rather than once per line.
  std::size_t m_checkedLoad = 0;
  bool m_loadWellFormed = false;
};
