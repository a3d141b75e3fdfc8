// CZuLogger: the per-module text log file that several processes share.
//
// Every process that logs under one module name writes into the same file,
// directory + name + ".log". Each line is formatted in the calling process
// and appended under the module's cross-process lock, which also covers
// opening the file, writing the header block of a new file, checking the
// size and rolling the file over, so that no line is torn or lost and no two
// processes roll the same file. The lock is released on every path out of a
// write, exceptions included, and never taken twice: a line that a thread
// logs from inside a write (the result object's report of an item lost to
// an allocation failure, say) is written right after that write. A writer
// that died holding the lock may have left half a line; the next line then
// starts on a line of its own.
//
// Line layout (columns separated by one blank):
//   pid  thread-id(hex)  MM/DD hh:mm:ss  job  [#LgLvlN#][prefix ]function(line) - [context ]message
//
// Roll-over: when a write brings the file to its size limit, it is renamed to
// directory + name + "_YYYY_MM_DD_hh_mm_ss.log" (the local time of the
// roll-over) and the next line starts a new file. A rename never replaces a
// file: a second roll-over within the same second fails as MoveFile does,
// is reported once, and the lines stay in the current file until the next
// second. After a roll-over the rolled files of the module are pruned:
// the newest GetMaxVersions() are kept, and when a retain-till value of N
// days is set, rolled files older than N days go as well.
//
// The logging service: while the logging mode is LOGGING_MODE_SERVICE (the
// default) the first line tries to load the service library
// ("libtqloggingservice.dll"; "libtqloggingservice.so" on Linux) and hands
// every finished line to its export "LogMessageAsyncSameProcess", or
// "LogMessageAsync" where only that exists, both of the type
// TLoggingServiceWrite below. When the library or both exports are missing,
// or the service refuses a line, the logger writes that line and every later
// one itself (the mode becomes LOGGING_MODE_DIRECT for good).
#pragma once

#include <atomic>
#include <cstdarg>
#include <memory>
#include <mutex>
#include <string>

#include "ZuUtilsExport.h"
#include "errors/ZuError.h"

namespace FXPlatform {
class CLogFile;
class CProcessLock;
}  // namespace FXPlatform

#if defined(__GNUC__)
#define ZU_LOG_FORMAT(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define ZU_LOG_FORMAT(fmt, args)
#endif

enum modeOfLogging {
  LOGGING_MODE_SERVICE = 0,  // hand lines to the logging service while it takes them
  LOGGING_MODE_DIRECT = 1,   // write the log file here
};

// The service's export: the module name, the log directory (ending with the
// separator), one finished line including its CR LF, and the line's length.
// Returns 0 when the service took the line.
extern "C" typedef int (*TLoggingServiceWrite)(const char* module, const char* directory, const char* line,
                                               unsigned int length);

// directory + name, then "_<version>" unless version is 0, then ".log".
ZUUTILS_API std::string GetLogFileName(const std::string& directory, const std::string& name, int version);

class ZUUTILS_API CZuLogger {
 public:
  // Offered every line (without its line end) before it is written; true
  // means the hook consumed it. Called under the logger's critical section.
  typedef bool (*LogMessageHook)(CZuLogger* logger, int level, const char* text);
  // Receives the logger's own failure reports as "pid:module:text".
  typedef void (*SyslogCallback)(const char* text);

  // The job id of lines that belong to no job: the job column shows dashes.
  // Other values below 1 show hashes.
  static constexpr long long kNoJobId = -123456;
  // How long a write waits for another process's turn before it gives up.
  static constexpr unsigned long kLockTimeoutMs = 60000;

  CZuLogger();
  ~CZuLogger();
  CZuLogger(const CZuLogger&) = delete;
  CZuLogger& operator=(const CZuLogger&) = delete;

  // The process-wide logger; it lives until the process ends. Once
  // initialised it also receives the lines of the lowest layers (see
  // logging/LogHook.h), such as the result object's allocation failures.
  static CZuLogger& GetGlobalInstance();

  // Sets the module name, the folder (empty: the current folder; created
  // when missing) and the debug level, whether the file stays open between
  // lines, and the product text of the header block. Fails with Win32 87
  // "AppName empty" for an empty name, and with the file system's error
  // when the folder cannot be created or the lock cannot be made.
  CZuError Initialize(const std::string& appName, const std::string& directory, int debugLevel = 2,
                      bool keepLogFileOpen = false, const std::string& productName = std::string());
  bool IsInitialized() const { return m_initialized.load(std::memory_order_acquire); }

  // A line is written when its level is not above the debug level; level -1
  // (the alarms) is written whatever the debug level. The forms
  // without a job id log with kNoJobId; LogMessage(text) logs the text at
  // level 0 without function or context.
  void LogMessage(int level, const char* function, unsigned long line, const char* context, const char* format,
                  ...) ZU_LOG_FORMAT(6, 7);
  void LogMessage(int level, const char* function, unsigned long line, long long jobId, const char* context,
                  const char* format, ...) ZU_LOG_FORMAT(7, 8);
  void LogMessage(const char* text);
  void LogMessageV(int level, const char* function, unsigned long line, const char* context, const char* format,
                   va_list args);
  void LogMessageV(int level, const char* function, unsigned long line, long long jobId, const char* context,
                   const char* format, va_list args);
  // Hands the text to the syslog callback, as the logger's failure reports go.
  void LogMessageSyslog(const char* text);
  // Writes one finished line (a CR LF is added) to the service or the file,
  // unfiltered; returns why it could not be written.
  CZuError logMessages(const char* line);

  void SetDebugLevel(int level) { m_debugLevel.store(level, std::memory_order_relaxed); }
  int GetDebugLevel() const { return m_debugLevel.load(std::memory_order_relaxed); }
  // Sizes in MiB; 0 selects the default size.
  void SetLogFileSize(unsigned long long sizeMiB);
  unsigned long long GetLogFileSize() const;
  void SetDefaultLogFileSize(unsigned long long sizeMiB);
  unsigned long long GetDefaultLogFileSize() const;
  // The number of rolled files kept; 0 or less selects the default.
  void SetMaxVersions(int versions);
  int GetMaxVersions() const;
  void SetDefaultMaxVersions(int versions);
  int GetDefaultMaxVersions() const;
  // Rolled files older than this many days are deleted; 0 keeps them.
  void SetRetainLogsTill(int days);
  void SetKeepLogFileOpen(bool keepOpen);
  bool GetKeepLogFileOpen() const;
  // Column widths only grow: one of 0 or less, or narrower than the current
  // width, leaves it; at most 32.
  void SetLogfileParams(int maxVersions, unsigned long long sizeMiB, int retainLogsTill, int jobIdWidth,
                        int threadIdWidth);
  // Empty function and context fields still print "(line) - " and "[ ] ".
  void SetPlaceHolderForPreMessage(bool on);
  void SetLoggingMode(modeOfLogging mode);
  modeOfLogging GetLoggingMode() const;

  // Process-wide settings, meant to be made once at start-up.
  static void SetLogToStdout(bool on);
  static void SetLogToStderr(bool on);
  static void SetLoggingOptions(bool logToStdout, bool logToStderr);
  // When off, a log file that failed to open is not tried again for a minute;
  // the lines of that minute are dropped.
  static void SetRetryOnLogOpenFail(bool retry);
  static void SetShowLogLevel(bool on);
  // Both return the previous hook or callback.
  static LogMessageHook SetLogMessageHook(LogMessageHook hook);
  static SyslogCallback SetSyslogCallback(SyslogCallback callback);
  // The machine as the header block of every new file shows it. Until set,
  // the host name and operating system are the system's own.
  static void SetPlatformInformation(const std::string& hostName, const std::string& physicalHostName,
                                     const std::string& clientName, const std::string& instance,
                                     const std::string& osText, const std::string& ipAddresses,
                                     const std::string& controlServerName, const std::string& controlServerHost);
  // The header shows "Processor  : <width> bit", followed by the text in
  // parentheses when one is set.
  static void SetProcessorInformation(const std::string& processorText, unsigned long addressWidth);

  const std::string& GetAppName() const { return m_appName; }
  const std::string& GetLogFilePath() const { return m_logFilePath; }
  const std::string& GetLockName() const { return m_lockName; }
  // "Global\ZuLogger_" + appName; Win32 774 "Log name is empty" without a
  // name. The folder does not enter the name: all folders of one module share
  // one lock. On Linux the name maps to /dev/shm/ZuLogger_<appName>, a
  // robust process-shared mutex that any user may take (platform/ProcessLock.h).
  static CZuError GetLockName(const char* appName, const std::string& directory, std::string& lockName);
  std::recursive_mutex& GetCriticalSection() { return m_criticalSection; }
  bool isLogFileOpen() const;
  bool getPlaceHolderForPreMessage() const { return m_placeHolder.load(std::memory_order_relaxed); }
  // Whether this process can append to the log file (which is created, empty,
  // when missing).
  bool CanUserWriteToLog() const;
  // Closes the file if it is open; with `stopKeepingOpen` later lines also
  // open and close it each time.
  void CloseLogFile(bool stopKeepingOpen);

 private:
  struct TWriteReport;

  std::size_t BuildLine(char* buffer, std::size_t capacity, int level, const char* function, unsigned long line,
                        long long jobId, const char* context, const char* format, va_list args, bool& complete);
  void WriteFormatted(int level, const char* function, unsigned long line, long long jobId, const char* context,
                      const char* format, va_list args);
  CZuError Route(const char* data, std::size_t size, TWriteReport& report);
  CZuError WriteToFile(const char* data, std::size_t size, TWriteReport& report);
  CZuError LockLockfile(TWriteReport& report, bool& abandoned);
  void UnlockLockfile();
  CZuError WriteLocked(const char* data, std::size_t size, bool abandoned, TWriteReport& report);
  CZuError WriteHeader();
  CZuError RollOver(unsigned long long size, TWriteReport& report);
  void PruneRolledFiles();
  void Deliver(const TWriteReport& report);
  void Report(const std::string& text);
  void WriteExceptionLines(const char* format);

  std::string m_appName;
  std::string m_directory;
  std::string m_logFilePath;
  std::string m_lockName;
  std::string m_productName;
  std::string m_timeZoneName;
  long m_timeZoneOffsetMinutes = 0;
  std::unique_ptr<FXPlatform::CProcessLock> m_lock;
  std::unique_ptr<FXPlatform::CLogFile> m_file;

  // Guarded by the critical section.
  bool m_keepLogFileOpen = false;
  int m_maxVersions = 1;
  int m_defaultMaxVersions = 1;
  unsigned long long m_logFileSize = 0x500000;
  unsigned long long m_defaultLogFileSize = 0x500000;
  int m_retainLogsTill = 0;
  bool m_openFailing = false;
  long long m_lastOpenFailure = 0;  // steady-clock seconds
  std::string m_lastFailedRollTarget;

  // Read without the critical section.
  std::atomic<bool> m_initialized{false};
  std::atomic<int> m_debugLevel{2};
  std::atomic<int> m_jobIdWidth{3};
  std::atomic<int> m_threadIdWidth{5};
  std::atomic<bool> m_placeHolder{false};
  std::atomic<bool> m_directWrite{false};

  mutable std::recursive_mutex m_criticalSection;
};
