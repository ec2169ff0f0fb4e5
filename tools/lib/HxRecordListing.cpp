// HxRecordListing: --version, --list-types and --check's report.

#include "tools/lib/HxRecordListing.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <vector>

#include "analysis/capture/HxColumnDescription.h"
#include "analysis/types/HxDataCaptureLevel.h"
#include "analysis/types/HxQuantityCatalogue.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "tools/lib/HxRecordText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Rows of text cells written with every column as wide as its widest cell (the last one unpadded).
void writeTable(const std::vector<std::vector<std::string>>& rows, std::ostream& out, std::size_t rightAligned = 0) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  }
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c) {
      const std::string padding(widths[c] - row[c].size(), ' ');
      if (c < rightAligned) {
        line += padding + row[c];
      } else {
        line += row[c] + (c + 1 < row.size() ? padding : std::string());
      }
      if (c + 1 < row.size()) line += "  ";
    }
    out << line << "\n";
  }
}

const char* levelName(HxU32 level) {
  switch (level) {
    case HxDataCaptureLevel::Manipulator:
      return "manipulator";
    case HxDataCaptureLevel::Link:
      return "link";
    case HxDataCaptureLevel::EndEffector:
      return "end effector";
    default:
      return "-";
  }
}

// The distinct units of a type's columns in column order; a joint quantity's as "rad | m".
std::string unitsOf(const HxQuantityInfo& info) {
  std::vector<std::string> units;
  for (HxU32 c = 0; c < info.columnLabels.size(); ++c) {
    const std::string revolute = info.unit(c, HxJointKind::Revolute);
    const std::string prismatic = info.unit(c, HxJointKind::Prismatic);
    const std::string unit = revolute == prismatic ? revolute : revolute + " | " + prismatic;
    if (!unit.empty() && std::find(units.begin(), units.end(), unit) == units.end()) units.push_back(unit);
  }
  std::string text;
  for (const std::string& unit : units) text += (text.empty() ? "" : ", ") + unit;
  return text.empty() ? "-" : text;
}

}  // namespace

std::string hxRecordVersionText() {
  return std::string("hxrecord ") + HX_PROJECT_VERSION + "\nlibhxSimulationAnalysis " + HX_PROJECT_VERSION +
         "\nMuJoCo " + HxMujocoSimulation::engineVersion() + "\n";
}

void hxWriteQuantityTypes(std::ostream& out) {
  const std::vector<HxQuantityInfo>& catalogue = hxQuantityCatalogue();
  std::vector<std::vector<std::string>> rows = {{"Token", "Level", "Columns", "File", "Needs", "Description", "Units"}};
  for (const HxQuantityInfo& info : catalogue) {
    rows.push_back({info.name, levelName(info.level), std::to_string(info.columnLabels.size()),
                    info.readableFromFile ? "yes" : "no",
                    info.needsPowerData  ? "dynamics, power"
                    : info.needsDynamics ? "dynamics"
                                         : "-",
                    info.description, unitsOf(info)});
  }
  out << "Quantity types (" << catalogue.size() << "), tokens in the namespace " << HxSimAnalysis::ns.token()
      << ":\n\n";
  writeTable(rows, out);
  out << "\nFile: whether a capture configuration file can name the type (as <sm:token/>).\n"
         "Needs: what the simulation must compute for the type's values (in kinematic mode there are no\n"
         "dynamics and no power data); without it the columns hold zeros.\n"
         "Units: SI; \"rad | m\" is the unit for a revolute | prismatic joint, \"1\" dimensionless\n"
         "(quaternion components (w, x, y, z), flags, counts).\n";
}

void hxWriteCheckReport(const HxRecordSession& session, std::ostream& out) {
  const HxMujocoSimulation& simulation = session.simulation();
  const HxRecordOptions& options = session.options();
  const std::vector<HxColumnDescription> columns = hxDescribeColumns(session.capture(), &simulation);
  const auto notComputed = std::count_if(columns.begin(), columns.end(), [](const auto& c) { return !c.computed; });
  const char* mode = simulation.mode() == HxMujocoSimulation::Mode::Dynamic ? "dynamic" : "kinematic";
  std::string manipulators;
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    manipulators += (m == 0 ? "" : ", ") + simulation.manipulatorName(m);
  }
  std::string files;
  for (HxU32 i = 0; i < session.writers().size(); ++i) {
    files += (i == 0 ? "" : ", ") + options.outputBase + session.writers()[i].fileExtension();
  }
  const HxU32 samples = session.totalSteps() / session.stepsPerSample() + 1;
  out << "Check passed; nothing was recorded.\n"
      << "Model:    " << session.modelName() << " (" << simulation.numberOfManipulators()
      << " manipulator(s): " << manipulators << ")\n"
      << (options.sceneFile.empty() ? std::string() : "Scene:    " + options.sceneFile + "\n")
      << "Capture:  " << session.captureName() << "\n"
      << "Files:    " << files << "\n"
      << "Samples:  " << samples << ", one every " << hxSecondsText(session.stepsPerSample() * simulation.timestep())
      << " s over " << hxSecondsText(session.totalSteps() * simulation.timestep()) << " s, " << mode << " mode\n"
      << "Columns:  " << columns.size() << ", of which " << notComputed << " not computed in " << mode
      << " mode (they would hold zeros)\n\n";
  std::vector<std::vector<std::string>> rows = {{"Index", "Label", "Unit", "Computed"}};
  for (std::size_t i = 0; i < columns.size(); ++i) {
    rows.push_back({std::to_string(i), columns[i].label, columns[i].unit.empty() ? "-" : columns[i].unit,
                    columns[i].computed ? "yes" : "no"});
  }
  writeTable(rows, out, 1);
}
