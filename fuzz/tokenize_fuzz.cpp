// CZuString::Tokenize: the three forms agree where they describe the same
// split; text without quote or escape characters splits exactly on the
// delimiter; and any list of tokens, quoted and escaped, comes back whole.
#include <text/ZuString.h>

#include "FuzzCheck.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Strings(const std::vector<CZuString>& tokens) {
  std::vector<std::string> out;
  for (const CZuString& t : tokens) out.emplace_back(t.c_str(), t.Length());
  return out;
}

// Plain splitting on one character.
std::vector<std::string> SplitModel(const std::string& text, char delimiter, bool keepEmpty) {
  std::vector<std::string> out;
  if (text.empty()) return out;
  std::string token;
  for (char c : text) {
    if (c == delimiter) {
      if (keepEmpty || !token.empty()) out.push_back(token);
      token.clear();
    } else {
      token += c;
    }
  }
  if (keepEmpty || !token.empty()) out.push_back(token);
  return out;
}

void Forms(const std::string& text, char open, char close, char escape, char delimiter, bool keepEmpty) {
  const CZuString s(text.c_str());
  std::vector<CZuString> one, many, quotes;
  s.Tokenize(one, open, close, escape, delimiter, keepEmpty);
  const char delimiters[] = {delimiter, '\0'};
  s.Tokenize(many, open, close, escape, delimiters, keepEmpty);
  const char opens[] = {open, '\0'}, closes[] = {close, '\0'};
  s.Tokenize(quotes, opens, closes, escape, delimiter, keepEmpty);
  const auto expected = Strings(one);
  FUZZ_CHECK(Strings(quotes) == expected);
  if (delimiter != '\0') FUZZ_CHECK(Strings(many) == expected);
  std::size_t total = 0;
  for (const auto& t : expected) total += t.size();
  FUZZ_CHECK(total <= text.size());
  if (text.find_first_of(std::string{open, close, escape}) == std::string::npos)
    FUZZ_CHECK(expected == SplitModel(text, delimiter, keepEmpty));
}

// Quotes every token, escaping the escape and the closing quote inside.
void RoundTrip(const std::vector<std::string>& tokens) {
  std::string text;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (i > 0) text += ',';
    text += '"';
    for (char c : tokens[i]) {
      if (c == '"' || c == '\\') text += '\\';
      text += c;
    }
    text += '"';
  }
  std::vector<CZuString> out;
  CZuString(text.c_str()).Tokenize(out, '"', '"', '\\', ',', true);
  FUZZ_CHECK(Strings(out) == tokens);
}

}  // namespace

// Four bytes pick quotes, escape, delimiter and keepEmpty (from a small set
// so that they meet the text often); the rest is the text, which also
// gives the tokens of the round trip, split at every 0x01.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  static const char kSpecial[] = "\"'\\,; ([)]a";
  const auto pick = [](uint8_t b) { return kSpecial[b % (sizeof kSpecial - 1)]; };
  const char open = pick(data[0]), close = pick(data[1]), escape = pick(data[2]);
  const char delimiter = pick(data[3] >> 1);
  const bool keepEmpty = (data[3] & 1) != 0;
  std::string text;
  for (std::size_t i = 4; i < size; ++i)
    if (data[i] != 0) text += static_cast<char>(data[i]);
  Forms(text, open, close, escape, delimiter, keepEmpty);

  std::vector<std::string> tokens(1);
  for (char c : text) {
    if (c == '\x01') {
      tokens.emplace_back();
    } else {
      tokens.back() += c;
    }
  }
  RoundTrip(tokens);
  return 0;
}
