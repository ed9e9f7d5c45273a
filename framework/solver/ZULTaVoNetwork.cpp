#include "framework/solver/ZULTaVoNetwork.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"
#include "framework/solver/ZULTaVoReal.h"
#include "framework/solver/ZULTaVoRelation.h"

using zultav::Arena;
using zultav::IsSingleValue;

namespace {

constexpr std::uint32_t kNone = 0xffffffff;
constexpr std::uint64_t kInterruptPeriod = 256;
constexpr std::uint64_t kFiltersPerConstraint = 2000;
constexpr std::uint64_t kFiltersAtLeast = 1000000;
constexpr double kInfinite = 1e19;  // a real bound from here on is an infinite side

constexpr std::size_t RoundUp(std::size_t size) {
  return (size + Arena::kAlignment - 1) / Arena::kAlignment * Arena::kAlignment;
}

/// Makes sure that so many items can be added without another allocation.
template <class T>
bool MakeRoom(std::vector<T>& list, std::size_t items = 1) noexcept {
  if (list.capacity() - list.size() >= items) return true;
  try {
    list.reserve(std::max(list.size() + items, 2 * list.capacity()));
    return true;
  } catch (...) {
    return false;
  }
}

/// A push_back that answers false instead of throwing.
template <class T>
bool Append(std::vector<T>& list, const T& item) noexcept {
  if (!MakeRoom(list)) return false;
  list.push_back(item);
  return true;
}

/// What the module's code makes, or null when it throws.
template <class Make>
auto MakeOrNull(Make make) noexcept -> decltype(make()) {
  try {
    return make();
  } catch (...) {
    return nullptr;
  }
}

}  // namespace

/// Stands directly before its object in the arena.
struct alignas(Arena::kAlignment) ZULTaVoNetwork::Node {
  const ZULTaVoObjectDescriptor* type;
  const ZULTaVoReal* real;  // the object, where it is a real
  double lower, upper;      // of a real: the bounds that were last propagated
  std::uint32_t index;
  std::uint32_t firstEdge;
  std::uint32_t lastEdge;
  std::uint32_t depth;   // of the last level that has saved the value
  std::uint32_t number;  // in the list of exact constants, or kNone
  bool constant;
  bool narrowed;  // by the filter that is running
  bool single;    // whether the object held one value when it was last looked at

  ZULTaVoAny* Object() { return reinterpret_cast<ZULTaVoAny*>(this + 1); }
  /// Most reals are found to be wider without a look at their class.
  void UpdateSingle() {
    single = real != nullptr ? IsSingleValue(*real) : IsSingleValue(*Object());
  }
  void Remember() {
    UpdateSingle();
    if (real == nullptr) return;
    lower = real->GetLowerBound();
    upper = real->GetUpperBound();
  }
};

ZULTaVoNetwork::ZULTaVoNetwork() { SetRealSettings(ZULTaVoRealScope::GetPresent()); }

ZULTaVoNetwork::~ZULTaVoNetwork() {
  while (!mLevels.empty()) PopState();
  for (auto link = mLinks.rbegin(); link != mLinks.rend(); ++link)
    link->constraint->~ZULTaVoConstraint();
  for (auto node = mNodes.rbegin(); node != mNodes.rend(); ++node)
    (*node)->type->DestroyObject((*node)->Object());
}

void ZULTaVoNetwork::SetRealSettings(const ZULTaVoRealSettings* settings) {
  if (settings != nullptr) {
    mRealSettings = *settings;
  } else {
    mRealSettings.reset();
  }
}

// --- Objects and constraints ------------------------------------------------------------------

ZULTaVoNetwork::Node* ZULTaVoNetwork::NodeOf(const ZULTaVoObject* object) {
  return reinterpret_cast<Node*>(const_cast<ZULTaVoObject*>(object)) - 1;
}

ZULTaVoNetwork::Node* ZULTaVoNetwork::FindNode(const ZULTaVoObject* object) const {
  if (object == nullptr || !mArena.Owns(object)) return nullptr;
  if (!object->IsDerivedFrom(ZULTaVoAny::sIdent)) return nullptr;  // a constraint has no node
  Node* node = NodeOf(object);
  return node->index < mNodes.size() && mNodes[node->index] == node ? node : nullptr;
}

ZULTaVoAny* ZULTaVoNetwork::AddObject(const ZULTaVoObjectDescriptor* type) {
  return Add(type, [type](void* place) { return type->InitObject(place); });
}

ZULTaVoAny* ZULTaVoNetwork::AddObject(const ZULTaVoObjectDescriptor* type, const void* from) {
  if (from == nullptr) return nullptr;
  return Add(type, [type, from](void* place) { return type->InitObject(place, from); });
}

template <class Init>
ZULTaVoAny* ZULTaVoNetwork::Add(const ZULTaVoObjectDescriptor* type, Init init) {
  if (type == nullptr || type->GetKind() != ZULTaVoObjectDescriptor::Kind::kType ||
      type->GetObjectSize() == 0 || mNodes.size() >= kNone)
    return nullptr;
  const Arena::Mark mark = mArena.GetMark();
  auto* node = static_cast<Node*>(mArena.Allocate(sizeof(Node) + RoundUp(type->GetObjectSize())));
  if (node == nullptr) return nullptr;
  new (node)
      Node{type,  nullptr, 0,     0,    static_cast<std::uint32_t>(mNodes.size()), kNone, kNone, 0,
           kNone, false,   false, false};
  if (!MakeRoom(mNodes) || MakeOrNull([&] { return init(node->Object()); }) == nullptr) {
    mArena.Release(mark);
    return nullptr;
  }
  mNodes.push_back(node);
  node->real = ZULTaVoCast<const ZULTaVoReal>(node->Object());
  node->Remember();
  return node->Object();
}

void ZULTaVoNetwork::SetConstant(const ZULTaVoObject* object) {
  Node* node = FindNode(object);
  if (node == nullptr) return;
  node->constant = true;
  for (std::uint32_t edge = node->firstEdge; edge != kNone; edge = mEdges[edge].next)
    mLinks[mEdges[edge].link].constants = true;
}

bool ZULTaVoNetwork::IsConstant(const ZULTaVoObject* object) const {
  const Node* node = FindNode(object);
  return node != nullptr && node->constant;
}

bool ZULTaVoNetwork::SetConstant(const ZULTaVoObject* object, const ZULTaVoConstant& number) {
  Node* node = FindNode(object);
  if (node == nullptr) return false;
  if (node->number != kNone) {
    mConstants[node->number] = number;
    return true;
  }
  if (!Append(mConstants, number)) return false;
  node->number = static_cast<std::uint32_t>(mConstants.size() - 1);
  return true;
}

const ZULTaVoConstant* ZULTaVoNetwork::GetConstant(const ZULTaVoObject* object) const {
  const Node* node = FindNode(object);
  return node != nullptr ? GetConstantAt(node->index) : nullptr;
}

const ZULTaVoConstant* ZULTaVoNetwork::GetConstantAt(std::size_t index) const {
  const std::uint32_t number = mNodes[index]->number;
  return number != kNone ? &mConstants[number] : nullptr;
}

ZULTaVoAny* ZULTaVoNetwork::GetObject(std::size_t index) const {
  return index < mNodes.size() ? mNodes[index]->Object() : nullptr;
}

std::size_t ZULTaVoNetwork::GetIndex(const ZULTaVoObject* object) const {
  const Node* node = FindNode(object);
  return node != nullptr ? node->index : mNodes.size();
}

std::uint32_t ZULTaVoNetwork::GetIndexOfArgument(std::size_t index, std::size_t argument) const {
  return NodeOf(mLinks[index].arguments[argument])->index;
}

const ZULTaVoObjectDescriptor* ZULTaVoNetwork::GetType(const ZULTaVoObject* object) const {
  const Node* node = FindNode(object);
  return node != nullptr ? node->type : nullptr;
}

std::size_t ZULTaVoNetwork::GetMemoryUsed() const {
  return mArena.GetBytes() + mTrailArena.GetBytes() + mNodes.capacity() * sizeof(Node*) +
         mConstants.capacity() * sizeof(ZULTaVoConstant) + mLinks.capacity() * sizeof(Link) +
         mEdges.capacity() * sizeof(Edge) + mTrail.capacity() * sizeof(Saved) +
         mLevels.capacity() * sizeof(Level);
}

int ZULTaVoNetwork::AddConstraint(const ZULTaVoConstraintDescriptor* type,
                                  ZULTaVoObject* const* arguments, unsigned int count) {
  if (type == nullptr || count == 0 || !type->TakesNumberOfArguments(count)) return 0;
  bool checked = true;
  for (unsigned int i = 0; i < count; ++i) {
    const Node* node = FindNode(arguments[i]);
    const ZULTaVoObjectDescriptor* wanted = type->GetArgument(i).type;
    if (node == nullptr || (wanted != nullptr && !wanted->IsMatched(node->type))) return 0;
    checked = checked && wanted != nullptr;
  }
  return Connect(*type, arguments, count, checked,
                 [type](void* place) { return type->InitObject(place); });
}

int ZULTaVoNetwork::AddRelation(const ZULTaVoRelation& relation, ZULTaVoObject* const* arguments,
                                unsigned int count) {
  if (count == 0 || count != relation.GetNumberOfValues()) return 0;
  for (unsigned int i = 0; i < count; ++i) {
    const Node* node = FindNode(arguments[i]);
    const ZULTaVoObjectDescriptor* wanted = relation.IsReal(i)    ? ZULTaVoReal::sDescriptor
                                            : relation.IsTruth(i) ? ZULTaVoBoolean::sDescriptor
                                                                  : ZULTaVoInteger::sDescriptor;
    if (node == nullptr || wanted == nullptr || !wanted->IsMatched(node->type)) return 0;
  }
  const ZULTaVoRelationDescriptor& type = relation.GetType();
  return Connect(type, arguments, count, true,
                 [&](void* place) { return type.InitObject(place, &relation); });
}

/// Adds the constraint that `init` makes, over arguments that fit.
template <class Init>
int ZULTaVoNetwork::Connect(const ZULTaVoConstraintDescriptor& type,
                            ZULTaVoObject* const* arguments, unsigned int count, bool checked,
                            Init init) {
  if (mLinks.size() >= kNone) return 0;
  bool constants = false;
  for (unsigned int i = 0; i < count; ++i) constants = constants || NodeOf(arguments[i])->constant;
  const Arena::Mark mark = mArena.GetMark();
  void* place = mArena.Allocate(type.GetObjectSize());
  auto** copied = static_cast<ZULTaVoObject**>(mArena.Allocate(count * sizeof(ZULTaVoObject*)));
  std::uint8_t queue = 0;
  if (place == nullptr || copied == nullptr || !MakeRoom(mLinks) || !MakeRoom(mEdges, count) ||
      !FindQueue(type.GetPriority(), queue) || MakeOrNull([&] { return init(place); }) == nullptr) {
    mArena.Release(mark);
    return 0;
  }
  auto* constraint = static_cast<ZULTaVoConstraint*>(static_cast<ZULTaVoObject*>(place));
  std::copy_n(arguments, count, copied);
  constraint->ChangePriority(nullptr, type.GetPriority());
  const auto link = static_cast<std::uint32_t>(mLinks.size());
  mLinks.push_back({constraint, copied, kNone, count, queue, type.GetRule(), false, constants,
                    checked, false, false, false});
  const std::size_t edges = mEdges.size();
  for (unsigned int i = 0; i < count; ++i) Depend(*NodeOf(copied[i]), link);
  Spare(mLinks[link], type.GetFlags(), mEdges.size() - edges);
  constraint->Activate(this);
  Schedule(link);
  return 1;
}

/// Works out which calls the constraint can be spared with these arguments, so many of them
/// distinct.
void ZULTaVoNetwork::Spare(Link& link, int flags, std::size_t distinct) {
  const bool relation = (flags & ZULTaVoConstraintDescriptor::kRelation) != 0 && link.count > 2 &&
                        link.arguments[0] == link.arguments[link.count - 1];
  link.waits = relation && (flags & ZULTaVoConstraintDescriptor::kWaitsForSingleValue) != 0;
  link.idempotent =
      (relation || (flags & ZULTaVoConstraintDescriptor::kIdempotent) != 0) &&
      distinct == link.count - (relation ? 1 : 0) &&
      std::all_of(link.arguments, link.arguments + link.count, [&](const ZULTaVoObject* object) {
        return NodeOf(object)->real == nullptr &&
               NodeOf(object)->type == NodeOf(link.arguments[0])->type;
      });
}

/// Enters the link in the node's list of dependents, once and at its end, where there is room.
void ZULTaVoNetwork::Depend(Node& node, std::uint32_t link) {
  if (node.lastEdge != kNone && mEdges[node.lastEdge].link == link) return;
  node.single = IsSingleValue(*node.Object());
  const auto edge = static_cast<std::uint32_t>(mEdges.size());
  mEdges.push_back({link, kNone});
  (node.lastEdge == kNone ? node.firstEdge : mEdges[node.lastEdge].next) = edge;
  node.lastEdge = edge;
}

// --- The queue --------------------------------------------------------------------------------

/// The queue of that priority, a new one where there is room. False when memory ran out.
bool ZULTaVoNetwork::FindQueue(unsigned short priority, std::uint8_t& queue) {
  const auto precedes = [](const Queue& other, unsigned short wanted) {
    return other.priority < wanted;
  };
  auto at = std::lower_bound(mQueues.begin(), mQueues.end(), priority, precedes);
  const auto index = static_cast<std::size_t>(at - mQueues.begin());
  queue = static_cast<std::uint8_t>(std::min<std::size_t>(index, 0xfe));
  if ((at != mQueues.end() && at->priority == priority) || mQueues.size() == 0xff) return true;
  if (!MakeRoom(mQueues)) return false;
  mQueues.insert(mQueues.begin() + static_cast<std::ptrdiff_t>(index), {priority, kNone, kNone});
  for (Link& link : mLinks)
    if (link.queue >= index) ++link.queue;
  return true;
}

void ZULTaVoNetwork::MoveConstraint(const ZULTaVoConstraint* constraint) {
  // Constraints change priority when they join, hence the search from the end.
  for (auto link = mLinks.rbegin(); link != mLinks.rend(); ++link) {
    if (link->constraint != constraint) continue;
    const auto index = static_cast<std::uint32_t>(mLinks.rend() - link - 1);
    std::uint8_t queue = 0;
    if (!FindQueue(constraint->GetPriority(), queue)) return;
    const bool queued = link->queued;
    if (queued) Unschedule(index);
    link->queue = queue;
    if (queued) Enqueue(index);
    return;
  }
}

void ZULTaVoNetwork::Schedule(std::uint32_t index) {
  const Link& link = mLinks[index];
  if (!link.queued && !link.retired && !link.constraint->IsPassive()) Enqueue(index);
}

void ZULTaVoNetwork::Enqueue(std::uint32_t index) {
  Link& link = mLinks[index];
  link.queued = true;
  link.next = kNone;
  Queue& queue = mQueues[link.queue];
  (queue.head == kNone ? queue.head : mLinks[queue.tail].next) = index;
  queue.tail = index;
}

void ZULTaVoNetwork::Unschedule(std::uint32_t index) {
  Link& link = mLinks[index];
  Queue& queue = mQueues[link.queue];
  std::uint32_t before = kNone;
  for (std::uint32_t at = queue.head; at != index; at = mLinks[at].next) before = at;
  (before == kNone ? queue.head : mLinks[before].next) = link.next;
  if (queue.tail == index) queue.tail = before;
  link.queued = false;
}

bool ZULTaVoNetwork::TakeNext(std::uint32_t& index) {
  for (Queue& queue : mQueues) {
    if (queue.head == kNone) continue;
    index = queue.head;
    queue.head = mLinks[index].next;
    mLinks[index].queued = false;
    return true;
  }
  return false;
}

bool ZULTaVoNetwork::HasScheduled() const {
  return std::any_of(mQueues.begin(), mQueues.end(),
                     [](const Queue& queue) { return queue.head != kNone; });
}

void ZULTaVoNetwork::ScheduleAll() {
  for (Node* node : mNodes) node->UpdateSingle();
  for (std::uint32_t i = 0; i < mLinks.size(); ++i) {
    mLinks[i].constraint->Reactivate();
    if (!mLinks[i].queued) Enqueue(i);
  }
}

void ZULTaVoNetwork::Retire() {
  if (mRunning == kNoLink || mLinks[mRunning].retired || !Append(mRetired, mRunning)) return;
  mLinks[mRunning].retired = true;
}

/// Whether a filter that says so can have changed the value: some say it for what they only
/// confirm. What was and is a single value is the same one, for domains only narrow.
bool ZULTaVoNetwork::HasChanged(Node& node) {
  if (node.real != nullptr)
    return node.real->GetLowerBound() != node.lower || node.real->GetUpperBound() != node.upper;
  return !node.single || !IsSingleValue(*node.Object());
}

/// Whether the domain has narrowed enough since it was last propagated.
bool ZULTaVoNetwork::WorthPropagating(Node& node) const {
  if (node.real == nullptr) return true;
  const double lower = node.real->GetLowerBound();
  const double upper = node.real->GetUpperBound();
  const bool bounded = node.lower > -kInfinite && node.upper < kInfinite;
  // An unbounded domain has no width to compare with: each bound is measured by itself.
  const auto moved = [&](double from, double to) {
    return std::fabs(to - from) >=
           mFraction * (bounded ? node.upper - node.lower : std::max(1.0, std::fabs(to)));
  };
  if (lower <= upper && lower != upper) {
    const bool worth = bounded ? (node.upper - node.lower) - (upper - lower) >=
                                     mFraction * (node.upper - node.lower)
                               : (lower != node.lower && moved(node.lower, lower)) ||
                                     (upper != node.upper && moved(node.upper, upper));
    if (!worth) return false;
  }
  node.lower = lower;
  node.upper = upper;
  return true;
}

void ZULTaVoNetwork::PropagateValue(const ZULTaVoObject* object) {
  Node* node = nullptr;
  if (mRunning != kNoLink) {
    const Link& link = mLinks[mRunning];
    const unsigned int few = std::min(link.count, ZULTaVoConstraintDescriptor::kMaxArguments);
    for (unsigned int i = 0; i < few && node == nullptr; ++i)
      if (link.arguments[i] == object) node = NodeOf(object);
  }
  if (node == nullptr) node = FindNode(object);
  if (node == nullptr) return;
  const bool running = mRunning != kNoLink;
  if (running && !HasChanged(*node)) return;
  node->narrowed = true;
  node->UpdateSingle();
  if (running) ++mStatistics.narrowings;
  if (!WorthPropagating(*node) && running) return;
  for (std::uint32_t edge = node->firstEdge; edge != kNone; edge = mEdges[edge].next) {
    const std::uint32_t link = mEdges[edge].link;
    if (!running) Wake(link, object);
    const bool spared = (mLinks[link].waits && !HasSingleArgument(mLinks[link])) ||
                        (link == mRunning && mLinks[link].idempotent);
    if (!spared) Schedule(link);
  }
}

bool ZULTaVoNetwork::HasSingleArgument(const Link& link) const {
  return std::any_of(link.arguments, link.arguments + link.count,
                     [](const ZULTaVoObject* object) { return NodeOf(object)->single; });
}

/// A bit for each of the first arguments that is a constant.
unsigned int ZULTaVoNetwork::ConstantsOf(const Link& link) {
  unsigned int constants = 0;
  for (unsigned int i = 0; link.constants && i < std::min(link.count, 32U); ++i)
    if (NodeOf(link.arguments[i])->constant) constants |= 1U << i;
  return constants;
}

/// A change from outside ends the passivity of a constraint.
void ZULTaVoNetwork::Wake(std::uint32_t index, const ZULTaVoObject* object) {
  Link& link = mLinks[index];
  if (mLevels.empty()) link.retired = false;  // outside of a search a value may have been widened
  const auto* at = std::find(link.arguments, link.arguments + link.count, object);
  link.constraint->ActivateByArgument(static_cast<unsigned int>(at - link.arguments), 0, this);
}

// --- Propagation ------------------------------------------------------------------------------

ZULTaVoNetwork::Status ZULTaVoNetwork::Propagate() {
  const ZULTaVoRealScope settings(GetRealSettings());
  ++mStatistics.runs;
  const std::uint64_t limit =
      mStatistics.filters +
      (mFilterLimit != 0 ? mFilterLimit : kFiltersAtLeast + kFiltersPerConstraint * mLinks.size());
  Status status = Status::kConsistent;
  std::uint32_t link = 0;
  while (status == Status::kConsistent && TakeNext(link)) {
    if (mStatistics.filters >= limit) {
      Schedule(link);
      status = Status::kLimit;
    } else if (mInterrupt != nullptr && mStatistics.filters % kInterruptPeriod == 0 &&
               mInterrupt->load(std::memory_order_relaxed)) {
      Schedule(link);
      status = Status::kInterrupted;
    } else if (!mLinks[link].constraint->IsPassive()) {
      ++mStatistics.filters;
      status = RunFilter(link);
    }
  }
  EndPassivity();
  if (status == Status::kContradiction || status == Status::kBadArguments) {
    ClearQueue();
    Enqueue(link);  // a run to come fails once more
  }
  // A filter that was left in the middle has told of none, some or all of what it narrowed.
  if (status == Status::kOutOfMemory) ScheduleAll();
  return status;
}

ZULTaVoNetwork::Status ZULTaVoNetwork::FilterOnce(std::size_t index) {
  const ZULTaVoRealScope settings(GetRealSettings());
  for (ZULTaVoObject* object : GetArguments(index)) NodeOf(object)->Remember();
  ++mStatistics.filters;
  const Status status = RunFilter(static_cast<std::uint32_t>(index));
  EndPassivity();
  return status;
}

/// Passivity lasts for a run.
void ZULTaVoNetwork::EndPassivity() {
  for (const std::uint32_t passive : mPassivated) mLinks[passive].constraint->Reactivate();
  mPassivated.clear();
}

void ZULTaVoNetwork::ClearQueue() {
  std::uint32_t link = 0;
  while (TakeNext(link)) continue;
}

/// Saves what the filter may change. False when memory ran out.
[[gnu::always_inline]] inline bool ZULTaVoNetwork::SaveArguments(const Link& link) {
  const auto depth = static_cast<std::uint32_t>(mLevels.size());
  if (depth == 0) return true;
  for (unsigned int i = 0; i < link.count; ++i) {
    Node& node = *NodeOf(link.arguments[i]);
    node.narrowed = false;
    if (node.depth != depth && !Save(node)) return false;
  }
  return true;
}

ZULTaVoNetwork::Status ZULTaVoNetwork::RunFilter(std::uint32_t index) {
  const Link link = mLinks[index];  // a filter may add constraints, which moves the list
  const ZULTaVoObjectEnvironment environment(this, link.arguments, link.count, ConstantsOf(link),
                                             link.checked);
  const std::size_t saved = mTrail.size();
  if (!SaveArguments(link)) return Status::kOutOfMemory;
  Status status = Status::kConsistent;
  bool changed = true;  // perhaps without a word to the network
  mRunning = index;
  try {
    const int answer = link.constraint->Filter(environment, 0);
    changed = answer == kFilterContradiction;
    if (answer == kFilterContradiction) status = Status::kContradiction;
    if (answer == kFilterBadArguments) status = Status::kBadArguments;
  } catch (const std::bad_alloc&) {
    status = Status::kOutOfMemory;
  } catch (...) {
    status = Status::kBadArguments;
  }
  mRunning = kNoLink;
  if (link.constraint->IsPassive() && !Append(mPassivated, index)) {
    link.constraint->Reactivate();
    status = status == Status::kConsistent ? Status::kOutOfMemory : status;
  }
  if (mTrail.size() > saved && !changed) ForgetUnchanged(saved);
  return status;
}

// --- The trail --------------------------------------------------------------------------------

bool ZULTaVoNetwork::PushState() {
  return Append(mLevels, {mTrail.size(), mRetired.size(), HasScheduled()});
}

void ZULTaVoNetwork::PopState() {
  if (mLevels.empty()) return;
  ClearQueue();
  while (mTrail.size() > mLevels.back().trail) {
    const Saved& saved = mTrail.back();
    saved.node->Object()->Assign(*saved.copy);
    saved.node->depth = saved.depth;
    saved.node->Remember();
    saved.node->lower = saved.lower;
    saved.node->upper = saved.upper;
    Forget(mTrail.size() - 1);
    mTrail.pop_back();
  }
  for (; mRetired.size() > mLevels.back().retired; mRetired.pop_back())
    mLinks[mRetired.back()].retired = false;
  const bool open = mLevels.back().open;
  mLevels.pop_back();
  if (open) ScheduleAll();
}

bool ZULTaVoNetwork::SaveValue(ZULTaVoObject* object) {
  Node* node = mLevels.empty() ? nullptr : FindNode(object);
  return node == nullptr || node->depth == mLevels.size() || Save(*node);
}

bool ZULTaVoNetwork::Save(Node& node) {
  const Arena::Mark mark = mTrailArena.GetMark();
  void* place = MakeRoom(mTrail) ? mTrailArena.Allocate(node.type->GetObjectSize()) : nullptr;
  void* made = MakeOrNull([&] { return node.type->InitObject(place, node.Object()); });
  if (made == nullptr) {
    mTrailArena.Release(mark);
    return false;
  }
  auto* copy = static_cast<ZULTaVoAny*>(static_cast<ZULTaVoObject*>(made));
  mTrail.push_back({&node, copy, mark, node.depth, node.lower, node.upper});
  node.depth = static_cast<std::uint32_t>(mLevels.size());
  return true;
}

/// Drops what a filter had the chance to change and left, down to the first change.
void ZULTaVoNetwork::ForgetUnchanged(std::size_t from) {
  while (mTrail.size() > from && !mTrail.back().node->narrowed) {
    mTrail.back().node->depth = mTrail.back().depth;
    Forget(mTrail.size() - 1);
    mTrail.pop_back();
  }
}

void ZULTaVoNetwork::Forget(std::size_t entry) {
  const Saved& saved = mTrail[entry];
  saved.node->type->DestroyObject(saved.copy);
  mTrailArena.Release(saved.mark);
}
