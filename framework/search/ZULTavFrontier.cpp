#include "framework/search/ZULTavFrontier.h"

#include <algorithm>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/search/detail/SearchSpace.h"

using namespace zultav::detail;

namespace {

using Decision = ZULTavFrontier::Decision;
using Experience = ZULTavFrontier::Experience;

void Write(ZULopstream& out, const Half& half) {
  out.WriteUnsigned(half.variable);
  out.WriteUnsigned(half.isUpper);
  out.WriteUnsigned(static_cast<std::uint64_t>(half.bound));
}

void Write(ZULopstream& out, const Decision& decision) {
  Write(out, decision.first);
  out.WriteUnsigned(static_cast<std::uint64_t>(decision.second));
}

void Write(ZULopstream& out, const ZULTavBox& box) {
  out.WriteUnsigned(box.isProven);
  for (const Range& range : box.ranges) {
    out.WriteUnsigned(static_cast<std::uint64_t>(range.lower));
    out.WriteUnsigned(static_cast<std::uint64_t>(range.upper));
  }
  if (box.opaque.GetSize() != 0) box.opaque.Write(out);
}

void Write(ZULopstream& out, std::uint64_t number) { out.WriteUnsigned(number); }
void Write(ZULopstream& out, std::int64_t number) {
  out.WriteUnsigned(static_cast<std::uint64_t>(number));
}

template <class List>
void WriteAll(ZULopstream& out, const List& list);

void Write(ZULopstream& out, const ZULTavFrontier::Nogood& nogood) { WriteAll(out, nogood); }

template <class List>
void WriteAll(ZULopstream& out, const List& list) {
  out.WriteUnsigned(list.size());
  for (const auto& item : list) Write(out, item);
}

/// Reads a list whose items `read` reads.
template <class List, class Read>
void ReadAll(ZULipstream& in, List& list, Read read) {
  list.clear();
  std::uint64_t count = 0;
  in.ReadUnsigned(count);
  for (; count > 0 && in.Good(); --count) read(list.emplace_back());
}

void ReadExperience(ZULipstream& in, const SearchSpace& space, Experience& experience) {
  ReadAll(in, experience.weights, [&](std::uint64_t& weight) {
    if (in.ReadUnsigned(weight) && weight == 0) in.Fail("a weight is none");
  });
  const std::size_t variables = space.GetVariables().size();
  if (!experience.weights.empty() && experience.weights.size() != variables)
    in.Fail("the weights are of another model");
  in.ReadUnsigned(experience.restarts);
  in.ReadUnsigned(experience.fails);
  ReadAll(in, experience.nogoods, [&](ZULTavFrontier::Nogood& nogood) {
    ReadAll(in, nogood, [&](Half& half) {
      if (space.Read(in, half) && !space[half.variable].IsDiscrete())
        in.Fail("a nogood is about a real");
    });
    if (nogood.empty()) in.Fail("a nogood is empty");
  });
}

void Write(ZULopstream& out, const ZULTavFrontier::Optimum& optimum) {
  out.WriteUnsigned(optimum.isFound);
  if (optimum.isFound) Write(out, optimum.best);
  Write(out, optimum.unproven);
  Write(out, optimum.root);
  Write(out, optimum.bound);
  out.WriteUnsigned(optimum.isCertain);
  out.WriteUnsigned(optimum.isUnbounded);
  out.WriteUnsigned(optimum.isCollecting);
  WriteAll(out, optimum.thresholds);
}

bool ReadFlag(ZULipstream& in) {
  std::uint64_t flag = 0;
  in.ReadUnsigned(flag, 1);
  return flag != 0;
}

std::int64_t ReadNumber(ZULipstream& in) {
  std::uint64_t number = 0;
  in.ReadUnsigned(number);
  return static_cast<std::int64_t>(number);
}

void ReadOptimum(ZULipstream& in, const SearchSpace& space, ZULTavFrontier::Optimum& optimum) {
  optimum.isFound = ReadFlag(in);
  if (optimum.isFound) space.Read(in, optimum.best);
  optimum.unproven = ReadNumber(in);
  optimum.root = ReadNumber(in);
  optimum.bound = ReadNumber(in);
  optimum.isCertain = ReadFlag(in);
  optimum.isUnbounded = ReadFlag(in);
  optimum.isCollecting = ReadFlag(in);
  ReadAll(in, optimum.thresholds, [&](std::int64_t& threshold) { threshold = ReadNumber(in); });
  if (optimum.isCollecting && !optimum.isFound) in.Fail("there is no best solution");
}

}  // namespace

ZULTavFrontier::Statistics& ZULTavFrontier::Statistics::operator+=(const Statistics& other) {
  solutions += other.solutions;
  nodes += other.nodes;
  fails += other.fails;
  narrowings += other.narrowings;
  propagations += other.propagations;
  restarts += other.restarts;
  peakDepth = std::max(peakDepth, other.peakDepth);
  seconds += other.seconds;
  return *this;
}

void ZULTavFrontier::Write(ZULopstream& out) const {
  out.WriteUnsigned(explored);
  out.WriteUnsigned(hiddenNodes);
  WriteAll(out, path);
  WriteAll(out, boxes);
  WriteAll(out, unbounded);
  WriteAll(out, solved);
  WriteAll(out, experience.weights);
  out.WriteUnsigned(experience.restarts);
  out.WriteUnsigned(experience.fails);
  WriteAll(out, experience.nogoods);
  ::Write(out, optimum);
}

bool ZULTavFrontier::Read(ZULipstream& in, const SearchSpace& space) {
  explored = ReadFlag(in);
  in.ReadUnsigned(hiddenNodes);
  ReadAll(in, path, [&](Decision& decision) {
    std::uint64_t second = 0;
    space.Read(in, decision.first);
    in.ReadUnsigned(second, static_cast<std::uint64_t>(Decision::Second::kEntered));
    decision.second = static_cast<Decision::Second>(second);
  });
  for (auto* list : {&boxes, &unbounded, &solved})
    ReadAll(in, *list, [&](ZULTavBox& box) { space.Read(in, box); });
  ReadExperience(in, space, experience);
  ReadOptimum(in, space, optimum);
  return in.Good();
}
