#ifndef ZULTAV_CALCULATOR_DETAIL_DATA_READER_H
#define ZULTAV_CALCULATOR_DETAIL_DATA_READER_H

#include <string>
#include <vector>

#include "framework/calculator/detail/ModelBuilder.h"

namespace zultav::detail {

/// What data say of one name.
struct DataMember {
  std::string name;
  Span span;
  Value value;
};

/// Reads data, an object of JSON whose values are numbers, truth values, names between quotation
/// marks, and arrays of these. Throws ModelError where it is none, or beyond the limits.
class DataReader {
 public:
  DataReader(const Source& source, const ZULTavCalculator::Limits& limits)
      : mText(source.GetText()), mLimits(limits) {}

  std::vector<DataMember> Read();

 private:
  Span Here() const { return {mPosition, 1}; }
  Span From(std::uint32_t begin) const { return {begin, mPosition - begin}; }
  char Next();
  void Expect(char sign, const char* where);
  bool Accept(char sign);
  std::string ReadString();
  Value ReadValue(std::size_t depth);
  Value ReadArray(std::size_t depth);
  Value ReadNumber();
  Value ReadWord();

  std::string_view mText;
  const ZULTavCalculator::Limits& mLimits;
  std::uint32_t mPosition = 0;
};

}  // namespace zultav::detail

#endif
