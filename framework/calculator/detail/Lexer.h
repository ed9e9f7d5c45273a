#ifndef ZULTAV_CALCULATOR_DETAIL_LEXER_H
#define ZULTAV_CALCULATOR_DETAIL_LEXER_H

#include <array>
#include <string_view>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/calculator/detail/Source.h"

namespace zultav::detail {

/// The operators that have a sign of their own in the language.
enum class Op : std::uint8_t {
  kNone,
  kIn,
  kEquivalent,
  kXor,
  kImplies,
  kOr,
  kAnd,
  kEqual,
  kUnequal,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kIsEqual,
  kIsUnequal,
  kIsLess,
  kIsLessOrEqual,
  kIsGreater,
  kIsGreaterOrEqual,
  kMinimum,
  kMaximum,
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kModulo,
  kNot,
  kPower
};

/// Whether it states a comparison, rather than asks for its truth.
constexpr bool IsAsserting(Op op) { return op >= Op::kEqual && op <= Op::kGreaterOrEqual; }
constexpr bool IsConnective(Op op) {
  return (op >= Op::kEquivalent && op <= Op::kAnd) || op == Op::kNot;
}

/// Binding strength, loosest first.
enum Precedence : std::uint8_t {
  kNoOperator,
  kImplication,
  kDisjunction,
  kConjunction,
  kComparison,
  kInterval,
  kExtremum,
  kSum,
  kTerm,
  kPrefix,
  kExponent
};

struct OperatorSign {
  std::string_view text;  // also the name under which modules register the operator
  Op op;
  Precedence precedence;  // as a binary operator
};

/// Longer signs stand before their beginnings.
inline constexpr std::array<OperatorSign, 28> kOperatorSigns = {
    {{"<->", Op::kEquivalent, kImplication},
     {"<<>>", Op::kIsUnequal, kComparison},
     {"<==", Op::kIsLessOrEqual, kComparison},
     {">==", Op::kIsGreaterOrEqual, kComparison},
     {"<<", Op::kIsLess, kComparison},
     {">>", Op::kIsGreater, kComparison},
     {"==", Op::kIsEqual, kComparison},
     {"<>", Op::kUnequal, kComparison},
     {"<=", Op::kLessOrEqual, kComparison},
     {">=", Op::kGreaterOrEqual, kComparison},
     {"->", Op::kImplies, kImplication},
     {"||", Op::kOr, kDisjunction},
     {"&&", Op::kAnd, kConjunction},
     {"/\\", Op::kMinimum, kExtremum},
     {"\\/", Op::kMaximum, kExtremum},
     {"=", Op::kEqual, kComparison},
     {"<", Op::kLess, kComparison},
     {">", Op::kGreater, kComparison},
     {"+", Op::kAdd, kSum},
     {"-", Op::kSubtract, kSum},
     {"*", Op::kMultiply, kTerm},
     {"/", Op::kDivide, kTerm},
     {"^", Op::kPower, kExponent},
     {"~", Op::kNot, kNoOperator},
     {"mod", Op::kModulo, kTerm},
     {"xor", Op::kXor, kDisjunction},
     {"in", Op::kIn, kComparison},
     {"", Op::kNone, kNoOperator}}
};

const OperatorSign& SignOf(Op op);

constexpr bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool IsNameByte(char c) { return IsNameStart(c) || (c >= '0' && c <= '9'); }

enum class TokenKind : std::uint8_t {
  kEnd,
  kName,
  kInteger,
  kDecimal,
  kOperator,
  kOpen,
  kClose,
  kOpenBracket,
  kCloseBracket,
  kOpenBrace,
  kCloseBrace,
  kComma,
  kColon,
  kSemicolon,
  kRange,
  kText,
  kLet,
  kFor,
  kIn,
  kWhere,
  kTrue,
  kFalse,
  kSum,
  kProduct,
  kMin,
  kMax,
  kForall,
  kExists,
  kAllDifferent,
  kBad  // no token: the text of the error follows when it is asked for
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  Op op = Op::kNone;
  Span span;
};

/// The words that cannot be names, in the order of their token kinds from kLet on.
inline constexpr std::array<std::string_view, 13> kWords = {
    "let",     "for", "in",  "where",  "true",   "false",       "sum",
    "product", "min", "max", "forall", "exists", "alldifferent"};

/// Cuts a text into tokens, one at a time.
class Lexer {
 public:
  Lexer(const Source& source, const ZULTavCalculator::Limits& limits, Span part)
      : mText(source.GetText().substr(0, part.End())), mLimits(&limits), mPosition(part.position) {}

  /// The next token. A kBad token stands for text that is none; Explain says why.
  Token Next();
  [[noreturn]] void Explain(const Token& bad) const;
  /// The text up to the next ';', ',' outside brackets, or comment, blanks around it taken off.
  /// The next token is what follows it.
  Span NextValue();

  std::uint32_t GetPosition() const { return mPosition; }
  void SetPosition(std::uint32_t position) { mPosition = position; }

 private:
  bool SkipBlanks();
  Token Name();
  Token Number();
  Token Sign();
  Token Make(TokenKind kind, std::size_t length, Op op = Op::kNone);
  bool IsDigit(std::size_t at) const;
  bool EndsValue(std::size_t lineBreak) const;

  std::string_view mText;
  const ZULTavCalculator::Limits* mLimits;
  std::uint32_t mPosition;
};

}  // namespace zultav::detail

#endif
