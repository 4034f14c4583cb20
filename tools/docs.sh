#!/usr/bin/env bash
# Builds the HTML reference of the public headers into build/docs with the
# Doxyfile at the root, and fails when doxygen has anything to say: an
# undocumented export or argument is a broken reference, not a detail.
# Installs Debian's doxygen when it is missing (needs root, or sudo).
set -euo pipefail
cd "$(dirname "$0")/.."

if ! command -v doxygen >/dev/null; then
  echo "installing: doxygen"
  sudo=""
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "run as root, or install: doxygen" >&2; exit 1; }
    sudo=sudo
  fi
  command -v apt-get >/dev/null || { echo "no apt-get here: install doxygen by hand" >&2; exit 1; }
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends doxygen
fi

mkdir -p build/docs
log=build/docs/warnings.log
# QUIET keeps the progress quiet; warnings go to stderr, kept in a log and
# shown. FAIL_ON_WARNINGS makes doxygen's own status fail too, but only the
# log tells whether any warning was printed at all.
status=0
doxygen Doxyfile 2>"$log" || status=$?
cat "$log" >&2
if [[ $status -ne 0 || -s "$log" ]]; then
  echo "doxygen: $(grep -c . "$log") line(s) of warnings, see $log" >&2
  exit 1
fi
echo "reference: build/docs/html/index.html"
