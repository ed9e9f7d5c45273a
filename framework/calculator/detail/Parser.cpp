#include "framework/calculator/detail/Parser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "framework/calculator/detail/Suggestion.h"

namespace zultav::detail {

namespace {

constexpr std::string_view kAfterStatement = "an operator or ';' after the statement";
constexpr const char* kBeyondIntegers = "this integer is beyond the limit of 64 bits";
constexpr std::string_view kLeastDigits = "9223372036854775808";  // of the least integer, -2^63

/// How tightly the body of an aggregate binds: terms of sums, truths of conjunctions.
Precedence BodyOf(Aggregate aggregate) {
  return aggregate == Aggregate::kForall || aggregate == Aggregate::kExists ? kComparison : kTerm;
}

std::string Quote(std::string_view text) {
  constexpr std::size_t kShown = 40;
  return "'" + std::string(text.substr(0, kShown)) + (text.size() > kShown ? "…'" : "'");
}

}  // namespace

/// Counts one level of nesting as long as it lives.
class Parser::Level {
 public:
  explicit Level(Parser& parser) : mParser(parser) {
    if (parser.mNesting >= parser.mLimits.nesting)
      Fail(parser.mToken.span, "nesting is deeper than the limit of " +
                                   std::to_string(parser.mLimits.nesting) + " levels");
    ++parser.mNesting;
  }
  ~Level() { --mParser.mNesting; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  Parser& mParser;
};

Parser::Parser(const Source& source, Span part, const ZULTavCalculator::Limits& limits,
               NameTable& names, std::function<bool(std::string_view)> isOperator)
    : mSource(source),
      mLimits(limits),
      mNames(names),
      mIsOperator(std::move(isOperator)),
      mLexer(source, limits, part),
      mToken(mLexer.Next()),
      mPrevious{part.position, 0},
      mStatement(part.position) {}

void Parser::Advance() {
  mPrevious = mToken.span;
  mToken = mLexer.Next();
}

bool Parser::Accept(TokenKind kind) {
  if (!Is(kind)) return false;
  Advance();
  return true;
}

Token Parser::Expect(TokenKind kind, std::string_view what) {
  if (!Is(kind)) {
    // A forgotten ';' at the end of a line: the next line is a statement of its own.
    mResumeHere = kind == TokenKind::kSemicolon && !Is(TokenKind::kBad) && IsOnNewLine();
    FailExpected(what);
  }
  const Token token = mToken;
  Advance();
  return token;
}

/// Whether the present token stands on a later line than the one before it.
bool Parser::IsOnNewLine() const {
  const std::uint32_t gap = mPrevious.End();
  return TextOf({gap, mToken.span.position - gap}).find('\n') != std::string_view::npos;
}

/// What is missing at the end of a line is missing there, not where the next line begins.
void Parser::FailExpected(std::string_view what) const {
  if (Is(TokenKind::kBad)) mLexer.Explain(mToken);
  ModelError error = {
      {mPrevious.End(), 1},
      "expected " + std::string(what), Advise()
  };
  if (Is(TokenKind::kEnd)) {
    error.message += " before the end of the text";
  } else if (!IsOnNewLine()) {
    error.span = mToken.span;
    error.message += ", found " + Quote(TextOf(mToken.span));
  }
  throw error;
}

/// What the language has in place of words and signs that may have led the statement astray.
std::vector<std::string> Parser::Advise() const {
  const std::string_view found = TextOf(mToken.span);
  std::string_view advice;
  if (mPrevious.End() == mToken.span.position)
    advice = AdviceFor(TextOf({mPrevious.position, mPrevious.length + mToken.span.length}));
  if (advice.empty() && !IsOnNewLine()) advice = AdviceFor(found);
  const std::uint32_t end = std::max(mPrevious.End(), mStatement);
  Lexer words(mSource, mLimits, {mStatement, end - mStatement});
  for (Token word = words.Next(); advice.empty() && word.span.length != 0; word = words.Next())
    if (word.kind == TokenKind::kName)
      advice = AdviceForEarlier(TextOf(word.span), word.span.position == mStatement);
  if (!advice.empty()) return {std::string(advice)};
  const std::string_view before = TextOf(mPrevious);
  const bool isWord = std::find(kWords.begin(), kWords.end(), before) != kWords.end();
  if (isWord && (found == ":" || found == "," || found == "=" || found == "["))
    return {Quote(before) + " is a word of the language and cannot be a name"};
  return {};
}

// --- Statements -------------------------------------------------------------------------------

bool Parser::Next(Syntax& syntax) {
  syntax.Clear();
  mSyntax = &syntax;
  mNesting = 0;
  mBraces = 0;
  mSets = 0;
  mLocals.reset();
  mDeclared.clear();
  while (Accept(TokenKind::kSemicolon)) continue;
  if (Is(TokenKind::kEnd)) return false;
  ParseStatement(syntax.statements, false);
  return true;
}

void Parser::Skip() {
  if (std::exchange(mResumeHere, false) && mBraces == 0) return;
  for (; !Is(TokenKind::kEnd); Advance()) {
    if (Is(TokenKind::kCloseBrace) && mSets > 0 && mSets-- > 0) continue;
    if (Is(TokenKind::kOpenBrace)) ++mBraces;
    const bool closes = Is(TokenKind::kCloseBrace) && mBraces <= 1;
    if (Is(TokenKind::kCloseBrace) && mBraces > 0) --mBraces;
    if (closes || (Is(TokenKind::kSemicolon) && mBraces == 0)) return Advance();
  }
}

/// A name is followed by ':' or ',', or by brackets that hold a range or stand before them.
bool Parser::StartsDeclaration() {
  if (!Is(TokenKind::kName)) return false;
  Lexer ahead = mLexer;
  Token token = ahead.Next();
  if (token.kind == TokenKind::kOpenBracket) {
    int depth = 1;
    while (depth > 0) {
      token = ahead.Next();
      if (token.kind == TokenKind::kOpenBracket) ++depth;
      if (token.kind == TokenKind::kCloseBracket) --depth;
      if (token.kind == TokenKind::kRange && depth == 1) {
        token = ahead.Next();  // '..' alone stands for all indices
        if (token.kind != TokenKind::kComma && token.kind != TokenKind::kCloseBracket) return true;
        if (token.kind == TokenKind::kCloseBracket) --depth;
      }
      if (token.kind == TokenKind::kSemicolon || token.kind == TokenKind::kEnd) return false;
    }
    token = ahead.Next();
  }
  return token.kind == TokenKind::kColon || token.kind == TokenKind::kComma;
}

void Parser::ParseStatement(std::vector<Statement>& statements, bool inLoop) {
  const Level level(*this);
  mStatement = mToken.span.position;
  if (!inLoop && Is(TokenKind::kLet)) return ParseLet(statements);
  if (Is(TokenKind::kLet)) Fail(mToken.span, "a constant cannot be named inside 'for'");
  Statement statement;
  statement.span = mToken.span;
  if (Is(TokenKind::kFor)) {
    ParseFor(statement);
  } else if (StartsConditional()) {
    ParseIf(statement);
  } else if (StartsAssert()) {
    ParseAssert(statement);
  } else if (StartsInclude()) {
    if (inLoop) Fail(mToken.span, "a file is not included inside of another statement");
    ParseInclude(statement);
  } else if (StartsShow()) {
    ParseShow(statement);
  } else if (StartsObjective()) {
    if (inLoop) Fail(mToken.span, "an objective stands by itself, and a model has one");
    ParseObjective(statement);
  } else if (StartsDeclaration()) {
    if (inLoop)
      Fail(mToken.span, "a variable cannot be declared inside 'for'",
           {"declare an array before it: x[1..n] : int;"});
    ParseDeclaration(statement);
  } else {
    statement.expression = ParseExpression(kImplication);
    Expect(TokenKind::kSemicolon, kAfterStatement);
  }
  statements.push_back(std::move(statement));
}

/// let name[range, …] : type = expression, …; all but the name may be left out.
void Parser::ParseLet(std::vector<Statement>& statements) {
  do {
    Advance();
    Statement statement;
    statement.kind = Statement::Kind::kLet;
    Lexer ahead = mLexer;
    if (Is(TokenKind::kName) && ahead.Next().kind == TokenKind::kOpen) {
      ParseFunction(statement);
      statements.push_back(std::move(statement));
      continue;
    }
    statement.declarators.push_back(ParseDeclarator("the name of a constant"));
    statement.span = statement.declarators[0].span;
    const bool isTyped = Accept(TokenKind::kColon);
    if (isTyped) statement.type = Expect(TokenKind::kName, "a type").span;
    if (Is(TokenKind::kOperator) && mToken.op == Op::kEqual) {
      Advance();
      statement.expression = ParseExpression(kImplication);
    } else if (!Is(TokenKind::kComma) && !Is(TokenKind::kSemicolon)) {
      FailExpected(isTyped ? "'=' after the type of the constant"
                           : "'=' after the name of the constant");
    }
    statements.push_back(std::move(statement));
  } while (Is(TokenKind::kComma));
  Expect(TokenKind::kSemicolon, "';' or ',' after the value of the constant");
}

/// name(parameters) = expression
void Parser::ParseFunction(Statement& statement) {
  statement.kind = Statement::Kind::kFunction;
  statement.span = mToken.span;
  statement.declarators.emplace_back();
  statement.declarators[0].name = mNames.Intern(TextOf(mToken.span));
  mDeclared.push_back(statement.declarators[0].name);
  Advance();
  Advance();
  mLocals.emplace();
  do {
    const Span name = Expect(TokenKind::kName, "the name of a parameter").span;
    if (mLocals->contains(TextOf(name)))
      Fail(name, Quote(TextOf(name)) + " is a parameter already");
    statement.parameters.push_back(AddName(name));
  } while (Accept(TokenKind::kComma));
  Expect(TokenKind::kClose, "',' or ')' after the parameter");
  if (!Is(TokenKind::kOperator) || mToken.op != Op::kEqual)
    FailExpected("'=' and what the function is");
  Advance();
  statement.expression = ParseExpression(kImplication);
  mLocals.reset();
}

/// A name that begins to mean something: within a function, there alone.
std::uint32_t Parser::AddName(Span name) {
  if (!mLocals) return mNames.Intern(TextOf(name));
  return (*mLocals)[TextOf(name)] = mNames.AddLocal(TextOf(name));
}

std::uint32_t Parser::FindName(Span name) const {
  if (mLocals)
    if (const auto local = mLocals->find(TextOf(name)); local != mLocals->end())
      return local->second;
  return mNames.Intern(TextOf(name));
}

/// names : type [= value];
void Parser::ParseDeclaration(Statement& statement) {
  statement.kind = Statement::Kind::kDeclaration;
  do {
    statement.declarators.push_back(ParseDeclarator("the name of a variable"));
  } while (Accept(TokenKind::kComma));
  Expect(TokenKind::kColon, "':' and a type after the names");
  statement.type = Expect(TokenKind::kName, "a type").span;
  while (Is(TokenKind::kName) && !IsOnNewLine()) {
    statement.type.length = mToken.span.End() - statement.type.position;
    Advance();
  }
  if (Accept(TokenKind::kIn)) {
    statement.domain = ParseExpression(kInterval);
    Expect(TokenKind::kSemicolon, "an operator or ';' after the set");
  } else if (Is(TokenKind::kOperator) && mToken.op == Op::kEqual) {
    statement.hasValue = true;
    mPrevious = mToken.span;
    statement.value = mLexer.NextValue();
    if (statement.value.length == 0)
      Fail({mPrevious.End(), 1}, "expected an initial value after '='");
    mPrevious = statement.value;
    mToken = mLexer.Next();
    Expect(TokenKind::kSemicolon, "';' after the initial value");
  } else {
    Expect(TokenKind::kSemicolon, "'=' and an initial value, or ';', after the type");
  }
}

/// name or name[range, …]
Declarator Parser::ParseDeclarator(std::string_view what) {
  Declarator result;
  const Token name = Expect(TokenKind::kName, what);
  result.span = name.span;
  result.name = mNames.Intern(TextOf(name.span));
  mDeclared.push_back(result.name);
  if (!Accept(TokenKind::kOpenBracket)) return result;
  do {
    result.indices.push_back(ParseExpression(kInterval));
  } while (Accept(TokenKind::kComma));
  Expect(TokenKind::kCloseBracket, "',' or ']' after the range of indices");
  return result;
}

/// for generators [where condition] : statement, or { statements }
void Parser::ParseFor(Statement& statement) {
  statement.kind = Statement::Kind::kFor;
  Advance();
  ParseGenerators(statement.generators, statement.where);
  Expect(TokenKind::kColon, "',', 'where' or ':' after the range");
  if (!Is(TokenKind::kOpenBrace)) return ParseStatement(statement.body, true);
  ParseBlock(statement.body);
}

/// { statements }
void Parser::ParseBlock(std::vector<Statement>& statements) {
  ++mBraces;
  Advance();
  while (!Is(TokenKind::kCloseBrace)) {
    if (Is(TokenKind::kEnd)) FailExpected("'}'");
    if (!Accept(TokenKind::kSemicolon)) ParseStatement(statements, true);
  }
  --mBraces;
  Advance();
}

/// if condition then branch [else branch]
void Parser::ParseIf(Statement& statement) {
  statement.kind = Statement::Kind::kIf;
  Advance();
  statement.expression = ParseExpression(kImplication);
  ExpectWord("then");
  ParseBranch(statement.body);
  if (!IsWord("else")) return;
  Advance();
  ParseBranch(statement.otherwise);
}

/// A block, or a statement; before 'else' it needs no ';'.
void Parser::ParseBranch(std::vector<Statement>& statements) {
  if (Is(TokenKind::kOpenBrace)) return ParseBlock(statements);
  if (Is(TokenKind::kFor) || StartsConditional() || StartsShow())
    return ParseStatement(statements, true);
  Statement statement;
  statement.span = mToken.span;
  statement.expression = ParseExpression(kImplication);
  statements.push_back(std::move(statement));
  if (!IsWord("else")) Expect(TokenKind::kSemicolon, "an operator, 'else' or ';'");
}

/// `assert (` with a text before the end of the statement
bool Parser::StartsAssert() const {
  if (!IsWord("assert")) return false;
  Lexer ahead = mLexer;
  if (ahead.Next().kind != TokenKind::kOpen) return false;
  Token token = ahead.Next();
  while (token.kind != TokenKind::kText && token.kind != TokenKind::kSemicolon &&
         token.span.length > 0)
    token = ahead.Next();
  return token.kind == TokenKind::kText;
}

/// assert(condition, "message");
void Parser::ParseAssert(Statement& statement) {
  statement.kind = Statement::Kind::kAssert;
  Advance();
  Advance();
  statement.expression = ParseExpression(kImplication);
  Expect(TokenKind::kComma, "an operator or ',' and a message");
  statement.value = Expect(TokenKind::kText, "a message between quotation marks").span;
  Expect(TokenKind::kClose, "')' after the message");
  Expect(TokenKind::kSemicolon, "';' after the assertion");
}

bool Parser::StartsInclude() const {
  Lexer ahead = mLexer;
  return IsWord("include") && ahead.Next().kind == TokenKind::kText;
}

/// include "name";
void Parser::ParseInclude(Statement& statement) {
  statement.kind = Statement::Kind::kInclude;
  Advance();
  statement.value = mToken.span;
  Advance();
  Expect(TokenKind::kSemicolon, "';' after the name of the file");
}

/// What follows cannot follow a name; an expression in parentheses could, so that it comes behind
/// a text.
bool Parser::StartsShow() const {
  if (!IsWord("show")) return false;
  Lexer ahead = mLexer;
  const Token next = ahead.Next();
  return next.kind == TokenKind::kText || IsOperandAfterWord(next);
}

/// show item, …;
void Parser::ParseShow(Statement& statement) {
  statement.kind = Statement::Kind::kShow;
  Advance();
  do {
    ShownItem& item = statement.shown.emplace_back();
    if (Is(TokenKind::kText)) {
      item.text = mToken.span;
      Advance();
    } else {
      item.expression = ParseExpression(kImplication);
    }
  } while (Accept(TokenKind::kComma));
  Expect(TokenKind::kSemicolon, "',' or ';' after what is shown");
}

bool Parser::StartsObjective() const {
  if (!IsWord("minimize") && !IsWord("maximize")) return false;
  Lexer ahead = mLexer;
  const Token next = ahead.Next();
  return next.kind == TokenKind::kOpen || IsOperandAfterWord(next) ||
         (next.kind == TokenKind::kOperator && next.op == Op::kSubtract);
}

/// minimize expression; or maximize expression;
void Parser::ParseObjective(Statement& statement) {
  statement.kind = Statement::Kind::kObjective;
  statement.isMaximized = IsWord("maximize");
  Advance();
  statement.expression = ParseExpression(kImplication);
  Expect(TokenKind::kSemicolon, "an operator or ';' after the objective");
}

void Parser::ParseGenerators(std::vector<Generator>& generators, NodeRange& where) {
  do {
    generators.push_back(ParseGenerator());
  } while (Accept(TokenKind::kComma));
  if (Accept(TokenKind::kWhere)) where = ParseExpression(kImplication);
}

Generator Parser::ParseGenerator() {
  Generator result;
  const Token name = Expect(TokenKind::kName, "the name of an index");
  result.span = name.span;
  result.name = AddName(name.span);
  Expect(TokenKind::kIn, "'in' and a range after the name of the index");
  result.set = ParseExpression(kInterval);
  return result;
}

// --- Expressions ------------------------------------------------------------------------------

NodeRange Parser::WholeExpression(Syntax& syntax) {
  mSyntax = &syntax;
  const NodeRange result = ParseExpression(kImplication);
  if (!Is(TokenKind::kEnd)) FailExpected("an operator or the end of the expression");
  return result;
}

NodeRange Parser::Emit(Node node) {
  // An application has at most three nodes of its own; constants that fold are no way around.
  if (mSyntax->nodes.size() / 3 > mLimits.operations)
    Fail(node.span,
         "a statement of more operations than the limit of " + std::to_string(mLimits.operations));
  const NodeRange result = {node.start, NextNode(), true};
  mSyntax->nodes.push_back(node);
  return result;
}

NodeRange Parser::EmitConstant(const Constant& constant, Span span) {
  Node node;
  node.kind = Node::Kind::kConstant;
  node.data = static_cast<std::uint32_t>(mSyntax->constants.size());
  node.start = NextNode();
  node.span = span;
  mSyntax->constants.push_back(constant);
  return Emit(node);
}

/// The right operand has been emitted just before.
NodeRange Parser::EmitBinary(const Token& sign, NodeRange left) {
  Node node;
  node.kind = Node::Kind::kBinary;
  node.op = sign.op;
  node.count = 2;
  node.data = mNames.Intern(TextOf(sign.span));
  node.start = left.first;
  node.span = sign.span;
  return Emit(node);
}

NodeRange Parser::ParseExpression(Precedence loosest) {
  const Level level(*this);
  NodeRange result = ParsePrefix();
  while (IsOperator() || Is(TokenKind::kRange)) {
    if (Is(TokenKind::kRange)) {
      if (loosest > kInterval || mSyntax->nodes.back().kind == Node::Kind::kRange) break;
      result = ParseRange(result);
      continue;
    }
    const Token sign = mToken;
    const Precedence precedence = SignOf(sign.op).precedence;
    if (precedence == kNoOperator || precedence < loosest) break;
    if (precedence == kComparison) {
      result = ParseComparison(result);
      continue;
    }
    Advance();
    const bool rightAssociative = precedence == kImplication;
    ParseExpression(rightAssociative ? precedence : static_cast<Precedence>(precedence + 1));
    result = EmitBinary(sign, result);
  }
  return result;
}

/// What follows the left side: one comparison, or a chain of them such as a < b <= c.
NodeRange Parser::ParseComparison(NodeRange left) {
  std::vector<Token> signs;
  do {
    signs.push_back(mToken);
    if (signs.size() > 1) CheckChain(signs);
    Advance();
    ParseExpression(static_cast<Precedence>(kComparison + 1));
  } while (IsOperator() && SignOf(mToken.op).precedence == kComparison);
  if (signs.size() == 1) return EmitBinary(signs[0], left);
  Node node;
  node.kind = Node::Kind::kChain;
  node.count = static_cast<std::uint32_t>(signs.size() + 1);
  node.data = static_cast<std::uint32_t>(mSyntax->chains.size());
  node.start = left.first;
  node.span = signs[0].span;
  mSyntax->chains.push_back(std::move(signs));
  return Emit(node);
}

/// Fails where the last comparison cannot follow those before it.
void Parser::CheckChain(const std::vector<Token>& signs) const {
  const Span last = signs.back().span;
  for (const Token& sign : signs)
    if (sign.op == Op::kUnequal || sign.op == Op::kIsUnequal || sign.op == Op::kIn)
      Fail(last, Quote(TextOf(sign.span)) + " cannot stand in a chain of comparisons",
           {"write 'a < b && b <> c'; that all differ is stated by 'alldifferent(a, b, c)'"});
  if (IsAsserting(signs.back().op) != IsAsserting(signs.front().op))
    Fail(last, "one comparison of this chain is stated and one has a truth value",
         {"a chain is stated, 'a < b <= c', or has a truth value, 'a << b <== c'"});
}

/// Whether the present token is a binary operator; `in` and `xor` are so where an operand has
/// ended.
bool Parser::IsOperator() {
  if (Is(TokenKind::kIn)) mToken = {TokenKind::kOperator, Op::kIn, mToken.span};
  if (IsWord(SignOf(Op::kXor).text) && !IsOnNewLine())
    mToken = {TokenKind::kOperator, Op::kXor, mToken.span};
  return Is(TokenKind::kOperator);
}

/// What follows the first end of a range.
NodeRange Parser::ParseRange(NodeRange low) {
  Node node;
  node.kind = Node::Kind::kRange;
  node.count = 2;
  node.start = low.first;
  node.span = mToken.span;
  Advance();
  ParseExpression(kExtremum);
  return Emit(node);
}

/// - x, ~x, (real) x, x ^ y: the power binds tighter than the sign before it.
NodeRange Parser::ParsePrefix() {
  if (IsConversion()) return ParseConversion();
  if (Is(TokenKind::kOperator) && (mToken.op == Op::kSubtract || mToken.op == Op::kNot)) {
    const Level level(*this);
    Node node;
    node.kind = Node::Kind::kPrefix;
    node.op = mToken.op;
    node.count = 1;
    node.data = mNames.Intern(TextOf(mToken.span));
    node.span = mToken.span;
    Advance();
    if (node.op == Op::kSubtract && Is(TokenKind::kInteger) && TextOf(mToken.span) == kLeastDigits)
      return ParseLeastInteger(node.span.position);
    node.start = ParsePrefix().first;
    return Emit(node);
  }
  const NodeRange base = ParsePrimary();
  if (!Is(TokenKind::kOperator) || mToken.op != Op::kPower) return base;
  const Level level(*this);
  const Token sign = mToken;
  Advance();
  ParsePrefix();
  return EmitBinary(sign, base);
}

/// The least integer, whose digits alone are beyond 64 bits. A power would bind them tighter than
/// the sign.
NodeRange Parser::ParseLeastInteger(std::uint32_t sign) {
  const Span digits = mToken.span;
  Advance();
  if (Is(TokenKind::kOperator) && mToken.op == Op::kPower) Fail(digits, kBeyondIntegers);
  return EmitConstant(Constant::Integer(std::numeric_limits<std::int64_t>::min()),
                      {sign, digits.End() - sign});
}

/// Whether a parenthesis holds just a name that makes up an operator with it, as "(real)" does.
bool Parser::IsConversion() {
  if (!Is(TokenKind::kOpen)) return false;
  Lexer ahead = mLexer;
  const Token name = ahead.Next();
  return name.kind == TokenKind::kName && ahead.Next().kind == TokenKind::kClose &&
         mIsOperator("(" + std::string(TextOf(name.span)) + ")");
}

NodeRange Parser::ParseConversion() {
  const Level level(*this);
  Node node;
  node.kind = Node::Kind::kCall;
  node.count = 1;
  node.span = mToken.span;
  Advance();
  node.data = mNames.Intern("(" + std::string(TextOf(mToken.span)) + ")");
  Advance();
  node.span.length = mToken.span.End() - node.span.position;
  Advance();
  node.start = ParsePrefix().first;
  return Emit(node);
}

NodeRange Parser::ParsePrimary() {
  const Token token = mToken;
  switch (token.kind) {
    case TokenKind::kInteger: {
      Advance();
      const auto integer = Constant::FromDigits(TextOf(token.span));
      if (!integer) Fail(token.span, kBeyondIntegers);
      return EmitConstant(*integer, token.span);
    }
    case TokenKind::kDecimal:
      Advance();
      return EmitConstant(Constant::FromDecimal(TextOf(token.span)), token.span);
    case TokenKind::kTrue:
    case TokenKind::kFalse:
      Advance();
      return EmitConstant(Constant::Boolean(token.kind == TokenKind::kTrue), token.span);
    case TokenKind::kName:
      if (StartsConditional()) return ParseConditional();
      if (StartsComprehension("count")) return ParseAggregate(Aggregate::kCount);
      return ParseName();
    case TokenKind::kSum:
      return ParseAggregate(Aggregate::kSum);
    case TokenKind::kProduct:
      return ParseAggregate(Aggregate::kProduct);
    case TokenKind::kMin:
      return ParseAggregate(Aggregate::kMin);
    case TokenKind::kMax:
      return ParseAggregate(Aggregate::kMax);
    case TokenKind::kForall:
      return ParseAggregate(Aggregate::kForall);
    case TokenKind::kExists:
      return ParseAggregate(Aggregate::kExists);
    case TokenKind::kAllDifferent:
      return ParseAggregate(Aggregate::kAllDifferent);
    case TokenKind::kOpen: {
      Advance();
      const NodeRange inner = ParseExpression(kImplication);
      Expect(TokenKind::kClose, "an operator or ')'");
      return inner;
    }
    case TokenKind::kOpenBracket:
      return ParseLiteral();
    case TokenKind::kOpenBrace:
      return ParseSet();
    default:
      FailExpected("an expression");
  }
}

/// [item, …]; an item '*' stands for any value.
NodeRange Parser::ParseLiteral() {
  Node node;
  node.kind = Node::Kind::kLiteral;
  node.start = NextNode();
  node.span = mToken.span;
  Advance();
  if (!Is(TokenKind::kCloseBracket))
    node.count =
        ParseItems([this] { return Is(TokenKind::kOperator) && mToken.op == Op::kMultiply; });
  node.span.length = mToken.span.End() - node.span.position;
  Expect(TokenKind::kCloseBracket, "an operator, ',' or ']'");
  return Emit(node);
}

/// {item, …} of integers, ranges and other sets
NodeRange Parser::ParseSet() {
  Node node;
  node.kind = Node::Kind::kSet;
  node.start = NextNode();
  node.span = mToken.span;
  ++mSets;
  Advance();
  if (!Is(TokenKind::kCloseBrace)) node.count = ParseItems([] { return false; });
  node.span.length = mToken.span.End() - node.span.position;
  Expect(TokenKind::kCloseBrace, "an operator, ',' or '}'");
  --mSets;
  return Emit(node);
}

/// if condition then expression else expression
NodeRange Parser::ParseConditional() {
  const Level level(*this);
  Node node;
  node.kind = Node::Kind::kIf;
  node.data = static_cast<std::uint32_t>(mSyntax->conditionals.size());
  node.start = NextNode();
  node.span = mToken.span;
  mSyntax->conditionals.emplace_back();
  Emit(node);
  Advance();
  Conditional result;
  result.condition = ParseExpression(kImplication);
  ExpectWord("then");
  result.yes = ParseExpression(kImplication);
  ExpectWord("else");
  result.no = ParseExpression(kImplication);
  result.end = NextNode();
  mSyntax->conditionals[node.data] = result;
  node.kind = Node::Kind::kEndIf;
  return Emit(node);
}

/// Whether the present token is this name, which is a word of the language in some places only.
bool Parser::IsWord(std::string_view word) const {
  return Is(TokenKind::kName) && TextOf(mToken.span) == word;
}

void Parser::ExpectWord(std::string_view word) {
  if (!IsWord(word)) FailExpected("an operator or " + Quote(word));
  Advance();
}

/// Whether a condition follows 'if': nothing that begins an operand follows a name, but for the
/// sign that may stand between two, too.
bool Parser::StartsConditional() const {
  if (!IsWord("if")) return false;
  Lexer ahead = mLexer;
  Token next = ahead.Next();
  if (next.kind == TokenKind::kOperator && next.op == Op::kSubtract) {
    while (next.kind != TokenKind::kSemicolon && next.span.length > 0 &&
           TextOf(next.span) != "then" && TextOf(next.span) != "if")
      next = ahead.Next();
    return TextOf(next.span) == "then";
  }
  return next.kind == TokenKind::kOpen || IsOperandAfterWord(next);
}

/// Whether it begins an operand that cannot follow a name.
bool Parser::IsOperandAfterWord(const Token& token) {
  return token.kind == TokenKind::kName || token.kind == TokenKind::kInteger ||
         token.kind == TokenKind::kDecimal ||
         (token.kind >= TokenKind::kTrue && token.kind < TokenKind::kBad) ||
         (token.kind == TokenKind::kOperator && token.op == Op::kNot);
}

/// Whether `word ( name in` follows.
bool Parser::StartsComprehension(std::string_view word) const {
  if (!IsWord(word)) return false;
  Lexer ahead = mLexer;
  return ahead.Next().kind == TokenKind::kOpen && ahead.Next().kind == TokenKind::kName &&
         ahead.Next().kind == TokenKind::kIn;
}

/// Expressions with commas between them, or signs that stand for everything; their number.
std::uint32_t Parser::ParseItems(const std::function<bool()>& isEverything) {
  std::uint32_t count = 0;
  do {
    ++count;
    if (!isEverything()) {
      ParseExpression(kImplication);
      continue;
    }
    Node node;
    node.kind = Node::Kind::kEverything;
    node.start = NextNode();
    node.span = mToken.span;
    Advance();
    Emit(node);
  } while (Accept(TokenKind::kComma));
  return count;
}

/// name, name[indices] or name(arguments)
NodeRange Parser::ParseName() {
  Node node;
  node.kind = Node::Kind::kName;
  node.start = NextNode();
  node.span = mToken.span;
  node.data = FindName(mToken.span);
  Advance();
  if (Accept(TokenKind::kOpenBracket)) {
    node.kind = Node::Kind::kElement;
    node.count = ParseItems([this] { return Is(TokenKind::kRange); });
    node.span.length = mToken.span.End() - node.span.position;
    Expect(TokenKind::kCloseBracket, "an operator, ',' or ']'");
  } else if (Accept(TokenKind::kOpen)) {
    node.kind = Node::Kind::kCall;
    node.count = ParseArguments();
  }
  return Emit(node);
}

/// Expressions up to the closing parenthesis; their number.
std::uint32_t Parser::ParseArguments() {
  std::uint32_t count = 0;
  if (Accept(TokenKind::kClose)) return count;
  do {
    ParseExpression(kImplication);
    ++count;
  } while (Accept(TokenKind::kComma));
  Expect(TokenKind::kClose, "an operator, ',' or ')'");
  return count;
}

/// sum(i in 1..n) term, or sum(x, y, …)
NodeRange Parser::ParseAggregate(Aggregate aggregate) {
  Node node;
  node.kind = Node::Kind::kList;
  node.aggregate = aggregate;
  node.start = NextNode();
  node.span = mToken.span;
  Advance();
  Expect(TokenKind::kOpen, "'(' after " + Quote(TextOf(node.span)));
  if (Is(TokenKind::kName)) {
    Lexer ahead = mLexer;
    if (ahead.Next().kind == TokenKind::kIn) return ParseComprehension(aggregate, node.span);
  }
  node.count = ParseArguments();
  return Emit(node);
}

NodeRange Parser::ParseComprehension(Aggregate aggregate, Span word) {
  Node node;
  node.kind = Node::Kind::kBegin;
  node.aggregate = aggregate;
  node.data = static_cast<std::uint32_t>(mSyntax->comprehensions.size());
  node.start = NextNode();
  node.span = word;
  mSyntax->comprehensions.emplace_back();
  Emit(node);
  Comprehension result;
  result.aggregate = aggregate;
  ParseGenerators(result.generators, result.where);
  Expect(TokenKind::kClose, "',', 'where' or ')' after the range");
  result.body = ParseExpression(BodyOf(aggregate));
  result.end = NextNode();
  mSyntax->comprehensions[node.data] = std::move(result);
  node.kind = Node::Kind::kEnd;
  return Emit(node);
}

}  // namespace zultav::detail
