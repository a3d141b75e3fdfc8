#include "logging/ZuLogger.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <vector>

#include "errors/ErrorUtil.h"
#include "logging/LogHook.h"
#include "platform/DynamicLibrary.h"
#include "platform/FileSystem.h"
#include "platform/InitLock.h"
#include "platform/Clock.h"
#include "platform/LogFile.h"
#include "platform/Process.h"
#include "platform/ProcessLock.h"
#include "text/StringFormat.h"

struct CZuLogger::TWriteReport {
  // Failure reports, delivered once the locks are released: the syslog
  // callback may well log itself.
  std::vector<std::string> texts;
  bool rolledOver = false;
  unsigned long long rolledSize = 0;
  char created[24] = {};
};

namespace {

constexpr std::size_t kLineBufferSize = 4096;
constexpr std::size_t kLargeLineBufferSize = 0x10000;
// Kept free behind the message for carriage returns and the line end.
constexpr std::size_t kMessageReserve = 200;
constexpr long long kOpenRetryDelaySeconds = 60;
constexpr int kHeaderTextWidth = 76;
// The widest job and thread columns: the line prefix stays far below the
// line buffer less its reserve.
constexpr int kMaxColumnWidth = 32;
constexpr char kDashes[] = "--------------------------------";
constexpr char kHashes[] = "################################";
constexpr char kInvalidTime[] = "INVALID TIME        ";

std::atomic<bool> g_logToStdout{false};
std::atomic<bool> g_logToStderr{false};
std::atomic<bool> g_noRetryOnOpenFail{false};
std::atomic<bool> g_showLogLevel{false};
std::atomic<CZuLogger::LogMessageHook> g_hook{nullptr};
std::atomic<CZuLogger::SyslogCallback> g_syslog{nullptr};

// What the header block shows about the machine.
struct TPlatformInformation {
  std::mutex lock;
  std::string hostName, physicalHostName, clientName, instance, osText, ipAddresses, controlServerName,
      controlServerHost, processorText;
  unsigned long addressWidth = sizeof(void*) * 8;
};

TPlatformInformation& PlatformInformation() {
  static TPlatformInformation* information = [] {
    TPlatformInformation* created = new TPlatformInformation;
    created->hostName = created->physicalHostName = created->clientName = FXPlatform::HostName();
    created->osText = FXPlatform::OperatingSystemText();
    return created;
  }();
  return *information;
}

// "EVDEBUG_GLOBAL_PREFIX", read once per process, as its field.
const std::string& GlobalPrefixField() {
  static const std::string field = [] {
    const char* value = std::getenv("EVDEBUG_GLOBAL_PREFIX");
    if (value == nullptr || *value == '\0') return std::string();
    return FXString::Format("%.36s ", value);
  }();
  return field;
}

// "%04d/%02d/%02d %02d:%02d:%02d " of a time; unknown times print kInvalidTime.
void FormatTime(const FXPlatform::TLocalTime* time, char (&out)[24]) {
  if (time == nullptr) {
    std::snprintf(out, sizeof out, "%s", kInvalidTime);
    return;
  }
  std::snprintf(out, sizeof out, "%04d/%02d/%02d %02d:%02d:%02d ", time->year, time->month, time->day, time->hour,
                time->minute, time->second);
}

long long SteadySeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

bool EndsWithSeparator(const std::string& path) {
  return !path.empty() && (path.back() == FXPlatform::kPathSeparator || path.back() == '/');
}

void GrowTo(std::atomic<int>& width, int printed) {
  int current = width.load(std::memory_order_relaxed);
  while (printed > current && !width.compare_exchange_weak(current, printed, std::memory_order_relaxed)) {
  }
}

// Appends to a fixed buffer, cutting what does not fit; always terminated.
class CLineText {
 public:
  CLineText(char* data, std::size_t capacity) : m_data(data), m_capacity(capacity) { m_data[0] = '\0'; }

  void Append(const char* text, std::size_t n) {
    n = std::min(n, m_capacity - 1 - m_size);
    std::memcpy(m_data + m_size, text, n);
    m_size += n;
    m_data[m_size] = '\0';
  }
  void Append(const std::string& text) { Append(text.data(), text.size()); }

  void Printf(const char* format, ...) ZU_LOG_FORMAT(2, 3) {
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(m_data + m_size, m_capacity - m_size, format, args);
    va_end(args);
    if (n > 0) m_size += std::min(static_cast<std::size_t>(n), m_capacity - 1 - m_size);
  }

  std::size_t Size() const { return m_size; }

 private:
  char* m_data;
  std::size_t m_capacity;
  std::size_t m_size = 0;
};

// The 15-character time column: month/day hour:minute:second and a blank.
void AppendTime(CLineText& text) {
  thread_local FXPlatform::TLocalTime cachedTime;
  thread_local char cachedText[24] = {};
  FXPlatform::TLocalTime now;
  char full[24];
  if (!FXPlatform::LocalTimeNow(now)) {
    FormatTime(nullptr, full);
    text.Append(full + 5, 15);
    return;
  }
  if (cachedText[0] == '\0' || now.second != cachedTime.second || now.minute != cachedTime.minute ||
      now.hour != cachedTime.hour || now.day != cachedTime.day || now.month != cachedTime.month ||
      now.year != cachedTime.year) {
    FormatTime(&now, cachedText);
    cachedTime = now;
  }
  text.Append(cachedText + 5, 15);
}

// Drops trailing line ends and turns inner bare line feeds into CR LF where
// the buffer has room for all of them. Returns the new length.
std::size_t FinishLine(char* buffer, std::size_t capacity, std::size_t start, std::size_t length) {
  while (length > start && (buffer[length - 1] == '\n' || buffer[length - 1] == '\r')) --length;
  auto bare = [&](std::size_t i) { return buffer[i] == '\n' && (i == start || buffer[i - 1] != '\r'); };
  std::size_t count = 0;
  for (std::size_t i = start; i < length; ++i) count += bare(i) ? 1 : 0;
  // Room for the CR LF line end and the terminator as well.
  if (count > 0 && length + count + 3 <= capacity) {
    std::size_t to = length + count;
    for (std::size_t from = length; from > start;) {
      --from;
      const bool insert = bare(from);
      buffer[--to] = buffer[from];
      if (insert) buffer[--to] = '\r';
    }
    length += count;
  }
  buffer[length] = '\0';
  return length;
}

// The service library, loaded on the first line that needs it.
std::atomic<bool> g_serviceTried{false};
TLoggingServiceWrite g_service = nullptr;

TLoggingServiceWrite LoggingService() {
  if (g_serviceTried.load(std::memory_order_acquire)) return g_service;
  std::lock_guard<std::mutex> guard(FXPlatform::InitLock());
  if (!g_serviceTried.load(std::memory_order_relaxed)) {
    // Never unloaded: lines may be on their way through it until the end.
    static FXPlatform::CDynamicLibrary* library = new FXPlatform::CDynamicLibrary;
    if (!library->Load(kZuIsWindows ? "libtqloggingservice.dll" : "libtqloggingservice.so").IsError()) {
      void* symbol = library->Symbol("LogMessageAsyncSameProcess");
      if (symbol == nullptr) symbol = library->Symbol("LogMessageAsync");
      g_service = reinterpret_cast<TLoggingServiceWrite>(symbol);
      if (g_service == nullptr) library->Unload();
    }
    g_serviceTried.store(true, std::memory_order_release);
  }
  return g_service;
}

// Lines that a thread logs while it holds a log's lock (such as the report
// of a result that lost an item to an allocation failure under it) wait
// here until the lock is released: taking a log's lock from inside another
// write could wait for ourselves. A fixed buffer, because such lines come
// when memory is short; what does not fit is dropped.
struct TDeferredLines {
  int locksHeld = 0;
  std::size_t used = 0;
  char data[8192];
};
thread_local TDeferredLines t_deferred;

// Each entry: the logger, the text's length, the text and a NUL.
void Defer(CZuLogger* logger, const char* text, std::size_t length) {
  TDeferredLines& deferred = t_deferred;
  const std::size_t need = sizeof logger + sizeof length + length + 1;
  if (need > sizeof deferred.data - deferred.used) return;
  char* at = deferred.data + deferred.used;
  std::memcpy(at, &logger, sizeof logger);
  std::memcpy(at + sizeof logger, &length, sizeof length);
  std::memcpy(at + sizeof logger + sizeof length, text, length);
  at[sizeof logger + sizeof length + length] = '\0';
  deferred.used += need;
}

// Writes what waited, once this thread holds no log's lock and no critical
// section.
void WriteDeferred() {
  TDeferredLines& deferred = t_deferred;
  if (deferred.locksHeld > 0 || deferred.used == 0) return;
  char pending[sizeof deferred.data];
  const std::size_t used = deferred.used;
  std::memcpy(pending, deferred.data, used);
  deferred.used = 0;
  for (std::size_t at = 0; at < used;) {
    CZuLogger* logger = nullptr;
    std::size_t length = 0;
    std::memcpy(&logger, pending + at, sizeof logger);
    std::memcpy(&length, pending + at + sizeof logger, sizeof length);
    logger->logMessages(pending + at + sizeof logger + sizeof length);
    at += sizeof logger + sizeof length + length + 1;
  }
}

void WriteHookLine(int level, const char* function, unsigned int line, const char* format, va_list args) {
  CZuLogger::GetGlobalInstance().LogMessageV(level, function, line, 0LL, nullptr, format, args);
}

// Formats a failure text, queues it for reporting and adds it to the result.
CZuError Failed(CZuError result, const FXCodeLocation& here, std::vector<std::string>& reports, const char* format,
                ...) ZU_LOG_FORMAT(4, 5);
CZuError Failed(CZuError result, const FXCodeLocation& here, std::vector<std::string>& reports, const char* format,
                ...) {
  std::string text;
  va_list args;
  va_start(args, format);
  FXString::FormatArgList(text, format, args);
  va_end(args);
  reports.push_back(text);
  return result.Push(here, "%s", text.c_str());
}

}  // namespace

std::string GetLogFileName(const std::string& directory, const std::string& name, int version) {
  std::string path = directory + name;
  if (version != 0) path += "_" + std::to_string(version);
  return path + ".log";
}

CZuLogger::CZuLogger() : m_lock(new FXPlatform::CProcessLock), m_file(new FXPlatform::CLogFile) {
  const FXPlatform::TTimeZone zone = FXPlatform::CurrentTimeZone();
  m_timeZoneName = zone.name;
  m_timeZoneOffsetMinutes = zone.offsetMinutes;
}

CZuLogger::~CZuLogger() = default;

CZuLogger& CZuLogger::GetGlobalInstance() {
  // Never destroyed: code running during static destruction may still log.
  static CZuLogger* instance = new CZuLogger;
  return *instance;
}

CZuError CZuLogger::Initialize(const std::string& appName, const std::string& directory, int debugLevel,
                               bool keepLogFileOpen, const std::string& productName) {
  const FXCodeLocation here = ZU_HERE("CZuLogger::Initialize");
  if (appName.empty()) return FXErrorUtil::ErrorWin32(here, ERROR_INVALID_PARAMETER, "AppName empty");
  std::string folder = directory.empty() ? std::string(".") : directory;
  if (!EndsWithSeparator(folder)) folder += FXPlatform::kPathSeparator;
  CZuError result = FXPlatform::CreateDirectories(folder);
  if (result.IsError()) return result.Push(here, "Log directory [%s]", folder.c_str());
  std::string lockName;
  result = GetLockName(appName.c_str(), folder, lockName);
  if (result.IsError()) return result.Push(here);

  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_file->Close();
  result = m_lock->Create(lockName);
  if (result.IsError()) {
    m_initialized.store(false, std::memory_order_release);
    return result.Push(here, "Log lock [%s]", lockName.c_str());
  }
  m_appName = appName;
  m_directory = folder;
  m_logFilePath = GetLogFileName(folder, appName, 0);
  m_lockName = lockName;
  m_productName = productName;
  m_keepLogFileOpen = keepLogFileOpen;
  m_openFailing = false;
  m_lastFailedRollTarget.clear();
  SetDebugLevel(debugLevel);
  m_initialized.store(true, std::memory_order_release);
  if (this == &GetGlobalInstance()) FXLogHook::SetWriter(&WriteHookLine);
  return CZuError::Success();
}

void CZuLogger::LogMessage(int level, const char* function, unsigned long line, const char* context,
                           const char* format, ...) {
  va_list args;
  va_start(args, format);
  LogMessageV(level, function, line, kNoJobId, context, format, args);
  va_end(args);
}

void CZuLogger::LogMessage(int level, const char* function, unsigned long line, long long jobId,
                           const char* context, const char* format, ...) {
  va_list args;
  va_start(args, format);
  LogMessageV(level, function, line, jobId, context, format, args);
  va_end(args);
}

void CZuLogger::LogMessage(const char* text) { LogMessage(0, nullptr, 0, nullptr, "%s", text); }

void CZuLogger::LogMessageV(int level, const char* function, unsigned long line, const char* context,
                            const char* format, va_list args) {
  LogMessageV(level, function, line, kNoJobId, context, format, args);
}

void CZuLogger::LogMessageV(int level, const char* function, unsigned long line, long long jobId,
                            const char* context, const char* format, va_list args) {
  // -1 is the level of alarms, which pass whatever the debug level.
  if (!IsInitialized() || (level != -1 && level > GetDebugLevel())) return;
  WriteFormatted(level, function, line, jobId, context, format, args);
}

std::size_t CZuLogger::BuildLine(char* buffer, std::size_t capacity, int level, const char* function,
                                 unsigned long line, long long jobId, const char* context, const char* format,
                                 va_list args, bool& complete) {
  CLineText text(buffer, capacity);
  // Printed for every line: a child made by fork() has an id of its own.
  text.Printf("%-*ld ", 5, static_cast<long>(FXPlatform::CurrentProcessId()));

  int width = m_threadIdWidth.load(std::memory_order_relaxed);
  std::size_t before = text.Size();
  text.Printf("%-*lx ", width, FXPlatform::CurrentThreadId());
  GrowTo(m_threadIdWidth, static_cast<int>(text.Size() - before) - 1);

  AppendTime(text);

  width = m_jobIdWidth.load(std::memory_order_relaxed);
  if (jobId >= 1) {
    before = text.Size();
    text.Printf("%-*lld ", width, jobId);
    GrowTo(m_jobIdWidth, static_cast<int>(text.Size() - before) - 1);
  } else {
    text.Printf("%.*s ", width, jobId == kNoJobId ? kDashes : kHashes);
  }

  if (g_showLogLevel.load(std::memory_order_relaxed)) text.Printf("#LgLvl%d#", level < 0 ? 0 : level);
  text.Append(GlobalPrefixField());

  const bool placeholder = getPlaceHolderForPreMessage();
  const unsigned lineNumber = static_cast<unsigned>(line);
  if (function != nullptr && *function != '\0') {
    if (line != 0)
      text.Printf("%.100s(%u) - ", function, lineNumber);
    else
      text.Printf("%.100s() - ", function);
  } else if (placeholder) {
    if (line != 0)
      text.Printf("(%u) - ", lineNumber);
    else
      text.Append("() - ", 5);
  }
  if (context != nullptr && *context != '\0')
    text.Printf("%.100s ", context);
  else if (placeholder)
    text.Append("[ ] ", 4);

  // The prefix is a few hundred bytes at most, far below the buffer.
  const std::size_t start = text.Size();
  const std::size_t room = capacity - start - kMessageReserve;
  const int n = format != nullptr ? std::vsnprintf(buffer + start, room, format, args) : 0;
  if (n < 0) buffer[start] = '\0';
  complete = n >= 0 && static_cast<std::size_t>(n) < room;
  const std::size_t length = start + (n <= 0 ? 0 : std::min(static_cast<std::size_t>(n), room - 1));
  return FinishLine(buffer, capacity, start, length);
}

void CZuLogger::WriteFormatted(int level, const char* function, unsigned long line, long long jobId,
                               const char* context, const char* format, va_list args) {
  try {
    char small[kLineBufferSize];
    std::unique_ptr<char[]> large;
    char* buffer = small;
    bool complete = false;
    va_list copy;
    va_copy(copy, args);
    std::size_t length = BuildLine(small, sizeof small, level, function, line, jobId, context, format, copy, complete);
    va_end(copy);
    if (!complete) {
      // Long messages are rare: only they pay for a larger buffer, and when
      // even that cannot be had they are written cut.
      large.reset(new (std::nothrow) char[kLargeLineBufferSize]);
      if (large) {
        buffer = large.get();
        va_copy(copy, args);
        length = BuildLine(buffer, kLargeLineBufferSize, level, function, line, jobId, context, format, copy, complete);
        va_end(copy);
      }
    }

    TWriteReport report;
    {
      std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
      const LogMessageHook hook = g_hook.load(std::memory_order_acquire);
      if (hook != nullptr && hook(this, level, buffer)) return;
      buffer[length] = '\r';
      buffer[length + 1] = '\n';
      Route(buffer, length + 2, report);
    }
    Deliver(report);
  } catch (...) {
    WriteExceptionLines(format);
  }
}

void CZuLogger::WriteExceptionLines(const char* format) {
  try {
    const std::string text =
        "@@@@@@@@@@@@@@@@@@\r\n" +
        FXString::Format(">>>>>>>>>>>>>>>>>> GOT AN EXCEPTION DURING DEBUG MESSAGE HANDLING [%s]",
                         format != nullptr ? format : "") +
        "\r\n@@@@@@@@@@@@@@@@@@";
    logMessages(text.c_str());
  } catch (...) {
    // Nothing is left to report with.
  }
}

CZuError CZuLogger::logMessages(const char* line) {
  const char* text = line != nullptr ? line : "";
  const std::size_t length = std::strlen(text);
  char small[kLineBufferSize];
  std::string large;
  char* data = small;
  if (length + 2 > sizeof small) {
    large.resize(length + 2);
    data = &large[0];
  }
  std::memcpy(data, text, length);
  data[length] = '\r';
  data[length + 1] = '\n';
  TWriteReport report;
  CZuError result = CZuError::Success();
  {
    std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
    result = Route(data, length + 2, report);
  }
  Deliver(report);
  return result;
}

CZuError CZuLogger::Route(const char* data, std::size_t size, TWriteReport& report) {
  if (IsInitialized() && !m_directWrite.load(std::memory_order_relaxed)) {
    const TLoggingServiceWrite service = LoggingService();
    if (service != nullptr && size <= UINT_MAX &&
        service(m_appName.c_str(), m_directory.c_str(), data, static_cast<unsigned int>(size)) == 0)
      return CZuError::Success();
    m_directWrite.store(true, std::memory_order_relaxed);
  }
  return WriteToFile(data, size, report);
}

CZuError CZuLogger::WriteToFile(const char* data, std::size_t size, TWriteReport& report) {
  if (t_deferred.locksHeld > 0) {
    // Without its line end, as logMessages takes it.
    Defer(this, data, size >= 2 ? size - 2 : 0);
    return CZuError::Success();
  }
  bool abandoned = false;
  CZuError result = LockLockfile(report, abandoned);
  if (result.IsError()) return result;
  // Released on every path: an exception that skipped the release would
  // leave every writer of the module waiting out the time-out.
  ++t_deferred.locksHeld;
  struct TRelease {
    CZuLogger* logger;
    ~TRelease() {
      --t_deferred.locksHeld;
      logger->UnlockLockfile();
    }
  } release{this};
  return WriteLocked(data, size, abandoned, report);
}

CZuError CZuLogger::LockLockfile(TWriteReport& report, bool& abandoned) {
  const FXCodeLocation here = ZU_HERE("CZuLogger::LockLockfile");
  if (!IsInitialized())
    return Failed(FXErrorUtil::ErrorWin32(here, ERROR_INVALID_HANDLE), here, report.texts,
                  "Uninitialized CZuLogger object");
  CZuError result = m_lock->Acquire(kLockTimeoutMs, abandoned);
  if (!result) return result;
  if (FXErrorUtil::IsWin32(result, WAIT_TIMEOUT))
    return Failed(result, here, report.texts, "Timed out acquiring mutex on %s", m_lockName.c_str());
  return Failed(result, here, report.texts, "Failed in acquiring the lock on file [%s] Module [%s] Error[%s]",
                m_logFilePath.c_str(), m_appName.c_str(), result.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE).c_str());
}

void CZuLogger::UnlockLockfile() { m_lock->Release(); }

CZuError CZuLogger::WriteLocked(const char* data, std::size_t size, bool abandoned, TWriteReport& report) {
  const FXCodeLocation here = ZU_HERE("CZuLogger::logMessages");
  const char* path = m_logFilePath.c_str();
  const char* module = m_appName.c_str();
  if (m_openFailing && g_noRetryOnOpenFail.load(std::memory_order_relaxed) &&
      SteadySeconds() - m_lastOpenFailure < kOpenRetryDelaySeconds)
    return FXErrorUtil::ErrorWin32(here, ERROR_OPEN_FAILED, "Not retrying log file [%s] within a minute of a failure",
                                   path);

  CZuError result = m_file->Open(m_logFilePath, *m_lock);
  if (result.IsError()) {
    const std::string text = FXString::Format(
        "Failed open log file [%s], Module[%s], Error %d. Make sure this log file is not locked and has full "
        "permissions. Some of the log lines will not be logged because of this error",
        path, module, static_cast<int>(FXErrorUtil::GetWin32(result)));
    // Reported once, not for every line while the fault lasts.
    if (!m_openFailing) report.texts.push_back(text);
    m_openFailing = true;
    m_lastOpenFailure = SteadySeconds();
    return result.Push(here, "%s", text.c_str());
  }
  if (m_openFailing) {
    report.texts.push_back(
        FXString::Format("Successfully opened log [%s] Module[%s]. Reseting the last failure time", path, module));
    m_openFailing = false;
  }

  unsigned long long offset = 0;
  result = m_file->SeekToEnd(offset);
  if (result.IsError()) {
    m_file->Close();
    return Failed(result, here, report.texts, "Failed setting offset in log [%s] Module [%s] Errorcode[%u]", path,
                  module, static_cast<unsigned>(FXErrorUtil::GetWin32(result)));
  }
  if (offset == 0 && WriteHeader().IsError())
    report.texts.push_back(FXString::Format("Failed writing log header to log [%s] Module [%s]", path, module));
  // A writer that died holding the lock may have left half a line: start
  // this one on a line of its own.
  if (abandoned && !m_file->EndsWithLineFeed(offset)) m_file->Write("\r\n", 2);

  result = m_file->Write(data, size);
  if (result.IsError()) {
    m_file->Close();
    return Failed(result, here, report.texts, "Failed writing log message to log [%s] Module [%s] Errorcode[%u]",
                  path, module, static_cast<unsigned>(FXErrorUtil::GetWin32(result)));
  }
  if (g_logToStdout.load(std::memory_order_relaxed)) std::fwrite(data, 1, size, stdout);
  if (g_logToStderr.load(std::memory_order_relaxed)) std::fwrite(data, 1, size, stderr);

  unsigned long long fileSize = 0;
  result = m_file->GetSize(fileSize);
  if (result.IsError()) {
    m_file->Close();
    return Failed(result, here, report.texts, "Failed getting size of log [%s] Module[%s] Errorcode[%u]", path,
                  module, static_cast<unsigned>(FXErrorUtil::GetWin32(result)));
  }
  if (fileSize >= m_logFileSize) result = RollOver(fileSize, report);
  if (!m_keepLogFileOpen) m_file->Close();
  return result;
}

CZuError CZuLogger::WriteHeader() {
  std::string header;
  const std::string border(kHeaderTextWidth + 4, '*');
  auto add = [&header](const std::string& text) {
    const int pad = std::max(0, kHeaderTextWidth - static_cast<int>(text.size()));
    header += FXString::Format("* %s%*s *%s", text.c_str(), pad, "", "\r\n");
  };
  FXPlatform::TLocalTime now;
  char date[24];
  FormatTime(FXPlatform::LocalTimeNow(now) ? &now : nullptr, date);
  const long offset = m_timeZoneOffsetMinutes < 0 ? -m_timeZoneOffsetMinutes : m_timeZoneOffsetMinutes;

  header += border + "\r\n";
  {
    TPlatformInformation& info = PlatformInformation();
    std::lock_guard<std::mutex> guard(info.lock);
    add(FXString::Format("Machine    : %s:%s (%s) (%s)", info.hostName.c_str(), info.physicalHostName.c_str(),
                         info.clientName.c_str(), info.instance.c_str()));
    add(FXString::Format("IP Addrs   : %s", info.ipAddresses.c_str()));
    add(FXString::Format("Module     : %s", m_appName.c_str()));
    add(FXString::Format("Ctrlserver : %s:%s", info.controlServerName.c_str(), info.controlServerHost.c_str()));
    add(FXString::Format("Version    : %s", ZU_VERSION_TEXT));
    add(FXString::Format("Date       : %.10s (%s GMT%s%02ld:%02ld)", date, m_timeZoneName.c_str(),
                         m_timeZoneOffsetMinutes < 0 ? "-" : "+", offset / 60, offset % 60));
    add(FXString::Format("OS Type    : %s", info.osText.c_str()));
    std::string processor = FXString::Format("Processor  : %lu bit", info.addressWidth);
    if (!info.processorText.empty()) processor += " (" + info.processorText + ")";
    add(processor);
  }
  add(FXString::Format("Product    : %s", m_productName.c_str()));
  header += border + "\r\n";
  return m_file->Write(header.data(), header.size());
}

CZuError CZuLogger::RollOver(unsigned long long size, TWriteReport& report) {
  const FXCodeLocation here = ZU_HERE("CZuLogger::RollOver");
  FXPlatform::TLocalTime now;
  if (!FXPlatform::LocalTimeNow(now)) return CZuError::Success();
  const std::string target =
      m_directory + m_appName +
      FXString::Format("_%04d_%02d_%02d_%02d_%02d_%02d.log", now.year, now.month, now.day, now.hour, now.minute,
                       now.second);
  // That name was taken when this process last tried: wait for the next second.
  if (target == m_lastFailedRollTarget) return CZuError::Success();

  FXPlatform::TLocalTime created;
  char createdText[24];
  FormatTime(m_file->GetCreationTime(created).IsError() ? nullptr : &created, createdText);
  // Windows renames no file this process holds open.
  m_file->Close();
  CZuError result = FXPlatform::MoveFileNoReplace(m_logFilePath, target);
  if (result.IsError()) {
    m_lastFailedRollTarget = target;
    report.texts.push_back(FXString::Format("Failed moving log file [%s] to [%s], Module=[%s], error=[%s]",
                                            m_logFilePath.c_str(), target.c_str(), m_appName.c_str(),
                                            result.AsString(EErrorOutputFormat::USER_SINGLE_LINE_CODE).c_str()));
    return result.Push(here, "Failed moving log file [%s] to [%s], Module=[%s]", m_logFilePath.c_str(),
                       target.c_str(), m_appName.c_str());
  }
  m_file->Replaced(*m_lock);
  m_lastFailedRollTarget.clear();
  PruneRolledFiles();
  report.rolledOver = true;
  report.rolledSize = size;
  std::memcpy(report.created, createdText, sizeof createdText);
  return CZuError::Success();
}

void CZuLogger::PruneRolledFiles() {
  std::vector<std::string> names;
  if (FXPlatform::ListDirectory(m_directory, names).IsError()) return;
  // name + "_YYYY_MM_DD_hh_mm_ss.log": the stamp sorts as the time does.
  const std::string prefix = m_appName + "_";
  const char pattern[] = "dddd_dd_dd_dd_dd_dd.log";
  const std::size_t stampLength = sizeof pattern - 1;
  auto isRolled = [&](const std::string& name) {
    if (name.size() != prefix.size() + stampLength || name.compare(0, prefix.size(), prefix) != 0) return false;
    for (std::size_t i = 0; i < stampLength; ++i) {
      const char c = name[prefix.size() + i];
      if (pattern[i] == 'd' ? (c < '0' || c > '9') : c != pattern[i]) return false;
    }
    return true;
  };
  names.erase(std::remove_if(names.begin(), names.end(), [&](const std::string& n) { return !isRolled(n); }),
              names.end());
  std::sort(names.rbegin(), names.rend());

  std::string oldestKept;
  FXPlatform::TLocalTime cutoff;
  if (m_retainLogsTill > 0 &&
      FXPlatform::LocalTimeOf(static_cast<long long>(std::time(nullptr)) - m_retainLogsTill * 86400LL, cutoff))
    oldestKept = prefix + FXString::Format("%04d_%02d_%02d_%02d_%02d_%02d.log", cutoff.year, cutoff.month,
                                           cutoff.day, cutoff.hour, cutoff.minute, cutoff.second);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i >= static_cast<std::size_t>(m_maxVersions) || names[i] < oldestKept)
      FXPlatform::DeleteFileAt(m_directory + names[i]);
  }
}

void CZuLogger::Deliver(const TWriteReport& report) {
  WriteDeferred();
  for (const std::string& text : report.texts) Report(text);
  if (report.rolledOver && m_appName != "LoggingStatistics") {
    // Said through the process's main log; a process that has none says it
    // in this one, so that the roll-over is never silent.
    CZuLogger& global = GetGlobalInstance();
    CZuLogger& target = global.IsInitialized() ? global : *this;
    target.LogMessage(0, "CZuLogger::RollOver", __LINE__, nullptr,
                      "Log file for Module [%s] rolled over. File size is %lluMB, Create time [%s].\n",
                      m_appName.c_str(), report.rolledSize >> 20, report.created);
  }
}

void CZuLogger::Report(const std::string& text) {
  // A callback that logs, while the fault lasts, fails and is called again:
  // a report made from inside a report is dropped.
  thread_local bool reporting = false;
  if (reporting) return;
  reporting = true;
  struct TDone {
    ~TDone() { reporting = false; }
  } done;
  LogMessageSyslog(text.c_str());
  if (g_logToStderr.load(std::memory_order_relaxed)) std::fprintf(stderr, "%s\n", text.c_str());
}

void CZuLogger::LogMessageSyslog(const char* text) {
  const SyslogCallback callback = g_syslog.load(std::memory_order_acquire);
  if (callback == nullptr) return;
  const std::string line = FXString::Format("%ld:%s:%s", static_cast<long>(FXPlatform::CurrentProcessId()),
                                            m_appName.c_str(), text != nullptr ? text : "");
  callback(line.c_str());
}

void CZuLogger::SetLogFileSize(unsigned long long sizeMiB) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_logFileSize = sizeMiB == 0 ? m_defaultLogFileSize : std::min(sizeMiB, ULLONG_MAX >> 20) << 20;
}

unsigned long long CZuLogger::GetLogFileSize() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_logFileSize >> 20;
}

void CZuLogger::SetDefaultLogFileSize(unsigned long long sizeMiB) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  if (sizeMiB != 0) m_defaultLogFileSize = std::min(sizeMiB, ULLONG_MAX >> 20) << 20;
}

unsigned long long CZuLogger::GetDefaultLogFileSize() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_defaultLogFileSize >> 20;
}

void CZuLogger::SetMaxVersions(int versions) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_maxVersions = versions > 0 ? versions : m_defaultMaxVersions;
}

int CZuLogger::GetMaxVersions() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_maxVersions;
}

void CZuLogger::SetDefaultMaxVersions(int versions) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  if (versions > 0) m_defaultMaxVersions = versions;
}

int CZuLogger::GetDefaultMaxVersions() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_defaultMaxVersions;
}

void CZuLogger::SetRetainLogsTill(int days) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_retainLogsTill = days > 0 ? days : 0;
}

void CZuLogger::SetKeepLogFileOpen(bool keepOpen) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_keepLogFileOpen = keepOpen;
  if (!keepOpen) m_file->Close();
}

bool CZuLogger::GetKeepLogFileOpen() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_keepLogFileOpen;
}

void CZuLogger::SetLogfileParams(int maxVersions, unsigned long long sizeMiB, int retainLogsTill, int jobIdWidth,
                                 int threadIdWidth) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  SetMaxVersions(maxVersions);
  SetLogFileSize(sizeMiB);
  SetRetainLogsTill(retainLogsTill);
  // The columns only grow, so that the lines of a file stay aligned; wider
  // than a 64-bit number needs would only eat the line.
  if (jobIdWidth > 0) GrowTo(m_jobIdWidth, std::min(jobIdWidth, kMaxColumnWidth));
  if (threadIdWidth > 0) GrowTo(m_threadIdWidth, std::min(threadIdWidth, kMaxColumnWidth));
}

void CZuLogger::SetPlaceHolderForPreMessage(bool on) { m_placeHolder.store(on, std::memory_order_relaxed); }

void CZuLogger::SetLoggingMode(modeOfLogging mode) {
  m_directWrite.store(mode == LOGGING_MODE_DIRECT, std::memory_order_relaxed);
}

modeOfLogging CZuLogger::GetLoggingMode() const {
  return m_directWrite.load(std::memory_order_relaxed) ? LOGGING_MODE_DIRECT : LOGGING_MODE_SERVICE;
}

void CZuLogger::SetLogToStdout(bool on) { g_logToStdout.store(on); }
void CZuLogger::SetLogToStderr(bool on) { g_logToStderr.store(on); }

void CZuLogger::SetLoggingOptions(bool logToStdout, bool logToStderr) {
  SetLogToStdout(logToStdout);
  SetLogToStderr(logToStderr);
}

void CZuLogger::SetRetryOnLogOpenFail(bool retry) { g_noRetryOnOpenFail.store(!retry); }
void CZuLogger::SetShowLogLevel(bool on) { g_showLogLevel.store(on); }
CZuLogger::LogMessageHook CZuLogger::SetLogMessageHook(LogMessageHook hook) { return g_hook.exchange(hook); }
CZuLogger::SyslogCallback CZuLogger::SetSyslogCallback(SyslogCallback callback) {
  return g_syslog.exchange(callback);
}

void CZuLogger::SetPlatformInformation(const std::string& hostName, const std::string& physicalHostName,
                                       const std::string& clientName, const std::string& instance,
                                       const std::string& osText, const std::string& ipAddresses,
                                       const std::string& controlServerName,
                                       const std::string& controlServerHost) {
  TPlatformInformation& info = PlatformInformation();
  std::lock_guard<std::mutex> guard(info.lock);
  info.hostName = hostName;
  info.physicalHostName = physicalHostName;
  info.clientName = clientName;
  info.instance = instance;
  info.osText = osText;
  info.ipAddresses = ipAddresses;
  info.controlServerName = controlServerName;
  info.controlServerHost = controlServerHost;
}

void CZuLogger::SetProcessorInformation(const std::string& processorText, unsigned long addressWidth) {
  TPlatformInformation& info = PlatformInformation();
  std::lock_guard<std::mutex> guard(info.lock);
  info.processorText = processorText;
  info.addressWidth = addressWidth;
}

CZuError CZuLogger::GetLockName(const char* appName, const std::string&, std::string& lockName) {
  if (appName == nullptr || *appName == '\0')
    return FXErrorUtil::ErrorWin32(ZU_HERE("CZuLogger::GetLockName"), ERROR_ERRORS_ENCOUNTERED, "Log name is empty");
  lockName = std::string("Global\\ZuLogger_") + appName;
  return CZuError::Success();
}

bool CZuLogger::isLogFileOpen() const {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  return m_file->IsOpen();
}

bool CZuLogger::CanUserWriteToLog() const {
  return IsInitialized() && FXPlatform::CLogFile::CanAppend(m_logFilePath);
}

void CZuLogger::CloseLogFile(bool stopKeepingOpen) {
  std::lock_guard<std::recursive_mutex> guard(m_criticalSection);
  m_file->Close();
  if (stopKeepingOpen) m_keepLogFileOpen = false;
}
