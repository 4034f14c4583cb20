#!/usr/bin/env bash
# Installs what the build needs on Debian when it is missing. Quiet when all
# is there already; needs root (or sudo) only when something has to be installed.
set -euo pipefail

needed=(g++ make cmake liblapack-dev libgtest-dev libbenchmark-dev)
missing=()
for pkg in "${needed[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "installing: ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "run as root, or install: ${missing[*]}" >&2; exit 1; }
  sudo=sudo
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
