#ifndef ZULTAV_SOLVER_ZULTAVO_RELATION_H
#define ZULTAV_SOLVER_ZULTAVO_RELATION_H

#include <memory>
#include <vector>

#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoRelationDescriptor.h"

/// A relation between certain values: what its parameters got. Values are the constraint's
/// arguments, row by row and parameter by parameter, the result first; the truth of the relation,
/// where that is an argument, is the last one.
///
/// The network's own propagation runs the propagator on what the values may be, which a search
/// does by itself.
class ZULTAV_TYPES_API ZULTaVoRelation final : public ZULTaVoConstraint {
 public:
  /// What a parameter, or the result, got. Known numbers are shared by all who have them.
  struct Part {
    std::uint32_t rows = 1;
    std::uint32_t columns = 1;
    bool isKnown = false;
    bool isReal = false;
    std::int64_t firstIndex = 1;
    std::shared_ptr<const std::vector<std::int64_t>> integers = nullptr;
    std::shared_ptr<const std::vector<double>> reals = nullptr;
  };

  /// To be read from a stream, or of single values where the type is plain.
  explicit ZULTaVoRelation(const ZULTaVoRelationDescriptor* type);
  ZULTaVoRelation(const ZULTaVoRelationDescriptor* type, std::vector<Part> parts, bool isReified);
  /// A copy shares what is known.
  ZULTaVoRelation(const ZULTaVoRelation& other);
  ~ZULTaVoRelation() override;

  const char* CastableID() const override { return "ZULTaVoRelation"; }
  const ZULTaVoObjectDescriptor* GetDescriptor() const override { return mType; }
  const ZULTaVoRelationDescriptor& GetType() const { return *mType; }
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  int Filter(const ZULTaVoObjectEnvironment& environment, int event) override;

  bool IsReified() const { return mIsReified; }
  /// How many arguments it takes, the truth with them.
  std::uint32_t GetNumberOfValues() const { return mValues + (mIsReified ? 1 : 0); }
  /// Whether an argument is a real; others are integers or, where the type says so, truth values.
  bool IsReal(std::uint32_t argument) const;
  bool IsTruth(std::uint32_t argument) const;
  /// What parameters got, the result first.
  ZULTaVoRelationDescriptor::Arguments GetParts() const { return mArguments; }
  /// What is wrong with what parameters got; empty where nothing is.
  std::string Check() const { return mType->Check(mArguments); }
  /// A propagator of this relation, for the values in the order of the arguments. It refers to what
  /// is known here.
  std::unique_ptr<ZULTaVoPropagator> MakePropagator() const;

 private:
  class Work;

  void Arrange();
  std::uint32_t FindPart(std::uint32_t argument) const;

  const ZULTaVoRelationDescriptor* mType;
  std::vector<Part> mParts;
  bool mIsReified = false;
  std::vector<ZULTaVoRelationArgument> mArguments;
  std::uint32_t mValues = 0;
  std::unique_ptr<Work> mWork;  // of the filter; made when it first runs
};

#endif
