// FXPath's text rules on arbitrary bytes: narrow and wide overloads agree
// (the input widened byte by byte), sameness agrees with a plain reading of
// its rule, joining into a buffer agrees with joining strings, and the long
// form of a path comes back by the normal form.
#include <paths/Path.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::wstring Widen(const std::string& s) {
  std::wstring w;
  for (unsigned char c : s) w.push_back(static_cast<wchar_t>(c));
  return w;
}

// The sameness rule read plainly, with std::string operations only.
bool ReferenceSame(std::string a, std::string b) {
  auto reduce = [](std::string& p, bool& unc) {
    auto startsNoCase = [&p](const std::string& prefix) {
      if (p.size() < prefix.size()) return false;
      for (std::size_t i = 0; i < prefix.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(p[i])) != std::tolower(static_cast<unsigned char>(prefix[i])))
          return false;
      return true;
    };
    unc = false;
    if (startsNoCase("\\\\?\\")) {
      p.erase(0, 4);
      if (startsNoCase("UNC\\")) {
        p.erase(0, 4);
        unc = true;
      }
    } else if (startsNoCase("\\\\")) {
      p.erase(0, 2);
      unc = true;
    } else if (startsNoCase("\\")) {
      p.erase(0, 1);
    }
    if (!p.empty() && p.back() == '\\') p.pop_back();
    for (char& c : p)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  };
  bool uncA, uncB;
  reduce(a, uncA);
  reduce(b, uncB);
  return uncA == uncB && a == b;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = input.find('\0');
  const std::string a = input.substr(0, cut);
  const std::string b = cut == std::string::npos ? std::string() : input.substr(cut + 1);
  const std::wstring wa = Widen(a), wb = Widen(b);

  const bool same = FXPath::IsSamePathAs(a, b);
  Check(same == ReferenceSame(a, b));
  Check(same == FXPath::IsSamePathAs(b, a));
  Check(same == FXPath::IsSamePathAs(wa, wb));
  for (bool allowEqual : {false, true})
    Check(FXPath::IsAncestorOf(a, b, allowEqual) == FXPath::IsAncestorOf(wa, wb, allowEqual));
  Check(FXPath::IsDevicePath(a) == FXPath::IsDevicePath(wa));
  Check(FXPath::IsShadowPath(a) == FXPath::IsShadowPath(wa));
  Check(FXPath::IsVolumeGuidPath(a) == FXPath::IsVolumeGuidPath(wa));

  std::string parent, leaf;
  std::wstring wparent, wleaf;
  const bool split = !FXPath::SplitParentPath(a, parent, leaf).IsError();
  Check(split == !FXPath::SplitParentPath(wa, wparent, wleaf).IsError());
  if (split) {
    Check(Widen(parent) == wparent && Widen(leaf) == wleaf);
    Check(a.compare(0, parent.size(), parent) == 0 && leaf.find('\\') == std::string::npos);
  }

  // Joining strings and joining into a buffer of exactly the right size.
  const unsigned int flags = size > 0 ? data[0] & 0x5 : 0;
  if (a.find('\0') == std::string::npos && b.find('\0') == std::string::npos) {
    std::string joined = a;
    if (!FXPath::Append(joined, b, flags).IsError()) {
      Check(joined.compare(0, a.size(), a) == 0 && joined.size() <= a.size() + 1 + b.size());
      std::vector<char> buffer(joined.size() + 1, 'x');
      std::memcpy(buffer.data(), a.c_str(), a.size() + 1);
      Check(!FXPath::Append(buffer.data(), buffer.size(), b.c_str(), flags).IsError());
      Check(joined == buffer.data());
      if (joined.size() > a.size()) {  // one character less does not fit and changes nothing
        std::vector<char> tight(joined.size(), 'x');
        std::memcpy(tight.data(), a.c_str(), a.size() + 1);
        Check(FXPath::Append(tight.data(), tight.size(), b.c_str(), flags).IsError());
        Check(a == tight.data());
      }
    }
  }

  std::string longForm = a;
  if (a.compare(0, 4, "\\\\?\\") != 0 && a.compare(0, 4, "\\\\.\\") != 0 && !FXPath::MakeLongPath(longForm).IsError()) {
    std::string normal;
    FXPath::MakeNormalPath(longForm, normal);
    Check(normal == a);
  }
  return 0;
}
