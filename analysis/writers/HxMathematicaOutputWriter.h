#pragma once
/// \file
/// HxMathematicaOutputWriter: the recording as a Mathematica notebook.

#include <string>
#include <vector>

#include "analysis/writers/HxBaseOutputWriter.h"

/// Writes the recording as a Mathematica notebook ("Mathematica", ".nb", text mode; front end
/// 5.2) of three input cells: the first assigns the table (label row, then one row per sample)
/// to `Data`; the second defines, per column, a variable named after its label (":", blank,
/// "-", "[" and "]" removed) holding that column's samples; the third sets `variables` to the
/// label row.
///
/// Header (`initialize`, up to and including the opening of `Data`) and trailer (`finalize`:
/// the end of the first cell, the second and third cells and the notebook options) are fixed
/// text; the contact rows come from `HxMathematicaContacts.h`. The position comments of the
/// header are fixed too and are not recomputed for the file at hand. A component's opening and
/// closing write nothing. Rows are brace lists with a blank before each separating comma:
/// `{"Time" ,"Point Path Index"}` for labels, `,{0 ,0}` for a sample, labels quoted (not
/// escaped), values bare; each row ends "}\n" (also for no strings or another type).
class HxMathematicaOutputWriter : public HxBaseOutputWriter {
  HX_XML_SERIALISABLE(HxMathematicaOutputWriter);
  HX_OUTPUT_WRITER_MEMBERS(HxMathematicaOutputWriter);

  /// The exact header text that `initialize` writes.
  static const std::string& headerText();
  /// The exact trailer text that `finalize` writes.
  static const std::string& trailerText();

 private:
  // Reused by every writeDataComponent: the component's strings and the row being built.
  mutable HxScratch<std::vector<std::string>> scratch_;
  mutable HxScratch<std::string> row_;
};
