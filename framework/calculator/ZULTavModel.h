#ifndef ZULTAV_CALCULATOR_ZULTAV_MODEL_H
#define ZULTAV_CALCULATOR_ZULTAV_MODEL_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "framework/calculator/Export.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoOperatorDescriptor.h"

class ZULTaVoModule;
class ZULipstream;
class ZULopstream;
namespace zultav::detail {
class ModelBuilder;
}

/// A model that was read: its network, its named variables, and what it states, as expressions.
class ZULTAV_CALCULATOR_API ZULTavModel {
 public:
  /// The indices that one place between the brackets of an array may have: `size` from `first` on.
  struct Dimension {
    long first = 1;
    std::size_t size = 0;
  };
  /// A declared variable or array of variables.
  struct Variable {
    std::string name;
    std::string typeName;  ///< the registered name
    const ZULTaVoObjectDescriptor* type = nullptr;
    /// Objects of the network; one unless it is an array, whose last index runs fastest.
    std::vector<ZULTaVoAny*> values;
    std::vector<Dimension> dimensions;  ///< of an array

    bool IsArray() const { return !dimensions.empty(); }
    /// The name of one value, such as "q[2,3]".
    std::string NameOf(std::size_t value) const;
  };

  static constexpr std::uint32_t kNone = 0xffffffffu;

  /// A node of the expressions that the model states: an operator over operands, the number of
  /// truth values of a list that are true, what a relation says of a list, or a leaf (a variable or
  /// a constant). Nodes lie in one vector, operands before the nodes that use them; equal
  /// subexpressions are one node.
  struct Expression {
    const ZULTaVoOperatorDescriptor* op = nullptr;  ///< null for a leaf, a count and a relation
    /// The value in the network. Several nodes may have the same object: the node `e` of a
    /// statement `x = e` has the object of x where the types allow it, and a node that is asserted
    /// equal to a constant has an object that holds just this constant.
    ZULTaVoAny* object = nullptr;
    /// Indices into Expressions(). Of a variable: its index in Variables() and in its `values`. Of
    /// a count and of a relation: kNone and the place of its list.
    std::uint32_t operands[2] = {kNone, kNone};
    /// Of the result or the truth of a relation: its constraint in the network.
    std::uint32_t relation = kNone;

    bool IsVariable() const { return op == nullptr && operands[0] != kNone; }
    bool IsRelation() const { return relation != kNone; }
    bool IsCount() const {
      return op == nullptr && !IsVariable() && !IsRelation() && operands[1] != kNone;
    }
    bool IsConstant() const {
      return op == nullptr && !IsVariable() && !IsRelation() && !IsCount();
    }
  };

  /// What the model states, `for`, `forall` and conjunctions taken apart.
  struct Statement {
    enum class Kind : std::uint8_t {
      kEqual,
      kUnequal,
      kLess,
      kLessOrEqual,
      kGreater,
      kGreaterOrEqual,
      kTrue,          ///< the boolean expression `left` is true; there is no `right`
      kAllDifferent,  ///< those of the list at `left` are pairwise different; there is no `right`
      kRelation       ///< the constraint `right` of the network, over those of the list at `left`
    };
    Kind kind = Kind::kTrue;
    std::uint32_t left = kNone;   ///< index into Expressions()
    std::uint32_t right = kNone;  ///< index into Expressions()
    std::uint32_t line = 0;       ///< in the source
  };

  /// Values that are computed from those of variables in order to be shown. They have a network of
  /// their own, so that they take no part in what holds.
  struct Computation {
    std::unique_ptr<ZULTavModel> model;  ///< its variables are the inputs, then the results
    /// What its first variables are copies of: positions among the values of all variables.
    std::vector<std::uint32_t> inputs;
  };
  /// A part of a line that is shown: a text, or a value.
  struct Shown {
    std::string text;
    std::uint32_t computation = kNone;  ///< index into Computations() of one that has the value
    /// Of a computation, index of its variable; else a position among the values of all variables.
    std::uint32_t value = kNone;
    bool isInteger = false;  ///< a real that stands for an integer

    bool IsText() const { return value == kNone; }
  };

  ZULTavModel() = default;
  ZULTavModel(const ZULTavModel&) = delete;
  ZULTavModel& operator=(const ZULTavModel&) = delete;

  ZULTaVoNetwork& Network() { return mNetwork; }
  const ZULTaVoNetwork& Network() const { return mNetwork; }
  /// In the order of declaration.
  const std::vector<Variable>& Variables() const { return mVariables; }
  const std::vector<Expression>& Expressions() const { return mExpressions; }
  /// The list at a place that an expression or a statement names: indices into Expressions().
  std::span<const std::uint32_t> List(std::uint32_t place) const {
    return {&mLists[place + 1], mLists[place]};
  }
  /// In the order of the source.
  const std::vector<Statement>& Statements() const { return mStatements; }

  /// The value in the network that is optimised; null where none is.
  ZULTaVoAny* GetObjective() const { return mObjective; }
  bool IsMaximized() const { return mIsMaximized; }

  /// What a solution shows, line by line.
  const std::vector<std::vector<Shown>>& Lines() const { return mLines; }
  const std::vector<Computation>& Computations() const { return mComputations; }

  /// Writes the network, the named variables and what is shown, so that Read makes an equal model.
  /// To be called before any propagation: initial values tell constants from what was found out.
  void Write(ZULopstream& out) const;
  /// A model as it was written, without expressions and statements; null when the bytes are no
  /// model of these modules: in.Reason() says why.
  static std::unique_ptr<ZULTavModel> Read(ZULipstream& in,
                                           std::span<const ZULTaVoModule* const> modules);

 private:
  friend class zultav::detail::ModelBuilder;

  void WriteNetwork(ZULopstream& out) const;
  static std::unique_ptr<ZULTavModel> ReadNetwork(ZULipstream& in,
                                                  std::span<const ZULTaVoModule* const> modules);
  void WriteShown(ZULopstream& out) const;
  void ReadShown(ZULipstream& in, std::span<const ZULTaVoModule* const> modules);
  bool CanShow(const Shown& part, const std::vector<ZULTaVoAny*>& values) const;

  ZULTaVoNetwork mNetwork;
  std::vector<Variable> mVariables;
  std::vector<Expression> mExpressions;
  std::vector<std::uint32_t> mLists;  // each behind its length
  std::vector<Statement> mStatements;
  ZULTaVoAny* mObjective = nullptr;
  bool mIsMaximized = false;
  std::vector<Computation> mComputations;
  std::vector<std::vector<Shown>> mLines;
};

#endif
