#include "logging/LineWriter.h"

#include <algorithm>
#include <cstdarg>

#include "errors/ErrorUtil.h"
#include "text/StringFormat.h"

namespace {

char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

CLineWriter::~CLineWriter() = default;

bool CLineWriter::IsOptionEnabled(const std::string&) const { return false; }

CZuError CLineWriter::WriteString(const std::string&) { return CZuError::Success(); }

CZuError CLineWriter::WriteLine(const char* format, ...) {
  std::string line;
  va_list args;
  va_start(args, format);
  CZuError result = FXString::FormatArgList(line, format, args);
  va_end(args);
  if (result.IsError()) {
    if (!FXErrorUtil::IsWin32(result, ERROR_BUFFER_OVERFLOW)) return result.Push(ZU_HERE("CLineWriter::WriteLine"));
    line.insert(0, "[BUFFEROVERFLOW] ");
  }
  return WriteString(line);
}

CZuError CLineWriter::WriteBuffer(const char* label, unsigned long offset, const unsigned char* data,
                                  unsigned long long size) {
  const FXCodeLocation here = ZU_HERE("CLineWriter::WriteBuffer");
  if (data == nullptr && size > 0) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "no data");
  for (unsigned long long at = 0; at < size; at += 16) {
    const std::size_t count = static_cast<std::size_t>(std::min(16ULL, size - at));
    std::string hex = FXString::Format("%10s %08X:", label != nullptr ? label : "",
                                       static_cast<unsigned>(offset + at));
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      const unsigned char byte = data[at + i];
      hex += FXString::Format("%c%02X", ' ', byte);
      text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    }
    for (std::size_t i = count; i < 16; ++i) hex += "   ";
    CZuError result = WriteString(FXString::Format("%s  %s", hex.c_str(), text.c_str()));
    if (result.IsError()) return result.Push(here);
  }
  return CZuError::Success();
}

bool CLineWriterWithOptions::TNoCaseLess::operator()(const std::string& a, const std::string& b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return FoldAscii(x) < FoldAscii(y); });
}

bool CLineWriterWithOptions::IsOptionEnabled(const std::string& name) const {
  const auto it = m_options.find(name);
  return it != m_options.end() && it->second;
}

void CLineWriterWithOptions::SetOption(const std::string& name, bool enabled) { m_options[name] = enabled; }

CLogWriterLineWriter::CLogWriterLineWriter(boost::shared_ptr<CLogWriterInterface> writer)
    : m_writer(std::move(writer)) {}

CLogWriterLineWriter::CLogWriterLineWriter(boost::shared_ptr<CLogWriterInterface> writer,
                                           const FXCodeLocation& location)
    : m_writer(std::move(writer)), m_location(location) {}

CZuError CLogWriterLineWriter::WriteString(const std::string& text) {
  if (m_writer && m_writer->GetDebugLevel() >= 0) {
    const bool located = m_location.IsValid();
    m_writer->LogMessage(0, located ? m_location.GetFunction() : "CLogWriterLineWriter::WriteString",
                         located ? static_cast<unsigned long>(m_location.GetLine()) : 37UL, 0, nullptr, "%s",
                         text.c_str());
  }
  return CLineWriterWithOptions::WriteString(text);
}
