#include "framework/HxXmlWriter.h"

#include <mutex>

#include "framework/HxXmlObject.h"

namespace {

struct NamespaceRegistry {
  std::mutex mutex;
  std::vector<std::pair<std::string, std::string>> entries;  // uri, prefix
};

NamespaceRegistry& namespaceRegistry() {
  static NamespaceRegistry registry;
  return registry;
}

constexpr char kReplacementCharacter[] = "\xEF\xBF\xBD";  // U+FFFD

bool isContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of the well-formed UTF-8 sequence at `p` (at most `n` bytes) encoding a character that
// XML 1.0 allows, or 0.
size_t utf8Length(const unsigned char* p, size_t n) {
  const unsigned char c = p[0];
  if (c >= 0xC2 && c <= 0xDF) return n >= 2 && isContinuation(p[1]) ? 2 : 0;
  if (c >= 0xE0 && c <= 0xEF) {
    if (n < 3 || !isContinuation(p[1]) || !isContinuation(p[2])) return 0;
    if (c == 0xE0 && p[1] < 0xA0) return 0;                                     // overlong
    if (c == 0xED && p[1] > 0x9F) return 0;                                     // surrogates
    if (c == 0xEF && p[1] == 0xBF && (p[2] == 0xBE || p[2] == 0xBF)) return 0;  // U+FFFE, U+FFFF
    return 3;
  }
  if (c >= 0xF0 && c <= 0xF4) {
    if (n < 4 || !isContinuation(p[1]) || !isContinuation(p[2]) || !isContinuation(p[3])) return 0;
    if (c == 0xF0 && p[1] < 0x90) return 0;  // overlong
    if (c == 0xF4 && p[1] > 0x8F) return 0;  // beyond U+10FFFF
    return 4;
  }
  return 0;
}

}  // namespace

HxXmlWriter::HxXmlWriter(const std::string& name, std::ostream& stream) : name_(name), stream_(stream) {
  NamespaceRegistry& registry = namespaceRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  registered_ = registry.entries;
  assigned_ = registered_;
}

HxXmlWriter::~HxXmlWriter() {
  if (stream_.good()) stream_.flush();
}

void HxXmlWriter::registerNamespacePrefix(const std::string& uri, const std::string& prefix) {
  if (uri.empty() || prefix.empty() || prefix == "xml" || prefix == "xmlns") return;
  NamespaceRegistry& registry = namespaceRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  for (auto& entry : registry.entries) {
    if (entry.first == uri) {
      entry.second = prefix;
      return;
    }
  }
  registry.entries.emplace_back(uri, prefix);
}

void HxXmlWriter::put(const char* text, size_t size) {
  if (size == 0 || !stream_.good()) return;
  std::streambuf* buffer = stream_.rdbuf();
  if (!buffer || buffer->sputn(text, static_cast<std::streamsize>(size)) != static_cast<std::streamsize>(size)) {
    stream_.setstate(std::ios::badbit);
    return;
  }
  written_ += size;
}

void HxXmlWriter::reportScalars(std::vector<HxXmlScalarSpan>* spans) {
  scalarSpans_ = spans;
  reportStart_ = written_;
  if (spans != nullptr) spans->clear();
}

void HxXmlWriter::reportScalar(size_t begin) {
  if (scalarSpans_ != nullptr) scalarSpans_->push_back({begin - reportStart_, written_ - reportStart_});
}

void HxXmlWriter::beginOutput() {
  if (declarationWritten_) return;
  declarationWritten_ = true;
  put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
  if (name_.empty()) return;
  // The document name as a comment: "--" may not occur in one, nor control characters.
  put("<!-- ");
  char previous = 0;
  for (const char c : name_) {
    if (c == '-' && previous == '-') put(' ');
    put(static_cast<unsigned char>(c) < 0x20 ? ' ' : c);
    previous = c;
  }
  put(" -->\n");
}

void HxXmlWriter::closePendingAttribute() {
  if (!attributePending_) return;
  put('"');
  attributePending_ = false;
}

void HxXmlWriter::closeStartTag() {
  closePendingAttribute();
  if (!startTagOpen_) return;
  put('>');
  startTagOpen_ = false;
}

void HxXmlWriter::newLineIndent(size_t level) {
  static const char kSpaces[] = "                                                                ";
  constexpr size_t kChunk = sizeof kSpaces - 1;
  put('\n');
  for (size_t count = 2 * level; count > 0;) {
    const size_t now = count < kChunk ? count : kChunk;
    put(kSpaces, now);
    count -= now;
  }
}

const std::string* HxXmlWriter::prefixInScope(std::string_view uri) const {
  for (size_t i = bindingCount_; i > 0; --i) {
    if (bindings_[i - 1].uri == uri) return &bindings_[i - 1].prefix;
  }
  return nullptr;
}

void HxXmlWriter::declareNamespace(std::string_view uri, std::string_view prefix) {
  if (bindingCount_ == bindings_.size()) bindings_.emplace_back();
  NamespaceBinding& binding = bindings_[bindingCount_++];
  binding.uri.assign(uri.data(), uri.size());
  binding.prefix.assign(prefix.data(), prefix.size());
  binding.level = open_ == 0 ? 0 : open_ - 1;
}

void HxXmlWriter::qualifiedName(const HxToken& token, std::string& out) {
  const std::string_view uri = token.namespaceUri();
  const std::string_view local = token.localName();
  if (uri.empty()) {
    out.assign(local.data(), local.size());
    return;
  }
  const std::string* prefix = prefixInScope(uri);
  if (!prefix) {
    // Not in scope: the prefix this document gave the namespace before, if no binding in scope
    // uses it for another namespace, else a new one ("ns1", ...).
    std::pair<std::string, std::string>* chosen = nullptr;
    for (auto& entry : assigned_) {
      if (entry.first == uri) chosen = &entry;
    }
    const auto prefixUsed = [this](std::string_view candidate) {
      for (size_t i = 0; i < bindingCount_; ++i) {
        if (bindings_[i].prefix == candidate) return true;
      }
      return false;
    };
    if (!chosen || prefixUsed(chosen->second)) {
      std::string generated;
      do {
        generated = "ns" + std::to_string(++generatedPrefixes_);
      } while (prefixUsed(generated));
      if (chosen) {
        chosen->second = generated;
      } else {
        assigned_.emplace_back(std::string(uri), generated);
        chosen = &assigned_.back();
      }
    }
    declareNamespace(uri, chosen->second);
    prefix = &bindings_[bindingCount_ - 1].prefix;
  }
  out.assign(*prefix);
  out += ':';
  out.append(local.data(), local.size());
}

void HxXmlWriter::startElement(const HxToken& token) {
  beginOutput();
  if (open_ > 0) {
    closeStartTag();
    hasChildren_[open_ - 1] = 1;
    newLineIndent(open_);
  }
  attributeDropped_ = false;
  const size_t level = open_;
  if (names_.size() <= level) {
    names_.emplace_back();
    hasChildren_.push_back(0);
    hasText_.push_back(0);
  }
  hasChildren_[level] = 0;
  hasText_[level] = 0;
  ++open_;
  startTagOpen_ = true;
  dataMode_ = false;
  firstScalar_ = true;

  // The root declares every registered namespace; any other namespace is declared where it is
  // first used.
  const size_t firstNewBinding = bindingCount_;
  if (level == 0) {
    for (const auto& entry : registered_) declareNamespace(entry.first, entry.second);
  }
  qualifiedName(token, names_[level]);
  put('<');
  put(names_[level]);
  for (size_t i = firstNewBinding; i < bindingCount_; ++i) {
    put(" xmlns:");
    put(bindings_[i].prefix);
    put("=\"");
    writeEscaped(bindings_[i].uri, true);
    put('"');
  }
}

void HxXmlWriter::endElement() {
  if (open_ == 0) return;
  closePendingAttribute();
  attributeDropped_ = false;
  const size_t level = open_ - 1;
  if (startTagOpen_) {
    put("/>");
    startTagOpen_ = false;
  } else {
    if (hasChildren_[level] && !hasText_[level]) newLineIndent(level);
    put("</");
    put(names_[level]);
    put('>');
  }
  while (bindingCount_ > 0 && bindings_[bindingCount_ - 1].level >= level) --bindingCount_;
  open_ = level;
  dataMode_ = false;
  firstScalar_ = true;
  if (open_ == 0) {
    put('\n');
    if (stream_.good()) stream_.flush();
  }
}

void HxXmlWriter::addAttribute(const HxToken& token) {
  if (open_ == 0 || !startTagOpen_) {
    // Too late for an attribute: its value is dropped.
    attributeDropped_ = true;
    return;
  }
  closePendingAttribute();
  const size_t firstNewBinding = bindingCount_;
  qualifiedName(token, scratch_);
  for (size_t i = firstNewBinding; i < bindingCount_; ++i) {
    put(" xmlns:");
    put(bindings_[i].prefix);
    put("=\"");
    writeEscaped(bindings_[i].uri, true);
    put('"');
  }
  put(' ');
  put(scratch_);
  put("=\"");
  attributePending_ = true;
}

void HxXmlWriter::writeScalar(std::string_view text, bool isString) {
  if (attributePending_) {
    writeEscaped(text, true);
    put('"');
    attributePending_ = false;
    return;
  }
  if (attributeDropped_) {
    attributeDropped_ = false;
    return;
  }
  if (open_ == 0) return;
  closeStartTag();
  hasText_[open_ - 1] = 1;
  if (!dataMode_) {
    const size_t begin = written_;
    writeEscaped(text, false);
    reportScalar(begin);
    return;
  }
  if (!firstScalar_) put(' ');
  firstScalar_ = false;
  const size_t begin = written_;
  if (isString) {
    put('"');
    writeEscaped(text, false, true);
    put('"');
  } else {
    writeEscaped(text, false);
  }
  reportScalar(begin);
}

void HxXmlWriter::setDataMode(bool on) {
  dataMode_ = on;
  firstScalar_ = true;
}

void HxXmlWriter::writeEscaped(std::string_view text, bool inAttribute, bool quoteEscapes) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  size_t run = 0;  // start of the pending run of bytes written as they are
  for (size_t i = 0; i < n;) {
    const unsigned char c = p[i];
    const char* replacement = nullptr;
    size_t consumed = 1;
    if (c >= 0x80) {
      const size_t length = utf8Length(p + i, n - i);
      if (length > 0) {
        i += length;
        continue;
      }
      replacement = kReplacementCharacter;
    } else {
      switch (c) {
        case '&':
          replacement = "&amp;";
          break;
        case '<':
          replacement = "&lt;";
          break;
        case '>':
          replacement = "&gt;";
          break;
        case '"':
          replacement = inAttribute ? "&quot;" : (quoteEscapes ? "\\\"" : nullptr);
          break;
        case '\\':
          replacement = quoteEscapes ? "\\\\" : nullptr;
          break;
        case '\t':
          replacement = inAttribute ? "&#9;" : nullptr;
          break;
        case '\n':
          replacement = inAttribute ? "&#10;" : nullptr;
          break;
        case '\r':
          replacement = "&#13;";
          break;
        default:
          // Other control characters cannot be represented in XML 1.0.
          if (c < 0x20) replacement = kReplacementCharacter;
          break;
      }
    }
    if (!replacement) {
      ++i;
      continue;
    }
    put(text.data() + run, i - run);
    put(std::string_view(replacement));
    i += consumed;
    run = i;
  }
  put(text.data() + run, n - run);
}

HxBoolean HxXmlWriter::writeObject(const HxXmlObject& object) { return writeObject(object, object.token()); }

HxBoolean HxXmlWriter::writeObject(const HxXmlObject& object, const HxToken& token) {
  startElement(token);
  const HxBoolean result = object.write(*this);
  endElement();
  return result && good();
}
