#include "analysis/writers/HxLabelCheck.h"

#include <cstdio>

#include "analysis/capture/HxFlatOrder.h"
#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/writers/HxOutputWriterVector.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// What one format cannot carry in a label.
struct Rules {
  bool comma = false;
  bool singleQuote = false;
  bool doubleQuote = false;
  bool backslash = false;
  bool mrdSeparator = false;
  // Control characters other than tab, line feed and carriage return; when false, all of them.
  bool xmlWhitespaceAllowed = false;
};

Rules rulesFor(const std::string& extension) {
  Rules rules;
  if (extension == ".xml" || extension == ".h5") {
    rules.xmlWhitespaceAllowed = true;
  } else if (extension == ".nb") {
    rules.doubleQuote = rules.backslash = true;
  } else {
    rules.comma = rules.singleQuote = rules.doubleQuote = rules.mrdSeparator = true;
    // A writer we do not know gets every rule.
    if (extension != ".csv" && extension != ".m" && extension != ".mrd") rules.backslash = true;
  }
  return rules;
}

// Length of the UTF-8 sequence at `text[i]`, or 0 when the bytes there are not UTF-8.
std::size_t utf8Length(const std::string& text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  std::size_t length = 0;
  unsigned int minimum = 0;
  unsigned int code = 0;
  if (lead < 0x80) return 1;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, minimum = 0x80, code = lead & 0x1Fu;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, minimum = 0x800, code = lead & 0x0Fu;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, minimum = 0x10000, code = lead & 0x07u;
  } else {
    return 0;
  }
  if (i + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byte(i + k) & 0x3Fu);
  }
  if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return length;
}

// Every reason why `text` breaks a format of `rules`, in the order they are found.
std::vector<std::string> reasonsFor(const std::string& text, const Rules& rules) {
  std::vector<std::string> reasons;
  auto add = [&reasons](const std::string& reason) {
    for (const std::string& known : reasons) {
      if (known == reason) return;
    }
    reasons.push_back(reason);
  };
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    const std::size_t length = utf8Length(text, i);
    if (length == 0) {
      add("bytes that are not UTF-8");
      ++i;
      continue;
    }
    if (c < 0x20 || c == 0x7F) {
      const bool whitespace = c == '\t' || c == '\n' || c == '\r';
      if (!(rules.xmlWhitespaceAllowed && whitespace)) {
        char code[32];
        std::snprintf(code, sizeof code, "a control character (U+%04X)", static_cast<unsigned int>(c));
        add(code);
      }
    } else if (c == ',' && rules.comma) {
      add("a comma");
    } else if (c == '\'' && rules.singleQuote) {
      add("a single quote");
    } else if (c == '"' && rules.doubleQuote) {
      add("a double quote");
    } else if (c == '\\' && rules.backslash) {
      add("a backslash");
    }
    i += length;
  }
  if (rules.mrdSeparator && text.find("  -  ") != std::string::npos) add("the label separator \"  -  \"");
  return reasons;
}
}  // namespace

std::vector<HxUnsafeLabel> hxFindUnsafeLabels(const HxSystemDataCapture& capture, const HxOutputWriterVector& writers) {
  std::vector<HxUnsafeLabel> found;
  auto check = [&](const HxUnsafeLabel& where) {
    for (HxU32 w = 0; w < writers.size(); ++w) {
      const HxBaseOutputWriter& writer = writers[w];
      const std::string& extension = writer.fileExtension();
      // The configuration's own label is written by the XML format alone.
      if (where.source == HxUnsafeLabel::Source::SystemLabel && extension != ".xml") continue;
      for (const std::string& reason : reasonsFor(where.text, rulesFor(extension))) {
        HxUnsafeLabel entry = where;
        entry.format = writer.formatDescriptor();
        entry.extension = extension;
        entry.reason = reason;
        found.push_back(std::move(entry));
      }
    }
  };

  HxUnsafeLabel system;
  system.source = HxUnsafeLabel::Source::SystemLabel;
  system.text = capture.label();
  check(system);

  const auto& captures = capture.manipulatorDataCaptureVector();
  HxFlatOrder::forEachCapturedType(captures, [&](const HxFlatPosition& at, const HxDataCaptureType& type) {
    const HxManipulatorDataCapture& manipulator = captures[at.manipulator];
    HxUnsafeLabel where;
    where.capture = at.manipulator;
    where.manipulatorIndex = manipulator.manipulatorIndex();
    where.level = at.level;
    if (at.level == HxDataCaptureLevel::Link) {
      where.linkIdentifier = manipulator.linkDataCaptureVector()[at.element].linkIdentifier();
      // The identifier is part of every label of the link's columns: checked at its first type.
      if (at.quantity == 0) {
        HxUnsafeLabel link = where;
        link.source = HxUnsafeLabel::Source::LinkIdentifier;
        link.text = where.linkIdentifier;
        check(link);
      }
    } else if (at.level == HxDataCaptureLevel::EndEffector) {
      where.endEffectorIndex = manipulator.endEffectorDataCaptureVector()[at.element].endEffectorIndex();
    }
    // A type of one column writes its description alone; a wider one its enabled column labels.
    const HxU32 dataSize = type.dataSize();
    if (dataSize <= 1) return;
    const auto& flags = type.disableFlags();
    for (HxU32 j = 0; j < dataSize; ++j) {
      if (j < flags.size() && flags[j].value()) continue;
      HxUnsafeLabel column = where;
      column.source = HxUnsafeLabel::Source::DataLabel;
      column.text = type.label(j);
      column.quantity = type.description();
      column.column = j;
      check(column);
    }
  });
  return found;
}
