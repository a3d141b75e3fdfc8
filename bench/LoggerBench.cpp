// Lines per second of a file logger that flushes every line to the system,
// one and four threads, 100-byte messages: ours keeping the file open (the
// baseline) and opening it for every line, both taking the cross-process
// lock; spdlog's basic_file_sink_mt flushing every line and buffered.
#include <cstdio>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "logging/ZuLogger.h"
#include "platform/FileSystem.h"

namespace {

const std::string kMessage(100, 'm');

// Set up by the first thread before the timed loop, which every thread
// enters together, and torn down by it after they all left it.
std::unique_ptr<CZuLogger> g_ours;
std::shared_ptr<spdlog::logger> g_spdlog;

void Ours(benchmark::State& state, bool keepOpen) {
  const std::string folder = FXPlatform::TempDirectory() + "zu_logger_bench";
  if (state.thread_index() == 0) {
    g_ours.reset(new CZuLogger);
    g_ours->Initialize(keepOpen ? "BenchKeepOpen" : "BenchReopen", folder, 2, keepOpen);
    g_ours->SetLoggingMode(LOGGING_MODE_DIRECT);
    g_ours->SetLogFileSize(1 << 16);  // 64 GiB: no roll-over while measuring
  }
  for (auto _ : state) g_ours->LogMessage(1, "Bench::Log", 42, nullptr, "%s", kMessage.c_str());
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) {
    const std::string path = g_ours->GetLogFilePath();
    g_ours.reset();
    std::remove(path.c_str());
  }
}

void Spdlog(benchmark::State& state, bool flushEveryLine) {
  const std::string path = FXPlatform::TempDirectory() + "zu_logger_bench/spdlog.log";
  if (state.thread_index() == 0) {
    g_spdlog = std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true));
    // The same columns as ours: process, thread, time, job, function.
    g_spdlog->set_pattern("%-5P %-5t %m/%d %H:%M:%S --- Bench::Log(42) - %v");
    if (flushEveryLine) g_spdlog->flush_on(spdlog::level::trace);
  }
  for (auto _ : state) g_spdlog->info("{}", kMessage);
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) {
    g_spdlog.reset();
    std::remove(path.c_str());
  }
}

const int kRegistered = [] {
  for (int threads : {1, 4}) {
    benchmark::RegisterBenchmark("LogLine/ours", Ours, true)->Threads(threads)->UseRealTime();
    benchmark::RegisterBenchmark("LogLine/ours_reopen_every_line", Ours, false)->Threads(threads)->UseRealTime();
    benchmark::RegisterBenchmark("LogLine/spdlog_flush_every_line", Spdlog, true)->Threads(threads)->UseRealTime();
    benchmark::RegisterBenchmark("LogLine/spdlog_buffered", Spdlog, false)->Threads(threads)->UseRealTime();
  }
  return 0;
}();

}  // namespace
