#!/usr/bin/env bash
# Runs every libFuzzer harness for a while (default 20 s each) from the
# corpus kept in tests/fuzz/corpus. New inputs go to a scratch folder, so the
# kept corpus changes only when someone merges into it on purpose:
#   build/fuzz/tests/fuzz/NAME -merge=1 tests/fuzz/corpus/NAME <new inputs>
# A crash leaves its input in build/fuzz/crashes and fails the run; each one
# found becomes a test of the ordinary suite.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p build/fuzz/crashes
failed=()
for harness in build/fuzz/tests/fuzz/*_fuzz; do
  name=$(basename "$harness")
  mkdir -p "$scratch/$name" "tests/fuzz/corpus/$name"
  # Sizes are bounded by the harnesses; the memory limit only catches leaks
  # that grow without end.
  if "$harness" -max_total_time="$seconds" -rss_limit_mb=4096 -print_final_stats=1 \
       -artifact_prefix="build/fuzz/crashes/$name-" "$scratch/$name" "tests/fuzz/corpus/$name" \
       >"$scratch/$name.log" 2>&1; then
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$scratch/$name.log" | grep -o '[0-9]*$')
    echo "$name: ${runs:-?} runs in ${seconds} s, nothing found"
  else
    echo "$name: FOUND A FAULT"
    grep -E 'ERROR|runtime error|invariant broken|SUMMARY' "$scratch/$name.log" | head -5
    failed+=("$name")
  fi
done
[[ ${#failed[@]} -eq 0 ]] || { echo "fuzz: faults in ${failed[*]} (inputs in build/fuzz/crashes)" >&2; exit 1; }
echo "fuzz: clean"
