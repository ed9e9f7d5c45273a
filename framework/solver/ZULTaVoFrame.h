#ifndef ZULTAV_SOLVER_ZULTAVO_FRAME_H
#define ZULTAV_SOLVER_ZULTAVO_FRAME_H

#include <array>
#include <cstddef>
#include <new>
#include <type_traits>

#include "framework/base/ZW4BASE.h"
#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoConstraintDescriptor.h"

/// Identity and persistence of a concrete class, written once.
///
/// A class C names itself and its base:
///
///     class C final : public ZULTaVoFrame<C, ZULTaVoReal> {
///      public:
///       static constexpr char kClassName[] = "C";        // name in object streams
///       static constexpr char kTypeName[] = "my real";   // name of the descriptor
///       C();                                             // the initial value
///       C(const C&);
///       explicit C(ZULStreamableInit);
///       …
///     };
///     extern template class ZULTaVoFrame<C, ZULTaVoReal>;   // below the class, in its header
///
/// and its source holds `template class ZULTaVoFrame<C, ZULTaVoReal>;` and the two registration
/// records, the descriptor's first:
///
///     ZULStreamableClass rC_Descriptor = C::MakeDescriptorRecord();
///     ZULStreamableClass rC = C::MakeRecord();
///
/// A constraint class has besides them `static constexpr unsigned int kArguments` and
/// `static void AddArguments(ZULTaVoConstraintDescriptor&)`. The module calls MakeDescriptor.
template <class Self, class Base>
class ZULTAV_TYPES_API ZULTaVoFrame : public Base {
  static constexpr bool kIsConstraint = std::is_base_of_v<ZULTaVoConstraint, Base>;
  using DescriptorBase =
      std::conditional_t<kIsConstraint, ZULTaVoConstraintDescriptor, ZULTaVoObjectDescriptor>;

 public:
  class ZULTAV_TYPES_API Descriptor : public DescriptorBase {
   public:
    Descriptor() : DescriptorBase(MakeBase()) {
      if constexpr (kIsConstraint) Self::AddArguments(*this);
    }
    explicit Descriptor(ZULStreamableInit init) : DescriptorBase(init) {}
    ~Descriptor() override {
      if (sDescriptor == this) sDescriptor = nullptr;
    }

    const char* CastableID() const override { return CastableIdent; }
    void* InitObject(void* place) const override {
      return place == nullptr ? nullptr : new (place) Self();
    }
    void* InitObject(void* place, const void* from) const override {
      if (place == nullptr) return nullptr;
      if constexpr (kIsConstraint) {
        return new (place) Self(from);
      } else {
        return new (place) Self(*static_cast<const Self*>(from));
      }
    }
    std::size_t GetObjectSize() const override { return sizeof(Self); }

    static void readRef(ZULipstream& in, Descriptor& object) { in.ReadObject(object); }
    static void readPtr(ZULipstream& in, Descriptor*& object) { ReadPointerAs(in, object); }
    static void writeRef(ZULopstream& out, const Descriptor& object) { out.WriteObject(object); }
    static void writePtr(ZULopstream& out, const Descriptor* object) {
      out.WriteObjectPointer(object);
    }

    static const char* const CastableIdent;

   private:
    static DescriptorBase MakeBase() {
      if constexpr (kIsConstraint) {
        return {Self::kTypeName, nullptr, 1, Self::kArguments, 0};
      } else {
        return {Self::kTypeName, Base::sDescriptor, 1};
      }
    }
  };

  using Base::Base;

  const char* CastableID() const override { return CastableIdent; }
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || Base::IsDerivedFrom(id);
  }
  const ZULTaVoObjectDescriptor* GetDescriptor() const override { return sDescriptor; }

  /// Makes a new descriptor of the class, which becomes the one that its objects answer. Null
  /// when memory ran out.
  static ZULTaVoObjectDescriptor* MakeDescriptor() {
    auto* made = new Descriptor();
    sDescriptor = made;
    return made;
  }

  static void readRef(ZULipstream& in, Self& object) { in.ReadObject(object); }
  static void readPtr(ZULipstream& in, Self*& object) { ReadPointerAs(in, object); }
  static void writeRef(ZULopstream& out, const Self& object) { out.WriteObject(object); }
  static void writePtr(ZULopstream& out, const Self* object) { out.WriteObjectPointer(object); }

  static ZULStreamableClass MakeDescriptorRecord() {
    return ZULStreamableClass(Descriptor::CastableIdent, BuildForStream<Descriptor>, 1);
  }
  static ZULStreamableClass MakeRecord() {
    return ZULStreamableClass(CastableIdent, BuildForStream<Self>, 1);
  }

  /// What IsDerivedFrom compares, by pointer. Constraints have that of ZULTaVoConstraint.
  static const char* const sIdent;
  static const char* const CastableIdent;
  /// The descriptor of the class: made by MakeDescriptor, owned by the module that added it.
  static const ZULTaVoObjectDescriptor* sDescriptor;

 private:
  friend Self;

  template <class T>
  static ZULStreamable* BuildForStream(ZULStreamable* existing) {
    return existing != nullptr ? existing : new T(ZULStreamableInit{});
  }
  static constexpr auto DescriptorName() {
    constexpr char kSuffix[] = "_Descriptor";
    std::array<char, sizeof(Self::kClassName) + sizeof(kSuffix) - 1> name{};
    std::size_t at = 0;
    for (const char* c = Self::kClassName; *c != 0; ++c) name[at++] = *c;
    for (const char* c = kSuffix; *c != 0; ++c) name[at++] = *c;
    return name;
  }
  template <class T>
  static inline constexpr auto kDescriptorName = T::DescriptorName();
};

template <class Self, class Base>
const char* const ZULTaVoFrame<Self, Base>::sIdent = [] {
  if constexpr (kIsConstraint) {
    return Base::sIdent;
  } else {  // NOLINT(readability-misleading-indentation): it is not
    return Self::kClassName;
  }
}();
template <class Self, class Base>
const char* const ZULTaVoFrame<Self, Base>::CastableIdent = Self::kClassName;
template <class Self, class Base>
const char* const ZULTaVoFrame<Self, Base>::Descriptor::CastableIdent =
    ZULTaVoFrame::template kDescriptorName<ZULTaVoFrame>.data();
template <class Self, class Base>
const ZULTaVoObjectDescriptor* ZULTaVoFrame<Self, Base>::sDescriptor = nullptr;

#endif
