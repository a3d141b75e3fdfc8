#include "Options.h"

#include <cstdlib>
#include <list>

#include <cmdline/CommandLineArguments.h>
#include <errors/ErrorUtil.h>
#include <text/IniFile.h>
#include <text/StringAlgo.h>
#include <text/StringConvert.h>
#include <text/TextFile.h>

namespace zuscan {

const char* const kUsage =
    "usage: zuscan [options] ROOT...\n"
    "Walks the folders ROOT... and writes a catalogue of what the rules take.\n"
    "\n"
    "  -workers N          worker threads (default 2)\n"
    "  -exclude PATTERN    leave out a path or pattern (repeatable)\n"
    "  -include PATTERN    take back part of what was left out (repeatable)\n"
    "  -rules FILE         rules, one a line: -PATTERN excludes, +PATTERN includes,\n"
    "                      a bare PATTERN excludes; lines starting with # are comments\n"
    "  -config FILE        an INI file whose [zuscan] section holds the same settings\n"
    "                      (workers, exclude, include, rules, checksum, catalog,\n"
    "                      compare, log-dir, level, quiet); the command line wins\n"
    "  -checksum KIND      crc32, crc64, md5 or none (default none)\n"
    "  -catalog FILE       where to write the catalogue (default zuscan.catalog)\n"
    "  -compare OLD        report what was added, removed and changed since OLD\n"
    "  -log-dir DIR        the log folder (default: the current folder)\n"
    "  -level N            the log's debug level (default 2)\n"
    "  -quiet              no progress line\n"
    "  -help               this text\n"
    "\n"
    "Patterns: * and ? within a name, \\**\\ any folders (\\**\\cache\\***), dir\\***\n"
    "a folder and all below it; a pattern without a backslash applies in every\n"
    "folder (*.tmp). A path without wildcards names one file or folder.\n"
    "Exit codes: 0 done, 1 some entries failed, 2 usage, 3 fatal, 130 interrupted.\n";

namespace {

#define ZUSCAN_HERE(function) ZU_HERE("zuscan::" function)

const char* const kBlanks = " \t\r\n";

bool ParseNumber(const std::string& text, int low, int high, int& value) {
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || number < low || number > high) return false;
  value = static_cast<int>(number);
  return true;
}

// The rules file: any encoding CTextFile detects by its byte-order mark.
CZuError ReadRulesFile(const std::string& path, std::vector<TRule>& rules) {
  CTextFile file;
  if (file.Open(path, 1, 0, 0) != 0) {
    return FXErrorUtil::ErrorWin32(ZUSCAN_HERE("ReadRulesFile"), ERROR_OPEN_FAILED, "Cannot read the rules file, Path=[%s]",
                                   path.c_str());
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  int rc = 0;
  while ((rc = file.ReadLine(&length, &buffer)) == 0 || (rc == -1 && length > 0)) {
    std::string line = FXString::ToString(std::wstring(buffer, static_cast<std::size_t>(length)));
    FXString::Trim(line, kBlanks);
    if (!line.empty() && line[0] != '#') {
      TRule rule;
      if (line[0] == '+' || line[0] == '-') {
        rule.include = line[0] == '+';
        line.erase(0, 1);
      }
      rule.term = line;
      rules.push_back(rule);
    }
    if (rc == -1) break;
  }
  CTextFile::FreeLineBuffer(buffer);
  file.Close();
  if (rc == -2) {
    return FXErrorUtil::ErrorWin32(ZUSCAN_HERE("ReadRulesFile"), ERROR_READ_FAULT, "Path=[%s]", path.c_str());
  }
  return CZuError::Success();
}

// A command-line value if given, else the INI file's.
struct CSettings {
  CCommandLineArguments& arguments;
  INIFileReader* config;

  bool Get(const char* name, std::string& value) {
    if (!arguments.GetOption(name, value)) return true;
    if (!config) return false;
    value = config->getKeyValue("zuscan", name);
    return !value.empty();
  }
  bool Flag(const char* name) {
    bool present = false;
    arguments.GetOption(name, present);
    if (present || !config) return present;
    const std::string value = config->getKeyValue("zuscan", name);
    return value == "1" || value == "true" || value == "yes";
  }
  std::list<std::string> List(const char* name) {
    std::list<std::string> values;
    arguments.GetOption(name, values);
    if (!values.empty() || !config) return values;
    // Every line of the key, not only the first as getKeyValue gives.
    for (const std::string& line : config->getSectionData("zuscan")) {
      const std::size_t equals = line.find('=');
      if (equals == std::string::npos) continue;
      std::string key = line.substr(0, equals), value = line.substr(equals + 1);
      FXString::Trim(key, kBlanks);
      FXString::Trim(value, kBlanks);
      if (!value.empty() && FXString::RemoveLeftNoCase(key, name) && key.empty()) values.push_back(value);
    }
    return values;
  }
};

}  // namespace

CZuError ParseOptions(int argc, char** argv, TOptions& options, std::string& usageProblem) {
  usageProblem.clear();
  CCommandLineArguments arguments(argc, argv);

  bool present = false;
  arguments.GetOption("help", present);
  if (present) {
    options.help = true;
    return CZuError::Success();
  }

  std::string value;
  INIFileReader config;
  const bool hasConfig = !arguments.GetOption("config", value);
  if (hasConfig) {
    if (!arguments.GetOption("config", value).IsError() && value.empty()) {
      usageProblem = "-config needs a file";
      return CZuError::Success();
    }
    config.setINIFileName(value);
    if (!config.sectionExists("zuscan")) {
      return FXErrorUtil::ErrorWin32(ZUSCAN_HERE("ParseOptions"), ERROR_NOT_FOUND,
                                     "No [zuscan] section in the configuration file, Path=[%s]", value.c_str());
    }
  }
  CSettings settings{arguments, hasConfig ? &config : nullptr};

  for (const char* name : {"workers", "level"}) {
    if (!settings.Get(name, value)) continue;
    int& target = name[0] == 'w' ? options.workers : options.level;
    if (!ParseNumber(value, name[0] == 'w' ? 1 : -1, name[0] == 'w' ? 256 : 100, target)) {
      usageProblem = std::string("bad value for -") + name + ": " + value;
      return CZuError::Success();
    }
  }
  if (settings.Get("checksum", value) && !ParseChecksumName(value, options.checksum)) {
    usageProblem = "bad value for -checksum: " + value;
    return CZuError::Success();
  }
  settings.Get("catalog", options.catalog);
  settings.Get("compare", options.compare);
  settings.Get("log-dir", options.logDirectory);
  options.quiet = settings.Flag("quiet");

  for (const std::string& term : settings.List("exclude")) options.rules.push_back({false, term});
  for (const std::string& term : settings.List("include")) options.rules.push_back({true, term});
  if (settings.Get("rules", value)) {
    CZuError result = ReadRulesFile(value, options.rules);
    if (result.IsError()) return result;
  }

  // Whatever no option took: roots, or arguments nobody knows.
  std::list<std::string> rest;
  arguments.GetUnusedArguments(rest);
  for (const std::string& argument : rest) {
    if (!argument.empty() && argument[0] == '-') {
      usageProblem = "unknown option: " + argument;
      return CZuError::Success();
    }
    options.roots.push_back(argument);
  }
  if (options.roots.empty()) usageProblem = "no folder to scan";
  return CZuError::Success();
}

}  // namespace zuscan
