#include "solve/Checkpoint.h"

#include <cmath>
#include <limits>
#include <new>
#include <sstream>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"

namespace {

constexpr char kKind[] = "zultav run";
constexpr std::uint64_t kVersion = 7;
/// Kinds of records.
enum : char { kRun = 'R', kFound = 'F', kState = 'S' };
/// Bytes of solutions that are kept before they are written.
constexpr std::streamoff kFoundLimit = 1 << 16;

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
void Transfer(ZULopstream& out, const std::vector<std::string>& texts) {
  out.WriteUnsigned(texts.size());
  for (const std::string& text : texts) Transfer(out, text);
}
void Transfer(ZULipstream& in, std::vector<std::string>& texts) {
  std::uint64_t count = 0;
  for (in.ReadUnsigned(count); count > 0 && in.Good(); --count) Transfer(in, texts.emplace_back());
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

/// Answers true with what `write` writes to an object stream; false and a reason otherwise.
template <class Write>
bool WriteBytes(std::string& bytes, std::string& reason, Write write) {
  std::ostringstream target;
  ZULopstream out(target);
  write(out);
  if (out.Good()) bytes = target.str();
  if (!out.Good()) reason = target ? out.Reason() : "out of memory";
  return out.Good();
}

std::string Head() {
  std::string head, none;
  WriteBytes(head, none, [](ZULopstream& out) {
    out.WriteString(kKind);
    out.WriteUnsigned(kVersion);
  });
  return head;
}

bool IsHead(const std::string& bytes, std::string& reason) {
  reason = "it is empty";
  if (bytes.empty()) return false;
  std::uint64_t version = 0;
  const bool read = ReadBytes(bytes, reason, [&](ZULipstream& in) {
    std::string kind;
    if (in.ReadString(kind, sizeof(kKind)) && kind != kKind) in.Fail("it is something else");
    return in.ReadUnsigned(version);
  });
  if (!read || version == kVersion) return read;
  reason = "it is of version " + std::to_string(version) + ", and this program's is " +
           std::to_string(kVersion);
  return false;
}

}  // namespace

/// Solutions as bytes, ready to be written.
class Checkpoint::Found {
 public:
  Found() : mOut(mBytes) {}
  void Add(const ZULTavSolution& solution) {
    solution.Write(mOut);
    ++mCount;
  }
  bool IsEmpty() const { return mCount == 0; }
  bool IsWhole() const { return mOut.Good(); }
  bool IsMuch() { return mBytes.tellp() >= kFoundLimit; }
  void Write(ZULopstream& out) const {
    out.WriteUnsigned(mCount);
    out.WriteString(mBytes.view());
  }

 private:
  std::ostringstream mBytes;
  ZULopstream mOut;
  std::uint64_t mCount = 0;
};

/// What a run consists of, in the order of the file.
template <class Self, class Stream>
void Checkpoint::ForEachRunField(Self& self, Stream& stream) {
  const auto transfer = [&stream](auto&... fields) { (Transfer(stream, fields), ...); };
  transfer(self.mModelFile, self.mModules, self.mPrecision, self.mRatio, self.mTrigLimits);
  auto& options = self.mOptions;
  transfer(options.choice, options.selection, options.restartAfter, options.limits.solutions,
           options.absoluteWidth, options.relativeWidth, options.hiddenNodes, options.allOptima,
           self.mObjective.gap, self.mObjective.limit, self.mModel);
}

/// How far it came.
template <class AnyState, class Stream>
void Checkpoint::ForEachStateField(AnyState& state, Stream& stream) {
  const auto transfer = [&stream](auto&... fields) { (Transfer(stream, fields), ...); };
  auto& total = state.total;
  transfer(total.solutions, total.nodes, total.fails, total.narrowings, total.propagations,
           total.restarts, total.peakDepth, total.seconds);
  transfer(state.finished, state.search);
}

Checkpoint::Checkpoint() : mFound(std::make_unique<Found>()) {}
Checkpoint::~Checkpoint() = default;

std::unique_ptr<Checkpoint> Checkpoint::Begin(const Options& options, const ZULTavModel& model,
                                              std::string& reason) {
  const std::string& file = options.checkpointFile;
  const auto old = Open(file, Journal::Access::kReplace, reason);
  if (old == nullptr) return nullptr;
  if (old->mJournal->Exists() && !old->IsFinished() && !options.force) {
    reason = "'" + file + "' holds an unfinished run: go on with 'zultav resume " + file +
             "', or replace it with --force";
    return nullptr;
  }
  std::unique_ptr<Checkpoint> made(new Checkpoint());
  made->mModelFile = options.modelFile;
  made->mModules = options.modules;
  made->mPrecision = options.precision;
  made->mRatio = options.ratio;
  made->mTrigLimits = options.trigLimits;
  made->mOptions = options.search;
  made->mObjective = options.objective;
  made->mJournal = std::move(old->mJournal);
  std::string run, why;
  const auto fill = [&](Journal& journal, std::string&) { return journal.Append(kRun, run, why); };
  if (WriteBytes(made->mModel, why, [&](ZULopstream& out) { model.Write(out); }) &&
      WriteBytes(run, why, [&](ZULopstream& out) { ForEachRunField(*made, out); }) &&
      made->mJournal->Rewrite(Head(), fill, why))
    return made;
  reason = "cannot write checkpoint '" + file + "': " + why;
  return nullptr;
}

std::unique_ptr<Checkpoint> Checkpoint::Open(const std::string& file, Journal::Access access,
                                             std::string& reason) {
  std::unique_ptr<Checkpoint> checkpoint(new Checkpoint());
  std::string why;
  checkpoint->mJournal = Journal::Open(file, access, why);
  if (checkpoint->mJournal == nullptr) {
    reason = "cannot open checkpoint '" + file + "': " + why;
    return nullptr;
  }
  if (!checkpoint->mJournal->Exists() || checkpoint->Read(why)) return checkpoint;
  reason = "'" + file + "' is no checkpoint that can be used: " + why;
  return nullptr;
}

/// Reads all records, and stops at the last state that is whole.
bool Checkpoint::Read(std::string& reason) {
  if (!IsHead(mJournal->ReadHead(Head().size()), reason)) return false;
  Journal::Record record;
  reason = "it is damaged";
  if (!mJournal->Read(record)) return false;
  reason = "it does not begin with a run";
  if (record.kind != kRun || !ReadBytes(record.bytes, reason, [this](ZULipstream& in) {
        ForEachRunField(*this, in);
        return in.Good();
      }))
    return false;
  mJournal->EndHere();
  std::uint64_t solutions = 0;
  for (std::uint64_t begin = mJournal->GetPosition(); mJournal->Read(record);
       begin = mJournal->GetPosition()) {
    std::uint64_t count = 0;
    const auto readCount = [&](ZULipstream& in) { return in.ReadUnsigned(count); };
    if (record.kind == kFound) {
      if (!ReadBytes(record.bytes, reason, readCount)) return false;
      solutions += count;
    } else if (!ReadState(record, reason)) {
      return false;
    } else if (mState.total.solutions != solutions) {
      reason = "it does not agree with itself";
      return false;
    } else {
      mJournal->EndHere();
      CountState(begin);
    }
  }
  return true;
}

bool Checkpoint::ReadState(const Journal::Record& record, std::string& reason) {
  return ReadBytes(record.bytes, reason, [&](ZULipstream& in) {
    if (record.kind != kState) in.Fail("it holds a record of an unknown kind");
    ForEachStateField(mState, in);
    return in.Good();
  });
}

/// The last state begins there and goes to the end; the one before it, if any, is superseded.
void Checkpoint::CountState(std::uint64_t begin) {
  mSupersededSize += mStateSize;
  mStateBegin = begin;
  mStateSize = mJournal->GetEnd() - begin;
}

void Checkpoint::Restore(Options& options) const {
  options.modelFile = mModelFile;
  options.modules = mModules;
  options.moduleGiven = true;
  options.precision = mPrecision;
  options.ratio = mRatio;
  options.trigLimits = mTrigLimits;
  ZULTavSearch::Options& search = options.search;
  search.choice = mOptions.choice;
  search.selection = mOptions.selection;
  search.restartAfter = mOptions.restartAfter;
  search.absoluteWidth = mOptions.absoluteWidth;
  search.relativeWidth = mOptions.relativeWidth;
  search.hiddenNodes = mOptions.hiddenNodes;
  search.allOptima = mOptions.allOptima;
  options.objective = mObjective;
  if (options.solutionsGiven) return;
  std::uint64_t& solutions = search.limits.solutions;
  solutions = mOptions.limits.solutions;
  if (solutions != ZULTavSearch::kUnlimited && solutions > mState.total.solutions)
    solutions -= mState.total.solutions;
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

bool Checkpoint::RestoreSearch(ZULTavSearch& search, std::string& reason) const {
  if (mState.search.empty()) return true;  // it has not been saved since it began
  return ReadBytes(mState.search, reason, [&](ZULipstream& in) { return search.ReadState(in); });
}

bool Checkpoint::ForEachFound(const ZULTavSearch& search, std::string& reason,
                              const std::function<void(const ZULTavSolution&)>& use) {
  ZULTavSolution solution = search.MakeSolution();
  std::uint64_t left = mState.total.solutions;
  Journal::Record record;
  mJournal->ReadHead(Head().size());
  while (left > 0) {
    std::uint64_t count = 0;
    std::string solutions;
    const auto readRecord = [&](ZULipstream& in) {
      in.ReadUnsigned(count, left);
      return in.ReadString(solutions, record.bytes.size());
    };
    const auto readSolutions = [&](ZULipstream& in) {
      for (std::uint64_t i = 0; i < count; ++i) {
        if (!solution.Read(in)) return false;
        use(solution);
      }
      return true;
    };
    reason = "it is damaged";
    if (!mJournal->Read(record)) return false;
    if (record.kind != kFound) continue;
    if (!ReadBytes(record.bytes, reason, readRecord) ||
        !ReadBytes(solutions, reason, readSolutions))
      return false;
    left -= count;
  }
  reason.clear();
  return true;
}

ZULTavSearch::Statistics Checkpoint::Total(const ZULTavSearch::Statistics& present) const {
  ZULTavSearch::Statistics total = present;
  total += mState.total;
  return total;
}

void Checkpoint::Add(const ZULTavSolution& solution) {
  mFound->Add(solution);
  if (!mFound->IsMuch()) return;
  std::string reason;
  try {
    AppendFound(reason);  // where that fails, saving fails too, and says why
  } catch (const std::bad_alloc&) {
  }
}

bool Checkpoint::AppendFound(std::string& reason) {
  if (mFound->IsEmpty()) return true;
  reason = "out of memory";
  if (!mFound->IsWhole()) return false;
  std::string bytes;
  auto next = std::make_unique<Found>();
  if (!WriteBytes(bytes, reason, [this](ZULopstream& out) { mFound->Write(out); }) ||
      !mJournal->Append(kFound, bytes, reason))
    return false;
  mFound = std::move(next);
  return true;
}

bool Checkpoint::AppendState(const State& state, std::string& reason) {
  std::string bytes;
  return WriteBytes(bytes, reason, [&](ZULopstream& out) { ForEachStateField(state, out); }) &&
         mJournal->Append(kState, bytes, reason);
}

bool Checkpoint::Save(const ZULTavSearch& search, bool finished, std::string& reason) {
  try {
    State state{Total(search.GetStatistics()), finished, {}};
    if (!WriteBytes(state.search, reason, [&](ZULopstream& out) { search.WriteState(out); }) ||
        !AppendFound(reason))
      return false;
    const std::uint64_t begin = mJournal->GetEnd();
    if (!AppendState(state, reason)) return false;
    CountState(begin);
    if (!mJournal->Sync(reason)) return false;
  } catch (const std::bad_alloc&) {
    reason = "out of memory";
    return false;
  }
  DropSupersededStates();
  return true;
}

/// Writes the file anew when most of it is states that others have followed. Where that cannot be
/// done, it just goes on growing.
void Checkpoint::DropSupersededStates() {
  const std::uint64_t end = mJournal->GetEnd();
  if (mSupersededSize < mTolerated || mSupersededSize < end - mSupersededSize) return;
  const auto fill = [&](Journal& made, std::string& reason) {
    Journal::Record record;
    mJournal->ReadHead(Head().size());
    for (std::uint64_t begin = 0; (begin = mJournal->GetPosition()) < end;) {
      if (!mJournal->Read(record)) return false;
      if (record.kind == kState && begin != mStateBegin) continue;
      if (!made.Append(record.kind, record.bytes, reason)) return false;
    }
    return true;
  };
  try {
    std::string reason;
    if (mJournal->Rewrite(Head(), fill, reason)) {
      mSupersededSize = 0;
      mStateBegin = mJournal->GetEnd() - mStateSize;
      return;
    }
  } catch (const std::bad_alloc&) {
  }
  mTolerated = 2 * mSupersededSize;
}
