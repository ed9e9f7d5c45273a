#include "framework/calculator/detail/Lexer.h"

#include <algorithm>

namespace zultav::detail {

namespace {

constexpr std::string_view kBlanks = " \t\n\r\f";
bool IsBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

constexpr std::string_view kBlankAdvice = "it looks like a blank or like nothing: remove it";
constexpr std::string_view kEncodingAdvice = "a model is a text in UTF-8";

struct Punctuation {
  std::string_view text;
  TokenKind kind;
};
/// Characters that get into a text unseen, and those that only look like a sign of the language.
constexpr struct {
  std::string_view text, name, advice;
} kStrangers[] = {
    {"\u00a0", "no-break space (U+00A0)",        kBlankAdvice                                       },
    {"\u00ad", "soft hyphen (U+00AD)",           kBlankAdvice                                       },
    {"\u2007", "figure space (U+2007)",          kBlankAdvice                                       },
    {"\u2009", "thin space (U+2009)",            kBlankAdvice                                       },
    {"\u200b", "zero-width space (U+200B)",      kBlankAdvice                                       },
    {"\u200c", "zero-width non-joiner (U+200C)", kBlankAdvice                                       },
    {"\u200d", "zero-width joiner (U+200D)",     kBlankAdvice                                       },
    {"\u200e", "left-to-right mark (U+200E)",    kBlankAdvice                                       },
    {"\u200f", "right-to-left mark (U+200F)",    kBlankAdvice                                       },
    {"\u2028", "line separator (U+2028)",        kBlankAdvice                                       },
    {"\u2029", "paragraph separator (U+2029)",   kBlankAdvice                                       },
    {"\u202f", "narrow no-break space (U+202F)", kBlankAdvice                                       },
    {"\u2060", "word joiner (U+2060)",           kBlankAdvice                                       },
    {"\u3000", "ideographic space (U+3000)",     kBlankAdvice                                       },
    {"\ufeff", "byte order mark (U+FEFF)",       kBlankAdvice                                       },
    {"\xfe",   "byte of UTF-16",                 kEncodingAdvice                                    },
    {"\xff",   "byte of UTF-16",                 kEncodingAdvice                                    },
    {"\u2212", "",                               "a minus is written '-'"                           },
    {"\u2013", "",                               "a minus is written '-'"                           },
    {"\u00d7", "",                               "a product is written 'x * y'"                     },
    {"\u00b7", "",                               "a product is written 'x * y'"                     },
    {"\u00f7", "",                               "a quotient is written 'x / y'"                    },
    {"\u2260", "",                               "'not equal' is written '<>'"                      },
    {"\u2264", "",                               "'at most' is written '<='"                        },
    {"\u2265", "",                               "'at least' is written '>='"                       },
    {"\u00b2", "",                               "a square is written 'x ^ 2'"                      },
    {"\u221a", "",                               "a square root is written 'sqrt(x)'"               },
    {"|",      "",                               "'or' is written '||', an absolute value 'abs(x)'" },
    {"&",      "",                               "'and' is written '&&'"                            },
    {"!",      "",                               "'not' is written '~', 'not equal' is written '<>'"},
    {"%",      "",                               "the remainder is written 'x mod y'"               },
    {".",      "",                               "a decimal has digits before and after its point"  },
    {"#",      "",                               "a comment begins with '//'"                       },
};

constexpr Punctuation kPunctuation[] = {
    {"..", TokenKind::kRange       },
    {"(",  TokenKind::kOpen        },
    {")",  TokenKind::kClose       },
    {"[",  TokenKind::kOpenBracket },
    {"]",  TokenKind::kCloseBracket},
    {"{",  TokenKind::kOpenBrace   },
    {"}",  TokenKind::kCloseBrace  },
    {",",  TokenKind::kComma       },
    {":",  TokenKind::kColon       },
    {";",  TokenKind::kSemicolon   },
};

}  // namespace

const OperatorSign& SignOf(Op op) {
  return *std::find_if(kOperatorSigns.begin(), kOperatorSigns.end(),
                       [op](const OperatorSign& sign) { return sign.op == op; });
}

bool Lexer::IsDigit(std::size_t at) const {
  return at < mText.size() && mText[at] >= '0' && mText[at] <= '9';
}

Token Lexer::Make(TokenKind kind, std::size_t length, Op op) {
  const Token token = {
      kind, op, {mPosition, static_cast<std::uint32_t>(length)}
  };
  mPosition += token.span.length;
  return token;
}

/// Skips blanks and comments; false at a comment that does not end.
bool Lexer::SkipBlanks() {
  while (mPosition < mText.size()) {
    const std::string_view rest = mText.substr(mPosition, 2);
    std::size_t end = mPosition + 1;
    if (rest == "//") {
      end = std::min(mText.find('\n', mPosition), mText.size());
    } else if (rest == "/*") {
      end = mText.find("*/", mPosition + 2);
      if (end == std::string_view::npos) return false;
      end += 2;
    } else if (!IsBlank(rest[0])) {
      return true;
    }
    mPosition = static_cast<std::uint32_t>(end);
  }
  return true;
}

Token Lexer::Next() {
  if (!SkipBlanks()) return Make(TokenKind::kBad, mText.size() - mPosition);
  if (mPosition >= mText.size()) return Make(TokenKind::kEnd, 0);
  if (IsNameStart(mText[mPosition])) return Name();
  if (IsDigit(mPosition)) return Number();
  return Sign();
}

Token Lexer::Name() {
  std::size_t end = mPosition;
  while (end < mText.size() && IsNameByte(mText[end])) ++end;
  const std::string_view name = mText.substr(mPosition, end - mPosition);
  if (name.size() > mLimits->nameLength) return Make(TokenKind::kBad, name.size());
  if (name == "mod") return Make(TokenKind::kOperator, name.size(), Op::kModulo);
  if (name == "True") return Make(TokenKind::kTrue, name.size());
  if (name == "False") return Make(TokenKind::kFalse, name.size());
  const auto* word = std::find(kWords.begin(), kWords.end(), name);
  if (word == kWords.end()) return Make(TokenKind::kName, name.size());
  const auto kind =
      static_cast<std::size_t>(TokenKind::kLet) + static_cast<std::size_t>(word - kWords.begin());
  return Make(static_cast<TokenKind>(kind), name.size());
}

/// Digits, with a fraction and an exponent; the dots of "1..8" are none of it.
Token Lexer::Number() {
  TokenKind kind = TokenKind::kInteger;
  std::size_t end = mPosition;
  const auto takeDigits = [&] {
    while (IsDigit(end)) ++end;
  };
  takeDigits();
  if (mText.substr(end, 1) == "." && IsDigit(end + 1)) {
    kind = TokenKind::kDecimal;
    ++end;
    takeDigits();
  }
  if (mText.substr(end, 1) == "e" || mText.substr(end, 1) == "E") {
    const std::string_view sign = mText.substr(end + 1, 1);
    const std::size_t digits = end + (sign == "+" || sign == "-" ? 2 : 1);
    if (IsDigit(digits)) {
      kind = TokenKind::kDecimal;
      end = digits;
      takeDigits();
    }
  }
  if (end < mText.size() && IsNameStart(mText[end])) {
    while (end < mText.size() && IsNameByte(mText[end])) ++end;
    kind = TokenKind::kBad;
  }
  if (end - mPosition > mLimits->numberLength) kind = TokenKind::kBad;
  return Make(kind, end - mPosition);
}

Token Lexer::Sign() {
  const std::string_view rest = mText.substr(mPosition, 4);
  for (const OperatorSign& sign : kOperatorSigns)
    if (!sign.text.empty() && rest.substr(0, sign.text.size()) == sign.text)
      return Make(TokenKind::kOperator, sign.text.size(), sign.op);
  if (rest[0] == '"') {
    const std::size_t end = mText.find_first_of("\"\n", mPosition + 1);
    if (end == std::string_view::npos || mText[end] == '\n') return Make(TokenKind::kBad, 1);
    return Make(TokenKind::kText, end + 1 - mPosition);
  }
  for (const Punctuation& sign : kPunctuation)
    if (rest.substr(0, sign.text.size()) == sign.text) return Make(sign.kind, sign.text.size());
  std::size_t length = 1;  // of a character outside ASCII: all its bytes
  while (mPosition + length < mText.size() && (mText[mPosition + length] & 0xc0) == 0x80) ++length;
  return Make(TokenKind::kBad, length);
}

void Lexer::Explain(const Token& bad) const {
  const std::string_view text = mText.substr(bad.span.position, bad.span.length);
  const auto failByLimit = [&](const char* what, std::size_t limit) {
    Fail({bad.span.position, 1}, std::string(what) + " of " + std::to_string(text.size()) +
                                     " bytes is longer than the limit of " + std::to_string(limit));
  };
  if (text.substr(0, 2) == "/*")
    Fail({bad.span.position, 2}, "this comment has no end; expected '*/'");
  if (text == "\"") Fail(bad.span, "this text has no end in its line; expected '\"'");
  if (IsNameStart(text[0])) failByLimit("a name", mLimits->nameLength);
  if (IsDigit(bad.span.position)) {
    if (text.size() > mLimits->numberLength) failByLimit("a number", mLimits->numberLength);
    Fail(bad.span, "'" + std::string(text) + "' is neither a number nor a name",
         {"a product is written with its sign, as in '2 * x'"});
  }
  for (const auto& [stranger, name, advice] : kStrangers) {
    if (text != stranger) continue;
    const std::string quoted = "character '" + std::string(text) + "'";
    Fail(bad.span, "unexpected " + (name.empty() ? quoted : std::string(name)),
         {std::string(advice)});
  }
  if (static_cast<unsigned char>(text[0]) < 0x20 || text[0] == 0x7f) {
    constexpr char kHex[] = "0123456789ABCDEF";
    const auto code = static_cast<unsigned char>(text[0]);
    Fail(bad.span, std::string("unexpected control character (U+00") + kHex[code >> 4] +
                       kHex[code & 15] + ")");
  }
  ModelError error = {bad.span, "unexpected character '" + std::string(text) + "'", {}};
  if (text.size() > 1)
    error.notes.push_back("names consist of the letters A to Z and a to z, digits and '_'");
  throw error;
}

/// Whether what stands before a line break and what stands behind it cannot be one value, so that
/// a ';' was forgotten between them.
bool Lexer::EndsValue(std::size_t lineBreak) const {
  const std::size_t last = mText.find_last_not_of(kBlanks, lineBreak);
  const std::size_t next = mText.find_first_not_of(kBlanks, lineBreak);
  if (last == std::string_view::npos || last < mPosition || next == std::string_view::npos)
    return false;
  if (mText[last] == ']' || mText[last] == '}') return true;
  return (IsNameByte(mText[last]) || mText[last] == ')') && IsNameStart(mText[next]) &&
         mText.substr(next, 3) != SignOf(Op::kModulo).text;
}

Span Lexer::NextValue() {
  while (mPosition < mText.size() && IsBlank(mText[mPosition])) ++mPosition;
  std::size_t end = mPosition;
  for (int depth = 0; end < mText.size(); ++end) {
    const char c = mText[end];
    if (c == '[' || c == '{' || c == '(') ++depth;
    if (c == ']' || c == '}' || c == ')') --depth;
    if (c == ';' || (c == ',' && depth <= 0)) break;
    if (c == '\n' && depth <= 0 && EndsValue(end)) break;
    if (c == '/' && (mText.substr(end, 2) == "//" || mText.substr(end, 2) == "/*")) break;
  }
  const std::uint32_t begin = mPosition;
  mPosition = static_cast<std::uint32_t>(end);
  while (end > begin && IsBlank(mText[end - 1])) --end;
  return {begin, static_cast<std::uint32_t>(end - begin)};
}

}  // namespace zultav::detail
