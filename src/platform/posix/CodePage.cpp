#include "platform/CodePage.h"

#include <iconv.h>

#include <cerrno>
#include <cstring>

#include "text/UTF.h"
#include "text/UTFCore.h"

namespace FXPlatform {

namespace {

const char* IconvName(unsigned int codePage) {
  switch (codePage) {
    case 437: return "CP437";
    case 850: return "CP850";
    case 932: return "CP932";
    case 936: return "CP936";
    case 949: return "CP949";
    case 950: return "CP950";
    case 1250: return "CP1250";
    case 1251: return "CP1251";
    case 1252: return "CP1252";
    case 1253: return "CP1253";
    case 1254: return "CP1254";
    case 1255: return "CP1255";
    case 1256: return "CP1256";
    case 1257: return "CP1257";
    case 1258: return "CP1258";
    default: return nullptr;
  }
}

// One conversion descriptor per code page and direction and thread, opened
// on first use: opening one costs far more than a line's conversion.
class CIconv {
 public:
  CIconv(const char* to, const char* from) : m_cd(::iconv_open(to, from)) {}
  ~CIconv() {
    if (Valid()) ::iconv_close(m_cd);
  }
  CIconv(const CIconv&) = delete;
  CIconv& operator=(const CIconv&) = delete;
  bool Valid() const { return m_cd != reinterpret_cast<iconv_t>(-1); }
  iconv_t Get() const { return m_cd; }

 private:
  iconv_t m_cd;
};

iconv_t Descriptor(unsigned int codePage, bool toUtf16) {
  struct TEntry {
    unsigned int codePage;
    bool toUtf16;
    CIconv* cd;
  };
  thread_local struct TCache {
    TEntry entries[32] = {};
    int used = 0;
    ~TCache() {
      for (int i = 0; i < used; ++i) delete entries[i].cd;
    }
  } cache;
  for (int i = 0; i < cache.used; ++i)
    if (cache.entries[i].codePage == codePage && cache.entries[i].toUtf16 == toUtf16) return cache.entries[i].cd->Get();
  const char* name = IconvName(codePage);
  if (name == nullptr) return reinterpret_cast<iconv_t>(-1);
  CIconv* cd = toUtf16 ? new CIconv("UTF-16LE", name) : new CIconv(name, "UTF-16LE");
  if (!cd->Valid() || cache.used == 32) {
    const iconv_t invalid = reinterpret_cast<iconv_t>(-1);
    delete cd;
    return invalid;
  }
  cache.entries[cache.used++] = {codePage, toUtf16, cd};
  return cd->Get();
}

// Runs iconv over the whole input into `out` (bytes), calling `onBad` with
// the input cursor at every sequence it cannot convert; onBad moves the
// cursor past it and appends the replacement.
template <class OnBad>
void RunIconv(iconv_t cd, const char* in, std::size_t size, std::string& out, OnBad onBad) {
  ::iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* source = const_cast<char*>(in);
  std::size_t left = size;
  std::size_t used = 0;
  out.resize(size * 2 + 16);
  while (left > 0) {
    char* target = &out[used];
    std::size_t room = out.size() - used;
    const std::size_t rc = ::iconv(cd, &source, &left, &target, &room);
    used = out.size() - room;
    if (rc != static_cast<std::size_t>(-1)) break;
    if (errno == E2BIG) {
      out.resize(out.size() * 2);
    } else {
      out.resize(used);
      onBad(source, left, out);
      used = out.size();
      out.resize(used + left * 2 + 16);
    }
  }
  out.resize(used);
}

void AppendUtf8AsUtf16(const char* bytes, std::size_t size, std::u16string& out) {
  using namespace FXUTF;
  const UTF8* source = reinterpret_cast<const UTF8*>(bytes);
  const UTF8* const end = source + size;
  const std::size_t at = out.size();
  out.resize(at + size);
  UTF16* target = reinterpret_cast<UTF16*>(&out[at]);
  while (source < end) {
    UTF16* const targetEnd = reinterpret_cast<UTF16*>(&out[0] + out.size());
    if (!ConvertUTF8ToUTF16(&source, end, &target, targetEnd, lenientConversion).IsError()) break;
    // An ill-formed or cut sequence: one U+FFFD for its maximal subpart,
    // as Unicode recommends and as MultiByteToWideChar does for most.
    *target++ = 0xFFFD;
    source += FXUTFDetail::MaximalSubpart(source, end);
  }
  out.resize(static_cast<std::size_t>(reinterpret_cast<char16_t*>(target) - &out[0]));
}

void AppendUtf16AsUtf8(const char16_t* units, std::size_t count, std::string& out) {
  using namespace FXUTF;
  const UTF16* source = reinterpret_cast<const UTF16*>(units);
  const UTF16* const end = source + count;
  const std::size_t at = out.size();
  out.resize(at + count * 3);
  UTF8* target = reinterpret_cast<UTF8*>(&out[at]);
  while (source < end) {
    UTF8* const targetEnd = reinterpret_cast<UTF8*>(&out[0] + out.size());
    if (!ConvertUTF16ToUTF8(&source, end, &target, targetEnd, lenientConversion).IsError()) break;
    // A high surrogate at the very end: U+FFFD.
    std::memcpy(target, "\xEF\xBF\xBD", 3);
    target += 3;
    ++source;
  }
  out.resize(static_cast<std::size_t>(reinterpret_cast<char*>(target) - &out[0]));
}

}  // namespace

unsigned int SystemAnsiCodePage() { return kCodePageUtf8; }

bool CodePageToUtf16(unsigned int codePage, const char* bytes, std::size_t size, std::u16string& out) {
  if (codePage == kCodePageUtf8) {
    AppendUtf8AsUtf16(bytes, size, out);
    return true;
  }
  const iconv_t cd = Descriptor(codePage, true);
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  std::string converted;
  RunIconv(cd, bytes, size, converted, [](char*& source, std::size_t& left, std::string& target) {
    target.append("\xFD\xFF", 2);  // U+FFFD, little-endian
    ++source;
    --left;
  });
  const std::size_t at = out.size();
  out.resize(at + converted.size() / 2);
  if (!converted.empty()) std::memcpy(&out[at], converted.data(), converted.size() / 2 * 2);
  return true;
}

bool Utf16ToCodePage(unsigned int codePage, const char16_t* units, std::size_t count, const std::string& replacement,
                     std::string& out) {
  if (codePage == kCodePageUtf8) {
    AppendUtf16AsUtf8(units, count, out);
    return true;
  }
  const iconv_t cd = Descriptor(codePage, false);
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  std::string little(count * 2, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    little[2 * i] = static_cast<char>(units[i] & 0xFF);
    little[2 * i + 1] = static_cast<char>(units[i] >> 8);
  }
  const std::string& unknown = replacement.empty() ? std::string("?") : replacement;
  std::string converted;
  RunIconv(cd, little.data(), little.size(), converted, [&](char*& source, std::size_t& left, std::string& target) {
    target += unknown;
    // A character outside the code page may be a surrogate pair.
    const auto unitAt = [&](std::size_t i) {
      return static_cast<unsigned>(static_cast<unsigned char>(source[i]) | static_cast<unsigned char>(source[i + 1]) << 8);
    };
    std::size_t skip = 2;
    if (left >= 4 && unitAt(0) >= 0xD800 && unitAt(0) < 0xDC00 && unitAt(2) >= 0xDC00 && unitAt(2) < 0xE000) skip = 4;
    if (skip > left) skip = left;
    source += skip;
    left -= skip;
  });
  out += converted;
  return true;
}

}  // namespace FXPlatform
