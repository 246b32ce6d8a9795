// The parser of the query language: the text of a SSELECT or SELECT read into a syntax tree.
// A malformed query fails with errors::kBadQuery, naming the position and what was expected.
#include <optional>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/store/database.h>
#include "base/message.h"
#include "store/query/syntax.h"

namespace velmora::store {

namespace {

enum class TokenKind { Word, Value, Operator, End };

struct Token {
  TokenKind kind = TokenKind::End;
  Text text;              // a value's text is without its quotes
  std::size_t start = 0;  // 0-based offset in the query text
  std::size_t end = 0;    // one past the last character
  bool literal = false;   // a value in single quotes: compared whole, brackets and all
};

bool isBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}
bool isOperatorChar(char16_t c) {
  return c == u'=' || c == u'<' || c == u'>';
}

[[noreturn]] void malformed(std::size_t offset, const std::string& what) {
  throw Failure(errors::kBadQuery,
                "requête : à la position " + std::to_string(offset + 1) + " : " + what);
}

std::vector<Token> tokenize(TextView text) {
  std::vector<Token> tokens;
  std::size_t i = 0;
  while (i < text.size()) {
    if (isBlank(text[i])) {
      ++i;
      continue;
    }
    const std::size_t start = i;
    if (text[i] == u'"') {
      const auto close = text.find(u'"', i + 1);
      if (close == TextView::npos) malformed(start, "la valeur n'a pas de guillemet fermant");
      tokens.push_back(
          {TokenKind::Value, Text(text.substr(i + 1, close - i - 1)), start, close + 1});
      i = close + 1;
      continue;
    }
    if (text[i] == u'\'') {
      // A literal: any text, a quote in it doubled.
      Text value;
      for (++i;; ++i) {
        if (i >= text.size()) malformed(start, "la valeur n'a pas d'apostrophe fermante");
        if (text[i] == u'\'') {
          if (i + 1 < text.size() && text[i + 1] == u'\'') {
            ++i;
          } else {
            break;
          }
        }
        value += text[i];
      }
      ++i;
      tokens.push_back({TokenKind::Value, std::move(value), start, i, true});
      continue;
    }
    if (isOperatorChar(text[i])) {
      while (i < text.size() && isOperatorChar(text[i])) ++i;
      tokens.push_back({TokenKind::Operator, Text(text.substr(start, i - start)), start, i});
      continue;
    }
    while (i < text.size() && !isBlank(text[i]) && text[i] != u'"' && !isOperatorChar(text[i])) ++i;
    tokens.push_back({TokenKind::Word, Text(text.substr(start, i - start)), start, i});
  }
  tokens.push_back({TokenKind::End, {}, text.size(), text.size()});
  return tokens;
}

std::optional<Operator> operatorOf(TextView text) {
  if (text == u"=") return Operator::Equal;
  if (text == u"<>") return Operator::NotEqual;
  if (text == u"<") return Operator::Less;
  if (text == u"<=") return Operator::LessOrEqual;
  if (text == u">") return Operator::Greater;
  if (text == u">=") return Operator::GreaterOrEqual;
  return std::nullopt;
}

class Parser {
 public:
  explicit Parser(TextView text) : text_(text), tokens_(tokenize(text)) {}

  QuerySyntax parse() {
    QuerySyntax query;
    clauseStart_ = current().start;
    const Token& verb = current();
    if (!isWord(u"SSELECT") && !isWord(u"SELECT")) {
      fail("SSELECT ou SELECT attendu au début de la requête");
    }
    query.verb = verb.text;
    advance();
    if (current().kind != TokenKind::Word || isKeyword(current().text)) {
      fail("nom de fichier attendu");
    }
    query.file = current().text;
    advance();
    if (isWord(u"AVEC")) {
      query.conditions.push_back(condition());
      while (isWord(u"AND")) {
        beginClause();
        advance();
        if (!isWord(u"AVEC")) fail("AVEC attendu (les conditions se joignent par AND AVEC)");
        query.conditions.push_back(condition());
      }
    }
    while (isWord(u"PAR") || isWord(u"PAR-DECR")) {
      beginClause();
      const bool descending = current().text == u"PAR-DECR";
      advance();
      query.sorts.push_back(
          {fieldName("numéro d'attribut, @ID ou nom du dictionnaire attendu"), descending});
    }
    if (current().kind != TokenKind::End) {
      const bool conditionWord = isWord(u"AVEC") || isWord(u"AND") || isWord(u"OR");
      if (conditionWord && !query.sorts.empty()) fail("les conditions doivent précéder les tris");
      if (isWord(u"AVEC")) fail("AND attendu avant AVEC");
      fail(query.conditions.empty() ? "AVEC, PAR, PAR-DECR ou la fin de la requête attendu"
                                    : "AND AVEC, PAR, PAR-DECR ou la fin de la requête attendu");
    }
    return query;
  }

 private:
  const Token& current() const { return tokens_[index_]; }
  void advance() {
    lastEnd_ = current().end;
    ++index_;
  }
  void beginClause() { clauseStart_ = current().start; }
  bool isWord(TextView word) const {
    return current().kind == TokenKind::Word && current().text == word;
  }
  static bool isKeyword(TextView word) {
    return word == u"SSELECT" || word == u"SELECT" || word == u"AVEC" || word == u"AND" ||
           word == u"OR" || word == u"PAR" || word == u"PAR-DECR";
  }

  [[noreturn]] void fail(const std::string& expected) const {
    std::string message = expected;
    if (lastEnd_ > clauseStart_) {
      message +=
          " après « " + excerpt(toUtf8(text_.substr(clauseStart_, lastEnd_ - clauseStart_))) + " »";
    }
    const Token& at = current();
    message +=
        at.kind == TokenKind::End
            ? ", trouvé la fin de la requête"
            : ", trouvé « " + excerpt(toUtf8(text_.substr(at.start, at.end - at.start))) + " »";
    malformed(at.start, message);
  }

  FieldName fieldName(const std::string& expected) {
    if (current().kind != TokenKind::Word || isKeyword(current().text)) fail(expected);
    FieldName field{current().text, current().start + 1};
    advance();
    return field;
  }

  Comparison comparison() {
    if (current().kind != TokenKind::Operator) {
      fail("opérateur attendu (=, <=, >=, <>)");
    }
    const auto op = operatorOf(current().text);
    if (!op) fail("opérateur attendu (=, <=, >=, <>)");
    advance();
    if (current().kind != TokenKind::Value) fail("valeur entre guillemets ou apostrophes attendue");
    const Token value = current();
    advance();
    if (value.literal) return {*op, Anchor::Whole, value.text};
    return comparisonOf(*op, value.text);
  }

  Condition condition() {
    beginClause();
    advance();  // AVEC
    Condition result{fieldName("numéro d'attribut, @ID ou nom du dictionnaire attendu"), {}};
    result.alternatives.push_back(comparison());
    while (isWord(u"OR")) {
      advance();
      result.alternatives.push_back(comparison());
    }
    return result;
  }

  TextView text_;
  std::vector<Token> tokens_;
  std::size_t index_ = 0;
  std::size_t clauseStart_ = 0;
  std::size_t lastEnd_ = 0;
};

}  // namespace

Comparison comparisonOf(Operator op, TextView value) {
  if (!value.empty() && value.back() == u']') {
    return {op, Anchor::Leading, Text(value.substr(0, value.size() - 1))};
  }
  if (!value.empty() && value.front() == u'[') {
    return {op, Anchor::Trailing, Text(value.substr(1))};
  }
  return {op, Anchor::Whole, Text(value)};
}

QuerySyntax parseQuery(TextView text) {
  return Parser(text).parse();
}

}  // namespace velmora::store

namespace velmora {

Text literalValue(TextView value) {
  Text quoted = u"'";
  for (const char16_t c : value) {
    if (c == u'\'') quoted += u'\'';
    quoted += c;
  }
  return quoted + u"'";
}

}  // namespace velmora
