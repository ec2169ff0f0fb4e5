// HxMrdCommand: hxmrd's command line, parsed by HxCommandLine, and its output.

#include "tools/lib/HxMrdCommand.h"

#include <sys/stat.h>

#include <charconv>
#include <exception>
#include <fstream>
#include <new>
#include <ostream>

#include "framework/HxNumberText.h"
#include "tools/lib/HxCommandLine.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");
}  // namespace

const std::string& hxMrdUsage() {
  static const std::string usage =
      "Usage: hxmrd [options] FILE.mrd\n"
      "\n"
      "Prints an MRD recording: its header fields as '#' comment lines, then its samples as CSV\n"
      "(the label row, then one row per sample). Each value is printed as the shortest text that\n"
      "reads back to exactly the 32-bit float stored in the file. The samples are read as they\n"
      "are printed, never held, so a file of any size can be read; --header reads only the\n"
      "header and the labels unless the values per sample must be found from the samples.\n"
      "FILE must be a regular file (not a directory, device, FIFO or socket).\n"
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
      "     number of labels less the empty labels at the end (disabled columns), if every\n"
      "     whole sample then starts with a non-decreasing time and a whole path-point index;\n"
      "     if not, the one count from 2 to the number of labels that divides the data and\n"
      "     gives every sample such a time and index;\n"
      "  5. when no count of 4 fits and divides the data (a file cut short, e.g. a recording\n"
      "     killed while it ran): the header's channel count, else the one count that gives\n"
      "     whole samples such a time and index.\n"
      "Every whole sample is printed; the bytes of a partial last sample are dropped.\n"
      "Every such recovery is reported on standard error as a warning.\n"
      "\n"
      "Exit status: 0 on success (warnings and a dropped partial sample included); 1 when the\n"
      "file cannot be read (not a regular file, say) or nothing can be recovered (a header\n"
      "neither blank nor four numbers, a truncated or malformed label line, data that fits no\n"
      "layout or several), or the output cannot be written; 2 on a usage error.\n";
  return usage;
}

HxBoolean hxParseMrdOptions(const std::vector<std::string>& arguments, HxMrdCommandOptions& options,
                            std::string& error) {
  using Content = HxMrdCommandOptions::Content;
  HxCommandLine line(HxCommandLineWording::oneFile("one MRD file at a time"));
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

void hxWriteMrdHeader(std::ostream& out, const std::string& path, const HxMrdReader& reader, bool allLabels) {
  const HxMrdHeader& header = reader.header();
  const std::vector<std::string>& labels = reader.labels();
  out << "# file: " << path << "\n";
  if (header.blank) {
    out << "# header: blank\n";
  } else {
    out << "# total values: " << header.totalValues << "\n";
    out << "# channels: " << header.channels << "\n";
    out << "# samples: " << header.samples << "\n";
    out << "# fourth value: " << HxDOUBLE2STRING(header.fourthValue) << "\n";
  }
  out << "# labels: " << labels.size() << "\n";
  out << "# values per sample: " << reader.valuesPerSample() << "\n";
  out << "# samples in file: " << reader.sampleCount() << "\n";
  if (allLabels) {
    for (std::size_t i = 0; i < labels.size(); ++i) out << "# label " << i << ": " << labels[i] << "\n";
  } else {
    for (std::size_t i = reader.valuesPerSample(); i < labels.size(); ++i) {
      out << "# label without a column: " << i << ": " << labels[i] << "\n";
    }
  }
}

HxBoolean hxWriteMrdCsv(std::ostream& out, HxMrdReader& reader, std::string& error) {
  // One label per column; columns beyond the labels get empty names.
  const std::vector<std::string>& labels = reader.labels();
  const HxU32 valuesPerSample = reader.valuesPerSample();
  for (std::size_t c = 0; c < valuesPerSample; ++c) {
    if (c != 0) out << ',';
    if (c < labels.size()) out << labels[c];
  }
  out << '\n';
  // The rows are made in a block of text written whenever it fills.
  constexpr std::size_t kBlock = 1 << 16, kNumber = 32;
  std::vector<float> values(4096);
  std::vector<char> text(kBlock + kNumber + 1);
  char* const begin = text.data();
  char* end = begin;
  HxU32 column = 0;
  for (;;) {
    const std::size_t count = reader.read(values.data(), values.size(), error);
    if (count == 0) break;
    for (std::size_t i = 0; i < count; ++i) {
      end = std::to_chars(end, end + kNumber, values[i]).ptr;
      column = column + 1 == valuesPerSample ? 0 : column + 1;
      *end++ = column == 0 ? '\n' : ',';
      if (end - begin >= static_cast<std::ptrdiff_t>(kBlock)) {
        out.write(begin, end - begin);
        end = begin;
        if (!out) return true;
      }
    }
  }
  out.write(begin, end - begin);
  return error.empty();
}

namespace {
int runMrd(const std::vector<std::string>& arguments, std::ostream& standardOut, std::ostream& err,
           std::string& input) {
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

  input = options.input;
  if (!options.output.empty()) {
    // The samples are read while the output is written: it must not be the file being read.
    struct stat inputStatus {};
    struct stat outputStatus {};
    if (::stat(options.input.c_str(), &inputStatus) == 0 && ::stat(options.output.c_str(), &outputStatus) == 0 &&
        inputStatus.st_dev == outputStatus.st_dev && inputStatus.st_ino == outputStatus.st_ino) {
      err << "hxmrd: error: " << options.output << ": is the file being read\n";
      return 1;
    }
  }
  HxMrdReader reader;
  if (!reader.open(options.input, options.load, error)) {
    err << "hxmrd: error: " << options.input << ": " << error << "\n";
    return 1;
  }
  for (const std::string& warning : reader.warnings())
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
    hxWriteMrdHeader(out, options.input, reader, options.content == HxMrdCommandOptions::Content::HeaderOnly);
  }
  if (options.content != HxMrdCommandOptions::Content::HeaderOnly && !hxWriteMrdCsv(out, reader, error)) {
    out.flush();
    err << "hxmrd: error: " << options.input << ": " << error << "\n";
    return 1;
  }
  out.flush();
  if (!out) {
    err << "hxmrd: error: writing the output failed\n";
    return 1;
  }
  return 0;
}
}  // namespace

int hxMrdMain(const std::vector<std::string>& arguments, std::ostream& standardOut, std::ostream& err) {
  std::string input;
  auto fail = [&err, &input](const std::string& what) {
    err << "hxmrd: error: " << (input.empty() ? std::string() : input + ": ") << what << "\n";
    return 1;
  };
  try {
    return runMrd(arguments, standardOut, err, input);
  } catch (const std::bad_alloc&) {
    return fail("not enough memory");
  } catch (const std::exception& exception) {
    return fail(std::string("unexpected failure: ") + exception.what());
  } catch (...) {
    return fail("unexpected failure");
  }
}
