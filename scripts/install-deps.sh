#!/usr/bin/env bash
# Installs what the project needs on Debian 12, with apt-get. Safe to run repeatedly; uses sudo
# only when not already root.
#   scripts/install-deps.sh run    what building and running hxrecord needs
#   scripts/install-deps.sh        everything: also the tests, benchmarks, API reference and packages
set -euo pipefail

# Building the libraries and the tools (CLI11 parses their command lines, nlohmann-json writes and
# reads the recordings' manifests, Nettle gives the SHA-256 of a recording's inputs in its
# manifest, HDF5 is the format of the sixth writer); the Python package draws the plots (numpy,
# pandas, matplotlib) and hxsweep reads sweep files (PyYAML) and fills model templates (Jinja2).
run_packages=(g++ cmake ninja-build pkg-config libxml2-dev libmujoco-dev libcli11-dev nlohmann-json3-dev
  nettle-dev libhdf5-dev python3 python3-numpy python3-pandas python3-matplotlib python3-yaml python3-jinja2)
# The tests read the recordings with the tools users read them with (Python, h5py, GNU Octave,
# xmllint), build the API reference (Doxygen) and the Debian packages (dpkg-dev, file, lintian,
# help2man for the manual pages); clang-format checks the layout of the C++ files; clang and
# its runtime libraries (libFuzzer, the sanitizers) build and run the fuzz targets; hxsweep's
# tests run sweeps on a Dask cluster and on a single-node Slurm cluster (with munge) they start.
test_packages=(
  libgtest-dev libgmock-dev libbenchmark-dev
  libxml2-utils octave-common octave python3-h5py python3-pytest python3-setuptools python3-venv python3-pip
  doxygen dpkg-dev file lintian help2man clang-format clang libclang-rt-14-dev
  python3-distributed slurmctld slurmd slurm-client munge)

packages=("${run_packages[@]}")
case "${1:-all}" in
  run) ;;
  all) packages+=("${test_packages[@]}") ;;
  *) echo "usage: $0 [run|all]" >&2; exit 2 ;;
esac

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
