#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IniVectors.h"
#include "platform/FileSystem.h"
#include "support/FileBytes.h"
#include "platform/ZuTypes.h"
#include "text/IniFile.h"

namespace {

std::string TempIni(const std::string& name) { return FXPlatform::TempDirectory() + "zu_ini_" + name + ".ini"; }

using ZuTest::ReadBytes;
using ZuTest::WriteBytes;

typedef std::vector<std::string> Strings;

// The vectors' source path, in the form the platform opens.
std::string VectorsPath() {
  std::string path = ZU_INI_VECTORS;
  if (kZuIsWindows) {
    for (char& c : path)
      if (c == '/') c = '\\';
    path = "Z:" + path;
  }
  return path;
}

// Every call recorded from the Windows service gets the same answer here.
TEST(IniFile, AgreesWithThePrivateProfileService) {
  std::ifstream vectors(VectorsPath(), std::ios::binary);
  ASSERT_TRUE(vectors.good()) << VectorsPath();
  std::string line, caseName;
  Strings call, answers;
  INIFileReader reader;
  int cases = 0, calls = 0, failures = 0;
  while (std::getline(vectors, line) && failures < 20) {
    FXIniVectors::Parse(line, call, answers);
    ASSERT_FALSE(call.empty()) << line;
    const std::string& what = call[0];
    Strings got;
    if (what == "case") {
      caseName = call.at(1);
      const std::string path = TempIni("vector_" + caseName);
      WriteBytes(path, call.at(2));
      reader.setINIFileName(path);
      ++cases;
      continue;
    } else if (what == "names") {
      got = reader.getSectionNames();
    } else if (what == "data") {
      got = reader.getSectionData(call.at(1));
    } else if (what == "get") {
      got = {reader.getKeyValue(call.at(1), call.at(2))};
    } else if (what == "exists") {
      got = {reader.sectionExists(call.at(1)) ? "1" : "0"};
    } else if (what == "set") {
      got = {reader.setKeyValue(call.at(1), call.at(2), call.at(3)) != 0 ? "1" : "0"};
    } else {
      FAIL() << "unknown record " << line;
    }
    ++calls;
    if (got != answers) {
      ++failures;
      ADD_FAILURE() << "case " << caseName << ": " << line.substr(0, 200) << "\n  got: "
                    << FXIniVectors::Record({"="}, got).substr(0, 300) << "\n  file: "
                    << FXIniVectors::Escape(ReadBytes(TempIni("vector_" + caseName))).substr(0, 400);
    }
  }
  EXPECT_EQ(160, cases);
  EXPECT_GT(calls, 10000);
}

TEST(IniFile, TrimmingGrowthAndEmptySections) {
  const std::string path = TempIni("basics");
  const std::string big(2500, 'L');
  WriteBytes(path, "[s]\r\nv=  abc \t\r\nlong=" + big + "\r\n[empty]\r\n[comments]\r\n;k=1\r\nbare\r\n");
  INIFileReader reader(path);
  EXPECT_EQ("abc", reader.getKeyValue("s", "v"));
  EXPECT_EQ(big, reader.getKeyValue("S", "LONG"));
  EXPECT_EQ("", reader.getKeyValue("s", "none"));
  EXPECT_EQ((Strings{"v=abc", "long=" + big}), reader.getSectionData("s"));
  EXPECT_TRUE(reader.sectionExists("s"));
  EXPECT_FALSE(reader.sectionExists("empty"));
  EXPECT_TRUE(reader.getSectionData("empty").empty());
  EXPECT_FALSE(reader.sectionExists("comments"));  // no key with a value
  EXPECT_EQ(Strings{"bare"}, reader.getSectionData("comments"));
  const INIFileReader copy = reader;  // copies keep the last lists
  EXPECT_EQ(Strings{"bare"}, const_cast<INIFileReader&>(copy).getSectionData("comments"));

  // A missing file reads as empty everywhere.
  INIFileReader missing(TempIni("missing_folder/none"));
  EXPECT_EQ("", missing.getKeyValue("s", "k"));
  EXPECT_TRUE(missing.getSectionNames().empty());
  EXPECT_FALSE(missing.sectionExists("s"));
  EXPECT_EQ(0u, missing.setKeyValue("s", "k", "v"));
}

TEST(IniFile, SectionNamesStopAt998Characters) {
  const std::string path = TempIni("names");
  std::string text;
  for (int i = 0; i < 100; ++i) text += "[name_number_" + std::to_string(1000 + i) + "]\nk=1\n";  // 17 + NUL each
  WriteBytes(path, text);
  INIFileReader reader(path);
  const Strings& names = reader.getSectionNames();
  ASSERT_EQ(59u, names.size());  // 58 whole names (986 characters) and 12 of the next
  EXPECT_EQ("name_number_1000", names.front());
  EXPECT_EQ("name_number_1057", names[57]);
  EXPECT_EQ("name_number_", names.back());
  EXPECT_EQ("1", reader.getKeyValue("name_number_1099", "k"));
}

// Writing keeps every other line as it was (the Windows service may
// rewrite the file in its own layout, so this holds where we write it).
TEST(IniFile, SetKeyValueKeepsTheOtherLines) {
  if (kZuIsWindows) GTEST_SKIP() << "the layout of a rewritten file is the service's";
  const std::string path = TempIni("write");
  WriteBytes(path, "; head\n\n[a]\nk = old ; c\n\n  ; note\n[b]\nx=1\n\n\n[c]\n");
  INIFileReader reader(path);
  EXPECT_NE(0u, reader.setKeyValue("A", "K", "  new"));
  EXPECT_NE(0u, reader.setKeyValue("b", "y", "2"));
  EXPECT_NE(0u, reader.setKeyValue("c", "z", "3"));
  EXPECT_NE(0u, reader.setKeyValue(" d ", " w ", "4"));
  EXPECT_EQ("; head\n\n[a]\nk=new\n\n  ; note\n[b]\nx=1\ny=2\n\n\n[c]\nz=3\n[d]\nw=4\n", ReadBytes(path));
  EXPECT_EQ("new", reader.getKeyValue("a", "k"));
  EXPECT_EQ((Strings{"a", "b", "c", "d"}), reader.getSectionNames());

  // A file without a line end at its end, with CR LF lines; a new file.
  WriteBytes(path, "[a]\r\nk=1");
  EXPECT_NE(0u, reader.setKeyValue("b", "k", "2"));
  EXPECT_EQ("[a]\r\nk=1\r\n[b]\r\nk=2\r\n", ReadBytes(path));
  FXPlatform::DeleteFileAt(path);
  EXPECT_NE(0u, reader.setKeyValue("n", "k", "v"));
  EXPECT_EQ("[n]\r\nk=v\r\n", ReadBytes(path));
  Strings left;
  ASSERT_FALSE(FXPlatform::ListDirectory(FXPlatform::TempDirectory(), left).IsError());
  for (const std::string& name : left) EXPECT_EQ(std::string::npos, name.find("zu_ini_write.ini.~")) << name;
}

// Binary files, huge files and files of 100,000 sections read without harm.
TEST(IniFile, BadFiles) {
  const std::string path = TempIni("bad");
  std::string binary;
  for (int i = 0; i < 70000; ++i) binary += static_cast<char>((i * 7919) >> 3);
  WriteBytes(path, binary);
  INIFileReader reader(path);
  reader.getSectionNames();
  reader.getKeyValue("a", "b");
  reader.getSectionData("");

  std::string many;
  for (int i = 0; i < 100000; ++i) many += "[s" + std::to_string(i) + "]\nk=" + std::to_string(i) + "\n";
  WriteBytes(path, many);
  EXPECT_EQ("99999", reader.getKeyValue("s99999", "k"));
  EXPECT_LT(reader.getSectionNames().size(), 300u);

  // A value of 100,000 characters, read in a hundred growing calls.
  WriteBytes(path, "[big]\nk=" + std::string(100000, 'v') + "\n");
  EXPECT_EQ(100000u, reader.getKeyValue("big", "k").size());
  // 64 MiB, most of it one comment line.
  WriteBytes(path, "; " + std::string(64u << 20, 'c') + "\n[big]\nk=v\n");
  EXPECT_EQ("v", reader.getKeyValue("big", "k"));
  FXPlatform::DeleteFileAt(path);
}

}  // namespace
