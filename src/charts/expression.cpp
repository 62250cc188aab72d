#include "charts/expression.h"

#include <algorithm>
#include <muParser.h>
#include <string>

namespace vesk {

namespace {

constexpr std::size_t longest_expression = 5000; // the parser's own limit

// Position in the text, from 1; the end of the text if the parser reports none.
std::string place(const mu::ParserError& error, std::size_t length) {
  const auto position = static_cast<std::size_t>(std::max<long>(static_cast<long>(error.GetPos()), 0));
  return "character " + std::to_string(std::min(position + 1, length));
}

std::string sentence(const mu::ParserError& error, std::size_t length) {
  const std::string token = "\"" + error.GetToken() + "\"";
  switch (error.GetCode()) {
  case mu::ecUNASSIGNABLE_TOKEN:
    return "The expression has an unknown name " + token + " at " + place(error, length) +
           "; known are x, row, i and n.";
  case mu::ecUNEXPECTED_EOF: return "The expression ends too early.";
  case mu::ecMISSING_PARENS: return "The expression has a bracket that is not closed.";
  case mu::ecTOO_FEW_PARAMS: return "A function in the expression has too few arguments.";
  case mu::ecTOO_MANY_PARAMS: return "A function in the expression has too many arguments.";
  default: return "The expression cannot be read at " + place(error, length) + " (" + token + ").";
  }
}

// muParser treats a single "=" as an assignment to the variable, which would change x for all following cells.
bool assigns(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '=') continue;
    if (i + 1 < text.size() && text[i + 1] == '=') {
      ++i;
      continue;
    }
    if (i == 0 || std::string_view("<>!").find(text[i - 1]) == std::string_view::npos) return true;
  }
  return false;
}

} // namespace

struct expression::parser {
  mu::Parser engine;
  variables values;
  std::size_t length = 0;
};

expression::expression(std::string_view text) : parser_(std::make_unique<parser>()) {
  if (text.find_first_not_of(" \t") == std::string_view::npos) throw expression_exception("The expression is empty.");
  if (text.size() > longest_expression)
    throw expression_exception("The expression has " + std::to_string(text.size()) +
                               " characters; at most 5000 are accepted.");
  if (std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
    throw expression_exception("The expression has a character that is not ASCII.");
  if (assigns(text)) throw expression_exception("The expression has an \"=\"; write \"==\" to compare.");
  parser_->length = text.size();
  try {
    variables& values = parser_->values;
    parser_->engine.DefineVar("x", &values.x);
    parser_->engine.DefineVar("row", &values.row);
    parser_->engine.DefineVar("i", &values.i);
    parser_->engine.DefineVar("n", &values.n);
    parser_->engine.SetExpr(std::string(text));
    int results = 0;
    parser_->engine.Eval(results); // compiles
    if (results != 1) throw expression_exception("The expression has a comma outside a function; use a decimal point.");
  } catch (const mu::ParserError& error) {
    throw expression_exception(sentence(error, text.size()));
  }
}

expression::~expression() = default;

double expression::evaluate(const variables& values) {
  parser_->values = values;
  try {
    return parser_->engine.Eval();
  } catch (const mu::ParserError& error) {
    throw expression_exception(sentence(error, parser_->length));
  }
}

} // namespace vesk
