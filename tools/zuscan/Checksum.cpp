#include "Checksum.h"

#include <memory>
#include <mutex>
#include <vector>

#include <errors/ErrorUtil.h>
#include <platform/PlainFile.h>
#include <text/Md5.h>
#include <text/ZuCRC32.h>
#include <text/ZuCRC64.h>

namespace zuscan {

namespace {

// Large enough that the checksum, not the call, dominates; small enough to
// stay in the cache between the read and the checksum.
constexpr std::size_t kBlockSize = 64 << 10;

// Blocks are reused from scan to scan and file to file: a scan allocates one
// per worker, not one per file. (A thread_local block would do the same, but
// mingw's emulated thread_local crashes on destroying it in threads that end.)
class CBlockPool {
 public:
  std::unique_ptr<char[]> Take() {
    std::lock_guard<std::mutex> hold(m_lock);
    if (m_free.empty()) return std::unique_ptr<char[]>(new char[kBlockSize]);
    std::unique_ptr<char[]> block = std::move(m_free.back());
    m_free.pop_back();
    return block;
  }
  void Give(std::unique_ptr<char[]> block) {
    std::lock_guard<std::mutex> hold(m_lock);
    m_free.push_back(std::move(block));
  }

 private:
  std::mutex m_lock;
  std::vector<std::unique_ptr<char[]>> m_free;
};

CBlockPool& Blocks() {
  static CBlockPool* pool = new CBlockPool;  // lives until the process ends
  return *pool;
}

// A pool block held for one call.
struct TBlock {
  std::unique_ptr<char[]> data = Blocks().Take();
  ~TBlock() { Blocks().Give(std::move(data)); }
  char* get() const { return data.get(); }
};

std::string Hex(const unsigned char* bytes, std::size_t count) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text(2 * count, '0');
  for (std::size_t i = 0; i < count; ++i) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 15];
  }
  return text;
}

template <typename Value>
std::string HexBigEndian(Value value) {
  unsigned char bytes[sizeof(Value)];
  for (std::size_t i = 0; i < sizeof(Value); ++i) {
    bytes[i] = static_cast<unsigned char>(value >> (8 * (sizeof(Value) - 1 - i)));
  }
  return Hex(bytes, sizeof(Value));
}

}  // namespace

bool ParseChecksumName(const std::string& name, EChecksum& kind) {
  static const struct {
    const char* name;
    EChecksum kind;
  } kNames[] = {{"none", EChecksum::None}, {"crc32", EChecksum::Crc32}, {"crc64", EChecksum::Crc64}, {"md5", EChecksum::Md5}};
  for (const auto& entry : kNames) {
    if (name == entry.name) {
      kind = entry.kind;
      return true;
    }
  }
  return false;
}

const char* ChecksumName(EChecksum kind) {
  switch (kind) {
    case EChecksum::Crc32: return "crc32";
    case EChecksum::Crc64: return "crc64";
    case EChecksum::Md5: return "md5";
    case EChecksum::None: break;
  }
  return "none";
}

CZuError ChecksumFile(const std::string& path, EChecksum kind, std::string& hex, unsigned long long& bytes) {
  hex.clear();
  bytes = 0;
  const FXCodeLocation here = ZU_HERE("zuscan::ChecksumFile");
  FXPlatform::CPlainFile file;
  FXPlatform::TSystemError error = file.Open(path, FXPlatform::EPlainFileOpen::kReadExisting);
  if (error.win32 != 0) return FXPlatform::ErrorFromSystem(here, error).Push(here, "Path=[%s]", path.c_str());

  const TBlock block;
  CZuCRC32 crc32;
  CZuCRC64 crc64;
  CMd5 md5;
  for (;;) {
    std::size_t n = 0;
    error = file.Read(block.get(), kBlockSize, n);
    if (error.win32 != 0) return FXPlatform::ErrorFromSystem(here, error).Push(here, "Read failed, Path=[%s]", path.c_str());
    if (n == 0) break;
    bytes += n;
    const unsigned int length = static_cast<unsigned int>(n);
    switch (kind) {
      case EChecksum::Crc32: crc32.UpdateCRC32(block.get(), length); break;
      case EChecksum::Crc64: crc64.UpdateCRC64(block.get(), length); break;
      case EChecksum::Md5: md5.Process(block.get(), length); break;
      case EChecksum::None: break;
    }
    // A regular file gives less than asked only at its end: one read
    // system call saved per file, which is most of a small file's cost.
    if (n < kBlockSize) break;
  }
  switch (kind) {
    case EChecksum::Crc32: hex = HexBigEndian(crc32.GetCRC32()); break;
    case EChecksum::Crc64: hex = HexBigEndian(crc64.GetCRC64()); break;
    case EChecksum::Md5: {
      md5.End();
      unsigned char digest[16];
      md5.GetCode(digest);
      hex = Hex(digest, sizeof digest);
      break;
    }
    case EChecksum::None: break;
  }
  return CZuError::Success();
}

}  // namespace zuscan
