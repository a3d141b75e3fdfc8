// zuscan's settings: the command line first, then an INI file for what the
// command line left open, then the defaults.
#pragma once

#include <string>
#include <vector>

#include <errors/ZuError.h>

#include "Checksum.h"

namespace zuscan {

struct TRule {
  bool include = false;  // an exception that takes back what a filter excluded
  std::string term;      // a path or pattern in the filter set's raw form
};

struct TOptions {
  std::vector<std::string> roots;
  int workers = 2;
  std::vector<TRule> rules;
  EChecksum checksum = EChecksum::None;
  std::string catalog = "zuscan.catalog";
  std::string compare;
  std::string logDirectory;
  int level = 2;
  bool quiet = false;
  bool help = false;
};

extern const char* const kUsage;

// Reads the command line, the -config file and the -rules file. A failure
// of the command line itself (unknown or unused arguments, a missing or bad
// value) is reported through `usageProblem` with success, so that the
// caller prints the usage; files that cannot be read are errors.
CZuError ParseOptions(int argc, char** argv, TOptions& options, std::string& usageProblem);

}  // namespace zuscan
