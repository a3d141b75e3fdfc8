// FXString::SplitArguments: the tokens are those of Split with each
// double-quoted run joined back (a token opens a run when it begins with a
// double quote and does not end with one; the run ends at the first token
// that ends with one), the list and vector forms agree, and joining the
// tokens with the delimiter gives the text back when no delimiters merge.
#include <text/StringAlgo.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdlib>
#include <list>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Model(const std::string& text, const std::string& delimiter, unsigned flags) {
  std::vector<std::string> pieces, out;
  FXString::Split(text, delimiter, pieces, flags);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    std::string token = pieces[i];
    if (token.size() >= 2 && token.front() == '"' && token.back() != '"') {
      while (i + 1 < pieces.size()) {
        const std::string& next = pieces[++i];
        token += delimiter + next;
        if (!next.empty() && next.back() == '"') break;
      }
    }
    out.push_back(token);
  }
  return out;
}

}  // namespace

// The first byte picks the delimiter (one or two characters from a small
// set) and the flag; the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  static const char* const kDelimiters[] = {" ", ";", "\"", " \"", "\" ", "  ", "ab", ""};
  const std::string delimiter = kDelimiters[data[0] % 8];
  const unsigned flags = (data[0] >> 3) & 1;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

  std::vector<std::string> out;
  FXString::SplitArguments(text, delimiter, out, flags);
  std::list<std::string> listed;
  FXString::SplitArguments(text, delimiter, listed, flags);
  FUZZ_CHECK(std::vector<std::string>(listed.begin(), listed.end()) == out);
  FUZZ_CHECK(out == Model(text, delimiter, flags));
  if (flags == 0 && !text.empty()) FUZZ_CHECK(FXString::Join(out, delimiter) == text);
  return 0;
}
