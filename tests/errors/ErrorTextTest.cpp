// The texts of every domain's items in the three output formats. The rows
// of the first test hold only texts that are the same on every platform:
// the fixed tables, the C runtime texts Windows and wine agree on, and an
// HRESULT no system has words for.
#include <cstdint>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "errors/ErrorText.h"
#include "errors/ErrorUtil.h"
#include "errors/Misc.h"
#include "errors/Win32Error.h"
#include "text/StringAlgo.h"
#include "text/StringFormat.h"

namespace {

using namespace FXErrorUtil;

const FXCodeLocation kHere("t.cpp", "CText::Run", 7);
const EErrorOutputFormat kFull = EErrorOutputFormat::LOGGING_FULL;
const EErrorOutputFormat kCode = EErrorOutputFormat::USER_SINGLE_LINE_CODE;
const EErrorOutputFormat kDescription = EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE;

HRESULT H(std::uint32_t bits) { return static_cast<HRESULT>(bits); }

struct TTextRow {
  const char* what;
  std::function<CZuError()> build;
  const char* full;
  const char* code;         // USER_SINGLE_LINE_CODE
  const char* description;  // USER_SINGLE_LINE_DESCRIPTION_CODE
};

const TTextRow kRows[] = {
    {"Win32 in the table", [] { return ErrorWin32(kHere, 5); },
     "0x80070005:{CText::Run(7)/W32.5.(Access is denied. (ERROR_ACCESS_DENIED.5))}",
     "Access is denied. (ERROR_ACCESS_DENIED.5) (W32.5)", "Access is denied. (ERROR_ACCESS_DENIED.5) (W32.5)"},
    {"Win32 with a description", [] { return ErrorWin32(kHere, 2, "opening %s", "a.txt"); },
     "0x80070002:{CText::Run(7)/W32.2.(The system cannot find the file specified. (ERROR_FILE_NOT_FOUND.2))"
     "-opening a.txt}",
     "The system cannot find the file specified. (ERROR_FILE_NOT_FOUND.2) (W32.2)",
     "The system cannot find the file specified. (ERROR_FILE_NOT_FOUND.2), opening a.txt (W32.2)"},
    {"Win32 with an empty description", [] { return ErrorWin32(kHere, 87, "%s", ""); },
     "0x80070057:{CText::Run(7)/W32.87.(The parameter is incorrect. (ERROR_INVALID_PARAMETER.87))-}",
     "The parameter is incorrect. (ERROR_INVALID_PARAMETER.87) (W32.87)",
     "The parameter is incorrect. (ERROR_INVALID_PARAMETER.87) (W32.87)"},
    {"Win32 zero", [] { return ErrorWin32(kHere, 0); },
     "0x80070306:{CText::Run(7)/W32.0.(The operation completed successfully. (ERROR_SUCCESS.0))}",
     "The operation completed successfully. (ERROR_SUCCESS.0) (W32.0)",
     "The operation completed successfully. (ERROR_SUCCESS.0) (W32.0)"},
    {"HResult without system text", [] { return ErrorHResult(kHere, H(0xE0041234), "disk %d", 2); },
     "0xE0041234:{CText::Run(7)/HR.0xE0041234-()-disk 2}", "(HR.0xE0041234)", "disk 2 (HR.0xE0041234)"},
    {"ErrNo", [] { return ErrorErrNo(kHere, 2); },
     "0xECCC0002:{CText::Run(7)/ErrNo.2.(No such file or directory)}", "No such file or directory (ErrNo.2)",
     "No such file or directory (ErrNo.2)"},
    {"ErrNo with a description", [] { return ErrorErrNo(kHere, 13, "%s", "C:\\x"); },
     "0xECCC000D:{CText::Run(7)/ErrNo.13.(Permission denied)-C:\\x}", "Permission denied (ErrNo.13)",
     "Permission denied, C:\\x (ErrNo.13)"},
    {"ErrNo unknown to the runtime", [] { return ErrorErrNo(kHere, 77); },
     "0xECCC004D:{CText::Run(7)/ErrNo.77.(Unknown error)}", "Unknown error (ErrNo.77)",
     "Unknown error (ErrNo.77)"},
    {"Http reads as an errno number", [] { return ErrorHttp(kHere, 404); },
     "0xEC000194:{CText::Run(7)/http.404.(Unknown error)}", "Unknown error (http.404)",
     "Unknown error (http.404)"},
    {"Int", [] { return ErrorInt(kHere, -2, "count %u", 3u); },
     "0xFFFFFFFE:{CText::Run(7)/Int.-2.0xFFFFFFFE-count 3}", "Error (Int.-2.0xFFFFFFFE)",
     "count 3 (Int.-2.0xFFFFFFFE)"},
    {"SQLite extended code", [] { return ErrorSQLite(kHere, 266); },
     "0xEDB0010A:{CText::Run(7)/SQL.0x10A.(Some kind of disk I/O error occurred: (10 | (1<<8)) (0x10A))}",
     "Some kind of disk I/O error occurred: (10 | (1<<8)) (0x10A) (SQL.0x10A)",
     "Some kind of disk I/O error occurred: (10 | (1<<8)) (0x10A) (SQL.0x10A)"},
    {"SQLite name kept as stored", [] { return ErrorSQLite(kHere, 0xB13, "table %s", "t"); },
     "0xEDB00B13:{CText::Run(7)/SQL.0xB13.(Abort due to constraint violation: (19 |(11<<8)) (0xB13))-table t}",
     "Abort due to constraint violation: (19 |(11<<8)) (0xB13) (SQL.0xB13)",
     "Abort due to constraint violation: (19 |(11<<8)) (0xB13), table t (SQL.0xB13)"},
    {"SQLite primary code", [] { return ErrorSQLite(kHere, 101); },
     "0xEDB00065:{CText::Run(7)/SQL.0x65.(sqlite3_step() has finished executing: 101 (0x65))}",
     "sqlite3_step() has finished executing: 101 (0x65) (SQL.0x65)",
     "sqlite3_step() has finished executing: 101 (0x65) (SQL.0x65)"},
    {"SQLite code without a name", [] { return ErrorSQLite(kHere, 0x1234); },
     "0xEDB01234:{CText::Run(7)/SQL.0x1234.(Unknown:  (0x1234))}", "Unknown:  (0x1234) (SQL.0x1234)",
     "Unknown:  (0x1234) (SQL.0x1234)"},
    {"TQResult", [] { return ErrorTQResult(kHere, 0); },
     "0xEDA00000:{CText::Run(7)/TQ.0x0}", "Error (TQ.0x0)", "CText::Run(7)/TQ.0x0"},
    {"EventMessage without lookup", [] { return ErrorEventMessage(kHere, 0x05000101, "job %d", 4); },
     "0xE8050101:{CText::Run(7)/EventMessage.0x05000101.5:257. (Localized string unavailable)-job 4}", "",
     "job 4"},
    {"pushed items are context, the root cause speaks",
     [] {
       CZuError r = ErrorSQLite(kHere, 5);
       PushWin32(r, FXCodeLocation("u.cpp", "CUser::Save", 9), 112, "saving %s", "db");
       return PushHttp(r, FXCodeLocation("v.cpp", "CWeb::Get", 3), 500);
     },
     "0xEDB00005:{CWeb::Get(3)/http.500.(Unknown error)} + "
     "{CUser::Save(9)/W32.112.(There is not enough space on the disk. (ERROR_DISK_FULL.112))-saving db} + "
     "{CText::Run(7)/SQL.0x5.(The database file is locked: 5 (0x5))}",
     "The database file is locked: 5 (0x5) (SQL.0x5)", "The database file is locked: 5 (0x5) (SQL.0x5)"},
};

TEST(ErrorText, EveryDomainInEveryFormat) {
  FXErrorUtil::UnloadAndDisableEventMessageLookup();
  for (const TTextRow& row : kRows) {
    SCOPED_TRACE(row.what);
    const CZuError r = row.build();
    EXPECT_EQ(row.full, r.AsString(kFull));
    EXPECT_EQ(row.code, r.AsString(kCode));
    EXPECT_EQ(row.description, r.AsString(kDescription));
  }
}

bool HasLineBreak(const std::string& s) { return s.find_first_of("\r\n") != std::string::npos; }

TEST(ErrorText, SystemMessagesAreOneLineAndFallBackToTheNumber) {
  // Windows has words for 1450 and 0x80070005 (wine's differ from Windows's,
  // so only their shape is compared there); POSIX has none for 1450 and
  // the table's for the Win32 code wrapped in the HRESULT.
  const CZuError w = ErrorWin32(kHere, 1450);
  const std::string system = FXMisc::GetFormattedErrorMessageAsString(1450, FXMisc::kErrorMessageSingleLine);
  EXPECT_FALSE(HasLineBreak(system));
  EXPECT_EQ(kZuIsWindows, !system.empty());
  EXPECT_EQ(system + " (1450)", EWin32Error::AsString(1450));
  EXPECT_EQ("0x800705AA:{CText::Run(7)/W32.1450.(" + system + " (1450))}", w.AsString());
  std::string line = system + " (1450) (W32.1450)";
  FXString::Trim(line, " ");
  EXPECT_EQ(line, w.AsString(kCode));

  const CZuError h = ErrorHResult(kHere, E_ACCESSDENIED);
  const std::string words = FXMisc::GetFormattedErrorMessageAsString(static_cast<DWORD>(E_ACCESSDENIED), 2);
  EXPECT_FALSE(words.empty());
  EXPECT_FALSE(HasLineBreak(words));
  if (!kZuIsWindows) {
    EXPECT_EQ("Access is denied.", words);
  }
  EXPECT_EQ("0x80070005:{CText::Run(7)/HR.0x80070005-(" + words + ")}", h.AsString());
  EXPECT_EQ(words + " (HR.0x80070005)", h.AsString(kCode));
}

TEST(ErrorText, CRuntimeTextsOutsideWhatEveryRuntimeAgreesOn) {
  // The POSIX table is the Microsoft runtime's; mingw-w64's msvcrt.dll (and
  // wine's) has its own words below 43 and none for the POSIX supplement.
  const struct {
    int number;
    const char* text;
  } kOwnTable[] = {{0, "No error"},         {12, "Not enough space"},      {16, "Resource device"},
                   {42, "Illegal byte sequence"}, {43, "Unknown error"}, {99, "Unknown error"},
                   {100, "address in use"}, {137, "stream timeout"},      {140, "operation would block"},
                   {141, "Unknown error"},  {-1, "Unknown error"}};
  for (const auto& row : kOwnTable) {
    SCOPED_TRACE(row.number);
    const std::string text = ErrorErrNo(kHere, row.number).AsString(kCode);
    EXPECT_FALSE(text.empty());
    if (!kZuIsWindows) {
      EXPECT_EQ(row.text + (" (ErrNo." + std::to_string(row.number) + ")"), text);
    }
  }
}

TEST(ErrorText, Win32DisplayTable) {
  std::size_t count = 0;
  const TWin32ErrorName* table = EWin32Error::DisplayTable(count);
  ASSERT_EQ(55u, count);
  for (std::size_t i = 0; i < count; ++i) {
    const TWin32ErrorName& row = table[i];
    SCOPED_TRACE(row.name);
    if (i > 0) {
      EXPECT_LT(table[i - 1].value, row.value);
    }
    EXPECT_EQ(&row, EWin32Error::Find(row.value));
    EXPECT_EQ(std::wstring(row.name, row.name + std::char_traits<char>::length(row.name)), row.wname);
    EXPECT_EQ(std::wstring(row.message, row.message + std::char_traits<char>::length(row.message)), row.wmessage);
    EXPECT_EQ('.', row.message[std::char_traits<char>::length(row.message) - 1]);
  }
  // The codes the library speaks in are all there, under their own names.
  for (const DWORD code : {3, 14, 85, 87, 111, 122, 160, 582, 774, 1064, 1168, 1608, 1627, 1630, 1804})
    EXPECT_NE(nullptr, EWin32Error::Find(code)) << code;
  EXPECT_STREQ("ERROR_ILLEGAL_CHARACTER", EWin32Error::Find(ERROR_ILLEGAL_CHARACTER)->name);
  EXPECT_STREQ("WAIT_TIMEOUT", EWin32Error::Find(WAIT_TIMEOUT)->name);
  EXPECT_STREQ("ERROR_RESOURCE_NOT_AVAILABLE", EWin32Error::Find(ERROR_RESOURCE_NOT_AVAILABLE)->name);
  EXPECT_EQ(nullptr, EWin32Error::Find(4));

  EWin32Error e(ERROR_ACCESS_DENIED);
  EXPECT_EQ("Access is denied. (ERROR_ACCESS_DENIED.5)", e.AsString());
  EXPECT_EQ(L"Access is denied. (ERROR_ACCESS_DENIED.5)", e.AsWstring());
  EXPECT_EQ(L"Element not found. (ERROR_NOT_FOUND.1168)", EWin32Error::AsWstring(ERROR_NOT_FOUND));
  e.FromValue(WAIT_TIMEOUT);
  EXPECT_TRUE(e.IsSelected(WAIT_TIMEOUT));
  EXPECT_EQ(DWORD(258), e.AsEnum());
  e.Select(0);
  EXPECT_EQ("The operation completed successfully. (ERROR_SUCCESS.0)", e.AsString());

  // Outside the table: the system's words (none outside Windows) and the number.
  const std::wstring wide = EWin32Error::AsWstring(1450);
  EXPECT_EQ(L" (1450)", wide.substr(wide.size() - 7));
  EXPECT_EQ(kZuIsWindows, wide.size() > 7);
}

TEST(ErrorText, FormattedErrorMessageFlags) {
  // A table code outside Windows, an HRESULT no system knows everywhere.
  const std::string raw = FXMisc::GetFormattedErrorMessageAsString(5, 0);
  const std::string single = FXMisc::GetFormattedErrorMessageAsString(5, FXMisc::kErrorMessageSingleLine);
  ASSERT_FALSE(raw.empty());
  EXPECT_FALSE(HasLineBreak(single));
  EXPECT_NE(' ', single.back());
  EXPECT_EQ("[0x5 5] " + raw, FXMisc::GetFormattedErrorMessageAsString(5, FXMisc::kErrorMessageWithCode));
  EXPECT_EQ("[0x5 5] " + single, FXMisc::GetFormattedErrorMessageAsString(5, 3));
  EXPECT_EQ(L"[0x5 5] ", FXMisc::GetFormattedErrorMessageAsWstring(5, 3).substr(0, 8));
  if (!kZuIsWindows) {
    EXPECT_EQ("Access is denied.", raw);
  }

  EXPECT_EQ("", FXMisc::GetFormattedErrorMessageAsString(0xE0041234, 2));
  EXPECT_EQ("[0xE0041234 3758363188] ", FXMisc::GetFormattedErrorMessageAsString(0xE0041234, 3));
  EXPECT_EQ(L"", FXMisc::GetFormattedErrorMessageAsWstring(0xE0041234, 0));
}

TEST(ErrorText, SingleLineShape) {
  const struct {
    const char* in;
    const char* out;
  } kCases[] = {{"Access is denied.\r\n", "Access is denied."},
                {"one\r\ntwo\nthree\rfour \r\n \r\n", "one two three four"},
                {"a\r\n\r\nb", "a  b"},
                {" \r\n", ""},
                {"", ""},
                {"  lead kept", "  lead kept"}};
  for (const auto& c : kCases) {
    std::string s = c.in;
    FXErrorText::MakeSingleLine(s);
    EXPECT_EQ(c.out, s);
    std::wstring w(c.in, c.in + std::char_traits<char>::length(c.in));
    FXErrorText::MakeSingleLine(w);
    EXPECT_EQ(std::wstring(c.out, c.out + std::char_traits<char>::length(c.out)), w);
  }
}

TEST(ErrorBuilders, ZeroAndOverflowInEveryDomain) {
  const std::string huge(200000, 'y');
  const struct {
    const char* tag;
    CZuError plain, described;
    HRESULT code;
  } kCases[] = {
      {"/W32.0.", ErrorWin32(kHere, 0), ErrorWin32(kHere, 0, "%s", huge.c_str()), H(0x80070306)},
      {"/HR.0x0-", ErrorHResult(kHere, 0), ErrorHResult(kHere, 0, "%s", huge.c_str()), 0},
      {"/ErrNo.0", ErrorErrNo(kHere, 0), ErrorErrNo(kHere, 0, "%s", huge.c_str()), H(0xECCC0000)},
      {"/http.0", ErrorHttp(kHere, 0), ErrorHttp(kHere, 0, "%s", huge.c_str()), H(0xEC000000)},
      {"/Int.0.0x0", ErrorInt(kHere, 0), ErrorInt(kHere, 0, "%s", huge.c_str()), H(0xEDDD0000)},
      {"/SQL.0x0.", ErrorSQLite(kHere, 0), ErrorSQLite(kHere, 0, "%s", huge.c_str()), H(0xEDB00000)},
      {"/TQ.0x0", ErrorTQResult(kHere, 0), ErrorTQResult(kHere, 0, "%s", huge.c_str()), H(0xEDA00000)},
      {"/EventMessage.0x00000000.0:0.", ErrorEventMessage(kHere, 0),
       ErrorEventMessage(kHere, 0, "%s", huge.c_str()), 0},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.tag);
    EXPECT_EQ(c.code, c.plain.GetErrorCode());
    EXPECT_EQ(c.code, c.described.GetErrorCode());
    const std::string start = FXString::Format("0x%X:{CText::Run(7)", static_cast<unsigned>(c.code)) + c.tag;
    EXPECT_EQ(start, c.plain.AsString().substr(0, start.size()));
    const std::string full = c.described.AsString();
    EXPECT_NE(std::string::npos, full.find("-[BUFFEROVERFLOW] yyy"));
    EXPECT_LT(full.size(), huge.size());
  }
}

TEST(ErrorBuilders, PushKeepsTheCodeAndIsFoldsLikeTheBuilder) {
  FXErrorUtil::CompileErrorMappingsIntoContainer();
  CZuError r = ErrorErrNo(kHere, 2);
  PushHResult(r, kHere, E_FAIL, "ctx");
  PushErrNo(r, kHere, 13);
  PushInt(r, kHere, 1);
  PushSQLite(r, kHere, 5, "%d", 1);
  PushTQResult(r, kHere, 2);
  PushEventMessage(r, kHere, 0x05000101, "x");
  EXPECT_EQ(H(0xECCC0002), r.GetErrorCode());
  EXPECT_EQ("No such file or directory (ErrNo.2)", r.AsString(kCode));

  EXPECT_TRUE(IsWin32(ErrorErrNo(kHere, 2), 3));  // through the equivalence table
  EXPECT_TRUE(IsErrNo(ErrorWin32(kHere, 5), 13));
  EXPECT_TRUE(IsNotErrNo(ErrorWin32(kHere, 6), 13));
  EXPECT_TRUE(IsHResult(ErrorWin32(kHere, 5), E_ACCESSDENIED));
  EXPECT_TRUE(IsHttp(ErrorHttp(kHere, 404), 404));
  EXPECT_TRUE(IsNotHttp(ErrorHttp(kHere, 404), 403));
  EXPECT_TRUE(IsInt(ErrorInt(kHere, -2), -2));
  EXPECT_TRUE(IsSQLite(ErrorSQLite(kHere, 266), 266));
  EXPECT_TRUE(IsNotSQLite(ErrorSQLite(kHere, 266), 10));
  EXPECT_TRUE(IsTQResult(ErrorTQResult(kHere, 7), 7));
  EXPECT_TRUE(IsNotTQResult(ErrorInt(kHere, 7), 7));
  // The builder's value 0 stands for 774; Is compares 0 as it is.
  EXPECT_TRUE(IsWin32(ErrorWin32(kHere, 0), ERROR_ERRORS_ENCOUNTERED));
  EXPECT_TRUE(IsWin32(CZuError::Success(), 0));
}

}  // namespace
