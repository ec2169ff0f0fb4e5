// Writes a capture configuration to XML and reads it back: the smallest complete use of the
// library's serialisation. Usage: hx_config_roundtrip [output.xml]
#include <cstdio>
#include <fstream>
#include <string>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/xml/HxSimAnalysisTokens.h"
#include "framework/HxXmlReader.h"
#include "framework/HxXmlWriter.h"

int main(int argc, char** argv) {
  const std::string fileName = argc > 1 ? argv[1] : "capture_configuration.xml";

  // Joint positions and velocities of two links of manipulator 0, its power, and the
  // placement and reach status of its end effector 0.
  HxSystemDataCapture capture;
  capture.setLabel("example");
  capture.addManipulatorDataCaptureType(0, HxSimAnalysis::HxManipulatorPowerDataCaptureTypeToken);
  for (const char* link : {"shoulder", "elbow"}) {
    capture.addLinkDataCaptureType(0, link, HxSimAnalysis::HxJointPositionDataCaptureTypeToken);
    capture.addLinkDataCaptureType(0, link, HxSimAnalysis::HxJointVelocityDataCaptureTypeToken);
  }
  capture.addEndEffectorDataCaptureType(0, 0u, HxSimAnalysis::HxEndEffectorPlacementDataCaptureTypeToken);
  capture.addEndEffectorDataCaptureType(0, 0u, HxSimAnalysis::HxReachTargetDataCaptureTypeToken);

  {
    std::ofstream out(fileName);
    HxXmlWriter writer(fileName, out);
    if (!writer.writeObject(capture) || !out) {
      std::fprintf(stderr, "hx_config_roundtrip: cannot write %s\n", fileName.c_str());
      return 1;
    }
  }

  HxSystemDataCapture readBack;
  HxXmlReader reader;
  if (!reader.openFile(fileName) || !reader.readObject(readBack)) {
    std::fprintf(stderr, "hx_config_roundtrip: cannot read %s back\n", fileName.c_str());
    return 1;
  }
  if (!(readBack == capture)) {
    std::fprintf(stderr, "hx_config_roundtrip: %s read back different\n", fileName.c_str());
    return 1;
  }
  std::vector<std::string> labels;
  readBack.getStringElements(labels);
  std::printf("Wrote %s and read it back equal: %zu columns per sample.\n", fileName.c_str(), labels.size());
  return 0;
}
