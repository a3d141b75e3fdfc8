// String algorithms over std::string and std::wstring.
#pragma once

#include <string>

namespace FXString {

// `chars` is a set: the longest leading and trailing runs of its members are
// removed; a string made only of them becomes empty.
template <class Char>
void TrimLeft(std::basic_string<Char>& s, const Char* chars) {
  s.erase(0, s.find_first_not_of(chars));
}
template <class Char>
void TrimRight(std::basic_string<Char>& s, const Char* chars) {
  const auto last = s.find_last_not_of(chars);
  s.erase(last == std::basic_string<Char>::npos ? 0 : last + 1);
}
template <class Char>
void Trim(std::basic_string<Char>& s, const Char* chars) {
  TrimRight(s, chars);
  TrimLeft(s, chars);
}

}  // namespace FXString
