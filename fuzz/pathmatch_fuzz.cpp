// Path matching: the bounded matcher agrees with the plain recursion on the
// answer, every work-data mark and the next-basename position, in both unit
// widths; larger inputs, beyond the reference's reach, must simply finish.
// Input: one byte of options, then the pattern, a NUL, the subject.
#include <paths/PathMatch.h>
#include <paths/PathMatchReference.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

template <class C>
void Check(const std::basic_string<C>& pattern, const std::basic_string<C>& subject, int flags, bool insensitive) {
  if (!ZuTest::CompareWithReference(pattern, subject, flags, insensitive).empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const unsigned options = data[0];
  const std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t split = rest.find('\0');
  const std::string pattern = rest.substr(0, split);
  std::string subject = split == std::string::npos ? std::string() : rest.substr(split + 1);
  subject = subject.substr(0, subject.find('\0'));
  // Without pathname a star whose rest holds a delimiter tries every
  // position, as the plain recursion does: keep pathname on.
  const int flags = static_cast<int>(options & 0x7) | 0x2;
  const bool insensitive = (options & 0x8) != 0;

  int stars = 0;
  for (char c : pattern) stars += c == '*';
  if (pattern.size() <= 20 && subject.size() <= 32 && stars <= 8) {
    Check<char>(pattern, subject, flags, insensitive);
    // The same units as code points; byte 0x01 stands for U+200B.
    std::basic_string<unsigned long> widePattern, wideSubject;
    for (unsigned char c : pattern) widePattern += c == 1 ? 0x200B : c;
    for (unsigned char c : subject) wideSubject += c == 1 ? 0x200B : c;
    Check<unsigned long>(widePattern, wideSubject, flags, insensitive);
  } else {
    // Anything else only has to finish, through the public matcher.
    CPathMatch matcher;
    if (insensitive) matcher.caseInsensitive();
    if (!matcher.initialize(pattern.c_str(), true, (options & 0x10) != 0).IsError()) {
      CPathMatchWorkData wd;
      matcher.match(wd, subject.c_str());
      std::string next;
      matcher.getNextBasename(wd, next);
    }
  }
  return 0;
}
