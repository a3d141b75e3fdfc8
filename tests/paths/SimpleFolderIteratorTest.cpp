#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/ErrorUtil.h"
#include "paths/SimpleFolderIterator.h"
#include "platform/CompleteTypes.h"
#include "platform/DirectoryEnum.h"
#include "support/GeneratedTree.h"

namespace {
namespace fs = std::filesystem;

// Every item the iterator returns, as "depth:relative path" ("!" marks a
// failed one), up to the end or the first error.
std::vector<std::string> Collect(CSimpleFolderIterator& it, const std::string& root, CZuError* end = nullptr) {
  std::vector<std::string> seen;
  CSimpleFolderItem item;
  CZuError r = CZuError::Success();
  while (!(r = it.GetNextItem(item)).IsError())
    seen.push_back(std::to_string(item.GetDepth()) + ":" + (item.IsFailed() ? "!" : "") +
                   item.GetPath().substr(root.size() + 1));
  if (end != nullptr) *end = r;
  return seen;
}

// root: B/ (x.txt, .hid), a.txt, c/ (d/ (e.txt)), .dot
std::string MakeSmallTree(const char* name) {
  const std::string root = ZuTest::ScratchFolder(name);
  const fs::path base = fs::u8path(root);
  fs::create_directories(base / "B");
  fs::create_directories(base / "c" / "d");
  std::ofstream(base / "B" / "x.txt") << "";
  std::ofstream(base / "B" / ".hid") << "";
  std::ofstream(base / "a.txt") << "";
  std::ofstream(base / "c" / "d" / "e.txt") << "";
  std::ofstream(base / ".dot") << "";
  return root;
}

TEST(SimpleFolderIterator, OrderAndOptions) {
  const std::string system = MakeSmallTree("simple_order");
  const std::string root = FXPlatform::LibraryPathOf(system);
  using E = ESimpleFolderIteratorOption;
  const struct {
    bool tree;
    std::vector<std::pair<E, unsigned>> options;
    std::vector<std::string> expected;
  } cases[] = {
      {false, {}, {"0:.dot", "0:a.txt", "0:B", "0:c"}},
      {true, {}, {"0:.dot", "0:a.txt", "0:B", "1:B\\.hid", "1:B\\x.txt", "0:c", "1:c\\d", "2:c\\d\\e.txt"}},
      {true, {{E::kSkipHidden, 1}}, {"0:a.txt", "0:B", "1:B\\x.txt", "0:c", "1:c\\d", "2:c\\d\\e.txt"}},
      {true, {{E::kSkipFiles, 1}}, {"0:B", "0:c", "1:c\\d"}},
      {true, {{E::kSkipFolders, 1}, {E::kSkipHidden, 1}}, {"0:a.txt", "1:B\\x.txt", "2:c\\d\\e.txt"}},
      {true, {{E::kMaxDepth, 1}, {E::kSkipHidden, 1}}, {"0:a.txt", "0:B", "1:B\\x.txt", "0:c", "1:c\\d"}},
  };
  for (const auto& c : cases) {
    CSimpleFolderIterator flat;
    CSimpleFolderTreeIterator tree;
    CSimpleFolderIterator& it = c.tree ? tree : flat;
    for (const auto& [option, value] : c.options) ASSERT_FALSE(it.SetOption(option, value).IsError());
    ASSERT_FALSE(it.Open(root).IsError());
    CZuError end = CZuError::Success();
    EXPECT_EQ(c.expected, Collect(it, root, &end));
    EXPECT_TRUE(FXErrorUtil::IsWin32(end, ERROR_NO_MORE_FILES)) << end.AsString();
    // The end stays the end.
    CSimpleFolderItem item;
    EXPECT_TRUE(FXErrorUtil::IsWin32(it.GetNextItem(item), ERROR_NO_MORE_FILES));
  }
  CSimpleFolderIterator it;
  EXPECT_TRUE(FXErrorUtil::IsWin32(it.SetOption(static_cast<E>(99), 1), ERROR_INVALID_PARAMETER));
  EXPECT_TRUE(it.Open(root + "\\missing").IsError());
  ZuTest::RemoveTree(system);
}

TEST(SimpleFolderIterator, NameFilterAndCallbacks) {
  const std::string system = MakeSmallTree("simple_filter");
  const std::string root = FXPlatform::LibraryPathOf(system);
  {
    CSimpleFolderFilterByItemName filter;
    ASSERT_FALSE(filter.AddPattern("*.TXT").IsError());
    CSimpleFolderTreeIterator it;
    it.SetCallback(&filter);
    ASSERT_FALSE(it.Open(root).IsError());
    EXPECT_EQ((std::vector<std::string>{"0:a.txt", "0:B", "1:B\\x.txt", "0:c", "1:c\\d", "2:c\\d\\e.txt"}),
              Collect(it, root));
  }
  {  // folders filtered too: "c" does not match, so d and e.txt are never reached
    CSimpleFolderFilterByItemName filter(true);
    ASSERT_FALSE(filter.AddPattern("?.txt").IsError());
    ASSERT_FALSE(filter.AddPattern("b").IsError());
    CSimpleFolderTreeIterator it;
    it.SetCallback(&filter);
    ASSERT_FALSE(it.Open(root).IsError());
    EXPECT_EQ((std::vector<std::string>{"0:a.txt", "0:B", "1:B\\x.txt"}), Collect(it, root));
  }
  {  // no pattern, nothing; a pattern that is not UTF-8 is refused
    CSimpleFolderFilterByItemName filter;
    EXPECT_TRUE(filter.AddPattern("?\xFF").IsError());
    CSimpleFolderTreeIterator it;
    it.SetCallback(&filter);
    ASSERT_FALSE(it.Open(root).IsError());
    EXPECT_EQ((std::vector<std::string>{"0:B", "0:c", "1:c\\d"}), Collect(it, root));
  }

  // A folder that vanishes before it is entered: the callback decides.
  struct CVanish : CSimpleFolderIteratorCallback {
    CVanish(std::string folder, bool proceed) : base(std::move(folder)), goOn(proceed) {}
    bool OnQueryIterateFolderContents(const CSimpleFolderItem& folder) override {
      if (folder.GetName() == "c") fs::remove_all(fs::u8path(base) / "c");
      return true;
    }
    bool OnQueryOpenError(const std::string& folder, const CZuError& error) override {
      failures.push_back(folder);
      EXPECT_TRUE(error.IsError());
      return goOn;
    }
    std::string base;
    bool goOn;
    std::vector<std::string> failures;
  };
  for (const bool goOn : {true, false}) {
    const std::string again = MakeSmallTree(goOn ? "simple_vanish1" : "simple_vanish2");
    CVanish callback(again, goOn);
    CSimpleFolderTreeIterator it;
    it.SetCallback(&callback);
    ASSERT_TRUE(it.SetOption(ESimpleFolderIteratorOption::kSkipHidden, 1).IsError() == false);
    ASSERT_FALSE(it.Open(FXPlatform::LibraryPathOf(again)).IsError());
    CZuError end = CZuError::Success();
    const auto seen = Collect(it, FXPlatform::LibraryPathOf(again), &end);
    EXPECT_EQ(1u, callback.failures.size());
    EXPECT_EQ((std::vector<std::string>{"0:a.txt", "0:B", "1:B\\x.txt", "0:c"}), seen);
    EXPECT_EQ(goOn, FXErrorUtil::IsWin32(end, ERROR_NO_MORE_FILES)) << end.AsString();
    ZuTest::RemoveTree(again);
  }
  ZuTest::RemoveTree(system);
}

TEST(SimpleFolderIterator, LinksAndUndecodableNames) {
  if (kZuIsWindows) GTEST_SKIP() << "made on the POSIX side";
  const std::string system = ZuTest::ScratchFolder("simple_links");
  const fs::path base = fs::u8path(system);
  fs::create_directories(base / "a");
  std::ofstream(base / "a" / "f") << "";
  fs::create_directory_symlink("..", base / "a" / "up");   // a cycle
  fs::create_directory_symlink("a", base / "link");        // elsewhere in the tree
  std::ofstream(base / "bad\xFF") << "";
  const std::string root = FXPlatform::LibraryPathOf(system);
  {
    CSimpleFolderTreeIterator it;
    ASSERT_FALSE(it.Open(root).IsError());
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:a\\f", "1:a\\up", "0:!bad\\xFF", "0:link"}), Collect(it, root));
  }
  {  // followed: the link is entered, the cycle is not
    CSimpleFolderTreeIterator it;
    ASSERT_FALSE(it.SetOption(ESimpleFolderIteratorOption::kFollowReparsePoints, 1).IsError());
    ASSERT_FALSE(it.Open(root).IsError());
    EXPECT_EQ((std::vector<std::string>{"0:a", "1:a\\f", "1:a\\up", "0:!bad\\xFF", "0:link", "1:link\\f", "1:link\\up"}),
              Collect(it, root));
  }
  ZuTest::RemoveTree(system);
}

}  // namespace
