#include <array>
#include <charconv>
#include <sstream>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/calculator/detail/Parser.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

// An initial value is written in its module's own syntax. Between brackets and commas, constant
// expressions may stand, which are replaced by their values before the module reads the text.

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

Span Trim(std::string_view text, Span span) {
  while (span.length > 0 && kBlanks.find(text[span.position]) != std::string_view::npos) {
    ++span.position;
    --span.length;
  }
  while (span.length > 0 && kBlanks.find(text[span.End() - 1]) != std::string_view::npos)
    --span.length;
  return span;
}

std::string FormatReal(double value) {
  std::array<char, 40> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return {buffer.data(), end.ptr};
}

/// A value as it may be written for the type, for messages.
std::string ExampleOf(const ZULTaVoObjectDescriptor& type) {
  const LocalValue example(type);
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(example.Get())) {
    integer->SetLowerBound(0);
    integer->SetUpperBound(10);
  } else if (auto* real = ZULTaVoCast<ZULTaVoReal>(example.Get())) {
    real->SetLowerBound(0.5);
    real->SetUpperBound(10);
  } else if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(example.Get())) {
    boolean->SetExactValue(1);
  }
  std::ostringstream text;
  text.imbue(std::locale::classic());
  example->PrintOn(text);
  const LocalValue any(type);
  any->SetAny();
  text << "' or '";
  any->PrintOn(text);
  return "a value of this type is written like '" + text.str() + "'";
}

/// A text for the module, and which part of the source each part of it stands for.
struct ValueText {
  std::string text;
  std::vector<std::pair<std::size_t, std::uint32_t>> origins;

  void Add(std::string_view piece, std::uint32_t position) {
    origins.emplace_back(text.size(), position);
    text += piece;
  }
  std::uint32_t OriginOf(std::size_t at) const {
    std::size_t i = 0;
    while (i + 1 < origins.size() && origins[i + 1].first <= at) ++i;
    return origins[i].second + static_cast<std::uint32_t>(at - origins[i].first);
  }
};

}  // namespace

/// The text of a piece: as it stands, if it is a word of the module, else the value of the
/// expression that it is. A lower bound is rounded down, an upper one up.
std::string Interpreter::EvaluateValuePiece(Span piece, bool isLower, bool isUpper,
                                            const ZULTaVoAny& value) {
  Lexer lexer(*mSource, mLimits, piece);
  Token token = lexer.Next();
  if (token.kind == TokenKind::kOperator && token.op == Op::kAdd) {
    piece = {token.span.End(), piece.End() - token.span.End()};
    token = lexer.Next();
  }
  std::string text(mSource->GetText(piece));
  const bool isWord = token.kind == TokenKind::kName && token.span.length == piece.length;
  if (isWord && SymbolOf(mNames.Intern(text)).kind == Symbol::Kind::kUnknown) return text;
  const bool isNumber = ZULTaVoCast<const ZULTaVoNumber>(&value) != nullptr;
  if (isNumber && token.kind == TokenKind::kBad) lexer.Explain(token);
  if (token.kind == TokenKind::kEnd || token.kind == TokenKind::kBad) return text;

  Syntax syntax;
  Parser parser(*mSource, piece, mLimits, mNames,
                [this](std::string_view name) { return mRegistry.HasOperator(name); });
  const NodeRange range = parser.WholeExpression(syntax);
  const Syntax* outer = std::exchange(mSyntax, &syntax);
  Value number;
  try {
    number = EvaluateKnown(range);
    if (number.IsSet())
      Fail(number.span, "this is a set of integers", {"an interval is written '[0, 10]'"});
    CheckOperand({}, number);
  } catch (const ModelError&) {
    mSyntax = outer;
    throw;
  }
  mSyntax = outer;
  if (!number.IsConstant()) Fail(piece, "an initial value must be known while the model is read");
  const Constant& constant = number.constant;
  if (constant.IsBoolean()) return constant.IsTrue() ? "True" : "False";
  const Registry::Type type = value.GetDescriptor();
  if (constant.IsReal() && ZULTaVoCast<const ZULTaVoInteger>(&value) != nullptr)
    Fail(piece, "'" + text + "' is a real; the type '" + type->GetName() + "' holds integers");
  number.span = piece;
  mBuilder->CheckRange(number, type);
  if (constant.IsInteger()) return std::to_string(constant.integer);
  if (isLower) return FormatReal(constant.lower);
  if (isUpper) return FormatReal(constant.upper);
  if (mRegistry.IsSingle(type) || constant.lower == constant.upper)
    return FormatReal(constant.nearest);
  return "[" + FormatReal(constant.lower) + "," + FormatReal(constant.upper) + "]";
}

void Interpreter::ReadInitialValue(Span span, const LocalValue& value) {
  const ZULTaVoObjectDescriptor& type = *value->GetDescriptor();
  const std::string_view source = mSource->GetText();
  ValueText text;
  int depth = 0;
  char before = ' ';
  for (std::uint32_t begin = span.position, at = begin; at <= span.End(); ++at) {
    const char c = at < span.End() ? source[at] : ' ';
    // Parentheses, and the brackets behind a name, belong to an expression.
    if (c == '(' || (c == '[' && (depth > 0 || (at > begin && IsNameByte(source[at - 1])))))
      ++depth;
    const bool ends = at == span.End() ||
                      (depth <= 0 && std::string_view("[]{},").find(c) != std::string_view::npos);
    if (depth > 0 && (c == ')' || c == ']')) --depth;
    if (!ends) continue;
    const Span piece = Trim(source, {begin, at - begin});
    if (piece.length > 0)
      text.Add(EvaluateValuePiece(piece, before == '[', before == ',', *value.Get()),
               piece.position);
    if (at < span.End()) text.Add({&c, 1}, at);
    before = c;
    begin = at + 1;
  }

  std::istringstream in(text.text);
  in.imbue(std::locale::classic());
  value->InputValue(in);
  const bool failed = in.fail();
  in.clear();
  if (!failed) in >> std::ws;
  const auto taken =
      static_cast<std::size_t>(in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in));
  if (!failed && taken >= text.text.size()) {
    if (value->IsNil() && text.text != "Nil")
      Fail(span, "this interval is empty: its lower bound is above its upper bound",
           {"the empty set is written 'Nil'"});
    return;
  }
  const std::uint32_t position =
      text.OriginOf(std::min(taken, text.text.empty() ? 0 : text.text.size() - 1));
  std::string message =
      failed ? "this is no value of the type '" : "expected ';' after the value of the type '";
  Fail({position, 1}, message + type.GetName() + "'", {ExampleOf(type)});
}

}  // namespace zultav::detail
