// CBag's typed reads: the conversion table between the stored type and the
// requested one.
#include <cstdio>
#include <cstdint>
#include <type_traits>

#include "errors/ErrorUtil.h"
#include "serialization/Bag.h"
#include "serialization/TokenText.h"
#include "serialization/TypeName.h"
#include "text/StringConvert.h"

namespace {

template <class T>
struct TTarget;
template <>
struct TTarget<int> {
  static constexpr const char* kName = "int";
};
template <>
struct TTarget<unsigned int> {
  static constexpr const char* kName = "unsigned int";
};
template <>
struct TTarget<long> {
  static constexpr const char* kName = "long";
};
template <>
struct TTarget<unsigned long> {
  static constexpr const char* kName = "unsigned long";
};
template <>
struct TTarget<long long> {
  static constexpr const char* kName = "int64_t";
};
template <>
struct TTarget<unsigned long long> {
  static constexpr const char* kName = "uint64_t";
};
template <>
struct TTarget<bool> {
  static constexpr const char* kName = "bool";
};
template <>
struct TTarget<std::string> {
  static constexpr const char* kName = "string";
};
template <>
struct TTarget<std::wstring> {
  static constexpr const char* kName = "wstring";
};

// The printf format of each numeric source.
const char* FormatOf(bool) { return "%u"; }
const char* FormatOf(int) { return "%d"; }
const char* FormatOf(unsigned int) { return "%u"; }
const char* FormatOf(long) { return "%ld"; }
const char* FormatOf(unsigned long) { return "%lu"; }
const char* FormatOf(long long) { return "%lld"; }
const char* FormatOf(unsigned long long) { return "%llu"; }

template <class S>
std::string Printed(S value) {
  char text[64];
  // bool goes through "%u" as the unsigned int it promotes to.
  typedef std::conditional_t<std::is_same<S, bool>::value, unsigned int, S> Printable;
  const int n = std::snprintf(text, sizeof text, FormatOf(value), static_cast<Printable>(value));
  return std::string(text, n > 0 ? static_cast<std::size_t>(n) : 0);
}

// The ASCII characters of wide text as the narrow parser reads them; any
// other character ends a number as a non-digit would.
std::string AsciiOf(const std::wstring& text) {
  std::string narrow(text.size(), '\0');
  for (std::size_t i = 0; i < text.size(); ++i)
    narrow[i] = static_cast<std::uint32_t>(text[i]) < 0x80 ? static_cast<char>(text[i]) : '\x7F';
  return narrow;
}

// strtol for 32-bit targets, _strtoi64 for 64-bit ones.
template <class T>
T NumberFromText(const std::string& text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (sizeof(T) <= 4) return static_cast<T>(FXTokenText::ParseNumber<std::int32_t>(begin, end));
  return static_cast<T>(FXTokenText::ParseNumber<long long>(begin, end));
}

bool EqualsNoCase(const std::string& text, const char* word) {
  std::size_t i = 0;
  for (; word[i] != '\0'; ++i)
    if (i == text.size() || TBagKeyLess::Lower(text[i]) != static_cast<unsigned char>(word[i])) return false;
  return i == text.size();
}

bool BoolFromText(const std::string& text) {
  if (EqualsNoCase(text, "true")) return true;
  if (EqualsNoCase(text, "false")) return false;
  return FXTokenText::ParseNumber<std::int32_t>(text.data(), text.data() + text.size()) != 0;
}

// Numeric and bool targets.
template <class T, class S>
void Convert(const S& source, T& out) {
  if constexpr (std::is_same<S, std::string>::value) {
    if constexpr (std::is_same<T, bool>::value)
      out = BoolFromText(source);
    else
      out = NumberFromText<T>(source);
  } else if constexpr (std::is_same<S, std::wstring>::value) {
    Convert(AsciiOf(source), out);
  } else if constexpr (std::is_same<T, bool>::value) {
    out = source != 0;
  } else {
    out = static_cast<T>(source);
  }
}

template <class S>
void Convert(const S& source, std::string& out) {
  if constexpr (std::is_same<S, std::string>::value)
    out = source;
  else if constexpr (std::is_same<S, std::wstring>::value)
    out = FXString::ToString(source);
  else
    out = Printed(source);
}

template <class S>
void Convert(const S& source, std::wstring& out) {
  if constexpr (std::is_same<S, std::wstring>::value) {
    out = source;
  } else if constexpr (std::is_same<S, std::string>::value) {
    out = FXString::ToWstring(source);
  } else {
    const std::string text = Printed(source);
    out.assign(text.begin(), text.end());
  }
}

// Tries the stored types in their order of test.
template <class T, class S, class... Rest>
bool ConvertFirst(const boost::any& box, T& out) {
  if (const S* source = boost::any_cast<S>(&box)) {
    Convert(*source, out);
    return true;
  }
  if constexpr (sizeof...(Rest) != 0)
    return ConvertFirst<T, Rest...>(box, out);
  else
    return false;
}

template <class T>
CZuError ReadTyped(const CBag& bag, const std::string& key, T& out, DWORD flags) {
  if (flags & CBag::kReadClear) out = T();
  boost::any box;
  CZuError result = bag.ReadAny(key, box);
  if (result.IsError()) return result.Push(ZU_HERE("CBag::Read"));
  if (box.empty() && (flags & CBag::kReadTolerant)) return result;
  try {
    if (ConvertFirst<T, bool, int, unsigned int, long, unsigned long, long long, unsigned long long, std::string,
                     std::wstring>(box, out))
      return result;
    return FXErrorUtil::ErrorWin32(ZU_HERE("CBag::Read"), ERROR_INVALID_DATATYPE,
                                   "Bag value of type '%s' different with expected type '%s'",
                                   FXTypeName::Of(box.type()).c_str(), TTarget<T>::kName);
  } catch (const std::bad_alloc&) {
    return FXErrorUtil::ErrorWin32(ZU_HERE("CBag::Read"), ERROR_OUTOFMEMORY);
  }
}

}  // namespace

#define ZU_BAG_READ(Type)                                                                            \
  CZuError CBag::Read(const std::string& key, Type& out) const { return ReadTyped(*this, key, out, 0); } \
  CZuError CBag::Read(const std::string& key, Type& out, DWORD flags) const {                       \
    return ReadTyped(*this, key, out, flags);                                                        \
  }

ZU_BAG_READ(int)
ZU_BAG_READ(unsigned int)
ZU_BAG_READ(long)
ZU_BAG_READ(unsigned long)
ZU_BAG_READ(long long)
ZU_BAG_READ(unsigned long long)
ZU_BAG_READ(bool)
ZU_BAG_READ(std::string)
ZU_BAG_READ(std::wstring)

#undef ZU_BAG_READ
