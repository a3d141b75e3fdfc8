// The registry of synthetic mount points: counting, comparing as the path
// rules do, and staying consistent under many threads.
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "paths/Path.h"

namespace {

// Drive Q: exists on neither test platform, so no real mount point answers.
TEST(SyntheticMountPoints, RegistrationsAreCounted) {
  ASSERT_FALSE(FXPath::IsPathMountPoint(std::string("Q:\\mnt")));
  ASSERT_FALSE(FXPath::RegisterSyntheticMountPoint(std::string("Q:\\mnt")).IsError());
  ASSERT_FALSE(FXPath::RegisterSyntheticMountPoint(std::string("q:/MNT/")).IsError());
  EXPECT_TRUE(FXPath::IsPathMountPoint(std::string("\\\\?\\Q:\\mnt\\")));
  EXPECT_TRUE(FXPath::IsPathMountPoint(std::wstring(L"q:\\mnt")));  // either string type sees the entry
  EXPECT_FALSE(FXPath::IsPathMountPoint(std::string("Q:\\mn")));

  // Compared as given, not made native: the rules still make them one.
  EXPECT_FALSE(FXPath::DeregisterSyntheticMountPoint(std::wstring(L"\\\\?\\Q:\\MNT\\")).IsError());
  EXPECT_TRUE(FXPath::IsPathMountPoint(std::string("Q:\\mnt")));
  EXPECT_FALSE(FXPath::DeregisterSyntheticMountPoint(std::string("Q:\\mnt")).IsError());
  EXPECT_FALSE(FXPath::IsPathMountPoint(std::string("Q:\\mnt")));
  EXPECT_FALSE(FXPath::DeregisterSyntheticMountPoint(std::string("Q:\\mnt")).IsError());  // unknown: no error

  const CZuError bad = FXPath::RegisterSyntheticMountPoint(std::string("\\\\?"));
  EXPECT_TRUE(bad.IsError());
  EXPECT_NE(std::string::npos, bad.AsString().find("FXPath::RegisterSyntheticMountPoint"));
}

TEST(SyntheticMountPoints, ChildrenFindTheDeepestMountPoint) {
  ASSERT_FALSE(FXPath::RegisterSyntheticMountPoint(std::string("Q:\\mnt")).IsError());
  ASSERT_FALSE(FXPath::RegisterSyntheticMountPoint(std::wstring(L"Q:\\mnt\\inner")).IsError());
  std::string mountPoint;
  EXPECT_TRUE(FXPath::IsPathChildOfMountPointPath(std::string("Q:\\mnt\\inner\\a\\b"), mountPoint));
  EXPECT_EQ("\\\\?\\Q:\\mnt\\inner\\", mountPoint);
  std::wstring wideMountPoint;
  EXPECT_TRUE(FXPath::IsPathChildOfMountPointPath(std::wstring(L"q:\\MNT\\innerX"), wideMountPoint));
  EXPECT_EQ(L"\\\\?\\Q:\\mnt\\", wideMountPoint);
  EXPECT_FALSE(FXPath::IsPathChildOfMountPointPath(std::string("Q:\\mnt")));  // the mount point itself
  EXPECT_FALSE(FXPath::IsPathChildOfMountPointPath(std::string("Q:\\mntx\\a")));

  std::string relative;
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(std::string("Q:\\mnt\\inner\\x\\y"), relative).IsError());
  EXPECT_EQ("x\\y", relative);
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(std::string("Q:\\mnt\\x"), relative).IsError());
  EXPECT_EQ("x", relative);

  FXPath::DeregisterSyntheticMountPoint(std::string("Q:\\mnt\\inner"));
  FXPath::DeregisterSyntheticMountPoint(std::string("Q:\\mnt"));
  EXPECT_FALSE(FXPath::IsPathChildOfMountPointPath(std::string("Q:\\mnt\\inner\\a")));
  ASSERT_FALSE(FXPath::GetVolumeRelativeName(std::string("Q:\\mnt\\inner\\x"), relative).IsError());
  EXPECT_EQ("mnt\\inner\\x", relative);
}

TEST(SyntheticMountPoints, ManyThreadsKeepTheCountsExact) {
  constexpr int kThreads = 8, kRounds = 300;
  std::atomic<int> misses{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &misses] {
      const std::string own = "Q:\\threads\\" + std::to_string(t);
      for (int i = 0; i < kRounds; ++i) {
        FXPath::RegisterSyntheticMountPoint(std::string("Q:\\shared"));
        FXPath::RegisterSyntheticMountPoint(own);
        if (!FXPath::IsPathMountPoint(std::string("Q:\\shared")) || !FXPath::IsPathMountPoint(own)) ++misses;
        FXPath::DeregisterSyntheticMountPoint(own);
        if (FXPath::IsPathMountPoint(own)) ++misses;
        FXPath::DeregisterSyntheticMountPoint(std::string("\\\\?\\Q:\\shared\\"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, misses.load());
  EXPECT_FALSE(FXPath::IsPathMountPoint(std::string("Q:\\shared")));
}

}  // namespace
