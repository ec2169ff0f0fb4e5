#!/usr/bin/env bash
# Installs everything needed to build, test and run the project on Debian 12.
# Safe to run repeatedly; uses sudo only when not already root.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libxml2-dev libxml2-utils
  libmujoco-dev
  python3 octave-common octave
)

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
