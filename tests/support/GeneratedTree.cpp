#include "GeneratedTree.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <utility>

namespace ZuTest {
namespace fs = std::filesystem;

TGeneratedTree GenerateTree(const std::string& root, const TTreeShape& shape) {
  TGeneratedTree tree;
  tree.root = root;
  fs::create_directories(fs::u8path(root));
  std::mt19937 random(shape.seed);
  auto uniform = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  const std::string payload(512, 'x');

  // Breadth first, so the budget is spread over the upper levels and the
  // last folders made are the deepest. One chain is forced down to minDepth.
  std::deque<std::pair<std::string, int>> pending{{std::string(), 0}};
  std::size_t budget = shape.entries;
  while (!pending.empty()) {
    auto [folder, depth] = pending.front();
    pending.pop_front();
    const std::size_t wanted = static_cast<std::size_t>(uniform(1, shape.maxEntriesPerFolder));
    const std::size_t count = std::max<std::size_t>(1, std::min(wanted, budget));
    const bool chain = depth < shape.minDepth && pending.empty();
    int subfolders = depth < shape.maxDepth ? uniform(1, 5) : 0;
    if (chain) subfolders = std::max(subfolders, 1);
    if (budget <= count) subfolders = chain ? 1 : 0;
    subfolders = std::min<int>(subfolders, static_cast<int>(count));
    budget -= std::min(budget, count);
    const std::string prefix = folder.empty() ? std::string() : folder + "\\";
    for (std::size_t i = 0; i < count; ++i) {
      const bool isFolder = static_cast<int>(i) < subfolders;
      const std::string name = (isFolder ? "d" : "f") + std::to_string(i) + (isFolder ? "" : ".dat");
      const std::string relative = prefix + name;
      std::string system = relative;
      std::replace(system.begin(), system.end(), '\\', '/');
      const fs::path path = fs::u8path(root) / fs::u8path(system);
      if (isFolder) {
        fs::create_directory(path);
        tree.folders.push_back(relative);
        pending.emplace_back(relative, depth + 1);
      } else {
        const unsigned size = static_cast<unsigned>(uniform(0, static_cast<int>(payload.size())));
        std::ofstream out(path, std::ios::binary);
        out.write(payload.data(), size);
        if (!out) throw std::runtime_error("cannot create " + path.u8string());
        tree.files.push_back(relative);
        tree.fileSizes.push_back(size);
      }
    }
  }
  return tree;
}

void RemoveTree(const std::string& root) {
  std::error_code ignored;
  fs::remove_all(fs::u8path(root), ignored);
}

std::string ScratchFolder(const std::string& name) {
  const fs::path folder = fs::temp_directory_path() / fs::u8path("zu_traverse_" + name);
  RemoveTree(folder.u8string());
  fs::create_directories(folder);
  return folder.u8string();
}

const TBenchTree& BenchTree() {
  static const TBenchTree tree = [] {
    const char* place = std::getenv("ZU_TRAVERSE_BENCH_TREE");
    TBenchTree made;
    made.root = place != nullptr ? place : (std::filesystem::temp_directory_path() / "zu_traverse_bench").string();
    const std::string marker = made.root + ".entries";
    std::ifstream known(marker);
    if (!(known >> made.entries) || !std::filesystem::is_directory(made.root)) {
      RemoveTree(made.root);
      TTreeShape shape;
      shape.entries = 200000;
      shape.seed = 2024;
      const TGeneratedTree generated = GenerateTree(made.root, shape);
      made.entries = generated.files.size() + generated.folders.size();
      std::ofstream(marker) << made.entries;
    }
    return made;
  }();
  return tree;
}

}  // namespace ZuTest
