#!/bin/sh
# Fails when a source file is not as clang-format writes it.
set -eu
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
