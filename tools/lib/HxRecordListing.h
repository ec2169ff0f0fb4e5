#pragma once
// HxRecordListing: what hxrecord prints instead of recording: its versions (--version), the
// quantity types (--list-types) and the columns a recording would have (--check).

#include <iosfwd>
#include <string>

#include "tools/lib/HxRecordSession.h"

/// "hxrecord <v>", "libhxSimulationAnalysis <v>" and "MuJoCo <v>", one line each.
std::string hxRecordVersionText();

/// The table of every quantity type: token (local name), level, number of columns, whether a
/// capture configuration file can name it, what it needs from the simulation, description and
/// units ("rad | m": of a revolute | prismatic joint), with a legend.
void hxWriteQuantityTypes(std::ostream& out);

/// What a prepared `session` would record: model, capture configuration, files, samples, then
/// one line per data column (index, label, unit, whether the mode computes it).
void hxWriteCheckReport(const HxRecordSession& session, std::ostream& out);
