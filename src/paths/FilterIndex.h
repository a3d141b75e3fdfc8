// The term index of one filter-set node: which of its terms a path can
// possibly match, found by hash look-ups on the shape of each term, so that
// the cost of a look-up does not grow with the number of terms.
//
// Every term goes into one bucket by the part of it that any matching path
// must contain:
//   exact      a pattern without wildcards: the whole path
//   suffix     a last component ending in a literal run after a wildcard
//              ("*.tmp", "~*.bak", match-right tails): the extension of the
//              path's last component, or its last character
//   prefix     a literal folder part before the first wildcard
//              ("C:\Windows\Temp\***"): a leading run of whole components
//   component  a literal component anywhere ("\**\cache\**"): any component
//   generic    anything else, tried on every look-up
// Keys are folded to lower case and free of the invisible characters that
// the matcher skips, so a bucket holds every term that could match; the
// terms found are then tested for real. Buckets keep stored order, so the
// first match in a bucket is its smallest position, and the answer is the
// smallest position over all buckets: exactly the first term in stored
// order that matches.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "paths/FilterTerm.h"

class CFilterIndex {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  void Clear();
  // Indexes terms[position]; positions are added in increasing order.
  void Add(const CFilterTerm& term, std::uint32_t position, bool exposeRoot);
  // The smallest position of a term that applies and matches, or kNone.
  std::uint32_t FindFirst(const std::vector<CFilterTerm>& terms, unsigned long applies,
                          const CFilterTermTestString& test) const;
  // The union of the applies masks of the indexed terms.
  unsigned long AppliesUnion() const { return m_applies; }

 private:
  typedef std::vector<std::uint32_t> TBucket;
  typedef std::unordered_map<std::string_view, TBucket> TMap;

  // A bit per (length, first unit, last unit) signature of the keys of a
  // map: a path asks the map only about the parts whose bit is set, which
  // spares most hash look-ups (a path has a prefix and a component per
  // level). About 16 bits per key.
  class CSieve {
   public:
    void Add(std::string_view key);
    void Rebuild(const TMap& map);
    bool MayHold(std::string_view key) const {
      if (m_words.empty()) return false;
      const std::size_t bit = Signature(key) & (m_words.size() * 64 - 1);
      return (m_words[bit / 64] >> (bit % 64)) & 1;
    }
    std::size_t Bits() const { return m_words.size() * 64; }

   private:
    static std::size_t Signature(std::string_view key) {
      const std::uint64_t mixed =
          (static_cast<std::uint64_t>(key.size()) << 16 | static_cast<unsigned char>(key.front()) << 8 |
           static_cast<unsigned char>(key.back())) *
          0x9E3779B97F4A7C15ULL;
      return static_cast<std::size_t>(mixed >> 40);
    }
    std::vector<std::uint64_t> m_words;
  };

  void Put(TMap& map, const std::string& key, std::uint32_t position, CSieve* sieve = nullptr);

  std::deque<std::string> m_keys;  // the text behind the maps' keys
  TMap m_exact;
  TMap m_suffix;
  TMap m_prefix;
  TMap m_component;
  CSieve m_prefixSieve;
  CSieve m_componentSieve;
  TBucket m_generic;
  unsigned long m_applies = 0;
};
