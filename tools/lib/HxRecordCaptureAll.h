#pragma once
// HxRecordCaptureAll: the configurations hxrecord makes from its command line (--capture-all,
// --formats) and the capture configuration it saves (--write-capture).

#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "framework/HxTypes.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

class HxRecordSession;

/// Fills `capture` with every quantity the scene loaded in `simulation` supports in its mode,
/// for every manipulator: each type a capture configuration file can name, at its level (the
/// manipulator-level types once, the link-level types for every link, the end-effector-level
/// types for every end effector), in the order of the default capture configuration. Left out
/// are the types the mode cannot compute (those that need the dynamics or the power data when
/// the simulation has none) and motor power of a joint not driven by a DC motor. So the
/// configuration reads back from a file, and every column it gives is computed.
void hxCaptureAll(const HxMujocoSimulation& simulation, HxSystemDataCapture& capture);

/// A writer list of --formats: its name in messages ("--formats csv,mrd") and its document, an
/// outputWriterVector of one writer per format (a writer's file extension without its dot), in
/// the order given.
struct HxFormatsWriterList {
  std::string name;
  std::string text;
};
HxFormatsWriterList hxFormatsWriterList(const std::vector<std::string>& formats);

/// Saves `capture` into `file` as the library serialises a capture configuration (a
/// generalCapture document that --capture reads back), headed by a comment naming `about`.
/// Refuses a file that is one of `taken` (the inputs and outputs of the run, also through
/// another name or link). Returns false with a message in `error` otherwise.
HxBoolean hxWriteCaptureFile(const HxSystemDataCapture& capture, const std::string& file, const std::string& about,
                             const std::vector<std::string>& taken, std::string& error);

/// Saves the capture configuration of the prepared `session` into the file of its
/// --write-capture option (hxWriteCaptureFile), refusing the run's inputs and outputs.
HxBoolean hxWriteSessionCapture(const HxRecordSession& session, std::string& error);
