// hxmrd: prints an MRD recording's header fields, labels and samples.

#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "framework/HxNumberText.h"
#include "tools/lib/HxMrdFile.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

const char* const kUsage =
    "Usage: hxmrd [options] FILE.mrd\n"
    "\n"
    "Prints an MRD recording: its header fields as '#' comment lines, then its samples as CSV\n"
    "(the label row, then one row per sample). Each value is printed as the shortest text that\n"
    "reads back to exactly the 32-bit float stored in the file.\n"
    "\n"
    "Options:\n"
    "  --channels N   take N values per sample, whatever the header says\n"
    "  --csv          print only the CSV (label row and samples), no comment lines\n"
    "  --header       print only the header fields and every label, one per line\n"
    "  -o FILE        write to FILE instead of standard output\n"
    "  -h, --help     print this help and exit\n"
    "\n"
    "Values per sample are found in this order:\n"
    "  1. --channels N when given;\n"
    "  2. the header's channel count, when channels x samples is what the file holds;\n"
    "  3. a finished header whose sample count divides the data: values / samples. With\n"
    "     disabled columns the header counts one channel per label, more than each sample\n"
    "     holds; the labels without a column are the last ones;\n"
    "  4. a blank header (a recording never finished) or one that contradicts the data: the\n"
    "     number of labels less the empty labels at the end (disabled columns); if that does\n"
    "     not fit, the one count from 2 to the number of labels that divides the data and\n"
    "     gives every sample a non-decreasing time and a whole path-point index first. The\n"
    "     sample count is then the file's size divided by it.\n"
    "Every such recovery is reported on standard error as a warning.\n"
    "\n"
    "Exit status: 0 on success (warnings included); 1 when the file cannot be read or nothing\n"
    "can be recovered (a header neither blank nor four numbers, a truncated or malformed label\n"
    "line, a size that fits no layout or several); 2 on a usage error.\n";

enum class Mode { Full, CsvOnly, HeaderOnly };

int usageError(const std::string& message) {
  std::cerr << "hxmrd: " << message << "\n" << "Try 'hxmrd --help'.\n";
  return 2;
}

void writeFloat(std::ostream& out, float value) {
  char buffer[32];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.write(buffer, result.ptr - buffer);
}

void writeHeader(std::ostream& out, const std::string& path, const HxMrdFile& file, bool allLabels) {
  out << "# file: " << path << "\n";
  if (file.header.blank) {
    out << "# header: blank\n";
  } else {
    out << "# total values: " << file.header.totalValues << "\n";
    out << "# channels: " << file.header.channels << "\n";
    out << "# samples: " << file.header.samples << "\n";
    out << "# fourth value: " << HxDOUBLE2STRING(file.header.fourthValue) << "\n";
  }
  out << "# labels: " << file.labels.size() << "\n";
  out << "# values per sample: " << file.valuesPerSample << "\n";
  out << "# samples in file: " << file.sampleCount << "\n";
  if (allLabels) {
    for (std::size_t i = 0; i < file.labels.size(); ++i) out << "# label " << i << ": " << file.labels[i] << "\n";
  } else {
    for (std::size_t i = file.valuesPerSample; i < file.labels.size(); ++i) {
      out << "# label without a column: " << i << ": " << file.labels[i] << "\n";
    }
  }
}

void writeCsv(std::ostream& out, const HxMrdFile& file) {
  // One label per column; columns beyond the labels get empty names.
  for (std::size_t c = 0; c < file.valuesPerSample; ++c) {
    if (c != 0) out << ',';
    if (c < file.labels.size()) out << file.labels[c];
  }
  out << '\n';
  for (std::size_t s = 0; s < file.sampleCount; ++s) {
    for (std::size_t c = 0; c < file.valuesPerSample; ++c) {
      if (c != 0) out << ',';
      writeFloat(out, file.value(s, c));
    }
    out << '\n';
  }
}
}  // namespace

int main(int argc, char** argv) {
  Mode mode = Mode::Full;
  HxMrdLoadOptions options;
  std::string input;
  std::string output;

  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "-h" || arg == "--help") {
      std::cout << kUsage;
      return 0;
    } else if (arg == "--csv") {
      mode = Mode::CsvOnly;
    } else if (arg == "--header") {
      mode = Mode::HeaderOnly;
    } else if (arg == "--channels" || arg == "-o") {
      if (i + 1 >= argc) return usageError(arg + " needs a value");
      const std::string value = argv[++i];
      if (arg == "-o") {
        output = value;
      } else if (!HxSTRING2UINT(value, options.valuesPerSample) || options.valuesPerSample == 0) {
        return usageError("--channels needs a whole number above 0, not '" + value + "'");
      }
    } else if (!arg.empty() && arg[0] == '-') {
      return usageError("unknown option '" + arg + "'");
    } else if (input.empty()) {
      input = arg;
    } else {
      return usageError("one MRD file at a time");
    }
  }
  if (input.empty()) return usageError("no MRD file given");

  HxMrdFile file;
  std::string error;
  if (!hxLoadMrdFile(input, options, file, error)) {
    std::cerr << "hxmrd: error: " << input << ": " << error << "\n";
    return 1;
  }
  for (const std::string& warning : file.warnings) std::cerr << "hxmrd: warning: " << input << ": " << warning << "\n";

  std::ofstream fileOut;
  if (!output.empty()) {
    fileOut.open(output);
    if (!fileOut) {
      std::cerr << "hxmrd: error: cannot write " << output << "\n";
      return 1;
    }
  }
  std::ostream& out = output.empty() ? std::cout : fileOut;
  if (mode != Mode::CsvOnly) writeHeader(out, input, file, mode == Mode::HeaderOnly);
  if (mode != Mode::HeaderOnly) writeCsv(out, file);
  out.flush();
  if (!out) {
    std::cerr << "hxmrd: error: writing the output failed\n";
    return 1;
  }
  return 0;
}
