// Scratch folders, file reading and line masking for the logging tests.
#pragma once

#include <string>
#include <vector>

namespace ZuLogTest {

// The test program runs with EVDEBUG_GLOBAL_PREFIX set to a 43-character
// value (see CMakeLists.txt); every line carries its first 36 and a blank.
constexpr char kPrefixValue[] = "ZuLogTestPrefix_abcdefghijklmnopqrstuvwxyz0";
constexpr char kPrefixField[] = "ZuLogTestPrefix_abcdefghijklmnopqrst ";

// A fresh folder below the temporary folder, removed with its contents.
class CScratchFolder {
 public:
  explicit CScratchFolder(const std::string& tag);
  ~CScratchFolder();
  CScratchFolder(const CScratchFolder&) = delete;
  CScratchFolder& operator=(const CScratchFolder&) = delete;
  // Ends with the path separator.
  const std::string& Path() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + name; }

 private:
  std::string m_path;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);
// The lines of a log file, split at CR LF.
std::vector<std::string> Lines(const std::string& text);
// The lines after the header block that starts every log file.
std::vector<std::string> BodyLines(const std::string& path);
// The names of the rolled files of a module in a folder, oldest first.
std::vector<std::string> RolledFiles(const std::string& folder, const std::string& appName);
// Whether `text` has the pattern's length and characters, where 'd' in the
// pattern stands for any decimal digit.
bool MatchesPattern(const std::string& text, const char* pattern);
// The time column replaced by "MM/DD hh:mm:ss " once its digits are checked.
std::string MaskTime(const std::string& line);
// The columns this thread's lines start with, time masked:
// process id, thread id (at least `threadWidth` wide) and time.
std::string LineStart(int threadWidth = 5);

// The module name `name`, noted so that its machine-wide lock (a file in
// /dev/shm on Linux) is removed when the test program ends.
std::string TestApp(const std::string& name);

// Collects the logger's failure reports (its syslog callback) while alive.
class CSyslogCapture {
 public:
  CSyslogCapture();
  ~CSyslogCapture();
  const std::vector<std::string>& Texts() const;
  // Whether some report contains `part`.
  bool Contains(const std::string& part) const;
  void Clear();
};

}  // namespace ZuLogTest
