// HxRecordCaptureAll: --capture-all's capture configuration, --formats' writer list and
// --write-capture's file.

#include "tools/lib/HxRecordCaptureAll.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "analysis/types/HxDataCaptureLevel.h"
#include "analysis/types/HxQuantityCatalogue.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlWriter.h"
#include "tools/lib/HxRecordSession.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

namespace fs = std::filesystem;

// The order of examples/config/default_capture.xml; a type not named here follows in the
// catalogue's order.
const char* const kOrder[] = {
    "basePositionDataCaptureType",
    "baseVelocityDataCaptureType",
    "baseAccelerationDataCaptureType",
    "centerOfMassDataCaptureType",
    "manipulatorPowerDataCaptureType",
    "jointPositionDataCaptureType",
    "jointVelocityDataCaptureType",
    "jointAccelerationDataCaptureType",
    "jointTorqueDataCaptureType",
    "controlOutputJointVelocityDataCaptureType",
    "controlTorqueDataCaptureType",
    "motorPowerDataCaptureType",
    "externalForceDataCaptureType",
    "structuralForceDataCaptureType",
    "endEffectorPlacementDataCaptureType",
    "endEffectorVelocityDataCaptureType",
    "endEffectorAccelerationDataCaptureType",
    "reachTargetDataCaptureType",
};

std::size_t rank(const HxQuantityInfo& info) {
  const auto* found = std::find(std::begin(kOrder), std::end(kOrder), info.name);
  return static_cast<std::size_t>(found - std::begin(kOrder));
}

// The types --capture-all takes in the simulation's mode, in their order.
std::vector<const HxQuantityInfo*> supportedTypes(const HxSystemSimulation& simulation) {
  std::vector<const HxQuantityInfo*> types;
  for (const HxQuantityInfo& info : hxQuantityCatalogue()) {
    if (!info.readableFromFile) continue;
    if (info.needsDynamics && !simulation.dynamicsEnabled()) continue;

    if (info.needsPowerData && !simulation.powerDataAvailable()) continue;
    types.push_back(&info);
  }
  std::stable_sort(types.begin(), types.end(),
                   [](const HxQuantityInfo* a, const HxQuantityInfo* b) { return rank(*a) < rank(*b); });
  return types;
}

}  // namespace

void hxCaptureAll(const HxMujocoSimulation& simulation, HxSystemDataCapture& capture) {
  capture.removeAllDataCaptureTypes();
  capture.setLabel(std::string("every quantity the model supports in ") +
                   (simulation.dynamicsEnabled() ? "dynamic" : "kinematic") + " mode");
  const std::vector<const HxQuantityInfo*> types = supportedTypes(simulation);
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m) {
    const HxIndividualManipulator& manipulator = simulation.manipulators()[m];
    for (const HxQuantityInfo* info : types) {
      if (info->level == HxDataCaptureLevel::Manipulator) capture.addManipulatorDataCaptureType(m, info->token);
    }
    for (HxU32 p = 0; p < manipulator.numberOfLinks(); ++p) {
      const HxLink* link = manipulator.link(p);
      if (link == nullptr) continue;
      const bool motor =
          link->index() < manipulator.jointCount() && manipulator.jointDrive(link->index()).powerConverter() != nullptr;
      for (const HxQuantityInfo* info : types) {
        if (info->level != HxDataCaptureLevel::Link) continue;
        if (info->token == HxSimAnalysis::HxMotorPowerDataCaptureTypeToken && !motor) continue;
        capture.addLinkDataCaptureType(m, link->identifier(), info->token);
      }
    }
    for (HxU32 e = 0; e < manipulator.numberOfEndEffectors(); ++e) {
      for (const HxQuantityInfo* info : types) {
        if (info->level == HxDataCaptureLevel::EndEffector) capture.addEndEffectorDataCaptureType(m, e, info->token);
      }
    }
  }
}

HxFormatsWriterList hxFormatsWriterList(const std::vector<std::string>& formats) {
  static const std::pair<const char*, const char*> kWriters[] = {
      {"csv", "textOutputWriter"}, {"xml", "xmlOutputWriter"},        {"mrd", "mrdOutputWriter"},
      {"m", "matlabOutputWriter"}, {"nb", "mathematicaOutputWriter"}, {"h5", "hdf5OutputWriter"}};
  HxFormatsWriterList list{"--formats", ""};
  std::string writers;
  for (std::size_t i = 0; i < formats.size(); ++i) {
    list.name += (i == 0 ? " " : ",") + formats[i];
    for (const auto& [format, writer] : kWriters) {
      if (formats[i] == format) writers += "  <sm:" + std::string(writer) + "/>\n";
    }
  }
  list.text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<sm:outputWriterVector xmlns:sm=\"" +
              HxSimAnalysis::ns.token() + "\" count=\"" + std::to_string(formats.size()) + "\">\n" + writers +
              "</sm:outputWriterVector>\n";
  return list;
}

HxBoolean hxWriteCaptureFile(const HxSystemDataCapture& capture, const std::string& file, const std::string& about,
                             const std::vector<std::string>& taken, std::string& error) {
  std::error_code code;
  if (fs::is_directory(file, code)) {
    error = "cannot write the capture configuration to '" + file + "': it is a directory";
    return false;
  }
  const fs::path target = fs::weakly_canonical(file, code);
  for (const std::string& other : taken) {
    std::error_code otherCode;
    const bool same = (fs::exists(file, code) && fs::exists(other, otherCode) && fs::equivalent(file, other, code)) ||
                      (!target.empty() && target == fs::weakly_canonical(other, otherCode));
    if (same) {
      error = "cannot write the capture configuration to '" + file + "': it is '" + other +
              "', which this run reads or writes; choose another file for --write-capture";
      return false;
    }
  }
  errno = 0;
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (out) {
    HxXmlWriter writer(about, out);
    writer.writeObject(capture);
    out << "\n";
    out.close();
  }
  if (!out) {
    const int reason = errno;
    error = "cannot write the capture configuration to '" + file +
            "': " + (reason != 0 ? std::strerror(reason) : "the write failed");
    return false;
  }
  return true;
}

HxBoolean hxWriteSessionCapture(const HxRecordSession& session, std::string& error) {
  const HxRecordOptions& options = session.options();
  std::vector<std::string> taken;
  for (const std::string* input :
       {&options.modelFile, &options.captureFile, &options.writersFile, &options.sceneFile, &options.plotDisplay}) {
    if (!input->empty()) taken.push_back(*input);
  }
  for (HxU32 i = 0; i < session.writers().size(); ++i) {
    taken.push_back(options.outputBase + session.writers()[i].fileExtension());
  }
  const std::string about =
      "Capture configuration saved by hxrecord (" +
      (options.captureAll ? std::string("every quantity the model supports") : session.captureName()) + ") for " +
      session.modelName() + "; record with it: hxrecord -c FILE";
  return hxWriteCaptureFile(session.capture(), options.writeCaptureFile, about, taken, error);
}
