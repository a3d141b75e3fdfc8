// File checksums for the catalogue: one pass over the file in large blocks.
#pragma once

#include <string>

#include <errors/ZuError.h>

namespace zuscan {

enum class EChecksum { None, Crc32, Crc64, Md5 };

// "crc32", "crc64", "md5" or "none"; false for anything else.
bool ParseChecksumName(const std::string& name, EChecksum& kind);
const char* ChecksumName(EChecksum kind);

// The checksum of the file's content as lower-case hexadecimal (CRC-32: 8
// digits, CRC-64: 16, MD5: 32) and the number of bytes read.
CZuError ChecksumFile(const std::string& path, EChecksum kind, std::string& hex, unsigned long long& bytes);

}  // namespace zuscan
