#include "Zuscan.h"

#include <string>

#include <errors/ErrorOutputFormat.h>
#include <errors/ErrorUtil.h>
#include <logging/ZuLogger.h>
#include <paths/FilterSet.h>
#include <paths/Path.h>
#include <platform/Process.h>
#include <time/TimeStamp.h>

#include "Catalog.h"
#include "Counters.h"
#include "ErrorReport.h"
#include "Options.h"
#include "Progress.h"
#include "Scanner.h"

namespace zuscan {

namespace {

#define ZUSCAN_HERE(function) ZU_HERE("zuscan::" function)

constexpr const char* kToolVersion = "zuscan 1.0";
constexpr unsigned long long kLogSizeMiB = 16;

void PrintError(const TConsole& console, const CZuError& error) {
  std::fprintf(console.err, "zuscan: %s\n", error.AsString(EErrorOutputFormat::USER_SINGLE_LINE_DESCRIPTION_CODE).c_str());
}

CZuError BuildFilters(const std::vector<TRule>& rules, CFilterSet& filters) {
  for (const TRule& rule : rules) {
    const BFilterNodeState state(rule.include ? BFilterNodeState::FILTER_NODE_EXCEPTION
                                              : BFilterNodeState::FILTER_NODE_FILTER);
    CZuError result = CZuError::Success();
    if (CFilterTerm::IsWildcardItem(rule.term)) {
      CFilterTerm term;
      result = term.LoadRaw(rule.term);
      if (!result) result = filters.AddFilterItem(state, term);
    } else {
      // A literal path names one file or folder: in the form the walk
      // reports, whatever form the user wrote it in.
      std::string path;
      result = FXPath::TQGetFullPathName(rule.term, path);
      if (!result) result = FXPath::MakeNormalPath(path);
      if (!result) result = filters.AddFilterItem(state, path);
    }
    if (result.IsError()) return result.Push(ZUSCAN_HERE("BuildFilters"), "Rule=[%s]", rule.term.c_str());
  }
  return CZuError::Success();
}

// A root as the catalogue names it: full, in normal form, an existing folder.
CZuError ResolveRoot(const std::string& root, std::string& resolved) {
  CZuError result = FXPath::TQGetFullPathName(root, resolved);
  if (!result) result = FXPath::MakeNormalPath(resolved);
  if (!result && !CZuPath::IsDirectory(resolved.c_str())) {
    result = FXErrorUtil::ErrorWin32(ZUSCAN_HERE("ResolveRoot"), ERROR_PATH_NOT_FOUND, "Not a folder, Path=[%s]",
                                     root.c_str());
  }
  return result;
}

void PrintCompare(const TConsole& console, const TCompareResult& compare) {
  for (const std::string& path : compare.added) std::fprintf(console.out, "added    %s\n", path.c_str());
  for (const std::string& path : compare.removed) std::fprintf(console.out, "removed  %s\n", path.c_str());
  for (const auto& change : compare.changed) {
    std::fprintf(console.out, "changed  %s (%s)\n", change.first.c_str(), change.second.c_str());
  }
  std::fprintf(console.out, "compare: %zu added, %zu removed, %zu changed, %llu unchanged\n", compare.added.size(),
               compare.removed.size(), compare.changed.size(), compare.unchanged);
}

}  // namespace

int Run(int argc, char** argv, const TConsole& console) {
  TOptions options;
  std::string problem;
  CZuError result = ParseOptions(argc, argv, options, problem);
  if (options.help) {
    std::fputs(kUsage, console.out);
    return kExitDone;
  }
  if (!problem.empty()) {
    std::fprintf(console.err, "zuscan: %s\n\n%s", problem.c_str(), kUsage);
    return kExitUsage;
  }
  if (result.IsError()) {
    PrintError(console, result);
    return kExitFatal;
  }

  CZuLogger& logger = CZuLogger::GetGlobalInstance();
  logger.SetLogFileSize(kLogSizeMiB);
  result = logger.Initialize("zuscan", options.logDirectory, options.level);
  if (result.IsError()) {
    PrintError(console, result);
    return kExitFatal;
  }
  const std::string logFile = logger.GetLogFilePath();

  CFilterSet filters;
  result = BuildFilters(options.rules, filters);
  if (result.IsError()) {
    logger.LogMessage(-1, "zuscan::Run", __LINE__, "", "%s", result.AsString().c_str());
    PrintError(console, result);
    return kExitUsage;
  }

  TCatalogHeader header;
  header.tool = kToolVersion;
  header.host = FXPlatform::HostName();
  header.checksum = ChecksumName(options.checksum);
  header.start = static_cast<unsigned long long>(CTimeStamp::Now().AsSystemTime());
  for (const TRule& rule : options.rules) header.rules.push_back((rule.include ? "+" : "-") + rule.term);
  for (const std::string& root : options.roots) {
    std::string resolved;
    result = ResolveRoot(root, resolved);
    if (result.IsError()) {
      logger.LogMessage(-1, "zuscan::Run", __LINE__, "", "%s", result.AsString().c_str());
      PrintError(console, result);
      return kExitFatal;
    }
    header.roots.push_back(resolved);
  }

  CCatalogWriter catalog;
  result = catalog.Open(options.catalog, header);
  if (result.IsError()) {
    logger.LogMessage(-1, "zuscan::Run", __LINE__, "", "%s", result.AsString().c_str());
    PrintError(console, result);
    return kExitFatal;
  }

  TScanCounters counters;
  CErrorReport errors(console.err);
  CScanner scanner(options, filters, catalog, counters, errors);
  static const std::atomic<bool> kNever{false};
  const EProgressStyle style = options.quiet            ? EProgressStyle::None
                               : console.errIsTerminal ? EProgressStyle::Terminal
                                                       : EProgressStyle::Plain;
  CProgress progress(counters, style, console.interrupted ? *console.interrupted : kNever,
                     [&scanner] { scanner.Abort(); });
  progress.Start();
  if (console.interrupted && console.interrupted->load()) scanner.Abort();
  result = scanner.Scan(header.roots);
  progress.Finish();
  const bool aborted = scanner.WasAborted();
  if (result.IsError() && !aborted) errors.Report(result, "zuscan::Run", __LINE__);

  TCatalogTrailer trailer;
  trailer.end = static_cast<unsigned long long>(CTimeStamp::Now().AsSystemTime());
  trailer.complete = !aborted;
  trailer.entries = counters.entries;
  trailer.errors = errors.Count();
  result = catalog.Close(trailer);
  if (result.IsError()) {
    errors.Report(result, "zuscan::Run", __LINE__);
    errors.Finish(logFile);
    return kExitFatal;
  }

  int code = aborted ? kExitInterrupted : errors.Count() ? kExitSomeFailed : kExitDone;
  if (!options.compare.empty()) {
    TCatalog before, after;
    result = ReadCatalog(options.compare, before);
    if (!result) result = ReadCatalog(options.catalog, after);
    if (result.IsError()) {
      errors.Report(result, "zuscan::Run", __LINE__);
      code = kExitFatal;
    } else {
      PrintCompare(console, CompareCatalogs(before, after));
    }
  }
  errors.Finish(logFile);

  std::fprintf(console.out,
               "zuscan: %llu entries (%llu files), %.1f MB; %llu folders walked, %llu skipped by rules, %llu "
               "folders pruned; %llu errors; %.2f s\n",
               counters.entries.load(), counters.files.load(), counters.bytes / 1e6, counters.folders.load(),
               counters.skipped.load(), counters.pruned.load(), errors.Count(), progress.ElapsedSeconds());
  std::fprintf(console.out, "catalogue: %s (%s)\nlog: %s\n", options.catalog.c_str(),
               aborted ? "partial: interrupted" : "complete", logFile.c_str());
  logger.LogMessage(-1, "zuscan::Run", __LINE__, "", "Done, entries=%llu, errors=%llu, exit=%d",
                    counters.entries.load(), errors.Count(), code);
  return code;
}

}  // namespace zuscan
