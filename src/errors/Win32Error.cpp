#include "errors/Win32Error.h"

#include <iterator>

#include "errors/ErrorText.h"
#include "errors/Misc.h"
#include "platform/SystemMessage.h"
#include "text/StringFormat.h"

namespace {

#define ZU_WIN32_ERROR(value, name, message) \
  { value, #name, L## #name, message, L"" message }

// The standard system messages, fixed here so that every platform prints the
// same words for the codes the library itself reports.
constexpr TWin32ErrorName kNames[] = {
    ZU_WIN32_ERROR(0, ERROR_SUCCESS, "The operation completed successfully."),
    ZU_WIN32_ERROR(1, ERROR_INVALID_FUNCTION, "Incorrect function."),
    ZU_WIN32_ERROR(2, ERROR_FILE_NOT_FOUND, "The system cannot find the file specified."),
    ZU_WIN32_ERROR(3, ERROR_PATH_NOT_FOUND, "The system cannot find the path specified."),
    ZU_WIN32_ERROR(5, ERROR_ACCESS_DENIED, "Access is denied."),
    ZU_WIN32_ERROR(6, ERROR_INVALID_HANDLE, "The handle is invalid."),
    ZU_WIN32_ERROR(8, ERROR_NOT_ENOUGH_MEMORY, "Not enough memory resources are available to process this command."),
    ZU_WIN32_ERROR(13, ERROR_INVALID_DATA, "The data is invalid."),
    ZU_WIN32_ERROR(14, ERROR_OUTOFMEMORY, "Not enough memory resources are available to complete this operation."),
    ZU_WIN32_ERROR(18, ERROR_NO_MORE_FILES, "There are no more files."),
    ZU_WIN32_ERROR(19, ERROR_WRITE_PROTECT, "The media is write protected."),
    ZU_WIN32_ERROR(21, ERROR_NOT_READY, "The device is not ready."),
    ZU_WIN32_ERROR(26, ERROR_NOT_DOS_DISK, "The specified disk or diskette cannot be accessed."),
    ZU_WIN32_ERROR(30, ERROR_READ_FAULT, "The system cannot read from the specified device."),
    ZU_WIN32_ERROR(31, ERROR_GEN_FAILURE, "A device attached to the system is not functioning."),
    ZU_WIN32_ERROR(50, ERROR_NOT_SUPPORTED, "The request is not supported."),
    ZU_WIN32_ERROR(55, ERROR_DEV_NOT_EXIST, "The specified network resource or device is no longer available."),
    ZU_WIN32_ERROR(64, ERROR_NETNAME_DELETED, "The specified network name is no longer available."),
    ZU_WIN32_ERROR(80, ERROR_FILE_EXISTS, "The file exists."),
    ZU_WIN32_ERROR(85, ERROR_ALREADY_ASSIGNED, "The local device name is already in use."),
    ZU_WIN32_ERROR(87, ERROR_INVALID_PARAMETER, "The parameter is incorrect."),
    ZU_WIN32_ERROR(109, ERROR_BROKEN_PIPE, "The pipe has been ended."),
    ZU_WIN32_ERROR(111, ERROR_BUFFER_OVERFLOW, "The file name is too long."),
    ZU_WIN32_ERROR(112, ERROR_DISK_FULL, "There is not enough space on the disk."),
    ZU_WIN32_ERROR(122, ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small."),
    ZU_WIN32_ERROR(160, ERROR_BAD_ARGUMENTS, "One or more arguments are not correct."),
    ZU_WIN32_ERROR(183, ERROR_ALREADY_EXISTS, "Cannot create a file when that file already exists."),
    ZU_WIN32_ERROR(232, ERROR_NO_DATA, "The pipe is being closed."),
    ZU_WIN32_ERROR(258, WAIT_TIMEOUT, "The wait operation timed out."),
    ZU_WIN32_ERROR(259, ERROR_NO_MORE_ITEMS, "No more data is available."),
    ZU_WIN32_ERROR(582, ERROR_ILLEGAL_CHARACTER,
                   "An illegal character was encountered. For a multi-byte character set this includes a lead "
                   "byte without a succeeding trail byte. For the Unicode character set this includes the "
                   "characters 0xFFFF and 0xFFFE."),
    ZU_WIN32_ERROR(647, ERROR_FAILED_DRIVER_ENTRY,
                   "The driver was not loaded because it failed its initialization call."),
    ZU_WIN32_ERROR(774, ERROR_ERRORS_ENCOUNTERED, "One or more errors occurred while processing the request."),
    ZU_WIN32_ERROR(995, ERROR_OPERATION_ABORTED,
                   "The I/O operation has been aborted because of either a thread exit or an application request."),
    ZU_WIN32_ERROR(996, ERROR_IO_INCOMPLETE, "Overlapped I/O event is not in a signaled state."),
    ZU_WIN32_ERROR(997, ERROR_IO_PENDING, "Overlapped I/O operation is in progress."),
    ZU_WIN32_ERROR(1064, ERROR_EXCEPTION_IN_SERVICE,
                   "An exception occurred in the service when handling the control request."),
    ZU_WIN32_ERROR(1168, ERROR_NOT_FOUND, "Element not found."),
    ZU_WIN32_ERROR(1231, ERROR_NETWORK_UNREACHABLE,
                   "The network location cannot be reached. For information about network troubleshooting, "
                   "see Windows Help."),
    ZU_WIN32_ERROR(1246, ERROR_CONTINUE, "Continue with work in progress."),
    ZU_WIN32_ERROR(1247, ERROR_ALREADY_INITIALIZED,
                   "An attempt was made to perform an initialization operation when initialization has already "
                   "been completed."),
    ZU_WIN32_ERROR(1279, ERROR_RECOVERY_FAILURE, "A transaction recover failed."),
    ZU_WIN32_ERROR(1287, ERROR_UNIDENTIFIED_ERROR, "Insufficient information exists to identify the cause of failure."),
    ZU_WIN32_ERROR(1326, ERROR_LOGON_FAILURE, "The user name or password is incorrect."),
    ZU_WIN32_ERROR(1359, ERROR_INTERNAL_ERROR, "An internal error occurred."),
    ZU_WIN32_ERROR(1462, ERROR_INCORRECT_SIZE, "Incorrect size argument."),
    ZU_WIN32_ERROR(1608, ERROR_UNKNOWN_PROPERTY, "Unknown property."),
    ZU_WIN32_ERROR(1627, ERROR_FUNCTION_FAILED, "Function failed during execution."),
    ZU_WIN32_ERROR(1630, ERROR_UNSUPPORTED_TYPE, "Data of this type is not supported."),
    ZU_WIN32_ERROR(1804, ERROR_INVALID_DATATYPE, "The specified datatype is invalid."),
    ZU_WIN32_ERROR(2250, ERROR_NOT_CONNECTED, "This network connection does not exist."),
    ZU_WIN32_ERROR(4306, ERROR_EMPTY, "The library, drive, or media pool is empty."),
    ZU_WIN32_ERROR(4312, ERROR_OBJECT_NOT_FOUND, "The object identifier does not represent a valid object."),
    ZU_WIN32_ERROR(4320, ERROR_REQUEST_REFUSED, "The operator or administrator has refused the request."),
    ZU_WIN32_ERROR(5006, ERROR_RESOURCE_NOT_AVAILABLE, "The cluster resource is not available."),
};

#undef ZU_WIN32_ERROR

static_assert(std::size(kNames) == 55, "the display table has 55 rows");

// The narrow and wide columns and formats, so that one template serves both.
template <class Char>
struct TColumns;

template <>
struct TColumns<char> {
  static const char* Name(const TWin32ErrorName& row) { return row.name; }
  static const char* Message(const TWin32ErrorName& row) { return row.message; }
  static constexpr const char* kNamedCode = " (%s.%lu)";
  static constexpr const char* kCode = " (%lu)";
  static constexpr const char* kPrefix = "[0x%X %u] ";
};

template <>
struct TColumns<wchar_t> {
  static const wchar_t* Name(const TWin32ErrorName& row) { return row.wname; }
  static const wchar_t* Message(const TWin32ErrorName& row) { return row.wmessage; }
  static constexpr const wchar_t* kNamedCode = L" (%ls.%lu)";
  static constexpr const wchar_t* kCode = L" (%lu)";
  static constexpr const wchar_t* kPrefix = L"[0x%X %u] ";
};

template <class Char>
std::basic_string<Char> FormattedErrorMessage(DWORD code, DWORD flags) {
  typedef TColumns<Char> Columns;
  std::basic_string<Char> text;
  FXPlatform::SystemMessage(code, text);
  if (text.empty()) {
    const TWin32ErrorName* row = EWin32Error::Find(code);
    if (row == nullptr && (code & 0xFFFF0000u) == 0x80070000u) row = EWin32Error::Find(code & 0xFFFFu);
    if (row != nullptr) text = Columns::Message(*row);
  }
  if (flags & FXMisc::kErrorMessageSingleLine) FXErrorText::MakeSingleLine(text);
  if (flags & FXMisc::kErrorMessageWithCode) {
    const unsigned u = static_cast<unsigned>(code);
    text.insert(0, FXString::Format(Columns::kPrefix, u, u));
  }
  return text;
}

template <class Char>
std::basic_string<Char> Win32ErrorText(DWORD code) {
  typedef TColumns<Char> Columns;
  const unsigned long ul = static_cast<unsigned long>(code);
  if (const TWin32ErrorName* row = EWin32Error::Find(code))
    return Columns::Message(*row) + FXString::Format(Columns::kNamedCode, Columns::Name(*row), ul);
  return FormattedErrorMessage<Char>(code, FXMisc::kErrorMessageSingleLine) + FXString::Format(Columns::kCode, ul);
}

}  // namespace

const TWin32ErrorName* EWin32Error::DisplayTable(std::size_t& count) {
  count = std::size(kNames);
  return kNames;
}

const TWin32ErrorName* EWin32Error::Find(DWORD code) {
  for (const TWin32ErrorName& row : kNames)
    if (row.value == code) return &row;
  return nullptr;
}

std::string EWin32Error::AsString(DWORD code) { return Win32ErrorText<char>(code); }
std::wstring EWin32Error::AsWstring(DWORD code) { return Win32ErrorText<wchar_t>(code); }

namespace FXMisc {

std::string GetFormattedErrorMessageAsString(DWORD code, DWORD flags) {
  return FormattedErrorMessage<char>(code, flags);
}

std::wstring GetFormattedErrorMessageAsWstring(DWORD code, DWORD flags) {
  return FormattedErrorMessage<wchar_t>(code, flags);
}

}  // namespace FXMisc
