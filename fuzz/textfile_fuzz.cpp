// Text files: narrow lines of UTF-8 files in the UTF-8 code page are
// well-formed; any
// bytes, read in each encoding with any buffer size, give
// the same lines as one read with the whole file in the buffer (carriage
// returns aside, which may stay at a buffer boundary by design); the wide
// lines written to a UTF-16 file read back unchanged.
#include <platform/PlainFile.h>
#include <text/StringConvert.h>
#include <text/TextFile.h>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

const std::string& Path() {
  static const std::string path = "/dev/shm/zu_textfile_fuzz_" + std::to_string(::getpid());
  return path;
}

void Check(bool condition) {
  if (!condition) std::abort();
}

void Store(const std::string& bytes) {
  FXPlatform::CPlainFile file;
  Check(file.Open(Path(), FXPlatform::EPlainFileOpen::kCreateAlways).win32 == 0);
  Check(file.Write(bytes.data(), bytes.size()).win32 == 0);
}

int g_encoding = 0;  // of the file ReadLines read last

template <class Char>
std::vector<std::basic_string<Char>> ReadLines(int flags, int bufferSize, unsigned codePage, bool passThru) {
  CTextFile file;
  file.SetCodePage(static_cast<int>(codePage));
  file.SetAnsiPassThru(passThru);
  std::vector<std::basic_string<Char>> lines;
  if (file.Open(Path(), CTextFile::kModeRead, flags, bufferSize) != 0) return lines;
  g_encoding = file.GetEncoding();
  Char* line = nullptr;
  for (int rc = 0; rc == 0;) {
    int length = -1;
    rc = file.ReadLine(&length, &line);
    Check(rc == 0 || rc == -1);
    Check(length >= 0 && line != nullptr && line[length] == Char(0));
    lines.emplace_back(line, static_cast<std::size_t>(length));
  }
  CTextFile::FreeLineBuffer(line);
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const int encoding = data[0] % 5;
  const int flags = encoding | (data[0] & 0x80 ? CTextFile::kNoByteOrderMark : 0);
  const int bufferSize = 1 + data[1] % 64;
  const unsigned codePages[] = {65001, 1252, 932, 936};
  const unsigned codePage = codePages[(data[0] >> 3) % 4];
  const bool passThru = (data[0] & 0x40) != 0;
  std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);

  Store(bytes);
  // Narrow lines of a UTF-8 file in the UTF-8 code page are well-formed
  // (unless the bytes pass through), which the library's lenient converters
  // keep as they are (up to a NUL, where they stop).
  for (const std::string& line : ReadLines<char>(flags, bufferSize, codePage, passThru))
    Check(g_encoding != CTextFile::kUtf8 || codePage != 65001 || passThru || line.find('\0') != std::string::npos ||
          FXString::ToString(FXString::ToWstring(line)) == line);
  (void)ReadLines<wchar_t>(flags, bufferSize, codePage, passThru);
  CTextFile chars;
  if (chars.Open(Path(), CTextFile::kModeRead, flags, bufferSize) == 0)
    for (int c; (c = chars.ReadChar()) >= 0;) Check(c != 13 && c <= 0xFFFF);
  chars.Close();

  // Without carriage returns the buffer size makes no difference.
  std::string plain;
  for (const char c : bytes)
    if (c != '\r') plain += c;
  Store(plain);
  const int whole = static_cast<int>(plain.size()) + 8;
  Check(ReadLines<char>(flags, bufferSize, codePage, passThru) == ReadLines<char>(flags, whole, codePage, passThru));
  const std::vector<std::wstring> wide = ReadLines<wchar_t>(flags, bufferSize, codePage, passThru);
  Check(wide == ReadLines<wchar_t>(flags, whole, codePage, passThru));

  // The wide lines through a UTF-16 file of the same lines.
  for (int target : {CTextFile::kUtf16LE, CTextFile::kUtf16BE}) {
    CTextFile out;
    Check(out.Open(Path(), CTextFile::kModeCreate, target, bufferSize) == 0);
    for (std::size_t i = 0; i < wide.size(); ++i) {
      if (i != 0) Check(out.Write(L"\n", 1) == 0);
      Check(out.Write(wide[i].data(), static_cast<int>(wide[i].size())) == 0);
    }
    Check(out.Close() == 0);
    std::vector<std::wstring> back = ReadLines<wchar_t>(0, whole * 4 + 16, codePage, passThru);
    if (wide.empty()) continue;
    Check(back == wide);
  }
  return 0;
}
