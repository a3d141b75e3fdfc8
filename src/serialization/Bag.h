// CBag: a property bag of named values of mixed type, read back with
// conversions, extended by computed properties (CBagProvider), and saved as
// the serialized token stream (serialization/SerializedBuffer.h).
//
// Keys are narrow strings compared as _stricmp does (ASCII letters folded,
// bytes otherwise): two keys that differ only in case are one key, kept in
// the spelling of its first insertion. Copies of a CBag share one body; the
// bag has no lock of its own.
//
// Serialized form, per property in key order: a string token of id 1 (the
// key), then the value as a token of id 2:
//   std::string 16, std::wstring 17, int 32, unsigned int 33,
//   unsigned long 33 (read back as unsigned int), long long 34,
//   unsigned long long 35, bool 36, FILETIME 37, GUID 39;
// any other type, `long` included, as a string token of id 3 holding the
// type's demangled C++ name ("long", "CZuError"), which no reader accepts.
// `unsigned long` is 64 bits on Linux: a value above 0xFFFFFFFF does not fit
// its token and fails the save with Win32 534 (ERROR_ARITHMETIC_OVERFLOW).
//
// Type names in messages and tokens are the same on every build: the
// demangled name of the C++ ABI, without "class " or "struct " prefixes
// ("std::__cxx11::basic_string<...>" for std::string on gcc builds).
#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <string>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"
#include "platform/ZuTypes.h"
#include "serialization/SerializedBuffer.h"

// A computed property: a bag value holding exactly
// boost::shared_ptr<CBagProvider> is read by asking the provider.
class ZUUTILS_API CBagProvider {
 public:
  CBagProvider() = default;
  CBagProvider(const CBagProvider&) = default;
  CBagProvider& operator=(const CBagProvider&) = default;
  virtual ~CBagProvider();
  // Base: clears `value` and fails with Win32 1168 (ERROR_NOT_FOUND).
  virtual CZuError GetProperty(const std::string& name, boost::any& value);
};

// The key order of bags: _stricmp's.
struct TBagKeyLess {
  bool operator()(const std::string& a, const std::string& b) const {
    const std::size_t n = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = 0; i < n; ++i) {
      const unsigned char x = Lower(a[i]);
      const unsigned char y = Lower(b[i]);
      if (x != y) return x < y;
    }
    return a.size() < b.size();
  }
  static unsigned char Lower(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  }
};

// The shared body of a bag, and its serialized form.
class ZUUTILS_API CBagPrivate : public CSerializedBase {
 public:
  typedef std::map<std::string, boost::any, TBagKeyLess> TPropertyMap;

  // Token ids.
  static constexpr DWORD kPropertyName = 1;
  static constexpr DWORD kPropertyValue = 2;
  static constexpr DWORD kUnsupportedType = 3;

  CZuError Save(CSerializedBuffer* buffer) const override;

  // Loading, in stream order: a name (id 1, narrow strings only) becomes the
  // pending name (a name still pending is logged as "Data was not received
  // for property, PropertyName=%s"); a value (id 2) is stored under it,
  // Win32 1804 "Property name was expected" without one; id 3 fails with
  // 1630 "PropertyName=%s, Type=%s"; other ids 1608, which the parser skips.
  // String values are moved into the map rather than copied.
  CZuError LoadItem(DWORD version, DWORD type, DWORD id, const char* payload, std::size_t length) override;
  using CSerializedBase::LoadToken;
  CZuError LoadToken(DWORD id, const GUID& value) override;
  CZuError LoadToken(DWORD id, const FILETIME& value) override;
  CZuError LoadToken(DWORD id, bool value) override;
  CZuError LoadToken(DWORD id, unsigned long long value) override;
  CZuError LoadToken(DWORD id, long long value) override;
  CZuError LoadToken(DWORD id, unsigned int value) override;
  CZuError LoadToken(DWORD id, int value) override;
  CZuError LoadToken(DWORD id, const std::wstring& value) override;
  CZuError LoadToken(DWORD id, const std::string& value) override;

  TPropertyMap m_properties;
  // The name read last, until its value comes; it outlives a load that ends
  // after it.
  std::string m_pendingName;

 private:
  template <class T>
  CZuError LoadValue(DWORD id, const T& value);
  // Stores under the pending name, which it clears.
  CZuError StoreValue(boost::any&& value);
};

class ZUUTILS_API CBag {
 public:
  // Flags of ReadAny and Read.
  enum : DWORD {
    // ReadAny: an absent key is no error (success, value untouched).
    // Read: an empty stored value is no error (success, out untouched).
    kReadTolerant = 1,
    // Clear the output first (Read: zero, false or empty).
    kReadClear = 2,
  };

  // The body is made with its reference count in one allocation; out of
  // memory this throws std::bad_alloc, the only exception a bag lets out.
  CBag();
  CBag(const CBag& other) = default;
  CBag& operator=(const CBag& other) = default;
  virtual ~CBag();

  // Insert or replace the key's value. A null C string stores an empty
  // string. Out of memory: Win32 14, the bag unchanged.
  CZuError Write(const std::string& key, const std::string& value);
  CZuError Write(const std::string& key, const std::wstring& value);
  CZuError Write(const std::string& key, const char* value);
  CZuError Write(const std::string& key, const wchar_t* value);
  CZuError Write(const std::string& key, int value);
  CZuError Write(const std::string& key, unsigned int value);
  CZuError Write(const std::string& key, long value);
  CZuError Write(const std::string& key, unsigned long value);
  CZuError Write(const std::string& key, long long value);
  CZuError Write(const std::string& key, unsigned long long value);
  CZuError Write(const std::string& key, bool value);
  // Any copyable value; an empty box is stored as an empty value.
  CZuError WriteAny(const std::string& key, const boost::any& value);

  // Counters: an absent key starts at `delta`; a value of exactly the same
  // type grows by it (wrapping); any other type fails with Win32 1804 and
  // stays as it was.
  CZuError Add(const std::string& key, long long delta);
  CZuError Add(const std::string& key, unsigned long long delta);

  // The stored value, or what its provider computes. An absent key fails
  // with Win32 1168 "PropertyName=[%s]", and so does a null provider; a
  // provider's failure comes back with "CBag::ReadAny" pushed. The
  // two-argument form clears `value` first.
  CZuError ReadAny(const std::string& key, boost::any& value) const;
  CZuError ReadAny(const std::string& key, boost::any& value, DWORD flags) const;

  // Typed reads with conversion. Numbers convert as C casts do (no range
  // check), bool gives 0 or 1 and reads as value != 0; strings read as
  // numbers the C runtime's way (strtol for 32-bit targets, _strtoi64 for
  // 64-bit ones, at that width on every platform; wide strings through
  // their ASCII characters), "true" and "false" in any case as bool;
  // numbers print as "%u" (bool), "%d", "%u", "%ld", "%lu", "%lld",
  // "%llu". A stored type outside bool, int, unsigned int, long,
  // unsigned long, long long, unsigned long long, std::string and
  // std::wstring fails with Win32 1804 "Bag value of type '%s' different
  // with expected type '<target>'". An absent key fails as ReadAny does,
  // kReadTolerant or not. The stored type is tested and extracted in one
  // step, so a value of a listed type always converts.
  CZuError Read(const std::string& key, int& out) const;
  CZuError Read(const std::string& key, unsigned int& out) const;
  CZuError Read(const std::string& key, long& out) const;
  CZuError Read(const std::string& key, unsigned long& out) const;
  CZuError Read(const std::string& key, long long& out) const;
  CZuError Read(const std::string& key, unsigned long long& out) const;
  CZuError Read(const std::string& key, bool& out) const;
  CZuError Read(const std::string& key, std::string& out) const;
  CZuError Read(const std::string& key, std::wstring& out) const;
  CZuError Read(const std::string& key, int& out, DWORD flags) const;
  CZuError Read(const std::string& key, unsigned int& out, DWORD flags) const;
  CZuError Read(const std::string& key, long& out, DWORD flags) const;
  CZuError Read(const std::string& key, unsigned long& out, DWORD flags) const;
  CZuError Read(const std::string& key, long long& out, DWORD flags) const;
  CZuError Read(const std::string& key, unsigned long long& out, DWORD flags) const;
  CZuError Read(const std::string& key, bool& out, DWORD flags) const;
  CZuError Read(const std::string& key, std::string& out, DWORD flags) const;
  CZuError Read(const std::string& key, std::wstring& out, DWORD flags) const;

  // In key order, each in its stored spelling.
  std::list<std::string> allKeys() const;

  // The bag as serialized (Ascii85) text.
  CZuError GetSerializedData(std::string& out) const;
  // Empties the bag, then loads the text; after a failure the bag holds
  // what was loaded before the failing token.
  CZuError LoadSerializedData(const std::string& data);

 private:
  boost::shared_ptr<CBagPrivate> m_body;
};
