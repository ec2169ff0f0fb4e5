#pragma once
// The checks hxrecord makes before it records: the capture against the model, the output
// location against the writers.

#include <set>
#include <string>
#include <vector>

#include "analysis/capture/HxSystemDataCapture.h"
#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxTypes.h"
#include "simulation/mujoco/HxMujocoSimulation.h"

/// Checks that every manipulator, link and end effector that `capture` names exists in the
/// loaded `simulation`. Returns one message per missing item (empty when all exist);
/// `captureName` and `modelName` name the files in the messages.
std::vector<std::string> hxCheckCaptureAgainstModel(const HxSystemDataCapture& capture,
                                                    const HxMujocoSimulation& simulation,
                                                    const std::string& captureName, const std::string& modelName);

/// The checks of one output file's name that need no write: not written twice (`seen` collects
/// the names so far), not a directory, not one of `inputs` (also through another name or link).
/// Returns false with a message in `error` otherwise.
HxBoolean hxCheckOutputFileName(const std::string& path, const std::vector<std::string>& inputs,
                                std::set<std::string>& seen, std::string& error);

/// Makes sure every file `outputBase` + extension of `writers` can be written: creates the
/// output directory when it is missing and opens each file for appending (removing those that
/// did not exist before). Refuses a base that names a directory ("dir/", ".", "..") and files
/// that are one of `inputs` (the same file, also through another name or link). Returns false
/// with a message in `error` otherwise.
HxBoolean hxCheckOutputWritable(const std::string& outputBase, const HxOutputWriterVector& writers,
                                const std::vector<std::string>& inputs, std::string& error);
