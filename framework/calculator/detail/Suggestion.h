#ifndef ZULTAV_CALCULATOR_DETAIL_SUGGESTION_H
#define ZULTAV_CALCULATOR_DETAIL_SUGGESTION_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zultav::detail {

/// Finds the name that was probably meant by an unknown one: the candidate at the least edit
/// distance (insertions, deletions, replacements, transpositions; letter case counts little),
/// unless even that is too far. Of equals, the first offered wins.
class Suggestion {
 public:
  explicit Suggestion(std::string_view unknown);
  void Offer(std::string_view candidate);
  /// Empty when nothing was near.
  const std::string& GetBest() const { return mBest; }

 private:
  std::string mUnknown;
  std::size_t mLeast;
  std::string mBest;
};

/// What the language has for a word or sign that other languages have; empty for any other.
std::string_view AdviceFor(std::string_view word);
/// As AdviceFor, where the error shows only further on in the statement that the word stands in.
std::string_view AdviceForEarlier(std::string_view word, bool isFirst);

}  // namespace zultav::detail

#endif
