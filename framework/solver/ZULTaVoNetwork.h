#ifndef ZULTAV_SOLVER_ZULTAVO_NETWORK_H
#define ZULTAV_SOLVER_ZULTAVO_NETWORK_H

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "framework/solver/Arena.h"
#include "framework/solver/ZULTaVoAny.h"
#include "framework/solver/ZULTaVoConstant.h"
#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoConstraintDescriptor.h"
#include "framework/solver/ZULTaVoRealSettings.h"

class ZULTaVoRelation;

/// Values, the constraints between them, and propagation to the fixpoint.
///
/// The network owns its objects, which live in an arena until it is destroyed. What it computes
/// depends on the order in which objects and constraints were added, never on addresses or time.
///
/// A network is for one thread at a time; different networks may be used by different threads.
/// Nothing here throws, whatever a module's filters and constructors do. Where memory runs out the
/// answer says so, and the network is as it was before the call.
class ZULTAV_TYPES_API ZULTaVoNetwork : public ZULTaVoBase {
 public:
  enum class Status {
    kConsistent,     ///< fixpoint reached, no domain is Nil
    kContradiction,  ///< a domain is Nil: there is no solution
    kLimit,          ///< the limit on filter calls was reached; what was narrowed is sound
    kInterrupted,    ///< the interrupt flag was seen; what was narrowed is sound
    kBadArguments,   ///< a constraint could not use its arguments
    kOutOfMemory     ///< what was narrowed is sound, and the next run goes on from there
  };
  struct Statistics {
    std::uint64_t filters = 0;     ///< filter calls
    std::uint64_t narrowings = 0;  ///< domain changes made by filters
    std::uint64_t runs = 0;        ///< propagation runs
  };

  ZULTaVoNetwork();
  ~ZULTaVoNetwork();
  ZULTaVoNetwork(const ZULTaVoNetwork&) = delete;
  ZULTaVoNetwork& operator=(const ZULTaVoNetwork&) = delete;

  /// A new value of the type, with its initial value or as a copy of `from`, an object of the
  /// same class. Null for what is no concrete value type, for a null `from`, and when memory ran
  /// out.
  ZULTaVoAny* AddObject(const ZULTaVoObjectDescriptor* type);
  ZULTaVoAny* AddObject(const ZULTaVoObjectDescriptor* type, const void* from);
  /// Marks an object of this network as a constant.
  void SetConstant(const ZULTaVoObject* object);
  bool IsConstant(const ZULTaVoObject* object) const;
  /// Notes the exact number that an object of this network stands for; its value encloses it or
  /// saturates. Filters see neither the number nor, by this alone, a constant. False when the
  /// object is not this network's or memory ran out.
  bool SetConstant(const ZULTaVoObject* object, const ZULTaVoConstant& number);
  /// The number that was noted; null if none was. Valid until the next one is noted.
  const ZULTaVoConstant* GetConstant(const ZULTaVoObject* object) const;
  /// The same of the object with this index.
  const ZULTaVoConstant* GetConstantAt(std::size_t index) const;
  /// Adds a constraint over objects of this network, numbered as the environment numbers them
  /// (0 the result; as many as the descriptor takes), and schedules it. Answers 1, or 0 when the
  /// arguments do not match the descriptor, are not this network's, or memory ran out.
  int AddConstraint(const ZULTaVoConstraintDescriptor* type, ZULTaVoObject* const* arguments,
                    unsigned int count);
  /// Adds a copy of the relation over objects of this network, as many as it has values. Answers as
  /// AddConstraint.
  int AddRelation(const ZULTaVoRelation& relation, ZULTaVoObject* const* arguments,
                  unsigned int count);

  std::size_t GetNumberOfObjects() const { return mNodes.size(); }
  std::size_t GetNumberOfConstraints() const { return mLinks.size(); }
  ZULTaVoAny* GetObject(std::size_t index) const;
  /// Of an object, what GetObject takes; GetNumberOfObjects() if it is not this network's.
  std::size_t GetIndex(const ZULTaVoObject* object) const;
  /// Constraint `index` in the order of addition, and its arguments, the result first.
  const ZULTaVoConstraint& GetConstraint(std::size_t index) const {
    return *mLinks[index].constraint;
  }
  std::span<ZULTaVoObject* const> GetArguments(std::size_t index) const {
    return {mLinks[index].arguments, mLinks[index].count};
  }
  /// What GetIndex answers of one of them, without a look at whose it is.
  std::uint32_t GetIndexOfArgument(std::size_t index, std::size_t argument) const;
  /// What constraint `index` says: what its descriptor does, unless SetRule has replaced it for
  /// this one, as an operator does that means more than its constraint can say.
  ZULTaVoRule GetRule(std::size_t index) const { return mLinks[index].rule; }
  void SetRule(std::size_t index, ZULTaVoRule rule) { mLinks[index].rule = rule; }
  /// The descriptor with which the object was added; null if it is not this network's.
  const ZULTaVoObjectDescriptor* GetType(const ZULTaVoObject* object) const;
  /// Bytes that the network holds.
  std::size_t GetMemoryUsed() const;

  /// Runs the scheduled constraints to the fixpoint. After a contradiction or bad arguments, so
  /// does every further run, until PopState goes back to before it.
  Status Propagate();
  /// Runs the filter of constraint `index` once on the values as they are, whether it is scheduled
  /// or not; values may have been set by whoever calls, without a word, after SaveValue. What the
  /// filter narrows is as in Propagate; kConsistent does not say that more calls would do nothing.
  Status FilterOnce(std::size_t index);
  /// Tells that the object's value has narrowed: the constraints on it are scheduled. Called by
  /// filters for their arguments, and by whoever changes a value from outside. A filter that says
  /// so of a single value that it has only confirmed schedules nothing.
  void PropagateValue(const ZULTaVoObject* object);
  /// Called by a filter: the constraint holds for all combinations of the values that are left,
  /// so that it need not run again before PopState brings values back.
  void Retire();
  /// Schedules every constraint once more, whatever it knew.
  void ScheduleAll();

  /// Opens a level: PopState brings every value back to what it was here, and runs what was
  /// scheduled here once more. Until then values may only narrow. False, and no level is opened,
  /// when memory ran out.
  [[nodiscard]] bool PushState();
  void PopState();
  std::size_t GetDepth() const { return mLevels.size(); }
  /// To be called before a value is changed from outside, so that PopState can restore it. False
  /// when memory ran out: the value must stay as it is.
  [[nodiscard]] bool SaveValue(ZULTaVoObject* object);

  /// A real domain's narrowing that removes less than this fraction of its width since it was
  /// last propagated is kept but not propagated. Default 0.01: coarse enough that slow
  /// convergence ends after some hundred steps per decade, fine enough that the search rarely
  /// splits what propagation would still have narrowed.
  /// Ignored unless it is from 0 up and less than 1.
  void SetNarrowingFraction(double fraction) {
    if (fraction >= 0 && fraction < 1) mFraction = fraction;
  }
  double GetNarrowingFraction() const { return mFraction; }
  /// Filter calls allowed per run, 0 for the default: 2000 for each constraint and 1000000 more.
  void SetFilterLimit(std::uint64_t limit) { mFilterLimit = limit; }
  std::uint64_t GetFilterLimit() const { return mFilterLimit; }
  /// A run ends soon after the flag becomes true. Null: never.
  void SetInterrupt(const std::atomic<bool>* flag) { mInterrupt = flag; }

  /// The precision and the window of its reals: of its own, or of the process if null. A new
  /// network has those of the scope in which it is made.
  void SetRealSettings(const ZULTaVoRealSettings* settings);
  const ZULTaVoRealSettings* GetRealSettings() const {
    return mRealSettings ? &*mRealSettings : nullptr;
  }

  const Statistics& GetStatistics() const { return mStatistics; }

  /// Called by constraints whose priority changes. Where memory ran out the order stays.
  void MoveConstraint(const ZULTaVoConstraint* constraint);

 private:
  struct Node;
  /// A constraint, its arguments (result first) and its place in the queue.
  struct Link {
    ZULTaVoConstraint* constraint;
    ZULTaVoObject** arguments;
    std::uint32_t next;
    std::uint32_t count;
    std::uint8_t queue;
    ZULTaVoRule rule;
    bool queued;
    bool constants;   // some of its arguments are constants
    bool checked;     // its arguments match its descriptor
    bool idempotent;  // its own changes need not call it again
    bool waits;       // it can do nothing before an argument is a single value
    bool retired;     // it holds for all values that are left at this level
  };
  struct Edge {
    std::uint32_t link;
    std::uint32_t next;
  };
  struct Queue {
    unsigned short priority;
    std::uint32_t head;
    std::uint32_t tail;
  };
  struct Saved {
    Node* node;
    ZULTaVoAny* copy;
    zultav::Arena::Mark mark;
    std::uint32_t depth;  // at which the node was saved before
    double lower, upper;  // of the node: what was undone must not decide what is propagated next
  };

  /// How long the lists of what is to be undone were when the level was opened.
  struct Level {
    std::size_t trail;
    std::size_t retired;
    bool open;  // the fixpoint was not reached
  };
  static constexpr std::uint32_t kNoLink = 0xffffffff;

  static Node* NodeOf(const ZULTaVoObject* object);
  Node* FindNode(const ZULTaVoObject* object) const;
  template <class Init>
  ZULTaVoAny* Add(const ZULTaVoObjectDescriptor* type, Init init);
  template <class Init>
  int Connect(const ZULTaVoConstraintDescriptor& type, ZULTaVoObject* const* arguments,
              unsigned int count, bool checked, Init init);
  void Depend(Node& node, std::uint32_t link);

  bool FindQueue(unsigned short priority, std::uint8_t& queue);
  void Spare(Link& link, int flags, std::size_t distinct);
  void Schedule(std::uint32_t index);
  void Enqueue(std::uint32_t index);
  void Unschedule(std::uint32_t index);
  bool TakeNext(std::uint32_t& index);
  bool HasScheduled() const;
  void ClearQueue();
  bool HasSingleArgument(const Link& link) const;
  static unsigned int ConstantsOf(const Link& link);
  void Wake(std::uint32_t index, const ZULTaVoObject* object);
  static bool HasChanged(Node& node);
  bool WorthPropagating(Node& node) const;
  Status RunFilter(std::uint32_t index);
  void EndPassivity();
  bool SaveArguments(const Link& link);

  bool Save(Node& node);
  void ForgetUnchanged(std::size_t from);
  void Forget(std::size_t entry);

  zultav::Arena mArena;
  zultav::Arena mTrailArena;
  std::vector<Node*> mNodes;
  std::vector<ZULTaVoConstant> mConstants;
  std::vector<Link> mLinks;
  std::vector<Edge> mEdges;
  std::vector<Queue> mQueues;
  std::vector<Saved> mTrail;
  std::vector<Level> mLevels;
  std::vector<std::uint32_t> mRetired;
  std::vector<std::uint32_t> mPassivated;
  std::uint32_t mRunning = kNoLink;
  double mFraction = 0.01;
  std::uint64_t mFilterLimit = 0;
  const std::atomic<bool>* mInterrupt = nullptr;
  std::optional<ZULTaVoRealSettings> mRealSettings;
  Statistics mStatistics;
};

#endif
