#include "serialization/Bag.h"

#include <new>
#include <utility>

#include <boost/make_shared.hpp>

#include "errors/ErrorUtil.h"
#include "logging/ZuLogger.h"
#include "platform/CompleteTypes.h"
#include "serialization/TokenText.h"
#include "serialization/TypeName.h"

namespace {

constexpr DWORD kErrorArithmeticOverflow = 534;  // ERROR_ARITHMETIC_OVERFLOW

CZuError OutOfMemory(const char* function) {
  return FXErrorUtil::ErrorWin32(FXCodeLocation(__FILE__, function, __LINE__), ERROR_OUTOFMEMORY);
}

// Insert or replace; a key already there keeps its spelling.
template <class T>
CZuError Store(CBagPrivate::TPropertyMap& map, const std::string& key, T&& value) {
  try {
    map.insert_or_assign(key, boost::any(std::forward<T>(value)));
    return CZuError::Success();
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBag::Write");
  }
}

template <class T>
CZuError AddTo(CBagPrivate::TPropertyMap& map, const std::string& key, T delta) {
  const auto it = map.find(key);
  if (it == map.end()) return Store(map, key, delta);
  T* value = boost::any_cast<T>(&it->second);
  if (value == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("CBag::Add"), ERROR_INVALID_DATATYPE);
  // Wrapping arithmetic, also for the signed counter.
  typedef std::make_unsigned_t<T> U;
  *value = static_cast<T>(static_cast<U>(*value) + static_cast<U>(delta));
  return CZuError::Success();
}

// One property's value token, in the order of the type table.
CZuError SaveValue(CSerializedBuffer* buffer, const std::string& key, const boost::any& value) {
  constexpr DWORD id = CBagPrivate::kPropertyValue;
  if (const auto* v = boost::any_cast<std::string>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<std::wstring>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<int>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<unsigned int>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<unsigned long>(&value)) {
    if (*v > 0xFFFFFFFFu)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CBagPrivate::Save"), kErrorArithmeticOverflow,
                                     "Value does not fit the unsigned 32-bit token, PropertyName=%s, Value=%llu",
                                     key.c_str(), static_cast<unsigned long long>(*v));
    return CSerializedBase::AddToken(buffer, id, static_cast<unsigned int>(*v));
  }
  if (const auto* v = boost::any_cast<long long>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<unsigned long long>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<bool>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<FILETIME>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  if (const auto* v = boost::any_cast<GUID>(&value)) return CSerializedBase::AddToken(buffer, id, *v);
  return CSerializedBase::AddToken(buffer, CBagPrivate::kUnsupportedType, FXTypeName::Of(value.type()));
}

}  // namespace

// ---- CBagProvider ----

CBagProvider::~CBagProvider() = default;

CZuError CBagProvider::GetProperty(const std::string&, boost::any& value) {
  value = boost::any();
  return FXErrorUtil::ErrorWin32(ZU_HERE("CBagProvider::GetProperty"), ERROR_NOT_FOUND);
}

// ---- CBagPrivate ----

CZuError CBagPrivate::Save(CSerializedBuffer* buffer) const {
  if (buffer == nullptr) return FXErrorUtil::ErrorWin32(ZU_HERE("CBagPrivate::Save"), ERROR_INVALID_PARAMETER);
  // Two headers and a short value per property, in one allocation; long
  // strings grow the buffer as they come.
  std::size_t estimate = 0;
  for (const auto& property : m_properties) estimate += 64 + property.first.size();
  CZuError reserved = buffer->Reserve(estimate);
  if (reserved.IsError()) return reserved;
  for (const auto& property : m_properties) {
    CZuError result = AddToken(buffer, kPropertyName, property.first);
    if (!result) result = SaveValue(buffer, property.first, property.second);
    if (result.IsError()) return result;
  }
  return CZuError::Success();
}

template <class T>
CZuError CBagPrivate::LoadValue(DWORD id, const T& value) {
  if (id != kPropertyValue) return FXErrorUtil::ErrorWin32(ZU_HERE("CBagPrivate::LoadToken"), ERROR_UNKNOWN_PROPERTY);
  if (m_pendingName.empty())
    return FXErrorUtil::ErrorWin32(ZU_HERE("CBagPrivate::LoadToken"), ERROR_INVALID_DATATYPE,
                                   "Property name was expected");
  try {
    return StoreValue(boost::any(value));
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBagPrivate::LoadToken");
  }
}

CZuError CBagPrivate::StoreValue(boost::any&& value) {
  try {
    // Streams come in key order, so the end is the usual place.
    auto it = m_properties.lower_bound(m_pendingName);
    if (it != m_properties.end() && !m_properties.key_comp()(m_pendingName, it->first))
      it->second = std::move(value);
    else
      m_properties.emplace_hint(it, std::move(m_pendingName), std::move(value));
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBagPrivate::LoadToken");
  }
  m_pendingName.clear();
  return CZuError::Success();
}

CZuError CBagPrivate::LoadItem(DWORD version, DWORD type, DWORD id, const char* payload, std::size_t length) {
  if (id != kPropertyValue || m_pendingName.empty() || (type != 16 && type != 17))
    return CSerializedBase::LoadItem(version, type, id, payload, length);
  try {
    if (type == 16) return StoreValue(std::string(payload, FXTokenText::TextLength(payload, length)));
    return StoreValue(FXTokenText::ReadUtf16Le(reinterpret_cast<const unsigned char*>(payload), length));
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBagPrivate::LoadToken");
  }
}

CZuError CBagPrivate::LoadToken(DWORD id, const GUID& value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, const FILETIME& value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, bool value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, unsigned long long value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, long long value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, unsigned int value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, int value) { return LoadValue(id, value); }
CZuError CBagPrivate::LoadToken(DWORD id, const std::wstring& value) { return LoadValue(id, value); }

CZuError CBagPrivate::LoadToken(DWORD id, const std::string& value) {
  switch (id) {
    case kPropertyName:
      if (!m_pendingName.empty())
        CZuLogger::GetGlobalInstance().LogMessage(1, "CBagPrivate::LoadToken", __LINE__, nullptr,
                                                  "Data was not received for property, PropertyName=%s",
                                                  m_pendingName.c_str());
      try {
        m_pendingName = value;
      } catch (const std::bad_alloc&) {
        return OutOfMemory("CBagPrivate::LoadToken");
      }
      return CZuError::Success();
    case kUnsupportedType:
      return FXErrorUtil::ErrorWin32(ZU_HERE("CBagPrivate::LoadToken"), ERROR_UNSUPPORTED_TYPE,
                                     "PropertyName=%s, Type=%s", m_pendingName.c_str(), value.c_str());
    default:
      return LoadValue(id, value);
  }
}

// ---- CBag ----

CBag::CBag() : m_body(boost::make_shared<CBagPrivate>()) {}

CBag::~CBag() = default;

CZuError CBag::Write(const std::string& key, const std::string& value) {
  return Store(m_body->m_properties, key, value);
}
CZuError CBag::Write(const std::string& key, const std::wstring& value) {
  return Store(m_body->m_properties, key, value);
}
CZuError CBag::Write(const std::string& key, const char* value) {
  return Store(m_body->m_properties, key, std::string(value != nullptr ? value : ""));
}
CZuError CBag::Write(const std::string& key, const wchar_t* value) {
  return Store(m_body->m_properties, key, std::wstring(value != nullptr ? value : L""));
}
CZuError CBag::Write(const std::string& key, int value) { return Store(m_body->m_properties, key, value); }
CZuError CBag::Write(const std::string& key, unsigned int value) { return Store(m_body->m_properties, key, value); }
CZuError CBag::Write(const std::string& key, long value) { return Store(m_body->m_properties, key, value); }
CZuError CBag::Write(const std::string& key, unsigned long value) { return Store(m_body->m_properties, key, value); }
CZuError CBag::Write(const std::string& key, long long value) { return Store(m_body->m_properties, key, value); }
CZuError CBag::Write(const std::string& key, unsigned long long value) {
  return Store(m_body->m_properties, key, value);
}
CZuError CBag::Write(const std::string& key, bool value) { return Store(m_body->m_properties, key, value); }

CZuError CBag::WriteAny(const std::string& key, const boost::any& value) {
  try {
    m_body->m_properties.insert_or_assign(key, value);
    return CZuError::Success();
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBag::WriteAny");
  }
}

CZuError CBag::Add(const std::string& key, long long delta) { return AddTo(m_body->m_properties, key, delta); }
CZuError CBag::Add(const std::string& key, unsigned long long delta) {
  return AddTo(m_body->m_properties, key, delta);
}

CZuError CBag::ReadAny(const std::string& key, boost::any& value) const { return ReadAny(key, value, kReadClear); }

CZuError CBag::ReadAny(const std::string& key, boost::any& value, DWORD flags) const {
  if (flags & kReadClear) value = boost::any();
  const auto it = m_body->m_properties.find(key);
  if (it == m_body->m_properties.end()) {
    if (flags & kReadTolerant) return CZuError::Success();
    return FXErrorUtil::ErrorWin32(ZU_HERE("CBag::ReadAny"), ERROR_NOT_FOUND, "PropertyName=[%s]", key.c_str());
  }
  try {
    value = it->second;
  } catch (const std::bad_alloc&) {
    return OutOfMemory("CBag::ReadAny");
  }
  if (const auto* provider = boost::any_cast<boost::shared_ptr<CBagProvider>>(&it->second)) {
    // A null provider has nothing to give: the key reads as absent.
    if (!*provider)
      return FXErrorUtil::ErrorWin32(ZU_HERE("CBag::ReadAny"), ERROR_NOT_FOUND, "PropertyName=[%s]", key.c_str());
    const boost::shared_ptr<CBagProvider> keep = *provider;
    CZuError result = keep->GetProperty(key, value);
    if (result.IsError()) return result.Push(ZU_HERE("CBag::ReadAny"));
  }
  return CZuError::Success();
}

std::list<std::string> CBag::allKeys() const {
  std::list<std::string> keys;
  for (const auto& property : m_body->m_properties) keys.push_back(property.first);
  return keys;
}

CZuError CBag::GetSerializedData(std::string& out) const {
  CSerializedBuffer buffer;
  CZuError result = m_body->Save(&buffer);
  if (!result) result = buffer.GetBufferAsString(out);
  if (result.IsError()) result.Push(ZU_HERE("CBag::GetSerializedData"));
  return result;
}

CZuError CBag::LoadSerializedData(const std::string& data) {
  m_body->m_properties.clear();
  CZuError result = m_body->Load(data);
  if (result.IsError()) result.Push(ZU_HERE("CBag::LoadSerializedData"));
  return result;
}
