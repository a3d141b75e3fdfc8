// Value wrappers around a 32-bit set of named bits and bit groups, printed
// from a display table: the flag-set counterpart of EnumWrapper.h.
//
//   class BColor : public TFlagWrapper<BColor> {
//    public:
//     enum : unsigned long { COLOR = 0x3, COLOR_RED = 0x1, COLOR_BLUE = 0x2, BRIGHT = 0x4 };
//     using TFlagWrapper::TFlagWrapper;
//     static const TFlagName* DisplayTable(std::size_t& count);
//   };
//
// A table row (value, mask, name) is shown when the bits under its mask
// equal its value, so a group's zero value can have a name too. Rows are
// joined by "|"; bits that no shown row covers follow as "0x%X".
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

struct TFlagName {
  unsigned long value;
  unsigned long mask;
  const char* name;
};

template <class Derived>
class TFlagWrapper {
 public:
  TFlagWrapper() = default;
  TFlagWrapper(unsigned long value) : m_value(value & 0xFFFFFFFFUL) {}  // NOLINT: implicit by design

  unsigned long AsValue() const { return m_value; }
  void FromValue(unsigned long value) { m_value = value & 0xFFFFFFFFUL; }

  // Single bits (all of them, for a mask of several).
  bool IsSet(unsigned long bits) const { return (m_value & bits) == bits; }
  bool IsClear(unsigned long bits) const { return (m_value & bits) == 0; }
  void Set(unsigned long bits) { m_value |= bits; }
  void Clear(unsigned long bits) { m_value &= ~bits; }
  // Groups: the bits under mask.
  bool IsSelected(unsigned long mask, unsigned long value) const { return (m_value & mask) == value; }
  void Select(unsigned long mask, unsigned long value) { m_value = (m_value & ~mask) | (value & mask); }
  unsigned long GetSelected(unsigned long mask) const { return m_value & mask; }

  bool operator==(const TFlagWrapper& other) const { return m_value == other.m_value; }
  bool operator!=(const TFlagWrapper& other) const { return m_value != other.m_value; }

  std::string AsString() const {
    std::string text;
    unsigned long covered = 0;
    std::size_t count = 0;
    const TFlagName* table = Derived::DisplayTable(count);
    for (std::size_t i = 0; i < count; ++i) {
      if ((m_value & table[i].mask) != table[i].value) continue;
      if (!text.empty()) text += '|';
      text += table[i].name;
      covered |= table[i].mask;
    }
    if (m_value & ~covered) {
      char rest[16];
      std::snprintf(rest, sizeof rest, "0x%lX", m_value & ~covered);
      if (!text.empty()) text += '|';
      text += rest;
    }
    return text;
  }
  std::wstring AsWstring() const {
    const std::string text = AsString();
    return std::wstring(text.begin(), text.end());  // the names are ASCII
  }

 protected:
  unsigned long m_value = 0;
};
