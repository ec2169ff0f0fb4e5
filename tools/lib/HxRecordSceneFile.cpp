// HxRecordSceneFile: the scene side file, read with nlohmann-json, and the scene's warnings.

#include "tools/lib/HxRecordSceneFile.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "simulation/HxMath.h"
#include "tools/lib/HxRecordText.h"

namespace {
// Version of this source unit, built at load time.
[[maybe_unused]] const std::string HxVersion("3.0.0");

// Keys stay in the order of the file, so that the paths keep it.
using Json = nlohmann::ordered_json;

// A fault of the file's form, thrown to hxReadRecordScene with the place it was found.
struct Fault {
  std::string message;
};

[[noreturn]] void fault(const std::string& place, const std::string& what) { throw Fault{place + ": " + what}; }

const char* kindOf(const Json& value) {
  switch (value.type()) {
    case Json::value_t::object:
      return "an object";
    case Json::value_t::array:
      return "a list";
    case Json::value_t::string:
      return "a string";
    case Json::value_t::boolean:
      return "true or false";
    case Json::value_t::null:
      return "null";
    default:
      return "a number";
  }
}

void expect(const Json& value, bool good, const std::string& place, const char* expected) {
  if (!good) fault(place, std::string("expected ") + expected + ", found " + kindOf(value));
}

// The keys of `object` must be among `known`.
void checkKeys(const Json& object, const std::string& place, std::initializer_list<const char*> known) {
  for (const auto& [key, value] : object.items()) {
    bool found = false;
    std::string list;
    for (const char* name : known) {
      found = found || key == name;
      list += (list.empty() ? "'" : ", '") + std::string(name) + "'";
    }
    if (!found) fault(place, "unknown key " + hxQuotedForMessage(key) + "; known keys: " + list);
  }
}

double numberAt(const Json& value, const std::string& place) {
  expect(value, value.is_number(), place, "a number");
  const double number = value.get<double>();
  if (!std::isfinite(number)) fault(place, "expected a finite number");
  return number;
}

// A list of `size` numbers.
std::vector<double> numbersAt(const Json& value, const std::string& place, std::size_t size) {
  const std::string expected = "a list of " + std::to_string(size) + " numbers";
  expect(value, value.is_array() && value.size() == size, place, expected.c_str());
  std::vector<double> numbers;
  for (std::size_t i = 0; i < size; ++i) numbers.push_back(numberAt(value[i], place + "[" + std::to_string(i) + "]"));
  return numbers;
}

HxMujocoSimulation::AddedMotor motorAt(const Json& value, const std::string& place) {
  expect(value, value.is_object(), place, "an object");
  checkKeys(value, place, {"joint", "gear", "efficiency", "ctrlrange"});
  HxMujocoSimulation::AddedMotor motor;
  if (!value.contains("joint")) fault(place, "the motor names no joint (key 'joint')");
  const Json& joint = value["joint"];
  expect(joint, joint.is_string() && !joint.get<std::string>().empty(), place + ".joint", "a joint name");
  motor.joint = joint.get<std::string>();
  if (value.contains("gear")) {
    motor.gear = numberAt(value["gear"], place + ".gear");
    if (motor.gear == 0.0) fault(place + ".gear", "the gear must not be 0");
  }
  if (value.contains("efficiency")) {
    motor.efficiency = numberAt(value["efficiency"], place + ".efficiency");
    if (!(motor.efficiency > 0.0 && motor.efficiency <= 1.0)) {
      fault(place + ".efficiency", "the efficiency must lie in (0, 1]");
    }
  }
  if (value.contains("ctrlrange")) {
    const std::vector<double> range = numbersAt(value["ctrlrange"], place + ".ctrlrange", 2);
    if (!(range[0] < range[1])) fault(place + ".ctrlrange", "the lower limit must come first and be below the upper");
    motor.ctrlLimited = true;
    motor.ctrlRange[0] = range[0];
    motor.ctrlRange[1] = range[1];
  }
  return motor;
}

HxEndEffectorPlacement pointAt(const Json& value, const std::string& place) {
  expect(value, value.is_object(), place, "an object");
  checkKeys(value, place, {"position", "orientation"});
  if (!value.contains("position")) fault(place, "the path point has no position (key 'position')");
  const std::vector<double> p = numbersAt(value["position"], place + ".position", 3);
  std::vector<double> q = {1.0, 0.0, 0.0, 0.0};
  if (value.contains("orientation")) q = numbersAt(value["orientation"], place + ".orientation", 4);
  const double norm = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(norm > 1e-9)) fault(place + ".orientation", "the quaternion must not be zero");
  return HxEndEffectorPlacement(HxVector(p[0], p[1], p[2]),
                                HxOrientation(q[0] / norm, q[1] / norm, q[2] / norm, q[3] / norm));
}

void readScene(const Json& root, HxRecordScene& scene) {
  expect(root, root.is_object(), "the document", "an object");
  checkKeys(root, "the document", {"motors", "pathPoints"});
  if (root.contains("motors")) {
    const Json& motors = root["motors"];
    expect(motors, motors.is_array(), "motors", "a list");
    for (std::size_t i = 0; i < motors.size(); ++i) {
      scene.extras.motors.push_back(motorAt(motors[i], "motors[" + std::to_string(i) + "]"));
    }
  }
  if (root.contains("pathPoints")) {
    const Json& paths = root["pathPoints"];
    expect(paths, paths.is_object(), "pathPoints", "an object (manipulator root body name: list of points)");
    for (const auto& [name, points] : paths.items()) {
      const std::string place = "pathPoints." + name;
      expect(points, points.is_array(), place, "a list of path points");
      HxRecordScene::Path path{name, {}};
      for (std::size_t i = 0; i < points.size(); ++i) {
        path.points.push_back(pointAt(points[i], place + "[" + std::to_string(i) + "]"));
      }
      scene.paths.push_back(std::move(path));
    }
  }
}

std::string manipulatorList(const HxMujocoSimulation& simulation) {
  std::vector<std::string> names;
  for (HxU32 m = 0; m < simulation.numberOfManipulators(); ++m)
    names.push_back("'" + simulation.manipulatorName(m) + "'");
  return hxJoinedList(names);
}

}  // namespace

HxBoolean hxReadRecordScene(const std::string& file, HxRecordScene& scene, std::string& error) {
  const std::string where = "scene file '" + file + "': ";
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    error = where + "cannot be read: " + std::strerror(errno);
    return false;
  }
  scene = HxRecordScene();
  try {
    readScene(Json::parse(in), scene);
  } catch (const Json::parse_error& parseError) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..." without its code.
    std::string text = parseError.what();
    const std::size_t code = text.find("] ");
    if (code != std::string::npos) text.erase(0, code + 2);
    error = where + hxOneLine(text);
    return false;
  } catch (const Fault& problem) {
    error = where + problem.message;
    return false;
  } catch (const std::exception& other) {
    error = where + hxOneLine(other.what());
    return false;
  }
  return true;
}

HxBoolean hxApplyRecordScenePaths(const HxRecordScene& scene, HxMujocoSimulation& simulation, const std::string& file,
                                  const std::string& modelName, std::string& error) {
  for (const HxRecordScene::Path& path : scene.paths) {
    HxU32 m = 0;
    while (m < simulation.numberOfManipulators() && simulation.manipulatorName(m) != path.manipulator) ++m;
    if (m == simulation.numberOfManipulators()) {
      error = "scene file '" + file + "': pathPoints." + path.manipulator + ": the model '" + modelName +
              "' has no manipulator whose root body is " + hxQuotedForMessage(path.manipulator) +
              "; its manipulators are " + manipulatorList(simulation);
      return false;
    }
    simulation.setPathPoints(m, path.points);
  }
  return true;
}

std::vector<std::string> hxRecordSceneWarnings(const HxMujocoSimulation& simulation) {
  std::vector<std::string> warnings;
  const HxU32 count = simulation.numberOfManipulators();
  for (const std::string& site : simulation.unmatchedPathSites()) {
    std::string owner;
    for (HxU32 m = 0; m < count; ++m) {
      const std::string prefix = "path:" + simulation.manipulatorName(m) + ":";
      if (site.compare(0, prefix.size(), prefix) == 0) owner = simulation.manipulatorName(m);
    }
    warnings.push_back(
        "site " + hxQuotedForMessage(site) + " is no path point: " +
        (owner.empty()
             ? "its name names no manipulator's root body (the manipulators are " + manipulatorList(simulation) + ")"
             : "a path point of '" + owner + "' is a world-body site named path:" + owner + ":<n>, n a whole number"));
  }
  for (HxU32 m = 0; m < count; ++m) {
    const std::string manipulator = "manipulator '" + simulation.manipulatorName(m) + "'";
    if (simulation.pathPoints(m).empty()) {
      warnings.push_back(manipulator + " has no path points: it stands still (path points are world-body sites " +
                         "path:" + simulation.manipulatorName(m) + ":<n>, or pathPoints of a scene file)");
    }
    for (HxU32 j = 0; j < simulation.manipulators()[m].jointCount(); ++j) {
      const std::string joint = "joint '" + simulation.jointName(m, j) + "' of " + manipulator;
      switch (simulation.jointActuation(m, j)) {
        case HxMujocoSimulation::JointActuation::None:
          warnings.push_back(joint + " has no actuator: in dynamic mode nothing drives it, and its motor power " +
                             "records zeros");
          break;
        case HxMujocoSimulation::JointActuation::Actuator:
          warnings.push_back(joint + " is driven by an actuator not declared as a motor (no positive first user " +
                             "value): its motor power records zeros");
          break;
        case HxMujocoSimulation::JointActuation::Motor:
          break;
      }
    }
  }
  return warnings;
}
