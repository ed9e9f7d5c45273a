#include "solve/Checkpoint.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <utility>

#include "framework/base/Fnv1a.h"
#include "framework/base/ZULipstream.h"
#include "solve/ReplaceFile.h"

namespace {

constexpr char kKind[] = "zultav run";
constexpr std::uint64_t kVersion = 2;
constexpr std::size_t kChecksumSize = 8;

std::string ChecksumOf(std::string_view bytes) {
  const std::uint64_t hash = Fnv1a(bytes);
  std::string text;
  for (std::size_t i = 0; i < kChecksumSize; ++i)
    text += static_cast<char>(static_cast<unsigned char>(hash >> 8 * i));
  return text;
}

// Every field is written and read by a function of the same shape, so that one list of them
// (ForEachField) serves both ways.
void Transfer(ZULopstream& out, const std::string& text) { out.WriteString(text); }
void Transfer(ZULipstream& in, std::string& text) {
  in.ReadString(text, std::numeric_limits<std::size_t>::max());
}
void Transfer(ZULopstream& out, double number) { out << number; }
void Transfer(ZULipstream& in, double& number) {
  in >> number;
  if (std::isnan(number)) in.Fail("a number is none");
}
void Transfer(ZULopstream& out, std::uint64_t number) { out.WriteUnsigned(number); }
void Transfer(ZULipstream& in, std::uint64_t& number) { in.ReadUnsigned(number); }
void Transfer(ZULopstream& out, bool flag) { out.WriteUnsigned(flag); }
void Transfer(ZULipstream& in, bool& flag) {
  std::uint64_t number = 0;
  in.ReadUnsigned(number, 1);
  flag = number != 0;
}
template <class First, class Second>
void Transfer(ZULopstream& out, const std::pair<First, Second>& both) {
  Transfer(out, both.first);
  Transfer(out, both.second);
}
template <class First, class Second>
void Transfer(ZULipstream& in, std::pair<First, Second>& both) {
  Transfer(in, both.first);
  Transfer(in, both.second);
}
template <class Value>
void Transfer(ZULopstream& out, const std::optional<Value>& value) {
  Transfer(out, value.has_value());
  if (value) Transfer(out, *value);
}
template <class Value>
void Transfer(ZULipstream& in, std::optional<Value>& value) {
  bool present = false;
  Transfer(in, present);
  if (present) Transfer(in, value.emplace());
}
template <class Enum>
requires std::is_enum_v<Enum>
void Transfer(ZULopstream& out, Enum choice) {
  out.WriteUnsigned(static_cast<std::uint64_t>(choice));
}
template <class Enum>
void ReadChoice(ZULipstream& in, Enum& choice, int count) {
  std::uint64_t number = 0;
  in.ReadUnsigned(number, static_cast<std::uint64_t>(count - 1));
  choice = static_cast<Enum>(number);
}
void Transfer(ZULipstream& in, ZULTavSearch::VariableChoice& choice) {
  ReadChoice(in, choice, ZULTavSearch::kVariableChoices);
}
void Transfer(ZULipstream& in, ZULTaVoAny::ValueSelection& selection) {
  ReadChoice(in, selection, ZULTaVoAny::kValueSelections);
}

/// Answers what `use` answers for an object stream over the bytes; false and a reason otherwise.
template <class Use>
bool ReadBytes(const std::string& bytes, std::string& reason, Use use) {
  std::istringstream source(bytes);
  ZULipstream in(source);
  if (use(in) && in.Good()) return true;
  reason = in.Good() ? "it does not agree with itself" : in.Reason();
  return false;
}

template <class Write>
std::string BytesOf(Write write) {
  std::ostringstream bytes;
  ZULopstream out(bytes);
  write(out);
  return out.Good() ? bytes.str() : std::string();
}

}  // namespace

/// What a checkpoint consists of, in the order of the file.
template <class Self, class Stream>
void Checkpoint::ForEachField(Self& self, Stream& stream) {
  const auto transfer = [&stream](auto&... fields) { (Transfer(stream, fields), ...); };
  transfer(self.mModelFile, self.mModule, self.mPrecision, self.mRatio, self.mTrigLimits);
  auto& options = self.mOptions;
  transfer(options.choice, options.selection, options.limits.solutions, options.absoluteWidth,
           options.relativeWidth, options.hiddenNodes);
  auto& before = self.mBefore;
  transfer(before.solutions, before.nodes, before.fails, before.narrowings, before.propagations,
           before.peakDepth, before.seconds);
  transfer(self.mFinished, self.mModel, self.mState, self.mFoundBytes);
}

Checkpoint::Checkpoint(const Options& options, const ZULTavModel& model) : Checkpoint() {
  mModelFile = options.modelFile;
  mModule = options.module;
  mPrecision = options.precision;
  mRatio = options.ratio;
  mTrigLimits = options.trigLimits;
  mOptions = options.search;
  mModel = BytesOf([&](ZULopstream& out) { model.Write(out); });
}

std::unique_ptr<Checkpoint> Checkpoint::Read(const std::string& file, std::string& reason) {
  errno = 0;
  std::ifstream source(file, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(source), {});
  if (!source || bytes.empty()) {
    reason = "cannot read checkpoint '" + file + "'";
    if (errno != 0) reason += std::string(": ") + std::strerror(errno);
    return nullptr;
  }
  auto checkpoint = std::unique_ptr<Checkpoint>(new Checkpoint());
  std::string why = "it is damaged";
  const std::size_t size = bytes.size() - std::min(bytes.size(), kChecksumSize);
  const bool whole = ChecksumOf(std::string_view(bytes).substr(0, size)) == bytes.substr(size);
  bytes.resize(size);
  const auto read = [&](ZULipstream& in) {
    std::string kind;
    std::uint64_t version = 0;
    if (in.ReadString(kind, sizeof(kKind)) && kind != kKind) in.Fail("it is something else");
    in.ReadUnsigned(version);
    if (in.Good() && version != kVersion) in.Fail("it is of another version");
    ForEachField(*checkpoint, in);
    return in.Good();
  };
  if (whole && ReadBytes(bytes, why, read)) return checkpoint;
  reason = "'" + file + "' is no checkpoint that can be used: " + why;
  return nullptr;
}

void Checkpoint::Restore(Options& options) const {
  options.modelFile = mModelFile;
  options.module = mModule;
  options.moduleGiven = true;
  options.precision = mPrecision;
  options.ratio = mRatio;
  options.trigLimits = mTrigLimits;
  ZULTavSearch::Options& search = options.search;
  search.choice = mOptions.choice;
  search.selection = mOptions.selection;
  search.absoluteWidth = mOptions.absoluteWidth;
  search.relativeWidth = mOptions.relativeWidth;
  search.hiddenNodes = mOptions.hiddenNodes;
  if (options.solutionsGiven) return;
  std::uint64_t& solutions = search.limits.solutions;
  solutions = mOptions.limits.solutions;
  if (solutions != ZULTavSearch::kUnlimited && solutions > mBefore.solutions)
    solutions -= mBefore.solutions;
}

std::unique_ptr<ZULTavModel> Checkpoint::MakeModel(std::span<const ZULTaVoModule* const> modules,
                                                   std::string& reason) const {
  std::unique_ptr<ZULTavModel> model;
  const bool read = ReadBytes(mModel, reason, [&](ZULipstream& in) {
    model = ZULTavModel::Read(in, modules);
    return model != nullptr;
  });
  return read ? std::move(model) : nullptr;
}

bool Checkpoint::RestoreSearch(ZULTavSearch& search, std::string& reason) {
  if (mState.empty()) return true;  // a new run
  return ForEachFound(search, reason,
                      [this](const ZULTavSolution& solution) { mFound->Add(solution); }) &&
         ReadBytes(mState, reason, [&](ZULipstream& in) { return search.ReadState(in); });
}

bool Checkpoint::ForEachFound(const ZULTavSearch& search, std::string& reason,
                              const std::function<void(const ZULTavSolution&)>& use) const {
  return ReadBytes(mFoundBytes, reason, [&](ZULipstream& in) {
    ZULTavSolution solution = search.MakeSolution();
    for (std::uint64_t i = 0; i < mBefore.solutions; ++i) {
      if (!solution.Read(in)) return false;
      use(solution);
    }
    return true;
  });
}

ZULTavSearch::Statistics Checkpoint::Total(const ZULTavSearch::Statistics& present) const {
  ZULTavSearch::Statistics total = present;
  total += mBefore;
  return total;
}

bool Checkpoint::Save(const std::string& file, const ZULTavSearch& search, bool finished,
                      std::string& reason) const {
  Checkpoint saved;
  saved.mModelFile = mModelFile;
  saved.mModule = mModule;
  saved.mPrecision = mPrecision;
  saved.mRatio = mRatio;
  saved.mTrigLimits = mTrigLimits;
  saved.mOptions = mOptions;
  saved.mBefore = Total(search.GetStatistics());
  saved.mFinished = finished;
  saved.mModel = mModel;
  saved.mState = BytesOf([&](ZULopstream& out) { search.WriteState(out); });
  saved.mFoundBytes = mFound->GetBytes();
  std::string bytes = BytesOf([&](ZULopstream& out) {
    out.WriteString(kKind);
    out.WriteUnsigned(kVersion);
    ForEachField(saved, out);
  });
  bytes += ChecksumOf(bytes);
  return ReplaceFile(file, bytes, reason);
}
