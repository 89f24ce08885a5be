#!/bin/sh
# clang-tidy over the program's sources; needs a configured build folder for the compile commands.
set -eu
cd "$(dirname "$0")/.."
cmake --preset release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
git ls-files '*.cpp' | grep -v '^tests/\|^bench/' | xargs -P "$(nproc)" -n 4 clang-tidy -p build --quiet
