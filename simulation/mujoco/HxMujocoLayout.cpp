#include "simulation/mujoco/HxMujocoLayout.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "simulation/mujoco/HxMujocoConversions.h"

namespace {

const char* objectName(const mjModel* model, int type, int id) {
  const char* name = mj_id2name(model, type, id);
  return name ? name : "";
}

bool startsWith(const char* text, const char* prefix) { return std::strncmp(text, prefix, std::strlen(prefix)) == 0; }

// Path-point sites "path:<root body>:<n>" of one manipulator, in increasing n.
void collectPathPoints(const mjModel* model, const mjData* data, HxMujocoManipulatorLayout& layout) {
  const std::string prefix = std::string(HxMujocoNames::kPathPointPrefix) + layout.name + ":";
  std::vector<std::pair<long, int>> found;
  for (int site = 0; site < model->nsite; ++site) {
    const char* name = objectName(model, mjOBJ_SITE, site);
    if (model->site_bodyid[site] != 0 || !startsWith(name, prefix.c_str())) continue;
    char* end = nullptr;
    const long number = std::strtol(name + prefix.size(), &end, 10);
    if (end == name + prefix.size() || *end != '\0') continue;
    found.emplace_back(number, site);
  }
  std::sort(found.begin(), found.end());
  for (const auto& [number, site] : found) {
    (void)number;
    layout.pathPoints.push_back(HxMujocoConvert::sitePlacement(data, site));
  }
}

void addEndEffector(HxMujocoManipulatorLayout& layout, const char* name, int type, int id) {
  HxMujocoEndEffectorLayout endEffector;
  endEffector.objectType = type;
  endEffector.objectId = id;
  if (startsWith(name, HxMujocoNames::kFrameEndEffectorPrefix)) {
    endEffector.name = name + std::strlen(HxMujocoNames::kFrameEndEffectorPrefix);
  } else if (startsWith(name, HxMujocoNames::kPointEndEffectorPrefix)) {
    endEffector.name = name + std::strlen(HxMujocoNames::kPointEndEffectorPrefix);
    endEffector.point = true;
  } else {
    return;
  }
  layout.endEffectors.push_back(endEffector);
}

}  // namespace

double hxMujocoMotorEfficiency(const mjModel* model, int actuator) {
  if (actuator < 0 || model->nuser_actuator < 1) return 0.0;
  const double efficiency = model->actuator_user[actuator * model->nuser_actuator];
  return efficiency > 0.0 ? efficiency : 0.0;
}

HxBoolean hxMujocoBuildLayouts(const mjModel* model, const mjData* data,
                               std::vector<HxMujocoManipulatorLayout>& layouts, std::string& error) {
  layouts.clear();
  for (int root = 1; root < model->nbody; ++root) {
    if (model->body_parentid[root] != 0) continue;
    HxMujocoManipulatorLayout layout;
    layout.name = objectName(model, mjOBJ_BODY, root);
    layout.rootBody = root;

    // Bodies of a tree follow their root in body order (depth first), so the links come out
    // in tree order.
    for (int body = root; body < model->nbody; ++body) {
      if (model->body_rootid[body] != root) continue;
      const int count = model->body_jntnum[body];
      if (count == 0) continue;
      const int first = model->body_jntadr[body];
      const int type = model->jnt_type[first];
      if (type == mjJNT_FREE) {
        if (body != root || count != 1) {
          error = "body \"" + std::string(objectName(model, mjOBJ_BODY, body)) +
                  "\": a free joint is allowed only alone on the root body of a manipulator";
          return false;
        }
        layout.freeJoint = first;
        layout.freeQposAddress = model->jnt_qposadr[first];
        layout.freeDofAddress = model->jnt_dofadr[first];
        continue;
      }
      if (count != 1 || type == mjJNT_BALL) {
        error = "body \"" + std::string(objectName(model, mjOBJ_BODY, body)) + "\" carries " + std::to_string(count) +
                " joint(s) of which not all are hinge or slide; a link carries exactly one hinge or slide joint";
        return false;
      }
      layout.linkNames.emplace_back(objectName(model, mjOBJ_BODY, body));
      layout.linkBodies.push_back(body);
      layout.joints.push_back(first);
      layout.qposAddresses.push_back(model->jnt_qposadr[first]);
      layout.dofAddresses.push_back(model->jnt_dofadr[first]);
      int actuator = -1;
      for (int u = 0; u < model->nu && actuator < 0; ++u) {
        if (model->actuator_trntype[u] == mjTRN_JOINT && model->actuator_trnid[2 * u] == first) actuator = u;
      }
      layout.actuators.push_back(actuator);
    }
    if (layout.joints.empty()) continue;

    // End effectors: sites of the tree in model order, then bodies (URDF links).
    for (int site = 0; site < model->nsite; ++site) {
      if (model->body_rootid[model->site_bodyid[site]] == root) {
        addEndEffector(layout, objectName(model, mjOBJ_SITE, site), mjOBJ_SITE, site);
      }
    }
    for (int body = root; body < model->nbody; ++body) {
      if (model->body_rootid[body] == root)
        addEndEffector(layout, objectName(model, mjOBJ_BODY, body), mjOBJ_XBODY, body);
    }
    collectPathPoints(model, data, layout);
    layouts.push_back(std::move(layout));
  }
  return true;
}
