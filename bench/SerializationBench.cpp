// The property bag's serialized text against JSON (nlohmann::json) for the
// same dictionary of 20 mixed properties: strings, wide strings (UTF-8 in
// JSON), 32- and 64-bit numbers, booleans. Each side writes its text and
// parses it back into a dictionary of its own kind.
#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "serialization/Bag.h"
#include "text/StringConvert.h"

namespace {

// Twenty properties, the mix a backup job's bag typically holds.
CBag MakeBag() {
  CBag bag;
  bag.Write("ClientName", "backup-client-017.example.com");
  bag.Write("InstanceName", "Instance001");
  bag.Write("JobId", 4815162342LL);
  bag.Write("JobType", 4);
  bag.Write("SubclientId", 1203u);
  bag.Write("StartTime", 1732380000LL);
  bag.Write("BytesTransferred", 91234567890ULL);
  bag.Write("FilesTransferred", 1234567u);
  bag.Write("FilesFailed", 3);
  bag.Write("Compressed", true);
  bag.Write("Encrypted", false);
  bag.Write("SourcePath", L"C:\\Users\\Public\\Documents\\Quarterly reports");
  bag.Write("TargetPath", L"\\\\storage01\\backups\\client017");
  bag.Write("Policy", "Default Server Plan");
  bag.Write("LastError", "");
  bag.Write("RetryCount", 0);
  bag.Write("StreamCount", 4u);
  bag.Write("Throughput", 123456789LL);
  bag.Write("Operator", L"J\u00fcrgen M\u00fcller");
  bag.Write("Comment", "weekly full, verified after write");
  return bag;
}

nlohmann::json MakeJson() {
  nlohmann::json json;
  json["ClientName"] = "backup-client-017.example.com";
  json["InstanceName"] = "Instance001";
  json["JobId"] = 4815162342LL;
  json["JobType"] = 4;
  json["SubclientId"] = 1203u;
  json["StartTime"] = 1732380000LL;
  json["BytesTransferred"] = 91234567890ULL;
  json["FilesTransferred"] = 1234567u;
  json["FilesFailed"] = 3;
  json["Compressed"] = true;
  json["Encrypted"] = false;
  json["SourcePath"] = FXString::ToString(L"C:\\Users\\Public\\Documents\\Quarterly reports");
  json["TargetPath"] = FXString::ToString(L"\\\\storage01\\backups\\client017");
  json["Policy"] = "Default Server Plan";
  json["LastError"] = "";
  json["RetryCount"] = 0;
  json["StreamCount"] = 4u;
  json["Throughput"] = 123456789LL;
  json["Operator"] = FXString::ToString(L"J\u00fcrgen M\u00fcller");
  json["Comment"] = "weekly full, verified after write";
  return json;
}

void SaveOurs(benchmark::State& state) {
  const CBag bag = MakeBag();
  std::string text;
  for (auto _ : state) {
    bag.GetSerializedData(text);
    benchmark::DoNotOptimize(text.data());
  }
}

void SaveJson(benchmark::State& state) {
  const nlohmann::json json = MakeJson();
  for (auto _ : state) {
    std::string text = json.dump();
    benchmark::DoNotOptimize(text.data());
  }
}

void LoadOurs(benchmark::State& state) {
  std::string text;
  MakeBag().GetSerializedData(text);
  CBag bag;
  for (auto _ : state) {
    bag.LoadSerializedData(text);
    benchmark::ClobberMemory();
  }
}

void LoadJson(benchmark::State& state) {
  const std::string text = MakeJson().dump();
  for (auto _ : state) {
    nlohmann::json json = nlohmann::json::parse(text);
    benchmark::DoNotOptimize(&json);
  }
}

void RoundTripOurs(benchmark::State& state) {
  const CBag bag = MakeBag();
  CBag copy;
  std::string text;
  for (auto _ : state) {
    bag.GetSerializedData(text);
    copy.LoadSerializedData(text);
    benchmark::ClobberMemory();
  }
}

void RoundTripJson(benchmark::State& state) {
  const nlohmann::json json = MakeJson();
  for (auto _ : state) {
    const std::string text = json.dump();
    nlohmann::json copy = nlohmann::json::parse(text);
    benchmark::DoNotOptimize(&copy);
  }
}

const bool kRegistered = [] {
  // The two sides must hold the same properties.
  std::string text;
  CBag loaded;
  if (MakeBag().GetSerializedData(text).IsError() || loaded.LoadSerializedData(text).IsError() ||
      loaded.allKeys().size() != MakeJson().size())
    benchmark::RegisterBenchmark("serialization/mismatch", [](benchmark::State& state) {
      state.SkipWithError("the bag does not round-trip");
    });
  benchmark::RegisterBenchmark("bag_save/ours", SaveOurs);
  benchmark::RegisterBenchmark("bag_save/nlohmann_json", SaveJson);
  benchmark::RegisterBenchmark("bag_load/ours", LoadOurs);
  benchmark::RegisterBenchmark("bag_load/nlohmann_json", LoadJson);
  benchmark::RegisterBenchmark("bag_round_trip/ours", RoundTripOurs);
  benchmark::RegisterBenchmark("bag_round_trip/nlohmann_json", RoundTripJson);
  return true;
}();

}  // namespace
