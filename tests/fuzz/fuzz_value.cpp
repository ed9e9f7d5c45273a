// Any text, and any record, as the value of each domain: what is read is a value, can be printed
// and written, and comes back the same.

#include <optional>
#include <sstream>

#include "tests/fuzz/any_value.h"

namespace {

/// What the text is printed as once it was read; nothing where it cannot be read.
std::optional<std::string> Reprint(const ZULTaVoObjectDescriptor& type, const std::string& text) {
  ZULTaVoNetwork network;
  ZULTaVoAny* const value = network.AddObject(&type);
  std::istringstream in(text);
  value->InputValue(in);
  RequireValue(*value);
  if (in.fail()) return {};
  std::ostringstream printed;
  printed << *value;
  return printed.str();
}

void ReadText(const ZULTaVoObjectDescriptor& type, std::string_view input) {
  const auto printed = Reprint(type, std::string(input));
  if (!printed) return;
  const auto again = Reprint(type, *printed);  // rounded to the precision, it may reach a limit
  REQUIRE(again, "what is printed can be read", *printed);
  REQUIRE(Reprint(type, *again) == again, "text is stable", *printed);
}

void ReadRecord(const ZULTaVoObjectDescriptor& type, std::string_view input) {
  // The head of a stream with an object of the type, and then any bytes in place of its record.
  ZULTaVoNetwork network;
  ZULTaVoAny* const value = network.AddObject(&type);
  const std::string model = RecordOf(*value);
  const std::size_t head = model.find(value->CastableID()) + std::strlen(value->CastableID()) + 1;
  std::istringstream stream(model.substr(0, head) + std::string(input));
  ZULipstream in(stream);
  if (!in.ReadObject(*value)) {
    REQUIRE(*in.Reason() != 0, "a refusal has its reason");
    return;
  }
  RequireValue(*value);
  const std::string bytes = RecordOf(*value);
  std::istringstream again(bytes);
  ZULipstream second(again);
  ZULTaVoAny* const copy = network.AddObject(&type);
  REQUIRE(second.ReadObject(*copy), "a record can be read back", second.Reason());
  REQUIRE(RecordOf(*copy) == bytes, "records are stable");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  const std::uint8_t choice = bytes.Take<std::uint8_t>();
  const ZULTaVoObjectDescriptor& type = *ValueTypes()[choice % ValueTypes().size()];
  (choice < 128 ? ReadText : ReadRecord)(type, bytes.Rest());
  return 0;
}
