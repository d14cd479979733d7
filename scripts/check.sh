#!/usr/bin/env bash
# Looks at the sources without building them: what the build server calls, and people before they commit.
#
# usage: scripts/check.sh          the format of every C++ file in git
#        scripts/check.sh fix      puts the format right
#        scripts/check.sh tidy [REGEX]   lint, by .clang-tidy, of the sources whose paths match; takes minutes
set -euo pipefail
cd "$(dirname "$0")/.."

need() {
  command -v "$1" >/dev/null && return
  echo "scripts/check.sh needs $1: apt-get install ${2:-$1}" >&2
  exit 1
}

# Files that were deleted but are still in the index are of no interest.
sources() {
  git ls-files -z -- '*.cpp' '*.h' | while IFS= read -r -d '' file; do
    [ ! -f "$file" ] || printf '%s\0' "$file"
  done
}

case "${1:-format}" in
  format)
    need clang-format
    sources | xargs -0 -r clang-format --dry-run -Werror
    ;;
  fix)
    need clang-format
    sources | xargs -0 -r clang-format -i
    ;;
  tidy)
    need run-clang-tidy clang-tidy
    need clang++ clang
    # A configuration of its own: clang does not know every option that g++ is given. Nothing is built in it.
    cmake --preset dev -B build/tidy -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_COMPILER_LAUNCHER= >/dev/null
    run-clang-tidy -quiet -p build/tidy -j "$(nproc)" "${2:-^$PWD/(apps|bench|framequarry|host|plugin|repository|tarn7|tests)/}"
    ;;
  *)
    echo "usage: scripts/check.sh [format|fix|tidy [REGEX]]" >&2
    exit 2
    ;;
esac
