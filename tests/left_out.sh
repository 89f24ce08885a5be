#!/bin/sh
# Says how many cases were left out because the shared fixture files are absent, and which.
set -eu
cd "$(dirname "$0")/.."
[ -d ../shared/fixtures ] && exit 0
log=build/Testing/Temporary/LastTest.log
echo "The fixture folder is absent: $(grep -c '^SKIP' "$log" || true) cases were left out."
grep '^SKIP' "$log" | sed 's/^SKIP *: */  /' || true
