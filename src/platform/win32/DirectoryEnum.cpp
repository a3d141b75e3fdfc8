#include "platform/DirectoryEnum.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <vector>

#include "errors/ErrorUtil.h"
#include "platform/SystemError.h"
#include "platform/win32/WinString.h"

namespace FXPlatform {
namespace {

// UTF-16 to UTF-8 into a string that keeps its capacity; false on an
// unpaired surrogate, which UTF-8 cannot carry.
bool ToUtf8(const wchar_t* text, std::string& out) {
  out.clear();
  for (const wchar_t* p = text; *p != L'\0'; ++p) {
    unsigned long c = static_cast<unsigned short>(*p);
    if (c >= 0xD800 && c <= 0xDFFF) {
      const unsigned long low = static_cast<unsigned short>(p[1]);
      if (c > 0xDBFF || low < 0xDC00 || low > 0xDFFF) return false;
      c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
      ++p;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return true;
}

// The name with every unpaired surrogate shown as \uXXXX.
std::string ShowName(const wchar_t* text) {
  std::string shown;
  std::wstring piece;
  for (const wchar_t* p = text; *p != L'\0'; ++p) {
    const unsigned c = static_cast<unsigned short>(*p);
    const unsigned next = static_cast<unsigned short>(p[1]);
    if (c >= 0xD800 && c <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF) {
      piece.append(p, 2);
      ++p;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      shown += Narrow(piece);
      piece.clear();
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04X", c);
      shown += escaped;
    } else {
      piece += *p;
    }
  }
  return shown + Narrow(piece);
}

}  // namespace

struct CDirectoryEnum::TState {
  HANDLE find = INVALID_HANDLE_VALUE;
  bool pending = false;    // `data` holds an entry not handed out yet
  bool exhausted = false;
  WIN32_FIND_DATAW data;
  std::string path;
};

CDirectoryEnum::CDirectoryEnum() : m_state(new TState) {}

CDirectoryEnum::~CDirectoryEnum() { Close(); }

void CDirectoryEnum::Close() {
  if (m_state->find != INVALID_HANDLE_VALUE) ::FindClose(m_state->find);
  m_state->find = INVALID_HANDLE_VALUE;
  m_state->pending = false;
  m_state->exhausted = true;
}

CZuError CDirectoryEnum::Open(const std::string& folder) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CDirectoryEnum::Open");
  Close();
  TState& s = *m_state;
  CZuError result = SystemPathOf(folder, s.path);
  if (result.IsError()) return result.Push(here);
  std::wstring pattern = Widen(s.path);
  if (!pattern.empty() && pattern.back() != L'\\') pattern += L'\\';
  pattern += L'*';
  s.find = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &s.data, FindExSearchNameMatch, nullptr,
                              FIND_FIRST_EX_LARGE_FETCH);
  if (s.find == INVALID_HANDLE_VALUE) {
    const TSystemError error = LastSystemError();
    // A folder without even "." (a drive's root can be one) is empty.
    if (error.win32 != ERROR_FILE_NOT_FOUND)
      return ErrorFromSystem(here, error).Push(here, "Folder=[%s]", folder.c_str());
    s.exhausted = true;
  } else {
    s.pending = true;
    s.exhausted = false;
  }
  ++m_opened;
  return CZuError::Success();
}

EFindStep CDirectoryEnum::Next(TFindData& data, CZuError& error) {
  const FXCodeLocation here = ZU_HERE("FXPlatform::CDirectoryEnum::Next");
  TState& s = *m_state;
  for (;;) {
    if (!s.pending) {
      if (s.exhausted || s.find == INVALID_HANDLE_VALUE) {
        error = FXErrorUtil::ErrorWin32(here, ERROR_NO_MORE_FILES);
        return EFindStep::kEnd;
      }
      if (!::FindNextFileW(s.find, &s.data)) {
        const TSystemError failure = LastSystemError();
        s.exhausted = true;
        if (failure.win32 == ERROR_NO_MORE_FILES) continue;
        error = ErrorFromSystem(here, failure).Push(here, "Folder=[%s]", s.path.c_str());
        return EFindStep::kFailed;
      }
    }
    s.pending = false;
    const wchar_t* name = s.data.cFileName;
    if (name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'))) continue;
    if (!ToUtf8(name, data.cFileName)) {
      data.cFileName = ShowName(name);
      data.cAlternateFileName.clear();
      error = FXErrorUtil::ErrorWin32(here, ERROR_NO_UNICODE_TRANSLATION,
                                      "The name is not valid UTF-16, Name=[%s], Folder=[%s]", data.cFileName.c_str(),
                                      s.path.c_str());
      return EFindStep::kFailedEntry;
    }
    ToUtf8(s.data.cAlternateFileName, data.cAlternateFileName);
    data.dwFileAttributes = s.data.dwFileAttributes;
    data.ftCreationTime = CTimeStamp::FromFileTime(s.data.ftCreationTime);
    data.ftLastAccessTime = CTimeStamp::FromFileTime(s.data.ftLastAccessTime);
    data.ftLastWriteTime = CTimeStamp::FromFileTime(s.data.ftLastWriteTime);
    data.nFileSize = (static_cast<unsigned long long>(s.data.nFileSizeHigh) << 32) | s.data.nFileSizeLow;
    data.dwReserved0 = (s.data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) ? s.data.dwReserved0 : 0;
    return EFindStep::kEntry;
  }
}

}  // namespace FXPlatform
