#include "store/statement_text.h"

#include <algorithm>
#include <charconv>

#include "store/connection.h"
#include "text/ascii.h"
#include "text/language.h"

namespace vlout::store {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isWordCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return text::isAsciiDigit(c) || (text::asciiLower(c) >= 'a' && text::asciiLower(c) <= 'z') ||
         c == '_' || byte >= 0x80;
}

class StatementReader {
 public:
  explicit StatementReader(std::string_view sql) : sql_(sql) { result_.shape.reserve(sql.size()); }

  StatementText read() {
    while (position_ < sql_.size()) readToken();
    return std::move(result_);
  }

 private:
  void readToken() {
    const char c = sql_[position_];
    if (isBlank(c)) {
      result_.shape += c;
      ++position_;
      return;
    }
    switch (c) {
      case '\'':
        readText();
        break;
      case '[':
        copyQuoted(']');
        break;
      case '"':
      case '`':
        copyQuoted(c);
        break;
      case ';':
        requireEnd();
        return;
      default:
        if (text::isAsciiDigit(c)) {
          readNumber();
        } else if (isWordCharacter(c)) {
          readWord();
        } else {
          readSign(c);
        }
    }
  }

  [[nodiscard]] bool mayLift() const {
    return previous_ == '=' || (inValues_ && depth_ == 1 && (previous_ == '(' || previous_ == ','));
  }

  void lift(Literal::Kind kind, std::string value) {
    result_.shape += "? ";  // the blank keeps it apart from a number that wrongly follows
    result_.literals.push_back({kind, std::move(value)});
    previous_ = '?';
  }

  void readText() {
    const std::size_t start = position_;
    std::string value;
    ++position_;
    while (true) {
      const std::size_t quote = sql_.find('\'', position_);
      if (quote == std::string_view::npos)
        fail(text::say("닫히지 않은 따옴표가 있습니다", "a quote is not closed"));
      value.append(sql_, position_, quote - position_);
      position_ = quote + 1;
      if (position_ >= sql_.size() || sql_[position_] != '\'') break;
      value += '\'';
      ++position_;
    }
    if (mayLift()) {
      lift(Literal::Kind::Text, std::move(value));
      return;
    }
    // SQLite would end the statement at a NUL; only a bound value can hold one.
    if (value.find('\0') != std::string::npos)
      fail(text::say("NUL 문자가 있습니다", "a NUL character"));
    result_.shape.append(sql_, start, position_ - start);
    previous_ = '\'';
  }

  // X'...' whose quote stands at `quote`; false when it is none, which is the database's to say.
  bool readBytes(std::size_t quote) {
    const std::size_t end = sql_.find('\'', quote + 1);
    if (quote >= sql_.size() || sql_[quote] != '\'' || end == std::string_view::npos) return false;
    const std::string_view digits = sql_.substr(quote + 1, end - quote - 1);
    std::string value(digits.size() / 2, '\0');
    for (std::size_t i = 0; i < value.size(); ++i) {
      unsigned int byte = 0;
      const char* const pair = digits.data() + 2 * i;
      if (std::from_chars(pair, pair + 2, byte, 16).ptr != pair + 2) return false;
      value[i] = static_cast<char>(byte);
    }
    if (digits.size() % 2 != 0) return false;
    position_ = end + 1;
    lift(Literal::Kind::Bytes, std::move(value));
    return true;
  }

  void copyQuoted(char close) {
    const std::size_t end = sql_.find(close, position_ + 1);
    if (end == std::string_view::npos)
      fail(text::say("닫히지 않은 이름이 있습니다", "a name is not closed"));
    result_.shape.append(sql_, position_, end + 1 - position_);
    position_ = end + 1;
    previous_ = close;
  }

  void readNumber() {
    std::size_t end = position_;
    while (end < sql_.size() && (isWordCharacter(sql_[end]) || sql_[end] == '.')) ++end;
    const std::string_view number = sql_.substr(position_, end - position_);
    position_ = end;
    // A number past 64 bits is the database's to read.
    if (mayLift() && text::parseInteger(number)) {
      lift(Literal::Kind::Number, std::string(number));
      return;
    }
    result_.shape += number;
    previous_ = '0';
  }

  void readWord() {
    std::size_t end = position_;
    while (end < sql_.size() && isWordCharacter(sql_[end])) ++end;
    const std::string_view word = sql_.substr(position_, end - position_);
    if (mayLift() && (word == "X" || word == "x") && readBytes(end)) return;
    if (text::equalsIgnoringAsciiCase(word, "VALUES")) inValues_ = true;
    result_.shape += word;
    position_ = end;
    previous_ = 'a';
  }

  void readSign(char c) {
    const char next = position_ + 1 < sql_.size() ? sql_[position_ + 1] : '\0';
    const bool comment = (c == '-' && next == '-') || (c == '/' && next == '*');
    const bool parameter = c == '?' || c == ':' || c == '@' || c == '$' || c == '#';
    if (comment || parameter || c == '\0') fail(text::say("구문 오류입니다", "syntax error"));
    if (c == '(') ++depth_;
    if (c == ')') --depth_;
    result_.shape += c;
    ++position_;
    previous_ = c;
  }

  void requireEnd() {
    const std::string_view rest = sql_.substr(position_);
    const bool onlyEnd =
        std::all_of(rest.begin(), rest.end(), [](char c) { return isBlank(c) || c == ';'; });
    if (!onlyEnd)
      fail(text::say("문장 끝 뒤에 다른 문장이 있습니다",
                     "another statement after the end of the first"));
    position_ = sql_.size();
  }

  [[noreturn]] void fail(const std::string& reason) const {
    throw DatabaseError("SQL " + reason + ": " + std::string(sql_.substr(0, 32)));
  }

  std::string_view sql_;
  std::size_t position_ = 0;
  StatementText result_;
  char previous_ = '\0';  // what the last token was: its sign, or a letter for its kind
  bool inValues_ = false;
  int depth_ = 0;
};

}  // namespace

StatementText readStatement(std::string_view sql) {
  return StatementReader(sql).read();
}

}  // namespace vlout::store
