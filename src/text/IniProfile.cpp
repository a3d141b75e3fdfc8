#include "text/IniProfile.h"

#include <cstring>

namespace FXIniProfile {

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == '\x1A'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool EqualNoCase(const std::string& a, const char* b, std::size_t length) {
  if (a.size() != length) return false;
  for (std::size_t i = 0; i < length; ++i)
    if (Lower(a[i]) != Lower(b[i])) return false;
  return true;
}

// The text up to its first NUL, as the service's C strings end there.
std::string UpToNul(const char* begin, const char* end) {
  const void* nul = std::memchr(begin, '\0', static_cast<std::size_t>(end - begin));
  return std::string(begin, nul == nullptr ? end : static_cast<const char*>(nul));
}

// A name asked for, without the white space around it.
void Trimmed(const char* name, const char*& begin, std::size_t& length) {
  while (IsSpace(*name)) ++name;
  const char* end = name + std::strlen(name);
  while (end > name && IsSpace(end[-1])) --end;
  begin = name;
  length = static_cast<std::size_t>(end - name);
}

const TSection* FindSection(const TProfile& profile, const char* section) {
  const char* name;
  std::size_t length;
  Trimmed(section, name, length);
  for (const TSection& s : profile.sections)
    if (EqualNoCase(s.name, name, length)) return &s;
  return nullptr;
}

const TEntry* FindEntry(const TSection& section, const char* key) {
  const char* name;
  std::size_t length;
  Trimmed(key, name, length);
  for (const TEntry& e : section.entries)
    if (EqualNoCase(e.name, name, length)) return &e;
  return nullptr;
}

// lstrcpyn: at most count - 1 characters and a terminator; the length.
std::size_t CopyN(char* target, const char* source, std::size_t count) {
  std::size_t n = 0;
  if (count == 0) return 0;
  while (n + 1 < count && source[n] != '\0') {
    target[n] = source[n];
    ++n;
  }
  target[n] = '\0';
  return n;
}

// A value copied into the buffer without matching quotes around it.
void CopyEntry(char* buffer, const char* value, std::size_t length) {
  char quote = '\0';
  if ((*value == '\'' || *value == '"') && value[1] != '\0' && value[std::strlen(value) - 1] == *value)
    quote = *value++;
  CopyN(buffer, value, length);
  if (quote != '\0' && length >= std::strlen(value)) buffer[std::strlen(buffer) - 1] = '\0';
}

// The section's entries into the buffer, as names (keysOnly) or entries.
std::uint32_t ListSection(const TSection& section, char* buffer, std::uint32_t size, bool withValues) {
  if (size < 2) {  // no room for a list's two terminators: nothing at all
    buffer[0] = '\0';
    return 0;
  }
  char* p = buffer;
  std::uint32_t length = size;
  for (const TEntry& e : section.entries) {
    if (length <= 2) break;
    if (e.name.empty() && !e.hasValue) continue;
    if (!e.name.empty() && e.name[0] == ';') continue;
    if (!withValues && !e.hasValue) continue;
    std::size_t n = CopyN(p, e.name.c_str(), length - 1);
    length -= static_cast<std::uint32_t>(n + 1);
    p += n + 1;
    if (length < 2) break;
    if (withValues && e.hasValue) {
      p[-1] = '=';
      n = CopyN(p, e.value.c_str(), length - 1);
      length -= static_cast<std::uint32_t>(n + 1);
      p += n + 1;
    }
  }
  *p = '\0';
  if (length <= 1) {
    p[-1] = '\0';
    return size - 2;
  }
  return size - length;
}

}  // namespace

void Parse(const std::string& text, TProfile& profile) {
  profile.sections.assign(1, TSection());
  profile.lines.clear();
  const char* const start = text.data();
  const char* const finish = start + text.size();
  const char* next = start;
  if (text.size() >= 3 && std::memcmp(start, "\xEF\xBB\xBF", 3) == 0) next += 3;
  const TEntry* previous = nullptr;
  while (next < finish) {
    TLine line;
    line.begin = static_cast<std::size_t>(next - start);
    const char* end = next;
    while (end < finish && *end != '\n' && *end != '\r') ++end;
    line.end = static_cast<std::size_t>(end - start);
    while (end < finish && (*end == '\n' || *end == '\r')) ++end;
    line.next = static_cast<std::size_t>(end - start);
    const std::size_t number = profile.lines.size();
    profile.lines.push_back(line);

    const char* first = start + line.begin;
    const char* last = start + line.end;
    next = end;
    while (first < last && IsSpace(*first)) ++first;
    while (last > first && IsSpace(last[-1])) --last;
    if (first >= last) continue;

    if (*first == '[') {
      const char* close = last - 1;
      while (close > first && *close != ']') --close;
      if (close > first) {
        const char* nameBegin = first + 1;
        const char* nameEnd = close;
        while (nameBegin < nameEnd && IsSpace(*nameBegin)) ++nameBegin;
        while (nameEnd > nameBegin && IsSpace(nameEnd[-1])) --nameEnd;
        TSection section;
        section.name = UpToNul(nameBegin, nameEnd);
        section.line = section.lastLine = number;
        profile.sections.push_back(std::move(section));
        previous = nullptr;
        continue;
      }
    }
    profile.sections.back().lastLine = number;
    TEntry entry;
    entry.line = number;
    const char* nameEnd = last;
    const char* equals = static_cast<const char*>(std::memchr(first, '=', static_cast<std::size_t>(last - first)));
    if (equals != nullptr) {
      nameEnd = equals;
      while (nameEnd > first && IsSpace(nameEnd[-1])) --nameEnd;
      const char* value = equals + 1;
      while (value < last && IsSpace(*value)) ++value;
      entry.hasValue = true;
      entry.value = UpToNul(value, last);
    }
    entry.name = UpToNul(first, nameEnd);
    if (nameEnd == first && previous != nullptr && previous->name.empty()) continue;
    std::vector<TEntry>& entries = profile.sections.back().entries;
    entries.push_back(std::move(entry));
    previous = &entries.back();
  }
}

std::uint32_t GetString(const TProfile& profile, const char* section, const char* key, const char* defaultValue,
                        std::uint32_t size, std::string& out) {
  out.clear();
  if (size == 0) return 0;
  if (defaultValue == nullptr) defaultValue = "";
  std::vector<char> buffer(size + 2, '\0');
  if (section == nullptr) return GetSectionNames(profile, size, out);
  std::uint32_t count;
  if (key != nullptr) {
    const TSection* s = key[0] == '\0' ? nullptr : FindSection(profile, section);
    const TEntry* e = s == nullptr ? nullptr : FindEntry(*s, key);
    CopyEntry(buffer.data(), e != nullptr && e->hasValue ? e->value.c_str() : defaultValue, size);
    count = static_cast<std::uint32_t>(std::strlen(buffer.data()));
  } else {
    const TSection* s = nullptr;
    for (const TSection& candidate : profile.sections)
      if (EqualNoCase(candidate.name, section, std::strlen(section))) {
        s = &candidate;
        break;
      }
    count = s == nullptr ? 0 : ListSection(*s, buffer.data(), size, false);
    if (buffer[0] == '\0') {
      CopyEntry(buffer.data(), defaultValue, size);
      count = static_cast<std::uint32_t>(std::strlen(buffer.data()));
    }
  }
  out.assign(buffer.data(), count);
  return count;
}

std::uint32_t GetSection(const TProfile& profile, const char* section, std::uint32_t size, std::string& out) {
  out.clear();
  if (section == nullptr || size == 0) return 0;
  std::vector<char> buffer(size + 2, '\0');
  for (const TSection& s : profile.sections)
    if (EqualNoCase(s.name, section, std::strlen(section))) {
      const std::uint32_t count = ListSection(s, buffer.data(), size, true);
      out.assign(buffer.data(), count);
      return count;
    }
  return 0;
}

std::uint32_t GetSectionNames(const TProfile& profile, std::uint32_t size, std::string& out) {
  out.clear();
  if (size <= 1) return 0;
  std::uint32_t room = size - 1;
  for (const TSection& s : profile.sections) {
    if (s.name.empty()) continue;
    const std::uint32_t needed = static_cast<std::uint32_t>(s.name.size() + 1);
    if (needed >= room) {
      if (room > 0) {
        out.append(s.name, 0, room - 1);
        out += '\0';
      }
      return size - 2;
    }
    out += s.name;
    out += '\0';
    room -= needed;
  }
  return static_cast<std::uint32_t>(out.size());
}

std::string SetString(const std::string& text, const std::string& section, const std::string& key,
                      const std::string& value) {
  TProfile profile;
  Parse(text, profile);
  const char* keyName;
  std::size_t keyLength;
  Trimmed(key.c_str(), keyName, keyLength);
  const char* sectionName;
  std::size_t sectionLength;
  Trimmed(section.c_str(), sectionName, sectionLength);
  std::size_t skip = 0;
  while (skip < value.size() && IsSpace(value[skip])) ++skip;

  std::string eol = "\r\n";
  for (const TLine& line : profile.lines)
    if (line.end < text.size()) {
      eol = text.compare(line.end, 2, "\r\n") == 0 ? "\r\n" : text.substr(line.end, 1);
      break;
    }

  const TSection* s = FindSection(profile, section.c_str());
  if (s != nullptr) {
    const TEntry* e = FindEntry(*s, key.c_str());
    std::string out = text;
    const std::string entry = std::string(keyName, keyLength) + "=" + value.substr(skip);
    if (e != nullptr) {
      const TLine& line = profile.lines[e->line];
      out.replace(line.begin, line.end - line.begin, e->name + "=" + value.substr(skip));
    } else if (s->lastLine == TSection::kNoLine) {  // the unnamed section of a file that starts with a header
      out.insert(text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0, entry + eol);
    } else {
      out.insert(profile.lines[s->lastLine].end, eol + entry);
    }
    return out;
  }
  std::string out = text;
  if (!out.empty() && out.back() != '\n' && out.back() != '\r') out += eol;
  out += "[" + std::string(sectionName, sectionLength) + "]" + eol + std::string(keyName, keyLength) + "=" +
         value.substr(skip) + eol;
  return out;
}

}  // namespace FXIniProfile
