#ifndef ZULTAV_CALCULATOR_DETAIL_SYNTAX_H
#define ZULTAV_CALCULATOR_DETAIL_SYNTAX_H

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "framework/calculator/detail/Constant.h"

namespace zultav::detail {

/// Gives every name of a model a number, so that the rest deals with numbers.
class NameTable {
 public:
  std::uint32_t Intern(std::string_view name) {
    const auto known = mNumbers.find(name);
    if (known != mNumbers.end()) return known->second;
    mNames.emplace_back(name);
    const auto number = static_cast<std::uint32_t>(mNames.size() - 1);
    mNumbers.emplace(mNames.back(), number);
    return number;
  }
  /// A number of its own for a name that stands for something else within a function.
  std::uint32_t AddLocal(std::string_view name) {
    mNames.emplace_back(name);
    const auto number = static_cast<std::uint32_t>(mNames.size() - 1);
    mLocals.insert(number);
    return number;
  }
  bool IsLocal(std::uint32_t number) const { return mLocals.contains(number); }
  const std::string& GetName(std::uint32_t number) const { return mNames[number]; }
  std::size_t GetSize() const { return mNames.size(); }

 private:
  std::deque<std::string> mNames;
  std::unordered_map<std::string_view, std::uint32_t> mNumbers;
  std::unordered_set<std::uint32_t> mLocals;
};

/// What `sum`, `min`, `forall`, … do with their terms.
enum class Aggregate : std::uint8_t {
  kSum,
  kProduct,
  kMin,
  kMax,
  kForall,
  kExists,
  kAllDifferent,
  kCount
};

/// A step of an expression in postfix order: operands stand before what is applied to them.
/// A comprehension is bracketed by a kBegin and a kEnd node, a conditional by kIf and kEndIf; what
/// they evaluate lies between.
struct Node {
  enum class Kind : std::uint8_t {
    kConstant,    // data: index of the constant
    kName,        // data: name
    kElement,     // data: name; `count` operands: the indices
    kRange,       // two operands: the ends
    kLiteral,     // `count` operands: the items
    kEverything,  // '..' for all indices, '*' for any value
    kPrefix,      // op; data: registered name
    kBinary,      // op; data: registered name
    kSet,         // `count` operands: integers and sets
    kChain,       // data: index of the chain; `count` operands
    kCall,        // data: name; `count` operands
    kList,        // aggregate; `count` operands
    kBegin,       // data: index of the comprehension
    kEnd,         // data: index of the comprehension
    kIf,          // data: index of the conditional
    kEndIf        // data: index of the conditional
  };
  Kind kind = Kind::kConstant;
  Op op = Op::kNone;
  Aggregate aggregate = Aggregate::kSum;
  std::uint32_t count = 0;
  std::uint32_t data = 0;
  std::uint32_t start = 0;  // first node of the subexpression that this node ends
  Span span;                // of the sign, name or literal
};

/// Consecutive nodes that make up one expression; its last node is the root.
struct NodeRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  bool present = false;
};

/// `name in set`
struct Generator {
  std::uint32_t name = 0;
  NodeRange set;
  Span span;
};

struct Comprehension {
  Aggregate aggregate = Aggregate::kSum;
  std::vector<Generator> generators;
  NodeRange where;
  NodeRange body;
  std::uint32_t end = 0;  // its kEnd node
};

/// `if condition then yes else no`
struct Conditional {
  NodeRange condition, yes, no;
  std::uint32_t end = 0;  // its kEndIf node
};

struct Declarator {
  std::uint32_t name = 0;
  Span span;
  std::vector<NodeRange> indices;  // of an array: the range of each
};

/// A text between quotation marks or, where that is empty, an expression.
struct ShownItem {
  Span text;
  NodeRange expression;
};

struct Statement {
  enum class Kind : std::uint8_t {
    kLet,
    kFunction,
    kDeclaration,
    kFor,
    kIf,
    kAssert,
    kInclude,
    kObjective,
    kShow,
    kExpression
  };
  Kind kind = Kind::kExpression;
  Span span;
  NodeRange expression;  // of kExpression; the value of kLet; the condition of kIf and kAssert
  std::vector<Declarator> declarators;    // of kDeclaration; of kLet and kFunction one
  std::vector<std::uint32_t> parameters;  // of kFunction
  Span type;
  bool hasValue = false;
  bool isMaximized = false;           // of kObjective
  Span value;                         // of kAssert the message, of kInclude the name
  NodeRange domain;                   // of kDeclaration
  std::vector<Generator> generators;  // of kFor
  NodeRange where;
  std::vector<Statement> body;
  std::vector<Statement> otherwise;  // of kIf
  std::vector<ShownItem> shown;      // of kShow
};

/// What one statement of the source consists of.
struct Syntax {
  std::vector<Node> nodes;
  std::vector<Constant> constants;
  std::vector<Comprehension> comprehensions;
  std::vector<Conditional> conditionals;
  std::vector<std::vector<Token>> chains;  // the signs of chained comparisons
  std::vector<Statement> statements;

  void Clear() {
    nodes.clear();
    constants.clear();
    comprehensions.clear();
    conditionals.clear();
    chains.clear();
    statements.clear();
  }
};

}  // namespace zultav::detail

#endif
