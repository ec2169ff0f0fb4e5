#pragma once
/// \file
/// HxXmlAttributeScan: the guard of HxXmlReader against elements with very many attributes.
/// Internal to framework/.

#include <cstddef>

/// Counts the attributes of every start tag in a stream of bytes, so that an element with too
/// many is refused before libxml2 parses it: libxml2's check for repeated attribute names takes
/// time quadratic in their number. An attribute is counted at its '=' outside quoted values;
/// comments, CDATA sections, processing instructions, declarations and end tags are passed
/// over. It also notes whether the bytes held any element or text at all. The bytes are read as
/// 16-bit units when the document begins as UTF-16 does (a byte order mark, or '<' next to a zero
/// byte), so that a unit of another character never passes for markup; any other encoding that
/// libxml2 reads writes the characters of markup as the ASCII bytes.
class HxXmlAttributeScan {
 public:
  // Scans the next bytes; false once a start tag has more than `limit` attributes.
  bool feed(const char* data, std::size_t size, int limit) {
    for (std::size_t i = 0; i < size; ++i) {
      if (!byte(static_cast<unsigned char>(data[i]), limit)) return false;
    }
    return true;
  }
  // Marks the end of the bytes.
  void finish() {
    if (units_ == Undecided && pending_ == 1) character(unit_[0], 0);
    finished_ = true;
  }
  // Line of the last start tag (the one with too many attributes once `feed` failed).
  int tagLine() const { return tagLine_; }
  // Whether all bytes were scanned and held neither a start tag nor text.
  bool noElement() const { return finished_ && !sawStartTag_ && !sawText_; }
  // Whether the bytes held nothing but blanks (and a byte order mark).
  bool blank() const { return !sawMarkup_ && !sawText_; }

 private:
  enum State {
    Text,
    Open,
    Bang,
    BangDash,
    CdataOpen,
    Comment,
    Cdata,
    Declaration,
    Instruction,
    EndTag,
    StartTag,
    Quoted
  };
  enum Units { Undecided, Bytes, Utf16LittleEndian, Utf16BigEndian };

  bool byte(unsigned char value, int limit) {
    if (units_ == Bytes) return character(value, limit);
    unit_[pending_++] = value;
    if (pending_ < 2) return true;
    pending_ = 0;
    if (units_ == Undecided) {
      const unsigned first = unit_[0], second = unit_[1];
      if ((first == 0xFF && second == 0xFE) || (first == '<' && second == 0)) {
        units_ = Utf16LittleEndian;
      } else if ((first == 0xFE && second == 0xFF) || (first == 0 && (second == '<' || second == 0))) {
        units_ = Utf16BigEndian;
      } else {
        units_ = Bytes;
        return character(first, limit) && character(second, limit);
      }
      if (first == 0xFF || first == 0xFE) return true;  // the byte order mark
    }
    const unsigned high = units_ == Utf16LittleEndian ? unit_[1] : unit_[0];
    const unsigned low = units_ == Utf16LittleEndian ? unit_[0] : unit_[1];
    // A character beyond ASCII is never markup: it counts as a letter.
    return character(high == 0 && low < 0x80 ? low : 'x', limit);
  }

  bool character(unsigned value, int limit) {
    const char c = static_cast<char>(value);
    if (c == '\n') ++line_;
    const bool result = step(c, limit);
    ++offset_;
    return result;
  }

  bool step(char c, int limit) {
    switch (state_) {
      case Text:
        if (c == '<') {
          state_ = Open;
          tagLine_ = line_;
          sawMarkup_ = true;
        } else if (!isBlank(c) && !(offset_ < 3 && isByteOrderMark(c))) {
          sawText_ = true;
        }
        return true;
      case Open:
        if (c == '!') {
          state_ = Bang;
        } else if (c == '?') {
          enter(Instruction);
        } else if (c == '/') {
          state_ = EndTag;
        } else {
          state_ = StartTag;
          sawStartTag_ = true;
          attributes_ = 0;
          return step(c, limit);
        }
        return true;
      case Bang:
        if (c == '-') {
          state_ = BangDash;
        } else if (c == '[') {
          enter(CdataOpen);
          run_ = 1;
        } else {
          enter(Declaration);
          return step(c, limit);
        }
        return true;
      case BangDash:
        if (c == '-') {
          enter(Comment);
          return true;
        }
        enter(Declaration);
        return step(c, limit);
      case CdataOpen: {
        static constexpr char kOpening[] = "[CDATA[";
        if (c != kOpening[run_]) {
          enter(Declaration);
          return step(c, limit);
        }
        if (++run_ == sizeof kOpening - 1) enter(Cdata);
        return true;
      }
      case Comment:  // ends at "-->"
        endAfterRun(c, '-', 2);
        return true;
      case Cdata:  // ends at "]]>"
        endAfterRun(c, ']', 2);
        return true;
      case Instruction:  // ends at "?>"
        endAfterRun(c, '?', 1);
        return true;
      case Declaration:  // run_ is the depth of '[' (a document type's internal subset)
        if (c == '"' || c == '\'') {
          quote(c);
        } else if (c == '[') {
          ++run_;
        } else if (c == ']') {
          --run_;
        } else if (c == '>' && run_ <= 0) {
          state_ = Text;
        }
        return true;
      case EndTag:
        if (c == '>') state_ = Text;
        return true;
      case StartTag:
        if (c == '"' || c == '\'') {
          quote(c);
        } else if (c == '=') {
          return ++attributes_ <= limit;
        } else if (c == '>') {
          state_ = Text;
        }
        return true;
      case Quoted:
        if (c == quote_) state_ = afterQuote_;
        return true;
    }
    return true;
  }

  void enter(State state) {
    state_ = state;
    run_ = 0;
  }
  // `run_` counts the `mark`s just seen; '>' after `needed` of them ends the construct.
  void endAfterRun(char c, char mark, int needed) {
    if (c == mark) {
      ++run_;
      return;
    }
    if (c == '>' && run_ >= needed) state_ = Text;
    run_ = 0;
  }
  void quote(char c) {
    quote_ = c;
    afterQuote_ = state_;
    state_ = Quoted;
  }
  static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
  static bool isByteOrderMark(char c) {
    const unsigned char byte = static_cast<unsigned char>(c);
    return byte == 0xEF || byte == 0xBB || byte == 0xBF;
  }

  Units units_ = Undecided;
  unsigned char unit_[2] = {};
  int pending_ = 0;
  State state_ = Text;
  State afterQuote_ = Text;
  char quote_ = '"';
  int run_ = 0;
  int attributes_ = 0;
  int line_ = 1;
  int tagLine_ = 1;
  std::size_t offset_ = 0;
  bool finished_ = false;
  bool sawStartTag_ = false;
  bool sawText_ = false;
  bool sawMarkup_ = false;
};
