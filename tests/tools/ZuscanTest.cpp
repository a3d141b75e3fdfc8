// zuscan end to end, in process: real folder trees, real catalogues.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <paths/Path.h>
#include <platform/ZuTypes.h>
#include <text/Ascii85.h>
#include <text/Md5.h>
#include <text/ZuCRC32.h>
#include <text/ZuCRC64.h>

#include "zuscan/Catalog.h"
#include "zuscan/Zuscan.h"

namespace fs = std::filesystem;

namespace {

std::string ReadStream(std::FILE* file) {
  std::string text;
  std::rewind(file);
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) text.append(buffer, n);
  std::fclose(file);
  return text;
}

void WriteFile(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

struct TScan {
  int code = -1;
  std::string out, err;
};

class ZuscanTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    m_dir = fs::temp_directory_path() / ("zuscan-" + std::string(info->name()));
    fs::remove_all(m_dir);
    m_root = m_dir / "root";
    WriteFile(m_root / "docs" / "a.txt", "alpha");
    WriteFile(m_root / "docs" / "b.tmp", "scratch");
    WriteFile(m_root / "docs" / "sub" / "c.txt", "gamma gamma");
    WriteFile(m_root / "cache" / "x.bin", std::string(3000, 'x'));
    WriteFile(m_root / "cache" / "keep" / "z.txt", "zeta");
    WriteFile(m_root / "big.dat", std::string(300000, 'b'));
  }
  void TearDown() override {
    std::error_code ignored;
    fs::remove_all(m_dir, ignored);
  }

  std::string Root() const { return m_root.string(); }
  // The root as the library writes paths (on POSIX: Z:\...), for patterns:
  // '/' is a pattern's escape character, so patterns keep to backslashes.
  std::string LibraryRoot() const {
    std::string path;
    EXPECT_FALSE(FXPath::TQGetFullPathName(Root(), path).IsError());
    return path;
  }
  std::string Catalog(const char* name = "scan.catalog") const { return (m_dir / name).string(); }

  // Runs zuscan with the arguments, the catalogue and log under the test's
  // folder unless the arguments name them.
  TScan Scan(std::vector<std::string> arguments, bool interrupted = false) {
    arguments.insert(arguments.begin(), {"zuscan", "-quiet", "-log-dir", (m_dir / "log").string()});
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(&argument[0]);
    argv.push_back(nullptr);
    std::atomic<bool> stop{interrupted};
    zuscan::TConsole console;
    console.out = std::tmpfile();
    console.err = std::tmpfile();
    console.interrupted = &stop;
    TScan scan;
    scan.code = zuscan::Run(static_cast<int>(argv.size() - 1), argv.data(), console);
    scan.out = ReadStream(console.out);
    scan.err = ReadStream(console.err);
    return scan;
  }

  // The catalogue's entries by path below the root, with '/' between names.
  std::map<std::string, zuscan::TCatalogEntry> Entries(const zuscan::TCatalog& catalog) const {
    std::map<std::string, zuscan::TCatalogEntry> entries;
    const std::string root = catalog.header.roots.at(0) + "\\";
    for (const auto& item : catalog.entries) {
      EXPECT_EQ(item.first.compare(0, root.size(), root), 0) << item.first;
      std::string relative = item.first.substr(root.size());
      for (char& c : relative) c = c == '\\' ? '/' : c;
      entries[relative] = item.second;
    }
    return entries;
  }

  zuscan::TCatalog Load(const std::string& path) {
    zuscan::TCatalog catalog;
    const CZuError result = zuscan::ReadCatalog(path, catalog);
    EXPECT_FALSE(result.IsError()) << result.AsString();
    return catalog;
  }

  fs::path m_dir, m_root;
};

std::vector<std::string> Keys(const std::map<std::string, zuscan::TCatalogEntry>& entries) {
  std::vector<std::string> keys;
  for (const auto& item : entries) keys.push_back(item.first);
  return keys;
}

TEST_F(ZuscanTest, RulesDecideEveryPathAndExcludedFoldersAreNeverEntered) {
  const TScan scan = Scan({"-exclude", "*.tmp", "-exclude", Root() + "\\cache", "-workers", "2", "-catalog",
                           Catalog(), Root()});
  ASSERT_EQ(scan.code, 0) << scan.err;
  const zuscan::TCatalog catalog = Load(Catalog());
  EXPECT_TRUE(catalog.hasTrailer && catalog.trailer.complete);
  EXPECT_EQ(Keys(Entries(catalog)),
            (std::vector<std::string>{"big.dat", "docs", "docs/a.txt", "docs/sub", "docs/sub/c.txt"}));
  EXPECT_NE(scan.out.find("2 skipped by rules, 1 folders pruned"), std::string::npos) << scan.out;
  // The root, docs and docs\sub: cache was decided without being opened.
  EXPECT_NE(scan.out.find("3 folders walked"), std::string::npos) << scan.out;

  const auto entries = Entries(catalog);
  EXPECT_EQ(entries.at("big.dat").size, 300000u);
  EXPECT_EQ(entries.at("big.dat").kind, "file");
  EXPECT_EQ(entries.at("docs").kind, "folder");
  EXPECT_NE(entries.at("docs").attributes & 0x10, 0u);
  EXPECT_NE(entries.at("docs/a.txt").modified, 0u);
}

TEST_F(ZuscanTest, AnIncludeTakesBackPartOfAnExcludedFolder) {
  const TScan scan = Scan({"-exclude", Root() + "\\cache", "-include", LibraryRoot() + "\\cache\\keep\\***",
                           "-catalog", Catalog(), Root()});
  ASSERT_EQ(scan.code, 0) << scan.err;
  const auto entries = Entries(Load(Catalog()));
  EXPECT_EQ(entries.count("cache/x.bin"), 0u);
  EXPECT_EQ(entries.count("cache/keep/z.txt"), 1u);
}

TEST_F(ZuscanTest, RulesFileInUtf16AndConfigFileWithTheCommandLineWinning) {
  // UTF-16LE with its byte-order mark, CR LF line ends, a comment.
  const std::string root = LibraryRoot();
  const std::u16string rules = u"# scratch files\r\n-*.tmp\r\n" + std::u16string(root.begin(), root.end()) +
                               u"\\cache\r\n";
  std::string bytes = "\xFF\xFE";
  for (char16_t unit : rules) bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  WriteFile(m_dir / "rules.txt", bytes);
  WriteFile(m_dir / "zuscan.ini", "[zuscan]\r\nworkers=x\r\nchecksum=crc32\r\nexclude=*.bin\r\n");

  // The INI's bad worker count is never read: the command line gives one.
  const TScan scan = Scan({"-config", (m_dir / "zuscan.ini").string(), "-workers", "1", "-rules",
                           (m_dir / "rules.txt").string(), "-catalog", Catalog(), Root()});
  ASSERT_EQ(scan.code, 0) << scan.err;
  const auto entries = Entries(Load(Catalog()));
  EXPECT_EQ(Keys(entries), (std::vector<std::string>{"big.dat", "docs", "docs/a.txt", "docs/sub", "docs/sub/c.txt"}));
  EXPECT_EQ(entries.at("docs/a.txt").checksum.size(), 8u);
}

TEST_F(ZuscanTest, ChecksumsAreTheLibrarysOwn) {
  const std::string big(300000, 'b');
  CZuCRC32 crc32;
  crc32.UpdateCRC32(big.data(), static_cast<unsigned int>(big.size()));
  CZuCRC64 crc64;
  crc64.UpdateCRC64(big.data(), static_cast<unsigned int>(big.size()));
  CMd5 md5;
  md5.Process(big.data(), static_cast<unsigned int>(big.size()));
  md5.End();
  unsigned char digest[16];
  md5.GetCode(digest);
  char text[64];
  std::string md5Text;
  for (unsigned char byte : digest) {
    std::snprintf(text, sizeof text, "%02x", byte);
    md5Text += text;
  }
  std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(crc32.GetCRC32()));
  const std::string crc32Text = text;
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(crc64.GetCRC64()));
  const std::string crc64Text = text;

  for (const auto& expected : {std::make_pair("crc32", crc32Text), std::make_pair("crc64", crc64Text),
                               std::make_pair("md5", md5Text)}) {
    const TScan scan = Scan({"-checksum", expected.first, "-catalog", Catalog(), Root()});
    ASSERT_EQ(scan.code, 0) << scan.err;
    const auto entries = Entries(Load(Catalog()));
    EXPECT_EQ(entries.at("big.dat").checksum, expected.second) << expected.first;
    EXPECT_TRUE(entries.at("docs").checksum.empty());
  }
}

TEST_F(ZuscanTest, CompareReportsAddedRemovedAndChangedEntries) {
  ASSERT_EQ(Scan({"-checksum", "md5", "-catalog", Catalog("old.catalog"), Root()}).code, 0);
  WriteFile(m_root / "docs" / "a.txt", "alpha, longer");
  WriteFile(m_root / "docs" / "new.txt", "new");
  fs::remove(m_root / "docs" / "sub" / "c.txt");

  const TScan scan = Scan({"-checksum", "md5", "-catalog", Catalog(), "-compare", Catalog("old.catalog"), Root()});
  ASSERT_EQ(scan.code, 0) << scan.err;
  const std::string docs = Load(Catalog()).header.roots.at(0) + "\\docs\\";
  for (const std::string& line : {"added    " + docs + "new.txt\n", "removed  " + docs + "sub\\c.txt\n",
                                  "changed  " + docs + "a.txt (size, time, checksum)\n"}) {
    EXPECT_NE(scan.out.find(line), std::string::npos) << line << " in\n" << scan.out;
  }
  EXPECT_NE(scan.out.find("compare: 1 added, 1 removed"), std::string::npos) << scan.out;
}

TEST_F(ZuscanTest, BadCommandLinesGetTheUsageAndExitCode2) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"-bogus", Root()}, {}, {"-workers", "0", Root()},
                                             {"-checksum", "sha1", Root()}, {"-catalog"}}) {
    const TScan scan = Scan(arguments);
    EXPECT_EQ(scan.code, 2) << (arguments.empty() ? std::string() : arguments[0]);
    EXPECT_NE(scan.err.find("usage: zuscan"), std::string::npos) << scan.err;
  }
  const TScan help = Scan({"-help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_NE(help.out.find("-checksum KIND"), std::string::npos);
  // A malformed rule is the user's too.
  EXPECT_EQ(Scan({"-exclude", "<:ci", Root()}).code, 2);
  // A root that is not there is fatal.
  EXPECT_EQ(Scan({"-catalog", Catalog(), (m_dir / "missing").string()}).code, 3);
}

TEST_F(ZuscanTest, AnInterruptedScanLeavesAPartialCatalogueThatSaysSo) {
  const TScan scan = Scan({"-catalog", Catalog(), Root()}, /*interrupted=*/true);
  EXPECT_EQ(scan.code, 130) << scan.err;
  EXPECT_NE(scan.out.find("partial: interrupted"), std::string::npos) << scan.out;
  const zuscan::TCatalog catalog = Load(Catalog());
  ASSERT_TRUE(catalog.hasTrailer);
  EXPECT_FALSE(catalog.trailer.complete);
  EXPECT_FALSE(fs::exists(Catalog() + ".partial"));
}

}  // namespace

namespace {

// A catalogue from a newer zuscan: its entries carry a property this one
// does not know, one of them of a token type this one cannot read. The
// entries still load and compare.
TEST_F(ZuscanTest, ANewerCatalogueWithUnknownTokensStillCompares) {
  ASSERT_EQ(Scan({"-catalog", Catalog("new.catalog"), Root()}).code, 0);
  std::ifstream in(Catalog("new.catalog"), std::ios::binary);
  std::ofstream out(Catalog("newer.catalog"), std::ios::binary);
  std::string line;
  for (int number = 0; std::getline(in, line); ++number) {
    if (number > 0 && line.find("~>") != std::string::npos) {
      std::unique_ptr<char[]> raw;
      std::size_t length = 0;
      ASSERT_FALSE(CAscii85::Decode(line, raw, length).IsError());
      // A name token and a value token of type 99, then the old tokens.
      std::string tokens("1.1.16.6.\0Extra\0" "1.2.99.3.\0abc", 28);
      tokens.append(raw.get(), length);
      ASSERT_FALSE(CAscii85::Encode(tokens.data(), tokens.size(), line).IsError());
    }
    out << line << "\n";
  }
  out.close();

  const TScan scan = Scan({"-catalog", Catalog(), "-compare", Catalog("newer.catalog"), Root()});
  ASSERT_EQ(scan.code, 0) << scan.err;
  EXPECT_NE(scan.out.find("compare: 0 added, 0 removed, 0 changed, 10 unchanged"), std::string::npos) << scan.out;
}

// A name the Windows path form cannot carry is a failed entry: logged,
// counted, shown, and the scan ends with 1. Only POSIX file systems allow
// such names.
TEST_F(ZuscanTest, AnEntryThatCannotBeNamedFailsTheScanWithExitCode1) {
  if (kZuIsWindows) GTEST_SKIP() << "Windows names cannot hold a backslash";
  WriteFile(m_root / "docs" / "back\\slash.txt", "x");
  const TScan scan = Scan({"-catalog", Catalog(), Root()});
  EXPECT_EQ(scan.code, 1);
  EXPECT_NE(scan.err.find("(W32.123)"), std::string::npos) << scan.err;
  EXPECT_NE(scan.out.find("; 1 errors;"), std::string::npos) << scan.out;
  const zuscan::TCatalog catalog = Load(Catalog());
  EXPECT_EQ(catalog.trailer.errors, 1u);
  EXPECT_EQ(Entries(catalog).count("docs/a.txt"), 1u);
}

}  // namespace
