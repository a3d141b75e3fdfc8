// The serialized token stream: objects write themselves as tokens into a
// CSerializedBuffer, which carries them as Ascii85 text; CSerializedBase
// parses such text back and hands every token to a virtual LoadToken.
//
// A token is the header "1.<id>.<type>.<length>." in decimal, a zero byte,
// then exactly <length> payload bytes; tokens follow each other with no
// stream header. Numbers travel as decimal text and wide strings as
// UTF-16LE, so the bytes are the same on every platform.
//
//   type  written from                     payload
//    1    bytes (const char*, size)        the bytes
//   16    std::string (and C strings)      characters and a zero byte
//   17    std::wstring (and wide C strs)   UTF-16LE units and a zero unit
//   32    int                              "%d" and a zero byte
//   33    unsigned int, DWORD              "%u"
//   34    long long                        "%lld"
//   35    unsigned long long               "%llu"
//   36    bool                             "0" or "1"
//   37    FILETIME                         the 64-bit value, "%llu"
//   39    GUID                             "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"
//   40    LUID                             "<high, signed decimal>:0x<low, lower-case hex>"
//   41    PSID                             "S-1-..." (platform/Sid.h)
//
// Wide strings: on Windows the units are copied as they are, unpaired
// surrogates included; where wchar_t is 32 bits, characters above U+FFFF
// become surrogate pairs and a value above U+10FFFF becomes U+FFFD, and
// reading combines pairs and keeps an unpaired surrogate as its own value.
// Any UTF-16 payload thus reads and writes back unchanged on both builds.
//
// Reading numbers follows the C runtime's conversions (base 0: "0x" is
// hexadecimal, a leading "0" octal; a sign; text that is not a number reads
// as 0; values beyond the type saturate, and for unsigned types a minus sign
// negates modulo the width) at the width of the token's type, computed by
// the library so that both builds read the same value.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <type_traits>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/Sid.h"
#include "platform/ZuTypes.h"

class CSerializedBase;

// The raw token bytes of one save. Not copyable: the constructor and the
// assignment from a non-const buffer take the source's block over (its data
// pointer becomes null, its counts stay as they were). A buffer whose block
// was taken over starts afresh at the next token it is given.
class ZUUTILS_API CSerializedBuffer {
 public:
  // Slack added at every growth, so that small tokens do not each grow it:
  // at least this, or half the bytes already used when that is more (a
  // buffer that grows from empty by a 10-byte token holds 138 bytes).
  static constexpr std::size_t m_stCbExtraAllocation = 128;

  CSerializedBuffer() = default;
  CSerializedBuffer(CSerializedBuffer& source);
  CSerializedBuffer& operator=(CSerializedBuffer& source);
  ~CSerializedBuffer();

  // Null until the first token.
  const char* GetBuffer() const { return m_data; }
  std::size_t GetBufferSize() const { return m_used; }
  std::size_t GetCapacity() const { return m_capacity; }

  // Makes room for `bytes` more bytes at once, for a writer that knows
  // roughly how much it will write. Out of memory: Win32 14.
  CZuError Reserve(std::size_t bytes);

  // The Ascii85 text of the used bytes. When encoding fails, the line
  // "Encode failed, error=%s" is logged and the text is empty.
  std::string GetBufferAsString() const;
  // The same, with the failure returned instead (`text` then unchanged).
  CZuError GetBufferAsString(std::string& text) const;

 private:
  friend class CSerializedBase;

  // Appends one token. Out of memory: Win32 14, the buffer unchanged.
  CZuError AddToken(DWORD id, DWORD type, const char* payload, std::size_t length);
  // Grows to used + needed + slack, keeping the used bytes.
  CZuError Reallocate(std::size_t needed);
  // Reserves room for a token whose payload the caller writes in place.
  CZuError BeginToken(DWORD id, DWORD type, std::size_t length, char*& payload);

  char* m_data = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_used = 0;
};

// The base of every object that saves itself as a token stream.
//
// Parsing (Load) goes token by token and calls LoadItem, which decodes the
// payload by its type and calls the LoadToken overload of that type. The
// base overloads reject every token with Win32 1608 (ERROR_UNKNOWN_PROPERTY);
// a subclass overrides those it accepts. Tokens of an unknown type (160
// from LoadItem) or id (1608) are logged and skipped, so that older readers
// skip what newer writers add; any other failure is logged and ends the
// load, with "CSerializedBase::Load" pushed. Lines go to the process-wide
// logger at level -1; with its level at 30 or more every header is logged.
//
// Damaged streams (Win32 13, ERROR_INVALID_DATA, unless said otherwise):
// - a header without its zero byte ("Token header not terminated") or
//   without a length field (fewer than four fields; "Token header without
//   length") ends the load: nothing after it can be found;
// - a header with fewer than five fields, but a length, is logged
//   ("Unexpected split size") and read as far as it goes;
// - a version other than 1 is logged ("Unknown version found") and the
//   token skipped by its length;
// - a length beyond the data ends the load ("Token length exceeds the
//   data"); no length is ever used to allocate.
// Type 0 carries bytes like type 1 and is handed to the `const char*`
// overload; GUID, LUID and SID payloads that are not their text form fail
// the token with 13 (1337 for a SID).
class ZUUTILS_API CSerializedBase {
 public:
  CSerializedBase() = default;
  CSerializedBase(const CSerializedBase&) = default;
  CSerializedBase& operator=(const CSerializedBase&) = default;
  virtual ~CSerializedBase();

  virtual CZuError Save(CSerializedBuffer* buffer) const;
  // Ascii85 text, decoded and parsed.
  virtual CZuError Load(const std::string& text);
  // Raw token bytes.
  virtual CZuError Load(const char* data, std::size_t size);
  virtual CZuError LoadItem(DWORD version, DWORD type, DWORD id, const char* payload, std::size_t length);

  virtual CZuError LoadToken(DWORD id, void* sid);
  virtual CZuError LoadToken(DWORD id, const LUID& value);
  virtual CZuError LoadToken(DWORD id, const GUID& value);
  virtual CZuError LoadToken(DWORD id, const FILETIME& value);
  virtual CZuError LoadToken(DWORD id, bool value);
  virtual CZuError LoadToken(DWORD id, unsigned long long value);
  virtual CZuError LoadToken(DWORD id, long long value);
  virtual CZuError LoadToken(DWORD id, unsigned int value);
  virtual CZuError LoadToken(DWORD id, int value);
  virtual CZuError LoadToken(DWORD id, const std::wstring& value);
  virtual CZuError LoadToken(DWORD id, const std::string& value);
  virtual CZuError LoadToken(DWORD id, const char* data, std::size_t size);
  virtual CZuError LoadToken(DWORD id, const unsigned char* data, std::size_t size);

  // DWORD forwards to the unsigned int overload. Where DWORD is unsigned
  // int itself (POSIX) that overload already takes it, so this one exists
  // only where the types differ.
  template <class Dword, class = std::enable_if_t<std::is_same<Dword, DWORD>::value &&
                                                  !std::is_same<Dword, unsigned int>::value>>
  CZuError LoadToken(DWORD id, Dword value) {
    return LoadToken(id, static_cast<unsigned int>(value));
  }

  // The writers, one per token type; out of memory gives Win32 14 with
  // "CSerializedBase::AddToken" pushed.
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const char* data, std::size_t size);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const std::string& value);
  // A null pointer writes an empty string.
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const char* value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const std::list<std::string>& values);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const std::wstring& value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const wchar_t* value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, int value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, unsigned int value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, long long value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, unsigned long long value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, bool value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const FILETIME& value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const GUID& value);
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, const LUID& value);
  // A null or invalid SID fails as FXPlatform::SidToString does.
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, PSID sid);
  template <class Dword, class = std::enable_if_t<std::is_same<Dword, DWORD>::value &&
                                                  !std::is_same<Dword, unsigned int>::value>>
  static CZuError AddToken(CSerializedBuffer* buffer, DWORD id, Dword value) {
    return AddToken(buffer, id, static_cast<unsigned int>(value));
  }

 private:
  static CZuError AddText(CSerializedBuffer* buffer, DWORD id, DWORD type, const char* text, std::size_t length);
};

// The serialized text of an object, kept as a value: what one side saves
// (Capture) and another loads into an object of its own (Restore).
class ZUUTILS_API CSerializedContext {
 public:
  CSerializedContext() = default;
  explicit CSerializedContext(std::string text) : m_text(std::move(text)) {}
  CSerializedContext(const CSerializedContext&) = default;
  CSerializedContext& operator=(const CSerializedContext&) = default;
  virtual ~CSerializedContext();

  virtual std::string AsSerialized() const { return m_text; }

  // Saves the object; on failure the context keeps its earlier text.
  CZuError Capture(const CSerializedBase& object);
  // Loads the text into the object.
  CZuError Restore(CSerializedBase& object) const;

 private:
  std::string m_text;
};
