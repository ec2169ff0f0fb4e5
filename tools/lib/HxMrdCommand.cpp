// HxMrdCommand: hxmrd's command line, parsed by HxCommandLine, and its output.

#include "tools/lib/HxMrdCommand.h"

#include <charconv>
#include <fstream>
#include <ostream>

#include "framework/HxNumberText.h"
#include "tools/lib/HxCommandLine.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

void writeFloat(std::ostream& out, float value) {
  char buffer[32];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.write(buffer, result.ptr - buffer);
}
}  // namespace

const std::string& hxMrdUsage() {
  static const std::string usage =
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
  return usage;
}

HxBoolean hxParseMrdOptions(const std::vector<std::string>& arguments, HxMrdCommandOptions& options,
                            std::string& error) {
  using Content = HxMrdCommandOptions::Content;
  HxCommandLine line({[](const std::string& name) { return name + " needs a value"; },
                      [](const std::string& name) { return name + " takes no value"; },
                      [](const std::string& name) { return "unknown option '" + name + "'"; },
                      [](const std::string&) { return std::string("one MRD file at a time"); }});
  line.addFlag({"-h", "--help"}, [&options] { options.help = true; });
  line.addFlag({"--csv"}, [&options] { options.content = Content::CsvOnly; });
  line.addFlag({"--header"}, [&options] { options.content = Content::HeaderOnly; });
  line.addValue({"--channels"}, [&options](const std::string& name, const std::string& value) {
    if (!HxSTRING2UINT(value, options.load.valuesPerSample) || options.load.valuesPerSample == 0) {
      HxCommandLine::reject(name + " needs a whole number above 0, not '" + value + "'");
    }
  });
  line.addValue({"-o"}, [&options](const std::string&, const std::string& value) { options.output = value; });
  line.addPositional("FILE", [&options](const std::string&, const std::string& value) { options.input = value; });
  if (!line.parse(arguments, error)) return false;
  if (options.input.empty() && !options.help) {
    error = "no MRD file given";
    return false;
  }
  return true;
}

void hxWriteMrdHeader(std::ostream& out, const std::string& path, const HxMrdFile& file, bool allLabels) {
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

void hxWriteMrdCsv(std::ostream& out, const HxMrdFile& file) {
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

int hxMrdMain(const std::vector<std::string>& arguments, std::ostream& standardOut, std::ostream& err) {
  HxMrdCommandOptions options;
  std::string error;
  if (!hxParseMrdOptions(arguments, options, error)) {
    err << "hxmrd: " << error << "\nTry 'hxmrd --help'.\n";
    return 2;
  }
  if (options.help) {
    standardOut << hxMrdUsage();
    return 0;
  }

  HxMrdFile file;
  if (!hxLoadMrdFile(options.input, options.load, file, error)) {
    err << "hxmrd: error: " << options.input << ": " << error << "\n";
    return 1;
  }
  for (const std::string& warning : file.warnings)
    err << "hxmrd: warning: " << options.input << ": " << warning << "\n";

  std::ofstream fileOut;
  if (!options.output.empty()) {
    fileOut.open(options.output);
    if (!fileOut) {
      err << "hxmrd: error: cannot write " << options.output << "\n";
      return 1;
    }
  }
  std::ostream& out = options.output.empty() ? standardOut : fileOut;
  if (options.content != HxMrdCommandOptions::Content::CsvOnly) {
    hxWriteMrdHeader(out, options.input, file, options.content == HxMrdCommandOptions::Content::HeaderOnly);
  }
  if (options.content != HxMrdCommandOptions::Content::HeaderOnly) hxWriteMrdCsv(out, file);
  out.flush();
  if (!out) {
    err << "hxmrd: error: writing the output failed\n";
    return 1;
  }
  return 0;
}
