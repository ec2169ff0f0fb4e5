#include "analysis/writers/HxMathematicaOutputWriter.h"

#include "analysis/capture/HxBaseSystemDataComponent.h"
#include "analysis/writers/HxMathematicaContacts.h"
#include "analysis/writers/HxWriterRow.h"
#include "analysis/xml/HxSimAnalysisTokens.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

std::string buildHeader() {
  using namespace HxMathematicaContacts;
  std::string text;
  text += "(************** Content-type: application/mathematica **************\n";
  text += "                     CreatedBy='Mervo'\n";
  text += "\n";
  text += "For more information on Mervo,\n";
  text += "please contact Corvina Technologies:\n";
  text += std::string("  web: ") + kMakerWeb + "\n";
  text += std::string("  e-mail: ") + kMakerEmail + "\n";
  text += std::string("  U.S. phone: ") + kMakerPhone + "\n";
  text += "\n";
  text += "For more information on Mathematica notebooks,\n";
  text += "please contact Wolfram Research:\n";
  text += std::string("  web: ") + kWolframWeb + "\n";
  text += std::string("  e-mail: ") + kWolframEmail + "\n";
  text += std::string("  U.S. phone: ") + kWolframPhone + "\n";
  text += "*******************************************************************)\n";
  text += "\n";
  text += "\n";
  text += "(*NotebookFileLineBreakTest\n";
  text += "NotebookFileLineBreakTest*)\n";
  // The position comments are fixed text; they are never recomputed for the file at hand.
  text += "(*NotebookOptionsPosition[      2080,         67]*)\n";
  text += "(*NotebookOutlinePosition[      2744,         90]*)\n";
  text += "(*  CellTagsIndexPosition[      2700,         86]*)\n";
  text += "(*WindowFrame->Normal*)\n";
  text += "\n";
  text += "\n";
  text += "Notebook[{\n";
  text += "Cell[BoxData[\n";
  text += "    \\(\\(Data = {\n";
  return text;
}

// Rows ending in " \n" carry one trailing blank, as the front end wrote them.
const char* const kTrailer =
    "};\\)\\)], \"Input\",\n"
    "CellOpen->False],\n"
    "\n"
    "Cell[BoxData[\n"
    "    \\(Do[Data[\\([1, ii]\\)] = \n"
    "        StringReplace[\n"
    "          Data[\\([1, \n"
    "              ii]\\)], {\"\\<:\\>\" -> \"\\<\\>\", \"\\< \\>\" \\[Rule] \"\\<\\>\", \"\\<-\\>\" -> \\\n"
    "\"\\<\\>\", \"\\<[\\>\" -> \"\\<\\>\", \"\\<]\\>\" -> \"\\<\\>\"}]\\ ; \n"
    "      ToExpression[\n"
    "        Data[\\([1, ii]\\)] <> \"\\<=\\>\" <> \"\\<Table[Data[[jj,\\>\" <> \n"
    "          ToString[ii] <> \"\\<]],{jj,2,Length[Data]}]\\>\"], {ii, 1, \n"
    "        Length[Data[\\([1]\\)]]}]\\)], \"Input\",\n"
    "  CellOpen->False],\n"
    "\n"
    "Cell[BoxData[\n"
    "    \\(variables = Data[\\([1]\\)]\\)], \"Input\"]\n"
    "},\n"
    "FrontEndVersion->\"5.2 for Microsoft Windows\",\n"
    "ScreenRectangle->{{0, 1280}, {0, 911}},\n"
    "WindowSize->{532, 740},\n"
    "WindowMargins->{{0, Automatic}, {Automatic, 0}},\n"
    "ShowSelection->True\n"
    "]\n"
    "\n"
    "\n"
    "\n"
    "(*******************************************************************\n"
    "End of Mathematica Notebook file.\n"
    "*******************************************************************)\n"
    "\n";
}  // namespace

HX_OUTPUT_WRITER_DEFINITIONS(HxMathematicaOutputWriter, HxSimAnalysis::HxMathematicaOutputWriterToken, "Mathematica",
                             ".nb", false)

const std::string& HxMathematicaOutputWriter::headerText() {
  static const std::string header = buildHeader();
  return header;
}

const std::string& HxMathematicaOutputWriter::trailerText() {
  static const std::string trailer(kTrailer);
  return trailer;
}

void HxMathematicaOutputWriter::initialize(const HxSystemDataVector&, std::ostream& stream) {
  const std::string& header = headerText();
  stream.write(header.data(), static_cast<std::streamsize>(header.size()));
}

void HxMathematicaOutputWriter::finalize(const HxSystemDataVector&, std::ostream& stream) {
  const std::string& trailer = trailerText();
  stream.write(trailer.data(), static_cast<std::streamsize>(trailer.size()));
}

void HxMathematicaOutputWriter::writeComponentOpening(const HxBaseSystemDataComponent&, std::ostream&) const {}
void HxMathematicaOutputWriter::writeComponentClosing(const HxBaseSystemDataComponent&, std::ostream&) const {}

void HxMathematicaOutputWriter::writeDataComponent(const HxBaseSystemDataComponent& component,
                                                   std::ostream& stream) const {
  const HxWriterRow::Fields fields(component, scratch_);
  const std::size_t n = fields.size();
  const unsigned int type = component.type();

  HxWriterRow::Row row(stream, row_, fields, 4, HxWriterRow::kCopySlack);
  char* out = row.begin();
  if (n != 0 && (type == HxSystemDataComponentKind::Capture || type == HxSystemDataComponentKind::Record)) {
    const bool labels = type == HxSystemDataComponentKind::Capture;
    // Fields of a padded block are copied as whole blocks of slack bytes.
    const bool padded = fields.block() != nullptr && fields.block()->padded;
    // The first field opens the row; a sample row also begins with the comma that separates
    // it from the row before.
    out = HxWriterRow::put(out, labels ? "{\"" : ",{");
    out = HxWriterRow::put(out, fields[0]);
    if (labels) *out++ = '"';
    // Each further field: a blank, the separating comma, then the field.
    for (std::size_t i = 1; i < n; ++i) {
      *out++ = ' ';
      *out++ = ',';
      if (labels) *out++ = '"';
      out = padded ? HxWriterRow::putPadded(out, fields[i]) : HxWriterRow::put(out, fields[i]);
      if (labels) *out++ = '"';
    }
  }
  *out++ = '}';
  *out++ = '\n';
  row.finish(out);
}
