#!/usr/bin/env bash
# Installs the Debian packages a command needs when they are missing:
#   tools/install-deps.sh [extra-package ...]
# The base set is what every build needs; commands add their own (doxygen for
# the docs, clang-tidy for the lint). Once a set is known to be present a
# stamp under build/ records it, so later calls neither query dpkg nor touch
# apt. Needs root (or sudo) only when something has to be installed, and apt
# only then: elsewhere it names what is missing and stops.
set -euo pipefail
cd "$(dirname "$0")/.."

needed=(g++ make cmake liblapack-dev libgtest-dev libbenchmark-dev "$@")
stamp="build/.deps-$(printf '%s\n' "${needed[@]}" | sort | md5sum | cut -c1-12)"
[[ -e "$stamp" ]] && exit 0

missing=()
if command -v dpkg-query >/dev/null; then
  for pkg in "${needed[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
  done
else
  echo "no dpkg here: make sure these (Debian names) are installed: ${needed[*]}" >&2
  exit 0
fi

if [[ ${#missing[@]} -gt 0 ]]; then
  if ! command -v apt-get >/dev/null; then
    echo "missing, and no apt-get to install them: ${missing[*]}" >&2
    exit 1
  fi
  sudo=""
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "run as root, or install: ${missing[*]}" >&2; exit 1; }
    sudo=sudo
  fi
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
mkdir -p build && touch "$stamp"
