#!/bin/sh
# Prints how many lines of each folder the tests run through; fails when it is 90 % or less in orders/, output/ or data/.
set -eu
cd "$(dirname "$0")/.."
least=90

[ -e build-coverage/build.ninja ] || cmake --preset coverage >/dev/null
cmake --build build-coverage -- --quiet
find build-coverage -name '*.gcda' -delete
ctest --test-dir build-coverage -j "$(nproc)" >build-coverage/tests.log 2>&1 ||
    { tail -20 build-coverage/tests.log; exit 1; }
gcovr --root . --object-directory build-coverage --gcov-ignore-parse-errors --json-summary \
    --filter 'app/' --filter 'common/' --filter 'data/' --filter 'forms/' --filter 'orders/' --filter 'output/' \
    --exclude 'app/tour/' --output build-coverage/coverage.json build-coverage
python3 - "$least" <<'EOF'
import collections, json, sys

least = float(sys.argv[1])
with open("build-coverage/coverage.json", encoding="utf-8") as file:
    files = json.load(file)["files"]
lines, covered = collections.Counter(), collections.Counter()
for entry in files:
    folder = entry["filename"].split("/")[0]
    lines[folder] += entry["line_total"]
    covered[folder] += entry["line_covered"]
failed = False
for folder in sorted(lines):
    percent = 100 * covered[folder] / lines[folder]
    short = folder in ("data", "orders", "output") and percent <= least
    failed = failed or short
    print(f"{folder + '/':10}{percent:6.1f} % of {lines[folder]} lines" + (f", not above {least:.0f} %" if short else ""))
sys.exit(failed)
EOF
