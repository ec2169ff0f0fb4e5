#pragma once
/// \file
/// HxFirstPositions: the position of the first entry of each key in a list, kept beside it.

#include <unordered_map>

#include "framework/HxTypes.h"

/// The position of the first entry of each key in a list of sub-captures (link captures by
/// identifier, end-effector captures by index), kept beside the list while it is built, so
/// that a look-up does not walk it. Answers are those of walking the list from its start.
///
/// The owner reports what it appends (`appended`) and any other change of the list or of its
/// keys (`forget`); the positions are then rebuilt from the list on the next look-up. A copy or
/// an assignment starts with nothing kept.
template <class Key>
class HxFirstPositions {
 public:
  /// Nothing kept.
  HxFirstPositions() = default;
  /// Starts with nothing kept: what is kept describes the source's list.
  HxFirstPositions(const HxFirstPositions&) noexcept {}
  /// Starts with nothing kept, and so does `other`, whose list goes with it.
  HxFirstPositions(HxFirstPositions&& other) noexcept { other.forget(); }
  /// Forgets what is kept.
  HxFirstPositions& operator=(const HxFirstPositions&) {
    forget();
    return *this;
  }

  /// The list changed in some other way than by appending: rebuilt on the next look-up.
  void forget() { kept_ = false; }
  /// An entry of `key` was appended at `position`; an earlier entry of the key stays the first.
  void appended(const Key& key, HxU32 position) {
    if (kept_) positions_.emplace(key, position);
  }
  /// Position of the first entry of `list` whose key (`keyOf(entry)`) is `key`; false (position
  /// untouched) when there is none.
  template <class List, class KeyOf>
  bool find(const List& list, KeyOf keyOf, const Key& key, unsigned int& position) {
    if (!kept_) {
      positions_.clear();
      for (HxU32 p = 0; p < list.size(); ++p) positions_.emplace(keyOf(list[p]), p);
      kept_ = true;
    }
    const auto found = positions_.find(key);
    if (found == positions_.end()) return false;
    position = found->second;
    return true;
  }

 private:
  bool kept_ = false;
  std::unordered_map<Key, HxU32> positions_;
};
