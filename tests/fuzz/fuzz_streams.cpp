// Any bytes as an object stream: a graph comes back whole, or nothing is left of it.

#include <array>
#include <memory>
#include <set>
#include <sstream>

#include "framework/base/ZW4BASE.h"
#include "tests/fuzz/fuzz.h"

namespace {

/// Has a value of each kind, a name, two references, and a part that it owns.
struct Node : ZULStreamable {
  static inline std::set<Node*> sAlive;

  int mCode = 0;
  long mLong = 0;
  double mDouble = 0;
  std::uint64_t mUnsigned = 0;
  std::string mName;
  std::array<Node*, 2> mOthers{};
  std::unique_ptr<Node> mPart;

  Node() { sAlive.insert(this); }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  ~Node() override { sAlive.erase(this); }

  const char* CastableID() const override { return "Node"; }
  void Write(ZULopstream& out) const override {
    out << mCode << mLong << mDouble;
    out.WriteUnsigned(mUnsigned);
    out.WriteString(mName);
    for (const Node* other : mOthers) out.WriteObjectPointer(other);
    out.WriteObjectPointer(mPart.get());
  }
  void Read(ZULipstream& in) override {
    in >> mCode >> mLong >> mDouble;
    in.ReadUnsigned(mUnsigned);
    in.ReadString(mName, 100);
    for (Node*& other : mOthers) ReadPointerAs(in, other);
    ReadOwnedAs(in, mPart);
  }
};

ZULStreamable* Build(ZULStreamable* existing) { return existing ? existing : new Node; }
const ZULStreamableClass kClass("Node", &Build, 1);

std::string Written(const Node* node) {
  std::ostringstream bytes;
  ZULopstream out(bytes);
  out.WriteObjectPointer(node);
  REQUIRE(out.Good(), "a graph can be written");
  return bytes.str();
}

/// Destroys what is left: parts go with their owners, all else here.
void DestroyAll() {
  std::set<const Node*> parts;
  for (const Node* node : Node::sAlive) parts.insert(node->mPart.get());
  const std::set<Node*> alive = Node::sAlive;
  for (Node* node : alive)
    if (parts.count(node) == 0) delete node;
  REQUIRE(Node::sAlive.empty(), "each object has one owner");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  ZULipstream in(stream);
  Node* node = nullptr;
  if (!ReadPointerAs(in, node)) {
    REQUIRE(*in.Reason() != 0, "a refusal has its reason");
    REQUIRE(Node::sAlive.empty(), "nothing is left of what was refused");
    return 0;
  }
  REQUIRE(Node::sAlive.size() <= size, "no more objects than bytes");
  const std::string bytes = Written(node);
  DestroyAll();
  std::istringstream again(bytes);
  ZULipstream second(again);
  REQUIRE(ReadPointerAs(second, node), "what is written can be read back", second.Reason());
  REQUIRE(Written(node) == bytes, "graphs are stable");
  DestroyAll();
  return 0;
}
