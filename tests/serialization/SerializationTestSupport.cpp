#include "SerializationTestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include <gtest/gtest.h>

#include "logging/ZuLogger.h"
#include "platform/CompleteTypes.h"
#include "platform/Sid.h"
#include "text/Ascii85.h"
#include "text/StringConvert.h"
#include "text/StringFormat.h"

namespace ZuSerialTest {

namespace {

std::mutex g_mutex;
std::vector<std::string> g_lines;

bool KeepLine(CZuLogger*, int, const char* text) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_lines.emplace_back(text);
  return true;
}

std::string Hex(const unsigned char* data, std::size_t size) {
  std::string text;
  char digits[4];
  for (std::size_t i = 0; i < size; ++i) {
    std::snprintf(digits, sizeof digits, "%02x", data[i]);
    text += digits;
  }
  return text;
}

}  // namespace

void CaptureLog() {
  static const bool started = [] {
    CZuLogger& logger = CZuLogger::GetGlobalInstance();
    const std::string folder = (std::filesystem::temp_directory_path() / "zu_serialization_tests").string();
    EXPECT_FALSE(logger.Initialize("ZuSerializationTests", folder).IsError());
    CZuLogger::SetLogMessageHook(KeepLine);
    return true;
  }();
  (void)started;
  ClearLog();
}

void ClearLog() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_lines.clear();
}

std::size_t CountLogged(const std::string& part) {
  std::lock_guard<std::mutex> lock(g_mutex);
  std::size_t n = 0;
  for (const std::string& line : g_lines) n += line.find(part) != std::string::npos;
  return n;
}

bool Logged(const std::string& part) { return CountLogged(part) != 0; }

std::string Token(const std::string& header, const std::string& payload) {
  return header + std::string(1, '\0') + payload;
}

std::string Token(unsigned id, unsigned type, const std::string& payload) {
  return Token(FXString::Format("1.%u.%u.%llu.", id, type, static_cast<unsigned long long>(payload.size())), payload);
}

std::string Decoded(const std::string& text) {
  auto_ptr_array<char> data;
  std::size_t size = 0;
  EXPECT_FALSE(CAscii85::Decode(text, data, size).IsError()) << text;
  return std::string(data.get() != nullptr ? data.get() : "", size);
}

std::string Encoded(const std::string& raw) {
  std::string text;
  EXPECT_FALSE(CAscii85::Encode(raw.data(), raw.size(), text).IsError());
  return text;
}

std::string Bytes(const CSerializedBuffer& buffer) {
  return buffer.GetBuffer() != nullptr ? std::string(buffer.GetBuffer(), buffer.GetBufferSize()) : std::string();
}

CZuError CRecorder::Keep(const char* type, DWORD id, const std::string& value) {
  tokens.push_back(std::string(type) + ":" + std::to_string(id) + ":" + value);
  return CZuError::Success();
}

CZuError CRecorder::LoadToken(DWORD id, void* sid) {
  std::string text;
  EXPECT_FALSE(FXPlatform::SidToString(sid, text).IsError());
  return Keep("sid", id, text);
}
CZuError CRecorder::LoadToken(DWORD id, const LUID& v) { return Keep("luid", id, FXString::AsString(v)); }
CZuError CRecorder::LoadToken(DWORD id, const GUID& v) { return Keep("guid", id, FXString::AsString(v)); }
CZuError CRecorder::LoadToken(DWORD id, const FILETIME& v) {
  return Keep("filetime", id, FXString::Format("%08x:%08x", static_cast<unsigned>(v.dwHighDateTime),
                                               static_cast<unsigned>(v.dwLowDateTime)));
}
CZuError CRecorder::LoadToken(DWORD id, bool v) { return Keep("bool", id, v ? "true" : "false"); }
CZuError CRecorder::LoadToken(DWORD id, unsigned long long v) { return Keep("u64", id, std::to_string(v)); }
CZuError CRecorder::LoadToken(DWORD id, long long v) { return Keep("i64", id, std::to_string(v)); }
CZuError CRecorder::LoadToken(DWORD id, unsigned int v) { return Keep("u32", id, std::to_string(v)); }
CZuError CRecorder::LoadToken(DWORD id, int v) { return Keep("i32", id, std::to_string(v)); }
CZuError CRecorder::LoadToken(DWORD id, const std::wstring& v) {
  std::string units;  // the code points, so that unpaired surrogates show
  for (wchar_t c : v) units += FXString::Format("%s%x", units.empty() ? "" : " ", static_cast<unsigned>(c));
  return Keep("wstring", id, units);
}
CZuError CRecorder::LoadToken(DWORD id, const std::string& v) { return Keep("string", id, v); }
CZuError CRecorder::LoadToken(DWORD id, const char* data, std::size_t size) {
  return Keep("chars", id, Hex(reinterpret_cast<const unsigned char*>(data), size));
}
CZuError CRecorder::LoadToken(DWORD id, const unsigned char* data, std::size_t size) {
  return Keep("bytes", id, Hex(data, size));
}

std::string ReadGolden(const std::string& name) {
  std::ifstream file(std::string(ZU_SERIALIZATION_GOLDEN_DIR) + "/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool UpdateGolden() { return std::getenv("ZU_UPDATE_GOLDEN") != nullptr; }

void WriteGolden(const std::string& name, const std::string& text) {
  std::ofstream file(std::string(ZU_SERIALIZATION_GOLDEN_DIR) + "/" + name, std::ios::binary);
  file << text;
}

}  // namespace ZuSerialTest
