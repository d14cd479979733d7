#!/usr/bin/env bash
# Installs what this project needs on Debian 12: every package that it builds, runs or tests with stands here.
#
# usage: scripts/setup.sh run|test
# Does nothing, and needs neither network nor rights, when all packages are there.
set -euo pipefail

run_packages=(
  build-essential cmake ninja-build pkg-config ca-certificates
  libcurl4-openssl-dev libssl-dev libsimdjson-dev libsqlite3-dev libspdlog-dev libtomlplusplus-dev
  libcli11-dev libcpp-httplib-dev libjpeg-dev libpng-dev libpugixml-dev
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev ffmpeg melt
)
# The panel's page is built with node 18 or newer; one of another origin than Debian's will do.
if ! command -v npm >/dev/null || ! node -e 'process.exit(process.versions.node.split(".")[0] < 18 ? 1 : 0)' 2>/dev/null; then
  run_packages+=(nodejs npm)
fi
# nlohmann-json3-dev is a second reader of JSON for tests and benchmarks, curl the one that we are measured against;
# libxml2-utils holds XML against its grammar, chromium shows the panel, clang builds what runs under sanitizers, and
# lld links all that is only tested.
test_packages=(
  clang libclang-rt-14-dev lld libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev binutils curl libxml2-utils
  chromium
)

case "${1:-}" in
  run) packages=("${run_packages[@]}") ;;
  test) packages=("${run_packages[@]}" "${test_packages[@]}") ;;
  *) echo "usage: scripts/setup.sh run|test" >&2; exit 2 ;;
esac

installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' 2>/dev/null | sed -n 's/^ii  *//p' | sort -u)
missing=$(comm -23 <(printf '%s\n' "${packages[@]}" | sort -u) <(printf '%s\n' "$installed"))
[ -n "$missing" ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { printf 'Please install, as root:\n%s\n' "$missing" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing: ${missing//$'\n'/ }" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
# shellcheck disable=SC2086 -- one word a package
"${as_root[@]}" apt-get install -y -qq --no-install-recommends $missing >/dev/null
