// Parsing of the token stream: CSerializedBase's Load, LoadItem and the
// base LoadToken overloads.
#include <cstring>
#include <new>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/CompleteTypes.h"
#include "serialization/SerializedBuffer.h"
#include "serialization/TokenText.h"
#include "text/Ascii85.h"

namespace {

const char kLoad[] = "CSerializedBase::Load";

// The fields of one header, "1.<id>.<type>.<length>.", up to the first five.
struct THeaderFields {
  const char* begin[5];
  const char* end[5];
  std::size_t count = 0;  // as a split would count them, all of them
};

void SplitHeader(const char* header, const char* headerEnd, THeaderFields& fields) {
  const char* start = header;
  for (const char* p = header;; ++p) {
    if (p == headerEnd || *p == '.') {
      if (fields.count < 5) {
        fields.begin[fields.count] = start;
        fields.end[fields.count] = p;
      }
      ++fields.count;
      if (p == headerEnd) break;
      start = p + 1;
    }
  }
}

CZuError Rejected() { return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::LoadToken"), ERROR_UNKNOWN_PROPERTY); }

CZuError BadPayload(const char* what, DWORD type) {
  return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::LoadItem"), ERROR_INVALID_DATA,
                                 "Payload is not a %s, Type=[%u]", what, static_cast<unsigned>(type));
}

}  // namespace

CSerializedBase::~CSerializedBase() = default;

CZuError CSerializedBase::Save(CSerializedBuffer*) const { return CZuError::Success(); }

CZuError CSerializedBase::Load(const std::string& text) {
  auto_ptr_array<char> data;
  std::size_t size = 0;
  CZuError result = CAscii85::Decode(text, data, size);
  if (result.IsError()) return result.Push(ZU_HERE(kLoad));
  return Load(data.get(), size);
}

CZuError CSerializedBase::Load(const char* data, std::size_t size) {
  if (data == nullptr && size != 0) return FXErrorUtil::ErrorWin32(ZU_HERE(kLoad), ERROR_INVALID_PARAMETER);
  CZuLogger& logger = CZuLogger::GetGlobalInstance();
  const bool trace = logger.IsInitialized() && logger.GetDebugLevel() >= 30;
  const char* const end = data + size;
  const char* p = data;
  while (p != end) {
    const char* header = p;
    const char* zero = static_cast<const char*>(std::memchr(p, '\0', static_cast<std::size_t>(end - p)));
    if (zero == nullptr)
      return FXErrorUtil::ErrorWin32(ZU_HERE(kLoad), ERROR_INVALID_DATA,
                                     "Token header not terminated, Offset=[%llu], Remaining=[%llu]",
                                     static_cast<unsigned long long>(p - data),
                                     static_cast<unsigned long long>(end - p));
    if (trace) logger.LogMessage(30, kLoad, __LINE__, nullptr, "Token=[%s]", header);

    THeaderFields fields;
    SplitHeader(header, zero, fields);
    if (fields.count < 5)
      logger.LogMessage(-1, kLoad, __LINE__, nullptr, "Unexpected split size, size=[%llu], Token=[%s]",
                        static_cast<unsigned long long>(fields.count), header);
    if (fields.count < 4)
      return FXErrorUtil::ErrorWin32(ZU_HERE(kLoad), ERROR_INVALID_DATA, "Token header without length, Token=[%s]",
                                     header);

    using FXTokenText::ParseNumber;
    const DWORD version = ParseNumber<DWORD>(fields.begin[0], fields.end[0]);
    const DWORD id = ParseNumber<DWORD>(fields.begin[1], fields.end[1]);
    const DWORD type = ParseNumber<DWORD>(fields.begin[2], fields.end[2]);
    const unsigned long long length = ParseNumber<unsigned long long>(fields.begin[3], fields.end[3]);
    const char* payload = zero + 1;
    if (length > static_cast<unsigned long long>(end - payload))
      return FXErrorUtil::ErrorWin32(ZU_HERE(kLoad), ERROR_INVALID_DATA,
                                     "Token length exceeds the data, Token=[%s], Length=[%llu], Remaining=[%llu]",
                                     header, length, static_cast<unsigned long long>(end - payload));
    p = payload + length;

    if (version != 1) {
      logger.LogMessage(-1, kLoad, __LINE__, nullptr,
                        "Unknown version found in token identifier, version=[%u], Token=[%s]",
                        static_cast<unsigned>(version), header);
      continue;
    }
    CZuError result = LoadItem(version, type, id, payload, static_cast<std::size_t>(length));
    if (!result) continue;
    if (FXErrorUtil::IsWin32(result, ERROR_BAD_ARGUMENTS)) {
      logger.LogMessage(-1, kLoad, __LINE__, nullptr, "Unknown TokenType encountered, Type=[%u], Id=[%u], Length=[%llu]",
                        static_cast<unsigned>(type), static_cast<unsigned>(id), length);
    } else if (FXErrorUtil::IsWin32(result, ERROR_UNKNOWN_PROPERTY)) {
      logger.LogMessage(-1, kLoad, __LINE__, nullptr, "Unknown TokenId encountered, Type=[%u], Id=[%u], Length=[%llu]",
                        static_cast<unsigned>(type), static_cast<unsigned>(id), length);
    } else {
      logger.LogMessage(-1, kLoad, __LINE__, nullptr,
                        "Error while loading token, Type=[%u], Id=[%u], Length=[%llu], error=%s",
                        static_cast<unsigned>(type), static_cast<unsigned>(id), length, result.AsString().c_str());
      return result.Push(ZU_HERE(kLoad));
    }
  }
  return CZuError::Success();
}

CZuError CSerializedBase::LoadItem(DWORD, DWORD type, DWORD id, const char* payload, std::size_t length) {
  using FXTokenText::ParseNumber;
  const char* const end = payload + length;
  // The text payloads without their terminator.
  const std::size_t textLength = FXTokenText::TextLength(payload, length);
  try {
    switch (type) {
      case 0:
        return LoadToken(id, payload, length);
      case 1:
        return LoadToken(id, reinterpret_cast<const unsigned char*>(payload), length);
      case 16:
        return LoadToken(id, std::string(payload, textLength));
      case 17:
        return LoadToken(id, FXTokenText::ReadUtf16Le(reinterpret_cast<const unsigned char*>(payload), length));
      case 32:
        return LoadToken(id, ParseNumber<int>(payload, end));
      case 33:
        return LoadToken(id, ParseNumber<unsigned int>(payload, end));
      case 34:
        return LoadToken(id, ParseNumber<long long>(payload, end));
      case 35:
        return LoadToken(id, ParseNumber<unsigned long long>(payload, end));
      case 36:
        return LoadToken(id, ParseNumber<int>(payload, end) != 0);
      case 37: {
        const unsigned long long time = ParseNumber<unsigned long long>(payload, end);
        FILETIME value;
        value.dwLowDateTime = static_cast<DWORD>(time & 0xFFFFFFFFu);
        value.dwHighDateTime = static_cast<DWORD>(time >> 32);
        return LoadToken(id, value);
      }
      case 39: {
        GUID value;
        if (!FXTokenText::ParseGuid(payload, textLength, value)) return BadPayload("GUID", type);
        return LoadToken(id, value);
      }
      case 40: {
        LUID value;
        if (!FXTokenText::ParseLuid(payload, textLength, value)) return BadPayload("LUID", type);
        return LoadToken(id, value);
      }
      case 41: {
        FXPlatform::CSidRecord sid;
        CZuError result = FXPlatform::StringToSid(payload, textLength, sid);
        if (result.IsError()) return result.Push(ZU_HERE("CSerializedBase::LoadItem"));
        return LoadToken(id, sid.Get());
      }
      default:
        return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::LoadItem"), ERROR_BAD_ARGUMENTS);
    }
  } catch (const std::bad_alloc&) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CSerializedBase::LoadItem"), ERROR_OUTOFMEMORY);
  }
}

CZuError CSerializedBase::LoadToken(DWORD, void*) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const LUID&) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const GUID&) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const FILETIME&) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, bool) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, unsigned long long) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, long long) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, unsigned int) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, int) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const std::wstring&) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const std::string&) { return Rejected(); }
CZuError CSerializedBase::LoadToken(DWORD, const char*, std::size_t) {
  return Rejected();
}
CZuError CSerializedBase::LoadToken(DWORD, const unsigned char*, std::size_t) {
  return Rejected();
}
