// zu_ini_vectors <output>: generates INI files of every awkward kind and
// writes the answers INIFileReader gets for them to <output>. Run by the
// Windows build (under wine), whose INIFileReader asks the system's
// private-profile service: its answers are the vectors that the POSIX
// reader must reproduce.
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "IniVectors.h"
#include "platform/FileSystem.h"
#include "platform/PlainFile.h"
#include "text/IniFile.h"

namespace {

std::mt19937 g_random(20261123);

std::size_t Pick(std::size_t n) { return static_cast<std::size_t>(g_random() % n); }
template <class T, std::size_t N>
const T& PickFrom(const T (&items)[N]) {
  return items[Pick(N)];
}

const char* const kSections[] = {"s", "S", "sec", "Sec Two", "a b", "x"};
const char* const kKeys[] = {"k", "K", "key", "x y", "k2", "v"};
const char* const kBlanks[] = {"", "", "", " ", "\t", "  \t "};

std::string Value() {
  switch (Pick(12)) {
    case 0: return "";
    case 1: return std::string(800 + Pick(2500), static_cast<char>('a' + Pick(26)));
    case 2: return "\"quoted value\"";
    case 3: return "'single'";
    case 4: return "\"open";
    case 5: return "a=b";
    case 6: return "value ; not a comment";
    case 7: return "  padded \t";
    default: return std::string("v") + std::to_string(Pick(100));
  }
}

// Whether the file being made gets written to (see main).
bool g_writable = false;

std::string Line() {
  const std::string lead = PickFrom(kBlanks), trail = PickFrom(kBlanks);
  switch (Pick(16)) {
    case 0: return "";
    case 1: return lead;
    case 2: return lead + ";" + PickFrom(kKeys) + "=comment";
    case 3: return lead + "#" + PickFrom(kKeys) + "=hash";
    case 4: return lead + "[" + PickFrom(kSections) + "]" + trail;
    case 5: return lead + "[" + PickFrom(kBlanks) + PickFrom(kSections) + PickFrom(kBlanks) + "]";
    case 6: return "[" + std::string(PickFrom(kSections)) + "] ; trailing";
    case 7: return "[" + std::string(PickFrom(kSections));
    case 8: return g_writable ? "[" + std::string(PickFrom(kSections)) + "]" : "[]";
    case 9: return lead + PickFrom(kKeys) + trail;  // no '='
    case 10: return lead + "=" + Value();
    case 11: return lead + PickFrom(kKeys) + PickFrom(kBlanks) + "=" + PickFrom(kBlanks) + Value() + trail;
    default: return lead + PickFrom(kKeys) + "=" + Value();
  }
}

std::string File(int number) {
  std::string text;
  const int style = number % 3;  // CR LF, LF, mixed
  int lines = 1 + static_cast<int>(Pick(number % 10 == 9 ? 400 : 25));
  for (int i = 0; i < lines; ++i) {
    text += Line();
    const bool crlf = style == 0 || (style == 2 && Pick(2) == 0);
    if (i + 1 < lines || Pick(2)) text += crlf ? "\r\n" : "\n";
  }
  return text;
}

std::string Variant(const std::string& name) {
  switch (Pick(4)) {
    case 0: return " " + name + "\t";
    case 1: {
      std::string upper = name;
      for (char& c : upper) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
      return upper;
    }
    default: return name;
  }
}

void Ask(INIFileReader& reader, std::ofstream& out, const std::string& section) {
  out << FXIniVectors::Record({"exists", section}, {reader.sectionExists(section) ? "1" : "0"}) << '\n';
  out << FXIniVectors::Record({"data", section}, reader.getSectionData(section)) << '\n';
  for (const char* key : kKeys) {
    out << FXIniVectors::Record({"get", section, key}, {reader.getKeyValue(section, key)}) << '\n';
  }
  const std::string variant = Variant(PickFrom(kKeys));
  out << FXIniVectors::Record({"get", section, variant}, {reader.getKeyValue(section, variant)}) << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: zu_ini_vectors <output>\n");
    return 2;
  }
  std::ofstream out(argv[1], std::ios::binary);
  const std::string folder = FXPlatform::TempDirectory();
  for (int number = 0; number < 160; ++number) {
    // Wine's service rewrites the whole file in its own layout on every
    // write, which drops "[]" headers (their entries join the section
    // before). Windows, and our writer, keep the lines as they are: so the
    // files that are written to have no "[]" line.
    g_writable = number % 2 == 1;
    std::string text = File(number);
    if (number == 7) {  // more section names than 1000 characters hold
      text.clear();
      for (int i = 0; i < 150; ++i) text += "[section" + std::to_string(i) + "]\r\nk=" + std::to_string(i) + "\r\n";
    }
    // A name of its own for every case: the service caches files by name.
    const std::string path = folder + "zu_ini_vectors_" + std::to_string(number) + ".ini";
    {
      FXPlatform::CPlainFile file;
      if (file.Open(path, FXPlatform::EPlainFileOpen::kCreateAlways).win32 != 0 ||
          file.Write(text.data(), text.size()).win32 != 0) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return 1;
      }
    }
    out << FXIniVectors::Record({"case", std::to_string(number), text}, {}) << '\n';
    INIFileReader reader(path);
    out << FXIniVectors::Record({"names"}, reader.getSectionNames()) << '\n';
    for (const char* section : kSections) Ask(reader, out, section);
    Ask(reader, out, Variant(PickFrom(kSections)));
    Ask(reader, out, "missing");
    for (int write = 0; g_writable && write < 3; ++write) {
      const std::string section = write == 2 ? "new" + std::to_string(number) : Variant(PickFrom(kSections));
      const std::string key = Variant(PickFrom(kKeys));
      const std::string value = Value();
      out << FXIniVectors::Record({"set", section, key, value}, {reader.setKeyValue(section, key, value) ? "1" : "0"})
          << '\n';
      out << FXIniVectors::Record({"names"}, reader.getSectionNames()) << '\n';
      Ask(reader, out, section);
    }
    FXPlatform::DeleteFileAt(path);
  }
  return out.good() ? 0 : 1;
}
