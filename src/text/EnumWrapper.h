// Value wrappers around one enumerator, printed by name from a display table.
//
// The enumerators live in a plain struct so that they can be named as
// members of the wrapper (EErrorOutputFormat::LOGGING_FULL) and still be the
// template argument of its base:
//
//   struct EColorValues { enum ENUM : int { RED, GREEN }; };  // any int is a value
//   class EColor : public EColorValues, public TEnumWrapper<EColor, EColorValues::ENUM> {
//    public:
//     using TEnumWrapper::TEnumWrapper;
//     static const TEnumName<ENUM>* DisplayTable(std::size_t& count);
//   };
//
// The base supplies the value semantics and the name look-up; a value that
// is not in the table prints as its decimal number.
#pragma once

#include <cstddef>
#include <string>

template <class ENUM>
struct TEnumName {
  ENUM value;
  const char* name;
  const wchar_t* wname;
};

#define ZU_ENUM_NAME(e) \
  { e, #e, L## #e }

template <class Derived, class ENUM>
class TEnumWrapper {
 public:
  typedef ENUM Enum;

  TEnumWrapper() : m_value(ENUM()) {}
  TEnumWrapper(ENUM value) : m_value(value) {}  // NOLINT: implicit by design

  ENUM AsEnum() const { return m_value; }
  operator ENUM() const { return m_value; }
  unsigned long AsValue() const { return static_cast<unsigned long>(m_value); }
  void FromValue(unsigned long value) { m_value = static_cast<ENUM>(value); }
  void Select(ENUM value) { m_value = value; }
  bool IsSelected(ENUM value) const { return m_value == value; }

  std::string AsString() const { return Derived::AsString(m_value); }
  std::wstring AsWstring() const { return Derived::AsWstring(m_value); }

  static std::string AsString(ENUM value) {
    const TEnumName<ENUM>* row = Find(value);
    return row ? std::string(row->name) : std::to_string(static_cast<unsigned long>(value));
  }
  static std::wstring AsWstring(ENUM value) {
    const TEnumName<ENUM>* row = Find(value);
    return row ? std::wstring(row->wname) : std::to_wstring(static_cast<unsigned long>(value));
  }

  static const TEnumName<ENUM>* Find(ENUM value) {
    std::size_t count = 0;
    const TEnumName<ENUM>* table = Derived::DisplayTable(count);
    for (std::size_t i = 0; i < count; ++i)
      if (table[i].value == value) return &table[i];
    return nullptr;
  }

 protected:
  ENUM m_value;
};
