// Classification, sameness and ancestry, the normal and long forms, and
// joining: pure text, the same on every platform.
#include <cstring>
#include <cwchar>

#include "paths/PathText.h"
#include "text/UTFCore.h"
#include "text/StringConvert.h"

namespace FXPath {
namespace Detail {

bool IsWellFormed(TView<char> text) {
  const auto* s = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto* const e = s + text.size();
  while (s < e) {
    const std::size_t length = FXUTFDetail::WellFormedLength(s, e);
    if (length == 0) return false;
    s += length;
  }
  return true;
}

bool IsWellFormed(TView<wchar_t> text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<std::uint32_t>(text[i]);
    if constexpr (sizeof(wchar_t) == 2) {
      if (c >= 0xD800 && c <= 0xDBFF) {
        const auto next = i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) : 0u;
        if (next < 0xDC00 || next > 0xDFFF) return false;
        ++i;
      } else if (c >= 0xDC00 && c <= 0xDFFF) {
        return false;
      }
    } else if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      return false;
    }
  }
  return true;
}

namespace {

template <class Char>
bool FoldedFrom(TView<Char> a, TView<Char> b, std::size_t from) {
  const auto* pa = reinterpret_cast<const unsigned char*>(a.data());
  const auto* pb = reinterpret_cast<const unsigned char*>(b.data());
  const std::size_t bytes = a.size() * sizeof(Char);
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (bytes < kWord) {
    for (std::size_t i = 0; i < a.size(); ++i)
      if (a[i] != b[i] && Lower(a[i]) != Lower(b[i])) return false;
    return true;
  }
  // As in EqualNoCase, the last word overlaps the one before. Words are
  // folded whether or not they differ: a branch on that would follow the
  // text and be mispredicted.
  auto same = [pa, pb](std::size_t at) {
    return FoldAsciiWord<Char>(LoadWord(pa + at)) == FoldAsciiWord<Char>(LoadWord(pb + at));
  };
  for (std::size_t i = from; i + kWord < bytes; i += kWord)
    if (!same(i)) return false;
  return same(bytes - kWord);
}

}  // namespace

bool EqualFoldedFrom(TView<char> a, TView<char> b, std::size_t from) { return FoldedFrom(a, b, from); }
bool EqualFoldedFrom(TView<wchar_t> a, TView<wchar_t> b, std::size_t from) { return FoldedFrom(a, b, from); }

std::string ToSystem(const std::wstring& text) { return FXString::ToString(text); }
std::string Printable(TView<wchar_t> text) { return FXString::ToString(std::wstring(text)); }
void FromSystem(const std::string& text, std::wstring& out) { out = FXString::ToWstring(text); }

namespace {

template <class Char>
void NormalForm(TString<Char>& path) {
  const TView<Char> p(path);
  if (StartsWith(p, "\\\\?\\UNC\\"))
    path.erase(2, 6);  // "\\?\UNC\srv" -> "\\srv"
  else if (StartsWith(p, "\\\\?\\") && p.size() >= 6 && p[5] == Char(':'))
    path.erase(0, 4);
}

template <class Char>
CZuError LongForm(TString<Char>& path) {
  const TView<Char> p(path);
  if (StartsWith(p, "\\\\?\\") || StartsWith(p, "\\\\.\\")) return CZuError::Success();
  TString<Char> result;
  if (StartsWith(p, "\\\\")) {
    AppendAscii(result, "\\\\?\\UNC\\");
    result.append(p.substr(2));
  } else if (IsFullyQualified(p)) {
    AppendAscii(result, "\\\\?\\");
    result.append(p);
  } else {
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::MakeLongPath"), ERROR_INVALID_PARAMETER,
                                   "Path is not fully qualified, Path=[%s]", Printable(TView<Char>(path)).c_str());
  }
  if (result.size() >= kMaxPathLength)
    return TooLong("FXPath::MakeLongPath", result.size());
  path.swap(result);
  return CZuError::Success();
}

template <class Char>
std::size_t Length(const Char* s) {
  if constexpr (sizeof(Char) == 1)
    return std::strlen(s);
  else
    return std::wcslen(s);
}

template <class Char>
CZuError AppendToBuffer(Char* buffer, std::size_t bufferSize, const Char* tail, unsigned int flags) {
  if (buffer == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::Append"), ERROR_INVALID_PARAMETER, "Path is NULL");
  // The base is read only within the buffer, terminated or not.
  const Char* end = std::char_traits<Char>::find(buffer, bufferSize, Char(0));
  if (end == nullptr)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::Append"), ERROR_INSUFFICIENT_BUFFER,
                                   "Path is not terminated within its buffer, BufferSize=%llu",
                                   static_cast<unsigned long long>(bufferSize));
  const TView<Char> base(buffer, static_cast<std::size_t>(end - buffer));
  const TView<Char> tailView = tail == nullptr ? TView<Char>() : TView<Char>(tail, Length(tail));
  const TAppendPlan<Char> plan = PlanAppend(base, tailView, flags);
  if (plan.nothing) return CZuError::Success();
  const std::size_t length = base.size() + (plan.separator ? 1 : 0) + plan.tail.size();
  if (length >= bufferSize)
    return FXErrorUtil::ErrorWin32(ZU_HERE("FXPath::Append"), ERROR_INSUFFICIENT_BUFFER,
                                   "Buffer too small, Needed=%llu, BufferSize=%llu",
                                   static_cast<unsigned long long>(length + 1),
                                   static_cast<unsigned long long>(bufferSize));
  Char* out = buffer + base.size();
  if (plan.separator) *out++ = kSep<Char>;
  // The tail may lie in the buffer itself.
  std::char_traits<Char>::move(out, plan.tail.data(), plan.tail.size());
  out[plan.tail.size()] = Char(0);
  return CZuError::Success();
}

template <class Char>
CZuError RemoveTrailing(Char* path) {
  if (path == nullptr) return CZuError::Success();
  const std::size_t n = Length(path);
  if (n > 0 && path[n - 1] == kSep<Char>) path[n - 1] = Char(0);
  return CZuError::Success();
}

}  // namespace
}  // namespace Detail

using namespace Detail;

bool IsDevicePath(const std::string& path) { return DevicePath<char>(path); }
bool IsDevicePath(const std::wstring& path) { return DevicePath<wchar_t>(path); }
bool IsShadowPath(const std::string& path) { return ShadowPath<char>(path); }
bool IsShadowPath(const std::wstring& path) { return ShadowPath<wchar_t>(path); }
bool IsVolumeGuidPath(const std::string& path) { return VolumeGuidPath<char>(path); }
bool IsVolumeGuidPath(const std::wstring& path) { return VolumeGuidPath<wchar_t>(path); }
bool IsVolumeUniqueId(const std::string& text) { return VolumeUniqueId<char>(text); }
bool IsVolumeUniqueId(const std::wstring& text) { return VolumeUniqueId<wchar_t>(text); }

bool IsSamePathAs(const std::string& a, const std::string& b) { return SamePath<char>(a, b); }
bool IsSamePathAs(const std::wstring& a, const std::wstring& b) { return SamePath<wchar_t>(a, b); }
bool IsAncestorOf(const std::string& a, const std::string& b, bool allowEqual) {
  return Ancestor<char>(a, b, allowEqual);
}
bool IsAncestorOf(const std::wstring& a, const std::wstring& b, bool allowEqual) {
  return Ancestor<wchar_t>(a, b, allowEqual);
}

CZuError MakeNormalPath(std::string& path) {
  NormalForm(path);
  return CZuError::Success();
}
CZuError MakeNormalPath(std::wstring& path) {
  NormalForm(path);
  return CZuError::Success();
}
CZuError MakeNormalPath(const std::string& path, std::string& result) {
  result = path;
  return MakeNormalPath(result);
}
CZuError MakeNormalPath(const std::wstring& path, std::wstring& result) {
  result = path;
  return MakeNormalPath(result);
}

CZuError MakeLongPath(std::string& path) { return LongForm(path); }
CZuError MakeLongPath(std::wstring& path) { return LongForm(path); }

CZuError Append(std::string& base, const std::string& tail, unsigned int flags) {
  return AppendTo<char>(base, tail, flags);
}
CZuError Append(std::wstring& base, const std::wstring& tail, unsigned int flags) {
  return AppendTo<wchar_t>(base, tail, flags);
}
CZuError Append(char* buffer, std::size_t bufferSize, const char* tail, unsigned int flags) {
  return AppendToBuffer(buffer, bufferSize, tail, flags);
}
CZuError Append(wchar_t* buffer, std::size_t bufferSize, const wchar_t* tail, unsigned int flags) {
  return AppendToBuffer(buffer, bufferSize, tail, flags);
}

std::string Join(const std::string& a, const std::string& b, unsigned int flags) {
  std::string result;
  result.reserve(a.size() + b.size() + 1);  // one allocation
  result = a;
  Append(result, b, flags);
  return result;
}
std::wstring Join(const std::wstring& a, const std::wstring& b, unsigned int flags) {
  std::wstring result;
  result.reserve(a.size() + b.size() + 1);  // one allocation
  result = a;
  Append(result, b, flags);
  return result;
}

CZuError RemoveTrailingDelimiter(char* path) { return RemoveTrailing(path); }
CZuError RemoveTrailingDelimiter(wchar_t* path) { return RemoveTrailing(path); }

}  // namespace FXPath
