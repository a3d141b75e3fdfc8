#include "text/TextFileReader.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#endif

#include "platform/CodePage.h"
#include "platform/PlainFile.h"
#include "platform/SystemMessage.h"
#include "text/TextFileSupport.h"

namespace FXTextFile {
// Defined with CTextFile: the thread's last-error text.
void SetLastErrorText(const std::string& text);
}  // namespace FXTextFile

namespace {

using FXTextFile::CLineBuffer;

// The first unit equal to `unit` in [begin, end), or end; eight units at a
// time with SSE2, which every x86-64 processor has.
const char16_t* FindUnit(const char16_t* begin, const char16_t* end, char16_t unit) {
#if defined(__x86_64__) || defined(_M_X64)
  const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
  for (; end - begin >= 8; begin += 8) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
    const int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(block, wanted));
    if (mask != 0) return begin + __builtin_ctz(static_cast<unsigned>(mask)) / 2;
  }
#endif
  return std::find(begin, end, unit);
}

// A sink that is a std::basic_string: the scratch lines of the conversions.
template <class Unit>
struct TStringSink {
  std::basic_string<Unit>& text;
  bool Append(const Unit* units, std::size_t count) {
    text.append(units, count);
    return true;
  }
};

// Collects a line straight into the caller's buffer while it has room;
// a longer line gathers in the scratch string (which grows geometrically)
// and goes to the caller's buffer in one step, so that the buffer is grown
// once, to the line's size rounded up to 1024, instead of block by block.
class CSpillingSink {
 public:
  CSpillingSink(CLineBuffer<char>& out, std::string& spill) : m_out(out), m_spill(spill) {}
  bool Append(const char* text, std::size_t count) {
    if (!m_spilled && m_out.HasRoom(count)) return m_out.Append(text, count);
    if (!m_spilled) {
      m_spill.assign(m_out.Size() == 0 ? "" : m_out.Data(), m_out.Size());
      m_spilled = true;
    }
    m_spill.append(text, count);
    return true;
  }
  // False when the line could not be stored.
  bool Done() {
    if (!m_spilled) return true;
    m_out.Clear();
    return m_out.Append(m_spill.data(), m_spill.size());
  }

 private:
  CLineBuffer<char>& m_out;
  std::string& m_spill;
  bool m_spilled = false;
};

bool PutUtf16AsWide(const std::u16string& units, CLineBuffer<wchar_t>& out) {
  if (!out.Reserve(units.size())) return false;
  out.Added(FXTextFile::UnitsToWide(units.data(), units.size(), out.End()));
  return true;
}

// The line's units in host order as wide characters.
template <bool kSwapped>
bool PutUnitsAsWide(std::u16string& units, CLineBuffer<wchar_t>& out) {
  if (kSwapped)
    for (char16_t& unit : units) unit = FXTextFile::Swapped(unit);
  return PutUtf16AsWide(units, out);
}

}  // namespace

CTextFileReader::CTextFileReader(const std::string& path, FXPlatform::CPlainFile* file, std::size_t bufferSize,
                                 const TTextFileSettings* settings)
    : m_path(path), m_file(file), m_bufferSize(bufferSize), m_endOfFile(bufferSize == 0), m_settings(settings) {
  if (bufferSize != 0) m_buffer.reset(new char[bufferSize]);
}

CTextFileReader::~CTextFileReader() = default;

int CTextFileReader::ReadChar() { return -1; }

int CTextFileReader::ReadLine(int* length, wchar_t** line) {
  *length = 0;
  return CLineBuffer<wchar_t>(line).Finish(length, -1);
}

int CTextFileReader::ReadLine(int* length, char** line) {
  *length = 0;
  return CLineBuffer<char>(line).Finish(length, -1);
}

// Loads the next block behind what is left of the last (less than a unit):
// 1 with data, 0 at the end, -2 on a read error.
int CTextFileReader::Fill() {
  if (m_endOfFile) return 0;
  const std::size_t carry = m_valid - m_position;
  if (carry != 0) std::memmove(m_buffer.get(), m_buffer.get() + m_position, carry);
  m_position = 0;
  m_valid = carry;
  std::size_t read = 0;
  const FXPlatform::TSystemError error = m_file->Read(m_buffer.get() + carry, m_bufferSize - carry, read);
  if (error.win32 != 0) {
    std::string text;
    FXPlatform::SystemMessage(error.win32, text);
    if (text.size() >= 2) text.resize(text.size() - 2);  // the message's line end
    FXTextFile::SetLastErrorText(text);
    return -2;
  }
  if (read == 0) {
    m_endOfFile = true;
    return 0;
  }
  m_valid += read;
  ++m_loads;
  return 1;
}

template <class Unit, bool kSwapped, class Sink>
int CTextFileReader::Collect(Sink& sink) {
  const Unit lineFeed = kSwapped ? Unit(0x0A00) : Unit(0x0A);
  const Unit carriageReturn = kSwapped ? Unit(0x0D00) : Unit(0x0D);
  for (;;) {
    while (m_valid - m_position < sizeof(Unit)) {
      const int rc = Fill();
      if (rc != 1) return rc == 0 ? -1 : -2;
    }
    const Unit* const base = reinterpret_cast<const Unit*>(m_buffer.get());
    const Unit* const begin = base + m_position / sizeof(Unit);
    const Unit* const end = base + m_valid / sizeof(Unit);
    const Unit* found;
    if (sizeof(Unit) == 1) {
      found = static_cast<const Unit*>(std::memchr(begin, lineFeed, static_cast<std::size_t>(end - begin)));
      if (found == nullptr) found = end;
    } else {
      found = reinterpret_cast<const Unit*>(FindUnit(reinterpret_cast<const char16_t*>(begin),
                                                     reinterpret_cast<const char16_t*>(end),
                                                     static_cast<char16_t>(lineFeed)));
    }
    if (found != end) {
      const Unit* stop = found;
      if (stop > begin && stop[-1] == carriageReturn) --stop;
      if (!sink.Append(begin, static_cast<std::size_t>(stop - begin))) return -2;
      m_position = static_cast<std::size_t>(found + 1 - base) * sizeof(Unit);
      return 0;
    }
    if (!sink.Append(begin, static_cast<std::size_t>(end - begin))) return -2;
    m_position = static_cast<std::size_t>(end - base) * sizeof(Unit);
  }
}

template <class Unit, bool kSwapped>
int CTextFileReader::NextUnit() {
  for (;;) {
    while (m_valid - m_position < sizeof(Unit)) {
      const int rc = Fill();
      if (rc != 1) return rc == 0 ? -1 : -2;
    }
    Unit unit;
    std::memcpy(&unit, m_buffer.get() + m_position, sizeof(Unit));
    m_position += sizeof(Unit);
    if (kSwapped) unit = static_cast<Unit>(FXTextFile::Swapped(static_cast<char16_t>(unit)));
    if (unit != Unit(13)) return static_cast<int>(static_cast<std::make_unsigned_t<Unit>>(unit));
  }
}

// ANSI: narrow lines as they are; wide ones through the code page, or
// byte by byte with pass-through.
int ANSI_CTextFileReader::ReadChar() { return NextUnit<char, false>(); }

int ANSI_CTextFileReader::ReadLine(int* length, char** line) {
  *length = 0;
  CLineBuffer<char> out(line);
  CSpillingSink sink(out, m_bytes);
  const int rc = Collect<char, false>(sink);
  if (!sink.Done()) return -2;
  return out.Finish(length, rc);
}

int ANSI_CTextFileReader::ReadLine(int* length, wchar_t** line) {
  *length = 0;
  m_bytes.clear();
  TStringSink<char> raw{m_bytes};
  int rc = Collect<char, false>(raw);
  CLineBuffer<wchar_t> out(line);
  if (m_settings->ansiPassThru) {
    if (!out.Reserve(m_bytes.size())) return -2;
    wchar_t* p = out.End();
    for (const char c : m_bytes) *p++ = static_cast<wchar_t>(static_cast<unsigned char>(c));
    out.Added(m_bytes.size());
  } else {
    m_units.clear();
    if (!FXPlatform::CodePageToUtf16(m_settings->codePage, m_bytes.data(), m_bytes.size(), m_units) ||
        !PutUtf16AsWide(m_units, out))
      rc = -2;
  }
  return out.Finish(length, rc);
}

int UTF16LE_CTextFileReader::ReadChar() { return NextUnit<char16_t, false>(); }
int UTF16BE_CTextFileReader::ReadChar() { return NextUnit<char16_t, true>(); }

// UTF-16: wide lines are the units; narrow ones go through the code page.
template <bool kSwapped>
int CTextFileReader::ReadUtf16Line(int* length, wchar_t** line) {
  *length = 0;
  m_units.clear();
  TStringSink<char16_t> raw{m_units};
  const int rc = Collect<char16_t, kSwapped>(raw);
  CLineBuffer<wchar_t> out(line);
  if (!PutUnitsAsWide<kSwapped>(m_units, out)) return -2;
  return out.Finish(length, rc);
}

template <bool kSwapped>
int CTextFileReader::ReadUtf16Line(int* length, char** line) {
  *length = 0;
  m_units.clear();
  TStringSink<char16_t> raw{m_units};
  int rc = Collect<char16_t, kSwapped>(raw);
  if (kSwapped)
    for (char16_t& unit : m_units) unit = FXTextFile::Swapped(unit);
  m_narrow.clear();
  if (!FXPlatform::Utf16ToCodePage(m_settings->codePage, m_units.data(), m_units.size(), m_settings->unknownChar,
                                   m_narrow))
    rc = -2;
  CLineBuffer<char> out(line);
  if (!out.Append(m_narrow.data(), m_narrow.size())) return -2;
  return out.Finish(length, rc);
}

int UTF16LE_CTextFileReader::ReadLine(int* length, wchar_t** line) { return ReadUtf16Line<false>(length, line); }
int UTF16LE_CTextFileReader::ReadLine(int* length, char** line) { return ReadUtf16Line<false>(length, line); }
int UTF16BE_CTextFileReader::ReadLine(int* length, wchar_t** line) { return ReadUtf16Line<true>(length, line); }
int UTF16BE_CTextFileReader::ReadLine(int* length, char** line) { return ReadUtf16Line<true>(length, line); }

// UTF-8: wide lines decoded; narrow ones as they are when the code page is
// UTF-8 and the line well-formed (or with pass-through), else through UTF-16
// into the code page.
int UTF8_CTextFileReader::ReadChar() { return NextUnit<char, false>(); }

int UTF8_CTextFileReader::ReadLine(int* length, wchar_t** line) {
  *length = 0;
  m_bytes.clear();
  TStringSink<char> raw{m_bytes};
  int rc = Collect<char, false>(raw);
  m_units.clear();
  FXPlatform::CodePageToUtf16(FXPlatform::kCodePageUtf8, m_bytes.data(), m_bytes.size(), m_units);
  CLineBuffer<wchar_t> out(line);
  if (!PutUtf16AsWide(m_units, out)) return -2;
  return out.Finish(length, rc);
}

// A line that began right after a line feed of the current block and ended
// at another lies between the block's first and last line feeds: when that
// span is well-formed, so is the line (it is cut at ASCII bytes).
bool UTF8_CTextFileReader::IsWellFormedLine(const char* line, std::size_t size, std::size_t loads, std::size_t start) {
  if (loads != m_loads || start == 0 || start > m_valid || m_buffer[start - 1] != '\n')
    return FXTextFile::IsWellFormedUtf8(line, size);
  if (m_checkedLoad != m_loads) {
    const char* const base = m_buffer.get();
    const char* const first = static_cast<const char*>(std::memchr(base, '\n', m_valid));
    if (first == nullptr) return FXTextFile::IsWellFormedUtf8(line, size);
    const char* last = base + m_valid;
    while (last > first && last[-1] != '\n') --last;
    m_loadWellFormed = FXTextFile::IsWellFormedUtf8(first + 1, static_cast<std::size_t>(last - first - 1));
    m_checkedLoad = m_loads;
  }
  return m_loadWellFormed || FXTextFile::IsWellFormedUtf8(line, size);
}

int UTF8_CTextFileReader::ReadLine(int* length, char** line) {
  *length = 0;
  const std::size_t loads = m_loads, start = m_position;
  CLineBuffer<char> out(line);
  CSpillingSink sink(out, m_bytes);
  int rc = Collect<char, false>(sink);
  if (!sink.Done()) return -2;
  if (m_settings->ansiPassThru || rc == -2) return out.Finish(length, rc);
  const bool utf8 = m_settings->codePage == FXPlatform::kCodePageUtf8;
  if (utf8 && (rc == 0 ? IsWellFormedLine(*line, out.Size(), loads, start)
                       : FXTextFile::IsWellFormedUtf8(*line, out.Size())))
    return out.Finish(length, rc);
  m_units.clear();
  FXPlatform::CodePageToUtf16(FXPlatform::kCodePageUtf8, *line, out.Size(), m_units);
  m_narrow.clear();
  if (!FXPlatform::Utf16ToCodePage(m_settings->codePage, m_units.data(), m_units.size(), m_settings->unknownChar,
                                   m_narrow))
    rc = -2;
  CLineBuffer<char> converted(line);
  if (!converted.Append(m_narrow.data(), m_narrow.size())) return -2;
  return converted.Finish(length, rc);
}
