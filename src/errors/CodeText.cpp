// The code text (T) of each domain.
#include <cstdint>
#include <iterator>

#include "errors/ErrorText.h"
#include "errors/Misc.h"
#include "errors/Win32Error.h"
#include "platform/SystemMessage.h"
#include "text/StringFormat.h"

namespace {

// SQLite's primary result texts, chosen by the low 8 bits of a code.
const char* SQLitePrimaryText(int code) {
  switch (code & 0xFF) {
    case 0: return "Successful result";
    case 1: return "Generic error";
    case 2: return "Internal logic error in SQLite";
    case 3: return "Access permission denied";
    case 4: return "Callback routine requested an abort";
    case 5: return "The database file is locked";
    case 6: return "A table in the database is locked";
    case 7: return "A malloc() failed";
    case 8: return "Attempt to write a readonly database";
    case 9: return "Operation terminated by sqlite3_interrupt()";
    case 10: return "Some kind of disk I/O error occurred";
    case 11: return "The database disk image is malformed";
    case 12: return "Unknown opcode in sqlite3_file_control()";
    case 13: return "Insertion failed because database is full";
    case 14: return "Unable to open the database file";
    case 15: return "Database lock protocol error";
    case 16: return "Database is empty";
    case 17: return "The database schema changed";
    case 18: return "String or BLOB exceeds size limit";
    case 19: return "Abort due to constraint violation";
    case 20: return "Data type mismatch";
    case 21: return "Library used incorrectly";
    case 22: return "Uses OS features not supported on host";
    case 23: return "Authorization denied";
    case 24: return "Auxiliary database format error";
    case 25: return "2nd parameter to sqlite3_bind out of range";
    case 26: return "File opened that is not a database file";
    case 27: return "Notice";
    case 28: return "Warning";
    case 100: return "sqlite3_step() has another row ready";
    case 101: return "sqlite3_step() has finished executing";
    default: return "Unknown";
  }
}

struct TSQLiteName {
  int code;
  const char* name;
};

// A code's name is the expression that defines it in sqlite3.h with the
// primary code written as its number, stringified as the preprocessor does
// it (runs of blanks become one, none stay none): an extended code reads as
// primary code and sub-code, "(10 | (1<<8))".
#define ZU_SQLITE_CODE(expression) {expression, #expression}

constexpr TSQLiteName kSQLiteNames[] = {
    ZU_SQLITE_CODE(0), ZU_SQLITE_CODE(1), ZU_SQLITE_CODE(2), ZU_SQLITE_CODE(3), ZU_SQLITE_CODE(4),
    ZU_SQLITE_CODE(5), ZU_SQLITE_CODE(6), ZU_SQLITE_CODE(7), ZU_SQLITE_CODE(8), ZU_SQLITE_CODE(9),
    ZU_SQLITE_CODE(10), ZU_SQLITE_CODE(11), ZU_SQLITE_CODE(12), ZU_SQLITE_CODE(13), ZU_SQLITE_CODE(14),
    ZU_SQLITE_CODE(15), ZU_SQLITE_CODE(16), ZU_SQLITE_CODE(17), ZU_SQLITE_CODE(18), ZU_SQLITE_CODE(19),
    ZU_SQLITE_CODE(20), ZU_SQLITE_CODE(21), ZU_SQLITE_CODE(22), ZU_SQLITE_CODE(23), ZU_SQLITE_CODE(24),
    ZU_SQLITE_CODE(25), ZU_SQLITE_CODE(26), ZU_SQLITE_CODE(27), ZU_SQLITE_CODE(28), ZU_SQLITE_CODE(100),
    ZU_SQLITE_CODE(101),
    ZU_SQLITE_CODE((1 | (1<<8))), ZU_SQLITE_CODE((1 | (2<<8))), ZU_SQLITE_CODE((1 | (3<<8))),
    ZU_SQLITE_CODE((10 | (1<<8))), ZU_SQLITE_CODE((10 | (2<<8))), ZU_SQLITE_CODE((10 | (3<<8))),
    ZU_SQLITE_CODE((10 | (4<<8))), ZU_SQLITE_CODE((10 | (5<<8))), ZU_SQLITE_CODE((10 | (6<<8))),
    ZU_SQLITE_CODE((10 | (7<<8))), ZU_SQLITE_CODE((10 | (8<<8))), ZU_SQLITE_CODE((10 | (9<<8))),
    ZU_SQLITE_CODE((10 | (10<<8))), ZU_SQLITE_CODE((10 | (11<<8))), ZU_SQLITE_CODE((10 | (12<<8))),
    ZU_SQLITE_CODE((10 | (13<<8))), ZU_SQLITE_CODE((10 | (14<<8))), ZU_SQLITE_CODE((10 | (15<<8))),
    ZU_SQLITE_CODE((10 | (16<<8))), ZU_SQLITE_CODE((10 | (17<<8))), ZU_SQLITE_CODE((10 | (18<<8))),
    ZU_SQLITE_CODE((10 | (19<<8))), ZU_SQLITE_CODE((10 | (20<<8))), ZU_SQLITE_CODE((10 | (21<<8))),
    ZU_SQLITE_CODE((10 | (22<<8))), ZU_SQLITE_CODE((10 | (23<<8))), ZU_SQLITE_CODE((10 | (24<<8))),
    ZU_SQLITE_CODE((10 | (25<<8))), ZU_SQLITE_CODE((10 | (26<<8))), ZU_SQLITE_CODE((10 | (27<<8))),
    ZU_SQLITE_CODE((10 | (28<<8))), ZU_SQLITE_CODE((10 | (29<<8))), ZU_SQLITE_CODE((10 | (30<<8))),
    ZU_SQLITE_CODE((10 | (31<<8))), ZU_SQLITE_CODE((10 | (32<<8))), ZU_SQLITE_CODE((10 | (33<<8))),
    ZU_SQLITE_CODE((6 | (1<<8))), ZU_SQLITE_CODE((6 | (2<<8))), ZU_SQLITE_CODE((5 | (1<<8))),
    ZU_SQLITE_CODE((5 | (2<<8))), ZU_SQLITE_CODE((5 | (3<<8))), ZU_SQLITE_CODE((14 | (1<<8))),
    ZU_SQLITE_CODE((14 | (2<<8))), ZU_SQLITE_CODE((14 | (3<<8))), ZU_SQLITE_CODE((14 | (4<<8))),
    ZU_SQLITE_CODE((14 | (5<<8))), ZU_SQLITE_CODE((14 | (6<<8))), ZU_SQLITE_CODE((11 | (1<<8))),
    ZU_SQLITE_CODE((11 | (2<<8))), ZU_SQLITE_CODE((11 | (3<<8))), ZU_SQLITE_CODE((8 | (1<<8))),
    ZU_SQLITE_CODE((8 | (2<<8))), ZU_SQLITE_CODE((8 | (3<<8))), ZU_SQLITE_CODE((8 | (4<<8))),
    ZU_SQLITE_CODE((8 | (5<<8))), ZU_SQLITE_CODE((8 | (6<<8))), ZU_SQLITE_CODE((4 | (2<<8))),
    ZU_SQLITE_CODE((19 | (1<<8))), ZU_SQLITE_CODE((19 | (2<<8))), ZU_SQLITE_CODE((19 | (3<<8))),
    ZU_SQLITE_CODE((19 | (4<<8))), ZU_SQLITE_CODE((19 | (5<<8))), ZU_SQLITE_CODE((19 | (6<<8))),
    ZU_SQLITE_CODE((19 | (7<<8))), ZU_SQLITE_CODE((19 | (8<<8))), ZU_SQLITE_CODE((19 | (9<<8))),
    ZU_SQLITE_CODE((19 |(10<<8))), ZU_SQLITE_CODE((19 |(11<<8))), ZU_SQLITE_CODE((19 |(12<<8))),
    ZU_SQLITE_CODE((27 | (1<<8))), ZU_SQLITE_CODE((27 | (2<<8))), ZU_SQLITE_CODE((28 | (1<<8))),
    ZU_SQLITE_CODE((23 | (1<<8))), ZU_SQLITE_CODE((0 | (1<<8))), ZU_SQLITE_CODE((0 | (2<<8))),
};

#undef ZU_SQLITE_CODE

static_assert(std::size(kSQLiteNames) == 106, "the SQLite name table has 106 rows");

const char* SQLiteName(int code) {
  for (const TSQLiteName& row : kSQLiteNames)
    if (row.code == code) return row.name;
  return "";
}

// The primary text, ": ", the code name and the full code; a code without
// a name keeps only the number.
std::string SQLiteText(int code) {
  return std::string(SQLitePrimaryText(code)) + ": " + SQLiteName(code) +
         FXString::Format(" (0x%lX)", static_cast<unsigned long>(static_cast<std::uint32_t>(code)));
}

}  // namespace

namespace FXErrorText {

std::string CodeText(EErrorDomain domain, const FXErrorItem& item, std::int64_t value, bool singleLine) {
  const std::uint32_t u = static_cast<std::uint32_t>(value);
  const int i = static_cast<int>(u);
  switch (domain) {
    case EErrorDomain::Win32: return EWin32Error::AsString(static_cast<DWORD>(u));
    case EErrorDomain::HResult:
      return FXMisc::GetFormattedErrorMessageAsString(static_cast<DWORD>(u), FXMisc::kErrorMessageSingleLine);
    // Http reads its status as an errno number, as it always has: 404 is
    // the runtime's text for errno 404.
    case EErrorDomain::ErrNo:
    case EErrorDomain::Http: return FXPlatform::CRuntimeErrorText(i);
    case EErrorDomain::SQLite: return SQLiteText(i);
    case EErrorDomain::EventMessage: {
      std::string text;
      if (EventMessageText(static_cast<DWORD>(u), item.GetParameters(), singleLine, text).IsError()) text.clear();
      return text;
    }
    case EErrorDomain::Int:
    case EErrorDomain::TQResult: break;
  }
  return std::string();
}

}  // namespace FXErrorText
