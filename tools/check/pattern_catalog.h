// The arguments of each pattern, learnt through the pattern library: each
// distinct pattern is loaded once however often it is named. Owns the player
// and the loaded patterns; not thread-safe (the tool's introspection is not).
#ifndef KESH_CHECK_PATTERN_CATALOG_H_
#define KESH_CHECK_PATTERN_CATALOG_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "driver/arg_info.h"
#include "kesh/kesh_pattern.h"

namespace kesh::check {

/// What the library said about one pattern.
struct PatternFacts {
  bool usable = false;                ///< loaded and its arguments known
  std::string refusal;                ///< the tool's message when not usable
  std::vector<PatternArgInfo> args;   ///< the arguments, as the tool learns them
};

/// Loads patterns on one player of the library.
class PatternCatalog {
 public:
  /// Creates the player; check ready() before use.
  PatternCatalog();
  ~PatternCatalog();
  PatternCatalog(const PatternCatalog&) = delete;
  PatternCatalog& operator=(const PatternCatalog&) = delete;

  /// False when the library would not give a player: nothing can be checked.
  bool ready() const { return player_ != nullptr; }

  /// The facts of the pattern file `path`, which must be a readable regular file.
  const PatternFacts& fromFile(const std::string& path);
  /// Learns built-in case `caseNumber` from its pattern `bytes`, once.
  void learnBuiltIn(int caseNumber, const std::vector<uint8_t>& bytes);
  /// The facts of built-in case `caseNumber`; null when it was never learnt.
  const PatternFacts* builtIn(int caseNumber) const;

 private:
  PatternFacts load(const std::vector<uint8_t>& bytes);

  _kesh_player* player_ = nullptr;
  std::vector<_pattern*> patterns_;
  std::map<std::string, PatternFacts> known_;  // by path
  std::map<int, PatternFacts> builtIn_;        // by case number
};

}  // namespace kesh::check

#endif  // KESH_CHECK_PATTERN_CATALOG_H_
