// The writers behind CTextFile (text/TextFile.h), one per encoding. A
// writer collects the encoded bytes in its buffer and writes them when it
// is full, on Flush and when it is destroyed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ZuUtilsExport.h"
#include "text/TextFile.h"

class ZUUTILS_API CTextFileWriter {
 public:
  CTextFileWriter(const std::string& path, FXPlatform::CPlainFile* file, std::size_t bufferSize,
                  const TTextFileSettings* settings);
  // Flushes what is buffered.
  virtual ~CTextFileWriter();
  CTextFileWriter(const CTextFileWriter&) = delete;
  CTextFileWriter& operator=(const CTextFileWriter&) = delete;

  // Wide text in the file's encoding; 0 or -2.
  virtual int Write(const wchar_t* text, std::size_t length) = 0;
  virtual int Flush();
  // The encoding's byte-order mark (none for ANSI).
  virtual int WriteBOM();

  // Narrow text in the code page, converted to the file's encoding; bytes
  // that are already in it (see text/TextFile.h) go out as they are.
  int WriteNarrow(const char* text, std::size_t length, bool keepBytes);

 protected:
  int WriteBytes(const char* data, std::size_t size);

  std::string m_path;
  FXPlatform::CPlainFile* m_file;
  std::size_t m_bufferSize;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_fill = 0;
  const TTextFileSettings* m_settings;
  std::u16string m_units;  // scratch space of the conversions
  std::string m_bytes;
};

class ZUUTILS_API ANSI_CTextFileWriter : public CTextFileWriter {
 public:
  using CTextFileWriter::CTextFileWriter;
  int Write(const wchar_t* text, std::size_t length) override;
};

class ZUUTILS_API UTF16LE_CTextFileWriter : public CTextFileWriter {
 public:
  using CTextFileWriter::CTextFileWriter;
  int Write(const wchar_t* text, std::size_t length) override;
  int WriteBOM() override;
};

class ZUUTILS_API UTF16BE_CTextFileWriter : public CTextFileWriter {
 public:
  using CTextFileWriter::CTextFileWriter;
  int Write(const wchar_t* text, std::size_t length) override;
  int WriteBOM() override;
};

class ZUUTILS_API UTF8_CTextFileWriter : public CTextFileWriter {
 public:
  using CTextFileWriter::CTextFileWriter;
  int Write(const wchar_t* text, std::size_t length) override;
  int WriteBOM() override;
};
