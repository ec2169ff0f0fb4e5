#include "simulation/mujoco/HxMujocoExtras.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "framework/HxNumberText.h"

namespace {

// A virtual file system of the engine, emptied when it goes.
struct HxVirtualFiles {
  mjVFS vfs;
  HxVirtualFiles() { mj_defaultVFS(&vfs); }
  ~HxVirtualFiles() { mj_deleteVFS(&vfs); }
  HxVirtualFiles(const HxVirtualFiles&) = delete;
  HxVirtualFiles& operator=(const HxVirtualFiles&) = delete;
};

std::string number(double value) { return HxDOUBLE2STRING(value); }

// `text` as an XML attribute value.
std::string attribute(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// The engine's MJCF of the model it loaded last, through a private temporary file that is
// removed before this returns. Empty, with `error` set, when it cannot be had.
std::string savedModelText(const mjModel* model, std::string& error) {
  const char* directory = std::getenv("TMPDIR");
  std::string path =
      std::string(directory != nullptr && *directory != '\0' ? directory : "/tmp") + "/hxmodel-XXXXXX.xml";
  const int descriptor = ::mkstemps(path.data(), 4);
  if (descriptor < 0) {
    error = "the motors cannot be added: no temporary file for the model: " + std::string(std::strerror(errno));
    return {};
  }
  ::close(descriptor);
  char message[1024] = "";
  const int saved = mj_saveLastXML(path.c_str(), model, message, sizeof message);
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  ::unlink(path.c_str());
  if (saved == 0 || !file) {
    error = std::string("the motors cannot be added: the engine cannot save the model") +
            (message[0] != '\0' ? ": " + std::string(message) : std::string());
    return {};
  }
  return text.str();
}

// The model's joint `name` checked for a motor; false with `error` set when it cannot take one.
bool checkJoint(const mjModel* model, const HxMujocoSimulation::AddedMotor& motor, std::string& error) {
  const std::string where = "motor on joint '" + motor.joint + "': ";
  const int joint = mj_name2id(model, mjOBJ_JOINT, motor.joint.c_str());
  if (joint < 0) {
    error = where + "the model has no joint of that name";
    return false;
  }
  if (model->jnt_type[joint] != mjJNT_HINGE && model->jnt_type[joint] != mjJNT_SLIDE) {
    error = where + "only hinge and slide joints take a motor";
    return false;
  }
  for (int u = 0; u < model->nu; ++u) {
    if (model->actuator_trntype[u] == mjTRN_JOINT && model->actuator_trnid[2 * u] == joint) {
      const char* name = mj_id2name(model, mjOBJ_ACTUATOR, u);
      error = where + "the joint has an actuator already (" +
              (name != nullptr ? "'" + std::string(name) + "'" : "actuator " + std::to_string(u)) + ")";
      return false;
    }
  }
  if (!std::isfinite(motor.gear) || motor.gear == 0.0) {
    error = where + "the gear must be a finite number other than 0";
    return false;
  }
  if (!(motor.efficiency > 0.0 && motor.efficiency <= 1.0)) {
    error = where + "the efficiency must lie in (0, 1]";
    return false;
  }
  if (motor.ctrlLimited && !(std::isfinite(motor.ctrlRange[0]) && std::isfinite(motor.ctrlRange[1]) &&
                             motor.ctrlRange[0] < motor.ctrlRange[1])) {
    error = where + "the control range must be two finite numbers, the lower first";
    return false;
  }
  return true;
}

}  // namespace

bool hxMujocoAddMotors(HxMujocoModelOwner& model, const std::vector<HxMujocoSimulation::AddedMotor>& motors,
                       const std::string& fileName, std::string& error) {
  std::set<std::string> seen;
  std::string actuators = "  <actuator>\n";
  for (const HxMujocoSimulation::AddedMotor& motor : motors) {
    if (!seen.insert(motor.joint).second) {
      error = "motor on joint '" + motor.joint + "': the joint is given a motor twice";
      return false;
    }
    if (!checkJoint(model.get(), motor, error)) return false;
    // Every value is given, so that no default class of the model changes the motor.
    actuators +=
        "    <motor joint=\"" + attribute(motor.joint) + "\" gear=\"" + number(motor.gear) + "\" ctrllimited=\"" +
        (motor.ctrlLimited ? "true" : "false") + "\"" +
        (motor.ctrlLimited ? " ctrlrange=\"" + number(motor.ctrlRange[0]) + " " + number(motor.ctrlRange[1]) + "\""
                           : std::string()) +
        " user=\"" + number(motor.efficiency) + "\"/>\n";
  }
  actuators += "  </actuator>\n";
  std::string text = savedModelText(model.get(), error);
  if (text.empty()) return false;
  const std::size_t end = text.rfind("</mujoco>");
  if (end == std::string::npos) {
    error = "the motors cannot be added: the engine saved no MJCF model";
    return false;
  }
  text.insert(end, (model->nuser_actuator < 1 ? "  <size nuser_actuator=\"1\"/>\n" : "") + actuators);

  // Loaded as a file beside the original, so that its meshes and textures are found there.
  const std::size_t slash = fileName.rfind('/');
  const std::string name =
      (slash == std::string::npos ? std::string() : fileName.substr(0, slash + 1)) + "hxmodel-with-motors.xml";
  auto files = std::make_unique<HxVirtualFiles>();
  if (mj_makeEmptyFileVFS(&files->vfs, name.c_str(), static_cast<int>(text.size()) + 1) != 0) {
    error = "the motors cannot be added: no room for the model text";
    return false;
  }
  std::memcpy(files->vfs.filedata[mj_findFileVFS(&files->vfs, name.c_str())], text.c_str(), text.size() + 1);
  char message[1024] = "";
  HxMujocoModelOwner withMotors(mj_loadXML(name.c_str(), &files->vfs, message, sizeof message));
  if (!withMotors) {
    error = "the motors cannot be added: " + std::string(message);
    return false;
  }
  model = std::move(withMotors);
  return true;
}

std::vector<std::string> hxMujocoUnmatchedPathSites(const mjModel* model, const HxMujocoLayouts& layouts) {
  const std::string prefix = HxMujocoNames::kPathPointPrefix;
  std::vector<std::string> unmatched;
  for (int site = 0; site < model->nsite; ++site) {
    const char* found = mj_id2name(model, mjOBJ_SITE, site);
    const std::string name = found != nullptr ? found : "";
    if (name.compare(0, prefix.size(), prefix) != 0) continue;
    // As the layouts take them: a world-body site "path:<root body>:<whole number>".
    bool matched = false;
    for (const auto& layout : layouts) {
      const std::string own = prefix + layout->name + ":";
      if (model->site_bodyid[site] != 0 || name.size() <= own.size() || name.compare(0, own.size(), own) != 0) continue;
      char* end = nullptr;
      std::strtol(name.c_str() + own.size(), &end, 10);
      matched = matched || *end == '\0';
    }
    if (!matched) unmatched.push_back(name);
  }
  return unmatched;
}
