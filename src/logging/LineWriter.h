// Line sinks for diagnostic dumps (filter sets, file records, folders).
#pragma once

#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/CodeLocation.h"
#include "errors/ZuError.h"
#include "logging/LogWriterInterface.h"

class ZUUTILS_API CLineWriter {
 public:
  virtual ~CLineWriter();
  // False here: the base knows no options.
  virtual bool IsOptionEnabled(const std::string& name) const;
  // The sink itself; the base takes every line and keeps none.
  virtual CZuError WriteString(const std::string& text);
  // The printf-style expansion of the format; a line too long for the
  // formatter is written cut, after "[BUFFEROVERFLOW] ".
  virtual CZuError WriteLine(const char* format, ...) ZU_LOG_FORMAT(2, 3);
  // A hexadecimal dump, 16 bytes a line:
  //   "%10s %08X:" label and running offset, " %02X" per byte ("   " for
  //   each byte missing on the last line), two blanks, then the bytes as
  //   text with '.' for every byte outside 0x20-0x7E.
  virtual CZuError WriteBuffer(const char* label, unsigned long offset, const unsigned char* data,
                               unsigned long long size);
};

// Named boolean options; names match whatever the case of their letters.
class ZUUTILS_API CLineWriterWithOptions : public CLineWriter {
 public:
  // False for an option never set.
  bool IsOptionEnabled(const std::string& name) const override;
  virtual void SetOption(const std::string& name, bool enabled);

 private:
  struct TNoCaseLess {
    bool operator()(const std::string& a, const std::string& b) const;
  };
  std::map<std::string, bool, TNoCaseLess> m_options;
};

// Writes each line to a log writer at level 0 (nothing while the writer's
// debug level is negative), under the code location given, or else under
// "CLogWriterLineWriter::WriteString" line 37.
class ZUUTILS_API CLogWriterLineWriter : public CLineWriterWithOptions {
 public:
  explicit CLogWriterLineWriter(boost::shared_ptr<CLogWriterInterface> writer);
  CLogWriterLineWriter(boost::shared_ptr<CLogWriterInterface> writer, const FXCodeLocation& location);
  CZuError WriteString(const std::string& text) override;

 private:
  boost::shared_ptr<CLogWriterInterface> m_writer;
  FXCodeLocation m_location;
};
