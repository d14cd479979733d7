#!/usr/bin/env bash
# Kills the programs at random moments and looks at what they leave: first the host, on the road from a search
# to relinked clips; then the service, in the middle of purchases. After each kill the next start has to be
# clean: every file in the media folder is whole or gone, the project and the preferences are intact, each cut
# is where it was placed, and credits and owned clips agree.
#
# usage: scripts/kill-demo.sh [ROUNDS] [SEED]
#   ROUNDS  kills of each program, 200 if it is missing; a round takes about a second
#   SEED    other moments; 1 if it is missing
# It says how many rounds met a running program and how many left a file that was cut short. The exit status is
# not 0 when a round found something wrong; the round is then named.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/dev
[ -f "$build/build.ninja" ] || cmake --preset dev
cmake --build "$build" --target road_kill_tests
ZQ_KILL_ROUNDS=${1:-200} ZQ_KILL_SEED=${2:-1} exec "$build/tests/road_kill_tests" --gtest_brief=1
