// Folder trees made up for the traversal tests and benchmark: reproducible
// from a seed, with a known list of every folder and file and their sizes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ZuTest {

struct TTreeShape {
  std::size_t entries = 1000;      // files and folders together, about
  int minDepth = 4;                // the deepest branch is at least this deep
  int maxDepth = 8;                // and no branch is deeper
  int maxEntriesPerFolder = 200;   // each folder holds 1 to this many entries
  unsigned seed = 1;
};

struct TGeneratedTree {
  std::string root;                  // the operating system's path
  std::vector<std::string> folders;  // below the root, '\\'-separated
  std::vector<std::string> files;
  std::vector<unsigned> fileSizes;   // parallel to files
};

// Creates the tree below `root` (created first; it should not exist).
// Throws std::runtime_error when the file system refuses.
TGeneratedTree GenerateTree(const std::string& root, const TTreeShape& shape);

// Removes a folder and everything below it; missing is fine.
void RemoveTree(const std::string& root);

// The benchmarks' tree: about 200,000 entries, made once below the
// temporary folder (or where ZU_TRAVERSE_BENCH_TREE says) and kept for later
// runs, so that every benchmark walks the same warm tree.
struct TBenchTree {
  std::string root;  // the operating system's path
  std::size_t entries = 0;
};
const TBenchTree& BenchTree();

// A fresh, empty folder for one test below the system's temporary folder.
std::string ScratchFolder(const std::string& name);

}  // namespace ZuTest
