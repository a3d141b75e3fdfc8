#include "serialization/SerializedBuffer.h"

#include <charconv>
#include <cstring>
#include <new>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/CompleteTypes.h"
#include "serialization/TokenText.h"
#include "text/Ascii85.h"
#include "text/StringFormat.h"

namespace {

constexpr DWORD kTypeBytes = 1;
constexpr DWORD kTypeString = 16;
constexpr DWORD kTypeWstring = 17;
constexpr DWORD kTypeInt = 32;
constexpr DWORD kTypeUnsigned = 33;
constexpr DWORD kTypeInt64 = 34;
constexpr DWORD kTypeUint64 = 35;
constexpr DWORD kTypeBool = 36;
constexpr DWORD kTypeFiletime = 37;
constexpr DWORD kTypeGuid = 39;
constexpr DWORD kTypeLuid = 40;
constexpr DWORD kTypeSid = 41;

// "1.<id>.<type>.<length>." and its zero byte: at most 2 + 11 + 11 + 21 + 1.
constexpr std::size_t kMaxHeader = 48;

char* PutDecimal(char* p, unsigned long long value) {
  // Ids and types are mostly one or two digits.
  if (value < 10) {
    *p++ = static_cast<char>('0' + value);
    return p;
  }
  if (value < 100) {
    *p++ = static_cast<char>('0' + value / 10);
    *p++ = static_cast<char>('0' + value % 10);
    return p;
  }
  char digits[20];
  int n = 0;
  do {
    digits[n++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  while (n != 0) *p++ = digits[--n];
  return p;
}

std::size_t FormatHeader(char* out, DWORD id, DWORD type, std::size_t length) {
  char* p = out;
  *p++ = '1';
  *p++ = '.';
  p = PutDecimal(p, id);
  *p++ = '.';
  p = PutDecimal(p, type);
  *p++ = '.';
  p = PutDecimal(p, length);
  *p++ = '.';
  *p++ = '\0';
  return static_cast<std::size_t>(p - out);
}

CZuError Pushed(CZuError result) { return result.Push(ZU_HERE("CSerializedBase::AddToken")); }

template <class T>
CZuError AddNumber(CSerializedBuffer* buffer, DWORD id, DWORD type, T value,
                   CZuError (*add)(CSerializedBuffer*, DWORD, DWORD, const char*, std::size_t)) {
  char text[24];
  char* end = std::to_chars(text, text + sizeof text - 1, value).ptr;
  *end++ = '\0';
  return add(buffer, id, type, text, static_cast<std::size_t>(end - text));
}

}  // namespace

// ---- CSerializedBuffer ----

CSerializedBuffer::CSerializedBuffer(CSerializedBuffer& source)
    : m_data(source.m_data), m_capacity(source.m_capacity), m_used(source.m_used) {
  source.m_data = nullptr;
}

CSerializedBuffer& CSerializedBuffer::operator=(CSerializedBuffer& source) {
  if (&source != this) {
    delete[] m_data;
    m_data = source.m_data;
    m_capacity = source.m_capacity;
    m_used = source.m_used;
    source.m_data = nullptr;
  }
  return *this;
}

CSerializedBuffer::~CSerializedBuffer() { delete[] m_data; }

CZuError CSerializedBuffer::GetBufferAsString(std::string& text) const {
  CZuError result = CAscii85::Encode(m_data, m_data != nullptr ? m_used : 0, text);
  if (result.IsError()) result.Push(ZU_HERE("CSerializedBuffer::GetBufferAsString"));
  return result;
}

std::string CSerializedBuffer::GetBufferAsString() const {
  std::string text;
  const CZuError result = GetBufferAsString(text);
  if (result.IsError())
    CZuLogger::GetGlobalInstance().LogMessage(-1, "CSerializedBuffer::GetBufferAsString", __LINE__, nullptr,
                                              "Encode failed, error=%s", result.AsString().c_str());
  return text;
}

CZuError CSerializedBuffer::Reallocate(std::size_t needed) {
  // The slack grows with the buffer, so that a long stream of small tokens
  // is copied a logarithmic number of times, not once per few tokens.
  const std::size_t slack = m_used / 2 > m_stCbExtraAllocation ? m_used / 2 : m_stCbExtraAllocation;
  char* block = nullptr;
  std::size_t capacity = 0;
  if (needed <= SIZE_MAX - m_stCbExtraAllocation - m_used) {
    capacity = m_used + needed + (slack <= SIZE_MAX - m_used - needed ? slack : m_stCbExtraAllocation);
    block = new (std::nothrow) char[capacity];
  }
  if (block == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBuffer::Reallocate"), ERROR_OUTOFMEMORY);
  if (m_used != 0) std::memcpy(block, m_data, m_used);
  delete[] m_data;
  m_data = block;
  m_capacity = capacity;
  return CZuError::Success();
}

CZuError CSerializedBuffer::Reserve(std::size_t bytes) {
  if (m_data == nullptr) m_used = m_capacity = 0;  // the block went to another buffer
  if (bytes <= m_capacity - m_used) return CZuError::Success();
  CZuError result = Reallocate(bytes);
  if (result.IsError()) result.Push(ZU_HERE("CSerializedBuffer::Reserve"));
  return result;
}

CZuError CSerializedBuffer::BeginToken(DWORD id, DWORD type, std::size_t length, char*& payload) {
  if (m_data == nullptr) m_used = m_capacity = 0;  // the block went to another buffer
  std::size_t headerLength;
  if (length <= m_capacity - m_used && kMaxHeader <= m_capacity - m_used - length) {
    // Room for the longest header: formatted in place.
    headerLength = FormatHeader(m_data + m_used, id, type, length);
  } else {
    char header[kMaxHeader];
    headerLength = FormatHeader(header, id, type, length);
    if (length > SIZE_MAX - headerLength)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBuffer::Reallocate"), ERROR_OUTOFMEMORY)
          .Push(ZU_HERE("CSerializedBuffer::AddToken"));
    if (headerLength + length > m_capacity - m_used) {
      CZuError result = Reallocate(headerLength + length);
      if (result.IsError()) return result.Push(ZU_HERE("CSerializedBuffer::AddToken"));
    }
    std::memcpy(m_data + m_used, header, headerLength);
  }
  payload = m_data + m_used + headerLength;
  m_used += headerLength + length;
  return CZuError::Success();
}

CZuError CSerializedBuffer::AddToken(DWORD id, DWORD type, const char* payload, std::size_t length) {
  char* target = nullptr;
  CZuError result = BeginToken(id, type, length, target);
  if (!result && length != 0) std::memcpy(target, payload, length);
  return result;
}

// ---- writers ----

CZuError CSerializedBase::AddText(CSerializedBuffer* buffer, DWORD id, DWORD type, const char* text,
                                  std::size_t length) {
  if (buffer == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::AddToken"), ERROR_INVALID_PARAMETER);
  CZuError result = buffer->AddToken(id, type, text, length);
  return result.IsError() ? Pushed(result) : result;
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const char* data, std::size_t size) {
  if (data == nullptr && size != 0)
    return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::AddToken"), ERROR_INVALID_PARAMETER);
  return AddText(buffer, id, kTypeBytes, data, size);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const std::string& value) {
  // The terminator is the string's own.
  return AddText(buffer, id, kTypeString, value.c_str(), value.size() + 1);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const char* value) {
  if (value == nullptr) value = "";
  return AddText(buffer, id, kTypeString, value, std::strlen(value) + 1);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const std::list<std::string>& values) {
  for (const std::string& value : values) {
    CZuError result = AddToken(buffer, id, value);
    if (result.IsError()) return result;
  }
  return CZuError::Success();
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const std::wstring& value) {
  if (buffer == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::AddToken"), ERROR_INVALID_PARAMETER);
  const std::size_t units = FXTokenText::Utf16Length(value);
  if (units > SIZE_MAX / 2 - 1)
    return Pushed(FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBuffer::AddToken"), ERROR_OUTOFMEMORY));
  char* payload = nullptr;
  CZuError result = buffer->BeginToken(id, kTypeWstring, 2 * units + 2, payload);
  if (result.IsError()) return Pushed(result);
  FXTokenText::WriteUtf16Le(value, payload);
  payload[2 * units] = payload[2 * units + 1] = '\0';
  return result;
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const wchar_t* value) {
  return AddToken(buffer, id, std::wstring(value != nullptr ? value : L""));
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, int value) {
  return AddNumber(buffer, id, kTypeInt, value, AddText);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, unsigned int value) {
  return AddNumber(buffer, id, kTypeUnsigned, value, AddText);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, long long value) {
  return AddNumber(buffer, id, kTypeInt64, value, AddText);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, unsigned long long value) {
  return AddNumber(buffer, id, kTypeUint64, value, AddText);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, bool value) {
  return AddText(buffer, id, kTypeBool, value ? "1" : "0", 2);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const FILETIME& value) {
  const unsigned long long time =
      static_cast<unsigned long long>(value.dwHighDateTime) << 32 | static_cast<unsigned long long>(value.dwLowDateTime);
  return AddNumber(buffer, id, kTypeFiletime, time, AddText);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const GUID& value) {
  const std::string text = FXString::AsString(value);
  return AddText(buffer, id, kTypeGuid, text.c_str(), text.size() + 1);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, const LUID& value) {
  const std::string text = FXString::AsString(value);
  return AddText(buffer, id, kTypeLuid, text.c_str(), text.size() + 1);
}

CZuError CSerializedBase::AddToken(CSerializedBuffer* buffer, DWORD id, PSID sid) {
  std::string text;
  CZuError result = FXPlatform::SidToString(sid, text);
  if (result.IsError()) return Pushed(result);
  return AddText(buffer, id, kTypeSid, text.c_str(), text.size() + 1);
}

// ---- CSerializedContext ----

CSerializedContext::~CSerializedContext() = default;

CZuError CSerializedContext::Capture(const CSerializedBase& object) {
  CSerializedBuffer buffer;
  CZuError result = object.Save(&buffer);
  if (!result) result = buffer.GetBufferAsString(m_text);
  if (result.IsError()) result.Push(ZU_HERE("CSerializedContext::Capture"));
  return result;
}

CZuError CSerializedContext::Restore(CSerializedBase& object) const {
  CZuError result = object.Load(m_text);
  if (result.IsError()) result.Push(ZU_HERE("CSerializedContext::Restore"));
  return result;
}
