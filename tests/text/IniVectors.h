// The INI agreement vectors: INI files with the answers the Windows
// private-profile service gave for a series of INIFileReader calls on each.
// Written by zu_ini_vectors (run by the Windows build under wine), read by
// the test on every platform.
//
// One line per record, fields separated by blanks, each field escaped: "~"
// is the empty text, bytes outside '!'..'~' and the characters '%', '=',
// '~' are %XX. A record "case <name> <file bytes>" starts a case; the calls
// follow as "<call> <arguments> = <answers>": names, data <section>, get
// <section> <key>, exists <section>, set <section> <key> <value>.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace FXIniVectors {

inline std::string Escape(const std::string& text) {
  if (text.empty()) return "~";
  std::string out;
  for (const char c : text) {
    const unsigned char u = static_cast<unsigned char>(c);
    if (u > ' ' && u < 0x7F && c != '%' && c != '=' && c != '~') {
      out += c;
    } else {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", u);
      out += hex;
    }
  }
  return out;
}

inline std::string Unescape(const std::string& field) {
  if (field == "~") return std::string();
  std::string out;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '%' && i + 2 < field.size()) {
      out += static_cast<char>(std::stoi(field.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      out += field[i];
    }
  }
  return out;
}

inline std::string Record(const std::vector<std::string>& arguments, const std::vector<std::string>& answers) {
  std::string line;
  for (std::size_t i = 0; i < arguments.size(); ++i) line += (i == 0 ? arguments[i] : " " + Escape(arguments[i]));
  line += " =";
  for (const std::string& answer : answers) line += " " + Escape(answer);
  return line;
}

// Splits a record line into its call with arguments and its answers.
inline void Parse(const std::string& line, std::vector<std::string>& arguments, std::vector<std::string>& answers) {
  arguments.clear();
  answers.clear();
  bool after = false;
  std::size_t start = 0;
  while (start <= line.size()) {
    std::size_t end = line.find(' ', start);
    if (end == std::string::npos) end = line.size();
    const std::string field = line.substr(start, end - start);
    if (field == "=") {
      after = true;
    } else if (!field.empty()) {
      if (after)
        answers.push_back(Unescape(field));
      else
        arguments.push_back(arguments.empty() ? field : Unescape(field));
    }
    start = end + 1;
  }
}

}  // namespace FXIniVectors
