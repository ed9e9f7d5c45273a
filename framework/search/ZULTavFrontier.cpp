#include "framework/search/ZULTavFrontier.h"

#include <algorithm>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/search/detail/SearchVariable.h"

using namespace zultav::detail;

namespace {

void WriteDecision(ZULopstream& out, const ZULTavFrontier::Decision& decision) {
  out.WriteUnsigned(decision.variable);
  out.WriteUnsigned(static_cast<std::uint64_t>(decision.selection));
  out.WriteUnsigned(static_cast<std::uint64_t>(decision.second));
}

ZULTavFrontier::Decision ReadDecision(ZULipstream& in, std::size_t objects) {
  using Second = ZULTavFrontier::Decision::Second;
  std::uint64_t variable = 0, selection = 0, second = 0;
  in.ReadUnsigned(variable, objects);
  in.ReadUnsigned(selection, ZULTaVoAny::kValueSelections - 1);
  in.ReadUnsigned(second, static_cast<std::uint64_t>(Second::kEntered));
  return {static_cast<std::uint32_t>(variable), static_cast<ZULTaVoAny::ValueSelection>(selection),
          static_cast<Second>(second)};
}

void WriteBoxes(ZULopstream& out, const std::deque<ZULTavSolution>& boxes) {
  out.WriteUnsigned(boxes.size());
  for (const ZULTavSolution& box : boxes) box.Write(out);
}

void ReadBoxes(ZULipstream& in, std::span<const SearchVariable> declared,
               std::deque<ZULTavSolution>& boxes) {
  boxes.clear();
  std::uint64_t count = 0;
  in.ReadUnsigned(count);
  for (; count > 0 && in.Good(); --count) {
    ZULTavSolution box(declared);
    if (box.Read(in)) boxes.push_back(std::move(box));
  }
}

}  // namespace

ZULTavFrontier::Statistics& ZULTavFrontier::Statistics::operator+=(const Statistics& other) {
  solutions += other.solutions;
  nodes += other.nodes;
  fails += other.fails;
  narrowings += other.narrowings;
  propagations += other.propagations;
  peakDepth = std::max(peakDepth, other.peakDepth);
  seconds += other.seconds;
  return *this;
}

void ZULTavFrontier::Write(ZULopstream& out) const {
  out.WriteUnsigned(explored);
  out.WriteUnsigned(hiddenNodes);
  out.WriteUnsigned(path.size());
  for (const Decision& decision : path) WriteDecision(out, decision);
  WriteBoxes(out, boxes);
  WriteBoxes(out, unbounded);
  WriteBoxes(out, solved);
}

bool ZULTavFrontier::Read(ZULipstream& in, std::span<const SearchVariable> declared,
                          std::size_t objects) {
  std::uint64_t done = 0, count = 0;
  in.ReadUnsigned(done, 1);
  explored = done != 0;
  in.ReadUnsigned(hiddenNodes);
  path.clear();
  in.ReadUnsigned(count);
  for (; count > 0 && in.Good(); --count) path.push_back(ReadDecision(in, objects));
  ReadBoxes(in, declared, boxes);
  ReadBoxes(in, declared, unbounded);
  ReadBoxes(in, declared, solved);
  return in.Good();
}
