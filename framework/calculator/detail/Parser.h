#ifndef ZULTAV_CALCULATOR_DETAIL_PARSER_H
#define ZULTAV_CALCULATOR_DETAIL_PARSER_H

#include <functional>
#include <map>
#include <optional>

#include "framework/calculator/detail/Lexer.h"
#include "framework/calculator/detail/Syntax.h"

namespace zultav::detail {

/// Recognises statements. Left-associative chains are read by loops; what recurses counts
/// against the limit on nesting.
class Parser {
 public:
  /// @param isOperator  whether a name such as "(real)" is that of a registered operator
  Parser(const Source& source, Span part, const ZULTavCalculator::Limits& limits, NameTable& names,
         std::function<bool(std::string_view)> isOperator);

  /// Reads the next statement into `syntax`, which it clears. False at the end of the text.
  /// Throws ModelError; Skip then moves behind the damaged statement.
  bool Next(Syntax& syntax);
  void Skip();
  /// The names that the last statement declares, as far as it was read.
  const std::vector<std::uint32_t>& GetDeclared() const { return mDeclared; }
  /// Reads an expression that takes up the whole part, adding to `syntax`.
  NodeRange WholeExpression(Syntax& syntax);

 private:
  class Level;

  void Advance();
  bool Is(TokenKind kind) const { return mToken.kind == kind; }
  bool Accept(TokenKind kind);
  Token Expect(TokenKind kind, std::string_view what);
  std::vector<std::string> Advise() const;
  [[noreturn]] void FailExpected(std::string_view what) const;
  bool IsOnNewLine() const;
  bool IsOperator();
  bool IsWord(std::string_view word) const;
  void ExpectWord(std::string_view word);
  bool StartsConditional() const;
  static bool IsOperandAfterWord(const Token& token);
  bool StartsComprehension(std::string_view word) const;
  std::string_view TextOf(Span span) const { return mSource.GetText(span); }
  bool StartsDeclaration();

  void ParseStatement(std::vector<Statement>& statements, bool inLoop);
  void ParseLet(std::vector<Statement>& statements);
  void ParseFunction(Statement& statement);
  std::uint32_t AddName(Span name);
  std::uint32_t FindName(Span name) const;
  void ParseDeclaration(Statement& statement);
  Declarator ParseDeclarator(std::string_view what);
  void ParseFor(Statement& statement);
  void ParseBlock(std::vector<Statement>& statements);
  void ParseIf(Statement& statement);
  void ParseBranch(std::vector<Statement>& statements);
  bool StartsAssert() const;
  bool StartsInclude() const;
  void ParseInclude(Statement& statement);
  bool StartsShow() const;
  void ParseShow(Statement& statement);
  bool StartsObjective() const;
  void ParseObjective(Statement& statement);
  void ParseAssert(Statement& statement);
  Generator ParseGenerator();
  void ParseGenerators(std::vector<Generator>& generators, NodeRange& where);

  NodeRange ParseExpression(Precedence loosest);
  NodeRange ParseComparison(NodeRange left);
  void CheckChain(const std::vector<Token>& signs) const;
  NodeRange ParseRange(NodeRange low);
  NodeRange ParsePrefix();
  NodeRange ParseLeastInteger(std::uint32_t sign);
  NodeRange ParseConversion();
  NodeRange ParsePrimary();
  NodeRange ParseName();
  NodeRange ParseLiteral();
  NodeRange ParseSet();
  NodeRange ParseConditional();
  std::uint32_t ParseItems(const std::function<bool()>& isEverything);
  NodeRange ParseAggregate(Aggregate aggregate);
  NodeRange ParseComprehension(Aggregate aggregate, Span word);
  std::uint32_t ParseArguments();
  bool IsConversion();
  NodeRange Emit(Node node);
  NodeRange EmitConstant(const Constant& constant, Span span);
  NodeRange EmitBinary(const Token& sign, NodeRange left);
  std::uint32_t NextNode() const { return static_cast<std::uint32_t>(mSyntax->nodes.size()); }

  const Source& mSource;
  const ZULTavCalculator::Limits& mLimits;
  NameTable& mNames;
  std::function<bool(std::string_view)> mIsOperator;
  Lexer mLexer;
  Token mToken;
  Span mPrevious;
  std::vector<std::uint32_t> mDeclared;
  std::optional<std::map<std::string_view, std::uint32_t>> mLocals;  // of a function
  std::uint32_t mStatement;  // where the present statement begins
  Syntax* mSyntax = nullptr;
  std::size_t mNesting = 0;
  std::size_t mBraces = 0;
  std::size_t mSets = 0;  // sets that are being read
  bool mResumeHere = false;
};

}  // namespace zultav::detail

#endif
