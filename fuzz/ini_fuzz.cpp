// The POSIX INI reader: any bytes parse; every answer fits the buffer it
// was given and is counted as the service counts; setting a key reads back
// its value and leaves every other section's entries as they were.
#include <text/IniProfile.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <set>
#include <string>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::string Name(const uint8_t*& data, std::size_t& size) {
  static const char alphabet[] = "abcAB _.-09";
  std::string name;
  const std::size_t length = size > 0 ? 1 + data[0] % 6 : 1;
  for (std::size_t i = 0; i < length; ++i) {
    const uint8_t c = size > 0 ? data[0] : 0;
    if (size > 0) ++data, --size;
    name += alphabet[c % (sizeof alphabet - 1)];
  }
  return name;
}

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == '\x1A'; }

// What a lookup gives for a value that was written: trimmed, and without
// quotes that match.
std::string AsRead(const std::string& value) {
  std::size_t first = 0, last = value.size();
  while (first < last && IsBlank(value[first])) ++first;
  while (last > first && IsBlank(value[last - 1])) --last;
  std::string out = value.substr(first, last - first);
  if (out.size() >= 2 && (out[0] == '"' || out[0] == '\'') && out.back() == out[0]) out = out.substr(1, out.size() - 2);
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  const std::uint32_t bufferSize = 1 + data[0] % 64;
  data += 1;
  size -= 1;
  std::string section = Name(data, size), key = Name(data, size);
  if (section.find_first_not_of(' ') == std::string::npos) section = "s";
  if (key.find_first_not_of(' ') == std::string::npos) key = "k";
  std::string value;
  for (std::size_t i = 0; i < size && i < 8; ++i)
    if (data[i] >= 0x20 && data[i] < 0x7F) value += static_cast<char>(data[i]);
  const std::string text(reinterpret_cast<const char*>(data), size);

  FXIniProfile::TProfile profile;
  FXIniProfile::Parse(text, profile);
  std::string out;
  std::set<std::string> names;
  for (const FXIniProfile::TSection& s : profile.sections) {
    names.insert(s.name);
    for (const char* k : {"k", "a", static_cast<const char*>(nullptr)}) {
      const std::uint32_t count = FXIniProfile::GetString(profile, s.name.c_str(), k, "d", bufferSize, out);
      Check(count == out.size() && count < bufferSize);
    }
    const std::uint32_t count = FXIniProfile::GetSection(profile, s.name.c_str(), bufferSize, out);
    Check(count == out.size() && count + 1 <= bufferSize);
  }
  const std::uint32_t count = FXIniProfile::GetSectionNames(profile, bufferSize, out);
  Check(count + 1 <= bufferSize && out.size() <= bufferSize);

  const std::string written = FXIniProfile::SetString(text, section, key, value);
  FXIniProfile::TProfile after;
  FXIniProfile::Parse(written, after);
  const std::uint32_t large = static_cast<std::uint32_t>(value.size() + 16);
  FXIniProfile::GetString(after, section.c_str(), key.c_str(), nullptr, large, out);
  Check(out == AsRead(value));
  std::string before;
  std::size_t start = 0;
  while (start < section.size() && section[start] == ' ') ++start;
  std::string trimmed = section.substr(start);
  while (!trimmed.empty() && trimmed.back() == ' ') trimmed.pop_back();
  for (const std::string& name : names) {
    if (name.size() == trimmed.size() && strncasecmp(name.c_str(), trimmed.c_str(), name.size()) == 0) continue;
    const std::uint32_t whole = static_cast<std::uint32_t>(written.size() + 64);
    FXIniProfile::GetSection(profile, name.c_str(), whole, before);
    FXIniProfile::GetSection(after, name.c_str(), whole, out);
    Check(before == out);
  }
  return 0;
}
