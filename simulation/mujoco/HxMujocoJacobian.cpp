#include "simulation/mujoco/HxMujocoJacobian.h"

#include <algorithm>
#include <limits>

void HxMujocoJacobian::resize(const mjModel* model, const HxMujocoLayouts& layouts) {
  std::size_t widest = 1;
  for (const auto& layout : layouts) widest = std::max(widest, layout->joints.size());
  jacp_.assign(3 * static_cast<std::size_t>(model->nv), 0.0);
  jacr_.assign(3 * static_cast<std::size_t>(model->nv), 0.0);
  values_.assign(6 * widest, 0.0);
  gram_.assign(36, 0.0);
  rows_ = columns_ = 0;
}

int HxMujocoJacobian::load(const mjModel* model, const mjData* d, const HxMujocoManipulatorLayout& layout,
                           const HxMujocoEndEffectorLayout& e) {
  if (e.objectType == mjOBJ_SITE) {
    mj_jacSite(model, d, jacp_.data(), jacr_.data(), e.objectId);
  } else {
    mj_jacBody(model, d, jacp_.data(), jacr_.data(), e.objectId);
  }
  const int nv = model->nv;
  rows_ = e.point ? 3 : 6;
  columns_ = static_cast<int>(layout.joints.size());
  for (int r = 0; r < 3; ++r) {
    for (int j = 0; j < columns_; ++j) {
      values_[r * columns_ + j] = jacp_[r * nv + layout.dofAddresses[j]];
      if (rows_ == 6) values_[(r + 3) * columns_ + j] = jacr_[r * nv + layout.dofAddresses[j]];
    }
  }
  return rows_;
}

bool HxMujocoJacobian::smallestSingularValueBelow(double threshold) {
  if (threshold <= 0.0) return false;  // singular values are never negative
  // With G the smaller Gram matrix (J J' or J'J, k = min(rows, columns)), the question is "is
  // the smallest eigenvalue of G below threshold^2", decided without computing it: G -
  // threshold^2 I is positive definite exactly when it is not. MuJoCo's Cholesky factorisation
  // counts a pivot below its minimum diagonal as a lost rank; with the smallest positive
  // double as that minimum, a lost rank is a pivot that is not positive.
  const bool wide = rows_ <= columns_;
  const int k = wide ? rows_ : columns_;
  const int n = columns_;
  double* g = gram_.data();
  for (int a = 0; a < k; ++a) {
    for (int b = 0; b <= a; ++b) {
      double sum = a == b ? -threshold * threshold : 0.0;
      if (wide) {
        for (int j = 0; j < n; ++j) sum += values_[a * n + j] * values_[b * n + j];
      } else {
        for (int r = 0; r < rows_; ++r) sum += values_[r * n + a] * values_[r * n + b];
      }
      g[a * k + b] = g[b * k + a] = sum;
    }
  }
  const int rank = mju_cholFactor(g, k, std::numeric_limits<double>::min());
  // A NaN pivot counts as no lost rank but spreads to the last diagonal entry: no
  // factorisation exists then either.
  return rank < k || !(g[k * k - 1] > 0.0);
}
