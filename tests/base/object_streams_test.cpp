#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "framework/base/ZW4BASE.h"
#include "tests/counted_memory.h"

namespace {

constexpr std::string_view kTruncated = "stream ends too early";

/// Kept in place by its owner; accepts the codes 0 to 3 only, and throws on 7.
struct Leaf : ZULStreamable {
  int mCode = 0;

  const char* CastableID() const override { return "Leaf"; }
  void Write(ZULopstream& out) const override {
    if (mCode == 7) throw 7;
    out << mCode;
  }
  void Read(ZULipstream& in) override {
    in >> mCode;
    if (mCode == 7) throw 7;
    if (mCode < 0 || mCode > 3) in.Fail("bad code");
  }
};

/// Has a value, a part in place, two references to others, and a part that it owns.
struct Node : ZULStreamable {
  static inline int sAlive = 0;

  long mValue = 0;
  Leaf mLeaf;
  std::array<Node*, 2> mOthers{};
  std::unique_ptr<Node> mPart;
  int mVersionRead = 0;

  explicit Node(long value = 0) : mValue(value) { ++sAlive; }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  ~Node() override { --sAlive; }

  const char* CastableID() const override { return "Node"; }
  void Write(ZULopstream& out) const override {
    out << mValue;
    out.WriteObject(mLeaf);
    for (const Node* other : mOthers) out.WriteObjectPointer(other);
    out.WriteObjectPointer(mPart.get());
  }
  void Read(ZULipstream& in) override {
    mVersionRead = in.RecordVersion();
    in >> mValue;
    in.ReadObject(mLeaf);
    for (Node*& other : mOthers) ReadPointerAs(in, other);
    ReadOwnedAs(in, mPart);
  }
};

template <class C>
ZULStreamable* Build(ZULStreamable* existing) {
  return existing != nullptr ? existing : new C;
}
const ZULStreamableClass gLeafClass("Leaf", &Build<Leaf>, 1);
const ZULStreamableClass gNodeClass("Node", &Build<Node>, 2);
const ZULStreamableClass gBarrenClass("Barren", nullptr, 1);

void Visit(Node* node, std::set<Node*>& reached, std::set<Node*>& owned) {
  if (node == nullptr || !reached.insert(node).second) return;
  owned.insert(node->mPart.get());
  Visit(node->mPart.get(), reached, owned);
  for (Node* other : node->mOthers) Visit(other, reached, owned);
}

/// Destroys a graph, and answers how many nodes it had.
std::size_t Destroy(Node* root) {
  std::set<Node*> reached, owned;
  Visit(root, reached, owned);
  for (Node* node : reached)
    if (!owned.contains(node)) delete node;
  return reached.size();
}

template <class Action>
std::string Written(Action action) {
  std::ostringstream bytes;
  ZULopstream out(bytes);
  action(out);
  EXPECT_STREQ(out.Reason(), "");
  return bytes.str();
}

std::string Bytes(std::initializer_list<std::string_view> pieces) {
  std::string all;
  for (const auto piece : pieces) all += piece;
  return all;
}
using namespace std::string_view_literals;
constexpr auto kHead = "\x89ZUL\r\n\x01\x00"sv;
constexpr auto kNewNode = "\x02\x04Node\x02"sv;
constexpr auto kSeven = "\7\0\0\0\0\0\0\0"sv;
constexpr auto kNewLeaf = "\x02\x04Leaf\x01\x02\0\0\0"sv;
constexpr auto kOldLeaf = "\x04\x02\0\0\0"sv;

/// root (0) -> Leaf (1); others: itself, b (2, with Leaf 3, others a null and b); owns c (4, 5).
const std::string kGraph = Bytes({kHead, kNewNode, kSeven, kNewLeaf, "\1\0"sv,   //
                                  "\3"sv, kSeven, kOldLeaf, "\0\1\2"sv, "\0"sv,  // b
                                  "\3"sv, kSeven, kOldLeaf, "\1\2\0\0"sv});      // c

struct Outcome {
  std::string reason;
  Node* root = nullptr;
};

Outcome ReadRoot(const std::string& bytes) {
  std::istringstream stream(bytes);
  ZULipstream in(stream);
  Outcome outcome;
  ReadPointerAs(in, outcome.root);
  outcome.reason = in.Reason();
  EXPECT_EQ(in.Good(), outcome.reason.empty());
  if (in.Good()) return outcome;
  // A failed stream gives nothing any more.
  long number = 5;
  std::string text = "old";
  in >> number;
  EXPECT_FALSE(in.ReadString(text, 9));
  EXPECT_EQ(number, 0);
  EXPECT_EQ(text, "");
  EXPECT_EQ(outcome.root, nullptr);
  EXPECT_EQ(in.ReadObjectPointer(), nullptr);
  return outcome;
}

TEST(ObjectStreamsTest, BytesOfNumbersAreFixed) {
  const auto bytes = Written([](ZULopstream& out) {
    out << -2 << 0x12345678L << 1.0;
    out.WriteUnsigned(300);
    out.WriteString("ab");
  });
  EXPECT_EQ(bytes, Bytes({kHead, "\xFE\xFF\xFF\xFF"sv, "\x78\x56\x34\x12\0\0\0\0"sv,
                          "\0\0\0\0\0\0\xF0\x3F"sv, "\xAC\x02"sv, "\2ab"sv}));
}

TEST(ObjectStreamsTest, BytesOfAGraphAreFixedAndReadBack) {
  Node* const root = ReadRoot(kGraph).root;
  ASSERT_NE(root, nullptr);
  Node* const b = root->mOthers[1];
  ASSERT_NE(b, nullptr);
  ASSERT_NE(root->mPart, nullptr);
  EXPECT_EQ(root->mOthers[0], root);
  EXPECT_EQ(b->mOthers[1], b);
  EXPECT_EQ(root->mPart->mOthers[0], b);
  EXPECT_EQ(b->mValue, 7);
  EXPECT_EQ(b->mLeaf.mCode, 2);
  EXPECT_EQ(b->mVersionRead, 2);
  EXPECT_EQ(Written([&](ZULopstream& out) { out.WriteObjectPointer(root); }), kGraph);
  EXPECT_EQ(Destroy(root), 3U);
}

TEST(ObjectStreamsTest, NumbersSurviveBitForBit) {
  using Numbers = std::tuple<int, long, std::uint64_t, std::uint64_t>;
  std::mt19937_64 random(1);
  for (int i = 0; i < 2000; ++i) {
    // Numbers of every length, the largest of each length among them.
    const std::uint64_t bits = (i % 2 != 0 ? ~std::uint64_t{0} : random()) >> i % 64;
    const Numbers numbers(static_cast<int>(bits), static_cast<long>(bits), bits, bits << i % 64);
    std::istringstream bytes(Written([&](ZULopstream& out) {
      out << std::get<0>(numbers) << std::get<1>(numbers);
      out.WriteUnsigned(bits);
      out << std::bit_cast<double>(bits << i % 64);
    }));
    ZULipstream in(bytes);
    Numbers read;
    double real = 0;
    in >> std::get<0>(read) >> std::get<1>(read);
    EXPECT_TRUE(in.ReadUnsigned(std::get<2>(read), bits));
    in >> real;
    std::get<3>(read) = std::bit_cast<std::uint64_t>(real);
    EXPECT_EQ(read, numbers);
  }
}

TEST(ObjectStreamsTest, ALongBeyond32BitsIsReadOrRefused) {
  std::istringstream bytes(Bytes({kHead, "\0\0\0\0\1\0\0\0"sv}));
  ZULipstream in(bytes);
  long value = 1;
  in >> value;
  EXPECT_EQ(in.Good(), sizeof(long) == 8);
  EXPECT_EQ(value, sizeof(long) == 8 ? long(1LL << 32) : 0L);
}

TEST(ObjectStreamsTest, AnObjectInPlaceIsKnownToItsPartsOnly) {
  Node original(1), copy;
  original.mPart = std::make_unique<Node>(2);
  original.mPart->mOthers[0] = &original;
  std::istringstream bytes(Written([&](ZULopstream& out) {
    out.WriteObject(original);
    out.WriteObjectPointer(&original);  // as far as the reader knows, another object
  }));
  ZULipstream in(bytes);
  ASSERT_TRUE(in.ReadObject(copy));
  EXPECT_EQ(copy.mPart->mOthers[0], &copy);
  EXPECT_EQ(in.ReadObjectPointer(), nullptr);  // it would own what the copy owns
  EXPECT_STREQ(in.Reason(), "object would have two owners");
}

TEST(ObjectStreamsTest, EveryKindOfDamageHasItsReason) {
  const auto node = Bytes({kHead, kNewNode, kSeven, kNewLeaf});
  const auto deep = [&] {
    std::string bytes = node;
    for (int i = 0; i < 5000; ++i) bytes += Bytes({"\3"sv, kSeven, kOldLeaf});
    return bytes;
  };
  const struct {
    std::string bytes, reason;
  } rows[] = {
      {"",                                                             std::string(kTruncated)                        },
      {"\x89ZUL\n\1\0\0",                                              "not an object stream"                         },
      {Bytes({"\x89ZUL\r\n\x02\0"sv}),                                 "object stream of an unknown version"          },
      {Bytes({kHead, "\3"sv}),                                         "tag names no class"                           },
      {Bytes({kHead, "\x80\0"sv}),                                     "malformed number"                             },
      {Bytes({kHead, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\2"sv}),     "malformed number"                             },
      {Bytes({kHead, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x81\0"sv}), "malformed number"                             },
      {Bytes({kHead, "\2\4Nobe\1"sv}),                                 "class is not registered"                      },
      {Bytes({kHead, "\2\0\1"sv}),                                     "class is not registered"                      },
      {Bytes({kHead, "\2\x80\2"sv}),                                   "text is longer than its limit"                },
      {Bytes({kHead, "\2\4Node\3"sv}),                                 "class is of a later version"                  },
      {Bytes({kHead, "\2\6Barren\1"sv}),                               "no memory for an object"                      },
      {Bytes({kHead, kNewLeaf}),                                       "object is of another class"                   },
      {Bytes({kHead, kNewNode, kSeven, "\3"sv}),                       "object is of another class"                   },
      {Bytes({kHead, kNewNode, kSeven, "\0"sv}),                       "pointer where an object should be"            },
      {Bytes({kHead, kNewNode, kSeven, "\2\4Leaf\1\4\0\0\0"sv}),       "bad code"                                     },
      {Bytes({kHead, kNewNode, kSeven, "\2\4Leaf\1\7\0\0\0"sv}),
       "an object threw while it was read"                                                                            },
      {node + "\2\4Node\2",                                            "class is introduced twice"                    },
      {node + "\1\2",                                                  "reference to an object that has not come yet" },
      {node + "\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\1",
       "reference to an object that has not come yet"                                                                 },
      {node + "\1\1",                                                  "reference to an object that was read in place"},
      {Bytes({node, "\1\0\1\0\1\0"sv}),                                "object would have two owners"                 },
      {deep(),                                                         "objects are nested too deep"                  },
  };
  for (const auto& [bytes, reason] : rows) {
    SCOPED_TRACE(reason);
    EXPECT_EQ(ReadRoot(bytes).reason, reason);
    EXPECT_EQ(Node::sAlive, 0);
  }
}

TEST(ObjectStreamsTest, TruncationAtEveryByteFails) {
  for (std::size_t size = 0; size < kGraph.size(); ++size) {
    EXPECT_EQ(ReadRoot(kGraph.substr(0, size)).reason, kTruncated) << size;
    EXPECT_EQ(Node::sAlive, 0) << size;
  }
}

TEST(ObjectStreamsTest, MemoryFollowsTheBytesNotTheLengths) {
  std::istringstream bytes(Bytes({kHead, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"sv, "abc"sv}));
  ZULipstream in(bytes);
  std::string text;
  gLargestAllocation = 0;
  EXPECT_FALSE(in.ReadString(text, std::numeric_limits<std::size_t>::max()));
  EXPECT_LT(gLargestAllocation, 10000U);
  EXPECT_NE(*in.Reason(), 0);
}

TEST(ObjectStreamsTest, EveryFailingAllocationEndsInAReason) {
  bool ranThrough = false;
  for (long n = 0; !ranThrough; ++n) {
    ASSERT_LT(n, 1000);
    Node* const original = ReadRoot(kGraph).root;
    std::istringstream source(kGraph);
    std::ostringstream sink;
    Node* root = nullptr;
    gAllocationsUntilFailure = n;
    ZULipstream in(source);
    ReadPointerAs(in, root);
    ZULopstream out(sink);
    out.WriteObjectPointer(original);
    ranThrough = gAllocationsUntilFailure >= 0;
    gAllocationsUntilFailure = -1;
    EXPECT_EQ(in.Good() && out.Good(), ranThrough) << n;
    EXPECT_TRUE(in.Good() == (root != nullptr)) << n;
    Destroy(root);
    Destroy(original);
    EXPECT_EQ(Node::sAlive, 0) << n;
  }
}

TEST(ObjectStreamsTest, FailuresOfTheStreamBelowStayInside) {
  std::istringstream input(kGraph.substr(0, 20));
  input.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  ZULipstream in(input);
  EXPECT_EQ(in.ReadObjectPointer(), nullptr);
  EXPECT_EQ(in.Reason(), kTruncated);
  struct Full : std::streambuf {  // takes no byte
    int_type overflow(int_type) override { throw 1; }
  } full;
  std::ostream output(&full);
  output.exceptions(std::ios::badbit);
  EXPECT_STREQ(ZULopstream(output).Reason(), "output error");
}

TEST(ObjectStreamsTest, TheWriterRefusesWhatCouldNotBeRead) {
  struct Stranger : Leaf {
    const char* CastableID() const override { return "Stranger"; }
  };
  const auto reasonOf = [](const ZULStreamable& object) {
    std::ostringstream bytes;
    ZULopstream out(bytes);
    out.WriteObject(object);
    return std::string(out.Reason());
  };
  Leaf thrower;
  thrower.mCode = 7;
  EXPECT_EQ(reasonOf(Stranger()), "class is not registered");
  EXPECT_EQ(reasonOf(thrower), "an object threw while it was written");
  std::vector<Node> chain(1000);
  for (std::size_t i = 1; i < chain.size(); ++i) chain[i].mOthers[0] = &chain[i - 1];
  EXPECT_EQ(reasonOf(chain[999]), "objects are nested too deep");  // the first one's leaf is
  const auto copy =
      ReadRoot(Written([&](ZULopstream& out) { out.WriteObjectPointer(&chain[998]); }));
  EXPECT_EQ(copy.reason, "");
  EXPECT_EQ(Destroy(copy.root), 999U);
}

}  // namespace
