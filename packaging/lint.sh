#!/usr/bin/env bash
# lint.sh [--tidy [FILE...]]: the formatting of all sources; with --tidy also clang-tidy over them or over some.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t sources < <(git ls-files -- '*.cpp' '*.h' '*.c')
clang-format --dry-run -Werror "${sources[@]}"
[ "${1:-}" = --tidy ] || exit 0
shift
cmake --preset dev >/dev/null
if [ $# -gt 0 ]; then units=("$@"); else mapfile -t units < <(git ls-files -- 'src/*.cpp' 'modules/*.cpp'); fi
printf '%s\0' "${units[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/dev --quiet --warnings-as-errors='*'
